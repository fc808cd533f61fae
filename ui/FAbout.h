#pragma once
// The about form and the launch form FInfo, drawn.

#include <QDialog>

#include "forms/FAbout.h"

class QProgressBar;

namespace vortelm::ui {

class FAbout : public QDialog {
    Q_OBJECT
  public:
    explicit FAbout(QWidget* parent = nullptr);

  private:
    forms::FAbout logic_;
};

// "Launching Vortelm": start-up's progress in XProgress; hidden when
// start-up shows the main window.
class FInfo : public QWidget {
    Q_OBJECT
  public:
    explicit FInfo(QWidget* parent = nullptr);
    void progress(long long value, long long maximum);

  private:
    forms::FInfo logic_;
    QProgressBar* bar_ = nullptr;
};

}  // namespace vortelm::ui
