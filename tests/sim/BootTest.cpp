#include <gtest/gtest.h>

#include "Client.h"
#include "sim/Images.h"

using simtest::Client;

TEST(Boot, DefaultBoardAnswersIdLoaderAndCore) {
    Client c;
    ASSERT_TRUE(c.ch) << c.error;
    auto r = c.boot("KERNEL/ALD4LDR.HEX", "KERNEL/ALD4CORE.HEX");
    EXPECT_EQ(r.id, 0xA5);
    EXPECT_EQ(r.loaderAck, 0x01);
    EXPECT_EQ(r.coreAck, 0x03);
}

TEST(Boot, EveryFamilyBootsItsKernels) {
    struct Case {
        const char* controller;
        int id;
        const char* loader;
        const char* core;
    } cases[] = {{"ALD7RK_BB", 0xA5, "KERNEL/ALD4LDR.HEX", "KERNEL/ALD4CORE.HEX"},
                 {"ZTA9Y_BB", 0xC6, "KERNEL/ZTA9YLDR.HEX", "KERNEL/ZTA9YCOR.HEX"},
                 {"ZT7000_BB", 0xC7, "KERNEL/ZT7LDR.HEX", "KERNEL/ZT7CORE.HEX"}};
    for (const auto& k : cases) {
        Client c("", k.controller);
        ASSERT_TRUE(c.ch) << c.error;
        auto r = c.boot(k.loader, k.core);
        EXPECT_EQ(r.id, k.id) << k.controller;
        EXPECT_EQ(r.loaderAck, 0x01) << k.controller;
        EXPECT_EQ(r.coreAck, 0x03) << k.controller;
        EXPECT_EQ(c.readWord(0xF07E) >= 0, true) << k.controller;
    }
}

TEST(Boot, UnknownControllerAndBadOptionsAreRefused) {
    Client a("", "NOSUCH");
    EXPECT_FALSE(a.ch);
    EXPECT_NE(a.error.find("NOSUCH"), std::string::npos);
    Client b("?bogus=1");
    EXPECT_FALSE(b.ch);
    EXPECT_NE(b.error.find("bogus"), std::string::npos);
    Client d("?fault=melt@1");
    EXPECT_FALSE(d.ch);
    Client e("?mc=ZT7000_BB");
    ASSERT_TRUE(e.ch);
    e.send1(0x00);
    EXPECT_EQ(e.recv1(), 0xC7);
}

TEST(Boot, BootstrapIgnoresBytesOtherThanZero) {
    Client c;
    c.send({0x55, 0x7F, 0xFF});
    EXPECT_EQ(c.recv1(200'000), -1);
    c.send1(0x00);
    EXPECT_EQ(c.recv1(), 0xA5);
}

TEST(Boot, LoaderWithoutAcknowledgeSendsOnlyTheCoreAck) {
    Client c;
    auto r = c.boot("KERNEL/ALD4SLDR.HEX", "KERNEL/ALD4SCOR.HEX", false);
    EXPECT_EQ(r.id, 0xA5);
    EXPECT_EQ(r.coreAck, 0x03);
}

TEST(Boot, KLineLoaderHoldsFirstMinusOne) {
    auto m = simtest::Flatten(simtest::ReadHex(simtest::DataDir() + "/KERNEL/ALD4LDRK.HEX"));
    ASSERT_EQ(m.size(), 32u);
    EXPECT_EQ(m[4] | (m[5] << 8), 0xF5FF);
    EXPECT_EQ(m[6] | (m[7] << 8), 0xF8FF);
    Client c("?kline=1");
    c.send1(0x00);
    EXPECT_EQ(c.recv(2), (std::vector<uint8_t>{0x00, 0xA5}));  // echo, then the ID byte
    c.send(m);
    auto echo = c.recv(32);
    EXPECT_EQ(echo, m);
    EXPECT_EQ(c.recv1(), 0x01);
    auto core = simtest::Flatten(simtest::ReadHex(simtest::DataDir() + "/KERNEL/ALD4CORE.HEX"));
    c.send(core);
    EXPECT_EQ(c.recv(core.size()), core);
    EXPECT_EQ(c.recv1(), 0x03);
}

// The host's relocation patch rewrites the loader's words; the board loads
// the core where the patched loader says.
std::vector<uint8_t> Patch(std::vector<uint8_t> l, uint16_t oldStart, uint16_t oldEnd,
                           uint16_t newStart, bool kline) {
    const uint16_t newEnd = static_cast<uint16_t>(oldEnd + newStart - oldStart);
    for (std::size_t a = 0; a + 1 < l.size(); ++a) {
        auto w = [&] { return static_cast<uint16_t>(l[a] | (l[a + 1] << 8)); };
        auto put = [&](uint16_t v) {
            l[a] = static_cast<uint8_t>(v);
            l[a + 1] = static_cast<uint8_t>(v >> 8);
        };
        if (w() == oldStart) put(newStart);
        if (w() == oldEnd) put(newEnd);
        if (kline && w() == static_cast<uint16_t>(oldStart - 1))
            put(static_cast<uint16_t>(newStart - 1));
    }
    return l;
}

TEST(Boot, RelocatedLoaderLoadsTheCoreElsewhere) {
    auto loader = simtest::Flatten(simtest::ReadHex(simtest::DataDir() + "/KERNEL/ALD4LDR.HEX"));
    auto core = simtest::Flatten(simtest::ReadHex(simtest::DataDir() + "/KERNEL/ALD4CORE.HEX"));
    Client c;
    c.send1(0x00);
    ASSERT_EQ(c.recv1(), 0xA5);
    c.send(Patch(loader, 0xF600, 0xF8FF, 0xF700, false));
    ASSERT_EQ(c.recv1(), 0x01);
    c.send(core);
    ASSERT_EQ(c.recv1(), 0x03);
    // The core now lies at F700..F9FF: writing at F600 is harmless, at F700 fatal.
    EXPECT_TRUE(c.writeWord(0xF600, 0x1234));
    EXPECT_FALSE(c.writeWord(0xF700, 0x1234));
}

TEST(Boot, KLinePatchMissedLeavesTheBoardWaiting) {
    // A K-Line loader relocated without the K-Line rule keeps first-1 of
    // the old place: the loader waits for more bytes than come.
    auto loader = simtest::Flatten(simtest::ReadHex(simtest::DataDir() + "/KERNEL/ALD4LDRK.HEX"));
    auto core = simtest::Flatten(simtest::ReadHex(simtest::DataDir() + "/KERNEL/ALD4CORE.HEX"));
    Client c;
    c.send1(0x00);
    ASSERT_EQ(c.recv1(), 0xA5);
    c.send(Patch(loader, 0xF600, 0xF8FF, 0xF700, false));
    ASSERT_EQ(c.recv1(), 0x01);
    c.send(core);
    EXPECT_EQ(c.recv1(), -1);
    Client d;
    d.send1(0x00);
    ASSERT_EQ(d.recv1(), 0xA5);
    d.send(Patch(loader, 0xF600, 0xF8FF, 0xF700, true));
    ASSERT_EQ(d.recv1(), 0x01);
    d.send(core);
    EXPECT_EQ(d.recv1(), 0x03);
}

TEST(Boot, ForeignLoaderNeverAnswers) {
    Client c;
    c.send1(0x00);
    ASSERT_EQ(c.recv1(), 0xA5);
    c.send(std::vector<uint8_t>(32, 0x11));
    EXPECT_EQ(c.recv1(300'000), -1);
}

TEST(Boot, RunningCoreAnswersZeroWithAutobaud) {
    Client c;
    ASSERT_TRUE(c.bootDefault());
    c.send1(0x00);
    EXPECT_EQ(c.recv(2), (std::vector<uint8_t>{0x04, 0x03}));
    // after the host changes its rate the core re-measures on the next zero
    vortelm::channel::LineSettings s;
    s.baud = 57600;
    c.ch->configure(s);
    c.send1(0x93);
    EXPECT_EQ(c.recv1(200'000), -1);  // garbage at the old rate: no answer
    c.send1(0x00);
    EXPECT_EQ(c.recv(2), (std::vector<uint8_t>{0x04, 0x03}));
    EXPECT_TRUE(c.simple(0x93));
}

TEST(Boot, RtsResetWithBslEntersBootstrapOtherwiseApplication) {
    Client c;
    ASSERT_TRUE(c.bootDefault());
    c.ch->setDtr(true);
    c.ch->setRts(true);
    c.send1(0x00);
    EXPECT_EQ(c.recv1(100'000), -1);  // held in reset
    c.ch->setRts(false);
    c.send1(0x00);
    EXPECT_EQ(c.recv1(), 0xA5);
    Client d;
    d.ch->setDtr(false);
    d.ch->setRts(true);
    d.ch->setRts(false);
    d.send1(0x00);
    EXPECT_EQ(d.recv1(200'000), -1);  // the application does not answer
}

TEST(Boot, ParityOtherThanNoneIsGarbage) {
    Client c;
    vortelm::channel::LineSettings s;
    s.parity = vortelm::channel::Parity::Even;
    c.ch->configure(s);
    c.send1(0x00);
    const int id = c.recv1();
    EXPECT_NE(id, 0xA5);
}
