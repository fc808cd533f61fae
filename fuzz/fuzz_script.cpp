// The script loader: cleaning, the classification with its refusals and the
// resolution of every jump (the shell is asked in check-only mode, so no
// line runs). Every jump of a script that may start must lie inside it.
#include <fstream>

#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "fuzz/FuzzHome.h"
#include "shell/Script.h"
#include "shell/Shell.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static vortelm::TestHost host;
    static vortelm::ProgramState st(host);
    static vortelm::shell::Session session = [] {
        vortelm::shell::Session s(st);
        vortelm::shell::BuildShellCommandTable(s.table);
        st.sfrTable[0].name = "SYSCON";
        st.sfrTable[0].address = 0xFF12;
        st.sfrCount = 1;
        return s;
    }();
    static vortelm::shell::ScriptLevel level;
    st.programFolder = vortelm::fuzz::Home();
    st.terminalBuffer.clear();
    st.terminalLines = 0;
    const std::string path = vortelm::fuzz::WriteInput("T.SCM", data, size);
    const auto r =
        vortelm::shell::PrepareScript(session, level, path, static_cast<int16_t>(size & 1));
    if (level.scriptLineCount < 0 || level.scriptLineCount > vortelm::shell::kScriptLineBound + 1)
        __builtin_trap();
    if (r == vortelm::shell::Prepared::Ready) {
        for (int32_t i = 0; i < level.scriptLineCount; ++i) {
            const auto& rec = level.scriptRecords[static_cast<size_t>(i)];
            if (rec.jumpTrue < 0 || rec.jumpTrue >= level.scriptLineCount) __builtin_trap();
            if (rec.jumpFalse < 0 || rec.jumpFalse >= level.scriptLineCount) __builtin_trap();
        }
    }
    return 0;
}
