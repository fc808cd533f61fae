#include "forms/FSaveAs.h"

#include <algorithm>

#include "core/Helpers.h"
#include "core/Host.h"
#include "core/Text.h"
#include "image/HexFile.h"
#include "image/SRecordFile.h"

namespace vortelm::forms {

FSaveAs::FSaveAs(ProgramState& st)
    : FileBrowser(st, {{"Intel hex files (*.hex;*.h86)", "*.hex;*.h86"},
                       {"SRE files (*.sre)", "*.sre"},
                       {"All Files (*.*)", "*.*"}}) {}

void FSaveAs::initialize() {
    FileMemo memo = st_.saveFile;
    memo.type = st_.SAVEFILETYPE;
    std::string start = st_.programFolder;
    if (!st_.PATH_SAVE.empty()) start = ResolveInProgramFolder(st_, st_.PATH_SAVE);
    get_preferences(memo, start);
    TStartAddress = HexText(st_.SAVESTARTADDR, 6);
    TEndAddress = HexText(st_.SAVEENDADDR, 6);
    TRecordsize = std::to_string(st_.SAVERECORDSIZE);
    OFormat = st_.SAVEFORMAT;
    const std::vector<int> f = formats();
    if (std::find(f.begin(), f.end(), OFormat) == f.end()) OFormat = f.front();
}

std::vector<int> FSaveAs::formats() const {
    if (isSRecord()) return {19, 28, 37};
    return {20, 32};
}

void FSaveAs::DFiletype_Click(int index) {
    FileBrowser::DFiletype_Click(index);
    const std::vector<int> f = formats();
    if (std::find(f.begin(), f.end(), OFormat) == f.end()) OFormat = f.front();
}

bool FSaveAs::checkHex(const std::string& text) {
    if (HexValue(text) >= 0) return true;
    (void)st_.host->messageBox("No Hexadecimal number !", MsgButtons::Ok, MsgIcon::Exclamation);
    return false;
}

bool FSaveAs::TStartAddress_Change(const std::string& text) {
    TStartAddress = text;
    return checkHex(text);
}

bool FSaveAs::TEndAddress_Change(const std::string& text) {
    TEndAddress = text;
    return checkHex(text);
}

std::string FSaveAs::TargetPath() const {
    if (TFilename.empty()) return {};
    std::string name = TFilename;
    if (!HasExtension(name)) name += isSRecord() ? ".sre" : ".hex";
    return ChosenPath(name);
}

bool FSaveAs::BOk_Click() {
    Host& host = *st_.host;
    if (TFilename.empty()) {
        (void)host.messageBox("Please insert a filename !", MsgButtons::Ok, MsgIcon::Exclamation);
        return false;
    }
    const std::string path = TargetPath();
    const auto recordSize = NumericValue(TRecordsize);
    if (!recordSize || *recordSize < 1 || *recordSize > 255 ||
        *recordSize != static_cast<int>(*recordSize)) {
        (void)host.messageBox("The record size must be a number from 1 to 255 !", MsgButtons::Ok,
                              MsgIcon::Exclamation);
        return false;
    }
    int32_t start = 0;
    int32_t end = 0;
    if (!OBySelection) {
        start = HexValue(TStartAddress);
        end = HexValue(TEndAddress);
        if (start < 0 || end < 0) {
            (void)host.messageBox("No Hexadecimal number !", MsgButtons::Ok, MsgIcon::Exclamation);
            return false;
        }
    }
    // a "no" to the overwrite question leaves the form open
    if (FileExists(st_, path, kTrue)) return false;

    // the settings remember what was written
    set_preferences(st_.saveFile);
    st_.saveFile.name = BaseName(path);
    st_.SAVEFILETYPE = static_cast<int16_t>(DFiletype);
    st_.SAVEFORMAT = static_cast<int16_t>(OFormat);
    st_.SAVERECORDSIZE = static_cast<int16_t>(*recordSize);
    const auto size = static_cast<int32_t>(*recordSize);
    if (!OBySelection) {
        st_.SAVESTARTADDR = start;
        st_.SAVEENDADDR = end;
        if (isSRecord())
            // a block takes S1 records or S2 records: 37 writes as 28
            WriteSRecordRange(st_, path, start, end, size, OFormat == 19 ? 19 : 28);
        else
            WriteHexRange(st_, path, start, end, size,
                          OFormat == 20 ? kHexFormatSegment : kHexFormatLinear);
        return true;
    }
    if (isSRecord())
        (void)SaveSRecordCommand(st_, path, size, static_cast<int16_t>(OFormat));
    else
        (void)SaveHexCommand(st_, path, size, OFormat == 20 ? kHexFormatSegment : kHexFormatLinear);
    return true;
}

}  // namespace vortelm::forms
