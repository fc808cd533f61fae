#include "disasm/Listing.h"

#include "core/ProgramState.h"
#include "disasm/Decoder.h"
#include "image/Dump.h"

namespace vortelm::disasm {

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
