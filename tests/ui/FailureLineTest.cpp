// A failed line from the command box is named with its code in the status
// bar, beside the running text.

#include <QStatusBar>

#include "UiFixture.h"

namespace vortelm::testing {
namespace {

using FailureLine = UiTest;

TEST_F(FailureLine, FailedCommandNamesItselfInTheStatusBar) {
    auto* bar = find<QStatusBar>("XStatusbar");
    ASSERT_NE(bar, nullptr);
    EXPECT_TRUE(bar->currentMessage().isEmpty());
    Enter(find<QComboBox>("TCommand"), "_download");
    EXPECT_TRUE(logged("*ERROR: Not Connected to Target"));
    EXPECT_EQ(bar->currentMessage().toStdString(),
              "_download: failed with code -100 (not connected to the target)");
}

TEST_F(FailureLine, GoodCommandLeavesTheStatusBarAlone) {
    auto* bar = find<QStatusBar>("XStatusbar");
    ASSERT_NE(bar, nullptr);
    Enter(find<QComboBox>("TCommand"), "_test");
    EXPECT_TRUE(bar->currentMessage().isEmpty());
}

}  // namespace
}  // namespace vortelm::testing
