#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

#include "Client.h"

using simtest::Client;

namespace {

void SetRate(Client& c, uint32_t baud) {
    vortelm::channel::LineSettings s;
    s.baud = baud;
    ASSERT_EQ(c.ch->configure(s), vortelm::channel::Control::Ok);
}

double PacedWriteSeconds(uint32_t baud, std::size_t n) {
    Client c("?pace=1");
    SetRate(c, baud);
    EXPECT_TRUE(c.bootDefault());
    std::vector<uint8_t> data(n, 0x5A);
    const int64_t t0 = c.now;
    EXPECT_TRUE(c.writeBlock(0x100000, data));
    return static_cast<double>(c.now - t0) / 1e6;
}

}  // namespace

TEST(Line, PacedTransferTakesTenBitsPerByteAt9600) {
    const std::size_t n = 8192;
    const double seconds = PacedWriteSeconds(9600, n);
    const double expected = static_cast<double>(n + 12) * 10.0 / 9600.0;  // data and protocol bytes
    EXPECT_NEAR(seconds, expected, expected * 0.01);
}

TEST(Line, PacedTransferTakesTenBitsPerByteAt115200) {
    const std::size_t n = 65535;
    const double seconds = PacedWriteSeconds(115200, n);
    const double expected = static_cast<double>(n + 12) * 10.0 / 115200.0;
    EXPECT_NEAR(seconds, expected, expected * 0.01);
}

TEST(Line, WithoutPacingBytesArriveAtOnce) {
    Client c;
    ASSERT_TRUE(c.bootDefault());
    EXPECT_EQ(c.now, 0);
}

TEST(Line, LateReaderGetsEveryDueByteAtOnce) {
    Client c("?pace=1");
    ASSERT_TRUE(c.bootDefault());
    c.send1(0x85);
    ASSERT_EQ(c.recv1(), 0xAA);
    c.send({0x00, 0x00, 0x10, 0x00, 0x01});  // 256 bytes from 100000
    EXPECT_EQ(c.ch->bytesWaitingIn(), 0u);
    auto got = c.drain(2'000'000);
    EXPECT_EQ(got.size(), 257u);  // the data and the second acknowledge
}

TEST(Line, NextEventTellsWhenTheNextByteIsDue) {
    Client c("?pace=1");
    c.send1(0x00);
    auto next = c.ch->nextEventUs();
    ASSERT_TRUE(next);
    EXPECT_NEAR(static_cast<double>(*next), 10e6 / 9600, 2);  // the init byte reaches the board
    EXPECT_EQ(c.ch->bytesWaitingOut(), 1u);
    c.now = *next;
    next = c.ch->nextEventUs();
    ASSERT_TRUE(next);
    EXPECT_NEAR(static_cast<double>(*next), 2 * 10e6 / 9600, 2);  // the ID byte reaches the host
    EXPECT_EQ(c.ch->bytesWaitingOut(), 0u);
}

TEST(Line, LatencyDelaysEachAnswer) {
    Client c("?latency=5");
    c.send1(0x00);
    EXPECT_EQ(c.recv1(), 0xA5);
    EXPECT_EQ(c.now, 5000);
}

TEST(Line, TraceRecordsDirectionAndTime) {
    const std::string path = std::string(VORTELM_BINARY_DIR) + "/sim-trace-test.txt";
    std::remove(path.c_str());
    {
        Client c("?pace=1&trace=" + path);
        c.send1(0x00);
        EXPECT_EQ(c.recv1(), 0xA5);
    }
    const std::string t = simtest::ReadFile(path);
    EXPECT_NE(t.find("H>B 00"), std::string::npos) << t;
    EXPECT_NE(t.find("B>H A5"), std::string::npos) << t;
    EXPECT_NE(t.find("1041.7"), std::string::npos) << t;  // the init byte after 10 bit times
}

TEST(Line, KLineEchoesEveryHostByte) {
    Client c("?kline=1");
    ASSERT_TRUE(c.ch);
    c.send({0x12, 0x34});
    EXPECT_EQ(c.recv(2), (std::vector<uint8_t>{0x12, 0x34}));
    c.send1(0x00);
    EXPECT_EQ(c.recv(2), (std::vector<uint8_t>{0x00, 0xA5}));
}

TEST(Line, ClearInputDropsWhatArrived) {
    Client c;
    c.send1(0x00);
    EXPECT_EQ(c.ch->bytesWaitingIn(), 1u);
    c.ch->clearInput();
    EXPECT_EQ(c.ch->bytesWaitingIn(), 0u);
}

TEST(Line, ClosedChannelFails) {
    Client c;
    c.ch->close();
    EXPECT_FALSE(c.ch->isOpen());
    uint8_t b = 0;
    EXPECT_EQ(c.ch->write(std::span<const uint8_t>(&b, 1)), -1);
    EXPECT_EQ(c.ch->read(std::span<uint8_t>(&b, 1)), -1);
}
