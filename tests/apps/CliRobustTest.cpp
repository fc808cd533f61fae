// vortelm-cli when the board misbehaves: a board that goes silent after the
// connect is reported lost by the connection check while the program waits
// for input, and the next line still runs; a failed target command names
// itself and its code on standard error; after any failure the lines behind
// it run.

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace fs = std::filesystem;

namespace {

struct CliRobust : ::testing::Test {
    std::string dir;

    void SetUp() override {
        std::string t = (fs::temp_directory_path() / "vortelm-robust-XXXXXX").string();
        ASSERT_NE(::mkdtemp(t.data()), nullptr);
        dir = t;
    }
    void TearDown() override {
        std::error_code ec;
        fs::remove_all(dir, ec);
    }
    static std::string Read(const std::string& path) {
        std::ifstream f(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(f), {});
    }
    // All input at once; standard output and standard error apart.
    int Run(const std::string& port, const std::string& input, std::string& out, std::string& err) {
        std::ofstream(dir + "/in", std::ios::binary) << input;
        const std::string cmd = std::string("'") + VORTELM_CLI + "' --home '" + dir +
                                "/home' --port '" + port + "' <'" + dir + "/in' >'" + dir +
                                "/out' 2>'" + dir + "/err'";
        const int rc = std::system(cmd.c_str());
        out = Read(dir + "/out");
        err = Read(dir + "/err");
        return WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
    }
};

// Reads from fd until the text has come or the guard runs out (a guard
// against a hang, not a measure of speed).
bool ReadUntil(int fd, std::string& got, const std::string& wanted, int guardSeconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(guardSeconds);
    while (got.find(wanted) == std::string::npos) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            end - std::chrono::steady_clock::now());
        if (left.count() <= 0) return false;
        pollfd p{fd, POLLIN, 0};
        if (::poll(&p, 1, static_cast<int>(left.count())) <= 0) continue;
        char buf[4096];
        const ssize_t n = ::read(fd, buf, sizeof buf);
        if (n <= 0) return false;
        got.append(buf, static_cast<size_t>(n));
    }
    return true;
}

TEST_F(CliRobust, SilentBoardAfterConnectIsReportedLostAndTheNextLineRuns) {
    // The board stops answering at its seventh monitor command: the connect
    // and its reports are done by then, and the first test of the check
    // meets silence.
    int in[2], out[2];
    ASSERT_EQ(::pipe(in), 0);
    ASSERT_EQ(::pipe(out), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        ::dup2(in[0], 0);
        ::dup2(out[1], 1);
        ::close(in[1]);
        ::close(out[0]);
        const std::string home = dir + "/home";
        ::execl(VORTELM_CLI, VORTELM_CLI, "--home", home.c_str(), "--port", "sim:?fault=die@7",
                static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(in[0]);
    ::close(out[1]);
    auto say = [&](const std::string& line) {
        return ::write(in[1], line.data(), line.size()) == ssize_t(line.size());
    };
    std::string got;
    ASSERT_TRUE(say("_connect NOPROMPT\n"));
    const bool launched = ReadUntil(out[0], got, "*Vortelm successfully launched", 60);
    const bool lost = launched && ReadUntil(out[0], got, "Connection to target lost !", 60);
    const bool next = lost && say("_test\n") && ReadUntil(out[0], got, ">_test", 60);
    ::close(in[1]);
    std::string rest;
    (void)ReadUntil(out[0], rest, "\x01", 60);  // to the end of output
    ::close(out[0]);
    int status = 0;
    pid_t ended = 0;
    for (int i = 0; i < 200 && (ended = ::waitpid(child, &status, WNOHANG)) == 0; ++i)
        ::usleep(50'000);
    if (ended == 0) {
        ::kill(child, SIGKILL);
        ::waitpid(child, &status, 0);
        ADD_FAILURE() << "vortelm-cli did not end with its input";
    }
    EXPECT_TRUE(launched) << got;
    EXPECT_TRUE(lost) << got;
    EXPECT_TRUE(next) << got;
    EXPECT_TRUE(WIFEXITED(status))
        << "ended by signal " << (WIFSIGNALED(status) ? WTERMSIG(status) : 0);
    // Once: in state 0 the check no longer runs.
    const size_t at = got.find("Connection to target lost !");
    EXPECT_EQ((got + rest).find("Connection to target lost !", at + 1), std::string::npos);
}

TEST_F(CliRobust, FailedWordCommandsNameThemselvesOnStandardErrorAndTheNextLinesRun) {
    std::string out, err;
    // The board dies at its fifth command after the seven of the connect
    // (reset report and initialisation), in the middle of the word commands.
    const int rc =
        Run("sim:?fault=die@12",
            "_connect NOPROMPT\n_w16 100000,1234\n_r16 100000\n_mov 100002,55AA\n_r16 100002\n"
            "_w16 100004,1\n_r16 100004\n_mov 100006,1\n_test\n",
            out, err);
    EXPECT_NE(out.find("*100000: 1234"), std::string::npos) << out;
    EXPECT_NE(out.find("*100002: 55AA"), std::string::npos) << out;
    EXPECT_NE(out.find(">_mov 100006,1"), std::string::npos) << out;
    EXPECT_NE(out.find(">_test"), std::string::npos) << out;
    EXPECT_EQ(rc, 0) << "the last line succeeded";
    // Lines that failed without words of their own are named with their code
    // (the last failure of the exchange wins: a dead board misses ACK2 last).
    EXPECT_NE(err.find("vortelm-cli: _w16 100004,1: failed with code -"), std::string::npos) << err;
    EXPECT_NE(err.find("vortelm-cli: _r16 100004: failed with code -"), std::string::npos) << err;
    EXPECT_NE(err.find("vortelm-cli: _mov 100006,1: failed with code -2\n"), std::string::npos)
        << err;
    EXPECT_EQ(err.find("vortelm-cli: _test"), std::string::npos) << err;
    EXPECT_EQ(err.find("vortelm-cli: _connect"), std::string::npos) << err;
}

TEST_F(CliRobust, EveryFaultKindLetsTheLaterLinesRun) {
    for (const char* fault :
         {"drop@40", "flip@60", "stall@50", "wrongack@4", "reset@5", "die@4", "hangup@4"}) {
        SCOPED_TRACE(fault);
        std::string out, err;
        (void)Run(std::string("sim:?fault=") + fault,
                  "_connect NOPROMPT\n_r16 F07E\n_w16 E000,1\n_r16 E000\n_test\n", out, err);
        for (const char* line : {">_r16 F07E", ">_w16 E000,1", ">_r16 E000", ">_test"})
            EXPECT_NE(out.find(line), std::string::npos) << line << "\n" << out;
    }
}

}  // namespace
