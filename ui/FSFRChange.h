#pragma once
// The change dialog "SFR - Change": draws forms::FSFRChange (the value box,
// the bit-field boxes) and forwards its events.

#include <QDialog>

#include <array>

#include "forms/FSFRChange.h"

class QLabel;
class QLineEdit;

namespace vortelm::ui {

class FSFRChange : public QDialog {
    Q_OBJECT
  public:
    FSFRChange(ProgramState& st, link::ComPort* port, QWidget* parent = nullptr);

    // Prepares the dialog for a register; exec() shows it.
    void method0(int32_t index);
    [[nodiscard]] forms::FSFRChange& logic() { return logic_; }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void draw();
    void guarded(const std::function<void()>& work);

    forms::FSFRChange logic_;
    ProgramState& st_;
    QLabel* name_ = nullptr;
    QLineEdit* value_ = nullptr;
    QWidget* bits_ = nullptr;
    std::array<QLineEdit*, 16> boxes_{};
};

}  // namespace vortelm::ui
