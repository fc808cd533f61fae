// The assembler listing row through the shell frame.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "disasm/CommandTable.h"
#include "image/Dump.h"
#include "image/Selections.h"
#include "shell/Shell.h"

namespace vortelm::shell {
namespace {

struct ViewRows : ::testing::Test {
    TestHost host;
    ProgramState st{host};
    Session s{st};

    void SetUp() override {
        BuildShellCommandTable(s.table);
        std::ifstream in(std::filesystem::path(VORTELM_SOURCE_DIR) / "data" / "CMDDEF" /
                         "command.cmd");
        std::stringstream text;
        text << in.rdbuf();
        ASSERT_TRUE(disasm::ParseCommandTable(text.str(), st.instructions).ok());
        st.sfrTable[0].name = "SYSCON";
        st.sfrTable[0].address = 0xFF12;
        st.sfrTable[0].shortAddress = 0x89;
        st.sfrCount = 1;
    }
    void Put(int32_t address, std::initializer_list<uint8_t> bytes) {
        for (uint8_t b : bytes) {
            WriteDumpByte(st.dump, address, b);
            SetDefined(st.dump, address++, kTrue);
        }
    }
    std::string Run(std::string_view line) {
        host.terminal.clear();
        result = ExecuteShellCommand(s, line, 0);
        return host.terminal;
    }
    int16_t result = -99;
};

TEST_F(ViewRows, ListsEachSelectionWithBytesAndSeparator) {
    Put(0x1000, {0xE6, 0xF0, 0x34, 0x12, 0xF2, 0xF1, 0x12, 0xFF, 0xCC, 0x00});
    AddSelection(st.selections, 0x1000, 0x1009);
    EXPECT_EQ(Run("_viewassembler"),
              ">_viewassembler\r\n"
              "\r\n001000: E6F03412  MOV     R0,#1234h"
              "\r\n001004: F2F112FF  MOV     R1,SYSCON"
              "\r\n001008: CC00      NOP     "
              "\r\n***************************************");
    EXPECT_EQ(result, 0);
}

TEST_F(ViewRows, UndefinedBytesShowPointsTwoBytesAtATime) {
    Put(0x1000, {0xCC, 0x00});
    Put(0x1005, {0xCC, 0x00});
    AddSelection(st.selections, 0x1000, 0x1007);
    EXPECT_EQ(Run("_viewassembler"),
              ">_viewassembler\r\n"
              "\r\n001000: CC00      NOP     "
              "\r\n001002: ...."
              "\r\n001004: ...."
              "\r\n001006: ...."
              "\r\n***************************************");
}

TEST_F(ViewRows, AnOddStartIsKeptAndAnIllegalTextEndsTheSelection) {
    Put(0x1001, {0xCC, 0x00, 0xF8, 0x00, 0xCC, 0x00});
    AddSelection(st.selections, 0x1001, 0x1006);
    AddSelection(st.selections, 0x2000, 0x2001);
    Put(0x2000, {0xCB, 0x00});
    EXPECT_EQ(Run("_viewassembler"),
              ">_viewassembler\r\n"
              "\r\n001001: CC00      NOP     "
              "\r\n001003: F800      Illegal Instruction"
              "\r\n***************************************"
              "\r\n002000: CB00      RET     "
              "\r\n***************************************");
}

TEST_F(ViewRows, SequenceCountersStartAtZero) {
    st.instructions.extrCount = 5;
    Put(0x1000, {0xF2, 0xF1, 0x34, 0x12});
    AddSelection(st.selections, 0x1000, 0x1003);
    EXPECT_NE(Run("_viewassembler").find("MOV     R1,DPP0:1234h"), std::string::npos);
}

TEST_F(ViewRows, TakesNoArguments) {
    EXPECT_EQ(
        Run("_viewassembler 1"),
        ">_viewassembler 1\r\n*ERROR: Illegal number of parameters\r\nusage: _viewassembler\r\n");
}

TEST_F(ViewRows, WithoutATableTheRowFails) {
    st.instructions = InstructionTable{};
    AddSelection(st.selections, 0x1000, 0x1003);
    EXPECT_EQ(Run("_viewassembler"), ">_viewassembler\r\n*ERROR: No instruction table loaded\r\n");
    EXPECT_NE(result, 0);
}

}  // namespace
}  // namespace vortelm::shell
