#pragma once
// The user script buttons, the menu of the last scripts and the editor of a
// script: what the main window and FAssignScript run for them.

#include <string>
#include <vector>

#include "core/ProgramState.h"

namespace vortelm::shell {
struct Session;
}

namespace vortelm::forms {

inline constexpr int kUserScriptSlots = 8;

// Runs a script file if it exists, else logs "*ERROR: Script File not found".
void RunScriptIfThere(shell::Session& s, const std::string& name);
// An entry of the last scripts' menu (0 to 15).
void UScriptLastfile_Click(shell::Session& s, int index);
// A user script button (0 to 7): an active slot runs its file.
void BFunc_Click(shell::Session& s, int index);

// Asks which assignment to remove, "(1-8) ?", again until the answer is a
// number from 1 to 8; an empty answer or Cancel leave. The slot is cleared
// and the buttons redrawn. Gives the slot cleared, or -1.
int RemoveUserScriptAssignment(ProgramState& st);

// The editor to start for a file: $VISUAL, else $EDITOR (split at blanks,
// no shell), else the desktop's default through xdg-open.
struct ProgramCall {
    std::string program;
    std::vector<std::string> args;
};
[[nodiscard]] ProgramCall EditorCall(const char* visual, const char* editor,
                                     const std::string& file);
// The same from the environment.
[[nodiscard]] ProgramCall EditorCall(const std::string& file);

}  // namespace vortelm::forms
