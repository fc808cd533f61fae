#pragma once
// The data of the SFR display sets: titles, entries into the register table
// and the names beside them, which survive a new table. What the main window
// draws of them comes through the Host's refreshSfrView.

#include <cstdint>

namespace vortelm {

struct ProgramState;

// Sets 0 to 7: title empty, count 0; eight sets; set 0 current.
void ClearSfrSets(ProgramState& st);
[[nodiscard]] bool SfrInSet(const ProgramState& st, int set, int32_t index);
// Appends the register (index and name) unless it stands in the set already.
// Throws RunTimeError past the set's 256 entries or for a set past the bound.
void AddSfrToSet(ProgramState& st, int set, int32_t index);
// After a new register table: each entry takes the index of its name, and
// entries whose name is gone are deleted.
void ReloadSfrSets(ProgramState& st);

}  // namespace vortelm
