#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "core/TestHost.h"
#include "image/Dump.h"
#include "sfr/SfrSets.h"
#include "sfr/SfrTable.h"

namespace vortelm {
namespace {

namespace fs = std::filesystem;

constexpr const char* kTable =
    "SFR 0xFF12 SYSCON\n"
    "SFR 0xFF10 PSW\n"
    "SFR 0xFE12 SP\n"
    "SFR 0xFE10 CP\n"
    "SFR 0xFFB0 S0CON\n"
    "SFR 0xFE00 A_REGISTER_WITH_A_LONG_NAME\n";

// A data home with a register table and a state on a test host.
class Sets : public ::testing::Test {
  protected:
    void SetUp() override {
        char tmpl[] = "/tmp/vortelm-sets-XXXXXX";
        dir = ::mkdtemp(tmpl);
        st.programFolder = dir;
        InitDumpMemory(st.dump);
        LoadTable(kTable);
        ClearSfrSets(st);
    }
    void TearDown() override { fs::remove_all(dir); }

    void LoadTable(const std::string& text, const std::string& name = "T") {
        Write(name + ".SFR", text);
        fs::remove(Path(name + ".sb"));
        ASSERT_EQ(ReadSfrFile(st, Path(name + ".SFR")), 0);
    }
    [[nodiscard]] std::string Path(const std::string& name) const { return dir + "/" + name; }
    void Write(const std::string& name, const std::string& text) const {
        std::ofstream f(Path(name), std::ios::binary);
        f << text;
    }
    [[nodiscard]] std::string Read(const std::string& name) const {
        std::ifstream f(Path(name), std::ios::binary);
        std::ostringstream s;
        s << f.rdbuf();
        return s.str();
    }
    int32_t Index(const std::string& name) {
        const int32_t i = SfrIndexByName(st, name);
        EXPECT_GE(i, 0) << name;
        return i;
    }
    void Add(const std::string& name, int set = -1) {
        AddSfrToSet(st, set < 0 ? st.currentSfrSet : set, Index(name));
    }
    [[nodiscard]] std::vector<std::string> Names(int set) const {
        const SfrSet& s = st.sfrSets[static_cast<size_t>(set)];
        return {s.names.begin(), s.names.begin() + s.count};
    }
    [[nodiscard]] std::vector<std::string> ListNames() const {
        std::vector<std::string> v;
        for (const auto& l : st.sfrList.lines) v.push_back(l.substr(0, l.find(' ')));
        return v;
    }
    void Word(int32_t address, int value) {
        WriteDumpByte(st.dump, address, static_cast<uint8_t>(value & 0xFF));
        WriteDumpByte(st.dump, address + 1, static_cast<uint8_t>(value >> 8));
    }

    std::string dir;
    TestHost host;
    ProgramState st{host};
};

using V = std::vector<std::string>;

TEST_F(Sets, ClearGivesEightEmptySetsAndSetZero) {
    Add("PSW");
    st.currentSfrSet = 3;
    ClearSfrSets(st);
    EXPECT_EQ(st.sfrSetCount, 8);
    EXPECT_EQ(st.currentSfrSet, 0);
    for (int s = 0; s < 8; ++s) EXPECT_EQ(st.sfrSets[static_cast<size_t>(s)].count, 0);
    EXPECT_TRUE(st.sfrList.lines.empty());
}

TEST_F(Sets, ListLineShowsNameAddressAndTheWordFromTheDump) {
    Word(0xFF12, 0x0084);
    Add("SYSCON");
    ASSERT_EQ(st.sfrList.lines.size(), 1u);
    EXPECT_EQ(st.sfrList.lines[0], "SYSCON" + std::string(17, ' ') + "00FF12 0084");
    EXPECT_EQ(st.sfrList.lines[0].size(), 23u + 11u);
    // a name is cut to 22 characters in the list and to 19 in the listing
    const int32_t longName = Index("A_REGISTER_WITH_A_LONG_NAME");
    EXPECT_EQ(SfrListLine(st, longName), "A_REGISTER_WITH_A_LONG 00FE00 0000");
    EXPECT_EQ(SfrShowLine(st, longName), "A_REGISTER_WITH_A_L 00FE00 0000");
    EXPECT_EQ(SfrShowLine(st, Index("SYSCON")), "SYSCON" + std::string(14, ' ') + "00FF12 0084");
}

TEST_F(Sets, AddingARegisterTwiceChangesNothing) {
    Add("PSW");
    Add("SP");
    const uint64_t changes = st.sfrList.changes;
    Add("psw");
    EXPECT_EQ(Names(0), (V{"PSW", "SP"}));
    EXPECT_EQ(ListNames(), (V{"PSW", "SP"}));
    EXPECT_EQ(st.sfrList.changes, changes);
    EXPECT_TRUE(SfrInSet(st, 0, Index("SP")));
    EXPECT_FALSE(SfrInSet(st, 1, Index("SP")));
}

TEST_F(Sets, AddingToASetNotOnShowLeavesTheList) {
    Add("PSW", 2);
    EXPECT_EQ(Names(2), (V{"PSW"}));
    EXPECT_TRUE(st.sfrList.lines.empty());
}

TEST_F(Sets, A257thRegisterIsTheBoundOfTheSet) {
    std::string text;
    for (int i = 0; i < 257; ++i)
        text += "SFR 0x" + std::to_string(100000 + i).substr(1) + " R" + std::to_string(i) + "\n";
    LoadTable(text, "BIG");
    for (int i = 0; i < 256; ++i) Add("R" + std::to_string(i));
    EXPECT_EQ(st.sfrSets[0].count, 256);
    EXPECT_THROW(Add("R256"), RunTimeError);
    EXPECT_EQ(st.sfrSets[0].count, 256);
    EXPECT_EQ(st.sfrList.lines.size(), 256u);
}

TEST_F(Sets, RemovalSelectsTheLineAtTheOldPlaceOrTheNewLastLine) {
    for (const char* n : {"PSW", "SP", "CP", "S0CON"}) Add(n);
    RemoveSfrFromCurrentSet(st, Index("SP"));
    EXPECT_EQ(Names(0), (V{"PSW", "CP", "S0CON"}));
    EXPECT_EQ(ListNames(), (V{"PSW", "CP", "S0CON"}));
    EXPECT_EQ(st.sfrList.listIndex, 1);
    EXPECT_EQ(st.sfrList.selected, (std::vector<uint8_t>{0, 1, 0}));
    // the last line: the new last line is selected
    RemoveSfrFromCurrentSet(st, Index("S0CON"));
    EXPECT_EQ(ListNames(), (V{"PSW", "CP"}));
    EXPECT_EQ(st.sfrList.listIndex, 1);
    EXPECT_EQ(st.sfrList.selected, (std::vector<uint8_t>{0, 1}));
    // a register not in the set changes nothing
    RemoveSfrFromCurrentSet(st, Index("SYSCON"));
    EXPECT_EQ(ListNames(), (V{"PSW", "CP"}));
    RemoveSfrFromCurrentSet(st, Index("PSW"));
    RemoveSfrFromCurrentSet(st, Index("CP"));
    EXPECT_TRUE(st.sfrList.lines.empty());
    EXPECT_EQ(st.sfrSets[0].count, 0);
}

TEST_F(Sets, RemovalFromASetNotOnShowTakesALineFromTheListShown) {
    for (const char* n : {"PSW", "SP", "CP"}) Add(n);
    Add("SYSCON", 1);
    Add("SP", 1);
    RemoveSfrFromSet(st, 1, Index("SP"));  // place 1 in set 1
    EXPECT_EQ(Names(1), (V{"SYSCON"}));
    EXPECT_EQ(Names(0), (V{"PSW", "SP", "CP"}));
    EXPECT_EQ(ListNames(), (V{"PSW", "CP"}));
    // viewing set 0 again puts its lines right
    ViewSfrSet(st, 1);
    ViewSfrSet(st, 0);
    EXPECT_EQ(ListNames(), (V{"PSW", "SP", "CP"}));
}

TEST_F(Sets, RemovalFromASetWhoseLineTheListLacksIsTheBound) {
    Add("PSW", 1);
    Add("SP", 1);
    Add("CP", 1);
    Add("SYSCON");
    EXPECT_THROW(RemoveSfrFromSet(st, 1, Index("CP")), RunTimeError);
    EXPECT_EQ(Names(1), (V{"PSW", "SP", "CP"}));
    EXPECT_EQ(ListNames(), (V{"SYSCON"}));
}

TEST_F(Sets, ShellRemovalReselectsOnlyWhenTheIndexIsTheSetNumber) {
    // sorted table: A_REGISTER... 0, CP 1, ONES 2, PSW 3, S0CON 4, SP 5
    ASSERT_EQ(Index("CP"), 1);
    ViewSfrSet(st, 1);
    for (const char* n : {"PSW", "SP", "CP"}) Add(n);
    RemoveSfrFromSet(st, 1, Index("SP"));
    EXPECT_EQ(ListNames(), (V{"PSW", "CP"}));
    EXPECT_EQ(st.sfrList.listIndex, -1);
    EXPECT_EQ(st.sfrList.selected, (std::vector<uint8_t>{0, 0}));
    RemoveSfrFromSet(st, 1, Index("CP"));  // index 1 is the number of the set on show
    EXPECT_EQ(ListNames(), (V{"PSW"}));
    EXPECT_EQ(st.sfrList.listIndex, 0);
    EXPECT_EQ(st.sfrList.selected, (std::vector<uint8_t>{1}));
}

TEST_F(Sets, SwapExchangesLinesAndEntries) {
    for (const char* n : {"PSW", "SP", "CP"}) Add(n);
    SwapSfrLines(st, 0, 2);
    EXPECT_EQ(Names(0), (V{"CP", "SP", "PSW"}));
    EXPECT_EQ(ListNames(), (V{"CP", "SP", "PSW"}));
    EXPECT_EQ(st.sfrSets[0].entries[0], Index("CP"));
    EXPECT_THROW(SwapSfrLines(st, 2, 3), RunTimeError);
}

TEST_F(Sets, ViewingTheCurrentSetDoesNothingAnotherRefreshesWhenOn) {
    Add("PSW");
    Add("SP", 3);
    ViewSfrSet(st, 0);
    EXPECT_EQ(host.refreshSfrViewCount, 0);
    ViewSfrSet(st, 3);
    EXPECT_EQ(st.currentSfrSet, 3);
    EXPECT_EQ(ListNames(), (V{"SP"}));
    EXPECT_EQ(host.refreshSfrViewCount, 1);
    st.REFRESHSFR = 0;
    ViewSfrSet(st, 0);
    EXPECT_EQ(ListNames(), (V{"PSW"}));
    EXPECT_EQ(host.refreshSfrViewCount, 1);
}

TEST_F(Sets, ANewTableDropsMissingRegistersFromAllSetsKeepingTheOrder) {
    for (const char* n : {"PSW", "SP", "CP", "S0CON"}) Add(n);
    for (const char* n : {"S0CON", "SYSCON", "SP"}) Add(n, 4);
    LoadTable("SFR 0xFF10 PSW\nSFR 0xFE10 CP\nSFR 0xFF12 SYSCON\nSFR 0xFE20 NEWONE\n", "OTHER");
    ReloadSfrSets(st);
    EXPECT_EQ(Names(0), (V{"PSW", "CP"}));
    EXPECT_EQ(ListNames(), (V{"PSW", "CP"}));
    EXPECT_EQ(Names(4), (V{"SYSCON"}));
    EXPECT_EQ(st.sfrSets[0].entries[1], Index("CP"));
    EXPECT_EQ(host.refreshSfrViewCount, 1);
}

TEST_F(Sets, TitleShowsFourCharactersOnTheTab) {
    SetSfrSetTitle(st, 2, "ALPHA");
    EXPECT_EQ(SfrTabCaption(st, 2), "ALPH");
    EXPECT_EQ(st.sfrSets[2].title, "ALPHA");
    SetSfrSetTitle(st, 2, "");
    EXPECT_EQ(SfrTabCaption(st, 2), "");
}

TEST_F(Sets, RebuildTakesTheCurrentSetsEntryAtEachPlace) {
    Add("PSW");
    Word(0xFF10, 0xBEEF);
    EXPECT_EQ(st.sfrList.lines[0].substr(23), "00FF10 0000");
    RebuildSfrListLines(st);
    EXPECT_EQ(st.sfrList.lines[0].substr(23), "00FF10 BEEF");
}

TEST_F(Sets, ClipboardTakesTheSelectedLinesEachAfterALineEnd) {
    for (const char* n : {"PSW", "SP", "CP"}) Add(n);
    st.sfrList.selected = {1, 0, 1};
    EXPECT_EQ(SfrListClipboardText(st),
              "\r\n" + st.sfrList.lines[0] + "\r\n" + st.sfrList.lines[2]);
}

TEST_F(Sets, RegisterSetFileSavedAndLoadedGivesTheSameSet) {
    for (const char* n : {"S0CON", "PSW", "A_REGISTER_WITH_A_LONG_NAME", "SP"}) Add(n);
    ASSERT_EQ(SaveSfrRegisterSet(st, Path("one.mrs")), 0);
    // a name cut to 22 characters in its line is not known and not saved
    EXPECT_EQ(Read("one.mrs"), "DISPLAY=S0CON\nDISPLAY=PSW\nDISPLAY=SP\n\n");
    ViewSfrSet(st, 5);
    ASSERT_EQ(LoadSfrRegisterSet(st, Path("one.mrs")), 0);
    EXPECT_EQ(Names(5), (V{"S0CON", "PSW", "SP"}));
    EXPECT_EQ(ListNames(), (V{"S0CON", "PSW", "SP"}));
    // loading again adds nothing twice
    ASSERT_EQ(LoadSfrRegisterSet(st, Path("one.mrs")), 0);
    EXPECT_EQ(Names(5), (V{"S0CON", "PSW", "SP"}));
}

TEST_F(Sets, RegisterSetFileWithUnknownNamesLoadsTheOthersSilently) {
    Write("x.mrs",
          "; a comment\r\ndisplay=psw\r\nDISPLAY=NOSUCH\r\nDISPLAY = "
          "SP\r\nDISPLAY=CP\r\nDISPLAY=\r\n");
    Add("CP");
    const std::string before = st.terminalBuffer;
    ASSERT_EQ(LoadSfrRegisterSet(st, Path("x.mrs")), 0);
    EXPECT_EQ(Names(0), (V{"CP", "PSW"}));
    EXPECT_EQ(st.terminalBuffer, before);
}

TEST_F(Sets, MissingRegisterSetFileSaysSo) {
    EXPECT_EQ(LoadSfrRegisterSet(st, Path("none.mrs")), -1);
    EXPECT_EQ(st.terminalBuffer, "\r\n*ERROR: File " + Path("none.mrs") + " not found");
    EXPECT_EQ(LoadSfrRegisterSet(st, dir), -1);  // a folder is no file
}

TEST_F(Sets, RegisterSetNamesTakesDisplayLinesOnly) {
    EXPECT_EQ(RegisterSetNames("DISPLAY=A\nXDISPLAY=B\nDisplay=C\r\n\rDISPLAY=D E"),
              (V{"A", "C", "D E"}));
    EXPECT_TRUE(RegisterSetNames("").empty());
    EXPECT_EQ(RegisterSetNames("DISPLAY="), (V{""}));
}

TEST_F(Sets, SavingWhereNoFileCanBeWrittenSaysWhy) {
    Add("PSW");
    EXPECT_EQ(SaveSfrRegisterSet(st, Path("nofolder/x.mrs")), -1);
    EXPECT_NE(st.terminalBuffer.find("*ERROR: Could not write " + Path("nofolder/x.mrs")),
              std::string::npos);
}

// Each controller family's register set file names registers of that
// family's register file only: ports, timers and its serial channel.
TEST_F(Sets, DeliveredRegisterSetsLoadWhole) {
    const std::string data = VORTELM_SOURCE_DATA_DIR;
    for (const char* stem : {"LD7RK", "ZTA9Y", "ZT7000"}) {
        // a copy, so that the table's cache is not written into the source tree
        fs::copy_file(data + "/SFRDEF/" + stem + ".SFR", Path(std::string(stem) + ".SFR"));
        ASSERT_EQ(ReadSfrFile(st, Path(std::string(stem) + ".SFR")), 0) << stem;
        ClearSfrSets(st);
        const std::string mrs = data + "/REGSET/" + stem + ".mrs";
        std::ifstream f(mrs, std::ios::binary);
        std::ostringstream text;
        text << f.rdbuf();
        const auto names = RegisterSetNames(text.str());
        ASSERT_GE(names.size(), 13u) << stem;
        ASSERT_EQ(LoadSfrRegisterSet(st, mrs), 0) << stem;
        EXPECT_EQ(Names(0), names) << stem;
        for (const char* must : {"P2", "DP2", "T3", "T3CON"})
            EXPECT_TRUE(SfrInSet(st, 0, SfrIndexByName(st, must))) << stem << " " << must;
    }
}

}  // namespace
}  // namespace vortelm
