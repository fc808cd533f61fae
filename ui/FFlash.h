#pragma once
// The flash dialog drawn: device box, section or status list, password,
// bit fields of a status word, OK and Cancel. What it does lives in
// forms/FFlash.h; this class shows that form and forwards the events.

#include <QDialog>

#include "forms/FFlash.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;

namespace vortelm::ui {

class FFlash : public QDialog {
    Q_OBJECT
  public:
    FFlash(ProgramState& st, target::Target& t, QWidget* parent = nullptr);

    // Sets the mode and draws the form for it.
    void setfeature(std::string_view feature1);
    [[nodiscard]] forms::FFlash& form() { return form_; }

  private:
    void draw();
    void drawSections();

    forms::FFlash form_;
    QComboBox* units_ = nullptr;
    QListWidget* sections_ = nullptr;
    QListWidget* bits_ = nullptr;
    QLineEdit* password_ = nullptr;
    QLabel* passwordLabel_ = nullptr;
};

}  // namespace vortelm::ui
