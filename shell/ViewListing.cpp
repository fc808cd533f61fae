#include "shell/ViewListing.h"

#include "core/Helpers.h"
#include "core/ProgramState.h"
#include "core/Text.h"
#include "image/Dump.h"

namespace vortelm::shell {

namespace {

std::string ByteText(ProgramState& st, int64_t address) {
    const auto a = static_cast<int32_t>(address);
    if (!IsDefined(st.dump, a)) return "..";
    return HexText(ReadDumpByte(st.dump, a), 2);
}

// count bytes from address on, highest first; points in place of the whole
// value when any of them is not Defined.
std::string ValueText(ProgramState& st, int64_t address, int count) {
    std::string text;
    for (int i = count - 1; i >= 0; --i) {
        const auto a = static_cast<int32_t>(address + i);
        if (!IsDefined(st.dump, a)) return std::string(static_cast<size_t>(count) * 2, '.');
        text += HexText(ReadDumpByte(st.dump, a), 2);
    }
    return text;
}

char AsciiChar(ProgramState& st, int64_t address) {
    const auto a = static_cast<int32_t>(address);
    if (!IsDefined(st.dump, a)) return '.';
    const uint8_t b = ReadDumpByte(st.dump, a);
    return b < 32 ? '.' : static_cast<char>(b);
}

// One assembler row: the bytes of the instruction, filled to four with two
// blanks each, two blanks, the decoder's text. Returns the step, or 0 when
// the selection ends after this row.
int32_t AssemblerRow(ProgramState& st, int64_t address, const DecodeAt& decode, std::string& row) {
    const auto a = static_cast<int32_t>(address);
    if (!IsDefined(st.dump, a) || !IsDefined(st.dump, a + 1)) {
        row += "....";
        return 2;
    }
    const DecodedInstruction d =
        decode ? decode(st, a) : DecodedInstruction{"Illegal Instruction", 0};
    for (int i = 0; i < 4; ++i)
        row += i < d.byteLength ? HexText(ReadDumpByte(st.dump, a + i), 2) : std::string("  ");
    row += "  " + d.text;
    if (d.byteLength <= 0 || d.text.rfind("Illegal", 0) == 0) return 0;
    return d.byteLength;
}

}  // namespace

std::vector<std::string> ListingRows(ProgramState& st, ListingMode mode, const DecodeAt& decode,
                                     std::string_view separator) {
    std::vector<std::string> rows;
    const SelectionList& sel = st.selections;
    for (int i = 0; i < sel.count; ++i) {
        const int64_t end = sel.end[i];
        for (int64_t address = sel.start[i]; address <= end;) {
            std::string row = HexText(static_cast<int32_t>(address), 6) + ": ";
            int32_t step = 1;
            switch (mode) {
                case ListingMode::Byte:
                    row += ByteText(st, address);
                    break;
                case ListingMode::Word:
                    row += ValueText(st, address, 2);
                    step = 2;
                    break;
                case ListingMode::Long:
                    row += ValueText(st, address, 4);
                    step = 4;
                    break;
                case ListingMode::Assembler:
                    step = AssemblerRow(st, address, decode, row);
                    break;
                case ListingMode::Ascii:
                    row += AsciiChar(st, address);
                    break;
                case ListingMode::AsciiSwapped:
                    row += AsciiChar(st, address + 1);
                    row += AsciiChar(st, address);
                    step = 2;
                    break;
            }
            rows.push_back(std::move(row));
            if (step == 0) break;
            address += step;
        }
        rows.emplace_back(separator);
    }
    return rows;
}

void ShowListing(ProgramState& st, ListingMode mode, const DecodeAt& decode) {
    // Built whole before the first row goes out, so that a bound failure
    // half way leaves no half listing.
    const std::vector<std::string> rows = ListingRows(st, mode, decode);
    for (const std::string& row : rows) Text2Buffer(st, CrLf() + row);
}

}  // namespace vortelm::shell
