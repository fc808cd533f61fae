#include "shell/Expressions.h"

#include <cmath>
#include <limits>

#include "core/Bits.h"
#include "core/Helpers.h"
#include "core/Host.h"
#include "core/RunTimeError.h"
#include "image/Dump.h"
#include "link/ComPort.h"
#include "link/Monitor.h"
#include "sfr/SfrTable.h"

namespace vortelm::shell {

namespace {

constexpr int32_t k24Bits = 0xFFFFFF;

// The text without blanks (quotes mean nothing here), upper-cased.
std::string Clean(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (char c : text)
        if (c != ' ') out += (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
    return out;
}

// An operand of _assign: nothing when it is no operand; a value below 0 is
// a failure the caller sees.
struct Operand {
    bool ok = false;
    int32_t value = 0;
};

Operand LeftOperand(Session& s, std::string_view text) {
    if (const int32_t v = VariableIndex(text); v >= 0) return {true, VariableAt(s.st, v)};
    if (const int32_t i = SfrIndexByName(s.st, text); i >= 0) {
        const int32_t v = ReadSfrValue(s, i);
        return {v >= 0, v};
    }
    if (const int32_t h = HexValue(text); h >= 0) return {true, h};
    if (text == "TIMER") {
        const auto r = RoundToInt32(s.st.host->secondsSinceMidnight() * 100.0);
        return {r.has_value(), r.value_or(0)};
    }
    if (text == "RND8")
        return {true, static_cast<int32_t>(std::nearbyint(s.st.host->random() * 256.0))};
    if (text == "RND16")
        return {true, static_cast<int32_t>(std::nearbyint(s.st.host->random() * 65536.0))};
    return {};
}

// The right side knows no words, and an SFR must read above 0.
Operand RightOperand(Session& s, std::string_view text) {
    if (const int32_t v = VariableIndex(text); v >= 0) return {true, VariableAt(s.st, v)};
    if (const int32_t i = SfrIndexByName(s.st, text); i >= 0) {
        const int32_t v = ReadSfrValue(s, i);
        return {v > 0, v};
    }
    if (const int32_t h = HexValue(text); h >= 0) return {true, h};
    return {};
}

// A condition operand: variable, SFR or constant, in this order of trial.
bool ParseOperand(const ProgramState& st, std::string_view text, int32_t& value, int32_t& kind) {
    if (const int32_t v = VariableIndex(text); v >= 0) {
        value = v;
        kind = kVariable;
        return true;
    }
    if (const int32_t i = SfrIndexByName(st, text); i >= 0) {
        value = i;
        kind = kSfr;
        return true;
    }
    if (const int32_t h = HexValue(text); h >= 0) {
        value = h;
        kind = kConstant;
        return true;
    }
    return false;
}

int64_t OperandValue(Session& s, int32_t value, int32_t kind) {
    switch (kind) {
        case kVariable:
            return VariableAt(s.st, value);
        case kSfr:
            return ReadSfrValue(s, value);
        default:
            return value;
    }
}

int64_t Checked(int64_t v) {
    if (v < std::numeric_limits<int32_t>::min() || v > std::numeric_limits<int32_t>::max())
        throw RunTimeError("condition value " + std::to_string(v) + " overflows 32 bits");
    return v;
}

}  // namespace

int32_t VariableIndex(std::string_view text) {
    if (text.empty() || text.front() != '%') return -1;
    const auto v = NumericValue(text.substr(1));
    if (!v) return -1;
    const auto r = RoundToInt32(*v);
    if (!r || *r < 0) return -1;
    return *r;
}

int32_t VariableAt(const ProgramState& st, int32_t index) {
    CheckBound(index, static_cast<long long>(st.variables.size()) - 1, "variables");
    return st.variables[static_cast<size_t>(index)];
}

void SetVariable(ProgramState& st, int32_t index, int32_t value) {
    CheckBound(index, static_cast<long long>(st.variables.size()) - 1, "variables");
    st.variables[static_cast<size_t>(index)] = value;
}

bool IsArithmeticOperator(char c) {
    switch (c) {
        case '-':
        case '+':
        case '*':
        case '/':
        case '&':
        case '|':
        case '~':
        case '^':
        case '<':
        case '>':
        case '#':
            return true;
        default:
            return false;
    }
}

bool IsComparisonOperator(std::string_view t) {
    return t == ">" || t == "=" || t == "<" || t == "<=" || t == ">=" || t == "<>";
}

int32_t ReadSfrValue(Session& s, int32_t sfrIndex) {
    if (s.st.ConnectionState != kConnectedAndReady) return -1;
    if (s.port == nullptr || sfrIndex < 0 || sfrIndex >= s.st.sfrCount) return -2;
    const int32_t address = s.st.sfrTable[static_cast<size_t>(sfrIndex)].address;
    if (link::Monitor(s.st, *s.port).Cmd_Read(address, 2) != 0) return -2;
    return ReadDumpWord(s.st.dump, address);
}

int32_t EvaluateExpression(Session& s, std::string_view text) {
    size_t at = 0;
    while (at < text.size() && !IsArithmeticOperator(text[at])) ++at;
    std::string_view left = text;
    std::string_view right = "0";
    std::string_view op = "+";
    if (at < text.size()) {
        const size_t width = (text[at] == '>' || text[at] == '<') ? 2 : 1;
        op = text.substr(at, width);
        left = text.substr(0, at);
        right = text.substr(std::min(text.size(), at + width));
    }

    int64_t l = 0;
    if (op != "~") {
        const Operand a = LeftOperand(s, left);
        if (!a.ok || a.value < 0) return -1;
        l = a.value;
    }
    const Operand b = RightOperand(s, right);
    if (!b.ok || b.value < 0) return -1;
    const int64_t r = b.value;

    int64_t v = -1;
    if (op == "+")
        v = (l + r) & k24Bits;
    else if (op == "-")
        v = (l - r) & k24Bits;
    else if (op == "*")
        v = (l * r) % 0x1000000;
    else if (op == "/" || op == "#") {
        if (r == 0) return -1;
        v = op == "/" ? l / r : l % r;
    } else if (op == "&")
        v = l & r;
    else if (op == "|")
        v = l | r;
    else if (op == "^")
        v = l ^ r;
    else if (op == "~")
        v = Complement(static_cast<int32_t>(r), 24);
    else if (op == ">>")
        v = RotateRight(static_cast<int32_t>(l), static_cast<int32_t>(r), true, 24);
    else if (op == "<<")
        v = RotateLeft(static_cast<int32_t>(l), static_cast<int32_t>(r), true, 24);
    else
        return -1;
    return v < 0 ? -1 : static_cast<int32_t>(v);
}

int32_t AssignExpression(Session& s, std::string_view text) {
    const std::string t = Clean(text);
    const size_t eq = t.find('=');
    if (eq == std::string::npos) return -1;
    const std::string_view left = std::string_view(t).substr(0, eq);
    const std::string_view right = std::string_view(t).substr(eq + 1);
    if (const int32_t v = VariableIndex(left); v >= 0) {
        CheckBound(v, static_cast<long long>(s.st.variables.size()) - 1, "variables");
        const int32_t value = EvaluateExpression(s, right);
        if (value < 0) return -1;
        SetVariable(s.st, v, value);
        return 0;
    }
    if (SfrIndexByName(s.st, left) >= 0) {
        const int32_t value = EvaluateExpression(s, right);
        if (value < 0) return -1;
        if (s.port == nullptr) return -1;
        const int16_t r =
            link::Monitor(s.st, *s.port).Cmd_WriteWord(SfrAddressByName(s.st, left), value);
        return r != 0 ? -1 : 0;
    }
    return -1;
}

int32_t ParseCondition(const ProgramState& st, std::string& text, ConditionRecord& record) {
    text = Clean(text);
    record = ConditionRecord{};
    size_t at = 0;
    size_t width = 0;
    for (; at < text.size(); ++at) {
        const std::string_view two = std::string_view(text).substr(at, 2);
        if (two.size() == 2 && IsComparisonOperator(two)) {
            width = 2;
            break;
        }
        if (IsComparisonOperator(two.substr(0, 1)) || IsArithmeticOperator(text[at])) {
            width = 1;
            break;
        }
    }
    std::string_view left = text;
    std::string_view right = "0";
    int32_t result = 1;
    if (width > 0) {
        result = 2;
        record.op = text.substr(at, width);
        left = std::string_view(text).substr(0, at);
        right = std::string_view(text).substr(at + width);
    }
    if (!ParseOperand(st, left, record.leftValue, record.leftKind)) {
        record.op.clear();
        return -1;
    }
    if (record.op != "~" && !ParseOperand(st, right, record.rightValue, record.rightKind)) {
        record.op.clear();
        return -1;
    }
    return result;
}

int64_t EvaluateCondition(Session& s, const ConditionRecord& c) {
    const int64_t l = OperandValue(s, c.leftValue, c.leftKind);
    if (l < 0) return -1;
    const int64_t r = OperandValue(s, c.rightValue, c.rightKind);
    if (r < 0) return -2;
    const std::string& op = c.op;
    if (op.size() == 1) {
        switch (op[0]) {
            case '+':
                return Checked(l + r);
            case '-':
                return Checked(l - r);
            case '*':
                return Checked(l * r);
            case '/': {
                if (r == 0) return -1;
                const auto q = RoundToInt32(static_cast<double>(l) / static_cast<double>(r));
                if (!q) throw RunTimeError("condition quotient overflows 32 bits");
                return *q;
            }
            case '&':
                return l & r;
            case '|':
                return l | r;
            case '~':
                return Complement(static_cast<int32_t>(l), 16);
            case '=':
                return l == r ? 1 : 0;
            case '<':
                return l < r ? 1 : 0;
            case '>':
                return l > r ? 1 : 0;
            default:
                return -1;
        }
    }
    if (op == "<=") return l <= r ? 1 : 0;
    if (op == ">=") return l >= r ? 1 : 0;
    if (op == "<>") return l != r ? 1 : 0;
    return -1;
}

}  // namespace vortelm::shell
