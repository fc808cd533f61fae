#include <gtest/gtest.h>

#include "Client.h"

using simtest::Client;

TEST(Fault, DropLosesTheNthBoardByte) {
    Client c("?fault=drop@1");
    ASSERT_TRUE(c.ch) << c.error;
    c.send1(0x00);
    EXPECT_EQ(c.recv1(300'000), -1);
    Client d("?fault=drop@2");
    EXPECT_EQ(d.boot("KERNEL/ALD4LDR.HEX", "KERNEL/ALD4CORE.HEX").loaderAck, -1);
}

TEST(Fault, FlipChangesOneBit) {
    Client c("?fault=flip@1&seed=3");
    c.send1(0x00);
    const int id = c.recv1();
    ASSERT_NE(id, -1);
    const int diff = id ^ 0xA5;
    EXPECT_NE(diff, 0);
    EXPECT_EQ(diff & (diff - 1), 0) << "exactly one bit";
}

TEST(Fault, StallDelaysAByte) {
    Client c("?fault=stall@1&stallms=700");
    c.send1(0x00);
    EXPECT_EQ(c.recv1(500'000), -1);
    EXPECT_EQ(c.recv1(500'000), 0xA5);
    EXPECT_GE(c.now, 700'000);
}

TEST(Fault, WrongAckOnTheNthCommand) {
    Client c("?fault=wrongack@2");
    ASSERT_TRUE(c.bootDefault());
    EXPECT_TRUE(c.simple(0x93));
    c.send1(0x93);
    EXPECT_EQ(c.recv1(), 0xAA);
    EXPECT_EQ(c.recv1(), 0x55);
    EXPECT_TRUE(c.simple(0x93));
}

TEST(Fault, ResetInTheMiddleOfABlock) {
    Client c("?fault=reset@1");
    ASSERT_TRUE(c.bootDefault());
    c.send1(0x84);
    ASSERT_EQ(c.recv1(), 0xAA);
    c.send({0x00, 0x00, 0x10, 0x40, 0x00});
    c.send(std::vector<uint8_t>(64, 0x11));
    EXPECT_EQ(c.recv1(300'000), -1);
    c.send1(0x00);
    EXPECT_EQ(c.recv1(), 0xA5) << "back in the bootstrap loader";
    // half the block had arrived before the reset
    Client d("?fault=reset@2");
    ASSERT_TRUE(d.bootDefault());
    ASSERT_TRUE(d.writeWord(0x100000, 0));
    d.send1(0x85);
    ASSERT_EQ(d.recv1(), 0xAA);
    d.send({0x00, 0x00, 0x10, 0x10, 0x00});
    EXPECT_EQ(d.recv(16, 300'000).size(), 8u);
}

TEST(Fault, DieStopsTheMonitor) {
    Client c("?fault=die@3");
    ASSERT_TRUE(c.bootDefault());
    EXPECT_TRUE(c.simple(0x93));
    EXPECT_TRUE(c.simple(0x93));
    c.send1(0x93);
    EXPECT_EQ(c.recv1(300'000), -1);
    c.send1(0x00);
    EXPECT_EQ(c.recv1(300'000), -1);
}

TEST(Fault, HangupEndsTheChannel) {
    Client c("?fault=hangup@1");
    ASSERT_TRUE(c.bootDefault());
    c.send1(0x93);
    EXPECT_FALSE(c.ch->isOpen());
    uint8_t b = 0;
    EXPECT_EQ(c.ch->read(std::span<uint8_t>(&b, 1)), -1);
    EXPECT_EQ(c.ch->write(std::span<const uint8_t>(&b, 1)), -1);
    EXPECT_FALSE(c.ch->lastError().empty());
    EXPECT_NE(c.ch->lastErrno(), 0);
}

TEST(Fault, RateFaultsFollowTheSeed) {
    auto run = [](const std::string& options) {
        Client c(options);
        c.bootDefault();  // may fail under the faults; the bytes tell
        std::vector<uint8_t> all;
        for (int i = 0; i < 50; ++i) {
            c.send1(0x93);
            auto got = c.recv(2, 100'000);
            all.insert(all.end(), got.begin(), got.end());
        }
        return all;
    };
    const auto a = run("?fault=flip%20&seed=7");
    const auto b = run("?fault=flip%20&seed=7");
    const auto d = run("?fault=flip%20&seed=8");
    EXPECT_EQ(a, b);
    EXPECT_NE(a, d);
    std::size_t clean = 0;
    for (std::size_t i = 0; i + 1 < a.size(); i += 2) clean += a[i] == 0xAA && a[i + 1] == 0xEA;
    EXPECT_LT(clean, 50u);
    EXPECT_GT(clean, 5u);
    Client all("?fault=drop%100");
    all.send1(0x00);
    EXPECT_EQ(all.recv1(300'000), -1);
}

TEST(Fault, BadFaultTextIsRefused) {
    for (const char* text :
         {"?fault=drop", "?fault=drop@0", "?fault=drop%200", "?fault=boom@1", "?stallms=x"}) {
        Client c(text);
        EXPECT_FALSE(c.ch) << text;
        EXPECT_FALSE(c.error.empty()) << text;
    }
}
