// The target initialisation and the reset and identification reports,
// against the scripted board.

#include "Fixture.h"
#include "core/Helpers.h"

namespace vortelm::testing {
namespace {

class Init : public TargetFixture {
  protected:
    void SetUp() override {
        running();
        setFeatures({"WRITEWORD", "EINIT", "READWORD", "READBLOCK", "WRITEBLOCK", "JMP"});
        addSfr("SYSCON", 0xFF12);
        addSfr("BUSCON0", 0xFF0C);
        addSfr("ADDRSEL1", 0xFE18);
        addSfr("BUSCON1", 0xFF14);
        addSfr("ADDRSEL2", 0xFE1A);
        board->coreRestartsOnJump = true;
        st.EINIT = 1;
    }
    void addSfr(const char* name, int32_t address) {
        st.sfrTable[static_cast<size_t>(st.sfrCount)].name = name;
        st.sfrTable[static_cast<size_t>(st.sfrCount)].address = address;
        ++st.sfrCount;
    }
    void boardWord(uint32_t a, uint16_t v) {
        board->memory[a] = static_cast<uint8_t>(v & 0xFF);
        board->memory[a + 1] = static_cast<uint8_t>(v >> 8);
    }
    uint32_t boardWordAt(uint32_t a) const { return board->peek(a) | (board->peek(a + 1) << 8); }
    MemoryUnit& unit(const char* name) {
        MemoryUnit& u = st.memoryUnits[static_cast<size_t>(st.memoryUnitCount++)];
        u.name = name;
        return u;
    }
    using Writes = std::vector<std::pair<uint32_t, uint32_t>>;
};

TEST_F(Init, EmptyListAndNoUnitOnlyEinit) {
    EXPECT_EQ(target::initialise(tgt), 0);
    EXPECT_EQ(board->commands, (std::vector<uint8_t>{0x31}));
    EXPECT_EQ(text(), "*Initialisation: Call EINIT Command\r\n");
    EXPECT_FALSE(host.busy);
}

TEST_F(Init, EinitSwitchOffSendsNothing) {
    st.EINIT = 0;
    EXPECT_EQ(target::initialise(tgt), 0);
    EXPECT_TRUE(board->commands.empty());
    EXPECT_EQ(text(), "");
}

TEST_F(Init, NotConnected) {
    st.ConnectionState = kNotConnected;
    EXPECT_EQ(target::initialise(tgt), -100);
    EXPECT_EQ(text(), "\r\n*ERROR: Not Connected to Target");
    EXPECT_TRUE(board->received.empty());
}

TEST_F(Init, KernelWithoutAnyReadRefusesEverything) {
    target::AddInitRegister(st, "BUSCON0", 0, 0x1234);
    setFeatures({"WRITEWORD", "EINIT", "WRITEBLOCK"});
    EXPECT_EQ(target::initialise(tgt), -101);
    EXPECT_EQ(text(), "\r\n*ERROR: Kernel feature not supported ");
    EXPECT_TRUE(board->received.empty());
    // one of the two reads is enough
    setFeatures({"WRITEWORD", "EINIT", "READBLOCK"});
    EXPECT_EQ(target::initialise(tgt), 0);
    setFeatures({"WRITEWORD", "READWORD"});
    EXPECT_EQ(target::initialise(tgt), -101);
}

TEST_F(Init, AddInitRegisterLooksUpAndDrops) {
    target::AddInitRegister(st, "BUSCON0", 0, 0x10);
    target::AddInitRegister(st, "NOSUCH", 0, 0x20);       // dropped silently
    target::AddInitRegister(st, "generic7", 0, 0x30);     // kept without an address
    target::AddInitRegister(st, "NOSUCH", 0x1234, 0x40);  // an address of its own
    ASSERT_EQ(st.initRegisterCount, 3);
    EXPECT_EQ(st.initRegisters[0].address, std::to_string(0xFF0C));
    EXPECT_EQ(st.initRegisters[1].name, "generic7");
    EXPECT_EQ(st.initRegisters[1].address, "-1");
    EXPECT_EQ(st.initRegisters[2].address, std::to_string(0x1234));
    target::ClearInitRegisters(st);
    EXPECT_EQ(st.initRegisterCount, 0);
}

TEST_F(Init, Ald4SysconHoldsBackXPeripheralsUntilTheEnd) {
    target::AddInitRegister(st, "SYSCON", 0, 0x0494);
    target::AddInitRegister(st, "BUSCON0", 0, 0x04C0);
    st.ControllerFamily = 0;
    EXPECT_EQ(target::initialise(tgt), 0);
    // SYSCON without bit 2, the core restarted at its start, BUSCON0, then
    // SYSCON read again and written with bit 2
    EXPECT_EQ(board->wordWrites, (Writes{{0xFF12, 0x0490}, {0xFF0C, 0x04C0}, {0xFF12, 0x0494}}));
    EXPECT_EQ(board->jumps, (std::vector<uint32_t>{0xF600}));
    EXPECT_EQ(text(),
              "*Initialisation: Write to SYSCON\r\n"
              "*Initialisation: Write to BUSCON0\r\n"
              "*Initialisation: Enable X-Peripherals via SYSCON\r\n"
              "*Initialisation: Call EINIT Command\r\n");
    // the hex page shows what the list wrote
    EXPECT_EQ(dumpByte(0xFF0C), 0xC0);
    EXPECT_TRUE(isDefined(0xFF0D));
    EXPECT_EQ(board->commands.back(), 0x31);
}

TEST_F(Init, OtherFamiliesWriteSysconWholeAndStillRestart) {
    target::AddInitRegister(st, "SYSCON", 0, 0x0494);
    st.ControllerFamily = 1;
    EXPECT_EQ(target::initialise(tgt), 0);
    EXPECT_EQ(board->wordWrites, (Writes{{0xFF12, 0x0494}}));
    EXPECT_EQ(board->jumps.size(), 1u);
    EXPECT_EQ(text(),
              "*Initialisation: Write to SYSCON\r\n*Initialisation: Call EINIT Command\r\n");
}

TEST_F(Init, NoRestartAcknowledgeIsReportedAndTheSequenceGoesOn) {
    board->coreRestartsOnJump = false;
    target::AddInitRegister(st, "SYSCON", 0, 0x0001);
    st.ControllerFamily = 2;
    EXPECT_EQ(target::initialise(tgt), 0);
    EXPECT_EQ(text(),
              "*Initialisation: Write to SYSCON\r\n*ERROR: Vortelm Acknowledge not Received\r\n"
              "*Initialisation: Call EINIT Command\r\n");
}

TEST_F(Init, UnitsActivateAndMapWithOrMasks) {
    boardWord(0xFE18, 0x0001);
    boardWord(0xFF14, 0x0010);
    boardWord(0xFE40, 0x8000);
    boardWord(0xFE1A, 0x0100);
    MemoryUnit& x = unit("XFLASH");
    x.activated = kTrue;
    x.activateCount = 4;
    x.activateRegisters = {"ADDRSEL1", "NOTHING", "XFE40", "BUSCON1"};
    x.activateMasks = {0x4008, 0xFFFF, 0x0002, 0x0400};
    x.sectionCount = 2;
    x.sections[0].rangeCount = 1;
    x.sections[0].ranges[0] =
        SectionRange{0x400000, 0x10000, kTrue, 0x200000, "ADDRSEL2", 0x2003, kTrue};
    x.sections[1].rangeCount = 1;
    x.sections[1].ranges[0] =
        SectionRange{0x410000, 0x10000, kTrue, 0x210000, "ADDRSEL2", 0x2003, kFalse};
    MemoryUnit& off = unit("OFF");  // not activated: its entries are not touched
    off.activateCount = 1;
    off.activateRegisters[0] = "BUSCON0";
    off.activateMasks[0] = 1;
    st.EINIT = 0;
    EXPECT_EQ(target::initialise(tgt), 0);
    EXPECT_EQ(boardWordAt(0xFE18), 0x4009u);
    EXPECT_EQ(boardWordAt(0xFF14), 0x0410u);
    EXPECT_EQ(boardWordAt(0xFE1A), 0x2103u);
    // the X address is taken; its word comes from dump memory as it stands
    EXPECT_EQ(boardWordAt(0xFE40) & 0x0002u, 0x0002u);
    EXPECT_EQ(text(),
              "*Initialisation: Memory Unit XFLASH activated\r\n"
              "*Initialisation: Memory Region in XFLASH mapped\r\n");
    const auto writes = board->wordWrites.size();
    // a second run ORs the same masks and changes nothing more
    EXPECT_EQ(target::initialise(tgt), 0);
    EXPECT_EQ(board->wordWrites.size(), 2 * writes);
    EXPECT_EQ(boardWordAt(0xFE18), 0x4009u);
    EXPECT_EQ(boardWordAt(0xFF14), 0x0410u);
    EXPECT_EQ(boardWordAt(0xFE1A), 0x2103u);
}

TEST_F(Init, Ald4SysconActivationIsDeferred) {
    boardWord(0xFF12, 0x0010);
    MemoryUnit& x = unit("XRAM");
    x.activated = kTrue;
    x.activateCount = 1;
    x.activateRegisters[0] = "SYSCON";
    x.activateMasks[0] = 0x0004;
    st.ControllerFamily = 0;
    st.EINIT = 0;
    EXPECT_EQ(target::initialise(tgt), 0);
    EXPECT_EQ(board->wordWrites, (Writes{{0xFF12, 0x0014}}));
    EXPECT_EQ(text(),
              "*Initialisation: Memory Unit XRAM activated\r\n"
              "*Initialisation: Enable X-Peripherals via SYSCON\r\n");
}

// ---- reports

class Reports : public Init {};

TEST_F(Reports, Ald4ResetReport) {
    st.ControllerFamily = 0;
    boardWord(0xFF12, 0x0090);
    boardWord(0xFF0C, 0x04C0);
    ASSERT_EQ(target::readResetConfig(tgt), 0);
    target::showResetConfig(tgt);
    EXPECT_EQ(text(),
              "*Reset: BUSCON0=04C0\r\n"
              "*Reset: SYSCON=0090\r\n"
              "*Reset Configuration: External Bus enabled\r\n"
              "*Reset Configuration: 16 Bit multiplexed Bus\r\n"
              "*Reset Configuration: WR# acts as WRL#, BHE# acts as WRH# (P0H.0=1)\r\n"
              "*Reset Configuration: On chip watchdog timer is enabled (RD#=1)\r\n"
              "*Reset Configuration: Normal ALE signal\r\n");
    st.terminalBuffer.clear();
    boardWord(0xFF12, 0x0000);
    boardWord(0xFF0C, 0x0240);
    ASSERT_EQ(target::readResetConfig(tgt), 0);
    target::showResetConfig(tgt);
    EXPECT_EQ(text(),
              "*Reset: BUSCON0=0240\r\n"
              "*Reset: SYSCON=0000\r\n"
              "*Reset Configuration: External Bus disabled\r\n"
              "*Reset Configuration: 8 Bit multiplexed Bus\r\n"
              "*Reset Configuration: WR# and BHE# retain their normal function (P0H.0=0)\r\n"
              "*Reset Configuration: On chip watchdog timer is disabled (RD#=0)\r\n"
              "*Reset Configuration: Lengthened ALE signal \r\n");
}

TEST_F(Reports, ZtResetReportReadsSixRegistersInOrder) {
    st.ControllerFamily = 1;
    const std::pair<const char*, int32_t> regs[] = {{"RSTCFG", 0xF0A0},  {"SYSSTAT", 0xF0A2},
                                                    {"RSTCON2", 0xF0A4}, {"TSTMOD", 0xF0A6},
                                                    {"FCONCS0", 0xF0A8}, {"IDMEM", 0xF07A}};
    for (auto [n, a] : regs) addSfr(n, a);
    boardWord(0xF0A0, 0x3200);
    boardWord(0xF0A2, 0x4000);
    boardWord(0xF0A4, 0x0000);
    boardWord(0xF0A6, 0x8000);
    boardWord(0xF0A8, 0x0010);
    boardWord(0xF07A, 0x1010);
    board->received.clear();
    ASSERT_EQ(target::readResetConfig(tgt), 0);
    // the read-word exchanges go out in the Part's order
    std::vector<uint32_t> order;
    for (size_t i = 0; i + 3 < board->received.size(); ++i)
        if (board->received[i] == 0xCD)
            order.push_back(board->received[i + 1] | (board->received[i + 2] << 8));
    EXPECT_EQ(order, (std::vector<uint32_t>{0xF0A0, 0xF0A8, 0xF0A6, 0xF0A4, 0xF0A2, 0xF07A}));
    target::showResetConfig(tgt);
    EXPECT_EQ(text(),
              "*Reset: SYSSTAT=4000\r\n"
              "*Chip: ROM_144 Pins\r\n"
              "*Reset Configuration: Bus Mode\r\n"
              "*Reset Configuration: 8 Bit multiplexed Bus\r\n"
              "*Reset Configuration: CS0-CS1\r\n"
              "*Reset Configuration: A16-A23\r\n"
              "*PLL Reset Configuration: Direct Drive. OSC=4-40MHZ\r\n"
              "*Oscillator is unlocked, PLL is locked\r\n");
}

TEST_F(Reports, ZtChipAndTables) {
    st.ControllerFamily = 1;
    auto show = [&](target::ResetRegisters r) {
        tgt.reset = r;
        st.terminalBuffer.clear();
        target::showResetConfig(tgt);
        return text();
    };
    target::ResetRegisters r;
    r.IDMEM = 0x3000;
    r.RSTCON2 = 0x0200;
    r.RSTCFG = 0xFE00;
    r.SYSSTAT = 0xC000;
    r.FCONCS0 = 0x0030;
    const std::string out = show(r);
    EXPECT_NE(out.find("*Chip: FLASH_100 Pins\r\n"), std::string::npos);
    EXPECT_NE(out.find("*Reset Configuration: Single Chip Mode\r\n"), std::string::npos);
    EXPECT_NE(out.find("*Reset Configuration: 16 Bit multiplexed Bus\r\n"), std::string::npos);
    EXPECT_NE(out.find("*Reset Configuration: CS0-CS4\r\n"), std::string::npos);
    EXPECT_NE(out.find("*Reset Configuration: A16-A17\r\n"), std::string::npos);
    EXPECT_NE(out.find("*PLL Reset Configuration: factor=3. OSC=8,3-12,5MHZ\r\n"),
              std::string::npos);
    EXPECT_NE(out.find("*Oscillator is locked, PLL is locked\r\n"), std::string::npos);
    r.TSTMOD = 0x4000;
    r.RSTCFG = 0x0C00 | 0xA000;
    EXPECT_NE(show(r).find("*Chip: FLASH_128 Pins\r\n"), std::string::npos);
    EXPECT_NE(text().find("*Reset Configuration: No CS Lines\r\n"), std::string::npos);
    EXPECT_NE(text().find("*Reset Configuration: No Segment Address Lines\r\n"), std::string::npos);
    EXPECT_NE(text().find("*PLL Reset Configuration: factor=2. OSC=12,5-18,7MHZ\r\n"),
              std::string::npos);
}

TEST_F(Reports, Zt7HasNoReport) {
    st.ControllerFamily = 2;
    EXPECT_EQ(target::readResetConfig(tgt), 0);
    target::showResetConfig(tgt);
    EXPECT_EQ(text(), "");
    EXPECT_TRUE(board->received.empty());
}

TEST_F(Reports, BeforeAnyConnectTheZeroedValuesArePrinted) {
    st.ControllerFamily = 0;
    st.ConnectionState = kNotConnected;
    target::showResetConfig(tgt);
    EXPECT_EQ(text(),
              "*Reset: BUSCON0=0000\r\n"
              "*Reset: SYSCON=0000\r\n"
              "*Reset Configuration: External Bus disabled\r\n"
              "*Reset Configuration: 8 Bit demultiplexed Bus\r\n"
              "*Reset Configuration: WR# and BHE# retain their normal function (P0H.0=0)\r\n"
              "*Reset Configuration: On chip watchdog timer is disabled (RD#=0)\r\n"
              "*Reset Configuration: Normal ALE signal\r\n");
    EXPECT_TRUE(board->received.empty());
}

TEST_F(Reports, AMissingRegisterStopsTheReport) {
    st.ControllerFamily = 1;  // none of the ZT registers is in the table
    EXPECT_EQ(target::readResetConfig(tgt), -2);
    EXPECT_EQ(text(), "*ERROR: reading reset configuration\r\n");
    st.ConnectionState = kNotConnected;
    EXPECT_EQ(target::readResetConfig(tgt), -100);
}

TEST_F(Reports, IdRegistersKnownCodes) {
    boardWord(0xF07E, 0xC1 * 32 + 1);
    boardWord(0xF07C, 0x3A07);
    boardWord(0xF07A, 0x3080);
    boardWord(0xF078, 0x8040);
    boardWord(0xF076, 0x6010);
    EXPECT_EQ(target::showIdRegisters(tgt), 0);
    EXPECT_EQ(text(),
              "*idreg: MANUF=00C1 >> Dorvani Semiconductor Division\r\n"
              "*idreg: DEPT=0001 >> QR CAD Macrocells\r\n"
              "*idreg: CHIPID=3A\r\n"
              "*idreg: REVISION=07\r\n"
              "*idreg: PROGVDD=80 >> 10.0 Volt\r\n"
              "*idreg: PROGVPP=40 >> 5.0 Volt\r\n"
              "*idreg: IDMEM/TYPE=03 >> Flash\r\n"
              "*idreg: IDMEM/Size= 512 KByte\r\n"
              "*idreg: IDMEM2/TYPE=06 >> DRAM/SRAM\r\n"
              "*idreg: IDMEM2/Size= 64 KByte\r\n");
    EXPECT_FALSE(host.busy);
}

TEST_F(Reports, IdRegistersUnknownCodes) {
    boardWord(0xF07E, 0xFFFF);
    boardWord(0xF07C, 0xFFFF);
    boardWord(0xF07A, 0xF000);
    boardWord(0xF078, 0x0000);
    boardWord(0xF076, 0x7FFF);
    EXPECT_EQ(target::showIdRegisters(tgt), 0);
    EXPECT_EQ(text(),
              "*idreg: MANUF=07FF >> Unknown Manufacturer\r\n"
              "*idreg: DEPT=001F >> Unknown Department \r\n"
              "*idreg: CHIPID=FF\r\n"
              "*idreg: REVISION=FF\r\n"
              "*idreg: PROGVDD=00 >> 0.0 Volt\r\n"
              "*idreg: PROGVPP=00 >> 0.0 Volt\r\n"
              "*idreg: IDMEM/TYPE=0F >> Unknown memory type\r\n"
              "*idreg: IDMEM/Size= 0 KByte\r\n"
              "*idreg: IDMEM2/TYPE=07 >> Unknown memory type\r\n"
              "*idreg: IDMEM2/Size= 16380 KByte\r\n");
}

TEST_F(Reports, IdRegistersOtherCodes) {
    boardWord(0xF07E, 0x20 * 32 + 3);
    boardWord(0xF07A, 0x0001);
    boardWord(0xF076, 0x5000);
    EXPECT_EQ(target::showIdRegisters(tgt), 0);
    EXPECT_NE(text().find("*idreg: MANUF=0020 >> Haldric Micro\r\n*idreg: DEPT=0003 >> QR CR\r\n"),
              std::string::npos);
    EXPECT_NE(text().find("*idreg: IDMEM/TYPE=00 >> Romless\r\n*idreg: IDMEM/Size= 4 KByte\r\n"),
              std::string::npos);
    EXPECT_NE(text().find("*idreg: IDMEM2/TYPE=05 >> EEPROM\r\n"), std::string::npos);
}

TEST_F(Reports, IdRegistersPreconditionsAndAFailedReadGoesOn) {
    setFeatures({"READWORD"});
    EXPECT_EQ(target::showIdRegisters(tgt), -101);
    EXPECT_EQ(text(), "\r\n*ERROR: Kernel feature not supported ");
    setFeatures({"READBLOCK"});
    st.ConnectionState = kNotConnected;
    EXPECT_EQ(target::showIdRegisters(tgt), -100);
    st.ConnectionState = kConnectedAndReady;
    st.terminalBuffer.clear();
    board->mode = ScriptedBoard::Mode::Dead;
    EXPECT_EQ(target::showIdRegisters(tgt), -1);
    EXPECT_NE(text().find("*idreg: IDMEM2/Size="), std::string::npos);
}

}  // namespace
}  // namespace vortelm::testing
