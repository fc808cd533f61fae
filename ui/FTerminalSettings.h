#pragma once
// The terminal settings dialog: draws forms::FTerminalSettings (hexadecimal
// or text display of what the target sends) and forwards its events.

#include <QDialog>

#include "forms/FTerminalSettings.h"

class QRadioButton;

namespace vortelm::ui {

class FTerminalSettings : public QDialog {
    Q_OBJECT
  public:
    FTerminalSettings(ProgramState& st, QWidget* parent = nullptr);

    [[nodiscard]] forms::FTerminalSettings& form() { return form_; }
    void BOk_Click();
    void BCancel_Click();

  private:
    forms::FTerminalSettings form_;
    QRadioButton* ascii_ = nullptr;
    QRadioButton* hex_ = nullptr;
};

}  // namespace vortelm::ui
