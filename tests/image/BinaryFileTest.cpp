#include <gtest/gtest.h>

#include "ImageTestSupport.h"
#include "core/RunTimeError.h"
#include "image/BinaryFile.h"
#include "image/Dump.h"
#include "image/FileNames.h"
#include "image/Selections.h"

namespace vortelm {
namespace {

using BinaryFile = test::ImageTest;

std::string Pattern(size_t n) {
    std::string s(n, '\0');
    for (size_t i = 0; i < n; ++i) s[i] = static_cast<char>((i * 13 + 7) & 0xFF);
    return s;
}

TEST_F(BinaryFile, ExactlyTwoBlocksReadNoSingleBytes) {
    const std::string bytes = Pattern(2048);
    WriteFile(path("load/a.bin"), bytes);
    // A different file of the same name in the program folder would give
    // the tail: with 2048 bytes there is none to take from it.
    WriteFile(path("home/a.bin"), std::string(2048, 'Z'));
    EXPECT_EQ(LoadBinaryCommand(*st, path("load/a.bin"), 0x1000), 0);
    EXPECT_EQ(takeText(), "\r\n*Load Binary: 2048 bytes loaded");
    for (int i = 0; i < 2048; ++i)
        ASSERT_EQ(ReadDumpByte(st->dump, 0x1000 + i), static_cast<uint8_t>(bytes[i])) << i;
    ASSERT_EQ(st->selections.count, 1);
    EXPECT_EQ(st->selections.end[0], 0x1000 + 2047);
    EXPECT_EQ(IsDefined(st->dump, 0x1000), kTrue);
    EXPECT_EQ(IsValid(st->dump, 0x1000), kFalse);
}

TEST_F(BinaryFile, ARelativeNameReadsItsTailFromTheProgramFolder) {
    // 1023 bytes: no block; everything is tail, taken from the program folder.
    WriteFile(path("load/t.bin"), Pattern(1023));
    WriteFile(path("home/t.bin"), std::string(1023, 'H'));
    ReadBinaryFile(*st, "t.bin", 0);
    EXPECT_EQ(ReadDumpByte(st->dump, 0), 'H');
    EXPECT_EQ(ReadDumpByte(st->dump, 1022), 'H');
    EXPECT_EQ(st->selections.end[0], 1022);
    // 1025 bytes: one block from the load folder, one byte of tail.
    WriteFile(path("load/u.bin"), Pattern(1025));
    WriteFile(path("home/u.bin"), std::string(1025, 'H'));
    ReadBinaryFile(*st, "u.bin", 0);
    EXPECT_EQ(ReadDumpByte(st->dump, 0), 7);
    EXPECT_EQ(ReadDumpByte(st->dump, 1024), 'H');
}

TEST_F(BinaryFile, AnAbsoluteNameReadsItAllFromThatFile) {
    const std::string bytes = Pattern(1023);
    WriteFile(path("load/s.bin"), bytes);
    ReadBinaryFile(*st, path("load/s.bin"), 0x20);
    for (int i = 0; i < 1023; ++i)
        ASSERT_EQ(ReadDumpByte(st->dump, 0x20 + i), static_cast<uint8_t>(bytes[i]));
}

TEST_F(BinaryFile, MissingFileIsReported) {
    EXPECT_EQ(LoadBinaryCommand(*st, path("load/none.bin"), 0), -1);
    EXPECT_EQ(takeText(), "\r\n*ERROR: file " + path("load/none.bin") + " not found !");
}

TEST_F(BinaryFile, SaveFillsGapsOrPacks) {
    for (int a : {0, 1, 4, 5}) {
        WriteDumpByte(st->dump, a, static_cast<uint8_t>(0x10 + a));
        SetDefined(st->dump, a, kTrue);
    }
    AddSelection(st->selections, 0, 1);
    AddSelection(st->selections, 4, 5);
    EXPECT_EQ(SaveBinaryCommand(*st, "f.bin", 0xFF), 0);
    EXPECT_EQ(takeText(), "\r\n*Save Binary: selection written to binary file");
    EXPECT_EQ(ReadFile(path("save/f.bin")), std::string("\x10\x11\xFF\xFF\x14\x15", 6));
    EXPECT_EQ(SaveBinaryCommand(*st, "p.bin", -1), 0);
    EXPECT_EQ(ReadFile(path("save/p.bin")), std::string("\x10\x11\x14\x15", 4));
}

TEST_F(BinaryFile, UnreadBytesTakeTheFillValueValidOnesTheirOwn) {
    WriteDumpByte(st->dump, 0, 0xAA);
    SetValid(st->dump, 0, kTrue);
    WriteDumpByte(st->dump, 1, 0xBB);  // neither Defined nor Valid
    AddSelection(st->selections, 0, 1);
    WriteBinarySelections(*st, "v.bin", 0x5A);
    EXPECT_EQ(ReadFile(path("save/v.bin")), std::string("\xAA\x5A", 2));
    EXPECT_THROW(WriteBinarySelections(*st, "w.bin", -1), RunTimeError);
    // The file holds what came before the unread byte.
    EXPECT_EQ(ReadFile(path("save/w.bin")), std::string("\xAA", 1));
}

TEST_F(BinaryFile, AGapOfSeveralMegabytesIsFilledAcrossSegments) {
    const int32_t far = 0x2A0003;  // more than two 1 MiB pieces of fill away
    for (int32_t a : {0x0FFFF, 0x10000, far}) {
        WriteDumpByte(st->dump, a, static_cast<uint8_t>(a & 0xFF));
        SetDefined(st->dump, a, kTrue);
    }
    AddSelection(st->selections, 0x0FFFF, 0x10000);
    AddSelection(st->selections, far, far);
    WriteBinarySelections(*st, "big.bin", 0x1C7);
    const std::string f = ReadFile(path("save/big.bin"));
    ASSERT_EQ(f.size(), static_cast<size_t>(far - 0x0FFFF + 1));
    EXPECT_EQ(f.substr(0, 2), std::string("\xFF\x00", 2));
    EXPECT_EQ(f.find_first_not_of('\xC7', 2), f.size() - 1);
    EXPECT_EQ(f.back(), '\x03');
}

TEST_F(BinaryFile, TheUpperHalfOfTheLastGapByteStaysBehindAnEmptySelection) {
    WriteDumpByte(st->dump, 0, 0x01);
    SetDefined(st->dump, 0, kTrue);
    AddSelection(st->selections, 0, 0);
    AddSelection(st->selections, 3, 2);  // end below start: no bytes of its own
    WriteBinarySelections(*st, "g.bin", 0x1EE);
    EXPECT_EQ(ReadFile(path("save/g.bin")), std::string("\x01\xEE\xEE\x01", 4));
}

TEST_F(BinaryFile, SaveReplacesAnOldFile) {
    WriteFile(path("save/o.bin"), std::string(100, 'x'));
    WriteDumpByte(st->dump, 0, 0x42);
    SetDefined(st->dump, 0, kTrue);
    AddSelection(st->selections, 0, 0);
    WriteBinarySelections(*st, path("save/o.bin"), 0);
    EXPECT_EQ(ReadFile(path("save/o.bin")), "\x42");
}

TEST(FileNames, IndexedFileNameSplitsAtTheFirstDot) {
    EXPECT_EQ(IndexedFileName("a.b.hex", 0x10), "a000010.b.hex");
    EXPECT_EQ(IndexedFileName("image", 0x10), "image000010.hex");
    EXPECT_EQ(IndexedFileName("x.hex", 0x1234567), "x1234567.hex");
}

}  // namespace
}  // namespace vortelm
