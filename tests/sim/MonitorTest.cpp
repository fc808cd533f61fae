#include <gtest/gtest.h>

#include "Client.h"

using simtest::Client;

TEST(Monitor, BlockWriteAndReadWithChecksums) {
    Client c;
    ASSERT_TRUE(c.bootDefault());
    std::vector<uint8_t> data(300);
    uint8_t x = 0;
    for (std::size_t i = 0; i < data.size(); ++i) {
        data[i] = static_cast<uint8_t>(i * 13 + 5);
        x ^= data[i];
    }
    int cs = -1;
    ASSERT_TRUE(c.writeBlock(0x100000, data, &cs));
    EXPECT_EQ(cs, x);
    auto back = c.readBlock(0x100000, 300, &cs);
    ASSERT_TRUE(back);
    EXPECT_EQ(*back, data);
    EXPECT_EQ(cs, x);
}

TEST(Monitor, ZeroLengthBlocksAreAnswered) {
    Client c;
    ASSERT_TRUE(c.bootDefault());
    int cs = -1;
    EXPECT_TRUE(c.writeBlock(0x100000, {}, &cs));
    EXPECT_EQ(cs, 0);
    auto r = c.readBlock(0x100000, 0, &cs);
    ASSERT_TRUE(r);
    EXPECT_TRUE(r->empty());
}

TEST(Monitor, WordWriteAndRead) {
    Client c;
    ASSERT_TRUE(c.bootDefault());
    EXPECT_TRUE(c.writeWord(0xFB00, 0xBEEF));
    EXPECT_EQ(c.readWord(0xFB00), 0xBEEF);
    EXPECT_EQ(c.readWord(0xF07E), 0x1820);  // manufacturer register
}

TEST(Monitor, UnknownAndUnofferedCommandsGetNoAnswer) {
    Client c;
    ASSERT_TRUE(c.bootDefault());
    c.send1(0x77);
    EXPECT_EQ(c.recv1(300'000), -1);
    c.send1(0xCC);  // ASC1 switch: not offered by the ALD4 core
    EXPECT_EQ(c.recv1(300'000), -1);
    EXPECT_TRUE(c.simple(0x93));

    Client s;
    auto r = s.boot("KERNEL/ALD4SLDR.HEX", "KERNEL/ALD4SCOR.HEX", false);
    ASSERT_EQ(r.coreAck, 0x03);
    s.send1(0xCD);  // READWORD is missing in the small kernel
    EXPECT_EQ(s.recv1(300'000), -1);
    EXPECT_TRUE(s.simple(0x93));
    auto b = s.readBlock(0xF07E, 2);
    ASSERT_TRUE(b);
    EXPECT_EQ((*b)[0] | ((*b)[1] << 8), 0x1820);
}

TEST(Monitor, WriteIntoTheCoreKillsIt) {
    Client c;
    ASSERT_TRUE(c.bootDefault());
    EXPECT_TRUE(c.writeWord(0xF5FE, 1));  // just below the core
    EXPECT_TRUE(c.writeWord(0xF900, 1));  // just above
    c.send1(0x84);
    ASSERT_EQ(c.recv1(), 0xAA);
    c.send({0xF0, 0xF8, 0x00, 0x20, 0x00});  // F8F0, 32 bytes: ends in the core's last bytes
    c.send(std::vector<uint8_t>(32, 0));
    EXPECT_EQ(c.recv1(300'000), -1);
    c.send1(0x93);
    EXPECT_EQ(c.recv1(300'000), -1);
    c.send1(0x00);
    EXPECT_EQ(c.recv1(300'000), -1);
}

TEST(Monitor, EinitLocksSysconAndBuscon0) {
    Client c;
    ASSERT_TRUE(c.bootDefault());
    EXPECT_EQ(c.readWord(0xFF12), 0x0090);
    ASSERT_TRUE(c.writeWord(0xFF12, 0x0094));
    EXPECT_EQ(c.readWord(0xFF12), 0x0094);
    ASSERT_TRUE(c.simple(0x31));
    ASSERT_TRUE(c.writeWord(0xFF12, 0x0000));
    EXPECT_EQ(c.readWord(0xFF12), 0x0094);
    ASSERT_TRUE(c.writeWord(0xFF0C, 0x0000));
    EXPECT_EQ(c.readWord(0xFF0C), 0x04C0);
    ASSERT_TRUE(c.writeWord(0xFE12, 0xFB80));  // SP is not locked
    EXPECT_EQ(c.readWord(0xFE12), 0xFB80);
}

TEST(Monitor, RegistersHaveTheirResetValues) {
    Client c;
    ASSERT_TRUE(c.bootDefault());
    EXPECT_EQ(c.readWord(0xFF0C), 0x04C0);  // BUSCON0
    EXPECT_EQ(c.readWord(0xFE10), 0xFC00);  // CP
    EXPECT_EQ(c.readWord(0xFE12), 0xFC00);  // SP
    EXPECT_EQ(c.readWord(0xFF10), 0x0000);  // PSW
    EXPECT_EQ(c.readWord(0xFE02), 0x0001);  // DPP1
    EXPECT_EQ(c.readWord(0xF07A), 0x3040);  // IDMEM
    ASSERT_TRUE(c.writeWord(0xF07E, 0));    // identification registers are read-only
    EXPECT_EQ(c.readWord(0xF07E), 0x1820);

    Client z("", "ZTA9Y_BB");
    ASSERT_EQ(z.boot("KERNEL/ZTA9YLDR.HEX", "KERNEL/ZTA9YCOR.HEX").coreAck, 0x03);
    EXPECT_EQ(z.readWord(0xF0A0), 0x3200);  // RSTCFG
    EXPECT_EQ(z.readWord(0xF0A2), 0xC000);  // SYSSTAT
    EXPECT_EQ(z.readWord(0xF0A4), 0x0200);  // RSTCON2
    EXPECT_EQ(z.readWord(0xF0A6), 0x4000);  // TSTMOD
    EXPECT_EQ(z.readWord(0xF0A8), 0x0020);  // FCONCS0
    EXPECT_EQ(z.readWord(0xF07E), 0x1821);
}

TEST(Monitor, SoftwareResetRunsTheApplication) {
    Client c;
    ASSERT_TRUE(c.bootDefault());
    EXPECT_TRUE(c.simple(0x32));
    c.send1(0x93);
    EXPECT_EQ(c.recv1(300'000), -1);
    c.send1(0x00);
    EXPECT_EQ(c.recv1(300'000), -1);
}

TEST(Monitor, JumpToCoreStartRestartsTheCore) {
    Client c;
    ASSERT_TRUE(c.bootDefault());
    ASSERT_TRUE(c.go(0xF600));
    EXPECT_EQ(c.recv1(), 0x03);
    EXPECT_TRUE(c.simple(0x93));
}

TEST(Monitor, RelocatedCoreRunsAfterAJump) {
    Client c;
    ASSERT_TRUE(c.bootDefault());
    auto core = simtest::Flatten(simtest::ReadHex(simtest::DataDir() + "/KERNEL/ALD4CORE.HEX"));
    ASSERT_TRUE(c.writeBlock(0x00F900, core));
    ASSERT_TRUE(c.go(0x00F900));
    EXPECT_EQ(c.recv1(), 0x03);
    EXPECT_TRUE(c.writeWord(0xF600, 0x1111));   // the old place is free now
    EXPECT_FALSE(c.writeWord(0xF900, 0x1111));  // the new one is the core
}

TEST(Monitor, WordSequenceWritesFromTheBuffer) {
    Client c;
    ASSERT_TRUE(c.bootDefault());
    std::vector<uint8_t> entries = {0x00, 0xFB, 0x00, 0x00, 0x34, 0x12,   // FB00 <- 1234
                                    0x02, 0x00, 0x10, 0x00, 0x78, 0x56};  // 100002 <- 5678
    ASSERT_TRUE(c.writeBlock(0xFC80, entries));
    c.send1(0xCE);
    ASSERT_EQ(c.recv1(), 0xAA);
    auto h = Client::Addr(0xFC80);
    h.push_back(2);
    c.send(h);
    ASSERT_EQ(c.recv1(), 0xEA);
    EXPECT_EQ(c.readWord(0xFB00), 0x1234);
    EXPECT_EQ(c.readWord(0x100002), 0x5678);
}

TEST(Monitor, UserCodeRunsToTheBreakpointPatch) {
    Client c;
    ASSERT_TRUE(c.bootDefault());
    // At 100000: a nop, an unconditional relative jump over two words,
    // two words, a long jump to 100100; there a move and the patch
    // (long call to the core's start).
    std::vector<uint8_t> code = {0xCC, 0x00, 0x0D, 0x02, 0xFF, 0xFF,
                                 0xFF, 0xFF, 0xFA, 0x10, 0x00, 0x01};
    std::vector<uint8_t> tail = {0xE6, 0xF4, 0x34, 0x12, 0xDA, 0x00, 0x00, 0xF6};
    ASSERT_TRUE(c.writeBlock(0x100000, code));
    ASSERT_TRUE(c.writeBlock(0x100100, tail));
    ASSERT_TRUE(c.writeWord(0xFE12, 0xFB00));
    ASSERT_TRUE(c.go(0x100000));
    EXPECT_EQ(c.recv1(), 0x03);
    const int sp = c.readWord(0xFE12);
    EXPECT_EQ(sp, 0xFAFC);
    EXPECT_EQ(c.readWord(0xFAFC), 0x0108);  // return offset behind the patch
    EXPECT_EQ(c.readWord(0xFAFE), 0x0010);  // segment
}

TEST(Monitor, UserCodeWithoutPatchRunsForEver) {
    Client c;
    ASSERT_TRUE(c.bootDefault());
    ASSERT_TRUE(c.writeBlock(0x100000, {0x0D, 0xFF}));  // jump to itself
    ASSERT_TRUE(c.go(0x100000));
    EXPECT_EQ(c.recv1(300'000), -1);
    c.send1(0x93);
    EXPECT_EQ(c.recv1(300'000), -1);
}

TEST(Monitor, PlainCallReturnsRegistersUnchanged) {
    Client c;
    ASSERT_TRUE(c.bootDefault());
    ASSERT_TRUE(c.writeBlock(0x100000, {0xCB, 0x00}));
    std::array<uint16_t, 8> r = {1, 2, 3, 4, 5, 6, 7, 8};
    ASSERT_TRUE(c.call(0x100000, r));
    EXPECT_EQ(r, (std::array<uint16_t, 8>{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(c.readWord(0xFC00 + 2 * 15), 8);  // R15 in the register bank
    // with the trailing zero: the core takes it and answers one byte
    int extra = -1;
    ASSERT_TRUE(c.call(0x100000, r, true, &extra));
    EXPECT_EQ(extra, 0x01);
    EXPECT_TRUE(c.drain().empty());
    EXPECT_TRUE(c.simple(0x93));
    // a zero later on is the host autobauding again
    c.send1(0x00);
    EXPECT_EQ(c.recv(2), (std::vector<uint8_t>{0x04, 0x03}));
}
