// vortelm-cli as a tool of the system: clean lines, --quiet, --log,
// --list-ports, the progress bar and Ctrl-C.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "apps/vortelm-cli/CliText.h"
#include "tests/support/IntelHex.h"

namespace fs = std::filesystem;
using vortelm::cli::CleanLines;
using vortelm::cli::IsCommandEcho;
using vortelm::cli::ProgressBar;
using vortelm::testing::IntelHex;

extern char** environ;

namespace {

// ---- the text on its way out

TEST(CleanLines, EchoAfterAnOpenReportStartsANewLine) {
    CleanLines c;
    std::string out = c.feed("*Download:  300 bytes ");
    out += c.feed(">_compare\r\n");
    out += c.feed("*Compare:  300 bytes \r\n");
    EXPECT_EQ(out, "*Download:  300 bytes \n>_compare\n*Compare:  300 bytes \n");
    EXPECT_EQ(c.finish(), "");
}

TEST(CleanLines, EchoAfterAClosedLineGetsNoBlankLine) {
    CleanLines c;
    std::string out = c.feed("*Upload:  16 bytes \r\n");
    out += c.feed(">_test\r\n");
    EXPECT_EQ(out, "*Upload:  16 bytes \n>_test\n");
}

TEST(CleanLines, CrLfSplitAcrossPieces) {
    CleanLines c;
    std::string out = c.feed("abc\r");
    EXPECT_FALSE(c.atLineStart());
    out += c.feed("\n>_x\r\n");
    EXPECT_EQ(out, "abc\n>_x\n");
}

TEST(CleanLines, LoneCarriageReturnStays) {
    CleanLines c;
    EXPECT_EQ(c.feed("a\rb"), "a\rb");
    EXPECT_EQ(c.feed("c\r"), "c");
    EXPECT_EQ(c.feed("d"), "\rd");
    EXPECT_EQ(c.finish(), "\n");
}

TEST(CleanLines, OutputEndsWithALineEnd) {
    CleanLines c;
    EXPECT_EQ(c.feed("Connection to target lost !"), "Connection to target lost !");
    EXPECT_EQ(c.finish(), "\n");
    EXPECT_EQ(c.finish(), "");
    CleanLines held;
    EXPECT_EQ(held.feed("x\r"), "x");
    EXPECT_EQ(held.finish(), "\n");
    CleanLines empty;
    EXPECT_EQ(empty.finish(), "");
}

TEST(CleanLines, QuietDropsOnlyEchoes) {
    CleanLines c(true);
    EXPECT_EQ(c.feed(">_test\r\n"), "");
    EXPECT_EQ(c.feed("38F00A\r\n"), "38F00A\n");
    EXPECT_EQ(c.feed("\r\n-> SENDING: hello"), "\n-> SENDING: hello");
}

TEST(CleanLines, WhatCountsAsAnEcho) {
    EXPECT_TRUE(IsCommandEcho(">_help\r\n"));
    EXPECT_FALSE(IsCommandEcho(">_help"));
    EXPECT_FALSE(IsCommandEcho(">_a\r\nb\r\n"));
    EXPECT_FALSE(IsCommandEcho("*Download:  1 bytes \r\n"));
    EXPECT_FALSE(IsCommandEcho(""));
}

TEST(ProgressBar, LineShowsBytesPercentAndRate) {
    EXPECT_EQ(ProgressBar::Line(512, 1024, 1'000'000),
              "[###############...............] 512/1024 bytes  50% 512 B/s");
    EXPECT_EQ(ProgressBar::Line(2048, 2048, 1'000'000),
              "[##############################] 2048/2048 bytes 100% 2.0 KiB/s");
    EXPECT_EQ(ProgressBar::Line(0, 10, 0), "[..............................] 0/10 bytes   0% -");
    // Out-of-range reports stay inside the bar.
    EXPECT_EQ(ProgressBar::Line(20, 10, 1'000'000).substr(0, 32),
              "[##############################]");
    EXPECT_EQ(ProgressBar::Line(5, 0, 1'000'000).substr(0, 32), "[##############################]");
}

TEST(ProgressBar, AtMostTenDrawingsASecond) {
    ProgressBar bar;
    int drawn = 0;
    // A report every millisecond for two seconds.
    for (int64_t t = 0; t < 2'000'000; t += 1000)
        if (bar.update(t / 1000 + 1, 2000, t)) ++drawn;
    EXPECT_GE(drawn, 19);
    EXPECT_LE(drawn, 20);
    auto end = bar.update(0, 0, 2'000'000);
    ASSERT_TRUE(end.has_value());
    EXPECT_EQ(*end, "\r\033[K");
}

TEST(ProgressBar, NothingToClearWhenNothingWasDrawn) {
    ProgressBar bar;
    EXPECT_FALSE(bar.update(0, 0, 0).has_value());
    auto first = bar.update(1, 4, 10);
    ASSERT_TRUE(first.has_value());
    EXPECT_EQ(first->rfind("\r[", 0), 0u);
    EXPECT_FALSE(bar.update(2, 4, 20).has_value());
}

// ---- the program

struct Manners : ::testing::Test {
    std::string dir;

    void SetUp() override {
        std::string t = (fs::temp_directory_path() / "vortelm-manners-XXXXXX").string();
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
    struct Result {
        int status = -1;
        std::string out, err;
    };
    Result Run(const std::string& input, const std::string& words) {
        std::ofstream(dir + "/in", std::ios::binary) << input;
        const std::string cmd = std::string("cd '") + dir + "' && '" + VORTELM_CLI + "' --home '" +
                                dir + "/home' " + words + " <in >out 2>err";
        const int rc = std::system(cmd.c_str());
        Result r;
        r.status = WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
        r.out = Read(dir + "/out");
        r.err = Read(dir + "/err");
        return r;
    }
    // An Intel HEX file of n bytes at 100000 (external RAM of the default board).
    std::string WriteHex(int n) {
        std::string path = dir + "/big.hex";
        std::vector<uint8_t> bytes;
        for (int a = 0; a < n; ++a)
            bytes.push_back(static_cast<uint8_t>((a - a % 16) + (a % 16) * 7));
        std::ofstream(path) << IntelHex(0x100000, bytes);
        return path;
    }
};

TEST_F(Manners, EchoOfTheNextCommandStartsItsOwnLine) {
    // "-> SENDING: hello" is a report without its line end; the echo of
    // the next command used to follow on the same line.
    const Result r = Run("hello\n_test\n", "--port sim:");
    EXPECT_NE(r.out.find("\n-> SENDING: hello\n>_test\n38F00A\n"), std::string::npos) << r.out;
    ASSERT_FALSE(r.out.empty());
    EXPECT_EQ(r.out.back(), '\n');
}

TEST_F(Manners, QuietDropsTheEchoes) {
    const Result r = Run("_test\n_nothing\n", "--quiet");
    EXPECT_EQ(r.out, "38F00A\n*ERROR: Illegal command\n");
    EXPECT_EQ(r.status, 1);
}

TEST_F(Manners, LogHoldsTheRunningTextAsWell) {
    const Result r = Run("_test\n", "--quiet --log run.log");
    EXPECT_EQ(r.out, "38F00A\n");
    EXPECT_EQ(Read(dir + "/run.log"), ">_test\n38F00A\n");
    // Started anew each run.
    (void)Run("_nothing\n", "--log run.log");
    EXPECT_EQ(Read(dir + "/run.log"), ">_nothing\n*ERROR: Illegal command\n");
}

TEST_F(Manners, LogThatCannotBeWrittenIsBadUsage) {
    const Result r = Run("_test\n", "--log no/such/folder/run.log");
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("cannot write the log file no/such/folder/run.log"), std::string::npos);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(Run("", "--log").status, 2);
}

TEST_F(Manners, ListPortsNamesTheVirtualBoard) {
    const Result r = Run("", "--list-ports");
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.out.find("sim:"), std::string::npos);
    // One port a line, nothing else.
    EXPECT_EQ(r.out.back(), '\n');
    EXPECT_EQ(r.out.find(">"), std::string::npos);
    EXPECT_FALSE(fs::exists(dir + "/home/default.ini"));
}

TEST_F(Manners, HelpDocumentsEveryOptionAndStatus) {
    const Result r = Run("", "--help");
    for (const char* word : {"--home", "--port", "--yes", "--no", "--quiet", "--log",
                             "--list-ports", "--help", "--version", "Exit status", "130", "Ctrl-C"})
        EXPECT_NE(r.out.find(word), std::string::npos) << word;
}

TEST_F(Manners, NoProgressWhenStandardErrorIsNoTerminal) {
    const std::string hex = WriteHex(2048);
    const Result r =
        Run("_connect NOPROMPT\n_load " + hex + "\n_download\n_upload\n", "--port sim:");
    EXPECT_NE(r.out.find("*Upload:  2048 bytes \n"), std::string::npos) << r.out;
    EXPECT_EQ(r.err.find("bytes"), std::string::npos) << r.err;
    EXPECT_EQ(r.err.find('\r'), std::string::npos);
}

TEST_F(Manners, BootEntryConnectsARunningBoardWiredForIt) {
    for (const char* seq : {"rts-reset-dtr-boot", "rts-reset-dtr-boot-inverted",
                            "dtr-reset-rts-boot", "dtr-reset-rts-boot-inverted"}) {
        SCOPED_TRACE(seq);
        const std::string board = std::string("--port 'sim:?start=run&lines=") + seq + "'";
        const Result on = Run("_connect NOPROMPT\n", board + " --boot-entry " + seq);
        EXPECT_EQ(on.status, 0) << on.out;
        EXPECT_EQ(on.out.rfind(std::string(">_connect NOPROMPT\n*Boot entry: ") + seq +
                                   "\n*Loader file Prepare\n",
                               0),
                  0u)
            << on.out;
        EXPECT_NE(on.out.find("*Vortelm successfully launched"), std::string::npos) << on.out;
    }
}

TEST_F(Manners, WithoutBootEntryTheConnectIsAsBefore) {
    // The board runs its application: the connect finds no loader.
    const Result off = Run("_connect NOPROMPT\n", "--port 'sim:?start=run'");
    EXPECT_EQ(off.status, 1);
    EXPECT_EQ(off.out.find("*Boot entry"), std::string::npos);
    EXPECT_EQ(off.out.find("*Vortelm successfully launched"), std::string::npos);
    // The preference key does the same as the option, and the option wins.
    (void)Run("", "--port sim:");
    const std::string ini = dir + "/home/default.ini";
    std::string text = Read(ini);
    const auto at = text.find("BOOTENTRY=0");
    ASSERT_NE(at, std::string::npos);
    text.replace(at, 11, "BOOTENTRY=1");
    std::ofstream(ini, std::ios::binary) << text;
    EXPECT_EQ(Run("_connect NOPROMPT\n", "--port 'sim:?start=run'").status, 0);
    EXPECT_EQ(Run("_connect NOPROMPT\n", "--port 'sim:?start=run' --boot-entry none").status, 1);
    // The option is for one run: the key keeps its value.
    EXPECT_NE(Read(ini).find("BOOTENTRY=1\n"), std::string::npos);
}

TEST_F(Manners, BadBootEntryIsBadUsage) {
    const Result r = Run("", "--boot-entry sideways");
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("--boot-entry takes none, rts-reset-dtr-boot"), std::string::npos)
        << r.err;
    EXPECT_EQ(Run("", "--boot-entry").status, 2);
}

// A program run with its standard error on a pseudo-terminal and its
// standard input and output on pipes, read as it goes.
struct Spawned {
    pid_t pid = -1;
    int in = -1, out = -1, errMaster = -1;
    std::string outText, errText;

    Spawned(const std::vector<std::string>& args, bool errOnTerminal) {
        int inPipe[2], outPipe[2];
        EXPECT_EQ(::pipe2(inPipe, O_CLOEXEC), 0);
        EXPECT_EQ(::pipe2(outPipe, O_CLOEXEC), 0);
        int errSlave = -1;
        if (errOnTerminal) {
            EXPECT_EQ(::openpty(&errMaster, &errSlave, nullptr, nullptr, nullptr), 0);
        } else {
            int errPipe[2];
            EXPECT_EQ(::pipe2(errPipe, O_CLOEXEC), 0);
            errMaster = errPipe[0];
            errSlave = errPipe[1];
        }
        posix_spawn_file_actions_t fa;
        posix_spawn_file_actions_init(&fa);
        posix_spawn_file_actions_adddup2(&fa, inPipe[0], 0);
        posix_spawn_file_actions_adddup2(&fa, outPipe[1], 1);
        posix_spawn_file_actions_adddup2(&fa, errSlave, 2);
        std::vector<char*> argv;
        for (const auto& a : args) argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        EXPECT_EQ(::posix_spawn(&pid, argv[0], &fa, nullptr, argv.data(), environ), 0);
        posix_spawn_file_actions_destroy(&fa);
        ::close(inPipe[0]);
        ::close(outPipe[1]);
        ::close(errSlave);
        in = inPipe[1];
        out = outPipe[0];
    }
    ~Spawned() {
        if (in >= 0) ::close(in);
        ::close(out);
        ::close(errMaster);
        if (pid > 0) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, 0);
        }
    }
    void Send(const std::string& text) {
        EXPECT_EQ(::write(in, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void CloseInput() {
        ::close(in);
        in = -1;
    }
    // Reads both outputs until stdout holds what or both end; false then.
    // The guard of a minute only keeps a broken program from hanging the test.
    bool ReadUntil(const std::string& what, bool onErr = false) {
        const std::string& text = onErr ? errText : outText;
        const auto guard = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        bool outOpen = true, errOpen = true;
        while ((outOpen || errOpen) && std::chrono::steady_clock::now() < guard) {
            if (!what.empty() && text.find(what) != std::string::npos) return true;
            pollfd fds[2] = {{out, POLLIN, 0}, {errMaster, POLLIN, 0}};
            if (::poll(fds, 2, 200) <= 0) continue;
            char buf[4096];
            if (fds[0].revents) {
                const ssize_t n = ::read(out, buf, sizeof buf);
                if (n > 0)
                    outText.append(buf, size_t(n));
                else
                    outOpen = false;
            }
            if (fds[1].revents) {
                const ssize_t n = ::read(errMaster, buf, sizeof buf);
                if (n > 0)
                    errText.append(buf, size_t(n));
                else
                    errOpen = false;  // EIO when the last slave closed
            }
        }
        return !what.empty() && text.find(what) != std::string::npos;
    }
    int Wait() {
        ReadUntil("");
        int st = 0;
        ::waitpid(pid, &st, 0);
        pid = -1;
        return WIFEXITED(st) ? WEXITSTATUS(st) : -1;
    }
};

std::vector<std::string> Args(const std::string& dir, const std::string& port) {
    return {VORTELM_CLI, "--home", dir + "/home", "--port", port};
}

TEST_F(Manners, ProgressBarOnATerminal) {
    const std::string hex = WriteHex(4096);
    // 9600 Bd with the bytes paced: each burst takes about a second.
    Spawned p(Args(dir, "sim:?pace=1"), true);
    p.Send("_connect NOPROMPT\n_load " + hex + "\n_download\n");
    p.CloseInput();
    EXPECT_EQ(p.Wait(), 0);
    EXPECT_NE(p.outText.find("*Download:  4096 bytes \n"), std::string::npos) << p.outText;
    EXPECT_NE(p.errText.find("] "), std::string::npos) << p.errText;
    EXPECT_NE(p.errText.find("/4096 bytes "), std::string::npos) << p.errText;
    EXPECT_NE(p.errText.find("B/s"), std::string::npos) << p.errText;
    // The bar is cleared at the end of the transfer.
    EXPECT_NE(p.errText.find("\r\033[K"), std::string::npos);
}

TEST_F(Manners, CtrlCStopsACompareAndTheJob) {
    const std::string hex = WriteHex(4096);
    Spawned p(Args(dir, "sim:?pace=1"), false);
    p.Send("_connect NOPROMPT\n_load " + hex + "\n_compare\n_test\n");
    p.CloseInput();
    ASSERT_TRUE(p.ReadUntil("*Compare:  1024 bytes \n")) << p.outText;
    ::kill(p.pid, SIGINT);
    EXPECT_EQ(p.Wait(), 130);
    EXPECT_NE(p.outText.find("\n*command aborted"), std::string::npos) << p.outText;
    EXPECT_EQ(p.outText.find("*Compare:  4096 bytes"), std::string::npos) << p.outText;
    // The lines after the interrupted one do not run.
    EXPECT_EQ(p.outText.find(">_test"), std::string::npos) << p.outText;
    EXPECT_NE(p.errText.find("interrupted"), std::string::npos);
}

TEST_F(Manners, CtrlCLetsADownloadFinish) {
    const std::string hex = WriteHex(3072);
    Spawned p(Args(dir, "sim:?pace=1"), false);
    p.Send("_connect NOPROMPT\n_load " + hex + "\n_download\n_test\n");
    p.CloseInput();
    ASSERT_TRUE(p.ReadUntil("*Download:  1024 bytes \n")) << p.outText;
    ::kill(p.pid, SIGINT);
    EXPECT_EQ(p.Wait(), 130);
    // A download cannot be stopped; it ends, and the job with it.
    EXPECT_NE(p.outText.find("*Download:  3072 bytes \n"), std::string::npos) << p.outText;
    EXPECT_EQ(p.outText.find(">_test"), std::string::npos) << p.outText;
}

TEST_F(Manners, SecondCtrlCEndsAtOnce) {
    const std::string hex = WriteHex(8192);
    Spawned p(Args(dir, "sim:?pace=1"), false);
    p.Send("_connect NOPROMPT\n_load " + hex + "\n_download\n");
    p.CloseInput();
    ASSERT_TRUE(p.ReadUntil("*Download:  1024 bytes \n")) << p.outText;
    ::kill(p.pid, SIGINT);
    // Signals of one kind do not queue: the second goes once the first is taken.
    ASSERT_TRUE(p.ReadUntil("interrupted,", true)) << p.errText;
    ::kill(p.pid, SIGINT);
    EXPECT_EQ(p.Wait(), 130);
    EXPECT_EQ(p.outText.find("*Download:  8192 bytes"), std::string::npos) << p.outText;
    EXPECT_NE(p.errText.find("interrupted twice"), std::string::npos) << p.errText;
}

}  // namespace
