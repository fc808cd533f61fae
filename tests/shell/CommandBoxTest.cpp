#include "shell/CommandBox.h"

#include <gtest/gtest.h>

#include <vector>

#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "shell/Shell.h"

namespace vortelm::shell {

struct Box : ::testing::Test {
    TestHost host;
    std::unique_ptr<ProgramState> st = std::make_unique<ProgramState>(host);
    Session s{*st};
    std::vector<std::string> history;
    std::vector<uint8_t> sent;
    void SetUp() override {
        BuildShellCommandTable(s.table);
        s.addHistory = [this](std::string_view l) { history.emplace_back(l); };
    }
    void Wire() {
        s.sendByte = [this](uint8_t b) { sent.push_back(b); };
    }
};

TEST_F(Box, CommandsGoToTheHistoryAndRun) {
    EXPECT_EQ(RunCommandBoxLine(s, "_test"), 0);
    EXPECT_EQ(host.terminal, ">_test\r\n38F00A\r\n");
    ASSERT_EQ(history.size(), 1u);
    EXPECT_EQ(history[0], "_test");
}

TEST_F(Box, UnknownCommandGoesToTheHistoryAllTheSame) {
    EXPECT_EQ(RunCommandBoxLine(s, "_nothing"), -1);
    ASSERT_EQ(history.size(), 1u);
    EXPECT_EQ(history[0], "_nothing");
}

TEST_F(Box, HexPairsAreSent) {
    Wire();
    EXPECT_EQ(RunCommandBoxLine(s, ":41zz4a7"), 0);
    EXPECT_EQ(sent, (std::vector<uint8_t>{0x41, 0x4A}));
    EXPECT_EQ(host.terminal, "\r\n-> SENDING: 41\r\n-> SENDING: 4A");
    EXPECT_TRUE(history.empty());
}

TEST_F(Box, TextIsSentWithoutLineEnd) {
    Wire();
    EXPECT_EQ(RunCommandBoxLine(s, "Hi _x"), 0);
    EXPECT_EQ(sent, (std::vector<uint8_t>{'H', 'i', ' ', '_', 'x'}));
    EXPECT_EQ(host.terminal, "\r\n-> SENDING: Hi _x");
    EXPECT_TRUE(history.empty());
}

TEST_F(Box, WithoutAPortNothingIsSent) {
    EXPECT_EQ(RunCommandBoxLine(s, "Hi"), -1);
    EXPECT_EQ(host.terminal, "\r\n-> SENDING: Hi\r\n*ERROR: No communication port open");
    host.terminal.clear();
    EXPECT_EQ(RunCommandBoxLine(s, ":4142"), -1);
    EXPECT_EQ(host.terminal, "\r\n*ERROR: No communication port open");
}

TEST(CommandHistory, NewestFirstFiftyAtMostDuplicatesKept) {
    CommandHistory h;
    h.add("_a");
    h.add("_a");
    EXPECT_EQ(h.lines, (std::vector<std::string>{"_a", "_a"}));
    for (int i = 0; i < 60; ++i) h.add("_l" + std::to_string(i));
    ASSERT_EQ(h.lines.size(), 50u);
    EXPECT_EQ(h.lines.front(), "_l59");
    EXPECT_EQ(h.lines.back(), "_l10");
}

}  // namespace vortelm::shell
