#include "sim/Line.h"

#include <algorithm>
#include <cmath>

namespace vortelm::sim {

Line::Line(Board& board, LineOptions options, FaultPlan faults, uint32_t seed)
    : board_(board),
      options_(std::move(options)),
      faults_(std::move(faults)),
      rng_(seed ^ 0x9E3779B9u) {
    if (!options_.tracePath.empty()) trace_ = std::fopen(options_.tracePath.c_str(), "w");
}

Line::~Line() {
    if (trace_) std::fclose(trace_);
}

void Line::trace(double t, const char* dir, uint8_t b) {
    if (!trace_) return;
    std::fprintf(trace_, "%14.1f %s %02X\n", t, dir, b);
    std::fflush(trace_);
}

bool Line::ratesAgree() const {
    if (!options_.knowsHostRate) return true;
    if (!framingMatches_) return false;
    return std::fabs(board_.rate() - hostRate_) <= 0.03 * hostRate_;
}

void Line::setHostRate(double rate, bool framingMatches) {
    if (rate > 0) hostRate_ = rate;
    framingMatches_ = framingMatches;
}

bool Line::hit(FaultKind kind) {
    bool h = false;
    for (const auto& f : faults_.faults) {
        if (f.kind != kind) continue;
        if (f.at != 0 && f.at == boardBytes_) h = true;
        if (f.at == 0 && f.percent > 0 &&
            std::uniform_real_distribution<double>(0, 100)(rng_) < f.percent)
            h = true;
    }
    return h;
}

void Line::deliver(double t, uint8_t b, bool fromBoard) {
    auto it = toHost_.end();
    while (it != toHost_.begin() && std::prev(it)->t > t) --it;
    toHost_.insert(it, Timed{t, b, fromBoard});
}

void Line::boardReset(int64_t now) {
    advance(now);
    const double n = static_cast<double>(now);
    std::erase_if(toHost_, [n](const Timed& x) { return x.fromBoard && x.t > n; });
    boardLineFree_ = std::min(boardLineFree_, n);
    boardBusyUntil_ = std::min(boardBusyUntil_, n);
}

void Line::hostWrite(std::span<const uint8_t> bytes, int64_t now) {
    if (hungUp_) return;
    double t = std::max(static_cast<double>(now), hostLineFree_);
    for (uint8_t b : bytes) {
        t += byteTime(hostRate_);
        toBoard_.push_back({t, b, false});
        if (options_.kline) deliver(t, b, false);  // the one-wire adapter hears itself
    }
    hostLineFree_ = t;
    advance(now);
}

void Line::schedule(const std::vector<BoardByte>& out, double t, bool reply) {
    if (out.empty()) return;
    // Rates: bytes up to one that changes the rate go at the old rate.
    double rate = board_.rate();
    for (const auto& b : out)
        if (b.newRate > 0) {
            rate = -1;
            break;
        }
    double txRate = rate > 0 ? rate : 0;
    if (txRate == 0) {
        // the reply carries a rate change: the bytes before it went at the rate
        // the host used, which the board had until then
        txRate = hostRate_;
    }
    double start = t + (reply ? options_.latencyUs : 0.0);
    start = std::max(start, boardLineFree_);
    double busy = t;
    for (const auto& b : out) {
        start += b.delayUs;
        busy += b.delayUs;
        ++boardBytes_;
        if (hit(FaultKind::Stall)) start += faults_.stallMs * 1000.0;
        start += byteTime(txRate);
        uint8_t v = b.byte;
        const bool agree = !options_.knowsHostRate ||
                           (framingMatches_ && std::fabs(txRate - hostRate_) <= 0.03 * hostRate_);
        if (!agree) v = static_cast<uint8_t>(v ^ 0x5A);
        if (hit(FaultKind::Flip)) v = static_cast<uint8_t>(v ^ (1u << (rng_() % 8)));
        const bool dropped = hit(FaultKind::Drop);
        trace(start, dropped ? "B>H(lost)" : "B>H", v);
        if (!dropped) deliver(start, v, true);
        if (b.newRate > 0) txRate = b.newRate;
    }
    boardLineFree_ = start;
    boardBusyUntil_ = std::max(boardBusyUntil_, busy);
}

void Line::advance(int64_t now) {
    const double n = static_cast<double>(now);
    std::vector<BoardByte> out;
    while (!toBoard_.empty() && !hungUp_) {
        const Timed h = toBoard_.front();
        const double tp = std::max(h.t, boardBusyUntil_);
        if (tp > n) break;
        toBoard_.pop_front();
        trace(h.t, "H>B", h.byte);
        out.clear();
        if (lastHostByte_ >= 0 && options_.resyncUs > 0 && tp - lastHostByte_ > options_.resyncUs)
            board_.lineSilent();
        lastHostByte_ = tp;
        board_.setTime(tp);
        board_.receive(h.byte, ratesAgree(), hostRate_, out);
        schedule(out, tp, true);
        if (board_.hangupRequested()) hungUp_ = true;
    }
}

void Line::boardSend(std::span<const uint8_t> bytes, int64_t now) {
    std::vector<BoardByte> out;
    for (uint8_t b : bytes) out.push_back({b, 0, 0});
    advance(now);
    schedule(out, static_cast<double>(now), false);
}

std::size_t Line::hostRead(std::span<uint8_t> out, int64_t now) {
    advance(now);
    std::size_t k = 0;
    while (k < out.size() && !toHost_.empty() && toHost_.front().t <= static_cast<double>(now)) {
        out[k++] = toHost_.front().byte;
        toHost_.pop_front();
    }
    return k;
}

std::size_t Line::hostWaitingIn(int64_t now) {
    advance(now);
    std::size_t k = 0;
    for (const auto& x : toHost_) {
        if (x.t > static_cast<double>(now)) break;
        ++k;
    }
    return k;
}

std::size_t Line::hostWaitingOut(int64_t now) {
    advance(now);
    return toBoard_.size();
}

void Line::clearHostInput(int64_t now) {
    advance(now);
    while (!toHost_.empty() && toHost_.front().t <= static_cast<double>(now)) toHost_.pop_front();
}

std::optional<int64_t> Line::lastEvent() const {
    std::optional<double> t;
    if (!toBoard_.empty()) t = std::max(toBoard_.back().t, boardBusyUntil_);
    if (!toHost_.empty()) t = t ? std::max(*t, toHost_.back().t) : toHost_.back().t;
    if (!t) return std::nullopt;
    return static_cast<int64_t>(std::ceil(*t));
}

std::optional<int64_t> Line::nextEvent() const {
    std::optional<double> t;
    if (!toBoard_.empty()) t = std::max(toBoard_.front().t, boardBusyUntil_);
    if (!toHost_.empty()) t = t ? std::min(*t, toHost_.front().t) : toHost_.front().t;
    if (!t) return std::nullopt;
    return static_cast<int64_t>(std::ceil(*t));
}

}  // namespace vortelm::sim
