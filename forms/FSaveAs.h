#pragma once
// "Save File as": an Intel HEX or S-record file of the selections, or of one
// block of addresses, with the record size and format of the settings.

#include <string>

#include "forms/FileBrowser.h"

namespace vortelm::forms {

class FSaveAs : public FileBrowser {
  public:
    explicit FSaveAs(ProgramState& st);

    // The stored save settings into the controls.
    void initialize();

    bool OBySelection = true;  // else OByBlock
    std::string TStartAddress;
    std::string TEndAddress;
    std::string TRecordsize;
    // OFormat: 20, 32 (Intel HEX) or 19, 28, 37 (S-records).
    int OFormat = 20;
    // The formats the chosen type offers.
    [[nodiscard]] std::vector<int> formats() const;

    void DFiletype_Click(int index);
    // Each change of the address boxes: a text that is not hexadecimal gives
    // "No Hexadecimal number !". False then.
    bool TStartAddress_Change(const std::string& text);
    bool TEndAddress_Change(const std::string& text);

    // True when the form closes.
    [[nodiscard]] bool BOk_Click();
    void BCancel_Click() {}
    [[nodiscard]] std::string TargetPath() const;

  private:
    [[nodiscard]] bool isSRecord() const { return DFiletype == 1; }
    bool checkHex(const std::string& text);
};

}  // namespace vortelm::forms
