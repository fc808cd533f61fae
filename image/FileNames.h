#pragma once
// Names of image files made by the program.

#include <cstdint>
#include <string>
#include <string_view>

namespace vortelm {

// The name with the address as six hexadecimal digits in front of its first
// "."; a name without "." gets ".hex" behind the digits.
[[nodiscard]] std::string IndexedFileName(std::string_view name, int32_t address);

}  // namespace vortelm
