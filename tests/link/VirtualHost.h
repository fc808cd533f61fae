#pragma once
// A host on a virtual clock for the link's tests: a yield runs what is due
// now, else jumps the clock to the next thing due (a source's time or the
// deadline) and runs that. Tests can hook every yield to start nested work.

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/Host.h"

namespace vortelm::test {

class VirtualHost : public Host {
  public:
    int64_t clockUs = 1'000'000;
    int yields = 0;
    std::function<void()> onYield;  // runs inside each yield, after the sources
    std::vector<std::string> boxes;
    std::string terminal;
    int statusRefreshes = 0;

    int64_t nowUs() override { return clockUs; }
    void addSource(EventSource& s) override {
        if (std::find(sources_.begin(), sources_.end(), &s) == sources_.end())
            sources_.push_back(&s);
    }
    void removeSource(EventSource& s) override {
        sources_.erase(std::remove(sources_.begin(), sources_.end(), &s), sources_.end());
    }
    void yield(std::optional<int64_t> untilUs) override {
        ++yields;
        std::optional<int64_t> next = untilUs;
        for (EventSource* s : sources_)
            if (auto d = s->dueUs(); d && (!next || *d < *next)) next = d;
        // A yield with nothing ahead passes one millisecond.
        int64_t to = next.value_or(clockUs + 1000);
        if (to > clockUs) clockUs = to;
        auto copy = sources_;
        for (EventSource* s : copy) {
            if (std::find(sources_.begin(), sources_.end(), s) == sources_.end()) continue;
            if (auto d = s->dueUs(); d && *d <= clockUs) s->dispatch();
        }
        if (onYield) onYield();
    }
    MsgAnswer messageBox(std::string_view text, MsgButtons buttons, MsgIcon icon,
                         std::string_view title) override {
        boxes.emplace_back(text);
        return Host::messageBox(text, buttons, icon, title);
    }
    void terminalAppended(std::string_view text) override { terminal.append(text); }
    void refreshStatus() override { ++statusRefreshes; }

  private:
    std::vector<EventSource*> sources_;
};

}  // namespace vortelm::test
