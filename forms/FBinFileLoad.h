#pragma once
// The binary load form: a file and the address its first byte goes to.

#include <string>

#include "forms/FileBrowser.h"

namespace vortelm::forms {

class FBinFileLoad : public FileBrowser {
  public:
    explicit FBinFileLoad(ProgramState& st);

    std::string TOffset = "000000";  // the load address, hexadecimal

    // True when the form closes.
    [[nodiscard]] bool BOk_Click();
    void BCancel_Click() {}
};

}  // namespace vortelm::forms
