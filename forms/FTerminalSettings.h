#pragma once
// The terminal settings dialog without Qt: whether the bytes from the target
// show as text or as hexadecimal numbers. ui::FTerminalSettings draws it.

#include <cstdint>

#include "core/ProgramState.h"

namespace vortelm::forms {

class FTerminalSettings {
  public:
    // Takes the stored mode.
    explicit FTerminalSettings(ProgramState& st) : st_(st) { GetPreferences(); }

    // 1 hexadecimal, 2 text (OTModeHex, OTModeASCII).
    int16_t workingMode = 2;
    [[nodiscard]] bool hexMode() const { return workingMode == 1; }

    void OTModeASCII_Click() { workingMode = 2; }
    void OTModeHex_Click() { workingMode = 1; }

    void GetPreferences() { workingMode = st_.TMODE; }
    void SetPreferences() { st_.TMODE = workingMode; }
    // OK stores the mode; Cancel leaves it.
    void BOk_Click() { SetPreferences(); }
    void BCancel_Click() {}

  private:
    ProgramState& st_;
};

}  // namespace vortelm::forms
