// socket://host:port on loopback: a listening socket made here is the far end.
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "core/Host.h"
#include "core/ProgramState.h"
#include "link/ComPort.h"
#include "link/TcpChannel.h"

namespace vortelm::link {
namespace {

constexpr const char* kCaution =
    "Caution ! Communication port used by other application ! Please select a different port ";

class RecordingHost : public Host {
  public:
    std::vector<std::string> boxes;
    std::string terminal;
    MsgAnswer messageBox(std::string_view text, MsgButtons b, MsgIcon i,
                         std::string_view t) override {
        boxes.emplace_back(text);
        return Host::messageBox(text, b, i, t);
    }
    void terminalAppended(std::string_view text) override { terminal.append(text); }
};

struct Listener {
    int fd = -1;
    int port = 0;
    Listener() {
        fd = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (::bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0) return;
        socklen_t len = sizeof a;
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&a), &len);
        port = ntohs(a.sin_port);
        ::listen(fd, 1);
    }
    ~Listener() {
        if (fd >= 0) ::close(fd);
    }
    int accept() const {
        pollfd p{fd, POLLIN, 0};
        if (::poll(&p, 1, 2000) != 1) return -1;
        return ::accept(fd, nullptr, nullptr);
    }
};

std::string Take(int fd, std::size_t n) {
    std::string out;
    while (out.size() < n) {
        pollfd p{fd, POLLIN, 0};
        if (::poll(&p, 1, 1000) <= 0) break;
        char buf[256];
        ssize_t k = ::recv(fd, buf, std::min(sizeof buf, n - out.size()), 0);
        if (k <= 0) break;
        out.append(buf, std::size_t(k));
    }
    return out;
}

TEST(Tcp, ExchangeAndEndOfStream) {
    Listener server;
    ASSERT_GT(server.port, 0);
    RecordingHost host;
    ProgramState st{host};
    ComPort port{st};
    st.portOverride = "socket://127.0.0.1:" + std::to_string(server.port);
    ASSERT_TRUE(port.open());
    int peer = server.accept();
    ASSERT_GE(peer, 0);
    port.setReceiveThreshold(0);

    std::vector<uint8_t> block{'H', 'e', 'l', 'l', 'o'};
    port.SSSendN(block);
    EXPECT_EQ(Take(peer, 5), "Hello");
    (void)!::send(peer, "\x06", 1, 0);
    EXPECT_EQ(port.SSReceive(2000), 0x06);

    // Idle bytes reach the running text.
    port.setReceiveThreshold(1);
    (void)!::send(peer, "abc", 3, 0);
    for (int i = 0; i < 200 && host.terminal.size() < 3; ++i) host.yield(host.nowUs() + 10'000);
    EXPECT_EQ(host.terminal, "abc");

    // The far end goes away: the line is gone.
    port.setReceiveThreshold(0);
    ::close(peer);
    EXPECT_EQ(port.SSReceive(100), -1);
    EXPECT_EQ(port.pollFd(), -1);
    port.SSSend(1);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0], kCaution);
}

TEST(Tcp, NagleIsOff) {
    Listener server;
    int err = 0;
    std::string reason;
    auto ch = TcpChannel::connect("127.0.0.1:" + std::to_string(server.port), 2000, err, reason);
    ASSERT_NE(ch, nullptr) << reason;
    int on = 0;
    socklen_t len = sizeof on;
    ASSERT_EQ(getsockopt(ch->pollFd(), IPPROTO_TCP, 1 /* TCP_NODELAY */, &on, &len), 0);
    EXPECT_NE(on, 0);
    EXPECT_EQ(ch->setRts(true), channel::Control::Unsupported);
}

TEST(Tcp, RefusedConnectionShowsCautionAndDiagnosis) {
    int port = 0;
    {
        Listener gone;  // a port that was just free
        port = gone.port;
    }
    RecordingHost host;
    ProgramState st{host};
    ComPort com{st};
    st.portOverride = "socket://127.0.0.1:" + std::to_string(port);
    EXPECT_FALSE(com.open());
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0], kCaution);
    EXPECT_NE(host.terminal.find("*Port socket://127.0.0.1:" + std::to_string(port) +
                                 ": Connection refused"),
              std::string::npos)
        << host.terminal;
}

TEST(Tcp, TextWithoutPortNumberFails) {
    int err = 0;
    std::string reason;
    EXPECT_EQ(TcpChannel::connect("localhost", 100, err, reason), nullptr);
    EXPECT_EQ(err, EINVAL);
}

}  // namespace
}  // namespace vortelm::link
