#include "link/TcpChannel.h"

#include <fcntl.h>
#include <linux/sockios.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

namespace vortelm::link {

namespace {

int64_t MonoMs() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

}  // namespace

std::unique_ptr<TcpChannel> TcpChannel::connect(std::string_view hostPort, int32_t timeoutMs,
                                                int& err, std::string& reason) {
    std::string text(hostPort);
    auto colon = text.rfind(':');
    if (colon == std::string::npos || colon + 1 >= text.size()) {
        err = EINVAL;
        reason = "no port number in \"" + text + "\"";
        return nullptr;
    }
    std::string host = text.substr(0, colon);
    std::string port = text.substr(colon + 1);
    if (host.size() >= 2 && host.front() == '[' && host.back() == ']')
        host = host.substr(1, host.size() - 2);
    if (host.empty()) host = "localhost";

    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* list = nullptr;
    if (int g = getaddrinfo(host.c_str(), port.c_str(), &hints, &list); g != 0) {
        err = g == EAI_SYSTEM ? errno : EHOSTUNREACH;
        reason = gai_strerror(g);
        return nullptr;
    }
    const int64_t giveUp = MonoMs() + (timeoutMs > 0 ? timeoutMs : 1);
    err = ECONNREFUSED;
    reason = std::strerror(err);
    for (addrinfo* a = list; a; a = a->ai_next) {
        int fd =
            ::socket(a->ai_family, a->ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, a->ai_protocol);
        if (fd < 0) {
            err = errno;
            reason = std::strerror(err);
            continue;
        }
        int r = ::connect(fd, a->ai_addr, a->ai_addrlen);
        if (r != 0 && errno == EINPROGRESS) {
            pollfd p{fd, POLLOUT, 0};
            int left = int(std::max<int64_t>(giveUp - MonoMs(), 0));
            int n = ::poll(&p, 1, left);
            if (n == 1) {
                int soErr = 0;
                socklen_t len = sizeof soErr;
                getsockopt(fd, SOL_SOCKET, SO_ERROR, &soErr, &len);
                r = soErr == 0 ? 0 : -1;
                errno = soErr;
            } else {
                r = -1;
                errno = ETIMEDOUT;
            }
        }
        if (r != 0) {
            err = errno;
            reason = std::strerror(err);
            ::close(fd);
            continue;
        }
        int one = 1;
        setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
        freeaddrinfo(list);
        return std::make_unique<TcpChannel>(fd, "socket://" + text);
    }
    freeaddrinfo(list);
    return nullptr;
}

TcpChannel::~TcpChannel() {
    close();
}

void TcpChannel::close() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
}

void TcpChannel::fail(int err, std::string reason) {
    lastErrno_ = err;
    lastError_ = reason.empty() ? std::string(std::strerror(err)) : std::move(reason);
}

std::ptrdiff_t TcpChannel::write(std::span<const uint8_t> bytes) {
    if (fd_ < 0 || gone_) {
        if (fd_ < 0) fail(EBADF);
        return -1;
    }
    if (bytes.empty()) return 0;
    ssize_t n = ::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (n < 0) {
        if (errno == EAGAIN || errno == EINTR) return 0;
        fail(errno);
        gone_ = true;
        return -1;
    }
    return n;
}

std::ptrdiff_t TcpChannel::read(std::span<uint8_t> out) {
    if (fd_ < 0 || gone_) {
        if (fd_ < 0) fail(EBADF);
        return -1;
    }
    if (out.empty()) return 0;
    ssize_t n = ::recv(fd_, out.data(), out.size(), 0);
    if (n < 0) {
        if (errno == EAGAIN || errno == EINTR) return 0;
        fail(errno);
        gone_ = true;
        return -1;
    }
    if (n == 0) {
        fail(ECONNRESET, "the far end closed the connection");
        gone_ = true;
        return -1;
    }
    return n;
}

std::size_t TcpChannel::bytesWaitingIn() {
    int n = 0;
    if (fd_ < 0 || ioctl(fd_, FIONREAD, &n) != 0 || n < 0) return 0;
    return std::size_t(n);
}

std::size_t TcpChannel::bytesWaitingOut() {
    // Bytes not yet sent; those sent and not yet acknowledged are on the line.
    int n = 0;
    if (fd_ < 0 || gone_ || ioctl(fd_, SIOCOUTQNSD, &n) != 0 || n < 0) return 0;
    return std::size_t(n);
}

void TcpChannel::clearInput() {
    if (fd_ < 0 || gone_) return;
    uint8_t buf[4096];
    for (;;) {
        ssize_t n = ::recv(fd_, buf, sizeof buf, MSG_DONTWAIT);
        if (n <= 0) {
            if (n == 0) {
                fail(ECONNRESET, "the far end closed the connection");
                gone_ = true;
            }
            break;
        }
    }
}

}  // namespace vortelm::link
