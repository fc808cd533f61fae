#pragma once
// The load form: chooses a file and runs what its kind of use loads (an
// image, preferences, a script, a script to assign to a button, a register
// set, a flash driver). SetType sets it up before it is shown.

#include <functional>
#include <string>

#include "forms/FileBrowser.h"

namespace vortelm::shell {
struct Session;
}

namespace vortelm::forms {

enum class LoadType { Hex, Preferences, Script, AssignScript, RegisterSet, Driver };

class FFileLoad : public FileBrowser {
  public:
    explicit FFileLoad(shell::Session& s);

    // Title, file types, start folder and memo of the kind of use.
    void SetType(LoadType type);
    [[nodiscard]] LoadType type() const { return type_; }
    std::string title;

    // When set, OK hands the chosen file to it instead of running it (the
    // search of a script for a user script row).
    std::function<void(const std::string&)> picked;

    // After OK on a driver: its start and end addresses, six hexadecimal
    // digits, for the driver boxes of the kernel dialog.
    std::string driverStart;
    std::string driverEnd;

    // OK (also a double click in the file list, or Enter): true when the
    // form closes, false when it stays (no file chosen).
    [[nodiscard]] bool BOk_Click();
    void BCancel_Click() {}

    // The work of OK for a path.
    void LoadFile(const std::string& path);

  private:
    [[nodiscard]] FileMemo& memo();
    void assignScript(const std::string& path);

    shell::Session& s_;
    LoadType type_ = LoadType::Hex;
};

// The image reader a file name asks for: S-record for .sre, .s19, .s28, .s37,
// .srec, .mot; binary for .bin; Intel HEX otherwise. Loads as the load form
// does; a binary file at address 0.
enum class ImageKind { Hex, SRecord, Binary };
[[nodiscard]] ImageKind ImageKindOf(std::string_view path);
void LoadImageByKind(ProgramState& st, const std::string& path, ImageKind kind);

}  // namespace vortelm::forms
