#include <gtest/gtest.h>

#include <cmath>

#include "Client.h"

using simtest::Client;

namespace {

void SetRate(Client& c, uint32_t baud) {
    vortelm::channel::LineSettings s;
    s.baud = baud;
    ASSERT_EQ(c.ch->configure(s), vortelm::channel::Control::Ok);
}

}  // namespace

TEST(Baud, Ald4ReloadChangesTheRateAfterTheSecondAck) {
    Client c;
    ASSERT_TRUE(c.bootDefault());
    // 19200: reload round(20e6 / (2*16*19200) - 1) = 32, real 18939 (-1.4 %)
    const int reload = static_cast<int>(std::lround(20e6 / (2 * 16 * 19200.0) - 1));
    ASSERT_EQ(reload, 32);
    ASSERT_TRUE(c.writeWord(0xFEB4, static_cast<uint16_t>(reload)));
    c.send1(0x93);  // still at 9600: the board no longer understands
    EXPECT_EQ(c.recv1(300'000), -1);
    SetRate(c, 19200);
    EXPECT_TRUE(c.simple(0x93));
    EXPECT_EQ(c.readWord(0xFEB4), 32);
}

TEST(Baud, Ald4BrsBitDoublesTheDivider) {
    Client c;
    ASSERT_TRUE(c.bootDefault());
    ASSERT_TRUE(c.writeWord(0xFFB0, 0x8011 | 0x2000));  // S0CON.BRS
    ASSERT_TRUE(c.writeWord(0xFEB4, 0x0015));           // 20e6/(22*16*3) = 18939
    SetRate(c, 19200);
    EXPECT_TRUE(c.simple(0x93));
}

TEST(Baud, MoreThanThreePercentOffIsGarbage) {
    Client c;
    ASSERT_TRUE(c.bootDefault());
    ASSERT_TRUE(c.writeWord(0xFEB4, 30));  // 20e6/(31*32) = 20161: 5 % above 19200
    SetRate(c, 19200);
    c.send1(0x93);
    auto got = c.recv(2, 300'000);
    EXPECT_NE(got, (std::vector<uint8_t>{0xAA, 0xEA}));
    // the host can win the board back with a zero byte: the idle core re-measures
    c.send1(0x00);
    EXPECT_EQ(c.recv(2), (std::vector<uint8_t>{0x04, 0x03}));
    EXPECT_TRUE(c.simple(0x93));
}

TEST(Baud, ZtFractionalDividerActsWithTheReload) {
    Client c("", "ZTA9Y_BB");
    ASSERT_EQ(c.boot("KERNEL/ZTA9YLDR.HEX", "KERNEL/ZTA9YCOR.HEX").coreAck, 0x03);
    EXPECT_EQ(c.readWord(0xFEB6), 0);  // ASC0FDV after the bootstrap
    ASSERT_TRUE(c.writeWord(0xFEB6, 510));
    EXPECT_TRUE(c.simple(0x93)) << "the divider alone changes nothing yet";
    const int reload = static_cast<int>(std::lround(20e6 / (57600 * 16.0) - 1));
    ASSERT_TRUE(c.writeWord(0xFEB4, static_cast<uint16_t>(reload)));
    SetRate(c, 57600);
    EXPECT_TRUE(c.simple(0x93));
}

TEST(Baud, Zt7PrescalerInBrgh) {
    Client c("", "ZT7000_BB");
    ASSERT_EQ(c.boot("KERNEL/ZT7LDR.HEX", "KERNEL/ZT7CORE.HEX").coreAck, 0x03);
    const int fdrl = c.readWord(0x204004);
    EXPECT_EQ(fdrl & 0xC000, 0x4000);
    const int step = fdrl & 0x3FF;
    const int pdiv = static_cast<int>(std::lround(20e6 / 115200.0 / (1024 - step) - 1));
    const int brgh = c.readWord(0x20401E);
    ASSERT_TRUE(c.writeWord(0x20401E, static_cast<uint16_t>((brgh & 0xFC00) | pdiv)));
    SetRate(c, 115200);
    EXPECT_TRUE(c.simple(0x93));
    EXPECT_EQ(c.readWord(0x20401E) & 0x3FF, pdiv);
}

TEST(Asc1, SwitchAnswersTwoBytesThenAckAndFlagOnTheNewChannel) {
    Client c("", "ZTA9Y_BB");
    ASSERT_EQ(c.boot("KERNEL/ZTA9YLDR.HEX", "KERNEL/ZTA9YCOR.HEX").coreAck, 0x03);
    c.send1(0xCC);
    EXPECT_EQ(c.recv(2), (std::vector<uint8_t>{0xAA, 0xEA}));
    c.send1(0x93);
    EXPECT_EQ(c.recv1(300'000), -1);  // waiting for the cable on the second channel
    c.send1(0x00);
    EXPECT_EQ(c.recv(2), (std::vector<uint8_t>{0xAA, 0xD5}));
    EXPECT_TRUE(c.simple(0x93));
}

TEST(Protection, ZtLevelsHideAndGuardTheInternalFlash) {
    Client c("", "ZTA9Y_BB");
    ASSERT_EQ(c.boot("KERNEL/ZTA9YLDR.HEX", "KERNEL/ZTA9YCOR.HEX").coreAck, 0x03);
    auto setProtection = [&](uint8_t pw, uint8_t level, uint8_t newPw) {
        c.send1(0xD1);
        if (c.recv1() != 0xAA) return -1;
        c.send({pw, newPw, level});
        return c.recv1();
    };
    EXPECT_EQ(c.readWord(0xC00000), 0xFFFF);
    EXPECT_EQ(setProtection(0x00, 2, 0x42), 0xEA);
    EXPECT_EQ(c.readWord(0xC00000), 0x0000);
    const uint32_t entry = c.download("DRIVER/ZTIFL0.HEX");
    std::array<uint16_t, 8> er{1, 0, 0, 0, 0, 0, 0, 0};
    ASSERT_TRUE(c.call(entry, er));
    EXPECT_NE(er[7], 0) << "level 2 guards erase";
    EXPECT_NE(setProtection(0x00, 0, 0x00), 0xEA) << "wrong password";
    EXPECT_EQ(setProtection(0x42, 0, 0x00), 0xEA);
    EXPECT_EQ(c.readWord(0xC00000), 0xFFFF);
}
