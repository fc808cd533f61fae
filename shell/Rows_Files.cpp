// Rows of the file group: loading and saving images, the base paths.

#include "core/Helpers.h"
#include "image/BinaryFile.h"
#include "image/FileNames.h"
#include "image/HexFile.h"
#include "image/SRecordFile.h"
#include "shell/ImageRowArgs.h"
#include "shell/Rows.h"

namespace vortelm::shell {

namespace {

using namespace rowargs;

constexpr RowResult kIllegal{-2, false};

// The name of a reading command under PATH_LOAD, if the file is there.
std::optional<std::string> ExistingLoadName(Session& s) {
    std::string name = ResolveLoadPath(s.st, s.parsedParameters[0].text);
    if (!FileExists(s.st, name, kFalse)) return std::nullopt;
    return name;
}

RowResult Load(Session& s) {
    const auto name = ExistingLoadName(s);
    if (!name) return kIllegal;
    return Passed(LoadHexCommand(s.st, *name));
}

RowResult LoadSRecord(Session& s) {
    const auto name = ExistingLoadName(s);
    if (!name) return kIllegal;
    return Passed(LoadSRecordCommand(s.st, *name));
}

RowResult BinLoad(Session& s) {
    const auto name = ExistingLoadName(s);
    if (!name) return kIllegal;
    int32_t offset = 0;
    if (s.parsedParameterCount >= 2) offset = HexValue(s.parsedParameters[1].text);
    if (offset < 0) return kIllegal;
    return Passed(LoadBinaryCommand(s.st, *name, offset));
}

// Record size and format of the save rows from the argument at `first` on,
// or the settings.
struct SaveArgs {
    int32_t recordSize;
    int16_t format;
};
SaveArgs TakeSaveArgs(Session& s, int first) {
    SaveArgs a{s.st.SAVERECORDSIZE, s.st.SAVEFORMAT};
    if (s.parsedParameterCount > first) a.recordSize = Decimal(s, first);
    if (s.parsedParameterCount > first + 1) a.format = Word16(Decimal(s, first + 1));
    return a;
}

// The Intel HEX format codes of the settings' 20 and 32; any other number
// goes through as it is.
int16_t HexFormatCode(int16_t format) {
    if (format == 20) return kHexFormatSegment;
    if (format == 32) return kHexFormatLinear;
    return format;
}

RowResult Save(Session& s) {
    const SaveArgs a = TakeSaveArgs(s, 1);
    const std::string name = ResolveSavePath(s.st, s.parsedParameters[0].text);
    return Passed(SaveHexCommand(s.st, name, a.recordSize, HexFormatCode(a.format)));
}

RowResult SaveSRecord(Session& s) {
    const SaveArgs a = TakeSaveArgs(s, 1);
    const std::string name = ResolveSavePath(s.st, s.parsedParameters[0].text);
    return Passed(SaveSRecordCommand(s.st, name, a.recordSize, a.format));
}

RowResult SaveIndexed(Session& s) {
    const SaveArgs a = TakeSaveArgs(s, 2);
    const int32_t index = VariableValue(s, s.parsedParameters[1].variable);
    const std::string name =
        ResolveSavePath(s.st, IndexedFileName(s.parsedParameters[0].text, index));
    return Passed(SaveHexCommand(s.st, name, a.recordSize, HexFormatCode(a.format)));
}

RowResult BinSave(Session& s) {
    int32_t fill = -1;
    if (s.parsedParameterCount >= 2) {
        fill = HexValue(s.parsedParameters[1].text);
        if (fill < 0) return kIllegal;
    }
    const std::string name = ResolveSavePath(s.st, s.parsedParameters[0].text);
    return Passed(SaveBinaryCommand(s.st, name, fill));
}

RowResult SetPath(Session& s) {
    const std::string type = UpperCase(s.parsedParameters[0].text);
    const std::string& path = s.parsedParameters[1].text;
    if (type == "LOAD")
        s.st.PATH_LOAD = path;
    else if (type == "SAVE")
        s.st.PATH_SAVE = path;
    else if (type == "SCRIPT")
        s.st.PATH_SCRIPT = path;
    else if (type == "LOG")
        s.st.PATH_LOG = path;
    else
        return kIllegal;
    return {};
}

constexpr RowBinding kRows[] = {
    {"_load", &Load},       {"_save", &Save},           {"_binload", &BinLoad},
    {"_binsave", &BinSave}, {"_loadsre", &LoadSRecord}, {"_savesre", &SaveSRecord},
    {"_setpath", &SetPath}, {"_savex", &SaveIndexed},
};

}  // namespace

std::span<const RowBinding> FileRows() {
    return kRows;
}

}  // namespace vortelm::shell
