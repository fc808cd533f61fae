// Joins the row lists of the Rows_*.cpp files. A group that lands adds its
// list to kLists below; ids with no binding are not in this build yet.

#include <array>

#include "shell/Rows.h"

namespace vortelm::shell {

namespace {

using ListFn = std::span<const RowBinding> (*)();

constexpr std::array<ListFn, 8> kLists{
    &FrameRows,
    &FileRows,
    &HexEditorRows,
    &SelectionRows,
    &TerminalRows,
    &TargetRows,
    &ListingViewRows,
    &ViewRows,
};

}  // namespace

RowFn FindRow(int32_t id) {
    for (ListFn list : kLists)
        for (const RowBinding& b : list())
            if (b.id == id) return b.run;
    return nullptr;
}

}  // namespace vortelm::shell
