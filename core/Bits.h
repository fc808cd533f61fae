#pragma once
// Bit helpers of the expression evaluator, the dump modification and the
// shell's self-test. Values are 32-bit; widths are bit counts from 1 to 31.

#include <cstdint>

namespace vortelm {

// With rotate false: value divided by 2 to the power of count, truncated.
// With rotate true, count times: an odd value gets 2 to the power of width
// added, then it is halved. A count below 1 leaves the value as it is.
[[nodiscard]] int32_t RotateRight(int32_t value, int32_t count, bool rotate, int32_t width);

// With rotate false: value times 2 to the power of count. With rotate true,
// count times: doubled, plus 1 when the bit at position width is now set.
// The result is masked to width bits. The rotation is computed exactly for
// every count (bits above the width never overflow the value).
[[nodiscard]] int32_t RotateLeft(int32_t value, int32_t count, bool rotate, int32_t width);

// The inverse of the low width bits of the value; 0 for a width below 1.
[[nodiscard]] int32_t Complement(int32_t value, int32_t width);

}  // namespace vortelm
