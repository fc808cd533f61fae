#pragma once
// Byte and mark access to dump memory for the boot sequence, the monitor
// commands and the transfers, on top of the memory image's functions (an
// address past the image ends the operation with the run-time error).

#include <cstdint>

#include "core/Types.h"
#include "image/Dump.h"

namespace vortelm::link::dumpio {

inline constexpr uint8_t kDefined = kMarkDefined;
inline constexpr uint8_t kMonitor = kMarkMonitor;
inline constexpr uint8_t kValid = kMarkValid;

[[nodiscard]] inline uint8_t Read(DumpMemory& dump, int32_t address) {
    return ReadDumpByte(dump, address);
}

inline void Write(DumpMemory& dump, int32_t address, uint8_t value) {
    WriteDumpByte(dump, address, value);
}

inline void SetMark(DumpMemory& dump, int32_t address, uint8_t mark, bool on) {
    const int16_t flag = on ? kTrue : kFalse;
    if (mark == kDefined) SetDefined(dump, address, flag);
    if (mark == kMonitor) SetMonitorMark(dump, address, flag);
    if (mark == kValid) SetValid(dump, address, flag);
}

[[nodiscard]] inline bool HasMark(DumpMemory& dump, int32_t address, uint8_t mark) {
    if (mark == kDefined) return IsDefined(dump, address) != 0;
    if (mark == kMonitor) return IsMonitorMark(dump, address) != 0;
    return IsValid(dump, address) != 0;
}

}  // namespace vortelm::link::dumpio
