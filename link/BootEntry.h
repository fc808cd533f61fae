#pragma once
// The automatic boot entry: most boards have the controller's RESET and its
// bootstrap pin wired to RTS and DTR of the adapter. Before the first byte
// of a connect the program can play the sequence that resets the board into
// its bootstrap loader, so that nobody has to press buttons on the board.
// The sequence is off by default; the connect is then as it always was.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vortelm {
struct ProgramState;
}

namespace vortelm::link {

class ComPort;

// The values of the preference key BOOTENTRY=.
enum class BootEntry : int16_t {
    None = 0,
    RtsResetDtrBoot = 1,          // reset on RTS, boot pin on DTR, active when asserted
    RtsResetDtrBootInverted = 2,  // the same lines, active when not asserted
    DtrResetRtsBoot = 3,          // reset on DTR, boot pin on RTS
    DtrResetRtsBootInverted = 4,
};
inline constexpr int16_t kBootEntryLast = 4;

// "none", "rts-reset-dtr-boot", ... as the command line names them.
[[nodiscard]] std::string_view BootEntryName(BootEntry e);
// The sequence of a name or of its number; nothing for any other text.
[[nodiscard]] std::optional<BootEntry> BootEntryFromText(std::string_view text);
// The sequence in force: the command line's for this run, else BOOTENTRY=;
// a value out of range counts as none.
[[nodiscard]] BootEntry BootEntryOf(const ProgramState& st);

// How long each step holds the lines, in milliseconds.
inline constexpr int kBootEntryResetMs = 50;   // reset held, boot pin active
inline constexpr int kBootEntrySettleMs = 50;  // after the release, before the first byte

// Plays the sequence on an open port: boot pin and reset active, reset
// released while the boot pin is held (the controller samples it there),
// then both lines inactive; each step is held while the event loop runs.
// Returns false (and does nothing) for None or a closed port.
bool PlayBootEntry(ComPort& port, BootEntry e);

}  // namespace vortelm::link
