#include <gtest/gtest.h>

#include "core/RunTimeError.h"
#include "image/Dump.h"
#include "image/Selections.h"
#include "ImageTestSupport.h"

namespace vortelm {
namespace {

using test::ImageTest;
using Selections = ImageTest;

void Expect(const SelectionList& sel, std::initializer_list<std::pair<int32_t, int32_t>> ranges) {
    ASSERT_EQ(sel.count, static_cast<int16_t>(ranges.size()));
    int i = 0;
    for (auto [s, e] : ranges) {
        EXPECT_EQ(sel.start[i], s) << i;
        EXPECT_EQ(sel.end[i], e) << i;
        ++i;
    }
}

TEST(SelectionList, TouchingRangesMerge) {
    SelectionList sel;
    AddSelection(sel, 0, 0x0F);
    AddSelection(sel, 0x10, 0x1F);
    Expect(sel, {{0, 0x1F}});
}

TEST(SelectionList, ContainedRangeMerges) {
    SelectionList sel;
    AddSelection(sel, 0, 0x10);
    AddSelection(sel, 8, 9);
    Expect(sel, {{0, 0x10}});
}

TEST(SelectionList, SeparateRangesAreSorted) {
    SelectionList sel;
    AddSelection(sel, 0x100, 0x1FF);
    AddSelection(sel, 0, 0x0E);
    AddSelection(sel, 0x50, 0x60);
    Expect(sel, {{0, 0x0E}, {0x50, 0x60}, {0x100, 0x1FF}});
    EXPECT_EQ(LowestSelectedAddress(sel), 0);
    EXPECT_EQ(HighestSelectedAddress(sel), 0x1FF);
    EXPECT_EQ(SelectionsContain(sel, 0x55), kTrue);
    EXPECT_EQ(SelectionsContain(sel, 0x61), kFalse);
}

TEST(SelectionList, EmptyListAnswers) {
    SelectionList sel;
    EXPECT_EQ(LowestSelectedAddress(sel), -1);
    EXPECT_EQ(HighestSelectedAddress(sel), -1);
    EXPECT_EQ(SelectionsContain(sel, 0), kFalse);
}

TEST(SelectionList, RemoveOfIndexFiveOnFiveEntriesChangesNothing) {
    SelectionList sel;
    for (int i = 0; i < 5; ++i) AddSelection(sel, i * 0x100, i * 0x100 + 0x10);
    EXPECT_EQ(RemoveSelection(sel, 5), -2);
    EXPECT_EQ(sel.count, 5);
    EXPECT_EQ(RemoveSelection(sel, 1), 0);
    Expect(sel, {{0, 0x10}, {0x200, 0x210}, {0x300, 0x310}, {0x400, 0x410}});
    EXPECT_THROW((void)RemoveSelection(sel, -1), RunTimeError);
    EXPECT_EQ(sel.count, 4);
}

TEST(SelectionList, EndBelowStartIsKept) {
    SelectionList sel;
    AddSelection(sel, 0x20, 0x10);
    Expect(sel, {{0x20, 0x10}});
    EXPECT_EQ(SelectedByteCount(sel), -15);
}

TEST(SelectionList, MoveMayLeaveTheListUnsortedUntilTheNextMerge) {
    SelectionList sel;
    AddSelection(sel, 0, 0xF);
    AddSelection(sel, 0x100, 0x10F);
    EXPECT_EQ(MoveSelection(sel, 0, 0x200), 0);
    Expect(sel, {{0x200, 0x20F}, {0x100, 0x10F}});
    MergeSelections(sel);
    Expect(sel, {{0x100, 0x10F}, {0x200, 0x20F}});
    EXPECT_EQ(MoveSelection(sel, 2, 1), -2);
    EXPECT_THROW((void)MoveSelection(sel, 0, 0x7FFFFFFF), RunTimeError);
    Expect(sel, {{0x100, 0x10F}, {0x200, 0x20F}});
}

TEST(SelectionList, TheThousandAndSecondEntryIsTheBound) {
    SelectionList sel;
    for (int i = 0; i < 1001; ++i) AddSelection(sel, i * 4, i * 4 + 1);
    EXPECT_EQ(sel.count, 1001);
    try {
        AddSelection(sel, 0x10000, 0x10001);
        FAIL() << "no run-time error";
    } catch (const RunTimeError& e) {
        EXPECT_STREQ(e.what(), "SelectionList index 1001 out of range 0 to 1000");
    }
    EXPECT_EQ(sel.count, 1001);
    EXPECT_EQ(sel.end[1000], 4001);
}

TEST(SelectionList, ClearSaveRestore) {
    SelectionList sel;
    AddSelection(sel, 1, 2);
    SaveSelections(sel);
    ClearSelections(sel);
    EXPECT_EQ(sel.count, 0);
    EXPECT_EQ(sel.start[0], -1);
    EXPECT_EQ(sel.end[0], -1);
    RestoreSelections(sel);
    Expect(sel, {{1, 2}});
}

TEST_F(Selections, ClipboardTextMarksUndefinedAndPastEndBytes) {
    WriteDumpByte(st->dump, 0x12, 0xAB);
    SetDefined(st->dump, 0x12, kTrue);
    SetDefined(st->dump, 0x13, kTrue);
    AddSelection(st->selections, 0x10, 0x14);
    CopySelections(*st);
    std::string line = "000010:";
    line += " .  . ";
    line += " AB 00";
    line += " . ";
    for (int i = 5; i < 16; ++i) line += " . ";
    EXPECT_EQ(host->clipboardText(),
              line + "\r\n" + std::string(55, '*') + "\r\n");
    EXPECT_EQ(st->selections.savedCount, 1);
}

TEST_F(Selections, CutClearsDefinedOnly) {
    FillDumpBlock(st->dump, 0x100, 0x20, 0x77, kMarksFromTarget);
    AddSelection(st->selections, 0x100, 0x10F);
    CutSelections(*st);
    EXPECT_EQ(IsDefined(st->dump, 0x100), kFalse);
    EXPECT_EQ(IsDefined(st->dump, 0x10F), kFalse);
    EXPECT_EQ(IsValid(st->dump, 0x100), kTrue);
    EXPECT_EQ(IsDefined(st->dump, 0x110), kTrue);
    EXPECT_NE(host->clipboardText().find("000100: 77"), std::string::npos);
}

TEST_F(Selections, PasteMovesTheSelectionAndCopies) {
    for (int i = 0; i < 4; ++i) WriteDumpByte(st->dump, 0x100 + i, static_cast<uint8_t>(0xA0 + i));
    AddSelection(st->selections, 0x100, 0x103);
    CopySelections(*st);
    PasteSelections(*st, 0x200);
    Expect(st->selections, {{0x200, 0x203}});
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(ReadDumpByte(st->dump, 0x200 + i), 0xA0 + i);
        EXPECT_EQ(IsDefined(st->dump, 0x200 + i), kTrue);
    }
}

TEST_F(Selections, PasteAboveItsSourceInsideTheSelectionRepeatsAPattern) {
    for (int i = 0; i < 8; ++i) WriteDumpByte(st->dump, 0x100 + i, static_cast<uint8_t>(i + 1));
    AddSelection(st->selections, 0x100, 0x107);
    CopySelections(*st);
    PasteSelections(*st, 0x102);
    Expect(st->selections, {{0x102, 0x109}});
    const uint8_t want[] = {1, 2, 1, 2, 1, 2, 1, 2, 1, 2};
    for (int i = 0; i < 10; ++i) EXPECT_EQ(ReadDumpByte(st->dump, 0x100 + i), want[i]) << i;
}

TEST_F(Selections, FillByBytesAndByWords) {
    SetValid(st->dump, 0x10, kTrue);
    AddSelection(st->selections, 0x10, 0x13);
    FillSelections(*st, 0x1234, kFalse);
    for (int a = 0x10; a <= 0x13; ++a) {
        EXPECT_EQ(ReadDumpByte(st->dump, a), 0x34);
        EXPECT_EQ(IsDefined(st->dump, a), kTrue);
        EXPECT_EQ(IsValid(st->dump, a), kFalse);
    }
    ClearSelections(st->selections);
    AddSelection(st->selections, 0x21, 0x24);
    FillSelections(*st, 0x1234, kTrue);
    // From the odd start the words begin at 0x20 and go by 2: 0x24 stays.
    const uint8_t want[] = {0x34, 0x12, 0x34, 0x12, 0x00};
    for (int i = 0; i < 5; ++i) EXPECT_EQ(ReadDumpByte(st->dump, 0x20 + i), want[i]) << i;
    EXPECT_EQ(IsDefined(st->dump, 0x24), kFalse);
    // From an even start the last word may reach one past the end.
    ClearSelections(st->selections);
    AddSelection(st->selections, 0x30, 0x34);
    FillSelections(*st, 0xBEEF, kTrue);
    EXPECT_EQ(ReadDumpByte(st->dump, 0x34), 0xEF);
    EXPECT_EQ(ReadDumpByte(st->dump, 0x35), 0xBE);
    EXPECT_EQ(IsDefined(st->dump, 0x35), kTrue);
    EXPECT_EQ(IsDefined(st->dump, 0x36), kFalse);
}

TEST_F(Selections, RandomFillTakesTheHostsNumbers) {
    host->randoms = {0.0, 0.5, 0.999, 0.25};
    AddSelection(st->selections, 0x40, 0x43);
    RandomFillSelections(*st);
    EXPECT_EQ(ReadDumpByte(st->dump, 0x40), 0);
    EXPECT_EQ(ReadDumpByte(st->dump, 0x41), 128);
    EXPECT_EQ(ReadDumpByte(st->dump, 0x42), 255);
    EXPECT_EQ(ReadDumpByte(st->dump, 0x43), 64);
    EXPECT_EQ(IsDefined(st->dump, 0x43), kTrue);
}

TEST_F(Selections, UnreadClearsDefinedAndValid) {
    FillDumpBlock(st->dump, 0x0, 0x10, 0x55, kMarksFromTarget);
    AddSelection(st->selections, 0x4, 0x7);
    UnreadSelections(*st);
    EXPECT_EQ(IsDefined(st->dump, 4), kFalse);
    EXPECT_EQ(IsValid(st->dump, 7), kFalse);
    EXPECT_EQ(IsValid(st->dump, 8), kTrue);
    EXPECT_EQ(ReadDumpByte(st->dump, 4), 0x55);
}

}  // namespace
}  // namespace vortelm
