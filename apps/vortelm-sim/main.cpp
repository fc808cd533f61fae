// vortelm-sim: one virtual board on a pseudo-terminal or on TCP.

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/ioctl.h>
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

}  // namespace

int main(int argc, char** argv) {
    Args a;
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
        } else if (o == "--pace" || o == "--latency" || o == "--flashtime" || o == "--seed" || o == "--fault" ||
                   o == "--stallms" || o == "--trace" || o == "--clk") {
            if (!ApplySimOption(o.substr(2), value(), a.sim, error)) return Usage(error);
        } else {
            return Usage("unknown option " + o);
        }
    }
    const BoardModel* found = FindBoardModel(a.controller);
    if (!found) return Usage("no board for controller " + a.controller);
    BoardModel model = *found;
    if (a.sim.clk) model.clk = a.sim.clk;
    std::signal(SIGPIPE, SIG_IGN);

    Board board(model, a.sim.flashReal ? FlashTimes::Real() : FlashTimes{}, a.sim.faults, a.sim.seed);
    LineOptions lo{a.sim.kline, a.sim.pace, a.sim.latencyMs * 1000.0, a.tcpPort < 0, a.sim.tracePath};
    Line line(board, lo, a.sim.faults, a.sim.seed);

    int master = -1, slave = -1, listener = -1, client = -1;
    if (a.tcpPort < 0) {
        master = posix_openpt(O_RDWR | O_NOCTTY);
        if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) {
            std::perror("vortelm-sim: pseudo-terminal");
            return 1;
        }
        const char* name = ptsname(master);
        if (!name) return 1;
        const std::string path = name;
        // Keep the slave open ourselves: a host that closes and reopens the
        // port does not end the session, and we can read its settings.
        slave = ::open(path.c_str(), O_RDWR | O_NOCTTY);
        if (slave < 0) {
            std::perror("vortelm-sim: slave");
            return 1;
        }
        termios t{};
        tcgetattr(slave, &t);
        cfmakeraw(&t);
        cfsetispeed(&t, B9600);
        cfsetospeed(&t, B9600);
        tcsetattr(slave, TCSANOW, &t);
        vortelm::simapp::SetExtproc(slave);
        int one = 1;
        ioctl(master, TIOCPKT, &one);
        fcntl(master, F_SETFL, fcntl(master, F_GETFL) | O_NONBLOCK);
        std::printf("%s\n", path.c_str());
    } else {
        listener = ::socket(AF_INET, SOCK_STREAM, 0);
        int yes = 1;
        setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        sockaddr_in sa{};
        sa.sin_family = AF_INET;
        sa.sin_port = htons(static_cast<uint16_t>(a.tcpPort));
        sa.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t len = sizeof sa;
        if (::bind(listener, reinterpret_cast<sockaddr*>(&sa), sizeof sa) != 0 || ::listen(listener, 1) != 0 ||
            getsockname(listener, reinterpret_cast<sockaddr*>(&sa), &len) != 0) {
            std::perror("vortelm-sim: tcp");
            return 1;
        }
        std::printf("127.0.0.1:%d\n", ntohs(sa.sin_port));
    }
    std::fflush(stdout);

    auto followRate = [&] {
        if (slave < 0) return;
        const auto s = vortelm::simapp::ReadSlaveSettings(slave);
        if (s.rate > 0) line.setHostRate(s.rate, s.eightNone);
        if (!s.extproc) vortelm::simapp::SetExtproc(slave);
    };
    followRate();

    std::string stdinBuf;
    std::vector<uint8_t> pending;  // board bytes the host side did not take yet
    int64_t lastRateCheck = NowUs();
    bool running = true;
    while (running) {
        const int out = master >= 0 ? master : client;
        // Deliver what is due; when late, everything due goes at once.
        {
            uint8_t buf[4096];
            std::size_t k = 0;
            while ((k = line.hostRead(buf, NowUs())) > 0) {
                if (out >= 0 && !WriteAll(out, buf, k, pending)) {
                    if (client >= 0) {
                        ::close(client);
                        client = -1;
                    }
                    break;
                }
            }
        }
        if (line.hungUp()) {
            // the line is gone: drop the connection, as a pulled cable would
            if (client >= 0) {
                ::close(client);
                client = -1;
            }
            if (master >= 0) break;
        }
        // Bytes in a stream go in batches of about a millisecond; the last
        // one (the end of an answer, the host's last byte) is met to the
        // microsecond, since the other side waits for it. A wait rounded up
        // to whole milliseconds held each answer back by up to one, a wake-up
        // for every byte costs the machine more than it gains.
        int64_t timeoutUs = 100'000;
        if (auto next = line.nextEvent()) {
            const int64_t now = NowUs();
            int64_t wake = *next;
            if (auto last = line.lastEvent(); last && *last > *next)
                wake = std::max(*next, std::min(now + 1000, *last));
            timeoutUs = std::clamp<int64_t>(wake - now, 0, 100'000);
        }
        const timespec timeout{0, static_cast<long>(timeoutUs * 1000)};
        std::vector<pollfd> fds;
        fds.push_back({0, POLLIN, 0});
        if (master >= 0) fds.push_back({master, static_cast<short>(POLLIN | (pending.empty() ? 0 : POLLOUT)), 0});
        if (listener >= 0 && client < 0) fds.push_back({listener, POLLIN, 0});
        if (client >= 0) fds.push_back({client, static_cast<short>(POLLIN | (pending.empty() ? 0 : POLLOUT)), 0});
        if (::ppoll(fds.data(), fds.size(), &timeout, nullptr) < 0 && errno != EINTR) break;
        const int64_t now = NowUs();
        for (const auto& p : fds) {
            if (!p.revents) continue;
            if (p.fd == 0) {
                char buf[1024];
                const ssize_t k = ::read(0, buf, sizeof buf);
                if (k <= 0) {
                    running = false;
                    break;
                }
                stdinBuf.append(buf, static_cast<std::size_t>(k));
                std::size_t nl = 0;
                while ((nl = stdinBuf.find('\n')) != std::string::npos) {
                    std::string cmd = stdinBuf.substr(0, nl);
                    stdinBuf.erase(0, nl + 1);
                    if (!cmd.empty() && cmd.back() == '\r') cmd.pop_back();
                    if (cmd == "reset") {
                        line.boardReset(now);
                        board.powerOn();
                    } else if (cmd == "reset run") {
                        line.boardReset(now);
                        board.runApplication();
                    } else if (cmd.rfind("print ", 0) == 0 || cmd == "print") {
                        std::string text = cmd.size() > 6 ? cmd.substr(6) : std::string{};
                        text += "\r\n";
                        line.boardSend(std::vector<uint8_t>(text.begin(), text.end()), now);
                    } else if (cmd == "status") {
                        std::printf("status %s host-rate=%.0f\n", board.status().c_str(), line.hostRate());
                    } else if (!cmd.empty()) {
                        std::printf("unknown command: %s\n", cmd.c_str());
                    }
                    std::fflush(stdout);
                }
            } else if (p.fd == listener) {
                client = ::accept(listener, nullptr, nullptr);
                if (client >= 0) fcntl(client, F_SETFL, fcntl(client, F_GETFL) | O_NONBLOCK);
            } else if (p.fd == master || p.fd == client) {
                if ((p.revents & POLLOUT) && !pending.empty()) {
                    std::vector<uint8_t> rest;
                    rest.swap(pending);
                    if (!WriteAll(p.fd, rest.data(), rest.size(), pending) && p.fd == client) {
                        ::close(client);
                        client = -1;
                        continue;
                    }
                }
                if (!(p.revents & (POLLIN | POLLHUP | POLLERR))) continue;
                uint8_t buf[4097];
                const ssize_t k = ::read(p.fd, buf, sizeof buf);
                if (p.fd == client && k <= 0) {
                    if (k == 0 || (errno != EAGAIN && errno != EINTR)) {
                        ::close(client);
                        client = -1;
                    }
                    continue;
                }
                if (k <= 0) continue;
                if (p.fd == master) {
                    // packet mode: a status byte first; data behind TIOCPKT_DATA
                    if (buf[0] == TIOCPKT_DATA) {
                        if (k > 1) line.hostWrite(std::span<const uint8_t>(buf + 1, static_cast<std::size_t>(k - 1)), now);
                    } else if (buf[0] & TIOCPKT_IOCTL) {
                        followRate();
                    }
                } else {
                    line.hostWrite(std::span<const uint8_t>(buf, static_cast<std::size_t>(k)), now);
                }
            }
        }
        if (now - lastRateCheck > 100000) {  // also look now and then, in case an event was missed
            followRate();
            lastRateCheck = now;
        }
    }
    if (client >= 0) ::close(client);
    if (listener >= 0) ::close(listener);
    if (slave >= 0) ::close(slave);
    if (master >= 0) ::close(master);
    return 0;
}
