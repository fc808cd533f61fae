// The few instructions of a called routine that the board runs.

#include <gtest/gtest.h>

#include <map>

#include "sim/Routine.h"

namespace vortelm::sim {
namespace {

struct Memory {
    std::map<uint32_t, uint8_t> bytes;
    void put(uint32_t a, std::initializer_list<uint8_t> v) {
        for (uint8_t b : v) bytes[a++] = b;
    }
    std::function<uint8_t(uint32_t)> reader() {
        return [this](uint32_t a) {
            auto it = bytes.find(a);
            return it == bytes.end() ? uint8_t{0} : it->second;
        };
    }
};

TEST(Routine, MovesAndReturn) {
    Memory m;
    // MOV R8,#1234 ; MOV R9,R8 ; MOV R15,#0 ; NOP ; MOV R0,#7 ; RETS
    m.put(0x12000,
          {0xE6, 0xF8, 0x34, 0x12, 0xF0, 0x98, 0xE0, 0x0F, 0xCC, 0x00, 0xE0, 0x70, 0xDB, 0x00});
    std::array<uint16_t, 16> r{};
    r[15] = 0x5555;
    r[10] = 0x00AA;
    ASSERT_TRUE(RunRoutine(0x12000, m.reader(), r));
    EXPECT_EQ(r[8], 0x1234);
    EXPECT_EQ(r[9], 0x1234);
    EXPECT_EQ(r[15], 0);
    EXPECT_EQ(r[0], 7);
    EXPECT_EQ(r[10], 0x00AA);
}

TEST(Routine, AnythingElseLeavesTheRegisters) {
    Memory m;
    m.put(0x100, {0xE0, 0x18, 0x00, 0x00, 0xCB, 0x00});  // an unknown instruction before the return
    std::array<uint16_t, 16> r{};
    r[8] = 0x4242;
    EXPECT_FALSE(RunRoutine(0x100, m.reader(), r));
    EXPECT_EQ(r[8], 0x4242);
    // a move to a register that is no general register
    m.put(0x200, {0xE6, 0x10, 0x01, 0x00, 0xCB, 0x00});
    EXPECT_FALSE(RunRoutine(0x200, m.reader(), r));
    // no return within the bound: a page of NOPs wraps in its segment
    Memory nops;
    for (uint32_t a = 0; a < 0x10000; a += 2) nops.put(0x30000 + a, {0xCC, 0x00});
    EXPECT_FALSE(RunRoutine(0x30000, nops.reader(), r));
    EXPECT_EQ(r[8], 0x4242);
}

}  // namespace
}  // namespace vortelm::sim
