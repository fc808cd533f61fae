#include <gtest/gtest.h>

#include "core/RunTimeError.h"
#include "image/Dump.h"
#include "image/SRecordFile.h"
#include "image/Selections.h"
#include "ImageTestSupport.h"

namespace vortelm {
namespace {

using SRecordFile = test::ImageTest;

TEST_F(SRecordFile, ReadsS1S2S3AndReports) {
    WriteFile(path("load/a.sre"),
              "S00600004844521B\r\n"
              "S1050100AABB94\r\n"
              "S206010102CCDD4C\r\n"
              "S308000102031122338B\r\n"
              "S9030000FC\r\n");
    EXPECT_EQ(LoadSRecordCommand(*st, path("load/a.sre")), 0);
    EXPECT_EQ(takeText(), "\r\n*Load: 7 bytes loaded");
    EXPECT_EQ(ReadDumpByte(st->dump, 0x101), 0xBB);
    EXPECT_EQ(ReadDumpByte(st->dump, 0x10103), 0xDD);
    EXPECT_EQ(ReadDumpByte(st->dump, 0x10205), 0x33);
    EXPECT_EQ(IsDefined(st->dump, 0x10205), kTrue);
    ASSERT_EQ(st->selections.count, 3);
    EXPECT_EQ(st->selections.start[2], 0x10203);
    EXPECT_EQ(st->selections.end[2], 0x10205);
}

TEST_F(SRecordFile, ConsecutiveRecordsMerge) {
    WriteFile(path("load/m.sre"), "S104000011EA\r\nS104000122D8\r\n");
    ReadSRecordFile(*st, path("load/m.sre"));
    ASSERT_EQ(st->selections.count, 1);
    EXPECT_EQ(st->selections.end[0], 1);
}

TEST_F(SRecordFile, CountThreeCarriesNoDataAndItsSelectionIsAbsorbedByANeighbour) {
    WriteFile(path("load/c.sre"), "S104000011EA\r\nS1030001FB\r\n");
    ReadSRecordFile(*st, path("load/c.sre"));
    ASSERT_EQ(st->selections.count, 1);
    EXPECT_EQ(st->selections.start[0], 0);
    EXPECT_EQ(st->selections.end[0], 0);
    EXPECT_EQ(takeText(), "");
    // Alone, the empty record stays as start 5, end 4.
    WriteFile(path("load/d.sre"), "S1030005F7\r\n");
    ReadSRecordFile(*st, path("load/d.sre"));
    ASSERT_EQ(st->selections.count, 1);
    EXPECT_EQ(st->selections.start[0], 5);
    EXPECT_EQ(st->selections.end[0], 4);
}

TEST_F(SRecordFile, OnlyS0AndS9LeaveTheListEmpty) {
    WriteFile(path("load/e.sre"), "S00600004844521B\r\nS9030000FC\r\n");
    EXPECT_EQ(LoadSRecordCommand(*st, path("load/e.sre")), 0);
    EXPECT_EQ(st->selections.count, 0);
    EXPECT_EQ(takeText(), "\r\n*Load: 0 bytes loaded");
}

TEST_F(SRecordFile, ChecksumAndMissingSAreWarned) {
    WriteFile(path("load/w.sre"), "junk\r\nS104000011EB\r\nS9030000FC\r\n");
    ReadSRecordFile(*st, path("load/w.sre"));
    EXPECT_EQ(ReadDumpByte(st->dump, 0), 0x11);
    EXPECT_EQ(takeText(),
              "\r\n*WARNING: No 'S' at beginning of line - line ignored "
              "\r\n*WARNING: Checksum in line 2 wrong. Read: 0xEB, calculated: 0xEA");
}

TEST_F(SRecordFile, TypeThatIsNoDigitAndEmptyLastLineAreRunTimeErrors) {
    WriteFile(path("load/t.sre"), "SX040000117A\r\n");
    EXPECT_THROW(ReadSRecordFile(*st, path("load/t.sre")), RunTimeError);
    WriteFile(path("load/u.sre"), "S104000011EA\r\n\r\n");
    EXPECT_THROW(ReadSRecordFile(*st, path("load/u.sre")), RunTimeError);
    WriteFile(path("load/v.sre"), "S1\r\n");  // count 0: no place for the count
    EXPECT_THROW(ReadSRecordFile(*st, path("load/v.sre")), RunTimeError);
    WriteFile(path("load/x.sre"), "S3FF" + std::string(600, 'F') + "\r\n");  // address overflow
    EXPECT_THROW(ReadSRecordFile(*st, path("load/x.sre")), RunTimeError);
    WriteFile(path("load/y.sre"), "S30902000000112233444A\r\n");  // past the image
    EXPECT_THROW(ReadSRecordFile(*st, path("load/y.sre")), RunTimeError);
}

TEST_F(SRecordFile, SelectionWriterWritesHolesAsTheirValueAndTheEndRecord) {
    WriteDumpByte(st->dump, 0x1000, 0x11);
    WriteDumpByte(st->dump, 0x1002, 0x33);
    AddSelection(st->selections, 0x1000, 0x1002);
    EXPECT_EQ(SaveSRecordCommand(*st, "a.sre", 2, 19), 0);
    EXPECT_EQ(takeText(), "\r\n*SaveAs: selection written to file");
    EXPECT_EQ(ReadFile(path("save/a.sre")),
              "S10510001100D9\r\n"
              "S104100233B6\r\n"
              "S9031000EC\r\n");
    WriteSRecordSelections(*st, "b.sre", 16, 28);
    EXPECT_EQ(ReadFile(path("save/b.sre")),
              "S207001000110033A4\r\n"
              "S804001000EB\r\n");
    WriteSRecordSelections(*st, "c.sre", 16, 37);
    EXPECT_EQ(ReadFile(path("save/c.sre")),
              "S30800001000110033A3\r\n"
              "S70500001000EA\r\n");
}

TEST_F(SRecordFile, RangeWriterEndsOnTheFirstSelectionsEnd) {
    for (int i = 0; i < 6; ++i) WriteDumpByte(st->dump, i, static_cast<uint8_t>(i));
    AddSelection(st->selections, 0, 5);
    WriteSRecordRange(*st, "r.sre", 0, 5, 4, 28);
    EXPECT_EQ(ReadFile(path("save/r.sre")),
              "S20800000000010203F1\r\n"
              "S2060000040405EC\r\n"
              "S804000000FB\r\n");
}

TEST_F(SRecordFile, RangeWriterWithAnotherFirstSelectionRunsIntoANegativeLength) {
    AddSelection(st->selections, 0x100, 0x1FF);
    EXPECT_THROW(WriteSRecordRange(*st, "n.sre", 0, 5, 4, 28), RunTimeError);
}

TEST_F(SRecordFile, WrittenFilesReadBack) {
    for (int a = 0; a < 600; ++a) WriteDumpByte(st->dump, 0x12340 + a, static_cast<uint8_t>(a ^ 0x5A));
    AddSelection(st->selections, 0x12340, 0x12340 + 599);
    for (int16_t format : {int16_t(19), int16_t(28), int16_t(37)}) {
        WriteSRecordSelections(*st, "rt.sre", 32, format);
        ProgramState other(*host);
        other.PATH_LOAD = st->PATH_SAVE;
        InitDumpMemory(other.dump);
        ReadSRecordFile(other, "rt.sre");
        ASSERT_EQ(other.selections.count, 1);
        const int32_t base = format == 19 ? 0x2340 : 0x12340;
        EXPECT_EQ(other.selections.start[0], base);
        EXPECT_EQ(other.selections.end[0], base + 599);
        for (int a = 0; a < 600; ++a)
            ASSERT_EQ(ReadDumpByte(other.dump, base + a), static_cast<uint8_t>(a ^ 0x5A));
    }
}

}  // namespace
}  // namespace vortelm
