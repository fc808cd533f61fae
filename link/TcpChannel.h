#pragma once
// Raw TCP to a serial server or to the virtual board's TCP mode:
// socket://host:port. Nagle is off so that single bytes go at once; the end
// of the stream means the line is gone. The far end keeps its own line
// settings, so configure() has nothing to do; there are no modem lines or
// break on a raw socket: those calls answer Unsupported.

#include <memory>
#include <string>
#include <string_view>

#include "link/ByteChannel.h"

namespace vortelm::link {

class TcpChannel : public channel::ByteChannel {
  public:
    // Connects to "host:port" within timeoutMs; null with err set on failure.
    [[nodiscard]] static std::unique_ptr<TcpChannel> connect(std::string_view hostPort,
                                                             int32_t timeoutMs, int& err,
                                                             std::string& reason);
    TcpChannel(int fd, std::string name) : fd_(fd), name_(std::move(name)) {}
    ~TcpChannel() override;
    TcpChannel(const TcpChannel&) = delete;
    TcpChannel& operator=(const TcpChannel&) = delete;

    [[nodiscard]] std::string describe() const override { return name_; }
    [[nodiscard]] bool isOpen() const override { return fd_ >= 0; }
    void close() override;
    [[nodiscard]] std::ptrdiff_t write(std::span<const uint8_t> bytes) override;
    [[nodiscard]] std::ptrdiff_t read(std::span<uint8_t> out) override;
    [[nodiscard]] std::size_t bytesWaitingIn() override;
    [[nodiscard]] std::size_t bytesWaitingOut() override;
    void clearInput() override;
    channel::Control configure(const channel::LineSettings&) override {
        return isOpen() ? channel::Control::Ok : channel::Control::Failed;
    }
    channel::Control setRts(bool) override { return channel::Control::Unsupported; }
    channel::Control setDtr(bool) override { return channel::Control::Unsupported; }
    channel::Control setBreak(bool) override { return channel::Control::Unsupported; }
    [[nodiscard]] int pollFd() const override { return gone_ ? -1 : fd_; }
    [[nodiscard]] std::string lastError() const override { return lastError_; }
    [[nodiscard]] int lastErrno() const override { return lastErrno_; }

  private:
    void fail(int err, std::string reason = {});

    int fd_ = -1;
    std::string name_;
    bool gone_ = false;
    std::string lastError_;
    int lastErrno_ = 0;
};

}  // namespace vortelm::link
