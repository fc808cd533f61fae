// Rows of the hex editor group: clipboard, fill, unread and random fill of
// the selections.

#include "image/Selections.h"
#include "shell/ImageRowArgs.h"
#include "shell/Rows.h"

namespace vortelm::shell {

namespace {

using namespace rowargs;

RowResult Copy(Session& s) {
    CopySelections(s.st);
    return {};
}

RowResult Cut(Session& s) {
    CutSelections(s.st);
    return {};
}

RowResult Paste(Session& s) {
    const int32_t target = ByVariableOrHex(s, 0);
    if (target < 0) return {-2, false};
    PasteSelections(s.st, target);
    return {};
}

// A value above FF fills words, otherwise bytes.
RowResult FillMemory(Session& s) {
    const int32_t value = ByVariableOrHex(s, 0);
    if (value < 0) return {-2, false};
    FillSelections(s.st, value, value > 0xFF ? kTrue : kFalse);
    return {};
}

RowResult ClearMemory(Session& s) {
    UnreadSelections(s.st);
    return {};
}

RowResult RandomFill(Session& s) {
    RandomFillSelections(s.st);
    return {};
}

constexpr RowBinding kRows[] = {
    {"_copy", &Copy},
    {"_cut", &Cut},
    {"_paste", &Paste},
    {"_fillmemory", &FillMemory},
    {"_clearmemory", &ClearMemory},
    {"_randomfill", &RandomFill},
};

}  // namespace

std::span<const RowBinding> HexEditorRows() {
    return kRows;
}

}  // namespace vortelm::shell
