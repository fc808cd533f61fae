#include "forms/FBinFileSave.h"

#include "core/Helpers.h"
#include "core/Host.h"
#include "image/BinaryFile.h"

namespace vortelm::forms {

FBinFileSave::FBinFileSave(ProgramState& st)
    : FileBrowser(st, {{"Binary files (*.bin)", "*.bin"}, {"All Files (*.*)", "*.*"}}) {
    initialize();
}

void FBinFileSave::initialize() {
    std::string start = st_.programFolder;
    if (!st_.PATH_SAVE.empty()) start = ResolveInProgramFolder(st_, st_.PATH_SAVE);
    get_preferences(st_.SaveFileMemos[5], start);
}

std::string FBinFileSave::TargetPath() const {
    if (TFilename.empty()) return {};
    std::string name = TFilename;
    if (!HasExtension(name)) name += ".bin";
    return ChosenPath(name);
}

bool FBinFileSave::BOk_Click() {
    Host& host = *st_.host;
    if (TFilename.empty()) {
        (void)host.messageBox("Please insert a filename !", MsgButtons::Ok, MsgIcon::Exclamation);
        return false;
    }
    const int32_t fill = HexValue(TFillchar);
    if (TFillchar.empty() || TFillchar.size() > 2 || fill < 0 || fill > 255) {
        (void)host.messageBox("Fillchar must be a valid hexadecimal byte value !", MsgButtons::Ok,
                              MsgIcon::Stop);
        return false;
    }
    const std::string path = TargetPath();
    // a "no" to the overwrite question leaves the form open
    if (FileExists(st_, path, kTrue)) return false;
    set_preferences(st_.SaveFileMemos[5]);
    st_.SaveFileMemos[5].name = BaseName(path);
    (void)SaveBinaryCommand(st_, path, fill);
    return true;
}

}  // namespace vortelm::forms
