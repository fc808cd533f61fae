#include "forms/FSFRChange.h"

#include "core/Helpers.h"
#include "core/Host.h"
#include "core/RunTimeError.h"
#include "core/Text.h"
#include "image/Dump.h"
#include "link/ComPort.h"
#include "link/Monitor.h"

namespace vortelm::forms {

namespace {

// Controllers that need a word written before a register of the upper range
// is touched.
constexpr FSFRChange::SpecialWrite kSpecialWrites[] = {
    {"ZTA9", 0xFFF000, 0xC000AA, 0xFA},
};

std::string Word4(int32_t v) {
    return HexText(v, 4);
}

}  // namespace

const FSFRChange::SpecialWrite* FSFRChange::SpecialWriteFor(std::string_view controllerType,
                                                            int32_t address) {
    const std::string prefix =
        UpperCase(controllerType.substr(0, std::min<size_t>(4, controllerType.size())));
    for (const SpecialWrite& w : kSpecialWrites)
        if (address >= w.from && prefix == w.controllerPrefix) return &w;
    return nullptr;
}

int FSFRChange::fieldWidth(int i) const {
    const int w = st_.sfrTable[static_cast<size_t>(index)].bitWidth[static_cast<size_t>(i)];
    return w == 0 ? 1 : w;
}

void FSFRChange::method0(int32_t sfrIndex) {
    CheckBound(sfrIndex,
               std::min<int32_t>(st_.sfrCount, static_cast<int32_t>(st_.sfrTable.size())) - 1,
               "SFR table");
    index = sfrIndex;
    const SfrRecord& r = st_.sfrTable[static_cast<size_t>(index)];
    if (st_.ConnectionState == 1 && port_ != nullptr)
        (void)link::Monitor(st_, *port_).cmd_readsfr(r.name);
    value = ReadDumpWord(st_.dump, r.address);
    sfrName = r.name;
    valueText = Word4(value);

    for (BitBox& b : boxes) b = BitBox{};
    const int unit = kFormWidth / 20;
    int position = kFormWidth - 2 * unit;
    for (int i = 0; i < 16;) {
        const int w = fieldWidth(i);
        position -= w * unit;
        BitBox& b = boxes[static_cast<size_t>(i)];
        b.visible = true;
        b.left = position;
        b.width = w * unit;
        if (r.bitWidth[static_cast<size_t>(i)] == 0) {
            b.background = kGrey;
            b.enabled = false;
        } else {
            b.background = kWhite;
            b.enabled = true;
            b.toolTip = r.bitName[static_cast<size_t>(i)];
        }
        i += w;
    }
    RefreshBits();
    visible = true;
}

void FSFRChange::RefreshBits() {
    if (index < 0) return;
    const SfrRecord& r = st_.sfrTable[static_cast<size_t>(index)];
    for (int i = 0; i < 16;) {
        const int w = fieldWidth(i);
        if (r.bitWidth[static_cast<size_t>(i)] != 0) {
            std::string bits;
            for (int k = i + w - 1; k >= i; --k)
                bits += k < 31 && ((value >> k) & 1) != 0 ? '1' : '0';
            boxes[static_cast<size_t>(i)].text = bits;
        }
        i += w;
    }
}

void FSFRChange::TValue_Change(std::string_view text) {
    const int32_t v = HexValue(text);
    if (text.size() <= 4 && v >= 0) {
        value = v;
        valueText = std::string(text);
        RefreshBits();
        return;
    }
    st_.host->messageBox("No 4-digit hexadezimal number !", MsgButtons::Ok, MsgIcon::Exclamation);
    valueText = Word4(value);
}

bool FSFRChange::boxTextFits(int i, std::string_view text) const {
    if (index < 0 || i < 0 || i > 15) return false;
    const int w = st_.sfrTable[static_cast<size_t>(index)].bitWidth[static_cast<size_t>(i)];
    if (static_cast<int>(text.size()) > w) return false;
    return text.find_first_not_of("01") == std::string_view::npos;
}

void FSFRChange::badBox(int i) {
    const int w = st_.sfrTable[static_cast<size_t>(index)].bitWidth[static_cast<size_t>(i)];
    st_.host->messageBox("No binary number or more than " + std::to_string(w) + " digits !",
                         MsgButtons::Ok, MsgIcon::Exclamation);
    RefreshBits();
}

void FSFRChange::TBitValue_Change(int i, std::string_view text) {
    CheckBound(i, 15, "bit box");
    if (boxTextFits(i, text)) {
        boxes[static_cast<size_t>(i)].text = std::string(text);
        return;
    }
    badBox(i);
}

void FSFRChange::putField(int i, int64_t number) {
    const int w = st_.sfrTable[static_cast<size_t>(index)].bitWidth[static_cast<size_t>(i)];
    const int64_t mask = (int64_t{1} << w) - 1;
    int64_t v = value & (0xFFFF - (mask << i));
    v += number << i;
    value = static_cast<int32_t>(v & 0xFFFFFFFF);
    valueText = Word4(value);
    RefreshBits();
}

void FSFRChange::TBitValue_LostFocus(int i) {
    CheckBound(i, 15, "bit box");
    const std::string text = boxes[static_cast<size_t>(i)].text;
    if (!boxTextFits(i, text)) {
        badBox(i);
        return;
    }
    putField(i, BinaryTextValue(text));
}

void FSFRChange::TBitValue_DblClick(int i) {
    CheckBound(i, 15, "bit box");
    if (index < 0) return;
    const int w = st_.sfrTable[static_cast<size_t>(index)].bitWidth[static_cast<size_t>(i)];
    if (w == 0) return;
    const std::string& text = boxes[static_cast<size_t>(i)].text;
    const int64_t field =
        boxTextFits(i, text) ? BinaryTextValue(text) : ((value >> i) & ((int64_t{1} << w) - 1));
    putField(i, (field + 1) % (int64_t{1} << w));
}

void FSFRChange::BOk_Click() {
    if (index < 0) {
        visible = false;
        return;
    }
    const int32_t address = st_.sfrTable[static_cast<size_t>(index)].address;
    WriteDumpWord(st_.dump, address, static_cast<uint16_t>(value));
    if (st_.ConnectionState == 1) {
        // The controller type's first four characters come in a box on every
        // OK while connected, as they always have.
        const std::string prefix =
            UpperCase(st_.MCTYPE.substr(0, std::min<size_t>(4, st_.MCTYPE.size())));
        if (port_ != nullptr) {
            link::Monitor mon(st_, *port_);
            if (const SpecialWrite* w = SpecialWriteFor(st_.MCTYPE, address))
                (void)mon.Cmd_WriteWord(w->address, w->value);
            st_.host->messageBox(prefix, MsgButtons::Ok, MsgIcon::None);
            if (mon.Cmd_WriteWord(address, value) != 0)
                Text2Buffer(st_, CrLf() + "*ERROR: SFR " + sfrName + " not written");
        }
        if (st_.REFRESHSFR != 0) st_.host->refreshSfrView();
    }
    visible = false;
}

}  // namespace vortelm::forms
