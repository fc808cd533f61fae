#pragma once
// Target operations: the connection (connect, reconnect, disconnect, the
// periodic check), the transfers between dump memory and the target, and the
// checksums over the selections. The buttons, menus and shell rows all end
// here.

#include <cstdint>
#include <string>
#include <string_view>

#include "core/ProgramState.h"
#include "link/Boot.h"

namespace vortelm::link {
class ComPort;
}

namespace vortelm::target {

// What the target operations work with: the program state, the serial
// channel, the boot sequence with its images and replies, and the id of the
// connection check timer. The program owns one.
struct Target {
    Target(ProgramState& state, link::ComPort& comPort, link::HexFileReader reader)
        : st(state), port(comPort), boot(state, comPort, std::move(reader)) {}

    ProgramState& st;
    link::ComPort& port;
    link::Boot boot;
    int checkTimer = -1;  // -1: the connection check timer is off
    // True while a connection check runs: its waits yield to the event loop,
    // and a tick that comes meanwhile must not start a second check.
    bool checkRunning = false;
};

// ---- connection
[[nodiscard]] std::string StatusText(int16_t connectionState);
int openPort(Target& t);
// 0 on success, -1 on failure; prompt 1 shows the reset prompt.
int connect(Target& t, int prompt);
int reconnect(Target& t);
int disconnect(Target& t);
// One tick of the connection check (every 10 ms from the front end's loop).
void CheckConnection(Target& t);
// The 10 ms timer of the check, on the host's loop.
void EnableConnectionCheck(Target& t);
void DisableConnectionCheck(Target& t);

// The common preconditions of the target commands: 0, or -100 when not
// connected and -101 when the kernel lacks the feature (an empty feature is
// not tested); each logs its own error line.
[[nodiscard]] int CheckPreconditions(ProgramState& st, std::string_view feature);

// ---- call points of connect for the reset report and the initialisation
// Reads the reset configuration; 0 when it was read.
int ReadResetConfiguration(Target& t);
void ShowResetConfiguration(Target& t);
void InitializeTarget(Target& t);

// ---- transfers
int download(Target& t);
// -1 all selections, 0 to count - 1 one of them; anything else reads nothing.
int upload(Target& t, int32_t selectionIndex);
// The number of differing bytes, or -1, -100, -101. An empty name reports to
// the log window, otherwise to that file.
int compare(Target& t, std::string_view logFileName);

// ---- checksums over the selections in dump memory
int xorChecksum(ProgramState& st, int widthBytes);
int addcChecksum(ProgramState& st, int widthBytes, int lastCarry);

}  // namespace vortelm::target
