#pragma once
// The command box: what a line typed by the operator does. The GUI's box and
// the CLI's standard input both come here.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "shell/Session.h"

namespace vortelm::shell {

// A line beginning with "_" goes to the history and runs as a shell command;
// one beginning with ":" sends hexadecimal byte pairs to the terminal; any
// other line is sent as text, without a line end. Gives the shell's result
// for commands, 0 for sent text, -1 when nothing could be sent.
int16_t RunCommandBoxLine(Session& s, std::string_view line);

// The one line that names a failed command box line and its code, for the
// front ends to show beside the running text: the line (cut at 60
// characters), then the code of the failed operation when there was one,
// else the line's result.
[[nodiscard]] std::string FailureLine(std::string_view line, int16_t result, int32_t operationCode);

// The history of the command box: the newest line first, 50 lines at most,
// duplicates kept.
struct CommandHistory {
    static constexpr size_t kKeep = 50;
    std::vector<std::string> lines;
    void add(std::string_view line);
};

}  // namespace vortelm::shell
