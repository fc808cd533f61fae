#pragma once
// How the rows of the file, hex editor and selection groups take their
// arguments: values by variable or hexadecimal, by variable or decimal, and
// file names under the base paths.

#include <cstdint>
#include <optional>
#include <string>

#include "core/Helpers.h"
#include "core/RunTimeError.h"
#include "shell/Session.h"

namespace vortelm::shell::rowargs {

// The variable a text names by the strict test: "%" and a number that
// rounds to 0 or more; nothing otherwise. There is no upper test here.
[[nodiscard]] inline std::optional<int32_t> StrictVariable(const std::string& text) {
    if (text.empty() || text.front() != '%') return std::nullopt;
    const auto v = NumericValue(std::string_view(text).substr(1));
    if (!v) return std::nullopt;
    const auto r = RoundToInt32(*v);
    if (!r || *r < 0) return std::nullopt;
    return *r;
}

[[nodiscard]] inline int32_t VariableValue(const Session& s, int32_t index) {
    CheckBound(index, static_cast<long long>(s.st.variables.size()) - 1, "variables");
    return s.st.variables[static_cast<size_t>(index)];
}

// A value by variable or hexadecimal (-1 for a text that is neither).
[[nodiscard]] inline int32_t ByVariableOrHex(const Session& s, int i) {
    const std::string& text = s.parsedParameters[i].text;
    if (auto v = StrictVariable(text)) return VariableValue(s, *v);
    return HexValue(text);
}

// A value by variable or decimal.
[[nodiscard]] inline int32_t ByVariableOrDecimal(const Session& s, int i) {
    const ParsedParameter& p = s.parsedParameters[i];
    if (p.isVariable != 0) return VariableValue(s, p.variable);
    if (p.isDecimal != 0) return p.decimal;
    return RoundToInt32(LeadingNumberValue(p.text)).value_or(0);
}

// The number value of a decimal argument.
[[nodiscard]] inline int32_t Decimal(const Session& s, int i) {
    const ParsedParameter& p = s.parsedParameters[i];
    if (p.isDecimal != 0) return p.decimal;
    const auto r = RoundToInt32(LeadingNumberValue(p.text));
    if (!r) throw RunTimeError("number " + p.text + " overflow");
    return *r;
}

// A 16-bit setting from a number; a larger number is an overflow.
[[nodiscard]] inline int16_t Word16(int32_t v) {
    if (v < -32768 || v > 32767) throw RunTimeError("number " + std::to_string(v) + " overflow");
    return static_cast<int16_t>(v);
}

}  // namespace vortelm::shell::rowargs
