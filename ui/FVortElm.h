#pragma once
// The main window: the hex page, the terminal, the command box, the tool
// buttons, the menu and the status bar. It draws the program's state and
// forwards every event to the operations the shell rows call too.

#include <QMainWindow>

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "forms/HexPage.h"
#include "forms/RecentFiles.h"
#include "shell/CommandBox.h"
#include "ui/QtHost.h"

class QAction;
class QDragEnterEvent;
class QDropEvent;
class QComboBox;
class QLabel;
class QLayout;
class QLineEdit;
class QMenu;
class QPlainTextEdit;
class QProgressBar;
class QScrollBar;
class QTimer;
class QToolBar;
class QToolButton;

namespace vortelm::shell {
class Program;
}
namespace vortelm::target {
struct Target;
}
namespace vortelm::forms {
enum class LoadType;
enum class SaveType;
}  // namespace vortelm::forms

namespace vortelm::ui {

using forms::CellLook;
using forms::HexKey;
using forms::HexPage;
using forms::HexPageView;

class FDisassemble;
class HexCell;
class SfrArea;
class TerminalView;
class FAbout;
class FFrontendSettings;
class FPrint;
class FView;

class FVortElm : public QMainWindow, public HostWindow, public HexPageView {
    Q_OBJECT
  public:
    FVortElm(shell::Program& program, QtHost& host);
    ~FVortElm() override;

    [[nodiscard]] HexPage& page() { return *page_; }
    // The program's target: the buttons call the operations the shell rows call.
    [[nodiscard]] target::Target& target();
    [[nodiscard]] shell::CommandHistory& history() { return history_; }

    // ---- HostWindow
    void terminalAppended() override;
    void terminalCleared() override;
    void refreshStatus() override;
    void refreshFeatureButtons() override;
    void refreshMemory() override;
    void gotoPage(int32_t page) override;
    void progress(int64_t value, int64_t maximum) override;
    void showFailure(const std::string& line) override;
    void refreshSfrView() override;
    [[nodiscard]] SfrArea& sfrArea() { return *sfrArea_; }

    // ---- HexPageView
    void drawCells() override;
    void setScrollValue(int value) override;
    void focusCell(int index) override;
    void setCellText(int index, const std::string& text) override;
    void setPageText(const std::string& text) override;

    // The delayed drawing of the terminal (the 100 ms timer's work).
    void RefreshTerminalWindow();
    void ClearTerminal();
    // A line of the command box, as Enter in TCommand runs it.
    void runCommandLine(const QString& line);
    // A double click in the terminal at a text position.
    void terminalDoubleClicked(int position);

    // Runs an event's work; a bound met on the way ends it with one
    // "*ERROR: " line.
    void guarded(const std::function<void()>& work);

    // The operations behind the buttons and menu entries.
    void doConnect();
    void doReconnect();
    void doDisconnect();
    void doDownload();
    void doUpload();
    void doCompare();
    // A flash button: the intelligent program, or the flash dialog in the
    // mode of the feature word.
    void doFlash(const char* feature);
    void showComSettings();
    // The configuration and kernel dialogs (FVortElm_Config.cpp).
    void showConfiguration();
    void showKernels();
    void showTerminalSettings();
    // Runs a script file (Script menu, last scripts); Esc in the window
    // stops it between statements.
    void runScript(const std::string& fileName);
    void runLastScript(int index);
    // The debug window (BDebug, UViewDisassemble), made on first use.
    void showDisassembly();
    [[nodiscard]] FDisassemble* disassembleWindow() const { return disassemble_.get(); }
    // The view, print, front-end settings and about forms (FVortElm_Forms.cpp).
    void showView(int mode);
    void showPrint();
    void showFrontendSettings();
    void showAbout();
    // The file forms, the user scripts, the command picker, the recent files
    // and the files dropped on the window (FVortElm_Files.cpp).
    void showFileLoad(forms::LoadType type);
    void showFileSave(forms::SaveType type);
    void showSaveAs();
    void showBinFileLoad();
    void showBinFileSave();
    void showSelectRange();
    void showUserScripts();
    void showCommandSelection();
    void runUserScript(int index);
    // An image file loaded as the load form loads it, by its name's type.
    void loadImageFile(const std::string& path);
    void openRecentFile(int index);
    [[nodiscard]] const forms::RecentFiles& recentFiles() const { return recent_; }

  protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    friend class HexCell;
    QWidget* buildHexPage();
    QLayout* buildPageBar();
    QWidget* buildMemGrid();
    QWidget* buildTerminal();
    void buildMenus();
    QMenu* topMenu(const char* name, const char* caption);
    void buildFileMenu();
    void buildEditMenu();
    void buildViewMenu();
    void buildTargetMenu();
    void buildSettingsMenu();
    void buildScriptMenu();
    void buildHelpMenu();
    void refreshRecentFiles();
    // Puts the file at the top of the recent files and redraws their menu.
    void rememberRecent(const std::string& path);
    void buildToolBar();
    void buildUserScriptBar();
    void buildStatusBar();
    QAction* menuEntry(QMenu* menu, const char* name, const char* caption,
                       std::function<void()> work, const QKeySequence& key = {});
    QToolButton* toolButton(const char* name, const char* tip, const QString& label, int icon,
                            QAction* entry, std::function<void()> work);
    void setFeatureVisible(const char* name, bool visible);
    void refreshLastScripts();
    void afterCommand();
    void fillHistory();
    void pageBoxFocusLost();
    [[nodiscard]] bool terminalHasFocus() const;

    shell::Program& program_;
    ProgramState& st_;
    QtHost& host_;
    std::unique_ptr<HexPage> page_;
    shell::CommandHistory history_;

    std::array<HexCell*, 256> cells_{};
    std::array<QLabel*, 16> rowLabels_{};
    std::array<QLabel*, 16> asciiLabels_{};
    QLineEdit* actPageBox_ = nullptr;
    QScrollBar* memPage_ = nullptr;
    TerminalView* terminal_ = nullptr;
    QComboBox* command_ = nullptr;
    QTimer* terminalTimer_ = nullptr;
    QToolBar* toolBar_ = nullptr;
    std::map<std::string, QAction*> toolActions_;  // a tool button's place in the bar
    QLabel* lamp_ = nullptr;
    QLabel* comState_ = nullptr;
    QLabel* stateText_ = nullptr;
    QLineEdit* controller_ = nullptr;
    QProgressBar* progressBar_ = nullptr;
    SfrArea* sfrArea_ = nullptr;  // the SFR view beside the hex page
    bool closing_ = false;
    std::unique_ptr<FDisassemble> disassemble_;
    FView* view_ = nullptr;
    FPrint* print_ = nullptr;
    FFrontendSettings* frontendSettings_ = nullptr;
    FAbout* about_ = nullptr;
    forms::RecentFiles recent_;
    QMenu* recentMenu_ = nullptr;
};

}  // namespace vortelm::ui
