#include "forms/SfrArea.h"

#include "core/Host.h"
#include "core/RunTimeError.h"
#include "link/ComPort.h"
#include "sfr/SfrSets.h"
#include "target/SfrView.h"

namespace vortelm::forms {

int SfrArea::Refresh() {
    return target::RefreshSfrView(st_, port_);
}

int SfrArea::RequestRefresh(bool hostBusy) {
    if (refreshing_ || hostBusy || (port_ != nullptr && (port_->ComSemaphore & 2) != 0)) {
        pending_ = true;
        return -1;
    }
    pending_ = false;
    refreshing_ = true;
    struct Done {
        bool& flag;
        ~Done() { flag = false; }
    } done{refreshing_};
    return Refresh();
}

void SfrArea::XSFRReg_Click(int tab) {
    CheckBound(tab, st_.sfrSetCount - 1, "SFR set");
    if (tab != st_.currentSfrSet) {
        ViewSfrSet(st_, tab);
        return;
    }
    const std::string old = st_.sfrSets[static_cast<size_t>(tab)].title;
    const auto title = st_.host->inputBox(
        "Please input a title for this register set: ", "SFR Register Set Title", old);
    SetSfrSetTitle(st_, tab, title.value_or(std::string()));
}

void SfrArea::SetSelection(const std::vector<int>& selectedLines, int currentLine) {
    SfrListBox& list = st_.sfrList;
    list.selected.assign(list.lines.size(), 0);
    for (int i : selectedLines)
        if (i >= 0 && static_cast<size_t>(i) < list.lines.size())
            list.selected[static_cast<size_t>(i)] = 1;
    list.listIndex =
        currentLine >= 0 && static_cast<size_t>(currentLine) < list.lines.size() ? currentLine : -1;
}

void SfrArea::ISfr_Delete() {
    SfrListBox& list = st_.sfrList;
    const SfrSet& set = st_.sfrSets[static_cast<size_t>(st_.currentSfrSet)];
    std::vector<int32_t> registers;
    for (size_t i = 0; i < list.lines.size() && i < 256; ++i)
        if (i < list.selected.size() && list.selected[i] != 0) registers.push_back(set.entries[i]);
    for (int32_t r : registers) RemoveSfrFromCurrentSet(st_, r);
}

bool SfrArea::ISfr_CtrlUp() {
    SfrListBox& list = st_.sfrList;
    const int i = list.listIndex;
    if (i < 1 || static_cast<size_t>(i) >= list.lines.size()) return false;
    SwapSfrLines(st_, i, i - 1);
    SetSelection({i - 1}, i - 1);
    return true;
}

bool SfrArea::ISfr_CtrlDown() {
    SfrListBox& list = st_.sfrList;
    const int i = list.listIndex;
    if (i < 0 || static_cast<size_t>(i) + 1 >= list.lines.size()) return false;
    SwapSfrLines(st_, i, i + 1);
    SetSelection({i + 1}, i + 1);
    return true;
}

void SfrArea::ISfr_Copy2Clipboard() {
    st_.host->setClipboardText(SfrListClipboardText(st_));
}

int32_t SfrArea::RegisterToChange() const {
    const int i = st_.sfrList.listIndex;
    if (i < 0 || i > 255 || static_cast<size_t>(i) >= st_.sfrList.lines.size()) return -1;
    return st_.sfrSets[static_cast<size_t>(st_.currentSfrSet)].entries[static_cast<size_t>(i)];
}

std::vector<std::string> SfrArea::TabCaptions() const {
    std::vector<std::string> captions;
    for (int i = 0; i < st_.sfrSetCount && i <= kSfrSetBound; ++i)
        captions.push_back(SfrTabCaption(st_, i));
    return captions;
}

}  // namespace vortelm::forms
