// The script interpreter: loading and cleaning, the classification with its
// refusals, the jumps, nesting, the failure and abort rules, byte for byte.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "ScriptedBoard.h"
#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "link/ComPort.h"
#include "shell/Rows.h"
#include "shell/Script.h"
#include "shell/Shell.h"

namespace vortelm::shell {
namespace {

using testing::ScriptedBoard;

bool EndsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

struct Scripts : ::testing::Test {
    TestHost host;
    std::unique_ptr<ProgramState> st = std::make_unique<ProgramState>(host);
    link::ComPort port{*st};
    Session s{*st};
    ScriptedBoard* board = nullptr;
    std::filesystem::path folder;

    void SetUp() override {
        BuildShellCommandTable(s.table);
        folder = std::filesystem::temp_directory_path() /
                 ("vortelm-script-" + std::to_string(::getpid()) + "-" +
                  ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(folder);
        st->programFolder = folder.string();
        st->PATH_SCRIPT = folder.string();
        st->PATH_LOG = folder.string();
    }
    void TearDown() override { std::filesystem::remove_all(folder); }
    void Board() {
        auto b = std::make_unique<ScriptedBoard>();
        board = b.get();
        board->mode = ScriptedBoard::Mode::Monitor;
        port.attach(std::move(b));
        s.port = &port;
        st->ConnectionState = kConnectedAndReady;
    }
    void Write(const std::string& name, const std::string& text) {
        std::ofstream(folder / name, std::ios::binary) << text;
    }
    // Runs a script and gives the running text it made.
    std::string RunFile(const std::string& name, int16_t continueOnError = 0) {
        host.terminal.clear();
        status = RunScript(s, (folder / name).string(), continueOnError);
        return host.terminal;
    }
    std::string Script(const std::string& text, int16_t continueOnError = 0) {
        Write("t.scm", text);
        return RunFile("t.scm", continueOnError);
    }
    int32_t& var(int i) { return st->variables[static_cast<size_t>(i)]; }
    int depth() { return ScriptsOf(s).scriptDepth; }
    int status = 0;
};

TEST_F(Scripts, ListsTheCleanedLinesThenRuns) {
    EXPECT_EQ(Script("; a comment\n\n  _assign   %1=5  ; five\r\n\t_print %1\n"),
              "_assign %1=5\r\n_print %1\r\n"
              ">_assign %1=5\r\n"
              ">_print %1\r\n0005\r\n"
              "*Script successfully executed\r\n");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(depth(), 0);
    EXPECT_EQ(st->lastScriptFiles[0], (folder / "t.scm").string());
}

TEST_F(Scripts, ExactlyFiveThousandLinesRunAndOneMoreIsRefused) {
    std::string text;
    for (int i = 0; i < 5000; ++i) text += "L" + std::to_string(i) + ":\n";
    std::string out = Script(text);
    EXPECT_TRUE(EndsWith(out, "L4999:\r\n*Script successfully executed\r\n"));
    EXPECT_EQ(depth(), 0);
    out = Script(text + "\n; a comment does not count\nL5000:\nL5001:\n");
    EXPECT_TRUE(
        EndsWith(out, "L5000:\r\n*ERROR: Script exceeds maximum number of lines (5000)\r\n"))
        << out.substr(out.size() - 80);
    EXPECT_EQ(out.find("L5001"), std::string::npos);  // reading stopped there
    EXPECT_EQ(status, -1);
    EXPECT_EQ(depth(), 1);  // the known trait: the depth stays raised
}

TEST_F(Scripts, ASemicolonInQuotesCutsTheLine) {
    EXPECT_EQ(Script("_print \"a;b\"\n"),
              "_print \"a\r\n>_print \"a\r\na\r\n*Script successfully executed\r\n");
}

TEST_F(Scripts, BlanksAroundCommasGoInScriptsOnly) {
    Script("_addselection 10 , 20\n");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(st->selections.count, 1);
    host.terminal.clear();
    EXPECT_NE(ExecuteShellCommand(s, "_addselection 10 ,20", 0), 0);
    EXPECT_NE(host.terminal.find(
                  "*ERROR: Parameter 1 must be valid hexadecimal value (24 bit) or variable"),
              std::string::npos);
}

TEST_F(Scripts, DoLoopUntilACountRunsTheBodyThatOften) {
    EXPECT_EQ(Script("DO\n_print \"x\"\nLOOP UNTIL 3\n"),
              "DO\r\n_print \"x\"\r\nLOOP UNTIL 3\r\n"
              ">_print \"x\"\r\nx\r\n>_print \"x\"\r\nx\r\n>_print \"x\"\r\nx\r\n"
              "*Script successfully executed\r\n");
    // The count is decimal, and the counter starts again on the next pass.
    var(1) = 0;
    Script("DO\n_assign %1=%1+1\nLOOP UNTIL 10\nDO\n_assign %1=%1+1\nLOOP UNTIL 10\n");
    EXPECT_EQ(var(1), 20);
}

TEST_F(Scripts, LoopUntilAConditionAndLoopAlone) {
    var(1) = 0;
    Script("DO\n_assign %1=%1+1\nLOOP UNTIL %1=5\n");
    EXPECT_EQ(var(1), 5);
    var(1) = 0;
    Script("DO\n_assign %1=%1+1\nLOOP\n");
    EXPECT_EQ(var(1), 1);  // LOOP alone runs the body once
}

TEST_F(Scripts, LoopUntilAVariableIsNoRepeatCount) {
    EXPECT_EQ(Script("DO\n_print \"x\"\nLOOP UNTIL %1\n"),
              "DO\r\n_print \"x\"\r\nLOOP UNTIL %1\r\n"
              "*ERROR: repeat count %1 of LOOP UNTIL is no 16-bit number\r\n");
    EXPECT_EQ(status, -1);
    EXPECT_EQ(depth(), 0);
}

TEST_F(Scripts, WhileAndIf) {
    EXPECT_EQ(Script("WHILE 0\n_print \"in\"\nENDW\n_print \"out\"\n"),
              "WHILE 0\r\n_print \"in\"\r\nENDW\r\n_print \"out\"\r\n"
              ">_print \"out\"\r\nout\r\n*Script successfully executed\r\n");
    const std::string text = "IF %1\n_print \"then\"\nELSE\n_print \"else\"\nENDIF\n";
    var(1) = 2;
    std::string out = Script(text);
    EXPECT_NE(out.find(">_print \"else\"\r\nelse\r\n"), std::string::npos);
    EXPECT_EQ(out.find(">_print \"then\""), std::string::npos);
    var(1) = 1;
    out = Script(text);
    EXPECT_NE(out.find(">_print \"then\"\r\nthen\r\n*Script"), std::string::npos);
    var(1) = 0;
    var(2) = 0;
    Script("WHILE %1<5\n_assign %1=%1+1\nIF %1=3\n_assign %2=%1\nENDIF\nENDW\n");
    EXPECT_EQ(var(1), 5);
    EXPECT_EQ(var(2), 3);
}

TEST_F(Scripts, IfWithoutEndIfGoesOnAtLineOneWhenFalse) {
    var(1) = 0;
    // jumpFalse stays 0, so a false IF continues behind line 0.
    Script("IF 0\n_assign %1=%1+1\n");
    EXPECT_EQ(var(1), 1);
}

TEST_F(Scripts, GotoNeedsTheColon) {
    EXPECT_EQ(Script("GOTO END:\n_print \"skipped\"\nend:\n_print \"done\"\n"),
              "GOTO END:\r\n_print \"skipped\"\r\nend:\r\n_print \"done\"\r\n"
              ">_print \"done\"\r\ndone\r\n*Script successfully executed\r\n");
    EXPECT_EQ(Script("GOTO END\nend:\n"),
              "GOTO END\r\nend:\r\n*ERROR: Label in Goto Statement not found\r\n"
              "*ERROR: Script aborted\r\n");
    EXPECT_EQ(status, -1);
    // Whatever continueOnError says.
    EXPECT_NE(Script("GOTO END\nend:\n", 1).find("*ERROR: Script aborted"), std::string::npos);
}

TEST_F(Scripts, GotoIntoAndOutOfLoops) {
    var(1) = 0;
    var(2) = 0;
    // Out of a counted loop after two passes; the counter stands at 2, so
    // the next run through the loop only needs one more pass.
    Script(
        "again:\nDO\n_assign %1=%1+1\nIF %1=2\nGOTO out:\nENDIF\nLOOP UNTIL 3\n"
        "_assign %2=%2+1\nGOTO fin:\nout:\nGOTO again:\nfin:\n");
    // Passes: 1 (counter 1), 2 (jump out), back: 3 (counter 2), 4 (counter 3: ends).
    EXPECT_EQ(var(1), 4);
    EXPECT_EQ(var(2), 1);
    // Into the body of a WHILE: the ENDW goes back to its test.
    var(1) = 7;
    Script("GOTO inside:\nWHILE %1<3\ninside:\n_assign %1=%1+1\nENDW\n");
    EXPECT_EQ(var(1), 8);
}

TEST_F(Scripts, UnmatchedBlockWords) {
    EXPECT_EQ(Script("ELSE\n"), "ELSE\r\n*ERROR: Unexpected ELSE\r\n*ERROR: Script aborted\r\n");
    EXPECT_EQ(Script("ENDIF\n"), "ENDIF\r\n*ERROR: Unexpected ENDIF\r\n*ERROR: Script aborted\r\n");
    EXPECT_EQ(Script("ENDW\n", 1), "ENDW\r\n*ERROR: Unexpected ENDW\r\n*ERROR: Script aborted\r\n");
    EXPECT_EQ(Script("DO\nWHILE 1\nLOOP\n"),
              "DO\r\nWHILE 1\r\nLOOP\r\n*ERROR: Unexpected LOOP \r\n*ERROR: Script aborted\r\n");
    EXPECT_EQ(Script("IF 1\nELSE\nELSE\nENDIF\n").find("*ERROR: Unexpected ELSE"),
              std::string("IF 1\r\nELSE\r\nELSE\r\nENDIF\r\n").size());
}

TEST_F(Scripts, MoreThanAHundredOpenBlocksIsABound) {
    std::string text;
    for (int i = 0; i < 101; ++i) text += "DO\n";
    const std::string out = Script(text);
    EXPECT_TRUE(
        EndsWith(out, "DO\r\n*ERROR: script block stack index 100 out of range 0 to 99\r\n"));
    EXPECT_EQ(depth(), 0);
}

TEST_F(Scripts, BadExpressionsAndContinueOnError) {
    EXPECT_EQ(Script("IF 1=XYZ\nENDIF\n"),
              "IF 1=XYZ\r\nENDIF\r\n*ERROR: Error in expression in IF statement\r\n"
              "*ERROR: Script aborted\r\n");
    EXPECT_EQ(Script("WHILE XYZ\nENDW\n"),
              "WHILE XYZ\r\nENDW\r\n*ERROR: Error in expression in WHILE statement\r\n"
              "*ERROR: Script aborted\r\n");
    EXPECT_EQ(Script("DO\nLOOP UNTIL 1=XYZ\n"),
              "DO\r\nLOOP UNTIL 1=XYZ\r\n*ERROR: Error in expression in LOOP statement\r\n"
              "*ERROR: Script aborted\r\n");
    // Going on, the bad IF never holds.
    EXPECT_EQ(Script("IF 1=XYZ\n_print \"in\"\nENDIF\n_print \"after\"\n", 1),
              "IF 1=XYZ\r\n_print \"in\"\r\nENDIF\r\n_print \"after\"\r\n"
              "*ERROR: Error in expression in IF statement\r\n"
              ">_print \"after\"\r\nafter\r\n*Script successfully executed\r\n");
}

TEST_F(Scripts, ABadCommandLine) {
    EXPECT_EQ(Script("_print \"a\"\n_nothing 1\n"),
              "_print \"a\"\r\n_nothing 1\r\n*ERROR: Illegal command\r\n"
              "*ERROR: No valid command (_nothing 1)\r\n*ERROR: Script aborted\r\n");
    // With continueOnError it stays a command line and fails again when run.
    EXPECT_EQ(Script("_nothing 1\n_print \"a\"\n", 1),
              "_nothing 1\r\n_print \"a\"\r\n*ERROR: Illegal command\r\n"
              ">_nothing 1\r\n*ERROR: Illegal command\r\n"
              ">_print \"a\"\r\na\r\n*Script successfully executed\r\n");
    EXPECT_EQ(status, 0);
}

TEST_F(Scripts, ACommandFailingAtRunTime) {
    var(1) = 9;
    EXPECT_EQ(Script("_assign %1=1+2+3\n_assign %1=1\n"),
              "_assign %1=1+2+3\r\n_assign %1=1\r\n"
              ">_assign %1=1+2+3\r\n*ERROR: Illegal parameters\r\nusage: _assign <expression>\r\n"
              "*ERROR: Script aborted\r\n");
    EXPECT_EQ(var(1), 9);
    Script("_assign %1=1+2+3\n_assign %1=1\n", 1);
    EXPECT_EQ(var(1), 1);
    // The last line run failed: the script's status says so.
    Script("_assign %1=2\n_assign %1=1+2+3\n", 1);
    EXPECT_EQ(status, -1);
}

TEST_F(Scripts, ASubscriptThatFailsLetsTheCallerGoOn) {
    Write("sub.scm", "_assign %1=1+2+3\n");
    EXPECT_EQ(Script("_executescript sub.scm\n_print \"caller\"\n"),
              "_executescript sub.scm\r\n_print \"caller\"\r\n"
              ">_executescript sub.scm\r\n"
              "_assign %1=1+2+3\r\n"
              ">_assign %1=1+2+3\r\n*ERROR: Illegal parameters\r\nusage: _assign <expression>\r\n"
              "*ERROR: Script aborted\r\n"
              ">_print \"caller\"\r\ncaller\r\n*Script successfully executed\r\n");
    EXPECT_EQ(status, 0);
}

TEST_F(Scripts, NestingToThreeAndTheRefusalAtFour) {
    Write("d2.scm", "_assign %3=3\n_executescript d3.scm\n");
    Write("d3.scm", "_assign %4=4\n");
    Write("d1.scm", "_assign %2=2\n_executescript d2.scm\n");
    var(4) = 0;
    // Depths 1 (t), 2 (d1), 3 (d2): d3 would be the fourth.
    const std::string out = Script("_executescript d1.scm\n_print \"top\"\n");
    EXPECT_EQ(var(2), 2);
    EXPECT_EQ(var(3), 3);
    EXPECT_EQ(var(4), 0);
    EXPECT_NE(out.find(">_executescript d3.scm\r\n*ERROR: Too many subscripts executed\r\n"
                       "*Script successfully executed\r\n"),
              std::string::npos);
    EXPECT_NE(out.find(">_print \"top\"\r\ntop\r\n*Script successfully executed\r\n"),
              std::string::npos);
    EXPECT_EQ(depth(), 0);
    // Started from d1 as the top, d3 runs at the third depth.
    RunFile("d1.scm");
    EXPECT_EQ(var(4), 4);
}

TEST_F(Scripts, ExecuteScriptArguments) {
    Write("sub.scm", "_nothing\n_assign %1=7\n");
    host.terminal.clear();
    EXPECT_EQ(ExecuteShellCommand(s, "_executescript missing.scm", 0), -2);
    // The frame already rejects it (-2, and 1 for the last argument).
    EXPECT_EQ(ExecuteShellCommand(s, "_executescript sub.scm,maybe", 0), -1);
    var(1) = 0;
    EXPECT_EQ(ExecuteShellCommand(s, "_executescript sub.scm,off", 0), 0);
    EXPECT_EQ(var(1), 0);
    EXPECT_EQ(ExecuteShellCommand(s, "_executescript sub.scm,1", 0), 0);
    EXPECT_EQ(var(1), 7);
}

TEST_F(Scripts, RunningTwiceRebuildsEverything) {
    Write("twice.scm", "DO\n_assign %1=%1+1\nLOOP UNTIL 2\n");
    var(1) = 0;
    RunFile("twice.scm");
    RunFile("twice.scm");
    EXPECT_EQ(var(1), 4);
}

TEST_F(Scripts, EscStopsALongLoopBetweenStatements) {
    var(1) = 0;
    // The operator presses Esc while the loop waits in its delay.
    host.startTimer(50, [this] { st->scriptAbort = 1; });
    const std::string out =
        Script("DO\n_assign %1=%1+1\n_delayms 20\nLOOP UNTIL 30000\n_print \"never\"\n");
    EXPECT_TRUE(EndsWith(out, ">_delayms 20\r\n*Script aborted\r\n")) << out;
    EXPECT_EQ(out.find(">_print \"never\""), std::string::npos);
    EXPECT_GT(var(1), 0);
    EXPECT_LT(var(1), 10);
    EXPECT_EQ(st->scriptAbort, 0);
    EXPECT_EQ(depth(), 0);
    EXPECT_EQ(status, -1);
}

TEST_F(Scripts, AnEscThatEndsASubscriptIsConsumedByIt) {
    Write("sub.scm", "_delayms 100\n_assign %2=1\n");
    const int timer = host.startTimer(50, [this] { st->scriptAbort = 1; });
    var(2) = 0;
    const std::string out = Script("_executescript sub.scm\n_print \"caller\"\n");
    host.stopTimer(timer);
    EXPECT_EQ(var(2), 0);
    EXPECT_NE(out.find(">_delayms 100\r\n*Script aborted\r\n"
                       ">_print \"caller\"\r\ncaller\r\n*Script successfully executed\r\n"),
              std::string::npos);
    EXPECT_EQ(status, 0);
}

TEST_F(Scripts, EscEndsAPollWithOneLine) {
    Board();
    board->memory[0x100] = 0x00;
    host.startTimer(500, [this] { st->scriptAbort = 1; });
    const std::string out = Script("_poll 100,1,1\n_print \"never\"\n");
    EXPECT_EQ(out,
              "_poll 100,1,1\r\n_print \"never\"\r\n>_poll 100,1,1\r\n"
              "*ERROR: Poll ended by the operator\r\n*ERROR: Script aborted\r\n");
    EXPECT_EQ(st->scriptAbort, 0);
    EXPECT_EQ(depth(), 0);
    // The line is in step afterwards.
    board->memory[0x100] = 0x03;
    host.terminal.clear();
    EXPECT_EQ(ExecuteShellCommand(s, "_poll 100,1,1", 0), 0);
}

TEST_F(Scripts, ARunTimeBoundInAConditionEndsTheScript) {
    EXPECT_EQ(Script("IF FFFFFF*FFFFFF\nENDIF\n_print \"x\"\n"),
              "IF FFFFFF*FFFFFF\r\nENDIF\r\n_print \"x\"\r\n"
              "*ERROR: condition value 281474943156225 overflows 32 bits\r\n");
    EXPECT_EQ(Script("IF %100=1\nENDIF\n"),
              "IF %100=1\r\nENDIF\r\n*ERROR: variables index 100 out of range 0 to 99\r\n");
    EXPECT_EQ(depth(), 0);
}

TEST_F(Scripts, LabelsThatBeginWithAWord) {
    // DONE: is a DO, and its open block is never closed: nothing is said.
    EXPECT_EQ(Script("DONE:\n_print \"x\"\n"),
              "DONE:\r\n_print \"x\"\r\n>_print \"x\"\r\nx\r\n*Script successfully executed\r\n");
    // IFX: is an IF with a bad expression.
    EXPECT_NE(Script("IFX:\n").find("*ERROR: Error in expression in IF statement"),
              std::string::npos);
}

}  // namespace
}  // namespace vortelm::shell
