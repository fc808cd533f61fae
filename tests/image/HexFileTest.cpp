#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "ImageTestSupport.h"
#include "core/RunTimeError.h"
#include "image/Dump.h"
#include "image/HexFile.h"
#include "image/Selections.h"

namespace vortelm {
namespace {

using HexFile = test::ImageTest;

TEST_F(HexFile, OnlyAnEndRecordLeavesMinusOneToMinusTwoAndReportsZeroBytes) {
    WriteFile(path("load/e.hex"), ":00000001FF\r\n");
    EXPECT_EQ(LoadHexCommand(*st, path("load/e.hex")), 0);
    ASSERT_EQ(st->selections.count, 1);
    EXPECT_EQ(st->selections.start[0], -1);
    EXPECT_EQ(st->selections.end[0], -2);
    EXPECT_EQ(takeText(), "\r\n*Load: 0 bytes loaded");
}

TEST_F(HexFile, LoadReportsBytesAndGoesToThePage) {
    WriteFile(path("load/a.hex"),
              ":0401000001020304F1\r\n"
              ":00000001FF\r\n");
    EXPECT_EQ(LoadHexCommand(*st, path("load/a.hex")), 0);
    EXPECT_EQ(takeText(), "\r\n*Load: 4 bytes loaded");
    ASSERT_EQ(host->pages.size(), 1u);
    EXPECT_EQ(host->pages[0], 0x10);
    EXPECT_EQ(host->busyOn, 1);
    EXPECT_EQ(host->busyOff, 1);
    EXPECT_EQ(ReadDumpByte(st->dump, 0x103), 4);
    EXPECT_EQ(IsDefined(st->dump, 0x100), kTrue);
    EXPECT_EQ(IsValid(st->dump, 0x100), kFalse);
}

TEST_F(HexFile, MissingFileIsReported) {
    const std::string name = path("load/none.hex");
    EXPECT_EQ(LoadHexCommand(*st, name), -1);
    EXPECT_EQ(takeText(), "\r\n*ERROR: file " + name + " not found !");
}

TEST_F(HexFile, AdjacentRecordsMakeOneSelectionAlsoAcrossAType4Record) {
    // 0x1FFF0..0x1FFFF, then a type 4 record for segment 2 and 0x20000 on.
    std::string text = ":020000040001F9\r\n";
    text += ":10FFF000000102030405060708090A0B0C0D0E0F89\r\n";
    text += ":020000040002F8\r\n";
    text += ":04000000AABBCCDDEE\r\n";
    text += ":00000001FF\r\n";
    WriteFile(path("load/b.hex"), text);
    ReadHexFile(*st, path("load/b.hex"));
    ASSERT_EQ(st->selections.count, 1);
    EXPECT_EQ(st->selections.start[0], 0x1FFF0);
    EXPECT_EQ(st->selections.end[0], 0x20003);
    EXPECT_EQ(ReadDumpByte(st->dump, 0x20003), 0xDD);
    EXPECT_EQ(takeText(), "");
}

TEST_F(HexFile, Type2BaseIsTimesSixteen) {
    WriteFile(path("load/c.hex"), ":020000021000EC\r\n:0100100042AD\r\n");
    ReadHexFile(*st, path("load/c.hex"));
    EXPECT_EQ(ReadDumpByte(st->dump, 0x10010), 0x42);
    EXPECT_EQ(st->selections.start[0], 0x10010);
}

TEST_F(HexFile, HolesMakeSeparateSelections) {
    WriteFile(path("load/h.hex"), ":0100000011EE\r\n:0100100022CD\r\n:00000001FF\r\n");
    ReadHexFile(*st, path("load/h.hex"));
    ASSERT_EQ(st->selections.count, 2);
    EXPECT_EQ(st->selections.end[0], 0);
    EXPECT_EQ(st->selections.start[1], 0x10);
}

TEST_F(HexFile, WrongChecksumIsStoredAndWarnedAbout) {
    WriteFile(path("load/w.hex"), ":0100000011EF\r\n:00000001FF\r\n");
    ReadHexFile(*st, path("load/w.hex"));
    EXPECT_EQ(ReadDumpByte(st->dump, 0), 0x11);
    EXPECT_EQ(IsDefined(st->dump, 0), kTrue);
    EXPECT_EQ(takeText(), "\r\n*WARNING: Checksum in line 1 wrong. Read: 0xEF, calculated: 0xEE");
}

TEST_F(HexFile, LinesWithoutColonAreWarnedExceptTheLast) {
    WriteFile(path("load/g.hex"), "garbage\r\n:0100000011EE\r\nxx\r\n:00000001FF\r\nJUNK");
    // The trailing "JUNK" is not reported but parsed: its length "UN" is -1,
    // no index of the record buffer, which ends the load.
    EXPECT_THROW(ReadHexFile(*st, path("load/g.hex")), RunTimeError);
    const std::string warn = "\r\n*WARNING: No ':' at beginning of line - line ignored ";
    EXPECT_EQ(takeText(), warn + warn);
    EXPECT_EQ(ReadDumpByte(st->dump, 0), 0x11);
}

TEST_F(HexFile, TrailingGarbageIsNotReportedAndActsAsARecord) {
    // "x0000000000" gives LL 0, address 0, type 0: an empty data record at 0,
    // the checksum column "00" is right, so nothing is said.
    WriteFile(path("load/t.hex"), ":0100100022CD\r\nx0000000000");
    ReadHexFile(*st, path("load/t.hex"));
    EXPECT_EQ(takeText(), "");
    // The empty record at 0 closes the run at 0x10 and opens one at 0 with
    // end -1, which the merge keeps as it stands.
    ASSERT_EQ(st->selections.count, 2);
    EXPECT_EQ(st->selections.start[0], 0);
    EXPECT_EQ(st->selections.end[0], -1);
    EXPECT_EQ(st->selections.start[1], 0x10);
    EXPECT_EQ(st->selections.end[1], 0x10);
}

TEST_F(HexFile, AnEmptyLastLineIsAnEmptyDataRecordAtZero) {
    WriteFile(path("load/l.hex"), ":0100100022CD\r\n\r\n");
    ReadHexFile(*st, path("load/l.hex"));
    ASSERT_EQ(st->selections.count, 2);
    EXPECT_EQ(st->selections.start[0], 0);
    EXPECT_EQ(st->selections.end[0], -1);
}

TEST_F(HexFile, BadLengthFieldIsTheBufferBound) {
    WriteFile(path("load/j.hex"), ":0100000011EE\r\nJUNK");
    try {
        ReadHexFile(*st, path("load/j.hex"));
        FAIL() << "no run-time error";
    } catch (const RunTimeError& e) {
        EXPECT_STREQ(e.what(), "Intel HEX record buffer index -1 out of range 0 to 256");
    }
    WriteFile(path("load/k.hex"), ":FE000000\r\n");
    EXPECT_THROW(ReadHexFile(*st, path("load/k.hex")), RunTimeError);
    // 253 bytes is the longest record that fits.
    std::string rec = ":FD000000" + std::string(253 * 2, '0') + "03\r\n";
    WriteFile(path("load/m.hex"), rec);
    EXPECT_NO_THROW(ReadHexFile(*st, path("load/m.hex")));
    EXPECT_EQ(st->selections.end[0], 252);
}

TEST_F(HexFile, BadCharactersGiveFF) {
    WriteFile(path("load/x.hex"), ":01000G0011EE\r\n");
    ReadHexFile(*st, path("load/x.hex"));
    // Address "000G" is -1: the byte goes to base - 1.
    EXPECT_EQ(ReadDumpByte(st->dump, -1), 0x11);
    EXPECT_EQ(takeText(), "\r\n*WARNING: Checksum in line 1 wrong. Read: 0xEE, calculated: 0xF0");
}

TEST_F(HexFile, LinearValueOf8000IsAnOverflow) {
    WriteFile(path("load/o.hex"), ":0200000480007A\r\n");
    EXPECT_THROW(ReadHexFile(*st, path("load/o.hex")), RunTimeError);
    WriteFile(path("load/p.hex"), ":020000040101F8\r\n:0100000011EE\r\n");
    EXPECT_THROW(ReadHexFile(*st, path("load/p.hex")), RunTimeError);  // past the image
}

TEST_F(HexFile, LoadDoesNotClearTheImage) {
    WriteDumpByte(st->dump, 0x500, 0x99);
    SetDefined(st->dump, 0x500, kTrue);
    WriteFile(path("load/a.hex"), ":0100000011EE\r\n");
    ReadHexFile(*st, path("load/a.hex"));
    EXPECT_EQ(IsDefined(st->dump, 0x500), kTrue);
    EXPECT_EQ(st->selections.count, 1);
}

TEST_F(HexFile, Format2At10000GivesTheSegmentRecord) {
    WriteHexRange(*st, "r.hex", 0x10000, 0x10001, 16, 2);
    EXPECT_EQ(ReadFile(path("save/r.hex")),
              ":020000021000EC\r\n"
              ":020000000000FE\r\n"
              ":00000001FF\r\n");
}

TEST_F(HexFile, RangeWriterPrecedesTheFirstRecordWithAnExtensionAndCrosses64K) {
    for (int i = 0; i < 4; ++i) WriteDumpByte(st->dump, 0xFFFE + i, static_cast<uint8_t>(i + 1));
    WriteHexRange(*st, "r.hex", 0xFFFE, 0x10001, 4, 4);
    // One record of 4 bytes crosses the 64 KiB line under the low address.
    EXPECT_EQ(ReadFile(path("save/r.hex")),
              ":020000040000FA\r\n"
              ":04FFFE0001020304F5\r\n"
              ":00000001FF\r\n");
}

TEST_F(HexFile, ExtensionChecksumOfSumZeroIsWrittenAs100) {
    // Format 4, value 0x00FA: 2 + 4 + 0 + 0xFA = 0x100.
    WriteHexRange(*st, "z.hex", 0xFA0000, 0xFA0000, 16, 4);
    EXPECT_EQ(ReadFile(path("save/z.hex")),
              ":0200000400FA100\r\n"
              ":0100000000FF\r\n"
              ":00000001FF\r\n");
}

TEST_F(HexFile, SelectionWriterSkipsHolesAndSplitsAt64K) {
    for (int a = 0xFFFC; a <= 0x10003; ++a) {
        WriteDumpByte(st->dump, a, static_cast<uint8_t>(a & 0xFF));
        SetDefined(st->dump, a, kTrue);
    }
    SetDefined(st->dump, 0xFFFD, kFalse);
    AddSelection(st->selections, 0xFFF0, 0x10002);
    EXPECT_EQ(SaveHexCommand(*st, "s.hex", 32, 4), 0);
    EXPECT_EQ(takeText(), "\r\n*SaveAs: selection written to file");
    EXPECT_EQ(ReadFile(path("save/s.hex")),
              ":020000040000FA\r\n"
              ":01FFFC00FC08\r\n"
              ":02FFFE00FEFF04\r\n"
              ":020000040001F9\r\n"
              ":03000000000102FA\r\n"
              ":00000001FF\r\n");
}

TEST_F(HexFile, RecordSizeZeroIsAnError) {
    AddSelection(st->selections, 0, 1);
    EXPECT_THROW(WriteHexSelections(*st, "q.hex", 0, 4), RunTimeError);
    EXPECT_THROW(WriteHexRange(*st, "q.hex", 0, 1, 0, 4), RunTimeError);
}

TEST_F(HexFile, WrittenFileReadsBack) {
    for (int a = 0; a < 1000; ++a)
        WriteDumpByte(st->dump, 0x2FF00 + a, static_cast<uint8_t>(a * 3));
    FillDumpBlock(st->dump, 0x2FF00, 1000, 0, MarkChange{kMarkDefined, 0});
    for (int a = 0; a < 1000; ++a)
        WriteDumpByte(st->dump, 0x2FF00 + a, static_cast<uint8_t>(a * 3));
    AddSelection(st->selections, 0x2FF00, 0x2FF00 + 999);
    WriteHexSelections(*st, "rt.hex", 32, 2);
    ProgramState other(*host);
    other.PATH_LOAD = st->PATH_SAVE;
    InitDumpMemory(other.dump);
    ReadHexFile(other, "rt.hex");
    ASSERT_EQ(other.selections.count, 1);
    EXPECT_EQ(other.selections.start[0], 0x2FF00);
    EXPECT_EQ(other.selections.end[0], 0x2FF00 + 999);
    for (int a = 0; a < 1000; ++a)
        ASSERT_EQ(ReadDumpByte(other.dump, 0x2FF00 + a), static_cast<uint8_t>(a * 3)) << a;
}

// ---- the fast ways against the line-by-line way

// A record line with its checksum.
std::string Record(int ll, int offset, int type, const std::vector<int>& data,
                   bool rightSum = true) {
    std::vector<int> b = {ll, offset >> 8, offset & 0xFF, type};
    b.insert(b.end(), data.begin(), data.end());
    int sum = 0;
    std::string line = ":";
    char hex[3];
    for (int v : b) {
        std::snprintf(hex, sizeof hex, "%02X", v & 0xFF);
        line += hex;
        sum += v;
    }
    std::snprintf(hex, sizeof hex, "%02X", (-sum + (rightSum ? 0 : 1)) & 0xFF);
    return line + hex;
}

// Lines of data for the windows first..last, 16 bytes a record, each window
// opened by its type 4 record.
std::vector<std::string> Windows(int first, int last, int recordsPerWindow, int seed) {
    std::vector<std::string> lines;
    for (int w = first; w <= last; ++w) {
        lines.push_back(Record(2, 0, 4, {w >> 8, w & 0xFF}));
        for (int r = 0; r < recordsPerWindow; ++r) {
            std::vector<int> data(16);
            for (int i = 0; i < 16; ++i) data[i] = (w * 131 + r * 17 + i * 7 + seed) & 0xFF;
            lines.push_back(Record(16, r * 16, 0, data));
        }
    }
    return lines;
}

class HexWays : public test::ImageTest {
  protected:
    struct Result {
        std::string text, error;
        std::vector<int32_t> starts, ends;
        std::vector<uint8_t> values, status;
    };
    Result read(const std::string& file, const HexReading& how) {
        ProgramState s(*host);
        s.programFolder = st->programFolder;
        s.PATH_LOAD = st->PATH_LOAD;
        InitDumpMemory(s.dump);
        WriteDumpBlock(s.dump, 0x20000, std::vector<uint8_t>(8, 0x5A), kMarksFromTarget);
        Result r;
        try {
            ReadHexFile(s, file, how);
        } catch (const RunTimeError& e) {
            r.error = e.what();
        }
        r.text = s.terminalBuffer.str();
        for (int i = 0; i < s.selections.count; ++i) {
            r.starts.push_back(s.selections.start[i]);
            r.ends.push_back(s.selections.end[i]);
        }
        r.values.resize(0x100000);
        r.status.resize(0x100000);
        ReadDumpBlock(s.dump, 0, r.values, r.status);
        return r;
    }
    // Reads the lines both ways and expects the same of both.
    Result same(const std::vector<std::string>& lines, const std::string& end = "\r\n") {
        std::string text;
        for (const auto& l : lines) text += l + end;
        const std::string file = path("load/ways.hex");
        WriteFile(file, text);
        const Result fast = read(file, {0, true});
        const Result plain = read(file, {SIZE_MAX, false});
        EXPECT_EQ(fast.error, plain.error);
        EXPECT_EQ(fast.text, plain.text);
        EXPECT_EQ(fast.starts, plain.starts);
        EXPECT_EQ(fast.ends, plain.ends);
        EXPECT_TRUE(fast.values == plain.values);
        EXPECT_TRUE(fast.status == plain.status);
        return fast;
    }
};

TEST_F(HexWays, PlainFileInTwoHalvesGivesOneSelectionAndEveryByte) {
    const Result r = same(Windows(0, 7, 64, 1));
    EXPECT_EQ(r.error, "");
    EXPECT_EQ(r.text, "");
    ASSERT_EQ(r.starts.size(), 8u);  // each window holds 1 KiB from its start
    EXPECT_EQ(r.starts[5], 0x50000);
    EXPECT_EQ(r.ends[5], 0x503FF);
    EXPECT_EQ(r.values[0x703FF], (7 * 131 + 63 * 17 + 15 * 7 + 1) & 0xFF);
}

TEST_F(HexWays, WarningsInTheSecondHalfKeepTheirLineNumbersAndOrder) {
    auto lines = Windows(0, 5, 40, 2);
    lines[lines.size() - 30] = Record(16, 0x100, 0, std::vector<int>(16, 0x11), false);
    lines.insert(lines.end() - 10, "no colon here");
    lines.insert(lines.begin() + 3, "nor here");
    const Result r = same(lines, "\n");
    EXPECT_NE(r.text.find("*WARNING: Checksum in line"), std::string::npos);
    EXPECT_NE(r.text.find("*WARNING: No ':'"), std::string::npos);
}

TEST_F(HexWays, AnOverflowInTheSecondHalfEndsTheLoadWithTheFirstHalfWritten) {
    auto lines = Windows(0, 5, 40, 3);
    lines.insert(lines.end() - 5, Record(2, 0, 4, {0x80, 0x00}));
    const Result r = same(lines);
    EXPECT_NE(r.error.find("extended linear address 8000 overflow in line"), std::string::npos);
    EXPECT_EQ(r.values[0x10000], (1 * 131 + 0 + 0 + 3) & 0xFF);
}

TEST_F(HexWays, TheSecondHalfOverwritesTheFirstAndRunsJoinAcrossTheMiddle) {
    // Windows 1 and 2 again, other bytes, right after the first pass: the
    // later bytes win, and window 2's run follows window 1's.
    auto lines = Windows(1, 4, 48, 4);
    const auto again = Windows(1, 2, 48, 9);
    lines.insert(lines.end(), again.begin(), again.end());
    const Result r = same(lines, "\r");
    EXPECT_EQ(r.values[0x10000], (1 * 131 + 9) & 0xFF);
}

TEST_F(HexWays, OddLinesOfEveryKindAfterTheMiddle) {
    auto lines = Windows(0, 5, 40, 5);
    const size_t at = lines.size() - 20;
    lines.insert(lines.begin() + static_cast<long>(at),
                 {Record(16, 0x200, 0, std::vector<int>(16, 1)) + "junk",  // trailing characters
                  ":10030000zz" + std::string(30, '0') + "00",             // not hexadecimal
                  Record(0, 0x40, 0, {}),                                  // empty data
                  Record(1, 0, 2, {0x12}),                                 // short segment record
                  Record(2, 0, 2, {0x10, 0x00}),                           // segment base 0x10000
                  Record(16, 0, 0, std::vector<int>(16, 0xEE)),
                  ":FF000000",  // length past the line
                  ""});
    same(lines);
}

TEST_F(HexWays, DataPastTheImageInTheSecondHalfIsTheImagesBound) {
    auto lines = Windows(0, 5, 40, 6);
    lines.push_back(Record(2, 0, 4, {0x01, 0x00}));
    lines.push_back(Record(16, 0xFFF8, 0, std::vector<int>(16, 0x33)));
    const Result r = same(lines);
    EXPECT_NE(r.error.find("out of range -FFFF to 100FFFF"), std::string::npos);
}

TEST_F(HexWays, ALargeFileIsReadInTwoHalvesByDefault) {
    // Over 2 MiB of text: the default reading takes the second half on a
    // thread of its own; its result is that of the line-by-line way.
    std::string text;
    for (const auto& l : Windows(0, 11, 4096, 7)) text += l + "\r\n";
    ASSERT_GT(text.size(), size_t(2) << 20);
    const std::string file = path("load/large.hex");
    WriteFile(file, text);
    const Result fast = read(file, {});
    const Result plain = read(file, {SIZE_MAX, false});
    EXPECT_EQ(fast.error, "");
    EXPECT_EQ(fast.starts, plain.starts);
    EXPECT_EQ(fast.ends, plain.ends);
    EXPECT_TRUE(fast.values == plain.values);
    EXPECT_TRUE(fast.status == plain.status);
    EXPECT_EQ(fast.starts.size(), 1u);
}

TEST_F(HexWays, BytesPastTheImageStagedBeforeTheSecondHalfStillGiveTheirSelection) {
    // A record the short way leaves alone (trailing characters) stages bytes
    // past the image; the second half's first run closes its selection
    // before those bytes fail to land, as in the line-by-line way.
    std::vector<std::string> lines = {
        Record(2, 0, 4, {0x10, 0x01}), Record(9, 0xFFF0, 0, std::vector<int>(9, 0x51)) + "E0F89",
        Record(2, 0, 2, {0x10, 0x00}), Record(1, 0x10, 0, {0x42}), ":00000001FF"};
    const Result r = same(lines);
    EXPECT_NE(r.error.find("DumpMemory address 1001FFF0 out of range"), std::string::npos);
    ASSERT_EQ(r.starts.size(), 1u);
    EXPECT_EQ(r.starts[0], 0x1001FFF0);
}

}  // namespace
}  // namespace vortelm
