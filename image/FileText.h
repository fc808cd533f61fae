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

  private:
    std::string_view text_;
    size_t pos_ = 0;
    size_t nl_ = 0;  // the next line feed (or the end), once found
    bool nlKnown_ = false;
};

// A file written at given positions (replacing an old one).
class FileOut {
  public:
    explicit FileOut(const std::string& nativeName);
    ~FileOut();
    FileOut(const FileOut&) = delete;
    FileOut& operator=(const FileOut&) = delete;
    [[nodiscard]] bool isOpen() const { return fd_ >= 0; }
    [[nodiscard]] bool writeAt(uint64_t position, std::string_view bytes);
    [[nodiscard]] bool close();

  private:
    int fd_;
};

// Writes the whole text to the native file, replacing it. False on failure.
[[nodiscard]] bool WriteWholeFile(const std::string& nativeName, std::string_view text);

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

// Decodes n bytes from 2n characters; a pair that is not hexadecimal gives
// 0xFF (the low byte of HexValue's -1).
inline void HexBytes(const char* p, uint8_t* out, size_t n) {
    for (size_t i = 0; i < n; ++i, p += 2) {
        const auto c = static_cast<uint16_t>(static_cast<unsigned char>(p[0]) |
                                             (static_cast<unsigned char>(p[1]) << 8));
        out[i] = static_cast<uint8_t>(kHexPairs.v[c]);
    }
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
