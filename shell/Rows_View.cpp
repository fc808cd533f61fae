// _viewassembler: the selections as assembler text on the terminal, through
// the listing routine of the view rows with the instruction decoder.

#include "core/Helpers.h"
#include "core/ProgramState.h"
#include "core/Text.h"
#include "disasm/Decoder.h"
#include "image/Dump.h"
#include "shell/Disassembly.h"
#include "shell/Rows.h"
#include "shell/ViewListing.h"

namespace vortelm::shell {

DecodeAt InstructionDecoder() {
    return [](ProgramState& st, int32_t address) {
        DecodedInstruction d;
        d.text = disasm::DisassembleAt(st, address);
        d.byteLength = disasm::InstructionLength(st.instructions, ReadDumpByte(st.dump, address));
        return d;
    };
}

namespace {

// The sequence counters start at 0 for each listing.
RowResult ViewAssembler(Session& s) {
    ProgramState& st = s.st;
    if (!st.instructions.loaded) {
        Text2Buffer(st, "*ERROR: No instruction table loaded" + CrLf());
        return {0, true};
    }
    disasm::ResetSequenceCounters(st.instructions);
    ShowListing(st, ListingMode::Assembler, InstructionDecoder());
    return {};
}

constexpr RowBinding kRows[] = {
    {"_viewassembler", &ViewAssembler},
};

}  // namespace

std::span<const RowBinding> ViewRows() {
    return kRows;
}

}  // namespace vortelm::shell
