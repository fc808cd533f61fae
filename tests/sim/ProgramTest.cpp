// vortelm-sim as a program: on a pseudo-terminal and on TCP.

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "Client.h"

#ifdef VORTELM_SIM_PROGRAM

namespace {

// The program with pipes on its standard input and output.
struct Program {
    pid_t pid = -1;
    int in = -1, out = -1;
    std::string buffered;

    explicit Program(std::vector<std::string> args) {
        int toChild[2], fromChild[2];
        if (pipe(toChild) != 0 || pipe(fromChild) != 0) return;
        pid = fork();
        if (pid == 0) {
            dup2(toChild[0], 0);
            dup2(fromChild[1], 1);
            close(toChild[1]);
            close(fromChild[0]);
            std::vector<char*> argv;
            std::string prog = VORTELM_SIM_PROGRAM;
            argv.push_back(prog.data());
            for (auto& a : args) argv.push_back(a.data());
            argv.push_back(nullptr);
            execv(prog.c_str(), argv.data());
            _exit(127);
        }
        close(toChild[0]);
        close(fromChild[1]);
        in = toChild[1];
        out = fromChild[0];
    }
    ~Program() {
        if (in >= 0) close(in);
        if (pid > 0) {
            int status = 0;
            for (int i = 0; i < 50 && waitpid(pid, &status, WNOHANG) == 0; ++i) usleep(20000);
            if (waitpid(pid, &status, WNOHANG) == 0) {
                kill(pid, SIGTERM);
                waitpid(pid, &status, 0);
            }
        }
        if (out >= 0) close(out);
    }
    std::string line(int timeoutMs = 10000) {
        while (buffered.find('\n') == std::string::npos) {
            pollfd p{out, POLLIN, 0};
            if (poll(&p, 1, timeoutMs) <= 0) return {};
            char buf[512];
            const ssize_t k = read(out, buf, sizeof buf);
            if (k <= 0) return {};
            buffered.append(buf, static_cast<std::size_t>(k));
        }
        const auto nl = buffered.find('\n');
        std::string l = buffered.substr(0, nl);
        buffered.erase(0, nl + 1);
        return l;
    }
    std::string rest(int timeoutMs = 10000) {
        std::string all = buffered;
        buffered.clear();
        for (;;) {
            pollfd p{out, POLLIN, 0};
            if (poll(&p, 1, timeoutMs) <= 0) break;
            char buf[512];
            const ssize_t k = read(out, buf, sizeof buf);
            if (k <= 0) break;
            all.append(buf, static_cast<std::size_t>(k));
        }
        return all;
    }
    void command(const std::string& text) {
        const std::string l = text + "\n";
        ASSERT_EQ(write(in, l.data(), l.size()), static_cast<ssize_t>(l.size()));
    }
    int exitCode() {
        close(in);
        in = -1;
        int status = 0;
        waitpid(pid, &status, 0);
        pid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
};

int OpenPort(const std::string& path, speed_t speed) {
    const int fd = open(path.c_str(), O_RDWR | O_NOCTTY);
    if (fd < 0) return fd;
    termios t{};
    tcgetattr(fd, &t);
    cfmakeraw(&t);
    cfsetispeed(&t, speed);
    cfsetospeed(&t, speed);
    tcsetattr(fd, TCSANOW, &t);
    return fd;
}

void SetSpeed(int fd, speed_t speed) {
    termios t{};
    tcgetattr(fd, &t);
    cfsetispeed(&t, speed);
    cfsetospeed(&t, speed);
    tcsetattr(fd, TCSANOW, &t);
}

std::vector<uint8_t> Recv(int fd, std::size_t n, int timeoutMs = 3000) {
    std::vector<uint8_t> got;
    while (got.size() < n) {
        pollfd p{fd, POLLIN, 0};
        if (poll(&p, 1, timeoutMs) <= 0) break;
        uint8_t buf[4096];
        const ssize_t k = read(fd, buf, std::min(sizeof buf, n - got.size()));
        if (k <= 0) break;
        got.insert(got.end(), buf, buf + k);
    }
    return got;
}

void Send(int fd, const std::vector<uint8_t>& b) {
    ASSERT_EQ(write(fd, b.data(), b.size()), static_cast<ssize_t>(b.size()));
}

bool Boot(int fd) {
    Send(fd, {0x00});
    if (Recv(fd, 1) != std::vector<uint8_t>{0xA5}) return false;
    Send(fd, simtest::Flatten(simtest::ReadHex(simtest::DataDir() + "/KERNEL/ALD4LDR.HEX")));
    if (Recv(fd, 1) != std::vector<uint8_t>{0x01}) return false;
    Send(fd, simtest::Flatten(simtest::ReadHex(simtest::DataDir() + "/KERNEL/ALD4CORE.HEX")));
    return Recv(fd, 1) == std::vector<uint8_t>{0x03};
}

bool TestComm(int fd, int timeoutMs = 3000) {
    Send(fd, {0x93});
    return Recv(fd, 2, timeoutMs) == std::vector<uint8_t>{0xAA, 0xEA};
}

}  // namespace

TEST(Program, PrintsTheSlavePathAndAnswersWithTheIdByte) {
    Program p({"--controller", "ZTA9Y_BB"});
    const std::string path = p.line();
    ASSERT_EQ(path.rfind("/dev/", 0), 0u) << path;
    const int fd = OpenPort(path, B9600);
    ASSERT_GE(fd, 0);
    Send(fd, {0x00});
    EXPECT_EQ(Recv(fd, 1), std::vector<uint8_t>{0xC6});
    close(fd);
}

TEST(Program, BoardFollowsTheHostsRate) {
    Program p({"--pace", "0"});
    const int fd = OpenPort(p.line(), B9600);
    ASSERT_GE(fd, 0);
    ASSERT_TRUE(Boot(fd));
    // S0BG for 57600: round(20e6 / (32 * 57600) - 1) = 10
    Send(fd, {0x82});
    ASSERT_EQ(Recv(fd, 1), std::vector<uint8_t>{0xAA});
    Send(fd, {0xB4, 0xFE, 0x00, 10, 0x00});
    ASSERT_EQ(Recv(fd, 1), std::vector<uint8_t>{0xEA});
    EXPECT_FALSE(TestComm(fd, 500)) << "host still at 9600";
    SetSpeed(fd, B57600);
    EXPECT_TRUE(TestComm(fd));
    p.command("status");
    const std::string status = p.line();
    EXPECT_NE(status.find("host-rate=57600"), std::string::npos) << status;
    EXPECT_NE(status.find("mode=monitor"), std::string::npos) << status;
    close(fd);
}

TEST(Program, StandardInputControlsTheBoard) {
    Program p({"--pace", "0"});
    const std::string path = p.line();
    int fd = OpenPort(path, B9600);
    ASSERT_TRUE(Boot(fd));
    p.command("print Hello board");
    const auto text = Recv(fd, 13);
    EXPECT_EQ(std::string(text.begin(), text.end()), "Hello board\r\n");
    // a host that closes and reopens the port keeps its session
    close(fd);
    fd = OpenPort(path, B9600);
    EXPECT_TRUE(TestComm(fd));
    p.command("reset run");
    EXPECT_FALSE(TestComm(fd, 300));
    Send(fd, {0x00});
    EXPECT_TRUE(Recv(fd, 1, 300).empty());
    p.command("reset");
    p.command("status");
    EXPECT_NE(p.line().find("mode=bootstrap"), std::string::npos);
    Send(fd, {0x00});
    EXPECT_EQ(Recv(fd, 1), std::vector<uint8_t>{0xA5});
    close(fd);
    EXPECT_EQ(p.exitCode(), 0) << "ends with its standard input";
}

TEST(Program, PacedAndWithKLine) {
    Program p({"--kline", "--pace", "1"});
    const int fd = OpenPort(p.line(), B115200);
    Send(fd, {0x00});
    EXPECT_EQ(Recv(fd, 2), (std::vector<uint8_t>{0x00, 0xA5}));
    close(fd);
}

TEST(Program, ServesTcp) {
    Program p({"--tcp", "0", "--controller", "ZT7000_BB"});
    const std::string where = p.line();
    ASSERT_EQ(where.rfind("127.0.0.1:", 0), 0u) << where;
    const int port = std::stoi(where.substr(10));
    const int s = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in sa{};
    sa.sin_family = AF_INET;
    sa.sin_port = htons(static_cast<uint16_t>(port));
    sa.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(connect(s, reinterpret_cast<sockaddr*>(&sa), sizeof sa), 0);
    Send(s, {0x00});
    EXPECT_EQ(Recv(s, 1), std::vector<uint8_t>{0xC7});
    close(s);
}

TEST(Program, HelpNamesEveryOptionAndBadOptionsFail) {
    {
        Program p({"--help"});
        const std::string all = p.rest();
        for (const char* o : {"--controller", "--tcp", "--kline", "--pace", "--latency",
                              "--flashtime", "--seed", "--fault", "--stallms", "--trace", "--clk",
                              "--help", "reset run", "print TEXT", "status"})
            EXPECT_NE(all.find(o), std::string::npos) << o;
        EXPECT_EQ(p.exitCode(), 0);
    }
    Program bad({"--bogus"});
    EXPECT_EQ(bad.exitCode(), 2);
    Program unknown({"--controller", "NOSUCH"});
    EXPECT_EQ(unknown.exitCode(), 2);
}

#endif
