// The variables, _assign's evaluator and the condition evaluator, with SFR
// operands read from the scripted board.

#include <gtest/gtest.h>

#include "ScriptedBoard.h"
#include "core/Bits.h"
#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "core/TestHost.h"
#include "link/ComPort.h"
#include "shell/Expressions.h"
#include "shell/Rows.h"
#include "shell/Shell.h"

namespace vortelm::shell {
namespace {

using testing::ScriptedBoard;

struct Expressions : ::testing::Test {
    TestHost host;
    std::unique_ptr<ProgramState> st = std::make_unique<ProgramState>(host);
    link::ComPort port{*st};
    Session s{*st};
    ScriptedBoard* board = nullptr;

    void SetUp() override {
        BuildShellCommandTable(s.table);
        auto b = std::make_unique<ScriptedBoard>();
        board = b.get();
        board->mode = ScriptedBoard::Mode::Monitor;
        port.attach(std::move(b));
        s.port = &port;
        st->sfrTable[0].name = "ADCON";
        st->sfrTable[0].address = 0xFFA0;
        st->sfrTable[1].name = "ZERO";
        st->sfrTable[1].address = 0xFFA2;
        st->sfrCount = 2;
        board->memory[0xFFA0] = 0x34;
        board->memory[0xFFA1] = 0x12;
    }
    void connect() { st->ConnectionState = kConnectedAndReady; }
    std::string Run(std::string_view line) {
        host.terminal.clear();
        result = ExecuteShellCommand(s, line, 0);
        return host.terminal;
    }
    int32_t& var(int i) { return st->variables[static_cast<size_t>(i)]; }
    int64_t Cond(std::string text) {
        ConditionRecord r;
        parsed = ParseCondition(*st, text, r);
        return EvaluateCondition(s, r);
    }
    int16_t result = 0;
    int32_t parsed = 0;
};

TEST_F(Expressions, VariableIndexIsStrictWithoutAnUpperTest) {
    EXPECT_EQ(VariableIndex("%0"), 0);
    EXPECT_EQ(VariableIndex("%99"), 99);
    EXPECT_EQ(VariableIndex("%100"), 100);
    EXPECT_EQ(VariableIndex("%X"), -1);
    EXPECT_EQ(VariableIndex("%"), -1);
    EXPECT_EQ(VariableIndex("%-1"), -1);
    EXPECT_EQ(VariableIndex("5"), -1);
}

TEST_F(Expressions, NumbersAreHexadecimal) {
    EXPECT_EQ(Run("_assign %1=10"), ">_assign %1=10\r\n");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(var(1), 16);
}

TEST_F(Expressions, SubtractionWrapsIn24Bits) {
    Run("_assign %1=5-6");
    EXPECT_EQ(var(1), 0xFFFFFF);
    Run("_assign %2=-5");
    EXPECT_EQ(var(2), 0xFFFFFB);
}

TEST_F(Expressions, TimerOnlyOnTheLeft) {
    host.seconds = 100.0;
    Run("_assign %1=TIMER+1");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(var(1), 10001);
    var(2) = 7;
    EXPECT_EQ(
        Run("_assign %2=1+TIMER"),
        ">_assign %2=1+TIMER\r\n*ERROR: Illegal parameters\r\nusage: _assign <expression>\r\n");
    EXPECT_EQ(result, -2);
    EXPECT_EQ(var(2), 7);
}

TEST_F(Expressions, ASecondOperatorFails) {
    var(1) = 42;
    Run("_assign %1=1+2+3");
    EXPECT_EQ(result, -2);
    EXPECT_EQ(var(1), 42);
}

TEST_F(Expressions, EmptyRightSideStoresZero) {
    var(1) = 42;
    Run("_assign %1=");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(var(1), 0);
}

TEST_F(Expressions, ProductWrapsIn24Bits) {
    var(1) = 42;
    Run("_assign %1=800000*2");
    EXPECT_EQ(var(1), 0);
    Run("_assign %1=FFFFFF*FFFFFF");
    EXPECT_EQ(var(1), 1);
}

TEST_F(Expressions, ShiftsAreRotations) {
    var(2) = 0x000001;
    Run("_assign %1=%2>>4");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(var(1), 0x100000);
    Run("_assign %1=800000<<1");
    EXPECT_EQ(var(1), 1);
    Run("_assign %1=800000<<8");  // the true rotation, no overflow
    EXPECT_EQ(var(1), 0x80);
}

TEST_F(Expressions, RemainderAndDivisionByZeroFail) {
    Run("_assign %1=7#0");
    EXPECT_EQ(result, -2);
    Run("_assign %1=7/0");
    EXPECT_EQ(result, -2);
    Run("_assign %1=7#3");
    EXPECT_EQ(var(1), 1);
    Run("_assign %1=7/2");
    EXPECT_EQ(var(1), 3);
}

TEST_F(Expressions, BitOperatorsAndComplement) {
    Run("_assign %1=F0&3C");
    EXPECT_EQ(var(1), 0x30);
    Run("_assign %1=F0|0F");
    EXPECT_EQ(var(1), 0xFF);
    Run("_assign %1=FF^0F");
    EXPECT_EQ(var(1), 0xF0);
    Run("_assign %1=3~5");
    EXPECT_EQ(var(1), 0xFFFFFA);
    Run("_assign %1=~5");
    EXPECT_EQ(var(1), 0xFFFFFA);
}

TEST_F(Expressions, OtherAngleOperatorsFail) {
    for (const char* e :
         {"_assign %1=<5", "_assign %1=1><2", "_assign %1=1<=2", "_assign %1=1=2"}) {
        var(1) = 9;
        Run(e);
        EXPECT_EQ(result, -2) << e;
        EXPECT_EQ(var(1), 9) << e;
    }
}

TEST_F(Expressions, BlanksGoAndCaseDoesNotMatter) {
    Run("_assign %1 = a + b");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(var(1), 0x15);
}

TEST_F(Expressions, RandomWordsScaleTheGenerator) {
    host.randoms = {0.999999, 0.5};
    Run("_assign %1=RND8");
    EXPECT_EQ(var(1), 256);  // the rounding lets 256 turn up
    Run("_assign %1=RND16");
    EXPECT_EQ(var(1), 32768);
    Run("_assign %1=0+RND8");
    EXPECT_EQ(result, -2);
}

TEST_F(Expressions, VariablePastTheLastEndsTheCommandWithOneLine) {
    EXPECT_EQ(Run("_assign %100=1"),
              ">_assign %100=1\r\n*ERROR: variables index 100 out of range 0 to 99\r\n");
    EXPECT_NE(result, 0);
    EXPECT_EQ(Run("_assign %1=%100"),
              ">_assign %1=%100\r\n*ERROR: variables index 100 out of range 0 to 99\r\n");
}

TEST_F(Expressions, NoEqualsOrUnknownLeftSideFails) {
    Run("_assign %1");
    EXPECT_EQ(result, -2);
    Run("_assign FOO=1");
    EXPECT_EQ(result, -2);
}

TEST_F(Expressions, SfrOperandsAreReadFromTheTarget) {
    Run("_assign %1=ADCON");  // not connected: a failure
    EXPECT_EQ(result, -2);
    connect();
    Run("_assign %1=ADCON");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(var(1), 0x1234);
    Run("_assign %1=adcon+1");
    EXPECT_EQ(var(1), 0x1235);
    // An SFR of value 0 is fine on the left and a failure on the right.
    Run("_assign %1=ZERO+1");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(var(1), 1);
    var(1) = 5;
    Run("_assign %1=1+ZERO");
    EXPECT_EQ(result, -2);
    EXPECT_EQ(var(1), 5);
}

TEST_F(Expressions, AssignToAnSfrWritesTheWord) {
    connect();
    Run("_assign ZERO=ABCD");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(board->peek(0xFFA2), 0xCD);
    EXPECT_EQ(board->peek(0xFFA3), 0xAB);
}

TEST_F(Expressions, ConditionsHoldForExactlyOne) {
    EXPECT_EQ(Cond("1=1"), 1);
    EXPECT_EQ(parsed, 2);
    EXPECT_EQ(Cond("1"), 1);
    EXPECT_EQ(parsed, 1);
    EXPECT_EQ(Cond("2"), 2);
    EXPECT_EQ(Cond("0=0"), 1);
    EXPECT_EQ(Cond("~5"), 0xFFFF);  // the empty left operand, complemented in 16 bits
    var(1) = 3;
    EXPECT_EQ(Cond("%1&2"), 2);
    EXPECT_EQ(Cond("%1 <> 3"), 0);
    EXPECT_EQ(Cond("%1>=3"), 1);
    EXPECT_EQ(Cond("%1<=2"), 0);
    EXPECT_EQ(Cond("%1<4"), 1);
    EXPECT_EQ(Cond("%1>4"), 0);
}

TEST_F(Expressions, ConditionArithmeticHasNoMask) {
    EXPECT_EQ(Cond("5-6"), -1);
    EXPECT_EQ(Cond("800000+800000"), 0x1000000);
    // Past 32 bits is the program's arithmetic failure (the script reports it).
    EXPECT_THROW(Cond("FFFFFF*FFFFFF"), RunTimeError);
}

TEST_F(Expressions, ConditionDivisionRoundsAndRefusesZero) {
    EXPECT_EQ(Cond("7/2"), 4);  // 3.5 to the even 4
    EXPECT_EQ(Cond("5/2"), 2);  // 2.5 to the even 2
    EXPECT_EQ(Cond("5/0"), -1);
    EXPECT_EQ(Cond("5^1"), -1);
    EXPECT_EQ(Cond("5#1"), -1);
}

TEST_F(Expressions, ConditionOperandsParsedOnceAndReadEachTime) {
    std::string text = " %2 = adcon ";
    ConditionRecord r;
    EXPECT_EQ(ParseCondition(*st, text, r), 2);
    EXPECT_EQ(text, "%2=ADCON");
    EXPECT_EQ(r.leftKind, kVariable);
    EXPECT_EQ(r.leftValue, 2);
    EXPECT_EQ(r.rightKind, kSfr);
    EXPECT_EQ(r.rightValue, 0);
    // A failed SFR read makes the condition not hold, without a word.
    EXPECT_EQ(EvaluateCondition(s, r), -2);
    connect();
    var(2) = 0x1234;
    EXPECT_EQ(EvaluateCondition(s, r), 1);
    board->memory[0xFFA0] = 0x35;
    EXPECT_EQ(EvaluateCondition(s, r), 0);
    // ZERO reads 0 and is accepted on both sides here.
    EXPECT_EQ(Cond("ZERO=0"), 1);
    EXPECT_EQ(Cond("0=ZERO"), 1);
    EXPECT_TRUE(host.terminal.empty());
}

TEST_F(Expressions, BadConditionOperand) {
    std::string text = "1=XYZ";
    ConditionRecord r;
    EXPECT_EQ(ParseCondition(*st, text, r), -1);
    text = "XYZ";
    EXPECT_EQ(ParseCondition(*st, text, r), -1);
    EXPECT_NE(EvaluateCondition(s, r), 1);
}

}  // namespace
}  // namespace vortelm::shell
