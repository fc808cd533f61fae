// vortelm-cli: the headless front end. Start-up as the GUI does it, then
// standard input line by line as the command box.

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "apps/SimOpener.h"
#include "apps/vortelm-cli/CliHost.h"
#include "shell/Program.h"

namespace {

constexpr const char* kUsage =
    "Usage: vortelm-cli [--home DIR] [--port TEXT] [--yes|--no] [SCRIPT...]\n"
    "       vortelm-cli --help | --version\n";

constexpr const char* kHelp =
    "vortelm-cli - the headless front end of Vortelm.\n"
    "\n"
    "Usage: vortelm-cli [--home DIR] [--port TEXT] [--yes|--no] [SCRIPT...]\n"
    "\n"
    "Starts as the GUI does, runs each SCRIPT given, then reads standard input\n"
    "line by line and treats each line as the command box does:\n"
    "  _command args    a shell command (\"_help\" lists them)\n"
    "  :48656C          hexadecimal bytes sent to the target\n"
    "  any other text   sent to the target as it stands\n"
    "It ends at the end of input or with _quit.\n"
    "\n"
    "Options:\n"
    "  --home DIR    data home (default $XDG_DATA_HOME/vortelm, else\n"
    "                ~/.local/share/vortelm); the delivered data is copied\n"
    "                there on the first start\n"
    "  --port TEXT   port for this run: a device path, socket://host:port or\n"
    "                sim: (overrides the preference file, is not saved)\n"
    "  --yes         answer message boxes with OK/Yes (the default)\n"
    "  --no          answer message boxes with No/Cancel\n"
    "  --help        this text\n"
    "  --version     the version\n"
    "\n"
    "Output: the running text goes to standard output as it is made, each\n"
    "CR LF written as one line feed; message boxes go to standard error.\n"
    "Exit status: 0 when the last line run succeeded, 1 when it failed,\n"
    "2 for bad usage.\n";

// Standard input as a source of the event loop: lines are collected while
// the loop runs timers and the line's events.
class StdinSource : public vortelm::EventSource {
  public:
    // A closed standard input is an empty one.
    StdinSource() : eof(::fcntl(STDIN_FILENO, F_GETFD) < 0) {}
    [[nodiscard]] int pollFd() const override { return eof ? -1 : STDIN_FILENO; }
    void dispatch() override {
        char buf[4096];
        const ssize_t n = ::read(STDIN_FILENO, buf, sizeof buf);
        if (n > 0)
            pending.append(buf, static_cast<size_t>(n));
        else if (n == 0 || (errno != EINTR && errno != EAGAIN))
            eof = true;
    }
    // Takes the next complete line (or the last, unterminated one at the end).
    bool nextLine(std::string& line) {
        const size_t nl = pending.find('\n');
        if (nl == std::string::npos) {
            if (!eof || pending.empty()) return false;
            line = pending;
            pending.clear();
        } else {
            line = pending.substr(0, nl);
            pending.erase(0, nl + 1);
        }
        if (!line.empty() && line.back() == '\r') line.pop_back();
        return true;
    }
    std::string pending;
    bool eof;
};

}  // namespace

int main(int argc, char** argv) {
    StdinSource input;  // before any file is opened: a closed descriptor 0 stays closed
    vortelm::shell::ProgramOptions options;
    bool answerYes = true;
    bool yesOrNoGiven = false;
    for (int i = 1; i < argc; ++i) {
        const std::string_view a = argv[i];
        auto value = [&](std::string& into) {
            if (i + 1 >= argc) return false;
            into = argv[++i];
            return true;
        };
        if (a == "--help") {
            std::fputs(kHelp, stdout);
            return 0;
        }
        if (a == "--version") {
            std::printf("vortelm-cli %s\n", VORTELM_VERSION);
            return 0;
        }
        if (a == "--home") {
            if (!value(options.home) || options.home.empty()) {
                std::fprintf(stderr, "vortelm-cli: --home needs a folder\n%s", kUsage);
                return 2;
            }
        } else if (a == "--port") {
            if (!value(options.portOverride)) {
                std::fprintf(stderr, "vortelm-cli: --port needs a port text\n%s", kUsage);
                return 2;
            }
        } else if (a == "--yes" || a == "--no") {
            if (yesOrNoGiven && answerYes != (a == "--yes")) {
                std::fprintf(stderr, "vortelm-cli: --yes and --no exclude each other\n%s", kUsage);
                return 2;
            }
            yesOrNoGiven = true;
            answerYes = a == "--yes";
        } else if (a.size() > 1 && a.front() == '-' && a != "-") {
            std::fprintf(stderr, "vortelm-cli: unknown option %s\n%s", argv[i], kUsage);
            return 2;
        } else {
            options.AddScriptWord(a);
        }
    }
    options.ResolveHome();

    // Programs started without waiting (the text editor) are reaped by the
    // system when they end.
    std::signal(SIGCHLD, SIG_IGN);

    vortelm::cli::CliHost host(answerYes);
    vortelm::apps::AddSimOpener(options.openers);
    vortelm::shell::Program program(host, options);
    program.StartUp();

    host.addSource(input);
    int16_t last = 0;
    std::string line;
    while (!program.quitRequested()) {
        if (input.nextLine(line)) {
            last = program.RunCommandBoxLine(line);
            continue;
        }
        if (input.eof) break;
        host.yield(host.nowUs() + 1'000'000);
    }
    host.removeSource(input);
    if (!program.quitRequested()) program.ShutDownProgram();
    host.flush();
    return last == 0 ? 0 : 1;
}
