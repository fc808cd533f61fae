#include "disasm/CommandTable.h"

#include <charconv>

#include "core/Helpers.h"
#include "core/ProgramState.h"
#include "core/Text.h"
#include "image/FileText.h"

namespace vortelm::disasm {

namespace {

// A decimal number of at most five digits, nothing else.
bool DecimalField(std::string_view s, int32_t& value) {
    if (s.empty() || s.size() > 5) return false;
    for (char c : s)
        if (c < '0' || c > '9') return false;
    value = 0;
    for (char c : s) value = value * 10 + (c - '0');
    return true;
}

bool HexField(std::string_view s, int32_t& value) {
    if (s.empty() || s.size() > 3) return false;
    value = 0;
    for (char c : s) {
        const int d = kHexDigits.v[static_cast<unsigned char>(c)];
        if (d < 0) return false;
        value = value * 16 + d;
    }
    return true;
}

// The index of the value array a width fills, -1 for a width that moves no bit.
int KindOf(int32_t width) {
    switch (width) {
        case 2:
            return 0;
        case 4:
            return 1;
        case 8:
            return 2;
        case 16:
            return 3;
        default:
            return -1;
    }
}

std::string ParseLine(std::string_view line, InstructionRecord& rec, int32_t& opcode) {
    std::string_view rest = line;
    auto cut = [&rest](std::string_view& piece) {
        const size_t comma = rest.find(',');
        if (comma == std::string_view::npos) return false;
        piece = rest.substr(0, comma);
        rest.remove_prefix(comma + 1);
        return true;
    };
    std::string_view op, mnemonic, length;
    if (!cut(op) || !cut(mnemonic) || !cut(length)) return "fewer than five fields";
    if (!HexField(op, opcode) || opcode > 256)
        return "opcode \"" + std::string(op) + "\" is no number from 0 to 100";
    if (mnemonic.empty()) return "empty mnemonic";
    int32_t len = 0;
    if (!DecimalField(length, len) || len > 8)
        return "length \"" + std::string(length) + "\" is no number from 0 to 8";
    rec.mnemonic = std::string(mnemonic);
    rec.byteLength = static_cast<int16_t>(len);
    rec.fieldCount = 0;
    std::array<int, 4> filled{};
    int32_t bits = 0;
    while (true) {
        std::string_view w;
        const bool last = !cut(w);
        if (last) w = rest;
        if (rec.fieldCount == 9) return "more than nine field widths";
        int32_t width = 0;
        if (!DecimalField(w, width))
            return "field width \"" + std::string(w) + "\" is no decimal number";
        const int kind = KindOf(width);
        if (kind >= 0) {
            if (++filled[static_cast<size_t>(kind)] > 7)
                return "more than seven fields of " + std::to_string(width) + " bits";
            bits += width;
            if (bits > 8 * len)
                return "fields reach past the instruction's " + std::to_string(len) + " bytes";
        }
        rec.fieldWidth[static_cast<size_t>(rec.fieldCount++)] = static_cast<int16_t>(width);
        if (last) break;
    }
    if (rec.fieldCount < 2) return "fewer than two field widths";
    return {};
}

}  // namespace

TableFault ParseCommandTable(std::string_view text, InstructionTable& table) {
    table = InstructionTable{};
    std::array<bool, 257> seen{};
    LineCursor lines(text);
    int32_t number = 0;
    while (!lines.atEnd()) {
        const std::string_view line = lines.next();
        ++number;
        if (line.empty()) continue;
        InstructionRecord rec;
        int32_t opcode = 0;
        std::string why = ParseLine(line, rec, opcode);
        if (why.empty() && seen[static_cast<size_t>(opcode)])
            why = "opcode " + HexText(opcode, 2) + " given twice";
        if (!why.empty()) {
            table = InstructionTable{};
            return {number, why};
        }
        seen[static_cast<size_t>(opcode)] = true;
        table.rows[static_cast<size_t>(opcode)] = std::move(rec);
    }
    table.loaded = true;
    return {};
}

int ReadCommandTableFile(ProgramState& st, std::string_view path) {
    st.instructions = InstructionTable{};
    const std::string name = NativePath(ResolveInProgramFolder(st, path));
    auto file = FileBytes::Open(name);
    if (!file) {
        Text2Buffer(st, "*ERROR: Instruction table " + name +
                            " not found, the disassembler is off" + CrLf());
        return -1;
    }
    const TableFault fault = ParseCommandTable(file->bytes(), st.instructions);
    if (!fault.ok()) {
        Text2Buffer(st, "*ERROR: Instruction table " + name + " line " +
                            std::to_string(fault.line) + ": " + fault.reason +
                            ", the disassembler is off" + CrLf());
        return -2;
    }
    return 0;
}

int ReadCommandTable(ProgramState& st) {
    return ReadCommandTableFile(st, kCommandTableName);
}

}  // namespace vortelm::disasm
