// The main window's target entries without a display.

#include <gtest/gtest.h>

#include "Fixture.h"
#include "forms/TargetEntries.h"

namespace vortelm::testing {
namespace {

class Entries : public TargetFixture {
  protected:
    void SetUp() override {
        running();
        setFeatures({"RELOCATABLE", "WRITEBLOCK", "READBLOCK", "JMP", "ASC02ASC1"});
        board->coreRestartsOnJump = true;
    }
};

TEST_F(Entries, RelocationPromptAsksAgainUntilSixHexDigits) {
    host.inputAnswers = {"1234567", "xyz", "00e000"};
    EXPECT_EQ(forms::UTargetRelocate_Click(tgt), 0);
    EXPECT_EQ(host.inputPrompts, (std::vector<std::string>{
                                     "Relocate Monitor to Address:", "Relocate Monitor to Address:",
                                     "Relocate Monitor to Address:"}));
    EXPECT_EQ(host.boxes, (std::vector<std::string>{"No 6-digit hexadecimal number !",
                                                    "No 6-digit hexadecimal number !"}));
    EXPECT_EQ(st.KernelStartAddress, 0xE000);
    EXPECT_TRUE(logged("*VortElm successfully moved to 00E000"));
}

TEST_F(Entries, AnEmptyAnswerOrCancelDoesNothing) {
    host.inputAnswers = {""};
    EXPECT_EQ(forms::UTargetRelocate_Click(tgt), 1);
    host.inputAnswers = {std::nullopt};
    EXPECT_EQ(forms::UTargetRelocate_Click(tgt), 1);
    EXPECT_TRUE(board->received.empty());
    EXPECT_EQ(st.KernelStartAddress, 0xF600);
}

TEST_F(Entries, ResetConfigurationFromTheStoredValues) {
    st.ControllerFamily = 0;
    tgt.reset.BUSCON0 = 0x04C0;
    forms::UDisplayResetConfig_Click(tgt);
    EXPECT_TRUE(logged("*Reset: BUSCON0=04C0\r\n*Reset: SYSCON=0000\r\n"));
    EXPECT_TRUE(board->received.empty());
}

TEST_F(Entries, Asc1ButtonSwitches) {
    EXPECT_EQ(forms::BASC02ASC1_Click(tgt), 0);
    EXPECT_TRUE(logged("*VortelmZTA9y communicated with ASC1 \r\n"));
}

}  // namespace
}  // namespace vortelm::testing
