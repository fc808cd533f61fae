#include "core/Text.h"

#include <algorithm>
#include <fstream>

#include "core/Helpers.h"
#include "core/Host.h"
#include "core/ProgramState.h"

namespace vortelm {

void ClearTerminal(ProgramState& st) {
    st.terminalLines = 0;
    st.terminalBuffer.clear();
    st.host->terminalCleared();
}

int32_t GetCRLF(std::string_view text) {
    return static_cast<int32_t>(std::count(text.begin(), text.end(), '\r'));
}

void Text2Buffer(ProgramState& st, std::string_view text) {
    st.terminalLines += GetCRLF(text);
    st.terminalBuffer.append(text);
    if (st.terminalLines > 1000) {
        // One line goes per call, whatever the call added.
        auto cr = st.terminalBuffer.view().find('\r');
        if (cr != std::string_view::npos) st.terminalBuffer.dropFront(cr + 2);
        st.terminalLines -= 1;
    }
    st.host->terminalAppended(text);

    // A line that reports on the log itself is never logged.
    if (st.logEnabled == 1 && UpperCase(text).find("_LOGFILE") == std::string::npos) {
        std::string_view line = text;
        if (line.size() >= 2 && line.substr(line.size() - 2) == "\r\n") line.remove_suffix(2);
        // The log is a Linux text file: each CR LF in the text is one line feed.
        std::string out;
        out.reserve(line.size() + 1);
        for (size_t i = 0; i < line.size(); ++i) {
            if (line[i] == '\r' && i + 1 < line.size() && line[i + 1] == '\n') continue;
            out += line[i];
        }
        out += '\n';
        std::ofstream f(NativePath(ResolveLogPath(st, st.logFileName)),
                        std::ios::binary | std::ios::app);
        f << out;
    }
}

void WriteLogBanner(ProgramState& st) {
    std::ofstream f(NativePath(ResolveInProgramFolder(st, st.logFileName)),
                    std::ios::binary | std::ios::trunc);
    f << "VORTELM LOG FILE\n"
      << "Date: " << st.host->dateText() << "\n"
      << "Time: " << st.host->timeText() << "\n\n\n";
}

}  // namespace vortelm
