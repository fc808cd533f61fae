#include "core/Host.h"

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <map>
#include <random>

#include "core/Helpers.h"
#include "core/ProgramState.h"

namespace vortelm {

namespace {

struct Timer {
    int intervalMs;
    int64_t nextUs;
    std::function<void()> fn;
};

}  // namespace

struct Host::Loop {
    std::vector<EventSource*> sources;
    std::map<int, Timer> timers;
    int nextTimerId = 1;
    std::mt19937_64 rng{0x5EED};
};

Host::Host() : loop_(std::make_unique<Loop>()) {}
Host::~Host() = default;

int64_t Host::nowUs() {
    using namespace std::chrono;
    return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
}

std::string Host::dateText() {
    std::time_t t = std::time(nullptr);
    std::tm tm{};
    localtime_r(&t, &tm);
    char buf[32];
    std::strftime(buf, sizeof buf, "%d.%m.%Y", &tm);
    return buf;
}

std::string Host::timeText() {
    std::time_t t = std::time(nullptr);
    std::tm tm{};
    localtime_r(&t, &tm);
    char buf[32];
    std::strftime(buf, sizeof buf, "%H:%M:%S", &tm);
    return buf;
}

std::string Host::timestampText() {
    return DateStamp();
}

double Host::secondsSinceMidnight() {
    std::time_t t = std::time(nullptr);
    std::tm tm{};
    localtime_r(&t, &tm);
    return tm.tm_hour * 3600.0 + tm.tm_min * 60.0 + tm.tm_sec;
}

double Host::random() {
    auto& rng = (*loop_).rng;
    return std::uniform_real_distribution<double>(0.0, 1.0)(rng);
}

void Host::addSource(EventSource& source) {
    auto& s = (*loop_).sources;
    if (std::find(s.begin(), s.end(), &source) == s.end()) s.push_back(&source);
}

void Host::removeSource(EventSource& source) {
    auto& s = (*loop_).sources;
    s.erase(std::remove(s.begin(), s.end(), &source), s.end());
}

int Host::startTimer(int intervalMs, std::function<void()> fn) {
    auto& l = (*loop_);
    int id = l.nextTimerId++;
    l.timers[id] = Timer{intervalMs, nowUs() + int64_t(intervalMs) * 1000, std::move(fn)};
    return id;
}

void Host::stopTimer(int id) {
    (*loop_).timers.erase(id);
}

void Host::yield(std::optional<int64_t> untilUs) {
    auto& l = (*loop_);
    const int64_t now = nowUs();
    int64_t wake = untilUs.value_or(now + 10'000);
    for (auto& [id, t] : l.timers) wake = std::min(wake, t.nextUs);
    std::vector<pollfd> fds;
    std::vector<EventSource*> owners;
    for (EventSource* s : l.sources) {
        if (auto due = s->dueUs()) wake = std::min(wake, *due);
        if (int fd = s->pollFd(); fd >= 0) {
            fds.push_back(pollfd{fd, POLLIN, 0});
            owners.push_back(s);
        }
    }
    // Microseconds, not whole milliseconds: a paced line delivers a byte
    // every 87 us at 115200 baud, and a wait rounded up to 1 ms per byte
    // would cost more than the line itself.
    const int64_t waitUs = std::clamp<int64_t>(wake - now, 0, 1'000'000);
    const timespec ts{static_cast<time_t>(waitUs / 1'000'000),
                      static_cast<long>(waitUs % 1'000'000) * 1000};
    int n = ::ppoll(fds.data(), fds.size(), &ts, nullptr);
    // Sources and timers may add or remove others while they run: work on copies.
    if (n > 0) {
        for (size_t i = 0; i < fds.size(); ++i) {
            auto& cur = (*loop_).sources;
            if ((fds[i].revents & (POLLIN | POLLHUP | POLLERR | POLLNVAL)) &&
                std::find(cur.begin(), cur.end(), owners[i]) != cur.end())
                owners[i]->dispatch();
        }
    }
    const int64_t after = nowUs();
    std::vector<EventSource*> due;
    for (EventSource* s : (*loop_).sources)
        if (auto d = s->dueUs(); d && *d <= after) due.push_back(s);
    for (EventSource* s : due) {
        auto& cur = (*loop_).sources;
        if (std::find(cur.begin(), cur.end(), s) != cur.end()) s->dispatch();
    }
    std::vector<int> dueTimers;
    for (auto& [id, t] : (*loop_).timers)
        if (t.nextUs <= after) dueTimers.push_back(id);
    for (int id : dueTimers) {
        auto& timers = (*loop_).timers;
        auto it = timers.find(id);
        if (it == timers.end()) continue;
        it->second.nextUs = after + int64_t(it->second.intervalMs) * 1000;
        auto fn = it->second.fn;  // the timer may stop itself
        fn();
    }
}

MsgAnswer Host::messageBox(std::string_view, MsgButtons buttons, MsgIcon, std::string_view) {
    return buttons == MsgButtons::YesNo || buttons == MsgButtons::YesNoCancel ? MsgAnswer::Yes
                                                                              : MsgAnswer::Ok;
}

std::optional<std::string> Host::inputBox(std::string_view, std::string_view,
                                          std::string_view defaultText) {
    return std::string(defaultText);
}

void Host::setBusy(bool) {}
void Host::showMessageWindow(std::string_view) {}
std::string Host::clipboardText() {
    return clipboard_;
}
void Host::setClipboardText(std::string_view text) {
    clipboard_ = std::string(text);
}
void Host::printLines(std::span<const std::string>) {}
bool Host::startDetached(const std::string&, const std::vector<std::string>&) {
    return false;
}
void Host::terminalAppended(std::string_view) {}
void Host::terminalCleared() {}
void Host::scaleForms(double, double) {}
void Host::refreshStatus() {}
void Host::refreshFeatureButtons() {}
void Host::refreshMemory() {}
void Host::gotoPage(int32_t) {}
void Host::refreshSfrView() {}
void Host::refreshAfterOperation(bool sfrView) {
    refreshMemory();
    if (sfrView) refreshSfrView();
    refreshStatus();
    refreshFeatureButtons();
}
void Host::progress(int64_t, int64_t) {}
void Host::failureReported(std::string_view) {}

void RefreshAfterOperation(ProgramState& st) {
    st.host->refreshAfterOperation(st.REFRESHSFR != 0);
}

}  // namespace vortelm
