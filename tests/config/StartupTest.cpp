#include <gtest/gtest.h>

#include <filesystem>

#include "config/ControllerTypes.h"
#include "config/Kernels.h"
#include "config/Preferences.h"
#include "config/Startup.h"
#include "sfr/SfrTable.h"
#include "tests/config/TestFiles.h"

namespace vortelm {
namespace {

using testing::DataHome;
namespace fs = std::filesystem;

TEST(Startup, MissingFilesAreReportedInOrderAndStartUpGoesOn) {
    DataHome h;
    ResetConfigurationTables(*h.st);
    ReadDataFiles(*h.st);
    ReadDefaultPreferences(*h.st);
    EXPECT_EQ(h.st->terminalBuffer,
              "\r\n*ERROR: File mctypes.dat not found"
              "\r\n*ERROR: File kernel.dat not found"
              "\r\n*ERROR: File default.ini not found");
    EXPECT_EQ(h.st->controllerTypeCount, 0);
    EXPECT_EQ(h.st->kernelCount, 0);
    EXPECT_EQ(h.st->BAUDRATE, 9600);
    EXPECT_EQ(h.st->featureNameCount, 14);
}

TEST(Startup, BoundFailureInOneFileEndsOnlyThatStep) {
    DataHome h;
    h.write("kernel.dat", "KERNELNAME(0)=A\nKERNELNAME(16)=B\n");
    h.write("mctypes.dat", "[ALD7RK_BB]\n");
    ResetConfigurationTables(*h.st);
    ReadDataFiles(*h.st);
    EXPECT_EQ(h.st->terminalBuffer, "\r\n*ERROR: kernel index 16 out of range 0 to 15");
    EXPECT_EQ(h.st->controllerTypeCount, 1);
    EXPECT_EQ(h.st->kernelCount, 1);
}

TEST(Startup, ResetFillsFeatureNamesAndClearsTables) {
    DataHome h;
    h.st->initRegisterCount = 3;
    h.st->memoryUnitCount = 4;
    h.st->sfrCount = 5;
    h.st->ConnectionState = kUserProgramRunning;
    h.st->sfrSets[3].count = 2;
    h.st->currentSfrSet = 3;
    h.st->variables[7] = 1;
    h.st->logFileName = "X";
    ResetConfigurationTables(*h.st);
    EXPECT_EQ(h.st->initRegisterCount, 0);
    EXPECT_EQ(h.st->memoryUnitCount, 0);
    EXPECT_EQ(h.st->sfrCount, 0);
    EXPECT_EQ(h.st->ConnectionState, 0);
    EXPECT_EQ(h.st->sfrSets[3].count, 0);
    EXPECT_EQ(h.st->currentSfrSet, 0);
    EXPECT_EQ(h.st->variables[7], 0);
    EXPECT_EQ(h.st->logFileName, "LOG.TXT");
    EXPECT_EQ(h.st->featureNames[0], "RELOCATABLE");
}

// The data files delivered beside the program read without a word.
TEST(DeliveredData, EveryControllerReadsItsUnitsAndRegisters) {
    const fs::path source = fs::path(VORTELM_SOURCE_DIR) / "data";
    if (!fs::exists(source / "mctypes.dat")) GTEST_SKIP() << "no delivered data in this tree";
    DataHome h;
    fs::copy(source, h.dir(), fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    ResetConfigurationTables(*h.st);
    ReadDataFiles(*h.st);
    ReadDefaultPreferences(*h.st);
    EXPECT_EQ(h.st->terminalBuffer, "");
    ASSERT_GE(h.st->controllerTypeCount, 1);
    for (const char* k : {"ALD4_DEFAULT", "ALD4_KLINE", "ZTA9Y_DEFAULT", "ZTA9Y_KLINE",
                          "ZT7000_DEFAULT", "ZT7000_KLINE"})
        EXPECT_GE(KernelIndexByName(*h.st, k), 0) << k;
    for (int c = 0; c < h.st->controllerTypeCount; ++c) {
        const ControllerType& t = h.st->controllerTypes[c];
        h.st->terminalBuffer.clear();
        ReadMemoryDefinition(*h.st, t.memoryDefinitionPath);
        EXPECT_GT(h.st->memoryUnitCount, 0) << t.name;
        EXPECT_EQ(ReadSfrFile(*h.st, t.registerDefinitionPath), 0) << t.name;
        EXPECT_GT(h.st->sfrCount, 2) << t.name;
        EXPECT_EQ(h.st->terminalBuffer, "") << t.name;
        h.st->MCTYPE = t.name;
        h.st->KLINE = 0;
        h.st->ControllerFamily = ControllerFamilyCode(t.family);
        SelectDefaultKernel(*h.st);
        EXPECT_EQ(h.st->kernels[h.st->CurrentKernel].name, t.defaultKernel) << t.name;
    }
}

}  // namespace
}  // namespace vortelm
