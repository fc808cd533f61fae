#pragma once
// A whole program on a fresh data home, on the virtual clock, talking to the
// in-process board: each test runs command lines as the command box does and
// reads the running text.

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "apps/SimOpener.h"
#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "shell/Program.h"
#include "tests/support/IntelHex.h"

namespace vortelm::testing {

struct FamilyCase {
    const char* mctype;
    const char* kernel;
    const char* unit;    // the internal flash unit
    int32_t flashStart;  // its first address
    int32_t sectorSize;  // size of its equal sectors (after the first)
    uint8_t blank;
    const char* memFile;  // its memory definition under MEMDEF
};

inline const FamilyCase kFamilyCases[] = {
    {"ALD7RK_BB", "ALD4_DEFAULT", "IFLASH", 0x020000, 0x10000, 0xFF, "LD7RK.MEM"},
    {"ZTA9Y_BB", "ZTA9Y_DEFAULT", "IFLASH", 0xC00000, 0x4000, 0xFF, "ZTA9Y.MEM"},
    {"ZT7000_BB", "ZT7000_DEFAULT", "IFLASH", 0xC00000, 0x10000, 0x00, "ZT7000.MEM"},
};

// The name of a parameterised case.
inline std::string FamilyName(const ::testing::TestParamInfo<FamilyCase>& i) {
    return i.param.mctype;
}

// Puts the family's delivered memory definition into the [Memory] section
// of the data home's default.ini, as the configuration dialog does when the
// controller type changes, and sets the controller type and kernel.
inline void UseFamily(const std::string& home, const FamilyCase& f) {
    std::ifstream mem(home + "/MEMDEF/" + f.memFile);
    std::string units;
    std::string line;
    while (std::getline(mem, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!line.empty() && line.front() == '[')
            line = "NAME=" + line.substr(1, line.find(']') - 1);
        units += line + "\n";
    }
    std::ifstream in(home + "/default.ini");
    std::string out;
    bool inMemory = false;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!line.empty() && line.front() == '[') {
            inMemory = line == "[Memory]";
            out += line + "\n";
            if (inMemory) out += units + "\n";
            continue;
        }
        if (inMemory) continue;
        if (line.rfind("MCTYPE=", 0) == 0) line = std::string("MCTYPE=") + f.mctype;
        if (line.rfind("KERNEL=", 0) == 0) line = std::string("KERNEL=") + f.kernel;
        out += line + "\n";
    }
    in.close();
    std::ofstream(home + "/default.ini") << out;
}

inline std::vector<uint8_t> Pattern(size_t n, int seed) {
    std::vector<uint8_t> v(n);
    for (size_t i = 0; i < n; ++i)
        v[i] = static_cast<uint8_t>((seed + i * 37 + (i >> 8) * 11) & 0xFF);
    return v;
}

class FlashProgramTest : public ::testing::Test {
  protected:
    void SetUp() override {
        char tmpl[] = "/tmp/vortelm-flash-XXXXXX";
        const char* dir = ::mkdtemp(tmpl);
        ASSERT_NE(dir, nullptr);
        home = dir;
        std::filesystem::copy(std::filesystem::path(VORTELM_SOURCE_DIR) / "data", home,
                              std::filesystem::copy_options::recursive);
    }
    void TearDown() override {
        program.reset();
        std::error_code ec;
        std::filesystem::remove_all(home, ec);
    }

    void setPreference(const std::string& key, const std::string& value) {
        const std::string path = home + "/default.ini";
        std::ifstream in(path);
        std::stringstream out;
        std::string line;
        bool done = false;
        while (std::getline(in, line)) {
            if (!done && line.rfind(key + "=", 0) == 0) {
                line = key + "=" + value;
                done = true;
            }
            out << line << "\n";
        }
        if (!done) out << key << "=" << value << "\n";
        in.close();
        std::ofstream(path) << out.str();
    }

    // Starts the program on the family with the port text.
    void start(const FamilyCase& f, const std::string& port = "sim:") {
        family = &f;
        UseFamily(home, f);
        shell::ProgramOptions o;
        o.home = home;
        o.portOverride = port;
        apps::AddSimOpener(o.openers);
        program = std::make_unique<shell::Program>(host, o);
        program->StartUp();
    }

    void writeFile(const std::string& name, const std::string& text) const {
        std::ofstream(home + "/" + name, std::ios::binary) << text;
    }

    // Runs a line; the running text it made.
    std::string run(const std::string& line) {
        const size_t from = host.terminal.size();
        result = program->RunCommandBoxLine(line);
        return host.terminal.substr(from);
    }

    ProgramState& st() { return program->state(); }

    static bool has(const std::string& text, const std::string& what) {
        return text.find(what) != std::string::npos;
    }

    std::string home;
    TestHost host;
    std::unique_ptr<shell::Program> program;
    const FamilyCase* family = nullptr;
    int16_t result = 0;
};

}  // namespace vortelm::testing
