// The terminal rows and the command box's ":" and text lines, on a scripted
// far end.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "link/ComPort.h"
#include "link/ScriptedChannel.h"
#include "shell/CommandBox.h"
#include "shell/Rows.h"
#include "shell/Shell.h"

namespace vortelm::shell {
namespace {

using channel::ScriptedChannel;

constexpr const char* kCaution =
    "Caution ! Communication port used by other application ! Please select a different port ";

struct TerminalRows : ::testing::Test {
    TestHost host;
    std::unique_ptr<ProgramState> st = std::make_unique<ProgramState>(host);
    link::ComPort port{*st};
    Session s{*st};
    ScriptedChannel* ch = nullptr;
    std::filesystem::path folder;

    void SetUp() override {
        BuildShellCommandTable(s.table);
        s.port = &port;
        auto c = std::make_unique<ScriptedChannel>([this] { return host.now; }, "script:t");
        ch = c.get();
        port.attach(std::move(c));
        folder = std::filesystem::temp_directory_path() /
                 ("vortelm-terminal-" + std::to_string(::getpid()) + "-" +
                  ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(folder);
        st->programFolder = folder.string();
    }
    void TearDown() override { std::filesystem::remove_all(folder); }
    int16_t Run(std::string_view line) {
        host.terminal.clear();
        return ExecuteShellCommand(s, line, 0);
    }
    std::string sent() const { return ch->writtenText(); }
};

TEST_F(TerminalRows, SendPutsExactlyTheText) {
    EXPECT_EQ(Run("_send Hello"), 0);
    EXPECT_EQ(sent(), "Hello");
    EXPECT_EQ(host.terminal.find("SENDING"), std::string::npos);  // nothing logged
}

TEST_F(TerminalRows, SendHexPairs) {
    EXPECT_EQ(Run("_send :4142"), 0);
    EXPECT_EQ(sent(), "AB");
}

TEST_F(TerminalRows, SendHexSkipsBadPairsAndDropsALastDigit) {
    EXPECT_EQ(Run("_send :zz41 4"), 0);
    EXPECT_EQ(sent(), "A");
    ch->clearWritten();
    EXPECT_EQ(Run("_send :434"), 0);
    EXPECT_EQ(sent(), "C");
}

TEST_F(TerminalRows, SendFileSendsItsBytes) {
    {
        std::ofstream f(folder / "DATA.BIN", std::ios::binary);
        f.write("\x00\x01\xFFxy", 5);
    }
    EXPECT_EQ(Run("_sendfile DATA.BIN"), 0);
    EXPECT_EQ(ch->written(), (std::vector<uint8_t>{0x00, 0x01, 0xFF, 'x', 'y'}));
}

TEST_F(TerminalRows, SendFileMissingIsStatusMinusTwo) {
    EXPECT_EQ(Run("_sendfile NOFILE.BIN"), -2);
    EXPECT_TRUE(ch->written().empty());
}

TEST_F(TerminalRows, SetPSignalsAndLevels) {
    EXPECT_EQ(Run("_setp RTS,1"), 0);
    EXPECT_EQ(ch->rts(), true);
    EXPECT_EQ(Run("_setp reset,0"), 0);
    EXPECT_EQ(ch->rts(), false);
    EXPECT_EQ(Run("_setp DTR,1"), 0);
    EXPECT_EQ(ch->dtr(), true);
    EXPECT_EQ(Run("_setp bsl,0"), 0);
    EXPECT_EQ(ch->dtr(), false);
}

TEST_F(TerminalRows, SetPRejectsOnAndUnknownSignals) {
    EXPECT_EQ(Run("_setp RTS,ON"), -2);
    EXPECT_EQ(ch->rts(), false);
    EXPECT_EQ(Run("_setp CTS,1"), -2);
    EXPECT_EQ(ch->rts(), false);
    EXPECT_EQ(ch->dtr(), false);
}

TEST_F(TerminalRows, OpenPortOpensAClosedPort) {
    port.close();
    port.opener = [this](std::string_view, const channel::LineSettings&) {
        link::OpenResult r;
        auto c = std::make_unique<ScriptedChannel>([this] { return host.now; });
        ch = c.get();
        r.channel = std::move(c);
        return r;
    };
    EXPECT_EQ(Run("_openport"), 0);
    EXPECT_TRUE(port.isOpen());
    EXPECT_TRUE(host.boxes.empty());
}

TEST_F(TerminalRows, OpenPortFailingShowsCautionAndFails) {
    port.close();
    port.opener = [](std::string_view text, const channel::LineSettings&) {
        link::OpenResult r;
        r.err = EBUSY;
        r.error = "Device or resource busy";
        r.path = std::string(text);
        return r;
    };
    EXPECT_EQ(Run("_openport"), RowId(0x5004));
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, kCaution);
    EXPECT_NE(host.terminal.find("*Port /dev/ttyS0: Device or resource busy"), std::string::npos);
}

TEST_F(TerminalRows, CommandBoxHexLineSendsAndLogsEachByte) {
    host.terminal.clear();
    EXPECT_EQ(RunCommandBoxLine(s, ":4142"), 0);
    EXPECT_EQ(sent(), "AB");
    EXPECT_EQ(host.terminal, "\r\n-> SENDING: 41\r\n-> SENDING: 42");
}

// The pairing rule: ":41 42" takes "41", then " 4", and drops the last "2".
TEST_F(TerminalRows, CommandBoxHexLineWithABlankSendsOnlyTheFirstByte) {
    host.terminal.clear();
    EXPECT_EQ(RunCommandBoxLine(s, ":41 42"), 0);
    EXPECT_EQ(sent(), "A");
    EXPECT_EQ(host.terminal, "\r\n-> SENDING: 41");
}

TEST_F(TerminalRows, CommandBoxTextLineSendsWithoutALineEnd) {
    host.terminal.clear();
    EXPECT_EQ(RunCommandBoxLine(s, "Hello there"), 0);
    EXPECT_EQ(sent(), "Hello there");
    EXPECT_EQ(host.terminal, "\r\n-> SENDING: Hello there");
}

TEST_F(TerminalRows, CommandBoxOnAClosedPortShowsCaution) {
    port.close();
    host.terminal.clear();
    (void)RunCommandBoxLine(s, "x");
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, kCaution);
}

}  // namespace
}  // namespace vortelm::shell
