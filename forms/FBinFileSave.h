#pragma once
// The binary save form: the selections as one binary file, the gaps between
// them filled with a fill byte.

#include <string>

#include "forms/FileBrowser.h"

namespace vortelm::forms {

class FBinFileSave : public FileBrowser {
  public:
    explicit FBinFileSave(ProgramState& st);

    // The memo into the controls.
    void initialize();

    std::string TFillchar = "FF";  // the fill byte, hexadecimal

    // True when the form closes.
    [[nodiscard]] bool BOk_Click();
    void BCancel_Click() {}
    [[nodiscard]] std::string TargetPath() const;
};

}  // namespace vortelm::forms
