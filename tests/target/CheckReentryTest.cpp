// The connection check on a host whose waits run the timers again, as the
// real event loops do: a tick that comes while a check waits for its
// answer must not start a second check, and a silent board is reported
// lost once, within the two connect time-outs of one check.

#include <gtest/gtest.h>

#include "ScriptedBoard.h"
#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "link/ComPort.h"
#include "link/Monitor.h"
#include "target/Target.h"

namespace vortelm::testing {
namespace {

struct CheckReentry : ::testing::Test {
    TestHost host;
    ProgramState st{host};
    link::ComPort port{st};
    target::Target tgt{st, port, nullptr};
    ScriptedBoard* board = nullptr;

    void SetUp() override {
        auto b = std::make_unique<ScriptedBoard>();
        board = b.get();
        board->clock = [this]() { return host.now; };
        board->mode = ScriptedBoard::Mode::Monitor;
        port.attach(std::move(b));
        port.setReceiveThreshold(1);
        st.ConnectionState = kConnectedAndReady;
        target::EnableConnectionCheck(tgt);
    }
    void TearDown() override { target::DisableConnectionCheck(tgt); }

    size_t testBytes() const {
        size_t n = 0;
        for (uint8_t b : board->received) n += b == 0x93;
        return n;
    }
};

TEST_F(CheckReentry, SilentBoardIsReportedLostOnceWithinTheTimeOuts) {
    host.yield(host.now + 50'000);
    ASSERT_GE(testBytes(), 1u) << "the check runs while idle";
    board->mode = ScriptedBoard::Mode::Dead;
    board->received.clear();
    const int64_t silentSince = host.now;
    // Each yield runs the due 10 ms tick; a check in flight must not nest.
    while (st.ConnectionState == 1 && host.now - silentSince < 5'000'000) host.yield();
    EXPECT_EQ(st.ConnectionState, 0);
    // one check: one test byte, two waits of the connect time-out, plus a tick
    EXPECT_EQ(testBytes(), 1u);
    EXPECT_LE(host.now - silentSince, (2 * st.CONNECTTIMEOUT + 20) * 1000);
    const size_t at = host.terminal.find("Connection to target lost !");
    ASSERT_NE(at, std::string::npos);
    EXPECT_EQ(host.terminal.find("Connection to target lost !", at + 1), std::string::npos);
    // In state 0 the check no longer runs.
    for (int i = 0; i < 50; ++i) host.yield();
    EXPECT_EQ(testBytes(), 1u);
}

TEST_F(CheckReentry, TickDoesNothingWhileAForegroundExchangeHoldsTheLine) {
    host.yield(host.now + 50'000);
    board->received.clear();
    board->silentCommands.insert(0x82);  // the write gets no answer: its waits run long
    link::Monitor mon(st, port);
    EXPECT_EQ(mon.Cmd_WriteWord(0x1000, 0x1234), -2);
    // The two waits of the write yielded for seconds; no test byte went out
    // in between, and the target counts as connected still.
    EXPECT_EQ(testBytes(), 0u);
    EXPECT_EQ(st.ConnectionState, 1);
    EXPECT_FALSE(tgt.checkRunning);
}

TEST_F(CheckReentry, TickDoesNothingWhileACheckRuns) {
    tgt.checkRunning = true;
    board->received.clear();
    host.yield(host.now + 100'000);
    EXPECT_EQ(testBytes(), 0u);
    tgt.checkRunning = false;
    host.yield(host.now + 100'000);
    EXPECT_GE(testBytes(), 1u);
}

}  // namespace
}  // namespace vortelm::testing
