// The board's own instruction lengths against the instruction table that is
// delivered for the host's decoder: two tables written apart that must agree
// wherever the instruction set defines an instruction.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "sim/Walk.h"

namespace {

TEST(LengthTable, AgreesWithTheDeliveredInstructionTable) {
    std::ifstream in(std::filesystem::path(VORTELM_SOURCE_DIR) / "data" / "CMDDEF" / "command.cmd");
    ASSERT_TRUE(in.good());
    // First bytes that are no instruction: their rows carry no real length.
    const std::set<int> undefined{0x3B, 0x44, 0x45, 0x8B, 0x95, 0xC1,
                                  0xC7, 0xE3, 0xE5, 0xF5, 0xF8, 0xF9};
    std::string line;
    int rows = 0;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty()) continue;
        std::stringstream s(line);
        std::string op, mnemonic, length;
        std::getline(s, op, ',');
        std::getline(s, mnemonic, ',');
        std::getline(s, length, ',');
        const int opcode = std::stoi(op, nullptr, 16);
        ++rows;
        if (undefined.count(opcode)) continue;
        EXPECT_EQ(vortelm::sim::InstructionLength(static_cast<uint8_t>(opcode)), std::stoi(length))
            << mnemonic << " " << op;
    }
    EXPECT_EQ(rows, 256);
}

}  // namespace
