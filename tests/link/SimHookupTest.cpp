// The port text sim: opens the in-process board on the host's clock.
#include <gtest/gtest.h>

#include "core/ProgramState.h"
#include "link/ComPort.h"
#include "VirtualHost.h"

namespace vortelm::link {
namespace {

TEST(SimHookup, BootstrapAnswersTheInitByte) {
    test::VirtualHost host;
    ProgramState st{host};
    ComPort port{st};
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
        st.portOverride = "sim:";
        ASSERT_TRUE(port.open());
        port.setReceiveThreshold(0);
        port.SSSend(0x00);
        plain = port.SSReceive(st.CONNECTTIMEOUT);
    }
    test::VirtualHost host;
    ProgramState st{host};
    ComPort port{st};
    st.portOverride = "sim:?kline=1";
    st.KLINE = 1;
    ASSERT_TRUE(port.open());
    port.setReceiveThreshold(0);
    port.SSSend(0x00);
    EXPECT_EQ(port.SSReceive(st.CONNECTTIMEOUT), plain);
}

TEST(SimHookup, BadOptionsShowCaution) {
    test::VirtualHost host;
    ProgramState st{host};
    ComPort port{st};
    st.portOverride = "sim:?nosuchoption=1";
    if (port.open()) GTEST_SKIP() << "the board takes unknown options";
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_NE(host.terminal.find("*Port sim:?nosuchoption=1: "), std::string::npos);
}

}  // namespace
}  // namespace vortelm::link
