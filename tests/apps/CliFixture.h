#pragma once
// vortelm-cli run as a user runs it: a fresh data home in a folder of its
// own, standard input from a file, standard output and error kept, the exit
// status.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace vortelm::testing {

struct Cli : ::testing::Test {
    std::string dir;
    std::string out, err;
    int status = -1;

    void SetUp() override {
        std::string t = (std::filesystem::temp_directory_path() / "vortelm-cli-XXXXXX").string();
        ASSERT_NE(::mkdtemp(t.data()), nullptr);
        dir = t;
    }
    void TearDown() override {
        std::error_code ec;
        std::filesystem::remove_all(dir, ec);
    }
    static std::string Read(const std::string& path) {
        std::ifstream f(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(f), {});
    }
    // Runs the program with a fresh home, the words and the input.
    void Run(const std::string& input, const std::string& words = "") {
        std::ofstream(dir + "/in", std::ios::binary) << input;
        const std::string cmd = std::string("cd '") + dir + "' && '" + VORTELM_CLI + "' --home '" +
                                dir + "/home' " + words + " <in >out 2>err";
        const int rc = std::system(cmd.c_str());
        status = WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
        out = Read(dir + "/out");
        err = Read(dir + "/err");
    }
};

}  // namespace vortelm::testing
