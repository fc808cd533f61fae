// The main window around the hex page: the command box and its history, the
// terminal, the status bar against the virtual board, the progress bar.

#include <QProgressBar>
#include <QTextBlock>
#include <QTimer>

#include <vector>

#include "core/Text.h"
#include "image/Selections.h"
#include "tests/ui/UiFixture.h"

namespace vortelm::testing {
namespace {

using Window = UiTest;

TEST_F(Window, ControlsCarryTheirNames) {
    for (const char* name : {"BConnect", "BReconnect", "BUnconnect", "BDownload", "BUpload",
                             "BCompare", "BLoad", "BSaveAs", "BCopy", "BCut", "BPaste",
                             "BConfigure", "BDebug", "BSelectWindow", "BSegmentUp", "BSegmentDown"})
        EXPECT_NE(window->findChild<QAbstractButton*>(name), nullptr) << name;
    EXPECT_NE(window->findChild<QComboBox*>("TCommand"), nullptr);
    EXPECT_NE(window->findChild<QPlainTextEdit*>("TTerminal"), nullptr);
    EXPECT_EQ(find<QAbstractButton>("BConnect")->toolTip(), "Connect target");
    EXPECT_EQ(find<QAction>("UFileLoad")->text(), "Load  ...");
    EXPECT_EQ(find<QAction>("UTargetConnect")->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_T));
    EXPECT_EQ(find<QAction>("UEditClearSelection")->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Z));
    // An entry whose operation is not in this build stays disabled.
    EXPECT_FALSE(find<QAction>("UHelpIndex")->isEnabled());
    EXPECT_TRUE(find<QAction>("UFileLoad")->isEnabled());
    EXPECT_TRUE(find<QAction>("UTargetConfiguration")->isEnabled());
    EXPECT_TRUE(find<QAction>("UViewDisassemble")->isEnabled());
    EXPECT_FALSE(find<QAction>("UScriptLastfile0")->isVisible());
}

TEST_F(Window, CommandBoxRunsHelpAndKeepsItInTheHistory) {
    auto* box = find<QComboBox>("TCommand");
    Enter(box, "_help");
    EXPECT_TRUE(logged("_load")) << st().terminalBuffer;
    ASSERT_GE(box->count(), 1);
    EXPECT_EQ(box->itemText(0), "_help");
    EXPECT_EQ(box->lineEdit()->text(), "");
    Enter(box, "_help");
    EXPECT_EQ(box->count(), 2);  // duplicates kept, newest first
}

TEST_F(Window, CommandBoxHistoryKeepsFifty) {
    auto* box = find<QComboBox>("TCommand");
    for (int i = 0; i < 55; ++i) window->history().add("_x" + std::to_string(i));
    Enter(box, "_help");
    EXPECT_EQ(box->count(), 50);
    EXPECT_EQ(box->itemText(0), "_help");
    EXPECT_EQ(box->itemText(1), "_x54");
}

TEST_F(Window, CommandBoxSendsAColonLineAsBytes) {
    auto* box = find<QComboBox>("TCommand");
    Enter(box, ":4142");
    EXPECT_TRUE(logged("\r\n-> SENDING: 41\r\n-> SENDING: 42")) << st().terminalBuffer;
    EXPECT_EQ(box->count(), 0);  // only "_" lines go to the history
}

TEST_F(Window, TerminalDrawsLaterAndKeepsAThousandLines) {
    auto* term = find<QPlainTextEdit>("TTerminal");
    window->ClearTerminal();
    for (int i = 0; i < 1500; ++i) Text2Buffer(st(), "\r\nline " + std::to_string(i));
    // Nothing is drawn per message: the 100 ms timer draws the burst once.
    EXPECT_TRUE(term->toPlainText().isEmpty());
    auto* timer = window->findChild<QTimer*>("XTerminalWindowTimer");
    ASSERT_NE(timer, nullptr);
    EXPECT_TRUE(timer->isActive());
    EXPECT_EQ(timer->interval(), 100);
    EXPECT_TRUE(QTest::qWaitFor([&]() { return !term->toPlainText().isEmpty(); }, 2000));
    EXPECT_LE(term->blockCount(), 1001);
    EXPECT_GE(term->blockCount(), 999);
    EXPECT_TRUE(term->toPlainText().endsWith("line 1499"));
    EXPECT_EQ(term->textCursor().position(), term->document()->characterCount() - 1);
}

TEST_F(Window, ClearTerminalEmptiesBufferAndWindow) {
    Text2Buffer(st(), "\r\nsomething");
    window->RefreshTerminalWindow();
    find<QAction>("UViewClearTerminalWindow")->trigger();
    EXPECT_EQ(st().terminalBuffer, "");
    EXPECT_EQ(st().terminalLines, 0);
    EXPECT_TRUE(find<QPlainTextEdit>("TTerminal")->toPlainText().isEmpty());
}

TEST_F(Window, DoubleClickOnAnEchoedLinePutsItIntoTheCommandBox) {
    window->ClearTerminal();
    Text2Buffer(st(), "\r\n*Load: 12 bytes loaded\r\n>_load x.hex\r\n*done");
    window->RefreshTerminalWindow();
    auto* term = find<QPlainTextEdit>("TTerminal");
    const QTextBlock block = term->document()->findBlockByNumber(2);
    ASSERT_EQ(block.text(), ">_load x.hex");
    QTextCursor c(block);
    c.setPosition(block.position() + 4);
    const QPoint at = term->cursorRect(c).center();
    QTest::mouseDClick(term->viewport(), Qt::LeftButton, Qt::NoModifier, at);
    EXPECT_EQ(find<QComboBox>("TCommand")->lineEdit()->text(), "_load x.hex");
    EXPECT_EQ(term->textCursor().selectedText(), "_load x.hex");
    // Another line is only selected.
    find<QComboBox>("TCommand")->lineEdit()->clear();
    QTextCursor other(term->document()->findBlockByNumber(1));
    QTest::mouseDClick(term->viewport(), Qt::LeftButton, Qt::NoModifier,
                       term->cursorRect(other).center());
    EXPECT_EQ(find<QComboBox>("TCommand")->lineEdit()->text(), "");
    EXPECT_EQ(term->textCursor().selectedText(), "*Load: 12 bytes loaded");
}

TEST_F(Window, StatusAfterConnectAndDisconnect) {
    auto* state = find<QLabel>("XConnectionState");
    auto* lamp = find<QLabel>("XStatusLamp");
    EXPECT_EQ(state->text(), "NOT CONNECTED");
    EXPECT_EQ(lamp->property("lamp").toString(), "XStatusRed");
    EXPECT_TRUE(find<QLabel>("XComState")->text().startsWith("sim:"))
        << find<QLabel>("XComState")->text().toStdString();
    EXPECT_EQ(find<QLineEdit>("TController")->text().toStdString(), st().MCTYPE);
    find<QAbstractButton>("BConnect")->click();
    EXPECT_FALSE(host->answeredBoxes.empty());  // the reset prompt was answered
    ASSERT_EQ(st().ConnectionState, 1) << st().terminalBuffer << "|" << lastBox();
    EXPECT_EQ(state->text(), "CONNECTED AND READY");
    EXPECT_EQ(lamp->property("lamp").toString(), "XStatusGreen");
    find<QAbstractButton>("BUnconnect")->click();
    EXPECT_EQ(state->text(), "NOT CONNECTED");
    EXPECT_EQ(lamp->property("lamp").toString(), "XStatusRed");
}

TEST_F(Window, OtherStatesShowTheYellowLamp) {
    st().ConnectionState = kUserProgramRunning;
    window->refreshStatus();
    EXPECT_EQ(find<QLabel>("XConnectionState")->text(), "USER PROGRAM RUNNING");
    EXPECT_EQ(find<QLabel>("XStatusLamp")->property("lamp").toString(), "XStatusYellow");
    st().ConnectionState = kNotConnected;
}

TEST_F(Window, ProgressBarMovesDuringADownload) {
    find<QAbstractButton>("BConnect")->click();
    ASSERT_EQ(st().ConnectionState, 1) << st().terminalBuffer;
    for (int32_t a = 0; a < 0x800; ++a) defineByte(0x8000 + a, static_cast<uint8_t>(a));
    ClearSelections(st().selections);
    AddSelection(st().selections, 0x8000, 0x87FF);
    auto* bar = find<QProgressBar>("XProgressBar");
    std::vector<int> seen;
    bool shown = false;
    QObject::connect(bar, &QProgressBar::valueChanged, [&](int v) {
        seen.push_back(v);
        shown = shown || bar->isVisible();
    });
    find<QAbstractButton>("BDownload")->click();
    EXPECT_TRUE(logged("*Download")) << st().terminalBuffer;
    EXPECT_TRUE(shown);
    std::vector<int> rising;
    for (int v : seen)
        if (v > 0 && (rising.empty() || v > rising.back())) rising.push_back(v);
    EXPECT_GE(rising.size(), 2u);
    EXPECT_FALSE(bar->isVisible());  // hidden when done
    EXPECT_NE(IsValid(st().dump, 0x8000), 0);
}

TEST_F(Window, FeatureButtonsFollowTheKernel) {
    EXPECT_FALSE(find<QAbstractButton>("BProgram")->isVisible());
    find<QAbstractButton>("BConnect")->click();
    ASSERT_EQ(st().ConnectionState, 1);
    const Kernel& k = st().kernels[static_cast<size_t>(st().CurrentKernel)];
    bool program = false;
    for (int i = 0; i < k.featureCount; ++i)
        program = program || k.features[static_cast<size_t>(i)].name == "PROGRAM";
    EXPECT_EQ(find<QAbstractButton>("BProgram")->isVisible(), program);
    st().userScripts[2].path = "/x/y.scm";
    st().userScripts[2].name = "Blink";
    window->refreshFeatureButtons();
    auto* func2 = find<QAbstractButton>("BFunc2");
    EXPECT_TRUE(QTest::qWaitFor([&]() { return func2->isVisible(); }, 2000));
    EXPECT_EQ(find<QAbstractButton>("BFunc2")->text(), "Blink");
    EXPECT_FALSE(find<QAbstractButton>("BFunc3")->isVisible());
    st().userScripts[2].path.clear();
    window->refreshFeatureButtons();
    EXPECT_TRUE(QTest::qWaitFor([&]() { return !func2->isVisible(); }, 2000));
}

}  // namespace
}  // namespace vortelm::testing
