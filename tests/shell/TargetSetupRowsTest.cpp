// The rows of the target set-up through the shell frame, against the
// scripted board.

#include <gtest/gtest.h>

#include "ShellOnBoard.h"
#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "link/ComPort.h"
#include "shell/Rows.h"
#include "shell/Shell.h"
#include "target/Target.h"

namespace vortelm::shell {
namespace {

using vortelm::testing::ScriptedBoard;

struct SetupRows : testing::ShellOnBoard {
    void SetUp() override {
        ShellOnBoard::SetUp();
        port.setSettingsText("9600,n,8,1");
        connected();
        features({"READBLOCK", "WRITEBLOCK", "WRITEWORD", "EINIT", "CALL", "JMP", "RELOCATABLE"});
        registers({{"RSTCON", 0xF1E0}});
    }
};

TEST_F(SetupRows, CallSetsTheStateBackToReady) {
    const std::string out = Run("_call 12000,1,2");
    EXPECT_EQ(result, 0) << out;
    EXPECT_NE(out.find("  R8=0002\r\n  R9=0002\r\n  R10=0000\r\n"), std::string::npos) << out;
    EXPECT_EQ(st->ConnectionState, 1);
}

TEST_F(SetupRows, CallWithoutTheFeatureStaysAtDriverRunning) {
    features({"READBLOCK"});
    const std::string out = Run("_call 12000");
    EXPECT_EQ(result, 0x7003) << out;
    EXPECT_EQ(st->ConnectionState, 7);
    EXPECT_EQ(target::StatusText(st->ConnectionState), "DRIVER RUNNING");
}

TEST_F(SetupRows, CallTakesVariables) {
    st->variables[3] = 0x4321;
    const std::string out = Run("_call 12000,%3");
    EXPECT_NE(out.find("  R8=4322\r\n"), std::string::npos) << out;
}

TEST_F(SetupRows, HelpersOnlyOnTheirFamily) {
    st->ControllerFamily = 0;
    std::string out = Run("_pllcon 1234");
    EXPECT_EQ(result, -6);
    EXPECT_EQ(out, ">_pllcon 1234\r\n*ERROR: Feature not supported by this controller\r\n");
    st->ControllerFamily = 1;
    out = Run("_rstcon 1234");
    EXPECT_EQ(result, -6);
    EXPECT_EQ(out, ">_rstcon 1234\r\n*ERROR: Feature not supported by this controller\r\n");
    st->ControllerFamily = 0;
    st->sfrCount = 0;  // no RSTCON in the register table
    out = Run("_rstcon 1234");
    EXPECT_EQ(result, -6);
    st->ControllerFamily = 5;  // a family outside the three: nothing at all
    out = Run("_pllcon 1234");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(out, ">_pllcon 1234\r\n");
    EXPECT_TRUE(board->received.empty());
}

TEST_F(SetupRows, SetBaudrateTakesOnlyTheListedRates) {
    std::string out = Run("_setbaudrate 1000");
    EXPECT_EQ(result, -2);
    EXPECT_NE(out.find("usage: _setbaudrate <baudrate>"), std::string::npos);
    st->ConnectionState = kNotConnected;
    out = Run("_setbaudrate 19200");
    EXPECT_EQ(result, 0) << out;
    EXPECT_EQ(port.settingsText(), "19200,n,8,1");
    EXPECT_EQ(st->BAUDRATE, 19200);
    EXPECT_TRUE(board->received.empty());
}

TEST_F(SetupRows, MoveMonitorTakesSixDigitsAtMost) {
    board->coreRestartsOnJump = true;
    std::string out = Run("_movemonitor 1000000");
    EXPECT_NE(result, 0);
    EXPECT_NE(out.find("*ERROR: Illegal parameters"), std::string::npos) << out;
    EXPECT_TRUE(board->received.empty());
}

TEST_F(SetupRows, HiddenRowsRunWhenTyped) {
    st->EINIT = 1;
    std::string out = Run("_initialize");
    EXPECT_EQ(result, 0) << out;
    EXPECT_EQ(out, ">_initialize\r\n*Initialisation: Call EINIT Command\r\n");
    out = Run("_idreg");
    EXPECT_EQ(result, 0) << out;
    EXPECT_NE(out.find("*idreg: MANUF=0000 >> Unknown Manufacturer\r\n"), std::string::npos) << out;
}

}  // namespace
}  // namespace vortelm::shell
