#include "forms/FSelectRange.h"

#include "core/Helpers.h"
#include "core/Host.h"
#include "image/Selections.h"

namespace vortelm::forms {

void FSelectRange::initialize() {
    TStartaddress = "000000";
    TEndAddress = "000000";
    IBlocks.clear();
    for (int32_t len = 16; len <= 1048576; len *= 2)
        if (len != 32 && len != 64 && len != 128) IBlocks.push_back(len);
}

void FSelectRange::IBlocks_Click(int index) {
    if (index < 0 || index >= static_cast<int>(IBlocks.size())) return;
    const int32_t start = HexValue(TStartaddress);
    if (start < 0) return;
    TEndAddress = HexText(start + IBlocks[static_cast<size_t>(index)] - 1, 6);
}

bool FSelectRange::check(std::string& box, const std::string& text) {
    box = text;
    if (text.size() < 7 && HexValue(text) != -1) return true;
    (void)st_.host->messageBox("No 6-digit hexadecimal number!", MsgButtons::Ok,
                               MsgIcon::Exclamation);
    box = "000000";
    return false;
}

bool FSelectRange::TStartaddress_Change(const std::string& text) {
    return check(TStartaddress, text);
}

bool FSelectRange::TEndAddress_Change(const std::string& text) {
    return check(TEndAddress, text);
}

bool FSelectRange::BOk_Click() {
    const int32_t start = HexValue(TStartaddress);
    const int32_t end = HexValue(TEndAddress);
    if (start < 0 || end < 0 || TStartaddress.size() > 6 || TEndAddress.size() > 6) {
        (void)st_.host->messageBox("No 6-digit hexadecimal number!", MsgButtons::Ok,
                                   MsgIcon::Exclamation);
        return false;
    }
    AddSelection(st_.selections, start, end);
    st_.host->gotoPage(start / 16);
    st_.host->refreshMemory();
    return true;
}

}  // namespace vortelm::forms
