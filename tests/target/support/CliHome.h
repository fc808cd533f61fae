#pragma once
// A fresh data home with the delivered data, the running of vortelm-cli on
// it with lines on standard input, and vortelm-sim on a pseudo-terminal:
// what the end-to-end tests of the target operations share.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

namespace vortelm::testing {

// Over ::testing::Test, or over a TestWithParam for tests of each family.
template <class Base>
class CliHomeOn : public Base {
  protected:
    void SetUp() override {
        // a parameterised test's name holds a '/', which must not nest folders
        std::string name = ::testing::UnitTest::GetInstance()->current_test_info()->name();
        for (char& c : name)
            if (c == '/') c = '-';
        home = std::filesystem::temp_directory_path() /
               ("vortelm-cli-" + std::to_string(::getpid()) + "-" + name);
        std::filesystem::remove_all(home);
        std::filesystem::create_directories(home);
        std::filesystem::copy(std::filesystem::path(VORTELM_SOURCE_DIR) / "data", home,
                              std::filesystem::copy_options::recursive);
    }
    void TearDown() override { std::filesystem::remove_all(home); }

    // Sets the first line of the file that begins with the key; false when none does.
    bool editFile(const std::filesystem::path& p, const std::string& key,
                  const std::string& value) {
        std::ifstream in(p);
        std::stringstream out;
        std::string line;
        bool done = false;
        while (std::getline(in, line)) {
            if (!done && line.rfind(key, 0) == 0) {
                line = key + value;
                done = true;
            }
            out << line << "\n";
        }
        std::ofstream(p) << out.str();
        return done;
    }
    bool setPreference(const std::string& key, const std::string& value) {
        return editFile(home / "default.ini", key, value);
    }

    // Runs the CLI with the lines on standard input; the running text.
    std::string run(const std::string& port, const std::string& lines) {
        const auto in = home / "input.txt";
        std::ofstream(in) << lines;
        const std::string cmd = std::string(VORTELM_BINARY_DIR) +
                                "/apps/vortelm-cli/vortelm-cli --home '" + home.string() +
                                "' --port '" + port + "' < '" + in.string() + "' 2>&1";
        std::string out;
        if (FILE* p = ::popen(cmd.c_str(), "r")) {
            std::array<char, 4096> buf{};
            size_t n = 0;
            while ((n = std::fread(buf.data(), 1, buf.size(), p)) > 0) out.append(buf.data(), n);
            status = ::pclose(p);
        }
        return out;
    }

    // Runs the CLI against vortelm-sim on a pseudo-terminal, with a board of
    // that controller type.
    std::string runOnPty(const std::string& controller, const std::string& lines) {
        int toSim[2];
        int fromSim[2];
        if (::pipe(toSim) != 0 || ::pipe(fromSim) != 0) return "pipe failed";
        const std::string sim = std::string(VORTELM_BINARY_DIR) + "/apps/vortelm-sim/vortelm-sim";
        const pid_t child = ::fork();
        if (child < 0) return "fork failed";
        if (child == 0) {
            ::dup2(toSim[0], 0);
            ::dup2(fromSim[1], 1);
            ::close(toSim[1]);
            ::close(fromSim[0]);
            ::execl(sim.c_str(), sim.c_str(), "--flashtime", "0", "--controller",
                    controller.c_str(), static_cast<char*>(nullptr));
            ::_exit(127);
        }
        ::close(toSim[0]);
        ::close(fromSim[1]);
        std::string slave;
        char c = 0;
        while (::read(fromSim[0], &c, 1) == 1 && c != '\n') slave += c;
        std::string out = slave.empty() ? "vortelm-sim printed no slave path" : run(slave, lines);
        ::close(toSim[1]);  // the board program ends with its input
        ::close(fromSim[0]);
        int simStatus = 0;
        ::waitpid(child, &simStatus, 0);
        return out;
    }

    // 16-byte records from the address on, with the records' checksums.
    void writeImage(const std::string& name, int address, int records) {
        std::ofstream f(home / name);
        for (int r = 0; r < records; ++r) {
            const int a = address + 16 * r;
            int sum = 16 + ((a >> 8) & 0xFF) + (a & 0xFF);
            char buf[16];
            std::snprintf(buf, sizeof buf, ":10%04X00", a & 0xFFFF);
            f << buf;
            for (int i = 0; i < 16; ++i) {
                const int b = (r * 5 + 1 + i * 13) & 0xFF;
                sum += b;
                std::snprintf(buf, sizeof buf, "%02X", b);
                f << buf;
            }
            std::snprintf(buf, sizeof buf, "%02X", (-sum) & 0xFF);
            f << buf << "\n";
        }
        f << ":00000001FF\n";
    }

    std::filesystem::path home;
    int status = -1;
};

using CliHome = CliHomeOn<::testing::Test>;

}  // namespace vortelm::testing
