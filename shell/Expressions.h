#pragma once
// The hundred script variables and the two small evaluators: the one of
// _assign (EvaluateExpression, on text at run time, 24-bit results, knows
// TIMER, RND8 and RND16) and the one of IF, WHILE and LOOP UNTIL
// (ParseCondition when the script is loaded, EvaluateCondition each time the
// statement is reached, no masks, comparisons). An expression is one operand,
// or two operands and one operator; there is no precedence and there are no
// parentheses. Numbers are hexadecimal without prefix, six digits at most.

#include <cstdint>
#include <string>
#include <string_view>

#include "shell/Session.h"

namespace vortelm::shell {

// What an operand of a condition is.
enum OperandKind : int32_t { kConstant = 0, kVariable = 1, kSfr = 2 };

// A parsed condition: each side a constant, a variable's index or an SFR's
// index; the operator as one or two characters (empty when the text could
// not be parsed, which no evaluation takes as true).
struct ConditionRecord {
    int32_t leftValue = 0;
    int32_t leftKind = kConstant;
    std::string op = "+";
    int32_t rightValue = 0;
    int32_t rightKind = kConstant;
};

// "%" and a number that rounds to 0 or more gives that number, with no
// upper test (%100 gives 100; using it meets the bound of the variables).
// Anything else gives -1.
[[nodiscard]] int32_t VariableIndex(std::string_view text);

// The value of variable index, or RunTimeError past the last variable.
[[nodiscard]] int32_t VariableAt(const ProgramState& st, int32_t index);
void SetVariable(ProgramState& st, int32_t index, int32_t value);

[[nodiscard]] bool IsArithmeticOperator(char c);
[[nodiscard]] bool IsComparisonOperator(std::string_view text);

// An SFR's word read from the target now: -1 when not connected, -2 when
// the read failed. The two bytes land in the dump memory.
[[nodiscard]] int32_t ReadSfrValue(Session& s, int32_t sfrIndex);

// The value (0 or more) of an _assign right side, or -1 for any failure.
[[nodiscard]] int32_t EvaluateExpression(Session& s, std::string_view text);
// Runs "<variable or SFR>=<expression>": 0, or -1 when nothing changed.
[[nodiscard]] int32_t AssignExpression(Session& s, std::string_view text);

// Cleans text in place (blanks out, upper case) and parses it: 1 when no
// operator was found, 2 when one was, -1 for a bad operand.
[[nodiscard]] int32_t ParseCondition(const ProgramState& st, std::string& text,
                                     ConditionRecord& record);
// The condition's number; the statement's condition holds only for exactly
// 1. An arithmetic result past 32 bits is a RunTimeError.
[[nodiscard]] int64_t EvaluateCondition(Session& s, const ConditionRecord& record);

}  // namespace vortelm::shell
