// The boot sequence and connect, reconnect, disconnect and the connection
// check against the scripted board.

#include "Fixture.h"

namespace vortelm::testing {
namespace {

using Boot = TargetFixture;

TEST_F(Boot, ConnectSendsBothImagesAndLogs) {
    EXPECT_EQ(target::connect(tgt, 0), 0);
    EXPECT_EQ(st.ConnectionState, 1);
    EXPECT_EQ(board->loader, images["LOADER.HEX"].bytes);
    EXPECT_EQ(board->core, images["CORE.HEX"].bytes);
    EXPECT_TRUE(logged("*Loader file Prepare\r\n"));
    EXPECT_TRUE(logged("*Vortelm file Prepare\r\n"));
    EXPECT_TRUE(logged("*send Byte  0+ Loader + VortelmCore\r\n"));
    EXPECT_TRUE(logged("*RECEIVE - MC-Identifier: C5\r\n"));
    EXPECT_TRUE(logged("*RECEIVE - LoaderACK 01 received\r\n"));
    EXPECT_TRUE(logged("*RECEIVE - Vortelm ACK 03 received\r\n"));
    EXPECT_TRUE(logged("*Vortelm successfully launched"));
    EXPECT_EQ(st.selections.count, 0);
    EXPECT_EQ(st.KernelStartAddress, 0xF600);
    EXPECT_EQ(st.KernelEndAddress, 0xF63F);
    EXPECT_GE(tgt.checkTimer, 0);
    EXPECT_TRUE(isValid(0xF600));  // the core's bytes carry the Valid mark
    EXPECT_EQ(readPaths.at(0), "/nonexistent-home/LOADER.HEX");
}

TEST_F(Boot, ConnectWithoutLoaderAck) {
    st.kernels[0].loaderAck = kFalse;
    board->loaderAck = false;
    EXPECT_EQ(target::connect(tgt, 0), 0);
    EXPECT_FALSE(logged("LoaderACK"));
    EXPECT_FALSE(logged("Loader_ACK"));
}

TEST_F(Boot, StaleLoaderAckIsNotLookedAtWithoutLoaderAck) {
    st.kernels[0].loaderAck = kFalse;
    board->loaderAck = false;
    tgt.boot.LoaderAckByte = 0x77;  // left from an earlier connect
    EXPECT_EQ(target::connect(tgt, 0), 0);
    EXPECT_EQ(tgt.boot.LoaderAckByte, 0x77);
    EXPECT_FALSE(logged("Incorrect LoaderAck"));
}

TEST_F(Boot, NoBoardAnsweringLeavesStateZero) {
    board->mode = ScriptedBoard::Mode::Dead;
    EXPECT_EQ(target::connect(tgt, 0), -1);
    EXPECT_EQ(st.ConnectionState, 0);
    // ten init bytes and nothing else
    EXPECT_EQ(board->received, std::vector<uint8_t>(10, 0x00));
    EXPECT_FALSE(logged("No ID Byte"));
    EXPECT_EQ(st.selections.count, 0);
    EXPECT_GE(tgt.checkTimer, 0);
}

TEST_F(Boot, IdByteZeroIsReportedAsNoIdByte) {
    board->idByte = 0x00;
    EXPECT_EQ(target::connect(tgt, 0), 0);
    EXPECT_TRUE(logged("*ERROR: No ID Byte received\r\n"));
}

TEST_F(Boot, MissingLoaderAckLeavesResultToCoreAck) {
    board->loaderAck = false;  // the kernel says it acknowledges, the board does not
    EXPECT_EQ(target::connect(tgt, 0), 0);
    EXPECT_TRUE(logged("*ERROR: No Loader_ACK Byte received (VortelmCore not loaded)\r\n"));
    EXPECT_TRUE(logged("*Vortelm successfully launched"));
}

TEST_F(Boot, WrongLoaderAckFailsButCoreIsSent) {
    board->loaderAckValue = 0x09;
    EXPECT_EQ(target::connect(tgt, 0), -1);
    EXPECT_TRUE(logged("*RECEIVE - LoaderACK ERROR: Incorrect LoaderAck received 09\r\n"));
    EXPECT_EQ(board->core.size(), 64u);
    EXPECT_EQ(st.ConnectionState, 0);
}

TEST_F(Boot, WrongAndMissingCoreAck) {
    board->coreAckValue = 0x07;
    EXPECT_EQ(target::connect(tgt, 0), -1);
    EXPECT_TRUE(logged("*RECEIVE - Vortelm ERROR: Incorrect Vortelm ACK received 07\r\n"));
    EXPECT_EQ(st.ConnectionState, 0);
}

TEST_F(Boot, MissingCoreAck) {
    board->coreLength = 65;  // the board waits for one byte more and never starts
    EXPECT_EQ(target::connect(tgt, 0), -1);
    EXPECT_TRUE(logged("*ERROR: No Vortelm Byte received (Vortelm not successful)\r\n"));
}

TEST_F(Boot, AutobaudToARunningCoreSendsNoImage) {
    board->mode = ScriptedBoard::Mode::Monitor;
    EXPECT_EQ(target::connect(tgt, 0), 0);
    EXPECT_TRUE(logged("*Autobauding Vortelm detected"));
    EXPECT_EQ(board->received, std::vector<uint8_t>{0x00});
    EXPECT_TRUE(board->loader.empty());
    EXPECT_EQ(st.ConnectionState, 1);
}

TEST_F(Boot, IdByteFourTakesTheAutobaudBranchWhateverTheController) {
    board->idByte = 0x04;  // a bootstrap loader that happens to answer 04
    board->loaderLength = 1000;
    EXPECT_EQ(target::connect(tgt, 0), -1);
    EXPECT_TRUE(logged("*Autobauding Vortelm detected"));
    EXPECT_TRUE(board->loader.empty());
}

TEST_F(Boot, CancelAtPromptReturnsMinusOne) {
    host.answer = MsgAnswer::Cancel;
    EXPECT_EQ(target::connect(tgt, 1), -1);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0], "Please reset your Hardware NOW !");
    EXPECT_EQ(port.receiveThreshold(), 1);
    EXPECT_TRUE(board->received.empty());
    EXPECT_GE(tgt.checkTimer, 0);  // enabled again
    EXPECT_EQ(st.ConnectionState, 0);
}

TEST_F(Boot, PromptOkGoesOn) {
    EXPECT_EQ(target::connect(tgt, 1), 0);
    EXPECT_EQ(host.boxes.size(), 1u);
}

TEST_F(Boot, InitiateDrainsTheLineFirst) {
    board->inject({0x41, 0x42});
    EXPECT_EQ(target::connect(tgt, 0), 0);
    EXPECT_TRUE(logged("*RECEIVE - MC-Identifier: C5"));
}

TEST_F(Boot, KernelFeatureRelocatableWithoutPatchAddressDoesNotPatch) {
    setFeatures({"READBLOCK", "WRITEBLOCK", "RELOCATABLE"});
    st.kernels[0].patchStartAddress = 0;
    images["LOADER.HEX"].bytes[4] = 0x00;
    images["LOADER.HEX"].bytes[5] = 0xF6;  // old start
    EXPECT_EQ(target::connect(tgt, 0), 0);
    EXPECT_EQ(board->loader, images["LOADER.HEX"].bytes);
    EXPECT_EQ(st.KernelStartAddress, 0xF600);
}

TEST_F(Boot, PatchWithoutRelocatableFeatureDoesNotPatch) {
    st.kernels[0].patchStartAddress = 0xE000;
    images["LOADER.HEX"].bytes[4] = 0x00;
    images["LOADER.HEX"].bytes[5] = 0xF6;
    EXPECT_EQ(target::connect(tgt, 0), 0);
    EXPECT_EQ(board->loader, images["LOADER.HEX"].bytes);
}

class Relocated : public TargetFixture {
  protected:
    void SetUp() override {
        setFeatures({"READBLOCK", "WRITEBLOCK", "RELOCATABLE"});
        st.kernels[0].patchStartAddress = 0xE000;
        auto& l = images["LOADER.HEX"].bytes;
        std::fill(l.begin(), l.end(), uint8_t{0x11});
        l[2] = 0x00;
        l[3] = 0xF6;  // start F600
        l[6] = 0x3F;
        l[7] = 0xF6;  // end F63F
        l[10] = 0xFF;
        l[11] = 0xF5;  // start minus one F5FF
        l[13] = 0x00;
        l[14] = 0xF6;  // on an odd position
    }
};

TEST_F(Relocated, LoaderWordsFollowTheCore) {
    EXPECT_EQ(target::connect(tgt, 0), 0);
    const auto& l = board->loader;
    EXPECT_EQ(l[2], 0x00);
    EXPECT_EQ(l[3], 0xE0);
    EXPECT_EQ(l[6], 0x3F);
    EXPECT_EQ(l[7], 0xE0);
    EXPECT_EQ(l[10], 0xFF);  // start minus one stays without K-Line
    EXPECT_EQ(l[11], 0xF5);
    EXPECT_EQ(l[14], 0xE0);                            // odd positions are patched too
    EXPECT_EQ(board->core, images["CORE.HEX"].bytes);  // the core's bytes do not change
    EXPECT_EQ(st.KernelStartAddress, 0xE000);
    EXPECT_EQ(st.KernelEndAddress, 0xE03F);
    EXPECT_EQ(dumpByte(0xE000), images["CORE.HEX"].bytes[0]);
    EXPECT_TRUE(isDefined(0xE03F));
    EXPECT_FALSE(isDefined(0xF600));
}

TEST_F(Relocated, KLineAlsoPatchesStartMinusOne) {
    st.KLINE = 1;
    board->kline = true;
    EXPECT_EQ(target::connect(tgt, 0), 0);
    EXPECT_EQ(board->loader[10], 0xFF);
    EXPECT_EQ(board->loader[11], 0xDF);
}

TEST_F(Relocated, WordEqualToStartAndThenEndIsReplacedTwice) {
    st.kernels[0].patchStartAddress = 0xF640;
    // old start F600 -> new start F640; old end: make it F640
    st.kernels[0].endAddress = 0xF640;
    auto& l = images["LOADER.HEX"].bytes;
    std::fill(l.begin(), l.end(), uint8_t{0x11});
    l[2] = 0x00;
    l[3] = 0xF6;
    EXPECT_EQ(target::connect(tgt, 0), 0);
    // F600 -> F640 (new start) -> equals old end F640 -> new end F640 + F640 - F600 = F680
    EXPECT_EQ(board->loader[2], 0x80);
    EXPECT_EQ(board->loader[3], 0xF6);
}

TEST_F(Boot, KLineConnect) {
    st.KLINE = 1;
    board->kline = true;
    EXPECT_EQ(target::connect(tgt, 0), 0);
    EXPECT_EQ(board->core.size(), 64u);
}

TEST_F(Boot, ReconnectAndDisconnect) {
    board->mode = ScriptedBoard::Mode::Monitor;
    EXPECT_EQ(target::reconnect(tgt), 0);
    EXPECT_TRUE(logged("*Monitor ready"));
    EXPECT_EQ(st.ConnectionState, 1);
    board->mode = ScriptedBoard::Mode::Dead;
    EXPECT_EQ(target::reconnect(tgt), -1);
    EXPECT_TRUE(logged("*ERROR: Monitor not ready"));
    EXPECT_EQ(st.ConnectionState, 0);
    st.ConnectionState = kConnectedAndReady;
    EXPECT_EQ(target::disconnect(tgt), 0);
    EXPECT_TRUE(logged("*disconnect: vortelm disconnected - comm port available"));
    EXPECT_EQ(st.ConnectionState, 0);
    // already closed: nothing happens
    st.ConnectionState = kUserProgramRunning;
    const std::string before = text();
    EXPECT_EQ(target::disconnect(tgt), 0);
    EXPECT_EQ(st.ConnectionState, 2);
    EXPECT_EQ(text(), before);
}

TEST_F(Boot, ReconnectClearsDriverLoaded) {
    st.memoryUnits[0].driverLoaded = kTrue;
    board->mode = ScriptedBoard::Mode::Monitor;
    (void)target::reconnect(tgt);
    EXPECT_EQ(st.memoryUnits[0].driverLoaded, kFalse);
    st.memoryUnits[1].driverLoaded = kTrue;
    board->mode = ScriptedBoard::Mode::Bootstrap;
    (void)target::connect(tgt, 0);
    EXPECT_EQ(st.memoryUnits[1].driverLoaded, kFalse);
}

TEST_F(Boot, LostConnectionIsNoticedOnceWithoutLineBreaks) {
    ASSERT_EQ(target::connect(tgt, 0), 0);
    board->mode = ScriptedBoard::Mode::Dead;
    const std::string before = text();
    host.yield(host.now + 50'000);  // a few ticks of the check
    host.yield(host.now + 50'000);
    EXPECT_EQ(st.ConnectionState, 0);
    EXPECT_EQ(text(), before + "Connection to target lost !");
}

TEST_F(Boot, CheckRunsWhileIdleAndSendsTestBytes) {
    ASSERT_EQ(target::connect(tgt, 0), 0);
    board->commands.clear();
    host.yield(host.now + 10'000);
    ASSERT_FALSE(board->commands.empty());
    EXPECT_EQ(board->commands[0], 0x93);
    EXPECT_EQ(st.ConnectionState, 1);
}

TEST_F(Boot, CheckOffLeavesAPulledCableUnnoticed) {
    ASSERT_EQ(target::connect(tgt, 0), 0);
    st.CHECKCONNECTION = 0;
    board->mode = ScriptedBoard::Mode::Dead;
    host.yield(host.now + 100'000);
    EXPECT_EQ(st.ConnectionState, 1);
    EXPECT_FALSE(logged("Connection to target lost !"));
}

TEST_F(Boot, CheckSkipsStatesOtherThanOne) {
    ASSERT_EQ(target::connect(tgt, 0), 0);
    st.ConnectionState = kUserProgramRunning;
    board->commands.clear();
    host.yield(host.now + 100'000);
    EXPECT_TRUE(board->commands.empty());
}

TEST_F(Boot, StatusTexts) {
    EXPECT_EQ(target::StatusText(0), "NOT CONNECTED");
    EXPECT_EQ(target::StatusText(1), "CONNECTED AND READY");
    EXPECT_EQ(target::StatusText(2), "USER PROGRAM RUNNING");
    EXPECT_EQ(target::StatusText(3), "DEBUGGING ");
    EXPECT_EQ(target::StatusText(4), "STEP MODE");
    EXPECT_EQ(target::StatusText(5), "DEBUGGING ");
    EXPECT_EQ(target::StatusText(6), "STEP MODE ");
    EXPECT_EQ(target::StatusText(7), "DRIVER RUNNING");
}

TEST_F(Boot, StatusTextsByTheStatesNames) {
    EXPECT_EQ(target::StatusText(kNotConnected), "NOT CONNECTED");
    EXPECT_EQ(target::StatusText(kConnectedAndReady), "CONNECTED AND READY");
    EXPECT_EQ(target::StatusText(kUserProgramRunning), "USER PROGRAM RUNNING");
    EXPECT_EQ(target::StatusText(kDebugging), "DEBUGGING ");
    EXPECT_EQ(target::StatusText(kStepMode), "STEP MODE");
    EXPECT_EQ(target::StatusText(kDebuggingToBreakpoint), "DEBUGGING ");
    EXPECT_EQ(target::StatusText(kStepModeToBreakpoint), "STEP MODE ");
    EXPECT_EQ(target::StatusText(kDriverRunning), "DRIVER RUNNING");
    EXPECT_EQ(sizeof(Connection), sizeof(int16_t));
}

TEST_F(Boot, PreconditionsLogTheirLines) {
    EXPECT_EQ(target::CheckPreconditions(st, "READBLOCK"), -100);
    EXPECT_TRUE(logged("*ERROR: Not Connected to Target"));
    st.ConnectionState = kConnectedAndReady;
    EXPECT_EQ(target::CheckPreconditions(st, "NOSUCH"), -101);
    EXPECT_TRUE(logged("*ERROR: Kernel feature not supported "));
    EXPECT_EQ(target::CheckPreconditions(st, "READBLOCK"), 0);
}

}  // namespace
}  // namespace vortelm::testing
