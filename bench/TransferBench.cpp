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

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "bench/VirtualBoard.h"
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

extern char** environ;

namespace {

using namespace vortelm;

struct Figures {
    double downloadSeconds = 0;
    double uploadSeconds = 0;
    bool ok = false;
};

Figures Run(int32_t baud, int latencyMs, int32_t bytes) {
    bench::VirtualClockHost host;
    ProgramState st(host);
    bench::PrepareState(st, VORTELM_SOURCE_DATA_DIR, baud,
                        "sim:?pace=1&latency=" + std::to_string(latencyMs));
    Figures f;
    {
        link::ComPort port(st);
        if (!bench::OpenVirtualBoard(host, st, port)) return f;
        target::Target tgt(st, port,
                           [](ProgramState& s, const std::string& name) { ReadHexFile(s, name); });
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

// The same transfers in wall-clock time against the board program on a
// pseudo-terminal, paced, through the real event loop of the default host:
// what a user of the CLI sees, wake-ups and all.
struct PtyBoard {
    pid_t pid = -1;
    int toBoard = -1;
    std::string path;
    explicit PtyBoard(const std::string& program) {
        int in[2], out[2];
        if (::pipe(in) != 0 || ::pipe(out) != 0) return;
        posix_spawn_file_actions_t fa;
        posix_spawn_file_actions_init(&fa);
        posix_spawn_file_actions_adddup2(&fa, in[0], 0);
        posix_spawn_file_actions_adddup2(&fa, out[1], 1);
        posix_spawn_file_actions_addclose(&fa, in[1]);
        posix_spawn_file_actions_addclose(&fa, out[0]);
        std::vector<char*> argv = {const_cast<char*>(program.c_str()), const_cast<char*>("--pace"),
                                   const_cast<char*>("1"), nullptr};
        if (::posix_spawn(&pid, program.c_str(), &fa, nullptr, argv.data(), environ) != 0) pid = -1;
        posix_spawn_file_actions_destroy(&fa);
        ::close(in[0]);
        ::close(out[1]);
        toBoard = in[1];
        char c = 0;
        while (::read(out[0], &c, 1) == 1 && c != '\n') path += c;
        ::close(out[0]);
    }
    ~PtyBoard() {
        if (toBoard >= 0) ::close(toBoard);  // the board ends with its input
        if (pid > 0) ::waitpid(pid, nullptr, 0);
    }
};

double WallSeconds() {
    timespec t{};
    clock_gettime(CLOCK_MONOTONIC, &t);
    return double(t.tv_sec) + double(t.tv_nsec) / 1e9;
}

double CpuSeconds() {
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) / 1e9;
}

Figures RunOnPty(const std::string& sim, int32_t baud, int32_t bytes, double& cpuSeconds) {
    PtyBoard board(sim);
    Figures f;
    if (board.path.empty()) return f;
    Host host;  // the real poll() loop
    ProgramState st(host);
    bench::PrepareState(st, VORTELM_SOURCE_DATA_DIR, baud, board.path);
    link::ComPort port(st);
    port.get_preferences();
    if (!port.isOpen()) return f;
    target::Target tgt(st, port,
                       [](ProgramState& s, const std::string& name) { ReadHexFile(s, name); });
    if (target::connect(tgt, 0) != 0) return f;
    const int32_t base = 0x100000;
    for (int32_t i = 0; i < bytes; ++i) {
        WriteDumpByte(st.dump, base + i, static_cast<uint8_t>(i * 7 + (i >> 8)));
        SetDefined(st.dump, base + i, kTrue);
    }
    ClearSelections(st.selections);
    AddSelection(st.selections, base, base + bytes - 1);
    const double c0 = CpuSeconds();
    double t0 = WallSeconds();
    const int d = target::download(tgt);
    f.downloadSeconds = WallSeconds() - t0;
    for (int32_t i = 0; i < bytes; ++i) WriteDumpByte(st.dump, base + i, 0);
    t0 = WallSeconds();
    const int u = target::upload(tgt, -1);
    f.uploadSeconds = WallSeconds() - t0;
    cpuSeconds = CpuSeconds() - c0;
    bool same = true;
    for (int32_t i = 0; i < bytes && same; ++i)
        same = ReadDumpByte(st.dump, base + i) == static_cast<uint8_t>(i * 7 + (i >> 8));
    f.ok = d == 0 && u == 0 && same;
    target::DisableConnectionCheck(tgt);
    port.close();
    return f;
}

int PtyMain(int32_t kib, int runs) {
    const int32_t bytes = kib * 1024;
    const int32_t baud = 115200;
    const double limit = baud / 10.0;
    std::printf("vortelm-sim on a pseudo-terminal, paced, %d baud, %d KiB each way, wall clock\n",
                baud, kib);
    std::printf("peer: the line's limit of %.0f B/s; the protocol allows 98.8 %%\n", limit);
    std::printf("%4s %10s %9s %10s %9s %9s\n", "run", "down B/s", "down %", "up B/s", "up %",
                "cpu s");
    // VORTELM_BENCH_OLD_SIM names another board program (an older build) to
    // run in turn with ours under the same load, printed as "before".
    const char* old = std::getenv("VORTELM_BENCH_OLD_SIM");
    std::vector<double> downs, ups, oldDowns, oldUps;
    for (int r = 0; r < runs; ++r) {
        for (int pass = old ? 0 : 1; pass < 2; ++pass) {
            double cpu = 0;
            const Figures f =
                RunOnPty(pass == 0 ? std::string(old) : std::string(VORTELM_SIM), baud, bytes, cpu);
            if (!f.ok) {
                std::printf("%4d  transfer failed\n", r + 1);
                return 1;
            }
            const double down = bytes / f.downloadSeconds;
            const double up = bytes / f.uploadSeconds;
            (pass == 0 ? oldDowns : downs).push_back(100 * down / limit);
            (pass == 0 ? oldUps : ups).push_back(100 * up / limit);
            std::printf("%4d %10.0f %8.2f%% %10.0f %8.2f%% %9.3f%s\n", r + 1, down,
                        100 * down / limit, up, 100 * up / limit, cpu, pass == 0 ? "  before" : "");
        }
    }
    auto median = [](std::vector<double> v) {
        std::sort(v.begin(), v.end());
        return v[v.size() / 2];
    };
    if (old)
        std::printf("median before: down %.2f %%, up %.2f %% of the line\n", median(oldDowns),
                    median(oldUps));
    const double worst = std::min(median(downs), median(ups));
    std::printf("median: down %.2f %%, up %.2f %% of the line (goal at least 97 %%: %s)\n",
                median(downs), median(ups), worst >= 97.0 ? "met" : "not met");
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    // bench_transfer --pty [KiB] [runs]: the wall-clock figures on a pseudo-terminal.
    if (argc > 1 && std::string(argv[1]) == "--pty")
        return PtyMain(argc > 2 ? std::max(1, std::atoi(argv[2])) : 64,
                       argc > 3 ? std::max(1, std::atoi(argv[3])) : 3);
    const int32_t bytes = 256 * 1024;
    std::printf("payload %d bytes; peer: the line's limit of baud/10 bytes per second\n", bytes);
    std::printf("%8s %8s %10s %10s %10s %10s\n", "baud", "latency", "down B/s", "down %", "up B/s",
                "up %");
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
            std::printf("%8d %6dms %10.0f %9.2f%% %10.0f %9.2f%%\n", baud, latency, down,
                        100 * down / limit, up, 100 * up / limit);
        }
    return failures == 0 ? 0 : 1;
}
