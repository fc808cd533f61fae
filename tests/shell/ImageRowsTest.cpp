// The rows of the file, hex editor and selection groups, run through
// ExecuteShellCommand as the command box and scripts run them.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "image/Dump.h"
#include "image/Selections.h"
#include "shell/Shell.h"

namespace vortelm::shell {
namespace {

struct ImageRows : ::testing::Test {
    TestHost host;
    std::unique_ptr<ProgramState> st = std::make_unique<ProgramState>(host);
    Session s{*st};
    std::filesystem::path dir;

    void SetUp() override {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        dir = std::filesystem::temp_directory_path() /
              ("vortelm-rows-" + std::to_string(::getpid()) + "-" + info->name());
        std::filesystem::remove_all(dir);
        std::filesystem::create_directories(dir / "home");
        std::filesystem::create_directories(dir / "load");
        std::filesystem::create_directories(dir / "save");
        st->programFolder = (dir / "home").string();
        st->PATH_LOAD = (dir / "load").string();
        st->PATH_SAVE = (dir / "save").string();
        InitDumpMemory(st->dump);
        BuildShellCommandTable(s.table);
    }
    void TearDown() override { std::filesystem::remove_all(dir); }

    std::string Run(std::string_view line) {
        host.terminal.clear();
        result = ExecuteShellCommand(s, line, 0);
        return host.terminal;
    }
    void Write(const std::string& rel, const std::string& text) {
        std::ofstream f(dir / rel, std::ios::binary);
        f << text;
    }
    std::string Read(const std::string& rel) {
        std::ifstream f(dir / rel, std::ios::binary);
        std::stringstream ss;
        ss << f.rdbuf();
        return ss.str();
    }
    int16_t result = 0;
};

TEST_F(ImageRows, LoadTakesTheNameUnderTheLoadPath) {
    Write("load/a.hex", ":0401000001020304F1\r\n:00000001FF\r\n");
    EXPECT_EQ(Run("_load a.hex"), ">_load a.hex\r\n\r\n*Load: 4 bytes loaded");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(ReadDumpByte(st->dump, 0x102), 3);
}

TEST_F(ImageRows, AMissingFileIsStatusMinusTwo) {
    EXPECT_EQ(Run("_load none.hex"),
              ">_load none.hex\r\n*ERROR: Illegal parameters\r\nusage: _load <filename>\r\n");
    EXPECT_EQ(result, -2);
    EXPECT_EQ(Run("_loadsre none.sre"),
              ">_loadsre none.sre\r\n*ERROR: Illegal parameters\r\nusage: _loadsre <filename>\r\n");
    EXPECT_EQ(Run("_binload none.bin,100"),
              ">_binload none.bin,100\r\n*ERROR: Illegal parameters\r\n"
              "usage: _binload <filename>[,<address offset>]\r\n");
}

TEST_F(ImageRows, LoadSRecordAndBinaryWithOffset) {
    Write("load/a.sre", "S104000011EA\r\nS9030000FC\r\n");
    EXPECT_EQ(Run("_loadsre a.sre"), ">_loadsre a.sre\r\n\r\n*Load: 1 bytes loaded");
    Write("load/b.bin", "\x01\x02\x03");
    EXPECT_EQ(Run("_binload b.bin,1000"), ">_binload b.bin,1000\r\n\r\n*Load Binary: 3 bytes loaded");
    EXPECT_EQ(ReadDumpByte(st->dump, 0x1002), 3);
    EXPECT_EQ(Run("_binload " + (dir / "load/b.bin").string()).substr(0, 9), ">_binload");
    EXPECT_EQ(ReadDumpByte(st->dump, 0x0002), 3);
}

TEST_F(ImageRows, SaveHandsAnUnknownFormatThrough) {
    FillDumpBlock(st->dump, 0x10000, 2, 0xAA, kMarksLoaded);
    AddSelection(st->selections, 0x10000, 0x10001);
    EXPECT_EQ(Run("_save a.hex,32,21"), ">_save a.hex,32,21\r\n\r\n*SaveAs: selection written to file");
    EXPECT_EQ(result, 0);
    // Format 21 is written as the extension record's type, 0x15.
    EXPECT_EQ(Read("save/a.hex").substr(0, 17), ":020000150001E8\r\n");
}

TEST_F(ImageRows, SaveWithOneArgumentUsesTheSettings) {
    FillDumpBlock(st->dump, 0x10000, 0x12, 0x00, kMarksLoaded);
    AddSelection(st->selections, 0x10000, 0x10011);
    st->SAVERECORDSIZE = 16;
    st->SAVEFORMAT = 32;
    Run("_save a.hex");
    EXPECT_EQ(Read("save/a.hex"),
              ":020000040001F9\r\n"
              ":10000000" + std::string(32, '0') + "F0\r\n"
              ":020010000000EE\r\n"
              ":00000001FF\r\n");
    st->SAVEFORMAT = 20;
    Run("_save b.hex");
    EXPECT_EQ(Read("save/b.hex").substr(0, 17), ":020000021000EC\r\n");
}

TEST_F(ImageRows, SaveSRecordPassesSizeAndFormat) {
    FillDumpBlock(st->dump, 0x100, 2, 0x11, kMarksLoaded);
    AddSelection(st->selections, 0x100, 0x101);
    Run("_savesre a.sre,1,37");
    EXPECT_EQ(Read("save/a.sre"),
              "S3060000010011E7\r\n"
              "S3060000010111E6\r\n"
              "S70500000100F9\r\n");
}

TEST_F(ImageRows, SaveIndexedExtendsTheNameByTheVariable) {
    st->variables[1] = 16;
    FillDumpBlock(st->dump, 0, 1, 0x42, kMarksLoaded);
    AddSelection(st->selections, 0, 0);
    EXPECT_EQ(Run("_savex a.hex,%1"), ">_savex a.hex,%1\r\n\r\n*SaveAs: selection written to file");
    EXPECT_TRUE(std::filesystem::exists(dir / "save/a000010.hex"));
}

TEST_F(ImageRows, BinSaveFillsOrPacks) {
    FillDumpBlock(st->dump, 0, 2, 0x11, kMarksLoaded);
    FillDumpBlock(st->dump, 4, 2, 0x22, kMarksLoaded);
    AddSelection(st->selections, 0, 1);
    AddSelection(st->selections, 4, 5);
    EXPECT_EQ(Run("_binsave f.bin,FF"),
              ">_binsave f.bin,FF\r\n\r\n*Save Binary: selection written to binary file");
    EXPECT_EQ(Read("save/f.bin"), std::string("\x11\x11\xFF\xFF\x22\x22", 6));
    Run("_binsave p.bin");
    EXPECT_EQ(Read("save/p.bin"), std::string("\x11\x11\x22\x22", 4));
}

TEST_F(ImageRows, SetPathOfAnUnknownTypeChangesNothing) {
    const std::string before = st->PATH_LOAD;
    EXPECT_EQ(Run("_setpath FOO,x"),
              ">_setpath FOO,x\r\n*ERROR: Illegal parameters\r\nusage: _setpath <type>,<path>\r\n");
    EXPECT_EQ(result, -2);
    EXPECT_EQ(st->PATH_LOAD, before);
    Run("_setpath load,/tmp/x y");
    EXPECT_EQ(st->PATH_LOAD, "/tmp/x y");
    Run("_setpath Log,l");
    EXPECT_EQ(st->PATH_LOG, "l");
    Run("_setpath SCRIPT,s");
    EXPECT_EQ(st->PATH_SCRIPT, "s");
    Run("_setpath save,v");
    EXPECT_EQ(st->PATH_SAVE, "v");
}

TEST_F(ImageRows, ShowSelectionsOnAnEmptyListPrintsNothing) {
    EXPECT_EQ(Run("_showselections"), ">_showselections\r\n");
    Run("_addselection 10,1F");
    Run("_addselection 100,%3");
    EXPECT_EQ(Run("_showselections"),
              ">_showselections\r\nSelection 0: 000010 to 00001F\r\nSelection 1: 000100 to 000000\r\n");
    Run("_clearselections");
    EXPECT_EQ(st->selections.count, 0);
}

TEST_F(ImageRows, AddSelectionTakesVariablesAndRejectsNegativeValues) {
    st->variables[5] = 0x300;
    st->variables[6] = -1;
    Run("_addselection %5,3FF");
    ASSERT_EQ(st->selections.count, 1);
    EXPECT_EQ(st->selections.start[0], 0x300);
    EXPECT_EQ(Run("_addselection %6,3FF"),
              ">_addselection %6,3FF\r\n*ERROR: Illegal parameters\r\nusage: _addselection "
              "<start address>|<variable>,<end address>|<variable>\r\n");
    EXPECT_EQ(st->selections.count, 1);
}

TEST_F(ImageRows, TheThousandAndSecondSelectionEndsTheCommandWithTheBound) {
    for (int i = 0; i < 1001; ++i) AddSelection(st->selections, i * 4, i * 4 + 1);
    EXPECT_EQ(Run("_addselection 100000,100001"),
              ">_addselection 100000,100001\r\n*ERROR: SelectionList index 1001 out of range 0 to 1000\r\n");
    EXPECT_EQ(result, 0x4001);
    EXPECT_EQ(st->selections.count, 1001);
}

TEST_F(ImageRows, MoveAndRemoveSelection) {
    Run("_addselection 0,F");
    Run("_addselection 100,10F");
    st->variables[2] = 1;
    Run("_moveselection %2,1000");
    EXPECT_EQ(st->selections.start[1], 0x1100);
    EXPECT_EQ(Run("_moveselection 2,1"),
              ">_moveselection 2,1\r\n*ERROR: Illegal parameters\r\nusage: _moveselection "
              "<selection index>|<variable>,<displacement>|<variable>\r\n");
    Run("_removeselection 0");
    ASSERT_EQ(st->selections.count, 1);
    EXPECT_EQ(st->selections.start[0], 0x1100);
    Run("_removeselection 1");
    EXPECT_EQ(result, -2);
}

TEST_F(ImageRows, HexEditorRows) {
    Run("_addselection 10,13");
    Run("_fillmemory AB");
    EXPECT_EQ(ReadDumpByte(st->dump, 0x13), 0xAB);
    Run("_fillmemory 1234");
    EXPECT_EQ(ReadDumpByte(st->dump, 0x10), 0x34);
    EXPECT_EQ(ReadDumpByte(st->dump, 0x11), 0x12);
    Run("_copy");
    EXPECT_EQ(host.clipboardText().substr(0, 19), "000010: 34 12 34 12");
    st->variables[9] = 0x20;
    Run("_paste %9");
    EXPECT_EQ(ReadDumpByte(st->dump, 0x21), 0x12);
    EXPECT_EQ(st->selections.start[0], 0x20);
    Run("_cut");
    EXPECT_EQ(IsDefined(st->dump, 0x20), kFalse);
    host.randoms = {0.5, 0.5, 0.5, 0.5};
    Run("_randomfill");
    EXPECT_EQ(ReadDumpByte(st->dump, 0x23), 0x80);
    EXPECT_EQ(IsDefined(st->dump, 0x23), kTrue);
    Run("_clearmemory");
    EXPECT_EQ(IsDefined(st->dump, 0x23), kFalse);
    EXPECT_EQ(result, 0);
}

TEST_F(ImageRows, AWriteFailureEndsTheCommandWithItsId) {
    st->PATH_SAVE = (dir / "no-such-folder").string();
    AddSelection(st->selections, 0, 0);
    const std::string out = Run("_save a.hex");
    EXPECT_EQ(out.substr(0, 30), ">_save a.hex\r\n*ERROR: file " + st->PATH_SAVE.substr(0, 3));
    EXPECT_EQ(result, 0x2002);
}

}  // namespace
}  // namespace vortelm::shell
