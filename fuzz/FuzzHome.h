#pragma once
// A data home for one fuzz process: the input is written to a file in a
// temporary program folder, since the readers read files by name.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

namespace vortelm::fuzz {

inline const std::string& Home() {
    static const std::string dir = [] {
        std::string d = (std::filesystem::temp_directory_path() /
                         ("vortelm-fuzz-" + std::to_string(::getpid())))
                            .string();
        std::filesystem::create_directories(d);
        return d;
    }();
    return dir;
}

inline std::string WriteInput(const std::string& name, const uint8_t* data, size_t size) {
    const std::string path = Home() + "/" + name;
    std::ofstream f(path, std::ios::binary | std::ios::trunc);
    f.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    return path;
}

}  // namespace vortelm::fuzz
