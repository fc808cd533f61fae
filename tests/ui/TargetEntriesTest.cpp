// The main window's entries for the reset configuration, the relocation of
// the monitor and the second serial channel, against the virtual board.

#include "tests/ui/UiFixture.h"

namespace vortelm::testing {
namespace {

using TargetEntries = UiTest;

TEST_F(TargetEntries, EntriesAreEnabled) {
    EXPECT_TRUE(find<QAction>("UDisplayResetConfig")->isEnabled());
    EXPECT_TRUE(find<QAction>("UTargetRelocate")->isEnabled());
    // the button shows with a kernel that offers the second channel
    auto* asc1 = find<QAbstractButton>("BASC02ASC1");
    EXPECT_FALSE(asc1->isVisible());
    st().ConnectionState = kConnectedAndReady;
    st().CurrentKernel = static_cast<int16_t>(2);  // ZTA9Y_DEFAULT
    window->refreshFeatureButtons();
    EXPECT_TRUE(QTest::qWaitFor([&]() { return asc1->isVisible(); }, 2000));
    EXPECT_TRUE(asc1->isEnabled());
    st().ConnectionState = kNotConnected;
}

TEST_F(TargetEntries, ResetConfigurationAgainWithoutTheTarget) {
    find<QAction>("UDisplayResetConfig")->trigger();
    // before any connect: the zeroed values
    EXPECT_TRUE(logged("*Reset: BUSCON0=0000\r\n*Reset: SYSCON=0000\r\n")) << st().terminalBuffer;
    find<QAbstractButton>("BConnect")->click();
    ASSERT_EQ(st().ConnectionState, 1) << st().terminalBuffer;
    st().terminalBuffer.clear();
    find<QAction>("UDisplayResetConfig")->trigger();
    EXPECT_TRUE(logged("*Reset: BUSCON0=04C0\r\n*Reset: SYSCON=0090\r\n")) << st().terminalBuffer;
}

TEST_F(TargetEntries, RelocateAsksForTheAddress) {
    find<QAbstractButton>("BConnect")->click();
    ASSERT_EQ(st().ConnectionState, 1) << st().terminalBuffer;
    host->answeredBoxes.clear();
    host->inputAnswers = {"fb00"};
    find<QAction>("UTargetRelocate")->trigger();
    EXPECT_EQ(host->answeredBoxes, std::vector<std::string>{"Relocate Monitor to Address:"});
    EXPECT_TRUE(logged("*VortElm successfully moved to 00FB00")) << st().terminalBuffer;
    EXPECT_EQ(st().KernelStartAddress, 0xFB00);
    EXPECT_EQ(st().ConnectionState, 1);
}

}  // namespace
}  // namespace vortelm::testing
