#pragma once
// Number, text, path and file helpers used by the whole program. All texts
// are handled by value; nothing here keeps state. Positions are 1-based where
// the functions speak of positions.

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace vortelm {

struct ProgramState;

// ---- numbers
// Upper-case hexadecimal, padded with "0" up to width, never cut.
[[nodiscard]] std::string HexText(int32_t value, int32_t width);
// Six hexadecimal digits at most; -1 on failure; empty text gives 0.
[[nodiscard]] int32_t HexValue(std::string_view text);
[[nodiscard]] int32_t BinaryTextValue(std::string_view text);
[[nodiscard]] std::string CrLf();
// The number test of the shell and the scripts: optional blanks, an optional
// sign, digits with an optional fraction, an optional exponent, optional
// blanks. Gives the value, or nothing when the text is not a number.
[[nodiscard]] std::optional<double> NumericValue(std::string_view text);
// The number value of a text: leading blanks skipped, then as much of a
// number as stands there; 0 when there is none ("X" is 0, "12AB" is 12).
[[nodiscard]] double LeadingNumberValue(std::string_view text);
// Rounds half to even, as the conversion of a number to an integer does;
// nothing when the result does not fit 32 bits.
[[nodiscard]] std::optional<int32_t> RoundToInt32(double value);
// A number with one decimal, rounded half away from zero (the pattern "0.0").
[[nodiscard]] std::string FormatOneDecimal(double value);

// ---- text
[[nodiscard]] int32_t LastPosition(std::string_view text, char c);
[[nodiscard]] int32_t SkipWord(std::string_view text, int16_t skipBlanks);
[[nodiscard]] std::string StripOuterQuotes(std::string_view text);
[[nodiscard]] std::string StripBlanks(std::string_view text, int16_t keepQuoted);
[[nodiscard]] std::string QuotePath(std::string_view text);
[[nodiscard]] std::string UnquotePath(std::string_view text);
void NormaliseScriptLine(std::string& line);
[[nodiscard]] std::string FirstWord(std::string_view text);
[[nodiscard]] std::string StripTrailingBackslash(std::string_view text);
[[nodiscard]] std::string FileNameOfPath(std::string_view text);
[[nodiscard]] std::string UpperCase(std::string_view text);
// UpperCase(a) == UpperCase(b), without building either.
[[nodiscard]] bool EqualUpper(std::string_view a, std::string_view b);

// The local date and time as "YYYYMMDD_hhmmss": of now, or of the given time.
[[nodiscard]] std::string DateStamp();
[[nodiscard]] std::string DateStamp(std::time_t when);

// ---- command line words (blank or tab separated; a trailing blank starts an empty word)
[[nodiscard]] int16_t StartupArgumentCount(std::string_view commandLine);
[[nodiscard]] std::string StartupArgument(std::string_view commandLine, int16_t n);

// ---- file names
// A name is absolute when it starts with "/" or holds ":" or "\\"; a relative
// name gets the folder and a separator in front (an empty folder adds nothing).
[[nodiscard]] bool IsAbsoluteName(std::string_view name);
[[nodiscard]] std::string ResolveIn(std::string_view folder, std::string_view name);
[[nodiscard]] std::string ResolveInProgramFolder(const ProgramState& st, std::string_view name);
[[nodiscard]] std::string ResolveLoadPath(const ProgramState& st, std::string_view name);
[[nodiscard]] std::string ResolveSavePath(const ProgramState& st, std::string_view name);
[[nodiscard]] std::string ResolveScriptPath(const ProgramState& st, std::string_view name);
[[nodiscard]] std::string ResolveLogPath(const ProgramState& st, std::string_view name);

// The file system name of a program name: "\" means "/", and a name that
// does not exist as written is looked up component by component without
// regard to case. A name that is not found comes back with "/" separators.
[[nodiscard]] std::string NativePath(std::string_view name);

// ---- file system (names through ResolveInProgramFolder)
// True when the file of a resolved name opens for reading and is a regular
// file (a folder is no file).
[[nodiscard]] bool CanOpenForReading(std::string_view path);
// A file exists when it can be opened for reading as a regular file.
// With askOverwrite -1, an existing file asks "File allready exists !
// Overwrite ?" and the result is true unless the answer is Yes.
[[nodiscard]] bool FileExists(ProgramState& st, std::string_view name, int16_t askOverwrite);
// Seconds since the epoch of the last change, -1 if the file does not exist.
[[nodiscard]] int64_t FileDate(const ProgramState& st, std::string_view name);
[[nodiscard]] int32_t FileSize(const ProgramState& st, std::string_view name);
void RemoveFile(const ProgramState& st, std::string_view name);

}  // namespace vortelm
