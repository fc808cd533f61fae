#pragma once
// Running user code without an instruction-set simulator: from the jump
// address the board walks instruction by instruction (lengths from its own
// table), follows unconditional jumps and stops at a four-byte long call to
// the core's start, the breakpoint patch.

#include <cstdint>
#include <functional>

namespace vortelm::sim {

constexpr int kWalkBound = 100000;  // instructions before we call it a run for ever

struct WalkResult {
    bool reachedPatch = false;
    uint32_t patchAddress = 0;
    uint32_t returnAddress = 0;  // address behind the patch
};

// Length in bytes (2 or 4) of the instruction with this first byte.
[[nodiscard]] int InstructionLength(uint8_t opcode);

[[nodiscard]] WalkResult Walk(uint32_t start, uint32_t coreStart,
                              const std::function<uint8_t(uint32_t)>& read);

}  // namespace vortelm::sim
