#pragma once
// The frame of the shell: the command table, the splitting and classifying
// of a command line, the generic checks, the status words and the exit of a
// command. The command box and the script interpreter call
// ExecuteShellCommand; the rows' behaviour is bound in Dispatch.cpp.

#include <cstdint>
#include <string>
#include <string_view>

#include "shell/Session.h"

namespace vortelm::shell {

// ---- the table
constexpr int kShellCommandBound = 256;   // rows 0 to 256
constexpr int kShellParameterBound = 15;  // parameters 0 to 15 of a row
constexpr const char* kGroupStars = "***********************************";

// Fills the group names and the rows, in the order of _help.
void BuildShellCommandTable(ShellTable& table);
// Writes a row at shellCommandCount with no parameters yet.
void AddShellCommand(ShellTable& table, int32_t group, std::string_view name, int32_t id,
                     int16_t minParameters, int16_t maxParameters, int16_t listed,
                     std::string_view description, std::string_view usage);
// Appends a parameter to the row of that name; an unknown name adds nothing.
// The range text is split at ";" into up to 16 pairs "low-high" or "value".
void AddShellParameter(ShellTable& table, std::string_view commandName,
                       std::string_view parameterName, int16_t optional, std::string_view type,
                       std::string_view rangeText, std::string_view alternativeType,
                       std::string_view description);
// Row index of the name, compared upper-cased, or -1.
[[nodiscard]] int32_t FindShellCommand(const ShellTable& table, std::string_view name);

// ---- a line
// Splits the arguments of a line into s.parsedParameters and classifies
// them; gives the count. A seventeenth argument ends with RunTimeError.
int16_t ParseShellArguments(Session& s, std::string_view line);
// Classifies one argument text (without its leading blanks) as every kind.
[[nodiscard]] ParsedParameter ClassifyArgument(const ProgramState& st, std::string_view text);
// The same but for the file test, which the frame makes only for an
// argument whose declared type asks for it (isFileName stays 0 until then).
[[nodiscard]] ParsedParameter ClassifyArgumentNoFile(const ProgramState& st, std::string_view text);

// Runs (checkOnly 0) or checks (checkOnly -1) one shell line. 0 when all
// went well; a status word below 0, or the row's id when its operation failed.
int16_t ExecuteShellCommand(Session& s, std::string_view line, int16_t checkOnly);

// The text printed for a status word of the frame (without the line end).
[[nodiscard]] std::string StatusText(int16_t status);

}  // namespace vortelm::shell
