// The shell's listing of the selections in its six modes.

#include <gtest/gtest.h>

#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "image/Dump.h"
#include "image/Selections.h"
#include "shell/Rows.h"
#include "shell/Shell.h"
#include "shell/ViewListing.h"

namespace vortelm::shell {

struct Listing : ::testing::Test {
    TestHost host;
    std::unique_ptr<ProgramState> st = std::make_unique<ProgramState>(host);
    Session s{*st};
    int16_t result = 0;
    void SetUp() override { BuildShellCommandTable(s.table); }
    std::string Run(std::string_view line) {
        host.terminal.clear();
        result = ExecuteShellCommand(s, line, 0);
        return host.terminal;
    }
    void Put(int32_t address, std::initializer_list<int> bytes) {
        for (int b : bytes) {
            WriteDumpByte(st->dump, address, static_cast<uint8_t>(b));
            SetDefined(st->dump, address, kTrue);
            ++address;
        }
    }
};

constexpr const char* kStars39 = "\r\n***************************************";

TEST_F(Listing, ByteViewListsEachByteWithPointsForUndefined) {
    Put(0x1000, {0x12, 0xAB});
    AddSelection(st->selections, 0x1000, 0x1002);
    EXPECT_EQ(Run("_viewbyte"),
              std::string(">_viewbyte\r\n\r\n001000: 12\r\n001001: AB\r\n001002: ..") + kStars39);
    EXPECT_EQ(result, 0);
}

TEST_F(Listing, AThreeByteSelectionInWordViewGivesTwoRows) {
    Put(0x2000, {0x34, 0x12, 0x78});
    AddSelection(st->selections, 0x2000, 0x2002);
    // The second word's high byte lies behind the selection and is not Defined.
    EXPECT_EQ(Run("_viewword"),
              std::string(">_viewword\r\n\r\n002000: 1234\r\n002002: ....") + kStars39);
    Put(0x2003, {0x56});
    EXPECT_EQ(Run("_viewword"),
              std::string(">_viewword\r\n\r\n002000: 1234\r\n002002: 5678") + kStars39);
}

TEST_F(Listing, LongViewOfUndefinedBytesGivesOnlyPoints) {
    AddSelection(st->selections, 0x30000, 0x30007);
    EXPECT_EQ(Run("_viewlong"),
              std::string(">_viewlong\r\n\r\n030000: ........\r\n030004: ........") + kStars39);
}

TEST_F(Listing, LongViewShowsTheHighestByteFirst) {
    Put(0x10, {0x01, 0x02, 0x03, 0x04});
    AddSelection(st->selections, 0x10, 0x13);
    EXPECT_EQ(Run("_viewlong"), std::string(">_viewlong\r\n\r\n000010: 04030201") + kStars39);
}

TEST_F(Listing, EverySelectionEndsWithItsOwnStarRow) {
    Put(0x100, {0x41});
    Put(0x200, {0x42});
    AddSelection(st->selections, 0x100, 0x100);
    AddSelection(st->selections, 0x200, 0x200);
    EXPECT_EQ(Run("_viewbyte"),
              std::string(">_viewbyte\r\n\r\n000100: 41") + kStars39 + "\r\n000200: 42" + kStars39);
}

TEST_F(Listing, AsciiShowsCharactersAndPointsBelowBlank) {
    Put(0x40, {'H', 'i', 0x0A, ' '});
    AddSelection(st->selections, 0x40, 0x44);
    EXPECT_EQ(Run("_viewascii"),
              std::string(">_viewascii\r\n\r\n000040: H\r\n000041: i\r\n000042: .\r\n"
                          "000043:  \r\n000044: .") +
                  kStars39);
    EXPECT_EQ(Run("_viewascii 0"),
              std::string(">_viewascii 0\r\n\r\n000040: H\r\n000041: i\r\n000042: .\r\n"
                          "000043:  \r\n000044: .") +
                  kStars39);
}

TEST_F(Listing, AsciiWithByteSwapTakesTheUpperByteFirst) {
    Put(0x40, {'e', 'H', 'l', 'l'});
    AddSelection(st->selections, 0x40, 0x44);
    EXPECT_EQ(
        Run("_viewascii 1"),
        std::string(">_viewascii 1\r\n\r\n000040: He\r\n000042: ll\r\n000044: ..") + kStars39);
}

TEST_F(Listing, NoSelectionListsNothing) {
    EXPECT_EQ(Run("_viewbyte"), ">_viewbyte\r\n");
    EXPECT_EQ(result, 0);
}

TEST_F(Listing, ClearTerminalWindowEmptiesTheRunningText) {
    Put(0x10, {0x01});
    AddSelection(st->selections, 0x10, 0x10);
    (void)Run("_viewbyte");
    ASSERT_FALSE(st->terminalBuffer.empty());
    const int clears = host.terminalClears;
    (void)Run("_clearterminalwindow");
    EXPECT_EQ(st->terminalBuffer, "");
    EXPECT_EQ(st->terminalLines, 0);
    EXPECT_EQ(host.terminalClears, clears + 1);
    EXPECT_EQ(result, 0);
}

TEST_F(Listing, AListingPastTheImageEndsWithOneErrorLine) {
    // The word at the image's last byte reaches one byte past the image.
    AddSelection(st->selections, 0x100FFFD, 0x100FFFF);
    const std::string out = Run("_viewword");
    EXPECT_EQ(out.find("100FFFD"), std::string::npos);
    EXPECT_EQ(out.rfind(">_viewword\r\n*ERROR: ", 0), 0u) << out;
    EXPECT_NE(result, 0);
}

DecodedInstruction FakeDecode(ProgramState& st, int32_t address) {
    const uint8_t op = ReadDumpByte(st.dump, address);
    if (op == 0xFF) return {"Illegal Instruction", 2};
    if (op == 0xEE) return {"???", 0};
    if (op >= 0x80) return {"LONG " + std::to_string(op), 4};
    return {"SHORT " + std::to_string(op), 2};
}

TEST_F(Listing, AssemblerRowsPadTheBytesAndEndAtAnIllegalText) {
    Put(0x100, {0x01, 0x02, 0x81, 0x00, 0x34, 0x12, 0xFF, 0x00, 0x05, 0x00});
    AddSelection(st->selections, 0x100, 0x109);
    const std::vector<std::string> rows = ListingRows(*st, ListingMode::Assembler, &FakeDecode);
    const std::vector<std::string> expected = {
        "000100: 0102      SHORT 1",
        "000102: 81003412  LONG 129",
        "000106: FF00      Illegal Instruction",
        "***************************************",
    };
    EXPECT_EQ(rows, expected);
}

TEST_F(Listing, AssemblerRowsOfUndefinedBytesStepByTwoAndALengthOfZeroEnds) {
    Put(0x200, {0xEE, 0x00});
    AddSelection(st->selections, 0x1FC, 0x203);
    const std::vector<std::string> rows = ListingRows(*st, ListingMode::Assembler, &FakeDecode);
    const std::vector<std::string> expected = {
        "0001FC: ....",
        "0001FE: ....",
        "000200:           ???",
        "***************************************",
    };
    EXPECT_EQ(rows, expected);
}

}  // namespace vortelm::shell
