#pragma once
// Shared pieces of the image tests: a state in a scratch folder, file
// helpers and a host with a scripted random source.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <deque>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "core/Host.h"
#include "core/ProgramState.h"
#include "image/Dump.h"

namespace vortelm::test {

class ScriptedHost : public Host {
public:
    std::deque<double> randoms;
    std::vector<int32_t> pages;
    int busyOn = 0;
    int busyOff = 0;
    double random() override {
        if (randoms.empty()) return 0.0;
        double v = randoms.front();
        randoms.pop_front();
        return v;
    }
    void gotoPage(int32_t page) override { pages.push_back(page); }
    void setBusy(bool busy) override { (busy ? busyOn : busyOff)++; }
};

class ImageTest : public ::testing::Test {
protected:
    void SetUp() override {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        dir = std::filesystem::temp_directory_path() /
              ("vortelm-image-" + std::to_string(::getpid()) + "-" + info->test_suite_name() + "-" +
               info->name());
        std::filesystem::remove_all(dir);
        std::filesystem::create_directories(dir / "home");
        std::filesystem::create_directories(dir / "load");
        std::filesystem::create_directories(dir / "save");
        host = std::make_unique<ScriptedHost>();
        st = std::make_unique<ProgramState>(*host);
        st->programFolder = (dir / "home").string();
        st->PATH_LOAD = (dir / "load").string();
        st->PATH_SAVE = (dir / "save").string();
        InitDumpMemory(st->dump);
    }
    void TearDown() override {
        st.reset();
        std::filesystem::remove_all(dir);
    }

    std::string path(const std::string& rel) const { return (dir / rel).string(); }

    static void WriteFile(const std::string& p, const std::string& bytes) {
        std::ofstream f(p, std::ios::binary | std::ios::trunc);
        f << bytes;
    }
    static std::string ReadFile(const std::string& p) {
        std::ifstream f(p, std::ios::binary);
        std::stringstream ss;
        ss << f.rdbuf();
        return ss.str();
    }
    // The running text made since the last call.
    std::string takeText() {
        std::string t = st->terminalBuffer.substr(seen);
        seen = st->terminalBuffer.size();
        return t;
    }

    std::filesystem::path dir;
    std::unique_ptr<ScriptedHost> host;
    std::unique_ptr<ProgramState> st;
    size_t seen = 0;
};

}  // namespace vortelm::test
