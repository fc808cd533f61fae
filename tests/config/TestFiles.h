#pragma once
// A fresh data home per test: a temporary program folder with files the
// test writes, and a state whose program folder it is.

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "core/ProgramState.h"

namespace vortelm::testing {

class DataHome {
public:
    DataHome() {
        char tmpl[] = "/tmp/vortelm-config-XXXXXX";
        dir_ = ::mkdtemp(tmpl);
        st = std::make_unique<ProgramState>();
        st->programFolder = dir_;
        st->PATH_LOAD = st->PATH_SAVE = st->PATH_SCRIPT = st->PATH_LOG = dir_;
    }
    ~DataHome() { std::filesystem::remove_all(dir_); }
    DataHome(const DataHome&) = delete;
    DataHome& operator=(const DataHome&) = delete;

    [[nodiscard]] std::string path(const std::string& name) const { return dir_ + "/" + name; }
    void write(const std::string& name, const std::string& text) const {
        std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
        std::ofstream f(path(name), std::ios::binary);
        f << text;
    }
    [[nodiscard]] std::string read(const std::string& name) const {
        std::ifstream f(path(name), std::ios::binary);
        std::ostringstream s;
        s << f.rdbuf();
        return s.str();
    }
    [[nodiscard]] const std::string& dir() const { return dir_; }

    std::unique_ptr<ProgramState> st;

private:
    std::string dir_;
};

}  // namespace vortelm::testing
