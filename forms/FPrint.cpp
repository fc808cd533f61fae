#include "forms/FPrint.h"

#include "core/Helpers.h"
#include "core/ProgramState.h"
#include "image/Dump.h"

namespace vortelm::forms {

namespace {

constexpr const char* kMargin = "      ";

// Rows of 16 bytes from the selection's start; the text style adds the
// bytes as characters, a point for a byte below 32. The last row ends at
// the selection's end.
void ByteRows(ProgramState& st, int32_t start, int32_t end, bool withText,
              std::vector<std::string>& lines) {
    lines.emplace_back(kPrintHead);
    for (int64_t row = start; row <= end; row += 16) {
        std::string line = kMargin + HexText(static_cast<int32_t>(row), 6) + " : ";
        std::string chars;
        for (int64_t a = row; a < row + 16 && a <= end; ++a) {
            const uint8_t b = ReadDumpByte(st.dump, static_cast<int32_t>(a));
            line += HexText(b, 2) + " ";
            chars += b < 32 ? '.' : static_cast<char>(b);
        }
        if (withText) line += chars;
        lines.push_back(std::move(line));
    }
}

// From the start rounded down to even, instruction by instruction; an
// "Illegal" text ends the selection's listing (so does a length of 0,
// which could not move on).
void AssemblerRows(ProgramState& st, int32_t start, int32_t end, const shell::DecodeAt& decode,
                   std::vector<std::string>& lines) {
    if (!decode) return;
    for (int64_t a = start - (start & 1); a <= end;) {
        const shell::DecodedInstruction d = decode(st, static_cast<int32_t>(a));
        lines.push_back(kMargin + HexText(static_cast<int32_t>(a), 6) + " : " + d.text);
        if (d.text.rfind("Illegal", 0) == 0 || d.byteLength <= 0) break;
        a += d.byteLength;
    }
}

}  // namespace

std::vector<std::string> PrintLines(ProgramState& st, PrintStyle style,
                                    const shell::DecodeAt& decode) {
    std::vector<std::string> lines = {"", ""};
    const SelectionList& sel = st.selections;
    for (int i = 0; i < sel.count; ++i) {
        if (style == PrintStyle::Assembler)
            AssemblerRows(st, sel.start[i], sel.end[i], decode, lines);
        else
            ByteRows(st, sel.start[i], sel.end[i], style == PrintStyle::Text, lines);
        lines.emplace_back("");
        lines.emplace_back(kPrintStars);
        lines.emplace_back("");
    }
    return lines;
}

void FPrint::Form_Load(std::vector<std::string> printers) {
    printers_ = std::move(printers);
    printer_ = printers_.empty() ? -1 : 0;
    if (style_ == PrintStyle::Assembler && !assemblerEnabled()) style_ = PrintStyle::Hex;
}

void FPrint::setPrinter(int index) {
    if (index >= -1 && index < static_cast<int>(printers_.size())) printer_ = index;
}

std::vector<std::string> FPrint::BOk() {
    return PrintLines(st_, style_, decode_);
}

}  // namespace vortelm::forms
