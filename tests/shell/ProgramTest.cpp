#include "shell/Program.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>

#include "core/TestHost.h"

namespace fs = std::filesystem;

namespace vortelm::shell {

namespace {
struct Dir {
    Dir() {
        std::string t = (fs::temp_directory_path() / "vortelm-program-XXXXXX").string();
        if (!::mkdtemp(t.data())) std::abort();
        path = t;
    }
    ~Dir() {
        std::error_code ec;
        fs::remove_all(path, ec);
    }
    void write(const std::string& name, const std::string& text) const {
        fs::create_directories(fs::path(path + "/" + name).parent_path());
        std::ofstream(path + "/" + name) << text;
    }
    [[nodiscard]] bool has(const std::string& name) const { return fs::exists(path + "/" + name); }
    std::string path;
};
ProgramOptions Options(const std::string& home, const std::string& data,
                       std::vector<std::string> scripts = {}) {
    ProgramOptions o;
    o.home = home;
    o.dataSource = data;
    o.scripts = std::move(scripts);
    return o;
}
}  // namespace

TEST(Program, DataHomeChoice) {
    struct Restore {
        std::optional<std::string> home, xdg;
        Restore() {
            if (const char* h = std::getenv("HOME")) home = h;
            if (const char* x = std::getenv("XDG_DATA_HOME")) xdg = x;
        }
        ~Restore() {
            home ? ::setenv("HOME", home->c_str(), 1) : ::unsetenv("HOME");
            xdg ? ::setenv("XDG_DATA_HOME", xdg->c_str(), 1) : ::unsetenv("XDG_DATA_HOME");
        }
    } restore;
    EXPECT_EQ(DataHome("/x/y"), "/x/y");
    ::setenv("XDG_DATA_HOME", "/xdg", 1);
    EXPECT_EQ(DataHome(""), "/xdg/vortelm");
    ::setenv("XDG_DATA_HOME", "", 1);
    ::setenv("HOME", "/home/u", 1);
    EXPECT_EQ(DataHome(""), "/home/u/.local/share/vortelm");
    ::unsetenv("XDG_DATA_HOME");
    EXPECT_EQ(DataHome(""), "/home/u/.local/share/vortelm");
}

TEST(Program, FirstStartCopiesTheDeliveredTree) {
    Dir home, data;
    data.write("mctypes.dat", "[X]\n");
    data.write("SFRDEF/LD7RK.SFR", "s");
    data.write("MEMDEF/LD7RK.MEM", "m");
    TestHost host;
    Program p(host, Options(home.path + "/new", data.path));
    p.StartUp();
    EXPECT_EQ(p.stepsRun, 16);
    EXPECT_EQ(p.state().programFolder, home.path + "/new");
    EXPECT_TRUE(fs::exists(home.path + "/new/SFRDEF/LD7RK.SFR"));
    EXPECT_TRUE(fs::exists(home.path + "/new/MEMDEF/LD7RK.MEM"));
    EXPECT_EQ(p.state().PATH_LOAD, home.path + "/new");
}

TEST(Program, LaterStartsLeaveACompleteHomeAlone) {
    Dir home, data;
    data.write("mctypes.dat", "delivered");
    {
        TestHost host;
        Program p(host, Options(home.path, data.path));
        p.StepFirstRun();
    }
    ASSERT_TRUE(home.has(".vortelm-data-complete"));
    fs::remove(home.path + "/mctypes.dat");
    data.write("kernel.dat", "k");
    TestHost host;
    Program p(host, Options(home.path, data.path));
    p.StepFirstRun();
    EXPECT_FALSE(home.has("kernel.dat"));
    EXPECT_FALSE(home.has("mctypes.dat"));
}

TEST(Program, AStartRepairsACopyThatWasCutShort) {
    Dir home, data;
    data.write("mctypes.dat", "delivered");
    data.write("kernel.dat", "k");
    data.write("KERNEL/CORE.HEX", ":00000001FF\n");
    data.write("default.ini", "PORTNAME=sim:\n");
    // What a killed first start leaves: some files, an empty one, no mark.
    home.write("mctypes.dat", "mine");  // changed by the user: stays
    home.write("KERNEL/CORE.HEX", "");  // cut short: copied again
    TestHost host;
    Program p(host, Options(home.path, data.path));
    p.StepFirstRun();
    auto read = [&](const std::string& name) {
        std::ifstream f(home.path + "/" + name);
        return std::string(std::istreambuf_iterator<char>(f), {});
    };
    EXPECT_EQ(read("mctypes.dat"), "mine");
    EXPECT_EQ(read("kernel.dat"), "k");
    EXPECT_EQ(read("KERNEL/CORE.HEX"), ":00000001FF\n");
    EXPECT_EQ(read("default.ini"), "PORTNAME=sim:\n");
    EXPECT_TRUE(home.has(".vortelm-data-complete"));
    EXPECT_EQ(host.terminal.find("*ERROR"), std::string::npos) << host.terminal;
}

TEST(Program, FirstStartWithoutDataDoesNotHang) {
    // The archive of the first run is missing: start-up goes on and the
    // readers of the later steps report what is missing.
    Dir home, empty;
    TestHost host;
    Program p(host, Options(home.path, empty.path));
    p.StartUp();
    EXPECT_EQ(p.stepsRun, 16);
    EXPECT_FALSE(home.has("mctypes.dat"));
    EXPECT_TRUE(host.started.empty());
}

TEST(Program, StartUpBuildsTheShellAndResets) {
    Dir home;
    TestHost host;
    Program p(host, Options(home.path, home.path));
    p.state().variables[5] = 9;
    p.state().ConnectionState = kDebugging;
    p.state().logFileName = "x.txt";
    p.StartUp();
    EXPECT_EQ(p.session().table.shellCommandCount, 87);
    EXPECT_EQ(p.state().variables[5], 0);
    EXPECT_EQ(p.state().ConnectionState, 0);
    EXPECT_EQ(p.state().logFileName, "LOG.TXT");
    EXPECT_GE(host.refreshStatusCount, 1);
    EXPECT_GE(host.refreshFeatureButtonsCount, 2);
    EXPECT_GE(host.refreshMemoryCount, 1);
    EXPECT_TRUE(host.boxes.empty());
}

TEST(Program, MissingStartupScriptShowsTheBoxAndTheNextStillRuns) {
    Dir home;
    home.write("b.scm", "_test\n");
    TestHost host;
    Program p(host, Options(home.path, home.path, {"a.scm", "b.scm", "c.scm"}));
    p.StartUp();
    ASSERT_EQ(host.boxes.size(), 2u);
    EXPECT_EQ(host.boxes[0].text, "Illegal startup parameters");
    EXPECT_EQ(host.boxes[0].icon, MsgIcon::Stop);
    EXPECT_EQ(host.boxes[1].text, "Illegal startup parameters");
    // b.scm runs between the two boxes.
    EXPECT_NE(host.terminal.find("_test\r\n>_test\r\n38F00A\r\n*Script successfully executed\r\n"),
              std::string::npos);
    EXPECT_EQ(p.state().lastScriptFiles[0], "b.scm");
    EXPECT_EQ(p.startupStatus(), -1);  // the last word named no file
    EXPECT_EQ(p.stepsRun, 16);
}

TEST(Program, NoLogFileUnlessTheKeyIsOne) {
    for (int32_t key : {0, 2, -1}) {
        Dir home;
        TestHost host;
        Program p(host, Options(home.path, home.path));
        p.StepFirstRun();
        p.StepReadPreferences();
        p.state().logEnabled = key;
        p.StepLogFile();
        EXPECT_FALSE(home.has("LOG.TXT")) << key;
    }
}

TEST(Program, LogBannerInTheProgramFolder) {
    Dir home, logs;
    TestHost host;
    Program p(host, Options(home.path, home.path));
    p.StepFirstRun();
    p.StepReadPreferences();
    p.state().PATH_LOG = logs.path;
    p.state().logEnabled = 1;
    p.StepLogFile();
    EXPECT_TRUE(home.has("LOG.TXT"));
    EXPECT_FALSE(logs.has("LOG.TXT"));
}

TEST(Program, QuitEndsTheProgram) {
    Dir home;
    TestHost host;
    Program p(host, Options(home.path, home.path));
    p.StartUp();
    EXPECT_FALSE(p.quitRequested());
    EXPECT_EQ(p.RunCommandBoxLine("_quit"), 0);
    EXPECT_TRUE(p.quitRequested());
}

TEST(Program, PortOverrideIsKeptForTheRun) {
    TestHost host;
    ProgramOptions o;
    o.portOverride = "sim:";
    Program p(host, o);
    EXPECT_EQ(p.state().portOverride, "sim:");
}

}  // namespace vortelm::shell
