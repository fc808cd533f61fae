#pragma once
// Binary image files: no addresses in the file; the load takes an address
// offset, the save fills the gaps between selections with a fill value, or
// packs them together when the fill value is negative.

#include <cstdint>
#include <string_view>

#include "core/ProgramState.h"

namespace vortelm {

void ReadBinaryFile(ProgramState& st, std::string_view name, int32_t address);
void WriteBinarySelections(ProgramState& st, std::string_view name, int32_t fillValue);
[[nodiscard]] int32_t LoadBinaryCommand(ProgramState& st, std::string_view name, int32_t address);
[[nodiscard]] int32_t SaveBinaryCommand(ProgramState& st, std::string_view name, int32_t fillValue);

}  // namespace vortelm
