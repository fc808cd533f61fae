#include "core/TestHost.h"

#include <poll.h>

#include <algorithm>

namespace vortelm {

TestHost::TestHost() = default;
TestHost::~TestHost() = default;

double TestHost::random() {
    if (randoms.empty()) return 0.0;
    const double r = randoms.front();
    randoms.pop_front();
    return r;
}

void TestHost::addSource(EventSource& source) {
    if (std::find(sources_.begin(), sources_.end(), &source) == sources_.end())
        sources_.push_back(&source);
}

void TestHost::removeSource(EventSource& source) {
    sources_.erase(std::remove(sources_.begin(), sources_.end(), &source), sources_.end());
}

int TestHost::startTimer(int intervalMs, std::function<void()> fn) {
    const int id = nextTimerId_++;
    timers_[id] = Timer{intervalMs, now + int64_t(std::max(intervalMs, 1)) * 1000, std::move(fn)};
    return id;
}

void TestHost::stopTimer(int id) { timers_.erase(id); }

void TestHost::yield(std::optional<int64_t> untilUs) {
    ++yields;
    // Sources with a descriptor are looked at without waiting.
    std::vector<pollfd> fds;
    std::vector<EventSource*> owners;
    for (EventSource* s : sources_) {
        if (int fd = s->pollFd(); fd >= 0) {
            fds.push_back(pollfd{fd, POLLIN, 0});
            owners.push_back(s);
        }
    }
    bool ready = false;
    if (!fds.empty() && ::poll(fds.data(), fds.size(), 0) > 0) {
        for (size_t i = 0; i < fds.size(); ++i) {
            if (!(fds[i].revents & (POLLIN | POLLHUP | POLLERR | POLLNVAL))) continue;
            if (std::find(sources_.begin(), sources_.end(), owners[i]) == sources_.end()) continue;
            owners[i]->dispatch();
            ready = true;
        }
    }
    if (!ready) {
        // Jump to the first thing that happens, never past the deadline.
        int64_t wake = untilUs.value_or(now + idleStepUs);
        for (EventSource* s : sources_)
            if (auto due = s->dueUs()) wake = std::min(wake, *due);
        for (auto& [id, t] : timers_) wake = std::min(wake, t.nextUs);
        if (wake > now) now = wake;
    }
    std::vector<EventSource*> due;
    for (EventSource* s : sources_)
        if (auto d = s->dueUs(); d && *d <= now) due.push_back(s);
    for (EventSource* s : due)
        if (std::find(sources_.begin(), sources_.end(), s) != sources_.end()) s->dispatch();
    std::vector<int> dueTimers;
    for (auto& [id, t] : timers_)
        if (t.nextUs <= now) dueTimers.push_back(id);
    for (int id : dueTimers) {
        auto it = timers_.find(id);
        if (it == timers_.end()) continue;
        it->second.nextUs = now + int64_t(std::max(it->second.intervalMs, 1)) * 1000;
        auto fn = it->second.fn;  // the timer may stop itself
        fn();
    }
}

MsgAnswer TestHost::messageBox(std::string_view text, MsgButtons buttons, MsgIcon icon,
                               std::string_view title) {
    boxes.push_back(Box{std::string(text), buttons, icon, std::string(title)});
    if (!messageAnswers.empty()) {
        const MsgAnswer a = messageAnswers.front();
        messageAnswers.pop_front();
        return a;
    }
    return Host::messageBox(text, buttons, icon, title);
}

std::optional<std::string> TestHost::inputBox(std::string_view prompt, std::string_view title,
                                              std::string_view defaultText) {
    inputPrompts.emplace_back(prompt);
    if (!inputAnswers.empty()) {
        auto a = inputAnswers.front();
        inputAnswers.pop_front();
        return a;
    }
    return Host::inputBox(prompt, title, defaultText);
}

bool TestHost::startDetached(const std::string& program, const std::vector<std::string>& args) {
    started.push_back(Started{program, args});
    return startResult;
}

void TestHost::printLines(std::span<const std::string> lines) {
    printed.insert(printed.end(), lines.begin(), lines.end());
}

}  // namespace vortelm
