#pragma once
// S-record files: the reader (S1, S2, S3 data; every other type passed
// over) and the two writers. The format number selects the dialect: 19 for
// S1/S9, 28 for S2/S8, 37 for S3/S7.

#include <cstdint>
#include <string_view>

#include "core/ProgramState.h"

namespace vortelm {

void ReadSRecordFile(ProgramState& st, std::string_view name);
void WriteSRecordRange(ProgramState& st, std::string_view name, int32_t start, int32_t end,
                       int32_t recordSize, int16_t format);
void WriteSRecordSelections(ProgramState& st, std::string_view name, int32_t recordSize,
                            int16_t format);
[[nodiscard]] int32_t LoadSRecordCommand(ProgramState& st, std::string_view name);
[[nodiscard]] int32_t SaveSRecordCommand(ProgramState& st, std::string_view name,
                                         int32_t recordSize, int16_t format);

}  // namespace vortelm
