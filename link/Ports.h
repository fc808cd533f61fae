#pragma once
// Port texts and the channels they open. A port text is a device path
// (/dev/ttyUSB0, /dev/serial/by-id/..., a pty), "COM<n>" (the old PORT=COM
// key, meaning /dev/ttyS<n-1>), "socket://host:port" (raw TCP) or "sim:"
// with the virtual board's options behind it. Which texts open what is one
// table of openers by prefix; the program fills it at the top with what it
// links (the link itself knows no board).

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "link/ByteChannel.h"

namespace vortelm {
struct ProgramState;
}

namespace vortelm::link {

// The device of COM<n>: /dev/ttyS<n-1>.
[[nodiscard]] std::string ComDevicePath(int n);
// The port text in force: --port, else PORTNAME=, else COM<PORT>.
[[nodiscard]] std::string PortTextOf(const ProgramState& st);
// The device path a port text names ("COM3" gives /dev/ttyS2); other texts
// come back as they are.
[[nodiscard]] std::string PortDevice(std::string_view portText);

// "9600,n,8,1" into line settings; false when the text is not of that form.
[[nodiscard]] bool ParseSettingsText(std::string_view text, channel::LineSettings& out);

struct OpenResult {
    std::unique_ptr<channel::ByteChannel> channel;  // null on failure
    int err = 0;                                    // errno of the failure, if any
    std::string error;                              // the system's reason
    std::string path;                               // what was opened
};

// What an opener gets: the port text, the part behind its prefix, the line
// settings, the bound of a TCP connect, and for a board in process the
// configured controller type and the host's clock.
struct OpenRequest {
    std::string_view portText;
    std::string_view rest;
    channel::LineSettings settings;
    int32_t timeoutMs = 0;
    std::string_view controller;
    channel::MicrosClock clock;
};
using ChannelOpener = std::function<OpenResult(const OpenRequest&)>;

// The openers by the beginning of the port text (compared without regard to
// case). A new table has "socket://" and a "sim:" that answers that the
// virtual board is not part of this build; a text no prefix claims is a
// device path. A program adds what it links, e.g. the in-process board.
class ChannelOpeners {
  public:
    ChannelOpeners();
    // Adds an opener for texts that begin with prefix; one already there for
    // the same prefix is replaced.
    void add(std::string_view prefix, ChannelOpener opener);
    // The opener of that text, or nothing when the text is a device path.
    [[nodiscard]] const ChannelOpener* find(std::string_view portText,
                                            std::string_view* rest = nullptr) const;
    // Opens the channel of a port text. timeoutMs bounds a TCP connect; the
    // clock and controller go to a board in process.
    [[nodiscard]] OpenResult open(std::string_view portText, const channel::LineSettings& settings,
                                  int32_t timeoutMs, std::string_view controller,
                                  channel::MicrosClock clock) const;

  private:
    std::vector<std::pair<std::string, ChannelOpener>> openers_;
};

// ---- the port list
struct PortInfo {
    std::string path;         // /dev/ttyUSB0, or "sim:"
    std::string description;  // USB VID:PID, product, serial number, as known
    std::string byId;         // its /dev/serial/by-id name, if any
};
// Serial ports of the system (libserialport's enumeration) and "sim:".
[[nodiscard]] std::vector<PortInfo> ListPorts();
// One line of the list: path, then what is known about it.
[[nodiscard]] std::string PortLine(const PortInfo& p);

// ---- diagnosis of a failed open or write
// Lines (each "\r\n*...") that say what went wrong with the device and what
// to do: the path and the system's reason; for permission, owner, group, mode
// and the dialout fix; for a busy port, the processes that hold it; for a
// missing device, the list of ports.
[[nodiscard]] std::string DiagnosePortFailure(std::string_view path, int err,
                                              std::string_view reason,
                                              const std::vector<PortInfo>& ports);
// Processes (as "pid (name)") that have the file open, from /proc.
[[nodiscard]] std::vector<std::string> ProcessesHolding(std::string_view path);

}  // namespace vortelm::link
