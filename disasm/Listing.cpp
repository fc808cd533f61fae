#include "disasm/Listing.h"

#include "core/Helpers.h"
#include "core/ProgramState.h"
#include "disasm/Decoder.h"
#include "image/Dump.h"

namespace vortelm::disasm {

ViewRow AssemblerViewRow(ProgramState& st, int32_t address) {
    ViewRow row;
    if (IsDefined(st.dump, address) != kTrue || IsDefined(st.dump, address + 1) != kTrue) {
        row.text = "....";
        row.step = 2;
        return row;
    }
    const uint8_t first = ReadDumpByte(st.dump, address);
    const int16_t length = InstructionLength(st.instructions, first);
    const std::string text = DisassembleAt(st, address);
    static constexpr char kDigits[] = "0123456789ABCDEF";
    row.text.reserve(12 + text.size());
    for (int i = 0; i < length; ++i) {
        const uint8_t b = ReadDumpByte(st.dump, address + i);
        row.text += kDigits[b >> 4];
        row.text += kDigits[b & 15];
    }
    for (int i = length; i < 4; ++i) row.text += "  ";
    row.text.append("  ").append(text);
    row.step = length;
    row.ends = IsIllegalText(text) || length == 0;
    return row;
}

void ListSelectionCode(ProgramState& st, int32_t start, int32_t end,
                       const std::function<void(int32_t, const std::string&)>& row) {
    // Rounded towards zero, as an integer division by 2 does.
    int32_t address = (start / 2) * 2;
    while (address <= end) {
        if (IsDefined(st.dump, address) != kTrue) {
            address += 2;
            continue;
        }
        const int16_t length = InstructionLength(st.instructions, ReadDumpByte(st.dump, address));
        const std::string text = DisassembleAt(st, address);
        row(address, text);
        if (IsIllegalText(text) || length == 0) return;
        address += length;
    }
}

}  // namespace vortelm::disasm
