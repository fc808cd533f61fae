#pragma once
// The change dialog FSFRChange ("SFR - Change"): one register as a 4-digit
// value (TValue) and as a row of bit-field boxes (TBitValue 0 to 15), bit 0
// at the right, each field as wide as its bits. OK writes the word to the
// target when connected and to the dump memory always.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "core/ProgramState.h"

namespace vortelm::link {
class ComPort;
}

namespace vortelm::forms {

class FSFRChange {
  public:
    // The box geometry in the form's own units: the form is this wide, a
    // bit takes a twentieth of it.
    static constexpr int kFormWidth = 6000;
    static constexpr int kBoxTop = 1080;
    static constexpr int kBoxHeight = 350;
    static constexpr uint32_t kGrey = 0x777777;
    static constexpr uint32_t kWhite = 0xFFFFFF;

    struct BitBox {
        bool visible = false;
        bool enabled = false;
        int left = 0;
        int width = 0;
        uint32_t background = kWhite;
        std::string toolTip;
        std::string text;
    };

    FSFRChange(ProgramState& st, link::ComPort* port) : st_(st), port_(port) {}

    // Opening for a register of the table: its word is read from the target
    // when connected, then taken from the dump memory; the boxes are laid out
    // from its fields.
    void method0(int32_t index);
    // Puts value into the boxes.
    void RefreshBits();

    // TValue changed to text: up to 4 hexadecimal digits take the value,
    // anything else gives the message and the old value's text.
    void TValue_Change(std::string_view text);
    // A box changed to text: only 0 and 1, at most the field's width, or the
    // message and the boxes from value.
    void TBitValue_Change(int i, std::string_view text);
    // A box left: its field takes the box's number.
    void TBitValue_LostFocus(int i);
    // A double click on a box: its field counts up by one, round.
    void TBitValue_DblClick(int i);
    void BOk_Click();
    void BCancel_Click() { visible = false; }

    // The write this controller needs before a register at or above an
    // address (none: address -1).
    struct SpecialWrite {
        const char* controllerPrefix;
        int32_t from;
        int32_t address;
        int32_t value;
    };
    [[nodiscard]] static const SpecialWrite* SpecialWriteFor(std::string_view controllerType,
                                                             int32_t address);

    int32_t index = -1;
    int32_t value = 0;
    std::string sfrName;    // LSfrName
    std::string valueText;  // TValue
    std::array<BitBox, 16> boxes{};
    bool visible = false;

  private:
    [[nodiscard]] int fieldWidth(int i) const;
    [[nodiscard]] bool boxTextFits(int i, std::string_view text) const;
    void badBox(int i);
    void putField(int i, int64_t number);

    ProgramState& st_;
    link::ComPort* port_;
};

}  // namespace vortelm::forms
