#include "apps/vortelm-cli/CliHost.h"

#include <signal.h>
#include <spawn.h>

#include <csignal>

#include <cstdio>

extern char** environ;

namespace vortelm::cli {

namespace {

volatile std::sig_atomic_t interrupted = 0;

void OnInterrupt(int) {
    if (interrupted != 0) {
        std::signal(SIGINT, SIG_DFL);
        std::raise(SIGINT);
    }
    interrupted = 1;
}

}  // namespace

void CliHost::watchInterrupt(int16_t* abortFlag) {
    abortFlag_ = abortFlag;
    struct sigaction sa {};
    sa.sa_handler = &OnInterrupt;
    sigemptyset(&sa.sa_mask);
    sa.sa_flags = 0;  // no restart: a waiting poll returns at once
    ::sigaction(SIGINT, &sa, nullptr);
}

void CliHost::yield(std::optional<int64_t> untilUs) {
    Host::yield(untilUs);
    if (interrupted != 0) {
        interrupted = 0;
        if (abortFlag_ != nullptr) *abortFlag_ = 1;
    }
}

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
    std::string out;
    out.reserve(text.size() + 1);
    for (char c : text) {
        if (heldCr_) {
            heldCr_ = false;
            if (c == '\n') {
                out += '\n';
                continue;
            }
            out += '\r';
        }
        if (c == '\r')
            heldCr_ = true;
        else
            out += c;
    }
    std::fwrite(out.data(), 1, out.size(), stdout);
    std::fflush(stdout);
}

void CliHost::flush() {
    if (heldCr_) std::fputc('\r', stdout);
    heldCr_ = false;
    std::fflush(stdout);
}

void CliHost::printLines(std::span<const std::string> lines) {
    for (const std::string& l : lines) std::fprintf(stdout, "%s\n", l.c_str());
    std::fflush(stdout);
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
