// The file forms, the user scripts and the command picker, without a
// display: types, start folders, memos, what OK runs and says.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "core/Helpers.h"
#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "forms/FAssignScript.h"
#include "forms/FBinFileLoad.h"
#include "forms/FBinFileSave.h"
#include "forms/FCommandSelection.h"
#include "forms/FFileLoad.h"
#include "forms/FFileSave.h"
#include "forms/FSaveAs.h"
#include "forms/FSelectRange.h"
#include "forms/RecentFiles.h"
#include "forms/UserScripts.h"
#include "image/Dump.h"
#include "image/HexFile.h"
#include "image/SRecordFile.h"
#include "image/Selections.h"
#include "shell/Script.h"
#include "shell/Shell.h"

namespace vortelm::forms {
namespace {

namespace fs = std::filesystem;

std::string Read(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::ostringstream o;
    o << in.rdbuf();
    return o.str();
}

void Write(const fs::path& p, const std::string& text) {
    fs::create_directories(p.parent_path());
    std::ofstream(p, std::ios::binary) << text;
}

struct FileForms : ::testing::Test {
    TestHost host;
    std::unique_ptr<ProgramState> st = std::make_unique<ProgramState>(host);
    shell::Session s{*st};
    fs::path home;

    void SetUp() override {
        shell::BuildShellCommandTable(s.table);
        home = fs::temp_directory_path() /
               ("vortelm-fileforms-" + std::to_string(::getpid()) + "-" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::create_directories(home);
        st->programFolder = home.string();
        for (auto& m : st->LoadFileMemos) m.folder = home.string();
        for (auto& m : st->SaveFileMemos) m.folder = home.string();
        fs::create_directories(home / "SCRIPTS");
        fs::copy_file(fs::path(VORTELM_SOURCE_DIR) / "data/SCRIPTS/SAMPLE.HEX",
                      home / "SCRIPTS" / "SAMPLE.HEX", fs::copy_options::overwrite_existing);
    }
    void TearDown() override { fs::remove_all(home); }
    [[nodiscard]] bool logged(const std::string& t) const {
        return st->terminalBuffer.find(t) != std::string::npos;
    }
    [[nodiscard]] std::string lastBox() const {
        return host.boxes.empty() ? std::string() : host.boxes.back().text;
    }
    int indexOf(const std::vector<std::string>& list, const std::string& item) {
        for (size_t i = 0; i < list.size(); ++i)
            if (list[i] == item) return static_cast<int>(i);
        return -1;
    }
};

TEST_F(FileForms, PatternsMatchWithoutCaseAndAllFilesMatchesEveryName) {
    EXPECT_TRUE(MatchesPattern("SAMPLE.HEX", "*.hex;*.h86"));
    EXPECT_TRUE(MatchesPattern("a.H86", "*.hex;*.h86"));
    EXPECT_FALSE(MatchesPattern("a.sre", "*.hex;*.h86"));
    EXPECT_TRUE(MatchesPattern("noext", "*.*"));
    EXPECT_FALSE(MatchesPattern("a.hexx", "*.hex"));
    EXPECT_TRUE(HasExtension("/x.y/name.ini"));
    EXPECT_FALSE(HasExtension("/x.y/name"));
}

TEST_F(FileForms, LoadTypesHaveTheirTitlesFileTypesAndStartFolders) {
    fs::create_directories(home / "PREFS");
    fs::create_directories(home / "REGSET");
    fs::create_directories(home / "DRIVER");
    FFileLoad f(s);
    struct Case {
        LoadType type;
        const char* title;
        const char* firstType;
        const char* folder;
    };
    const std::string h = home.string();
    const Case cases[] = {
        {LoadType::Hex, "Load File", "Intel hex files (*.hex;*.h86)", ""},
        {LoadType::Preferences, "Load preferences", "Preference files (*.ini)", "/PREFS"},
        {LoadType::Script, "Load script", "Script files (*.scm)", "/SCRIPTS"},
        {LoadType::AssignScript, "Assign script", "Script files (*.scm)", "/SCRIPTS"},
        {LoadType::RegisterSet, "Load SFR Register Set", "Register set files (*.mrs)", "/REGSET"},
        {LoadType::Driver, "Search Driver", "Intel hex files (*.hex;*.h86)", "/DRIVER"},
    };
    for (const Case& c : cases) {
        f.SetType(c.type);
        EXPECT_EQ(f.title, c.title);
        EXPECT_EQ(f.types.front().caption, c.firstType);
        EXPECT_EQ(f.types.back().caption, "All Files (*.*)");
        EXPECT_EQ(f.folder, h + c.folder) << c.title;
    }
    f.SetType(LoadType::Hex);
    EXPECT_EQ(f.types.size(), 3u);
    EXPECT_EQ(f.types[1].caption, "SRE files (*.sre)");
}

TEST_F(FileForms, AMemoThatNamesAFolderShowsThatFolderWithoutAName) {
    // an empty path in the preferences leaves the data home's parent and
    // its last part as the name
    st->LoadFileMemos[0].folder = home.parent_path().string();
    st->LoadFileMemos[0].name = home.filename().string();
    FFileLoad f(s);
    f.SetType(LoadType::Hex);
    EXPECT_EQ(f.folder, home.string());
    EXPECT_EQ(f.TFilename, "");
}

TEST_F(FileForms, ATypeChangeFiltersTheFileList) {
    Write(home / "a.hex", ":00000001FF\r\n");
    Write(home / "b.H86", ":00000001FF\r\n");
    Write(home / "c.sre", "S9030000FC\r\n");
    Write(home / "d.txt", "x");
    FFileLoad f(s);
    f.SetType(LoadType::Hex);
    EXPECT_EQ(f.XFilelist, (std::vector<std::string>{"a.hex", "b.H86"}));
    f.DFiletype_Click(1);
    EXPECT_EQ(f.XFilelist, (std::vector<std::string>{"c.sre"}));
    f.DFiletype_Click(2);
    EXPECT_EQ(f.XFilelist.size(), 4u);
    // the folder list: up, and the subfolders
    EXPECT_EQ(f.XDirlist.front(), "..");
    EXPECT_NE(indexOf(f.XDirlist, "SCRIPTS"), -1);
    f.XDirlist_DblClick(indexOf(f.XDirlist, "SCRIPTS"));
    EXPECT_EQ(f.folder, (home / "SCRIPTS").string());
    f.DFiletype_Click(0);
    EXPECT_EQ(f.XFilelist, (std::vector<std::string>{"SAMPLE.HEX"}));
    f.XDirlist_DblClick(0);
    EXPECT_EQ(f.folder, home.string());
}

TEST_F(FileForms, NoFileChosenSaysSoAndTheFormStays) {
    FFileLoad f(s);
    f.SetType(LoadType::Hex);
    EXPECT_FALSE(f.BOk_Click());
    EXPECT_EQ(lastBox(), "Please select a file !");
    f.TFilename = "missing.hex";
    EXPECT_FALSE(f.BOk_Click());
    EXPECT_EQ(host.boxes.size(), 2u);
}

TEST_F(FileForms, LoadingTheSampleReportsMarksAndRemembersIt) {
    FFileLoad f(s);
    f.SetType(LoadType::Hex);
    f.XDirlist_DblClick(indexOf(f.XDirlist, "SCRIPTS"));
    f.XFilelist_Click(indexOf(f.XFilelist, "SAMPLE.HEX"));
    EXPECT_EQ(f.TFilename, "SAMPLE.HEX");
    ASSERT_TRUE(f.BOk_Click());
    EXPECT_TRUE(logged("*Load: "));
    EXPECT_TRUE(logged(" bytes loaded"));
    EXPECT_GT(st->selections.count, 0);
    EXPECT_EQ(st->LoadFileMemos[0].folder, (home / "SCRIPTS").string());
    EXPECT_EQ(st->LoadFileMemos[0].name, "SAMPLE.HEX");
    // the next showing starts at the memo
    FFileLoad again(s);
    again.SetType(LoadType::Hex);
    EXPECT_EQ(again.folder, (home / "SCRIPTS").string());
    EXPECT_EQ(again.TFilename, "SAMPLE.HEX");
}

TEST_F(FileForms, TheSRecordTypeReadsSRecords) {
    // one S1 record of two bytes at 0x0100
    Write(home / "two.sre", "S10501001234B3\r\nS9030000FC\r\n");
    FFileLoad f(s);
    f.SetType(LoadType::Hex);
    f.DFiletype_Click(1);
    f.TFilename = "two.sre";
    ASSERT_TRUE(f.BOk_Click());
    EXPECT_EQ(ReadDumpByte(st->dump, 0x100), 0x12);
    EXPECT_EQ(ReadDumpByte(st->dump, 0x101), 0x34);
    EXPECT_EQ(st->LoadFileMemos[0].type, 1);
}

TEST_F(FileForms, TheScriptTypeRunsTheScriptAndPutsItAtTheTop) {
    Write(home / "SCRIPTS" / "hello.scm", "_print \"hello from a script\"\r\n");
    FFileLoad f(s);
    f.SetType(LoadType::Script);
    f.TFilename = "hello.scm";
    ASSERT_TRUE(f.BOk_Click());
    EXPECT_TRUE(logged("hello from a script"));
    EXPECT_EQ(st->lastScriptFiles[0], (home / "SCRIPTS" / "hello.scm").string());
}

TEST_F(FileForms, ThePickedHookTakesTheFileInsteadOfRunningIt) {
    Write(home / "SCRIPTS" / "hello.scm", "_print \"not run\"\r\n");
    FFileLoad f(s);
    f.SetType(LoadType::Script);
    std::string got;
    f.picked = [&](const std::string& p) { got = p; };
    f.TFilename = "hello.scm";
    ASSERT_TRUE(f.BOk_Click());
    EXPECT_EQ(got, (home / "SCRIPTS" / "hello.scm").string());
    EXPECT_FALSE(logged("not run"));
}

TEST_F(FileForms, AssignScriptAsksForAButtonUntilOneToEightThenForAName) {
    Write(home / "SCRIPTS" / "go.scm", "_print \"x\"\r\n");
    FFileLoad f(s);
    f.SetType(LoadType::AssignScript);
    f.TFilename = "go.scm";
    host.inputAnswers = {std::string("9"), std::string("abc"), std::string("3"),
                         std::string("Go!")};
    ASSERT_TRUE(f.BOk_Click());
    ASSERT_EQ(host.inputPrompts.size(), 4u);
    EXPECT_EQ(host.inputPrompts[0], "Which User Script Button would you like to configure (1-8) ?");
    EXPECT_EQ(host.inputPrompts[2], host.inputPrompts[0]);
    EXPECT_EQ(host.inputPrompts[3], "Please assign a name to this script:");
    EXPECT_EQ(st->userScripts[2].path, (home / "SCRIPTS" / "go.scm").string());
    EXPECT_EQ(st->userScripts[2].name, "Go!");
    EXPECT_EQ(st->userScripts[2].flag, kTrue);
}

TEST_F(FileForms, TheDriverTypeGivesItsAddressesAndLeavesTheDumpAsItWas) {
    Write(home / "DRIVER" / "drv.hex", ":0400F000AABBCCDDEE\r\n:00000001FF\r\n");
    FFileLoad f(s);
    f.SetType(LoadType::Driver);
    f.TFilename = "drv.hex";
    ASSERT_TRUE(f.BOk_Click());
    EXPECT_EQ(f.driverStart, "0000F0");
    EXPECT_EQ(f.driverEnd, "0000F3");
    EXPECT_EQ(st->selections.count, 0);
    EXPECT_EQ(IsDefined(st->dump, 0xF0), kFalse);
}

TEST_F(FileForms, AnUnreadablePlaceIsNotReadyAndTheOldOneStays) {
    FFileLoad f(s);
    f.SetType(LoadType::Hex);
    const std::string before = f.folder;
    const int place = f.XDrivelist;
    f.places.push_back({"media: gone", (home / "no-such-medium").string()});
    EXPECT_FALSE(f.XDrivelist_Change(static_cast<int>(f.places.size()) - 1));
    EXPECT_EQ(lastBox(), "DRIVE NOT READY");
    EXPECT_EQ(f.folder, before);
    EXPECT_EQ(f.XDrivelist, place);
    // the places: the root, the home folder and the data home
    EXPECT_EQ(f.places.front().path, "/");
    bool dataHome = false;
    for (const Place& p : f.places) dataHome = dataHome || p.path == home.string();
    EXPECT_TRUE(dataHome);
}

TEST_F(FileForms, SavePreferencesAddsIniAndSaysWhenNoName) {
    FFileSave f(*st);
    f.SetType(SaveType::Preferences);
    EXPECT_EQ(f.title, "Save Preferences");
    EXPECT_EQ(f.types.front().caption, "Preference files (*.ini)");
    EXPECT_FALSE(f.BOk_Click());
    EXPECT_EQ(lastBox(), "Please insert a filename !");
    EXPECT_TRUE(f.focusFilename);
    f.TFilename = "mine";
    ASSERT_TRUE(f.BOk_Click());
    EXPECT_TRUE(fs::exists(home / "mine.ini"));
    EXPECT_NE(Read(home / "mine.ini").find("[Files]"), std::string::npos);
    EXPECT_EQ(st->SaveFileMemos[1].name, "mine.ini");
}

TEST_F(FileForms, RegisterSetFormsSaveAndLoadTheMrsFile) {
    fs::create_directories(home / "REGSET");
    FFileSave f(*st);
    f.SetType(SaveType::RegisterSet);
    EXPECT_EQ(f.title, "Save SFR Register Set");
    EXPECT_EQ(f.folder, home.string() + "/REGSET");
    f.TFilename = "set";
    ASSERT_TRUE(f.BOk_Click());
    EXPECT_TRUE(fs::exists(home / "REGSET" / "set.mrs"));
    FFileLoad l(s);
    l.SetType(LoadType::RegisterSet);
    EXPECT_EQ(l.XFilelist, (std::vector<std::string>{"set.mrs"}));
    l.XFilelist_Click(0);
    EXPECT_TRUE(l.BOk_Click());
}

TEST_F(FileForms, SaveAsWritesTheSelectionsAsTheSaveRowDoes) {
    ASSERT_EQ(LoadHexCommand(*st, (home / "SCRIPTS" / "SAMPLE.HEX").string()), 0);
    FSaveAs f(*st);
    f.initialize();
    f.DFiletype_Click(1);
    EXPECT_EQ(f.formats(), (std::vector<int>{19, 28, 37}));
    f.OFormat = 28;
    f.TRecordsize = "16";
    f.TFilename = "out";
    ASSERT_TRUE(f.BOk_Click());
    EXPECT_TRUE(logged("*SaveAs: selection written to file"));
    ASSERT_TRUE(fs::exists(home / "out.sre"));
    (void)SaveSRecordCommand(*st, (home / "row.sre").string(), 16, 28);
    EXPECT_EQ(Read(home / "out.sre"), Read(home / "row.sre"));
    EXPECT_EQ(st->SAVEFORMAT, 28);
    EXPECT_EQ(st->SAVEFILETYPE, 1);
    EXPECT_EQ(st->saveFile.name, "out.sre");
}

TEST_F(FileForms, SaveAsAsksBeforeOverwritingAndANoKeepsTheForm) {
    AddSelection(st->selections, 0, 15);
    Write(home / "old.hex", "keep");
    FSaveAs f(*st);
    f.initialize();
    f.DFiletype_Click(0);
    f.TFilename = "old.hex";
    host.messageAnswers = {MsgAnswer::No};
    EXPECT_FALSE(f.BOk_Click());
    EXPECT_EQ(lastBox(), "File allready exists ! Overwrite ?");
    EXPECT_EQ(Read(home / "old.hex"), "keep");
    host.messageAnswers = {MsgAnswer::Yes};
    EXPECT_TRUE(f.BOk_Click());
    EXPECT_NE(Read(home / "old.hex"), "keep");
}

TEST_F(FileForms, SaveAsByBlockWritesTheRangeAnd37WritesAs28) {
    for (int a = 0; a < 32; ++a) {
        WriteDumpByte(st->dump, a, static_cast<uint8_t>(a));
        SetDefined(st->dump, a, kTrue);
    }
    // the block writer stops at the end of the first selection
    AddSelection(st->selections, 0, 0x1F);
    FSaveAs f(*st);
    f.initialize();
    f.DFiletype_Click(1);
    f.OBySelection = false;
    EXPECT_FALSE(f.TStartAddress_Change("XYZ"));
    EXPECT_EQ(lastBox(), "No Hexadecimal number !");
    EXPECT_TRUE(f.TStartAddress_Change("000000"));
    EXPECT_TRUE(f.TEndAddress_Change("00001F"));
    f.TRecordsize = "16";
    f.OFormat = 37;
    f.TFilename = "blk.sre";
    ASSERT_TRUE(f.BOk_Click());
    const std::string text = Read(home / "blk.sre");
    EXPECT_NE(text.find("S2"), std::string::npos);
    EXPECT_EQ(text.find("S3"), std::string::npos);
    EXPECT_FALSE(logged("*SaveAs:"));
}

TEST_F(FileForms, SaveAsWithoutNameSaysSo) {
    FSaveAs f(*st);
    f.initialize();
    f.TFilename.clear();
    EXPECT_FALSE(f.BOk_Click());
    EXPECT_EQ(lastBox(), "Please insert a filename !");
    f.TFilename = "x";
    EXPECT_EQ(f.TargetPath(), home.string() + "/x.hex");
    f.DFiletype_Click(1);
    EXPECT_EQ(f.TargetPath(), home.string() + "/x.sre");
}

TEST_F(FileForms, BinaryLoadChecksFileAndOffset) {
    Write(home / "img.bin", std::string("\x01\x02\x03", 3));
    FBinFileLoad f(*st);
    EXPECT_EQ(f.TOffset, "000000");
    EXPECT_EQ(f.types.front().caption, "Binary files (*.bin)");
    EXPECT_FALSE(f.BOk_Click());
    EXPECT_EQ(lastBox(), "Please select a file !");
    f.XFilelist_Click(indexOf(f.XFilelist, "img.bin"));
    f.TOffset = "G1";
    EXPECT_FALSE(f.BOk_Click());
    EXPECT_EQ(lastBox(), "The address offset must be a valid hexadecimal value !");
    EXPECT_EQ(host.boxes.back().icon, MsgIcon::Stop);
    f.TOffset = "1000";
    ASSERT_TRUE(f.BOk_Click());
    EXPECT_EQ(ReadDumpByte(st->dump, 0x1002), 0x03);
    EXPECT_TRUE(logged("*Load Binary: 3 bytes loaded"));
}

TEST_F(FileForms, BinarySaveChecksNameAndFillAndAddsBin) {
    for (int a : {0x10, 0x13}) {
        WriteDumpByte(st->dump, a, 0xAA);
        SetDefined(st->dump, a, kTrue);
    }
    AddSelection(st->selections, 0x10, 0x10);
    AddSelection(st->selections, 0x13, 0x13);
    FBinFileSave f(*st);
    EXPECT_FALSE(f.BOk_Click());
    EXPECT_EQ(lastBox(), "Please insert a filename !");
    f.TFilename = "img";
    f.TFillchar = "100";
    EXPECT_FALSE(f.BOk_Click());
    EXPECT_EQ(lastBox(), "Fillchar must be a valid hexadecimal byte value !");
    EXPECT_EQ(host.boxes.back().icon, MsgIcon::Stop);
    f.TFillchar = "5A";
    ASSERT_TRUE(f.BOk_Click());
    EXPECT_TRUE(logged("*Save Binary: selection written to binary file"));
    EXPECT_EQ(Read(home / "img.bin"), "\xAA\x5A\x5A\xAA");
}

TEST_F(FileForms, SelectRangeBlocksChecksAndAdds) {
    FSelectRange f(*st);
    EXPECT_EQ(f.title, "Select Range");
    EXPECT_EQ(f.TStartaddress, "000000");
    EXPECT_EQ(f.IBlocks, (std::vector<int32_t>{16, 256, 512, 1024, 2048, 4096, 8192, 16384, 32768,
                                               65536, 131072, 262144, 524288, 1048576}));
    EXPECT_TRUE(f.TStartaddress_Change("001000"));
    f.IBlocks_Click(1);
    EXPECT_EQ(f.TEndAddress, "0010FF");
    EXPECT_FALSE(f.TEndAddress_Change("0012345"));
    EXPECT_EQ(lastBox(), "No 6-digit hexadecimal number!");
    EXPECT_EQ(f.TEndAddress, "000000");
    EXPECT_FALSE(f.TStartaddress_Change("12G"));
    EXPECT_EQ(f.TStartaddress, "000000");
    f.TStartaddress_Change("002000");
    f.TEndAddress_Change("00200F");
    ASSERT_TRUE(f.BOk_Click());
    ASSERT_EQ(st->selections.count, 1);
    EXPECT_EQ(st->selections.start[0], 0x2000);
    EXPECT_EQ(st->selections.end[0], 0x200F);
}

// ---- user scripts

TEST_F(FileForms, RunningTheScriptAtPlace3MovesItToTheTopWithoutDuplicate) {
    std::vector<std::string> names;
    for (int i = 0; i < 5; ++i) {
        const fs::path p = home / ("s" + std::to_string(i) + ".scm");
        Write(p, "_print \"s" + std::to_string(i) + "\"\r\n");
        names.push_back(p.string());
    }
    for (int i = 4; i >= 0; --i) shell::SetLastScriptFile(*st, names[static_cast<size_t>(i)]);
    ASSERT_EQ(st->lastScriptFiles[3], names[3]);
    UScriptLastfile_Click(s, 3);
    EXPECT_TRUE(logged("s3"));
    EXPECT_EQ(st->lastScriptFiles[0], names[3]);
    EXPECT_EQ(st->lastScriptFiles[1], names[0]);
    EXPECT_EQ(st->lastScriptFiles[3], names[2]);
    EXPECT_EQ(st->lastScriptFiles[4], names[4]);
    EXPECT_EQ(st->lastScriptFiles[5], "");
}

TEST_F(FileForms, TheSeventeenthScriptPushesOutTheOldest) {
    for (int i = 0; i < 17; ++i) shell::SetLastScriptFile(*st, "s" + std::to_string(i) + ".scm");
    EXPECT_EQ(st->lastScriptFiles[0], "s16.scm");
    EXPECT_EQ(st->lastScriptFiles[15], "s1.scm");
    for (const std::string& n : st->lastScriptFiles) EXPECT_NE(n, "s0.scm");
}

TEST_F(FileForms, AUserScriptWhoseFileWasDeletedLogsNotFound) {
    const fs::path p = home / "gone.scm";
    Write(p, "_print \"x\"\r\n");
    st->userScripts[1] = UserScript{p.string(), "Gone", kTrue};
    fs::remove(p);
    BFunc_Click(s, 1);
    EXPECT_TRUE(logged("*ERROR: Script File not found"));
    st->terminalBuffer.clear();
    shell::SetLastScriptFile(*st, p.string());
    UScriptLastfile_Click(s, 0);
    EXPECT_TRUE(logged("*ERROR: Script File not found"));
}

TEST_F(FileForms, AssignScriptRowsStoreOrStopAtAMissingFile) {
    Write(home / "a.scm", "_print \"a\"\r\n");
    st->userScripts[0] = UserScript{(home / "a.scm").string(), "A", kTrue};
    FAssignScript f(*st);
    EXPECT_EQ(f.rows[0].TName, "A");
    f.BSearch_Click(4);
    f.AssignNew((home / "a.scm").string());
    EXPECT_EQ(f.rows[4].TFilename, (home / "a.scm").string());
    EXPECT_EQ(f.rows[4].TName, "a.scm");
    f.rows[6] = {(home / "none.scm").string(), "None"};
    EXPECT_FALSE(f.BOk_Click());
    EXPECT_EQ(lastBox(), "User Skript File No. 7 does not exist ");
    EXPECT_TRUE(st->userScripts[4].path.empty());
    f.rows[6] = {};
    f.rows[0] = {};
    ASSERT_TRUE(f.BOk_Click());
    EXPECT_TRUE(st->userScripts[0].path.empty());
    EXPECT_EQ(st->userScripts[4].name, "a.scm");
    EXPECT_EQ(st->userScripts[4].flag, kTrue);
}

TEST_F(FileForms, EditStartsTheEditorWithoutAShell) {
    FAssignScript f(*st);
    EXPECT_FALSE(f.BEdit_Click(0));
    EXPECT_TRUE(host.started.empty());
    f.rows[0].TFilename = "/tmp/x y.scm";
    EXPECT_TRUE(f.BEdit_Click(0));
    ASSERT_EQ(host.started.size(), 1u);
    EXPECT_EQ(host.started[0].args.back(), "/tmp/x y.scm");
    const ProgramCall v = EditorCall("gvim -f", "nano", "f.scm");
    EXPECT_EQ(v.program, "gvim");
    EXPECT_EQ(v.args, (std::vector<std::string>{"-f", "f.scm"}));
    EXPECT_EQ(EditorCall(nullptr, "kate", "f.scm").program, "kate");
    EXPECT_EQ(EditorCall("", "  ", "f.scm").program, "xdg-open");
}

TEST_F(FileForms, RemovingAnAssignmentAsksUntilOneToEight) {
    st->userScripts[7] = UserScript{"x.scm", "X", kTrue};
    host.inputAnswers = {std::string("0"), std::string("8")};
    EXPECT_EQ(RemoveUserScriptAssignment(*st), 7);
    EXPECT_EQ(host.inputPrompts[0],
              "Which user script assignment would you like to remove (1-8) ?");
    EXPECT_EQ(host.inputPrompts.size(), 2u);
    EXPECT_TRUE(st->userScripts[7].path.empty());
    host.inputAnswers = {std::nullopt};
    EXPECT_EQ(RemoveUserScriptAssignment(*st), -1);
    host.inputAnswers = {std::string("")};
    EXPECT_EQ(RemoveUserScriptAssignment(*st), -1);
}

// ---- the command picker

TEST_F(FileForms, ThePickerListsTheCommandsUnderTheirGroups) {
    FCommandSelection f(s.table);
    ASSERT_FALSE(f.LCommands.empty());
    EXPECT_EQ(f.LCommands[0], "_help");
    const int files = indexOf(f.LCommands, "FILE FUNCTIONS");
    ASSERT_GT(files, 0);
    EXPECT_EQ(f.LCommands[static_cast<size_t>(files - 1)], "");
    EXPECT_EQ(f.LCommands[static_cast<size_t>(files + 1)],
              "**********************************************************");
    f.LCommands_Click(indexOf(f.LCommands, "_print"));
    EXPECT_EQ(f.LDescription, "prints information to log window and log file");
    EXPECT_EQ(f.LUsage, "_print <string>|<SFR>|<variable>[,....]");
    ASSERT_FALSE(f.LParameters.empty());
    EXPECT_EQ(f.LParameters[0], "<string>|<SFR>|<variable>\tString, SFR or variable to print");
    EXPECT_EQ(f.Takeit(), "_print");
}

TEST_F(FileForms, AHeadingTakenGoesAsItStandsAndClearsTheInfo) {
    FCommandSelection f(s.table);
    f.LCommands_Click(indexOf(f.LCommands, "_print"));
    const int heading = indexOf(f.LCommands, "FILE FUNCTIONS");
    f.LCommands_Click(heading);
    EXPECT_EQ(f.LDescription, "");
    EXPECT_EQ(f.LUsage, "");
    EXPECT_TRUE(f.LParameters.empty());
    EXPECT_EQ(f.Takeit(), "FILE FUNCTIONS");
    // unlisted rows stay out
    for (int i = 0; i < s.table.shellCommandCount; ++i) {
        const auto& r = s.table.shellCommands[static_cast<size_t>(i)];
        if (r.listed == 0) {
            EXPECT_EQ(indexOf(f.LCommands, r.name), -1) << r.name;
        }
    }
}

}  // namespace
}  // namespace vortelm::forms

namespace vortelm::forms {
namespace {

TEST(RecentFilesList, NewestFirstEachOnceAndAtMostEight) {
    RecentFiles r;
    for (int i = 0; i < 10; ++i) r.add("/f" + std::to_string(i) + ".hex");
    ASSERT_EQ(r.items().size(), RecentFiles::kCount);
    EXPECT_EQ(r.items().front(), "/f9.hex");
    EXPECT_EQ(r.items().back(), "/f2.hex");
    r.add("/f5.hex");
    EXPECT_EQ(r.items().front(), "/f5.hex");
    EXPECT_EQ(std::count(r.items().begin(), r.items().end(), "/f5.hex"), 1);
    EXPECT_EQ(r.items().size(), RecentFiles::kCount);
    r.add("");
    EXPECT_EQ(r.items().front(), "/f5.hex");
}

TEST(RecentFilesList, KeptInAFileThatReadsBackAndSkipsWhatIsNoPath) {
    const fs::path file =
        fs::temp_directory_path() / ("vortelm-recent-" + std::to_string(::getpid()) + ".txt");
    fs::remove(file);
    {
        RecentFiles r;
        r.attach(file.string());
        EXPECT_TRUE(r.items().empty());
        r.add("/a.hex");
        r.add("/b.sre");
    }
    EXPECT_EQ(Read(file), "/b.sre\n/a.hex\n");
    RecentFiles back;
    back.attach(file.string());
    EXPECT_EQ(back.items(), (std::vector<std::string>{"/b.sre", "/a.hex"}));
    fs::remove(file);
    RecentFiles odd;
    odd.FromText("\r\n/x.hex\r\n/x.hex\n\n" + std::string(5000, 'p') + "\n/y.bin");
    EXPECT_EQ(odd.items(), (std::vector<std::string>{"/x.hex", "/y.bin"}));
    odd.add("two\nlines");
    EXPECT_EQ(odd.items().size(), 2u);
}

TEST(ImageKinds, ByTheNameOfTheFile) {
    EXPECT_EQ(ImageKindOf("/a/B.HEX"), ImageKind::Hex);
    EXPECT_EQ(ImageKindOf("x.h86"), ImageKind::Hex);
    EXPECT_EQ(ImageKindOf("x.S19"), ImageKind::SRecord);
    EXPECT_EQ(ImageKindOf("x.sre"), ImageKind::SRecord);
    EXPECT_EQ(ImageKindOf("x.bin"), ImageKind::Binary);
}

}  // namespace
}  // namespace vortelm::forms
