#include "forms/FBinFileLoad.h"

#include "core/Helpers.h"
#include "core/Host.h"
#include "image/BinaryFile.h"

namespace vortelm::forms {

FBinFileLoad::FBinFileLoad(ProgramState& st)
    : FileBrowser(st, {{"Binary files (*.bin)", "*.bin"}, {"All Files (*.*)", "*.*"}}) {
    std::string start = st_.programFolder;
    if (!st_.PATH_LOAD.empty()) start = ResolveInProgramFolder(st_, st_.PATH_LOAD);
    get_preferences(st_.LoadFileMemos[5], start);
}

bool FBinFileLoad::BOk_Click() {
    const std::string path = TFilename.empty() ? std::string() : ChosenPath();
    if (path.empty() || !CanOpenForReading(path)) {
        (void)st_.host->messageBox("Please select a file !", MsgButtons::Ok, MsgIcon::Exclamation);
        return false;
    }
    const int32_t offset = HexValue(TOffset);
    if (TOffset.empty() || offset < 0) {
        (void)st_.host->messageBox("The address offset must be a valid hexadecimal value !",
                                   MsgButtons::Ok, MsgIcon::Stop);
        return false;
    }
    set_preferences(st_.LoadFileMemos[5]);
    (void)LoadBinaryCommand(st_, path, offset);
    return true;
}

}  // namespace vortelm::forms
