// Flash programming throughput: 256 KiB programmed by the intelligent
// program into the paced virtual board with real flash times at 115200
// baud. The peer is the protocol's bound for the same work: every byte the
// job put on the line (both directions, 10 bit times each) plus the board's
// own flash time (block programs, sector erases, the driver's start). The
// run prints programmed bytes per second and that rate as a percentage of
// the bound's rate, then where the rest of the time went.
//
// Host and board run on one virtual clock, as in bench_transfer: a wait
// jumps to the board's next event, so the figures are seconds of the line.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "bench/VirtualBoard.h"
#include "config/Startup.h"
#include "core/Host.h"
#include "core/ProgramState.h"
#include "flash/Flash.h"
#include "image/Dump.h"
#include "image/HexFile.h"
#include "image/Selections.h"
#include "link/ComPort.h"
#include "link/Monitor.h"
#include "link/Ports.h"
#include "sim/Board.h"
#include "target/Target.h"

namespace {

using namespace vortelm;

// Counts the bytes in each direction of the channel it wraps.
class CountingChannel : public channel::ByteChannel {
  public:
    explicit CountingChannel(std::unique_ptr<channel::ByteChannel> inner) : in_(std::move(inner)) {}
    std::string describe() const override { return in_->describe(); }
    bool isOpen() const override { return in_->isOpen(); }
    void close() override { in_->close(); }
    std::ptrdiff_t write(std::span<const uint8_t> b) override {
        const auto n = in_->write(b);
        if (n > 0) sent += n;
        return n;
    }
    std::ptrdiff_t read(std::span<uint8_t> out) override {
        const auto n = in_->read(out);
        if (n > 0) received += n;
        return n;
    }
    std::size_t bytesWaitingIn() override { return in_->bytesWaitingIn(); }
    std::size_t bytesWaitingOut() override { return in_->bytesWaitingOut(); }
    void clearInput() override { in_->clearInput(); }
    channel::Control configure(const channel::LineSettings& s) override {
        return in_->configure(s);
    }
    channel::Control setRts(bool on) override { return in_->setRts(on); }
    channel::Control setDtr(bool on) override { return in_->setDtr(on); }
    channel::Control setBreak(bool on) override { return in_->setBreak(on); }
    int pollFd() const override { return in_->pollFd(); }
    std::optional<int64_t> nextEventUs() override { return in_->nextEventUs(); }
    std::string lastError() const override { return in_->lastError(); }
    int lastErrno() const override { return in_->lastErrno(); }

    int64_t sent = 0;
    int64_t received = 0;

  private:
    std::unique_ptr<channel::ByteChannel> in_;
};

// What one run measured.
struct Run {
    int32_t bytes;
    int32_t baud;
    bool real;
    double seconds;
    int64_t toBoard;
    int64_t fromBoard;
};

void PrintReport(const ProgramState& st, const Run& run) {
    const auto [bytes, baud, real, seconds, toBoard, fromBoard] = run;
    const int64_t lineBytes = toBoard + fromBoard;
    // The bound: the job's bytes at 10 bit times each, one direction after
    // the other, and the board's own flash time.
    const int unit = 2;  // IFLASH of the default controller
    const int32_t burst = st.memoryUnits[unit].burstSize;
    const int32_t blocks = bytes / burst;
    const int32_t sectors = (bytes + 0xFFFF) / 0x10000;  // sections of 64 KiB
    const sim::FlashTimes times = sim::FlashTimes::Real();
    const double lineSeconds = double(lineBytes) * 10.0 / baud;
    const double flashSeconds = (blocks * times.programWordUs * (burst / 2) +
                                 sectors * times.eraseSectorUs + times.initUs) /
                                1e6;
    const double bound = lineSeconds + flashSeconds;
    const double rate = bytes / seconds;
    const double boundRate = bytes / bound;
    std::printf(
        "intelligent program of %d bytes at %d baud, paced board, real flash times, %s clock\n",
        bytes, baud, real ? "real" : "virtual");
    std::printf("line bytes of the job   %10lld (%lld to the board, %lld back)\n",
                static_cast<long long>(lineBytes), static_cast<long long>(toBoard),
                static_cast<long long>(fromBoard));
    std::printf("line time               %10.3f s\n", lineSeconds);
    std::printf("board flash time        %10.3f s (%d blocks, %d sector erases, driver start)\n",
                flashSeconds, blocks, sectors);
    std::printf("protocol bound          %10.3f s  %10.0f B/s\n", bound, boundRate);
    std::printf("measured                %10.3f s  %10.0f B/s\n", seconds, rate);
    std::printf("programmed bytes per second: %.2f %% of the protocol bound\n",
                100.0 * rate / boundRate);
    std::printf("payload share of the line bytes: %.2f %%\n", 100.0 * bytes / double(lineBytes));
    // The bound adds the erases to the line time; the board's erase runs on
    // while the next block crosses the line, so a host that adds nothing
    // comes out slightly above it.
    std::printf(
        "the rest: %+.3f s (host turnarounds and waits, less the erases under the next block)\n",
        seconds - bound);
}

}  // namespace

int main(int argc, char** argv) {
    // "real": the host's own loop on the real clock (takes the job's real
    // time, about 36 s); otherwise the virtual clock.
    const bool real = argc > 1 && std::string(argv[1]) == "real";
    // a second argument: KiB to program (256, the whole flash, by default)
    const int32_t kib = argc > 2 ? std::clamp(std::atoi(argv[2]), 1, 256) : 256;
    const int32_t bytes = kib * 1024;
    const int32_t base = 0x010000;  // the default controller's internal flash, all of it
    const int32_t baud = 115200;
    bench::VirtualClockHost virtualHost;
    Host realHost;
    Host& h = real ? realHost : virtualHost;
    auto now = [&]() { return real ? realHost.nowUs() : virtualHost.now; };
    ProgramState st(h);
    bench::PrepareState(st, VORTELM_SOURCE_DATA_DIR, baud, "sim:?pace=1&flashtime=real");
    CountingChannel* counter = nullptr;
    link::ComPort port(st);
    apps::AddSimOpener(port.openers);
    port.opener = [&](std::string_view text, const channel::LineSettings& ls) {
        auto r = port.openers.open(text, ls, st.TIMEOUT, st.MCTYPE, now);
        if (r.channel) {
            auto c = std::make_unique<CountingChannel>(std::move(r.channel));
            counter = c.get();
            r.channel = std::move(c);
        }
        return r;
    };
    port.get_preferences();
    if (!port.isOpen() || counter == nullptr) {
        std::printf("the board did not open\n");
        return 1;
    }
    if (!real) virtualHost.line = port.channel();
    target::Target tgt(st, port,
                       [](ProgramState& s, const std::string& name) { ReadHexFile(s, name); });
    if (target::connect(tgt, 0) != 0) {
        std::printf("connect failed\n");
        return 1;
    }
    for (int32_t i = 0; i < bytes; ++i) {
        WriteDumpByte(st.dump, base + i, static_cast<uint8_t>(i * 7 + (i >> 8)));
        SetDefined(st.dump, base + i, kTrue);
    }
    ClearSelections(st.selections);
    AddSelection(st.selections, base, base + bytes - 1);

    const int64_t sent0 = counter->sent;
    const int64_t received0 = counter->received;
    const int64_t t0 = now();
    const int r = flash::IProgram(tgt);
    const double seconds = double(now() - t0) / 1e6;
    const int64_t toBoard = counter->sent - sent0;
    const int64_t fromBoard = counter->received - received0;

    // read back through the monitor and compare
    for (int32_t i = 0; i < bytes; ++i) WriteDumpByte(st.dump, base + i, 0);
    const int u = target::upload(tgt, -1);
    bool same = true;
    for (int32_t i = 0; i < bytes && same; ++i)
        same = ReadDumpByte(st.dump, base + i) == static_cast<uint8_t>(i * 7 + (i >> 8));
    target::DisableConnectionCheck(tgt);
    virtualHost.line = nullptr;
    if (r != 0 || u != 0 || !same) {
        std::printf("programming failed (program %d, upload %d, same %d)\n", r, u, same ? 1 : 0);
        return 1;
    }

    PrintReport(st, {bytes, baud, real, seconds, toBoard, fromBoard});
    return 0;
}
