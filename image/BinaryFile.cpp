#include "image/BinaryFile.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <limits>
#include <string>
#include <vector>

#include "image/Dump.h"
#include "image/ImageCommon.h"

namespace vortelm {

void ReadBinaryFile(ProgramState& st, std::string_view name, int32_t address) {
    auto& sel = st.selections;
    ClearSelections(sel);
    // The size comes through the program folder, as FileSize finds names.
    const int32_t size = FileSize(st, name);
    const int32_t blocks = size / 1024;
    const int32_t tail = size % 1024;
    {
        auto file = OpenForReading(ResolveLoadPath(st, name));
        const std::string_view bytes = file.bytes();
        // Whole blocks only; what the file lacks of them reads as 0.
        const int64_t whole = int64_t(blocks) * 1024;
        const int64_t have = std::min<int64_t>(whole, static_cast<int64_t>(bytes.size()));
        WriteDumpBlock(st.dump, address,
                       std::span<const uint8_t>(reinterpret_cast<const uint8_t*>(bytes.data()),
                                                static_cast<size_t>(std::max<int64_t>(have, 0))),
                       kMarksLoaded);
        if (have < whole)
            FillDumpBlock(st.dump, static_cast<int32_t>(int64_t(address) + have), whole - have, 0,
                          kMarksLoaded);
    }
    if (tail > 0) {
        // The rest is read one by one from the file opened again through the
        // program folder: a relative name reads its tail from there.
        auto again = FileBytes::Open(NativePath(ResolveInProgramFolder(st, name)));
        const std::string_view bytes = again ? again->bytes() : std::string_view{};
        for (int32_t i = 0; i < tail; ++i) {
            const size_t pos = static_cast<size_t>(blocks) * 1024 + static_cast<size_t>(i);
            const auto v = pos < bytes.size() ? static_cast<uint8_t>(bytes[pos]) : uint8_t{0};
            const auto a = static_cast<int32_t>(int64_t(address) + pos);
            WriteDumpByte(st.dump, a, v);
            SetDefined(st.dump, a, kTrue);
            SetValid(st.dump, a, kFalse);
        }
    }
    const int64_t last = int64_t(address) + size - 1;
    if (last > std::numeric_limits<int32_t>::max())
        throw RunTimeError("binary load end address overflow");
    AddSelection(sel, address, static_cast<int32_t>(last));
    MergeSelections(sel);
}

namespace {

constexpr uint8_t kRead = kMarkDefined | kMarkValid;

// True when every status byte has Defined or Valid.
bool AllRead(const uint8_t* status, size_t len) {
    constexpr uint64_t kOnes = 0x0101010101010101ull;
    size_t k = 0;
    for (; k + 8 <= len; k += 8) {
        uint64_t w;
        std::memcpy(&w, status + k, 8);
        if (((w | (w >> 2)) & kOnes) != kOnes) return false;
    }
    for (; k < len; ++k)
        if (!(status[k] & kRead)) return false;
    return true;
}

}  // namespace

void WriteBinarySelections(ProgramState& st, std::string_view name, int32_t fillValue) {
    auto& sel = st.selections;
    MergeSelections(sel);
    const std::string resolved = ResolveSavePath(st, name);

    // The file replaces the old one in one step, so that a kill or a full
    // disk leaves the old file whole. Its bytes are written as pieces that
    // point into the image where they can (no copy of the whole file);
    // pieces the writer makes itself (filled bytes, gaps) are kept in made.
    std::vector<std::string_view> pieces;
    std::deque<std::string> made;
    auto own = [&](std::string bytes) {
        made.push_back(std::move(bytes));
        pieces.emplace_back(made.back());
    };
    auto write = [&] {
        const SafeWriteResult r = ReplaceFile(NativePath(resolved), pieces);
        if (!r.ok)
            throw RunTimeError("file " + resolved + " cannot be opened for writing: " + r.reason);
    };
    auto chars = [](const uint8_t* p) { return reinterpret_cast<const char*>(p); };

    // One byte per address from position 0. A gap byte is written as 16
    // bits: its upper half stands behind it until the next write covers it,
    // so it stays in the file only when nothing follows it.
    char overhang = 0;
    bool overhangs = false;
    for (int i = 0; i < sel.count; ++i) {
        const int64_t start = sel.start[i];
        const int64_t end = sel.end[i];
        int64_t address = start;
        VisitDumpBlock(st.dump, sel.start[i], end - start + 1, [&](const DumpPiece& piece) {
            const size_t len = piece.length;
            overhangs = false;
            if (piece.status ? AllRead(piece.status, len) : (piece.sameStatus & kRead) != 0) {
                pieces.emplace_back(chars(piece.data), len);
            } else {
                // Some byte is neither Defined nor Valid: it takes the fill value.
                std::string filled(chars(piece.data), len);
                for (size_t k = 0; k < len; ++k) {
                    if (piece.statusAt(k) & kRead) continue;
                    if (fillValue < 0) {
                        // The file holds what came before the unread byte.
                        filled.resize(k);
                        own(std::move(filled));
                        write();
                        throw RunTimeError("fill value " + std::to_string(fillValue) +
                                           " for the unread byte at " +
                                           HexText(static_cast<int32_t>(address + int64_t(k)), 6));
                    }
                    filled[k] = static_cast<char>(fillValue);
                }
                own(std::move(filled));
            }
            address += static_cast<int64_t>(len);
        });
        if (i + 1 < sel.count && fillValue >= 0) {
            const int64_t left = int64_t(sel.start[i + 1]) - end - 1;
            if (left > 0) {
                // One buffer of fill bytes, pointed at as often as the gap needs.
                const int64_t chunk = std::min<int64_t>(left, 1 << 20);
                own(std::string(static_cast<size_t>(chunk), static_cast<char>(fillValue & 0xFF)));
                const std::string_view fill = pieces.back();
                pieces.pop_back();
                for (int64_t n = left; n > 0; n -= chunk)
                    pieces.push_back(fill.substr(0, static_cast<size_t>(std::min(n, chunk))));
                overhang = static_cast<char>((fillValue >> 8) & 0xFF);
                overhangs = true;
            }
        }
    }
    if (overhangs) pieces.emplace_back(&overhang, 1);
    write();
}

int32_t LoadBinaryCommand(ProgramState& st, std::string_view name, int32_t address) {
    return LoadCommand(st, name, "*Load Binary: ", [&] { ReadBinaryFile(st, name, address); });
}

int32_t SaveBinaryCommand(ProgramState& st, std::string_view name, int32_t fillValue) {
    return SaveCommand(st, "*Save Binary: selection written to binary file",
                       [&] { WriteBinarySelections(st, name, fillValue); });
}

}  // namespace vortelm
