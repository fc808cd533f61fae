#pragma once
// The serial settings dialog: draws the controls of forms::FComPort and
// forwards each change to it.

#include <QDialog>

#include "forms/FComPort.h"

class QCheckBox;
class QComboBox;
class QLineEdit;

namespace vortelm::link {
class ComPort;
}

namespace vortelm::ui {

class FComPort : public QDialog {
    Q_OBJECT
  public:
    FComPort(link::ComPort& port, QWidget* parent = nullptr);
    ~FComPort() override;

    [[nodiscard]] forms::FComPort& form() { return form_; }
    void BOk_Click();
    void BCancel_Click();

  protected:
    void showEvent(QShowEvent* e) override;
    void hideEvent(QHideEvent* e) override;

  private:
    forms::FComPort form_;
    QComboBox* portNumber_ = nullptr;
    QLineEdit* timeout_ = nullptr;
    QLineEdit* connectTimeout_ = nullptr;
    QLineEdit* connectRetry_ = nullptr;
};

}  // namespace vortelm::ui
