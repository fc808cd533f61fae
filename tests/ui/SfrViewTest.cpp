// The SFR view of the main window on the virtual board: registers added
// through the picker show live values, a change through the dialog reaches
// the board, and the list's keys and tabs do what the view promises.

#include <QFocusEvent>
#include <QListWidget>
#include <QTabBar>
#include <QTimer>

#include <functional>

#include "sfr/SfrSets.h"
#include "sfr/SfrTable.h"
#include "tests/ui/UiFixture.h"
#include "ui/FSFRChange.h"
#include "ui/FSfr.h"
#include "ui/SfrArea.h"

namespace vortelm::testing {
namespace {

class SfrView : public UiTest {
  protected:
    // The delivered preferences fill set 0: the tests work on set 1.
    void SetUp() override {
        UiTest::SetUp();
        Q_EMIT find<QTabBar>("XSFRReg")->tabBarClicked(1);
        ASSERT_EQ(st().currentSfrSet, 1);
        ASSERT_TRUE(lines().empty());
    }
    QListWidget* list() { return window->sfrArea().list(); }
    std::vector<std::string> lines() {
        std::vector<std::string> v;
        for (int i = 0; i < list()->count(); ++i)
            v.push_back(list()->item(i)->text().toStdString());
        return v;
    }
    // Works in the modal dialog of type D once it is up, while a button
    // opens it.
    template <class D>
    void inDialog(QAbstractButton* opener, const std::function<void(D&)>& work) {
        bool ran = false;
        QTimer::singleShot(0, window.get(), [&]() {
            D* d = window->findChild<D*>();
            ASSERT_NE(d, nullptr);
            ran = true;
            work(*d);
        });
        opener->click();
        EXPECT_TRUE(ran);
    }
    void connectBoard() {
        find<QAbstractButton>("BConnect")->click();
        ASSERT_EQ(st().ConnectionState, 1) << st().terminalBuffer;
    }
    // Adds registers through the picker: a search, then every name found.
    void pick(const char* search) {
        inDialog<ui::FSfr>(find<QAbstractButton>("BAdd"), [&](ui::FSfr& d) {
            auto* box = d.findChild<QLineEdit*>("TSearch");
            box->setText(QString::fromUtf8(search));
            QTest::keyClick(box, Qt::Key_Return);
            EXPECT_EQ(box->text(), "");
            auto* names = d.findChild<QListWidget*>("ISfr");
            ASSERT_GT(names->count(), 0);
            names->selectAll();
            d.findChild<QAbstractButton*>("BOk")->click();
        });
    }
    int row(const std::string& name) {
        const auto l = lines();
        for (size_t i = 0; i < l.size(); ++i)
            if (l[i].rfind(name + " ", 0) == 0) return static_cast<int>(i);
        ADD_FAILURE() << name;
        return -1;
    }
};

TEST_F(SfrView, TheAreaHasItsControls) {
    for (const char* name : {"XSFRReg", "ISfr", "BAdd", "BRemove", "BChange", "BRefresh"})
        EXPECT_NE(find(name), nullptr);
    EXPECT_EQ(find<QTabBar>("XSFRReg")->count(), 8);
    EXPECT_EQ(find<QAbstractButton>("BRemove")->text(), "REMOVE");
    EXPECT_EQ(find<QAbstractButton>("BChange")->text(), "CHANGE");
    EXPECT_EQ(find<QAbstractButton>("BRefresh")->text(), "REFRESH");
}

TEST_F(SfrView, PickedRegistersShowLiveValuesAndAChangeReachesTheBoard) {
    connectBoard();
    pick("S0");  // IDRES0, S0BG, S0CON, S0RBUF, S0TBUF
    pick("SYSCON");
    const auto l = lines();
    ASSERT_EQ(l.size(), 6u);
    EXPECT_EQ(l[row("S0CON")], "S0CON                  00FFB0 8011");
    EXPECT_EQ(l[row("SYSCON")], "SYSCON                 00FF12 0090");

    // a change through the dialog: 4 digits typed into TValue, then OK
    list()->setCurrentRow(row("S0CON"));
    inDialog<ui::FSFRChange>(find<QAbstractButton>("BChange"), [&](ui::FSFRChange& d) {
        EXPECT_EQ(d.windowTitle(), "SFR - Change");
        EXPECT_EQ(d.findChild<QLabel*>("LSfrName")->text(), "S0CON");
        auto* value = d.findChild<QLineEdit*>("TValue");
        EXPECT_EQ(value->text(), "8011");
        EXPECT_EQ(d.findChild<QLineEdit*>("TBitValue0")->text(), "001");  // S0M
        value->selectAll();
        QTest::keyClicks(value, "8013");
        // the field box follows the value
        EXPECT_EQ(d.findChild<QLineEdit*>("TBitValue0")->text(), "011");
        d.findChild<QAbstractButton*>("BOk")->click();
    });
    EXPECT_EQ(lastBox(), "ALD7");
    // it is on the board: forget the local bytes and read them again
    WriteDumpByte(st().dump, 0xFFB0, 0);
    WriteDumpByte(st().dump, 0xFFB1, 0);
    find<QAbstractButton>("BRefresh")->click();
    EXPECT_EQ(lines()[row("S0CON")], "S0CON                  00FFB0 8013");
    st().terminalBuffer.clear();
    Enter(find<QComboBox>("TCommand"), "_viewsfrs");
    EXPECT_TRUE(logged("S0CON               00FFB0 8013")) << st().terminalBuffer;
}

TEST_F(SfrView, ABitFieldBoxChangesItsBitsOnly) {
    connectBoard();
    pick("T3CON");
    list()->setCurrentRow(0);
    inDialog<ui::FSFRChange>(find<QAbstractButton>("BChange"), [&](ui::FSFRChange& d) {
        auto* run = d.findChild<QLineEdit*>("TBitValue6");  // T3R
        ASSERT_TRUE(run->isVisible());
        EXPECT_EQ(run->toolTip(), "T3R");
        EXPECT_FALSE(d.findChild<QLineEdit*>("TBitValue4")->isVisible());  // inside T3M
        EXPECT_FALSE(d.findChild<QLineEdit*>("TBitValue8")->isEnabled());  // no field
        run->selectAll();
        QTest::keyClicks(run, "1");
        EXPECT_EQ(d.findChild<QLineEdit*>("TValue")->text(), "0000");  // not before the box is left
        QFocusEvent out(QEvent::FocusOut);
        QApplication::sendEvent(run, &out);
        EXPECT_EQ(d.findChild<QLineEdit*>("TValue")->text(), "0040");
        QTest::mouseDClick(d.findChild<QLineEdit*>("TBitValue7"), Qt::LeftButton);  // T3UD toggles
        EXPECT_EQ(d.findChild<QLineEdit*>("TValue")->text(), "00C0");
        d.findChild<QAbstractButton*>("BOk")->click();
    });
    EXPECT_EQ(lines()[0], "T3CON                  00FF42 00C0");
}

TEST_F(SfrView, DeleteCtrlArrowsAndTheTabs) {
    pick("DP");  // DP2, DP3, DPP0 to DPP3, IDPROG
    ASSERT_EQ(lines().size(), 7u);
    list()->setFocus();
    list()->setCurrentRow(6);
    QTest::keyClick(list(), Qt::Key_Delete);
    ASSERT_EQ(lines().size(), 6u);
    EXPECT_EQ(list()->currentRow(), 5);
    EXPECT_TRUE(list()->item(5)->isSelected());
    list()->setCurrentRow(0);
    const std::string first = lines()[0];
    QTest::keyClick(list(), Qt::Key_Down, Qt::ControlModifier);
    EXPECT_EQ(lines()[1], first);
    EXPECT_EQ(list()->currentRow(), 1);
    EXPECT_EQ(st().sfrSets[1].names[1], first.substr(0, first.find(' ')));

    // another tab shows its own (empty) set; a click on it again asks for a title
    auto* tabs = find<QTabBar>("XSFRReg");
    Q_EMIT tabs->tabBarClicked(3);
    EXPECT_EQ(st().currentSfrSet, 3);
    EXPECT_TRUE(lines().empty());
    host->inputAnswers.push_back("ALPHA");
    Q_EMIT tabs->tabBarClicked(3);
    EXPECT_EQ(tabs->tabText(3), "ALPH");
    EXPECT_EQ(st().sfrSets[3].title, "ALPHA");
    Q_EMIT tabs->tabBarClicked(1);
    EXPECT_EQ(lines().size(), 6u);
    Q_EMIT tabs->tabBarClicked(0);
    EXPECT_EQ(lines()[0].substr(0, 7), "SYSCON ");  // the delivered set
}

TEST_F(SfrView, ShellRowsShowInTheList) {
    Enter(find<QComboBox>("TCommand"), "_addsfr PSW");
    Enter(find<QComboBox>("TCommand"), "_addsfr SP");
    ASSERT_EQ(lines().size(), 2u);
    EXPECT_EQ(lines()[1].substr(0, 2), "SP");
    Enter(find<QComboBox>("TCommand"), "_removesfr PSW");
    ASSERT_EQ(lines().size(), 1u);
}

}  // namespace
}  // namespace vortelm::testing
