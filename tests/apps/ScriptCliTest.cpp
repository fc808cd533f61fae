// Scripts through vortelm-cli against the virtual board: script words on the
// command line, _executescript, the boxes answered by --yes/--no and
// standard input, the log rows, and the exit status.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>

namespace fs = std::filesystem;

namespace {

struct ScriptCli : ::testing::Test {
    std::string dir;
    std::string out, err;
    int status = -1;

    void SetUp() override {
        std::string t = (fs::temp_directory_path() / "vortelm-scriptcli-XXXXXX").string();
        ASSERT_NE(::mkdtemp(t.data()), nullptr);
        dir = t;
        fs::create_directories(dir + "/home/SCRIPTS");
    }
    void TearDown() override {
        std::error_code ec;
        fs::remove_all(dir, ec);
    }
    static std::string Read(const std::string& path) {
        std::ifstream f(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(f), {});
    }
    void Write(const std::string& name, const std::string& text) {
        std::ofstream(dir + "/" + name, std::ios::binary) << text;
    }
    void Run(const std::string& words, const std::string& input = "") {
        std::ofstream(dir + "/in", std::ios::binary) << input;
        const std::string cmd = std::string("cd '") + dir + "' && '" + VORTELM_CLI + "' --home '" +
                                dir + "/home' " + words + " <in >out 2>err";
        const int rc = std::system(cmd.c_str());
        status = WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
        out = Read(dir + "/out");
        err = Read(dir + "/err");
    }
    // The running text from the first line of the script's run on.
    std::string From(const std::string& first) const {
        const size_t at = out.find(first);
        return at == std::string::npos ? out : out.substr(at);
    }
};

constexpr const char* kMain =
    "; a loop over a variable, a register of the board, a subscript\n"
    "_connect NOPROMPT\n"
    "_assign %1=0\n"
    "DO\n"
    "  _assign %1=%1+1   ; counts to three\n"
    "LOOP UNTIL %1=3\n"
    "_assign %2=SYSCON\n"
    "IF SYSCON=%2\n"
    "  _print \"SYSCON=\",SYSCON\n"
    "ELSE\n"
    "  _print \"SYSCON moved\"\n"
    "ENDIF\n"
    "_print \"count \",%1,\" at \",TIMESTAMP\n"
    "_executescript SCRIPTS\\SUB.SCM\n";

TEST_F(ScriptCli, AcceptanceRunsTheScriptAndExitsZero) {
    Write("main.scm", kMain);
    Write("home/SCRIPTS/SUB.SCM", "_print \"in the subscript: count \",%1\n");
    Run("--port sim: main.scm");
    EXPECT_EQ(status, 0) << out;
    EXPECT_EQ(err, "");
    // The cleaned lines first, then the run.
    EXPECT_EQ(out.rfind("_connect NOPROMPT\n_assign %1=0\nDO\n_assign %1=%1+1\nLOOP UNTIL %1=3\n"
                        "_assign %2=SYSCON\nIF SYSCON=%2\n_print \"SYSCON=\",SYSCON\nELSE\n"
                        "_print \"SYSCON moved\"\nENDIF\n_print \"count \",%1,\" at \",TIMESTAMP\n"
                        "_executescript SCRIPTS\\SUB.SCM\n>_connect NOPROMPT\n",
                        0),
              0u)
        << out;
    EXPECT_NE(out.find("*Vortelm successfully launched"), std::string::npos) << out;
    const std::string run = std::regex_replace(From(">_assign %1=0"),
                                               std::regex("[0-9]{8}_[0-9]{6}"), "YYYYMMDD_hhmmss");
    EXPECT_EQ(run,
              ">_assign %1=0\n"
              ">_assign %1=%1+1\n>_assign %1=%1+1\n>_assign %1=%1+1\n"
              ">_assign %2=SYSCON\n"
              ">_print \"SYSCON=\",SYSCON\nSYSCON=0090\n"
              ">_print \"count \",%1,\" at \",TIMESTAMP\ncount 0003 at YYYYMMDD_hhmmss\n"
              ">_executescript SCRIPTS\\SUB.SCM\n"
              "_print \"in the subscript: count \",%1\n"
              ">_print \"in the subscript: count \",%1\nin the subscript: count 0003\n"
              "*Script successfully executed\n"
              "*Script successfully executed\n");
}

TEST_F(ScriptCli, AnUnknownLabelIsRefusedBeforeTheStart) {
    Write("main.scm", std::string(kMain) + "GOTO nowhere:\n");
    Run("--port sim: main.scm");
    EXPECT_EQ(status, 1);
    EXPECT_EQ(out.find(">_connect"), std::string::npos) << out;
    EXPECT_EQ(out.substr(out.find("GOTO nowhere:\n")),
              "GOTO nowhere:\n*ERROR: Label in Goto Statement not found\n*ERROR: Script aborted\n");
}

TEST_F(ScriptCli, StandardInputGoesOnAfterTheScriptsAndTheLastLineCounts) {
    Write("a.scm", "_print \"a\"\n");
    Write("b.scm", "_nothing\n");
    Run("a.scm b.scm", "");
    EXPECT_EQ(status, 1);  // b.scm is refused
    Run("b.scm a.scm", "");
    EXPECT_EQ(status, 0);
    Run("b.scm", "_test\n");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(From(">_test"), ">_test\n38F00A\n");
}

TEST_F(ScriptCli, InputBoxesTakeTheNextLineOfStandardInput) {
    Write("in.scm",
          "_input \"Serial number\",%1\n_print %1\n_input \"Go on?\",%2,yesno\n_print %2\n");
    Run("in.scm", "12AB\n_print \"after\"\n");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(err, "Serial number\n\"Go on?\"\n");
    EXPECT_EQ(From(">_input"),
              ">_input \"Serial number\",%1\n>_print %1\n12AB\n"
              ">_input \"Go on?\",%2,yesno\n>_print %2\n0001\n"
              "*Script successfully executed\n"
              ">_print \"after\"\nafter\n");
    // --no cancels: the empty answer is stored as 0, and No is 0.
    // The line that was not taken goes to the terminal.
    Run("--no in.scm", "12AB\n");
    EXPECT_EQ(From(">_input").rfind(">_input \"Serial number\",%1\n>_print %1\n0000\n"
                                    ">_input \"Go on?\",%2,yesno\n>_print %2\n0000\n"
                                    "*Script successfully executed\n"
                                    "\n-> SENDING: 12AB"),
              0u)
        << out;
}

TEST_F(ScriptCli, ANonHexadecimalAnswerIsStatusMinusThree) {
    Run("", "_input \"Value\",%1\nXYZ\n");
    EXPECT_EQ(out,
              ">_input \"Value\",%1\n*ERROR: Illegal number of parameters\n"
              "usage: _input <string>,<variable>[,yesno]\n");
    EXPECT_EQ(status, 1);
}

TEST_F(ScriptCli, MessagesGoToStandardError) {
    Run("", "_assign %1=2A\n_message \"a\",%1,\"b\"\n_cmessage \"c\"\n_pause\n");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(err, "a\n00002Ab\n\nc\n\nPlease klick to the OK Button to continue\n");
}

TEST_F(ScriptCli, LogRows) {
    Run("",
        "_setlogfile x.log,FOO\n_print \"to the log\"\n_logfile OFF\n_print \"not logged\"\n"
        "_writelogfile \"written \",TIMESTAMP\n_logfile 1\n_print \"again\"\n");
    EXPECT_EQ(out.rfind(">_setlogfile x.log,FOO\n*ERROR: Illegal parameters\n"
                        "usage: _setlogfile <filename>[,APPEND]\n>_print \"to the log\"\n",
                        0),
              0u)
        << out;
    const std::string log = std::regex_replace(Read(dir + "/home/x.log"),
                                               std::regex("[0-9]{8}_[0-9]{6}"), "YYYYMMDD_hhmmss");
    // The name changed and logging is on before the status words come; the
    // lines that name _logfile stay out of the log.
    EXPECT_EQ(log,
              "*ERROR: Illegal parameters\nusage: _setlogfile <filename>[,APPEND]\n"
              ">_print \"to the log\"\nto the log\n"
              "written YYYYMMDD_hhmmss\n"
              ">_print \"again\"\nagain\n");
    Run("", "_setlogfile x.log\n_print \"fresh\"\n");
    EXPECT_EQ(Read(dir + "/home/x.log"), ">_print \"fresh\"\nfresh\n");
}

TEST_F(ScriptCli, ExampleScriptsOfTheDataHomeRun) {
    Run("", "");  // the first start copies the examples into the home
    for (const char* name : {"SAMPLE.SCM", "ROUNDTRIP.SCM", "REGLOG.SCM"}) {
        SCOPED_TRACE(name);
        Run(std::string("--port sim: home/SCRIPTS/") + name, "");
        EXPECT_EQ(status, 0) << out << err;
        EXPECT_EQ(err, "");
        EXPECT_EQ(out.find("*ERROR"), std::string::npos) << out;
        const std::string end = "*Script successfully executed\n";
        EXPECT_TRUE(out.size() > end.size() && out.substr(out.size() - end.size()) == end) << out;
    }
    EXPECT_NE(out.find(">_print \"XPEN is clear\"\nXPEN is clear\n"), std::string::npos) << out;
    const std::string log = Read(dir + "/home/REGLOG.TXT");
    EXPECT_TRUE(
        std::regex_search(log, std::regex("\nreading 0005: SYSCON=0090 at [0-9]{8}_[0-9]{6}\n")))
        << log;
}

}  // namespace

namespace {

// Runs the program on a script, sends Ctrl-C once the running text holds
// the mark, and waits for its end.
struct Interrupted : ScriptCli {
    void RunAndInterrupt(const std::string& script, const std::string& mark) {
        Write("job.scm", script);
        const pid_t pid = ::fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            if (::chdir(dir.c_str()) != 0) ::_exit(99);
            ::freopen("/dev/null", "r", stdin);
            ::freopen((dir + "/out").c_str(), "w", stdout);
            ::freopen((dir + "/err").c_str(), "w", stderr);
            const std::string home = dir + "/home";
            ::execl(VORTELM_CLI, VORTELM_CLI, "--home", home.c_str(), "--port", "sim:", "job.scm",
                    static_cast<char*>(nullptr));
            ::_exit(98);
        }
        // Waits until the script is where it is stopped (the program never
        // ends by itself there); a program that never gets there is killed.
        bool there = false;
        for (int i = 0; i < 3000 && !there; ++i) {
            there = Read(dir + "/out").find(mark) != std::string::npos;
            if (!there) ::usleep(20'000);
        }
        if (!there) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, 0);
            FAIL() << "the script never reached " << mark << ": " << Read(dir + "/out");
        }
        ::usleep(100'000);
        ::kill(pid, SIGINT);
        int rc = 0;
        ::waitpid(pid, &rc, 0);
        status = WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
        out = Read(dir + "/out");
    }
};

TEST_F(Interrupted, CtrlCStopsALongLoop) {
    RunAndInterrupt(
        "_assign %1=0\nDO\n_assign %1=%1+1\n_delayms 20\nLOOP UNTIL 30000\n_print \"never\"\n",
        ">_delayms 20\n>_assign");
    // With standard input not a terminal, Ctrl-C also ends the job.
    EXPECT_EQ(status, 130);
    EXPECT_EQ(out.substr(out.size() - 16), "*Script aborted\n") << out;
    EXPECT_EQ(out.find(">_print \"never\""), std::string::npos);
}

TEST_F(Interrupted, CtrlCStopsAPollWithOneLine) {
    RunAndInterrupt("_connect NOPROMPT\n_poll 200,FFFF,1234\n_print \"never\"\n",
                    ">_poll 200,FFFF,1234\n");
    EXPECT_EQ(status, 130);
    EXPECT_EQ(out.substr(out.find(">_poll 200,FFFF,1234\n")),
              ">_poll 200,FFFF,1234\n*ERROR: Poll ended by the operator\n*ERROR: Script aborted\n");
}

}  // namespace

namespace {

TEST_F(ScriptCli, TheInterpretersEdgeCases) {
    Write("edge.scm",
          "DO\n_print \"x\"\nLOOP UNTIL 3\nWHILE 0\n_print \"in\"\nENDW\nIF 2\n_print \"then\"\n"
          "ELSE\n_print \"else\"\nENDIF\nGOTO END:\n_print \"skipped\"\nend:\n_print \"a;b\"\n"
          "_addselection 10 , 1F\n_showselections\n");
    Run("edge.scm");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(
        out,
        "DO\n_print \"x\"\nLOOP UNTIL 3\nWHILE 0\n_print \"in\"\nENDW\nIF 2\n_print \"then\"\n"
        "ELSE\n_print \"else\"\nENDIF\nGOTO END:\n_print \"skipped\"\nend:\n_print \"a\n"
        "_addselection 10,1F\n_showselections\n"
        ">_print \"x\"\nx\n>_print \"x\"\nx\n>_print \"x\"\nx\n"
        ">_print \"else\"\nelse\n"
        ">_print \"a\na\n"
        ">_addselection 10,1F\n>_showselections\nSelection 0: 000010 to 00001F\n"
        "*Script successfully executed\n");
}

TEST_F(ScriptCli, NestedToThreeAndRefusedAtFour) {
    Write("home/SCRIPTS/D1.SCM", "_print \"depth 2\"\n_executescript SCRIPTS\\D2.SCM\n");
    Write("home/SCRIPTS/D2.SCM",
          "_print \"depth 3\"\n_executescript SCRIPTS\\D3.SCM\n_print \"back in 3\"\n");
    Write("home/SCRIPTS/D3.SCM", "_print \"depth 4\"\n");
    Write("top.scm", "_executescript SCRIPTS\\D1.SCM\n_print \"back in 1\"\n");
    Run("top.scm", "_executescript SCRIPTS\\D2.SCM\n");
    EXPECT_EQ(status, 0);
    // The fourth depth is not reached while the script of the command line runs.
    EXPECT_GT(out.find("depth 4\n"), out.find("back in 1\n")) << out;
    EXPECT_NE(out.find(">_executescript SCRIPTS\\D3.SCM\n*ERROR: Too many subscripts executed\n"
                       ">_print \"back in 3\"\nback in 3\n*Script successfully executed\n"
                       "*Script successfully executed\n>_print \"back in 1\"\nback in 1\n"
                       "*Script successfully executed\n"),
              std::string::npos)
        << out;
    // From the command box the same subscripts are two deep: D3 runs.
    EXPECT_NE(
        out.find(
            ">_executescript SCRIPTS\\D3.SCM\n_print \"depth 4\"\n>_print \"depth 4\"\ndepth 4\n"),
        std::string::npos)
        << out;
}

}  // namespace
