// The monitor command exchanges against the scripted board.

#include "Fixture.h"

namespace vortelm::testing {
namespace {

class Monitor : public TargetFixture {
  protected:
    void SetUp() override { running(); }
};

TEST_F(Monitor, WriteSendsBlockAndMarksValid) {
    load(0x1000, {1, 2, 3, 4});
    EXPECT_EQ(mon.Cmd_Write(0x1000, 4), 0);
    EXPECT_EQ(board->peek(0x1000), 1);
    EXPECT_EQ(board->peek(0x1003), 4);
    EXPECT_TRUE(isValid(0x1000));
    EXPECT_TRUE(isValid(0x1003));
    // command, address low first, length low first, data, checksum command
    std::vector<uint8_t> expected{0x84, 0x00, 0x10, 0x00, 0x04, 0x00, 1, 2, 3, 4, 0x33};
    EXPECT_EQ(board->received, expected);
    EXPECT_EQ(port.receiveThreshold(), 1);
    EXPECT_EQ(port.ComSemaphore, 0);
}

TEST_F(Monitor, WriteLengthZeroIsNotRefused) {
    EXPECT_EQ(mon.Cmd_Write(0x2000, 0), 0);
    std::vector<uint8_t> expected{0x84, 0x00, 0x20, 0x00, 0x00, 0x00, 0x33};
    EXPECT_EQ(board->received, expected);
}

TEST_F(Monitor, ReadLengthZeroIsNotRefused) {
    EXPECT_EQ(mon.Cmd_Read(0x2000, 0), 0);
    std::vector<uint8_t> expected{0x85, 0x00, 0x20, 0x00, 0x00, 0x00, 0x33};
    EXPECT_EQ(board->received, expected);
}

TEST_F(Monitor, KernelOverwriteBounds) {
    st.KernelStartAddress = 0xF600;
    st.KernelEndAddress = 0xF63F;
    // ends just before the core: allowed
    EXPECT_FALSE(mon.CheckKernelOverwrite(0xF500, 0x100));
    // ends on the core's first byte: refused
    EXPECT_TRUE(mon.CheckKernelOverwrite(0xF501, 0x100));
    // starts on the last byte
    EXPECT_TRUE(mon.CheckKernelOverwrite(0xF63F, 4));
    EXPECT_FALSE(mon.CheckKernelOverwrite(0xF640, 4));
    // around the core
    EXPECT_TRUE(mon.CheckKernelOverwrite(0xF000, 0x1000));
}

TEST_F(Monitor, WriteIntoCoreIsRefusedWithoutTouchingTheLine) {
    st.KernelStartAddress = 0xF600;
    st.KernelEndAddress = 0xF63F;
    load(0xF5FF, {9, 9});
    EXPECT_EQ(mon.Cmd_Write(0xF5FF, 2), -6);
    EXPECT_TRUE(board->received.empty());
    EXPECT_EQ(port.ComSemaphore, 0);
}

TEST_F(Monitor, ReadStoresWithMarks) {
    board->memory[0x3000] = 0xAB;
    board->memory[0x3001] = 0xCD;
    EXPECT_EQ(mon.Cmd_Read(0x3000, 2), 0);
    EXPECT_EQ(dumpByte(0x3000), 0xAB);
    EXPECT_EQ(dumpByte(0x3001), 0xCD);
    EXPECT_TRUE(isDefined(0x3000));
    EXPECT_TRUE(isValid(0x3001));
}

TEST_F(Monitor, WriteChecksumMismatchClearsValid) {
    board->wrongChecksum = true;
    load(0x1000, {1, 2, 3});
    EXPECT_EQ(mon.Cmd_Write(0x1000, 3), -3);
    EXPECT_FALSE(isValid(0x1000));
    EXPECT_FALSE(isValid(0x1002));
}

TEST_F(Monitor, ReadChecksumMismatchKeepsValid) {
    board->wrongChecksum = true;
    board->memory[0x3000] = 5;
    EXPECT_EQ(mon.Cmd_Read(0x3000, 1), -3);
    EXPECT_TRUE(isValid(0x3000));
    EXPECT_EQ(dumpByte(0x3000), 5);
}

TEST_F(Monitor, ReadTimeoutStillAsksForChecksum) {
    board->dropReadDataAfter = 2;
    EXPECT_EQ(mon.Cmd_Read(0x3000, 8), -4);  // the last failure wins
    ASSERT_FALSE(board->received.empty());
    EXPECT_EQ(board->received.back(), 0x33);
    EXPECT_FALSE(isValid(0x3000));
}

TEST_F(Monitor, WrongAcknowledgesGiveTheirCodes) {
    board->wrongAck1[0x84] = 0x55;
    load(0x1000, {1});
    EXPECT_EQ(mon.Cmd_Write(0x1000, 1), -1);
    board->wrongAck1.clear();
    board->wrongAck2[0x84] = 0x55;
    EXPECT_EQ(mon.Cmd_Write(0x1000, 1), -2);
    EXPECT_FALSE(isValid(0x1000));
    board->wrongAck2.clear();
    board->wrongAck1[0x33] = 0x55;
    EXPECT_EQ(mon.Cmd_Write(0x1000, 1), -5);
    board->wrongAck1.clear();
    board->wrongAck2[0x33] = 0x55;
    EXPECT_EQ(mon.Cmd_Write(0x1000, 1), -4);
    EXPECT_FALSE(isValid(0x1000));
}

TEST_F(Monitor, DeadTargetCostsFiveTimeoutsInWrite) {
    board->mode = ScriptedBoard::Mode::Dead;
    load(0x1000, {1});
    const int64_t t0 = host.now;
    EXPECT_EQ(mon.Cmd_Write(0x1000, 1), -4);
    EXPECT_EQ(host.now - t0, 5 * int64_t{st.TIMEOUT} * 1000);
    EXPECT_FALSE(isValid(0x1000));
}

TEST_F(Monitor, WriteWordAndReadWord) {
    EXPECT_EQ(mon.Cmd_WriteWord(0xFE12, 0xBEEF), 0);
    EXPECT_EQ(board->peek(0xFE12), 0xEF);
    EXPECT_EQ(board->peek(0xFE13), 0xBE);
    EXPECT_EQ(mon.Cmd_ReadWord_Value(0xFE12), 0xBEEF);
    EXPECT_EQ(mon.Cmd_ReadWord(0xFE12), 0);
    EXPECT_EQ(dumpByte(0xFE12), 0xEF);
    EXPECT_TRUE(isValid(0xFE13));
    EXPECT_TRUE(isDefined(0xFE13));
}

TEST_F(Monitor, ReadWordValueWrongFirstAckIsOverwrittenByValue) {
    board->memory[0x10] = 0x34;
    board->memory[0x11] = 0x12;
    board->wrongAck1[0xCD] = 0x00;
    EXPECT_EQ(mon.Cmd_ReadWord_Value(0x10), 0x1234);
    board->wrongAck1.clear();
    board->wrongAck2[0xCD] = 0x00;
    EXPECT_EQ(mon.Cmd_ReadWord_Value(0x10), -2);
}

TEST_F(Monitor, ReadWordMissingDataIsMinusThree) {
    board->silentCommands.insert(0xCD);
    EXPECT_EQ(mon.Cmd_ReadWord(0x10), -3);
    EXPECT_EQ(mon.Cmd_ReadWord_Value(0x10), -3);
}

TEST_F(Monitor, SequenceProtectionEinitSwresetJmp) {
    EXPECT_EQ(mon.Cmd_WriteWordSequence(0xFC80, 2), 0);
    EXPECT_EQ(mon.Cmd_SetProtection(0x11, 0x22, 0x33), 0);
    EXPECT_EQ(board->protection, (std::vector<uint8_t>{0x11, 0x33, 0x22}));
    EXPECT_EQ(mon.Cmd_Einit(), 0);
    EXPECT_EQ(board->einitCount, 1);
    EXPECT_EQ(mon.Cmd_Swreset(), 0);
    EXPECT_EQ(mon.Cmd_Jmp(0x123456), 0);
    std::vector<uint8_t> tail(board->received.end() - 4, board->received.end());
    EXPECT_EQ(tail, (std::vector<uint8_t>{0x41, 0x56, 0x34, 0x12}));
    board->silentCommands.insert(0x31);
    EXPECT_EQ(mon.Cmd_Einit(), -2);
}

TEST_F(Monitor, CallReturnsRegisters) {
    link::CallFrame f;
    for (size_t i = 0; i < 8; ++i) f.r[i] = static_cast<int32_t>(0x100 * (i + 1));
    EXPECT_EQ(mon.Cmd_Call(0xFC00, f), 0);
    EXPECT_EQ(f.r[0], 0x101);
    EXPECT_EQ(f.r[1], 0x200);
    EXPECT_EQ(f.r[7], 0);
}

TEST_F(Monitor, CallWrongSecondAckKeepsArguments) {
    board->wrongAck2[0x9F] = 0x12;
    link::CallFrame f;
    f.r[0] = 7;
    f.r[7] = 9;
    EXPECT_EQ(mon.Cmd_Call(0xFC00, f), -1);
    EXPECT_EQ(f.r[0], 7);
    EXPECT_EQ(f.r[7], 9);
}

TEST_F(Monitor, CallWaitsNineRoundsAndRefusesTheTenth) {
    link::CallFrame f;
    board->callDelayUs = int64_t{8} * st.TIMEOUT * 1000 + 500;  // in the ninth round
    EXPECT_EQ(mon.Cmd_Call(0xFC00, f), 0);
    EXPECT_EQ(f.r[0], 1);
    link::CallFrame g;
    board->callDelayUs = int64_t{9} * st.TIMEOUT * 1000 + 500;  // in the tenth round
    EXPECT_EQ(mon.Cmd_Call(0xFC00, g), -2);
    EXPECT_EQ(g.r[0], 0);
}

TEST_F(Monitor, CallWithZeroByteConsumesTheTrailingByte) {
    board->callZero = true;
    link::CallFrame f;
    EXPECT_EQ(mon.Cmd_Call(0xFC00, f, true), 0);
    EXPECT_EQ(board->received.back(), 0x00);
    EXPECT_EQ(port.inCount(), 0);
    EXPECT_EQ(text().find('w'), std::string::npos);  // 0x77 never reached the terminal
}

TEST_F(Monitor, ReconnectAndTestConnection) {
    EXPECT_EQ(mon.Cmd_reconnect(), 0);
    EXPECT_EQ(mon.Cmd_testconnection(), 0);
    EXPECT_EQ(port.ComSemaphore, 0);
    board->mode = ScriptedBoard::Mode::Dead;
    EXPECT_EQ(mon.Cmd_reconnect(), -2);
    EXPECT_EQ(mon.Cmd_testconnection(), -2);
}

TEST_F(Monitor, TestConnectionGivesWayWhenAborted) {
    port.TestAbort = 1;
    bool gaveWay = false;
    port.setReceiveThreshold(0);
    EXPECT_EQ(mon.Cmd_testconnection(&gaveWay), 0);
    EXPECT_TRUE(gaveWay);
    EXPECT_EQ(port.TestAbort, 0);
    EXPECT_TRUE(board->received.empty());
    EXPECT_EQ(port.ComSemaphore, 0);
}

TEST_F(Monitor, ReadSfrWithAndWithoutReadWord) {
    st.sfrTable[0].name = "SYSCON";
    st.sfrTable[0].address = 0xFF12;
    st.sfrCount = 1;
    board->memory[0xFF12] = 0x44;
    board->memory[0xFF13] = 0x55;
    EXPECT_EQ(mon.cmd_readsfr("NOPE"), -1);
    EXPECT_EQ(mon.cmd_readsfr("syscon"), 0);
    EXPECT_EQ(board->commands, (std::vector<uint8_t>{0xCD}));
    EXPECT_EQ(dumpByte(0xFF13), 0x55);
    board->commands.clear();
    setFeatures({"READBLOCK"});
    EXPECT_EQ(mon.cmd_readsfr("SYSCON"), 0);
    // two block exchanges, each with its checksum
    EXPECT_EQ(board->commands, (std::vector<uint8_t>{0x85, 0x33, 0x85, 0x33}));
    st.ConnectionState = kNotConnected;
    EXPECT_EQ(mon.cmd_readsfr("SYSCON"), -2);
}

TEST_F(Monitor, GprAndStackHelpers) {
    st.sfrTable[0] = SfrRecord{};
    st.sfrTable[0].name = "CP";
    st.sfrTable[0].address = 0xFE10;
    st.sfrTable[1].name = "SP";
    st.sfrTable[1].address = 0xFE12;
    st.sfrCount = 2;
    board->memory[0xFE10] = 0x00;
    board->memory[0xFE11] = 0xFC;  // CP = FC00
    board->memory[0xFC06] = 0x78;
    board->memory[0xFC07] = 0x56;  // R3
    EXPECT_EQ(mon.cmd_readgpr(3), 0x5678);
    board->memory[0xFE12] = 0x00;
    board->memory[0xFE13] = 0xFB;  // SP = FB00
    board->memory[0xFB00] = 0x22;
    board->memory[0xFB01] = 0x11;
    board->memory[0xFB02] = 0x44;
    board->memory[0xFB03] = 0x33;
    EXPECT_EQ(mon.cmd_pop2nd(false), 0x3344);
    EXPECT_EQ(mon.cmd_pop(true), 0x1122);
    EXPECT_EQ(board->peek(0xFE12), 0x02);
    EXPECT_EQ(board->peek(0xFE13), 0xFB);
}

TEST_F(Monitor, KLineEchoesAreNotTakenForReplies) {
    st.KLINE = 1;
    board->kline = true;
    load(0x1000, {1, 2, 3});
    EXPECT_EQ(mon.Cmd_Write(0x1000, 3), 0);
    EXPECT_EQ(mon.Cmd_Read(0x1000, 3), 0);
    EXPECT_EQ(mon.Cmd_ReadWord_Value(0x1000), 0x0201);
}

}  // namespace
}  // namespace vortelm::testing
