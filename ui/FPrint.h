#pragma once
// The print form drawn: the printers of the system, the three styles, OK and
// Cancel. OK prints the form logic's lines through Qt's print support (its
// print dialog offers real printers and a PDF file alike).

#include <QDialog>

#include <string>
#include <vector>

#include "forms/FPrint.h"

class QComboBox;
class QPrinter;
class QRadioButton;

namespace vortelm::ui {

class FPrint : public QDialog {
    Q_OBJECT
  public:
    FPrint(ProgramState& st, shell::DecodeAt decode, QWidget* parent = nullptr);

    [[nodiscard]] forms::FPrint& logic() { return logic_; }
    void Form_Load();
    void BOk_Click();
    void BCancel_Click();

    // For unattended runs and tests: OK prints into this PDF file without
    // showing the print dialog.
    void setOutputFile(const QString& path) { outputFile_ = path; }

  private:
    forms::FPrint logic_;
    QComboBox* printers_ = nullptr;
    QRadioButton* text_ = nullptr;
    QRadioButton* hex_ = nullptr;
    QRadioButton* assembler_ = nullptr;
    QString outputFile_;
};

// Prints lines in a fixed-width font, page after page. False when the
// printer could not start.
bool PrintLines(QPrinter& printer, const std::vector<std::string>& lines);

}  // namespace vortelm::ui
