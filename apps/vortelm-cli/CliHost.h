#pragma once
// The host of the headless front end: the real poll() loop of the default
// host, running text to standard output as clean lines (each CR LF as one
// line feed, a command's echo on a line of its own), message boxes to
// standard error answered by --yes or --no, a progress bar on standard error
// when that is a terminal.

#include <cstdio>
#include <functional>
#include <optional>
#include <string>

#include "apps/vortelm-cli/CliText.h"
#include "core/Host.h"

namespace vortelm::cli {

class CliHost : public Host {
  public:
    explicit CliHost(bool answerYes, bool quiet = false) : answerYes_(answerYes), out_(quiet) {}

    MsgAnswer messageBox(std::string_view text, MsgButtons buttons, MsgIcon icon,
                         std::string_view title = {}) override;
    std::optional<std::string> inputBox(std::string_view prompt, std::string_view title,
                                        std::string_view defaultText) override;
    void terminalAppended(std::string_view text) override;
    void printLines(std::span<const std::string> lines) override;
    bool startDetached(const std::string& program, const std::vector<std::string>& args) override;
    void progress(int64_t value, int64_t maximum) override;
    void yield(std::optional<int64_t> untilUs = std::nullopt) override;
    // The failure line goes to standard error, after the running text so far.
    void failureReported(std::string_view line) override;

    // The running text goes to this file as well (the full text, echoes
    // included); null for none.
    void setLogFile(std::FILE* log) { log_ = log; }
    // Draws the progress bar (only when standard error is a terminal).
    void showProgress(bool on);
    // Runs before every pass of the event loop.
    std::function<void()> beforeYield;

    // Where input boxes take their answer from: the next line, or nothing at
    // the end of input (then the box gives its default text).
    void setLineReader(std::function<std::optional<std::string>()> reader) {
        lineReader_ = std::move(reader);
    }
    // The small message window of _cmessage goes to standard error.
    void showMessageWindow(std::string_view text) override;

    // Ends the output with a line end where the last line is still open.
    void flush();

  private:
    void writeErr(const std::string& text);

    bool answerYes_;
    CleanLines out_;
    CleanLines logLines_;
    std::FILE* log_ = nullptr;
    bool progressShown_ = false;
    ProgressBar bar_;
    std::function<std::optional<std::string>()> lineReader_;
};

}  // namespace vortelm::cli
