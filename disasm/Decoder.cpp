#include "disasm/Decoder.h"

#include <array>
#include <charconv>
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

// Appends value in upper-case hexadecimal, padded with "0" to digits and
// never cut (as HexText gives it), without a formatting call per number.
void AppendHex(std::string& out, uint32_t value, int digits) {
    char buf[8];
    int n = 0;
    do {
        buf[n++] = "0123456789ABCDEF"[value & 15];
        value >>= 4;
    } while (value != 0 && n < 8);
    for (int i = n; i < digits; ++i) out += '0';
    while (n > 0) out += buf[--n];
}

void AppendDecimal(std::string& out, int32_t value) {
    char buf[12];
    const auto r = std::to_chars(buf, buf + sizeof buf, value);
    out.append(buf, r.ptr);
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
          address_(address) {
        text.reserve(40);
    }

    std::string text;
    bool bad = false;

    Line& s(std::string_view v) {
        text += v;
        return *this;
    }
    Line& rw(int32_t x) {
        text += 'R';
        AppendDecimal(text, x);
        return *this;
    }
    Line& rb(int32_t x) {
        text += (x % 2) == 0 ? "RL" : "RH";
        AppendDecimal(text, x / 2);
        return *this;
    }
    Line& hex(int32_t v, int digits) {
        AppendHex(text, static_cast<uint32_t>(v), digits);
        return *this;
    }
    // A number with the letter h behind it.
    Line& hexh(int32_t v, int digits) { return hex(v, digits).s("h"); }

    Line& reg(int32_t x, bool byte) {
        if (x >= 240 && x <= 255) {
            if (byte) {
                text += (x % 2) == 0 ? "RL" : "RH";
                AppendDecimal(text, (x / 2) & 7);
            } else {
                rw(x & 15);
            }
            return *this;
        }
        return name(SfrIndexByShort(st_, x, extr_ ? kTrue : kFalse));
    }
    Line& mem(int32_t a) {
        if (a >= 0xFE00 || extr_) return name(SfrIndexByAddress(st_, a));
        if (extpOrExts_) return hexh(a, 4);
        s("DPP");
        AppendDecimal(text, a / 16384);
        return s(":").hexh(a & 0x3FFF, 4);
    }
    Line& bit(int32_t b, int32_t q) {
        if (b < 128) {
            hex(0xFD00 + 2 * b, 4);
            if (q < 16) {
                text += '.';
                AppendDecimal(text, q);
            }
            return *this;
        }
        const int32_t address = (extr_ ? 0xF100 : 0xFF00) + 2 * (b - 128);
        const int32_t i = SfrIndexByAddress(st_, address);
        if (i < 0) {
            if (b >= 240) {
                rw(b - 240).s(".");
                AppendDecimal(text, q);
            } else {
                bad = true;
            }
            return *this;
        }
        const SfrRecord& r = st_.sfrTable[static_cast<size_t>(i)];
        if (q >= 16) return s(r.name);
        const auto n = static_cast<size_t>(q);
        if (!r.bitName[n].empty() && r.bitWidth[n] == 1) return s(r.bitName[n]);
        s(r.name).s(".");
        AppendDecimal(text, q);
        return *this;
    }
    Line& cc(int32_t x) {
        const std::string_view t = ConditionText(x);  // the first spelling
        if (t.empty())
            bad = true;
        else
            text += t;
        return *this;
    }
    Line& target(int32_t x, int32_t n) { return hexh(address_ + 2 * Rel(x) + n, 4); }

  private:
    Line& name(int32_t index) {
        if (index < 0)
            bad = true;
        else
            text += st_.sfrTable[static_cast<size_t>(index)].name;
        return *this;
    }

    const ProgramState& st_;
    bool extr_;
    bool extpOrExts_;
    int32_t address_;
};

// The sequence instructions put their own text in place of the mnemonic and
// set their counters; T0 above 3 leaves the table's mnemonic alone.
void Sequence(uint8_t op, const Fields& f, InstructionTable& t, Line& line) {
    const int32_t t0 = f.T[0];
    if (t0 > 3) return;
    const int16_t counter = static_cast<int16_t>(f.T[1] + 2);
    const int32_t count = f.T[1] + 1;
    line.text.clear();
    if (op == 0xD1) {
        if (t0 == 0) {
            line.s("ATOMIC  #");
        } else {
            line.s("EXTR    #");
            t.extrCount = counter;
        }
        AppendDecimal(line.text, count);
        return;
    }
    static constexpr std::array<std::string_view, 4> kNames{"EXTS    ", "EXTP    ", "EXTSR   ",
                                                            "EXTPR   "};
    line.s(kNames[static_cast<size_t>(t0)]);
    if (op == 0xD7) {
        if (t0 == 0 || t0 == 2)
            line.s("#").hexh(f.B[1], 2).s(",#");
        else
            line.s("#").hexh(f.T[3] * 256 + f.B[1], 4).s(",#");
    } else {
        line.rw(f.Q[0]).s(",#");
    }
    AppendDecimal(line.text, count);
    if (t0 == 0 || t0 == 2) t.extsCount = counter;
    if (t0 == 1 || t0 == 3) t.extpCount = counter;
    if (t0 >= 2) t.extrCount = counter;
}

// The bit stream of an instruction (at most 64 bits, first byte highest),
// walked field by field into the T, Q, B and W fields.
Fields SplitFields(const InstructionRecord& rec, int32_t address, const ByteSource& bytes) {
    const int length = rec.byteLength < 0 ? 0 : (rec.byteLength > 8 ? 8 : rec.byteLength);
    uint64_t stream = 0;
    for (int i = 0; i < 8; ++i) stream = (stream << 8) | (i < length ? bytes(address + i) : 0u);
    auto bitsAt = [stream](int pos, int count) {
        if (pos >= 64) return int32_t{0};
        return static_cast<int32_t>((stream << pos) >> (64 - count));
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
        const int32_t v =
            width == 16 ? bitsAt(pos, 8) | (bitsAt(pos + 8, 8) << 8) : bitsAt(pos, width);
        pos += width;
        if (*n < into->size()) (*into)[(*n)++] = v;
    }
    return f;
}

// The operands that name registers alone, direct or indirect; false for
// a syntax of another kind.
bool WriteRegisterOperands(Syntax syntax, const Fields& f, Line& o) {
    using S = Syntax;
    const auto& Q = f.Q;
    const auto& B = f.B;
    switch (syntax) {
        case S::None:
            return true;
        case S::RwQ0:
            o.rw(Q[0]);
            return true;
        case S::RbQ0:
            o.rb(Q[0]);
            return true;
        case S::RegWB1:
            o.reg(B[1], false);
            return true;
        case S::RwQ0RwQ1:
            o.rw(Q[0]).s(",").rw(Q[1]);
            return true;
        case S::RbQ0RbQ1:
            o.rb(Q[0]).s(",").rb(Q[1]);
            return true;
        case S::RwQ1RbQ0:
            o.rw(Q[1]).s(",").rb(Q[0]);
            return true;
        case S::IndQ0IndQ1:
            o.s("[").rw(Q[0]).s("],[").rw(Q[1]).s("]");
            return true;
        case S::RwQ0IndQ1:
            o.rw(Q[0]).s(",[").rw(Q[1]).s("]");
            return true;
        case S::IndQ1RwQ0:
            o.s("[").rw(Q[1]).s("],").rw(Q[0]);
            return true;
        case S::RbQ0IndQ1:
            o.rb(Q[0]).s(",[").rw(Q[1]).s("]");
            return true;
        case S::IndQ1RbQ0:
            o.s("[").rw(Q[1]).s("],").rb(Q[0]);
            return true;
        case S::RwQ0IndQ1Inc:
            o.rw(Q[0]).s(",[").rw(Q[1]).s("+]");
            return true;
        case S::IndQ0IndQ1Inc:
            o.s("[").rw(Q[0]).s("],[").rw(Q[1]).s("+]");
            return true;
        case S::IndQ0IncIndQ1:
            o.s("[").rw(Q[0]).s("+],[").rw(Q[1]).s("]");
            return true;
        case S::DecIndQ1RwQ0:
            o.s("[-").rw(Q[1]).s("],").rw(Q[0]);
            return true;
        case S::DecIndQ1RbQ0:
            o.s("[-").rw(Q[1]).s("],").rb(Q[0]);
            return true;
        case S::RbQ0IndQ1Inc:
            o.rb(Q[0]).s(",[").rw(Q[1]).s("+]");
            return true;
        case S::ShortW:
        case S::ShortB:
            if (syntax == S::ShortW)
                o.rw(Q[0]);
            else
                o.rb(Q[0]);
            if ((Q[1] & 8) == 0)
                o.s(",#").hexh(Q[1] & 7, 1);
            else
                o.s(",[").rw(Q[1] & 3).s((Q[1] & 12) < 12 ? "]" : "+]");
            return true;
        default:
            return false;
    }
}

// The operands with a memory address, an immediate value or a displacement;
// false for a syntax of another kind.
bool WriteMemoryOperands(Syntax syntax, const Fields& f, Line& o) {
    using S = Syntax;
    const auto& Q = f.Q;
    const auto& B = f.B;
    const int32_t W0 = f.W[0];
    switch (syntax) {
        case S::RegWMem:
            o.reg(B[1], false).s(",").mem(W0);
            return true;
        case S::RegBMem:
            o.reg(B[1], true).s(",").mem(W0);
            return true;
        case S::MemRegW:
            o.mem(W0).s(",").reg(B[1], false);
            return true;
        case S::MemRegB:
            o.mem(W0).s(",").reg(B[1], true);
            return true;
        case S::RegWImm16:
            o.reg(B[1], false).s(",#").hexh(W0, 4);
            return true;
        case S::RwQ1Imm16:
            o.rw(Q[1]).s(",#").hexh(W0, 4);
            return true;
        case S::RwQ1Imm4:
            o.rw(Q[1]).s(",#").hexh(Q[0], 1);
            return true;
        case S::RbQ1Imm4:
            o.rb(Q[1]).s(",#").hexh(Q[0], 1);
            return true;
        case S::RegBImm8:
            o.reg(B[1], true).s(",#").hexh(B[2], 2);
            return true;
        case S::RwQ1Mem:
            o.rw(Q[1]).s(",").mem(W0);
            return true;
        case S::IndQ1Mem:
            o.s("[").rw(Q[1]).s("],").mem(W0);
            return true;
        case S::MemIndQ1:
            o.mem(W0).s(",[").rw(Q[1]).s("]");
            return true;
        case S::DispRwQ0:
            o.s("[").rw(Q[1]).s("+#").hexh(W0, 4).s("],").rw(Q[0]);
            return true;
        case S::RwQ0Disp:
            o.rw(Q[0]).s(",[").rw(Q[1]).s("+#").hexh(W0, 4).s("]");
            return true;
        case S::DispRbQ0:
            o.s("[").rw(Q[1]).s("+#").hexh(W0, 4).s("],").rb(Q[0]);
            return true;
        case S::RbQ0Disp:
            o.rb(Q[0]).s(",[").rw(Q[1]).s("+#").hexh(W0, 4).s("]");
            return true;
        default:
            return false;
    }
}

// The operands of a syntax after the mnemonic; false when the bytes are no
// instruction at all (a broken complement check, an illegal syntax).
bool WriteOperands(Syntax syntax, uint8_t op, const Fields& f, int32_t address,
                   const ByteSource& bytes, InstructionTable& t, Line& o) {
    if (WriteRegisterOperands(syntax, f, o) || WriteMemoryOperands(syntax, f, o)) return true;
    using S = Syntax;
    const auto& Q = f.Q;
    const auto& B = f.B;
    const int32_t W0 = f.W[0];
    switch (syntax) {
        case S::Complement:  // the op byte, its complement, then the op byte twice
            return bytes(address + 1) == static_cast<uint8_t>(~op) && bytes(address + 2) == op &&
                   bytes(address + 3) == op;
        case S::FieldLow:
            o.bit(B[1], 16).s(",#").hexh(B[2], 2).s(",#").hexh(B[3], 2);
            return true;
        case S::FieldHigh:
            o.bit(B[1], 16).s(",#").hexh(B[3], 2).s(",#").hexh(B[2], 2);
            return true;
        case S::BitBit:
            o.bit(B[2], Q[1]).s(",").bit(B[1], Q[0]);
            return true;
        case S::BitRel:
            o.bit(B[1], Q[0]).s(",").target(B[2], 4);
            return true;
        case S::CcInd:
            o.cc(Q[0]).s(",[").rw(Q[1]).s("]");
            return true;
        case S::CcAbs:
            o.cc(Q[0]).s(",").hexh(W0, 4);
            return true;
        case S::CcRel:
            o.cc(Q[0]).s(",").target(B[0], 2);
            return true;
        case S::Rel:
            o.target(B[1], 2);
            return true;
        case S::BitB0:
            o.bit(B[0], Q[0]);
            return true;
        case S::SegAbs:
            o.hexh(B[1], 2).s(",").hexh(W0, 4);
            return true;
        case S::RegWAbs:
            o.reg(B[1], false).s(",").hexh(W0, 4);
            return true;
        case S::Trap:
            o.s("#").hex(B[1] / 2, 2);
            return true;
        case S::SeqAtomic:
        case S::SeqExt:
            Sequence(op, f, t, o);
            return true;
        case S::Illegal:
            return false;
        default:  // written above
            return true;
    }
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

    // 3. and 4. The fields of the bit stream.
    const Fields f = SplitFields(rec, address, bytes);

    // 5. The mnemonic, then 6. the operands of the first byte's syntax.
    Line o(st, t, address);
    o.s(rec.mnemonic);
    if (o.text.size() < 8) o.text.append(8 - o.text.size(), ' ');
    if (!WriteOperands(syntax, op, f, address, bytes, t, o)) return kIllegalInstruction;
    if (o.bad) return kIllegalOperand;
    return std::move(o.text);
}

std::string DisassembleAt(ProgramState& st, int32_t address) {
    const auto read = [&st](int32_t a) { return ReadDumpByte(st.dump, a); };
    return Disassemble(st, st.instructions, address, read);
}

}  // namespace vortelm::disasm
