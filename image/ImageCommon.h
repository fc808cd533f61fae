#pragma once
// What the image file readers and writers share (not for other folders).

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/BusyScope.h"
#include "core/Helpers.h"
#include "core/Host.h"
#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "core/SafeFile.h"
#include "core/Text.h"
#include "image/Dump.h"
#include "image/FileText.h"
#include "image/Selections.h"

namespace vortelm {

// The file of a resolved program name, or the run-time error of an open
// that fails.
inline FileBytes OpenForReading(const std::string& resolved) {
    auto f = FileBytes::Open(NativePath(resolved));
    if (!f) throw RunTimeError("file " + resolved + " cannot be opened for reading");
    return std::move(*f);
}

// Replaces the file of a resolved program name by the text: a failure ends
// the command with the run-time error of a file that cannot be written, and
// the old file stays as it was.
inline void WriteOutput(const std::string& resolved, std::string_view text) {
    const SafeWriteResult r = ReplaceFile(NativePath(resolved), text);
    if (!r.ok)
        throw RunTimeError("file " + resolved + " cannot be opened for writing: " + r.reason);
}

// A record size below 1 would never advance a writer.
inline void CheckRecordSize(int32_t recordSize) {
    if (recordSize < 1)
        throw RunTimeError("record size " + std::to_string(recordSize) + " below 1");
}

// The bytes a reader stores, gathered while they follow each other and
// written to the image in one go; what a load writes is the same as record
// by record, since a reader never looks at the image. Flush before any
// error leaves the reader, so that the image holds what came before it.
class StagedWrite {
  public:
    explicit StagedWrite(DumpMemory& dump) : dump_(dump) { bytes_.reserve(kSegment); }
    void add(int32_t address, const uint8_t* p, size_t n) {
        while (n > 0) {
            if (!bytes_.empty() && int64_t(start_) + int64_t(bytes_.size()) != address) flush();
            if (bytes_.empty()) start_ = address;
            // The buffer never crosses a segment's end, so that a load of
            // whole segments writes each in one piece, which keeps its status
            // bytes all alike and unplaced.
            const auto room = static_cast<size_t>(kSegment - (start_ & 0xFFFF)) - bytes_.size();
            const size_t take = std::min(n, room);
            bytes_.insert(bytes_.end(), p, p + take);
            if (take == room) flush();
            address = static_cast<int32_t>(int64_t(address) + int64_t(take));
            p += take;
            n -= take;
        }
    }
    void flush() {
        if (bytes_.empty()) return;
        // The buffer is emptied before the write may throw (a reader's error
        // path flushes again) and keeps its capacity: one small buffer that
        // stays in the cache, not a fresh one per flush.
        struct Emptied {
            std::vector<uint8_t>& v;
            ~Emptied() { v.clear(); }
        } emptied{bytes_};
        WriteDumpBlock(dump_, start_, bytes_, kMarksLoaded);
    }

  private:
    static constexpr int64_t kSegment = 65536;
    DumpMemory& dump_;
    int32_t start_ = 0;
    std::vector<uint8_t> bytes_;
};

// The next line that starts with the record's lead character; each line
// before it is warned about with the text. The last line is never reported:
// it is parsed as it stands.
inline std::string_view NextRecordLine(ProgramState& st, LineCursor& lines, int64_t& lineNo,
                                       char lead, std::string_view warning) {
    std::string_view line = lines.next();
    ++lineNo;
    while ((line.empty() || line[0] != lead) && !lines.atEnd()) {
        Text2Buffer(st, std::string(warning));
        line = lines.next();
        ++lineNo;
    }
    return line;
}

// The common frame of the load commands: hourglass, existence test, the
// reader, the byte count, the hex page at the lowest selected address.
template <class Read>
int32_t LoadCommand(ProgramState& st, std::string_view name, std::string_view prefix, Read&& read) {
    BusyScope busy(st);
    if (!FileExists(st, name, kFalse)) {
        Text2Buffer(st, "\r\n*ERROR: file " + std::string(name) + " not found !");
        return -1;
    }
    read();
    Text2Buffer(st, "\r\n" + std::string(prefix) +
                        std::to_string(SelectedByteCount(st.selections)) + " bytes loaded");
    st.host->gotoPage(LowestSelectedAddress(st.selections) / 16);
    st.host->refreshMemory();
    return 0;
}

// The common frame of the save commands: hourglass, the writer, the report.
template <class Write>
int32_t SaveCommand(ProgramState& st, std::string_view report, Write&& write) {
    BusyScope busy(st);
    write();
    Text2Buffer(st, "\r\n" + std::string(report));
    return 0;
}

}  // namespace vortelm
