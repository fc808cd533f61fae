#pragma once
// What the headless front end does to the running text on its way out, and
// the progress bar it draws on a terminal. Plain functions of their inputs,
// so that tests can drive them without a program around them.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vortelm::cli {

// A piece of running text that is the echo of a shell command: ">" and the
// line, ended by its one CR LF.
[[nodiscard]] bool IsCommandEcho(std::string_view piece);

// Turns running text into clean lines for one output: each CR LF becomes one
// line feed, the echo of a command always starts a line of its own, and
// finish() ends the output with a line end. With dropEcho the echoes are
// left out.
class CleanLines {
  public:
    explicit CleanLines(bool dropEcho = false) : dropEcho_(dropEcho) {}
    // The text to write for one piece of running text.
    [[nodiscard]] std::string feed(std::string_view piece);
    // What other writers put on the same output (whole lines) keeps the count.
    void wroteLine() { atLineStart_ = true; }
    // What is still owed at the end: a line end when the last line is open.
    [[nodiscard]] std::string finish();
    [[nodiscard]] bool atLineStart() const { return atLineStart_ && !heldCr_; }

  private:
    bool dropEcho_;
    bool heldCr_ = false;
    bool atLineStart_ = true;
};

// The one-line progress bar of a transfer: bytes, percent and rate, drawn
// at most ten times a second.
class ProgressBar {
  public:
    // The text to write to the terminal for this report, or nothing when it
    // is too soon after the last drawing. maximum 0 ends the bar: the text
    // then clears the line (empty when nothing was drawn).
    [[nodiscard]] std::optional<std::string> update(int64_t value, int64_t maximum, int64_t nowUs);

    // The bar for value of maximum after elapsedUs (for tests and update).
    [[nodiscard]] static std::string Line(int64_t value, int64_t maximum, int64_t elapsedUs);

    static constexpr int64_t kMinIntervalUs = 100'000;

  private:
    bool running_ = false;
    bool drawn_ = false;
    int64_t startUs_ = 0;
    int64_t lastDrawUs_ = 0;
    int64_t lastValue_ = 0;
};

}  // namespace vortelm::cli
