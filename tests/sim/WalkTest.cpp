#include <gtest/gtest.h>

#include <map>

#include "sim/Walk.h"

using vortelm::sim::InstructionLength;
using vortelm::sim::Walk;

namespace {

struct Code {
    std::map<uint32_t, uint8_t> bytes;
    void put(uint32_t a, std::initializer_list<uint8_t> b) {
        for (uint8_t x : b) bytes[a++] = x;
    }
    uint8_t operator()(uint32_t a) const {
        auto it = bytes.find(a);
        return it == bytes.end() ? 0xCC : it->second;  // a field of two-byte no-operations
    }
};

}  // namespace

TEST(Walk, LengthsOfTheInstructionTable) {
    EXPECT_EQ(InstructionLength(0xCC), 2);  // no operation
    EXPECT_EQ(InstructionLength(0x0D), 2);  // relative jump
    EXPECT_EQ(InstructionLength(0xE6), 4);  // move immediate word
    EXPECT_EQ(InstructionLength(0xDA), 4);  // long call
    EXPECT_EQ(InstructionLength(0xFA), 4);  // long jump
    EXPECT_EQ(InstructionLength(0xEA), 4);  // absolute jump
    EXPECT_EQ(InstructionLength(0xF0), 2);  // register move
}

TEST(Walk, FollowsAbsoluteJumpsOnlyWhenUnconditional) {
    Code c;
    c.put(0x1000, {0xEA, 0x20, 0x00, 0x30});  // conditional: falls through
    c.put(0x1004, {0xEA, 0x00, 0x00, 0x20});  // unconditional: to 2000
    c.put(0x2000, {0xDA, 0x00, 0x00, 0xF6});  // the patch
    const auto w = Walk(0x1000, 0xF600, std::cref(c));
    ASSERT_TRUE(w.reachedPatch);
    EXPECT_EQ(w.patchAddress, 0x2000u);
    EXPECT_EQ(w.returnAddress, 0x2004u);
}

TEST(Walk, ALongCallElsewhereIsNotThePatch) {
    Code c;
    c.put(0x1000, {0xDA, 0x00, 0x00, 0x40, 0x0D, 0xFF});  // calls 4000, then loops
    EXPECT_FALSE(Walk(0x1000, 0xF600, std::cref(c)).reachedPatch);
}

TEST(Walk, PatchInAnotherSegmentReturnsThere) {
    Code c;
    c.put(0x05FFFC, {0xDA, 0x00, 0x00, 0xF6});
    const auto w = Walk(0x05FFF0, 0xF600, std::cref(c));
    ASSERT_TRUE(w.reachedPatch);
    EXPECT_EQ(w.returnAddress, 0x050000u);  // the offset wraps inside the segment
}
