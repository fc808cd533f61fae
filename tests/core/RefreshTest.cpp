#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "core/ProgramState.h"
#include "core/TestHost.h"

namespace vortelm {
namespace {

// Records the order of the refresh calls.
struct OrderHost : Host {
    std::string calls;
    void refreshStatus() override { calls += "S"; }
    void refreshFeatureButtons() override { calls += "F"; }
    void refreshMemory() override { calls += "M"; }
    void refreshSfrView() override { calls += "R"; }
};

TEST(Refresh, AfterAnOperationEverythingInItsOrder) {
    OrderHost h;
    h.refreshAfterOperation(true);
    EXPECT_EQ(h.calls, "MRSF");
    h.calls.clear();
    h.refreshAfterOperation(false);
    EXPECT_EQ(h.calls, "MSF");
}

TEST(Refresh, TheRegisterViewFollowsRefreshSfr) {
    TestHost host;
    auto st = std::make_unique<ProgramState>();
    st->host = &host;
    st->REFRESHSFR = kTrue;
    RefreshAfterOperation(*st);
    EXPECT_EQ(host.refreshMemoryCount, 1);
    EXPECT_EQ(host.refreshSfrViewCount, 1);
    EXPECT_EQ(host.refreshStatusCount, 1);
    EXPECT_EQ(host.refreshFeatureButtonsCount, 1);
    st->REFRESHSFR = kFalse;
    RefreshAfterOperation(*st);
    EXPECT_EQ(host.refreshMemoryCount, 2);
    EXPECT_EQ(host.refreshSfrViewCount, 1);
    EXPECT_EQ(host.refreshFeatureButtonsCount, 2);
}

}  // namespace
}  // namespace vortelm
