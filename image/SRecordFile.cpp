#include "image/SRecordFile.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <vector>

#include "image/Dump.h"
#include "image/ImageCommon.h"

namespace vortelm {

void ReadSRecordFile(ProgramState& st, std::string_view name) {
    auto& sel = st.selections;
    ClearSelections(sel);
    auto file = OpenForReading(ResolveLoadPath(st, name));
    LineCursor lines(file.bytes());

    int64_t lineNo = 0;
    std::array<uint8_t, 257> buf{};
    StagedWrite staged(st.dump);
    try {
        while (!lines.atEnd()) {
            const std::string_view line =
                NextRecordLine(st, lines, lineNo, 'S',
                               "\r\n*WARNING: No 'S' at beginning of line - line ignored ");
            // The type digit is converted without a check.
            if (line.size() < 2 || line[1] < '0' || line[1] > '9')
                throw RunTimeError("S-record type in line " + std::to_string(lineNo) +
                                   " is no decimal digit");
            const int type = line[1] - '0';
            const int32_t n = HexField(line, 3, 2);
            // The count's own place is index n-1.
            if (n < 1)
                throw RunTimeError("S-record buffer index " + std::to_string(n - 1) +
                                   " out of range 0 to 256 in line " + std::to_string(lineNo));
            const auto count =
                static_cast<size_t>(std::clamp(n, 1, 255));  // two digits: at most 255
            if (line.size() >= 4 + 2 * count) {
                const char* p = line.data() + 4;
                HexBytes(p, buf.data(), count);
            } else {
                for (size_t i = 0; i < count; ++i)
                    buf[i] = static_cast<uint8_t>(HexField(line, 5 + 2 * i, 2) & 0xFF);
            }
            const uint8_t checksum = buf[(count - 1) & 0xFF];
            buf[(count - 1) & 0xFF] = static_cast<uint8_t>(n);
            unsigned sum = 0;
            for (size_t i = 0; i < count; ++i) sum += buf[i];
            const auto calculated = static_cast<uint8_t>(~sum & 0xFF);
            if (calculated != checksum) {
                Text2Buffer(st, "\r\n*WARNING: Checksum in line " + std::to_string(lineNo) +
                                    " wrong. Read: 0x" + HexText(checksum, 2) + ", calculated: 0x" +
                                    HexText(calculated, 2));
            }
            if (type < 1 || type > 3) continue;

            int64_t address = 0;
            for (int i = 0; i <= type; ++i) address = address * 256 + buf[static_cast<size_t>(i)];
            if (address > std::numeric_limits<int32_t>::max())
                throw RunTimeError("S-record address " + std::to_string(address) +
                                   " overflow in line " + std::to_string(lineNo));
            const int64_t dataCount = int64_t(n) - type - 2;
            if (dataCount > 0)
                staged.add(static_cast<int32_t>(address), buf.data() + type + 1,
                           static_cast<size_t>(dataCount));
            const int64_t last = address + dataCount - 1;
            if (last > std::numeric_limits<int32_t>::max())
                throw RunTimeError("S-record end address overflow in line " +
                                   std::to_string(lineNo));
            AddSelection(sel, static_cast<int32_t>(address), static_cast<int32_t>(last));
        }
    } catch (...) {
        staged.flush();
        throw;
    }
    staged.flush();
    MergeSelections(sel);
}

namespace {

struct Dialect {
    const char* data;
    const char* end;
    int addressBytes;
};

// An unknown format number has no dialect: its records carry no type text
// and no address.
Dialect DialectOf(int16_t format) {
    switch (format) {
        case 19:
            return {"S1", "S9", 2};
        case 28:
            return {"S2", "S8", 3};
        case 37:
            return {"S3", "S7", 4};
        default:
            return {"", "", 0};
    }
}

void AppendRecord(std::string& out, const char* type, int addressBytes, int64_t address,
                  const uint8_t* data, size_t n) {
    const auto count = static_cast<uint32_t>(addressBytes + n + 1);
    unsigned sum = count;
    out += type;
    AppendHex(out, count, 2);
    for (int k = addressBytes - 1; k >= 0; --k) {
        const auto b = static_cast<uint32_t>(static_cast<uint64_t>(address) >> (8 * k)) & 0xFF;
        AppendHex(out, b, 2);
        sum += b;
    }
    for (size_t i = 0; i < n; ++i) {
        AppendHex(out, data[i], 2);
        sum += data[i];
    }
    AppendHex(out, ~sum & 0xFF, 2);
    out += "\r\n";
}

}  // namespace

void WriteSRecordSelections(ProgramState& st, std::string_view name, int32_t recordSize,
                            int16_t format) {
    CheckRecordSize(recordSize);
    auto& sel = st.selections;
    MergeSelections(sel);
    const Dialect d = DialectOf(format);
    std::string out;
    std::vector<uint8_t> data(static_cast<size_t>(recordSize));
    int32_t startAddress = 0;
    for (int i = 0; i < sel.count; ++i) {
        if (i == 0) startAddress = sel.start[0];
        const int64_t end = sel.end[i];
        for (int64_t a = sel.start[i]; a <= end; a += recordSize) {
            const auto n = static_cast<size_t>(std::min<int64_t>(recordSize, end - a + 1));
            // Marks are not looked at: unread bytes go out with their value.
            ReadDumpBlock(st.dump, static_cast<int32_t>(a), std::span<uint8_t>(data.data(), n));
            AppendRecord(out, d.data, d.addressBytes, a, data.data(), n);
        }
    }
    AppendRecord(out, d.end, d.addressBytes, startAddress, nullptr, 0);
    WriteOutput(ResolveSavePath(st, name), out);
}

void WriteSRecordRange(ProgramState& st, std::string_view name, int32_t start, int32_t end,
                       int32_t recordSize, int16_t format) {
    CheckRecordSize(recordSize);
    auto& sel = st.selections;
    MergeSelections(sel);
    const Dialect d = DialectOf(format);
    std::string out;
    std::vector<uint8_t> data;
    // The loop ends on the end of the first selection, not on the given end.
    const int64_t stop = sel.end[0];
    for (int64_t a = start;; a += recordSize) {
        const int64_t last = std::min<int64_t>(a + recordSize - 1, end);
        const int64_t n = last - a + 1;
        if (n < 0) {
            WriteOutput(ResolveSavePath(st, name), out);
            throw RunTimeError("S-record length " + std::to_string(n) + " below 0 at address " +
                               HexText(static_cast<int32_t>(a), 6));
        }
        data.resize(static_cast<size_t>(n));
        ReadDumpBlock(st.dump, static_cast<int32_t>(a), data);
        AppendRecord(out, d.data, d.addressBytes, a, data.data(), data.size());
        if (last == stop) break;
    }
    AppendRecord(out, d.end, d.addressBytes, start, nullptr, 0);
    WriteOutput(ResolveSavePath(st, name), out);
}

int32_t LoadSRecordCommand(ProgramState& st, std::string_view name) {
    return LoadCommand(st, name, "*Load: ", [&] { ReadSRecordFile(st, name); });
}

int32_t SaveSRecordCommand(ProgramState& st, std::string_view name, int32_t recordSize,
                           int16_t format) {
    return SaveCommand(st, "*SaveAs: selection written to file",
                       [&] { WriteSRecordSelections(st, name, recordSize, format); });
}

}  // namespace vortelm
