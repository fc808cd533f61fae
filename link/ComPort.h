#pragma once
// The serial channel of the program: the port object, the waits with their
// time-outs, the K-Line echo rule, the semaphore between foreground commands
// and the connection check, and the receive event for bytes nobody awaits.
// Everything above (boot sequence, monitor commands, target operations,
// terminal) reaches the line only through these operations.
//
// This header is the contract between the link and the layers above it.

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/Host.h"
#include "link/ByteChannel.h"
#include "link/Ports.h"

namespace vortelm {
struct ProgramState;
}

namespace vortelm::link {

class ComPort : public EventSource {
  public:
    explicit ComPort(ProgramState& st);
    ~ComPort() override;

    // ---- the port object
    // The port text in force: --port, else PORTNAME=, else COM<n> as /dev/ttyS<n-1>.
    [[nodiscard]] std::string portText() const;
    // Opens the port of portText() with the settings of CSettings(). On failure
    // shows the "Caution !" box followed by a diagnosis and returns false.
    bool open();
    void close();
    [[nodiscard]] bool isOpen() const;
    // Puts a channel in place of opening one (tests, and the sim: opener).
    void attach(std::unique_ptr<channel::ByteChannel> ch);
    [[nodiscard]] channel::ByteChannel* channel() const;
    // The table of openers by prefix; the program adds what it links (the
    // in-process board) before the first open.
    ChannelOpeners openers;
    // How a port text is opened; tests put their own in place. The default
    // asks the table with the time-out setting, MCTYPE and the host's clock.
    std::function<OpenResult(std::string_view portText, const channel::LineSettings&)> opener;

    // ---- the port list
    // Tries COM1 to COM30 and lists each that opens, whatever COMPORTS says.
    void SearchComPorts();
    [[nodiscard]] bool ComPortExists(int portno);
    // Lists COM<minport> to COM<maxport> without trying them.
    void AddComports(int minport, int maxport);
    // The entries of the dialog's port list ("COM1", ..., device paths, "sim:").
    std::vector<std::string> portList;

    [[nodiscard]] ProgramState& state() const;

    // ---- settings
    // The settings text of the stored settings; get_preferences takes it
    // and reopens the port (the settings dialog reads them when drawn).
    [[nodiscard]] std::string CSettings() const;
    [[nodiscard]] std::string GetComState() const;
    void get_preferences();
    // The settings text the port object holds ("9600,n,8,1"); it takes
    // effect at the next open, and at once when the port is open.
    [[nodiscard]] std::string settingsText() const;
    void setSettingsText(std::string_view text);

    // ---- primitives
    void SSSend(uint8_t b);
    void SSSendN(std::span<uint8_t> buffer);
    [[nodiscard]] int SSReceive(int32_t timeoutMs);
    [[nodiscard]] int SSReceive2(int32_t timeoutMs);
    [[nodiscard]] int SSReceiveN(std::span<uint8_t> buffer, int32_t timeoutMs);
    void SSSendT(int wert);

    // Bytes in the input buffer, as the port object reports them.
    [[nodiscard]] int inCount();
    void clearInput();
    // 1: the receive event takes arriving bytes; 0: they wait for a read.
    void setReceiveThreshold(int threshold);
    [[nodiscard]] int receiveThreshold() const;

    // ---- semaphore
    void Cmd_P();
    void Cmd_V();
    void Cmd_P2();
    void Cmd_V2();
    int16_t ComSemaphore = 0;
    int16_t TestAbort = 0;
    int16_t TimerElapsed = 0;
    int16_t Timer2Elapsed = 0;
    // The last monitor exchange failed: the late rest of its answer may
    // still arrive, and the next exchange looks past it for its first
    // acknowledge.
    bool lineMayLag = false;

    // ---- signal lines
    void setRts(bool on);
    void setDtr(bool on);
    // port 0 is RTS, 1 is DTR, anything else does nothing; level 1 is high.
    void setPort(int port, int level);

    // The debugger's return handling, run by the receive event when the
    // target stops at a breakpoint (set by the layer that owns the debugger).
    std::function<void()> onDebuggerReturn;

    // EventSource: the receive event.
    [[nodiscard]] int pollFd() const override;
    [[nodiscard]] std::optional<int64_t> dueUs() const override;
    void dispatch() override;

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace vortelm::link
