// The hex page's logic with a recording view in place of the widgets.
#include "forms/HexPage.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "image/Dump.h"
#include "image/Selections.h"

namespace vortelm::forms {
namespace {

struct RecordingView : HexPageView {
    int draws = 0;
    int scroll = -1;
    int focused = -1;
    std::vector<std::pair<int, std::string>> cellTexts;
    std::string pageText;
    void drawCells() override { ++draws; }
    void setScrollValue(int value) override { scroll = value; }
    void focusCell(int index) override { focused = index; }
    void setCellText(int index, const std::string& text) override {
        cellTexts.emplace_back(index, text);
    }
    void setPageText(const std::string& text) override { pageText = text; }
};

class HexPageLogic : public ::testing::Test {
  protected:
    HexPageLogic() { InitDumpMemory(st->dump); }
    TestHost host;
    std::unique_ptr<ProgramState> st = std::make_unique<ProgramState>(host);
    RecordingView view;
    HexPage page{*st, view};
};

TEST_F(HexPageLogic, ArrowsWrapAtRowEndsAndDropTheSelections) {
    AddSelection(st->selections, 0x100, 0x1FF);
    page.keyDown(15, HexKey::Right);
    EXPECT_EQ(view.focused, 16);
    EXPECT_EQ(st->selections.count, 0);
    page.keyDown(16, HexKey::Left);
    EXPECT_EQ(view.focused, 15);
    page.keyDown(15, HexKey::Up);  // row 0 of page 0: stays
    EXPECT_EQ(view.focused, 15);
    EXPECT_EQ(page.actPage, 0);
}

TEST_F(HexPageLogic, CellsShowBytesAndBlanks) {
    WriteDumpByte(st->dump, 0x12, 0xAB);
    SetDefined(st->dump, 0x12, kTrue);
    EXPECT_EQ(page.cell(0x12).text, "AB");
    EXPECT_EQ(page.cell(0x13).text, st->BLANK_CHAR);
    EXPECT_EQ(page.rowAddressText(1), "000010");
}

TEST_F(HexPageLogic, ABadByteIsRefusedAndTheCellGetsItsOldText) {
    page.editCell(3, "XZ");
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, "No 2-digit hexadecimal number !");
    ASSERT_EQ(view.cellTexts.size(), 1u);
    EXPECT_EQ(view.cellTexts[0], (std::pair<int, std::string>{3, st->BLANK_CHAR}));
    page.editCell(3, "5A");
    EXPECT_EQ(ReadDumpByte(st->dump, 3), 0x5A);
    EXPECT_EQ(view.focused, 4);  // two digits move the cursor on
}

TEST_F(HexPageLogic, APageBoxWithoutDigitsIsRefusedAndReset) {
    page.GotoPage(0x20);
    EXPECT_FALSE(page.pageEnter("zz"));
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, "No hexadecimal digit !");
    EXPECT_EQ(view.pageText, "000200");
    EXPECT_TRUE(page.pageEnter("1234"));
    page.pageFocusLost("1234");
    EXPECT_EQ(page.actPage, 0x123);
}

}  // namespace
}  // namespace vortelm::forms
