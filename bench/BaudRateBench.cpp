// A download of 64 KiB against the paced virtual board (the default
// controller, whose external RAM holds it), at
// the rate of the connect (9600 baud) and again after _setbaudrate 57600 has
// changed the divider of the board and the host's port. The peer is the
// download at 9600: the run prints both times and their ratio, which the
// divider's real rate (about 56800 baud at 20 MHz) bounds near 5.9.
//
// Board and host run on one virtual clock (as in bench_transfer): the
// figures are seconds of the line.

#include <cstdio>
#include <string>
#include <vector>

#include "bench/VirtualBoard.h"
#include "config/Startup.h"
#include "core/Host.h"
#include "core/ProgramState.h"
#include "image/Dump.h"
#include "image/HexFile.h"
#include "image/Selections.h"
#include "link/BaudRate.h"
#include "link/ComPort.h"
#include "link/Ports.h"
#include "target/Target.h"

namespace {

using namespace vortelm;

struct Family {
    const char* mctype;
    const char* kernel;
    int32_t base;  // 64 KiB of RAM
};

// The seconds of one download of `bytes` at the connect's rate and after the
// change to newRate; negative when a transfer or compare failed.
std::pair<double, double> Run(const Family& fam, int32_t newRate, int32_t bytes) {
    bench::VirtualClockHost host;
    ProgramState st(host);
    bench::PrepareState(st, VORTELM_SOURCE_DATA_DIR, 9600, "sim:?pace=1");
    std::pair<double, double> result{-1, -1};
    link::ComPort port(st);
    if (!bench::OpenVirtualBoard(host, st, port)) return result;
    target::Target tgt(st, port,
                       [](ProgramState& s, const std::string& name) { ReadHexFile(s, name); });
    if (target::connect(tgt, 0) != 0) return result;
    auto timedDownload = [&](uint8_t seed) {
        for (int32_t i = 0; i < bytes; ++i) {
            WriteDumpByte(st.dump, fam.base + i, static_cast<uint8_t>(i * 7 + seed));
            SetDefined(st.dump, fam.base + i, kTrue);
        }
        ClearSelections(st.selections);
        AddSelection(st.selections, fam.base, fam.base + bytes - 1);
        const int64_t t0 = host.now;
        if (target::download(tgt) != 0) return -1.0;
        const double seconds = double(host.now - t0) / 1e6;
        return target::compare(tgt, "") == 0 ? seconds : -1.0;
    };
    result.first = timedDownload(1);
    if (link::setBaudrate(st, port, newRate) == 0 && st.BAUDRATE == newRate)
        result.second = timedDownload(2);
    target::DisableConnectionCheck(tgt);
    host.line = nullptr;
    return result;
}

}  // namespace

int main() {
    const int32_t bytes = 64 * 1024;
    // The other families' boards have no 64 KiB of RAM to take it.
    const Family families[] = {{"ALD7RK_BB", "ALD4_DEFAULT", 0x100000}};
    std::printf("download of %d bytes on the paced board; peer: the same download at 9600 baud\n",
                bytes);
    std::printf("%-10s %12s %12s %8s\n", "family", "9600 s", "57600 s", "ratio");
    int failures = 0;
    for (const Family& f : families) {
        const auto [slow, fast] = Run(f, 57600, bytes);
        if (slow < 0 || fast < 0) {
            std::printf("%-10s  transfer failed\n", f.mctype);
            ++failures;
            continue;
        }
        std::printf("%-10s %12.2f %12.2f %8.2f\n", f.mctype, slow, fast, slow / fast);
    }
    return failures == 0 ? 0 : 1;
}
