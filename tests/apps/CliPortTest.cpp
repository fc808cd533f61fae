// vortelm-cli on a pseudo-terminal made here: what the command box and _send
// put on the line, and what the far end sends while the program is idle.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace fs = std::filesystem;

namespace {

struct CliOnPty : ::testing::Test {
    int master = -1;
    std::string slave;
    std::string dir;
    pid_t child = -1;
    int toChild = -1;
    int fromChild = -1;
    std::string out;

    void SetUp() override {
        master = posix_openpt(O_RDWR | O_NOCTTY);
        ASSERT_GE(master, 0);
        ASSERT_EQ(grantpt(master), 0);
        ASSERT_EQ(unlockpt(master), 0);
        slave = ptsname(master);
        std::string t = (fs::temp_directory_path() / "vortelm-clipty-XXXXXX").string();
        ASSERT_NE(::mkdtemp(t.data()), nullptr);
        dir = t;
        int in[2];
        int outp[2];
        ASSERT_EQ(::pipe(in), 0);
        ASSERT_EQ(::pipe(outp), 0);
        child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            ::dup2(in[0], 0);
            ::dup2(outp[1], 1);
            int devnull = ::open("/dev/null", O_WRONLY);
            ::dup2(devnull, 2);
            ::close(in[1]);
            ::close(outp[0]);
            ::close(master);
            const std::string home = dir + "/home";
            ::execl(VORTELM_CLI, VORTELM_CLI, "--home", home.c_str(), "--port", slave.c_str(),
                    static_cast<char*>(nullptr));
            ::_exit(127);
        }
        ::close(in[0]);
        ::close(outp[1]);
        toChild = in[1];
        fromChild = outp[0];
    }
    void TearDown() override {
        if (toChild >= 0) ::close(toChild);
        if (child > 0) {
            // Give it a moment to see the end of input, then make sure.
            for (int i = 0; i < 50; ++i) {
                if (::waitpid(child, nullptr, WNOHANG) == child) {
                    child = -1;
                    break;
                }
                ::usleep(100'000);
            }
            if (child > 0) {
                ::kill(child, SIGKILL);
                ::waitpid(child, nullptr, 0);
            }
        }
        if (fromChild >= 0) ::close(fromChild);
        if (master >= 0) ::close(master);
        std::error_code ec;
        fs::remove_all(dir, ec);
    }
    void Line(const std::string& text) {
        std::string l = text + "\n";
        ASSERT_EQ(::write(toChild, l.data(), l.size()), ssize_t(l.size()));
    }
    // What the program puts on the line: waits for n bytes, then for a short
    // silence so that a byte too many would show.
    std::string LineBytes(std::size_t n) {
        std::string got;
        int wait = 5000;
        for (;;) {
            pollfd p{master, POLLIN, 0};
            if (::poll(&p, 1, got.size() >= n ? 300 : wait) <= 0) break;
            char buf[256];
            ssize_t k = ::read(master, buf, sizeof buf);
            if (k <= 0) break;
            got.append(buf, std::size_t(k));
        }
        return got;
    }
    // Reads the program's output until it holds the text (or 5 s of nothing).
    bool OutputHas(const std::string& text) {
        while (out.find(text) == std::string::npos) {
            pollfd p{fromChild, POLLIN, 0};
            if (::poll(&p, 1, 5000) <= 0) return false;
            char buf[512];
            ssize_t k = ::read(fromChild, buf, sizeof buf);
            if (k <= 0) return false;
            out.append(buf, std::size_t(k));
        }
        return true;
    }
};

TEST_F(CliOnPty, SendPutsExactlyTheText) {
    Line("_send Hello");
    EXPECT_EQ(LineBytes(5), "Hello");
}

TEST_F(CliOnPty, HexLinePutsItsPairs) {
    Line(":4142");
    EXPECT_EQ(LineBytes(2), "AB");
    Line(":41 42");
    EXPECT_EQ(LineBytes(1), "A");
}

TEST_F(CliOnPty, TextLineGoesOutWithoutALineEnd) {
    Line("AT");
    EXPECT_EQ(LineBytes(2), "AT");
    EXPECT_TRUE(OutputHas("-> SENDING: AT")) << out;
}

TEST_F(CliOnPty, IdleBytesAppearInTheRunningText) {
    Line("_send x");
    EXPECT_EQ(LineBytes(1), "x");  // the program is up and the port open
    const std::string text = "target says hi";
    ASSERT_EQ(::write(master, text.data(), text.size()), ssize_t(text.size()));
    EXPECT_TRUE(OutputHas(text)) << out;
}

// A device the program may not open: the Caution line, then a diagnosis that
// names the dialout group. Root opens anything, so the program runs as
// nobody there; the device is a file of mode 000 either way.
TEST(CliPermission, CautionAndDialout) {
    std::string t = (fs::temp_directory_path() / "vortelm-cliperm-XXXXXX").string();
    ASSERT_NE(::mkdtemp(t.data()), nullptr);
    const std::string dir = t;
    ::chmod(dir.c_str(), 0755);
    const std::string home = dir + "/home";
    ASSERT_TRUE(fs::create_directory(home));
    ::chmod(home.c_str(), 0777);
    const std::string device = dir + "/ttyLOCKED";
    std::ofstream(device).put('x');
    ASSERT_EQ(::chmod(device.c_str(), 0), 0);
    // The build may lie in a folder that nobody cannot enter (a clean clone
    // under a private temporary folder): run a copy of the program from here.
    const std::string program = dir + "/vortelm-cli";
    fs::copy_file(VORTELM_CLI, program);
    ::chmod(program.c_str(), 0755);
    const std::string outName = dir + "/out";
    const std::string errName = dir + "/err";
    pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        int in = ::open("/dev/null", O_RDONLY);
        int o = ::open(outName.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        int e = ::open(errName.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        ::dup2(in, 0);
        ::dup2(o, 1);
        ::dup2(e, 2);
        if (::geteuid() == 0) {
            if (::setgroups(0, nullptr) != 0 || ::setgid(65534) != 0 || ::setuid(65534) != 0)
                ::_exit(126);
        }
        ::execl(program.c_str(), program.c_str(), "--home", home.c_str(), "--port", device.c_str(),
                static_cast<char*>(nullptr));
        ::_exit(127);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    auto read = [](const std::string& name) {
        std::ifstream f(name, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(f), {});
    };
    const std::string out = read(outName);
    const std::string err = read(errName);
    std::error_code ec;
    fs::remove_all(dir, ec);
    ASSERT_TRUE(WIFEXITED(status));
    ASSERT_NE(WEXITSTATUS(status), 126) << "could not drop root";
    ASSERT_NE(WEXITSTATUS(status), 127) << "could not start " << program;
    EXPECT_EQ(err.rfind("Caution ! Communication port used by other application ! Please select a "
                        "different port \n",
                        0),
              0u)
        << err;
    EXPECT_NE(out.find("*Port " + device + ": Permission denied\n"), std::string::npos) << out;
    EXPECT_NE(out.find("mode ----------"), std::string::npos) << out;
    EXPECT_NE(out.find("dialout"), std::string::npos) << out;
}

}  // namespace
