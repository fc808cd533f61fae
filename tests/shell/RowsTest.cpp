#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "shell/Rows.h"
#include "shell/Shell.h"

namespace vortelm::shell {

struct Rows : ::testing::Test {
    TestHost host;
    std::unique_ptr<ProgramState> st = std::make_unique<ProgramState>(host);
    Session s{*st};
    void SetUp() override { BuildShellCommandTable(s.table); }
    std::string Run(std::string_view line) {
        host.terminal.clear();
        result = ExecuteShellCommand(s, line, 0);
        return host.terminal;
    }
    int16_t result = 0;
};

TEST_F(Rows, HelpListsTheListedRowsByGroup) {
    const std::string out = Run("_help");
    std::string expected = ">_help\r\n";
    int32_t group = 1;
    int listed = 0;
    for (int i = 0; i < s.table.shellCommandCount; ++i) {
        const auto& r = s.table.shellCommands[i];
        if (!r.listed) continue;
        ++listed;
        if (r.group != group) {
            expected += "\r\n" + s.table.shellGroupNames[r.group] +
                        "\r\n***********************************\r\n";
            group = r.group;
        }
        expected += r.description + ": " + r.usage + "\r\n";
    }
    expected += " \r\n";
    EXPECT_EQ(out, expected);
    EXPECT_EQ(listed, 83);
    // No heading for the first group; it starts right after the echo.
    EXPECT_EQ(out.substr(0, 61),
              ">_help\r\nList all shell commands: _help\r\nTest: _test\r\n\r\nFILE F");
    EXPECT_EQ(out.find("HELP FUNCTIONS"), std::string::npos);
    for (const char* hidden :
         {"_idreg", "_xorchecksum", "_addcchecksum", "_initialize", "NOT DOCUMENTED"})
        EXPECT_EQ(out.find(hidden), std::string::npos) << hidden;
    EXPECT_NE(out.find("\r\nVIEW FUNCTIONS\r\n***********************************\r\nViews current "
                       "selection as 16 bit numbers: _viewword\r\n"),
              std::string::npos);
    EXPECT_EQ(out.substr(out.size() - 6), "]\r\n \r\n");
    EXPECT_EQ(result, 0);
}

TEST_F(Rows, TestRotatesAndShowsTheSecondResult) {
    EXPECT_EQ(Run("_test"), ">_test\r\n38F00A\r\n");
    EXPECT_EQ(result, 0);
}

TEST_F(Rows, TestResultReachesTheLog) {
    const std::string dir = std::filesystem::temp_directory_path() / "vortelm-rows-log";
    std::filesystem::create_directories(dir);
    std::filesystem::remove(dir + "/LOG.TXT");
    st->PATH_LOG = dir;
    st->logEnabled = 1;
    Run("_test");
    std::ifstream f(dir + "/LOG.TXT", std::ios::binary);
    const std::string log((std::istreambuf_iterator<char>(f)), {});
    // Each text loses its trailing line end and is printed as one line.
    EXPECT_EQ(log, ">_test\n38F00A\n");
    std::filesystem::remove_all(dir);
}

TEST_F(Rows, QuitEndsTheProgram) {
    int ends = 0;
    s.shutDown = [&] { ++ends; };
    EXPECT_EQ(Run("_quit"), ">_quit\r\n");
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(result, 0);
}

TEST_F(Rows, RowsOfLaterPartsSayTheyAreNotInThisBuild) {
    // The ids whose operation is not in this build yet. Rows land one by one:
    // this list may only shrink.
    const std::set<uint32_t> pending = {
        0x2001, 0x2002, 0x2003, 0x2004, 0x2005, 0x2006, 0x2007, 0x2008, 0x3001, 0x3002,
        0x3003, 0x3004, 0x3005, 0x3006, 0x4001, 0x4002, 0x4003, 0x4004, 0x4005, 0x5001,
        0x5002, 0x5003, 0x6001, 0x6002, 0x6003, 0x6004, 0x6005, 0x6006, 0x6007, 0x6009,
        0x6008, 0x7001, 0x7002, 0x7003, 0x8001, 0x8002, 0x8003, 0x8004, 0x8005, 0x9001,
        0x9002, 0x9003, 0xA001, 0xA002, 0xA003, 0xE005, 0x5004, 0xE001, 0xE002, 0xE003,
        0xE004, 0xF001, 0xF002, 0xF003, 0xF004, 0xF005, 0xF006, 0xF007,
    };
    std::set<int32_t> pendingIds;
    for (uint32_t id : pending) pendingIds.insert(RowId(id));
    for (int i = 0; i < s.table.shellCommandCount; ++i) {
        const auto& r = s.table.shellCommands[i];
        if (FindRow(r.name) != nullptr) continue;
        EXPECT_TRUE(pendingIds.count(r.id)) << r.name << " has no row and is not on the list";
    }
    // The frame's own rows are bound.
    EXPECT_NE(FindRow("_help"), nullptr);
    EXPECT_NE(FindRow("_test"), nullptr);
    EXPECT_NE(FindRow("_quit"), nullptr);
    // So are the flash rows.
    for (const char* name : {"_iprogram", "_program", "_erase", "_status", "_protect", "_unprotect",
                             "_lock", "_unlock", "_dumpmemecc", "_dumpmodify", "_downloadtoasb",
                             "_loadasb_byte", "_loadasb_word"})
        EXPECT_NE(FindRow(name), nullptr) << name;
}

TEST_F(Rows, ARowWithoutAnOperationSaysSoAndFailsWithItsId) {
    // A row of the table that no row list binds.
    ShellCommandRecord& r = s.table.shellCommands[s.table.shellCommandCount++];
    r.group = 1;
    r.name = "_unbound";
    r.id = RowId(0x1FFF);
    r.usage = "_unbound";
    ASSERT_EQ(FindRow("_unbound"), nullptr);
    EXPECT_EQ(Run("_unbound"), ">_unbound\r\n*ERROR: Command not available in this build\r\n");
    EXPECT_EQ(result, RowId(0x1FFF));
}

TEST_F(Rows, EveryBindingNamesARowOfTheTableAndNoRowIsBoundTwice) {
    std::set<std::string> bound;
    for (const RowBinding& b : AllRows()) {
        EXPECT_GE(FindShellCommand(s.table, b.name), 0) << b.name << " is not a row of the table";
        EXPECT_EQ(s.table.shellCommands[std::max(FindShellCommand(s.table, b.name), 0)].name,
                  b.name)
            << b.name << " is not written as the table writes it";
        EXPECT_TRUE(bound.insert(std::string(b.name)).second) << b.name << " is bound twice";
        EXPECT_NE(b.run, nullptr) << b.name;
    }
    EXPECT_FALSE(bound.empty());
}

}  // namespace vortelm::shell
