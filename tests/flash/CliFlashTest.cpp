// The headline job through vortelm-cli on a fresh data home against the
// in-process board: load a HEX image in the board's flash, program it,
// read it back and compare, on each family.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

#include "FlashFixture.h"
#include "tests/target/support/CliHome.h"

namespace vortelm::testing {
namespace {

namespace fs = std::filesystem;

class CliFlash : public CliHomeOn<::testing::TestWithParam<FamilyCase>> {
  protected:
    void SetUp() override {
        CliHomeOn::SetUp();
        UseFamily(home.string(), GetParam());
    }
};

INSTANTIATE_TEST_SUITE_P(Flash, CliFlash, ::testing::ValuesIn(kFamilyCases), FamilyName);

TEST_P(CliFlash, LoadIProgramUploadCompare) {
    const FamilyCase& f = GetParam();
    // 5 KiB over a sector boundary
    std::ofstream(home / "x.hex") << IntelHex(f.flashStart + f.sectorSize - 0x800,
                                              Pattern(0x1400, 17));
    const std::string out =
        run("sim:", "_connect NOPROMPT\n_load x.hex\n_iprogram\n_clearmemory\n_upload\n_compare\n");
    EXPECT_NE(out.find("*Load: 5120 bytes loaded"), std::string::npos) << out;
    EXPECT_NE(out.find("*IProgram: 5120 bytes programmed \n"), std::string::npos) << out;
    EXPECT_NE(out.find("\n*IProgram:5120 bytes successfully programmed"), std::string::npos) << out;
    EXPECT_NE(out.find("*Comparison:  5120 Bytes OK -  0 Bytes different"), std::string::npos)
        << out;
    EXPECT_EQ(out.find("*ERROR"), std::string::npos) << out;
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

TEST_P(CliFlash, AFailedRowNamesTheOperationsCodeOnStandardError) {
    const std::string out = run("sim:", "_program\n_erase IFLASH,0\n");
    EXPECT_NE(
        out.find("vortelm-cli: _program: failed with code -100 (not connected to the target)\n"),
        std::string::npos)
        << out;
    EXPECT_NE(out.find("vortelm-cli: _erase IFLASH,0: failed with code -100"), std::string::npos)
        << out;
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) != 0) << status;
}

TEST_P(CliFlash, LockedSectorFailsWithNonZeroStatus) {
    const FamilyCase& f = GetParam();
    std::ofstream(home / "x.hex") << IntelHex(f.flashStart, Pattern(0x100, 3));
    const std::string out =
        run("sim:", "_connect NOPROMPT\n_load x.hex\n_lock IFLASH,pw\n_program\n");
    EXPECT_NE(out.find("*ERROR: Program not successful"), std::string::npos) << out;
    EXPECT_EQ(out.find("successfully programmed"), std::string::npos) << out;
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1) << status;
}

}  // namespace
}  // namespace vortelm::testing

namespace vortelm::testing {
namespace {

// A board that dies somewhere in the job: when the program did not finish,
// the CLI ends with the failure words and exit status 1.
TEST_P(CliFlash, DyingBoardEndsInFailureWordsAndExitStatusOne) {
    const FamilyCase& f = GetParam();
    std::ofstream(home / "x.hex") << IntelHex(f.flashStart, Pattern(0x800, 5));
    // short time-outs: the CLI waits on the real clock
    {
        std::ifstream in(home / "default.ini");
        std::stringstream text;
        text << in.rdbuf();
        in.close();
        std::string ini = text.str();
        ini.replace(ini.find("TIMEOUT=2000"), 12, "TIMEOUT=100");
        std::ofstream(home / "default.ini") << ini;
    }
    int failures = 0;
    for (int n = 15; n <= 75; n += 20) {
        SCOPED_TRACE(n);
        const std::string out = run("sim:?fault=die@" + std::to_string(n),
                                    "_connect NOPROMPT\n_load x.hex\n_iprogram\n");
        if (out.find("*Vortelm successfully launched") == std::string::npos) continue;
        if (out.find("successfully programmed") != std::string::npos) {
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << out;
            continue;
        }
        ++failures;
        EXPECT_TRUE(out.find("*ERROR: Program not successful") != std::string::npos ||
                    out.find("*ERROR: Erase not successful") != std::string::npos ||
                    out.find("*ERROR: download not successful") != std::string::npos ||
                    out.find("initializing driver not successful") != std::string::npos)
            << out;
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1) << status << out;
    }
    EXPECT_GT(failures, 0);
}

}  // namespace
}  // namespace vortelm::testing

namespace vortelm::testing {
namespace {

// The operations on devices and sectors, byte for byte as the CLI prints
// them (each CR LF a line feed).
TEST_P(CliFlash, DeviceOperationsThroughTheCli) {
    const FamilyCase& f = GetParam();
    std::ofstream(home / "x.hex") << IntelHex(f.flashStart, Pattern(0x100, 9));
    const std::string out = run("sim:",
                                "_connect NOPROMPT\n_load x.hex\n_iprogram\n_lock IFLASH,abc,1\n"
                                "_unlock IFLASH,abd,1\n_unlock IFLASH,abc,1\n_erase IFLASH,1\n"
                                "_status IFLASH\n_protect IFLASH,abc\n_unprotect IFLASH,abc\n"
                                "_loadasb_byte 55\n_erase NOSUCH,1\n");
    auto has = [&out](const std::string& s) { return out.find(s) != std::string::npos; };
    EXPECT_TRUE(has("\n*Lock: IFLASH successfully locked")) << out;
    EXPECT_TRUE(has(">_unlock IFLASH,abd,1\n\n*ERROR: Unlock not successful")) << out;
    EXPECT_TRUE(has("\n*Unlock: Sector 1 in IFLASH successfully unlocked")) << out;
    EXPECT_TRUE(has("\n*Erase: Sector 1 in IFLASH successfully erased")) << out;
    EXPECT_TRUE(has("\n*Status: Statusword 0 in IFLASH read: FSR=0000")) << out;
    EXPECT_TRUE(has("\n*Protect: IFLASH successfully protected")) << out;
    EXPECT_TRUE(has("\n*Unprotect: Read protection of IFLASH successfully removed")) << out;
    // the first range of the unit was programmed: 55 over the image fails
    // where a cell would need a bit back, so only the words are checked
    EXPECT_TRUE(has(">_loadasb_byte 55\n")) << out;
    // an unknown device is the frame's status -2
    EXPECT_TRUE(has(">_erase NOSUCH,1\n*ERROR: Parameter 1 must be valid mem device")) << out;
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) != 0) << status;
}

}  // namespace
}  // namespace vortelm::testing
