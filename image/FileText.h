#pragma once
// Whole-file access for the image readers and writers: a file mapped (or
// read) into memory at once and cut into lines, and an output file built in
// memory and written in one go. Lines end at CR, LF or CR LF.

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vortelm {

class FileBytes {
  public:
    // Opens the native file; nothing when it cannot be opened.
    static std::optional<FileBytes> Open(const std::string& nativeName);
    FileBytes(FileBytes&& other) noexcept;
    FileBytes& operator=(FileBytes&&) = delete;
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;
    ~FileBytes();

    [[nodiscard]] std::string_view bytes() const { return {data_, size_}; }

  private:
    FileBytes() = default;
    const char* data_ = nullptr;
    size_t size_ = 0;
    bool mapped_ = false;
    std::vector<char> copy_;
};

// Lines of a text, as the line input of the original reads them.
class LineCursor {
  public:
    explicit LineCursor(std::string_view text) : text_(text) {}
    [[nodiscard]] bool atEnd() const { return pos_ >= text_.size(); }
    // The next line without its end; call only when !atEnd().
    std::string_view next();
    // Where the next line starts.
    [[nodiscard]] size_t position() const { return pos_; }
    // Goes on at pos, a line start at or after position().
    void skipTo(size_t pos) { pos_ = pos; }

  private:
    std::string_view text_;
    size_t pos_ = 0;
    size_t nl_ = 0;  // the next line feed (or the end), once found
    bool nlKnown_ = false;
};

// Hexadecimal digit values, -1 for every other character.
struct HexDigits {
    int8_t v[256];
    constexpr HexDigits() : v() {
        for (int i = 0; i < 256; ++i) v[i] = -1;
        for (int i = 0; i < 10; ++i) v['0' + i] = static_cast<int8_t>(i);
        for (int i = 0; i < 6; ++i) {
            v['A' + i] = static_cast<int8_t>(10 + i);
            v['a' + i] = static_cast<int8_t>(10 + i);
        }
    }
};
inline constexpr HexDigits kHexDigits{};

// HexValue of the text of `count` characters from the 1-based column
// (shorter where the line ends), as a reader cuts its fields.
[[nodiscard]] inline int32_t HexField(std::string_view line, size_t column, size_t count) {
    if (column - 1 >= line.size()) return 0;
    const size_t n = std::min(count, line.size() - (column - 1));
    int32_t v = 0;
    for (size_t i = 0; i < n; ++i) {
        const int d = kHexDigits.v[static_cast<unsigned char>(line[column - 1 + i])];
        if (d < 0) return -1;
        v = v * 16 + d;
    }
    return v;
}

// Values of every pair of characters as they stand in memory (first
// character in the low byte): the byte they spell, or -1.
struct HexPairs {
    int16_t v[65536];
    constexpr HexPairs() : v() {
        for (int i = 0; i < 65536; ++i) {
            const int lo = kHexDigits.v[i & 0xFF];
            const int hi = kHexDigits.v[i >> 8];
            v[i] = static_cast<int16_t>((lo | hi) < 0 ? -1 : lo * 16 + hi);
        }
    }
};
inline constexpr HexPairs kHexPairs{};

#if defined(__SSE2__)
// Eight bytes from sixteen hexadecimal characters (upper or lower case), the
// first character of a pair the high digit, in the low half of bytes (and
// again in the high half). False when any of the sixteen is not a
// hexadecimal digit.
inline bool HexPack16(const char* p, __m128i& bytes) {
    const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    // Signed compares: characters from 0x80 on are negative and match nothing.
    const __m128i digit = _mm_and_si128(_mm_cmpgt_epi8(x, _mm_set1_epi8('0' - 1)),
                                        _mm_cmplt_epi8(x, _mm_set1_epi8('9' + 1)));
    const __m128i folded = _mm_or_si128(x, _mm_set1_epi8(0x20));
    const __m128i letter = _mm_and_si128(_mm_cmpgt_epi8(folded, _mm_set1_epi8('a' - 1)),
                                         _mm_cmplt_epi8(folded, _mm_set1_epi8('f' + 1)));
    if (_mm_movemask_epi8(_mm_or_si128(digit, letter)) != 0xFFFF) return false;
    // '0'-'9' keep their low four bits; 'A'-'F' and 'a'-'f' add nine to them.
    const __m128i nibble = _mm_add_epi8(_mm_and_si128(x, _mm_set1_epi8(0x0F)),
                                        _mm_and_si128(letter, _mm_set1_epi8(9)));
    // Each 16-bit lane holds a pair, the high digit in its low byte.
    const __m128i pairs =
        _mm_or_si128(_mm_slli_epi16(_mm_and_si128(nibble, _mm_set1_epi16(0x00FF)), 4),
                     _mm_srli_epi16(nibble, 8));
    bytes = _mm_packus_epi16(pairs, pairs);
    return true;
}

// The eight bytes of HexPack16 written to out; nothing written when false.
inline bool HexBytes16(const char* p, uint8_t* out) {
    __m128i bytes;
    if (!HexPack16(p, bytes)) return false;
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), bytes);
    return true;
}
#endif

// The sum of n bytes (for record checksums).
[[nodiscard]] inline unsigned ByteSum(const uint8_t* p, size_t n) {
    unsigned sum = 0;
    size_t i = 0;
#if defined(__SSE2__)
    for (; i + 16 <= n; i += 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
        const __m128i s = _mm_sad_epu8(v, _mm_setzero_si128());
        sum += static_cast<unsigned>(_mm_cvtsi128_si32(s) + _mm_extract_epi16(s, 4));
    }
#endif
    for (; i < n; ++i) sum += p[i];
    return sum;
}

// Decodes n bytes from 2n characters; a pair that is not hexadecimal gives
// 0xFF (the low byte of HexValue's -1).
inline void HexBytes(const char* p, uint8_t* out, size_t n) {
    size_t i = 0;
#if defined(__SSE2__)
    // Sixteen characters at a time while all are digits; a group with any
    // other character goes through the table below, pair by pair.
    for (; i + 8 <= n && HexBytes16(p, out + i); i += 8, p += 16) {
    }
#endif
    for (; i < n; ++i, p += 2) {
        const auto c = static_cast<uint16_t>(static_cast<unsigned char>(p[0]) |
                                             (static_cast<unsigned char>(p[1]) << 8));
        out[i] = static_cast<uint8_t>(kHexPairs.v[c]);
    }
}

// Decodes n bytes from 2n characters and adds them to sum, taken while they
// are in registers (summing them from memory right after the stores makes
// each load wait for the stores to land); false as soon as a pair is not
// hexadecimal, with the bytes before it written.
[[nodiscard]] inline bool HexBytesSummed(const char* p, uint8_t* out, size_t n, unsigned& sum) {
    size_t i = 0;
#if defined(__SSE2__)
    __m128i bytes;
    for (; i + 8 <= n && HexPack16(p, bytes); i += 8, p += 16) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + i), bytes);
        sum += static_cast<unsigned>(_mm_cvtsi128_si32(_mm_sad_epu8(bytes, _mm_setzero_si128())));
    }
#endif
    // The small table of digits: the pair table is too large to stay in
    // the nearest cache between records.
    for (; i < n; ++i, p += 2) {
        const int hi = kHexDigits.v[static_cast<unsigned char>(p[0])];
        const int lo = kHexDigits.v[static_cast<unsigned char>(p[1])];
        if ((hi | lo) < 0) return false;
        out[i] = static_cast<uint8_t>(hi * 16 + lo);
        sum += static_cast<unsigned>(hi * 16 + lo);
    }
    return true;
}

// Appends the value as upper-case hexadecimal, at least `width` digits.
inline void AppendHex(std::string& out, uint32_t value, int width) {
    static constexpr char digits[] = "0123456789ABCDEF";
    char buf[9];
    int n = 0;
    do {
        buf[n++] = digits[value & 0xF];
        value >>= 4;
    } while (value != 0 && n < 8);
    while (n < width) buf[n++] = '0';
    while (n > 0) out += buf[--n];
}

}  // namespace vortelm
