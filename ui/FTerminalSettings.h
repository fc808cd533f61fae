#pragma once
// The terminal settings dialog: hexadecimal or text display of what the
// target sends.

#include <QDialog>

#include "core/ProgramState.h"

class QRadioButton;

namespace vortelm::ui {

class FTerminalSettings : public QDialog {
    Q_OBJECT
public:
    FTerminalSettings(ProgramState& st, QWidget* parent = nullptr);

    void GetPreferences();
    void SetPreferences();
    void BOk_Click();
    void BCancel_Click();

    int16_t workingMode = 2;

private:
    ProgramState& st_;
    QRadioButton* ascii_ = nullptr;
    QRadioButton* hex_ = nullptr;
};

}  // namespace vortelm::ui
