#include "forms/HexPage.h"

#include <utility>

#include "core/BusyScope.h"
#include "core/Helpers.h"
#include "core/Host.h"
#include "core/RunTimeError.h"
#include "image/Dump.h"
#include "image/Selections.h"

namespace vortelm::forms {

namespace {

constexpr const char* kWriteProtected = "This area is write-protected !";
constexpr const char* kNoTwoDigits = "No 2-digit hexadecimal number !";
constexpr const char* kNoSixDigits = "No 6-digit hexadecimal number!";
constexpr const char* kNoDigit = "No hexadecimal digit !";
constexpr const char* kNoValidNumber = "No valid hexadecimal number !";

void Tell(ProgramState& st, const char* text) {
    (void)st.host->messageBox(text, MsgButtons::Ok, MsgIcon::Exclamation);
}

}  // namespace

// ---- drawing

bool HexPage::markingBetween(int32_t address) const {
    if (selectingByKey != 1 && selectingByMouse != 1) return false;
    const auto& sel = st_.selections;
    const auto i = static_cast<size_t>(sel.count);
    int32_t a = sel.start[i];
    int32_t b = sel.end[i];
    if (a > b) std::swap(a, b);
    return address >= a && address <= b;
}

CellLook HexPage::cell(int index) {
    const int32_t address = cellAddress(index);
    CellLook look;
    look.background = SelectionsContain(st_.selections, address) != 0 || markingBetween(address)
                          ? st_.COLOR_BGMARKED
                          : st_.COLOR_BGNORMAL;
    if (address >= st_.KernelStartAddress && address <= st_.KernelEndAddress)
        look.foreground = st_.COLOR_FGMONITOR;
    else if (IsValid(st_.dump, address) != 0)
        look.foreground = st_.COLOR_FGVALID;
    else
        look.foreground = st_.COLOR_FGINVALID;
    look.text = IsDefined(st_.dump, address) != 0 ? HexText(ReadDumpByte(st_.dump, address), 2)
                                                  : st_.BLANK_CHAR;
    return look;
}

std::string HexPage::rowAddressText(int rowIndex) const {
    return HexText((actPage + rowIndex) * 16, 6);
}

std::string HexPage::rowText(int rowIndex) {
    std::string text;
    for (int c = 0; c < 16; ++c) {
        const int32_t address = (actPage + rowIndex) * 16 + c;
        if (IsDefined(st_.dump, address) != 0) {
            const uint8_t b = ReadDumpByte(st_.dump, address);
            text += b < 32 ? '.' : static_cast<char>(b);
        } else {
            text += ' ';
        }
    }
    return text;
}

std::string HexPage::pageText() const {
    return HexText(actPage * 16, 6);
}

void HexPage::GotoPage(int32_t page1) {
    actPage = page1;
    view_.setScrollValue(page1 & 0x00FFF);
    RefreshMemory();
}

// ---- keys

void HexPage::afterMove() {
    if (ctrlHeld != 1 && selectingByKey != 1) ClearSelections(st_.selections);
    view_.setScrollValue(actPage & 0x00FFF);
    view_.focusCell(row * 16 + column);
    RefreshMemory();
}

void HexPage::keyDown(int index, HexKey key) {
    column = static_cast<int16_t>(index % 16);
    row = static_cast<int16_t>(index / 16);
    auto& sel = st_.selections;
    bool moved = false;
    switch (key) {
        case HexKey::Shift: {
            selectingByKey = 1;
            const auto i = static_cast<size_t>(sel.count);
            sel.start[i] = cellAddress(index);
            sel.end[i] = cellAddress(index);
            break;
        }
        case HexKey::Ctrl:
            ctrlHeld = 1;
            break;
        case HexKey::Escape:
            st_.scriptAbort = 1;
            break;
        case HexKey::PageUp:
            if (actPage - 16 >= 0) actPage -= 16;
            moved = true;
            break;
        case HexKey::PageDown:
            if (actPage + 16 < 0x10001) actPage += 16;
            moved = true;
            break;
        case HexKey::Left:
            if (column > 0) {
                --column;
            } else if (row != 0) {
                column = 15;
                --row;
            }
            moved = true;
            break;
        case HexKey::Right:
            if (column < 15) {
                ++column;
            } else if (row < 15) {
                column = 0;
                ++row;
            }
            moved = true;
            break;
        case HexKey::Up:
            if (row > 0)
                --row;
            else if (actPage > 0)
                --actPage;
            moved = true;
            break;
        case HexKey::Down:
            if (row < 15)
                ++row;
            else if (actPage < 0x10000)
                ++actPage;
            moved = true;
            break;
        case HexKey::Delete:
            Unread();
            break;
        case HexKey::Edit:
        case HexKey::Other:
            break;
    }
    if (moved) afterMove();
    if (selectingByKey == 1) {
        sel.end[static_cast<size_t>(sel.count)] = getcursoraddress();
        RefreshMemory();
    }
}

void HexPage::closeWorkingPair(int32_t end) {
    auto& sel = st_.selections;
    auto i = static_cast<size_t>(sel.count);
    sel.end[i] = end;
    if (sel.start[i] > sel.end[i]) std::swap(sel.start[i], sel.end[i]);
    // The list holds entries 0 to 1000: one more mark past that ends here.
    CheckBound(sel.count + 1, SelectionList::kBound, "SelectionList");
    ++sel.count;
    i = static_cast<size_t>(sel.count);
    sel.start[i] = -1;
    sel.end[i] = -1;
}

void HexPage::keyUp(int index, HexKey key, std::string_view cellText) {
    column = static_cast<int16_t>(index % 16);
    row = static_cast<int16_t>(index / 16);
    switch (key) {
        case HexKey::Shift:
            if (selectingByKey == 1) {
                selectingByKey = 0;
                closeWorkingPair(cellAddress(index));
                RefreshMemory();
            }
            break;
        case HexKey::Ctrl:
            ctrlHeld = 0;
            break;
        case HexKey::Edit:
            editCell(index, cellText);
            break;
        default:
            break;
    }
}

void HexPage::editCell(int index, std::string_view text) {
    const int32_t address = cellAddress(index);
    DumpMemory& dump = st_.dump;
    if (IsMonitorMark(dump, address) != 0) {
        Tell(st_, kWriteProtected);
        return;
    }
    if (text == st_.BLANK_CHAR) {
        SetDefined(dump, address, kFalse);
        SetValid(dump, address, kFalse);
        return;
    }
    const int32_t value = HexValue(text);
    if (value == -1 || value >= 256) {
        Tell(st_, kNoTwoDigits);
        const bool defined = IsDefined(dump, address) != 0;
        view_.setCellText(index,
                          defined ? HexText(ReadDumpByte(dump, address), 2) : st_.BLANK_CHAR);
        if (!defined) SetValid(dump, address, kFalse);
        return;
    }
    WriteDumpByte(dump, address, static_cast<uint8_t>(value));
    SetDefined(dump, address, kTrue);
    SetValid(dump, address, kFalse);
    if (text.size() != 2) return;  // one digit: stored, the cursor stays
    column = static_cast<int16_t>(index % 16 + 1);
    row = static_cast<int16_t>(index / 16);
    if (column > 15) {
        column = 0;
        if (row < 15)
            ++row;
        else
            ++actPage;
    }
    if (ctrlHeld != 1 && selectingByKey != 1 && selectingByMouse != 1)
        ClearSelections(st_.selections);
    view_.setScrollValue(actPage & 0x00FFF);
    view_.focusCell(row * 16 + column);
    RefreshMemory();
}

// ---- mouse

void HexPage::mouseDown(int index, bool ctrl) {
    if (ctrl) ctrlHeld = 1;
    auto& sel = st_.selections;
    if (ctrlHeld != 1) ClearSelections(sel);
    sel.start[static_cast<size_t>(sel.count)] = cellAddress(index);
    column = static_cast<int16_t>(index % 16);
    row = static_cast<int16_t>(index / 16);
    selectingByMouse = 1;
}

void HexPage::mouseMove(int index) {
    if (selectingByMouse != 1) return;
    auto& sel = st_.selections;
    sel.end[static_cast<size_t>(sel.count)] = cellAddress(index);
    RefreshMemory();
}

void HexPage::mouseUp(int index) {
    view_.focusCell(index);
    if (selectingByMouse == 1) {
        selectingByMouse = 0;
        closeWorkingPair(cellAddress(index));
        RefreshMemory();
    }
    selectingByMouse = 0;
}

// ---- page box, scroll bar, segments

void HexPage::resetPageText() {
    view_.setPageText(pageText());
}

void HexPage::pageTextChanged(std::string_view text) {
    if (text.size() >= 7 || MaxPageAddress(HexValue(text)) == -1) {
        Tell(st_, kNoSixDigits);
        resetPageText();
    }
}

bool HexPage::pageEnter(std::string_view text) {
    if (MaxPageAddress(HexValue(text)) != -1) return true;
    Tell(st_, kNoDigit);
    resetPageText();
    return false;
}

void HexPage::pageFocusLost(std::string_view text) {
    const int32_t value = MaxPageAddress(HexValue(text));
    if (value == -1) {
        Tell(st_, kNoDigit);
        resetPageText();
    } else {
        actPage = value / 16;
    }
    scrollSync = 1;
    view_.setScrollValue(actPage & 0x00FFF);
    RefreshMemory();
}

void HexPage::scrollChanged(int value) {
    if (scrollSync == 1) {
        scrollSync = 0;
        return;
    }
    if (value > 4080) {
        // Comes back here with 4080.
        view_.setScrollValue(4080);
        return;
    }
    actPage = (actPage & 0xFF000) + value;
    RefreshMemory();
}

void HexPage::segmentDown() {
    if (actPage >= 4096) actPage -= 4096;
    RefreshMemory();
}

void HexPage::segmentUp() {
    if (actPage < 0xFF000) actPage += 4096;
    RefreshMemory();
}

// ---- edit operations

void HexPage::Copy(bool inTextControl) {
    {
        BusyScope busy(st_);
        if (inTextControl) {
            MergeSelections(st_.selections);
            SaveSelections(st_.selections);
        } else {
            CopySelections(st_);
        }
    }
    RefreshMemory();
}

void HexPage::Cut() {
    {
        BusyScope busy(st_);
        CutSelections(st_);
    }
    RefreshMemory();
}

void HexPage::Paste() {
    const int32_t target = getcursoraddress();
    {
        BusyScope busy(st_);
        PasteSelections(st_, target);
    }
    GotoPage(target / 16);
}

void HexPage::Fill() {
    std::string text;
    for (;;) {
        auto answer = st_.host->inputBox("Fill Value:", "Fill", "");
        if (!answer || answer->empty()) return;
        text = *answer;
        if (text.size() <= 4 && HexValue(text) != -1) break;
        Tell(st_, kNoValidNumber);
    }
    {
        BusyScope busy(st_);
        FillSelections(st_, HexValue(text), text.size() >= 3 ? kTrue : kFalse);
    }
    RefreshMemory();
}

void HexPage::RandomFill() {
    {
        BusyScope busy(st_);
        RandomFillSelections(st_);
    }
    RefreshMemory();
}

void HexPage::Unread() {
    {
        BusyScope busy(st_);
        UnreadSelections(st_);
    }
    RefreshMemory();
}

void HexPage::ClearSelection() {
    ClearSelections(st_.selections);
    RefreshMemory();
}

void HexPage::SelectWindow() {
    ClearSelections(st_.selections);
    const int32_t first = actPage * 16;
    AddSelection(st_.selections, first, first + 255);
    RefreshMemory();
}

}  // namespace vortelm::forms
