#pragma once
// The view window drawn: the list IView of the form logic's rows; Ctrl+C
// copies the selected rows.

#include <QDialog>

#include "forms/FView.h"

class QListWidget;

namespace vortelm::ui {

class FView : public QDialog {
    Q_OBJECT
  public:
    FView(ProgramState& st, QWidget* parent = nullptr);

    [[nodiscard]] forms::FView& logic() { return logic_; }
    // Sets the mode, fills the list and shows the form.
    void setmode(int mode);
    void refreshview();
    // Ctrl+C in the list.
    void IView_Copy2Clipboard();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    forms::FView logic_;
    QListWidget* list_ = nullptr;
};

}  // namespace vortelm::ui
