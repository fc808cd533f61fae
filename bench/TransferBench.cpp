// Throughput of download and upload: 256 KiB against the paced virtual board
// at 9600 and 115200 baud, with a turnaround latency of 0 and 1 ms. The
// physical limit of the line (baud/10 bytes per second) is the peer: each
// run prints the payload rate as a percentage of it.
//
// The board and the host run on one virtual clock: a wait jumps the clock to
// the board's next event, and the transmit spin, which must not yield, is
// taken to last until the line's next event. So the figures are those of
// the protocol and of the host's way of driving it, measured in seconds of
// the line, and a run takes a moment of real time.

#include <cstdio>
#include <string>
#include <vector>

#include "apps/SimOpener.h"
#include "config/Startup.h"
#include "core/Host.h"
#include "core/ProgramState.h"
#include "core/Text.h"
#include "image/Dump.h"
#include "image/HexFile.h"
#include "image/Selections.h"
#include "link/ComPort.h"
#include "link/Ports.h"
#include "target/Target.h"

namespace {

using namespace vortelm;

class VirtualClockHost : public Host {
public:
    int64_t nowUs() override {
        // A caller that asks for the time over and over without yielding is
        // spinning on the line: its time passes until the line's next event.
        if (++callsSinceYield > 2 && line != nullptr && !advancing) {
            advancing = true;
            if (auto t = line->nextEventUs(); t && *t > now) now = *t;
            advancing = false;
        }
        return now;
    }
    void yield(std::optional<int64_t> untilUs) override {
        callsSinceYield = 0;
        advanceToNextEvent(untilUs);
        for (EventSource* s : sources)
            if (auto due = s->dueUs(); due && *due <= now) s->dispatch();
    }
    void addSource(EventSource& s) override { sources.push_back(&s); }
    void removeSource(EventSource& s) override { std::erase(sources, &s); }

    int64_t now = 0;
    channel::ByteChannel* line = nullptr;  // the board's line, for the spin

private:
    void advanceToNextEvent(std::optional<int64_t> untilUs) {
        if (advancing) return;
        advancing = true;
        std::optional<int64_t> next = untilUs;
        for (EventSource* s : sources)
            if (auto due = s->dueUs(); due && *due > now && (!next || *due < *next)) next = due;
        if (next && *next > now) now = *next;
        advancing = false;
    }
    bool advancing = false;
    std::vector<EventSource*> sources;
    int callsSinceYield = 0;
};

struct Figures {
    double downloadSeconds = 0;
    double uploadSeconds = 0;
    bool ok = false;
};

Figures Run(int32_t baud, int latencyMs, int32_t bytes) {
    VirtualClockHost host;
    ProgramState st(host);
    st.programFolder = VORTELM_SOURCE_DATA_DIR;
    ReadDataFiles(st);
    ReadDefaultPreferences(st);
    st.logEnabled = 0;
    st.BAUDRATE = baud;
    st.CHECKCONNECTION = 0;
    st.portOverride = "sim:?pace=1&latency=" + std::to_string(latencyMs);
    InitDumpMemory(st.dump);
    Figures f;
    {
        link::ComPort port(st);
        // The board reads the clock as it is; only the host's own readings
        // tell a spin.
        apps::AddSimOpener(port.openers);
        port.opener = [&st, &host, &port](std::string_view text, const channel::LineSettings& ls) {
            return port.openers.open(text, ls, st.TIMEOUT, st.MCTYPE, [&host] { return host.now; });
        };
        port.get_preferences();  // takes the settings text of BAUDRATE and opens
        if (!port.isOpen()) return f;
        host.line = port.channel();
        target::Target tgt(st, port, [](ProgramState& s, const std::string& name) { ReadHexFile(s, name); });
        if (target::connect(tgt, 0) != 0) return f;
        // the whole external RAM of the default controller
        const int32_t base = 0x100000;
        for (int32_t i = 0; i < bytes; ++i) {
            WriteDumpByte(st.dump, base + i, static_cast<uint8_t>(i * 7 + (i >> 8)));
            SetDefined(st.dump, base + i, kTrue);
        }
        ClearSelections(st.selections);
        AddSelection(st.selections, base, base + bytes - 1);
        int64_t t0 = host.now;
        const int d = target::download(tgt);
        f.downloadSeconds = double(host.now - t0) / 1e6;
        for (int32_t i = 0; i < bytes; ++i) WriteDumpByte(st.dump, base + i, 0);
        t0 = host.now;
        const int u = target::upload(tgt, -1);
        f.uploadSeconds = double(host.now - t0) / 1e6;
        bool same = true;
        for (int32_t i = 0; i < bytes && same; ++i)
            same = ReadDumpByte(st.dump, base + i) == static_cast<uint8_t>(i * 7 + (i >> 8));
        f.ok = d == 0 && u == 0 && same;
        target::DisableConnectionCheck(tgt);
        host.line = nullptr;
    }
    return f;
}

}  // namespace

int main() {
    const int32_t bytes = 256 * 1024;
    std::printf("payload %d bytes; peer: the line's limit of baud/10 bytes per second\n", bytes);
    std::printf("%8s %8s %10s %10s %10s %10s\n", "baud", "latency", "down B/s", "down %", "up B/s", "up %");
    int failures = 0;
    for (int32_t baud : {9600, 115200})
        for (int latency : {0, 1}) {
            const Figures f = Run(baud, latency, bytes);
            if (!f.ok) {
                std::printf("%8d %6dms  transfer failed\n", baud, latency);
                ++failures;
                continue;
            }
            const double limit = baud / 10.0;
            const double down = bytes / f.downloadSeconds;
            const double up = bytes / f.uploadSeconds;
            std::printf("%8d %6dms %10.0f %9.2f%% %10.0f %9.2f%%\n", baud, latency, down, 100 * down / limit, up,
                        100 * up / limit);
        }
    return failures == 0 ? 0 : 1;
}
