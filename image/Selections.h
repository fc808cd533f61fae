#pragma once
// The selection list: up to 1001 inclusive address ranges, kept sorted and
// merged by MergeSelections. Functions that only touch the list take the
// list; those that touch the image, the clipboard or the random source take
// the program state.

#include <cstdint>
#include <string>

#include "core/ProgramState.h"

namespace vortelm {

void ClearSelections(SelectionList& sel);
// Throws RunTimeError at the 1002nd entry, leaving the list as it was.
void AddSelection(SelectionList& sel, int32_t start, int32_t end);
[[nodiscard]] int32_t RemoveSelection(SelectionList& sel, int32_t index);
[[nodiscard]] int32_t MoveSelection(SelectionList& sel, int32_t index, int32_t offset);
void MergeSelections(SelectionList& sel);
[[nodiscard]] int16_t SelectionsContain(const SelectionList& sel, int32_t address);
[[nodiscard]] int32_t LowestSelectedAddress(const SelectionList& sel);
[[nodiscard]] int32_t HighestSelectedAddress(const SelectionList& sel);
void SaveSelections(SelectionList& sel);
void RestoreSelections(SelectionList& sel);
// Sum of end - start + 1 over all entries (what the loads report).
[[nodiscard]] int64_t SelectedByteCount(const SelectionList& sel);

// The clipboard text of the selections (what SelectionsToClipboard puts there).
[[nodiscard]] std::string SelectionsText(ProgramState& st);
void SelectionsToClipboard(ProgramState& st);
void CopySelections(ProgramState& st);
void CutSelections(ProgramState& st);
void PasteSelections(ProgramState& st, int32_t target);
void FillSelections(ProgramState& st, int32_t value, int16_t byWords);
void RandomFillSelections(ProgramState& st);
void UnreadSelections(ProgramState& st);

}  // namespace vortelm
