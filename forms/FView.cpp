#include "forms/FView.h"

#include "core/Helpers.h"
#include "core/ProgramState.h"
#include "shell/ViewListing.h"

namespace vortelm::forms {

void FView::setmode(int mode) {
    mode_ = mode == 1 ? 1 : 0;
    title_ = mode_ == 0 ? "View Word" : "View Long";
    refreshview();
}

// The step is 2 to the power mode + 1: words or longs, as the shell lists them.
void FView::refreshview() {
    rows_.clear();
    rows_ = shell::ListingRows(
        st_, mode_ == 0 ? shell::ListingMode::Word : shell::ListingMode::Long, {}, kViewStars);
}

std::string FView::copyText(std::span<const int> selectedRows) const {
    return RowsClipboardText(rows_, selectedRows);
}

std::string RowsClipboardText(std::span<const std::string> rows, std::span<const int> selected) {
    std::string text;
    for (int i : selected)
        if (i >= 0 && static_cast<size_t>(i) < rows.size())
            text += CrLf() + rows[static_cast<size_t>(i)];
    return text;
}

}  // namespace vortelm::forms
