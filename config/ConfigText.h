#pragma once
// Small text and file helpers shared by the readers and writers of this
// folder: lines of a data file, the decimal scan, and the atomic write.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vortelm {

struct ProgramState;

namespace config {

// The lines of a file (a name of the program, resolved against the program
// folder and mapped to the file system), each without its line end ("\n",
// "\r\n" or a lone "\r"). Nothing when the file cannot be opened.
[[nodiscard]] std::optional<std::vector<std::string>> ReadLines(const ProgramState& st,
                                                                std::string_view name);

// Replaces a file by the text: written to a temporary file beside it and
// renamed over the old one, so that a crash leaves either file whole; a
// file that already holds the text is not written again. False if the file
// could not be written.
bool WriteFileAtomically(const ProgramState& st, std::string_view name, std::string_view text);

// A plain scan of a leading decimal number (blanks before it, an optional
// sign, digits); the first character that can't be part of it ends the scan;
// no number gives 0. Saturates instead of overflowing.
[[nodiscard]] int32_t Val(std::string_view text);

// Text between the first "(" and the ")" behind it, if the text has one.
[[nodiscard]] std::optional<std::string> ParenthesisedText(std::string_view text);

// Removes every space.
[[nodiscard]] std::string RemoveSpaces(std::string_view text);

// "\r\n*ERROR: File <name> not found" to the running text.
void ReportMissingFile(ProgramState& st, std::string_view name);

}  // namespace config
}  // namespace vortelm
