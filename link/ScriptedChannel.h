#pragma once
// An in-memory byte channel that plays the far end from a script: bytes that
// arrive at given times, replies to expected requests, a K-Line echo, a line
// that hangs up. It records every byte written and every control call.
// Tests of every layer use it in place of a port; it runs on the clock it is
// given, so a test host on a virtual clock drives it exactly.

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "link/ByteChannel.h"

namespace vortelm::channel {

class ScriptedChannel : public ByteChannel {
  public:
    // clock: microseconds; without one the channel uses the steady clock.
    explicit ScriptedChannel(MicrosClock clock = {}, std::string name = "script:");

    // ---- the far end
    // Bytes that arrive delayUs from now, one every gapUs after the first.
    void arrive(std::span<const uint8_t> bytes, int64_t delayUs = 0, int64_t gapUs = 0);
    void arrive(std::string_view text, int64_t delayUs = 0, int64_t gapUs = 0);
    // When the bytes written next (after those already matched) are
    // `request`, `reply` arrives delayUs later, a byte every gapUs. Requests
    // are matched in the order given; a written byte that does not fit the
    // next request is counted in mismatches() and dropped from matching.
    void expect(std::vector<uint8_t> request, std::vector<uint8_t> reply, int64_t delayUs = 0,
                int64_t gapUs = 0);
    // Called after every write with the bytes just taken, for peers that
    // compute their answers (call arrive() from it).
    void setResponder(std::function<void(std::span<const uint8_t>, ScriptedChannel&)> fn);
    // K-Line: every byte written comes back delayUs later.
    void setEcho(bool on, int64_t delayUs = 0);
    // The line is gone: every later call fails with EIO.
    void hangUp();
    // Writes fail with this errno (0: they work again).
    void failWrites(int err);
    // How many bytes a write takes at most (0: all).
    void limitWrite(std::size_t n) { writeLimit_ = n; }

    // ---- what happened
    [[nodiscard]] const std::vector<uint8_t>& written() const { return written_; }
    [[nodiscard]] std::string writtenText() const { return {written_.begin(), written_.end()}; }
    void clearWritten() { written_.clear(); }
    [[nodiscard]] int writeCalls() const { return writeCalls_; }
    [[nodiscard]] int mismatches() const { return mismatches_; }
    [[nodiscard]] std::size_t pendingExpectations() const { return expectations_.size(); }
    [[nodiscard]] const LineSettings& settings() const { return settings_; }
    [[nodiscard]] int configureCalls() const { return configureCalls_; }
    [[nodiscard]] std::optional<bool> rts() const { return rts_; }
    [[nodiscard]] std::optional<bool> dtr() const { return dtr_; }
    [[nodiscard]] bool breakOn() const { return break_; }

    // ---- ByteChannel
    [[nodiscard]] std::string describe() const override { return name_; }
    [[nodiscard]] bool isOpen() const override { return open_; }
    void close() override { open_ = false; }
    [[nodiscard]] std::ptrdiff_t write(std::span<const uint8_t> bytes) override;
    [[nodiscard]] std::ptrdiff_t read(std::span<uint8_t> out) override;
    [[nodiscard]] std::size_t bytesWaitingIn() override;
    [[nodiscard]] std::size_t bytesWaitingOut() override { return 0; }
    void clearInput() override;
    Control configure(const LineSettings& settings) override;
    Control setRts(bool on) override;
    Control setDtr(bool on) override;
    Control setBreak(bool on) override;
    [[nodiscard]] std::optional<int64_t> nextEventUs() override;
    [[nodiscard]] std::string lastError() const override { return lastError_; }
    [[nodiscard]] int lastErrno() const override { return lastErrno_; }

  private:
    struct Pending {
        int64_t atUs;
        uint8_t byte;
    };
    struct Expectation {
        std::vector<uint8_t> request;
        std::vector<uint8_t> reply;
        int64_t delayUs;
        int64_t gapUs;
    };
    int64_t now() const;
    bool usable();
    void schedule(std::span<const uint8_t> bytes, int64_t delayUs, int64_t gapUs);
    void match(uint8_t b);

    MicrosClock clock_;
    std::string name_;
    bool open_ = true;
    bool hungUp_ = false;
    int writeErrno_ = 0;
    std::size_t writeLimit_ = 0;
    std::deque<Pending> pending_;  // sorted by time
    std::vector<uint8_t> written_;
    std::deque<Expectation> expectations_;
    std::size_t matched_ = 0;  // bytes of the front request already seen
    std::function<void(std::span<const uint8_t>, ScriptedChannel&)> responder_;
    bool echo_ = false;
    int64_t echoDelayUs_ = 0;
    int writeCalls_ = 0;
    int mismatches_ = 0;
    int configureCalls_ = 0;
    LineSettings settings_{};
    std::optional<bool> rts_;
    std::optional<bool> dtr_;
    bool break_ = false;
    std::string lastError_;
    int lastErrno_ = 0;
};

}  // namespace vortelm::channel
