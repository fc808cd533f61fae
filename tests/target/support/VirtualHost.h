#pragma once
// A host on a virtual clock for the target tests: a yield jumps the clock to
// the next due timer or to the wait's deadline, runs the due timers, and
// answers message boxes with a chosen answer while counting them.

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/Host.h"

namespace vortelm::testing {

class VirtualHost : public Host {
  public:
    void yield(std::optional<int64_t> untilUs = std::nullopt) override {
        ++yields;
        int64_t next = untilUs.value_or(now + 1000);
        if (!inTimer)
            for (auto& [id, tm] : timers) next = std::min(next, std::max(tm.due, now));
        if (next > now) now = next;
        if (inTimer) return;  // a timer's own waits do not run timers again
        std::vector<int> due;
        for (auto& [id, tm] : timers)
            if (tm.due <= now) due.push_back(id);
        for (int id : due) {
            auto it = timers.find(id);
            if (it == timers.end()) continue;
            it->second.due = now + int64_t{it->second.interval} * 1000;
            auto fn = it->second.fn;
            inTimer = true;
            fn();
            inTimer = false;
        }
    }
    int64_t nowUs() override { return now; }
    int startTimer(int intervalMs, std::function<void()> fn) override {
        timers[++lastId] = Timer{intervalMs, now + int64_t{intervalMs} * 1000, std::move(fn)};
        return lastId;
    }
    void stopTimer(int id) override { timers.erase(id); }
    MsgAnswer messageBox(std::string_view text, MsgButtons, MsgIcon, std::string_view) override {
        boxes.emplace_back(text);
        return answer;
    }
    // Answers in turn, then cancels.
    std::optional<std::string> inputBox(std::string_view prompt, std::string_view,
                                        std::string_view) override {
        inputPrompts.emplace_back(prompt);
        if (inputAnswers.empty()) return std::nullopt;
        auto a = inputAnswers.front();
        inputAnswers.pop_front();
        return a;
    }
    void setBusy(bool b) override { busy = b; }
    void refreshStatus() override { ++statusRefreshes; }
    void progress(int64_t value, int64_t maximum) override {
        progressCalls.emplace_back(value, maximum);
    }

    struct Timer {
        int interval;
        int64_t due;
        std::function<void()> fn;
    };
    int64_t now = 1'000'000;
    long yields = 0;
    std::map<int, Timer> timers;
    int lastId = 0;
    bool inTimer = false;
    MsgAnswer answer = MsgAnswer::Ok;
    std::vector<std::string> boxes;
    std::deque<std::optional<std::string>> inputAnswers;
    std::vector<std::string> inputPrompts;
    bool busy = false;
    int statusRefreshes = 0;
    std::vector<std::pair<int64_t, int64_t>> progressCalls;
};

}  // namespace vortelm::testing
