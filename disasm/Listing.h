#pragma once
// The walk of one selection as the debug window lists its code.

#include <cstdint>
#include <functional>
#include <string>

namespace vortelm {
struct ProgramState;
}

namespace vortelm::disasm {

// The walk of the debug window over one selection: from its start rounded
// down to even (towards zero) to its end, unread bytes skipped two at a
// time, each decoded instruction handed to row(address, text); the walk
// ends behind an illegal text or a length of 0.
void ListSelectionCode(ProgramState& st, int32_t start, int32_t end,
                       const std::function<void(int32_t address, const std::string& text)>& row);

}  // namespace vortelm::disasm
