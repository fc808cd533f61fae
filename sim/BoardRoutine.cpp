// The board's side of a call to a routine that is neither a driver nor a
// helper: the register bank at CP (R0 to R7) and the frame (R8 to R15) go
// through the routine runner, and what it leaves comes back.

#include "sim/Board.h"
#include "sim/Routine.h"

namespace vortelm::sim {

void Board::runRoutine(uint32_t entry, uint16_t cp, std::array<uint16_t, 8>& r) {
    std::array<uint16_t, 16> gpr{};
    for (uint32_t i = 0; i < 8; ++i) gpr[i] = rawWord(cp + 2 * i);
    for (std::size_t i = 0; i < 8; ++i) gpr[8 + i] = r[i];
    if (!RunRoutine(
            entry, [this](uint32_t a) { return read(a); }, gpr))
        return;
    for (uint32_t i = 0; i < 8; ++i) {
        setRaw(cp + 2 * i, static_cast<uint8_t>(gpr[i] & 0xFF));
        setRaw(cp + 2 * i + 1, static_cast<uint8_t>(gpr[i] >> 8));
    }
    for (std::size_t i = 0; i < 8; ++i) r[i] = gpr[8 + i];
}

}  // namespace vortelm::sim
