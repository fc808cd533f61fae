#pragma once
// Intel HEX files: the reader, which fills the image and rebuilds the
// selection list from the file, and the two writers (a whole address range,
// or the Defined bytes of the selections). Format 2 writes extended segment
// records (type 02), format 4 extended linear records (type 04); any other
// number is written as the record type of a linear extension.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "core/ProgramState.h"

namespace vortelm {

constexpr int16_t kHexFormatSegment = 2;
constexpr int16_t kHexFormatLinear = 4;

// How the reader goes through a file. The defaults are the fast ways; the
// tests and a fuzz target compare them with the plain line-by-line way.
struct HexReading {
    // Files from this size on are read in two halves at once.
    size_t twoHalvesFrom = size_t(2) << 20;
    // Records that need no warning are decoded by the short way.
    bool plainRecords = true;
};

void ReadHexFile(ProgramState& st, std::string_view name, const HexReading& how = {});
void WriteHexRange(ProgramState& st, std::string_view name, int32_t start, int32_t end,
                   int32_t recordSize, int16_t format);
void WriteHexSelections(ProgramState& st, std::string_view name, int32_t recordSize,
                        int16_t format);
// 0, or -1 when the file is missing.
[[nodiscard]] int32_t LoadHexCommand(ProgramState& st, std::string_view name);
[[nodiscard]] int32_t SaveHexCommand(ProgramState& st, std::string_view name, int32_t recordSize,
                                     int16_t format);

}  // namespace vortelm
