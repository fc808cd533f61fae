#include "image/HexFile.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <stop_token>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "core/Helpers.h"
#include "core/Host.h"
#include "core/RunTimeError.h"
#include "core/Text.h"
#include "image/Dump.h"
#include "image/FileText.h"
#include "image/FreshPages.h"
#include "image/ImageCommon.h"
#include "image/Selections.h"

namespace vortelm {

namespace {

// The selection runs of the data records, in file order: a record that does
// not follow the one before it closes the run and starts the next.
struct DataRuns {
    SelectionList& sel;
    int32_t start = -1;
    int32_t end = -2;
    void take(int32_t address, int64_t length) {
        if (start == -1)
            start = address;
        else if (int64_t(address) != int64_t(end) + 1) {
            AddSelection(sel, start, end);
            start = address;
        }
        end = static_cast<int32_t>(int64_t(address) + length - 1);
    }
};

// The second half of a large file, read on a thread of its own while the
// first half is read as usual. It only takes plain records (a colon, hex
// digits, a right checksum, a line end, an address inside the image) and
// gives up at anything else: what would warn, throw or depend on the lines
// before it is left to the usual reader, which then goes on from there.
struct HexTail {
    struct Run {
        int32_t start = 0;
        size_t offset = 0;  // in bytes
        size_t length = 0;
    };
    bool plain = false;
    std::vector<Run> runs;
    FreshPages bytes;
    size_t used = 0;
};

// Where the tail may start: the first extended address record from the
// middle on, so that no address of the tail depends on the head.
size_t TailStart(std::string_view text) {
    const size_t limit = std::min(text.size(), text.size() / 2 + (size_t(1) << 20));
    for (size_t at = text.size() / 2; at < limit;) {
        const size_t nl = text.find('\n', at);
        if (nl == std::string_view::npos || nl + 10 > text.size()) break;
        const std::string_view head = text.substr(nl + 1, 9);
        if (head == ":02000004" || head == ":02000002") return nl + 1;
        at = nl + 1;
    }
    return std::string_view::npos;
}

// A record the usual reader takes without a word: a colon, hex digits only,
// a right checksum, a line end (or the end of the file); for data a length
// above 0 and an address inside the image, for an address record two bytes
// and no overflow. Anything else is left to the usual reader.
struct PlainRecord {
    static constexpr size_t kNotPlain = std::string_view::npos;
    size_t next = kNotPlain;  // where the next line starts
    int type = 0;
    int32_t address = 0;  // of data: the base plus the record's offset
    size_t length = 0;
};

// The record at pos, its data decoded to data (room for 255 bytes); a plain
// address record sets base.
PlainRecord ReadPlainRecord(std::string_view text, size_t pos, int32_t& base, uint8_t* data) {
    PlainRecord r;
    if (text.size() - pos < 11 || text[pos] != ':') return r;
    const char* p = text.data() + pos + 1;
    // Length, offset (two bytes) and type; then the data and the checksum.
    std::array<uint8_t, 4> head{};
    uint8_t checksum = 0;
    unsigned sum = 0;
    if (!HexBytesSummed(p, head.data(), 4, sum)) return r;
    const size_t n = head[0];
    size_t next = pos + 11 + 2 * n;
    if (n + 3 > 256 || next > text.size() || !HexBytesSummed(p + 8, data, n, sum) ||
        !HexBytesSummed(p + 8 + 2 * n, &checksum, 1, sum) || (sum & 0xFF) != 0)
        return r;
    if (next < text.size()) {
        if (text[next] == '\r' && next + 1 < text.size() && text[next + 1] == '\n')
            next += 2;
        else if (text[next] == '\r' || text[next] == '\n')
            ++next;
        else
            return r;
    }
    r.type = head[3];
    if (r.type == 0) {
        const int64_t a = int64_t(base) + (head[1] << 8 | head[2]);
        if (n == 0 || a + int64_t(n) > kDumpEndAddress) return r;
        r.address = static_cast<int32_t>(a);
        r.length = n;
    } else if (r.type == 2 || r.type == 4) {
        const int32_t v = data[0] * 256 + data[1];
        if (n != 2 || (r.type == 4 && v >= 0x8000)) return r;
        base = r.type == 4 ? v * 65536 : v * 16;
    }
    r.next = next;
    return r;
}

void ReadPlainTail(std::string_view text, size_t pos, HexTail& tail,
                   const std::stop_token& stop) noexcept {
    try {
        // Room for the most bytes the tail can spell, and for one record
        // decoded beyond them before it is known to be plain.
        tail.bytes = FreshPages((text.size() - pos) / 2 + 256, true);
        int32_t base = 0;
        while (pos < text.size()) {
            if (stop.stop_requested()) return;
            const PlainRecord r = ReadPlainRecord(text, pos, base, tail.bytes.data() + tail.used);
            if (r.next == PlainRecord::kNotPlain) return;
            if (r.type == 0) {
                auto& runs = tail.runs;
                if (runs.empty() ||
                    int64_t(runs.back().start) + int64_t(runs.back().length) != r.address)
                    runs.push_back({r.address, tail.used, 0});
                runs.back().length += r.length;
                tail.used += r.length;
            }
            pos = r.next;
        }
        tail.plain = true;
    } catch (...) {
        // Out of memory: the usual reader takes the tail.
    }
}

// One read of a file: the lines in file order, the address base, the
// selection runs and the bytes staged for the image.
class HexReader {
  public:
    HexReader(ProgramState& st, std::string_view text) : st_(st), lines_(text), text_(text) {}

    [[nodiscard]] bool atEnd() const { return lines_.atEnd(); }
    [[nodiscard]] size_t position() const { return lines_.position(); }

    // The record at the position when it is plain; false, reading nothing,
    // when it is not.
    bool takePlain() {
        const PlainRecord r = ReadPlainRecord(text_, lines_.position(), base_, buf_.data());
        if (r.next == PlainRecord::kNotPlain) return false;
        ++lineNo_;
        if (r.type == 0) {
            runs_.take(r.address, static_cast<int64_t>(r.length));
            staged_.add(r.address, buf_.data(), r.length);
        }
        lines_.skipTo(r.next);
        return true;
    }

    // The next line as the line-by-line way reads it, with its warnings.
    void takeLine() {
        const std::string_view line = NextRecordLine(
            st_, lines_, lineNo_, ':', "\r\n*WARNING: No ':' at beginning of line - line ignored ");
        const int32_t ll = HexField(line, 2, 2);
        const int32_t addr = HexField(line, 4, 4);
        const int32_t type = HexField(line, 8, 2);
        CheckBound(ll < 0 ? ll : ll + 3, 256, "Intel HEX record buffer");
        const auto n = static_cast<size_t>(ll);
        checkSum(line, n, ll, addr, type);
        if (type == 0) {
            const int32_t a = base_ + addr;
            runs_.take(a, ll);
            staged_.add(a, buf_.data(), n);
        } else if (type == 2) {
            base_ = (buf_[0] * 256 + buf_[1]) * 16;
        } else if (type == 4) {
            const int32_t v = buf_[0] * 256 + buf_[1];
            if (v >= 0x8000)
                throw RunTimeError("Intel HEX extended linear address " + HexText(v, 4) +
                                   " overflow in line " + std::to_string(lineNo_));
            base_ = v * 65536;
        }
    }

    // The tail's runs, as the line-by-line way would have taken their records.
    void takeTail(const HexTail& tail) {
        for (const HexTail::Run& r : tail.runs) {
            // In that way's order: the run first (which can meet the selection
            // list's bound), then the bytes staged before it.
            runs_.take(r.start, static_cast<int64_t>(r.length));
            staged_.flush();
            WriteDumpBlock(st_.dump, r.start,
                           std::span<const uint8_t>(tail.bytes.data() + r.offset, r.length),
                           kMarksLoaded);
        }
    }

    // The staged bytes to the image (also on the way out of an error).
    void flush() { staged_.flush(); }

    void finish() {
        staged_.flush();
        AddSelection(st_.selections, runs_.start, runs_.end);
        MergeSelections(st_.selections);
    }

  private:
    // The data bytes to buf_, then the checksum check with its warning.
    void checkSum(std::string_view line, size_t n, int32_t ll, int32_t addr, int32_t type) {
        if (line.size() >= 11 + 2 * n) {
            HexBytes(line.data() + 9, buf_.data(), n);
        } else {
            for (size_t i = 0; i < n; ++i)
                buf_[i] = static_cast<uint8_t>(HexField(line, 10 + 2 * i, 2) & 0xFF);
        }
        const auto checksum = static_cast<uint8_t>(HexField(line, 10 + 2 * n, 2) & 0xFF);
        // The record's other bytes behind the data, for one sum; the data
        // stays at the front of buf_.
        buf_[n] = static_cast<uint8_t>(ll);
        buf_[n + 1] = static_cast<uint8_t>((addr >> 8) & 0xFF);
        buf_[n + 2] = static_cast<uint8_t>(addr & 0xFF);
        buf_[n + 3] = static_cast<uint8_t>(type & 0xFF);
        const unsigned sum = ByteSum(buf_.data(), n + 4) % 256;
        const unsigned calculated = sum == 0 ? 0 : 256 - sum;
        if (calculated != checksum)
            Text2Buffer(st_, "\r\n*WARNING: Checksum in line " + std::to_string(lineNo_) +
                                 " wrong. Read: 0x" + HexText(checksum, 2) + ", calculated: 0x" +
                                 HexText(static_cast<int32_t>(calculated), 2));
    }

    ProgramState& st_;
    LineCursor lines_;
    std::string_view text_;
    int32_t base_ = 0;
    int64_t lineNo_ = 0;
    DataRuns runs_{st_.selections};
    std::array<uint8_t, 257> buf_{};
    StagedWrite staged_{st_.dump};
};

}  // namespace

void ReadHexFile(ProgramState& st, std::string_view name, const HexReading& how) {
    ClearSelections(st.selections);
    auto file = OpenForReading(ResolveLoadPath(st, name));
    const std::string_view text = file.bytes();

    HexTail tail;
    size_t tailStart = text.size() >= how.twoHalvesFrom ? TailStart(text) : std::string_view::npos;
    std::jthread tailReader;
    if (tailStart != std::string_view::npos) {
        try {
            tailReader = std::jthread(
                [&](std::stop_token stop) { ReadPlainTail(text, tailStart, tail, stop); });
        } catch (const std::system_error&) {
            tailStart = std::string_view::npos;  // no thread to be had: one reader reads all
        }
    }

    HexReader reader(st, text);
    try {
        while (!reader.atEnd()) {
            if (tailReader.joinable() && reader.position() >= tailStart) {
                // A line the head skipped can carry it past the tail's start:
                // the tail is then of no use.
                if (reader.position() > tailStart) tailReader.request_stop();
                tailReader.join();
                if (tail.plain && reader.position() == tailStart) {
                    reader.takeTail(tail);
                    break;
                }
            }
            if (!how.plainRecords || !reader.takePlain()) reader.takeLine();
        }
    } catch (...) {
        reader.flush();
        throw;
    }
    reader.finish();
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
