#include <gtest/gtest.h>

#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "shell/Shell.h"

namespace vortelm::shell {

struct Frame : ::testing::Test {
    TestHost host;
    std::unique_ptr<ProgramState> st = std::make_unique<ProgramState>(host);
    Session s{*st};
    void SetUp() override { BuildShellCommandTable(s.table); }
    std::string Run(std::string_view line, int16_t checkOnly = 0) {
        host.terminal.clear();
        result = ExecuteShellCommand(s, line, checkOnly);
        return host.terminal;
    }
    int16_t result = 0;
};

TEST_F(Frame, MovAloneHasTooFewArguments) {
    EXPECT_EQ(Run("_mov"), ">_mov\r\n*ERROR: Illegal number of parameters\r\nusage: _mov <address>,<value>\r\n");
    EXPECT_EQ(result, -3);
}

}  // namespace vortelm::shell
