// The assembler listing end to end: vortelm-cli downloads a small routine to
// the in-process board, reads it back and lists it with the register names
// of the controller's register file.

#include <gtest/gtest.h>

#include "CliHome.h"

#include "config/DataHome.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

std::string Record(int address, const std::vector<int>& bytes) {
    std::ostringstream s;
    int sum = static_cast<int>(bytes.size()) + (address >> 8) + (address & 0xFF);
    char buf[16];
    std::snprintf(buf, sizeof buf, ":%02X%04X00", static_cast<unsigned>(bytes.size()),
                  address & 0xFFFF);
    s << buf;
    for (int b : bytes) {
        sum += b;
        std::snprintf(buf, sizeof buf, "%02X", b);
        s << buf;
    }
    std::snprintf(buf, sizeof buf, "%02X", (-sum) & 0xFF);
    s << buf << "\n";
    return s.str();
}

// A fresh data home; the lines run against the in-process board.
class DisasmCli : public vortelm::testing::CliHome {
  protected:
    std::string run(const std::string& lines) { return CliHomeOn::run("sim:", lines); }
};

// The routine at FA00 in the default controller's RAM.
const char* const kListing =
    "\n00FA00: E6F03412  MOV     R0,#1234h"
    "\n00FA04: F2F112FF  MOV     R1,SYSCON"
    "\n00FA08: F6F010FF  MOV     PSW,R0"
    "\n00FA0C: 0F88      BSET    N"
    "\n00FA0E: D1A0      EXTR    #3"
    "\n00FA10: CC00      NOP     "
    "\n00FA12: CB00      RET     "
    "\n***************************************";

TEST_F(DisasmCli, ViewAssemblerListsTheRoutineReadBackFromTheBoard) {
    std::ofstream(home / "r.hex") << Record(0xFA00, {0xE6, 0xF0, 0x34, 0x12, 0xF2, 0xF1, 0x12,
                                                     0xFF, 0xF6, 0xF0, 0x10, 0xFF, 0x0F, 0x88,
                                                     0xD1, 0xA0, 0xCC, 0x00, 0xCB, 0x00})
                                  << ":00000001FF\n";
    // The image is unread after the download, so the listing shows what
    // the upload brought back from the board.
    const std::string out =
        run("_connect NOPROMPT\n_load r.hex\n_download\n_clearmemory\n_viewassembler\n"
            "_upload\n_viewassembler\n");
    EXPECT_EQ(out.find("*ERROR"), std::string::npos) << out;
    const size_t unread = out.find("\n00FA00: ....\n00FA02: ....\n");
    ASSERT_NE(unread, std::string::npos) << out;
    EXPECT_NE(out.find(kListing, unread), std::string::npos) << out;
    EXPECT_EQ(status, 0);
}

TEST_F(DisasmCli, ListingEndsAtAnIllegalInstructionAndGoesOnWithTheNextSelection) {
    std::ofstream(home / "r.hex") << Record(0x100, {0xCC, 0x00, 0x3B, 0x00, 0xCC, 0x00, 0xCC, 0x00})
                                  << Record(0x200, {0xCB, 0x00, 0xCB, 0x00}) << ":00000001FF\n";
    const std::string out2 = run("_load r.hex\n_viewassembler\n");
    EXPECT_NE(out2.find("\n000100: CC00      NOP     "
                        "\n000102: 3B00      Illegal Instruction"
                        "\n***************************************"
                        "\n000200: CB00      RET     "
                        "\n000202: CB00      RET     "
                        "\n***************************************"),
              std::string::npos)
        << out2;
}

TEST_F(DisasmCli, AMissingTableLeavesTheRestOfTheProgramWorking) {
    fs::remove(home / "CMDDEF" / "command.cmd");
    // A complete data home: the start repairs nothing, the table stays missing.
    std::ofstream(home / vortelm::kDataHomeMark) << "";
    std::ofstream(home / "r.hex") << Record(0x100, {0xCC, 0x00}) << ":00000001FF\n";
    const std::string out = run("_load r.hex\n_viewassembler\n_showselections\n");
    EXPECT_NE(out.find("*ERROR: Instruction table " + (home / "CMDDEF" / "command.cmd").string() +
                       " not found, the disassembler is off\n"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("*ERROR: No instruction table loaded\n"), std::string::npos) << out;
    EXPECT_NE(out.find("Selection 0: 000100 to 000101"), std::string::npos) << out;
}

}  // namespace
