#pragma once
// A host for tests: a virtual clock, scripted answers to message and input
// boxes, and a record of everything the program showed. A yield jumps the
// clock to the earliest of the deadline, the sources' next events and the
// timers, and runs what is due; it never sleeps.

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/Host.h"

namespace vortelm {

class TestHost : public Host {
  public:
    TestHost();
    ~TestHost() override;

    // ---- the virtual clock and the loop
    int64_t now = 1'000'000;  // microseconds
    // The step of a yield without a deadline when nothing else is due.
    int64_t idleStepUs = 10'000;
    int yields = 0;
    void yield(std::optional<int64_t> untilUs = std::nullopt) override;
    [[nodiscard]] int64_t nowUs() override { return now; }
    void addSource(EventSource& source) override;
    void removeSource(EventSource& source) override;
    int startTimer(int intervalMs, std::function<void()> fn) override;
    void stopTimer(int id) override;
    [[nodiscard]] size_t timerCount() const { return timers_.size(); }
    [[nodiscard]] size_t sourceCount() const { return sources_.size(); }

    // ---- time of day and chance
    std::string date = "21.11.2026";
    std::string time = "12:00:00";
    double seconds = 43200.0;
    std::deque<double> randoms;  // taken in turn; 0 when empty
    [[nodiscard]] std::string dateText() override { return date; }
    [[nodiscard]] std::string timeText() override { return time; }
    [[nodiscard]] double secondsSinceMidnight() override { return seconds; }
    std::string timestamp = "20261121_120000";
    [[nodiscard]] std::string timestampText() override { return timestamp; }
    [[nodiscard]] double random() override;

    // ---- dialogs: answers are taken in turn; without one the default
    // (OK or Yes, the default text of an input box) is given.
    struct Box {
        std::string text;
        MsgButtons buttons;
        MsgIcon icon;
        std::string title;
    };
    std::deque<MsgAnswer> messageAnswers;
    std::deque<std::optional<std::string>> inputAnswers;
    std::vector<Box> boxes;
    std::vector<std::string> inputPrompts;
    MsgAnswer messageBox(std::string_view text, MsgButtons buttons, MsgIcon icon,
                         std::string_view title = {}) override;
    std::optional<std::string> inputBox(std::string_view prompt, std::string_view title,
                                        std::string_view defaultText) override;
    std::vector<std::string> messageWindows;  // texts of _cmessage, in turn
    void showMessageWindow(std::string_view text) override { messageWindows.emplace_back(text); }
    bool busy = false;
    void setBusy(bool b) override { busy = b; }

    // ---- processes and printing
    struct Started {
        std::string program;
        std::vector<std::string> args;
    };
    std::vector<Started> started;
    bool startResult = true;
    bool startDetached(const std::string& program, const std::vector<std::string>& args) override;
    std::vector<std::string> printed;
    void printLines(std::span<const std::string> lines) override;

    // ---- what the operator sees
    std::string terminal;  // every text appended to the running text
    int terminalClears = 0;
    int refreshStatusCount = 0;
    int refreshFeatureButtonsCount = 0;
    int refreshMemoryCount = 0;
    int refreshSfrViewCount = 0;
    std::vector<int32_t> gotoPages;
    std::vector<std::pair<int64_t, int64_t>> progressCalls;
    void terminalAppended(std::string_view text) override { terminal.append(text); }
    void terminalCleared() override { ++terminalClears; }
    void refreshStatus() override { ++refreshStatusCount; }
    void refreshFeatureButtons() override { ++refreshFeatureButtonsCount; }
    void refreshMemory() override { ++refreshMemoryCount; }
    void gotoPage(int32_t address) override { gotoPages.push_back(address); }
    void refreshSfrView() override { ++refreshSfrViewCount; }
    void progress(int64_t value, int64_t maximum) override {
        progressCalls.emplace_back(value, maximum);
    }
    std::vector<std::string> failures;  // every failure line, in order
    void failureReported(std::string_view line) override { failures.emplace_back(line); }

  private:
    struct Timer {
        int intervalMs;
        int64_t nextUs;
        std::function<void()> fn;
    };
    std::vector<EventSource*> sources_;
    std::map<int, Timer> timers_;
    int nextTimerId_ = 1;
};

}  // namespace vortelm
