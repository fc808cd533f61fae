// Lines of every shape go through the frame without harm: the parser never
// leaves its array, every line ends with a known result, and the table
// stays as it was.

#include <gtest/gtest.h>

#include <random>

#include "core/Helpers.h"
#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "shell/Shell.h"

namespace vortelm::shell {

TEST(Robustness, RandomLinesEndWithAKnownResult) {
    TestHost host;
    auto st = std::make_unique<ProgramState>(host);
    Session s(*st);
    BuildShellCommandTable(s.table);
    const int16_t rows = s.table.shellCommandCount;

    std::mt19937 rng(20261121);
    const std::string alphabet = "_ ,,,\t%:\"\\/aZeE.-+019FfXx";
    auto pick = [&](size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(rng); };
    for (int round = 0; round < 4000; ++round) {
        std::string line;
        if (pick(3) != 0) line = s.table.shellCommands[pick(static_cast<size_t>(rows))].name;
        if (line == "_quit" || line == "_help") line = "_test";
        const size_t len = pick(60);
        for (size_t i = 0; i < len; ++i) line += alphabet[pick(alphabet.size())];
        host.terminal.clear();
        // Rows of other parts run in their own tests, with the objects they
        // need; here they are only checked.
        const bool frameOnly =
            line.rfind("_test", 0) == 0 ||
            FindShellCommand(
                s.table, line.substr(0, std::min<size_t>(SkipWord(line, kFalse), line.size()))) < 0;
        const int16_t checkOnly = (round % 2 && frameOnly) ? kFalse : kTrue;
        const int16_t r = ExecuteShellCommand(s, line, checkOnly);
        EXPECT_LE(s.parsedParameterCount, 16);
        bool known = r <= 0;
        for (int i = 0; i < rows && !known; ++i) known = s.table.shellCommands[i].id == r;
        EXPECT_TRUE(known) << line << " gave " << r;
        if (checkOnly == kFalse) {
            EXPECT_EQ(host.terminal.substr(0, line.size() + 1), ">" + line) << line;
        }
        if (r != 0) {
            EXPECT_NE(host.terminal.find("*ERROR: "), std::string::npos) << line;
        }
    }
    EXPECT_EQ(s.table.shellCommandCount, rows);
}

}  // namespace vortelm::shell
