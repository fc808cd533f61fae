#pragma once
// Preference files ("default.ini" and the ones the operator loads and saves):
// a line scanner of its own in which a section header only switches state.

#include <string>
#include <string_view>

namespace vortelm {

struct ProgramState;

// Assigns every setting its start value (tables are left alone).
void SetDefaultPreferences(ProgramState& st);

// Defaults first, then the file. A missing file logs "*ERROR: File ... not
// found" and leaves the defaults. An unknown MCTYPE shows its message box and
// ends the read with a RunTimeError, as the old design's bound failure did.
void ReadPreferences(ProgramState& st, std::string_view path);

// The whole file as WritePreferences writes it. Throws RunTimeError when
// CurrentKernel lies outside 0 to 15.
[[nodiscard]] std::string PreferencesText(const ProgramState& st);
// Replaces the file (temporary file and rename). False if it could not be
// written; a RunTimeError leaves the old file untouched.
bool WritePreferences(const ProgramState& st, std::string_view path);

}  // namespace vortelm
