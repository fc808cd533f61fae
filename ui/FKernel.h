#pragma once
// The kernel dialogs drawn: the kernel list (FKernel), one kernel
// (FKernelEdit) and the feature picker (FKernelSelectFeature).

#include <QDialog>

#include "forms/FKernel.h"

class QCheckBox;
class QLineEdit;
class QListWidget;

namespace vortelm::ui {

class FKernelEdit : public QDialog {
    Q_OBJECT
  public:
    FKernelEdit(ProgramState& st, int index, QWidget* parent = nullptr);
    [[nodiscard]] forms::FKernelEdit& logic() { return logic_; }
    void BOk_Click();
    void BAddFeature_Click();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void take();
    void showFeatures();
    forms::FKernelEdit logic_;
    ProgramState& st_;
    QLineEdit* name_ = nullptr;
    QLineEdit* monitor_ = nullptr;
    QLineEdit* loader_ = nullptr;
    QLineEdit* start_ = nullptr;
    QLineEdit* end_ = nullptr;
    QLineEdit* patch_ = nullptr;
    QCheckBox* ack_ = nullptr;
    QListWidget* features_ = nullptr;
};

class FKernel : public QDialog {
    Q_OBJECT
  public:
    FKernel(ProgramState& st, QWidget* parent = nullptr);
    [[nodiscard]] forms::FKernel& logic() { return logic_; }
    void RefreshKernelList();
    void BAdd_Click();
    void BEdit_Click();
    void BOk_Click();

  private:
    forms::FKernel logic_;
    ProgramState& st_;
    QListWidget* list_ = nullptr;
};

}  // namespace vortelm::ui
