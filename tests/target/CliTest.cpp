// The whole job end to end: vortelm-cli with a fresh data home against the
// in-process board, for each family and way of connecting.

#include <gtest/gtest.h>

#include "CliHome.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

struct Family {
    const char* mctype;
    const char* kernel;
    const char* klineKernel;
    int image;  // where a 512-byte image lies in the board's RAM, clear of the core
    int32_t relocateTo;
    int32_t oldCore;  // the kernel's own start address
};

class Cli : public vortelm::testing::CliHome {
  protected:
    // Sets keys of default.ini (the first line that begins with the key).
    void setPreference(const std::string& key, const std::string& value) {
        ASSERT_TRUE(CliHomeOn::setPreference(key, value)) << key;
    }
    void editFile(const fs::path& p, const std::string& key, const std::string& value) {
        ASSERT_TRUE(CliHomeOn::editFile(p, key, value)) << key;
    }

    void family(const Family& f, bool kline) {
        setPreference("MCTYPE=", f.mctype);
        setPreference("KERNEL=", kline ? f.klineKernel : f.kernel);
        setPreference("KLINE=", kline ? "1" : "0");
    }

    static constexpr const char* kMainJob =
        "_connect NOPROMPT\n_load x.hex\n_download\n_clearmemory\n_upload\n_compare\n";
    std::string mainJob(const std::string& port) { return run(port, kMainJob); }
};

const Family kFamilies[] = {
    {"ALD7RK_BB", "ALD4_DEFAULT", "ALD4_KLINE", 0xFA00, 0xFB00, 0xF600},
    {"ZTA9Y_BB", "ZTA9Y_DEFAULT", "ZTA9Y_KLINE", 0xC000, 0xC000, 0xE000},
    {"ZT7000_BB", "ZT7000_DEFAULT", "ZT7000_KLINE", 0xA000, 0xA000, 0xC000},
};

void ExpectMainJob(const std::string& out) {
    EXPECT_NE(out.find("*Vortelm successfully launched"), std::string::npos) << out;
    EXPECT_NE(out.find("*Comparison:  512 Bytes OK -  0 Bytes different"), std::string::npos)
        << out;
    EXPECT_EQ(out.find("*ERROR"), std::string::npos) << out;
}

TEST_F(Cli, MainJobOnEachFamily) {
    for (const Family& f : kFamilies) {
        SCOPED_TRACE(f.mctype);
        family(f, false);
        writeImage("x.hex", f.image, 32);
        ExpectMainJob(mainJob("sim:"));
    }
}

TEST_F(Cli, MainJobOnKLine) {
    for (const Family& f : kFamilies) {
        SCOPED_TRACE(f.mctype);
        family(f, true);
        writeImage("x.hex", f.image, 32);
        ExpectMainJob(mainJob("sim:?kline=1"));
    }
}

TEST_F(Cli, WithoutLoaderAcknowledge) {
    // a kernel whose loader does not acknowledge: the board's K-Line-less
    // loader without the flag is not delivered, so the kernel record says
    // no acknowledge and the acknowledge the board sends stays in the line
    // until the core's acknowledge is read: the connect must still judge by
    // the core's byte.
    family(kFamilies[0], false);
    editFile(home / "kernel.dat", "LOADERACK(0)=", "FALSE");
    const std::string out = run("sim:", "_connect NOPROMPT\n");
    EXPECT_EQ(out.find("LoaderACK"), std::string::npos) << out;
}

TEST_F(Cli, Relocated) {
    for (const Family& f : kFamilies) {
        SCOPED_TRACE(f.mctype);
        family(f, false);
        const int index = static_cast<int>(&f - kFamilies) * 2;
        char value[16];
        std::snprintf(value, sizeof value, "%06X", f.relocateTo);
        editFile(home / "kernel.dat", "PATCHSTARTADDRESS(" + std::to_string(index) + ")=", value);
        // the core's old place is free once it runs elsewhere
        writeImage("x.hex", f.oldCore, 16);
        const std::string out = run(
            "sim:", "_connect NOPROMPT\n_load x.hex\n_download\n_clearmemory\n_upload\n_compare\n");
        EXPECT_NE(out.find("*Vortelm successfully launched"), std::string::npos) << out;
        EXPECT_EQ(out.find("*ERROR"), std::string::npos) << out;
        EXPECT_NE(out.find("*Comparison:  256 Bytes OK -  0 Bytes different"), std::string::npos)
            << out;
    }
}

TEST_F(Cli, SecondConnectTakesTheAutobaudPath) {
    family(kFamilies[1], false);
    const std::string out = run("sim:", "_connect NOPROMPT\n_connect NOPROMPT\n");
    EXPECT_NE(out.find("*Autobauding Vortelm detected"), std::string::npos) << out;
    // the second connect sends no image: one set of acknowledge lines only
    EXPECT_EQ(out.find("*RECEIVE - Vortelm ACK"), out.rfind("*RECEIVE - Vortelm ACK")) << out;
    EXPECT_EQ(out.find("*Vortelm successfully launched"),
              out.find("*Vortelm successfully launched"))
        << out;
    EXPECT_NE(out.rfind("*Vortelm successfully launched"),
              out.find("*Vortelm successfully launched"))
        << out;
}

TEST_F(Cli, NoBoardAnswering) {
    family(kFamilies[0], false);
    // every byte the board sends is lost: nothing answers the init byte
    const std::string out = run("sim:?fault=drop%100", "_connect NOPROMPT\n_download\n");
    EXPECT_NE(out.find("*send Byte  0+ Loader + VortelmCore"), std::string::npos) << out;
    EXPECT_EQ(out.find("*RECEIVE"), std::string::npos) << out;
    EXPECT_EQ(out.find("*Vortelm successfully launched"), std::string::npos) << out;
    EXPECT_NE(out.find("*ERROR: Not Connected to Target"), std::string::npos) << out;
}

TEST_F(Cli, CoreOverwriteIsRefused) {
    family(kFamilies[0], false);
    writeImage("x.hex", 0xF000, 0x70);  // F000..F6FF: the third burst touches the core at F600
    const std::string out = run("sim:", "_connect NOPROMPT\n_load x.hex\n_download\n");
    EXPECT_NE(out.find("*Download:  1024 bytes"), std::string::npos) << out;
    EXPECT_EQ(out.find("*Download:  2048 bytes"), std::string::npos) << out;
    EXPECT_NE(out.find("*ERROR: download not successful"), std::string::npos) << out;
}

TEST_F(Cli, FaultsNeverGiveAFalseSuccess) {
    family(kFamilies[0], false);
    writeImage("x.hex", 0xE000, 64);
    // The connect's reset report and initialisation take commands 1 to 7 (a
    // wrong acknowledge there is not examined, as on a real board): the
    // wrong acknowledge is aimed at the download's block.
    for (const char* fault :
         {"drop@200", "flip@300", "wrongack@8", "die@3", "reset@3", "hangup@3"}) {
        SCOPED_TRACE(fault);
        const std::string out =
            run(std::string("sim:?fault=") + fault,
                "_connect NOPROMPT\n_load x.hex\n_download\n_upload\n_compare\n");
        // every fault is noticed and named by an error word of the step it hit
        const bool error = out.find("*ERROR: download not successful") != std::string::npos ||
                           out.find("*ERROR: no data received") != std::string::npos ||
                           out.find("*ERROR: Not Connected to Target") != std::string::npos;
        EXPECT_TRUE(error) << out;
        // a step that reported an error never also reports its success
        if (out.find("*ERROR: no data received while comparing") != std::string::npos) {
            EXPECT_EQ(out.find("*Comparison: "), std::string::npos) << out;
        }
    }
}

// The same job against the board program on a pseudo-terminal: the host
// drives a real serial channel, and the board follows the rate it sets.
TEST_F(Cli, MainJobOnVortelmSimPty) {
    family(kFamilies[0], false);
    writeImage("x.hex", kFamilies[0].image, 32);
    ExpectMainJob(runOnPty(kFamilies[0].mctype, kMainJob));
}

TEST_F(Cli, AFailedSetupRowNamesTheOperationsCodeOnStandardError) {
    const std::string out = run("sim:", "_movemonitor F000\n");
    EXPECT_NE(out.find("vortelm-cli: _movemonitor F000: failed with code -100 (not connected to "
                       "the target)\n"),
              std::string::npos)
        << out;
}

TEST_F(Cli, ConnectFooIsIllegalAndSendsNothing) {
    const std::string out = run("sim:", "_connect FOO\n");
    EXPECT_NE(out.find("*ERROR: Illegal parameters"), std::string::npos) << out;
    EXPECT_EQ(out.find("*send Byte"), std::string::npos) << out;
}

}  // namespace
