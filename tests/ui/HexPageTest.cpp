// Keys and mouse on the hex page: the cursor, the marking across pages,
// the editing of a byte and its messages, the page box and the scroll bar.

#include <QScrollBar>

#include "image/Selections.h"
#include "tests/ui/UiFixture.h"

namespace vortelm::testing {
namespace {

using HexPage = UiTest;

QPoint Centre(QWidget* w) {
    return w->rect().center();
}

// A mouse event sent to the cell that holds the mouse, at the place of
// another cell, as the move and release of a drag arrive.
void DragEvent(QWidget* pressed, QWidget* over, QEvent::Type type, Qt::MouseButtons buttons) {
    const QPoint local = pressed->mapFromGlobal(over->mapToGlobal(Centre(over)));
    QMouseEvent e(type, QPointF(local), QPointF(over->mapToGlobal(Centre(over))),
                  type == QEvent::MouseButtonRelease ? Qt::LeftButton : Qt::NoButton, buttons,
                  Qt::NoModifier);
    QApplication::sendEvent(pressed, &e);
}

TEST_F(HexPage, ShowsBytesAddressesAndText) {
    defineByte(0x12, 0x41);
    window->refreshMemory();
    EXPECT_EQ(cell(0x12)->text(), "41");
    EXPECT_EQ(cell(0x13)->text(), ".");  // BLANK_CHAR
    EXPECT_EQ(find<QLabel>("LColumn1")->text(), "000010");
    EXPECT_EQ(find<QLabel>("LMemViewAscii1")->text(), "  A             ");
    EXPECT_EQ(find<QLineEdit>("TActPage")->text(), "000000");
}

TEST_F(HexPage, ArrowWithoutShiftOrCtrlDropsAllSelections) {
    AddSelection(st().selections, 0x100, 0x1FF);
    cell(5)->setFocus();
    QTest::keyClick(cell(5), Qt::Key_Right);
    EXPECT_EQ(st().selections.count, 0);
    EXPECT_TRUE(cell(6)->hasFocus());
    EXPECT_EQ(cell(6)->selectedText(), cell(6)->text());
}

TEST_F(HexPage, ArrowsWrapAtRowEnds) {
    cell(15)->setFocus();
    QTest::keyClick(cell(15), Qt::Key_Right);
    EXPECT_TRUE(cell(16)->hasFocus());
    QTest::keyClick(cell(16), Qt::Key_Left);
    EXPECT_TRUE(cell(15)->hasFocus());
    QTest::keyClick(cell(15), Qt::Key_Up);  // row 0 at page 0: stays
    EXPECT_TRUE(cell(15)->hasFocus());
    EXPECT_EQ(window->page().actPage, 0);
}

TEST_F(HexPage, ShiftDownAtRow15ScrollsThePageAndExtendsTheMarking) {
    QLineEdit* c = cell(240);
    c->setFocus();
    QTest::keyPress(c, Qt::Key_Shift, Qt::ShiftModifier);
    QTest::keyClick(c, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(window->page().actPage, 1);
    EXPECT_TRUE(cell(240)->hasFocus());
    QTest::keyRelease(cell(240), Qt::Key_Shift);
    ASSERT_EQ(st().selections.count, 1);
    EXPECT_EQ(st().selections.start[0], 0xF0);
    EXPECT_EQ(st().selections.end[0], 0x100);
    EXPECT_EQ(st().selections.start[1], -1);
    EXPECT_EQ(find<QLabel>("LColumn0")->text(), "000010");
}

TEST_F(HexPage, ShiftPageDownMarksAcrossPagesAndTheMarksStayAbsolute) {
    QLineEdit* c = cell(0);
    c->setFocus();
    QTest::keyPress(c, Qt::Key_Shift, Qt::ShiftModifier);
    QTest::keyClick(c, Qt::Key_PageDown, Qt::ShiftModifier);
    QTest::keyRelease(cell(0), Qt::Key_Shift);
    EXPECT_EQ(window->page().actPage, 16);
    ASSERT_EQ(st().selections.count, 1);
    EXPECT_EQ(st().selections.start[0], 0);
    EXPECT_EQ(st().selections.end[0], 0x100);
    // The segment buttons leave the marks alone.
    find<QAbstractButton>("BSegmentUp")->click();
    EXPECT_EQ(window->page().actPage, 16 + 4096);
    EXPECT_EQ(st().selections.count, 1);
    find<QAbstractButton>("BSegmentDown")->click();
    EXPECT_EQ(window->page().actPage, 16);
}

TEST_F(HexPage, MouseMarkingFromTheBottomRowUpwardsEndsInOrder) {
    QLineEdit* from = cell(250);
    QLineEdit* to = cell(5);
    QTest::mousePress(from, Qt::LeftButton, Qt::NoModifier, Centre(from));
    DragEvent(from, cell(100), QEvent::MouseMove, Qt::LeftButton);
    EXPECT_EQ(window->page().selectingByMouse, 1);
    DragEvent(from, to, QEvent::MouseMove, Qt::LeftButton);
    DragEvent(from, to, QEvent::MouseButtonRelease, Qt::NoButton);
    ASSERT_EQ(st().selections.count, 1);
    EXPECT_EQ(st().selections.start[0], 5);
    EXPECT_EQ(st().selections.end[0], 250);
    EXPECT_EQ(window->page().selectingByMouse, 0);
    EXPECT_TRUE(to->hasFocus());
}

TEST_F(HexPage, CtrlClickStartsAFurtherSelectionAndAPlainClickClearsTheOthers) {
    QTest::mouseClick(cell(3), Qt::LeftButton, Qt::NoModifier, Centre(cell(3)));
    ASSERT_EQ(st().selections.count, 1);  // a plain click leaves one byte
    EXPECT_EQ(st().selections.start[0], 3);
    EXPECT_EQ(st().selections.end[0], 3);
    QTest::mouseClick(cell(7), Qt::LeftButton, Qt::ControlModifier, Centre(cell(7)));
    EXPECT_EQ(st().selections.count, 2);
    QTest::keyRelease(cell(7), Qt::Key_Control);  // Ctrl up ends the held state
    QTest::mouseClick(cell(9), Qt::LeftButton, Qt::NoModifier, Centre(cell(9)));
    ASSERT_EQ(st().selections.count, 1);
    EXPECT_EQ(st().selections.start[0], 9);
}

TEST_F(HexPage, MarkedCellsTakeTheMarkedBackground) {
    AddSelection(st().selections, 2, 3);
    window->refreshMemory();
    const QColor marked(0xDD, 0xDD, 0xDD);
    EXPECT_EQ(cell(2)->palette().color(QPalette::Base), marked);
    EXPECT_NE(cell(4)->palette().color(QPalette::Base), marked);
}

TEST_F(HexPage, TwoDigitsStoreTheByteAndMoveOn) {
    QLineEdit* c = cell(0x20);
    c->setFocus();
    c->selectAll();
    QTest::keyClicks(c, "a");
    // One digit: stored already, the cursor stays.
    EXPECT_EQ(ReadDumpByte(st().dump, 0x20), 0x0A);
    EXPECT_TRUE(c->hasFocus());
    QTest::keyClicks(c, "B");
    EXPECT_EQ(ReadDumpByte(st().dump, 0x20), 0xAB);
    EXPECT_NE(IsDefined(st().dump, 0x20), 0);
    EXPECT_EQ(IsValid(st().dump, 0x20), 0);
    EXPECT_TRUE(cell(0x21)->hasFocus());
    EXPECT_TRUE(host->answeredBoxes.empty());
}

TEST_F(HexPage, ThirdDigitAboveFFIsRefusedAndTheCellShowsTheOldByte) {
    defineByte(0x30, 0x12);
    window->refreshMemory();
    QLineEdit* c = cell(0x30);
    c->setFocus();
    c->deselect();
    c->setCursorPosition(2);
    QTest::keyClicks(c, "3");
    EXPECT_EQ(lastBox(), "No 2-digit hexadecimal number !");
    EXPECT_EQ(c->text(), "12");
    EXPECT_EQ(ReadDumpByte(st().dump, 0x30), 0x12);
}

TEST_F(HexPage, NoHexDigitOnAnUndefinedByteLeavesItInvalid) {
    QLineEdit* c = cell(0x31);
    c->setFocus();
    c->setText("G");
    QTest::keyClick(c, Qt::Key_Period);  // "G." is no number
    EXPECT_EQ(lastBox(), "No 2-digit hexadecimal number !");
    EXPECT_EQ(c->text(), ".");
    EXPECT_EQ(IsDefined(st().dump, 0x31), 0);
}

TEST_F(HexPage, ThePointOfBlankCharUndefinesTheByte) {
    defineByte(0x40, 0x55);
    window->refreshMemory();
    QLineEdit* c = cell(0x40);
    c->setFocus();
    c->selectAll();
    QTest::keyClick(c, Qt::Key_Period);
    EXPECT_EQ(IsDefined(st().dump, 0x40), 0);
    EXPECT_TRUE(host->answeredBoxes.empty());
}

TEST_F(HexPage, WriteProtectOnlyWhereTheMonitorMarkIs) {
    st().KernelStartAddress = 0x50;
    st().KernelEndAddress = 0x5F;
    SetMonitorMark(st().dump, 0x52, kTrue);
    window->refreshMemory();
    QLineEdit* marked = cell(0x52);
    marked->setFocus();
    marked->selectAll();
    QTest::keyClicks(marked, "7");
    EXPECT_EQ(lastBox(), "This area is write-protected !");
    EXPECT_EQ(IsDefined(st().dump, 0x52), 0);
    host->answeredBoxes.clear();
    QLineEdit* plain = cell(0x53);  // in the kernel's range, no mark
    plain->setFocus();
    plain->selectAll();
    QTest::keyClicks(plain, "7");
    EXPECT_TRUE(host->answeredBoxes.empty());
    EXPECT_EQ(ReadDumpByte(st().dump, 0x53), 7);
}

TEST_F(HexPage, EscRaisesTheScriptAbort) {
    cell(0)->setFocus();
    QTest::keyClick(cell(0), Qt::Key_Escape);
    EXPECT_EQ(st().scriptAbort, 1);
}

TEST_F(HexPage, DeleteUnreadsTheSelections) {
    defineByte(0x60, 1);
    AddSelection(st().selections, 0x60, 0x60);
    cell(0x60)->setFocus();
    QTest::keyClick(cell(0x60), Qt::Key_Delete);
    EXPECT_EQ(IsDefined(st().dump, 0x60), 0);
}

TEST_F(HexPage, PageBoxTakesAnAddressOnEnter) {
    auto* box = find<QLineEdit>("TActPage");
    box->setFocus();
    box->selectAll();
    QTest::keyClicks(box, "1234");
    QTest::keyClick(box, Qt::Key_Return);
    EXPECT_TRUE(cell(0)->hasFocus());
    EXPECT_EQ(window->page().actPage, 0x123);
    EXPECT_EQ(find<QLabel>("LColumn0")->text(), "001230");
    EXPECT_EQ(find<QScrollBar>("SMemPage")->value(), 0x123);
    EXPECT_TRUE(host->answeredBoxes.empty());
}

TEST_F(HexPage, PageBoxRefusesASeventhDigit) {
    auto* box = find<QLineEdit>("TActPage");
    box->setFocus();
    box->setText("123456");
    box->setCursorPosition(6);
    QTest::keyClicks(box, "7");
    EXPECT_EQ(lastBox(), "No 6-digit hexadecimal number!");
    EXPECT_EQ(box->text(), "000000");
}

TEST_F(HexPage, ScrollBarStaysInsideTheSegment) {
    window->page().actPage = 0x3000;  // segment 3
    auto* bar = find<QScrollBar>("SMemPage");
    bar->setValue(0x10);
    EXPECT_EQ(window->page().actPage, 0x3010);
    bar->setValue(4095);  // taken back to 4080
    EXPECT_EQ(bar->value(), 4080);
    EXPECT_EQ(window->page().actPage, 0x3000 + 4080);
}

TEST_F(HexPage, SelectWindowSelectsTheDisplay) {
    window->page().GotoPage(0x20);
    AddSelection(st().selections, 0, 1);
    find<QAbstractButton>("BSelectWindow")->click();
    ASSERT_EQ(st().selections.count, 1);
    EXPECT_EQ(st().selections.start[0], 0x200);
    EXPECT_EQ(st().selections.end[0], 0x2FF);
}

}  // namespace
}  // namespace vortelm::testing

namespace vortelm::testing {
namespace {

using EditMenu = UiTest;

TEST_F(EditMenu, FillAsksUntilAValidNumberComes) {
    AddSelection(st().selections, 0x100, 0x103);
    host->inputAnswers = {"12345", "XY", "AB"};
    find<QAction>("UEditFill")->trigger();
    // Two refusals, each with its message, then the fill by bytes.
    ASSERT_EQ(host->answeredBoxes.size(), 5u);
    EXPECT_EQ(host->answeredBoxes[0], "Fill Value:");
    EXPECT_EQ(host->answeredBoxes[1], "No valid hexadecimal number !");
    EXPECT_EQ(host->answeredBoxes[3], "No valid hexadecimal number !");
    for (int32_t a = 0x100; a <= 0x103; ++a) EXPECT_EQ(ReadDumpByte(st().dump, a), 0xAB);
}

TEST_F(EditMenu, FillWithAnEmptyAnswerDoesNothing) {
    AddSelection(st().selections, 0x100, 0x103);
    find<QAction>("UEditFill")->trigger();
    EXPECT_EQ(IsDefined(st().dump, 0x100), 0);
}

TEST_F(EditMenu, ClearAllSelections) {
    AddSelection(st().selections, 0x100, 0x103);
    find<QAction>("UEditClearSelection")->trigger();
    EXPECT_EQ(st().selections.count, 0);
}

TEST_F(EditMenu, LastScriptsShowInTheScriptMenuOnceFilled) {
    st().lastScriptFiles[0] = "SCRIPTS/SAMPLE.SCM";
    Enter(find<QComboBox>("TCommand"), "_help");
    auto* entry = find<QAction>("UScriptLastfile0");
    EXPECT_TRUE(entry->isVisible());
    EXPECT_EQ(entry->text(), "SCRIPTS/SAMPLE.SCM");
    EXPECT_FALSE(find<QAction>("UScriptLastfile1")->isVisible());
}

}  // namespace
}  // namespace vortelm::testing
