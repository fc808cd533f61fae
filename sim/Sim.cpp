#include "sim/Sim.h"

#include <algorithm>

#include "sim/Board.h"
#include "sim/Line.h"
#include "sim/Options.h"

namespace vortelm::sim {
namespace {

// The in-process board behind the port text "sim:". RTS is the RESET line,
// DTR the BSL pin (or the other way round, and either active when the host
// does not assert it, as lines= says); the board starts powered on in
// bootstrap mode, or running its application with start=run, whatever the
// levels: only changes of the lines move it.
class SimChannel final : public channel::ByteChannel {
  public:
    SimChannel(std::string text, BoardModel model, const SimOptions& o, channel::MicrosClock clock)
        : text_(std::move(text)),
          model_(std::move(model)),
          clock_(std::move(clock)),
          board_(model_, o.flashReal ? FlashTimes::Real() : FlashTimes{}, o.faults, o.seed),
          line_(board_, LineOptions{o.kline, o.pace, o.latencyMs * 1000.0, true, o.tracePath},
                o.faults, o.seed),
          resetOnDtr_(o.resetOnDtr),
          inverted_(o.linesInverted),
          resetHeld_(o.linesInverted) {
        if (o.startInApplication) board_.runApplication();
    }

    [[nodiscard]] std::string describe() const override { return text_; }
    [[nodiscard]] bool isOpen() const override { return open_ && !line_.hungUp(); }
    void close() override { open_ = false; }

    std::ptrdiff_t write(std::span<const uint8_t> bytes) override {
        if (!usable()) return -1;
        line_.hostWrite(bytes, clock_());
        return static_cast<std::ptrdiff_t>(bytes.size());
    }
    std::ptrdiff_t read(std::span<uint8_t> out) override {
        if (!usable()) return -1;
        return static_cast<std::ptrdiff_t>(line_.hostRead(out, clock_()));
    }
    std::size_t bytesWaitingIn() override { return usable() ? line_.hostWaitingIn(clock_()) : 0; }
    std::size_t bytesWaitingOut() override { return usable() ? line_.hostWaitingOut(clock_()) : 0; }
    void clearInput() override {
        if (usable()) line_.clearHostInput(clock_());
    }
    channel::Control configure(const channel::LineSettings& s) override {
        if (!usable()) return channel::Control::Failed;
        line_.advance(clock_());
        // The loaders and the monitor speak 8 data bits, no parity.
        line_.setHostRate(s.baud, s.parity == channel::Parity::None && s.dataBits == 8);
        return channel::Control::Ok;
    }
    channel::Control setRts(bool on) override {
        if (!usable()) return channel::Control::Failed;
        rts_ = on;
        follow();
        return channel::Control::Ok;
    }
    channel::Control setDtr(bool on) override {
        if (!usable()) return channel::Control::Failed;
        dtr_ = on;
        follow();
        return channel::Control::Ok;
    }
    channel::Control setBreak(bool) override {
        return usable() ? channel::Control::Ok : channel::Control::Failed;
    }
    std::optional<int64_t> nextEventUs() override {
        if (!usable()) return std::nullopt;
        line_.advance(clock_());
        return line_.nextEvent();
    }
    [[nodiscard]] std::string lastError() const override {
        if (line_.hungUp()) return "the virtual board hung up";
        if (!open_) return "closed";
        return {};
    }
    [[nodiscard]] int lastErrno() const override { return line_.hungUp() ? 5 /* EIO */ : 0; }

  private:
    // The board's RESET and BSL pins after a change of the host's lines: a
    // reset that goes active holds the board, one that goes inactive starts
    // it in bootstrap mode if BSL is active then, else in its application.
    void follow() {
        line_.advance(clock_());
        const bool reset = (resetOnDtr_ ? dtr_ : rts_) != inverted_;
        const bool bsl = (resetOnDtr_ ? rts_ : dtr_) != inverted_;
        if (reset && !resetHeld_) {
            board_.holdReset();
            line_.boardReset(clock_());
        }
        if (!reset && resetHeld_) board_.release(bsl);
        resetHeld_ = reset;
    }

    bool usable() {
        if (!open_) return false;
        if (!line_.hungUp()) line_.advance(clock_());
        return !line_.hungUp();
    }

    std::string text_;
    BoardModel model_;
    channel::MicrosClock clock_;
    Board board_;
    Line line_;
    bool open_ = true;
    bool resetOnDtr_;
    bool inverted_;
    bool rts_ = false;
    bool dtr_ = false;
    // Whether the lines hold RESET. Both lines start unasserted, which holds
    // an inverted RESET; the board itself starts as the options say.
    bool resetHeld_;
};

}  // namespace

OpenResult OpenInProcess(std::string_view options, std::string_view controller,
                         channel::MicrosClock clock) {
    OpenResult r;
    SimOptions o;
    std::string error;
    if (!ParseSimOptions(options, o, error)) {
        r.error = "sim: " + error;
        return r;
    }
    const std::string name = o.controller.empty() ? std::string(controller) : o.controller;
    const BoardModel* model = FindBoardModel(name.empty() ? "ALD7RK_BB" : name);
    if (!model) {
        r.error = "sim: no virtual board for controller '" + name + "'";
        return r;
    }
    if (!clock) {
        r.error = "sim: no clock";
        return r;
    }
    BoardModel m = *model;
    if (o.clk) m.clk = o.clk;
    r.channel = std::make_unique<SimChannel>("sim:" + std::string(options), std::move(m), o,
                                             std::move(clock));
    return r;
}

}  // namespace vortelm::sim
