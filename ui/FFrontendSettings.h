#pragma once
// The front-end settings form drawn: switches, the blank character, five
// colour boxes with their previews and the scale factor.

#include <QDialog>

#include <array>

#include "forms/FFrontendSettings.h"

class QCheckBox;
class QFrame;
class QLineEdit;

namespace vortelm::ui {

class FFrontendSettings : public QDialog {
    Q_OBJECT
  public:
    FFrontendSettings(ProgramState& st, QWidget* parent = nullptr);

    [[nodiscard]] forms::FFrontendSettings& logic() { return logic_; }
    // Copies the values into the controls.
    void get_preferences();
    void BOk_Click();
    void BCancel_Click();

  signals:
    // After OK: the hex page redraws in the new colours.
    void settingsStored();

  private:
    void showPreview(int box);

    forms::FFrontendSettings logic_;
    QCheckBox* log_ = nullptr;
    QCheckBox* refreshSfr_ = nullptr;
    QLineEdit* blank_ = nullptr;
    QLineEdit* scale_ = nullptr;
    std::array<QLineEdit*, forms::kColourBoxes> colours_{};
    std::array<QFrame*, forms::kColourBoxes> previews_{};
};

}  // namespace vortelm::ui
