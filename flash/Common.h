#pragma once
// What the flash operations share: the common beginning (connection and
// kernel features), the busy pointer for the length of an operation, the
// driver buffer mirrored in the dump memory, and the driver call.

#include <cstdint>
#include <span>
#include <string_view>

#include "core/BusyScope.h"
#include "core/ProgramState.h"
#include "flash/Flash.h"

namespace vortelm::flash::detail {

// Steps 1 and 2 of every flash operation: 0, -100 or -101, each logged.
[[nodiscard]] int CheckConnectedWithDriverFeatures(ProgramState& st);

// The busy pointer while it lives; the default pointer when it ends, also
// when a bound error ends the operation.
using Busy = BusyScope;

// Loads the unit's driver unless it is the one loaded: 0 or LoadDriver's
// failure. The busy pointer is set again after a load.
[[nodiscard]] int EnsureDriver(target::Target& t, Busy& busy, std::string_view operationName,
                               int unit);

// Stores one byte of the driver buffer in the dump memory, with its
// Defined mark.
void StoreBufferByte(ProgramState& st, int32_t address, uint8_t value);

// Sends `length` bytes of the dump memory from the address: 0 or the
// exchange's failure.
[[nodiscard]] int16_t SendBuffer(target::Target& t, int32_t address, int32_t length);

// Calls the unit's driver with the frame: the exchange's result.
[[nodiscard]] int16_t CallDriver(target::Target& t, int unit, Frame& frame);

// The unit record, after the bound test of its index.
[[nodiscard]] MemoryUnit& UnitOf(ProgramState& st, int unit);

}  // namespace vortelm::flash::detail
