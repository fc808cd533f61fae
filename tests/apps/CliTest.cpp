// vortelm-cli as users and scripts drive it: standard input in, running
// text out, message boxes on standard error, the exit status.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "core/ProgramState.h"
#include "shell/Rows.h"
#include "shell/Shell.h"
#include "tests/apps/CliFixture.h"

namespace {

namespace fs = std::filesystem;
using vortelm::testing::Cli;

TEST_F(Cli, HelpListsEveryListedRow) {
    Run("_help\n");
    EXPECT_EQ(status, 0);
    // The listing as the table gives it, each CR LF as one line feed.
    vortelm::ProgramState st;
    vortelm::shell::ShellTable table;
    vortelm::shell::BuildShellCommandTable(table);
    std::string expected = ">_help\n";
    int32_t group = 1;
    for (int i = 0; i < table.shellCommandCount; ++i) {
        const auto& r = table.shellCommands[i];
        if (!r.listed) continue;
        if (r.group != group) {
            expected +=
                "\n" + table.shellGroupNames[r.group] + "\n***********************************\n";
            group = r.group;
        }
        expected += r.description + ": " + r.usage + "\n";
    }
    expected += " \n";
    EXPECT_EQ(out, expected);
    const std::string head =
        ">_help\nList all shell commands: _help\nTest: _test\n\nFILE FUNCTIONS\n"
        "***********************************\nL";
    EXPECT_EQ(out.substr(0, head.size()), head);
    EXPECT_EQ(out.find("_idreg"), std::string::npos);
    EXPECT_EQ(out.find("_initialize"), std::string::npos);
    EXPECT_EQ(out.find('\r'), std::string::npos);
}

TEST_F(Cli, UpperCaseHelpWorks) {
    Run("_HELP\n");
    EXPECT_EQ(status, 0);
    const std::string head =
        ">_HELP\nList all shell commands: _help\nTest: _test\n\nFILE FUNCTIONS\n";
    EXPECT_EQ(out.substr(0, head.size()), head);
}

TEST_F(Cli, MovAlone) {
    Run("_mov\n");
    EXPECT_EQ(out, ">_mov\n*ERROR: Illegal number of parameters\nusage: _mov <address>,<value>\n");
    EXPECT_EQ(status, 1);
}

TEST_F(Cli, FillMemoryAboveSixteenBits) {
    Run("_fillmemory 1FFFF\n");
    EXPECT_EQ(out,
              ">_fillmemory 1FFFF\n"
              "*ERROR: Parameter 1 must be valid hexadecimal value (16 bit) or variable\n"
              "*ERROR: Illegal parameters\n"
              "usage: _fillmemory <fill value>|<variable>\n");
    EXPECT_EQ(status, 1);
}

TEST_F(Cli, UnknownWord) {
    Run("_frobnicate 1\n");
    EXPECT_EQ(out, ">_frobnicate 1\n*ERROR: Illegal command\n");
    EXPECT_EQ(status, 1);
}

TEST_F(Cli, TestLogsTheRotation) {
    Run("_test\n");
    EXPECT_EQ(out, ">_test\n38F00A\n");
    EXPECT_EQ(status, 0);
}

TEST_F(Cli, StatusOfTheLastLine) {
    Run("_nothing\r\n_test\r\n");
    EXPECT_EQ(out, ">_nothing\n*ERROR: Illegal command\n>_test\n38F00A\n");
    EXPECT_EQ(status, 0);
    Run("_test\n_nothing");  // a last line without its line end still runs
    EXPECT_EQ(status, 1);
    EXPECT_EQ(out, ">_test\n38F00A\n>_nothing\n*ERROR: Illegal command\n");
}

TEST_F(Cli, QuitStopsReading) {
    Run("_quit\n_nothing\n");
    EXPECT_EQ(out, ">_quit\n");
    EXPECT_EQ(status, 0);
}

TEST_F(Cli, EmptyInputEndsAtOnce) {
    Run("");
    EXPECT_EQ(out, "");
    EXPECT_EQ(status, 0);
}

TEST_F(Cli, TextWithoutAPort) {
    Run("hello\n", "--port /dev/vortelm-no-such-port");
    const std::string caution =
        "Caution ! Communication port used by other application ! Please select a different port "
        "\n";
    // Start-up fails to open the port, the line fails at its first byte.
    EXPECT_EQ(err, caution + caution + "vortelm-cli: hello: failed with result -1\n");
    EXPECT_EQ(out.rfind("\n*Port /dev/vortelm-no-such-port: No such file or directory\n", 0), 0u)
        << out;
    EXPECT_NE(
        out.find("\n-> SENDING: hello\n*Port /dev/vortelm-no-such-port: the port is not open\n"),
        std::string::npos)
        << out;
    EXPECT_EQ(status, 1);
}

TEST_F(Cli, MissingScriptWordShowsTheBoxOnStandardError) {
    Run("_test\n", "nothere.scm");
    EXPECT_EQ(err, "Illegal startup parameters\n");
    EXPECT_EQ(out, ">_test\n38F00A\n");
    EXPECT_EQ(status, 0);
}

TEST_F(Cli, ExistingScriptWordRuns) {
    std::ofstream(dir + "/job.scm") << "_test\n";
    Run("", "job.scm");
    EXPECT_EQ(err, "");
    EXPECT_EQ(out, "_test\n>_test\n38F00A\n*Script successfully executed\n");
    EXPECT_EQ(status, 0);
}

TEST_F(Cli, ClosedStandardInputEnds) {
    const std::string cmd =
        std::string("'") + VORTELM_CLI + "' --home '" + dir + "/home' <&- >'" + dir + "/out'";
    const int rc = std::system(cmd.c_str());
    EXPECT_TRUE(WIFEXITED(rc));
    EXPECT_EQ(WEXITSTATUS(rc), 0);
}

TEST_F(Cli, HomeIsMadeAndUsed) {
    Run("_test\n");
    EXPECT_TRUE(fs::is_directory(dir + "/home"));
}

TEST_F(Cli, Options) {
    Run("", "--help");
    EXPECT_EQ(status, 0);
    EXPECT_NE(out.find("Usage: vortelm-cli"), std::string::npos);
    EXPECT_NE(out.find("Exit status"), std::string::npos);
    Run("", "--version");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(out.substr(0, 12), "vortelm-cli ");
    Run("", "--bogus");
    EXPECT_EQ(status, 2);
    EXPECT_NE(err.find("unknown option --bogus"), std::string::npos);
    Run("", "--yes --no");
    EXPECT_EQ(status, 2);
    Run("", "--port");
    EXPECT_EQ(status, 2);
    Run("_test\n", "--port sim: --no");
    EXPECT_EQ(status, 0);
}

}  // namespace
