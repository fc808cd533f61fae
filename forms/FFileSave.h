#pragma once
// The save form for preferences and register sets: a name in a folder, the
// extension added when the name has none, then the writer of the kind.

#include <string>

#include "forms/FileBrowser.h"

namespace vortelm::forms {

enum class SaveType { Preferences, RegisterSet };

class FFileSave : public FileBrowser {
  public:
    explicit FFileSave(ProgramState& st);

    void SetType(SaveType type);
    [[nodiscard]] SaveType type() const { return type_; }
    std::string title;
    // Set when OK found no name: the focus goes to TFilename.
    bool focusFilename = false;

    // True when the form closes.
    [[nodiscard]] bool BOk_Click();
    void BCancel_Click() {}
    // The path OK writes to, from the name box (empty without a name).
    [[nodiscard]] std::string TargetPath() const;

  private:
    [[nodiscard]] FileMemo& memo();
    SaveType type_ = SaveType::Preferences;
};

}  // namespace vortelm::forms
