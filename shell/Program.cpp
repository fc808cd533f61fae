#include "shell/Program.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "config/DataHome.h"
#include "config/Kernels.h"
#include "config/Startup.h"
#include "core/Helpers.h"
#include "core/RunTimeError.h"
#include "core/Text.h"
#include "disasm/CommandTable.h"
#include "image/Dump.h"
#include "image/HexFile.h"
#include "link/ComPort.h"
#include "sfr/SfrSets.h"
#include "shell/CommandBox.h"
#include "shell/Script.h"
#include "shell/Shell.h"
#include "target/Target.h"

#ifndef VORTELM_VERSION
#define VORTELM_VERSION "0.0.0"
#endif
#ifndef VORTELM_INSTALL_DATA_DIR
#define VORTELM_INSTALL_DATA_DIR ""
#endif
#ifndef VORTELM_SOURCE_DATA_DIR
#define VORTELM_SOURCE_DATA_DIR ""
#endif
#ifndef VORTELM_BUILD_TREE
#define VORTELM_BUILD_TREE ""
#endif

namespace fs = std::filesystem;

namespace vortelm::shell {

namespace {

bool HasControllerFile(const std::string& folder) {
    std::error_code ec;
    return !folder.empty() && fs::is_regular_file(fs::path(folder) / "mctypes.dat", ec);
}

}  // namespace

void ProgramOptions::AddScriptWord(std::string_view word) {
    std::string w(word);
    std::error_code ec;
    if (!w.empty() && w.front() != '/' && fs::is_regular_file(w, ec))
        w = fs::absolute(w, ec).string();
    scripts.push_back(w);
}

void ProgramOptions::ResolveHome() {
    if (home.empty()) return;
    std::error_code ec;
    home = fs::absolute(home, ec).string();
}

std::string DataHome(const std::string& home) {
    if (!home.empty()) return home;
    if (const char* xdg = std::getenv("XDG_DATA_HOME"); xdg && *xdg == '/')
        return std::string(xdg) + "/vortelm";
    const char* h = std::getenv("HOME");
    return std::string(h && *h ? h : ".") + "/.local/share/vortelm";
}

namespace {
// True when the running program lies in the build tree it was built in.
bool RunFromBuild() {
    const std::string build = VORTELM_BUILD_TREE;
    std::error_code ec;
    const std::string self = fs::read_symlink("/proc/self/exe", ec).string();
    return !build.empty() && !ec && self.rfind(build + "/", 0) == 0;
}

// share/vortelm beside the program's bin/ folder: an installation that was
// moved, or a package unpacked somewhere else than its prefix, still finds
// its own data.
std::string DataBesideProgram() {
    std::error_code ec;
    const fs::path self = fs::read_symlink("/proc/self/exe", ec);
    if (ec || !self.has_parent_path()) return {};
    return (self.parent_path().parent_path() / "share" / "vortelm").string();
}
}  // namespace

std::string DeliveredDataTree(const std::string& dataSource) {
    if (!dataSource.empty()) return HasControllerFile(dataSource) ? dataSource : std::string();
    std::string first = VORTELM_INSTALL_DATA_DIR;
    std::string second = VORTELM_SOURCE_DATA_DIR;
    if (RunFromBuild()) std::swap(first, second);
    for (const std::string& candidate : {DataBesideProgram(), first, second})
        if (HasControllerFile(candidate)) return candidate;
    return {};
}

Program::Program(Host& host, ProgramOptions options)
    : options_(std::move(options)),
      st_(std::make_unique<ProgramState>(host)),
      session_(std::make_unique<Session>(*st_)) {
    st_->portOverride = options_.portOverride;
    st_->bootEntryOverride = options_.bootEntry;
    port_ = std::make_unique<link::ComPort>(*st_);
    port_->openers = options_.openers;
    session_->port = port_.get();
    target_ = std::make_unique<target::Target>(
        *st_, *port_, [](ProgramState& s, const std::string& name) { ReadHexFile(s, name); });
    session_->target = target_.get();
    session_->shutDown = [this] { ShutDownProgram(); };
}

Program::~Program() {
    target::DisableConnectionCheck(*target_);
}

std::string Program::VersionText() {
    return VORTELM_VERSION;
}

std::string Program::BuildDateText() {
    return VORTELM_BUILD_DATE;
}

std::string Program::LicenceText() {
    return "Copyright (C) 2026 the Vortelm developers. All rights reserved. "
           "Licensed to the user for use with their own boards.";
}

void Program::RunStep(void (Program::*step)()) {
    try {
        (this->*step)();
    } catch (const std::exception& e) {  // RunTimeError above all
        Text2Buffer(*st_, CrLf() + "*ERROR: " + e.what());
    }
    ++stepsRun;
}

void Program::StartUp() {
    RunStep(&Program::StepFirstRun);
    RunStep(&Program::StepShowLaunchInfo);
    RunStep(&Program::StepHelpFile);
    RunStep(&Program::StepResetTables);
    RunStep(&Program::StepReadDataFiles);
    RunStep(&Program::StepReadPreferences);
    RunStep(&Program::StepInitialiseMemoryAndShell);
    RunStep(&Program::StepInitialiseForms);
    RunStep(&Program::StepReadInstructionTable);
    RunStep(&Program::StepVersion);
    RunStep(&Program::StepConfigureAndSelections);
    RunStep(&Program::StepMemoryPage);
    RunStep(&Program::StepLogFile);
    RunStep(&Program::StepShowMainWindow);
    RunStep(&Program::StepRunStartupScripts);
    RunStep(&Program::StepScaleForms);
}

// 1. The program folder is the data home. Until it holds a complete copy of
// the delivered data tree, the files it lacks are copied into it (files
// that hold something stay).
void Program::StepFirstRun() {
    ProgramState& st = *st_;
    st.programFolder = DataHome(options_.home);
    std::error_code ec;
    fs::create_directories(st.programFolder, ec);
    if (ec) {
        Text2Buffer(st, CrLf() + "*ERROR: Can not create the data folder " + st.programFolder +
                            ": " + ec.message());
        return;
    }
    // A home is complete once a whole copy has been made; until then every
    // start copies what is missing or was cut short, file by file.
    if (DataHomeComplete(st.programFolder)) return;
    const std::string source = DeliveredDataTree(options_.dataSource);
    if (source.empty()) return;  // steps 5 and 6 report the missing files
    const DataCopyResult copy = InstallDataTree(source, st.programFolder);
    for (const std::string& error : copy.errors)
        Text2Buffer(st, CrLf() + "*ERROR: Can not copy the delivered data to " + st.programFolder +
                            ": " + error);
}

// 2. The launch window is the GUI's; the CLI shows none.
void Program::StepShowLaunchInfo() {
    st_->host->progress(1, 100);
}

// 3. The help file lies in the program folder (opened by the GUI).
void Program::StepHelpFile() {}

// 4. Resets the tables in their order.
void Program::StepResetTables() {
    ResetConfigurationTables(*st_);
    st_->host->progress(20, 100);
}

// 5. mctypes.dat and kernel.dat from the program folder.
void Program::StepReadDataFiles() {
    ReadDataFiles(*st_);
    st_->host->progress(30, 100);
}

// 6. default.ini from the program folder (its defaults first, whether the
// file is there or not).
void Program::StepReadPreferences() {
    ReadDefaultPreferences(*st_);
    st_->host->progress(50, 100);
}

// 7. The dump memory gets its first four segments (the rest come on first
// touch); the shell table is built.
void Program::StepInitialiseMemoryAndShell() {
    InitDumpMemory(st_->dump);
    BuildShellCommandTable(session_->table);
    st_->host->progress(70, 100);
}

// 8. The forms of the selection range and the memory units are the GUI's.
void Program::StepInitialiseForms() {
    // The serial settings are taken and the port opened here, so that the
    // status of step 9 shows them and start-up scripts find the port open.
    port_->get_preferences();
    // The connection check ticks from here on; it tests only a connected target.
    target::EnableConnectionCheck(*target_);
    st_->host->progress(80, 100);
}

// 9. The decoder's instruction table; a missing or bad file leaves the
// decoder off with one "*ERROR: " line and start-up goes on.
void Program::StepReadInstructionTable() {
    (void)disasm::ReadCommandTable(*st_);
    st_->ConnectionState = kNotConnected;
    st_->host->refreshStatus();
    st_->host->refreshFeatureButtons();
    st_->host->progress(90, 100);
}

// 10. The about box reads VersionText().
void Program::StepVersion() {}

// 11. No selections at the start.
void Program::StepConfigureAndSelections() {
    st_->selections.count = 0;
}

// 12. The memory page starts at 0.
void Program::StepMemoryPage() {
    st_->host->gotoPage(0);
    st_->host->refreshMemory();
}

// 13. A new log file with its banner when logging is on.
void Program::StepLogFile() {
    if (st_->logEnabled == 1) WriteLogBanner(*st_);
}

// 14. The main window is the GUI's; the launch progress ends.
void Program::StepShowMainWindow() {
    st_->host->refreshFeatureButtons();
    st_->host->progress(0, 0);
}

// 15. Each word of the command line names a script to run.
void Program::StepRunStartupScripts() {
    ProgramState& st = *st_;
    for (const std::string& word : options_.scripts) {
        if (FileExists(st, word, kFalse)) {
            startupStatus_ = static_cast<int16_t>(RunScript(*session_, word, kFalse));
        } else {
            st.host->messageBox("Illegal startup parameters", MsgButtons::Ok, MsgIcon::Stop);
            startupStatus_ = -1;
        }
    }
}

// 16. Scaling by SCALEFACTOR is the GUI's.
void Program::StepScaleForms() {
    const double factor = FormScale(*st_);
    st_->host->scaleForms(factor, factor);
}

int16_t Program::RunCommandBoxLine(std::string_view line) {
    // The front ends' event: a bound met while sending ends the line only.
    int16_t result = -1;
    session_->lastFailureCode = 0;
    try {
        result = shell::RunCommandBoxLine(*session_, line);
    } catch (const std::exception& e) {
        Text2Buffer(*st_, CrLf() + "*ERROR: " + e.what());
        result = -1;
    }
    // No failure passes without a word beside the running text.
    if (result != 0)
        st_->host->failureReported(FailureLine(line, result, session_->lastFailureCode));
    return result;
}

void Program::ShutDownProgram() {
    // The channel stays as it is: the end of the process closes it.
    WriteConfigurationFiles(*st_);
    quit_ = true;
}

}  // namespace vortelm::shell
