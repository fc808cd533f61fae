#pragma once
// The register picker FSfr: draws forms::FSfr (the name list and the search
// box) and forwards its events.

#include <QDialog>

#include "forms/FSfr.h"

class QLineEdit;
class QListWidget;

namespace vortelm::ui {

class FSfr : public QDialog {
    Q_OBJECT
  public:
    FSfr(ProgramState& st, link::ComPort* port, QWidget* parent = nullptr);

    // Fills the list from the register table.
    void get_preferences();
    [[nodiscard]] forms::FSfr& logic() { return logic_; }

  private:
    void draw();
    void takeSelection();
    void ok();

    forms::FSfr logic_;
    ProgramState& st_;
    QLineEdit* search_ = nullptr;
    QListWidget* list_ = nullptr;
};

}  // namespace vortelm::ui
