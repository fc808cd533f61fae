#pragma once
// The instruction table of the decoder and its three sequence counters. The
// rows come from the table file beside the program (the decoder's reader
// fills them); the program holds no copy of them.

#include <array>
#include <cstdint>
#include <string>

namespace vortelm {

// One opcode: its mnemonic, its length in bytes and the widths in bits of
// its fields in the order in which they lie in the bit stream.
struct InstructionRecord {
    std::string mnemonic;
    int16_t byteLength = 0;
    std::array<int16_t, 9> fieldWidth{};
    int16_t fieldCount = 0;
};

struct InstructionTable {
    // Indexed by the first byte of an instruction; a byte without a row has
    // an empty record.
    std::array<InstructionRecord, 257> rows{};
    // True once a table file was read without a fault.
    bool loaded = false;
    // Instructions still under an EXTR, EXTP or EXTS sequence.
    int16_t extrCount = 0;
    int16_t extpCount = 0;
    int16_t extsCount = 0;
};

}  // namespace vortelm
