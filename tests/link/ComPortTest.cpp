// The port object's primitives on a scripted far end and a virtual clock.
#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <vector>

#include "VirtualHost.h"
#include "core/ProgramState.h"
#include "link/ComPort.h"
#include "link/ScriptedChannel.h"

namespace vortelm::link {
namespace {

using channel::ScriptedChannel;

constexpr const char* kCaution =
    "Caution ! Communication port used by other application ! Please select a different port ";

class ComPortTest : public ::testing::Test {
  protected:
    ComPortTest() {
        auto c = std::make_unique<ScriptedChannel>([this] { return host.clockUs; }, "script:a");
        ch = c.get();
        port.attach(std::move(c));
    }
    int64_t ms(int64_t since) const { return (host.clockUs - since) / 1000; }

    test::VirtualHost host;
    ProgramState st{host};
    ComPort port{st};
    ScriptedChannel* ch = nullptr;
};

TEST_F(ComPortTest, SSSendPutsOneByteAndWaitsForNoEcho) {
    const int64_t t0 = host.clockUs;
    port.SSSend(0x5A);
    EXPECT_EQ(ch->written(), std::vector<uint8_t>{0x5A});
    EXPECT_EQ(host.clockUs, t0);
}

TEST_F(ComPortTest, SSSendNIsOneWriteOfTheWholeArray) {
    std::vector<uint8_t> block(300);
    for (size_t i = 0; i < block.size(); ++i) block[i] = uint8_t(i);
    port.SSSendN(block);
    EXPECT_EQ(ch->writeCalls(), 1);
    EXPECT_EQ(ch->written(), block);
}

TEST_F(ComPortTest, SSSendNFinishesAPartialWrite) {
    ch->limitWrite(7);
    std::vector<uint8_t> block(20, 0x11);
    port.SSSendN(block);
    EXPECT_EQ(ch->written(), block);
}

TEST_F(ComPortTest, SSReceiveReturnsTheByteThatComes) {
    ch->arrive(std::vector<uint8_t>{0xA5}, 50'000);
    const int64_t t0 = host.clockUs;
    EXPECT_EQ(port.SSReceive(2000), 0xA5);
    EXPECT_EQ(ms(t0), 50);
}

TEST_F(ComPortTest, SSReceiveGivesMinusOneAfterTheTimeOut) {
    const int64_t t0 = host.clockUs;
    EXPECT_EQ(port.SSReceive(300), -1);
    EXPECT_EQ(ms(t0), 300);
    EXPECT_EQ(port.TimerElapsed, 1);
}

TEST_F(ComPortTest, SSReceiveTakesAByteThatIsAlreadyThere) {
    ch->arrive(std::vector<uint8_t>{1, 2});
    EXPECT_EQ(port.SSReceive(100), 1);
    EXPECT_EQ(port.SSReceive(100), 2);
    EXPECT_EQ(port.SSReceive(100), -1);
}

// On K-Line a single byte without its echo costs one full time-out and goes on.
TEST_F(ComPortTest, KLineSingleByteWithoutEchoCostsOneTimeOut) {
    st.KLINE = 1;
    st.TIMEOUT = 700;
    const int64_t t0 = host.clockUs;
    port.SSSend(0x33);
    EXPECT_EQ(ms(t0), 700);
    EXPECT_EQ(ch->written(), std::vector<uint8_t>{0x33});
    EXPECT_TRUE(host.boxes.empty());
}

// With the echo present, the first byte the caller reads is the reply.
TEST_F(ComPortTest, KLineEchoIsNotWhatTheCallerReads) {
    st.KLINE = 1;
    ch->setEcho(true, 1000);
    ch->expect({0x33}, {0xC3}, 5000);
    port.SSSend(0x33);
    EXPECT_EQ(port.SSReceive(500), 0xC3);
    EXPECT_EQ(port.inCount(), 0);
}

TEST_F(ComPortTest, KLineBlockEchoReplacesTheBuffer) {
    st.KLINE = 1;
    ch->setEcho(true, 100);
    std::vector<uint8_t> block{1, 2, 3, 4};
    std::vector<uint8_t> copy = block;
    port.SSSendN(block);
    EXPECT_EQ(block, copy);  // the echo, which equals what was sent
    EXPECT_EQ(ch->written(), copy);
    EXPECT_EQ(port.inCount(), 0);
}

// A block that stops halfway leaves after the time-out since the last echoed byte.
TEST_F(ComPortTest, KLineBlockStoppingHalfwayEndsOneTimeOutAfterTheLastEcho) {
    st.KLINE = 1;
    st.TIMEOUT = 400;
    std::vector<uint8_t> block{10, 11, 12, 13, 14, 15, 16, 17};
    int64_t lastEcho = 0;
    ch->setResponder([&](std::span<const uint8_t> w, ScriptedChannel& c) {
        // Four bytes echo, 300 ms apart (each inside the time-out), then nothing.
        (void)w;
        c.arrive(std::vector<uint8_t>{20, 21, 22, 23}, 300'000, 300'000);
        lastEcho = host.clockUs + 4 * 300'000;
    });
    port.SSSendN(block);
    EXPECT_EQ(host.clockUs, lastEcho + 400'000);
    // What came back replaces the front of the buffer; the rest stays.
    EXPECT_EQ(block, (std::vector<uint8_t>{20, 21, 22, 23, 14, 15, 16, 17}));
    EXPECT_EQ(port.inCount(), 0);
}

// Bytes slower than the block time but faster than the time-out still make it.
TEST_F(ComPortTest, SSReceiveNTimeOutIsTheLongestSilence) {
    std::vector<uint8_t> sent{1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    ch->arrive(sent, 150'000, 150'000);  // 1.5 s for the block, 150 ms apart
    std::vector<uint8_t> got(10);
    EXPECT_EQ(port.SSReceiveN(got, 200), 0);
    EXPECT_EQ(got, sent);
}

TEST_F(ComPortTest, SSReceiveNShortBlockLeavesThePartInTheBuffer) {
    ch->arrive(std::vector<uint8_t>{1, 2, 3, 4, 5}, 10'000, 10'000);
    std::vector<uint8_t> got(8, 0xEE);
    EXPECT_EQ(port.SSReceiveN(got, 200), -1);
    EXPECT_EQ(got, std::vector<uint8_t>(8, 0xEE));
    EXPECT_EQ(port.inCount(), 5);
    EXPECT_EQ(port.SSReceive(10), 1);
}

TEST_F(ComPortTest, SSReceiveNSilenceLongerThanTheTimeOutFails) {
    ch->arrive(std::vector<uint8_t>{1, 2}, 10'000, 0);
    ch->arrive(std::vector<uint8_t>{3, 4}, 500'000, 0);
    std::vector<uint8_t> got(4);
    EXPECT_EQ(port.SSReceiveN(got, 200), -1);
    EXPECT_EQ(port.inCount(), 2);
}

TEST_F(ComPortTest, SSSendTLogsAndSendsNothing) {
    port.SSSendT(0x3A);
    EXPECT_EQ(host.terminal, "Wert: 3A");
    EXPECT_TRUE(ch->written().empty());
}

// With the threshold at 1 a byte arriving during SSReceive is the event's.
TEST_F(ComPortTest, ThresholdOneByteGoesToTheEventNotTheWait) {
    port.setReceiveThreshold(1);
    ch->arrive(std::vector<uint8_t>{'X'}, 20'000);
    const int64_t t0 = host.clockUs;
    EXPECT_EQ(port.SSReceive(1000), -1);
    EXPECT_EQ(ms(t0), 20);  // the wait ends at once
    EXPECT_EQ(port.TimerElapsed, 2);
    EXPECT_EQ(host.terminal, "X");
}

TEST_F(ComPortTest, ThresholdZeroBytesWaitForTheNextRead) {
    port.setReceiveThreshold(0);
    ch->arrive(std::string_view("ab"));
    host.yield(host.clockUs + 1000);
    EXPECT_EQ(host.terminal, "");
    EXPECT_EQ(port.inCount(), 2);
    EXPECT_EQ(port.SSReceive(10), 'a');
}

TEST_F(ComPortTest, ReceiveEventShowsTerminalTextInAscii) {
    port.setReceiveThreshold(1);
    ch->arrive(std::string_view("Hi\r\n"));
    host.yield(host.clockUs + 1000);
    EXPECT_EQ(host.terminal, "Hi\r\n");
    EXPECT_EQ(st.terminalBuffer, "Hi\r\n");
}

TEST_F(ComPortTest, ReceiveEventShowsTerminalTextInHex) {
    st.TMODE = 1;
    port.setReceiveThreshold(1);
    ch->arrive(std::vector<uint8_t>{0x41, 0x0A, 0xFF});
    host.yield(host.clockUs + 1000);
    EXPECT_EQ(host.terminal, " 41 0A FF");
}

TEST_F(ComPortTest, ReceiveEventReturnToMonitor) {
    st.ConnectionState = kUserProgramRunning;
    port.setReceiveThreshold(1);
    ch->arrive(std::vector<uint8_t>{st.codes.A_ACK2, 0x55, 0x66});
    host.yield(host.clockUs + 1000);
    EXPECT_EQ(st.ConnectionState, 1);
    EXPECT_EQ(host.terminal, "\r\n*Call: Successful returned to monitor\r\n");
    EXPECT_GE(host.statusRefreshes, 1);
    EXPECT_EQ(port.inCount(), 0);  // the input buffer was cleared
}

TEST_F(ComPortTest, ReceiveEventAck2OutsideACallIsTerminalText) {
    st.ConnectionState = kConnectedAndReady;
    st.TMODE = 1;
    port.setReceiveThreshold(1);
    ch->arrive(std::vector<uint8_t>{st.codes.A_ACK2});
    host.yield(host.clockUs + 1000);
    EXPECT_EQ(st.ConnectionState, 1);
    EXPECT_EQ(host.terminal, " EA");
}

TEST_F(ComPortTest, ReceiveEventDebuggerReturn) {
    st.ConnectionState = kDebugging;
    int calls = 0;
    int thresholdSeen = -1;
    port.onDebuggerReturn = [&] {
        ++calls;
        thresholdSeen = port.receiveThreshold();
    };
    port.setReceiveThreshold(1);
    ch->arrive(std::vector<uint8_t>{st.codes.A_APPLICATION_STARTED});
    host.yield(host.clockUs + 1000);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(thresholdSeen, 0);
    EXPECT_EQ(host.terminal, "");
}

TEST_F(ComPortTest, ApplicationStartedWithoutDebuggerIsTerminalText) {
    st.ConnectionState = kConnectedAndReady;
    int calls = 0;
    port.onDebuggerReturn = [&] { ++calls; };
    port.setReceiveThreshold(1);
    ch->arrive(std::vector<uint8_t>{st.codes.A_APPLICATION_STARTED});
    host.yield(host.clockUs + 1000);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(host.terminal, std::string(1, char(st.codes.A_APPLICATION_STARTED)));
}

// A foreground command starting during the check's exchange swallows the
// two pending replies; the check's wait then gets nothing.
TEST_F(ComPortTest, ForegroundCommandDuringTheCheckSwallowsItsReplies) {
    st.CONNECTTIMEOUT = 100;
    // The check: it owns the line, sends its test byte, and waits.
    port.Cmd_P2();
    ch->expect({0x55}, {0xAA, 0xAB}, 30'000, 10'000);
    port.SSSend(0x55);
    int foregroundGot = -2;
    bool started = false;
    host.onYield = [&] {
        if (started) return;
        started = true;
        // A button press: the foreground command takes the line.
        port.setReceiveThreshold(0);
        port.Cmd_P();
        ch->expect({0x99}, {0x42}, 5'000);
        port.SSSend(0x99);
        foregroundGot = port.SSReceive(500);
        port.Cmd_V();
    };
    int checkGot = port.SSReceive2(100);
    EXPECT_EQ(port.TestAbort, 1);
    EXPECT_EQ(foregroundGot, 0x42);  // its own reply, not the check's
    EXPECT_EQ(checkGot, -1);
    EXPECT_EQ(port.inCount(), 0);
    EXPECT_EQ(ch->mismatches(), 0);
    EXPECT_TRUE(host.boxes.empty());
    port.Cmd_V2();
    EXPECT_EQ(port.ComSemaphore, 0);
}

TEST_F(ComPortTest, CheckAloneGetsItsReply) {
    port.Cmd_P2();
    ch->expect({0x55}, {0xAA}, 30'000);
    port.SSSend(0x55);
    EXPECT_EQ(port.SSReceive2(100), 0xAA);
    EXPECT_EQ(port.TestAbort, 0);
}

TEST_F(ComPortTest, SSReceive2LeavesTheByteToAForegroundCommand) {
    ch->arrive(std::vector<uint8_t>{0x77}, 10'000);
    port.ComSemaphore = 3;
    EXPECT_EQ(port.SSReceive2(100), -1);
    EXPECT_EQ(port.inCount(), 1);
}

TEST_F(ComPortTest, CmdPWithoutTheCheckWaitsForNothing) {
    const int64_t t0 = host.clockUs;
    port.Cmd_P();
    EXPECT_EQ(port.ComSemaphore, 2);
    EXPECT_EQ(port.TestAbort, 0);
    EXPECT_EQ(host.clockUs, t0);
    port.Cmd_V();
    EXPECT_EQ(port.ComSemaphore, 0);
}

TEST_F(ComPortTest, WriteFailureShowsTheCautionBoxAndSendsNothing) {
    st.KLINE = 1;
    ch->failWrites(EIO);
    const int64_t t0 = host.clockUs;
    port.SSSend(0x12);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0], kCaution);
    EXPECT_TRUE(ch->written().empty());
    EXPECT_EQ(host.clockUs, t0);  // no echo wait after a failed write
    EXPECT_NE(host.terminal.find("\r\n*Port script:a: "), std::string::npos);
    std::vector<uint8_t> block{1, 2};
    port.SSSendN(block);
    EXPECT_EQ(host.boxes.size(), 2u);
}

TEST_F(ComPortTest, SendOnAClosedPortShowsTheCautionBox) {
    port.close();
    port.SSSend(1);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0], kCaution);
}

TEST_F(ComPortTest, HungUpLineFailsTheWriteAndTheWaitTimesOut) {
    ch->hangUp();
    port.SSSend(1);
    EXPECT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(port.SSReceive(50), -1);
}

// An adapter pulled out: the port counts as closed, and the next open looks
// for the device anew.
TEST_F(ComPortTest, HungUpLineCountsAsClosedAndReopens) {
    ch->hangUp();
    EXPECT_EQ(port.SSReceive(50), -1);
    EXPECT_FALSE(port.isOpen());
    int opens = 0;
    port.opener = [&](std::string_view, const channel::LineSettings&) {
        ++opens;
        OpenResult r;
        r.channel = std::make_unique<ScriptedChannel>([this] { return host.clockUs; });
        return r;
    };
    EXPECT_TRUE(port.open());
    EXPECT_EQ(opens, 1);
    EXPECT_TRUE(port.isOpen());
    EXPECT_TRUE(host.boxes.empty());
}

TEST_F(ComPortTest, CSettingsAlwaysOneStopBit) {
    st.BAUDRATE = 19200;
    st.PARITY = 2;
    st.DATA = 7;
    st.STOPBITS = 2;
    EXPECT_EQ(port.CSettings(), "19200,e,7,1");
    st.PARITY = 1;
    EXPECT_EQ(port.CSettings(), "19200,o,7,1");
    st.PARITY = 0;
    EXPECT_EQ(port.CSettings(), "19200,n,7,1");
}

// Two stop bits change the status text but not the port.
TEST_F(ComPortTest, TwoStopBitsChangeOnlyTheStatusText) {
    st.PORT = 2;
    port.opener = [&](std::string_view, const channel::LineSettings&) {
        OpenResult r;
        auto c = std::make_unique<ScriptedChannel>([this] { return host.clockUs; });
        ch = c.get();
        r.channel = std::move(c);
        return r;
    };
    st.STOPBITS = 1;
    port.get_preferences();
    const auto one = ch->settings();
    const std::string statusOne = port.GetComState();
    st.STOPBITS = 2;
    port.get_preferences();
    EXPECT_EQ(ch->settings().stopBits, 1);
    EXPECT_EQ(ch->settings().baud, one.baud);
    EXPECT_EQ(statusOne, "COM2-9600,n,8,1");
    EXPECT_EQ(port.GetComState(), "COM2-9600,n,8,2");
}

TEST_F(ComPortTest, GetComStateShowsKLine) {
    st.KLINE = 1;
    st.PARITY = 2;
    EXPECT_EQ(port.GetComState(), "COM1-9600,e,8,1 (K-LINE) ");
    st.PORTNAME = "/dev/ttyUSB0";
    EXPECT_EQ(port.GetComState(), "/dev/ttyUSB0-9600,e,8,1 (K-LINE) ");
}

TEST_F(ComPortTest, GetPreferencesOpensWithTheSettingsAndThresholdOne) {
    st.BAUDRATE = 57600;
    st.PARITY = 2;
    std::string opened;
    port.opener = [&](std::string_view text, const channel::LineSettings& ls) {
        opened = std::string(text);
        EXPECT_EQ(ls.baud, 57600u);
        EXPECT_EQ(ls.parity, channel::Parity::Even);
        OpenResult r;
        r.channel = std::make_unique<ScriptedChannel>([this] { return host.clockUs; });
        return r;
    };
    port.get_preferences();
    EXPECT_EQ(opened, "/dev/ttyS0");
    EXPECT_TRUE(port.isOpen());
    EXPECT_EQ(port.receiveThreshold(), 1);
    EXPECT_EQ(port.settingsText(), "57600,e,8,1");
}

TEST_F(ComPortTest, GetPreferencesFailingToOpenShowsCaution) {
    port.opener = [](std::string_view text, const channel::LineSettings&) {
        OpenResult r;
        r.err = EACCES;
        r.error = "Permission denied";
        r.path = std::string(text);
        return r;
    };
    port.get_preferences();
    EXPECT_FALSE(port.isOpen());
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0], kCaution);
    EXPECT_NE(host.terminal.find("*Port /dev/ttyS0: Permission denied"), std::string::npos);
    EXPECT_NE(host.terminal.find("dialout"), std::string::npos);
}

TEST_F(ComPortTest, PortTextChoice) {
    st.PORT = 3;
    EXPECT_EQ(port.portText(), "/dev/ttyS2");
    st.PORTNAME = "socket://localhost:4000";
    EXPECT_EQ(port.portText(), "socket://localhost:4000");
    st.portOverride = "/dev/pts/7";
    EXPECT_EQ(port.portText(), "/dev/pts/7");
}

// The search tries 1 to 30 whatever COMPORTS says.
TEST_F(ComPortTest, SearchStopsAtThirty) {
    st.COMPORTS = 64;
    std::vector<std::string> tried;
    port.opener = [&](std::string_view text, const channel::LineSettings&) {
        tried.emplace_back(text);
        OpenResult r;
        if (tried.size() % 2 == 0)
            r.channel = std::make_unique<ScriptedChannel>([this] { return host.clockUs; });
        else
            r.err = ENOENT;
        return r;
    };
    port.SearchComPorts();
    ASSERT_EQ(tried.size(), 30u);
    EXPECT_EQ(tried.front(), "COM1");
    EXPECT_EQ(tried.back(), "COM30");
    ASSERT_EQ(port.portList.size(), 15u);
    EXPECT_EQ(port.portList[0], "COM2");
    EXPECT_EQ(port.portList[14], "COM30");
    EXPECT_TRUE(host.boxes.empty());  // errors are swallowed
    EXPECT_TRUE(port.isOpen());       // the port in use stays as it was
}

TEST_F(ComPortTest, AddComportsListsWithoutTrying) {
    int tries = 0;
    port.opener = [&](std::string_view, const channel::LineSettings&) {
        ++tries;
        return OpenResult{};
    };
    port.AddComports(3, 6);
    EXPECT_EQ(port.portList, (std::vector<std::string>{"COM3", "COM4", "COM5", "COM6"}));
    EXPECT_EQ(tries, 0);
}

TEST_F(ComPortTest, SetPortDrivesRtsAndDtr) {
    port.setPort(0, 1);
    EXPECT_EQ(ch->rts(), true);
    port.setPort(1, 1);
    EXPECT_EQ(ch->dtr(), true);
    // Level 0 drops the line; any level but 1 counts as low.
    port.setPort(0, 0);
    EXPECT_EQ(ch->rts(), false);
    port.setPort(1, 5);
    EXPECT_EQ(ch->dtr(), false);
    port.setPort(2, 1);
    EXPECT_EQ(ch->rts(), false);
    EXPECT_EQ(ch->dtr(), false);
}

TEST_F(ComPortTest, IdleLevelsAreSetRightAfterOpen) {
    auto c = std::make_unique<ScriptedChannel>([this] { return host.clockUs; });
    auto* raw = c.get();
    port.attach(std::move(c));
    EXPECT_EQ(raw->rts(), false);
    EXPECT_EQ(raw->dtr(), false);
}

TEST_F(ComPortTest, ClearInputEmptiesTheBuffer) {
    ch->arrive(std::vector<uint8_t>{1, 2, 3});
    EXPECT_EQ(port.inCount(), 3);
    port.clearInput();
    EXPECT_EQ(port.inCount(), 0);
}

}  // namespace
}  // namespace vortelm::link
