// The main window's logic: which feature buttons show, and the status lamp.
#include "forms/FVortElm.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "config/Kernels.h"
#include "core/ProgramState.h"
#include "core/TestHost.h"

namespace vortelm::forms {
namespace {

class MainWindowLogic : public ::testing::Test {
  protected:
    MainWindowLogic() {
        AddKernel(*st);
        st->CurrentKernel = 0;
        AddFeature(*st, "PROGRAM", 0);
        AddFeature(*st, "ASC02ASC1", 0);
    }
    const FeatureButton& button(const std::string& name) {
        buttons = FVortElm(*st).featureButtons();
        for (const FeatureButton& b : buttons)
            if (b.name == name) return b;
        ADD_FAILURE() << name << " is not a feature button";
        static const FeatureButton none{};
        return none;
    }
    TestHost host;
    std::unique_ptr<ProgramState> st = std::make_unique<ProgramState>(host);
    std::vector<FeatureButton> buttons;
};

TEST_F(MainWindowLogic, FlashButtonsShowOnlyWhileConnectedWithTheKernelsFeature) {
    EXPECT_FALSE(button("BProgram").visible);
    st->ConnectionState = kConnectedAndReady;
    EXPECT_TRUE(button("BProgram").visible);
    EXPECT_TRUE(button("BASC02ASC1").visible);
    EXPECT_FALSE(button("BErase").visible);
    st->ConnectionState = kDriverRunning;  // any state but not connected
    EXPECT_TRUE(button("BProgram").visible);
    st->CurrentKernel = -1;  // no kernel: no features
    EXPECT_FALSE(button("BProgram").visible);
}

TEST_F(MainWindowLogic, UserScriptButtonsShowTheirSlotsCaption) {
    EXPECT_FALSE(button("BFunc2").visible);
    EXPECT_FALSE(button("BFunc2").caption.has_value());
    st->userScripts[2].path = "/x/y.scm";
    st->userScripts[2].name = "Blink";
    EXPECT_TRUE(button("BFunc2").visible);
    EXPECT_EQ(button("BFunc2").caption.value_or(""), "Blink");
    EXPECT_FALSE(button("BFunc3").visible);
    EXPECT_EQ(FVortElm(*st).featureButtons().size(), 16u);
}

TEST_F(MainWindowLogic, TheLampFollowsTheConnectionState) {
    EXPECT_EQ(FVortElm(*st).statusLamp(), StatusLamp::Red);
    st->ConnectionState = kConnectedAndReady;
    EXPECT_EQ(FVortElm(*st).statusLamp(), StatusLamp::Green);
    st->ConnectionState = kUserProgramRunning;
    EXPECT_EQ(FVortElm(*st).statusLamp(), StatusLamp::Yellow);
    EXPECT_STREQ(FVortElm::LampName(StatusLamp::Red), "XStatusRed");
    EXPECT_STREQ(FVortElm::LampName(StatusLamp::Green), "XStatusGreen");
    EXPECT_STREQ(FVortElm::LampName(StatusLamp::Yellow), "XStatusYellow");
}

}  // namespace
}  // namespace vortelm::forms
