#include <gtest/gtest.h>

#include <vector>

#include "config/ControllerTypes.h"
#include "config/Kernels.h"
#include "config/Preferences.h"
#include "config/Startup.h"
#include "core/Host.h"
#include "core/RunTimeError.h"
#include "sfr/SfrTable.h"
#include "tests/config/TestFiles.h"

namespace vortelm {
namespace {

using testing::DataHome;

class RecordingHost : public Host {
  public:
    MsgAnswer messageBox(std::string_view text, MsgButtons, MsgIcon, std::string_view) override {
        boxes.emplace_back(text);
        return MsgAnswer::Ok;
    }
    void refreshSfrView() override { ++sfrRefreshes; }
    void refreshStatus() override { ++statusRefreshes; }
    std::vector<std::string> boxes;
    int sfrRefreshes = 0;
    int statusRefreshes = 0;
};

// A data home with a controller type, its register file and two kernels.
void WriteDataFiles(DataHome& h) {
    h.write("mctypes.dat",
            "[ALD7RK_BB]\nFAMILY=ZT7\nREGDEF=SFRDEF\\LD7RK.SFR\nMEMDEF=MEMDEF\\LD7RK.MEM\n"
            "DEFAULT_KERNEL=ZT7000_DEFAULT\nDEFAULT_KERNEL_KLINE=ZT7000_KLINE\n");
    h.write("SFRDEF/LD7RK.SFR", "SFR 0xFF12 SYSCON\nSFR 0xFF14 BUSCON\nSFR 0xF1C0 ADDRSEL1\n");
    h.write("kernel.dat",
            "KERNELNAME(0)=ZT7000_DEFAULT\nVORTELMPATH(0)=K\\CORE.HEX\nSTARTADDRESS(0)=00F600\n"
            "ENDADDRESS(0)=00F7FF\nKERNELNAME(1)=ZT7000_KLINE\nVORTELMPATH(1)=K\\KCORE.HEX\n"
            "STARTADDRESS(1)=00F800\nENDADDRESS(1)=00F9FF\n");
}

void Start(DataHome& h) {
    ResetConfigurationTables(*h.st);
    ReadDataFiles(*h.st);
}

TEST(Preferences, DefaultsAreTheStartValues) {
    DataHome h;
    h.st->BAUDRATE = 1;
    h.st->MCTYPE = "X";
    h.st->codes.C_GO = 0;
    h.st->CurrentKernel = 5;
    SetDefaultPreferences(*h.st);
    EXPECT_EQ(h.st->BAUDRATE, 9600);
    EXPECT_EQ(h.st->MCTYPE, "ALD7RK_BB");
    EXPECT_EQ(h.st->codes.C_GO, 0x41);
    EXPECT_EQ(h.st->CurrentKernel, 0);
    EXPECT_EQ(h.st->PATH_LOG, h.dir());
    EXPECT_EQ(h.st->LoadFileMemos[9].folder, h.dir());
    EXPECT_EQ(h.st->LoadFileMemos[9].drive, "/");
    EXPECT_EQ(h.st->saveFile.name, "test.hex");
    EXPECT_EQ(h.st->COLOR_FGINVALID, 0x0000FF);
    EXPECT_EQ(h.st->REFRESHSFR, -1);
}

TEST(Preferences, MissingFileGivesDefaultsAndOneLine) {
    DataHome h;
    h.st->BAUDRATE = 1;
    ReadPreferences(*h.st, "default.ini");
    EXPECT_EQ(h.st->BAUDRATE, 9600);
    EXPECT_EQ(h.st->terminalBuffer, "\r\n*ERROR: File default.ini not found");
}

TEST(Preferences, FileWithoutVortelmSectionLeavesKernelZero) {
    DataHome h;
    h.st->CurrentKernel = 3;
    h.write("a.ini", "[Communication]\nBAUDRATE=57600\n");
    ReadPreferences(*h.st, "a.ini");
    EXPECT_EQ(h.st->CurrentKernel, 0);
    EXPECT_EQ(h.st->BAUDRATE, 57600);
}

TEST(Preferences, BlanksAreStrippedFirst) {
    DataHome h;
    h.write("a.ini",
            "[Messages]\nC_GO = 0x42\nc_call=0x9e\n[Communication]\n BAUD RATE = 19200 baud\n");
    ReadPreferences(*h.st, "a.ini");
    EXPECT_EQ(h.st->codes.C_GO, 0x42);
    EXPECT_EQ(h.st->codes.C_CALL, 0x9E);
    EXPECT_EQ(h.st->BAUDRATE, 19200);  // the scan stops at the first letter
}

TEST(Preferences, NumbersThatAreNotNumbersGiveZero) {
    DataHome h;
    h.write("a.ini",
            "[Communication]\nTIMEOUT=abc\nPORT=COMx\n[Vortelm]\nTRANSFERBUFFERSTARTADDRESS=XYZ\n");
    ReadPreferences(*h.st, "a.ini");
    EXPECT_EQ(h.st->TIMEOUT, 0);
    EXPECT_EQ(h.st->PORT, 0);
    EXPECT_EQ(h.st->TRANSFERBUFFERSTARTADDRESS, -1);
}

TEST(Preferences, LinesBeforeAnyHeaderAreIgnored) {
    DataHome h;
    h.write("a.ini", "BAUDRATE=1200\n[Communication]\nBAUDRATE=2400\n");
    ReadPreferences(*h.st, "a.ini");
    EXPECT_EQ(h.st->BAUDRATE, 2400);
}

TEST(Preferences, InvalidColourKeyHasNoEffect) {
    DataHome h;
    h.write(
        "a.ini",
        "[Frontend]\nCOLOR_FGINVALID=0x00FF00\nCOLOR_FGMARKED=0x00FF00\nCOLOR_BGMARKED=0x123456\n");
    ReadPreferences(*h.st, "a.ini");
    EXPECT_EQ(h.st->COLOR_FGINVALID, 0x0000FF);
    EXPECT_EQ(h.st->COLOR_BGMARKED, 0x123456);
}

TEST(Preferences, NameTypeOpensAUnitNamedType) {
    DataHome h;
    h.write("a.ini", "[Memory]\nNAME=TYPE\nNAME=Flash\ntype=iflash\n");
    ReadPreferences(*h.st, "a.ini");
    ASSERT_EQ(h.st->memoryUnitCount, 2);
    EXPECT_EQ(h.st->memoryUnits[0].name, "TYPE");
    EXPECT_EQ(h.st->memoryUnits[0].type, "");
    EXPECT_EQ(h.st->memoryUnits[1].name, "FLASH");  // upper case from a preference file
    EXPECT_EQ(h.st->memoryUnits[1].type, "IFLASH");
}

TEST(Preferences, DriverModeTenComesBackAsSixteen) {
    DataHome h;
    WriteDataFiles(h);
    Start(h);
    h.st->memoryUnitCount = 1;
    h.st->memoryUnits[0].name = "F";
    h.st->memoryUnits[0].driverPath = "DRIVER\\F.HEX";
    h.st->memoryUnits[0].driverMode = 10;
    h.st->kernelCount = 1;
    ASSERT_TRUE(WritePreferences(*h.st, "a.ini"));
    EXPECT_NE(h.read("a.ini").find("DRIVER.MODE=10\n"), std::string::npos);
    ReadPreferences(*h.st, "a.ini");
    EXPECT_EQ(h.st->memoryUnits[0].driverMode, 16);
}

TEST(Preferences, EmptySaveFileTakesTheProgramFolder) {
    DataHome h;
    h.write("a.ini", "[Files]\nSAVEFILE=\n");
    ReadPreferences(*h.st, "a.ini");
    const std::string& dir = h.dir();
    const auto slash = dir.find_last_of('/');
    EXPECT_EQ(h.st->saveFile.drive, dir.substr(0, 1));
    EXPECT_EQ(h.st->saveFile.folder, dir.substr(0, slash));
    EXPECT_EQ(h.st->saveFile.name, dir.substr(slash + 1));
}

TEST(Preferences, FilesKeysAndOldForms) {
    DataHome h;
    h.write("a.ini",
            "[Files]\n"
            "SAVEFILE=\"D:\\my files\\out.hex\"\n"
            "SAVESTARTADDR=0x001000\n"
            "LOADFILE=C:\\in\\app.hex\nLOADFILETYPE=2\n"
            "CONFIGSAVEFILE=C:\\cfg\\save.ini\n"
            "LASTSCRIPTFILE(15)=C:\\s\\last.scm\n"
            "LASTSCRIPTFILE(16)=C:\\s\\toomany.scm\n"
            "LASTSCRIPTFILE2=C:\\s\\old.scm\n"
            "USERSCRIPT3=C:\\s\\user.scm\n"
            "USERSCRIPTNAME(3)=Mine\n"
            "USERSCRIPT(4)=\n"
            "PATH_LOAD=\n"
            "PATH_SAVE=/data/save\n");
    ReadPreferences(*h.st, "a.ini");
    EXPECT_EQ(h.st->saveFile.drive, "D");
    EXPECT_EQ(h.st->saveFile.folder, "D:\\my files");
    EXPECT_EQ(h.st->saveFile.name, "out.hex");
    EXPECT_EQ(h.st->SAVESTARTADDR, 0x1000);
    EXPECT_EQ(h.st->saveAddressesFromPreferences, 1);
    EXPECT_EQ(h.st->LoadFileMemos[0].folder, "C:\\in");
    EXPECT_EQ(h.st->LoadFileMemos[0].name, "app.hex");
    EXPECT_EQ(h.st->LoadFileMemos[0].type, 2);
    EXPECT_EQ(h.st->SaveFileMemos[1].name, "save.ini");
    EXPECT_EQ(h.st->lastScriptFiles[15], "C:\\s\\last.scm");
    EXPECT_EQ(h.st->lastScriptFiles[2], "C:\\s\\old.scm");
    EXPECT_EQ(h.st->userScripts[3].path, "C:\\s\\user.scm");
    EXPECT_EQ(h.st->userScripts[3].flag, kTrue);
    EXPECT_EQ(h.st->userScripts[3].name, "Mine");
    EXPECT_EQ(h.st->userScripts[4].flag, kFalse);
    EXPECT_EQ(h.st->PATH_LOAD, h.dir());  // only a non-empty value counts
    EXPECT_EQ(h.st->PATH_SAVE, "/data/save");
}

TEST(Preferences, SaveAddressesAreWrittenOnlyWhenTheyCameFromAFile) {
    DataHome h;
    h.st->kernelCount = 1;
    std::string text = PreferencesText(*h.st);
    EXPECT_EQ(text.find("SAVESTARTADDR"), std::string::npos);
    h.st->saveAddressesFromPreferences = 1;
    h.st->SAVEENDADDR = 0x12345;
    text = PreferencesText(*h.st);
    EXPECT_NE(text.find("SAVESTARTADDR=0x000000\nSAVEENDADDR=0x012345\n\n"), std::string::npos);
}

TEST(Preferences, KernelByNameAndOldMonitorKeys) {
    DataHome h;
    WriteDataFiles(h);
    Start(h);
    h.write("a.ini", "[Vortelm]\nKERNEL=zt7000_kline\n");
    ReadPreferences(*h.st, "a.ini");
    EXPECT_EQ(h.st->CurrentKernel, 1);
    EXPECT_EQ(h.st->KernelStartAddress, 0xF800);

    h.write("b.ini",
            "[Vortelm]\nKERNEL=ZT7000_DEFAULT\nVORTELM=k\\core.hex\nVORTELMKLINE=K\\KCORE.HEX\n"
            "[Communication]\nKLINE=1\n");
    ReadPreferences(*h.st, "b.ini");
    EXPECT_EQ(h.st->CurrentKernel, 1);
    EXPECT_EQ(h.st->KernelEndAddress, 0xF9FF);

    h.write("c.ini", "[Vortelm]\nKERNEL=NOPE\n");
    ReadPreferences(*h.st, "c.ini");
    EXPECT_EQ(h.st->CurrentKernel, -1);
}

TEST(Preferences, KnownControllerReadsItsRegistersAndSelectsTheDefaultKernel) {
    DataHome h;
    WriteDataFiles(h);
    Start(h);
    h.write("a.ini",
            "[Vortelm]\nKERNEL=NOPE\n[Controller]\nMCTYPE=ald7rk_bb\n"
            "[Register]\nSYSCON=0x1234\nNOSUCH=0x1\nGENERIC1=0xBEEF,0x00FE00\nnoequals\n"
            "[Frontend]\nSFRSET(1)=Bus "
            "registers\nDISPLAY(1)=BUSCON\nDISPLAY(1)=SYSCON\nDISPLAY=ADDRSEL1\n"
            "DISPLAY(8)=SYSCON\nDISPLAY(2)=NOSUCH\n");
    ReadPreferences(*h.st, "a.ini");
    EXPECT_EQ(h.st->MCTYPE, "ald7rk_bb");
    EXPECT_EQ(h.st->ControllerFamily, 2);
    EXPECT_EQ(h.st->CurrentKernel, 0);  // ZT7000_DEFAULT
    EXPECT_EQ(h.st->sfrCount, 5);
    ASSERT_EQ(h.st->initRegisterCount, 2);
    EXPECT_EQ(h.st->initRegisters[0].name, "SYSCON");
    EXPECT_EQ(h.st->initRegisters[0].address, std::to_string(0xFF12));
    EXPECT_EQ(h.st->initRegisters[0].value, 0x1234);
    EXPECT_EQ(h.st->initRegisters[1].name, "GENERIC1");
    EXPECT_EQ(h.st->initRegisters[1].address, std::to_string(0xFE00));
    EXPECT_EQ(h.st->initRegisters[1].value, 0xBEEF);
    EXPECT_EQ(h.st->sfrSets[1].title, "Busregisters");
    ASSERT_EQ(h.st->sfrSets[1].count, 2);
    EXPECT_EQ(h.st->sfrSets[1].names[0], "BUSCON");
    EXPECT_EQ(h.st->sfrSets[0].count, 1);
    EXPECT_EQ(h.st->sfrSets[2].count, 0);
    const std::string text = PreferencesText(*h.st);
    EXPECT_NE(text.find("[Register]\n\nSYSCON=0x1234\nGENERIC1=0xBEEF,0x00FE00\n\n[Commands]"),
              std::string::npos);
    EXPECT_NE(
        text.find("SFRSET(7)=\nDISPLAY(0)=ADDRSEL1\nDISPLAY(1)=BUSCON\nDISPLAY(1)=SYSCON\n\n"),
        std::string::npos);
}

TEST(Preferences, UnknownControllerShowsTheBoxAndEndsTheRead) {
    RecordingHost host;
    DataHome h;
    h.st = std::make_unique<ProgramState>(host);
    h.st->programFolder = h.dir();
    WriteDataFiles(h);
    Start(h);
    h.write("a.ini", "[Controller]\nMCTYPE=GONE\nCLK=1000\n[Memory]\nNAME=X\n");
    EXPECT_THROW(ReadPreferences(*h.st, "a.ini"), RunTimeError);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(
        host.boxes[0],
        "The Controller Type in the preference file is not (no longer) supported. Please select a "
        "different one in the target-configuration dialog ");
    EXPECT_EQ(h.st->CLK, 20000000);  // the read ended there
    EXPECT_EQ(h.st->memoryUnitCount, 0);

    // at start-up the step catches it and says so in one line
    h.write("default.ini", "[Controller]\nMCTYPE=GONE\n");
    h.st->terminalBuffer.clear();
    ReadDefaultPreferences(*h.st);
    EXPECT_EQ(h.st->terminalBuffer, "\r\n*ERROR: controller type index -1 out of range 0 to 64");
}

TEST(Preferences, CommandsSection) {
    DataHome h;
    h.write("a.ini", "[Commands]\neinit\n");
    ReadPreferences(*h.st, "a.ini");
    EXPECT_EQ(h.st->EINIT, 1);
}

TEST(Preferences, PortNameIsAlwaysWrittenAfterComports) {
    DataHome h;
    WriteDataFiles(h);
    Start(h);
    h.st->kernelCount = 1;
    EXPECT_NE(PreferencesText(*h.st).find("COMPORTS=16\nPORTNAME=\nBOOTENTRY=0\n\n[Controller]"),
              std::string::npos);
    h.st->PORTNAME = "/dev/ttyUSB0";
    ASSERT_TRUE(WritePreferences(*h.st, "a.ini"));
    EXPECT_NE(h.read("a.ini").find("COMPORTS=16\nPORTNAME=/dev/ttyUSB0\n"), std::string::npos);
    h.st->PORTNAME.clear();
    ReadPreferences(*h.st, "a.ini");
    EXPECT_EQ(h.st->PORTNAME, "/dev/ttyUSB0");
    h.st->PORTNAME = "/dev/my port";
    ASSERT_TRUE(WritePreferences(*h.st, "a.ini"));
    ReadPreferences(*h.st, "a.ini");
    EXPECT_EQ(h.st->PORTNAME, "/dev/my port");
}

TEST(Preferences, BootEntryIsKeptAndTheCommandLinesIsNot) {
    DataHome h;
    WriteDataFiles(h);
    Start(h);
    h.st->kernelCount = 1;
    h.st->BOOTENTRY = 2;
    h.st->bootEntryOverride = 4;
    ASSERT_TRUE(WritePreferences(*h.st, "a.ini"));
    EXPECT_NE(h.read("a.ini").find("PORTNAME=\nBOOTENTRY=2\n\n[Controller]"), std::string::npos);
    h.st->BOOTENTRY = 0;
    ReadPreferences(*h.st, "a.ini");
    EXPECT_EQ(h.st->BOOTENTRY, 2);
    // A file without the key, as older files are, leaves the entry off.
    h.write("b.ini", "[Communication]\nPORT=COM1\n");
    ReadPreferences(*h.st, "b.ini");
    EXPECT_EQ(h.st->BOOTENTRY, 0);
}

TEST(Preferences, WriterWithCurrentKernelOutOfRangeLeavesTheOldFile) {
    DataHome h;
    h.write("a.ini", "old");
    h.st->CurrentKernel = -1;
    EXPECT_THROW((void)WritePreferences(*h.st, "a.ini"), RunTimeError);
    EXPECT_EQ(h.read("a.ini"), "old");
}

// The whole file of a fresh state, line by line as the writer lays it out.
TEST(Preferences, WritesTheExactOrderAndSpacing) {
    DataHome h;
    h.st->kernelCount = 1;
    h.st->kernels[0].name = "ALD4_DEFAULT";
    SetDefaultPreferences(*h.st);
    h.st->memoryUnitCount = 1;
    MemoryUnit& u = h.st->memoryUnits[0];
    u.name = "IFLASH";
    u.type = "IFLASH";
    u.blank = 0xFF;
    u.activated = kTrue;
    u.activateCount = 1;
    u.activateRegisters[0] = "SYSCON";
    u.activateMasks[0] = 4;
    u.sectionCount = 1;
    u.sections[0].rangeCount = 1;
    u.sections[0].ranges[0] =
        SectionRange{0x10000, 0x8000, kTrue, 0x20000, "ADDRSEL1", 0xFF, kTrue};
    u.driverPath = "DRIVER\\F.HEX";
    u.featureCount = 2;
    u.features[0] = "ERASE";
    u.features[1] = "PROGRAM";
    u.statusRegisterCount = 1;
    u.statusRegisters[0].name = "FSR";
    u.statusRegisters[0].bits[0] = StatusBit{"BUSY", 1};
    u.statusRegisters[0].bits[2] = StatusBit{"ERR", 2};
    h.st->EINIT = 1;
    const std::string d = h.dir();
    const std::string memo = d + "\\";
    std::string expected =
        "[Vortelm]\nIDLENGTH=1\nKERNEL=ALD4_DEFAULT\nTRANSFERBUFFERSTARTADDRESS=00FC80\n\n"
        "[Communication]\nPORT=COM1\nBAUDRATE=9600\nPARITY=0\nDATA=8\nSTOPBITS=1\nTIMEOUT=2000\n"
        "KLINE=0\nTMODE=0\nCONNECTTIMEOUT=100\nCONNECTRETRY=10\nCHECKCONNECTION=1\nINITCHAR=0\n"
        "COMPORTS=16\nPORTNAME=\nBOOTENTRY=0\n\n"
        "[Controller]\nMCTYPE=ALD7RK_BB\nCLK=20000000\n\n\n"
        "[Memory]\n\n"
        "NAME=IFLASH\nTYPE=IFLASH\nBLANK=0xFF\nBURSTSIZE=0x0080\nERASESIZE=0x0080\nACTIVATED\n"
        "ACTIVATEREGISTER(0)=SYSCON\nACTIVATEMASK(0)=0x0004\n"
        "SECTION(0).STARTADDRESS(0)=0x010000\nSECTION(0).LENGTH(0)=0x008000\nSECTION(0).MAPPED(0)\n"
        "SECTION(0).MAPADDRESS(0)=0x020000\nSECTION(0).MAPREGISTER(0)=ADDRSEL1\n"
        "SECTION(0).MAPMASK(0)=0x00FF\n"
        "DRIVER.PATH=DRIVER\\F.HEX\nDRIVER.BUFFERADDRESS=00FC80\nDRIVER.MODE=0\n"
        "DRIVER.FEATURES=ERASE,PROGRAM\nSTATUS(0)=FSR\nSTATUS(0).BIT(0)=BUSY\nSTATUS(0).BIT(2)=ERR,"
        "2\n\n\n"
        "[Register]\n\n\n"
        "[Commands]\n\nEINIT\n\n\n"
        "[Files]\nSAVEFILE=C:\\test.hex\nSAVEFORMAT=20\nSAVEFILETYPE=0\nSAVERECORDSIZE=32\n\n"
        "LOADFILE=" +
        memo +
        "\nLOADFILETYPE=0\n\n"
        "CONFIGLOADFILE=" +
        memo + "\nCONFIGLOADFILETYPE=0\nCONFIGSAVEFILE=" + memo +
        "\nCONFIGSAVEFILETYPE=0\n\n"
        "SCRIPTFILE=" +
        memo +
        "\nSCRIPTFILETYPE=0\n\n"
        "DRIVERFILE=" +
        memo +
        "\nDRIVERFILETYPE=0\n\n"
        "REGSETFILE=" +
        memo +
        "\nREGSETFILETYPE=0\n\n"
        "BINFILE=" +
        memo + "\nBINFILETYPE=0\n\n";
    for (int n = 0; n < 16; ++n) expected += "LASTSCRIPTFILE(" + std::to_string(n) + ")=\n";
    expected += "\n";
    for (int n = 0; n < 8; ++n)
        expected +=
            "USERSCRIPT(" + std::to_string(n) + ")=\nUSERSCRIPTNAME(" + std::to_string(n) + ")=\n";
    expected +=
        "\nPATH_LOAD=" + d + "\nPATH_SAVE=" + d + "\nPATH_SCRIPT=" + d + "\nPATH_LOG=" + d + "\n\n";
    expected +=
        "[Messages]\n\nA_LOADER_STARTED=0x01\nA_APPLICATION_STARTED=0x03\n\n"
        "C_WRITE_BLOCK=0x84\nC_READ_BLOCK=0x85\nC_WRITE_WORD=0x82\nC_EINIT=0x31\nC_TEST_COMM=0x93\n"
        "C_SWRESET=0x32\nC_GO=0x41\nC_CALL=0x9F\nC_GETCHECKSUM=0x33\nC_ASC1_CON=0xCC\n\n"
        "A_ACK1=0xAA\nA_ACK2=0xEA\n\n\n"
        "[Frontend]\n\nBLANK_CHAR=.\nCOLOR_BGMARKED=0xDDDDDD\nCOLOR_BGNORMAL=0xFFFFFF\n"
        "COLOR_FGVALID=0x000000\nCOLOR_FGINVALID=0x0000FF\nCOLOR_FGMONITOR=0x007777\nLOGFILE=0\n"
        "REFRESHSFR=-1\nSCALEFACTOR=100\n\n";
    for (int n = 0; n < 8; ++n) expected += "SFRSET(" + std::to_string(n) + ")=\n";
    expected += "\n";
    ASSERT_TRUE(WritePreferences(*h.st, "default.ini"));
    EXPECT_EQ(h.read("default.ini"), expected);
}

// Reading what was written gives the same state, and writing that again
// gives the same bytes.
TEST(Preferences, RoundTripKeepsStateAndBytes) {
    DataHome h;
    WriteDataFiles(h);
    Start(h);
    ReadDefaultPreferences(*h.st);  // none there: defaults
    ProgramState& st = *h.st;
    st.BAUDRATE = 115200;
    st.PORTNAME = "sim:";
    st.KLINE = 1;
    st.CurrentKernel = 1;
    st.MCTYPE = "ALD7RK_BB";
    st.lastScriptFiles[3] = h.dir() + "\\SCRIPTS\\a b.scm";
    st.userScripts[2] = UserScript{"x.scm", "Go", kTrue};
    st.saveAddressesFromPreferences = 1;
    st.SAVESTARTADDR = 0x100;
    st.COLOR_BGMARKED = 0x102030;
    st.logEnabled = 1;
    st.logFileName = "LOG.TXT";
    st.SCALEFACTOR = 125;
    st.sfrSets[0].title = "Main";
    st.codes.C_GO = 0x44;
    ReadMemoryDefinition(st, "none.mem");  // keeps the table alone
    st.memoryUnitCount = 1;
    st.memoryUnits[0].name = "RAM";
    st.memoryUnits[0].type = "IRAM";
    st.memoryUnits[0].sectionCount = 1;
    st.memoryUnits[0].sections[0].rangeCount = 1;
    st.memoryUnits[0].sections[0].ranges[0].startAddress = 0xF600;
    st.memoryUnits[0].sections[0].ranges[0].length = 0xA00;
    st.memoryUnits[0].driverPath = "DRIVER\\X Y.HEX";
    st.memoryUnits[0].driverMode = 9;
    st.logEnabled = 0;
    WriteConfigurationFiles(st);
    const std::string ini1 = h.read("default.ini");
    const std::string dat1 = h.read("kernel.dat");

    DataHome h2;
    h2.st->programFolder = h.dir();  // the same data home, read by a fresh program
    ResetConfigurationTables(*h2.st);
    ReadDataFiles(*h2.st);
    ReadDefaultPreferences(*h2.st);
    const ProgramState& r = *h2.st;
    EXPECT_EQ(r.BAUDRATE, 115200);
    EXPECT_EQ(r.PORTNAME, "sim:");
    EXPECT_EQ(r.CurrentKernel, 1);
    EXPECT_EQ(r.KernelStartAddress, 0xF800);
    EXPECT_EQ(r.ControllerFamily, 2);
    EXPECT_EQ(r.lastScriptFiles[3], st.lastScriptFiles[3]);
    EXPECT_EQ(r.userScripts[2].path, "x.scm");
    EXPECT_EQ(r.userScripts[2].name, "Go");
    EXPECT_EQ(r.SAVESTARTADDR, 0x100);
    EXPECT_EQ(r.COLOR_BGMARKED, 0x102030);
    EXPECT_EQ(r.SCALEFACTOR, 125);
    EXPECT_EQ(r.sfrSets[0].title, "Main");
    EXPECT_EQ(r.codes.C_GO, 0x44);
    EXPECT_EQ(r.memoryUnitCount, 1);
    EXPECT_EQ(r.memoryUnits[0].driverPath, "DRIVER\\X Y.HEX");
    EXPECT_EQ(r.memoryUnits[0].sections[0].ranges[0].length, 0xA00);
    EXPECT_EQ(r.terminalBuffer, "");

    WriteConfigurationFiles(*h2.st);
    EXPECT_EQ(h.read("default.ini"), ini1);
    EXPECT_EQ(h.read("kernel.dat"), dat1);
}

}  // namespace
}  // namespace vortelm
