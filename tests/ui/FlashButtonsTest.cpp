// The seven flash buttons and the flash dialog against the virtual board,
// on the offscreen platform.

#include <QListWidget>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>

#include <fstream>

#include "tests/flash/FlashFixture.h"
#include "tests/ui/UiFixture.h"
#include "ui/FFlash.h"

namespace vortelm::testing {
namespace {

class FlashButtons : public UiTest {
  protected:
    // Whether the toolbar shows the button (a narrow window may move a
    // shown button into the toolbar's overflow menu).
    bool shown(const char* name) {
        auto* bar = find<QToolBar>("XToolbar");
        auto* button = find<QToolButton>(name);
        for (QAction* a : bar->actions())
            if (bar->widgetForAction(a) == button) return a->isVisible();
        return false;
    }
};

// Runs `work` on the flash dialog once it is shown modally.
void OnDialog(std::function<void(ui::FFlash&)> work) {
    QTimer::singleShot(0, [work]() {
        auto* d = qobject_cast<ui::FFlash*>(QApplication::activeModalWidget());
        ASSERT_NE(d, nullptr);
        work(*d);
    });
}

TEST_F(FlashButtons, HiddenUntilConnectedThenShownByTheUnitsFeatures) {
    for (const auto& b : forms::kFlashButtons) EXPECT_FALSE(shown(b.name)) << b.name;
    find<QToolButton>("BConnect")->click();
    ASSERT_EQ(st().ConnectionState, 1);
    for (const auto& b : forms::kFlashButtons) {
        EXPECT_TRUE(shown(b.name)) << b.name;
        EXPECT_TRUE(find<QToolButton>(b.name)->isEnabled()) << b.name;
    }
}

TEST_F(FlashButtons, ProgramButtonProgramsTheSelection) {
    Enter(find<QComboBox>("TCommand"), "_connect NOPROMPT");
    std::ofstream(home + "/home/x.hex") << IntelHex(0x30000, Pattern(0x400, 2));
    Enter(find<QComboBox>("TCommand"), "_load " + QString::fromStdString(home) + "/home/x.hex");
    find<QToolButton>("BProgram")->click();
    EXPECT_TRUE(logged("*IProgram:1024 bytes successfully programmed")) << st().terminalBuffer;
    Enter(find<QComboBox>("TCommand"), "_compare");
    EXPECT_TRUE(logged("*Comparison:  1024 Bytes OK -  0 Bytes different")) << st().terminalBuffer;
}

TEST_F(FlashButtons, EachDialogButtonOpensItsMode) {
    Enter(find<QComboBox>("TCommand"), "_connect NOPROMPT");
    struct Case {
        const char* button;
        const char* caption;
        bool password;
    };
    for (const Case& c :
         {Case{"BErase", "Erase Sector", false}, Case{"BProtect", "Protect Flash", true},
          Case{"BUnprotect", "Unprotect Flash", true},
          Case{"BLock", "Lock Flash - Enable Write Protection", true},
          Case{"BUnlock", "Unlock - Disable Write Protection", true},
          Case{"BStatus", "Read Status", false}}) {
        SCOPED_TRACE(c.button);
        QString title;
        bool passwordShown = false;
        OnDialog([&](ui::FFlash& d) {
            title = d.windowTitle();
            passwordShown = d.findChild<QLineEdit*>("TPassword")->isVisibleTo(&d);
            d.findChild<QAbstractButton*>("BCancel")->click();
        });
        find<QToolButton>(c.button)->click();
        EXPECT_EQ(title.toStdString(), c.caption);
        EXPECT_EQ(passwordShown, c.password);
    }
}

TEST_F(FlashButtons, EraseDialogErasesThePickedSection) {
    Enter(find<QComboBox>("TCommand"), "_connect NOPROMPT");
    OnDialog([](ui::FFlash& d) {
        auto* list = d.findChild<QListWidget*>("ISections");
        ASSERT_EQ(list->count(), 4);
        EXPECT_EQ(list->item(2)->text().toStdString(), "Section 2: 030000 - 03FFFF");
        list->item(2)->setSelected(true);
        d.findChild<QAbstractButton*>("BOk")->click();
    });
    find<QToolButton>("BErase")->click();
    EXPECT_TRUE(logged("*Erase: Sector 2 in IFLASH successfully erased")) << st().terminalBuffer;
}

TEST_F(FlashButtons, LockDialogTakesThePasswordAndStatusShowsTheLock) {
    Enter(find<QComboBox>("TCommand"), "_connect NOPROMPT");
    OnDialog([](ui::FFlash& d) {
        d.findChild<QListWidget*>("ISections")->item(1)->setSelected(true);
        d.findChild<QLineEdit*>("TPassword")->setText("key");
        d.findChild<QAbstractButton*>("BOk")->click();
    });
    find<QToolButton>("BLock")->click();
    EXPECT_TRUE(logged("*Lock: IFLASH successfully locked")) << st().terminalBuffer;
    QStringList bits;
    OnDialog([&bits](ui::FFlash& d) {
        auto* list = d.findChild<QListWidget*>("ISections");
        ASSERT_EQ(list->count(), 1);
        EXPECT_EQ(list->item(0)->text().toStdString(), "Statusword 0: FSR=0008");
        list->setCurrentRow(0);
        auto* fields = d.findChild<QListWidget*>("IBits");
        for (int i = 0; i < fields->count(); ++i) bits << fields->item(i)->text();
        d.findChild<QAbstractButton*>("BCancel")->click();
    });
    find<QToolButton>("BStatus")->click();
    EXPECT_TRUE(bits.contains("LOCKED=1")) << bits.join(",").toStdString();
}

TEST_F(FlashButtons, NotConnectedOpensNoDialog) {
    st().ConnectionState =
        kUserProgramRunning;  // a user program runs: the buttons show, the monitor does not answer
    window->refreshFeatureButtons();
    find<QToolButton>("BErase")->click();
    EXPECT_TRUE(logged("*ERROR: Not connected to Monitor")) << st().terminalBuffer;
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

}  // namespace
}  // namespace vortelm::testing
