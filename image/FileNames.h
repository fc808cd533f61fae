#pragma once
// Names of image files made by the program.

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

namespace vortelm {

// The name with the address as six hexadecimal digits in front of its first
// "."; a name without "." gets ".hex" behind the digits.
[[nodiscard]] std::string IndexedFileName(std::string_view name, int32_t address);

// The local date and time as "YYYYMMDD_hhmmss": of now, or of the given time.
[[nodiscard]] std::string DateStamp();
[[nodiscard]] std::string DateStamp(std::time_t when);

}  // namespace vortelm
