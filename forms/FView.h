#pragma once
// The view window: the selected memory as words or longs, one row per value,
// a row of 37 stars after each selection; Ctrl+C copies the selected rows.

#include <span>
#include <string>
#include <vector>

namespace vortelm {
struct ProgramState;
}

namespace vortelm::forms {

constexpr const char* kViewStars = "*************************************";

class FView {
  public:
    explicit FView(ProgramState& st) : st_(st) {}

    // 0: "View Word", 1: "View Long"; fills the list.
    void setmode(int mode);
    // Fills the list IView again from the selections.
    void refreshview();

    [[nodiscard]] int mode() const { return mode_; }
    [[nodiscard]] const std::string& title() const { return title_; }
    [[nodiscard]] const std::vector<std::string>& rows() const { return rows_; }

    // What Ctrl+C puts on the clipboard: each selected row behind a carriage
    // return and line feed. Indexes outside the list are skipped.
    [[nodiscard]] std::string copyText(std::span<const int> selectedRows) const;

  private:
    ProgramState& st_;
    int mode_ = 0;
    std::string title_ = "View Word";
    std::vector<std::string> rows_;
};

// The clipboard text of list rows: each behind a carriage return and line
// feed (the terminal's list and the view window copy alike).
[[nodiscard]] std::string RowsClipboardText(std::span<const std::string> rows,
                                            std::span<const int> selected);

}  // namespace vortelm::forms
