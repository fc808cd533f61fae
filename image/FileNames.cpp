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

std::string DateStamp(std::time_t when) {
    std::tm t{};
    localtime_r(&when, &t);
    char buf[32];
    std::snprintf(buf, sizeof buf, "%04d%02d%02d_%02d%02d%02d", t.tm_year + 1900, t.tm_mon + 1,
                  t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec);
    return buf;
}

std::string DateStamp() { return DateStamp(std::time(nullptr)); }

}  // namespace vortelm
