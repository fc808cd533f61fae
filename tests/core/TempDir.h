#pragma once
// A fresh folder for one test, removed at its end.

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace vortelm::testing {

struct TempDir {
    TempDir() {
        std::string tmpl =
            (std::filesystem::temp_directory_path() / "vortelm-test-XXXXXX").string();
        if (::mkdtemp(tmpl.data()) == nullptr) std::abort();
        path = tmpl;
    }
    ~TempDir() {
        std::error_code ec;
        std::filesystem::remove_all(path, ec);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    [[nodiscard]] std::string file(const std::string& name) const { return path + "/" + name; }
    void write(const std::string& name, const std::string& content) const {
        std::filesystem::create_directories(std::filesystem::path(file(name)).parent_path());
        std::ofstream(file(name), std::ios::binary) << content;
    }
    [[nodiscard]] std::string read(const std::string& name) const {
        std::ifstream f(file(name), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(f), {});
    }
    [[nodiscard]] bool exists(const std::string& name) const {
        return std::filesystem::exists(file(name));
    }

    std::string path;
};

}  // namespace vortelm::testing
