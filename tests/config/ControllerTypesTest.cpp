#include <gtest/gtest.h>

#include "config/ControllerTypes.h"
#include "core/RunTimeError.h"
#include "tests/config/TestFiles.h"

namespace vortelm {
namespace {

using testing::DataHome;

TEST(ControllerTypes, ReadsKeysUpperCasedWithoutBlanks) {
    DataHome h;
    h.write("mctypes.dat",
            "FAMILY=ignored before any controller\n"
            "[ald7rk_bb] comment\n"
            "family = ald4\n"
            "MEMDEF=MemDef\\LD7RK.MEM\n"
            "REGDEF=C:\\SFRDEF\\LD7RK.SFR\n"
            "DEFAULT_KERNEL=ald4_default\n"
            "DEFAULT_KERNEL_KLINE=ALD4_KLINE\n"
            "ID=0x1234, 0xab,0X5\n"
            "[ZT9]\n"
            "FAMILY=ZT\n");
    ReadControllerTypes(*h.st, "mctypes.dat");
    ASSERT_EQ(h.st->controllerTypeCount, 2);
    const ControllerType& c = h.st->controllerTypes[0];
    EXPECT_EQ(c.name, "ALD7RK_BB");
    EXPECT_EQ(c.family, "ALD4");
    EXPECT_EQ(c.memoryDefinitionPath, h.dir() + "\\MEMDEF\\LD7RK.MEM");
    EXPECT_EQ(c.registerDefinitionPath, "C:\\SFRDEF\\LD7RK.SFR");
    EXPECT_EQ(c.defaultKernel, "ALD4_DEFAULT");
    EXPECT_EQ(c.defaultKernelKline, "ALD4_KLINE");
    EXPECT_EQ(c.id[0], 0x1234);
    EXPECT_EQ(c.id[1], 0xAB);
    EXPECT_EQ(c.id[2], 5);
    EXPECT_EQ(h.st->controllerTypes[1].family, "ZT");
}

TEST(ControllerTypes, IdValueWithoutXGoesToHexValueAsItStands) {
    DataHome h;
    h.write("mctypes.dat", "[A]\nID=12,0x34,56\n");
    ReadControllerTypes(*h.st, "mctypes.dat");
    EXPECT_EQ(h.st->controllerTypes[0].id[0], -1);  // "ID=12"
    EXPECT_EQ(h.st->controllerTypes[0].id[1], 0x34);
    EXPECT_EQ(h.st->controllerTypes[0].id[2], 0x56);
}

TEST(ControllerTypes, MissingFileLogs) {
    DataHome h;
    ReadControllerTypes(*h.st, "mctypes.dat");
    EXPECT_EQ(h.st->controllerTypeCount, 0);
    EXPECT_EQ(h.st->terminalBuffer, "\r\n*ERROR: File mctypes.dat not found");
}

TEST(ControllerTypes, SixtyFifthControllerIsABoundError) {
    DataHome h;
    std::string text;
    for (int i = 0; i < 66; ++i) text += "[C" + std::to_string(i) + "]\n";
    h.write("mctypes.dat", text);
    EXPECT_THROW(ReadControllerTypes(*h.st, "mctypes.dat"), RunTimeError);
    EXPECT_EQ(h.st->controllerTypeCount, 65);
    EXPECT_EQ(ControllerIndexByName(*h.st, "c64"), 64);
}

TEST(ControllerTypes, FamilyCode) {
    EXPECT_EQ(ControllerFamilyCode("ALD4"), 0);
    EXPECT_EQ(ControllerFamilyCode("ZT"), 1);
    EXPECT_EQ(ControllerFamilyCode("ZT7"), 2);
    EXPECT_EQ(ControllerFamilyCode("0"), 0);
    EXPECT_EQ(ControllerFamilyCode(""), 0);
    EXPECT_EQ(ControllerFamilyCode("zt"), 0);
}

TEST(ControllerTypes, LookupsByName) {
    DataHome h;
    h.write("mctypes.dat", "[ONE]\nDEFAULT_KERNEL=K1\nDEFAULT_KERNEL_KLINE=K2\n");
    ReadControllerTypes(*h.st, "mctypes.dat");
    EXPECT_EQ(ControllerIndexByName(*h.st, "one"), 0);
    EXPECT_EQ(ControllerIndexByName(*h.st, "two"), -1);
    EXPECT_EQ(DefaultKernelOfController(*h.st, "One", 0), "K1");
    EXPECT_EQ(DefaultKernelOfController(*h.st, "One", 1), "K2");
    EXPECT_EQ(DefaultKernelOfController(*h.st, "One", -1), "K1");  // only 1 counts
    EXPECT_EQ(DefaultKernelOfController(*h.st, "two", 1), "");
}

const char* kMem =
    "[IRAM]\n"
    "TYPE=IRAM\n"
    "SECTION(0).STARTADDRESS(0)=0x00F600\n"
    "SECTION(0).LENGTH(0)=0x000A00\n"
    "[IFLASH0]\n"
    "TYPE=IFLASH\n"
    "blank=0xff\n"
    "BURSTSIZE=0x0080\n"
    "ERASESIZE=0x2000\n"
    "ACTIVATEREGISTER(1)=SYSCON\n"
    "ACTIVATEMASK(1)=0x0004\n"
    "SECTION(2).STARTADDRESS(1)=0x010000\n"
    "SECTION.LENGTH=0x004000\n"
    "SECTION(3).MAPADDRESS(0)=0x020000\n"
    "SECTION(3).MAPREGISTER=ADDRSEL1\n"
    "SECTION(3).MAPMASK=0x00FF\n"
    "SECTION(3).MAPPED(0)\n"
    "DRIVER.PATH=DRIVER\\FLASH.HEX\n"
    "DRIVER.BUFFERADDRESS=FC00\n"
    "DRIVER.MODE=10\n"
    "DRIVER.FEATURES=ERASE,PROGRAM,LOCK\n"
    "STATUS(2)=FSR\n"
    "STATUS(2).BIT(3)=BUSY\n"
    "STATUS(2).BIT(4)=ERR,3\n"
    "LENGTH_IS=0xZZ\n"
    "[XFLASH]\n"
    "TYPE=IFLASH\n"
    "DRIVER.FEATURES=PROGRAM\n";

TEST(MemoryDefinition, ReadsEveryKey) {
    DataHome h;
    h.write("MEMDEF/T.MEM", kMem);
    ReadMemoryDefinition(*h.st, "MEMDEF\\T.MEM");
    ASSERT_EQ(h.st->memoryUnitCount, 3);
    const MemoryUnit& f = h.st->memoryUnits[1];
    EXPECT_EQ(f.name, "IFLASH0");
    EXPECT_EQ(f.type, "IFLASH");
    EXPECT_EQ(f.blank, 0xFF);
    EXPECT_EQ(f.burstSize, 0x80);
    EXPECT_EQ(f.eraseSize, 0x2000);
    EXPECT_EQ(f.activateCount, 2);
    EXPECT_EQ(f.activateRegisters[1], "SYSCON");
    EXPECT_EQ(f.activateMasks[1], 4);
    EXPECT_EQ(f.sectionCount, 4);
    EXPECT_EQ(f.sections[2].rangeCount, 2);
    EXPECT_EQ(f.sections[2].ranges[1].startAddress, 0x10000);
    // indices left out carry over from the line before
    EXPECT_EQ(f.sections[2].ranges[1].length, 0x4000);
    EXPECT_EQ(f.sections[3].ranges[0].mapAddress, 0x20000);
    EXPECT_EQ(f.sections[3].ranges[0].mapRegister, "ADDRSEL1");
    EXPECT_EQ(f.sections[3].ranges[0].mapMask, 0xFF);
    EXPECT_EQ(f.sections[3].ranges[0].mappingDefined, kTrue);
    // "MAPPED" is not a key of a .MEM file
    EXPECT_EQ(f.sections[3].ranges[0].mappedNow, kFalse);
    EXPECT_EQ(f.driverPath, "DRIVER\\FLASH.HEX");
    EXPECT_EQ(f.driverBufferAddress, 0xFC00);
    EXPECT_EQ(f.driverMode, 0x10);
    EXPECT_EQ(f.featureCount, 3);
    EXPECT_EQ(f.features[2], "LOCK");
    EXPECT_EQ(f.statusRegisterCount, 3);
    EXPECT_EQ(f.statusRegisters[2].name, "FSR");
    EXPECT_EQ(f.statusRegisters[2].bits[3].text, "BUSY");
    EXPECT_EQ(f.statusRegisters[2].bits[3].value, 1);
    EXPECT_EQ(f.statusRegisters[2].bits[4].text, "ERR");
    EXPECT_EQ(f.statusRegisters[2].bits[4].value, 3);
}

TEST(MemoryDefinition, RejectedHexIsMinusOne) {
    DataHome h;
    h.write("T.MEM", "[A]\nERASESIZE=0xZZ\nSECTION(0).LENGTH(0)=0x1234567\n");
    ReadMemoryDefinition(*h.st, "T.MEM");
    EXPECT_EQ(h.st->memoryUnits[0].eraseSize, -1);
    EXPECT_EQ(h.st->memoryUnits[0].sections[0].ranges[0].length, -1);
}

TEST(MemoryDefinition, TwoBracketLinesInARowGiveADefaultUnit) {
    DataHome h;
    h.write("T.MEM", "[A]\nTYPE=RAM\nBURSTSIZE=0x10\n[B]\n[C]\nTYPE=ROM\n");
    ReadMemoryDefinition(*h.st, "T.MEM");
    ASSERT_EQ(h.st->memoryUnitCount, 3);
    const MemoryUnit& b = h.st->memoryUnits[1];
    EXPECT_EQ(b.name, "B");
    EXPECT_EQ(b.type, "");
    EXPECT_EQ(b.burstSize, 128);
    EXPECT_EQ(b.eraseSize, 128);
    EXPECT_EQ(b.driverBufferAddress, 0xFC80);
    EXPECT_EQ(b.sectionCount, 0);
}

TEST(MemoryDefinition, FirstMatchingKeyWinsAndTheBracketLineIsEmptied) {
    DataHome h;
    h.write("T.MEM", "[BLANKUNIT]\nTYPE=BLANKROM\nERASESIZE_BLANK=0x40\n");
    ReadMemoryDefinition(*h.st, "T.MEM");
    const MemoryUnit& u = h.st->memoryUnits[0];
    EXPECT_EQ(u.name, "BLANKUNIT");
    EXPECT_EQ(u.type, "BLANKROM");  // "[BLANKUNIT]" and the TYPE= line were emptied
    EXPECT_EQ(u.blank, 0x40);       // the line went to BLANK, tried before ERASESIZE
    EXPECT_EQ(u.eraseSize, 128);
}

TEST(MemoryDefinition, MissingFileLeavesTheTableAlone) {
    DataHome h;
    h.write("T.MEM", "[A]\n[B]\n");
    ReadMemoryDefinition(*h.st, "T.MEM");
    ReadMemoryDefinition(*h.st, "NO.MEM");
    EXPECT_EQ(h.st->memoryUnitCount, 2);
    EXPECT_EQ(h.st->terminalBuffer, "\r\n*ERROR: File NO.MEM not found");
}

TEST(MemoryDefinition, BoundFailuresLeaveAValidTable) {
    const char* bad[] = {"SECTION(129).STARTADDRESS(0)=0x0", "SECTION(0).LENGTH(5)=0x0",
                         "ACTIVATEREGISTER(6)=X", "STATUS(21)=X", "STATUS(0).BIT(17)=X"};
    for (const char* line : bad) {
        DataHome h;
        h.write("T.MEM", std::string("[A]\n[B]\n") + line + "\n[C]\n");
        EXPECT_THROW(ReadMemoryDefinition(*h.st, "T.MEM"), RunTimeError) << line;
        EXPECT_EQ(h.st->memoryUnitCount, 2) << line;
    }
    DataHome h;
    h.write("T.MEM", "[A]\nSECTION(128).STARTADDRESS(4)=0x0\nACTIVATEMASK(5)=0x1\nSTATUS(20).BIT(16)=X\n");
    ReadMemoryDefinition(*h.st, "T.MEM");
    EXPECT_EQ(h.st->memoryUnits[0].sectionCount, 129);
}

TEST(MemoryDefinition, ThirtyFourthUnitIsABoundError) {
    DataHome h;
    std::string text;
    for (int i = 0; i < 34; ++i) text += "[U" + std::to_string(i) + "]\n";
    h.write("T.MEM", text);
    EXPECT_THROW(ReadMemoryDefinition(*h.st, "T.MEM"), RunTimeError);
    EXPECT_EQ(h.st->memoryUnitCount, 33);
}

TEST(MemoryLookups, AddressWithActivationAndMappingLastMatchWins) {
    DataHome h;
    h.write("T.MEM",
            "[RAM]\nTYPE=RAM\nSECTION(0).STARTADDRESS(0)=0x0000\nSECTION(0).LENGTH(0)=0x10000\n"
            "[OFF]\nTYPE=IFLASH\nACTIVATEREGISTER(0)=SYSCON\n"
            "SECTION(0).STARTADDRESS(0)=0x8000\nSECTION(0).LENGTH(0)=0x1000\n"
            "[FLASH]\nTYPE=IFLASH\nSECTION(0).STARTADDRESS(0)=0x9000\nSECTION(0).LENGTH(0)=0x1000\n"
            "SECTION(1).STARTADDRESS(1)=0x20000\nSECTION(1).LENGTH(1)=0x100\n"
            "SECTION(1).MAPADDRESS(1)=0x30000\n"
            "DRIVER.FEATURES=ERASE,PROGRAM\n");
    ReadMemoryDefinition(*h.st, "T.MEM");
    auto at = [&](int32_t a) { return FindMemoryPosition(*h.st, a); };
    EXPECT_EQ(at(0x9000).unit, 2);  // RAM matches too; the last match wins
    EXPECT_EQ(at(0x8000).unit, 0);  // OFF is not activated and has a register
    h.st->memoryUnits[1].activated = kTrue;
    EXPECT_EQ(at(0x8000).unit, 1);
    EXPECT_EQ(at(0x9FFF).unit, 2);
    auto none = at(0x40000);
    EXPECT_EQ(none.unit, 0xFFFF);
    EXPECT_EQ(none.section, 0xFFFF);
    EXPECT_EQ(none.range, 0xFFFF);
    auto p = at(0x20000);
    EXPECT_EQ(p.unit, 2);
    EXPECT_EQ(p.section, 1);
    EXPECT_EQ(p.range, 1);
    h.st->memoryUnits[2].sections[1].ranges[1].mappedNow = kTrue;
    EXPECT_FALSE(at(0x20000).found());
    EXPECT_EQ(at(0x300FF).unit, 2);
    EXPECT_FALSE(at(0x30100).found());

    EXPECT_EQ(MemoryUnitIndexByName(*h.st, "flash"), 2);
    EXPECT_EQ(MemoryUnitIndexByName(*h.st, "none"), -1);
    EXPECT_EQ(FirstFlashUnit(*h.st), 1);
    EXPECT_EQ(FlashRank(*h.st, 0), 0);
    EXPECT_EQ(FlashRank(*h.st, 2), 2);
    EXPECT_TRUE(UnitHasFeature(*h.st, 2, "PROGRAM"));
    EXPECT_FALSE(UnitHasFeature(*h.st, 2, "program"));
    EXPECT_FALSE(UnitHasFeature(*h.st, 0, "PROGRAM"));
}

TEST(MemoryLookups, NoFlashUnit) {
    DataHome h;
    h.write("T.MEM", "[RAM]\nTYPE=RAM\n");
    ReadMemoryDefinition(*h.st, "T.MEM");
    EXPECT_EQ(FirstFlashUnit(*h.st), -1);
}

}  // namespace
}  // namespace vortelm
