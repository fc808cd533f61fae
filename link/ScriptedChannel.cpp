#include "link/ScriptedChannel.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>

namespace vortelm::channel {

ScriptedChannel::ScriptedChannel(MicrosClock clock, std::string name)
    : clock_(std::move(clock)), name_(std::move(name)) {
    if (!clock_) {
        clock_ = [] {
            using namespace std::chrono;
            return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
        };
    }
}

int64_t ScriptedChannel::now() const {
    return clock_();
}

bool ScriptedChannel::usable() {
    if (!open_) {
        lastErrno_ = EBADF;
        lastError_ = std::strerror(EBADF);
        return false;
    }
    if (hungUp_) {
        lastErrno_ = EIO;
        lastError_ = std::strerror(EIO);
        return false;
    }
    return true;
}

void ScriptedChannel::schedule(std::span<const uint8_t> bytes, int64_t delayUs, int64_t gapUs) {
    int64_t t = now() + std::max<int64_t>(delayUs, 0);
    // Bytes never overtake those scheduled before them: one line, one order.
    if (!pending_.empty()) t = std::max(t, pending_.back().atUs);
    for (uint8_t b : bytes) {
        pending_.push_back({t, b});
        t += std::max<int64_t>(gapUs, 0);
    }
}

void ScriptedChannel::arrive(std::span<const uint8_t> bytes, int64_t delayUs, int64_t gapUs) {
    schedule(bytes, delayUs, gapUs);
}

void ScriptedChannel::arrive(std::string_view text, int64_t delayUs, int64_t gapUs) {
    std::vector<uint8_t> bytes(text.begin(), text.end());
    schedule(bytes, delayUs, gapUs);
}

void ScriptedChannel::expect(std::vector<uint8_t> request, std::vector<uint8_t> reply,
                             int64_t delayUs, int64_t gapUs) {
    expectations_.push_back({std::move(request), std::move(reply), delayUs, gapUs});
    // An expectation with no request answers at once.
    while (!expectations_.empty() && expectations_.front().request.empty()) {
        auto e = std::move(expectations_.front());
        expectations_.pop_front();
        schedule(e.reply, e.delayUs, e.gapUs);
    }
}

void ScriptedChannel::setResponder(
    std::function<void(std::span<const uint8_t>, ScriptedChannel&)> fn) {
    responder_ = std::move(fn);
}

void ScriptedChannel::setEcho(bool on, int64_t delayUs) {
    echo_ = on;
    echoDelayUs_ = delayUs;
}

void ScriptedChannel::hangUp() {
    hungUp_ = true;
}

void ScriptedChannel::failWrites(int err) {
    writeErrno_ = err;
}

void ScriptedChannel::match(uint8_t b) {
    if (expectations_.empty()) return;
    auto& e = expectations_.front();
    if (e.request[matched_] != b) {
        ++mismatches_;
        matched_ = 0;
        return;
    }
    if (++matched_ < e.request.size()) return;
    matched_ = 0;
    auto done = std::move(e);
    expectations_.pop_front();
    schedule(done.reply, done.delayUs, done.gapUs);
    while (!expectations_.empty() && expectations_.front().request.empty()) {
        auto next = std::move(expectations_.front());
        expectations_.pop_front();
        schedule(next.reply, next.delayUs, next.gapUs);
    }
}

std::ptrdiff_t ScriptedChannel::write(std::span<const uint8_t> bytes) {
    if (!usable()) return -1;
    if (writeErrno_ != 0) {
        lastErrno_ = writeErrno_;
        lastError_ = std::strerror(writeErrno_);
        return -1;
    }
    ++writeCalls_;
    if (writeLimit_ != 0 && bytes.size() > writeLimit_) bytes = bytes.first(writeLimit_);
    written_.insert(written_.end(), bytes.begin(), bytes.end());
    if (echo_) schedule(bytes, echoDelayUs_, 0);
    for (uint8_t b : bytes) match(b);
    if (responder_) responder_(bytes, *this);
    return static_cast<std::ptrdiff_t>(bytes.size());
}

std::size_t ScriptedChannel::bytesWaitingIn() {
    if (!open_) return 0;
    const int64_t t = now();
    std::size_t n = 0;
    for (const auto& p : pending_) {
        if (p.atUs > t) break;
        ++n;
    }
    return n;
}

std::ptrdiff_t ScriptedChannel::read(std::span<uint8_t> out) {
    if (!usable()) return -1;
    const int64_t t = now();
    std::size_t n = 0;
    while (n < out.size() && !pending_.empty() && pending_.front().atUs <= t) {
        out[n++] = pending_.front().byte;
        pending_.pop_front();
    }
    return static_cast<std::ptrdiff_t>(n);
}

void ScriptedChannel::clearInput() {
    const int64_t t = now();
    while (!pending_.empty() && pending_.front().atUs <= t) pending_.pop_front();
}

Control ScriptedChannel::configure(const LineSettings& settings) {
    if (!usable()) return Control::Failed;
    settings_ = settings;
    ++configureCalls_;
    return Control::Ok;
}

Control ScriptedChannel::setRts(bool on) {
    if (!usable()) return Control::Failed;
    rts_ = on;
    return Control::Ok;
}

Control ScriptedChannel::setDtr(bool on) {
    if (!usable()) return Control::Failed;
    dtr_ = on;
    return Control::Ok;
}

Control ScriptedChannel::setBreak(bool on) {
    if (!usable()) return Control::Failed;
    break_ = on;
    return Control::Ok;
}

std::optional<int64_t> ScriptedChannel::nextEventUs() {
    const int64_t t = now();
    for (const auto& p : pending_)
        if (p.atUs > t) return p.atUs;
    return std::nullopt;
}

}  // namespace vortelm::channel
