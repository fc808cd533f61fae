// Program and intelligent program against the in-process board, for every
// family: the image reaches flash and reads back the same, bytes outside
// the selection in untouched sectors stay, a program over unerased cells
// shows what the flash really holds.

#include <string>
#include <vector>

#include "FlashFixture.h"
#include "config/ControllerTypes.h"
#include "flash/Flash.h"
#include "image/Dump.h"
#include "image/Selections.h"

namespace vortelm::testing {
namespace {

using Flow = FlashProgramTest;

class EachFamily : public FlashProgramTest, public ::testing::WithParamInterface<FamilyCase> {};
INSTANTIATE_TEST_SUITE_P(Flash, EachFamily, ::testing::ValuesIn(kFamilyCases), FamilyName);

// An image over the end of one sector and the start of the next, with a
// hole, and a short run further on.
std::string SpanningImage(const FamilyCase& f) {
    const int32_t a = f.flashStart + f.sectorSize - 0x100;
    std::string first = IntelHex(a, Pattern(0x300, 3));
    first.resize(first.rfind(":00000001FF"));  // joined with the second part
    return first + IntelHex(f.flashStart + f.sectorSize + 0x1000 + 0x11, Pattern(0x41, 9));
}

TEST_P(EachFamily, IProgramReadsBackOnEveryFamily) {
    {
        const FamilyCase& f = GetParam();
        start(f);
        ASSERT_TRUE(has(run("_connect NOPROMPT"), "successfully launched")) << host.terminal;
        // old data in a sector the image does not touch
        writeFile("old.hex", IntelHex(f.flashStart + 2 * f.sectorSize + 0x40, Pattern(0x80, 77)));
        writeFile("x.hex", SpanningImage(f));
        run("_load old.hex");
        std::string out = run("_iprogram");
        ASSERT_TRUE(has(out, "*IProgram:256 bytes successfully programmed")) << out;

        run("_load x.hex");
        out = run("_iprogram");
        EXPECT_EQ(result, 0) << out;
        EXPECT_TRUE(has(out, "*IProgram: loading driver") == false) << "the driver stays loaded\n"
                                                                    << out;
        EXPECT_TRUE(has(out, "*IProgram: Erasing sector ")) << out;
        EXPECT_TRUE(has(out, " bytes successfully programmed")) << out;
        EXPECT_FALSE(has(out, "*ERROR")) << out;

        run("_clearmemory");
        run("_upload");
        out = run("_compare");
        EXPECT_TRUE(has(out, "*Comparison:  833 Bytes OK -  0 Bytes different")) << out;
        // what came back is the image, byte for byte
        const auto p1 = Pattern(0x300, 3);
        const int32_t a = f.flashStart + f.sectorSize - 0x100;
        for (int32_t i = 0; i < 0x300; ++i) ASSERT_EQ(ReadDumpByte(st().dump, a + i), p1[i]) << i;
        // and the image as loaded compares equal with the flash
        run("_load x.hex");
        out = run("_compare");
        EXPECT_TRUE(has(out, "*Comparison:  833 Bytes OK -  0 Bytes different")) << out;

        // the old data of the untouched sector is still there
        run("_load old.hex");
        out = run("_compare");
        EXPECT_TRUE(has(out, "*Comparison:  128 Bytes OK -  0 Bytes different")) << out;
    }
}

TEST_F(Flow, FirstProgramLoadsTheDriverAndLogsTheFinalLine) {
    start(kFamilyCases[0]);
    run("_connect NOPROMPT");
    writeFile("x.hex", IntelHex(0x20000, Pattern(0x800, 1)));
    run("_load x.hex");
    const std::string out = run("_iprogram");
    EXPECT_TRUE(has(out, "*IProgram: loading driver ")) << out;
    EXPECT_TRUE(has(out, "ALD4IFL1.HEX")) << out;
    EXPECT_TRUE(has(out, "*IProgram: Erasing sector 1")) << out;
    EXPECT_TRUE(has(out, "\r\n*IProgram: 1024 bytes programmed ")) << out;
    EXPECT_TRUE(has(out, "\r\n*IProgram: 2048 bytes programmed ")) << out;
    EXPECT_TRUE(has(out, "\r\n*IProgram:2048 bytes successfully programmed")) << out;
    // the selection list is the image's again, and the page shows it
    EXPECT_EQ(st().selections.count, 1);
    EXPECT_EQ(st().selections.start[0], 0x20000);
    EXPECT_EQ(host.gotoPages.back(), 0x20000 / 16);
    const int unit = MemoryUnitIndexByName(st(), "IFLASH");
    EXPECT_EQ(st().memoryUnits[unit].driverLoaded, kTrue);
    EXPECT_EQ(st().memoryUnits[unit].driverEntry, 0xF900);
}

TEST_P(EachFamily, ProgramOverUnerasedCellsShowsTheAndOfBoth) {
    {
        const FamilyCase& f = GetParam();
        start(f);
        run("_connect NOPROMPT");
        const int32_t a = f.flashStart + 0x200;
        const auto first = Pattern(0x100, 5);
        const auto second = Pattern(0x100, 200);
        writeFile("a.hex", IntelHex(a, first));
        writeFile("b.hex", IntelHex(a, second));
        run("_load a.hex");
        run("_iprogram");
        run("_load b.hex");
        const std::string out = run("_program");
        EXPECT_TRUE(has(out, "*ERROR: Program not successful")) << out;
        EXPECT_FALSE(has(out, "successfully programmed")) << out;
        EXPECT_NE(result, 0);
        run("_clearmemory");
        run("_upload");
        for (int32_t i = 0; i < 0x80; ++i) {
            const uint8_t want = f.blank == 0xFF ? (first[i] & second[i]) : (first[i] | second[i]);
            ASSERT_EQ(ReadDumpByte(st().dump, a + i), want) << i;
        }
    }
}

TEST_P(EachFamily, EraseOfOneSectorLeavesItsNeighbours) {
    {
        const FamilyCase& f = GetParam();
        start(f);
        run("_connect NOPROMPT");
        std::string hex;
        for (int k = 0; k < 3; ++k) {
            std::string part = IntelHex(f.flashStart + k * f.sectorSize, Pattern(0x40, k + 1));
            if (k < 2) part.resize(part.rfind(":00000001FF"));
            hex += part;
        }
        writeFile("x.hex", hex);
        run("_load x.hex");
        ASSERT_TRUE(has(run("_iprogram"), "*IProgram:384 bytes successfully programmed"));
        const int section = FindMemoryPosition(st(), f.flashStart + f.sectorSize).section;
        std::string out = run("_erase IFLASH," + std::to_string(section));
        EXPECT_TRUE(has(
            out, "*Erase: Sector " + std::to_string(section) + " in IFLASH successfully erased"))
            << out;
        run("_clearmemory");
        run("_upload");
        const auto p0 = Pattern(0x40, 1);
        const auto p2 = Pattern(0x40, 3);
        for (int32_t i = 0; i < 0x40; ++i) {
            ASSERT_EQ(ReadDumpByte(st().dump, f.flashStart + i), p0[i]);
            ASSERT_EQ(ReadDumpByte(st().dump, f.flashStart + f.sectorSize + i), f.blank);
            ASSERT_EQ(ReadDumpByte(st().dump, f.flashStart + 2 * f.sectorSize + i), p2[i]);
        }
    }
}

TEST_P(EachFamily, LockedSectorRefusesAndTheRightPasswordUnlocks) {
    {
        const FamilyCase& f = GetParam();
        start(f);
        run("_connect NOPROMPT");
        const auto old = Pattern(0x80, 1);
        writeFile("a.hex", IntelHex(f.flashStart, old));
        writeFile("b.hex", IntelHex(f.flashStart, Pattern(0x80, 99)));
        run("_load a.hex");
        run("_iprogram");
        const int section = FindMemoryPosition(st(), f.flashStart).section;
        const std::string s = std::to_string(section);
        std::string out = run("_lock IFLASH,secret," + s);
        EXPECT_TRUE(has(out, "*Lock: IFLASH successfully locked")) << out;

        run("_load b.hex");
        out = run("_program");
        EXPECT_TRUE(has(out, "*ERROR: Program not successful")) << out;
        out = run("_iprogram");
        EXPECT_TRUE(has(out, "*ERROR: Erase not successful")) << out;
        EXPECT_NE(result, 0);
        run("_load a.hex");
        EXPECT_TRUE(has(run("_compare"), "*Comparison:  128 Bytes OK -  0 Bytes different"))
            << "nothing changed";

        out = run("_unlock IFLASH,wrong," + s);
        EXPECT_TRUE(has(out, "*ERROR: Unlock not successful")) << out;
        EXPECT_NE(result, 0);
        // the words after the echo of the line do not show the password
        EXPECT_FALSE(has(out.substr(out.find('\n')), "wrong")) << out;
        out = run("_unlock IFLASH,secret," + s);
        EXPECT_TRUE(has(out, "*Unlock: Sector " + s + " in IFLASH successfully unlocked")) << out;
        run("_load b.hex");
        EXPECT_TRUE(has(run("_iprogram"), "*IProgram:128 bytes successfully programmed"));
    }
}

TEST_F(Flow, ProtectRefusesWritesUntilUnprotected) {
    start(kFamilyCases[1]);
    run("_connect NOPROMPT");
    std::string out = run("_protect IFLASH,abc");
    EXPECT_TRUE(has(out, "*Protect: IFLASH successfully protected")) << out;
    // three characters and five blanks
    for (int i = 0; i < 8; ++i) EXPECT_EQ(ReadDumpByte(st().dump, 0xFC80 + i), "abc     "[i]);
    writeFile("a.hex", IntelHex(0xC00000, Pattern(0x80, 1)));
    run("_load a.hex");
    EXPECT_TRUE(has(run("_program"), "*ERROR: Program not successful"));
    out = run("_unprotect IFLASH,abd");
    EXPECT_TRUE(has(out, "*ERROR: Unprotect not successful")) << out;
    out = run("_unprotect IFLASH,abc");
    EXPECT_TRUE(has(out, "*Unprotect: Read protection of IFLASH successfully removed")) << out;
    EXPECT_TRUE(has(run("_program"), "*Program:128 bytes successfully programmed"));
}

TEST_F(Flow, TenCharacterPasswordSendsEight) {
    start(kFamilyCases[1]);
    run("_connect NOPROMPT");
    EXPECT_TRUE(has(run("_protect IFLASH,abcdefghij"), "successfully protected"));
    EXPECT_EQ(ReadDumpByte(st().dump, 0xFC88), 'i');
    EXPECT_EQ(ReadDumpByte(st().dump, 0xFC89), 'j');
    // the target saw eight characters only
    EXPECT_TRUE(has(run("_unprotect IFLASH,abcdefgh"), "successfully removed"));
}

TEST_F(Flow, EmptyPasswordGoesOutAsEightBlanks) {
    start(kFamilyCases[1]);
    run("_connect NOPROMPT");
    int32_t length = 0;
    const int unit = MemoryUnitIndexByName(st(), "IFLASH");
    EXPECT_EQ(flash::Protect(*program->session().target, unit, "", length), 0);
    EXPECT_EQ(length, 8);
    for (int i = 0; i < 8; ++i) EXPECT_EQ(ReadDumpByte(st().dump, 0xFC80 + i), ' ');
    // and eight blanks unprotect it
    EXPECT_TRUE(has(run("_unprotect IFLASH,        "), "successfully removed"));
}

TEST_F(Flow, StatusReadsEveryStatusWord) {
    start(kFamilyCases[1]);
    run("_connect NOPROMPT");
    std::string out = run("_status IFLASH");
    EXPECT_TRUE(has(out, "*Status: Statusword 0 in IFLASH read: FSR=0000")) << out;
    EXPECT_TRUE(has(out, "*Status: Statusword 1 in IFLASH read: FLOCK=0000")) << out;
    run("_lock IFLASH,pw,2");
    out = run("_status IFLASH");
    EXPECT_TRUE(has(out, "read: FSR=0008")) << out;
    EXPECT_TRUE(has(out, "read: FLOCK=0004")) << out;
}

TEST_F(Flow, BusyBitShowsARunningEraseWithRealFlashTimes) {
    start(kFamilyCases[0], "sim:?flashtime=real");
    run("_connect NOPROMPT");
    run("_erase IFLASH,1");
    std::string out = run("_status IFLASH");
    EXPECT_TRUE(has(out, "read: FSR=0001")) << out;
    // a program waits for the erase to end; the flash is ready afterwards
    writeFile("a.hex", IntelHex(0x20000, Pattern(0x80, 1)));
    run("_load a.hex");
    EXPECT_TRUE(has(run("_program"), "successfully programmed"));
    out = run("_status IFLASH");
    EXPECT_TRUE(has(out, "read: FSR=0000")) << out;
}

TEST_F(Flow, BusyBitStaysClearWithoutFlashTimes) {
    start(kFamilyCases[0]);
    run("_connect NOPROMPT");
    run("_erase IFLASH,1");
    EXPECT_TRUE(has(run("_status IFLASH"), "read: FSR=0000"));
}

TEST_F(Flow, StatusOfAUnitWithoutStatusRegistersSaysNothing) {
    start(kFamilyCases[0]);
    run("_connect NOPROMPT");
    const std::string out = run("_status XRAM");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(out, ">_status XRAM\r\n") << out;
}

TEST_F(Flow, EraseOfASectorPastTheDeclaredRangeGoesToTheDriver) {
    start(kFamilyCases[1]);
    run("_connect NOPROMPT");
    const std::string out = run("_erase IFLASH,99");
    EXPECT_FALSE(has(out, "usage")) << out;
    EXPECT_TRUE(has(out, "*ERROR: Erase not successful")) << out;
}

TEST_F(Flow, UnprotectLoadsItsDriverUnderTheNameProtect) {
    start(kFamilyCases[1]);
    run("_connect NOPROMPT");
    const int unit = MemoryUnitIndexByName(st(), "IFLASH");
    st().memoryUnits[unit].driverPath = "DRIVER\\MISSING.HEX";
    const std::string out = run("_unprotect IFLASH,abc");
    EXPECT_TRUE(has(out, "*Protect: loading driver ")) << out;
    EXPECT_TRUE(has(out, "*ERROR: ")) << out;
    EXPECT_FALSE(has(out, "successfully")) << out;
    EXPECT_NE(result, 0);
    EXPECT_FALSE(host.busy);
}

TEST_F(Flow, EmptySelectionListProgramsNothing) {
    start(kFamilyCases[0]);
    run("_connect NOPROMPT");
    st().selections.count = 0;
    EXPECT_TRUE(has(run("_program"), "\r\n*Program:0 bytes successfully programmed"));
    EXPECT_TRUE(has(run("_iprogram"), "\r\n*IProgram:0 bytes successfully programmed"));
}

TEST_F(Flow, OneByteInMidBlockProgramsOneBlockOfBlanksAndThatByte) {
    start(kFamilyCases[1]);
    run("_connect NOPROMPT");
    st().selections.count = 0;
    WriteDumpByte(st().dump, 0xC00045, 0x5A);
    AddSelection(st().selections, 0xC00045, 0xC00045);
    const std::string out = run("_iprogram");
    EXPECT_TRUE(has(out, "*IProgram:128 bytes successfully programmed")) << out;
    // the block went out through the driver buffer: blanks and the byte
    EXPECT_EQ(ReadDumpByte(st().dump, 0xFC80 + 0x45), 0x5A);
    EXPECT_EQ(ReadDumpByte(st().dump, 0xFC80 + 0x44), 0xFF);
    EXPECT_EQ(ReadDumpByte(st().dump, 0xFC80 + 0x46), 0xFF);
    st().selections.count = 0;
    AddSelection(st().selections, 0xC00040, 0xC0004F);
    run("_clearmemory");
    run("_upload");
    for (int32_t a = 0xC00040; a <= 0xC0004F; ++a)
        EXPECT_EQ(ReadDumpByte(st().dump, a), a == 0xC00045 ? 0x5A : 0xFF) << a;
}

TEST_F(Flow, TwoSelectionsInOneBlockBuildItOnce) {
    start(kFamilyCases[1]);
    run("_connect NOPROMPT");
    st().selections.count = 0;
    for (int32_t a = 0xC00010; a <= 0xC0003F; ++a)
        WriteDumpByte(st().dump, a, static_cast<uint8_t>(a));
    AddSelection(st().selections, 0xC00010, 0xC0001F);
    AddSelection(st().selections, 0xC00030, 0xC0003F);
    const std::string out = run("_program");
    // the first block holds both parts; the second selection starts one
    // block further on, where only blanks go
    EXPECT_TRUE(has(out, "*Program:256 bytes successfully programmed")) << out;
    EXPECT_EQ(ReadDumpByte(st().dump, 0xFC80 + 0x10), 0xFF);  // the last block built: all blank
    EXPECT_EQ(ReadDumpByte(st().dump, 0xFC80 + 0x30), 0xFF);
    run("_clearmemory");
    run("_upload");
    EXPECT_EQ(ReadDumpByte(st().dump, 0xC00010), 0x10);
    EXPECT_EQ(ReadDumpByte(st().dump, 0xC0001F), 0x1F);
    EXPECT_EQ(ReadDumpByte(st().dump, 0xC00030), 0x30);
    EXPECT_EQ(ReadDumpByte(st().dump, 0xC0003F), 0x3F);
}

TEST_F(Flow, RamPartOfASelectionIsWarnedAndSkipped) {
    start(kFamilyCases[0]);
    run("_connect NOPROMPT");
    st().selections.count = 0;
    AddSelection(st().selections, 0xF600, 0x1000F);
    const std::string out = run("_iprogram");
    EXPECT_TRUE(has(out, "\r\nWarning: No flash configured at address 00F600")) << out;
    // FE00 to FFFF lies in no unit: passed byte by byte without a word
    EXPECT_FALSE(has(out, "address 00FE")) << out;
    EXPECT_TRUE(has(out, "*IProgram:128 bytes successfully programmed")) << out;
}

TEST_F(Flow, UnitWithoutDriverIsNoFlash) {
    start(kFamilyCases[0]);
    run("_connect NOPROMPT");
    const int unit = MemoryUnitIndexByName(st(), "IFLASH");
    st().memoryUnits[unit].driverPath.clear();
    st().selections.count = 0;
    AddSelection(st().selections, 0x20000, 0x2000F);
    const std::string out = run("_program");
    EXPECT_TRUE(has(out, "Warning: No flash configured at address 020000")) << out;
    EXPECT_TRUE(has(out, "*Program:0 bytes successfully programmed")) << out;
}

TEST_F(Flow, NotConnectedAndMissingKernelFeatures) {
    start(kFamilyCases[0]);
    std::string out = run("_program");
    EXPECT_TRUE(has(out, "*ERROR: Not Connected to Target")) << out;
    run("_connect NOPROMPT");
    Kernel& k = st().kernels[st().CurrentKernel];
    for (int i = 0; i < k.featureCount; ++i)
        if (k.features[i].name == "CALL") k.features[i].flag = kFalse;
    out = run("_erase IFLASH,1");
    EXPECT_TRUE(has(out, "*ERROR: Kernel feature not supported ")) << out;
}

}  // namespace
}  // namespace vortelm::testing

namespace vortelm::testing {
namespace {

// The external flash of the default controller: a mode 0 driver that
// erases by wordline, once the bus registers make the flash visible.
TEST_F(Flow, WordlineEraseOncePerWordline) {
    start(kFamilyCases[0]);
    run("_connect NOPROMPT");
    const int xfl = MemoryUnitIndexByName(st(), "XFLASH");
    st().memoryUnits[xfl].activated = kTrue;
    run("_w16 FE18,4008");  // ADDRSEL1
    run("_w16 FF14,0400");  // BUSCON1
    writeFile("x.hex", IntelHex(0x400080, Pattern(0x200, 8)));
    run("_load x.hex");
    std::string out = run("_iprogram");
    EXPECT_TRUE(has(out, "*IProgram: loading driver ")) << out;
    EXPECT_TRUE(has(out, "ALD4XFL0.HEX")) << out;
    // 400080 to 40027F: wordlines of 100 hexadecimal bytes at 400000, 400100, 400200
    EXPECT_TRUE(has(out, "\r\n*IProgram: Erasing wordline 400000")) << out;
    EXPECT_TRUE(has(out, "\r\n*IProgram: Erasing wordline 400100")) << out;
    EXPECT_TRUE(has(out, "\r\n*IProgram: Erasing wordline 400200")) << out;
    EXPECT_EQ(out.find("Erasing wordline 400100"), out.rfind("Erasing wordline 400100")) << out;
    EXPECT_FALSE(has(out, "Erasing sector")) << out;
    EXPECT_TRUE(has(out, "*IProgram:512 bytes successfully programmed")) << out;
    out = run("_compare");
    EXPECT_TRUE(has(out, "*Comparison:  512 Bytes OK -  0 Bytes different")) << out;
    // a second run over the same cells erases them again first
    out = run("_iprogram");
    EXPECT_TRUE(has(out, "*IProgram:512 bytes successfully programmed")) << out;
}

TEST_F(Flow, ProgressReachesTheProgressBar) {
    start(kFamilyCases[0]);
    run("_connect NOPROMPT");
    writeFile("x.hex", IntelHex(0x20000, Pattern(0x800, 1)));
    run("_load x.hex");
    host.progressCalls.clear();
    run("_iprogram");
    // the driver's download shows its own progress first
    std::vector<std::pair<int64_t, int64_t>> program;
    for (const auto& c : host.progressCalls)
        if (c.second == 2048) program.push_back(c);
    EXPECT_EQ(program, (std::vector<std::pair<int64_t, int64_t>>{{1024, 2048}, {2048, 2048}}));
    EXPECT_EQ(host.progressCalls.back(), (std::pair<int64_t, int64_t>{0, 0}))
        << "hidden at the end";
}

}  // namespace
}  // namespace vortelm::testing
