// The target rows through the shell frame, against the scripted board.

#include <gtest/gtest.h>

#include "ShellOnBoard.h"
#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "image/Dump.h"
#include "link/ComPort.h"
#include "shell/Rows.h"
#include "shell/Shell.h"
#include "target/Target.h"

namespace vortelm::shell {
namespace {

using vortelm::testing::ScriptedBoard;

struct TargetRows : testing::ShellOnBoard {
    void SetUp() override {
        ShellOnBoard::SetUp();
        connected();
        features({"READBLOCK", "WRITEBLOCK", "WRITESEQ", "SETPROTECTION"});
        registers({{"SYSCON", 0xFF12}});
    }
};

TEST_F(TargetRows, ConnectWithAnUnknownArgumentSendsNothing) {
    const std::string out = Run("_connect FOO");
    EXPECT_EQ(result, -2);
    EXPECT_NE(out.find("*ERROR: Illegal parameters"), std::string::npos);
    EXPECT_NE(out.find("usage: _connect [NOPROMPT]"), std::string::npos);
    EXPECT_TRUE(board->received.empty());
}

TEST_F(TargetRows, ConnectNopromptInAnyCaseAutobaudsToARunningCore) {
    Run("_connect noPrompt");
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(host.boxes.empty());
    EXPECT_EQ(st->ConnectionState, 1);
    // the init byte, and no image behind it: what follows are the reads of
    // the reset configuration
    ASSERT_FALSE(board->received.empty());
    EXPECT_EQ(board->received.front(), 0x00);
    EXPECT_TRUE(board->loader.empty());
    EXPECT_EQ(board->commands.front(), 0x85);
}

TEST_F(TargetRows, MovTakesSfrNamesAndKeepsDumpInStep) {
    Run("_mov SYSCON,1234");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(board->peek(0xFF12), 0x34);
    EXPECT_EQ(board->peek(0xFF13), 0x12);
    EXPECT_EQ(ReadDumpByte(st->dump, 0xFF12), 0x34);
    EXPECT_EQ(IsValid(st->dump, 0xFF13), kTrue);
    EXPECT_EQ(IsDefined(st->dump, 0xFF13), kTrue);
    Run("_mov 100,BEEF");  // a hexadecimal address needs no lookup
    EXPECT_EQ(board->peek(0x100), 0xEF);
}

TEST_F(TargetRows, MovSeqDropsALastLoneAddress) {
    const std::string out = Run("_movseq 100,1,102");
    EXPECT_EQ(result, 0) << out;
    EXPECT_EQ(board->peek(0x100), 0x01);
    EXPECT_EQ(board->peek(0x101), 0x00);
    // one six-byte entry at the transfer buffer, then the sequence command
    EXPECT_EQ(board->peek(0xFC80), 0x00);
    EXPECT_EQ(board->peek(0xFC81), 0x01);
    EXPECT_EQ(board->peek(0xFC84), 0x01);
    EXPECT_EQ(board->commands, (std::vector<uint8_t>{0x84, 0x33, 0xCE}));
    EXPECT_EQ(board->peek(0xFC86), 0x00);
}

TEST_F(TargetRows, MovSeqNeedsTheKernelFeature) {
    features({"READBLOCK"});
    const std::string out = Run("_movseq 100,1");
    EXPECT_EQ(result, -5);
    EXPECT_NE(out.find("*ERROR: Feature not supported by this kernel"), std::string::npos);
    EXPECT_EQ(out.find("usage:"), std::string::npos);
    EXPECT_TRUE(board->received.empty());
}

TEST_F(TargetRows, WordRows) {
    Run("_w16 200,ABCD");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(board->peek(0x200), 0xCD);
    EXPECT_EQ(ReadDumpByte(st->dump, 0x200), 0);  // _w16 leaves the dump alone
    Run("_r16 200,%5");
    EXPECT_EQ(st->variables[5], 0xABCD);
    st->variables[7] = 0x200;
    Run("_u16 %7,300");
    EXPECT_EQ(ReadDumpByte(st->dump, 0x300), 0xCD);
    EXPECT_EQ(ReadDumpByte(st->dump, 0x301), 0xAB);
    EXPECT_EQ(IsValid(st->dump, 0x300), kTrue);
    Run("_d16 300,400");
    EXPECT_EQ(board->peek(0x400), 0xCD);
    EXPECT_EQ(board->peek(0x401), 0xAB);
    const std::string out = Run("_r16 400");
    EXPECT_EQ(result, 0);
    EXPECT_NE(out.find("ABCD"), std::string::npos) << out;
}

TEST_F(TargetRows, U16WithADeadTargetIsStatusMinusThree) {
    board->mode = ScriptedBoard::Mode::Dead;
    Run("_u16 200,300");
    EXPECT_EQ(result, -3);
}

TEST_F(TargetRows, FailedOperationsGiveTheRowId) {
    board->mode = ScriptedBoard::Mode::Dead;
    Run("_w16 200,1");
    EXPECT_EQ(result, RowId(0x6007));
    Run("_einit");
    EXPECT_EQ(result, RowId(0x8001));
}

TEST_F(TargetRows, SrstAndJmpLeaveAUserProgramRunning) {
    Run("_srst");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(st->ConnectionState, 2);
    st->ConnectionState = kConnectedAndReady;
    Run("_jmp 10000");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(st->ConnectionState, 2);
}

TEST_F(TargetRows, SetProtectionPassesItsBytes) {
    Run("_setprotection 2,11");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(board->protection, (std::vector<uint8_t>{0x11, 0x00, 0x02}));
    features({"READBLOCK"});
    Run("_setprotection 2,11,22");
    EXPECT_EQ(result, -5);
}

TEST_F(TargetRows, UploadIndexEqualToCountReadsNothing) {
    st->selections.count = 1;
    st->selections.start[0] = 0x100;
    st->selections.end[0] = 0x100;
    Run("_upload 1");
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(board->received.empty());
    Run("_upload 0");
    EXPECT_EQ(result, 0);
    EXPECT_FALSE(board->received.empty());
}

TEST_F(TargetRows, ChecksumWidths) {
    st->selections.count = 1;
    st->selections.start[0] = 0x10;
    st->selections.end[0] = 0x11;
    WriteDumpByte(st->dump, 0x10, 0x0F);
    WriteDumpByte(st->dump, 0x11, 0xF0);
    std::string out = Run("_xorchecksum 8");
    EXPECT_EQ(result, 0);
    EXPECT_NE(out.find("*Checksum: FF  "), std::string::npos) << out;
    out = Run("_xorchecksum 16");
    EXPECT_NE(out.find("*Checksum: F00F  "), std::string::npos) << out;
    Run("_xorchecksum 12");
    EXPECT_EQ(result, -2 - 23);
    Run("_addcchecksum 12");
    EXPECT_EQ(result, -2 - 24);
    out = Run("_addcchecksum 8,1");
    EXPECT_EQ(result, 0);
    EXPECT_NE(out.find("*Checksum: FF  "), std::string::npos) << out;
}

TEST_F(TargetRows, RowsWithoutATargetReportNotConnected) {
    s.target = nullptr;
    const std::string out = Run("_download");
    EXPECT_EQ(result, RowId(0x6001));
    EXPECT_NE(out.find("*ERROR: Not Connected to Target"), std::string::npos);
}

TEST_F(TargetRows, DisconnectAndReconnect) {
    Run("_reconnect");
    EXPECT_EQ(result, 0);
    Run("_disconnect");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(st->ConnectionState, 0);
}

}  // namespace
}  // namespace vortelm::shell
