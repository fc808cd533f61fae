// The rows of the SFR view group and _viewsfrs through the shell's frame.

#include <gtest/gtest.h>

#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "image/Dump.h"
#include "sfr/SfrSets.h"
#include "sfr/SfrTable.h"
#include "shell/Rows.h"
#include "shell/Shell.h"

namespace vortelm::shell {

struct SfrRows : ::testing::Test {
    TestHost host;
    std::unique_ptr<ProgramState> st = std::make_unique<ProgramState>(host);
    Session s{*st};
    void SetUp() override {
        BuildShellCommandTable(s.table);
        const std::pair<const char*, int32_t> regs[] = {
            {"CP", 0xFE10}, {"PSW", 0xFF10}, {"SP", 0xFE12}, {"SYSCON", 0xFF12}};
        for (auto [name, address] : regs) {
            SfrRecord& r = st->sfrTable[static_cast<size_t>(st->sfrCount++)];
            r.name = name;
            r.address = address;
        }
        ClearSfrSets(*st);
        WriteDumpByte(st->dump, 0xFF12, 0x84);
    }
    std::string Run(std::string_view line) {
        host.terminal.clear();
        result = ExecuteShellCommand(s, line, 0);
        return host.terminal;
    }
    std::vector<std::string> Names(int set) const {
        const SfrSet& x = st->sfrSets[static_cast<size_t>(set)];
        return {x.names.begin(), x.names.begin() + x.count};
    }
    int16_t result = 0;
};

using V = std::vector<std::string>;

TEST_F(SfrRows, AreInTheBuild) {
    for (const char* name : {"_refreshsfr", "_addsfr", "_removesfr", "_viewsfrs"})
        EXPECT_NE(FindRow(name), nullptr) << name;
}

TEST_F(SfrRows, AddViewRemoveView) {
    EXPECT_EQ(Run("_addsfr SYSCON"), ">_addsfr SYSCON\r\n");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(Run("_addsfr psw"), ">_addsfr psw\r\n");
    EXPECT_EQ(Run("_addsfr CP,0"), ">_addsfr CP,0\r\n");
    EXPECT_EQ(Names(0), (V{"SYSCON", "PSW", "CP"}));
    EXPECT_EQ(st->sfrList.lines.size(), 3u);
    EXPECT_EQ(Run("_viewsfrs"),
              ">_viewsfrs\r\n\r\nSelected Set: ''\r\nSYSCON              00FF12 0084\r\n"
              "PSW                 00FF10 0000\r\nCP                  00FE10 0000");
    EXPECT_EQ(Run("_removesfr PSW"), ">_removesfr PSW\r\n");
    EXPECT_EQ(Names(0), (V{"SYSCON", "CP"}));
    EXPECT_EQ(Run("_viewsfrs 0"),
              ">_viewsfrs 0\r\n\r\nSelected Set: ''\r\nSYSCON              00FF12 0084\r\nCP       "
              "           00FE10 0000");
    EXPECT_EQ(result, 0);
}

TEST_F(SfrRows, AddingTwiceKeepsOneEntry) {
    (void)Run("_addsfr SP");
    (void)Run("_addsfr sp");
    EXPECT_EQ(Names(0), (V{"SP"}));
    EXPECT_EQ(st->sfrList.lines.size(), 1u);
}

TEST_F(SfrRows, AnySetBelowTheNumberOfSets) {
    EXPECT_EQ(Run("_addsfr SP,7"), ">_addsfr SP,7\r\n");
    EXPECT_EQ(Names(7), (V{"SP"}));
    EXPECT_TRUE(st->sfrList.lines.empty());
    EXPECT_EQ(
        Run("_addsfr SP,8"),
        ">_addsfr SP,8\r\n*ERROR: Illegal parameters\r\nusage: _addsfr <SFR name>[,<SFR set>]\r\n");
    EXPECT_EQ(result, -2);
    EXPECT_EQ(Run("_viewsfrs 8"),
              ">_viewsfrs 8\r\n*ERROR: Illegal parameters\r\nusage: _viewsfrs [<SFR set>]\r\n");
    EXPECT_EQ(Run("_removesfr SP,9"),
              ">_removesfr SP,9\r\n*ERROR: Illegal parameters\r\nusage: _removesfr <SFR "
              "name>[,<SFR set>]\r\n");
    EXPECT_EQ(Names(7), (V{"SP"}));
}

TEST_F(SfrRows, AnUnknownRegisterIsRejectedByTheFrame) {
    EXPECT_EQ(
        Run("_addsfr NOSUCH"),
        ">_addsfr NOSUCH\r\n*ERROR: Parameter 1 must be valid SFR\r\n*ERROR: Illegal parameters\r\n"
        "usage: _addsfr <SFR name>[,<SFR set>]\r\n");
    EXPECT_EQ(result, -1);  // -2 and the last argument was the bad one
}

TEST_F(SfrRows, TitleShowsWholeInTheListing) {
    SetSfrSetTitle(*st, 3, "ALPHA");
    (void)Run("_addsfr SP,3");
    EXPECT_EQ(Run("_viewsfrs 3"),
              ">_viewsfrs 3\r\n\r\nSelected Set: 'ALPHA'\r\nSP                  00FE12 0000");
    EXPECT_EQ(SfrTabCaption(*st, 3), "ALPH");
}

TEST_F(SfrRows, RemovalFromASetNotOnShowTakesTheLineShown) {
    (void)Run("_addsfr SP");
    (void)Run("_addsfr CP");
    (void)Run("_addsfr PSW,2");
    (void)Run("_addsfr SYSCON,2");
    (void)Run("_removesfr SYSCON,2");
    EXPECT_EQ(Names(2), (V{"PSW"}));
    EXPECT_EQ(Names(0), (V{"SP", "CP"}));
    ASSERT_EQ(st->sfrList.lines.size(), 1u);
    EXPECT_EQ(st->sfrList.lines[0].substr(0, 2), "SP");
    // the list has no line at PSW's place in set 2 any more: the bound
    const std::string out = Run("_removesfr CP,0");
    EXPECT_EQ(out, ">_removesfr CP,0\r\n*ERROR: SFR list line index 1 out of range 0 to 0\r\n");
    EXPECT_EQ(result, static_cast<int16_t>(0x9003));
    EXPECT_EQ(Names(0), (V{"SP", "CP"}));
}

TEST_F(SfrRows, RemovingARegisterNotInTheSetIsNoFailure) {
    EXPECT_EQ(Run("_removesfr SP"), ">_removesfr SP\r\n");
    EXPECT_EQ(result, 0);
}

TEST_F(SfrRows, RefreshSwitch) {
    EXPECT_EQ(Run("_refreshsfr OFF"), ">_refreshsfr OFF\r\n");
    EXPECT_EQ(st->REFRESHSFR, 0);
    (void)Run("_refreshsfr on");
    EXPECT_NE(st->REFRESHSFR, 0);
    (void)Run("_refreshsfr 0");
    EXPECT_EQ(st->REFRESHSFR, 0);
    (void)Run("_refreshsfr 1");
    EXPECT_NE(st->REFRESHSFR, 0);
    (void)Run("_refreshsfr oFf");
    EXPECT_EQ(st->REFRESHSFR, 0);
    // numeric 1 passes the frame but is not one of the four words
    EXPECT_EQ(Run("_refreshsfr 1.0"),
              ">_refreshsfr 1.0\r\n*ERROR: Illegal parameters\r\nusage: _refreshsfr [ON|OFF]\r\n");
    EXPECT_EQ(st->REFRESHSFR, 0);
    EXPECT_EQ(Run("_refreshsfr YES"),
              ">_refreshsfr YES\r\n*ERROR: Parameter 1 must be valid ON or OFF\r\n*ERROR: Illegal "
              "parameters\r\n"
              "usage: _refreshsfr [ON|OFF]\r\n");
}

TEST_F(SfrRows, RefreshWithoutArgumentRefreshesTheViewNow) {
    const int before = host.refreshSfrViewCount;
    (void)Run("_refreshsfr");
    EXPECT_EQ(host.refreshSfrViewCount, before + 1);
    EXPECT_EQ(result, 0);
}

}  // namespace vortelm::shell
