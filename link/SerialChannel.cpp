#include "link/SerialChannel.h"

#include <fcntl.h>
#include <linux/serial.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace vortelm::link {

namespace {

speed_t StandardSpeed(uint32_t baud) {
    switch (baud) {
        case 50:
            return B50;
        case 75:
            return B75;
        case 110:
            return B110;
        case 134:
            return B134;
        case 150:
            return B150;
        case 200:
            return B200;
        case 300:
            return B300;
        case 600:
            return B600;
        case 1200:
            return B1200;
        case 1800:
            return B1800;
        case 2400:
            return B2400;
        case 4800:
            return B4800;
        case 9600:
            return B9600;
        case 19200:
            return B19200;
        case 38400:
            return B38400;
        case 57600:
            return B57600;
        case 115200:
            return B115200;
        case 230400:
            return B230400;
        case 460800:
            return B460800;
        case 500000:
            return B500000;
        case 576000:
            return B576000;
        case 921600:
            return B921600;
        case 1000000:
            return B1000000;
        default:
            return B0;
    }
}

bool Refused(int err) {
    return err == ENOTTY || err == EINVAL || err == ENOSYS || err == EOPNOTSUPP;
}

bool IsUsbAdapter(const std::string& path) {
    char real[PATH_MAX];
    if (!realpath(path.c_str(), real)) return false;
    std::string r = real;
    return r.find("ttyUSB") != std::string::npos || r.find("ttyACM") != std::string::npos;
}

}  // namespace

std::unique_ptr<SerialChannel> SerialChannel::open(std::string_view path,
                                                   const channel::LineSettings& settings, int& err,
                                                   std::string& reason) {
    std::string p(path);
    int fd = ::open(p.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        err = errno;
        reason = std::strerror(err);
        return nullptr;
    }
    if (!isatty(fd)) {
        err = ENOTTY;
        reason = std::strerror(ENOTTY);
        ::close(fd);
        return nullptr;
    }
    // A second program on the same port gets "busy" rather than half the bytes.
    (void)ioctl(fd, TIOCEXCL);
    auto ch = std::make_unique<SerialChannel>(fd, p);
    if (ch->configure(settings) == channel::Control::Failed) {
        err = ch->lastErrno_;
        reason = ch->lastError_;
        return nullptr;
    }
    if (IsUsbAdapter(p)) {
        serial_struct ss{};
        if (ioctl(fd, TIOCGSERIAL, &ss) == 0) {
            ss.flags |= ASYNC_LOW_LATENCY;
            ch->lowLatency_ = ioctl(fd, TIOCSSERIAL, &ss) == 0;
        }
    }
    return ch;
}

SerialChannel::~SerialChannel() {
    close();
}

void SerialChannel::close() {
    if (fd_ >= 0) {
        (void)ioctl(fd_, TIOCNXCL);
        ::close(fd_);
    }
    fd_ = -1;
}

void SerialChannel::fail(int err) {
    lastErrno_ = err;
    lastError_ = std::strerror(err);
}

channel::Control SerialChannel::configure(const channel::LineSettings& s) {
    if (fd_ < 0) {
        fail(EBADF);
        return channel::Control::Failed;
    }
    termios t{};
    if (tcgetattr(fd_, &t) != 0) {
        fail(errno);
        return channel::Control::Failed;
    }
    cfmakeraw(&t);
    t.c_cflag |= CLOCAL | CREAD;
    t.c_cflag &= ~tcflag_t(HUPCL | CRTSCTS | CSIZE | PARENB | PARODD | CSTOPB);
    t.c_cflag |= s.dataBits == 7 ? CS7 : s.dataBits == 6 ? CS6 : s.dataBits == 5 ? CS5 : CS8;
    if (s.parity == channel::Parity::Odd) t.c_cflag |= PARENB | PARODD;
    if (s.parity == channel::Parity::Even) t.c_cflag |= PARENB;
    if (s.stopBits == 2) t.c_cflag |= CSTOPB;
    t.c_iflag &= ~tcflag_t(IXON | IXOFF | IXANY | INPCK);
    // With VMIN 1 a non-blocking read without data fails with EAGAIN, so
    // that a read of 0 bytes means the line hung up.
    t.c_cc[VMIN] = 1;
    t.c_cc[VTIME] = 0;
    const speed_t sp = StandardSpeed(s.baud);
    if (sp != B0) {
        cfsetispeed(&t, sp);
        cfsetospeed(&t, sp);
    }
    if (tcsetattr(fd_, TCSANOW, &t) != 0) {
        const int e = errno;
        fail(e);
        if (!Refused(e)) return channel::Control::Failed;
        // The frame was refused: the line stays raw with 8 data bits.
        t.c_cflag &= ~tcflag_t(CSIZE | PARENB | PARODD | CSTOPB);
        t.c_cflag |= CS8;
        (void)tcsetattr(fd_, TCSANOW, &t);
        if (sp == B0) (void)SetCustomRate(fd_, s.baud);
        return channel::Control::Unsupported;
    }
    if (sp == B0) {
        if (int e = SetCustomRate(fd_, s.baud); e != 0) {
            fail(e);
            return Refused(e) ? channel::Control::Unsupported : channel::Control::Failed;
        }
    }
    // A pseudo-terminal keeps 8 data bits and no parity whatever it is told.
    termios back{};
    const tcflag_t frame = CSIZE | PARENB | PARODD | CSTOPB;
    if (tcgetattr(fd_, &back) == 0 && (back.c_cflag & frame) != (t.c_cflag & frame)) {
        lastErrno_ = EINVAL;
        lastError_ = "the device keeps its own data bits, parity and stop bits";
        return channel::Control::Unsupported;
    }
    return channel::Control::Ok;
}

std::ptrdiff_t SerialChannel::write(std::span<const uint8_t> bytes) {
    if (fd_ < 0 || gone_) {
        fail(fd_ < 0 ? EBADF : EIO);
        return -1;
    }
    if (bytes.empty()) return 0;
    ssize_t n = ::write(fd_, bytes.data(), bytes.size());
    if (n < 0) {
        if (errno == EAGAIN || errno == EINTR) return 0;
        fail(errno);
        if (errno == EIO || errno == ENXIO || errno == ENODEV) gone_ = true;
        return -1;
    }
    return n;
}

std::ptrdiff_t SerialChannel::read(std::span<uint8_t> out) {
    if (fd_ < 0 || gone_) {
        fail(fd_ < 0 ? EBADF : EIO);
        return -1;
    }
    if (out.empty()) return 0;
    ssize_t n = ::read(fd_, out.data(), out.size());
    if (n < 0) {
        if (errno == EAGAIN || errno == EINTR) return 0;
        fail(errno);
        gone_ = true;
        return -1;
    }
    if (n == 0) {
        // A non-blocking raw read gives 0 only when the line hung up.
        fail(EIO);
        gone_ = true;
        return -1;
    }
    return n;
}

std::size_t SerialChannel::bytesWaitingIn() {
    int n = 0;
    if (fd_ < 0 || ioctl(fd_, FIONREAD, &n) != 0 || n < 0) return 0;
    return std::size_t(n);
}

std::size_t SerialChannel::bytesWaitingOut() {
    int n = 0;
    if (fd_ < 0 || gone_ || ioctl(fd_, TIOCOUTQ, &n) != 0 || n < 0) return 0;
    return std::size_t(n);
}

void SerialChannel::clearInput() {
    if (fd_ >= 0) (void)tcflush(fd_, TCIFLUSH);
}

channel::Control SerialChannel::modemLine(int bit, bool on) {
    if (fd_ < 0) {
        fail(EBADF);
        return channel::Control::Failed;
    }
    if (ioctl(fd_, on ? TIOCMBIS : TIOCMBIC, &bit) != 0) {
        int e = errno;
        fail(e);
        return Refused(e) ? channel::Control::Unsupported : channel::Control::Failed;
    }
    return channel::Control::Ok;
}

channel::Control SerialChannel::setRts(bool on) {
    return modemLine(TIOCM_RTS, on);
}
channel::Control SerialChannel::setDtr(bool on) {
    return modemLine(TIOCM_DTR, on);
}

channel::Control SerialChannel::setBreak(bool on) {
    if (fd_ < 0) {
        fail(EBADF);
        return channel::Control::Failed;
    }
    if (ioctl(fd_, on ? TIOCSBRK : TIOCCBRK) != 0) {
        int e = errno;
        fail(e);
        return Refused(e) ? channel::Control::Unsupported : channel::Control::Failed;
    }
    return channel::Control::Ok;
}

}  // namespace vortelm::link
