#include "image/FileNames.h"

#include <cstdio>

#include "core/Helpers.h"

namespace vortelm {

std::string IndexedFileName(std::string_view name, int32_t address) {
    const auto dot = name.find('.');
    const std::string_view first = dot == std::string_view::npos ? name : name.substr(0, dot);
    const std::string second =
        dot == std::string_view::npos ? std::string(".hex") : std::string(name.substr(dot));
    return std::string(first) + HexText(address, 6) + second;
}

}  // namespace vortelm
