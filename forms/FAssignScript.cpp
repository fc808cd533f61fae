#include "forms/FAssignScript.h"

#include "core/Helpers.h"
#include "core/Host.h"
#include "forms/FileBrowser.h"

namespace vortelm::forms {

void FAssignScript::get_preferences() {
    for (size_t i = 0; i < rows.size(); ++i) {
        const UserScript& us = st_.userScripts[i];
        rows[i] = us.path.empty() ? Row{} : Row{us.path, us.name};
    }
}

void FAssignScript::BSearch_Click(int row) {
    if (row >= 0 && row < kUserScriptSlots) searchRow_ = row;
}

void FAssignScript::AssignNew(const std::string& filename) {
    Row& r = rows[static_cast<size_t>(searchRow_)];
    r.TFilename = filename;
    r.TName = BaseName(filename);
}

bool FAssignScript::BEdit_Click(int row) {
    if (row < 0 || row >= kUserScriptSlots) return false;
    const std::string& file = rows[static_cast<size_t>(row)].TFilename;
    if (file.empty()) return false;
    const ProgramCall call = EditorCall(file);
    return st_.host->startDetached(call.program, call.args);
}

void FAssignScript::BRemove_Click() {
    if (RemoveUserScriptAssignment(st_) >= 0) get_preferences();
}

bool FAssignScript::BOk_Click() {
    for (size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].TFilename.empty() || FileExists(st_, rows[i].TFilename, kFalse)) continue;
        (void)st_.host->messageBox(
            "User Skript File No. " + std::to_string(i + 1) + " does not exist ", MsgButtons::Ok,
            MsgIcon::Exclamation);
        return false;
    }
    for (size_t i = 0; i < rows.size(); ++i) {
        UserScript& us = st_.userScripts[i];
        if (rows[i].TFilename.empty())
            us = UserScript{};
        else
            us = UserScript{rows[i].TFilename, rows[i].TName, kTrue};
    }
    st_.host->refreshFeatureButtons();
    return true;
}

}  // namespace vortelm::forms
