// Moving the monitor, calling a routine and the register helpers, against
// the scripted board.

#include "Fixture.h"
#include "image/Dump.h"

namespace vortelm::testing {
namespace {

class Relocate : public TargetFixture {
  protected:
    void SetUp() override {
        running();
        setFeatures({"RELOCATABLE", "WRITEBLOCK", "READBLOCK", "JMP", "CALL", "WRITEWORD"});
        board->coreRestartsOnJump = true;
    }
    bool monitorMark(int32_t a) { return IsMonitorMark(st.dump, a) != 0; }
};

TEST_F(Relocate, MovesTheCoreAndItsMarks) {
    EXPECT_EQ(target::relocateMonitor(tgt, 0xE000), 0);
    const auto core = images["CORE.HEX"].bytes;
    for (size_t i = 0; i < core.size(); ++i)
        ASSERT_EQ(board->peek(0xE000 + static_cast<uint32_t>(i)), core[i]);
    EXPECT_EQ(board->jumps, (std::vector<uint32_t>{0xE000}));
    EXPECT_EQ(st.KernelStartAddress, 0xE000);
    EXPECT_EQ(st.KernelEndAddress, 0xE03F);
    EXPECT_TRUE(isDefined(0xE000) && isValid(0xE03F) && monitorMark(0xE010));
    EXPECT_FALSE(isDefined(0xF600) || isValid(0xF63F) || monitorMark(0xF610));
    EXPECT_EQ(st.selections.count, 0);
    EXPECT_EQ(text(), "\r\n*VortElm successfully moved to 00E000");
    EXPECT_FALSE(host.busy);
    // the old place is free now, the new one is protected
    link::Monitor m(st, port);
    EXPECT_EQ(m.Cmd_Write(0xF600, 16), 0);
    EXPECT_EQ(m.Cmd_Write(0xE030, 16), -6);
}

TEST_F(Relocate, OntoItselfClearsTheMarksAndTheWriteIsRefused) {
    EXPECT_EQ(target::relocateMonitor(tgt, 0xF600), 0);
    // no block write went out: the range is the running core's
    EXPECT_EQ(std::count(board->commands.begin(), board->commands.end(), 0x84), 0);
    const auto core = images["CORE.HEX"].bytes;
    EXPECT_EQ(dumpByte(0xF600), core[0]);
    EXPECT_EQ(dumpByte(0xF63F), core.back());
    EXPECT_FALSE(isDefined(0xF600) || isValid(0xF600) || monitorMark(0xF600));
    EXPECT_NE(text().find("*VortElm successfully moved to 00F600"), std::string::npos);
}

TEST_F(Relocate, AFailedJumpKeepsTheNewAddress) {
    board->coreRestartsOnJump = false;
    EXPECT_EQ(target::relocateMonitor(tgt, 0xE000), 0);
    EXPECT_EQ(text(), "\r\n*ERROR: Vortelm Acknowledge not Received");
    EXPECT_EQ(st.KernelStartAddress, 0xE000);
}

TEST_F(Relocate, Preconditions) {
    setFeatures({"WRITEBLOCK", "JMP"});
    EXPECT_EQ(target::relocateMonitor(tgt, 0xE000), -101);
    EXPECT_EQ(text(), "\r\n*ERROR: Kernel feature not supported ");
    st.ConnectionState = kNotConnected;
    EXPECT_EQ(target::relocateMonitor(tgt, 0xE000), -100);
    EXPECT_TRUE(board->received.empty());
}

TEST_F(Relocate, CallReturnsTheRegisters) {
    std::array<int32_t, 8> r{0x1111, 2, 3, 4, 5, 6, 7, 0x7777};
    EXPECT_EQ(target::callTarget(tgt, 0x12345, r), 0);
    // the scripted routine adds 1 to R8 and clears R15
    EXPECT_EQ(r[0], 0x1112);
    EXPECT_EQ(r[7], 0);
    EXPECT_EQ(text(),
              "\r\n*Driver successfully executed\r\n*Return Parameters:\r\n"
              "  R8=1112\r\n  R9=0002\r\n  R10=0003\r\n  R11=0004\r\n"
              "  R12=0005\r\n  R13=0006\r\n  R14=0007\r\n  R15=0000\r\n");
    // the state stays at DRIVER RUNNING: the row that called sets it back
    EXPECT_EQ(st.ConnectionState, 7);
    // the trailing zero went out behind the frame
    EXPECT_EQ(board->received.back(), 0x00);
}

TEST_F(Relocate, CallWithoutTheFeatureLeavesDriverRunning) {
    setFeatures({"WRITEBLOCK"});
    std::array<int32_t, 8> r{};
    EXPECT_EQ(target::callTarget(tgt, 0x1000, r), -101);
    EXPECT_EQ(st.ConnectionState, 7);
    EXPECT_EQ(target::StatusText(st.ConnectionState), "DRIVER RUNNING");
    EXPECT_EQ(text(), "\r\n*ERROR: Kernel feature not supported ");
}

TEST_F(Relocate, CallWithAWrongAcknowledgeDisconnects) {
    board->wrongAck2[0x9F] = 0x55;
    std::array<int32_t, 8> r{};
    EXPECT_EQ(target::callTarget(tgt, 0x1000, r), -1);
    EXPECT_EQ(st.ConnectionState, 0);
    EXPECT_EQ(text(), "\r\n*ERROR: Wrong acknowledge received");
}

TEST_F(Relocate, MissingHelperReportsTheLoaderAndTheHelper) {
    st.programFolder = "/nonexistent-home";
    load(0x3000, pattern(4, 1));
    EXPECT_EQ(target::setPllcon(tgt, 0x1234), -1);
    EXPECT_NE(text().find("*ERROR: file "), std::string::npos);
    EXPECT_NE(text().find(" not found !"), std::string::npos);
    EXPECT_EQ(text().substr(text().size() - 23), "Error setting PLLCON \r\n");
    // the selection list is back
    ASSERT_EQ(st.selections.count, 1);
    EXPECT_EQ(st.selections.start[0], 0x3000);
    st.terminalBuffer.clear();
    EXPECT_EQ(target::setRstcon(tgt, 0x1234), -1);
    EXPECT_EQ(text().substr(text().size() - 25), "Error setting RSTCON -1\r\n");
}

TEST_F(Relocate, ReadSfrWord) {
    st.sfrTable[0].name = "SYSCON";
    st.sfrTable[0].address = 0xFF12;
    st.sfrCount = 1;
    board->memory[0xFF12] = 0x34;
    board->memory[0xFF13] = 0x12;
    EXPECT_EQ(target::readSfrWord(tgt, "syscon"), 0x1234);
    EXPECT_EQ(target::readSfrWord(tgt, "NOSUCH"), -2);
    board->mode = ScriptedBoard::Mode::Dead;
    EXPECT_EQ(target::readSfrWord(tgt, "SYSCON"), -2);
    st.ConnectionState = kNotConnected;
    EXPECT_EQ(target::readSfrWord(tgt, "SYSCON"), -1);
}

TEST(BitComplement, LowBitsOnly) {
    EXPECT_EQ(target::bitComplement(0x00F0, 8), 0x0F);
    EXPECT_EQ(target::bitComplement(0x1234, 4), 0xB);
    EXPECT_EQ(target::bitComplement(5, 0), 0);
    EXPECT_EQ(target::bitComplement(5, -3), 0);
    EXPECT_EQ(target::bitComplement(0, 32), -1);
    EXPECT_EQ(target::bitComplement(0, 40), -1);
}

}  // namespace
}  // namespace vortelm::testing
