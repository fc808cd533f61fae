#include "image/Selections.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "core/Helpers.h"
#include "core/Host.h"
#include "core/RunTimeError.h"
#include "image/Dump.h"

namespace vortelm {

namespace {

int32_t Checked32(int64_t v, const char* what) {
    if (v < std::numeric_limits<int32_t>::min() || v > std::numeric_limits<int32_t>::max())
        throw RunTimeError(std::string(what) + " overflow");
    return static_cast<int32_t>(v);
}

}  // namespace

void ClearSelections(SelectionList& sel) {
    for (int i = 0; i < sel.count; ++i) {
        sel.start[i] = -1;
        sel.end[i] = -1;
    }
    sel.count = 0;
}

void AddSelection(SelectionList& sel, int32_t start, int32_t end) {
    CheckBound(sel.count, SelectionList::kBound, "SelectionList");
    sel.start[sel.count] = start;
    sel.end[sel.count] = end;
    ++sel.count;
    MergeSelections(sel);
}

int32_t RemoveSelection(SelectionList& sel, int32_t index) {
    if (index >= sel.count) return -2;
    CheckBound(index, SelectionList::kBound, "SelectionList");
    for (int i = index; i < sel.count - 1; ++i) {
        sel.start[i] = sel.start[i + 1];
        sel.end[i] = sel.end[i + 1];
    }
    --sel.count;
    return 0;
}

int32_t MoveSelection(SelectionList& sel, int32_t index, int32_t offset) {
    if (index >= sel.count) return -2;
    CheckBound(index, SelectionList::kBound, "SelectionList");
    const int32_t s = Checked32(int64_t(sel.start[index]) + offset, "MoveSelection");
    const int32_t e = Checked32(int64_t(sel.end[index]) + offset, "MoveSelection");
    sel.start[index] = s;
    sel.end[index] = e;
    return 0;
}

void MergeSelections(SelectionList& sel) {
    const int n = sel.count;
    // The plain exchange sort: every pair (i, j) with start[i] < start[j]
    // swaps, which leaves the list ascending by start.
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j)
            if (sel.start[i] < sel.start[j]) {
                std::swap(sel.start[i], sel.start[j]);
                std::swap(sel.end[i], sel.end[j]);
            }
    int i = 1;
    while (i < sel.count) {
        if (int64_t(sel.start[i]) > int64_t(sel.end[i - 1]) + 1) {
            ++i;
            continue;
        }
        // The later entry's end, not its start, is compared with the earlier
        // start; on sorted proper ranges the earlier start stays.
        sel.start[i - 1] = std::min(sel.start[i - 1], sel.end[i]);
        sel.end[i - 1] = std::max(sel.end[i - 1], sel.end[i]);
        for (int k = i; k < sel.count - 1; ++k) {
            sel.start[k] = sel.start[k + 1];
            sel.end[k] = sel.end[k + 1];
        }
        --sel.count;
    }
}

int16_t SelectionsContain(const SelectionList& sel, int32_t address) {
    for (int i = 0; i < sel.count; ++i)
        if (sel.start[i] <= address && sel.end[i] >= address) return kTrue;
    return kFalse;
}

int32_t LowestSelectedAddress(const SelectionList& sel) {
    if (sel.count == 0) return -1;
    int32_t v = sel.start[0];
    for (int i = 1; i < sel.count; ++i) v = std::min(v, sel.start[i]);
    return v;
}

int32_t HighestSelectedAddress(const SelectionList& sel) {
    if (sel.count == 0) return -1;
    int32_t v = sel.end[0];
    for (int i = 1; i < sel.count; ++i) v = std::max(v, sel.end[i]);
    return v;
}

void SaveSelections(SelectionList& sel) {
    sel.savedCount = sel.count;
    sel.savedStart = sel.start;
    sel.savedEnd = sel.end;
}

void RestoreSelections(SelectionList& sel) {
    sel.count = sel.savedCount;
    sel.start = sel.savedStart;
    sel.end = sel.savedEnd;
}

int64_t SelectedByteCount(const SelectionList& sel) {
    int64_t sum = 0;
    for (int i = 0; i < sel.count; ++i) sum += int64_t(sel.end[i]) - sel.start[i] + 1;
    return sum;
}

std::string SelectionsText(ProgramState& st) {
    std::string text;
    const auto& sel = st.selections;
    for (int i = 0; i < sel.count; ++i) {
        const int64_t end = sel.end[i];
        for (int64_t a = sel.start[i]; a <= end; a += 16) {
            text += HexText(static_cast<int32_t>(a), 6);
            text += ':';
            for (int k = 0; k < 16; ++k) {
                const int64_t b = a + k;
                if (b > end || IsDefined(st.dump, static_cast<int32_t>(b)) != kTrue) {
                    text += " . ";
                } else {
                    text += ' ';
                    text += HexText(ReadDumpByte(st.dump, static_cast<int32_t>(b)), 2);
                }
            }
            text += CrLf();
        }
        text += std::string(55, '*');
        text += CrLf();
    }
    return text;
}

void SelectionsToClipboard(ProgramState& st) { st.host->setClipboardText(SelectionsText(st)); }

void CopySelections(ProgramState& st) {
    MergeSelections(st.selections);
    SaveSelections(st.selections);
    SelectionsToClipboard(st);
}

void CutSelections(ProgramState& st) {
    CopySelections(st);
    const auto& sel = st.selections;
    for (int i = 0; i < sel.count; ++i)
        MarkDumpBlock(st.dump, sel.start[i], int64_t(sel.end[i]) - sel.start[i] + 1,
                      MarkChange{0, kMarkDefined});
}

void PasteSelections(ProgramState& st, int32_t target) {
    auto& sel = st.selections;
    RestoreSelections(sel);
    const int32_t delta = Checked32(int64_t(target) - sel.start[0], "PasteSelections");
    for (int i = 0; i < sel.count; ++i) {
        sel.start[i] = Checked32(int64_t(sel.start[i]) + delta, "PasteSelections");
        sel.end[i] = Checked32(int64_t(sel.end[i]) + delta, "PasteSelections");
    }
    // Upwards, byte by byte: a paste that overlaps its source to the right
    // repeats the first bytes.
    for (int i = 0; i < sel.count; ++i) {
        for (int64_t a = sel.start[i]; a <= sel.end[i]; ++a) {
            const auto to = static_cast<int32_t>(a);
            const int32_t from = Checked32(a - delta, "PasteSelections");
            WriteDumpByte(st.dump, to, ReadDumpByte(st.dump, from));
            SetDefined(st.dump, to, kTrue);
        }
    }
}

void FillSelections(ProgramState& st, int32_t value, int16_t byWords) {
    const auto& sel = st.selections;
    const auto lo = static_cast<uint8_t>(value & 0xFF);
    const auto hi = static_cast<uint8_t>((value >> 8) & 0xFF);
    for (int i = 0; i < sel.count; ++i) {
        const int64_t start = sel.start[i];
        const int64_t end = sel.end[i];
        if (byWords != kTrue) {
            FillDumpBlock(st.dump, sel.start[i], end - start + 1, lo, kMarksLoaded);
            continue;
        }
        for (int64_t a = start; a <= end; a += 2) {
            const int32_t even = static_cast<int32_t>(a / 2 * 2);
            const uint8_t pair[2] = {lo, hi};
            WriteDumpBlock(st.dump, even, pair, kMarksLoaded);
        }
    }
}

void RandomFillSelections(ProgramState& st) {
    const auto& sel = st.selections;
    for (int i = 0; i < sel.count; ++i) {
        for (int64_t a = sel.start[i]; a <= sel.end[i]; ++a) {
            const auto v = static_cast<uint8_t>(static_cast<int>(st.host->random() * 256) & 0xFF);
            const auto addr = static_cast<int32_t>(a);
            WriteDumpByte(st.dump, addr, v);
            SetDefined(st.dump, addr, kTrue);
            SetValid(st.dump, addr, kFalse);
        }
    }
}

void UnreadSelections(ProgramState& st) {
    const auto& sel = st.selections;
    for (int i = 0; i < sel.count; ++i)
        MarkDumpBlock(st.dump, sel.start[i], int64_t(sel.end[i]) - sel.start[i] + 1,
                      MarkChange{0, kMarkDefined | kMarkValid});
}

}  // namespace vortelm
