// The port text sim: opens the in-process board on the host's clock.
#include <gtest/gtest.h>

#include "VirtualHost.h"
#include "apps/SimOpener.h"
#include "core/ProgramState.h"
#include "link/ComPort.h"

namespace vortelm::link {
namespace {

TEST(SimHookup, BootstrapAnswersTheInitByte) {
    test::VirtualHost host;
    ProgramState st{host};
    ComPort port{st};
    apps::AddSimOpener(port.openers);
    st.portOverride = "sim:";
    ASSERT_TRUE(port.open()) << host.terminal;
    port.setReceiveThreshold(0);
    port.SSSend(0x00);
    const int id = port.SSReceive(st.CONNECTTIMEOUT);
    EXPECT_GE(id, 0);
    EXPECT_TRUE(host.boxes.empty());
}

TEST(SimHookup, KLineBoardEchoesAndTheEchoIsTakenAway) {
    int plain = -1;
    {
        test::VirtualHost host;
        ProgramState st{host};
        ComPort port{st};
        apps::AddSimOpener(port.openers);
        st.portOverride = "sim:";
        ASSERT_TRUE(port.open());
        port.setReceiveThreshold(0);
        port.SSSend(0x00);
        plain = port.SSReceive(st.CONNECTTIMEOUT);
    }
    test::VirtualHost host;
    ProgramState st{host};
    ComPort port{st};
    apps::AddSimOpener(port.openers);
    st.portOverride = "sim:?kline=1";
    st.KLINE = 1;
    ASSERT_TRUE(port.open());
    port.setReceiveThreshold(0);
    port.SSSend(0x00);
    EXPECT_EQ(port.SSReceive(st.CONNECTTIMEOUT), plain);
}

TEST(SimHookup, WithoutTheBoardLinkedSimSaysSo) {
    test::VirtualHost host;
    ProgramState st{host};
    ComPort port{st};
    st.portOverride = "sim:";
    EXPECT_FALSE(port.open());
    EXPECT_NE(host.terminal.find("the virtual board is not part of this build"), std::string::npos)
        << host.terminal;
}

TEST(SimHookup, OpenersGoByPrefixWithoutRegardToCase) {
    ChannelOpeners openers;
    int calls = 0;
    std::string rest;
    openers.add("x-test:", [&](const OpenRequest& q) {
        ++calls;
        rest = std::string(q.rest);
        return OpenResult{};
    });
    (void)openers.open("X-TEST:abc", {}, 0, "", [] { return int64_t{0}; });
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(rest, "abc");
    EXPECT_EQ(openers.find("/dev/ttyUSB0"), nullptr);
    EXPECT_NE(openers.find("socket://localhost:1"), nullptr);
    // A second opener for the same prefix takes the place of the first.
    openers.add("X-TEST:", [&](const OpenRequest&) {
        calls += 10;
        return OpenResult{};
    });
    (void)openers.open("x-test:", {}, 0, "", [] { return int64_t{0}; });
    EXPECT_EQ(calls, 11);
}

TEST(SimHookup, BadOptionsShowCaution) {
    test::VirtualHost host;
    ProgramState st{host};
    ComPort port{st};
    apps::AddSimOpener(port.openers);
    st.portOverride = "sim:?nosuchoption=1";
    if (port.open()) GTEST_SKIP() << "the board takes unknown options";
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_NE(host.terminal.find("*Port sim:?nosuchoption=1: "), std::string::npos);
}

}  // namespace
}  // namespace vortelm::link
