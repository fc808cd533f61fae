// Statements per second of the script interpreter: loops of 100 000
// iterations of _assign and a condition, with the register table of a real
// controller loaded (every argument and operand is looked up in it), logging
// off and a host that draws nothing. Each statement of the loop counts: the
// _assign line (through the whole shell frame, echo included) and the
// condition statement. Wall-clock and processor time are both shown: on a
// machine shared with other work the second is the interpreter's own cost.

#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

#include "core/Host.h"
#include "core/ProgramState.h"
#include "sfr/SfrTable.h"
#include "shell/Script.h"
#include "shell/Shell.h"

#ifndef VORTELM_SOURCE_DATA_DIR
#define VORTELM_SOURCE_DATA_DIR "data"
#endif

namespace fs = std::filesystem;

namespace {

int Run(vortelm::shell::Session& s, const fs::path& dir, const char* name, const char* text,
        int32_t expected) {
    const fs::path file = dir / "loop.scm";
    std::ofstream(file, std::ios::binary) << text;
    vortelm::shell::ScriptTables& t = vortelm::shell::ScriptsOf(s);
    s.st.variables[1] = 0;
    t.statementsRun = 0;
    const auto start = std::chrono::steady_clock::now();
    const std::clock_t cpuStart = std::clock();
    const int r = vortelm::shell::RunScript(s, file.string(), 0);
    const double cpu = static_cast<double>(std::clock() - cpuStart) / CLOCKS_PER_SEC;
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (r != 0 || s.st.variables[1] != expected) {
        std::fprintf(stderr, "bench_script: %s did not run to its end (variable %d)\n", name,
                     s.st.variables[1]);
        return 1;
    }
    const auto n = static_cast<double>(t.statementsRun);
    std::printf(
        "%-42s %7lld statements: %6.3f s, %9.0f statements/s (processor time %6.3f s, "
        "%9.0f statements/s)\n",
        name, static_cast<long long>(t.statementsRun), seconds, n / seconds, cpu,
        cpu > 0 ? n / cpu : 0.0);
    return 0;
}

}  // namespace

int main() {
    const fs::path dir =
        fs::temp_directory_path() / ("vortelm-bench-script-" + std::to_string(::getpid()));
    fs::create_directories(dir);
    vortelm::ProgramState st;
    st.programFolder = dir.string();
    const std::string sfr = std::string(VORTELM_SOURCE_DATA_DIR) + "/SFRDEF/LD7RK.SFR";
    fs::copy_file(sfr, dir / "LD7RK.SFR", fs::copy_options::overwrite_existing);
    if (vortelm::ReadSfrFile(st, (dir / "LD7RK.SFR").string()) != 0) {
        std::fprintf(stderr, "bench_script: can not read %s\n", sfr.c_str());
        return 1;
    }
    vortelm::shell::Session s(st);
    vortelm::shell::BuildShellCommandTable(s.table);
    std::printf("register table: %d records\n", st.sfrCount);

    int failures = 0;
    // 186A0 is 100 000.
    failures += Run(s, dir, "DO / _assign / LOOP UNTIL (100000 passes)",
                    "DO\n_assign %1=%1+1\nLOOP UNTIL %1=186A0\n", 100000);
    failures += Run(s, dir, "WHILE / _assign / ENDW (100000 passes)",
                    "WHILE %1<186A0\n_assign %1=%1+1\nENDW\n", 100000);
    fs::remove_all(dir);
    return failures == 0 ? 0 : 1;
}
