#pragma once
// The running text: the one door for every report of the program and for the
// characters the target prints outside the monitor protocol.

#include <cstdint>
#include <string_view>

namespace vortelm {

struct ProgramState;

// Appends to the running text (trimming to 1000 lines one line per call),
// tells the host, and writes the text to the log file when logging is on
// (one open-append-close per call; each CR LF becomes one line feed there).
void Text2Buffer(ProgramState& st, std::string_view text);

// Empties the running text (and, through the host, the terminal window).
void ClearTerminal(ProgramState& st);

// Number of carriage returns in the text.
[[nodiscard]] int32_t GetCRLF(std::string_view text);

// Writes the banner of a new log file (replacing an old one), as start-up
// does when LOGFILE is 1. The name is resolved against the program folder.
void WriteLogBanner(ProgramState& st);

}  // namespace vortelm
