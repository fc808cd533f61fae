#include "sim/Routine.h"

namespace vortelm::sim {

bool RunRoutine(uint32_t entry, const std::function<uint8_t(uint32_t)>& read,
                std::array<uint16_t, 16>& r) {
    std::array<uint16_t, 16> w = r;
    uint32_t pc = entry & 0xFFFFFF;
    const uint32_t segment = pc & 0xFF0000;
    auto next = [&](uint32_t n) { pc = segment | ((pc + n) & 0xFFFF); };
    for (int steps = 0; steps < kRoutineBound; ++steps) {
        const uint8_t op = read(pc);
        const uint8_t b1 = read(pc + 1);
        switch (op) {
            case 0xE0:  // MOV Rn,#data4
                w[b1 & 0x0F] = static_cast<uint16_t>(b1 >> 4);
                next(2);
                break;
            case 0xE6:  // MOV reg,#data16: only the general registers
                if ((b1 & 0xF0) != 0xF0) return false;
                w[b1 & 0x0F] = static_cast<uint16_t>(read(pc + 2) | (read(pc + 3) << 8));
                next(4);
                break;
            case 0xF0:  // MOV Rn,Rm
                w[b1 >> 4] = w[b1 & 0x0F];
                next(2);
                break;
            case 0xCC:  // NOP
                if (b1 != 0) return false;
                next(2);
                break;
            case 0xCB:  // RET
            case 0xDB:  // RETS
                if (b1 != 0) return false;
                r = w;
                return true;
            default:
                return false;
        }
    }
    return false;
}

}  // namespace vortelm::sim
