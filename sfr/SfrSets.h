#pragma once
// The SFR display sets and the list of the main window that shows the
// current one: titles, entries into the register table and the names beside
// them (which survive a new table), the list's lines and selection, and the
// register set files (.mrs). What the main window draws of them comes
// through the Host's refreshSfrView; the values are read by the target
// layer, the lines here show the dump memory as it stands.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vortelm {

struct ProgramState;

// Sets 0 to 7: title empty, count 0; eight sets; set 0 current; the list
// empty.
void ClearSfrSets(ProgramState& st);
[[nodiscard]] bool SfrInSet(const ProgramState& st, int set, int32_t index);
// Appends the register (index and name) unless it stands in the set already;
// when the set is the current one its line is appended to the list too.
// Throws RunTimeError past the set's 256 entries or for a set past the bound.
void AddSfrToSet(ProgramState& st, int set, int32_t index);
void AddSfrToCurrentSet(ProgramState& st, int32_t index);
// Removes the register from the current set and its line from the list, then
// selects the line at the old place, or the one before it when that was the
// last line. Nothing when the register is not in the set.
void RemoveSfrFromCurrentSet(ProgramState& st, int32_t index);
// The same on any set, for the shell: the line at the register's place is
// taken from the list on show whatever set was named (a RunTimeError when
// the list has no such line), and the re-selection happens only when the
// register's index equals the number of the current set.
void RemoveSfrFromSet(ProgramState& st, int set, int32_t index);
// Exchanges lines a and b of the list and entries a and b of the current set.
void SwapSfrLines(ProgramState& st, int a, int b);
// Shows another set: the list gets a line for each of its entries; then the
// view is refreshed when the global refresh is on. Nothing for the current.
void ViewSfrSet(ProgramState& st, int set);
// After a new register table: each entry takes the index of its name, and
// entries whose name is gone are deleted (with their lines when the set is
// on show); then the view is refreshed when the global refresh is on.
void ReloadSfrSets(ProgramState& st);

// ---- lines
// A register's line in the list: the name cut to 22 characters and filled
// to 23, the address in 6 digits, a blank, the high and the low byte from
// the dump memory.
[[nodiscard]] std::string SfrListLine(ProgramState& st, int32_t index);
// The narrower line of the listing of a set: name cut to 19, filled to 20.
[[nodiscard]] std::string SfrShowLine(ProgramState& st, int32_t index);
// Rebuilds every line of the list from the current set's entry at its place
// and the dump memory (negative entries keep their line).
void RebuildSfrListLines(ProgramState& st);
// The text a copy of the list gives: each selected line with CR LF in front.
[[nodiscard]] std::string SfrListClipboardText(const ProgramState& st);
// Sets the title of a set (the tab shows its first 4 characters).
void SetSfrSetTitle(ProgramState& st, int set, std::string_view title);
[[nodiscard]] std::string SfrTabCaption(const ProgramState& st, int set);

// ---- register set files
// Adds the registers a .mrs file names (DISPLAY=<name> lines) to the current
// set; unknown names and other lines are skipped. A missing file gives
// "*ERROR: File <path> not found" and -1; 0 otherwise.
int LoadSfrRegisterSet(ProgramState& st, std::string_view path);
// The names a register set text names, in order, as the reader takes them.
[[nodiscard]] std::vector<std::string> RegisterSetNames(std::string_view text);
// Writes one DISPLAY=<name> line for each line of the list whose name the
// table knows, then one empty line. 0, or -1 when the file could not be
// written (reported with the system's reason).
int SaveSfrRegisterSet(ProgramState& st, std::string_view path);
[[nodiscard]] std::string RegisterSetText(const ProgramState& st);

}  // namespace vortelm
