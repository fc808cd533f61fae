// The debug window against the virtual board: a breakpoint set in the window
// stops the downloaded routine, and STEP advances one instruction at a time.

#include <QListWidget>
#include <QPushButton>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <vector>

#include "link/Monitor.h"
#include "tests/ui/UiFixture.h"
#include "ui/FDisassemble.h"

namespace vortelm::testing {
namespace {

using DebugWindow = UiTest;

std::string Record(int address, const std::vector<int>& bytes) {
    std::ostringstream s;
    int sum = static_cast<int>(bytes.size()) + (address >> 8) + (address & 0xFF);
    char buf[16];
    std::snprintf(buf, sizeof buf, ":%02X%04X00", static_cast<unsigned>(bytes.size()),
                  address & 0xFFFF);
    s << buf;
    for (int b : bytes) {
        sum += b;
        std::snprintf(buf, sizeof buf, "%02X", b);
        s << buf;
    }
    std::snprintf(buf, sizeof buf, "%02X", (-sum) & 0xFF);
    s << buf << "\n";
    return s.str();
}

// Lets the event loop run until the target is back at the monitor.
bool WaitForMonitor(ProgramState& st) {
    for (int i = 0; i < 500 && st.ConnectionState != 1; ++i) QTest::qWait(10);
    return st.ConnectionState == 1;
}

void ClickRow(QListWidget* list, int row) {
    const QRect r = list->visualItemRect(list->item(row));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, r.center());
}

const std::vector<int> kSecondInstruction{0xE6, 0xF1, 0x78, 0x56};  // MOV R1,#5678h at FA04

// The bytes the board holds, read back through the monitor.
std::vector<int> BoardBytes(shell::Program& program, int32_t address, int count) {
    link::Monitor mon(program.state(), program.port());
    EXPECT_EQ(mon.Cmd_Read(address, count), 0);
    std::vector<int> v;
    for (int i = 0; i < count; ++i) v.push_back(ReadDumpByte(program.state().dump, address + i));
    return v;
}

// Downloads the routine and opens the debug window on it.
ui::FDisassemble* OpenOnRoutine(ProgramState& st, ui::FVortElm& window) {
    std::ofstream(st.programFolder + "/r.hex")
        << Record(0xFA00, {0xE6, 0xF0, 0x34, 0x12, 0xE6, 0xF1, 0x78, 0x56, 0xCC, 0x00,
                           0xCC, 0x00, 0xF0, 0x10, 0xCC, 0x00, 0xCC, 0x00, 0x0D, 0xF6})
        << ":00000001FF\n";
    auto* box = window.findChild<QComboBox*>("TCommand");
    EXPECT_NE(box, nullptr);
    if (!box) return nullptr;
    // Connect and Download are the tool bar's buttons; the file comes in
    // through the command box.
    QTest::mouseClick(window.findChild<QAbstractButton*>("BConnect"), Qt::LeftButton);
    Enter(box, "_load r.hex");
    QTest::mouseClick(window.findChild<QAbstractButton*>("BDownload"), Qt::LeftButton);
    EXPECT_EQ(st.ConnectionState, 1) << st.terminalBuffer;
    QTest::mouseClick(window.findChild<QAbstractButton*>("BDebug"), Qt::LeftButton);
    return window.disassembleWindow();
}

TEST_F(DebugWindow, BreakpointStopsTheRoutineAndStepAdvancesOneInstruction) {
    ui::FDisassemble* dlg = OpenOnRoutine(st(), *window);
    ASSERT_NE(dlg, nullptr);
    EXPECT_TRUE(dlg->isVisible());
    EXPECT_EQ(dlg->windowTitle(), "Disassemble");
    auto* code = dlg->findChild<QListWidget*>("IDisassemble");
    auto* marks = dlg->findChild<QListWidget*>("IBreakpoints");
    ASSERT_NE(code, nullptr);
    ASSERT_NE(marks, nullptr);
    ASSERT_EQ(code->count(), 9);
    EXPECT_EQ(code->item(1)->text(), "00FA04: MOV     R1,#5678h");
    EXPECT_EQ(code->item(8)->text(), "*****************************");
    EXPECT_EQ(dlg->findChild<QPushButton*>("BStep")->text(), "STEP");
    EXPECT_EQ(dlg->findChild<QPushButton*>("BCancel")->text(), "Cancel");

    ClickRow(marks, 1);
    EXPECT_EQ(marks->item(1)->text(), "O");
    QTest::mouseClick(dlg->findChild<QPushButton*>("BGo"), Qt::LeftButton);
    ASSERT_TRUE(WaitForMonitor(st())) << st().terminalBuffer;
    EXPECT_EQ(code->currentRow(), 1);
    EXPECT_TRUE(code->item(1)->isSelected());
    EXPECT_EQ(dlg->logic().DebugPC, 0xFA04);
    // The board stopped at the patch, which stays laid; the row shows the
    // code the patch saved.
    EXPECT_EQ(BoardBytes(*program, 0xFA04, 1), std::vector<int>{0xDA});
    EXPECT_EQ(code->item(1)->text(), "00FA04: MOV     R1,#5678h");

    int row = 1;
    for (int32_t expected : {0xFA08, 0xFA0A, 0xFA0C}) {
        QTest::mouseClick(dlg->findChild<QPushButton*>("BStep"), Qt::LeftButton);
        ASSERT_TRUE(WaitForMonitor(st())) << st().terminalBuffer;
        ++row;
        EXPECT_EQ(dlg->logic().DebugPC, expected);
        EXPECT_EQ(code->currentRow(), row);
        EXPECT_EQ(marks->item(1)->text(), "O");
        if (expected == 0xFA08) {
            // The step ran the saved instruction (a patch still lying at
            // FA04 would have stopped the board there again) and laid the
            // patch again behind it.
            EXPECT_EQ(BoardBytes(*program, 0xFA04, 1), std::vector<int>{0xDA});
        }
    }
    EXPECT_EQ(st().terminalBuffer.find("*ERROR"), std::string::npos) << st().terminalBuffer;

    // Closing the window takes the breakpoint out of the code again.
    QTest::mouseClick(dlg->findChild<QPushButton*>("BCancel"), Qt::LeftButton);
    EXPECT_FALSE(dlg->isVisible());
    EXPECT_EQ(dlg->logic().breakpointCount, 0);
    EXPECT_EQ(ReadDumpByte(st().dump, 0xFA04), 0xE6);
    EXPECT_EQ(BoardBytes(*program, 0xFA04, 4), kSecondInstruction);
}

TEST_F(DebugWindow, EscTakesTheBreakpointsOutOfTheCodeAsClosingDoes) {
    ui::FDisassemble* dlg = OpenOnRoutine(st(), *window);
    ASSERT_NE(dlg, nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(dlg));
    auto* marks = dlg->findChild<QListWidget*>("IBreakpoints");
    ASSERT_NE(marks, nullptr);
    ClickRow(marks, 1);
    ClickRow(marks, 4);
    ASSERT_EQ(dlg->logic().breakpointCount, 2);
    EXPECT_EQ(BoardBytes(*program, 0xFA04, 1), std::vector<int>{0xDA});
    QTest::keyClick(dlg->findChild<QListWidget*>("IDisassemble"), Qt::Key_Escape);
    EXPECT_FALSE(dlg->isVisible());
    EXPECT_EQ(dlg->logic().breakpointCount, 0);
    EXPECT_EQ(BoardBytes(*program, 0xFA04, 4), kSecondInstruction);
    EXPECT_EQ(BoardBytes(*program, 0xFA0C, 4), (std::vector<int>{0xF0, 0x10, 0xCC, 0x00}));

    // Opened again, the window starts without breakpoints and Esc on it
    // changes nothing on the board.
    QTest::mouseClick(find<QAbstractButton>("BDebug"), Qt::LeftButton);
    ASSERT_TRUE(dlg->isVisible());
    EXPECT_EQ(dlg->findChild<QListWidget*>("IBreakpoints")->item(1)->text(), " ");
    QTest::keyClick(dlg, Qt::Key_Escape);
    EXPECT_FALSE(dlg->isVisible());
    EXPECT_EQ(BoardBytes(*program, 0xFA04, 4), kSecondInstruction);
}

TEST_F(DebugWindow, CtrlCCopiesTheSelectedRows) {
    defineByte(0x100, 0xCC);
    defineByte(0x101, 0x00);
    defineByte(0x102, 0xCB);
    defineByte(0x103, 0x00);
    st().selections.count = 1;
    st().selections.start[0] = 0x100;
    st().selections.end[0] = 0x103;
    find<QAction>("UViewDisassemble")->trigger();
    ui::FDisassemble* dlg = window->disassembleWindow();
    ASSERT_NE(dlg, nullptr);
    auto* code = dlg->findChild<QListWidget*>("IDisassemble");
    ASSERT_EQ(code->count(), 3);
    code->clearSelection();
    code->item(1)->setSelected(true);
    QTest::keyClick(code, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(host->clipboardText(), "\r\n000102: RET     ");
}

}  // namespace
}  // namespace vortelm::testing
