#include "forms/FFileSave.h"

#include "config/Preferences.h"
#include "core/Host.h"
#include "core/Text.h"
#include "sfr/SfrSets.h"

namespace vortelm::forms {

FFileSave::FFileSave(ProgramState& st) : FileBrowser(st, {}) {}

FileMemo& FFileSave::memo() {
    return type_ == SaveType::Preferences ? st_.SaveFileMemos[1] : st_.SaveFileMemos[4];
}

void FFileSave::SetType(SaveType type) {
    type_ = type;
    if (type == SaveType::Preferences) {
        title = "Save Preferences";
        types = {{"Preference files (*.ini)", "*.ini"}, {"All Files (*.*)", "*.*"}};
    } else {
        title = "Save SFR Register Set";
        types = {{"Register set files (*.mrs)", "*.mrs"}, {"All Files (*.*)", "*.*"}};
    }
    DFiletype = 0;
    TFilename.clear();
    const std::string start =
        st_.programFolder + (type == SaveType::Preferences ? "/PREFS" : "/REGSET");
    get_preferences(memo(), start);
}

std::string FFileSave::TargetPath() const {
    if (TFilename.empty()) return {};
    std::string name = TFilename;
    if (!HasExtension(name)) name += type_ == SaveType::Preferences ? ".ini" : ".mrs";
    return ChosenPath(name);
}

bool FFileSave::BOk_Click() {
    focusFilename = false;
    if (TFilename.empty()) {
        (void)st_.host->messageBox("Please insert a filename !", MsgButtons::Ok,
                                   MsgIcon::Exclamation);
        focusFilename = true;
        return false;
    }
    const std::string path = TargetPath();
    set_preferences(memo());
    memo().name = BaseName(path);
    if (type_ == SaveType::Preferences) {
        if (!WritePreferences(st_, path))
            Text2Buffer(st_, "\r\n*ERROR: File " + path + " could not be written");
    } else {
        (void)SaveSfrRegisterSet(st_, path);
    }
    return true;
}

}  // namespace vortelm::forms
