#pragma once
// The byte channel: the one interface between the host side and whatever
// carries its bytes (a serial port, a TCP serial server, the in-process
// virtual board). It is the only code the virtual board shares with the host.
//
// A channel never blocks and never sleeps: write may take fewer bytes than
// offered, read returns what is there. Waiting is done above it, by loops
// that yield to the event loop until a deadline. A channel object is open
// from its creation until close() or its destruction.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

namespace vortelm::channel {

enum class Parity : uint8_t { None = 0, Odd = 1, Even = 2 };

struct LineSettings {
    uint32_t baud = 9600;
    Parity parity = Parity::None;
    uint8_t dataBits = 8;
    uint8_t stopBits = 1;
};

// Outcome of a control call. Unsupported: the channel cannot do it (a
// pseudo-terminal has no RTS line); it carries on without it.
enum class Control : uint8_t { Ok, Unsupported, Failed };

// Microseconds on a monotonic clock. The in-process board takes one so that
// tests can run it on a virtual clock.
using MicrosClock = std::function<int64_t()>;

class ByteChannel {
  public:
    virtual ~ByteChannel() = default;

    // What the channel is, for messages: a device path, socket://..., sim:...
    [[nodiscard]] virtual std::string describe() const = 0;
    [[nodiscard]] virtual bool isOpen() const = 0;
    virtual void close() = 0;

    // Takes up to bytes.size() bytes into the output queue; returns how many
    // it took, or -1 when the channel failed (see lastError()). A channel
    // whose line is gone (hang-up, end of stream) fails every call after.
    [[nodiscard]] virtual std::ptrdiff_t write(std::span<const uint8_t> bytes) = 0;
    // Copies up to out.size() received bytes; returns how many, or -1.
    [[nodiscard]] virtual std::ptrdiff_t read(std::span<uint8_t> out) = 0;
    // Bytes received and not yet read.
    [[nodiscard]] virtual std::size_t bytesWaitingIn() = 0;
    // Bytes written and not yet on the line.
    [[nodiscard]] virtual std::size_t bytesWaitingOut() = 0;
    virtual void clearInput() = 0;

    virtual Control configure(const LineSettings& settings) = 0;
    virtual Control setRts(bool on) = 0;
    virtual Control setDtr(bool on) = 0;
    virtual Control setBreak(bool on) = 0;

    // A descriptor that becomes readable when bytes arrive, or -1.
    [[nodiscard]] virtual int pollFd() const { return -1; }
    // When something will next happen without the host doing anything (the
    // in-process board's next byte or the end of its transmission), on the
    // channel's clock; nothing if it only reacts.
    [[nodiscard]] virtual std::optional<int64_t> nextEventUs() { return std::nullopt; }

    // The system's reason for the last failure (errno text), empty if none.
    [[nodiscard]] virtual std::string lastError() const = 0;
    // errno of the last failure, 0 if none.
    [[nodiscard]] virtual int lastErrno() const { return 0; }
};

}  // namespace vortelm::channel
