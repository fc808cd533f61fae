#include "forms/FFileLoad.h"

#include "config/Preferences.h"
#include "core/Helpers.h"
#include "core/Host.h"
#include "image/BinaryFile.h"
#include "image/HexFile.h"
#include "image/SRecordFile.h"
#include "image/Selections.h"
#include "sfr/SfrSets.h"
#include "shell/Script.h"
#include "shell/Session.h"

namespace vortelm::forms {

namespace {

const FileType kHexType{"Intel hex files (*.hex;*.h86)", "*.hex;*.h86"};
const FileType kSreType{"SRE files (*.sre)", "*.sre"};
const FileType kAllType{"All Files (*.*)", "*.*"};
const FileType kIniType{"Preference files (*.ini)", "*.ini"};
const FileType kScriptType{"Script files (*.scm)", "*.scm"};
const FileType kRegSetType{"Register set files (*.mrs)", "*.mrs"};

constexpr int kUserScriptCount = 8;

bool EndsWithNoCase(std::string_view s, std::string_view tail) {
    return s.size() >= tail.size() && EqualUpper(s.substr(s.size() - tail.size()), tail);
}

}  // namespace

ImageKind ImageKindOf(std::string_view path) {
    for (const char* e : {".sre", ".s19", ".s28", ".s37", ".srec", ".mot"})
        if (EndsWithNoCase(path, e)) return ImageKind::SRecord;
    if (EndsWithNoCase(path, ".bin")) return ImageKind::Binary;
    return ImageKind::Hex;
}

void LoadImageByKind(ProgramState& st, const std::string& path, ImageKind kind) {
    switch (kind) {
        case ImageKind::SRecord:
            (void)LoadSRecordCommand(st, path);
            return;
        case ImageKind::Binary:
            (void)LoadBinaryCommand(st, path, 0);
            return;
        case ImageKind::Hex:
            break;
    }
    (void)LoadHexCommand(st, path);
}

FFileLoad::FFileLoad(shell::Session& s) : FileBrowser(s.st, {}), s_(s) {}

FileMemo& FFileLoad::memo() {
    switch (type_) {
        case LoadType::Hex:
            return st_.LoadFileMemos[0];
        case LoadType::Preferences:
            return st_.LoadFileMemos[1];
        case LoadType::Script:
        case LoadType::AssignScript:
            return st_.LoadFileMemos[2];
        case LoadType::Driver:
            return st_.LoadFileMemos[3];
        case LoadType::RegisterSet:
            break;
    }
    return st_.LoadFileMemos[4];
}

void FFileLoad::SetType(LoadType type) {
    type_ = type;
    std::string start = st_.programFolder;
    switch (type) {
        case LoadType::Hex:
            title = "Load File";
            types = {kHexType, kSreType, kAllType};
            // the last folder used; a load path set by _setpath before that
            if (!st_.PATH_LOAD.empty()) start = ResolveInProgramFolder(st_, st_.PATH_LOAD);
            break;
        case LoadType::Preferences:
            title = "Load preferences";
            types = {kIniType, kAllType};
            start += "/PREFS";
            break;
        case LoadType::Script:
            title = "Load script";
            types = {kScriptType, kAllType};
            start += "/SCRIPTS";
            break;
        case LoadType::AssignScript:
            title = "Assign script";
            types = {kScriptType, kAllType};
            start += "/SCRIPTS";
            break;
        case LoadType::RegisterSet:
            title = "Load SFR Register Set";
            types = {kRegSetType, kAllType};
            start += "/REGSET";
            break;
        case LoadType::Driver:
            title = "Search Driver";
            types = {kHexType, kAllType};
            start += "/DRIVER";
            break;
    }
    DFiletype = 0;
    TFilename.clear();
    get_preferences(memo(), start);
}

bool FFileLoad::BOk_Click() {
    const std::string path = TFilename.empty() ? std::string() : ChosenPath();
    if (path.empty() || !CanOpenForReading(path)) {
        (void)st_.host->messageBox("Please select a file !", MsgButtons::Ok, MsgIcon::Exclamation);
        return false;
    }
    set_preferences(memo());
    if (picked) {
        picked(path);
        return true;
    }
    LoadFile(path);
    return true;
}

void FFileLoad::LoadFile(const std::string& path) {
    switch (type_) {
        case LoadType::Hex: {
            // the type chosen says the reader; "All Files" goes by the name
            const ImageKind kind = DFiletype == 0   ? ImageKind::Hex
                                   : DFiletype == 1 ? ImageKind::SRecord
                                                    : ImageKindOf(path);
            LoadImageByKind(st_, path, kind);
            return;
        }
        case LoadType::Preferences:
            ReadPreferences(st_, path);
            RefreshAfterOperation(st_);
            return;
        case LoadType::Script:
            // RunScript puts the name at the top of the last scripts
            (void)shell::RunScript(s_, path, 0);
            return;
        case LoadType::AssignScript:
            assignScript(path);
            return;
        case LoadType::RegisterSet:
            (void)LoadSfrRegisterSet(st_, path);
            st_.host->refreshSfrView();
            return;
        case LoadType::Driver:
            break;
    }
    // The driver's addresses come from reading it into the dump, which is
    // then left as it was.
    ReadHexFile(st_, path);
    driverStart = HexText(LowestSelectedAddress(st_.selections), 6);
    driverEnd = HexText(HighestSelectedAddress(st_.selections), 6);
    UnreadSelections(st_);
    ClearSelections(st_.selections);
    st_.host->refreshMemory();
}

void FFileLoad::assignScript(const std::string& path) {
    int slot = 0;
    for (;;) {
        const auto answer =
            st_.host->inputBox("Which User Script Button would you like to configure (1-" +
                                   std::to_string(kUserScriptCount) + ") ?",
                               "User Scripts", "");
        if (!answer || answer->empty()) return;
        const auto n = NumericValue(*answer);
        if (n && *n >= 1 && *n <= kUserScriptCount && *n == static_cast<int>(*n)) {
            slot = static_cast<int>(*n) - 1;
            break;
        }
    }
    const auto name = st_.host->inputBox(
        "Please assign a name to this script:", "Input User Script Name:", BaseName(path));
    if (!name) return;
    UserScript& us = st_.userScripts[static_cast<size_t>(slot)];
    us.path = path;
    us.name = *name;
    us.flag = kTrue;
    st_.host->refreshFeatureButtons();
}

}  // namespace vortelm::forms
