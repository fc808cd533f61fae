#include "core/ProgramState.h"

#include <gtest/gtest.h>

#include "core/RunTimeError.h"

namespace vortelm {

TEST(ProgramState, StartValues) {
    auto st = std::make_unique<ProgramState>();
    EXPECT_EQ(st->ConnectionState, 0);
    EXPECT_EQ(st->ControllerFamily, 0);
    EXPECT_EQ(st->KernelStartAddress, 0);
    EXPECT_EQ(st->KernelEndAddress, 0);
    EXPECT_EQ(st->CurrentKernel, 0);
    EXPECT_EQ(st->IdRegisterAddresses,
              (std::array<int32_t, 6>{0xF07E, 0xF07C, 0xF07A, 0xF078, 0xF076, 0xF070}));
    EXPECT_EQ(st->IDLENGTH, 1);
    EXPECT_EQ(st->TRANSFERBUFFERSTARTADDRESS, 64640);
    EXPECT_EQ(st->PORT, 1);
    EXPECT_EQ(st->BAUDRATE, 9600);
    EXPECT_EQ(st->PARITY, 0);
    EXPECT_EQ(st->DATA, 8);
    EXPECT_EQ(st->STOPBITS, 1);
    EXPECT_EQ(st->TIMEOUT, 2000);
    EXPECT_EQ(st->CONNECTTIMEOUT, 100);
    EXPECT_EQ(st->CONNECTRETRY, 10);
    EXPECT_EQ(st->KLINE, 0);
    EXPECT_EQ(st->TMODE, 0);
    EXPECT_EQ(st->INITCHAR, 0);
    EXPECT_EQ(st->COMPORTS, 16);
    EXPECT_EQ(st->CHECKCONNECTION, 1);
    EXPECT_EQ(st->MCTYPE, "ALD7RK_BB");
    EXPECT_EQ(st->CLK, 20000000);
    EXPECT_EQ(st->EINIT, 0);
    EXPECT_EQ(st->saveFile.drive, "C");
    EXPECT_EQ(st->saveFile.folder, "C:");
    EXPECT_EQ(st->saveFile.name, "test.hex");
    EXPECT_EQ(st->SAVEFORMAT, 20);
    EXPECT_EQ(st->SAVERECORDSIZE, 32);
    EXPECT_EQ(st->SAVEFILETYPE, 0);
    EXPECT_EQ(st->SAVESTARTADDR, 0);
    EXPECT_EQ(st->SAVEENDADDR, 65535);
    EXPECT_EQ(st->saveAddressesFromPreferences, 0);
    EXPECT_EQ(st->logEnabled, 0);
    EXPECT_EQ(st->logFileName, "LOG.TXT");
    EXPECT_EQ(st->terminalBuffer, "");
    EXPECT_EQ(st->terminalLines, 0);
    EXPECT_EQ(st->scriptAbort, 0);
    EXPECT_EQ(st->BLANK_CHAR, ".");
    EXPECT_EQ(st->COLOR_BGMARKED, 0xDDDDDD);
    EXPECT_EQ(st->COLOR_BGNORMAL, 0xFFFFFF);
    EXPECT_EQ(st->COLOR_FGVALID, 0x000000);
    EXPECT_EQ(st->COLOR_FGINVALID, 0x0000FF);
    EXPECT_EQ(st->COLOR_FGMONITOR, 0x007777);
    EXPECT_EQ(st->REFRESHSFR, -1);
    EXPECT_EQ(st->SCALEFACTOR, 100);
    for (const auto& f : st->lastScriptFiles) EXPECT_EQ(f, "");
    for (const auto& u : st->userScripts) {
        EXPECT_EQ(u.path, "");
        EXPECT_EQ(u.name, "");
        EXPECT_EQ(u.flag, 0);
    }
    for (int32_t v : st->variables) EXPECT_EQ(v, 0);
}

TEST(ProgramState, TableBoundsAndCounts) {
    auto st = std::make_unique<ProgramState>();
    EXPECT_EQ(st->controllerTypes.size(), 65u);
    EXPECT_EQ(st->memoryUnits.size(), 33u);
    EXPECT_EQ(st->kernels.size(), 16u);
    EXPECT_EQ(st->featureNames.size(), 64u);
    EXPECT_EQ(st->initRegisters.size(), 32u);
    EXPECT_EQ(st->sfrTable.size(), 8193u);
    EXPECT_EQ(st->sfrSets.size(), 9u);
    EXPECT_EQ(st->selections.start.size(), 1001u);
    EXPECT_EQ(st->dump.segments.size(), 257u);
    EXPECT_EQ(st->variables.size(), 100u);
    EXPECT_EQ(st->LoadFileMemos.size(), 11u);
    EXPECT_EQ(st->SaveFileMemos.size(), 11u);
    EXPECT_EQ(st->memoryUnitCount, 0);
    EXPECT_EQ(st->kernelCount, 0);
    EXPECT_EQ(st->sfrCount, 0);
    EXPECT_EQ(st->sfrSetCount, 8);
    EXPECT_EQ(st->selections.count, 0);
    for (const auto& seg : st->dump.segments) EXPECT_EQ(seg, nullptr);
}

TEST(ProgramState, SfrRecordsAreMadeOnWriteAndReadEmptyBefore) {
    auto st = std::make_unique<ProgramState>();
    const ProgramState& view = *st;
    EXPECT_EQ(view.sfrTable[8192].name, "");
    EXPECT_EQ(view.sfrTable[9000].address, 0);  // past the bound: an empty record, no access
    SfrRecord& first = st->sfrTable[0];
    first.name = "SYSCON";
    st->sfrTable[8192].name = "LAST";  // the table grows; the first record stays where it was
    EXPECT_EQ(&first, &st->sfrTable[0]);
    EXPECT_EQ(view.sfrTable[0].name, "SYSCON");
    EXPECT_EQ(view.sfrTable[8192].name, "LAST");
    EXPECT_EQ(view.sfrTable[100].name, "");
    try {
        (void)st->sfrTable[8193];
        FAIL() << "no bound error";
    } catch (const RunTimeError& e) {
        EXPECT_STREQ(e.what(), "SFR table index 8193 out of range 0 to 8192");
    }
    EXPECT_EQ(st->sfrTable.first(3).size(), 3u);
    EXPECT_EQ(st->sfrTable.first(3)[0].name, "SYSCON");
}

TEST(ProgramState, MessageCodes) {
    const MessageCodes c;
    EXPECT_EQ(c.C_WRITE_BLOCK, 0x84);
    EXPECT_EQ(c.C_READ_BLOCK, 0x85);
    EXPECT_EQ(c.C_EINIT, 0x31);
    EXPECT_EQ(c.C_TEST_COMM, 0x93);
    EXPECT_EQ(c.C_SWRESET, 0x32);
    EXPECT_EQ(c.C_GO, 0x41);
    EXPECT_EQ(c.C_CALL, 0x9F);
    EXPECT_EQ(c.C_GETCHECKSUM, 0x33);
    EXPECT_EQ(c.C_WRITE_WORD, 0x82);
    EXPECT_EQ(c.C_ASC1_CON, 0xCC);
    EXPECT_EQ(c.A_ACK1, 0xAA);
    EXPECT_EQ(c.A_ACK2, 0xEA);
    EXPECT_EQ(c.A_LOADER_STARTED, 0x01);
    EXPECT_EQ(c.A_APPLICATION_STARTED, 0x03);
    EXPECT_EQ(c.C_WRITE_SEQ, 0xCE);
    EXPECT_EQ(c.C_READ_WORD, 0xCD);
    EXPECT_EQ(c.C_CF, 0xCF);
    EXPECT_EQ(c.C_D0, 0xD0);
    EXPECT_EQ(c.C_SET_PROTECTION, 0xD1);
    EXPECT_EQ(c.A_LOADER_ACK2, 0x02);
    EXPECT_EQ(c.A_AUTOBAUD, 0x04);
    EXPECT_EQ(sizeof(MessageCodes), 21u);
}

TEST(ProgramState, FolderDefaults) {
    auto st = std::make_unique<ProgramState>();
    st->programFolder = "/data/home";
    SetProgramFolderDefaults(*st);
    EXPECT_EQ(st->PATH_LOAD, "/data/home");
    EXPECT_EQ(st->PATH_SAVE, "/data/home");
    EXPECT_EQ(st->PATH_SCRIPT, "/data/home");
    EXPECT_EQ(st->PATH_LOG, "/data/home");
    for (int i = 0; i <= 9; ++i) {
        EXPECT_EQ(st->LoadFileMemos[i].drive, "/");
        EXPECT_EQ(st->LoadFileMemos[i].folder, "/data/home");
        EXPECT_EQ(st->SaveFileMemos[i].folder, "/data/home");
        EXPECT_EQ(st->LoadFileMemos[i].type, 0);
    }
    EXPECT_EQ(st->LoadFileMemos[10].folder, "");
}

TEST(ProgramState, ScaleFactorOfHundredIsOne) {
    auto st = std::make_unique<ProgramState>();
    EXPECT_EQ(FormScale(*st), 1.0);
    st->SCALEFACTOR = 150;
    EXPECT_EQ(FormScale(*st), 1.5);
}

TEST(ProgramState, TwoStatesAreIndependent) {
    auto a = std::make_unique<ProgramState>();
    auto b = std::make_unique<ProgramState>();
    a->variables[3] = 7;
    a->BAUDRATE = 19200;
    EXPECT_EQ(b->variables[3], 0);
    EXPECT_EQ(b->BAUDRATE, 9600);
}

TEST(CheckBound, NamesTheBound) {
    EXPECT_NO_THROW(CheckBound(0, 15, "kernels"));
    EXPECT_NO_THROW(CheckBound(15, 15, "kernels"));
    try {
        CheckBound(16, 15, "kernels");
        FAIL();
    } catch (const RunTimeError& e) {
        EXPECT_STREQ(e.what(), "kernels index 16 out of range 0 to 15");
    }
    EXPECT_THROW(CheckBound(-1, 15, "kernels"), RunTimeError);
}

}  // namespace vortelm
