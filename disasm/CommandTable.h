#pragma once
// The reader of the instruction table file: one line per opcode, comma
// separated without blanks: opcode (hexadecimal), mnemonic, length in bytes
// (decimal), then two to nine field widths (decimal).

#include <cstdint>
#include <string>
#include <string_view>

#include "core/InstructionTable.h"

namespace vortelm {
struct ProgramState;
}

namespace vortelm::disasm {

// Where the table lies, relative to the program folder.
inline constexpr std::string_view kCommandTableName = "CMDDEF\\command.cmd";

// What went wrong in a table text: the line (from 1) and why; line 0 and
// an empty reason when all went well.
struct TableFault {
    int32_t line = 0;
    std::string reason;
    [[nodiscard]] bool ok() const { return reason.empty(); }
};

// Fills the table from the text. A line is accepted when its opcode is a
// hexadecimal number of at most three digits up to 100, its mnemonic is not
// empty, its length a decimal number from 0 to 8, and it has two to nine
// widths, each a decimal number, with no more than seven fields of one kind
// (2, 4, 8 or 16 bits) and no field reaching past the instruction's bits.
// An opcode given twice is a fault; empty lines are passed over. On a fault
// the table is left empty and not loaded. The counters are zeroed.
[[nodiscard]] TableFault ParseCommandTable(std::string_view text, InstructionTable& table);

// Reads the table file of the program folder into st.instructions. Returns
// 0, -1 when the file is missing (one "*ERROR: " line names it), -2 when a
// line is malformed (one "*ERROR: " line names the file, the line and why).
// After a failure the decoder has no rows and every byte decodes as
// "Illegal Instruction"; the rest of the program works on.
int ReadCommandTable(ProgramState& st);

// The same for a given file name (resolved as the program resolves names).
int ReadCommandTableFile(ProgramState& st, std::string_view path);

}  // namespace vortelm::disasm
