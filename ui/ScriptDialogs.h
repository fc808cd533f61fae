#pragma once
// The user scripts dialog and the command picker, drawn: each control
// forwards to the form logic of the same name.

#include <QDialog>

#include <array>
#include <functional>

#include "forms/FAssignScript.h"
#include "forms/FCommandSelection.h"

class QLabel;
class QLineEdit;
class QListWidget;

namespace vortelm::ui {

class FAssignScript : public QDialog {
    Q_OBJECT
  public:
    // search: opens the load form in its script mode for a row; what it
    // picks comes back through the form's AssignNew.
    FAssignScript(ProgramState& st, std::function<void(FAssignScript&)> search,
                  QWidget* parent = nullptr);
    [[nodiscard]] forms::FAssignScript& form() { return form_; }
    // The rows again from the form.
    void redraw();
    void BOk_Click();

  private:
    void take();
    forms::FAssignScript form_;
    std::array<QLineEdit*, forms::kUserScriptSlots> files_{};
    std::array<QLineEdit*, forms::kUserScriptSlots> names_{};
};

class FCommandSelection : public QDialog {
    Q_OBJECT
  public:
    FCommandSelection(const shell::ShellTable& table, QWidget* parent = nullptr);
    [[nodiscard]] forms::FCommandSelection& form() { return form_; }
    // The picked line, for the command box (the dialog then closes).
    void Takeit();
    [[nodiscard]] const std::string& taken() const { return taken_; }

  private:
    forms::FCommandSelection form_;
    QLabel* description_ = nullptr;
    QLabel* usage_ = nullptr;
    QListWidget* parameters_ = nullptr;
    std::string taken_;
};

}  // namespace vortelm::ui
