// The instruction table reader over arbitrary table files, and the decoder
// with whatever table the reader accepts: lengths up to 8 bytes, fields of
// any widths, every first byte.
#include <cstdint>
#include <string>

#include "core/ProgramState.h"
#include "disasm/CommandTable.h"
#include "disasm/Decoder.h"
#include "fuzz/FuzzHome.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static vortelm::ProgramState st;
    st.programFolder = vortelm::fuzz::Home();
    st.terminalBuffer.clear();
    st.terminalLines = 0;
    (void)vortelm::fuzz::WriteInput("command.cmd", data, size);
    const int r = vortelm::disasm::ReadCommandTableFile(st, "command.cmd");
    if (r != 0 && st.instructions.loaded) __builtin_trap();
    if (r != 0 && st.terminalBuffer.rfind("*ERROR: ", 0) != 0) __builtin_trap();
    // Every first byte followed by a fixed pattern, in one stream.
    static uint8_t code[256 * 8];
    for (size_t i = 0; i < sizeof code; ++i)
        code[i] = static_cast<uint8_t>(i % 8 == 0 ? i / 8 : i * 37 + 11);
    const auto bytes = [](int32_t a) -> uint8_t {
        return a >= 0 && static_cast<size_t>(a) < sizeof code ? code[a] : 0xFF;
    };
    vortelm::disasm::ResetSequenceCounters(st.instructions);
    for (int32_t a = 0; a < static_cast<int32_t>(sizeof code); a += 8)
        (void)vortelm::disasm::Disassemble(st, st.instructions, a, bytes);
    return 0;
}
