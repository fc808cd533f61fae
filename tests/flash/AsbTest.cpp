// The assembly buffer rows and the word-wise dump operations.

#include <string>

#include "FlashFixture.h"
#include "image/Dump.h"
#include "image/Selections.h"

namespace vortelm::testing {
namespace {

using Asb = FlashProgramTest;

TEST_F(Asb, LoadAsbByteFillsOneHundredTwentyEightBytes) {
    start(kFamilyCases[1]);
    run("_connect NOPROMPT");
    const std::string out = run("_loadasb_byte 55");
    EXPECT_TRUE(has(out, "*writeAsbPage:128 bytes successfully written to ASB")) << out;
    for (int32_t i = 0; i < 128; ++i) ASSERT_EQ(ReadDumpByte(st().dump, 0xFC80 + i), 0x55) << i;
    // the page reached the flash at the unit's first address
    st().selections.count = 0;
    AddSelection(st().selections, 0xC00000, 0xC0007F);
    run("_clearmemory");
    run("_upload");
    EXPECT_EQ(ReadDumpByte(st().dump, 0xC0007F), 0x55);
}

TEST_F(Asb, RandomBytesAskedForAnOddCountWriteOneFewer) {
    start(kFamilyCases[1]);
    run("_connect NOPROMPT");
    host.randoms = {0.5, 0.1};
    const std::string out = run("_loadasb_byte rnd8,FF");
    EXPECT_TRUE(has(out, "*writeAsbPage:254 bytes successfully written to ASB")) << out;
    EXPECT_EQ(ReadDumpByte(st().dump, 0xFC80), 128);  // 0.5 times 255, rounded
    EXPECT_EQ(ReadDumpByte(st().dump, 0xFC81), 26);
}

TEST_F(Asb, WordsGoLowByteFirstAndVariablesGiveTheValue) {
    start(kFamilyCases[0]);
    run("_connect NOPROMPT");
    std::string out = run("_loadasb_word 1234,4");
    EXPECT_TRUE(has(out, "*writeAsbPage:4 bytes successfully written to ASB")) << out;
    EXPECT_EQ(ReadDumpByte(st().dump, 0xFC80), 0x34);
    EXPECT_EQ(ReadDumpByte(st().dump, 0xFC81), 0x12);
    EXPECT_EQ(ReadDumpByte(st().dump, 0xFC82), 0x34);
    // over the same cells: 10 can be reached from 34, as NOR flash clears bits
    st().variables[7] = 0x10;
    out = run("_loadasb_byte %7,2");
    EXPECT_TRUE(has(out, "*writeAsbPage:2 bytes successfully written to ASB")) << out;
    EXPECT_EQ(ReadDumpByte(st().dump, 0xFC80), 0x10);
}

TEST_F(Asb, FewerThanTwoBytesAreRefused) {
    start(kFamilyCases[0]);
    run("_connect NOPROMPT");
    EXPECT_TRUE(has(run("_loadasb_byte 55,1"), "*ERROR: Please select at least 2 bytes "));
    st().selections.count = 0;
    EXPECT_TRUE(has(run("_downloadtoasb"), "*ERROR: Please select at least 2 bytes "));
}

TEST_F(Asb, DownloadToAsbTakesTheFirstSelection) {
    start(kFamilyCases[1]);
    run("_connect NOPROMPT");
    st().selections.count = 0;
    for (int32_t i = 0; i < 5; ++i)
        WriteDumpByte(st().dump, 0xC00100 + i, static_cast<uint8_t>(0xA0 + i));
    AddSelection(st().selections, 0xC00100, 0xC00104);
    const std::string out = run("_downloadtoasb");
    EXPECT_TRUE(has(out, "*writeAsbPage:4 bytes successfully written to ASB")) << out;
    run("_clearmemory");
    run("_upload");
    EXPECT_EQ(ReadDumpByte(st().dump, 0xC00103), 0xA3);
    EXPECT_EQ(ReadDumpByte(st().dump, 0xC00104), 0xFF);  // rounded down to even: not written
}

TEST_F(Asb, DumpModifyInvertsAndRotates) {
    start(kFamilyCases[0]);
    st().selections.count = 0;
    WriteDumpByte(st().dump, 0x1000, 0x34);
    WriteDumpByte(st().dump, 0x1001, 0x12);
    WriteDumpByte(st().dump, 0x1002, 0x00);
    WriteDumpByte(st().dump, 0x1003, 0xFF);
    AddSelection(st().selections, 0x1000, 0x1003);
    run("_dumpmodify FFFF,FFFF,0");
    EXPECT_EQ(ReadDumpByte(st().dump, 0x1000), 0xCB);
    EXPECT_EQ(ReadDumpByte(st().dump, 0x1001), 0xED);
    EXPECT_EQ(ReadDumpByte(st().dump, 0x1002), 0xFF);
    EXPECT_EQ(ReadDumpByte(st().dump, 0x1003), 0x00);
    WriteDumpByte(st().dump, 0x1000, 0x34);
    WriteDumpByte(st().dump, 0x1001, 0x12);
    run("_dumpmodify 0,FFFF,0,4");
    // 1234 rotated right by 4 in 16 bits
    EXPECT_EQ(ReadDumpByte(st().dump, 0x1000), 0x23);
    EXPECT_EQ(ReadDumpByte(st().dump, 0x1001), 0x41);
}

TEST_F(Asb, OddSelectionEndChangesTheByteBehind) {
    start(kFamilyCases[0]);
    st().selections.count = 0;
    WriteDumpByte(st().dump, 0x2000, 0x00);
    WriteDumpByte(st().dump, 0x2001, 0x00);
    WriteDumpByte(st().dump, 0x2002, 0x00);
    WriteDumpByte(st().dump, 0x2003, 0x00);
    AddSelection(st().selections, 0x2000, 0x2002);
    run("_dumpmodify 0,FFFF,00F0");
    EXPECT_EQ(ReadDumpByte(st().dump, 0x2002), 0xF0);
    EXPECT_EQ(ReadDumpByte(st().dump, 0x2003), 0x00);
    run("_dumpmodify 0,FFFF,F000");
    EXPECT_EQ(ReadDumpByte(st().dump, 0x2003), 0xF0);
}

TEST_F(Asb, StepZeroEndsWithTheBoundInsteadOfHanging) {
    start(kFamilyCases[0]);
    st().selections.count = 0;
    AddSelection(st().selections, 0x2000, 0x2003);
    std::string out = run("_dumpmodify 0,FFFF,0,0,0");
    EXPECT_TRUE(has(out, "*ERROR: step 0 below 1")) << out;
    run("_connect NOPROMPT");
    out = run("_dumpmemecc 2000,0,0,0");
    EXPECT_TRUE(has(out, "*ERROR: step 0 below 1")) << out;
    EXPECT_FALSE(host.busy);
}

TEST_F(Asb, DumpMemEccReadsOneTargetWordIntoTheSelection) {
    start(kFamilyCases[0]);
    run("_connect NOPROMPT");
    run("_w16 FC00,BEEF");
    st().selections.count = 0;
    AddSelection(st().selections, 0x3000, 0x3007);
    const std::string out = run("_dumpmemecc FC00,1,0,4");
    EXPECT_EQ(result, 0) << out;
    EXPECT_EQ(ReadDumpByte(st().dump, 0x3000), 0xEF);
    EXPECT_EQ(ReadDumpByte(st().dump, 0x3001), 0xBE);
    EXPECT_EQ(ReadDumpByte(st().dump, 0x3004), 0xEF);
    EXPECT_EQ(IsDefined(st().dump, 0x3005), kTrue);
    EXPECT_EQ(IsValid(st().dump, 0x3005), kFalse);
    EXPECT_EQ(IsDefined(st().dump, 0x3002), kFalse);  // step 4 passes it
}

}  // namespace
}  // namespace vortelm::testing
