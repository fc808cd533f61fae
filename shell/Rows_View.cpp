// Rows of the view group that list the selections on the terminal.

#include "core/Helpers.h"
#include "core/ProgramState.h"
#include "core/Text.h"
#include "disasm/Decoder.h"
#include "disasm/Listing.h"
#include "shell/Rows.h"

namespace vortelm::shell {

namespace {

// The separator behind each selection of the shell's listings.
const std::string kSeparator(39, '*');

// _viewassembler: each selection from its start, one instruction a row,
// the sequence counters zeroed before the listing.
RowResult ViewAssembler(Session& s) {
    ProgramState& st = s.st;
    if (!st.instructions.loaded) {
        Text2Buffer(st, "*ERROR: No instruction table loaded" + CrLf());
        return {0, true};
    }
    disasm::ResetSequenceCounters(st.instructions);
    const SelectionList& sel = st.selections;
    for (int i = 0; i < sel.count; ++i) {
        const int32_t end = sel.end[static_cast<size_t>(i)];
        for (int32_t address = sel.start[static_cast<size_t>(i)]; address <= end;) {
            const disasm::ViewRow row = disasm::AssemblerViewRow(st, address);
            Text2Buffer(st, HexText(address, 6) + ": " + row.text + CrLf());
            if (row.ends) break;
            address += row.step;
        }
        Text2Buffer(st, kSeparator + CrLf());
    }
    return {};
}

constexpr RowBinding kRows[] = {
    {RowId(0xF004), &ViewAssembler},
};

}  // namespace

std::span<const RowBinding> ViewRows() {
    return kRows;
}

}  // namespace vortelm::shell
