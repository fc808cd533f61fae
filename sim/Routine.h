#pragma once
// The least the board needs to run a small routine that a call starts: a
// few register moves and the return. A routine made of
//   E0 (d<<4|n)        MOV Rn,#d     (4-bit constant)
//   E6 (F0|n) lo hi    MOV Rn,#word  (register by its short address F0..FF)
//   F0 (n<<4|m)        MOV Rn,Rm
//   CC 00              NOP
//   CB 00 / DB 00      RET / RETS
// runs: the registers R0 to R15 change as the moves say and the call
// returns them. A routine that holds anything else, or does not return
// within a bound, is not run, and the call returns the registers unchanged.

#include <array>
#include <cstdint>
#include <functional>

namespace vortelm::sim {

constexpr int kRoutineBound = 1000;  // instructions before we give up

// True when the routine ran to its return; r holds R0 to R15 in and out
// (unchanged when it did not run).
[[nodiscard]] bool RunRoutine(uint32_t entry, const std::function<uint8_t(uint32_t)>& read,
                              std::array<uint16_t, 16>& r);

}  // namespace vortelm::sim
