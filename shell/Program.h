#pragma once
// The program: one state, one shell session, start-up in its sixteen steps
// and the end. The GUI and the CLI each make one Program and only forward
// their events to it.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/Host.h"
#include "core/ProgramState.h"
#include "link/Ports.h"
#include "shell/Session.h"

namespace vortelm::link {
class ComPort;
}
namespace vortelm::target {
struct Target;
}

namespace vortelm::shell {

struct ProgramOptions {
    std::string home;                  // --home; empty: the default data home
    std::string portOverride;          // --port; empty: the preference keys
    int16_t bootEntry = -1;            // --boot-entry; -1: the preference key
    std::vector<std::string> scripts;  // the script words of the command line
    // Where the delivered data tree is copied from on the first start (only
    // there); empty: the install prefix's share/vortelm, else the source
    // tree's data/.
    std::string dataSource;
    // The channel openers by port text; a program adds the ones it links
    // (the in-process board) here, before the Program is made.
    link::ChannelOpeners openers;

    // Takes a script word of the command line: a script named relative to
    // the working folder and found there is kept as its absolute name.
    void AddScriptWord(std::string_view word);
    // Makes --home absolute, so that later changes of folder do not move it.
    void ResolveHome();
};

// The data home: home if given, else $XDG_DATA_HOME/vortelm, else
// $HOME/.local/share/vortelm.
[[nodiscard]] std::string DataHome(const std::string& home);

// The delivered data tree: dataSource when given (if it holds mctypes.dat),
// else the first that holds mctypes.dat of share/vortelm beside the
// program's bin/ folder, the install prefix's share/vortelm and the source
// tree's data/; a program run from its build tree looks at the source tree
// before the install prefix. Empty if none does.
[[nodiscard]] std::string DeliveredDataTree(const std::string& dataSource);

class Program {
  public:
    Program(Host& host, ProgramOptions options);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    [[nodiscard]] ProgramState& state() { return *st_; }
    [[nodiscard]] Session& session() { return *session_; }
    [[nodiscard]] link::ComPort& port() { return *port_; }
    [[nodiscard]] const ProgramOptions& options() const { return options_; }

    // Start-up: steps 1 to 16 in order. Each step ends its own run-time
    // errors with one "*ERROR: " line and start-up goes on.
    void StartUp();

    // The steps, each a call of its own (later parts of the program fill
    // the marked ones).
    void StepFirstRun();                  // 1: data home, first-run copy
    void StepShowLaunchInfo();            // 2
    void StepHelpFile();                  // 3
    void StepResetTables();               // 4
    void StepReadDataFiles();             // 5: mctypes.dat, kernel.dat
    void StepReadPreferences();           // 6: default.ini
    void StepInitialiseMemoryAndShell();  // 7
    void StepInitialiseForms();           // 8
    void StepReadInstructionTable();      // 9
    void StepVersion();                   // 10
    void StepConfigureAndSelections();    // 11
    void StepMemoryPage();                // 12
    void StepLogFile();                   // 13
    void StepShowMainWindow();            // 14
    void StepRunStartupScripts();         // 15
    void StepScaleForms();                // 16

    // One line of the command box.
    int16_t RunCommandBoxLine(std::string_view line);

    // The end of the program: writes kernel.dat and default.ini, then asks
    // the front end to end the process (quitRequested).
    void ShutDownProgram();
    [[nodiscard]] bool quitRequested() const { return quit_; }

    // How the last script word of start-up went: 0 when it ran to its end
    // and its last line succeeded (also when there was none), -1 otherwise.
    [[nodiscard]] int16_t startupStatus() const { return startupStatus_; }

    // The version text shown by the about box: major.minor.revision.
    [[nodiscard]] static std::string VersionText();
    // The day the program was built, and its licence, for the about box.
    [[nodiscard]] static std::string BuildDateText();
    [[nodiscard]] static std::string LicenceText();

    // How many steps have run; the step that runs (for tests).
    int stepsRun = 0;

  private:
    void RunStep(void (Program::*step)());

    ProgramOptions options_;
    std::unique_ptr<ProgramState> st_;
    std::unique_ptr<Session> session_;
    std::unique_ptr<link::ComPort> port_;
    std::unique_ptr<target::Target> target_;
    bool quit_ = false;
    int16_t startupStatus_ = 0;
};

}  // namespace vortelm::shell
