#pragma once
// A serial port on termios: real UARTs, USB adapters and pseudo-terminals.
// Opened non-blocking, raw, HUPCL cleared so that closing does not drop the
// lines, exclusive where the driver allows it, low latency asked for on USB
// adapters. Calls a pseudo-terminal refuses (modem lines, break) answer
// Unsupported.

#include <memory>
#include <string>
#include <string_view>

#include "link/ByteChannel.h"

namespace vortelm::link {

class SerialChannel : public channel::ByteChannel {
  public:
    // Opens the device; on failure returns null with the errno in err.
    [[nodiscard]] static std::unique_ptr<SerialChannel> open(std::string_view path,
                                                             const channel::LineSettings& settings,
                                                             int& err, std::string& reason);
    // Takes over an open descriptor of a terminal device.
    SerialChannel(int fd, std::string path) : fd_(fd), path_(std::move(path)) {}
    ~SerialChannel() override;
    SerialChannel(const SerialChannel&) = delete;
    SerialChannel& operator=(const SerialChannel&) = delete;

    [[nodiscard]] std::string describe() const override { return path_; }
    [[nodiscard]] bool isOpen() const override { return fd_ >= 0; }
    void close() override;
    [[nodiscard]] std::ptrdiff_t write(std::span<const uint8_t> bytes) override;
    [[nodiscard]] std::ptrdiff_t read(std::span<uint8_t> out) override;
    [[nodiscard]] std::size_t bytesWaitingIn() override;
    [[nodiscard]] std::size_t bytesWaitingOut() override;
    void clearInput() override;
    channel::Control configure(const channel::LineSettings& settings) override;
    channel::Control setRts(bool on) override;
    channel::Control setDtr(bool on) override;
    channel::Control setBreak(bool on) override;
    [[nodiscard]] int pollFd() const override { return gone_ ? -1 : fd_; }
    [[nodiscard]] std::string lastError() const override { return lastError_; }
    [[nodiscard]] int lastErrno() const override { return lastErrno_; }

    // Whether the low-latency request was taken (USB adapters only).
    [[nodiscard]] bool lowLatency() const { return lowLatency_; }

  private:
    void fail(int err);
    channel::Control modemLine(int bit, bool on);

    int fd_ = -1;
    std::string path_;
    bool gone_ = false;
    bool lowLatency_ = false;
    std::string lastError_;
    int lastErrno_ = 0;
};

// Sets any rate through termios2/BOTHER (SerialRate.cpp, kept apart because
// its header clashes with <termios.h>). Returns 0 or an errno.
int SetCustomRate(int fd, uint32_t baud);

}  // namespace vortelm::link
