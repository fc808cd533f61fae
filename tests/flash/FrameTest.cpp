// The call frame of both driver generations, slot by slot.

#include <gtest/gtest.h>

#include "core/ProgramState.h"
#include "flash/Flash.h"

namespace vortelm::flash {
namespace {

struct Frames : ::testing::Test {
    ProgramState st;
    int unit = 2;

    void SetUp() override {
        st.memoryUnitCount = 4;
        st.memoryUnits[0].type = "IRAM";
        st.memoryUnits[1].type = "IFLASH";
        st.memoryUnits[2].type = "IFLASH";
        st.memoryUnits[3].type = "FLASH";
        MemoryUnit& u = st.memoryUnits[2];
        u.burstSize = 0x80;
        u.driverBufferAddress = 0x01FC80;
        u.sectionCount = 3;
        u.sections[0].rangeCount = 1;
        u.sections[0].ranges[0].startAddress = 0x230000;
        u.sections[2].rangeCount = 1;
        u.sections[2].ranges[0].startAddress = 0x250000;
        st.CLK = 20'000'499;
    }
    void mode(int m) { st.memoryUnits[2].driverMode = static_cast<int16_t>(m); }
    static void expect(const Frame& f, std::array<int32_t, 8> want) {
        for (size_t i = 0; i < 8; ++i) EXPECT_EQ(f.words.r[i], want[i]) << "R" << (8 + i);
    }
};

TEST_F(Frames, SlotsNameTheRegisters) {
    Frame f;
    f.set(Slot::R8, 1);
    f.set(Slot::R15, 8);
    EXPECT_EQ(f.words.r[0], 1);
    EXPECT_EQ(f.words.r[7], 8);
    EXPECT_EQ(f.get(Slot::R15), 8);
}

TEST_F(Frames, InternalFlashIndexCountsEarlierInternalFlashUnits) {
    EXPECT_EQ(IFlashIndex(st, 0), 0);
    EXPECT_EQ(IFlashIndex(st, 1), 0);
    EXPECT_EQ(IFlashIndex(st, 2), 1);
    EXPECT_EQ(IFlashIndex(st, 3), 2);
    EXPECT_EQ(FirstIFlashUnit(st), 1);
}

TEST_F(Frames, InitialiseAtModeOne) {
    mode(1);
    // the clock in units of 1000, rounded
    expect(InitialiseFrame(st, unit), {0, 0x23, 20000, 0, 0, 0, 0, 0});
    st.CLK = 20'000'500;
    EXPECT_EQ(InitialiseFrame(st, unit).get(Slot::R10), 20001);
}

TEST_F(Frames, ProgramBlockAtBothModes) {
    mode(1);
    expect(ProgramBlockFrame(st, unit, 0x241280), {3, 0x23, 0x24, 0x1280, 1, 0x01, 0xFC80, 0});
    mode(0);
    expect(ProgramBlockFrame(st, unit, 0x241280), {0, 0x80, 0xFC80, 0x01, 0, 0x1280, 0x24, 0});
}

TEST_F(Frames, EraseSectorAtBothModes) {
    mode(1);
    expect(EraseSectorFrame(st, unit, 2), {2, 0x23, 0x25, 0x0000, 2, 0, 0, 0});
    mode(0);
    expect(EraseSectorFrame(st, unit, 2), {1, 0, 0, 0, 0, 1, 2, 0});
}

TEST_F(Frames, ReadStatusAtBothModes) {
    mode(1);
    expect(ReadStatusFrame(st, unit, 1), {5, 0x23, 0, 0, 0, 0, 0, 0});
    mode(0);
    expect(ReadStatusFrame(st, unit, 1), {6, 0, 0, 0, 0, 0, 1, 0});
}

TEST_F(Frames, EraseWordline) {
    expect(EraseWordlineFrame(0x241200), {0x88, 0, 0, 0, 0, 0x1200, 0x24, 0});
}

TEST_F(Frames, PasswordOperationsAreTheSameAtBothModes) {
    for (int m : {0, 1}) {
        mode(m);
        expect(PasswordFrame(st, unit, op::kLock, 5), {0x10, 8, 0xFC80, 0x01, 0, 1, 5, 0});
        expect(PasswordFrame(st, unit, op::kUnlock, 5), {0x11, 8, 0xFC80, 0x01, 0, 1, 5, 0});
        expect(PasswordFrame(st, unit, op::kProtect, 5), {0x20, 8, 0xFC80, 0x01, 0, 0, 0, 0});
        expect(PasswordFrame(st, unit, op::kUnprotect, 5), {0x21, 8, 0xFC80, 0x01, 0, 0, 0, 0});
    }
}

TEST_F(Frames, WriteAssemblyBuffer) {
    for (int m : {0, 1}) {
        mode(m);
        expect(WriteAssemblyBufferFrame(st, unit, 0x80, 0x230000),
               {0, 0x80, 0xFC80, 0x01, 0, 0, 0x23, 1});
    }
}

TEST_F(Frames, SectorPastTheTableIsABoundError) {
    mode(1);
    EXPECT_THROW((void)EraseSectorFrame(st, unit, 129), std::exception);
    EXPECT_NO_THROW((void)EraseSectorFrame(st, unit, 99));
}

}  // namespace
}  // namespace vortelm::flash
