#include "core/Bits.h"

#include <algorithm>

namespace vortelm {

namespace {
int32_t ClampWidth(int32_t width) {
    return std::clamp(width, 0, 31);
}
}  // namespace

int32_t RotateRight(int32_t value, int32_t count, bool rotate, int32_t width) {
    if (count < 1) return value;
    width = ClampWidth(width);
    int64_t v = value;
    if (!rotate) {
        if (count >= 63) return 0;
        // Division truncates towards zero, as the integer division does.
        const int64_t d = int64_t{1} << count;
        return static_cast<int32_t>(v / d);
    }
    // After 64 steps every bit above the width has left the value, and from
    // then on the low bits only turn round with the period of the width.
    int64_t n = count;
    if (n > 64 && width > 0) n = 64 + (n - 64) % width;
    const int64_t top = int64_t{1} << width;
    for (int64_t i = 0; i < n; ++i) {
        if (v & 1) v += top;
        v /= 2;
    }
    return static_cast<int32_t>(v);
}

int32_t RotateLeft(int32_t value, int32_t count, bool rotate, int32_t width) {
    width = ClampWidth(width);
    const int64_t mask = (int64_t{1} << width) - 1;
    int64_t v = value;
    if (count < 1) return static_cast<int32_t>(v & mask);
    if (!rotate) {
        if (count >= 32) return 0;
        return static_cast<int32_t>((static_cast<uint64_t>(v) << count) &
                                    static_cast<uint64_t>(mask));
    }
    // Only the low bits and the bit at the width decide the result, so the
    // value is kept to width + 1 bits between the steps.
    const int64_t keep = (int64_t{1} << (width + 1)) - 1;
    v &= keep;
    int64_t n = width > 0 ? 1 + (count - 1) % width : 0;
    if (count <= width) n = count;
    for (int64_t i = 0; i < n; ++i) {
        v *= 2;
        if ((v >> width) & 1) v += 1;
        v &= keep;
    }
    return static_cast<int32_t>(v & mask);
}

int32_t Complement(int32_t value, int32_t width) {
    if (width < 1) return 0;
    width = ClampWidth(width);
    int64_t sum = 0;
    for (int32_t i = 0; i < width; ++i) {
        const int64_t bit = (int64_t{value} >> i);
        sum += ((1 - bit) & 1) << i;
    }
    return static_cast<int32_t>(sum);
}

}  // namespace vortelm
