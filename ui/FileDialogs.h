#pragma once
// The six file forms drawn: a place list, a folder list, a file list, a
// type list and a name box (FileBrowserPane) above each form's own boxes.
// Every list and box forwards to the form logic of the same name; OK runs
// the logic's check and work, and closes when it says so.

#include <QDialog>

#include <functional>
#include <map>

#include "forms/FBinFileLoad.h"
#include "forms/FBinFileSave.h"
#include "forms/FFileLoad.h"
#include "forms/FFileSave.h"
#include "forms/FSaveAs.h"
#include "forms/FSelectRange.h"

class QComboBox;
class QLineEdit;
class QListWidget;
class QRadioButton;
class QButtonGroup;

namespace vortelm::ui {

// The lists of a file form.
class FileBrowserPane : public QWidget {
    Q_OBJECT
  public:
    // ok: what a double click in the file list or Enter in the name box runs.
    FileBrowserPane(forms::FileBrowser& form, std::function<void()> ok, QWidget* parent = nullptr);
    // The lists again from the form.
    void redraw();
    // The name box into the form.
    void take();
    void focusName();
    // Called after a type change, for forms whose boxes follow the type.
    std::function<void()> typeChanged;

  private:
    forms::FileBrowser& form_;
    QComboBox* places_ = nullptr;
    QListWidget* dirs_ = nullptr;
    QListWidget* files_ = nullptr;
    QComboBox* types_ = nullptr;
    QLineEdit* name_ = nullptr;
};

class FFileLoad : public QDialog {
    Q_OBJECT
  public:
    FFileLoad(shell::Session& s, forms::LoadType type, QWidget* parent = nullptr);
    [[nodiscard]] forms::FFileLoad& form() { return form_; }
    void BOk_Click();

  private:
    forms::FFileLoad form_;
    FileBrowserPane* pane_ = nullptr;
};

class FFileSave : public QDialog {
    Q_OBJECT
  public:
    FFileSave(ProgramState& st, forms::SaveType type, QWidget* parent = nullptr);
    [[nodiscard]] forms::FFileSave& form() { return form_; }
    void BOk_Click();

  private:
    forms::FFileSave form_;
    FileBrowserPane* pane_ = nullptr;
};

class FSaveAs : public QDialog {
    Q_OBJECT
  public:
    explicit FSaveAs(ProgramState& st, QWidget* parent = nullptr);
    [[nodiscard]] forms::FSaveAs& form() { return form_; }
    void BOk_Click();

  private:
    void drawFormats();
    forms::FSaveAs form_;
    FileBrowserPane* pane_ = nullptr;
    QRadioButton* bySelection_ = nullptr;
    QRadioButton* byBlock_ = nullptr;
    QLineEdit* start_ = nullptr;
    QLineEdit* end_ = nullptr;
    QLineEdit* recordSize_ = nullptr;
    std::map<int, QRadioButton*> formats_;
};

class FBinFileLoad : public QDialog {
    Q_OBJECT
  public:
    explicit FBinFileLoad(ProgramState& st, QWidget* parent = nullptr);
    [[nodiscard]] forms::FBinFileLoad& form() { return form_; }
    void BOk_Click();

  private:
    forms::FBinFileLoad form_;
    FileBrowserPane* pane_ = nullptr;
    QLineEdit* offset_ = nullptr;
};

class FBinFileSave : public QDialog {
    Q_OBJECT
  public:
    explicit FBinFileSave(ProgramState& st, QWidget* parent = nullptr);
    [[nodiscard]] forms::FBinFileSave& form() { return form_; }
    void BOk_Click();

  private:
    forms::FBinFileSave form_;
    FileBrowserPane* pane_ = nullptr;
    QLineEdit* fill_ = nullptr;
};

class FSelectRange : public QDialog {
    Q_OBJECT
  public:
    explicit FSelectRange(ProgramState& st, QWidget* parent = nullptr);
    [[nodiscard]] forms::FSelectRange& form() { return form_; }
    void BOk_Click();

  private:
    forms::FSelectRange form_;
    QLineEdit* start_ = nullptr;
    QLineEdit* end_ = nullptr;
};

// Runs a form's OK work; a bound met on the way ends it with one "*ERROR: "
// line in the terminal, and the form closes.
bool GuardedOk(ProgramState& st, const std::function<bool()>& ok);

}  // namespace vortelm::ui
