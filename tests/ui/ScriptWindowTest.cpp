// Scripts in the main window: the Script menu's last scripts run them, and
// Esc stops a running one between its statements.

#include <QMessageBox>
#include <QTimer>

#include <fstream>

#include "tests/ui/UiFixture.h"

namespace vortelm::testing {
namespace {

class ScriptWindow : public UiTest {
  protected:
    void Write(const std::string& name, const std::string& text) {
        std::ofstream(st().programFolder + "/" + name, std::ios::binary) << text;
    }
    // Presses Esc in the window a moment after the script has started.
    void EscSoon() {
        QTimer::singleShot(150, window.get(),
                           [this]() { QTest::keyClick(window.get(), Qt::Key_Escape); });
    }
    size_t Count(const std::string& text) {
        size_t n = 0;
        for (size_t at = st().terminalBuffer.find(text); at != std::string::npos;
             at = st().terminalBuffer.find(text, at + 1))
            ++n;
        return n;
    }
};

TEST_F(ScriptWindow, TheMenuRunsALastScriptAndEscStopsIt) {
    // 30000 passes of 10 ms: only Esc ends it in time.
    Write("count.scm", "DO\n_assign %1=%1+1\n_delayms 10\nLOOP UNTIL 30000\n_print \"never\"\n");
    st().variables[1] = 0;
    EscSoon();
    Enter(find<QComboBox>("TCommand"), "_executescript count.scm");
    EXPECT_EQ(Count("*Script aborted\r\n"), 1u);
    EXPECT_FALSE(logged(">_print \"never\""));
    EXPECT_GT(st().variables[1], 0);
    EXPECT_LT(st().variables[1], 30000);
    EXPECT_EQ(st().scriptAbort, 0);

    // The script is now the first of the last scripts in the menu.
    QAction* entry = find<QAction>("UScriptLastfile0");
    ASSERT_NE(entry, nullptr);
    EXPECT_TRUE(entry->isVisible());
    EXPECT_TRUE(entry->text().endsWith(QStringLiteral("count.scm")));
    st().variables[1] = 0;
    EscSoon();
    entry->trigger();
    EXPECT_EQ(Count("*Script aborted\r\n"), 2u);
    EXPECT_GT(st().variables[1], 0);
    EXPECT_LT(st().variables[1], 30000);
    EXPECT_EQ(st().scriptAbort, 0);

    // A script of the list that is gone says so.
    std::filesystem::remove(st().programFolder + "/count.scm");
    entry->trigger();
    EXPECT_TRUE(logged("*ERROR: Script File not found\r\n"));
}

TEST_F(ScriptWindow, EscEndsAPoll) {
    Enter(find<QComboBox>("TCommand"), "_connect NOPROMPT");
    ASSERT_EQ(st().ConnectionState, 1);
    Write("poll.scm", "_poll 200,FFFF,1234\n_print \"never\"\n");
    EscSoon();
    Enter(find<QComboBox>("TCommand"), "_executescript poll.scm");
    EXPECT_TRUE(
        logged(">_poll 200,FFFF,1234\r\n*ERROR: Poll ended by the operator\r\n"
               "*ERROR: Script aborted\r\n"));
    EXPECT_FALSE(logged(">_print \"never\""));
    EXPECT_EQ(st().scriptAbort, 0);
    // The line is in step with the board afterwards.
    Enter(find<QComboBox>("TCommand"), "_r16 200");
    EXPECT_FALSE(logged("_r16 200\r\n*ERROR"));
}

}  // namespace
}  // namespace vortelm::testing

namespace vortelm::testing {
namespace {

TEST_F(ScriptWindow, CMessageShowsTheSmallWindowAndGoesOn) {
    Enter(find<QComboBox>("TCommand"), "_cmessage \"first\",\"second\"");
    // The window is a top-level one of its own (or a child of the active one).
    QMessageBox* shown = window->findChild<QMessageBox*>(QStringLiteral("FMessage"));
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->objectName() == QLatin1String("FMessage")) shown = qobject_cast<QMessageBox*>(w);
    ASSERT_NE(shown, nullptr);
    EXPECT_TRUE(shown->isVisible());
    EXPECT_FALSE(shown->isModal());
    EXPECT_EQ(shown->text().toStdString(), "first\nsecond\n");
    EXPECT_EQ(lastBox(), "first\nsecond\n");
    EXPECT_TRUE(logged(">_cmessage \"first\",\"second\"\r\n"));
}

}  // namespace
}  // namespace vortelm::testing
