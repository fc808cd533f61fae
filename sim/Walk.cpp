#include "sim/Walk.h"

namespace vortelm::sim {

int InstructionLength(uint8_t op) {
    switch (op & 0x0F) {
        case 0x2:
        case 0x3:
        case 0x4:
        case 0x5:
        case 0x6:
        case 0x7:
        case 0xA:
            return 4;
        default:
            break;
    }
    switch (op) {
        case 0xC4:
        case 0xD4:
        case 0xE4:
        case 0xF4:  // moves with long addresses
        case 0xD7:
        case 0xDA:
        case 0xCA:
        case 0xEA:
        case 0xFA:
            return 4;
        default:
            return 2;
    }
}

WalkResult Walk(uint32_t start, uint32_t coreStart, const std::function<uint8_t(uint32_t)>& read) {
    WalkResult w;
    uint32_t pc = start & 0xFFFFFF;
    for (int steps = 0; steps < kWalkBound; ++steps) {
        const uint8_t op = read(pc);
        const uint8_t b1 = read(pc + 1);
        const uint32_t segment = pc & 0xFF0000;
        if (op == 0xDA) {  // long call: segment, offset
            const uint32_t target =
                (uint32_t(b1) << 16) | read(pc + 2) | (uint32_t(read(pc + 3)) << 8);
            if (target == coreStart) {
                w.reachedPatch = true;
                w.patchAddress = pc;
                w.returnAddress = segment | ((pc + 4) & 0xFFFF);
                return w;
            }
        }
        if (op == 0xFA) {  // long jump: segment, offset
            pc = (uint32_t(b1) << 16) | read(pc + 2) | (uint32_t(read(pc + 3)) << 8);
            continue;
        }
        if (op == 0xEA && (b1 & 0xF0) == 0x00) {  // absolute jump, unconditional
            pc = segment | read(pc + 2) | (uint32_t(read(pc + 3)) << 8);
            continue;
        }
        if (op == 0x0D) {  // relative jump, unconditional: words from the next instruction
            const int rel = static_cast<int8_t>(b1);
            pc = segment | ((pc + 2 + static_cast<uint32_t>(2 * rel)) & 0xFFFF);
            continue;
        }
        pc = segment | ((pc + static_cast<uint32_t>(InstructionLength(op))) & 0xFFFF);
    }
    return w;
}

}  // namespace vortelm::sim
