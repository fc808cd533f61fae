// Faults of the board while a flash is programmed: whatever goes wrong on
// the line or on the board, the program either ends in its failure words
// with a failing result, or claims success for a flash that reads back as
// the image. Each fault is moved through the whole job, so that some runs
// meet it during the driver load, the erases and the blocks.

#include <string>

#include "FlashFixture.h"

namespace vortelm::testing {
namespace {

struct FaultCase {
    const char* kind;
    int from;  // first n of "kind@n"
    int to;
    int step;
};

class Faults : public FlashProgramTest,
               public ::testing::WithParamInterface<std::tuple<FamilyCase, FaultCase>> {};

bool Failed(const std::string& out) {
    for (const char* words :
         {"*ERROR: Program not successful", "*ERROR: Erase not successful",
          "*ERROR: Erase wordline not successful", "*ERROR: download not successful",
          "initializing driver not successful"})
        if (out.find(words) != std::string::npos) return true;
    return false;
}

TEST_P(Faults, NeverClaimSuccessForAFlashThatDiffers) {
    const auto& [f, fault] = GetParam();
    const std::vector<uint8_t> image = Pattern(0x800, 21);
    int duringProgramming = 0;
    for (int n = fault.from; n <= fault.to; n += fault.step) {
        SCOPED_TRACE(std::string(fault.kind) + "@" + std::to_string(n));
        TearDown();
        SetUp();
        host.terminal.clear();
        start(f,
              "sim:?fault=" + std::string(fault.kind) + "@" + std::to_string(n) + "&stallms=2500");
        if (!has(run("_connect NOPROMPT"), "successfully launched"))
            continue;  // met during connect
        writeFile("x.hex", IntelHex(f.flashStart + f.sectorSize - 0x400, image));
        run("_load x.hex");
        const std::string out = run("_iprogram");
        if (has(out, "successfully programmed")) {
            EXPECT_EQ(result, 0) << out;
            EXPECT_FALSE(Failed(out)) << out;
            // the flash must hold the image; a compare that itself meets the
            // fault may fail, but it may never count a difference
            const std::string cmp = run("_compare");
            if (has(cmp, "*Comparison: ")) {
                EXPECT_TRUE(has(cmp, " 0 Bytes different")) << out << cmp;
            }
        } else {
            ++duringProgramming;
            EXPECT_TRUE(Failed(out)) << out;
            EXPECT_NE(result, 0) << out;
            EXPECT_FALSE(host.busy) << "the pointer is the default again";
        }
    }
    EXPECT_GT(duringProgramming, 0) << "the fault never met the programming";
}

const FaultCase kFaultCases[] = {
    {"drop", 20, 600, 29},  {"flip", 20, 600, 29}, {"stall", 20, 600, 29},
    {"wrongack", 5, 80, 5}, {"reset", 5, 80, 5},   {"die", 5, 80, 5},
};

std::string CaseName(const ::testing::TestParamInfo<std::tuple<FamilyCase, FaultCase>>& i) {
    return std::string(std::get<0>(i.param).mctype) + "_" + std::get<1>(i.param).kind;
}

INSTANTIATE_TEST_SUITE_P(Flash, Faults,
                         ::testing::Combine(::testing::Values(kFamilyCases[0], kFamilyCases[1]),
                                            ::testing::ValuesIn(kFaultCases)),
                         CaseName);

}  // namespace
}  // namespace vortelm::testing
