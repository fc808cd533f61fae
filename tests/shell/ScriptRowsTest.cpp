// The log and scripting rows through the shell frame, byte for byte: the
// texts of _print, _writelogfile, _message and _cmessage, the log switches,
// the waits, the boxes of _pause and _input, and _poll.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "ScriptedBoard.h"
#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "link/ComPort.h"
#include "shell/Rows.h"
#include "shell/Shell.h"

namespace vortelm::shell {
namespace {

using testing::ScriptedBoard;

struct ScriptRows : ::testing::Test {
    TestHost host;
    std::unique_ptr<ProgramState> st = std::make_unique<ProgramState>(host);
    link::ComPort port{*st};
    Session s{*st};
    ScriptedBoard* board = nullptr;
    std::filesystem::path folder;

    void SetUp() override {
        BuildShellCommandTable(s.table);
        folder = std::filesystem::temp_directory_path() /
                 ("vortelm-scriptrows-" + std::to_string(::getpid()) + "-" +
                  ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(folder);
        st->programFolder = folder.string();
        st->PATH_LOG = folder.string();
        st->PATH_SCRIPT = folder.string();
        st->sfrTable[0].name = "SYSCON";
        st->sfrTable[0].address = 0xFF12;
        st->sfrCount = 1;
        auto b = std::make_unique<ScriptedBoard>();
        board = b.get();
        board->mode = ScriptedBoard::Mode::Monitor;
        board->memory[0xFF12] = 0x90;
        port.attach(std::move(b));
        s.port = &port;
    }
    void TearDown() override { std::filesystem::remove_all(folder); }
    std::string Run(std::string_view line) {
        host.terminal.clear();
        result = ExecuteShellCommand(s, line, 0);
        return host.terminal;
    }
    std::string Read(const std::string& name) {
        std::ifstream f(folder / name, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(f), {});
    }
    int32_t& var(int i) { return st->variables[static_cast<size_t>(i)]; }
    int16_t result = 0;
};

TEST_F(ScriptRows, PrintJoinsThePiecesWithoutSeparator) {
    var(1) = 0x2A;
    EXPECT_EQ(Run("_print \"a\",\"b\",%1"), ">_print \"a\",\"b\",%1\r\nab002A\r\n");
    EXPECT_EQ(result, 0);
    var(1) = 0x12345;  // more digits when the value needs them
    EXPECT_EQ(Run("_print %1"), ">_print %1\r\n12345\r\n");
    // One quote at each end goes, inner ones stay; %X is no variable here.
    EXPECT_EQ(Run("_print \"\"q\"\",%X"), ">_print \"\"q\"\",%X\r\n\"q\"%X\r\n");
}

TEST_F(ScriptRows, PrintTimestamp) {
    host.timestamp = "20261122_235959";
    EXPECT_EQ(Run("_print TIMESTAMP"), ">_print TIMESTAMP\r\n20261122_235959\r\n");
    EXPECT_EQ(Run("_print \"run at timestamp\""),
              ">_print \"run at timestamp\"\r\nrun at 20261122_235959\r\n");
}

TEST_F(ScriptRows, PrintReadsAnSfrFromTheTarget) {
    EXPECT_EQ(Run("_print \"S=\",syscon"), ">_print \"S=\",syscon\r\nS=\r\n");
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, "Error reading SFR (maybe not connected)");
    st->ConnectionState = kConnectedAndReady;
    EXPECT_EQ(Run("_print \"S=\",SYSCON"), ">_print \"S=\",SYSCON\r\nS=0090\r\n");
    EXPECT_EQ(host.boxes.size(), 1u);
}

TEST_F(ScriptRows, MessageStringsStandOnLinesOfTheirOwn) {
    var(1) = 0x2A;
    EXPECT_EQ(Run("_message \"a\",%1,\"b\""), ">_message \"a\",%1,\"b\"\r\n");
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, "a\n00002Ab\n");
    EXPECT_EQ(host.boxes[0].buttons, MsgButtons::Ok);
    // TIMESTAMP means nothing here; _cmessage does not wait for anyone.
    Run("_cmessage TIMESTAMP,%1");
    ASSERT_EQ(host.messageWindows.size(), 1u);
    EXPECT_EQ(host.messageWindows[0], "TIMESTAMP\n00002A");
    EXPECT_EQ(host.boxes.size(), 1u);
}

TEST_F(ScriptRows, Pause) {
    EXPECT_EQ(Run("_pause"), ">_pause\r\n");
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, "Please klick to the OK Button to continue");
}

TEST_F(ScriptRows, SetLogFileTakesTheNameFirst) {
    EXPECT_EQ(Run("_setlogfile x.log,FOO"),
              ">_setlogfile x.log,FOO\r\n*ERROR: Illegal parameters\r\n"
              "usage: _setlogfile <filename>[,APPEND]\r\n");
    EXPECT_EQ(result, -2);
    EXPECT_EQ(st->logFileName, "x.log");
    EXPECT_EQ(st->logEnabled, 1);
    EXPECT_EQ(Read("x.log"),
              "*ERROR: Illegal parameters\nusage: _setlogfile <filename>[,APPEND]\n");
    // APPEND keeps the file; one argument empties it.
    Run("_setlogfile x.log,append");
    EXPECT_EQ(result, 0);
    EXPECT_NE(Read("x.log").find("usage"), std::string::npos);
    Run("_setlogfile x.log");
    EXPECT_EQ(Read("x.log"), "");
}

TEST_F(ScriptRows, LogFileSwitch) {
    for (auto [arg, value] : {std::pair{"ON", 1}, {"off", 0}, {"1", 1}, {"0", 0}}) {
        Run(std::string("_logfile ") + arg);
        EXPECT_EQ(result, 0) << arg;
        EXPECT_EQ(st->logEnabled, value) << arg;
    }
    var(3) = 7;  // above 0 counts as 1
    Run("_logfile %3");
    EXPECT_EQ(st->logEnabled, 1);
    var(3) = 0;
    Run("_logfile %3");
    EXPECT_EQ(st->logEnabled, 0);
    Run("_logfile 1.0");  // numeric for the frame, but not one of the words
    EXPECT_EQ(result, -2);
    // The lines that name _logfile never reach the log.
    Run("_logfile on");
    EXPECT_EQ(Read("LOG.TXT"), "");
}

TEST_F(ScriptRows, WriteLogFileWritesWhateverLoggingSays) {
    var(1) = 5;
    Run("_writelogfile \"n=\",%1,\" \",TIMESTAMP");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(Read("LOG.TXT"), "n=0005 20261121_120000\n");
    EXPECT_EQ(st->logEnabled, 0);
}

TEST_F(ScriptRows, DelayWaitsOnTheClock) {
    const int64_t start = host.now;
    host.seconds = 100.4;  // the end time is rounded: 102 - 100.4 = 1.6 s
    Run("_delay 2");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(host.now - start, 1'600'000);
    var(1) = 3;
    host.seconds = 200.0;
    const int64_t t = host.now;
    Run("_delay %1");
    EXPECT_EQ(host.now - t, 3'000'000);
    const int64_t m = host.now;
    Run("_delayms 250");
    EXPECT_EQ(host.now - m, 250'000);
    // Past its declared range: the frame lets it through.
    host.seconds = 0.0;
    const int64_t big = host.now;
    Run("_delay 500");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(host.now - big, 500'000'000);
}

TEST_F(ScriptRows, AbortEndsAWaitEarly) {
    host.startTimer(100, [this] { st->scriptAbort = 1; });
    const int64_t start = host.now;
    Run("_delay 60");
    EXPECT_EQ(result, 0);
    EXPECT_LE(host.now - start, 200'000);
}

TEST_F(ScriptRows, InputStoresAHexadecimalAnswer) {
    var(4) = 0x1F;
    host.inputAnswers = {std::string("ab12")};
    EXPECT_EQ(Run("_input \"Serial\",%4"), ">_input \"Serial\",%4\r\n");
    EXPECT_EQ(var(4), 0xAB12);
    ASSERT_EQ(host.inputPrompts.size(), 1u);
    EXPECT_EQ(host.inputPrompts[0], "Serial");
    // Cancel and the empty answer store 0; the default is the value in six digits.
    host.inputAnswers = {std::nullopt};
    Run("_input Serial,%4");
    EXPECT_EQ(var(4), 0);
    var(4) = 0x1F;
    Run("_input Serial,%4");  // no answer queued: the default comes back
    EXPECT_EQ(var(4), 0x1F);
    host.inputAnswers = {std::string("XYZ")};
    EXPECT_EQ(Run("_input Serial,%4"),
              ">_input Serial,%4\r\n*ERROR: Illegal number of parameters\r\n"
              "usage: _input <string>,<variable>[,yesno]\r\n");
    EXPECT_EQ(var(4), 0x1F);
}

TEST_F(ScriptRows, InputYesNo) {
    host.messageAnswers = {MsgAnswer::No, MsgAnswer::Yes};
    Run("_input \"Go on?\",%2,yesno");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(var(2), 0);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, "\"Go on?\"");  // as typed
    EXPECT_EQ(host.boxes[0].buttons, MsgButtons::YesNo);
    Run("_input \"Go on?\",%2,YESNO");
    EXPECT_EQ(var(2), 1);
    Run("_input \"Go on?\",%2,maybe");
    EXPECT_EQ(result, -3);
}

TEST_F(ScriptRows, InputNeedsAVariable) {
    // The frame already rejects a second argument that is no variable.
    EXPECT_EQ(Run("_input \"X\",5"),
              ">_input \"X\",5\r\n*ERROR: Parameter 2 must be valid variable\r\n"
              "*ERROR: Illegal parameters\r\nusage: _input <string>,<variable>[,yesno]\r\n");
    // %X passes the frame as variable 0, but not the strict test of the row.
    Run("_input \"X\",%X");
    EXPECT_EQ(result, -2);
}

TEST_F(ScriptRows, PollWaitsUntilTheMaskedWordMatches) {
    st->ConnectionState = kConnectedAndReady;
    board->memory[0x200] = 0x00;
    // The board sets the bit after a while.
    host.startTimer(30, [this] { board->memory[0x200] = 0x05; });
    var(1) = 0x200;
    EXPECT_EQ(Run("_poll %1,4,FFFF"), ">_poll %1,4,FFFF\r\n");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(board->peek(0x200), 0x05);
}

TEST_F(ScriptRows, ExecuteScriptRunsTheSubscript) {
    std::ofstream(folder / "sub.scm") << "_print \"sub\"\n";
    EXPECT_EQ(Run("_executescript sub.scm"),
              ">_executescript sub.scm\r\n_print \"sub\"\r\n>_print \"sub\"\r\nsub\r\n"
              "*Script successfully executed\r\n");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(Run("_executescript nothere.scm"),
              ">_executescript nothere.scm\r\n*ERROR: Illegal parameters\r\n"
              "usage: _executescript <filename>[,<continue>]\r\n");
}

}  // namespace
}  // namespace vortelm::shell
