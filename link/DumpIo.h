#pragma once
// Byte and mark access to dump memory for the boot sequence, the monitor
// commands and the transfers. The marks are bit 0 Defined, bit 1 Monitor and
// bit 2 Valid of a byte's status; an address at or above 0x1010000, or below
// -65535, is past the dump memory and ends the operation with the program's
// run-time error.

#include <cstdint>
#include <memory>

#include "core/ProgramState.h"
#include "core/RunTimeError.h"

namespace vortelm::link::dumpio {

inline constexpr uint8_t kDefined = 1;
inline constexpr uint8_t kMonitor = 2;
inline constexpr uint8_t kValid = 4;

// The segment of an address, allocated on touch, and the byte's offset in it.
[[nodiscard]] inline DumpSegment& Segment(DumpMemory& dump, int32_t address, uint16_t& offset) {
    int32_t seg = address / 65536;  // truncates towards zero
    CheckBound(seg, DumpMemory::kSegments - 1, "dump memory segment");
    offset = static_cast<uint16_t>(address & 0xFFFF);
    auto& s = dump.segments[static_cast<size_t>(seg)];
    if (!s) s = std::make_unique<DumpSegment>();
    return *s;
}

[[nodiscard]] inline uint8_t Read(DumpMemory& dump, int32_t address) {
    uint16_t o = 0;
    return Segment(dump, address, o).data[o];
}

inline void Write(DumpMemory& dump, int32_t address, uint8_t value) {
    uint16_t o = 0;
    Segment(dump, address, o).data[o] = value;
}

inline void SetMark(DumpMemory& dump, int32_t address, uint8_t mark, bool on) {
    uint16_t o = 0;
    auto& s = Segment(dump, address, o);
    s.status[o] = static_cast<uint8_t>(on ? (s.status[o] | mark) : (s.status[o] & ~mark));
}

[[nodiscard]] inline bool HasMark(DumpMemory& dump, int32_t address, uint8_t mark) {
    uint16_t o = 0;
    return (Segment(dump, address, o).status[o] & mark) != 0;
}

}  // namespace vortelm::link::dumpio
