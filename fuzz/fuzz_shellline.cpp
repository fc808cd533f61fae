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

#include "core/ProgramState.h"
#include "core/TestHost.h"
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
    TestHost host;
    shell::ProgramOptions options;
    options.home = Home();
    const int dieAt = data[0] % 48;  // 0: the board always answers
    options.portOverride = dieAt == 0 ? "sim:" : "sim:?fault=die@" + std::to_string(dieAt);
    shell::Program program(host, options);
    program.StartUp();
    ProgramState& st = program.state();
    st.CHECKCONNECTION = 1;
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
