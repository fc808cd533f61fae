#include "ui/FVortElm.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QFontDatabase>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QPainter>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QScrollBar>
#include <QShortcut>
#include <QSplitter>
#include <QStatusBar>
#include <QStyle>
#include <QTextBlock>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

#include "core/Helpers.h"
#include "core/RunTimeError.h"
#include "core/Text.h"
#include "forms/FFileLoad.h"
#include "forms/FFileSave.h"
#include "forms/FFlash.h"
#include "forms/FVortElm.h"
#include "forms/TargetEntries.h"
#include "forms/UserScripts.h"
#include "link/ComPort.h"
#include "shell/Program.h"
#include "shell/Script.h"
#include "target/Target.h"
#include "ui/Colours.h"
#include "ui/FComPort.h"
#include "ui/FDisassemble.h"
#include "ui/FFlash.h"
#include "ui/FTerminalSettings.h"
#include "ui/SfrArea.h"

namespace vortelm::ui {

namespace {

QPixmap Lamp(const QColor& colour) {
    QPixmap pm(14, 14);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(colour.darker(160), 1));
    p.setBrush(colour);
    p.drawEllipse(QRectF(1.5, 1.5, 11, 11));
    return pm;
}

QFont Mono() {
    QFont f = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    f.setStyleHint(QFont::Monospace);
    return f;
}

HexKey KeyOf(int key) {
    switch (key) {
        case Qt::Key_Shift:
            return HexKey::Shift;
        case Qt::Key_Control:
            return HexKey::Ctrl;
        case Qt::Key_Escape:
            return HexKey::Escape;
        case Qt::Key_PageUp:
            return HexKey::PageUp;
        case Qt::Key_PageDown:
            return HexKey::PageDown;
        case Qt::Key_Left:
            return HexKey::Left;
        case Qt::Key_Right:
            return HexKey::Right;
        case Qt::Key_Up:
            return HexKey::Up;
        case Qt::Key_Down:
            return HexKey::Down;
        case Qt::Key_Delete:
            return HexKey::Delete;
        default:
            break;
    }
    if ((key >= Qt::Key_0 && key <= Qt::Key_9) || (key >= Qt::Key_A && key <= Qt::Key_F) ||
        key == Qt::Key_Period)
        return HexKey::Edit;
    return HexKey::Other;
}

}  // namespace

// ---- the cells of the hex page

class HexCell : public QLineEdit {
  public:
    HexCell(FVortElm& window, int index) : window_(window), index_(index) {
        setObjectName(QStringLiteral("TMemView%1").arg(index));
        setFrame(false);
        setAlignment(Qt::AlignCenter);
        setFont(Mono());
        setAutoFillBackground(true);
        setAcceptDrops(false);  // a file dropped here goes to the window
        const int w = QFontMetrics(font()).horizontalAdvance(QStringLiteral("000")) + 4;
        setFixedWidth(w);
    }
    [[nodiscard]] int index() const { return index_; }

  protected:
    bool event(QEvent* e) override {
        // The menu's Ctrl shortcuts (copy, cut, paste ...) work on the
        // selections, not on the cell's text.
        if (e->type() == QEvent::ShortcutOverride &&
            (static_cast<QKeyEvent*>(e)->modifiers() & Qt::ControlModifier)) {
            e->ignore();
            return true;
        }
        return QLineEdit::event(e);
    }
    void keyPressEvent(QKeyEvent* e) override {
        const HexKey k = KeyOf(e->key());
        if (e->isAutoRepeat() && (k == HexKey::Shift || k == HexKey::Ctrl)) return;
        window_.guarded([&]() {
            switch (k) {
                case HexKey::Shift:
                case HexKey::Ctrl:
                case HexKey::Escape:
                case HexKey::PageUp:
                case HexKey::PageDown:
                case HexKey::Left:
                case HexKey::Right:
                case HexKey::Up:
                case HexKey::Down:
                case HexKey::Delete:
                    window_.page().keyDown(index_, k);
                    break;
                default:
                    QLineEdit::keyPressEvent(e);
                    window_.page().keyDown(index_, k);
                    break;
            }
        });
    }
    void keyReleaseEvent(QKeyEvent* e) override {
        if (e->isAutoRepeat()) return;
        HexKey k = KeyOf(e->key());
        // With Ctrl down a letter is a shortcut, not a digit typed.
        if (k == HexKey::Edit && (e->modifiers() & Qt::ControlModifier)) k = HexKey::Other;
        const std::string text = this->text().toStdString();
        window_.guarded([&]() { window_.page().keyUp(index_, k, text); });
    }
    void mousePressEvent(QMouseEvent* e) override {
        if (e->button() != Qt::LeftButton) return QLineEdit::mousePressEvent(e);
        const bool ctrl = (e->modifiers() & Qt::ControlModifier) != 0;
        window_.guarded([&]() { window_.page().mouseDown(index_, ctrl); });
    }
    void mouseMoveEvent(QMouseEvent* e) override {
        if (!(e->buttons() & Qt::LeftButton)) return;
        const int i = cellAt(e);
        if (i >= 0) window_.guarded([&]() { window_.page().mouseMove(i); });
    }
    void mouseReleaseEvent(QMouseEvent* e) override {
        if (e->button() != Qt::LeftButton) return QLineEdit::mouseReleaseEvent(e);
        int i = cellAt(e);
        if (i < 0) i = index_;
        window_.guarded([&]() { window_.page().mouseUp(i); });
    }
    void mouseDoubleClickEvent(QMouseEvent*) override {}

  private:
    // The cell under the mouse: the pressed cell keeps the mouse, so the
    // neighbours are found by position.
    int cellAt(QMouseEvent* e) const {
        QWidget* grid = parentWidget();
        if (!grid) return -1;
        const QPoint p = mapTo(grid, e->position().toPoint());
        for (QWidget* w = grid->childAt(p); w; w = w->parentWidget())
            if (auto* c = dynamic_cast<HexCell*>(w)) return c->index();
        return -1;
    }

    FVortElm& window_;
    int index_;
};

// ---- the terminal

class TerminalView : public QPlainTextEdit {
  public:
    explicit TerminalView(FVortElm& window) : window_(window) {
        setObjectName(QStringLiteral("TTerminal"));
        setReadOnly(true);
        setFont(Mono());
        setLineWrapMode(QPlainTextEdit::NoWrap);
        setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    }

  protected:
    void mouseDoubleClickEvent(QMouseEvent* e) override {
        window_.terminalDoubleClicked(cursorForPosition(e->position().toPoint()).position());
    }

  private:
    FVortElm& window_;
};

// ---- the window

FVortElm::FVortElm(shell::Program& program, QtHost& host)
    : program_(program), st_(program.state()), host_(host) {
    setObjectName(QStringLiteral("FVortElm"));
    setWindowTitle(QStringLiteral("Vortelm"));
    setAcceptDrops(true);  // an image file dropped on the window is loaded
    page_ = std::make_unique<HexPage>(st_, *this);
    program.session().addHistory = [this](std::string_view line) {
        history_.add(line);
        fillHistory();
    };

    terminalTimer_ = new QTimer(this);
    terminalTimer_->setObjectName(QStringLiteral("XTerminalWindowTimer"));
    terminalTimer_->setSingleShot(true);
    terminalTimer_->setInterval(100);
    connect(terminalTimer_, &QTimer::timeout, this, [this]() { RefreshTerminalWindow(); });

    auto* central = new QWidget(this);
    auto* split = new QSplitter(Qt::Vertical, central);
    split->setObjectName(QStringLiteral("XSplitter"));
    auto* top = new QSplitter(Qt::Horizontal);
    top->setObjectName(QStringLiteral("XTopSplitter"));
    top->addWidget(buildHexPage());
    sfrArea_ = new SfrArea(st_, &program.port(), host, top);
    top->addWidget(sfrArea_);
    top->setStretchFactor(0, 1);
    top->setChildrenCollapsible(false);
    split->addWidget(top);
    split->addWidget(buildTerminal());
    split->setStretchFactor(0, 0);
    split->setStretchFactor(1, 1);
    split->setChildrenCollapsible(false);
    auto* lay = new QVBoxLayout(central);
    lay->setContentsMargins(6, 6, 6, 6);
    lay->addWidget(split);
    setCentralWidget(central);

    buildMenus();
    buildToolBar();
    buildStatusBar();
    refreshStatus();
    refreshFeatureButtons();
    drawCells();
    resize(1400, 820);
}

FVortElm::~FVortElm() {
    host_.attach(nullptr);
}

target::Target& FVortElm::target() {
    return *program_.session().target;
}

void FVortElm::showDisassembly() {
    if (!disassemble_) disassemble_ = std::make_unique<FDisassemble>(st_, program_.port(), this);
    disassemble_->ShowDisassembly();
}

void FVortElm::guarded(const std::function<void()>& work) {
    try {
        work();
    } catch (const RunTimeError& e) {
        Text2Buffer(st_, std::string("\r\n*ERROR: ") + e.what());
    }
}

QWidget* FVortElm::buildHexPage() {
    auto* box = new QWidget;
    box->setObjectName(QStringLiteral("XHexPage"));
    auto* outer = new QVBoxLayout(box);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addLayout(buildPageBar());
    auto* gridRow = new QHBoxLayout;
    gridRow->addWidget(buildMemGrid(), 1);
    memPage_ = new QScrollBar(Qt::Vertical);
    memPage_->setObjectName(QStringLiteral("SMemPage"));
    // The values above 4080 are taken back to 4080 by the page.
    memPage_->setRange(0, 4095);
    memPage_->setPageStep(16);
    connect(memPage_, &QScrollBar::valueChanged, this,
            [this](int v) { guarded([&]() { page_->scrollChanged(v); }); });
    gridRow->addWidget(memPage_);
    outer->addLayout(gridRow);
    return box;
}

// The page box, the segment buttons and the display selection.
QLayout* FVortElm::buildPageBar() {
    auto* bar = new QHBoxLayout;
    auto* label = new QLabel(QStringLiteral("Address:"));
    label->setObjectName(QStringLiteral("LActPage"));
    actPageBox_ = new QLineEdit;
    actPageBox_->setObjectName(QStringLiteral("TActPage"));
    actPageBox_->setFont(Mono());
    actPageBox_->setFixedWidth(QFontMetrics(actPageBox_->font()).horizontalAdvance("0000000") + 16);
    actPageBox_->installEventFilter(this);
    label->setBuddy(actPageBox_);
    connect(actPageBox_, &QLineEdit::textEdited, this, [this](const QString& t) {
        guarded([&]() { page_->pageTextChanged(t.toStdString()); });
    });
    connect(actPageBox_, &QLineEdit::returnPressed, this, [this]() {
        guarded([&]() {
            if (page_->pageEnter(actPageBox_->text().toStdString())) focusCell(0);
        });
    });
    auto* down = new QToolButton;
    down->setObjectName(QStringLiteral("BSegmentDown"));
    down->setArrowType(Qt::LeftArrow);
    down->setToolTip(QStringLiteral("Previous 64 KiB segment"));
    connect(down, &QToolButton::clicked, this,
            [this]() { guarded([&]() { page_->segmentDown(); }); });
    auto* up = new QToolButton;
    up->setObjectName(QStringLiteral("BSegmentUp"));
    up->setArrowType(Qt::RightArrow);
    up->setToolTip(QStringLiteral("Next 64 KiB segment"));
    connect(up, &QToolButton::clicked, this, [this]() { guarded([&]() { page_->segmentUp(); }); });
    auto* selectWindow = new QToolButton;
    selectWindow->setObjectName(QStringLiteral("BSelectWindow"));
    selectWindow->setText(QStringLiteral("Select page"));
    selectWindow->setToolTip(QStringLiteral("Select actual display"));
    connect(selectWindow, &QToolButton::clicked, this,
            [this]() { guarded([&]() { page_->SelectWindow(); }); });
    bar->addWidget(label);
    bar->addWidget(actPageBox_);
    bar->addSpacing(8);
    bar->addWidget(down);
    bar->addWidget(up);
    bar->addSpacing(8);
    bar->addWidget(selectWindow);
    bar->addStretch(1);
    return bar;
}

// The grid: addresses, 16 x 16 cells and the text column.
QWidget* FVortElm::buildMemGrid() {
    auto* grid = new QWidget;
    grid->setObjectName(QStringLiteral("XMemGrid"));
    grid->setAutoFillBackground(true);
    QPalette gp = grid->palette();
    gp.setColor(QPalette::Window, gp.color(QPalette::Base));
    grid->setPalette(gp);
    auto* g = new QGridLayout(grid);
    g->setContentsMargins(6, 4, 6, 4);
    g->setHorizontalSpacing(0);
    g->setVerticalSpacing(0);
    const QFont mono = Mono();
    QPalette head = grid->palette();
    head.setColor(QPalette::WindowText, QColor(0x70, 0x78, 0x80));
    for (int c = 0; c < 16; ++c) {
        auto* h = new QLabel(QString::asprintf("%02X", c));
        h->setFont(mono);
        h->setAlignment(Qt::AlignCenter);
        h->setPalette(head);
        g->addWidget(h, 0, 1 + c + (c >= 8 ? 1 : 0));
    }
    g->setColumnMinimumWidth(9, 8);
    g->setColumnMinimumWidth(18, 12);
    for (int r = 0; r < 16; ++r) {
        rowLabels_[static_cast<size_t>(r)] = new QLabel;
        QLabel* rl = rowLabels_[static_cast<size_t>(r)];
        rl->setObjectName(QStringLiteral("LColumn%1").arg(r));
        rl->setFont(mono);
        rl->setPalette(head);
        rl->setContentsMargins(0, 0, 10, 0);
        g->addWidget(rl, 1 + r, 0);
        for (int c = 0; c < 16; ++c) {
            auto* cell = new HexCell(*this, r * 16 + c);
            cells_[static_cast<size_t>(r * 16 + c)] = cell;
            g->addWidget(cell, 1 + r, 1 + c + (c >= 8 ? 1 : 0));
        }
        asciiLabels_[static_cast<size_t>(r)] = new QLabel;
        QLabel* al = asciiLabels_[static_cast<size_t>(r)];
        al->setObjectName(QStringLiteral("LMemViewAscii%1").arg(r));
        al->setFont(mono);
        al->setTextFormat(Qt::PlainText);
        al->setMinimumWidth(QFontMetrics(mono).horizontalAdvance(QString(17, QChar('0'))));
        g->addWidget(al, 1 + r, 19);
    }
    g->setColumnStretch(20, 1);
    return grid;
}

QWidget* FVortElm::buildTerminal() {
    auto* box = new QWidget;
    auto* lay = new QVBoxLayout(box);
    lay->setContentsMargins(0, 0, 0, 0);
    terminal_ = new TerminalView(*this);
    lay->addWidget(terminal_, 1);
    auto* row = new QHBoxLayout;
    auto* prompt = new QLabel(QStringLiteral("Command:"));
    command_ = new QComboBox;
    command_->setObjectName(QStringLiteral("TCommand"));
    command_->setEditable(true);
    command_->setInsertPolicy(QComboBox::NoInsert);
    command_->setFont(Mono());
    command_->setMaxVisibleItems(20);
    command_->lineEdit()->setPlaceholderText(
        QStringLiteral("_command args, :hex bytes, or text to send  (_help lists the commands)"));
    prompt->setBuddy(command_);
    connect(command_->lineEdit(), &QLineEdit::returnPressed, this, [this]() {
        const QString line = command_->lineEdit()->text();
        command_->lineEdit()->clear();
        runCommandLine(line);
    });
    row->addWidget(prompt);
    row->addWidget(command_, 1);
    lay->addLayout(row);
    return box;
}

QAction* FVortElm::menuEntry(QMenu* menu, const char* name, const char* caption,
                             std::function<void()> work, const QKeySequence& key) {
    QAction* a = menu->addAction(QString::fromUtf8(caption));
    a->setObjectName(QString::fromUtf8(name));
    if (!key.isEmpty()) a->setShortcut(key);
    if (work)
        connect(a, &QAction::triggered, this, [this, work]() { guarded(work); });
    else
        a->setEnabled(false);  // its operation is not in this build yet
    return a;
}

namespace {

void Separator(QMenu* m, int n) {
    m->addSeparator()->setObjectName(QStringLiteral("USeparator%1").arg(n));
}

}  // namespace

QMenu* FVortElm::topMenu(const char* name, const char* caption) {
    QMenu* m = menuBar()->addMenu(QString::fromUtf8(caption));
    m->setObjectName(QString::fromUtf8(name));
    return m;
}

void FVortElm::buildMenus() {
    menuBar()->setObjectName(QStringLiteral("XMenu"));
    buildFileMenu();
    buildEditMenu();
    buildViewMenu();
    buildTargetMenu();
    buildSettingsMenu();
    buildScriptMenu();
    buildHelpMenu();
}

void FVortElm::buildFileMenu() {
    using forms::LoadType;
    using forms::SaveType;
    QMenu* file = topMenu("PFile", "&File");
    menuEntry(
        file, "UFileLoad", "Load  ...", [this]() { showFileLoad(LoadType::Hex); },
        QKeySequence(Qt::CTRL | Qt::Key_O));
    menuEntry(
        file, "UFileSave", "Save As ...", [this]() { showSaveAs(); },
        QKeySequence(Qt::CTRL | Qt::Key_S));
    menuEntry(file, "UFileLoadBinary", "Load Binary File ...", [this]() { showBinFileLoad(); });
    menuEntry(file, "UFileSaveBinary", "Save Binary File ...", [this]() { showBinFileSave(); });
    Separator(file, 0);
    menuEntry(file, "UFilePrint", "Print Selection", [this]() { showPrint(); });
    Separator(file, 1);
    menuEntry(file, "UFileLoadPreferences", "Load Preferences ...",
              [this]() { showFileLoad(LoadType::Preferences); });
    menuEntry(file, "UFileSavePreferences", "Save Preferences ...",
              [this]() { showFileSave(SaveType::Preferences); });
    Separator(file, 2);
    menuEntry(file, "UFileLoadSFRRegisterSet", "Load SFR Register set ...",
              [this]() { showFileLoad(LoadType::RegisterSet); });
    menuEntry(file, "UFileSaveSFRRegisterSet", "Save SFR Register set ...",
              [this]() { showFileSave(SaveType::RegisterSet); });
    Separator(file, 10);
    // the image files loaded last, the newest first
    recentMenu_ = file->addMenu(QStringLiteral("Recent Files"));
    recentMenu_->setObjectName(QStringLiteral("UFileRecent"));
    connect(file, &QMenu::aboutToShow, this, [this]() { refreshRecentFiles(); });
    for (int i = 0; i < static_cast<int>(forms::RecentFiles::kCount); ++i) {
        QAction* a = recentMenu_->addAction(QString());
        a->setObjectName(QStringLiteral("UFileRecent%1").arg(i));
        connect(a, &QAction::triggered, this,
                [this, i]() { guarded([&]() { openRecentFile(i); }); });
    }
    refreshRecentFiles();
}

void FVortElm::buildEditMenu() {
    HexPage& hp = *page_;
    QMenu* edit = topMenu("PEdit", "&Edit");
    menuEntry(
        edit, "UEditCopy", "Copy", [this, &hp]() { hp.Copy(terminalHasFocus()); },
        QKeySequence(Qt::CTRL | Qt::Key_C));
    menuEntry(
        edit, "UEditCut", "Cut", [&hp]() { hp.Cut(); }, QKeySequence(Qt::CTRL | Qt::Key_X));
    menuEntry(
        edit, "UEditPaste", "Paste", [&hp]() { hp.Paste(); }, QKeySequence(Qt::CTRL | Qt::Key_V));
    Separator(edit, 3);
    menuEntry(
        edit, "UEditSelectRange", "Add Selection ...", [this]() { showSelectRange(); },
        QKeySequence(Qt::CTRL | Qt::Key_R));
    menuEntry(
        edit, "UEditClearSelection", "Clear all Selections", [&hp]() { hp.ClearSelection(); },
        QKeySequence(Qt::CTRL | Qt::Key_Z));
    Separator(edit, 4);
    menuEntry(
        edit, "UEditFill", "Fill", [&hp]() { hp.Fill(); }, QKeySequence(Qt::CTRL | Qt::Key_F));
    menuEntry(edit, "UEditRandomFill", "Random Fill", [&hp]() { hp.RandomFill(); });
    menuEntry(edit, "UEditUnread", "Unread", [&hp]() { hp.Unread(); });
}

void FVortElm::buildViewMenu() {
    QMenu* view = topMenu("PView", "&View");
    menuEntry(view, "UViewWords", "Word", [this]() { showView(0); });
    menuEntry(view, "UViewLong", "Long", [this]() { showView(1); });
    menuEntry(view, "UViewDisassemble", "Disassemble", [this]() { showDisassembly(); });
    menuEntry(view, "UViewClearTerminalWindow", "Clear Terminal Window",
              [this]() { ClearTerminal(); });
}

void FVortElm::buildTargetMenu() {
    QMenu* tgt = topMenu("PTarget", "&Target");
    menuEntry(
        tgt, "UTargetConfiguration", "Configuration ...", [this]() { showConfiguration(); },
        QKeySequence(Qt::CTRL | Qt::Key_Q));
    Separator(tgt, 5);
    menuEntry(
        tgt, "UTargetConnect", "Connect", [this]() { doConnect(); },
        QKeySequence(Qt::CTRL | Qt::Key_T));
    menuEntry(tgt, "UTargetReconnect", "Reconnect", [this]() { doReconnect(); });
    menuEntry(tgt, "UTargetDisconnect", "Disconnect", [this]() { doDisconnect(); });
    menuEntry(tgt, "UDisplayResetConfig", "Display Reset Configuration",
              [this]() { forms::UDisplayResetConfig_Click(target()); });
    Separator(tgt, 6);
    menuEntry(
        tgt, "UTargetDownload", "Download Selection", [this]() { doDownload(); },
        QKeySequence(Qt::CTRL | Qt::Key_D));
    menuEntry(
        tgt, "UTargetUpload", "Upload Selection", [this]() { doUpload(); },
        QKeySequence(Qt::CTRL | Qt::Key_U));
    menuEntry(tgt, "UTargetCompare", "Compare Selection", [this]() { doCompare(); });
    Separator(tgt, 7);
    menuEntry(tgt, "UTargetRelocate", "Relocate Monitor", [this]() {
        (void)forms::UTargetRelocate_Click(target());
        afterCommand();
    });
}

void FVortElm::buildSettingsMenu() {
    QMenu* settings = topMenu("PSettings", "&Settings");
    menuEntry(settings, "USettingsInterface", "Interface ...", [this]() { showComSettings(); });
    menuEntry(settings, "USettingsTerminal", "Terminal ...", [this]() { showTerminalSettings(); });
    menuEntry(settings, "USettingsKernel", "Kernel ...", [this]() { showKernels(); });
    menuEntry(settings, "USettingsFrontend", "Frontend ...", [this]() { showFrontendSettings(); });
}

void FVortElm::buildScriptMenu() {
    QMenu* script = topMenu("PScript", "S&cript");
    menuEntry(script, "UScriptExecute", "Execute ...",
              [this]() { showFileLoad(forms::LoadType::Script); });
    menuEntry(script, "UScriptSelectUserScript", "User Scripts ...",
              [this]() { showUserScripts(); });
    for (int i = 0; i < 16; ++i) {
        QAction* a = script->addAction(QString());
        a->setObjectName(QStringLiteral("UScriptLastfile%1").arg(i));
        a->setVisible(false);  // hidden until the list of last scripts fills it
        connect(a, &QAction::triggered, this, [this, i]() { runLastScript(i); });
    }
    // Esc anywhere in the window asks a running script (or a _poll) to stop.
    auto* esc = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    esc->setObjectName(QStringLiteral("XScriptAbort"));
    connect(esc, &QShortcut::activated, this, [this]() { st_.scriptAbort = 1; });
}

void FVortElm::buildHelpMenu() {
    QMenu* help = topMenu("PHelp", "&Help");
    menuEntry(help, "UHelpIndex", "Contents", nullptr);
    menuEntry(help, "UHelpAbout", "About", [this]() { showAbout(); });
}

QToolButton* FVortElm::toolButton(const char* name, const char* tip, const QString& label, int icon,
                                  QAction* entry, std::function<void()> work) {
    auto* b = new QToolButton;
    b->setObjectName(QString::fromUtf8(name));
    b->setToolTip(QString::fromUtf8(tip));
    b->setText(label);
    b->setAutoRaise(true);
    if (icon >= 0) {
        b->setIcon(style()->standardIcon(static_cast<QStyle::StandardPixmap>(icon)));
        b->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    } else {
        b->setToolButtonStyle(Qt::ToolButtonTextOnly);
    }
    b->setMinimumWidth(52);
    if (work)
        connect(b, &QToolButton::clicked, this, [this, work]() { guarded(work); });
    else if (entry)
        connect(b, &QToolButton::clicked, entry, &QAction::trigger);
    const bool enabled = work ? true : entry ? entry->isEnabled() : false;
    b->setEnabled(enabled);
    toolActions_[name] = toolBar_->addWidget(b);
    return b;
}

void FVortElm::buildToolBar() {
    toolBar_ = addToolBar(QStringLiteral("Tools"));
    toolBar_->setObjectName(QStringLiteral("XToolbar"));
    toolBar_->setMovable(false);
    toolBar_->setIconSize(QSize(20, 20));
    auto entry = [this](const char* name) { return findChild<QAction*>(QString::fromUtf8(name)); };
    using SP = QStyle;
    toolButton("BLoad", "Load file", "Load", SP::SP_DialogOpenButton, entry("UFileLoad"), nullptr);
    toolButton("BSaveAs", "Save selection to file", "Save", SP::SP_DialogSaveButton,
               entry("UFileSave"), nullptr);
    toolBar_->addSeparator();
    toolButton("BCopy", "Copy selection to clipboard", "Copy", SP::SP_FileDialogDetailedView,
               entry("UEditCopy"), nullptr);
    toolButton("BCut", "Cut selection", "Cut", SP::SP_DialogDiscardButton, entry("UEditCut"),
               nullptr);
    toolButton("BPaste", "Paste into selection", "Paste", SP::SP_FileDialogContentsView,
               entry("UEditPaste"), nullptr);
    toolBar_->addSeparator();
    toolButton("BConfigure", "Configure Hardware", "Configure", SP::SP_ComputerIcon,
               entry("UTargetConfiguration"), nullptr);
    toolButton("BConnect", "Connect target", "Connect", SP::SP_MediaPlay, nullptr,
               [this]() { doConnect(); });
    toolButton("BReconnect", "Reconnect", "Reconnect", SP::SP_BrowserReload, nullptr,
               [this]() { doReconnect(); });
    toolButton("BUnconnect", "Disconnect", "Disconnect", SP::SP_MediaStop, nullptr,
               [this]() { doDisconnect(); });
    toolBar_->addSeparator();
    toolButton("BDownload", "Download selection to target", "Download", SP::SP_ArrowDown, nullptr,
               [this]() { doDownload(); });
    toolButton("BUpload", "Upload target memory into selection", "Upload", SP::SP_ArrowUp, nullptr,
               [this]() { doUpload(); });
    toolButton("BCompare", "Compare selection with target memory", "Compare",
               SP::SP_DialogApplyButton, nullptr, [this]() { doCompare(); });
    toolButton("BDebug", "Disassemble / Debug", "Debug", SP::SP_FileDialogInfoView, nullptr,
               [this]() { showDisassembly(); });
    toolBar_->addSeparator();
    toolButton("BProgram", "Intelligent Program of Selection into Flash / Otp", "Program",
               SP::SP_DriveHDIcon, nullptr, [this]() { doFlash("PROGRAM"); });
    toolButton("BErase", "Erase Section", "Erase", SP::SP_TrashIcon, nullptr,
               [this]() { doFlash("ERASE"); });
    toolButton("BProtect", "Protect Flash", "Protect", SP::SP_VistaShield, nullptr,
               [this]() { doFlash("PROTECT"); });
    toolButton("BUnprotect", "Unprotect Flash", "Unprotect", -1, nullptr,
               [this]() { doFlash("UNPROTECT"); });
    toolButton("BLock", "Lock Flash", "Lock", -1, nullptr, [this]() { doFlash("LOCK"); });
    toolButton("BUnlock", "Unlock Flash", "Unlock", -1, nullptr, [this]() { doFlash("UNLOCK"); });
    toolButton("BStatus", "Get Flash Status", "Status", SP::SP_MessageBoxInformation, nullptr,
               [this]() { doFlash("STATUS"); });
    toolButton("BASC02ASC1", "ASC02ASC1", "ASC02ASC1", -1, nullptr, [this]() {
        (void)forms::BASC02ASC1_Click(target());
        afterCommand();
    });
    buildUserScriptBar();
}

// The command selection and the user scripts on a row of their own.
void FVortElm::buildUserScriptBar() {
    using SP = QStyle;
    addToolBarBreak();
    toolBar_ = addToolBar(QStringLiteral("User scripts"));
    toolBar_->setObjectName(QStringLiteral("XUserScripts"));
    toolBar_->setMovable(false);
    toolBar_->setIconSize(QSize(16, 16));
    toolBar_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    auto* selectCommand =
        toolButton("BSelectCommand", "Select command", "Commands", SP::SP_FileDialogListView,
                   nullptr, [this]() { showCommandSelection(); });
    selectCommand->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    for (int i = 0; i < 8; ++i) {
        const std::string name = "BFunc" + std::to_string(i);
        toolButton(name.c_str(), "", QStringLiteral("F%1").arg(i), -1, nullptr,
                   [this, i]() { runUserScript(i); });
    }
}

void FVortElm::buildStatusBar() {
    QStatusBar* sb = statusBar();
    sb->setObjectName(QStringLiteral("XStatusbar"));
    lamp_ = new QLabel;
    lamp_->setObjectName(QStringLiteral("XStatusLamp"));
    stateText_ = new QLabel;
    stateText_->setObjectName(QStringLiteral("XConnectionState"));
    QFont bold = stateText_->font();
    bold.setBold(true);
    stateText_->setFont(bold);
    stateText_->setMinimumWidth(190);
    comState_ = new QLabel;
    comState_->setObjectName(QStringLiteral("XComState"));
    progressBar_ = new QProgressBar;
    progressBar_->setObjectName(QStringLiteral("XProgressBar"));
    progressBar_->setRange(0, 1000);
    progressBar_->setMaximumWidth(220);
    progressBar_->setTextVisible(true);
    progressBar_->hide();
    auto* ctlLabel = new QLabel(QStringLiteral("Controller:"));
    controller_ = new QLineEdit;
    controller_->setObjectName(QStringLiteral("TController"));
    controller_->setReadOnly(true);
    controller_->setFrame(false);
    controller_->setMaximumWidth(150);
    sb->addWidget(lamp_);
    sb->addWidget(stateText_);
    sb->addWidget(comState_, 1);
    sb->addPermanentWidget(progressBar_);
    sb->addPermanentWidget(ctlLabel);
    sb->addPermanentWidget(controller_);
}

// ---- drawing

void FVortElm::drawCells() {
    for (int i = 0; i < 256; ++i) {
        const CellLook look = page_->cell(i);
        HexCell* c = cells_[static_cast<size_t>(i)];
        // An unchanged text keeps the selection of the focused cell.
        const QString text = QString::fromStdString(look.text);
        if (c->text() != text) c->setText(text);
        QPalette p = c->palette();
        p.setColor(QPalette::Base, ColourFromKey(look.background));
        p.setColor(QPalette::Window, ColourFromKey(look.background));
        p.setColor(QPalette::Text, ColourFromKey(look.foreground));
        c->setPalette(p);
    }
    for (int r = 0; r < 16; ++r) {
        rowLabels_[static_cast<size_t>(r)]->setText(
            QString::fromStdString(page_->rowAddressText(r)));
        // Bytes 7F to 9F have no glyph in the font: they show as the point
        // that stands for the other control codes.
        QString text = QString::fromLatin1(page_->rowText(r));
        for (QChar& ch : text)
            if (ch.unicode() >= 0x7F && ch.unicode() <= 0x9F) ch = QChar('.');
        asciiLabels_[static_cast<size_t>(r)]->setText(text);
    }
    if (!actPageBox_->hasFocus()) actPageBox_->setText(QString::fromStdString(page_->pageText()));
}

void FVortElm::setScrollValue(int value) {
    memPage_->setValue(value);
}

void FVortElm::focusCell(int index) {
    HexCell* c = cells_[static_cast<size_t>(index)];
    c->setFocus(Qt::OtherFocusReason);
    // The text the redraw puts in is selected too.
    c->setText(QString::fromStdString(page_->cell(index).text));
    c->setSelection(0, 2);
}

void FVortElm::setCellText(int index, const std::string& text) {
    cells_[static_cast<size_t>(index)]->setText(QString::fromStdString(text));
}

void FVortElm::setPageText(const std::string& text) {
    actPageBox_->setText(QString::fromStdString(text));
    actPageBox_->selectAll();
}

void FVortElm::refreshMemory() {
    drawCells();
}

void FVortElm::gotoPage(int32_t page) {
    guarded([&]() { page_->GotoPage(page); });
}

void FVortElm::refreshStatus() {
    comState_->setText(QString::fromStdString(program_.port().GetComState()));
    stateText_->setText(QString::fromStdString(target::StatusText(st_.ConnectionState)));
    const forms::StatusLamp lamp = forms::FVortElm(st_).statusLamp();
    const QColor colour = lamp == forms::StatusLamp::Red     ? QColor(0xD9, 0x36, 0x2B)
                          : lamp == forms::StatusLamp::Green ? QColor(0x2E, 0xA0, 0x43)
                                                             : QColor(0xE8, 0xB3, 0x0E);
    lamp_->setPixmap(Lamp(colour));
    lamp_->setProperty("lamp", forms::FVortElm::LampName(lamp));
    controller_->setText(QString::fromStdString(st_.MCTYPE));
}

void FVortElm::setFeatureVisible(const char* name, bool visible) {
    auto it = toolActions_.find(name);
    if (it != toolActions_.end()) it->second->setVisible(visible);
}

void FVortElm::refreshFeatureButtons() {
    for (const forms::FeatureButton& f : forms::FVortElm(st_).featureButtons()) {
        setFeatureVisible(f.name.c_str(), f.visible);
        if (!f.caption) continue;
        if (auto* b = findChild<QToolButton*>(QString::fromStdString(f.name)))
            b->setText(QString::fromStdString(*f.caption));
    }
}

void FVortElm::refreshLastScripts() {
    // The entries show the last scripts, the newest first.
    for (size_t i = 0; i < st_.lastScriptFiles.size(); ++i) {
        auto* a = findChild<QAction*>(QStringLiteral("UScriptLastfile%1").arg(i));
        if (!a) continue;
        const std::string& name = st_.lastScriptFiles[i];
        a->setText(QString::fromStdString(name));
        a->setVisible(!name.empty());
    }
}

void FVortElm::showFailure(const std::string& line) {
    // Until the next failure or ten seconds, whichever comes first.
    statusBar()->showMessage(QString::fromStdString(line), 10000);
}

void FVortElm::progress(int64_t value, int64_t maximum) {
    if (maximum <= 0) {
        progressBar_->hide();
        progressBar_->setValue(0);
        return;
    }
    progressBar_->show();
    const int64_t v = std::clamp<int64_t>(value, 0, maximum);
    progressBar_->setValue(static_cast<int>(v * 1000 / maximum));
}

// ---- terminal

void FVortElm::terminalAppended() {
    terminalTimer_->start();
}

void FVortElm::terminalCleared() {
    terminal_->clear();
    terminalTimer_->stop();
}

void FVortElm::RefreshTerminalWindow() {
    QString text = QString::fromUtf8(st_.terminalBuffer.data(),
                                     static_cast<qsizetype>(st_.terminalBuffer.size()));
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    text.remove(QChar('\r'));
    terminal_->setPlainText(text);
    QTextCursor c = terminal_->textCursor();
    c.movePosition(QTextCursor::End);
    terminal_->setTextCursor(c);
    terminal_->ensureCursorVisible();
    terminalTimer_->stop();
    sfrArea_->draw();
}

void FVortElm::ClearTerminal() {
    vortelm::ClearTerminal(st_);
}

void FVortElm::terminalDoubleClicked(int position) {
    QTextCursor c(terminal_->document());
    c.setPosition(position);
    const QTextBlock block = c.block();
    const QString line = block.text();
    c.setPosition(block.position());
    c.setPosition(block.position() + static_cast<int>(line.size()), QTextCursor::KeepAnchor);
    if (line.startsWith(QChar('>'))) {
        command_->lineEdit()->setText(line.mid(1));
        c.setPosition(block.position() + 1);
        c.setPosition(block.position() + static_cast<int>(line.size()), QTextCursor::KeepAnchor);
    }
    terminal_->setTextCursor(c);
}

bool FVortElm::terminalHasFocus() const {
    QWidget* f = QApplication::focusWidget();
    return f == terminal_ || (f && f->objectName() == QLatin1String("ISfr"));
}

// ---- command box

void FVortElm::fillHistory() {
    const QString typed = command_->lineEdit()->text();
    command_->blockSignals(true);
    command_->clear();
    for (const std::string& l : history_.lines) command_->addItem(QString::fromStdString(l));
    command_->setCurrentIndex(-1);
    command_->lineEdit()->setText(typed);
    command_->blockSignals(false);
}

void FVortElm::runCommandLine(const QString& line) {
    guarded([&]() { (void)program_.RunCommandBoxLine(line.toStdString()); });
    afterCommand();
}

void FVortElm::refreshSfrView() {
    sfrArea_->refresh();
}

void FVortElm::afterCommand() {
    sfrArea_->draw();
    refreshLastScripts();
    refreshStatus();
    refreshMemory();
    if (program_.quitRequested() && !closing_) close();
}

// ---- scripts

void FVortElm::runScript(const std::string& fileName) {
    guarded([&]() { (void)shell::RunScript(program_.session(), fileName, 0); });
    afterCommand();
}

void FVortElm::runLastScript(int index) {
    guarded([&]() { forms::UScriptLastfile_Click(program_.session(), index); });
    afterCommand();
}

// ---- target operations

void FVortElm::doConnect() {
    (void)target::connect(target(), 1);
    refreshFeatureButtons();
    afterCommand();
}
void FVortElm::doReconnect() {
    (void)target::reconnect(target());
    refreshFeatureButtons();
    afterCommand();
}
void FVortElm::doDisconnect() {
    (void)target::disconnect(target());
    refreshFeatureButtons();
    afterCommand();
}
void FVortElm::doDownload() {
    (void)target::download(target());
    afterCommand();
}
void FVortElm::doUpload() {
    (void)target::upload(target(), -1);
    afterCommand();
}
void FVortElm::doCompare() {
    (void)target::compare(target(), "");
    afterCommand();
}

void FVortElm::doFlash(const char* feature) {
    if (std::string_view(feature) == "PROGRAM") {
        (void)forms::BProgram_Click(target());
    } else {
        if (!forms::FlashButtonConnected(st_)) return;
        FFlash dialog(st_, target(), this);
        dialog.setfeature(feature);
        (void)dialog.exec();
    }
    afterCommand();
}

void FVortElm::showComSettings() {
    FComPort dialog(program_.port(), this);
    (void)dialog.exec();
    refreshStatus();
}

void FVortElm::showTerminalSettings() {
    FTerminalSettings dialog(st_, this);
    (void)dialog.exec();
}

bool FVortElm::eventFilter(QObject* watched, QEvent* event) {
    if (watched == actPageBox_) {
        if (event->type() == QEvent::FocusIn)
            QTimer::singleShot(0, actPageBox_, [this]() { actPageBox_->selectAll(); });
        else if (event->type() == QEvent::FocusOut)
            pageBoxFocusLost();
    }
    return QMainWindow::eventFilter(watched, event);
}

void FVortElm::pageBoxFocusLost() {
    const std::string text = actPageBox_->text().toStdString();
    guarded([&]() { page_->pageFocusLost(text); });
}

void FVortElm::closeEvent(QCloseEvent* event) {
    closing_ = true;
    if (!program_.quitRequested()) guarded([&]() { program_.ShutDownProgram(); });
    target::DisableConnectionCheck(target());
    event->accept();
}

}  // namespace vortelm::ui
