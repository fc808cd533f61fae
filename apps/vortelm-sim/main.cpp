// vortelm-sim: one virtual board on a pseudo-terminal or on TCP.

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "apps/vortelm-sim/PtyRate.h"
#include "sim/Board.h"
#include "sim/Line.h"
#include "sim/Model.h"
#include "sim/Options.h"

namespace {

using namespace vortelm::sim;

const char* const kHelp =
    "Usage: vortelm-sim [options]\n"
    "A virtual target board for Vortelm. Without --tcp it makes a pseudo-terminal\n"
    "and prints the slave path on the first line; connect the host to that path.\n"
    "\n"
    "Options:\n"
    "  --controller NAME  controller type of the board (default ALD7RK_BB);\n"
    "                     known: ALD7RK_BB (ALD4), ZTA9Y_BB (ZT), ZT7000_BB (ZT7)\n"
    "  --tcp PORT         listen on 127.0.0.1:PORT instead (0 picks a free port);\n"
    "                     the first line is then 127.0.0.1:PORT\n"
    "  --kline            echo every host byte, as a one-wire K-Line adapter does\n"
    "  --pace 0|1         bytes take 10 bit times at the current rate (default 1)\n"
    "  --latency MS       turnaround delay before each answer (default 0)\n"
    "  --flashtime 0|real time flash operations take (default real)\n"
    "  --seed N           seed of the faults drawn by chance (default 1)\n"
    "  --fault SPEC       faults: KIND@N (n-th byte or command) or KIND%P (chance),\n"
    "                     joined by commas; KIND is drop, flip, stall, wrongack,\n"
    "                     reset, die or hangup\n"
    "  --stallms MS       length of a stall (default 3000)\n"
    "  --trace FILE       write every byte with direction and time to FILE\n"
    "  --clk HZ           clock of the board's serial dividers (default 20000000)\n"
    "  --help             show this text\n"
    "\n"
    "Lines on standard input:\n"
    "  reset              reset the board into its bootstrap loader\n"
    "  reset run          reset the board and run the application in flash\n"
    "  print TEXT         the application prints TEXT (and CR LF) on the line\n"
    "  status             print one line of board state\n"
    "The program ends when standard input ends or it is killed.\n";

int64_t NowUs() {
    using namespace std::chrono;
    return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
}

struct Args {
    SimOptions sim;
    std::string controller = "ALD7RK_BB";
    int tcpPort = -1;
};

int Usage(const std::string& why) {
    std::fprintf(stderr, "vortelm-sim: %s\n(see vortelm-sim --help)\n", why.c_str());
    return 2;
}

bool WriteAll(int fd, const uint8_t* p, std::size_t n, std::vector<uint8_t>& pending) {
    while (n > 0) {
        const ssize_t k = ::write(fd, p, n);
        if (k < 0) {
            if (errno == EINTR) continue;
            if (errno == EAGAIN) break;
            return false;
        }
        p += k;
        n -= static_cast<std::size_t>(k);
    }
    pending.insert(pending.end(), p, p + n);
    return true;
}

// Reads the options into a. Returns -1 to go on, else the exit code.
int ParseArgs(int argc, char** argv, Args& a) {
    a.sim.pace = true;
    a.sim.flashReal = true;
    for (int i = 1; i < argc; ++i) {
        const std::string o = argv[i];
        auto value = [&]() -> std::string {
            if (i + 1 >= argc) return {};
            return argv[++i];
        };
        std::string error;
        if (o == "--help" || o == "-h") {
            std::fputs(kHelp, stdout);
            return 0;
        } else if (o == "--controller") {
            a.controller = value();
        } else if (o == "--tcp") {
            const std::string v = value();
            char* end = nullptr;
            const long p = std::strtol(v.c_str(), &end, 10);
            if (v.empty() || *end || p < 0 || p > 65535) return Usage("--tcp takes a port number");
            a.tcpPort = static_cast<int>(p);
        } else if (o == "--kline") {
            a.sim.kline = true;
        } else if (o == "--pace" || o == "--latency" || o == "--flashtime" || o == "--seed" ||
                   o == "--fault" || o == "--stallms" || o == "--trace" || o == "--clk") {
            if (!ApplySimOption(o.substr(2), value(), a.sim, error)) return Usage(error);
        } else {
            return Usage("unknown option " + o);
        }
    }
    return -1;
}

// The descriptors of the host side: a pseudo-terminal (master and our own
// slave) or a TCP listener and its one client.
struct Endpoints {
    int master = -1;
    int slave = -1;
    int listener = -1;
    int client = -1;

    void closeClient() {
        if (client < 0) return;
        ::close(client);
        client = -1;
    }
    void closeAll() {
        if (client >= 0) ::close(client);
        if (listener >= 0) ::close(listener);
        if (slave >= 0) ::close(slave);
        if (master >= 0) ::close(master);
    }
};

// Makes the pseudo-terminal and prints its slave path. False on failure.
bool OpenPty(Endpoints& e) {
    e.master = posix_openpt(O_RDWR | O_NOCTTY);
    if (e.master < 0 || grantpt(e.master) != 0 || unlockpt(e.master) != 0) {
        std::perror("vortelm-sim: pseudo-terminal");
        return false;
    }
    const char* name = ptsname(e.master);
    if (!name) return false;
    const std::string path = name;
    // Keep the slave open ourselves: a host that closes and reopens the
    // port does not end the session, and we can read its settings.
    e.slave = ::open(path.c_str(), O_RDWR | O_NOCTTY);
    if (e.slave < 0) {
        std::perror("vortelm-sim: slave");
        return false;
    }
    termios t{};
    tcgetattr(e.slave, &t);
    cfmakeraw(&t);
    cfsetispeed(&t, B9600);
    cfsetospeed(&t, B9600);
    tcsetattr(e.slave, TCSANOW, &t);
    vortelm::simapp::SetExtproc(e.slave);
    int one = 1;
    ioctl(e.master, TIOCPKT, &one);
    fcntl(e.master, F_SETFL, fcntl(e.master, F_GETFL) | O_NONBLOCK);
    std::printf("%s\n", path.c_str());
    return true;
}

// Listens on 127.0.0.1:port and prints the address. False on failure.
bool OpenTcp(int port, Endpoints& e) {
    e.listener = ::socket(AF_INET, SOCK_STREAM, 0);
    int yes = 1;
    setsockopt(e.listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in sa{};
    sa.sin_family = AF_INET;
    sa.sin_port = htons(static_cast<uint16_t>(port));
    sa.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof sa;
    if (::bind(e.listener, reinterpret_cast<sockaddr*>(&sa), sizeof sa) != 0 ||
        ::listen(e.listener, 1) != 0 ||
        getsockname(e.listener, reinterpret_cast<sockaddr*>(&sa), &len) != 0) {
        std::perror("vortelm-sim: tcp");
        return false;
    }
    std::printf("127.0.0.1:%d\n", ntohs(sa.sin_port));
    return true;
}

// The board on its line and the loop that serves the host side and the
// lines on standard input.
class BoardProgram {
  public:
    BoardProgram(Board& board, Line& line, Endpoints& e) : board_(board), line_(line), e_(e) {}

    void run() {
        followRate();
        int64_t lastRateCheck = NowUs();
        while (running_) {
            deliverDue();
            if (line_.hungUp()) {
                // the line is gone: drop the connection, as a pulled cable would
                e_.closeClient();
                if (e_.master >= 0) break;
            }
            std::vector<pollfd> fds = pollSet();
            const timespec timeout = pollTimeout();
            if (::ppoll(fds.data(), fds.size(), &timeout, nullptr) < 0 && errno != EINTR) break;
            const int64_t now = NowUs();
            for (const auto& p : fds) {
                if (!p.revents) continue;
                if (p.fd == 0) {
                    if (!readStdin(now)) break;
                } else if (p.fd == e_.listener) {
                    acceptClient();
                } else if (p.fd == e_.master || p.fd == e_.client) {
                    serveHost(p, now);
                }
            }
            // Also look now and then, in case an event was missed.
            if (now - lastRateCheck > 100000) {
                followRate();
                lastRateCheck = now;
            }
        }
    }

  private:
    // The host's line settings, as the pseudo-terminal's slave has them.
    void followRate() {
        if (e_.slave < 0) return;
        const auto s = vortelm::simapp::ReadSlaveSettings(e_.slave);
        if (s.rate > 0) line_.setHostRate(s.rate, s.eightNone);
        if (!s.extproc) vortelm::simapp::SetExtproc(e_.slave);
    }

    // Delivers what is due; when late, everything due goes at once.
    void deliverDue() {
        const int out = e_.master >= 0 ? e_.master : e_.client;
        uint8_t buf[4096];
        std::size_t k = 0;
        while ((k = line_.hostRead(buf, NowUs())) > 0) {
            if (out >= 0 && !WriteAll(out, buf, k, pending_)) {
                e_.closeClient();
                break;
            }
        }
    }

    // Bytes in a stream go in batches of about a millisecond; the last one
    // (the end of an answer, the host's last byte) is met to the
    // microsecond, since the other side waits for it. A wait rounded up to
    // whole milliseconds held each answer back by up to one, a wake-up for
    // every byte costs the machine more than it gains.
    //
    // The wait for the last byte ends kSpinUs early and the rest is spun
    // out (the descriptors looked at without sleeping): on a loaded machine
    // a sleeping program wakes a tenth of a millisecond late, which the
    // other side would wait at every turnaround of the protocol.
    [[nodiscard]] timespec pollTimeout() const {
        constexpr int64_t kSpinUs = 150;
        int64_t timeoutUs = 100'000;
        if (auto next = line_.nextEvent()) {
            const int64_t now = NowUs();
            int64_t wake = *next;
            const auto last = line_.lastEvent();
            if (last && *last > *next) wake = std::max(*next, std::min(now + 1000, *last));
            timeoutUs = std::clamp<int64_t>(wake - now, 0, 100'000);
            if (last && wake >= *last) timeoutUs = std::max<int64_t>(timeoutUs - kSpinUs, 0);
        }
        return timespec{0, static_cast<long>(timeoutUs * 1000)};
    }

    [[nodiscard]] std::vector<pollfd> pollSet() const {
        const auto inOut = static_cast<short>(POLLIN | (pending_.empty() ? 0 : POLLOUT));
        std::vector<pollfd> fds;
        fds.push_back({0, POLLIN, 0});
        if (e_.master >= 0) fds.push_back({e_.master, inOut, 0});
        if (e_.listener >= 0 && e_.client < 0) fds.push_back({e_.listener, POLLIN, 0});
        if (e_.client >= 0) fds.push_back({e_.client, inOut, 0});
        return fds;
    }

    // Takes what standard input has and runs its complete lines. False (and
    // the program ends) at the end of input.
    bool readStdin(int64_t now) {
        char buf[1024];
        const ssize_t k = ::read(0, buf, sizeof buf);
        if (k <= 0) {
            running_ = false;
            return false;
        }
        stdinBuf_.append(buf, static_cast<std::size_t>(k));
        std::size_t nl = 0;
        while ((nl = stdinBuf_.find('\n')) != std::string::npos) {
            std::string cmd = stdinBuf_.substr(0, nl);
            stdinBuf_.erase(0, nl + 1);
            if (!cmd.empty() && cmd.back() == '\r') cmd.pop_back();
            runCommand(cmd, now);
            std::fflush(stdout);
        }
        return true;
    }

    // One line of standard input: reset, reset run, print TEXT, status.
    void runCommand(const std::string& cmd, int64_t now) {
        if (cmd == "reset") {
            line_.boardReset(now);
            board_.powerOn();
        } else if (cmd == "reset run") {
            line_.boardReset(now);
            board_.runApplication();
        } else if (cmd.rfind("print ", 0) == 0 || cmd == "print") {
            std::string text = cmd.size() > 6 ? cmd.substr(6) : std::string{};
            text += "\r\n";
            line_.boardSend(std::vector<uint8_t>(text.begin(), text.end()), now);
        } else if (cmd == "status") {
            std::printf("status %s host-rate=%.0f\n", board_.status().c_str(), line_.hostRate());
        } else if (!cmd.empty()) {
            std::printf("unknown command: %s\n", cmd.c_str());
        }
    }

    void acceptClient() {
        e_.client = ::accept(e_.listener, nullptr, nullptr);
        if (e_.client >= 0) fcntl(e_.client, F_SETFL, fcntl(e_.client, F_GETFL) | O_NONBLOCK);
    }

    // Writes what is pending to the host and passes what the host sent to
    // the line.
    void serveHost(const pollfd& p, int64_t now) {
        if ((p.revents & POLLOUT) && !pending_.empty()) {
            std::vector<uint8_t> rest;
            rest.swap(pending_);
            if (!WriteAll(p.fd, rest.data(), rest.size(), pending_) && p.fd == e_.client) {
                e_.closeClient();
                return;
            }
        }
        if (!(p.revents & (POLLIN | POLLHUP | POLLERR))) return;
        uint8_t buf[4097];
        const ssize_t k = ::read(p.fd, buf, sizeof buf);
        if (p.fd == e_.client && k <= 0) {
            if (k == 0 || (errno != EAGAIN && errno != EINTR)) e_.closeClient();
            return;
        }
        if (k <= 0) return;
        if (p.fd == e_.master) {
            // packet mode: a status byte first; data behind TIOCPKT_DATA
            if (buf[0] == TIOCPKT_DATA) {
                if (k > 1)
                    line_.hostWrite(
                        std::span<const uint8_t>(buf + 1, static_cast<std::size_t>(k - 1)), now);
            } else if (buf[0] & TIOCPKT_IOCTL) {
                followRate();
            }
        } else {
            line_.hostWrite(std::span<const uint8_t>(buf, static_cast<std::size_t>(k)), now);
        }
    }

    Board& board_;
    Line& line_;
    Endpoints& e_;
    std::string stdinBuf_;
    std::vector<uint8_t> pending_;  // board bytes the host side did not take yet
    bool running_ = true;
};

}  // namespace

int main(int argc, char** argv) {
    Args a;
    if (const int code = ParseArgs(argc, argv, a); code >= 0) return code;
    const BoardModel* found = FindBoardModel(a.controller);
    if (!found) return Usage("no board for controller " + a.controller);
    BoardModel model = *found;
    if (a.sim.clk) model.clk = a.sim.clk;
    std::signal(SIGPIPE, SIG_IGN);
    // A paced reply goes out when its last bit time is over, by a timed
    // wait. The system lets an ordinary program's timed waits end up to
    // 50 us late (its timer slack), which three replies per block add to
    // every block; 1 us keeps the board's bytes on the line's time.
    (void)::prctl(PR_SET_TIMERSLACK, 1000UL, 0UL, 0UL, 0UL);

    Board board(model, a.sim.flashReal ? FlashTimes::Real() : FlashTimes{}, a.sim.faults,
                a.sim.seed);
    LineOptions lo{a.sim.kline, a.sim.pace, a.sim.latencyMs * 1000.0, a.tcpPort < 0,
                   a.sim.tracePath};
    Line line(board, lo, a.sim.faults, a.sim.seed);

    Endpoints e;
    if (!(a.tcpPort < 0 ? OpenPty(e) : OpenTcp(a.tcpPort, e))) return 1;
    std::fflush(stdout);
    BoardProgram(board, line, e).run();
    e.closeAll();
    return 0;
}
