// vortelm-cli: the headless front end. Start-up as the GUI does it, then
// standard input line by line as the command box.

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "apps/SimOpener.h"
#include "apps/vortelm-cli/CliHost.h"
#include "apps/vortelm-cli/CliInterrupt.h"
#include "core/ProgramState.h"
#include "link/BootEntry.h"
#include "link/ByteChannel.h"
#include "link/ComPort.h"
#include "link/Ports.h"
#include "shell/Program.h"

namespace {

constexpr const char* kBootEntries =
    "none, rts-reset-dtr-boot, rts-reset-dtr-boot-inverted, dtr-reset-rts-boot or "
    "dtr-reset-rts-boot-inverted";

constexpr const char* kUsage =
    "Usage: vortelm-cli [--home DIR] [--port TEXT] [--yes|--no] [--quiet] [--log FILE]\n"
    "                   [--boot-entry SEQUENCE] [SCRIPT...]\n"
    "       vortelm-cli --list-ports | --help | --version\n";

constexpr const char* kHelp =
    "vortelm-cli - the headless front end of Vortelm.\n"
    "\n"
    "Usage: vortelm-cli [--home DIR] [--port TEXT] [--yes|--no] [--quiet] [--log FILE]\n"
    "                   [--boot-entry SEQUENCE] [SCRIPT...]\n"
    "       vortelm-cli --list-ports | --help | --version\n"
    "\n"
    "Starts as the GUI does, runs each SCRIPT given (a script file, as\n"
    "_executescript runs one), then reads standard input line by line and\n"
    "treats each line as the command box does:\n"
    "  _command args    a shell command (\"_help\" lists them)\n"
    "  :48656C          hexadecimal bytes sent to the target\n"
    "  any other text   sent to the target as it stands\n"
    "It ends at the end of input or with _quit. Ctrl-C stops a running\n"
    "script or _poll; a second Ctrl-C before that ends the program.\n"
    "\n"
    "Options:\n"
    "  --home DIR     data home (default $XDG_DATA_HOME/vortelm, else\n"
    "                 ~/.local/share/vortelm); the delivered data is copied\n"
    "                 there on the first start\n"
    "  --port TEXT    port for this run: a device path, socket://host:port or\n"
    "                 sim: (overrides the preference file, is not saved)\n"
    "  --yes          answer message boxes with OK/Yes (the default); an input\n"
    "                 box takes the next line of standard input (its default\n"
    "                 text at the end of input)\n"
    "  --no           answer message boxes with No/Cancel, input boxes with\n"
    "                 Cancel\n"
    "  --quiet        leave the echo of each command (\">_command\") out of\n"
    "                 standard output\n"
    "  --log FILE     write the running text to FILE as well (echoes included;\n"
    "                 the file is started anew)\n"
    "  --boot-entry SEQUENCE\n"
    "                 before the first byte of a connect, reset the board into\n"
    "                 its loader through the adapter's lines: none (the\n"
    "                 default), rts-reset-dtr-boot (reset on RTS, boot pin on\n"
    "                 DTR, active when asserted), rts-reset-dtr-boot-inverted\n"
    "                 (active when not asserted), dtr-reset-rts-boot,\n"
    "                 dtr-reset-rts-boot-inverted; for this run only (the\n"
    "                 preference BOOTENTRY= 0 to 4 keeps one)\n"
    "  --list-ports   list the serial ports of the system, one a line: the path,\n"
    "                 the USB vendor:product and product name, the stable\n"
    "                 /dev/serial/by-id name in brackets; then end\n"
    "  --help         this text\n"
    "  --version      the version\n"
    "\n"
    "Output: the running text goes to standard output as it is made, as\n"
    "lines: each CR LF is one line feed, a command's echo starts a new line,\n"
    "and the output ends with a line end. Message boxes go to standard error;\n"
    "so does a progress bar for transfers when standard error is a terminal.\n"
    "\n"
    "Ctrl-C stops the running operation or script, as Esc does in the GUI;\n"
    "with standard input not a terminal it also ends the job: the lines still\n"
    "to come are not run. A second Ctrl-C ends the program at once.\n"
    "\n"
    "Exit status:\n"
    "  0    the last line run succeeded (or there was none)\n"
    "  1    the last line run failed (a SCRIPT counts as one line: it fails\n"
    "       when it is refused, aborted or its last line fails)\n"
    "  2    bad usage, or the --log file could not be opened\n"
    "  130  ended by Ctrl-C\n";

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

// --list-ports: one port a line, then the end.
int ListPortsAndEnd() {
    for (const auto& p : vortelm::link::ListPorts())
        std::printf("%s\n", vortelm::link::PortLine(p).c_str());
    std::fflush(stdout);
    return 0;
}

// --log FILE: a stream of its own, started anew, written as the text comes.
std::FILE* OpenLogFile(const std::string& path) {
    if (path.empty()) return nullptr;
    std::FILE* f = std::fopen(path.c_str(), "we");
    if (f == nullptr)
        std::fprintf(stderr, "vortelm-cli: cannot write the log file %s: %s\n", path.c_str(),
                     std::strerror(errno));
    return f;
}

// Ctrl-C: every pass of the event loop hands a first interrupt to the
// running operation or script as the abort flag, and keeps the port's
// descriptor at hand for a second one.
void WireInterrupts(vortelm::cli::CliHost& host, vortelm::shell::Program& program) {
    vortelm::cli::InstallInterruptHandler();
    host.beforeYield = [&program, handed = false]() mutable {
        const auto* ch = program.port().channel();
        vortelm::cli::SetPortDescriptor(ch != nullptr ? ch->pollFd() : -1);
        if (vortelm::cli::Interrupts() == 0) {
            handed = false;
        } else if (!handed) {
            program.state().scriptAbort = 1;
            handed = true;
        }
    };
}

// After a line: true when an interrupt came while it ran and the job ends
// (standard input is not a terminal). Either way the flag does not outlive
// the line it was meant for.
bool InterruptEndsJob(vortelm::shell::Program& program, bool inputIsTerminal) {
    if (vortelm::cli::Interrupts() == 0) return false;
    program.state().scriptAbort = 0;
    vortelm::cli::ResumeAfterInterrupt();
    return !inputIsTerminal;
}

// Between lines: an interrupt ends a job read from a file or pipe; at a
// terminal it is counted, so that a second one ends the program.
bool InterruptWhileIdle(vortelm::shell::Program& program, bool inputIsTerminal) {
    if (vortelm::cli::Interrupts() == 0) return false;
    program.state().scriptAbort = 0;
    return !inputIsTerminal;
}

// What the command line asks for.
struct Arguments {
    vortelm::shell::ProgramOptions options;
    bool answerYes = true;
    bool quiet = false;
    std::string logPath;
};

// Reads the options into `into`; an exit status when the program ends here
// (help, version, the port list, a wrong option).
std::optional<int> ParseArguments(int argc, char** argv, Arguments& into) {
    bool yesOrNoGiven = false;
    for (int i = 1; i < argc; ++i) {
        const std::string_view a = argv[i];
        auto value = [&](std::string& to) {
            if (i + 1 >= argc) return false;
            to = argv[++i];
            return true;
        };
        auto wrong = [](const std::string& why) {
            std::fprintf(stderr, "vortelm-cli: %s\n%s", why.c_str(), kUsage);
            return 2;
        };
        if (a == "--help") {
            std::fputs(kHelp, stdout);
            return 0;
        }
        if (a == "--version") {
            std::printf("vortelm-cli %s\n", VORTELM_VERSION);
            return 0;
        }
        if (a == "--list-ports") return ListPortsAndEnd();
        if (a == "--quiet") {
            into.quiet = true;
        } else if (a == "--log") {
            if (!value(into.logPath) || into.logPath.empty()) return wrong("--log needs a file");
        } else if (a == "--boot-entry") {
            std::string name;
            const auto e = value(name) ? vortelm::link::BootEntryFromText(name) : std::nullopt;
            if (!e) return wrong(std::string("--boot-entry takes ") + kBootEntries);
            into.options.bootEntry = static_cast<int16_t>(*e);
        } else if (a == "--home") {
            if (!value(into.options.home) || into.options.home.empty())
                return wrong("--home needs a folder");
        } else if (a == "--port") {
            if (!value(into.options.portOverride)) return wrong("--port needs a port text");
        } else if (a == "--yes" || a == "--no") {
            if (yesOrNoGiven && into.answerYes != (a == "--yes"))
                return wrong("--yes and --no exclude each other");
            yesOrNoGiven = true;
            into.answerYes = a == "--yes";
        } else if (a.size() > 1 && a.front() == '-' && a != "-") {
            return wrong(std::string("unknown option ") + argv[i]);
        } else {
            into.options.AddScriptWord(a);
        }
    }
    into.options.ResolveHome();
    return std::nullopt;
}

// Runs the lines of standard input until its end, _quit or an interrupt;
// false when an interrupt ended the job.
bool RunInput(vortelm::cli::CliHost& host, StdinSource& input, vortelm::shell::Program& program,
              int16_t& last) {
    const bool inputIsTerminal = ::isatty(STDIN_FILENO) == 1;
    program.StartUp();
    bool interrupted = InterruptEndsJob(program, inputIsTerminal);
    host.showProgress(true);
    last = program.startupStatus();
    std::string line;
    while (!program.quitRequested() && !interrupted) {
        if (input.nextLine(line)) {
            vortelm::cli::ResumeAfterInterrupt();
            last = program.RunCommandBoxLine(line);
            interrupted = InterruptEndsJob(program, inputIsTerminal);
            continue;
        }
        if (input.eof) break;
        host.yield(host.nowUs() + 1'000'000);
        interrupted = InterruptWhileIdle(program, inputIsTerminal);
    }
    return !interrupted;
}

}  // namespace

int main(int argc, char** argv) {
    StdinSource input;  // before any file is opened: a closed descriptor 0 stays closed
    Arguments args;
    if (const auto end = ParseArguments(argc, argv, args)) return *end;

    // Programs started without waiting (the text editor) are reaped by the
    // system when they end.
    std::signal(SIGCHLD, SIG_IGN);

    std::FILE* log = OpenLogFile(args.logPath);
    if (!args.logPath.empty() && log == nullptr) return 2;
    vortelm::cli::CliHost host(args.answerYes, args.quiet);
    host.setLogFile(log);
    // Input boxes take their answer from the next line of standard input,
    // also while a script of the command line runs.
    host.addSource(input);
    host.setLineReader([&input, &host]() -> std::optional<std::string> {
        std::string answer;
        while (!input.nextLine(answer)) {
            if (input.eof) return std::nullopt;
            host.yield(host.nowUs() + 1'000'000);
        }
        return answer;
    });
    vortelm::apps::AddSimOpener(args.options.openers);
    vortelm::shell::Program program(host, args.options);
    WireInterrupts(host, program);
    int16_t last = 0;
    const bool finished = RunInput(host, input, program, last);
    host.removeSource(input);
    if (!program.quitRequested()) program.ShutDownProgram();
    host.flush();
    if (log != nullptr) std::fclose(log);
    if (!finished) return vortelm::cli::kInterruptedStatus;
    return last == 0 ? 0 : 1;
}
