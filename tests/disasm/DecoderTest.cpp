// The decoder's rules and the edge cases of its specification.

#include <gtest/gtest.h>

#include <vector>

#include "DecoderFixture.h"

namespace vortelm::disasm {
namespace {

// Decodes count instructions in a row from address, stepping by length.
std::vector<std::string> Listing(ProgramState& st, int32_t address, int count) {
    std::vector<std::string> out;
    ResetSequenceCounters(st.instructions);
    for (int i = 0; i < count; ++i) {
        out.push_back(DisassembleAt(st, address));
        address += InstructionLength(st.instructions, ReadDumpByte(st.dump, address));
    }
    return out;
}

TEST_F(Decoder, ExtrCoversTheNextTwoInstructionsOnly) {
    Put(0x1000, {0xD1, 0x90,                // EXTR #2
                 0xE6, 0x80, 0x34, 0x12,    // reg 80: XADR in the extended area
                 0x0E, 0x80,                // bit 80.0: F100 in the extended area
                 0xE6, 0x80, 0x34, 0x12});  // outside the sequence: no register 80
    EXPECT_EQ(Listing(st, 0x1000, 4),
              (std::vector<std::string>{"EXTR    #2", "MOV     XADR,#1234h", "BCLR    XADR.0",
                                        "Illegal Operand"}));
}

TEST_F(Decoder, ExtrCountersAreSetOnePastTheCount) {
    Put(0x1000, {0xD1, 0x90});
    ResetSequenceCounters(st.instructions);
    (void)DisassembleAt(st, 0x1000);
    EXPECT_EQ(st.instructions.extrCount, 3);
    EXPECT_EQ(st.instructions.extpCount, 0);
}

TEST_F(Decoder, AnUnknownSfrAddressIsAnIllegalOperandNotANumber) {
    st.sfrTable[0].address = 0xFE40;  // DPP0 moves away from FE00
    Put(0x1000, {0xF2, 0xF0, 0x00, 0xFE});
    ResetSequenceCounters(st.instructions);
    EXPECT_EQ(DisassembleAt(st, 0x1000), "Illegal Operand");
}

TEST_F(Decoder, PagedAddressesUnlessExtpOrExtsIsInForce) {
    Put(0x1000, {0xF2, 0xF0, 0x34, 0x12,  // DPP0
                 0xF2, 0xF0, 0x34, 0x52,  // DPP1
                 0xF2, 0xF0, 0x34, 0x92,  // DPP2
                 0xF2, 0xF0, 0x34, 0xD2,  // DPP3
                 0xD7, 0x00, 0x05, 0x00,  // EXTS #05h,#1
                 0xF2, 0xF0, 0x34, 0xD2,  // plain 16 bits
                 0xF2, 0xF0, 0x34, 0xD2,  // paged again
                 0xDC, 0x52,              // EXTP R2,#2
                 0xF2, 0xF0, 0x34, 0x12, 0xF2, 0xF0, 0x34, 0x12, 0xF2, 0xF0, 0x34, 0x12});
    EXPECT_EQ(
        Listing(st, 0x1000, 11),
        (std::vector<std::string>{
            "MOV     R0,DPP0:1234h", "MOV     R0,DPP1:1234h", "MOV     R0,DPP2:1234h",
            "MOV     R0,DPP3:1234h", "EXTS    #05h,#1", "MOV     R0,D234h", "MOV     R0,DPP3:1234h",
            "EXTP    R2,#2", "MOV     R0,1234h", "MOV     R0,1234h", "MOV     R0,DPP0:1234h"}));
}

TEST_F(Decoder, SequenceInstructionsOfEveryKind) {
    Put(0x1000, {0xD7, 0x00, 0xAB, 0x00,  // EXTS
                 0xD7, 0x70, 0xFF, 0x03,  // EXTP, count 4, page 3FF
                 0xD7, 0xA0, 0x12, 0x00,  // EXTSR, count 3
                 0xD7, 0xC0, 0x01, 0x02,  // EXTPR, count 1, page 201
                 0xDC, 0x0F, 0xDC, 0x9E, 0xDC, 0xF3, 0xD1, 0x30, 0xD1, 0x40});
    EXPECT_EQ(Listing(st, 0x1000, 9),
              (std::vector<std::string>{"EXTS    #ABh,#1", "EXTP    #03FFh,#4", "EXTSR   #12h,#3",
                                        "EXTPR   #0201h,#1", "EXTS    R15,#1", "EXTSR   R14,#2",
                                        "EXTPR   R3,#4", "ATOMIC  #4", "EXTR    #1"}));
}

TEST_F(Decoder, ExtsrSetsBothCounters) {
    Put(0x1000, {0xD7, 0xA0, 0x12, 0x00});
    ResetSequenceCounters(st.instructions);
    (void)DisassembleAt(st, 0x1000);
    EXPECT_EQ(st.instructions.extsCount, 4);
    EXPECT_EQ(st.instructions.extrCount, 4);
    EXPECT_EQ(st.instructions.extpCount, 0);
}

TEST_F(Decoder, ComplementInstructionsCheckTheirThreeBytes) {
    Put(0x1000, {0xB7, 0x48, 0xB7, 0xB7});
    EXPECT_EQ(Listing(st, 0x1000, 1)[0], "SRST    ");
    Put(0x1000, {0xB7, 0x48, 0xB7, 0x00});
    EXPECT_EQ(Listing(st, 0x1000, 1)[0], "Illegal Instruction");
    Put(0x1000, {0xB5, 0x4B, 0xB5, 0xB5});
    EXPECT_EQ(Listing(st, 0x1000, 1)[0], "Illegal Instruction");
}

TEST_F(Decoder, AJumpToItselfPrintsItsOwnAddress) {
    Put(0x2000, {0x0D, 0xFF});
    EXPECT_EQ(Listing(st, 0x2000, 1)[0], "JMPR    cc_UC,2000h");
    Put(0x2000, {0xBB, 0xFF});
    EXPECT_EQ(Listing(st, 0x2000, 1)[0], "CALLR   2000h");
}

TEST_F(Decoder, NamedSingleBitsAndWiderFields) {
    Put(0x1000, {0x1F, 0x88, 0xCF, 0x88, 0x2F, 0x88});
    EXPECT_EQ(Listing(st, 0x1000, 3),
              (std::vector<std::string>{"BSET    C", "BSET    PSW.12", "BSET    PSW.2"}));
}

TEST_F(Decoder, ALongMnemonicTakesItsOperandsWithoutABlank) {
    st.instructions.rows[0x00].mnemonic = "LONGNAME1";
    st.instructions.rows[0xF0].mnemonic = "EIGHTCHR";
    Put(0x1000, {0x00, 0x12, 0xF0, 0x34});
    EXPECT_EQ(Listing(st, 0x1000, 2),
              (std::vector<std::string>{"LONGNAME1R1,R2", "EIGHTCHRR3,R4"}));
}

TEST_F(Decoder, TrapPrintsHalfItsByte) {
    Put(0x1000, {0x9B, 0x20});
    EXPECT_EQ(Listing(st, 0x1000, 1)[0], "TRAP    #10");
    Put(0x1000, {0x9B, 0xFE});
    EXPECT_EQ(Listing(st, 0x1000, 1)[0], "TRAP    #7F");
}

TEST_F(Decoder, AByteWithoutARowIsAnIllegalInstruction) {
    st.instructions.rows[0xCC] = InstructionRecord{};
    Put(0x1000, {0xCC, 0x00});
    EXPECT_EQ(Listing(st, 0x1000, 1)[0], "Illegal Instruction");
}

TEST_F(Decoder, BitsOfAnUnknownRegisterAbove240NameTheGeneralRegister) {
    Put(0x1000, {0x0A, 0xF3, 0xFF, 0x01});  // whole word: q is 16
    EXPECT_EQ(Listing(st, 0x1000, 1)[0], "BFLDL   R3.16,#FFh,#01h");
    Put(0x1000, {0x0A, 0x10, 0xFF, 0x01});  // bit-addressable memory, no number
    EXPECT_EQ(Listing(st, 0x1000, 1)[0], "BFLDL   FD20,#FFh,#01h");
}

TEST_F(Decoder, RegisterTableDecidesTheText) {
    // Another register file names the same address otherwise.
    st.sfrTable[3].name = "SYSCFG";
    Put(0x1000, {0xF2, 0xF0, 0x12, 0xFF});
    EXPECT_EQ(Listing(st, 0x1000, 1)[0], "MOV     R0,SYSCFG");
}

TEST_F(Decoder, TargetsAboveTheFirstSegmentKeepTheirDigits) {
    Put(0x12000, {0x2D, 0x04});
    EXPECT_EQ(Listing(st, 0x12000, 1)[0], "JMPR    cc_Z,1200Ah");
}

TEST_F(Decoder, ConditionSpellings) {
    EXPECT_EQ(ConditionText(2), "cc_Z");
    EXPECT_EQ(ConditionText(2, true), "cc_EQ");
    EXPECT_EQ(ConditionText(3, true), "cc_NE");
    EXPECT_EQ(ConditionText(8, true), "cc_ULT");
    EXPECT_EQ(ConditionText(9, true), "cc_UGE");
    EXPECT_EQ(ConditionText(10, true), "cc_SGT");
    EXPECT_EQ(ConditionText(16), "");
}

TEST_F(Decoder, AnyByteSource) {
    const uint8_t code[] = {0xE6, 0xF0, 0x34, 0x12};
    InstructionTable t = st.instructions;
    const std::string text = Disassemble(
        st, t, 0x500, [&code](int32_t a) { return a >= 0x500 && a < 0x504 ? code[a - 0x500] : 0; });
    EXPECT_EQ(text, "MOV     R0,#1234h");
}

TEST_F(Decoder, AddressesPastTheDumpThrowTheBound) {
    EXPECT_THROW((void)DisassembleAt(st, 0x1010000), RunTimeError);
}

}  // namespace
}  // namespace vortelm::disasm
