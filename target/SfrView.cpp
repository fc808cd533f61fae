#include "target/SfrView.h"

#include <algorithm>

#include "config/Kernels.h"
#include "core/Helpers.h"
#include "core/RunTimeError.h"
#include "core/Text.h"
#include "link/ComPort.h"
#include "link/Monitor.h"
#include "sfr/SfrSets.h"

namespace vortelm::target {

namespace {

// Keeps the receive event out of the way of the protocol's own waits for as
// long as it lives.
class QuietReceive {
  public:
    explicit QuietReceive(link::ComPort* port) : port_(port) {
        if (port_ != nullptr) port_->setReceiveThreshold(0);
    }
    ~QuietReceive() {
        if (port_ != nullptr) port_->setReceiveThreshold(1);
    }
    QuietReceive(const QuietReceive&) = delete;
    QuietReceive& operator=(const QuietReceive&) = delete;

  private:
    link::ComPort* port_;
};

const SfrSet& CurrentSet(const ProgramState& st) {
    CheckBound(st.currentSfrSet, kSfrSetBound, "SFR set");
    return st.sfrSets[static_cast<size_t>(st.currentSfrSet)];
}

// The register of the list's line i, or -1 for a line that is skipped.
int32_t LineRegister(const ProgramState& st, size_t line) {
    CheckBound(static_cast<long long>(line), 255, "SFR set entry");
    const int32_t index = CurrentSet(st).entries[line];
    if (index < 0) return -1;
    CheckBound(index, std::min<int32_t>(st.sfrCount, static_cast<int32_t>(st.sfrTable.size())) - 1,
               "SFR table");
    return index;
}

bool Reading(const ProgramState& st, link::ComPort* port) {
    return port != nullptr && st.ConnectionState == 1;
}

}  // namespace

std::vector<SfrRun> SfrReadRuns(const ProgramState& st) {
    std::vector<int32_t> addresses;
    for (size_t i = 0; i < st.sfrList.lines.size(); ++i) {
        const int32_t index = LineRegister(st, i);
        if (index < 0) continue;
        const int32_t a = st.sfrTable[static_cast<size_t>(index)].address;
        if (a >= 0) addresses.push_back(a);
    }
    std::sort(addresses.begin(), addresses.end());
    std::vector<SfrRun> runs;
    for (int32_t a : addresses) {
        // each register is a word: bytes a and a + 1
        if (!runs.empty() && a <= runs.back().first + runs.back().length) {
            runs.back().length = std::max(runs.back().length, a + 2 - runs.back().first);
            continue;
        }
        runs.push_back({a, 2});
    }
    return runs;
}

int RefreshSfrViewByRegister(ProgramState& st, link::ComPort* port) {
    int exchanges = 0;
    {
        QuietReceive quiet(port);
        if (Reading(st, port)) {
            link::Monitor mon(st, *port);
            const bool word = HasFeature(st, "READWORD", -1);
            for (size_t i = 0; i < st.sfrList.lines.size(); ++i) {
                const int32_t index = LineRegister(st, i);
                if (index < 0) continue;
                (void)mon.cmd_readsfr(st.sfrTable[static_cast<size_t>(index)].name);
                exchanges += word ? 1 : 2;
            }
        }
    }
    RebuildSfrListLines(st);
    return exchanges;
}

int RefreshSfrView(ProgramState& st, link::ComPort* port) {
    if (!HasFeature(st, "READBLOCK", -1)) return RefreshSfrViewByRegister(st, port);
    int exchanges = 0;
    {
        QuietReceive quiet(port);
        if (Reading(st, port)) {
            link::Monitor mon(st, *port);
            for (const SfrRun& run : SfrReadRuns(st)) {
                (void)mon.Cmd_Read(run.first, run.length);
                ++exchanges;
            }
        }
    }
    RebuildSfrListLines(st);
    return exchanges;
}

void ShowSfrSet(ProgramState& st, link::ComPort* port, int set) {
    CheckBound(set, kSfrSetBound, "SFR set");
    const SfrSet& s = st.sfrSets[static_cast<size_t>(set)];
    Text2Buffer(st, CrLf() + "Selected Set: '" + s.title + "'");
    QuietReceive quiet(port);
    for (int j = 0; j < s.count && j < 256; ++j) {
        const int32_t index = s.entries[static_cast<size_t>(j)];
        if (index < 0) continue;
        CheckBound(index,
                   std::min<int32_t>(st.sfrCount, static_cast<int32_t>(st.sfrTable.size())) - 1,
                   "SFR table");
        if (Reading(st, port)) {
            link::Monitor mon(st, *port);
            const std::string name = st.sfrTable[static_cast<size_t>(index)].name;
            (void)mon.cmd_readsfr(name);
            (void)mon.cmd_readsfr(name);
        }
        Text2Buffer(st, CrLf() + SfrShowLine(st, index));
    }
}

}  // namespace vortelm::target
