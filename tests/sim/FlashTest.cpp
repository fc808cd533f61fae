#include <gtest/gtest.h>

#include "Client.h"

using simtest::Client;
using Regs = std::array<uint16_t, 8>;  // R8 .. R15

namespace {

// Boots the default board, switches the external flash on and loads a driver.
uint32_t Prepare(Client& c, const std::string& driver) {
    EXPECT_TRUE(c.bootDefault());
    EXPECT_TRUE(c.writeWord(0xFE18, 0x4008));  // ADDRSEL1
    EXPECT_TRUE(c.writeWord(0xFF14, 0x0400));  // BUSCON1
    return c.download(driver);
}

int ReadGpr(Client& c, int n) {
    const int cp = c.readWord(0xFE10);
    return c.readWord(static_cast<uint32_t>(cp + 2 * n));
}

}  // namespace

TEST(Flash, PlainWritesToFlashChangeNothing) {
    Client c;
    ASSERT_TRUE(c.bootDefault());
    ASSERT_TRUE(c.writeBlock(0x010000, {1, 2, 3, 4}));
    auto r = c.readBlock(0x010000, 4);
    ASSERT_TRUE(r);
    EXPECT_EQ(*r, (std::vector<uint8_t>{0xFF, 0xFF, 0xFF, 0xFF}));
}

TEST(Flash, ModeOneInitialisationReportsGeometry) {
    Client c;
    const uint32_t entry = Prepare(c, "DRIVER/ALD4IFL1.HEX");
    EXPECT_EQ(entry, 0xF900u);
    Regs r{0, 0x0001, 20000, 0, 0, 0, 0, 0};
    ASSERT_TRUE(c.call(entry, r));
    EXPECT_EQ(r[7], 0);       // R15
    EXPECT_EQ(r[3], 0x80FF);  // R11: burst 80, blank FF
    EXPECT_EQ(r[1], 0x0000);  // R9: buffer high
    EXPECT_EQ(r[2], 0xFC80);  // R10: buffer low
    EXPECT_EQ(ReadGpr(c, 15), 0);
}

TEST(Flash, ModeOneProgramEraseAndFailingCell) {
    Client c;
    const uint32_t entry = Prepare(c, "DRIVER/ALD4IFL1.HEX");
    Regs r{3, 0x0001, 0x0002, 0x0000, 1, 0x0000, 0xFC80, 0};
    Regs before = r;
    ASSERT_TRUE(c.call(entry, r));
    EXPECT_EQ(r[7], 3) << "programming before the initialisation fails";
    Regs init{0, 0x0001, 20000, 0, 0, 0, 0, 0};
    ASSERT_TRUE(c.call(entry, init));
    std::vector<uint8_t> block(128);
    for (std::size_t i = 0; i < block.size(); ++i) block[i] = static_cast<uint8_t>(0xF0 - i);
    ASSERT_TRUE(c.writeBlock(0xFC80, block));
    r = before;
    ASSERT_TRUE(c.call(entry, r));
    EXPECT_EQ(r[7], 0);
    auto got = c.readBlock(0x020000, 128);
    ASSERT_TRUE(got);
    EXPECT_EQ(*got, block);
    // a blank byte programs nothing: all ones on top passes and changes nothing
    ASSERT_TRUE(c.writeBlock(0xFC80, std::vector<uint8_t>(128, 0xFF)));
    r = before;
    ASSERT_TRUE(c.call(entry, r));
    EXPECT_EQ(r[7], 0);
    EXPECT_EQ(*c.readBlock(0x020000, 128), block);
    // programming can only clear bits: a value that needs a set bit fails
    ASSERT_TRUE(c.writeBlock(0xFC80, std::vector<uint8_t>(128, 0x0F)));
    r = before;
    ASSERT_TRUE(c.call(entry, r));
    EXPECT_NE(r[7], 0);
    Regs st{5, 0x0001, 0, 0, 0, 0, 0, 0};
    ASSERT_TRUE(c.call(entry, st));
    EXPECT_EQ(st[1] & 0x0002, 0x0002) << "error bit of the status word";
    // erase sector 1 (starts at 020000)
    Regs er{2, 0x0001, 0x0002, 0x0000, 1, 0, 0, 0};
    ASSERT_TRUE(c.call(entry, er));
    EXPECT_EQ(er[7], 0);
    got = c.readBlock(0x020000, 4);
    EXPECT_EQ(*got, (std::vector<uint8_t>{0xFF, 0xFF, 0xFF, 0xFF}));
    // a wrong sector start or number is refused
    Regs bad{2, 0x0001, 0x0003, 0x0000, 1, 0, 0, 0};
    ASSERT_TRUE(c.call(entry, bad));
    EXPECT_NE(bad[7], 0);
    Regs far{2, 0x0001, 0x0002, 0x0000, 0x99, 0, 0, 0};
    ASSERT_TRUE(c.call(entry, far));
    EXPECT_NE(far[7], 0);
}

TEST(Flash, SectionWithTwoRangesErasesBoth) {
    Client c;
    const uint32_t entry = Prepare(c, "DRIVER/ALD4IFL1.HEX");
    Regs init{0, 0x0001, 20000, 0, 0, 0, 0, 0};
    ASSERT_TRUE(c.call(entry, init));
    ASSERT_TRUE(c.writeBlock(0xFC80, std::vector<uint8_t>(128, 0x00)));
    for (uint16_t low : {uint16_t{0x0000}, uint16_t{0x8000}}) {
        Regs p{3, 0x0001, 0x0001, low, 1, 0x0000, 0xFC80, 0};
        ASSERT_TRUE(c.call(entry, p));
        ASSERT_EQ(p[7], 0);
    }
    Regs er{2, 0x0001, 0x0001, 0x0000, 0, 0, 0, 0};
    ASSERT_TRUE(c.call(entry, er));
    EXPECT_EQ(er[7], 0);
    EXPECT_EQ(c.readWord(0x010000), 0xFFFF);
    EXPECT_EQ(c.readWord(0x018000), 0xFFFF);
}

TEST(Flash, LockUnlockWithPassword) {
    Client c;
    const uint32_t entry = Prepare(c, "DRIVER/ALD4IFL1.HEX");
    Regs init{0, 0x0001, 20000, 0, 0, 0, 0, 0};
    ASSERT_TRUE(c.call(entry, init));
    ASSERT_TRUE(c.writeBlock(0xFC80, {'S', 'E', 'C', ' ', ' ', ' ', ' ', ' '}));
    Regs lock{0x10, 8, 0xFC80, 0x0000, 0, 0, 2, 0};
    ASSERT_TRUE(c.call(entry, lock));
    EXPECT_EQ(lock[7], 0);
    Regs st{5, 0x0001, 0, 0, 0, 0, 0, 0};
    ASSERT_TRUE(c.call(entry, st));
    EXPECT_EQ(st[1] & 0x0008, 0x0008);
    // sector 2 (030000) is locked: erase fails
    Regs er{2, 0x0001, 0x0003, 0x0000, 2, 0, 0, 0};
    ASSERT_TRUE(c.call(entry, er));
    EXPECT_NE(er[7], 0);
    ASSERT_TRUE(c.writeBlock(0xFC80, {'B', 'A', 'D', ' ', ' ', ' ', ' ', ' '}));
    Regs un{0x11, 8, 0xFC80, 0x0000, 0, 0, 2, 0};
    ASSERT_TRUE(c.call(entry, un));
    EXPECT_NE(un[7], 0) << "wrong password";
    ASSERT_TRUE(c.writeBlock(0xFC80, {'S', 'E', 'C', ' ', ' ', ' ', ' ', ' '}));
    un = {0x11, 8, 0xFC80, 0x0000, 0, 0, 2, 0};
    ASSERT_TRUE(c.call(entry, un));
    EXPECT_EQ(un[7], 0);
    er = {2, 0x0001, 0x0003, 0x0000, 2, 0, 0, 0};
    ASSERT_TRUE(c.call(entry, er));
    EXPECT_EQ(er[7], 0);
}

TEST(Flash, ProtectHidesTheUnitUntilUnprotected) {
    Client c;
    const uint32_t entry = Prepare(c, "DRIVER/ALD4IFL1.HEX");
    Regs init{0, 0x0001, 20000, 0, 0, 0, 0, 0};
    ASSERT_TRUE(c.call(entry, init));
    ASSERT_TRUE(c.writeBlock(0xFC80, {'P', 'W', '1', '2', '3', '4', '5', '6'}));
    Regs pr{0x20, 8, 0xFC80, 0x0000, 0, 0, 0, 0};
    ASSERT_TRUE(c.call(entry, pr));
    EXPECT_EQ(pr[7], 0);
    EXPECT_EQ(c.readWord(0x010000), 0x0000) << "read protection";
    Regs st{5, 0x0001, 0, 0, 0, 0, 0, 0};
    ASSERT_TRUE(c.call(entry, st));
    EXPECT_EQ(st[1] & 0x0004, 0x0004);
    ASSERT_TRUE(c.writeBlock(0xFC80, {'P', 'W', '1', '2', '3', '4', '5', '7'}));
    Regs un{0x21, 8, 0xFC80, 0x0000, 0, 0, 0, 0};
    ASSERT_TRUE(c.call(entry, un));
    EXPECT_NE(un[7], 0);
    ASSERT_TRUE(c.writeBlock(0xFC80, {'P', 'W', '1', '2', '3', '4', '5', '6'}));
    un = {0x21, 8, 0xFC80, 0x0000, 0, 0, 0, 0};
    ASSERT_TRUE(c.call(entry, un));
    EXPECT_EQ(un[7], 0);
    EXPECT_EQ(c.readWord(0x010000), 0xFFFF);
}

TEST(Flash, ModeZeroProgramEraseWordlineAndStatus) {
    Client c;
    const uint32_t entry = Prepare(c, "DRIVER/ALD4XFL0.HEX");
    ASSERT_TRUE(c.writeBlock(0xFC80, std::vector<uint8_t>(128, 0x5A)));
    // program: R9 burst, R10/R11 buffer low/high, R13/R14 address low/high
    Regs p{0, 0x80, 0xFC80, 0x0000, 0, 0x0100, 0x0040, 0};
    ASSERT_TRUE(c.call(entry, p));
    EXPECT_EQ(p[7], 0);
    EXPECT_EQ(c.readWord(0x400100), 0x5A5A);
    EXPECT_EQ(c.readWord(0x40017E), 0x5A5A);
    // wordline erase of 400100: 256 bytes; R15 is read from the register bank
    Regs wl{0x88, 0, 0, 0, 0, 0x0123, 0x0040, 0};
    ASSERT_TRUE(c.call(entry, wl));
    EXPECT_EQ(ReadGpr(c, 15), 0);
    EXPECT_EQ(c.readWord(0x400100), 0xFFFF);
    // sector erase by number
    Regs p2{0, 0x80, 0xFC80, 0x0000, 0, 0x0000, 0x0041, 0};
    ASSERT_TRUE(c.call(entry, p2));
    EXPECT_EQ(c.readWord(0x410000), 0x5A5A);
    Regs er{1, 0, 0, 0, 0, 0, 1, 0};
    ASSERT_TRUE(c.call(entry, er));
    EXPECT_EQ(er[7], 0);
    EXPECT_EQ(c.readWord(0x410000), 0xFFFF);
    // status word 1: lock bits
    ASSERT_TRUE(c.writeBlock(0xFC80, {'K', 'E', 'Y', ' ', ' ', ' ', ' ', ' '}));
    Regs lock{0x10, 8, 0xFC80, 0x0000, 0, 1, 3, 0};
    ASSERT_TRUE(c.call(entry, lock));
    EXPECT_EQ(lock[7], 0);
    Regs st{6, 0, 0, 0, 0, 0, 1, 0};
    ASSERT_TRUE(c.call(entry, st));
    EXPECT_EQ(st[1], 0x0008);
}

TEST(Flash, ExternalFlashNeedsItsActivationAndShowsItsMappedWindow) {
    Client c;
    ASSERT_TRUE(c.bootDefault());
    const uint32_t entry = c.download("DRIVER/ALD4XFL0.HEX");
    Regs p{0, 0x80, 0xFC80, 0x0000, 0, 0x0000, 0x0040, 0};
    ASSERT_TRUE(c.call(entry, p));
    EXPECT_NE(p[7], 0) << "the bus to the external flash is off";
    ASSERT_TRUE(c.writeWord(0xFE18, 0x4008));
    ASSERT_TRUE(c.writeWord(0xFF14, 0x0400));
    ASSERT_TRUE(c.writeBlock(0xFC80, std::vector<uint8_t>(128, 0x12)));
    p = {0, 0x80, 0xFC80, 0x0000, 0, 0x0000, 0x0040, 0};
    ASSERT_TRUE(c.call(entry, p));
    EXPECT_EQ(p[7], 0);
    EXPECT_EQ(c.readWord(0x200000), 0x0000) << "window not mapped yet";
    ASSERT_TRUE(c.writeWord(0xFE1A, 0x2003));
    EXPECT_EQ(c.readWord(0x200000), 0x1212);
}

TEST(Flash, AssemblyBufferWrite) {
    Client c("", "ZT7000_BB");
    ASSERT_EQ(c.boot("KERNEL/ZT7LDR.HEX", "KERNEL/ZT7CORE.HEX").coreAck, 0x03);
    const uint32_t entry = c.download("DRIVER/ZT7IFL1.HEX");
    Regs init{0, 0x00C0, 20000, 0, 0, 0, 0, 0};
    ASSERT_TRUE(c.call(entry, init));
    EXPECT_EQ(init[3], 0x8000);  // burst 80, blank 00
    EXPECT_EQ(init[2], 0xD000);
    // an erased-low flash sets bits: 55 goes in, AA on top of it cannot
    ASSERT_TRUE(c.writeBlock(0xD000, std::vector<uint8_t>(0x10, 0x55)));
    Regs asb{0, 0x10, 0xD000, 0x0000, 0, 0x0000, 0x00C0, 1};
    ASSERT_TRUE(c.call(entry, asb));
    EXPECT_EQ(asb[7], 0);
    EXPECT_EQ(c.readWord(0xC0000E), 0x5555);
    EXPECT_EQ(c.readWord(0xC00010), 0x0000);
    ASSERT_TRUE(c.writeBlock(0xD000, std::vector<uint8_t>(0x10, 0xAA)));
    asb = {0, 0x10, 0xD000, 0x0000, 0, 0x0000, 0x00C0, 1};
    ASSERT_TRUE(c.call(entry, asb));
    EXPECT_NE(asb[7], 0);
    EXPECT_EQ(c.readWord(0xC00000), 0xFFFF);
}

TEST(Flash, ModeZeroDriverOfTheZtFamily) {
    Client c("", "ZTA9Y_BB");
    ASSERT_EQ(c.boot("KERNEL/ZTA9YLDR.HEX", "KERNEL/ZTA9YCOR.HEX").coreAck, 0x03);
    const uint32_t entry = c.download("DRIVER/ZTIFL0.HEX");
    ASSERT_TRUE(c.writeBlock(0xFC80, std::vector<uint8_t>(128, 0x3C)));
    Regs p{0, 0x80, 0xFC80, 0x0000, 0, 0x4000, 0x00C0, 0};
    ASSERT_TRUE(c.call(entry, p));
    EXPECT_EQ(p[7], 0);
    EXPECT_EQ(c.readWord(0xC04000), 0x3C3C);
    Regs er{1, 0, 0, 0, 0, 0, 1, 0};
    ASSERT_TRUE(c.call(entry, er));
    EXPECT_EQ(c.readWord(0xC04000), 0xFFFF);
}

TEST(Flash, RealFlashTimeKeepsTheFlashBusyWhileAnEraseRuns) {
    Client c("?flashtime=real");
    const uint32_t entry = Prepare(c, "DRIVER/ALD4XFL0.HEX");
    Regs er{1, 0, 0, 0, 0, 0, 1, 0};
    const int64_t t0 = c.now;
    ASSERT_TRUE(c.call(entry, er));
    EXPECT_EQ(er[7], 0);
    EXPECT_LT(c.now - t0, 400'000) << "the erase runs on after the driver returns";
    Regs st{6, 0, 0, 0, 0, 0, 0, 0};
    ASSERT_TRUE(c.call(entry, st));
    EXPECT_EQ(st[1] & 0x0001, 0x0001) << "busy bit while the erase runs";
    // the next program waits for the erase to end before it answers
    ASSERT_TRUE(c.writeBlock(0xFC80, std::vector<uint8_t>(128, 0x3C)));
    Regs p{0, 0x80, 0xFC80, 0x0000, 0, 0x0000, 0x0041, 0};
    ASSERT_TRUE(c.call(entry, p));
    EXPECT_EQ(p[7], 0);
    EXPECT_GE(c.now - t0, 400'000);
    st = Regs{6, 0, 0, 0, 0, 0, 0, 0};
    ASSERT_TRUE(c.call(entry, st));
    EXPECT_EQ(st[1] & 0x0001, 0) << "ready once the erase has ended";
}

TEST(Flash, NoFlashTimeNeverShowsBusy) {
    Client c;
    const uint32_t entry = Prepare(c, "DRIVER/ALD4XFL0.HEX");
    Regs er{1, 0, 0, 0, 0, 0, 1, 0};
    ASSERT_TRUE(c.call(entry, er));
    Regs st{6, 0, 0, 0, 0, 0, 0, 0};
    ASSERT_TRUE(c.call(entry, st));
    EXPECT_EQ(st[1] & 0x0001, 0);
}

TEST(Helpers, PllconAndRstconTakeTheTrailingZeroAndReply) {
    Client z("", "ZTA9Y_BB");
    ASSERT_EQ(z.boot("KERNEL/ZTA9YLDR.HEX", "KERNEL/ZTA9YCOR.HEX").coreAck, 0x03);
    const uint32_t entry = z.download("ZTPROG/PLLCON.HEX");
    Regs r{0x1234, 0, 0, 0, 0, 0, 0, 0};
    int extra = -1;
    ASSERT_TRUE(z.call(entry, r, true, &extra));
    EXPECT_EQ(extra, 0x01);
    EXPECT_EQ(z.readWord(0xF0AC), 0x1234);
    EXPECT_TRUE(z.simple(0x93)) << "nothing left over on the line";
    // the monitor's own word write cannot change PLLCON
    ASSERT_TRUE(z.writeWord(0xF0AC, 0x0000));
    EXPECT_EQ(z.readWord(0xF0AC), 0x1234);

    Client a;
    ASSERT_TRUE(a.bootDefault());
    const uint32_t rentry = a.download("MCPROG/RSTCON.HEX");
    Regs rr{0x00A5, 0, 0, 0, 0, 0, 0, 0};
    ASSERT_TRUE(a.call(rentry, rr, true, &extra));
    EXPECT_EQ(extra, 0x01);
    EXPECT_EQ(a.readWord(0xF1E0), 0x00A5);
}
