// The terminal settings dialog's logic.
#include "forms/FTerminalSettings.h"

#include <gtest/gtest.h>

#include <memory>

#include "core/ProgramState.h"
#include "core/TestHost.h"

namespace vortelm::forms {
namespace {

TEST(FTerminalSettings, ShowsTheStoredModeAndOkStoresTheChoice) {
    TestHost host;
    auto st = std::make_unique<ProgramState>(host);
    st->TMODE = 1;
    FTerminalSettings form(*st);
    EXPECT_TRUE(form.hexMode());
    form.OTModeASCII_Click();
    form.BCancel_Click();
    EXPECT_EQ(st->TMODE, 1);  // Cancel keeps the stored mode
    form.BOk_Click();
    EXPECT_EQ(st->TMODE, 2);
    form.OTModeHex_Click();
    form.BOk_Click();
    EXPECT_EQ(st->TMODE, 1);
}

}  // namespace
}  // namespace vortelm::forms
