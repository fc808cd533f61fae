#include "core/TestHost.h"

#include <gtest/gtest.h>

namespace vortelm {

namespace {
struct DueSource : EventSource {
    std::optional<int64_t> due;
    int runs = 0;
    [[nodiscard]] std::optional<int64_t> dueUs() const override { return due; }
    void dispatch() override {
        ++runs;
        due.reset();
    }
};
}  // namespace

TEST(TestHost, YieldJumpsToTheDeadline) {
    TestHost h;
    const int64_t t0 = h.nowUs();
    h.yield(t0 + 5000);
    EXPECT_EQ(h.nowUs(), t0 + 5000);
    h.yield(t0);  // a deadline in the past does not turn the clock back
    EXPECT_EQ(h.nowUs(), t0 + 5000);
}

TEST(TestHost, YieldStopsAtASourcesEvent) {
    TestHost h;
    DueSource s;
    s.due = h.nowUs() + 300;
    h.addSource(s);
    h.yield(h.nowUs() + 100'000);
    EXPECT_EQ(s.runs, 1);
    EXPECT_EQ(h.nowUs(), 1'000'300);
    h.removeSource(s);
    EXPECT_EQ(h.sourceCount(), 0u);
}

TEST(TestHost, TimersRunOnTheVirtualClock) {
    TestHost h;
    int ticks = 0;
    const int id = h.startTimer(10, [&] { ++ticks; });
    for (int i = 0; i < 5; ++i) h.yield(h.nowUs() + 1'000'000);
    EXPECT_EQ(ticks, 5);
    EXPECT_EQ(h.nowUs(), 1'000'000 + 50'000);
    h.stopTimer(id);
    h.yield(h.nowUs() + 100'000);
    EXPECT_EQ(ticks, 5);
}

TEST(TestHost, ScriptedBoxesAndRecords) {
    TestHost h;
    h.messageAnswers = {MsgAnswer::No};
    EXPECT_EQ(h.messageBox("Q?", MsgButtons::YesNo, MsgIcon::Question), MsgAnswer::No);
    EXPECT_EQ(h.messageBox("Q?", MsgButtons::YesNo, MsgIcon::Question), MsgAnswer::Yes);
    EXPECT_EQ(h.messageBox("I", MsgButtons::Ok, MsgIcon::Stop), MsgAnswer::Ok);
    ASSERT_EQ(h.boxes.size(), 3u);
    EXPECT_EQ(h.boxes[2].icon, MsgIcon::Stop);
    h.inputAnswers = {std::nullopt};
    EXPECT_EQ(h.inputBox("p", "t", "d"), std::nullopt);
    EXPECT_EQ(h.inputBox("p", "t", "d"), "d");
    EXPECT_EQ(h.inputPrompts.size(), 2u);
    h.randoms = {0.25};
    EXPECT_EQ(h.random(), 0.25);
    EXPECT_EQ(h.random(), 0.0);
}

}  // namespace vortelm
