#pragma once
// Intel HEX text for tests: one record, or a whole file of bytes with the
// extended linear records where the upper address changes.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <iterator>
#include <string>
#include <vector>

namespace vortelm::testing {

// A record of the bytes (any range of small integers) at the low 16 bits of
// the address, of the type (0 data, 4 extended linear address), with its
// checksum and a line end.
template <class Bytes>
std::string HexRecord(int32_t address, const Bytes& bytes, int type = 0) {
    const auto n = static_cast<int>(std::size(bytes));
    int sum = n + ((address >> 8) & 0xFF) + (address & 0xFF) + type;
    char buf[16];
    std::snprintf(buf, sizeof buf, ":%02X%04X%02X", static_cast<unsigned>(n),
                  static_cast<unsigned>(address & 0xFFFF), static_cast<unsigned>(type));
    std::string s = buf;
    for (const auto b : bytes) {
        sum += static_cast<int>(b);
        std::snprintf(buf, sizeof buf, "%02X", static_cast<unsigned>(b) & 0xFF);
        s += buf;
    }
    std::snprintf(buf, sizeof buf, "%02X\n", static_cast<unsigned>(-sum) & 0xFF);
    return s + buf;
}

inline std::string HexRecord(int32_t address, std::initializer_list<int> bytes, int type = 0) {
    return HexRecord<std::initializer_list<int>>(address, bytes, type);
}

// A whole file: extended linear records, 16-byte data records, end record.
inline std::string IntelHex(int32_t address, const std::vector<uint8_t>& bytes) {
    std::string out;
    int32_t upper = -1;
    for (size_t i = 0; i < bytes.size(); i += 16) {
        const int32_t a = address + static_cast<int32_t>(i);
        if ((a >> 16) != upper) {
            upper = a >> 16;
            out += HexRecord(0, std::vector<int>{upper >> 8, upper & 0xFF}, 4);
        }
        const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(i);
        out += HexRecord(
            a, std::vector<uint8_t>(from, from + static_cast<std::ptrdiff_t>(
                                                     std::min<size_t>(16, bytes.size() - i))));
    }
    return out + ":00000001FF\n";
}

}  // namespace vortelm::testing
