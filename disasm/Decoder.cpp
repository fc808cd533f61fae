#include "disasm/Decoder.h"

#include <array>
#include <initializer_list>

#include "core/Helpers.h"
#include "core/ProgramState.h"
#include "image/Dump.h"
#include "sfr/SfrTable.h"

namespace vortelm::disasm {

namespace {

// The operand syntax of a first byte.
enum class Syntax : uint8_t {
    None,
    Complement,  // no operands; the next three bytes are ~op, op, op
    RwQ0,
    RbQ0,
    RegWB1,
    RwQ0RwQ1,
    RbQ0RbQ1,
    RwQ1RbQ0,
    IndQ0IndQ1,     // [Rw],[Rw]
    RwQ0IndQ1,      // Rw,[Rw]
    IndQ1RwQ0,      // [Rw],Rw
    RbQ0IndQ1,      // Rb,[Rw]
    IndQ1RbQ0,      // [Rw],Rb
    RwQ0IndQ1Inc,   // Rw,[Rw+]
    IndQ0IndQ1Inc,  // [Rw],[Rw+]
    IndQ0IncIndQ1,  // [Rw+],[Rw]
    DecIndQ1RwQ0,   // [-Rw],Rw
    DecIndQ1RbQ0,   // [-Rw],Rb
    RbQ0IndQ1Inc,   // Rb,[Rw+]
    RegWMem,
    RegBMem,
    MemRegW,
    MemRegB,
    RegWImm16,
    RwQ1Imm16,
    RwQ1Imm4,
    RbQ1Imm4,
    RegBImm8,
    RwQ1Mem,
    IndQ1Mem,
    MemIndQ1,
    ShortW,     // Rw, then #data3, [Rw] or [Rw+]
    ShortB,     // the same with Rb first
    DispRwQ0,   // [Rw+#d16],Rw
    RwQ0Disp,   // Rw,[Rw+#d16]
    DispRbQ0,   // [Rw+#d16],Rb
    RbQ0Disp,   // Rb,[Rw+#d16]
    FieldLow,   // bitoff,#B2,#B3
    FieldHigh,  // bitoff,#B3,#B2
    BitBit,
    BitRel,
    CcInd,
    CcAbs,
    CcRel,
    Rel,
    BitB0,
    SegAbs,
    RegWAbs,
    Trap,
    SeqAtomic,
    SeqExt,
    Illegal,
};

struct SyntaxMap {
    std::array<Syntax, 256> of{};
    std::array<bool, 256> set{};
    constexpr void rows(Syntax s, std::initializer_list<uint8_t> bytes) {
        for (uint8_t b : bytes) one(s, b);
    }
    constexpr void column(Syntax s, uint8_t low, int highest) {
        for (int x = 0; x <= highest; ++x) one(s, static_cast<uint8_t>(x * 16 + low));
    }
    constexpr void one(Syntax s, uint8_t b) {
        // The first matching row wins.
        if (!set[b]) {
            of[b] = s;
            set[b] = true;
        }
    }
};

constexpr SyntaxMap BuildSyntaxMap() {
    SyntaxMap m;
    using S = Syntax;
    m.rows(S::None, {0xCB, 0xCC, 0xDB, 0xFB, 0x83, 0x8C, 0x93, 0xA3, 0xB3, 0xC3, 0xD3});
    m.rows(S::Complement, {0x85, 0x87, 0x97, 0xA5, 0xA7, 0xB5, 0xB7});
    m.rows(S::RwQ0, {0x4B, 0x5B, 0x6B, 0x7B, 0x81, 0x91});
    m.rows(S::RbQ0, {0xA1, 0xB1});
    m.rows(S::RegWB1, {0xEB, 0xEC, 0xFC});
    m.rows(S::RwQ0RwQ1, {0x00, 0x0B, 0x0C, 0x10, 0x1B, 0x20, 0x2B, 0x2C, 0x30, 0x40, 0x50, 0x60,
                         0x4C, 0x6C, 0x70, 0xF0, 0xAC});
    m.rows(S::RbQ0RbQ1, {0x01, 0x11, 0x21, 0x31, 0x41, 0x51, 0x61, 0x71, 0xF1});
    m.rows(S::RwQ1RbQ0, {0xC0, 0xD0});
    m.rows(S::IndQ0IndQ1, {0xC8, 0xC9});
    m.rows(S::RwQ0IndQ1, {0xA8});
    m.rows(S::IndQ1RwQ0, {0xB8});
    m.rows(S::RbQ0IndQ1, {0xA9});
    m.rows(S::IndQ1RbQ0, {0xB9});
    m.rows(S::RwQ0IndQ1Inc, {0x98});
    m.rows(S::IndQ0IndQ1Inc, {0xE8, 0xE9});
    m.rows(S::IndQ0IncIndQ1, {0xD8, 0xD9});
    m.rows(S::DecIndQ1RwQ0, {0x88});
    m.rows(S::DecIndQ1RbQ0, {0x89});
    m.rows(S::RbQ0IndQ1Inc, {0x99});
    m.column(S::RegWMem, 0x2, 7);
    m.rows(S::RegWMem, {0xD6, 0xF2});
    m.column(S::RegBMem, 0x3, 7);
    m.rows(S::RegBMem, {0xC2, 0xD2, 0xF3});
    m.rows(S::MemRegW, {0x04, 0x14, 0x24, 0x34, 0x54, 0x64, 0x74, 0xF6});
    m.rows(S::MemRegB, {0x05, 0x15, 0x25, 0x35, 0x55, 0x65, 0x75, 0xF7, 0xC5, 0xD5});
    m.column(S::RegWImm16, 0x6, 7);
    m.rows(S::RegWImm16, {0xC6, 0xE6});
    m.rows(S::RwQ1Imm16, {0x86, 0x96, 0xA6, 0xB6});
    m.rows(S::RwQ1Imm4, {0x1C, 0x3C, 0x5C, 0x7C, 0x80, 0x90, 0xA0, 0xB0, 0xBC, 0xE0});
    m.rows(S::RbQ1Imm4, {0xE1});
    m.column(S::RegBImm8, 0x7, 7);
    m.rows(S::RegBImm8, {0xE7});
    m.rows(S::RwQ1Mem, {0x82, 0x92, 0xA2, 0xB2});
    m.rows(S::IndQ1Mem, {0x84, 0xA4});
    m.rows(S::MemIndQ1, {0x94, 0xB4});
    m.column(S::ShortW, 0x8, 7);
    m.column(S::ShortB, 0x9, 7);
    m.rows(S::DispRwQ0, {0xC4});
    m.rows(S::RwQ0Disp, {0xD4});
    m.rows(S::DispRbQ0, {0xE4});
    m.rows(S::RbQ0Disp, {0xF4});
    m.rows(S::FieldLow, {0x0A});
    m.rows(S::FieldHigh, {0x1A});
    m.rows(S::BitBit, {0x2A, 0x3A, 0x4A, 0x5A, 0x6A, 0x7A});
    m.rows(S::BitRel, {0x8A, 0x9A, 0xAA, 0xBA});
    m.rows(S::CcInd, {0x9C, 0xAB});
    m.rows(S::CcAbs, {0xCA, 0xEA});
    m.column(S::CcRel, 0xD, 15);
    m.rows(S::Rel, {0xBB});
    m.column(S::BitB0, 0xE, 15);
    m.column(S::BitB0, 0xF, 15);
    m.rows(S::SegAbs, {0xFA, 0xDA});
    m.rows(S::RegWAbs, {0xE2});
    m.rows(S::Trap, {0x9B});
    m.rows(S::SeqAtomic, {0xD1});
    m.rows(S::SeqExt, {0xDC, 0xD7});
    m.rows(S::Illegal, {0x3B, 0x44, 0x45, 0x8B, 0x95, 0xC1, 0xC7, 0xE3, 0xE5, 0xF5, 0xF8, 0xF9});
    return m;
}

constexpr SyntaxMap kSyntax = BuildSyntaxMap();

constexpr std::array<std::string_view, 16> kConditions{
    "cc_UC", "cc_NET", "cc_Z",   "cc_NZ",  "cc_V",   "cc_NV",  "cc_N",   "cc_NN",
    "cc_C",  "cc_NC",  "cc_SGT", "cc_SLE", "cc_SLT", "cc_SGE", "cc_UGT", "cc_ULE",
};

const std::string kIllegalInstruction = "Illegal Instruction";
const std::string kIllegalOperand = "Illegal Operand";

// The fields of one instruction, filled from its bit stream.
struct Fields {
    std::array<int32_t, 7> T{}, Q{}, B{}, W{};
};

std::string Hex(int32_t value, int32_t digits) {
    return HexText(value, digits);
}

std::string Rw(int32_t x) {
    return "R" + std::to_string(x);
}
std::string Rb(int32_t x) {
    return std::string((x % 2) == 0 ? "RL" : "RH") + std::to_string(x / 2);
}

int32_t Rel(int32_t x) {
    return x < 128 ? x : (x & 127) - 128;
}

// The text of one decode; an operand rule that finds nothing marks it bad.
class Line {
  public:
    Line(const ProgramState& st, const InstructionTable& t, int32_t address)
        : st_(st),
          extr_(t.extrCount >= 1),
          extpOrExts_(t.extpCount > 0 || t.extsCount > 0),
          address_(address) {}

    std::string text;
    bool bad = false;

    void put(std::string_view s) { text += s; }

    void reg(int32_t x, bool byte) {
        if (x >= 240 && x <= 255) {
            if (byte)
                put(std::string((x % 2) == 0 ? "RL" : "RH") + std::to_string((x / 2) & 7));
            else
                put("R" + std::to_string(x & 15));
            return;
        }
        const int32_t i = SfrIndexByShort(st_, x, extr_ ? kTrue : kFalse);
        name(i);
    }
    void mem(int32_t a) {
        if (a >= 0xFE00 || extr_) {
            name(SfrIndexByAddress(st_, a));
        } else if (extpOrExts_) {
            put(Hex(a, 4) + "h");
        } else {
            put("DPP" + std::to_string(a / 16384) + ":" + Hex(a & 0x3FFF, 4) + "h");
        }
    }
    void bit(int32_t b, int32_t q) {
        if (b < 128) {
            put(Hex(0xFD00 + 2 * b, 4));
            if (q < 16) put("." + std::to_string(q));
            return;
        }
        const int32_t address = (extr_ ? 0xF100 : 0xFF00) + 2 * (b - 128);
        const int32_t i = SfrIndexByAddress(st_, address);
        if (i < 0) {
            if (b >= 240)
                put("R" + std::to_string(b - 240) + "." + std::to_string(q));
            else
                bad = true;
            return;
        }
        const SfrRecord& r = st_.sfrTable[static_cast<size_t>(i)];
        if (q >= 16) {
            put(r.name);
        } else if (!r.bitName[static_cast<size_t>(q)].empty() &&
                   r.bitWidth[static_cast<size_t>(q)] == 1) {
            put(r.bitName[static_cast<size_t>(q)]);
        } else {
            put(r.name + "." + std::to_string(q));
        }
    }
    void cc(int32_t x) {
        if (x >= 0 && x < 16)
            put(kConditions[static_cast<size_t>(x)]);
        else
            bad = true;
    }
    void target(int32_t x, int32_t n) { put(Hex(address_ + 2 * Rel(x) + n, 4) + "h"); }

  private:
    void name(int32_t index) {
        if (index < 0)
            bad = true;
        else
            put(st_.sfrTable[static_cast<size_t>(index)].name);
    }

    const ProgramState& st_;
    bool extr_;
    bool extpOrExts_;
    int32_t address_;
};

std::string Padded(std::string_view s) {
    std::string out(s);
    if (out.size() < 8) out.append(8 - out.size(), ' ');
    return out;
}

// The sequence instructions put their own text in place of the mnemonic and
// set their counters; T0 above 3 leaves the table's mnemonic alone.
bool Sequence(uint8_t op, const Fields& f, InstructionTable& t, Line& line) {
    const int32_t t0 = f.T[0];
    if (t0 > 3) return false;
    const int16_t counter = static_cast<int16_t>(f.T[1] + 2);
    const std::string count = std::to_string(f.T[1] + 1);
    if (op == 0xD1) {
        if (t0 == 0) {
            line.text = "ATOMIC  #" + count;
        } else {
            line.text = "EXTR    #" + count;
            t.extrCount = counter;
        }
        return true;
    }
    static constexpr std::array<std::string_view, 4> kNames{"EXTS    ", "EXTP    ", "EXTSR   ",
                                                            "EXTPR   "};
    line.text = std::string(kNames[static_cast<size_t>(t0)]);
    if (op == 0xD7) {
        if (t0 == 0 || t0 == 2)
            line.put("#" + Hex(f.B[1], 2) + "h,#" + count);
        else
            line.put("#" + Hex(f.T[3] * 256 + f.B[1], 4) + "h,#" + count);
    } else {
        line.put(Rw(f.Q[0]) + ",#" + count);
    }
    if (t0 == 0 || t0 == 2) t.extsCount = counter;
    if (t0 == 1 || t0 == 3) t.extpCount = counter;
    if (t0 >= 2) t.extrCount = counter;
    return true;
}

}  // namespace

std::string_view ConditionText(int code, bool secondSpelling) {
    if (code < 0 || code > 15) return {};
    if (secondSpelling) {
        switch (code) {
            case 2:
                return "cc_EQ";
            case 3:
                return "cc_NE";
            case 8:
                return "cc_ULT";
            case 9:
                return "cc_UGE";
            default:
                break;
        }
    }
    return kConditions[static_cast<size_t>(code)];
}

void ResetSequenceCounters(InstructionTable& table) {
    table.extrCount = 0;
    table.extpCount = 0;
    table.extsCount = 0;
}

int16_t InstructionLength(const InstructionTable& table, uint8_t firstByte) {
    return table.rows[firstByte].byteLength;
}

std::string Disassemble(const ProgramState& st, InstructionTable& t, int32_t address,
                        const ByteSource& bytes) {
    // 1. The counters count down the instructions of a sequence.
    if (t.extrCount > 0) --t.extrCount;
    if (t.extpCount > 0) --t.extpCount;
    if (t.extsCount > 0) --t.extsCount;

    // 2. The first byte's row.
    const uint8_t op = bytes(address);
    const InstructionRecord& rec = t.rows[op];
    const Syntax syntax = kSyntax.of[op];
    if (rec.mnemonic.empty() || syntax == Syntax::Illegal) return kIllegalInstruction;

    // 3. and 4. The bit stream, walked field by field.
    std::array<uint8_t, 8> raw{};
    const int length = rec.byteLength < 0 ? 0 : (rec.byteLength > 8 ? 8 : rec.byteLength);
    for (int i = 0; i < length; ++i) raw[static_cast<size_t>(i)] = bytes(address + i);
    auto bitsAt = [&](int pos, int count) {
        int32_t v = 0;
        for (int k = 0; k < count; ++k, ++pos) {
            const int32_t bit =
                pos < 8 * length ? (raw[static_cast<size_t>(pos / 8)] >> (7 - pos % 8)) & 1 : 0;
            v = (v << 1) | bit;
        }
        return v;
    };
    Fields f;
    std::array<size_t, 4> fill{};
    int pos = 0;
    for (int i = 0; i < rec.fieldCount && i < 9; ++i) {
        const int width = rec.fieldWidth[static_cast<size_t>(i)];
        std::array<int32_t, 7>* into = nullptr;
        size_t* n = nullptr;
        switch (width) {
            case 2:
                into = &f.T;
                n = &fill[0];
                break;
            case 4:
                into = &f.Q;
                n = &fill[1];
                break;
            case 8:
                into = &f.B;
                n = &fill[2];
                break;
            case 16:
                into = &f.W;
                n = &fill[3];
                break;
            default:
                continue;  // moves no bit
        }
        int32_t v = 0;
        if (width == 16)
            v = bitsAt(pos, 8) | (bitsAt(pos + 8, 8) << 8);
        else
            v = bitsAt(pos, width);
        pos += width;
        if (*n < into->size()) (*into)[(*n)++] = v;
    }

    // 5. The mnemonic, then 6. the operands of the first byte's syntax.
    Line line(st, t, address);
    line.text = Padded(rec.mnemonic);
    const auto& T = f.T;
    const auto& Q = f.Q;
    const auto& B = f.B;
    const auto& W = f.W;
    using S = Syntax;
    switch (syntax) {
        case S::None:
            break;
        case S::Complement: {
            const uint8_t inverse = static_cast<uint8_t>(~op);
            if (bytes(address + 1) != inverse || bytes(address + 2) != op ||
                bytes(address + 3) != op)
                return kIllegalInstruction;
            break;
        }
        case S::RwQ0:
            line.put(Rw(Q[0]));
            break;
        case S::RbQ0:
            line.put(Rb(Q[0]));
            break;
        case S::RegWB1:
            line.reg(B[1], false);
            break;
        case S::RwQ0RwQ1:
            line.put(Rw(Q[0]) + "," + Rw(Q[1]));
            break;
        case S::RbQ0RbQ1:
            line.put(Rb(Q[0]) + "," + Rb(Q[1]));
            break;
        case S::RwQ1RbQ0:
            line.put(Rw(Q[1]) + "," + Rb(Q[0]));
            break;
        case S::IndQ0IndQ1:
            line.put("[" + Rw(Q[0]) + "],[" + Rw(Q[1]) + "]");
            break;
        case S::RwQ0IndQ1:
            line.put(Rw(Q[0]) + ",[" + Rw(Q[1]) + "]");
            break;
        case S::IndQ1RwQ0:
            line.put("[" + Rw(Q[1]) + "]," + Rw(Q[0]));
            break;
        case S::RbQ0IndQ1:
            line.put(Rb(Q[0]) + ",[" + Rw(Q[1]) + "]");
            break;
        case S::IndQ1RbQ0:
            line.put("[" + Rw(Q[1]) + "]," + Rb(Q[0]));
            break;
        case S::RwQ0IndQ1Inc:
            line.put(Rw(Q[0]) + ",[" + Rw(Q[1]) + "+]");
            break;
        case S::IndQ0IndQ1Inc:
            line.put("[" + Rw(Q[0]) + "],[" + Rw(Q[1]) + "+]");
            break;
        case S::IndQ0IncIndQ1:
            line.put("[" + Rw(Q[0]) + "+],[" + Rw(Q[1]) + "]");
            break;
        case S::DecIndQ1RwQ0:
            line.put("[-" + Rw(Q[1]) + "]," + Rw(Q[0]));
            break;
        case S::DecIndQ1RbQ0:
            line.put("[-" + Rw(Q[1]) + "]," + Rb(Q[0]));
            break;
        case S::RbQ0IndQ1Inc:
            line.put(Rb(Q[0]) + ",[" + Rw(Q[1]) + "+]");
            break;
        case S::RegWMem:
            line.reg(B[1], false);
            line.put(",");
            line.mem(W[0]);
            break;
        case S::RegBMem:
            line.reg(B[1], true);
            line.put(",");
            line.mem(W[0]);
            break;
        case S::MemRegW:
            line.mem(W[0]);
            line.put(",");
            line.reg(B[1], false);
            break;
        case S::MemRegB:
            line.mem(W[0]);
            line.put(",");
            line.reg(B[1], true);
            break;
        case S::RegWImm16:
            line.reg(B[1], false);
            line.put(",#" + Hex(W[0], 4) + "h");
            break;
        case S::RwQ1Imm16:
            line.put(Rw(Q[1]) + ",#" + Hex(W[0], 4) + "h");
            break;
        case S::RwQ1Imm4:
            line.put(Rw(Q[1]) + ",#" + Hex(Q[0], 1) + "h");
            break;
        case S::RbQ1Imm4:
            line.put(Rb(Q[1]) + ",#" + Hex(Q[0], 1) + "h");
            break;
        case S::RegBImm8:
            line.reg(B[1], true);
            line.put(",#" + Hex(B[2], 2) + "h");
            break;
        case S::RwQ1Mem:
            line.put(Rw(Q[1]) + ",");
            line.mem(W[0]);
            break;
        case S::IndQ1Mem:
            line.put("[" + Rw(Q[1]) + "],");
            line.mem(W[0]);
            break;
        case S::MemIndQ1:
            line.mem(W[0]);
            line.put(",[" + Rw(Q[1]) + "]");
            break;
        case S::ShortW:
        case S::ShortB:
            line.put(syntax == S::ShortW ? Rw(Q[0]) : Rb(Q[0]));
            if ((Q[1] & 8) == 0)
                line.put(",#" + Hex(Q[1] & 7, 1) + "h");
            else
                line.put(",[" + Rw(Q[1] & 3) + ((Q[1] & 12) < 12 ? "]" : "+]"));
            break;
        case S::DispRwQ0:
            line.put("[" + Rw(Q[1]) + "+#" + Hex(W[0], 4) + "h]," + Rw(Q[0]));
            break;
        case S::RwQ0Disp:
            line.put(Rw(Q[0]) + ",[" + Rw(Q[1]) + "+#" + Hex(W[0], 4) + "h]");
            break;
        case S::DispRbQ0:
            line.put("[" + Rw(Q[1]) + "+#" + Hex(W[0], 4) + "h]," + Rb(Q[0]));
            break;
        case S::RbQ0Disp:
            line.put(Rb(Q[0]) + ",[" + Rw(Q[1]) + "+#" + Hex(W[0], 4) + "h]");
            break;
        case S::FieldLow:
            line.bit(B[1], 16);
            line.put(",#" + Hex(B[2], 2) + "h,#" + Hex(B[3], 2) + "h");
            break;
        case S::FieldHigh:
            line.bit(B[1], 16);
            line.put(",#" + Hex(B[3], 2) + "h,#" + Hex(B[2], 2) + "h");
            break;
        case S::BitBit:
            line.bit(B[2], Q[1]);
            line.put(",");
            line.bit(B[1], Q[0]);
            break;
        case S::BitRel:
            line.bit(B[1], Q[0]);
            line.put(",");
            line.target(B[2], 4);
            break;
        case S::CcInd:
            line.cc(Q[0]);
            line.put(",[" + Rw(Q[1]) + "]");
            break;
        case S::CcAbs:
            line.cc(Q[0]);
            line.put("," + Hex(W[0], 4) + "h");
            break;
        case S::CcRel:
            line.cc(Q[0]);
            line.put(",");
            line.target(B[0], 2);
            break;
        case S::Rel:
            line.target(B[1], 2);
            break;
        case S::BitB0:
            line.bit(B[0], Q[0]);
            break;
        case S::SegAbs:
            line.put(Hex(B[1], 2) + "h," + Hex(W[0], 4) + "h");
            break;
        case S::RegWAbs:
            line.reg(B[1], false);
            line.put("," + Hex(W[0], 4) + "h");
            break;
        case S::Trap:
            line.put("#" + Hex(B[1] / 2, 2));
            break;
        case S::SeqAtomic:
        case S::SeqExt:
            (void)Sequence(op, f, t, line);
            break;
        case S::Illegal:
            return kIllegalInstruction;
    }
    (void)T;
    if (line.bad) return kIllegalOperand;
    return line.text;
}

std::string DisassembleAt(ProgramState& st, int32_t address) {
    return Disassemble(st, st.instructions, address,
                       [&st](int32_t a) { return ReadDumpByte(st.dump, a); });
}

}  // namespace vortelm::disasm
