#pragma once
// What the benchmarks against the in-process board share: a host whose clock
// is virtual (a wait jumps to the next event, so a benchmark measures the
// line's time, not the machine's), a program state read from a data folder,
// and the port opened on the board through the openers table.

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "apps/SimOpener.h"
#include "config/Startup.h"
#include "core/Host.h"
#include "core/ProgramState.h"
#include "image/Dump.h"
#include "link/ComPort.h"

namespace vortelm::bench {

class VirtualClockHost : public Host {
  public:
    int64_t nowUs() override {
        // A caller that asks for the time over and over without yielding is
        // spinning on the line: its time passes until the line's next event.
        if (++callsSinceYield_ > 2 && line != nullptr && !advancing_) {
            advancing_ = true;
            if (auto t = line->nextEventUs(); t && *t > now) now = *t;
            advancing_ = false;
        }
        return now;
    }
    void yield(std::optional<int64_t> untilUs) override {
        callsSinceYield_ = 0;
        advanceToNextEvent(untilUs);
        for (EventSource* s : sources_)
            if (auto due = s->dueUs(); due && *due <= now) s->dispatch();
    }
    void addSource(EventSource& s) override { sources_.push_back(&s); }
    void removeSource(EventSource& s) override { std::erase(sources_, &s); }

    int64_t now = 0;
    channel::ByteChannel* line = nullptr;  // the board's line, for the spin

  private:
    void advanceToNextEvent(std::optional<int64_t> untilUs) {
        if (advancing_) return;
        advancing_ = true;
        std::optional<int64_t> next = untilUs;
        for (EventSource* s : sources_)
            if (auto due = s->dueUs(); due && *due > now && (!next || *due < *next)) next = due;
        if (next && *next > now) now = *next;
        advancing_ = false;
    }
    bool advancing_ = false;
    std::vector<EventSource*> sources_;
    int callsSinceYield_ = 0;
};

// The state a benchmark starts from: the data folder's tables and default
// preferences, no log, no connection check, the rate and the port text given.
inline void PrepareState(ProgramState& st, const std::string& folder, int32_t baud,
                         const std::string& portText) {
    st.programFolder = folder;
    ReadDataFiles(st);
    ReadDefaultPreferences(st);
    st.logEnabled = 0;
    st.BAUDRATE = baud;
    st.CHECKCONNECTION = 0;
    st.portOverride = portText;
    InitDumpMemory(st.dump);
}

// Opens the port on the in-process board, whose clock is the host's. False
// when the board could not be opened.
inline bool OpenVirtualBoard(VirtualClockHost& host, ProgramState& st, link::ComPort& port) {
    apps::AddSimOpener(port.openers);
    port.opener = [&st, &host, &port](std::string_view text, const channel::LineSettings& ls) {
        return port.openers.open(text, ls, st.TIMEOUT, st.MCTYPE, [&host] { return host.now; });
    };
    port.get_preferences();  // takes the settings text of BAUDRATE and opens
    if (!port.isOpen()) return false;
    host.line = port.channel();
    return true;
}

}  // namespace vortelm::bench
