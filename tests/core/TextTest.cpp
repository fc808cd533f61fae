#include "core/Text.h"

#include <gtest/gtest.h>

#include "TempDir.h"
#include "core/ProgramState.h"
#include "core/TestHost.h"

namespace vortelm {

using testing::TempDir;

struct Running : ::testing::Test {
    TestHost host;
    std::unique_ptr<ProgramState> st = std::make_unique<ProgramState>(host);
};

TEST_F(Running, OneMoreLineAfterThousandRemovesTheOldest) {
    for (int i = 0; i < 1000; ++i) Text2Buffer(*st, "line" + std::to_string(i) + "\r\n");
    EXPECT_EQ(st->terminalLines, 1000);
    EXPECT_EQ(st->terminalBuffer.substr(0, 7), "line0\r\n");
    Text2Buffer(*st, "last\r\n");
    EXPECT_EQ(st->terminalLines, 1000);
    EXPECT_EQ(st->terminalBuffer.substr(0, 7), "line1\r\n");
    EXPECT_EQ(st->terminalBuffer.substr(st->terminalBuffer.size() - 6), "last\r\n");
}

TEST_F(Running, ThreeLineEndsAt999LeaveThousandAndOne) {
    for (int i = 0; i < 999; ++i) Text2Buffer(*st, "l" + std::to_string(i) + "\r\n");
    EXPECT_EQ(st->terminalLines, 999);
    Text2Buffer(*st, "\r\na\r\nb\r\n");
    EXPECT_EQ(st->terminalLines, 1001);
    EXPECT_EQ(st->terminalBuffer.substr(0, 4), "l1\r\n");
    // Later calls come down by one each.
    Text2Buffer(*st, "c\r\n");
    EXPECT_EQ(st->terminalLines, 1001);
    Text2Buffer(*st, "d");
    EXPECT_EQ(st->terminalLines, 1000);
}

TEST_F(Running, TextWithoutCarriageReturnAddsToTheLastLine) {
    Text2Buffer(*st, "\r\n*Load: ");
    Text2Buffer(*st, "abc");
    EXPECT_EQ(st->terminalLines, 1);
    EXPECT_EQ(st->terminalBuffer, "\r\n*Load: abc");
    EXPECT_EQ(host.terminal, "\r\n*Load: abc");
}

TEST(GetCRLF, CountsCarriageReturns) {
    EXPECT_EQ(GetCRLF("a\r\nb\r\n"), 2);
    EXPECT_EQ(GetCRLF("plain"), 0);
    EXPECT_EQ(GetCRLF("\r\r"), 2);
    EXPECT_EQ(GetCRLF("\n"), 0);
}

TEST_F(Running, LogfileWordReachesTheTextAndNotTheLog) {
    TempDir d;
    st->programFolder = d.path;
    st->PATH_LOG = d.path;
    st->logEnabled = 1;
    Text2Buffer(*st, "\r\n*first");
    Text2Buffer(*st, "\r\n>_logfile off\r\n");
    Text2Buffer(*st, "\r\n*set _LogFile x");
    EXPECT_NE(st->terminalBuffer.find("_logfile off"), std::string::npos);
    EXPECT_EQ(d.read("LOG.TXT"), "\n*first\n");
}

TEST_F(Running, FirstReportCreatesTheLog) {
    TempDir d;
    st->PATH_LOG = d.path;
    st->logEnabled = 1;
    EXPECT_FALSE(d.exists("LOG.TXT"));
    Text2Buffer(*st, "\r\n*ERROR: x\r\n");
    Text2Buffer(*st, "abc");
    // The trailing line end goes, the leading one makes an empty line.
    EXPECT_EQ(d.read("LOG.TXT"), "\n*ERROR: x\nabc\n");
}

TEST_F(Running, LogOnlyWhenTheKeyIsOne) {
    TempDir d;
    st->PATH_LOG = d.path;
    st->logEnabled = -1;
    Text2Buffer(*st, "\r\n*x");
    st->logEnabled = 2;
    Text2Buffer(*st, "\r\n*x");
    EXPECT_FALSE(d.exists("LOG.TXT"));
}

TEST_F(Running, LogGoesToPathLog) {
    TempDir program, log;
    st->programFolder = program.path;
    st->PATH_LOG = log.path;
    st->logEnabled = 1;
    st->logFileName = "run.txt";
    Text2Buffer(*st, "x");
    EXPECT_TRUE(log.exists("run.txt"));
    EXPECT_FALSE(program.exists("run.txt"));
}

TEST_F(Running, BannerIsResolvedAgainstTheProgramFolder) {
    TempDir program, log;
    st->programFolder = program.path;
    st->PATH_LOG = log.path;
    st->logEnabled = 1;
    program.write("LOG.TXT", "old contents\n");
    WriteLogBanner(*st);
    EXPECT_EQ(program.read("LOG.TXT"), "VORTELM LOG FILE\nDate: 21.11.2026\nTime: 12:00:00\n\n\n");
    EXPECT_FALSE(log.exists("LOG.TXT"));
}

}  // namespace vortelm
