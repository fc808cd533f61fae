// The cost of one refresh of the SFR view with 256 registers in the set, on
// the paced virtual board at 115200 baud: exchanges and milliseconds of the
// line per refresh. The view reads one block per run of contiguous
// registers; the peer is the register by register way (one word read each),
// which the view takes where the kernel has no block read. Two sets: the
// whole upper register area (one run), and runs of four registers with gaps
// of four words (64 runs).
//
// The board and the host run on one virtual clock, as in bench_transfer:
// the figures are seconds of the line, and a run takes a moment.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <unistd.h>

#include "bench/VirtualBoard.h"
#include "config/Startup.h"
#include "core/Host.h"
#include "core/ProgramState.h"
#include "image/Dump.h"
#include "image/HexFile.h"
#include "link/ComPort.h"
#include "link/Ports.h"
#include "sfr/SfrSets.h"
#include "sfr/SfrTable.h"
#include "target/SfrView.h"
#include "target/Target.h"

namespace {

namespace fs = std::filesystem;
using namespace vortelm;

struct Figures {
    int exchanges = 0;
    double ms = 0;
    bool ok = false;
};

struct Result {
    Figures blocks;
    Figures words;
};

// Registers at the addresses, named R000...; the set holds all of them.
Result Run(const std::string& home, const std::vector<int32_t>& addresses) {
    std::string text;
    char line[64];
    for (size_t i = 0; i < addresses.size(); ++i) {
        std::snprintf(line, sizeof line, "SFR 0x%04X R%03zu\n", addresses[i], i);
        text += line;
    }
    std::ofstream(home + "/SFRDEF/BENCH.SFR") << text;
    fs::remove(home + "/SFRDEF/BENCH.sb");

    bench::VirtualClockHost host;
    ProgramState st(host);
    bench::PrepareState(st, home, 115200, "sim:?pace=1");
    Result r;
    link::ComPort port(st);
    if (!bench::OpenVirtualBoard(host, st, port)) return r;
    target::Target tgt(st, port,
                       [](ProgramState& s, const std::string& name) { ReadHexFile(s, name); });
    if (target::connect(tgt, 0) != 0) return r;
    if (ReadSfrFile(st, home + "/SFRDEF/BENCH.SFR") != 0) return r;
    ClearSfrSets(st);
    for (size_t i = 0; i < addresses.size(); ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "R%03zu", i);
        AddSfrToCurrentSet(st, SfrIndexByName(st, name));
    }
    const int rounds = 5;
    int64_t t0 = host.now;
    for (int k = 0; k < rounds; ++k) r.blocks.exchanges = target::RefreshSfrView(st, &port);
    r.blocks.ms = double(host.now - t0) / 1000.0 / rounds;
    t0 = host.now;
    for (int k = 0; k < rounds; ++k)
        r.words.exchanges = target::RefreshSfrViewByRegister(st, &port);
    r.words.ms = double(host.now - t0) / 1000.0 / rounds;
    r.blocks.ok = r.words.ok = st.sfrList.lines.size() == addresses.size();
    target::DisableConnectionCheck(tgt);
    host.line = nullptr;
    return r;
}

}  // namespace

int main() {
    // a copy of the delivered data, so that no register cache is written
    // into the source tree
    const std::string home =
        (fs::temp_directory_path() / ("vortelm-bench-sfr-" + std::to_string(::getpid()))).string();
    fs::remove_all(home);
    fs::copy(VORTELM_SOURCE_DATA_DIR, home, fs::copy_options::recursive);

    std::vector<int32_t> whole;
    for (int32_t a = 0xFE00; a <= 0xFFFE; a += 2) whole.push_back(a);
    std::vector<int32_t> runs;
    for (int32_t base : {0xF000, 0xFE00})
        for (int32_t a = base; a < base + 0x200; a += 16)
            for (int32_t k = 0; k < 4; ++k) runs.push_back(a + 2 * k);

    std::printf("one refresh of 256 registers at 115200 baud on the paced board\n");
    std::printf("peer: one word read per register (the view without a block read)\n");
    std::printf("%-28s %10s %10s %12s %12s %8s\n", "set", "exchanges", "ms", "peer exch.",
                "peer ms", "ratio");
    int failures = 0;
    for (const auto& [name, set] :
         {std::pair<const char*, const std::vector<int32_t>&>{"one run FE00-FFFF", whole},
          {"64 runs of 4 registers", runs}}) {
        const Result r = Run(home, set);
        if (!r.blocks.ok) {
            std::printf("%-28s refresh failed\n", name);
            ++failures;
            continue;
        }
        std::printf("%-28s %10d %10.2f %12d %12.2f %7.1fx\n", name, r.blocks.exchanges, r.blocks.ms,
                    r.words.exchanges, r.words.ms, r.words.ms / r.blocks.ms);
    }
    fs::remove_all(home);
    return failures == 0 ? 0 : 1;
}
