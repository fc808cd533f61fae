#include <gtest/gtest.h>

#include "config/ControllerTypes.h"
#include "config/Kernels.h"
#include "core/RunTimeError.h"
#include "tests/config/TestFiles.h"

namespace vortelm {
namespace {

using testing::DataHome;

const char* kTwoKernels =
    "KERNELNAME(0)=ALD4_DEFAULT\n"
    "LOADERPATH(0)=KERNEL\\ALD4\\LOAD.HEX\n"
    "LOADERACK(0)=TRUE\n"
    "VORTELMPATH(0)=KERNEL\\ALD4\\CORE.HEX\n"
    "FEATURES(0)=WRITEBLOCK,READBLOCK,CALL\n"
    "STARTADDRESS(0)=00FA00\n"
    "ENDADDRESS(0)=00FBFF\n"
    "PATCHSTARTADDRESS(0)=\n"
    "\n"
    "ENDADDRESS(1)=00F7FF\n"
    "KERNELNAME(1)=ZT7000_Default\n"
    "LOADERACK(1)=FALSE\n"
    "FEATURES(1)=CALL\n"
    "STARTADDRESS(1)=00F600\n"
    "PATCHSTARTADDRESS(1)=00F700\n";

TEST(Kernels, FeatureNamesAreTheFourteenInOrder) {
    DataHome h;
    InitFeatureNames(*h.st);
    ASSERT_EQ(h.st->featureNameCount, 14);
    EXPECT_EQ(h.st->featureNames[0], "RELOCATABLE");
    EXPECT_EQ(h.st->featureNames[10], "ASC02ASC1");
    EXPECT_EQ(h.st->featureNames[13], "SETPROTECTION");
}

TEST(Kernels, ReadsKeysInAnyOrderAndUpperCasesNames) {
    DataHome h;
    h.write("kernel.dat", kTwoKernels);
    ReadKernels(*h.st, "kernel.dat");
    ASSERT_EQ(h.st->kernelCount, 2);
    const Kernel& k0 = h.st->kernels[0];
    EXPECT_EQ(k0.name, "ALD4_DEFAULT");
    EXPECT_EQ(k0.loaderPath, "KERNEL\\ALD4\\LOAD.HEX");
    EXPECT_EQ(k0.featureCount, 3);
    EXPECT_EQ(k0.features[2].name, "CALL");
    EXPECT_EQ(k0.startAddress, 0xFA00);
    EXPECT_EQ(k0.endAddress, 0xFBFF);
    EXPECT_EQ(k0.patchStartAddress, 0);
    EXPECT_EQ(k0.loaderAck, kTrue);
    const Kernel& k1 = h.st->kernels[1];
    EXPECT_EQ(k1.name, "ZT7000_DEFAULT");  // mixed case comes back upper case
    EXPECT_EQ(k1.endAddress, 0xF7FF);      // given before the name: the index carries it
    EXPECT_EQ(k1.loaderAck, kFalse);
    EXPECT_EQ(k1.patchStartAddress, 0xF700);
}

TEST(Kernels, LineWithoutEqualsKeepsTheValueOfTheLineBefore) {
    DataHome h;
    h.write("kernel.dat", "KERNELNAME(0)=A\nLOADERPATH(0)\n");
    ReadKernels(*h.st, "kernel.dat");
    EXPECT_EQ(h.st->kernels[0].loaderPath, "A");
}

TEST(Kernels, MissingFileLogsAndLeavesTableEmpty) {
    DataHome h;
    ReadKernels(*h.st, "kernel.dat");
    EXPECT_EQ(h.st->kernelCount, 0);
    EXPECT_EQ(h.st->terminalBuffer, "\r\n*ERROR: File kernel.dat not found");
}

TEST(Kernels, EmptyFileGivesNoKernelAndDefaultSelectionKeepsCurrent) {
    DataHome h;
    h.write("kernel.dat", "");
    h.st->CurrentKernel = 3;
    ReadKernels(*h.st, "kernel.dat");
    EXPECT_EQ(h.st->kernelCount, 0);
    SelectDefaultKernel(*h.st);
    EXPECT_EQ(h.st->CurrentKernel, 3);
}

TEST(Kernels, SelectDefaultKernelWithCurrentMinusOneAndNoMatchIsABoundError) {
    DataHome h;
    h.st->CurrentKernel = -1;
    EXPECT_THROW(SelectDefaultKernel(*h.st), RunTimeError);
    EXPECT_EQ(h.st->CurrentKernel, -1);
}

TEST(Kernels, PatchAddressZeroIsWrittenWithoutValueAndReadBackAsZero) {
    DataHome h;
    h.write("kernel.dat", kTwoKernels);
    ReadKernels(*h.st, "kernel.dat");
    ASSERT_TRUE(WriteKernels(*h.st, "out.dat"));
    const std::string out = h.read("out.dat");
    EXPECT_NE(out.find("PATCHSTARTADDRESS(0)=\n"), std::string::npos);
    EXPECT_NE(out.find("PATCHSTARTADDRESS(1)=00F700\n"), std::string::npos);
    DataHome h2;
    h2.write("kernel.dat", out);
    ReadKernels(*h2.st, "kernel.dat");
    EXPECT_EQ(h2.st->kernels[0].patchStartAddress, 0);
}

TEST(Kernels, WritesTheExactLayout) {
    DataHome h;
    AddKernel(*h.st);
    Kernel& k = h.st->kernels[0];
    k.name = "Mine";
    k.loaderPath = "L.HEX";
    k.monitorPath = "M.HEX";
    k.startAddress = 0xFA00;
    k.endAddress = 0x1FBFF;
    AddFeature(*h.st, "CALL", 0);
    AddFeature(*h.st, "JMP", 0);
    ASSERT_TRUE(WriteKernels(*h.st, "kernel.dat"));
    EXPECT_EQ(h.read("kernel.dat"),
              "KERNELNAME(0)=Mine\nLOADERPATH(0)=L.HEX\nLOADERACK(0)=TRUE\nVORTELMPATH(0)=M.HEX\n"
              "FEATURES(0)=CALL,JMP\nSTARTADDRESS(0)=00FA00\nENDADDRESS(0)=01FBFF\n"
              "PATCHSTARTADDRESS(0)=\n\n");
    EXPECT_FALSE(std::filesystem::exists(h.path("kernel.dat.tmp")));
}

TEST(Kernels, RoundTripIsByteIdentical) {
    DataHome h;
    h.write("kernel.dat", kTwoKernels);
    ReadKernels(*h.st, "kernel.dat");
    ASSERT_TRUE(WriteKernels(*h.st, "a.dat"));
    DataHome h2;
    h2.write("kernel.dat", h.read("a.dat"));
    ReadKernels(*h2.st, "kernel.dat");
    ASSERT_TRUE(WriteKernels(*h2.st, "b.dat"));
    EXPECT_EQ(h.read("a.dat"), h2.read("b.dat"));
}

TEST(Kernels, LookupsIgnoreCase) {
    DataHome h;
    h.write("kernel.dat", kTwoKernels);
    ReadKernels(*h.st, "kernel.dat");
    EXPECT_EQ(KernelIndexByName(*h.st, "zt7000_default"), 1);
    EXPECT_EQ(KernelIndexByName(*h.st, "nope"), -1);
    EXPECT_EQ(KernelIndexByMonitorPath(*h.st, "kernel\\ald4\\core.hex"), 0);
    EXPECT_EQ(KernelIndexByMonitorPath(*h.st, "x"), -1);
}

TEST(Kernels, SelectKernelByNameCopiesAddresses) {
    DataHome h;
    h.write("kernel.dat", kTwoKernels);
    ReadKernels(*h.st, "kernel.dat");
    SelectKernelByName(*h.st, "ZT7000_DEFAULT");
    EXPECT_EQ(h.st->CurrentKernel, 1);
    EXPECT_EQ(h.st->KernelStartAddress, 0xF600);
    EXPECT_EQ(h.st->KernelEndAddress, 0xF7FF);
    SelectKernelByName(*h.st, "unknown");
    EXPECT_EQ(h.st->CurrentKernel, 1);
}

TEST(Kernels, SelectDefaultKernelUsesControllerOrFamily) {
    DataHome h;
    h.write("kernel.dat", kTwoKernels);
    h.write("mctypes.dat",
            "[ALD7RK_BB]\nFAMILY=ALD4\nDEFAULT_KERNEL=zt7000_default\n"
            "DEFAULT_KERNEL_KLINE=ALD4_DEFAULT\n");
    ReadKernels(*h.st, "kernel.dat");
    ReadControllerTypes(*h.st, "mctypes.dat");
    h.st->MCTYPE = "ald7rk_bb";
    SelectDefaultKernel(*h.st);
    EXPECT_EQ(h.st->CurrentKernel, 1);
    h.st->KLINE = 1;
    SelectDefaultKernel(*h.st);
    EXPECT_EQ(h.st->CurrentKernel, 0);
    // unknown controller: the family's name
    h.st->MCTYPE = "OTHER";
    h.st->KLINE = 0;
    h.st->ControllerFamily = 2;
    SelectDefaultKernel(*h.st);
    EXPECT_EQ(h.st->CurrentKernel, 1);
    h.st->ControllerFamily = 0;
    SelectDefaultKernel(*h.st);
    EXPECT_EQ(h.st->CurrentKernel, 0);
}

TEST(Kernels, HasFeatureNeedsTheFlagAndNegativeMeansCurrent) {
    DataHome h;
    h.write("kernel.dat", kTwoKernels);
    ReadKernels(*h.st, "kernel.dat");
    h.st->CurrentKernel = 0;
    EXPECT_TRUE(HasFeature(*h.st, "READBLOCK", -1));
    EXPECT_FALSE(HasFeature(*h.st, "READBLOCK", 1));
    EXPECT_FALSE(HasFeature(*h.st, "readblock", 0));
    h.st->kernels[0].features[1].flag = kFalse;
    EXPECT_FALSE(HasFeature(*h.st, "READBLOCK", 0));
}

TEST(Kernels, HasFeatureIsFalseWithoutAKernelChosen) {
    DataHome h;
    h.write("kernel.dat", kTwoKernels);
    ReadKernels(*h.st, "kernel.dat");
    h.st->CurrentKernel = -1;
    EXPECT_FALSE(HasFeature(*h.st, "READBLOCK", -1));
    h.st->CurrentKernel = kKernelBound + 1;
    EXPECT_FALSE(HasFeature(*h.st, "READBLOCK", -1));
    EXPECT_FALSE(HasFeature(*h.st, "READBLOCK", kKernelBound + 1));
    h.st->CurrentKernel = 0;
    EXPECT_TRUE(HasFeature(*h.st, "READBLOCK", -1));
}

TEST(Kernels, IsDefaultKernelLeavesOutTheZt7000Names) {
    DataHome h;
    const char* names[] = {"ALD4_KLINE",  "ALD4_DEFAULT",   "ZTA9Y_DEFAULT",
                           "ZTA9Y_KLINE", "ZT7000_DEFAULT", "ZT7000_KLINE"};
    for (const char* n : names) {
        AddKernel(*h.st);
        h.st->kernels[h.st->kernelCount - 1].name = n;
    }
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(IsDefaultKernel(*h.st, i)) << i;
    EXPECT_FALSE(IsDefaultKernel(*h.st, 4));
    EXPECT_FALSE(IsDefaultKernel(*h.st, 5));
}

TEST(Kernels, AddKernelClearsTheEntry) {
    DataHome h;
    h.st->kernels[0].name = "OLD";
    h.st->kernels[0].featureCount = 5;
    h.st->kernels[0].loaderAck = kFalse;
    AddKernel(*h.st);
    EXPECT_EQ(h.st->kernelCount, 1);
    EXPECT_EQ(h.st->kernels[0].name, "");
    EXPECT_EQ(h.st->kernels[0].featureCount, 0);
    EXPECT_EQ(h.st->kernels[0].loaderAck, kTrue);
}

TEST(Kernels, SeventeenthKernelIsABoundError) {
    DataHome h;
    for (int i = 0; i < 16; ++i) AddKernel(*h.st);
    EXPECT_THROW(AddKernel(*h.st), RunTimeError);
    EXPECT_EQ(h.st->kernelCount, 16);
    h.write("kernel.dat", "KERNELNAME(16)=X\n");
    EXPECT_THROW(ReadKernels(*h.st, "kernel.dat"), RunTimeError);
}

TEST(Kernels, SixtyFifthFeatureIsABoundError) {
    DataHome h;
    AddKernel(*h.st);
    for (int i = 0; i < 64; ++i) AddFeature(*h.st, "F", 0);
    EXPECT_THROW(AddFeature(*h.st, "F", 0), RunTimeError);
    EXPECT_EQ(h.st->kernels[0].featureCount, 64);
}

TEST(Kernels, RemoveKernelShiftsAndReselectsWhenCurrent) {
    DataHome h;
    h.write("kernel.dat", kTwoKernels);
    ReadKernels(*h.st, "kernel.dat");
    h.st->MCTYPE = "NONE";
    h.st->ControllerFamily = 2;  // default name ZT7000_DEFAULT
    h.st->CurrentKernel = 0;
    RemoveKernel(*h.st, 0);
    EXPECT_EQ(h.st->kernelCount, 1);
    EXPECT_EQ(h.st->kernels[0].name, "ZT7000_DEFAULT");
    EXPECT_EQ(h.st->CurrentKernel, 0);
    EXPECT_EQ(h.st->KernelStartAddress, 0xF600);
}

TEST(Kernels, RemoveFeatureClosesTheGap) {
    DataHome h;
    h.write("kernel.dat", kTwoKernels);
    ReadKernels(*h.st, "kernel.dat");
    RemoveFeature(*h.st, "READBLOCK", 0);
    ASSERT_EQ(h.st->kernels[0].featureCount, 2);
    EXPECT_EQ(h.st->kernels[0].features[0].name, "WRITEBLOCK");
    EXPECT_EQ(h.st->kernels[0].features[1].name, "CALL");
    RemoveFeature(*h.st, "NOTTHERE", 0);
    EXPECT_EQ(h.st->kernels[0].featureCount, 2);
}

}  // namespace
}  // namespace vortelm
