// Rows of the selection group.

#include "core/Helpers.h"
#include "core/Text.h"
#include "image/Selections.h"
#include "shell/ImageRowArgs.h"
#include "shell/Rows.h"

namespace vortelm::shell {

namespace {

using namespace rowargs;

RowResult Add(Session& s) {
    const int32_t start = ByVariableOrHex(s, 0);
    const int32_t end = ByVariableOrHex(s, 1);
    if (start < 0 || end < 0) return {-2, false};
    AddSelection(s.st.selections, start, end);
    return {};
}

RowResult Clear(Session& s) {
    ClearSelections(s.st.selections);
    return {};
}

RowResult Show(Session& s) {
    const SelectionList& sel = s.st.selections;
    for (int i = 0; i < sel.count; ++i)
        Text2Buffer(s.st, "Selection " + std::to_string(i) + ": " + HexText(sel.start[i], 6) +
                              " to " + HexText(sel.end[i], 6) + CrLf());
    return {};
}

// The list's own answer -2 (no such entry) is the row's status.
RowResult Move(Session& s) {
    const int32_t index = ByVariableOrDecimal(s, 0);
    const int32_t offset = ByVariableOrHex(s, 1);
    if (index < 0 || offset < 0) return {-2, false};
    return {static_cast<int16_t>(MoveSelection(s.st.selections, index, offset)), false};
}

RowResult Remove(Session& s) {
    const int32_t index = ByVariableOrDecimal(s, 0);
    if (index < 0) return {-2, false};
    return {static_cast<int16_t>(RemoveSelection(s.st.selections, index)), false};
}

constexpr RowBinding kRows[] = {
    {"_addselection", &Add},   {"_clearselections", &Clear},  {"_showselections", &Show},
    {"_moveselection", &Move}, {"_removeselection", &Remove},
};

}  // namespace

std::span<const RowBinding> SelectionRows() {
    return kRows;
}

}  // namespace vortelm::shell
