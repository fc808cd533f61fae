#include "apps/vortelm-cli/CliHost.h"

#include <signal.h>
#include <spawn.h>
#include <unistd.h>

#include <csignal>

#include <cstdio>

extern char** environ;

namespace vortelm::cli {

MsgAnswer CliHost::messageBox(std::string_view text, MsgButtons buttons, MsgIcon,
                              std::string_view title) {
    std::string out;
    if (!title.empty()) out += std::string(title) + ": ";
    out += std::string(text);
    std::fprintf(stderr, "%s\n", out.c_str());
    std::fflush(stderr);
    switch (buttons) {
        case MsgButtons::Ok:
            return MsgAnswer::Ok;
        case MsgButtons::OkCancel:
            return answerYes_ ? MsgAnswer::Ok : MsgAnswer::Cancel;
        case MsgButtons::YesNo:
        case MsgButtons::YesNoCancel:
            return answerYes_ ? MsgAnswer::Yes : MsgAnswer::No;
    }
    return MsgAnswer::Ok;
}

std::optional<std::string> CliHost::inputBox(std::string_view prompt, std::string_view title,
                                             std::string_view defaultText) {
    std::string out;
    if (!title.empty()) out += std::string(title) + ": ";
    out += std::string(prompt);
    std::fprintf(stderr, "%s\n", out.c_str());
    std::fflush(stderr);
    if (!answerYes_) return std::nullopt;
    if (lineReader_)
        if (auto line = lineReader_()) return line;
    return std::string(defaultText);
}

void CliHost::showMessageWindow(std::string_view text) {
    std::fprintf(stderr, "%.*s\n", static_cast<int>(text.size()), text.data());
    std::fflush(stderr);
}

void CliHost::terminalAppended(std::string_view text) {
    const std::string out = out_.feed(text);
    if (!out.empty()) {
        std::fwrite(out.data(), 1, out.size(), stdout);
        std::fflush(stdout);
    }
    if (log_ != nullptr) {
        const std::string logged = logLines_.feed(text);
        std::fwrite(logged.data(), 1, logged.size(), log_);
        std::fflush(log_);
    }
}

void CliHost::failureReported(std::string_view line) {
    std::fflush(stdout);
    std::fprintf(stderr, "vortelm-cli: %.*s\n", static_cast<int>(line.size()), line.data());
    std::fflush(stderr);
}

void CliHost::flush() {
    const std::string end = out_.finish();
    std::fwrite(end.data(), 1, end.size(), stdout);
    std::fflush(stdout);
    if (log_ != nullptr) {
        const std::string logged = logLines_.finish();
        std::fwrite(logged.data(), 1, logged.size(), log_);
        std::fflush(log_);
    }
    if (progressShown_) progress(0, 0);
}

void CliHost::printLines(std::span<const std::string> lines) {
    const std::string open = out_.finish();
    std::fwrite(open.data(), 1, open.size(), stdout);
    for (const std::string& l : lines) std::fprintf(stdout, "%s\n", l.c_str());
    std::fflush(stdout);
}

void CliHost::showProgress(bool on) {
    progressShown_ = on && ::isatty(STDERR_FILENO) == 1;
}

void CliHost::progress(int64_t value, int64_t maximum) {
    if (!progressShown_) return;
    if (auto text = bar_.update(value, maximum, nowUs())) writeErr(*text);
}

void CliHost::yield(std::optional<int64_t> untilUs) {
    if (beforeYield) beforeYield();
    Host::yield(untilUs);
}

void CliHost::writeErr(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr);
}

bool CliHost::startDetached(const std::string& program, const std::vector<std::string>& args) {
    std::vector<char*> argv;
    std::string prog = program;
    std::vector<std::string> copy = args;
    argv.push_back(prog.data());
    for (std::string& a : copy) argv.push_back(a.data());
    argv.push_back(nullptr);
    pid_t pid = 0;
    if (::posix_spawnp(&pid, prog.c_str(), nullptr, nullptr, argv.data(), environ) != 0)
        return false;
    return true;
}

}  // namespace vortelm::cli
