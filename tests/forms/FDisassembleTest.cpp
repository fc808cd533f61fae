// The debug window's logic against the virtual board: listing, breakpoint
// patches, go, step and the return from the target.

#include <gtest/gtest.h>

#include "DebugBoard.h"
#include "forms/FDisassemble.h"
#include "image/Selections.h"

namespace vortelm::forms {
namespace {

using testing::DebugBoard;

const std::vector<int> kPatch{0xDA, 0x00, 0x00, 0xF6};  // long call to the core at F600

struct Debug : DebugBoard {
    void SetUp() override {
        DebugBoard::SetUp();
        if (HasFatalFailure()) return;
        form = std::make_unique<FDisassemble>(st(), program->port());
        form->onShow = [this]() { ++shows; };
        form->ShowDisassembly();
    }
    void TearDown() override {
        form.reset();
        DebugBoard::TearDown();
    }
    int RowOf(int32_t address) {
        for (size_t i = 0; i < form->IDisassemble.size(); ++i)
            if (FDisassemble::RowAddress(form->IDisassemble[i]) == address)
                return static_cast<int>(i);
        ADD_FAILURE() << "no row at " << address;
        return -1;
    }
    std::unique_ptr<FDisassemble> form;
    int shows = 0;
};

TEST_F(Debug, ListsTheSelectionWithASeparator) {
    EXPECT_EQ(shows, 1);
    EXPECT_EQ(form->IDisassemble, (std::vector<std::string>{
                                      "00FA00: MOV     R0,#1234h",
                                      "00FA04: MOV     R1,#5678h",
                                      "00FA08: NOP     ",
                                      "00FA0A: NOP     ",
                                      "00FA0C: MOV     R1,R0",
                                      "00FA0E: NOP     ",
                                      "00FA10: NOP     ",
                                      "00FA12: JMPR    cc_UC,FA00h",
                                      "*****************************",
                                  }));
    EXPECT_EQ(form->IBreakpoints, std::vector<std::string>(9, " "));
    EXPECT_EQ(form->DebugPC, 0xFA00);
    EXPECT_TRUE(form->selected[0]);
    EXPECT_EQ(form->listIndex, 0);
}

TEST_F(Debug, BreakpointStopsTheRoutineAtThePatch) {
    form->IBreakpoints_Click(RowOf(0xFA0C));
    EXPECT_EQ(form->IBreakpoints[4], "O");
    EXPECT_EQ(form->breakpointCount, 1);
    EXPECT_EQ(BoardBytes(0xFA0C, 4), kPatch);
    EXPECT_EQ(std::vector<int>(form->breakpoints[0].saved.begin(),
                               form->breakpoints[0].saved.begin() + 4),
              (std::vector<int>{0xF0, 0x10, 0xCC, 0x00}));

    form->BGo_Click();
    ASSERT_TRUE(WaitForStop()) << host.terminal;
    EXPECT_EQ(form->DebugPC, 0xFA0C);
    EXPECT_TRUE(form->selected[4]);
    EXPECT_EQ(form->listIndex, 4);
    EXPECT_EQ(host.terminal.find("*ERROR"), std::string::npos) << host.terminal;

    // Clearing the breakpoint gives the board its own code back.
    form->IBreakpoints_Click(4);
    EXPECT_EQ(form->IBreakpoints[4], " ");
    EXPECT_EQ(BoardBytes(0xFA0C, 4), (std::vector<int>{0xF0, 0x10, 0xCC, 0x00}));
}

TEST_F(Debug, StepsThreeInstructionsFromABreakpoint) {
    form->IBreakpoints_Click(RowOf(0xFA04));
    form->BGo_Click();
    ASSERT_TRUE(WaitForStop());
    EXPECT_EQ(form->DebugPC, 0xFA04);
    for (int32_t expected : {0xFA08, 0xFA0A, 0xFA0C}) {
        form->BStep_Click();
        ASSERT_TRUE(WaitForStop()) << host.terminal;
        EXPECT_EQ(form->DebugPC, expected);
        EXPECT_EQ(form->listIndex, RowOf(expected));
        // The temporary breakpoint is gone, the real one stands again.
        EXPECT_EQ(form->breakpointCount, 1);
        EXPECT_EQ(form->IBreakpoints[1], "O");
        EXPECT_EQ(BoardBytes(0xFA04, 4), kPatch);
    }
    EXPECT_EQ(BoardBytes(0xFA08, 12), (std::vector<int>{0xCC, 0x00, 0xCC, 0x00, 0xF0, 0x10, 0xCC,
                                                        0x00, 0xCC, 0x00, 0x0D, 0xF6}));
    EXPECT_EQ(host.terminal.find("*ERROR"), std::string::npos) << host.terminal;
}

TEST_F(Debug, TheLengthAtABreakpointIsTheCodesOwn) {
    // MOV R1,R0 is two bytes long; the patch over it is four.
    form->IBreakpoints_Click(RowOf(0xFA0C));
    form->DebugPC = 0xFA0C;
    form->listIndex = RowOf(0xFA0C);
    EXPECT_EQ(form->getnextposition(), 0xFA0E);
}

TEST_F(Debug, StepFromAPlainLine) {
    form->BStep_Click();
    EXPECT_GE(st().ConnectionState, 1);
    ASSERT_TRUE(WaitForStop());
    EXPECT_EQ(form->DebugPC, 0xFA04);
    EXPECT_EQ(form->breakpointCount, 0);
    EXPECT_EQ(BoardBytes(0xFA04, 4), (std::vector<int>{0xE6, 0xF1, 0x78, 0x56}));
    EXPECT_GT(host.refreshSfrViewCount, 0);  // the registers are read again after a stop
}

TEST_F(Debug, GoFromABreakpointPassesItOnceAndStopsThereNextTime) {
    form->IBreakpoints_Click(RowOf(0xFA04));
    form->BGo_Click();
    ASSERT_TRUE(WaitForStop());
    form->BGo_Click();
    EXPECT_EQ(st().ConnectionState, 5);
    ASSERT_TRUE(WaitForStop()) << host.terminal;
    // Round the loop once: stopped at the same breakpoint again.
    EXPECT_EQ(form->DebugPC, 0xFA04);
    EXPECT_EQ(form->breakpointCount, 1);
    EXPECT_EQ(BoardBytes(0xFA04, 4), kPatch);
    EXPECT_EQ(BoardBytes(0xFA08, 4), (std::vector<int>{0xCC, 0x00, 0xCC, 0x00}));
}

TEST_F(Debug, NothingHappensUnlessReady) {
    st().ConnectionState = kUserProgramRunning;
    form->BGo_Click();
    form->BStep_Click();
    form->IBreakpoints_Click(0);
    EXPECT_EQ(st().ConnectionState, 2);
    EXPECT_EQ(form->breakpointCount, 0);
}

TEST_F(Debug, ARowOfStarsHoldsNoAddress) {
    EXPECT_EQ(FDisassemble::RowAddress("*****************************"), 1);
    host.terminal.clear();
    form->IBreakpoints_Click(8);
    EXPECT_EQ(host.terminal, "*ERROR: code row 8 holds no address\r\n");
    EXPECT_EQ(form->breakpointCount, 0);
}

TEST_F(Debug, RemovingLiftsAndLaysTheLaterPatchesAgain) {
    for (int32_t a : {0xFA00, 0xFA08, 0xFA10}) form->IBreakpoints_Click(RowOf(a));
    form->IBreakpoints_Click(RowOf(0xFA08));
    ASSERT_EQ(form->breakpointCount, 2);
    EXPECT_EQ(form->breakpoints[0].address, 0xFA00);
    EXPECT_EQ(form->breakpoints[1].address, 0xFA10);
    EXPECT_EQ(BoardBytes(0xFA08, 4), (std::vector<int>{0xCC, 0x00, 0xCC, 0x00}));
    EXPECT_EQ(BoardBytes(0xFA10, 4), kPatch);
    EXPECT_EQ(std::vector<int>(form->breakpoints[1].saved.begin(),
                               form->breakpoints[1].saved.begin() + 4),
              (std::vector<int>{0xCC, 0x00, 0x0D, 0xF6}));
    EXPECT_EQ(form->IBreakpoints,
              (std::vector<std::string>{"O", " ", " ", " ", " ", " ", "O", " ", " "}));
}

TEST_F(Debug, ClosingRemovesEveryBreakpoint) {
    for (int32_t a : {0xFA00, 0xFA0C}) form->IBreakpoints_Click(RowOf(a));
    form->Form_Unload();
    EXPECT_EQ(form->breakpointCount, 0);
    EXPECT_EQ(BoardBytes(0xFA00, 20), testing::kRoutine);
}

TEST_F(Debug, TheTableHoldsAtMost256Breakpoints) {
    for (int i = 0; i < 256; ++i)
        form->breakpoints[static_cast<size_t>(i)].address = 0x10000 + 4 * i;
    form->breakpointCount = 256;
    host.terminal.clear();
    form->IBreakpoints_Click(RowOf(0xFA00));
    EXPECT_EQ(host.terminal, "*ERROR: breakpoint index 256 out of range 0 to 255\r\n");
    EXPECT_EQ(form->breakpointCount, 256);
}

TEST_F(Debug, CopiesTheSelectedRows) {
    form->IDisassemble_Click(1, false);
    form->IDisassemble_Click(3, true);
    form->IDisassemble_Copy2Clipboard();
    EXPECT_EQ(host.clipboardText(), "\r\n00FA04: MOV     R1,#5678h\r\n00FA0A: NOP     ");
}

TEST_F(Debug, DoubleClickStartsTheProgramWithoutDebugging) {
    form->IDisassemble_DblClick(0);
    EXPECT_EQ(st().ConnectionState, 2);
}

TEST_F(Debug, ListingSkipsUnreadMemoryAndEndsAtAnIllegalInstruction) {
    ClearSelections(st().selections);
    for (int32_t a = 0x200; a < 0x210; ++a) SetDefined(st().dump, a, kFalse);
    const std::vector<int> code{0xCC, 0x00, 0xF8, 0x00, 0xCC, 0x00};
    for (size_t i = 0; i < code.size(); ++i) {
        WriteDumpByte(st().dump, 0x204 + static_cast<int32_t>(i), static_cast<uint8_t>(code[i]));
        SetDefined(st().dump, 0x204 + static_cast<int32_t>(i), kTrue);
    }
    AddSelection(st().selections, 0x201, 0x20F);
    AddSelection(st().selections, 0xFA10, 0xFA13);
    form->ShowDisassembly();
    EXPECT_EQ(form->IDisassemble, (std::vector<std::string>{
                                      "000204: NOP     ",
                                      "000206: Illegal Instruction",
                                      "*****************************",
                                      "00FA10: NOP     ",
                                      "00FA12: JMPR    cc_UC,FA00h",
                                      "*****************************",
                                  }));
    EXPECT_EQ(form->DebugPC, 0x204);
}

TEST_F(Debug, SequenceRowsAreSteppedAsAWhole) {
    EXPECT_EQ(FDisassemble::SequenceLength("00FA00: EXTR    #2"), 3);
    EXPECT_EQ(FDisassemble::SequenceLength("00FA00: ATOMIC  #4"), 5);
    // The page's first digit counts.
    EXPECT_EQ(FDisassemble::SequenceLength("00FA00: EXTP    #0334h,#2"), 1);
    EXPECT_EQ(FDisassemble::SequenceLength("00FA00: NOP     "), -1);
    form->IDisassemble[0] = "00FA00: EXTR    #2";
    EXPECT_EQ(form->getnextposition(), 0xFA0A);  // 4 + 4 + 2 bytes on from FA00
}

TEST_F(Debug, BranchTargetsAsTheRowTextGivesThem) {
    // Targets written with a trailing "h" are no hexadecimal values.
    EXPECT_EQ(form->BranchTarget("00FA00: JMPA    cc_UC,1234h"), -1);
    EXPECT_EQ(form->BranchTarget("00FA00: CALLR   1234h"), -1);
    EXPECT_EQ(form->BranchTarget("00FA00: JMPR    cc_UC,FA00h"), -1);
    EXPECT_EQ(form->BranchTarget("00FA00: JMPS    01h,0200h"), -65537);
    EXPECT_EQ(form->BranchTarget("00FA00: SRST    "), 0);
    EXPECT_EQ(form->BranchTarget("00FA00: NOP     "), -1);
    // JMPI reads the register from the target.
    ASSERT_EQ(program->RunCommandBoxLine("_mov FC00,ABCD"), 0) << host.terminal;
    EXPECT_GE(form->BranchTarget("00FA00: JMPI    cc_UC,[R3]"), 0);
    // A plain line falls through to the next instruction.
    form->listIndex = 7;
    form->DebugPC = 0xFA12;
    EXPECT_EQ(form->getnextposition(), 0xFA14);
}

}  // namespace
}  // namespace vortelm::forms
