#pragma once
// What the image file readers and writers share (not for other folders).

#include <cstdint>
#include <string>
#include <string_view>

#include "core/Helpers.h"
#include "core/Host.h"
#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "core/Text.h"
#include "image/FileText.h"
#include "image/Selections.h"

namespace vortelm {

// The hourglass for the length of a command, also when it ends by an error.
class BusyScope {
public:
    explicit BusyScope(ProgramState& st) : st_(st) { st_.host->setBusy(true); }
    ~BusyScope() { st_.host->setBusy(false); }
    BusyScope(const BusyScope&) = delete;
    BusyScope& operator=(const BusyScope&) = delete;

private:
    ProgramState& st_;
};

// The file of a resolved program name, or the run-time error of an open
// that fails.
inline FileBytes OpenForReading(const std::string& resolved) {
    auto f = FileBytes::Open(NativePath(resolved));
    if (!f) throw RunTimeError("file " + resolved + " cannot be opened for reading");
    return std::move(*f);
}

inline void WriteOutput(const std::string& resolved, std::string_view text) {
    if (!WriteWholeFile(NativePath(resolved), text))
        throw RunTimeError("file " + resolved + " cannot be opened for writing");
}

// A record size below 1 would never advance a writer.
inline void CheckRecordSize(int32_t recordSize) {
    if (recordSize < 1)
        throw RunTimeError("record size " + std::to_string(recordSize) + " below 1");
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
    Text2Buffer(st, "\r\n" + std::string(prefix) + std::to_string(SelectedByteCount(st.selections)) +
                        " bytes loaded");
    st.host->gotoPage(LowestSelectedAddress(st.selections) / 16);
    st.host->refreshMemory();
    return 0;
}

}  // namespace vortelm
