#pragma once
// Target operations: the connection (connect, reconnect, disconnect, the
// periodic check), the transfers between dump memory and the target, and the
// checksums over the selections. The buttons, menus and shell rows all end
// here.

#include <array>
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
// The registers in which the controller records how it came out of reset,
// as the last connect read them (zero before any), kept so that the report
// can be shown again without touching the target.
struct ResetRegisters {
    int32_t SYSCON = 0, BUSCON0 = 0, RSTCFG = 0, SYSSTAT = 0, FCONCS0 = 0, TSTMOD = 0, RSTCON2 = 0,
            IDMEM = 0;
};

struct Target {
    Target(ProgramState& state, link::ComPort& comPort, link::HexFileReader reader)
        : st(state), port(comPort), readHex(reader), boot(state, comPort, std::move(reader)) {}

    ProgramState& st;
    link::ComPort& port;
    // The Intel HEX reader the boot sequence uses, for the core image of a
    // relocation.
    link::HexFileReader readHex;
    link::Boot boot;
    int checkTimer = -1;  // -1: the connection check timer is off
    ResetRegisters reset;
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

// ---- target initialisation (run at the end of every connect and by _initialize)
void ClearInitRegisters(ProgramState& st);
// Adds an entry; an address below 1 is looked up by name in the register
// table. Dropped silently when no address results, unless the name begins
// with "GENERIC".
void AddInitRegister(ProgramState& st, std::string_view name, int32_t address, int32_t value);
// Writes the list in order; 1 when a SYSCON write held back the X-peripheral bit.
int WriteInitRegisters(Target& t);
// Init registers, memory units and their mapped regions, the deferred
// SYSCON, EINIT: 0, -100 or -101.
int initialise(Target& t);

// ---- reset configuration and identification reports
// Reads the reset registers of the family into t.reset: 0, -2 or -100.
int readResetConfig(Target& t);
// Prints the report from the stored values (nothing for family 2).
void showResetConfig(Target& t);
// Decodes the identification registers: 0, -1 (a read failed), -100, -101.
int showIdRegisters(Target& t);

// ---- relocation and register helpers
int relocateMonitor(Target& t, int32_t newAddress);
// Runs a routine on the target; the registers come back in r (R8 to R15).
int callTarget(Target& t, int32_t absadr, std::array<int32_t, 8>& r);
int setPllcon(Target& t, int32_t value);
int setRstcon(Target& t, int32_t value);
// The register's word, -1 when not connected, -2 when the read failed.
[[nodiscard]] int32_t readSfrWord(Target& t, std::string_view name);
// The low `bits` bits of value complemented, higher bits dropped; 0 for bits < 1.
[[nodiscard]] int32_t bitComplement(int32_t value, int32_t bits);

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
