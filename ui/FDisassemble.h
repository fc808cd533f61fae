#pragma once
// The debug window "Disassemble": draws the code list and the breakpoint
// marks of forms::FDisassemble and forwards clicks, STEP, GO, Cancel and
// Ctrl + C to it.

#include <QDialog>

#include <memory>

#include "forms/FDisassemble.h"

class QListWidget;
class QPushButton;

namespace vortelm {
struct ProgramState;
}
namespace vortelm::link {
class ComPort;
}

namespace vortelm::ui {

class FDisassemble : public QDialog {
    Q_OBJECT
  public:
    FDisassemble(ProgramState& st, link::ComPort& port, QWidget* parent = nullptr);
    ~FDisassemble() override;

    [[nodiscard]] forms::FDisassemble& logic() { return *logic_; }

    // Builds the lists from the selections and shows the window.
    void ShowDisassembly();
    // Draws the lists and the selection from the logic.
    void draw();

  public slots:
    // Esc and Cancel end the window the way closing it does.
    void reject() override;

  protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void takeSelection();

    std::unique_ptr<forms::FDisassemble> logic_;
    QListWidget* code_ = nullptr;
    QListWidget* marks_ = nullptr;
    QPushButton* step_ = nullptr;
    QPushButton* go_ = nullptr;
    QPushButton* cancel_ = nullptr;
    bool drawing_ = false;
};

}  // namespace vortelm::ui
