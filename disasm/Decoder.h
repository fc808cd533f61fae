#pragma once
// The instruction decoder: the bytes of one instruction at an address become
// one line of assembler text. Mnemonics, lengths and the bit layout of each
// opcode come from the instruction table; the operand syntax of each first
// byte is fixed here. Registers, memory addresses and bits are named from the
// loaded register table. The decoder reads bytes from a source it is given
// and never reaches the target.

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "core/InstructionTable.h"

namespace vortelm {
struct ProgramState;
}

namespace vortelm::disasm {

// The byte at an address: a light reference to any callable that gives it
// (the callable must outlive the call it is passed to).
class ByteSource {
  public:
    template <class F>
    requires std::is_invocable_r_v<uint8_t, const F&, int32_t> &&
        (!std::is_same_v<std::remove_cvref_t<F>, ByteSource>)
            ByteSource(const F& f)  // NOLINT: taken implicitly, like a function reference
        : object_(&f), call_([](const void* o, int32_t a) -> uint8_t {
              return (*static_cast<const F*>(o))(a);
          }) {}
    uint8_t operator()(int32_t address) const { return call_(object_, address); }

  private:
    const void* object_;
    uint8_t (*call_)(const void*, int32_t);
};

// Decodes the instruction at address with the table and counters given and
// the register names of st. The three counters of the table change: each
// above 0 is lowered first, and a sequence instruction sets its own.
[[nodiscard]] std::string Disassemble(const ProgramState& st, InstructionTable& table,
                                      int32_t address, const ByteSource& bytes);

// The same over the dump memory and the program's table (st.instructions).
// An address outside the dump memory throws RunTimeError.
[[nodiscard]] std::string DisassembleAt(ProgramState& st, int32_t address);

// Sets the three sequence counters to 0, as a listing does before it starts.
void ResetSequenceCounters(InstructionTable& table);

// The length of the instruction with this first byte, from the table.
[[nodiscard]] int16_t InstructionLength(const InstructionTable& table, uint8_t firstByte);

// True when a decoded text tells that no length can be trusted.
[[nodiscard]] inline bool IsIllegalText(std::string_view text) {
    return text.find("Illegal") != std::string_view::npos;
}

// The condition text of a 4-bit condition code; the second spelling gives
// cc_EQ, cc_NE, cc_ULT and cc_UGE for 2, 3, 8 and 9.
[[nodiscard]] std::string_view ConditionText(int code, bool secondSpelling = false);

}  // namespace vortelm::disasm
