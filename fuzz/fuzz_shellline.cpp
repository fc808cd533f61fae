// A shell line typed into the command box, with the connection check on and
// a board that answers, goes silent after some commands, or dies while it
// connects. The program runs whole (start-up from a data home, the port,
// the target) on a virtual clock, so time-outs and the check's ticks cost
// nothing.
//
// Input: one byte chooses the board (the monitor command after which it
// stops answering, or never), then lines separated by line feeds.
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include <unistd.h>

#include "apps/SimOpener.h"
#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "link/ComPort.h"
#include "shell/Program.h"

namespace {

const std::string& Home() {
    static const std::string dir = [] {
        const std::string d = (std::filesystem::temp_directory_path() /
                               ("vortelm-fuzz-shell-" + std::to_string(::getpid())))
                                  .string();
        std::filesystem::create_directories(d);
        return d;
    }();
    return dir;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    using namespace vortelm;
    // One program for the run (its start-up costs more than an input); each
    // input gets a fresh board and the settings a line may have changed
    // are set again.
    static TestHost host;
    static const std::unique_ptr<shell::Program> made = [] {
        shell::ProgramOptions options;
        options.home = Home();
        options.portOverride = "sim:";
        apps::AddSimOpener(options.openers);
        auto p = std::make_unique<shell::Program>(host, options);
        p->StartUp();
        return p;
    }();
    shell::Program& program = *made;
    ProgramState& st = program.state();
    const int dieAt = data[0] % 48;  // 0: the board always answers
    st.portOverride = dieAt == 0 ? "sim:" : "sim:?fault=die@" + std::to_string(dieAt);
    program.port().close();
    st.ConnectionState = kNotConnected;
    st.CHECKCONNECTION = 1;
    st.TIMEOUT = 2000;
    st.CONNECTTIMEOUT = 100;
    st.KLINE = 0;
    st.BAUDRATE = 9600;
    st.selections.count = 0;
    st.terminalBuffer.clear();
    st.terminalLines = 0;
    (void)program.RunCommandBoxLine("_connect NOPROMPT");

    std::string_view rest(reinterpret_cast<const char*>(data + 1), size - 1);
    for (int lines = 0; lines < 6 && !rest.empty(); ++lines) {
        const size_t nl = rest.find('\n');
        std::string line(rest.substr(0, std::min<size_t>(nl, 200)));
        rest = nl == std::string_view::npos ? std::string_view() : rest.substr(nl + 1);
        // The end of the program is not what is tested here.
        if (line.size() >= 5 && (line[1] == 'q' || line[1] == 'Q') && (line[2] | 0x20) == 'u')
            continue;
        (void)program.RunCommandBoxLine(line);
        // The connection check ticks between lines, as in an idle window.
        for (int y = 0; y < 30; ++y) host.yield();
    }
    return 0;
}
