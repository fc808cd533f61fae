#pragma once
// The host of the headless front end: the real poll() loop of the default
// host, running text to standard output (each CR LF as one line feed),
// message boxes to standard error answered by --yes or --no.

#include <functional>
#include <optional>
#include <string>

#include "core/Host.h"

namespace vortelm::cli {

class CliHost : public Host {
  public:
    explicit CliHost(bool answerYes) : answerYes_(answerYes) {}

    MsgAnswer messageBox(std::string_view text, MsgButtons buttons, MsgIcon icon,
                         std::string_view title = {}) override;
    std::optional<std::string> inputBox(std::string_view prompt, std::string_view title,
                                        std::string_view defaultText) override;
    void terminalAppended(std::string_view text) override;
    void printLines(std::span<const std::string> lines) override;
    bool startDetached(const std::string& program, const std::vector<std::string>& args) override;

    // Where input boxes take their answer from: the next line, or nothing at
    // the end of input (then the box gives its default text).
    void setLineReader(std::function<std::optional<std::string>()> reader) {
        lineReader_ = std::move(reader);
    }

    // Ctrl-C asks a running script or _poll to stop: the handler marks it,
    // the next pass of the loop raises the abort flag (the one the
    // transfers and scripts read). A second Ctrl-C before the first was
    // taken ends the program.
    void watchInterrupt(int16_t* abortFlag);
    void yield(std::optional<int64_t> untilUs = std::nullopt) override;

    // The small message window of _cmessage goes to standard error.
    void showMessageWindow(std::string_view text) override;

    // Writes a carriage return still held back at the end.
    void flush();

  private:
    bool answerYes_;
    bool heldCr_ = false;
    std::function<std::optional<std::string>()> lineReader_;
    int16_t* abortFlag_ = nullptr;
};

}  // namespace vortelm::cli
