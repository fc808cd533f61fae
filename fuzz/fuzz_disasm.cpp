// The decoder over arbitrary byte streams with the delivered instruction
// table: every first byte, every field, the sequence counters.
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "core/ProgramState.h"
#include "disasm/CommandTable.h"
#include "disasm/Decoder.h"

namespace {

vortelm::ProgramState& State() {
    static vortelm::ProgramState st;
    static bool ready = false;
    if (!ready) {
        ready = true;
        // The table delivered beside the program, found from this source's place.
        const auto table = std::filesystem::path(__FILE__).parent_path().parent_path() / "data" /
                           "CMDDEF" / "command.cmd";
        std::ifstream in(table, std::ios::binary);
        std::stringstream text;
        text << in.rdbuf();
        if (!vortelm::disasm::ParseCommandTable(text.str(), st.instructions).ok()) __builtin_trap();
        const struct {
            const char* name;
            int32_t address;
        } regs[] = {{"DPP0", 0xFE00},
                    {"SP", 0xFE12},
                    {"PSW", 0xFF10},
                    {"SYSCON", 0xFF12},
                    {"XADR", 0xF100}};
        for (const auto& r : regs) {
            vortelm::SfrRecord& rec = st.sfrTable[static_cast<size_t>(st.sfrCount++)];
            rec.name = r.name;
            rec.address = r.address;
            rec.shortAddress = static_cast<int16_t>((r.address / 2) & 255);
            rec.extended = r.address < 0xFE00 ? vortelm::kTrue : vortelm::kFalse;
            rec.bitName[1] = "C";
            rec.bitWidth[1] = 1;
        }
    }
    return st;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    vortelm::ProgramState& st = State();
    vortelm::disasm::ResetSequenceCounters(st.instructions);
    const auto bytes = [data, size](int32_t a) -> uint8_t {
        return a >= 0 && static_cast<size_t>(a) < size ? data[a] : 0;
    };
    int32_t address = 0;
    while (static_cast<size_t>(address) < size) {
        const std::string text = vortelm::disasm::Disassemble(st, st.instructions, address, bytes);
        if (text.empty() || text.size() > 80) __builtin_trap();
        if (st.instructions.extrCount < 0 || st.instructions.extrCount > 5) __builtin_trap();
        const int16_t length = vortelm::disasm::InstructionLength(st.instructions, data[address]);
        address += vortelm::disasm::IsIllegalText(text) || length <= 0 ? 2 : length;
    }
    return 0;
}
