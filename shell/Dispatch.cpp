// Joins the row lists of the Rows_*.cpp files. A group that lands adds its
// list to kLists below; table rows with no binding are not in this build yet.

#include <array>

#include "shell/Rows.h"

namespace vortelm::shell {

namespace {

using ListFn = std::span<const RowBinding> (*)();

constexpr ListFn kLists[] = {
    &FrameRows,       &FileRows,  &HexEditorRows, &SelectionRows, &TerminalRows,    &TargetRows,
    &TargetSetupRows, &FlashRows, &ScriptRows,    &SfrRows,       &ListingViewRows, &ViewRows,
};

}  // namespace

RowFn FindRow(std::string_view name) {
    for (ListFn list : kLists)
        for (const RowBinding& b : list())
            if (b.name == name) return b.run;
    return nullptr;
}

std::vector<RowBinding> AllRows() {
    std::vector<RowBinding> all;
    for (ListFn list : kLists)
        for (const RowBinding& b : list()) all.push_back(b);
    return all;
}

}  // namespace vortelm::shell
