// The SFR area of the main window, the picker FSfr and the change dialog
// FSFRChange, driven without a display against the scripted board.

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>

#include "Fixture.h"
#include "core/Helpers.h"
#include "forms/FSFRChange.h"
#include "forms/FSfr.h"
#include "forms/SfrArea.h"
#include "image/Dump.h"
#include "sfr/SfrSets.h"
#include "sfr/SfrTable.h"
#include "target/SfrView.h"

namespace vortelm {
namespace {

using V = std::vector<std::string>;

class Host2 : public testing::VirtualHost {
  public:
    std::optional<std::string> inputBox(std::string_view prompt, std::string_view title,
                                        std::string_view defaultText) override {
        prompts.emplace_back(std::string(prompt) + "|" + std::string(title) + "|" +
                             std::string(defaultText));
        if (inputAnswers.empty()) return std::string(defaultText);
        auto a = inputAnswers.front();
        inputAnswers.pop_front();
        return a;
    }
    void refreshSfrView() override { ++sfrRefreshes; }
    std::deque<std::optional<std::string>> inputAnswers;
    std::vector<std::string> prompts;
    int sfrRefreshes = 0;
};

struct Reg {
    const char* name;
    int32_t address;
};

class SfrForms : public testing::TargetFixture {
  protected:
    SfrForms() {
        st.host = &host2;
        // sorted by name, as a table read from a file is
        const Reg regs[] = {{"CP", 0xFE10},     {"DP2", 0xFFC2}, {"HIGHREG", 0xFFF010},
                            {"P2", 0xFFC0},     {"PSW", 0xFF10}, {"SP", 0xFE12},
                            {"SYSCON", 0xFF12}, {"T2", 0xFE40},  {"T3", 0xFE42},
                            {"T3CON", 0xFF42},  {"T4", 0xFE44}};
        for (const Reg& r : regs) {
            SfrRecord& rec = st.sfrTable[static_cast<size_t>(st.sfrCount++)];
            rec.name = r.name;
            rec.address = r.address;
        }
        // T3CON: T3I 2-0, T3M 6-4 (3 bits at bit 4), T3R 7, T3UD 8
        SfrRecord& t3con = st.sfrTable[static_cast<size_t>(SfrIndexByName(st, "T3CON"))];
        t3con.bitWidth[0] = 3;
        t3con.bitName[0] = "T3I";
        t3con.bitWidth[4] = 3;
        t3con.bitName[4] = "T3M";
        t3con.bitWidth[7] = 1;
        t3con.bitName[7] = "T3R";
        t3con.bitWidth[8] = 2;
        t3con.bitName[8] = "T3UD";
        ClearSfrSets(st);
    }
    // the port, which the base class ends later, takes its leave of the host
    ~SfrForms() override { st.host = &host; }

    int32_t Index(const char* name) { return SfrIndexByName(st, name); }
    void Add(std::initializer_list<const char*> names) {
        for (const char* n : names) AddSfrToCurrentSet(st, Index(n));
    }
    void BoardWord(uint32_t a, int v) {
        board->memory[a] = static_cast<uint8_t>(v & 0xFF);
        board->memory[a + 1] = static_cast<uint8_t>(v >> 8);
    }
    int DumpWord(int32_t a) { return dumpByte(a) + 256 * dumpByte(a + 1); }
    long Count(uint8_t command) const {
        return std::count(board->commands.begin(), board->commands.end(), command);
    }
    V Values() const {
        V v;
        for (const auto& l : st.sfrList.lines) v.push_back(l.substr(23));
        return v;
    }
    V ListNames() const {
        V v;
        for (const auto& l : st.sfrList.lines) v.push_back(l.substr(0, l.find(' ')));
        return v;
    }

    Host2 host2;
    forms::SfrArea area{st, &port};
};

// ---- the SFR area

TEST_F(SfrForms, RefreshReadsOneBlockPerContiguousRunAndKeepsTheListOrder) {
    running();
    Add({"T4", "PSW", "T2", "SYSCON", "T3", "CP"});
    BoardWord(0xFE40, 0x1111);
    BoardWord(0xFE42, 0x2222);
    BoardWord(0xFE44, 0x3333);
    BoardWord(0xFF10, 0x4444);
    BoardWord(0xFF12, 0x5555);
    BoardWord(0xFE10, 0x6666);
    const int exchanges = area.Refresh();
    // FE10; FE40-FE45; FF10-FF13
    EXPECT_EQ(exchanges, 3);
    EXPECT_EQ(Count(0x85), 3);
    EXPECT_EQ(Count(0xCD), 0);
    EXPECT_EQ(Values(), (V{"00FE44 3333", "00FF10 4444", "00FE40 1111", "00FF12 5555",
                           "00FE42 2222", "00FE10 6666"}));
    EXPECT_EQ(ListNames(), (V{"T4", "PSW", "T2", "SYSCON", "T3", "CP"}));
}

TEST_F(SfrForms, RunsMergeNeighboursAndSkipGaps) {
    Add({"SP", "CP", "T3", "T2"});
    const auto runs = target::SfrReadRuns(st);
    ASSERT_EQ(runs.size(), 2u);
    EXPECT_EQ(runs[0].first, 0xFE10);
    EXPECT_EQ(runs[0].length, 4);
    EXPECT_EQ(runs[1].first, 0xFE40);
    EXPECT_EQ(runs[1].length, 4);
}

TEST_F(SfrForms, RefreshWithoutBlockReadReadsRegisterByRegister) {
    setFeatures({"READWORD"});
    running();
    Add({"T3", "T2", "PSW"});
    BoardWord(0xFE42, 0xABCD);
    EXPECT_EQ(area.Refresh(), 3);
    EXPECT_EQ(Count(0xCD), 3);
    EXPECT_EQ(Count(0x85), 0);
    EXPECT_EQ(Values()[0], "00FE42 ABCD");
}

TEST_F(SfrForms, ARefreshWaitsWhileTheLineOrATransferIsBusy) {
    running();
    Add({"PSW"});
    BoardWord(0xFF10, 0x0102);
    port.ComSemaphore = 2;  // a foreground exchange is on the line
    EXPECT_EQ(area.RequestRefresh(false), -1);
    EXPECT_TRUE(area.pending());
    port.ComSemaphore = 0;
    EXPECT_EQ(area.RequestRefresh(true), -1);  // a transfer shows the hourglass
    EXPECT_TRUE(board->commands.empty());
    EXPECT_EQ(area.RequestRefresh(false), 1);
    EXPECT_FALSE(area.pending());
    EXPECT_EQ(Values(), (V{"00FF10 0102"}));
    // the connection check's own test does not hold the view back
    port.ComSemaphore = 1;
    EXPECT_EQ(area.RequestRefresh(false), 1);
    port.ComSemaphore = 0;
}

TEST_F(SfrForms, RefreshNotConnectedShowsTheDumpAsItStands) {
    Add({"PSW"});
    WriteDumpByte(st.dump, 0xFF10, 0x34);
    WriteDumpByte(st.dump, 0xFF11, 0x12);
    EXPECT_EQ(area.Refresh(), 0);
    EXPECT_TRUE(board->commands.empty());
    EXPECT_EQ(Values(), (V{"00FF10 1234"}));
}

TEST_F(SfrForms, AFailedReadLeavesTheOldBytes) {
    running();
    Add({"PSW"});
    WriteDumpByte(st.dump, 0xFF10, 0x34);
    WriteDumpByte(st.dump, 0xFF11, 0x12);
    board->silentCommands.insert(0x85);
    (void)area.Refresh();
    EXPECT_EQ(Values(), (V{"00FF10 1234"}));
}

TEST_F(SfrForms, ClickOnAnotherTabShowsItsSet) {
    Add({"PSW"});
    AddSfrToSet(st, 2, Index("SP"));
    area.XSFRReg_Click(2);
    EXPECT_EQ(st.currentSfrSet, 2);
    EXPECT_EQ(ListNames(), (V{"SP"}));
    EXPECT_EQ(host2.sfrRefreshes, 1);
    EXPECT_TRUE(host2.prompts.empty());
}

TEST_F(SfrForms, ClickOnTheSelectedTabAsksForTheTitleAndNeverRefreshes) {
    st.sfrSets[0].title = "OLD";
    host2.inputAnswers.push_back(std::string("ALPHA"));
    area.XSFRReg_Click(0);
    ASSERT_EQ(host2.prompts.size(), 1u);
    EXPECT_EQ(host2.prompts[0],
              "Please input a title for this register set: |SFR Register Set Title|OLD");
    EXPECT_EQ(st.sfrSets[0].title, "ALPHA");
    EXPECT_EQ(area.TabCaptions()[0], "ALPH");
    EXPECT_EQ(area.TabCaptions().size(), 8u);
    EXPECT_EQ(host2.sfrRefreshes, 0);
    host2.inputAnswers.push_back(std::nullopt);  // cancelled
    area.XSFRReg_Click(0);
    EXPECT_EQ(st.sfrSets[0].title, "");
    EXPECT_EQ(host2.sfrRefreshes, 0);
}

TEST_F(SfrForms, DeleteOfTheLastLineSelectsTheNewLastLine) {
    Add({"PSW", "SP", "CP"});
    area.SetSelection({2}, 2);
    area.ISfr_Delete();
    EXPECT_EQ(ListNames(), (V{"PSW", "SP"}));
    EXPECT_EQ(st.sfrList.listIndex, 1);
    EXPECT_EQ(st.sfrList.selected, (std::vector<uint8_t>{0, 1}));
    EXPECT_EQ(area.RegisterToChange(), Index("SP"));
}

TEST_F(SfrForms, DeleteRemovesEverySelectedLineAndNoOther) {
    Add({"PSW", "SP", "CP", "T2", "T3"});
    area.SetSelection({0, 1, 3}, 3);
    area.ISfr_Delete();
    EXPECT_EQ(ListNames(), (V{"CP", "T3"}));
    EXPECT_EQ(st.sfrSets[0].count, 2);
    EXPECT_EQ(st.sfrList.listIndex, 1);
}

TEST_F(SfrForms, CtrlUpAndDownMoveTheCurrentLine) {
    Add({"PSW", "SP", "CP"});
    area.SetSelection({0}, 0);
    EXPECT_FALSE(area.ISfr_CtrlUp());
    EXPECT_TRUE(area.ISfr_CtrlDown());
    EXPECT_EQ(ListNames(), (V{"SP", "PSW", "CP"}));
    EXPECT_EQ(st.sfrList.listIndex, 1);
    EXPECT_TRUE(area.ISfr_CtrlDown());
    EXPECT_FALSE(area.ISfr_CtrlDown());
    EXPECT_EQ(ListNames(), (V{"SP", "CP", "PSW"}));
    EXPECT_TRUE(area.ISfr_CtrlUp());
    EXPECT_EQ(ListNames(), (V{"SP", "PSW", "CP"}));
    EXPECT_EQ(st.sfrSets[0].names[1], "PSW");
}

TEST_F(SfrForms, CopyPutsTheSelectedLinesOnTheClipboard) {
    Add({"PSW", "SP", "CP"});
    area.SetSelection({1, 2}, 1);
    area.ISfr_Copy2Clipboard();
    EXPECT_EQ(host2.clipboardText(), "\r\n" + st.sfrList.lines[1] + "\r\n" + st.sfrList.lines[2]);
}

TEST_F(SfrForms, NoCurrentLineMeansNothingToChange) {
    Add({"PSW"});
    area.SetSelection({}, -1);
    EXPECT_EQ(area.RegisterToChange(), -1);
}

// ---- the picker

TEST_F(SfrForms, PickerListsAllNamesAndSearchesUpperCased) {
    forms::FSfr f(st, &port);
    f.get_preferences();
    EXPECT_EQ(f.names.size(), 11u);
    EXPECT_EQ(f.names.front(), "CP");
    f.searchText = "t3";
    f.TSearch_Enter();
    EXPECT_EQ(f.names, (V{"T3", "T3CON"}));
    EXPECT_EQ(f.searchText, "");
    f.searchText = "P2";
    f.TSearch_Enter();
    EXPECT_EQ(f.names, (V{"DP2", "P2"}));
    f.searchText = "*";
    f.TSearch_Enter();
    EXPECT_EQ(f.names.size(), 11u);
    f.searchText = "NOTHING";
    f.TSearch_Enter();
    EXPECT_TRUE(f.names.empty());
    f.TSearch_Enter();
    EXPECT_EQ(f.names.size(), 11u);
}

TEST_F(SfrForms, PickerOkAddsTheSelectedRegistersOnceReadingThemWhenConnected) {
    running();
    BoardWord(0xFFC0, 0x00A5);
    forms::FSfr f(st, &port);
    f.get_preferences();
    f.visible = true;
    f.searchText = "P2";
    f.TSearch_Enter();
    f.selected = {1, 1};
    f.BOk_Click();
    EXPECT_FALSE(f.visible);
    EXPECT_EQ(ListNames(), (V{"DP2", "P2"}));
    EXPECT_EQ(Values()[1], "00FFC0 00A5");
    EXPECT_EQ(Count(0xCD), 2);
    f.selected = {0, 1};
    f.ISfr_DblClick();
    EXPECT_EQ(ListNames(), (V{"DP2", "P2"}));
}

// ---- the change dialog

TEST_F(SfrForms, ARegisterWithoutFieldsShowsSixteenGreyBoxes) {
    WriteDumpByte(st.dump, 0xFF10, 0x84);
    forms::FSFRChange d(st, &port);
    d.method0(Index("PSW"));
    EXPECT_EQ(d.sfrName, "PSW");
    EXPECT_EQ(d.valueText, "0084");
    EXPECT_EQ(d.value, 0x84);
    for (int i = 0; i < 16; ++i) {
        const auto& b = d.boxes[static_cast<size_t>(i)];
        EXPECT_TRUE(b.visible) << i;
        EXPECT_FALSE(b.enabled) << i;
        EXPECT_EQ(b.background, 0x777777u) << i;
        EXPECT_EQ(b.width, 300) << i;
        EXPECT_EQ(b.left, 5400 - 300 * (i + 1)) << i;
        EXPECT_EQ(b.text, "") << i;
    }
    d.TValue_Change("1F");
    EXPECT_EQ(d.value, 0x1F);
    EXPECT_TRUE(host2.boxes.empty());
}

TEST_F(SfrForms, AThreeBitFieldAtBitFourIsOneBoxThreeUnitsWide) {
    BoardWord(0xFF42, 0);
    WriteDumpByte(st.dump, 0xFF42, 0xD5);  // 1101 0101
    WriteDumpByte(st.dump, 0xFF43, 0x02);
    forms::FSFRChange d(st, &port);
    d.method0(Index("T3CON"));
    const auto& b = d.boxes;
    EXPECT_TRUE(b[0].visible);
    EXPECT_EQ(b[0].width, 900);
    EXPECT_EQ(b[0].left, 4500);
    EXPECT_EQ(b[0].text, "101");
    EXPECT_EQ(b[0].toolTip, "T3I");
    EXPECT_TRUE(b[3].visible);
    EXPECT_FALSE(b[3].enabled);
    EXPECT_EQ(b[3].left, 4200);
    EXPECT_EQ(b[4].width, 900);
    EXPECT_EQ(b[4].left, 3300);
    EXPECT_EQ(b[4].text, "101");
    EXPECT_TRUE(b[4].enabled);
    EXPECT_EQ(b[4].background, 0xFFFFFFu);
    EXPECT_FALSE(b[5].visible);
    EXPECT_FALSE(b[6].visible);
    EXPECT_TRUE(b[7].visible);
    EXPECT_EQ(b[7].left, 3000);
    EXPECT_EQ(b[7].width, 300);
    EXPECT_EQ(b[7].text, "1");
    EXPECT_EQ(b[8].width, 600);
    EXPECT_EQ(b[8].text, "10");
    EXPECT_FALSE(b[9].visible);
    EXPECT_TRUE(b[10].visible);
}

TEST_F(SfrForms, TooManyDigitsInAFieldGiveTheMessageWithItsWidth) {
    forms::FSFRChange d(st, &port);
    d.method0(Index("T3CON"));
    d.TBitValue_Change(4, "10");
    EXPECT_TRUE(host2.boxes.empty());
    EXPECT_EQ(d.boxes[4].text, "10");
    d.TBitValue_Change(4, "102");
    ASSERT_EQ(host2.boxes.size(), 1u);
    EXPECT_EQ(host2.boxes[0], "No binary number or more than 3 digits !");
    EXPECT_EQ(d.boxes[4].text, "000");
    d.TBitValue_Change(4, "1010");
    EXPECT_EQ(host2.boxes.size(), 2u);
    EXPECT_EQ(d.value, 0);
}

TEST_F(SfrForms, AFieldTakesItsBoxWhenLeftAndCountsOnDoubleClick) {
    forms::FSFRChange d(st, &port);
    d.method0(Index("T3CON"));
    d.TBitValue_Change(4, "11");
    EXPECT_EQ(d.value, 0);  // only when the box is left
    d.TBitValue_LostFocus(4);
    EXPECT_EQ(d.value, 0x30);
    EXPECT_EQ(d.valueText, "0030");
    EXPECT_EQ(d.boxes[4].text, "011");
    d.TBitValue_DblClick(7);
    EXPECT_EQ(d.value, 0xB0);
    d.TBitValue_DblClick(7);
    EXPECT_EQ(d.value, 0x30);
    d.TBitValue_Change(8, "11");
    d.TBitValue_LostFocus(8);
    EXPECT_EQ(d.value, 0x330);
    d.TBitValue_DblClick(8);  // 3 + 1 counts round to 0
    EXPECT_EQ(d.value, 0x030);
    EXPECT_EQ(d.boxes[8].text, "00");
    d.TBitValue_DblClick(3);  // an undefined bit has no field
    EXPECT_EQ(d.value, 0x030);
}

TEST_F(SfrForms, ValueBoxTakesFourHexDigitsOnly) {
    forms::FSFRChange d(st, &port);
    d.method0(Index("T3CON"));
    d.TValue_Change("0170");
    EXPECT_EQ(d.value, 0x170);
    EXPECT_EQ(d.boxes[4].text, "111");
    EXPECT_EQ(d.boxes[8].text, "01");
    d.TValue_Change("12345");
    ASSERT_EQ(host2.boxes.size(), 1u);
    EXPECT_EQ(host2.boxes[0], "No 4-digit hexadezimal number !");
    EXPECT_EQ(d.valueText, "0170");
    d.TValue_Change("XY");
    EXPECT_EQ(host2.boxes.size(), 2u);
    EXPECT_EQ(d.value, 0x170);
}

TEST_F(SfrForms, OkNotConnectedStoresInTheDumpOnlyWithoutTheBox) {
    forms::FSFRChange d(st, &port);
    d.method0(Index("PSW"));
    d.TValue_Change("BEEF");
    d.BOk_Click();
    EXPECT_FALSE(d.visible);
    EXPECT_EQ(DumpWord(0xFF10), 0xBEEF);
    EXPECT_TRUE(host2.boxes.empty());
    EXPECT_TRUE(board->commands.empty());
    EXPECT_EQ(host2.sfrRefreshes, 0);
}

TEST_F(SfrForms, OkConnectedWritesTheWordShowsTheBoxAndRefreshes) {
    running();
    st.MCTYPE = "ald7rk_bb";
    BoardWord(0xFF10, 0x0001);
    forms::FSFRChange d(st, &port);
    d.method0(Index("PSW"));
    EXPECT_EQ(d.value, 1);
    EXPECT_EQ(Count(0xCD), 1);
    d.TValue_Change("1234");
    d.BOk_Click();
    EXPECT_EQ(board->peek(0xFF10), 0x34);
    EXPECT_EQ(board->peek(0xFF11), 0x12);
    EXPECT_EQ(Count(0x82), 1);
    EXPECT_EQ(host2.boxes, (V{"ALD7"}));
    EXPECT_EQ(host2.sfrRefreshes, 1);
    st.REFRESHSFR = 0;
    d.method0(Index("PSW"));
    d.BOk_Click();
    EXPECT_EQ(host2.sfrRefreshes, 1);
    EXPECT_EQ(host2.boxes.size(), 2u);
}

TEST_F(SfrForms, OkCancelWritesNothing) {
    running();
    forms::FSFRChange d(st, &port);
    d.method0(Index("PSW"));
    d.TValue_Change("1234");
    d.BCancel_Click();
    EXPECT_FALSE(d.visible);
    EXPECT_EQ(Count(0x82), 0);
    EXPECT_NE(DumpWord(0xFF10), 0x1234);
}

TEST_F(SfrForms, TheUpperRangeOfThisFamilyGetsItsWriteFirst) {
    running();
    st.MCTYPE = "ZTA9Y_BB";
    forms::FSFRChange d(st, &port);
    d.method0(Index("HIGHREG"));
    d.TValue_Change("0042");
    d.BOk_Click();
    EXPECT_EQ(board->peek(0xC000AA), 0xFA);
    EXPECT_EQ(board->peek(0xFFF010), 0x42);
    EXPECT_EQ(Count(0x82), 2);
    EXPECT_EQ(host2.boxes, (V{"ZTA9"}));
    // a register below the range gets none, nor another controller
    board->memory.erase(0xC000AA);
    d.method0(Index("PSW"));
    d.BOk_Click();
    EXPECT_EQ(board->memory.count(0xC000AA), 0u);
    st.MCTYPE = "ALD7RK_BB";
    d.method0(Index("HIGHREG"));
    d.BOk_Click();
    EXPECT_EQ(board->memory.count(0xC000AA), 0u);
    EXPECT_EQ(forms::FSFRChange::SpecialWriteFor("zta9x", 0xFFF000)->address, 0xC000AA);
    EXPECT_EQ(forms::FSFRChange::SpecialWriteFor("ZTA9", 0xFFEFFF), nullptr);
}

}  // namespace
}  // namespace vortelm
