#include "image/HexFile.h"

#include <algorithm>
#include <array>
#include <string>

#include "core/Helpers.h"
#include "core/Host.h"
#include "core/RunTimeError.h"
#include "core/Text.h"
#include "image/Dump.h"
#include "image/FileText.h"
#include "image/ImageCommon.h"
#include "image/Selections.h"

namespace vortelm {

void ReadHexFile(ProgramState& st, std::string_view name) {
    auto& sel = st.selections;
    ClearSelections(sel);
    auto file = OpenForReading(ResolveLoadPath(st, name));
    LineCursor lines(file.bytes());

    int32_t base = 0;
    int32_t runStart = -1;
    int32_t runEnd = -2;
    int64_t lineNo = 0;
    std::array<uint8_t, 257> buf{};
    StagedWrite staged(st.dump);

    try {
        while (!lines.atEnd()) {
            std::string_view line = lines.next();
            ++lineNo;
            // The last line is never reported: it is parsed as it stands.
            while ((line.empty() || line[0] != ':') && !lines.atEnd()) {
                Text2Buffer(st, "\r\n*WARNING: No ':' at beginning of line - line ignored ");
                line = lines.next();
                ++lineNo;
            }
            const int32_t ll = HexField(line, 2, 2);
            const int32_t addr = HexField(line, 4, 4);
            const int32_t type = HexField(line, 8, 2);
            CheckBound(ll < 0 ? ll : ll + 3, 256, "Intel HEX record buffer");

            const size_t n = static_cast<size_t>(ll);
            if (line.size() >= 11 + 2 * n) {
                const char* p = line.data() + 9;
                HexBytes(p, buf.data(), n);
            } else {
                for (size_t i = 0; i < n; ++i)
                    buf[i] = static_cast<uint8_t>(HexField(line, 10 + 2 * i, 2) & 0xFF);
            }
            const auto checksum = static_cast<uint8_t>(HexField(line, 10 + 2 * n, 2) & 0xFF);
            buf[n] = static_cast<uint8_t>(ll);
            buf[n + 1] = static_cast<uint8_t>((addr >> 8) & 0xFF);
            buf[n + 2] = static_cast<uint8_t>(addr & 0xFF);
            buf[n + 3] = static_cast<uint8_t>(type & 0xFF);
            unsigned sum = 0;
            for (size_t i = 0; i < n + 4; ++i) sum += buf[i];
            sum %= 256;
            const unsigned calculated = sum == 0 ? 0 : 256 - sum;
            if (calculated != checksum) {
                Text2Buffer(st, "\r\n*WARNING: Checksum in line " + std::to_string(lineNo) +
                                    " wrong. Read: 0x" + HexText(checksum, 2) + ", calculated: 0x" +
                                    HexText(static_cast<int32_t>(calculated), 2));
            }

            if (type == 0) {
                const int32_t a = base + addr;
                if (runStart != -1) {
                    if (int64_t(a) != int64_t(runEnd) + 1) {
                        AddSelection(sel, runStart, runEnd);
                        runStart = a;
                    }
                } else {
                    runStart = a;
                }
                staged.add(a, buf.data(), n);
                runEnd = static_cast<int32_t>(int64_t(a) + ll - 1);
            } else if (type == 2) {
                base = (buf[0] * 256 + buf[1]) * 16;
            } else if (type == 4) {
                const int32_t v = buf[0] * 256 + buf[1];
                if (v >= 0x8000)
                    throw RunTimeError("Intel HEX extended linear address " + HexText(v, 4) +
                                       " overflow in line " + std::to_string(lineNo));
                base = v * 65536;
            }
        }
    } catch (...) {
        staged.flush();
        throw;
    }
    staged.flush();
    AddSelection(sel, runStart, runEnd);
    MergeSelections(sel);
}

namespace {

int32_t ExtensionValue(int64_t address, int16_t format) {
    const auto seg = static_cast<int32_t>(address / 65536);
    return format == kHexFormatSegment ? seg * 4096 : seg;
}

void AppendExtension(std::string& out, int32_t value, int16_t format) {
    const unsigned sum =
        (2u + static_cast<unsigned>(format) + ((static_cast<unsigned>(value) >> 8) & 0xFF) +
         (static_cast<unsigned>(value) & 0xFF)) %
        256;
    out += ":020000";
    out += HexText(format, 2);
    out += HexText(value, 4);
    // No case for a sum of 0: the checksum is then written as "100".
    out += HexText(static_cast<int32_t>(256 - sum), 2);
    out += "\r\n";
}

void AppendData(std::string& out, int64_t address, const uint8_t* data, size_t n) {
    const auto low = static_cast<uint32_t>(address) & 0xFFFF;
    unsigned sum = static_cast<unsigned>(n) + (low >> 8) + (low & 0xFF);
    out += ':';
    AppendHex(out, static_cast<uint32_t>(n), 2);
    AppendHex(out, low, 4);
    out += "00";
    for (size_t i = 0; i < n; ++i) {
        AppendHex(out, data[i], 2);
        sum += data[i];
    }
    sum %= 256;
    AppendHex(out, sum == 0 ? 0 : 256 - sum, 2);
    out += "\r\n";
}

}  // namespace

void WriteHexRange(ProgramState& st, std::string_view name, int32_t start, int32_t end,
                   int32_t recordSize, int16_t format) {
    CheckRecordSize(recordSize);
    std::string out;
    if (end >= start) out.reserve(static_cast<size_t>((int64_t(end) - start + 1) * 5 / 2 + 64));
    int32_t lastExtension = -1;
    std::vector<uint8_t> data(static_cast<size_t>(recordSize));
    for (int64_t a = start; a <= end; a += recordSize) {
        const int32_t ext = ExtensionValue(a, format);
        if (ext != lastExtension) {
            AppendExtension(out, ext, format);
            lastExtension = ext;
        }
        const auto n = static_cast<size_t>(std::min<int64_t>(recordSize, end - a + 1));
        ReadDumpBlock(st.dump, static_cast<int32_t>(a), std::span<uint8_t>(data.data(), n));
        AppendData(out, a, data.data(), n);
    }
    out += ":00000001FF\r\n";
    WriteOutput(ResolveSavePath(st, name), out);
}

void WriteHexSelections(ProgramState& st, std::string_view name, int32_t recordSize,
                        int16_t format) {
    CheckRecordSize(recordSize);
    auto& sel = st.selections;
    MergeSelections(sel);
    std::string out;
    int32_t lastExtension = -1;
    std::vector<uint8_t> data;
    for (int i = 0; i < sel.count; ++i) {
        const int32_t end = sel.end[i];
        int64_t p = sel.start[i];
        while (p <= end) {
            const DumpRun run = FindMarkedRun(st.dump, static_cast<int32_t>(p), end, kMarkDefined);
            if (!run.found) break;
            p = run.first;
            while (p <= run.last) {
                // A record stays inside one 64 KiB window and one run of Defined bytes.
                const int64_t window = p / 65536;
                const int64_t last = std::min<int64_t>(
                    {int64_t(run.last), p + recordSize - 1, (window + 1) * 65536 - 1});
                const auto n = static_cast<size_t>(last - p + 1);
                const int32_t ext = ExtensionValue(p, format);
                if (ext != lastExtension) {
                    AppendExtension(out, ext, format);
                    lastExtension = ext;
                }
                data.resize(n);
                ReadDumpBlock(st.dump, static_cast<int32_t>(p), data);
                AppendData(out, p, data.data(), n);
                p = last + 1;
            }
        }
    }
    out += ":00000001FF\r\n";
    WriteOutput(ResolveSavePath(st, name), out);
}

int32_t LoadHexCommand(ProgramState& st, std::string_view name) {
    return LoadCommand(st, name, "*Load: ", [&] { ReadHexFile(st, name); });
}

int32_t SaveHexCommand(ProgramState& st, std::string_view name, int32_t recordSize,
                       int16_t format) {
    return SaveCommand(st, "*SaveAs: selection written to file",
                       [&] { WriteHexSelections(st, name, recordSize, format); });
}

}  // namespace vortelm
