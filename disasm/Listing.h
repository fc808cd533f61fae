#pragma once
// Listings of code over the dump memory: one row of the assembler view (the
// instruction's bytes and its text) and the walk of one selection as the
// debug window lists it.

#include <cstdint>
#include <functional>
#include <string>

namespace vortelm {
struct ProgramState;
}

namespace vortelm::disasm {

// One row of the assembler view at an address, without the address: the
// instruction's bytes in two digits each, filled with blanks up to four
// bytes, two blanks, and the decoded text; "...." when the byte or the next
// is not Defined, and then the step is 2. ends tells that the listing of
// the selection stops behind this row (an illegal text or length 0).
struct ViewRow {
    std::string text;
    int32_t step = 2;
    bool ends = false;
};
[[nodiscard]] ViewRow AssemblerViewRow(ProgramState& st, int32_t address);

// The walk of the debug window over one selection: from its start rounded
// down to even (towards zero) to its end, unread bytes skipped two at a
// time, each decoded instruction handed to row(address, text); the walk
// ends behind an illegal text or a length of 0.
void ListSelectionCode(ProgramState& st, int32_t start, int32_t end,
                       const std::function<void(int32_t address, const std::string& text)>& row);

}  // namespace vortelm::disasm
