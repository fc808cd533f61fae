#pragma once
// Access to the memory image. Every function begins with the same access
// step: the address is split into segment (truncated towards zero) and the
// low 16 bits; a segment outside 0 to 256 throws RunTimeError naming the
// bound; a segment not yet there is allocated, also by a read or a test.
// Addresses -1 to -65535 therefore land in segment 0.
//
// The bulk functions behave exactly as the per-byte calls would, address by
// address, but touch each segment once per call.

#include <cstdint>
#include <functional>
#include <span>

#include "core/Types.h"

namespace vortelm {

// The marks of a status byte.
constexpr uint8_t kMarkDefined = 0x01;
constexpr uint8_t kMarkMonitor = 0x02;
constexpr uint8_t kMarkValid = 0x04;

// Lowest and one past the highest address the image holds.
constexpr int32_t kDumpLowestAddress = -65535;
constexpr int32_t kDumpEndAddress = 0x1010000;

void InitDumpMemory(DumpMemory& dump);

void WriteDumpByte(DumpMemory& dump, int32_t address, uint8_t value);
[[nodiscard]] uint8_t ReadDumpByte(DumpMemory& dump, int32_t address);
// A word at the address, low byte first, as the monitor's word commands
// leave and take it; the marks stay as they are.
[[nodiscard]] uint16_t ReadDumpWord(DumpMemory& dump, int32_t address);
void WriteDumpWord(DumpMemory& dump, int32_t address, uint16_t value);
void SetDefined(DumpMemory& dump, int32_t address, int16_t flag);
void SetMonitorMark(DumpMemory& dump, int32_t address, int16_t flag);
void SetValid(DumpMemory& dump, int32_t address, int16_t flag);
[[nodiscard]] int16_t IsDefined(DumpMemory& dump, int32_t address);
[[nodiscard]] int16_t IsMonitorMark(DumpMemory& dump, int32_t address);
[[nodiscard]] int16_t IsValid(DumpMemory& dump, int32_t address);

// True when the segment is allocated (a look that allocates nothing).
[[nodiscard]] bool IsSegmentAllocated(const DumpMemory& dump, int segment);

// ---- bulk operations
// The status of a byte becomes (status | setMarks) & ~clearMarks.
struct MarkChange {
    uint8_t set = 0;
    uint8_t clear = 0;
};
// What a load from a file or a local edit does to the marks.
constexpr MarkChange kMarksLoaded{kMarkDefined, kMarkValid};
// What a read from the target does.
constexpr MarkChange kMarksFromTarget{kMarkDefined | kMarkValid, 0};

// Writes the bytes from address on and changes their marks.
void WriteDumpBlock(DumpMemory& dump, int32_t address, std::span<const uint8_t> bytes,
                    MarkChange marks);
// Writes count copies of one byte from address on and changes their marks.
void FillDumpBlock(DumpMemory& dump, int32_t address, int64_t count, uint8_t value,
                   MarkChange marks);
// Reads values (and, when status is not empty, the status bytes) from address on.
void ReadDumpBlock(DumpMemory& dump, int32_t address, std::span<uint8_t> values,
                   std::span<uint8_t> status = {});
// Changes the marks of count bytes from address on; values stay.
void MarkDumpBlock(DumpMemory& dump, int32_t address, int64_t count, MarkChange marks);

// A piece of the image inside one segment: its values and their status
// bytes, or, where the status bytes of the piece are all alike, no status
// bytes and their one value.
struct DumpPiece {
    const uint8_t* data = nullptr;
    const uint8_t* status = nullptr;  // null when every byte's status is sameStatus
    uint8_t sameStatus = 0;
    size_t length = 0;
    [[nodiscard]] uint8_t statusAt(size_t i) const { return status ? status[i] : sameStatus; }
};

// Calls fn for the pieces of address .. address+count-1, in rising order (for
// writers that hand the bytes on without copying them).
void VisitDumpBlock(DumpMemory& dump, int32_t address, int64_t count,
                    const std::function<void(const DumpPiece&)>& fn);

// The first address in from..to whose status has any of the marks, and the
// last address of its run within from..to. Like the per-byte tests it
// allocates the segments it looks at and throws past the image's bounds.
struct DumpRun {
    bool found = false;
    int32_t first = 0;
    int32_t last = 0;
};
[[nodiscard]] DumpRun FindMarkedRun(DumpMemory& dump, int32_t from, int32_t to, uint8_t marks);

}  // namespace vortelm
