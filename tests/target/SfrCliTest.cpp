// The SFR rows end to end: vortelm-cli with a fresh data home against the
// in-process board.

#include <gtest/gtest.h>

#include "CliHome.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include <unistd.h>

namespace {

namespace fs = std::filesystem;

// A fresh data home; the lines run against the in-process board.
class SfrCli : public vortelm::testing::CliHome {
  protected:
    std::string run(const std::string& lines) { return CliHomeOn::run("sim:", lines); }
};

TEST_F(SfrCli, AddThreeViewRemoveOneViewOnTheBoard) {
    // set 1: the delivered preferences fill set 0
    const std::string out =
        run("_connect NOPROMPT\n"
            "_addsfr SYSCON,1\n_addsfr S0CON,1\n_addsfr IDCHIP,1\n"
            "_viewsfrs 1\n"
            "_removesfr S0CON,1\n"
            "_viewsfrs 1\n");
    EXPECT_NE(out.find("*Vortelm successfully launched"), std::string::npos) << out;
    EXPECT_EQ(out.find("*ERROR"), std::string::npos) << out;
    // the board's reset values, read from the board; the listing's lines
    // each begin on a new line, and the CLI starts the next echo on its own
    EXPECT_NE(out.find(">_addsfr SYSCON,1\n>_addsfr S0CON,1\n>_addsfr IDCHIP,1\n"
                       ">_viewsfrs 1\n\nSelected Set: ''\n"
                       "SYSCON              00FF12 0090\n"
                       "S0CON               00FFB0 8011\n"
                       "IDCHIP              00F07C 0D12\n"
                       ">_removesfr S0CON,1\n"
                       ">_viewsfrs 1\n\nSelected Set: ''\n"
                       "SYSCON              00FF12 0090\n"
                       "IDCHIP              00F07C 0D12"),
              std::string::npos)
        << out;
    EXPECT_EQ(status, 0);
}

TEST_F(SfrCli, ValuesComeFromTheBoardAfterAWrite) {
    const std::string out = run("_connect NOPROMPT\n_addsfr T3,2\n_mov FE42,BEEF\n_viewsfrs 2\n");
    EXPECT_NE(out.find(">_viewsfrs 2\n\nSelected Set: ''\nT3                  00FE42 BEEF"),
              std::string::npos)
        << out;
}

TEST_F(SfrCli, TheDeliveredSetAndNotConnected) {
    const std::string out =
        run("_addsfr T3\n_viewsfrs\n_refreshsfr\n_refreshsfr OFF\n_refreshsfr maybe\n");
    // set 0 as the delivered preferences fill it, not read: the dump memory
    EXPECT_NE(out.find(">_viewsfrs\n\nSelected Set: 'SYSTEM'\nSYSCON              00FF12 0000\n"
                       "BUSCON0             00FF0C 0000\nPSW                 00FF10 0000\n"
                       "CP                  00FE10 0000\nSP                  00FE12 0000\n"
                       "T3                  00FE42 0000\n>_refreshsfr\n>_refreshsfr OFF\n"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find(">_refreshsfr maybe\n*ERROR: Parameter 1 must be valid ON or OFF\n*ERROR: "
                       "Illegal parameters\n"
                       "usage: _refreshsfr [ON|OFF]\n"),
              std::string::npos)
        << out;
    EXPECT_EQ(status, 256);  // exit status 1: the last line failed
}

TEST_F(SfrCli, BadSetAndUnknownRegister) {
    const std::string out = run("_addsfr SYSCON,8\n_addsfr NOSUCH\n_viewsfrs 5\n");
    EXPECT_NE(out.find(">_addsfr SYSCON,8\n*ERROR: Illegal parameters\nusage: _addsfr <SFR "
                       "name>[,<SFR set>]\n"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find(">_addsfr NOSUCH\n*ERROR: Parameter 1 must be valid SFR\n"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find(">_viewsfrs 5\n\nSelected Set: ''"), std::string::npos) << out;
}

}  // namespace
