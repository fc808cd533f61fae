#pragma once
// The flash dialog and the flash buttons of the main window, without Qt.
// One dialog serves six modes (erase, protect, unprotect, lock, unlock,
// status): the mode word picks the caption, the controls shown, the units
// offered and what OK runs.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/ProgramState.h"

namespace vortelm::target {
struct Target;
}

namespace vortelm::forms {

// The seven flash buttons of the main window and the feature word of each.
struct FlashButton {
    const char* name;
    const char* feature;
};
inline constexpr std::array<FlashButton, 7> kFlashButtons{{
    {"BProgram", "PROGRAM"},
    {"BErase", "ERASE"},
    {"BProtect", "PROTECT"},
    {"BUnprotect", "UNPROTECT"},
    {"BLock", "LOCK"},
    {"BUnlock", "UNLOCK"},
    {"BStatus", "STATUS"},
}};

// A flash button shows while a target is connected and a memory unit's
// driver offers its feature (or the kernel lists the word itself).
[[nodiscard]] bool FlashButtonVisible(const ProgramState& st, std::string_view feature);

// The test of every flash button: true when connected; otherwise it logs
// "*ERROR: Not connected to Monitor".
[[nodiscard]] bool FlashButtonConnected(ProgramState& st);

// BProgram: the intelligent program of the selections, when connected.
int BProgram_Click(target::Target& t);

class FFlash {
  public:
    FFlash(ProgramState& st, target::Target& t) : st_(st), t_(t) {}

    // Keeps the mode word, fills DMemUnit with the units that have its
    // feature and picks the first of them.
    void setfeature(std::string_view feature1);

    [[nodiscard]] const std::string& mode() const { return mode_; }
    [[nodiscard]] std::string caption() const;
    [[nodiscard]] bool sectionsVisible() const;  // ISections
    [[nodiscard]] bool passwordVisible() const;  // TPassword, LPassword

    // DMemUnit: unit names, and the unit index behind each line.
    [[nodiscard]] const std::vector<std::string>& memUnits() const { return unitNames_; }
    [[nodiscard]] int memUnitLine() const { return unitLine_; }
    // The device changed: the section list follows.
    void DMemUnit_Click(int line);

    // ISections: sections with their ranges, or the status words.
    void RefreshSectionList();
    [[nodiscard]] const std::vector<std::string>& sections() const { return sectionLines_; }
    void setSectionSelected(int line, bool selected);

    // In the mode "STATUS": the bit fields of the picked status word.
    void ISections_Click(int line);
    [[nodiscard]] const std::vector<std::string>& bitFields() const { return bitFields_; }

    // TPassword.
    std::string password;

    // OK runs the mode's operation over the selected lines, or once; the
    // results are dropped (each failure has its own line). Then the dialog
    // closes, as it does on Cancel.
    void BOk_Click();
    void BCancel_Click() { closed_ = true; }
    [[nodiscard]] bool closed() const { return closed_; }

  private:
    [[nodiscard]] int unit() const;

    ProgramState& st_;
    target::Target& t_;
    std::string mode_;
    std::vector<std::string> unitNames_;
    std::vector<int> unitIndex_;
    int unitLine_ = -1;
    std::vector<std::string> sectionLines_;
    std::vector<bool> selected_;
    std::vector<int32_t> statusValues_;
    std::vector<std::string> bitFields_;
    bool closed_ = false;
};

}  // namespace vortelm::forms
