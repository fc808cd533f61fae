#include "forms/UserScripts.h"

#include <cstdlib>
#include <sstream>

#include "core/Helpers.h"
#include "core/Host.h"
#include "core/Text.h"
#include "shell/Script.h"
#include "shell/Session.h"

namespace vortelm::forms {

void RunScriptIfThere(shell::Session& s, const std::string& name) {
    if (name.empty() || !FileExists(s.st, name, kFalse)) {
        Text2Buffer(s.st, "*ERROR: Script File not found\r\n");
        return;
    }
    (void)shell::RunScript(s, name, 0);
}

void UScriptLastfile_Click(shell::Session& s, int index) {
    if (index < 0 || index >= static_cast<int>(s.st.lastScriptFiles.size())) return;
    // a copy: running the script reorders the list
    const std::string name = s.st.lastScriptFiles[static_cast<size_t>(index)];
    if (name.empty()) return;
    RunScriptIfThere(s, name);
}

void BFunc_Click(shell::Session& s, int index) {
    if (index < 0 || index >= kUserScriptSlots) return;
    const UserScript& us = s.st.userScripts[static_cast<size_t>(index)];
    if (us.path.empty()) return;
    RunScriptIfThere(s, std::string(us.path));
}

int RemoveUserScriptAssignment(ProgramState& st) {
    for (;;) {
        const auto answer =
            st.host->inputBox("Which user script assignment would you like to remove (1-" +
                                  std::to_string(kUserScriptSlots) + ") ?",
                              "User Scripts", "");
        if (!answer || answer->empty()) return -1;
        const auto n = NumericValue(*answer);
        if (!n || *n < 1 || *n > kUserScriptSlots || *n != static_cast<int>(*n)) continue;
        const int slot = static_cast<int>(*n) - 1;
        st.userScripts[static_cast<size_t>(slot)] = UserScript{};
        st.host->refreshFeatureButtons();
        return slot;
    }
}

ProgramCall EditorCall(const char* visual, const char* editor, const std::string& file) {
    for (const char* e : {visual, editor}) {
        if (!e) continue;
        std::istringstream words(e);
        ProgramCall call;
        std::string w;
        while (words >> w) {
            if (call.program.empty())
                call.program = w;
            else
                call.args.push_back(w);
        }
        if (call.program.empty()) continue;
        call.args.push_back(file);
        return call;
    }
    return {"xdg-open", {file}};
}

ProgramCall EditorCall(const std::string& file) {
    return EditorCall(std::getenv("VISUAL"), std::getenv("EDITOR"), file);
}

}  // namespace vortelm::forms
