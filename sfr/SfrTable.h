#pragma once
// The table of special function registers: read from a controller's .SFR
// text file or from its binary cache (.sb) beside it, and the lookups by
// name and address that the rest of the program uses.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/Types.h"

namespace vortelm {

struct ProgramState;

// The cache's fixed record: 617 bytes of fields and two bytes of nothing.
constexpr size_t kSfrCacheRecordSize = 619;

// Replaces the table from the file, or from its cache when the cache is
// strictly newer. Returns 0, -1 for a missing file, -2 when a bound failure
// ended the load: one "*ERROR: " line names it and the records read so far
// stay in the table, unsorted. ZEROS and ONES are added and the table is
// sorted by name after a good read of the text file, which then writes the
// cache. The caller reloads the display sets.
int ReadSfrFile(ProgramState& st, std::string_view path);

// The cache name: the path up to and including its first point, then "sb".
[[nodiscard]] std::string SfrCachePath(std::string_view path);
// The same for a path that may begin with the program folder: the rule is
// applied to the part behind it, so that a point in the folder where the
// program's data lives (a data home such as ~/.local/share/vortelm) does not
// give every register file one cache outside it.
[[nodiscard]] std::string SfrCachePath(std::string_view path, std::string_view programFolder);

// The cache file itself. WriteSfrCache gives false if it could not write.
bool WriteSfrCache(const ProgramState& st, std::string_view cachePath);
// Throws RunTimeError when the file holds more records than the table.
void ReadSfrCache(ProgramState& st, std::string_view cachePath);
// The records of a cache held in memory (a partial last record is ignored).
void ReadSfrCacheBytes(ProgramState& st, std::span<const uint8_t> bytes);

// Position behind the first token (skipBlanks false: the token's length, or
// the text's length plus 1 at its end) or of the next token (skipBlanks true:
// the characters before it), as the reader counts.
[[nodiscard]] int32_t NextToken(std::string_view text, bool skipBlanks);

// The exchange sort's order (for i, for j: exchange when name i < name j)
// in O(n log n): binary order of names, and among equal names the order that
// exchange sort leaves, which is not their file order.
void SortSfrRecords(std::span<SfrRecord> records, size_t count);

// Lookups, linear from index 0; -1 when nothing matches.
[[nodiscard]] int32_t SfrIndexByName(const ProgramState& st, std::string_view name);
[[nodiscard]] int32_t SfrAddressByName(const ProgramState& st, std::string_view name);
[[nodiscard]] int32_t SfrIndexByAddress(const ProgramState& st, int32_t address);
[[nodiscard]] int32_t SfrIndexByShort(const ProgramState& st, int32_t shortAddress,
                                      int16_t extended = 0);

}  // namespace vortelm
