// The change of the baud rate on both ends: the divider arithmetic of the
// three families and the exchanges, against the scripted board.

#include "Fixture.h"
#include "core/Helpers.h"
#include "link/BaudRate.h"

namespace vortelm::testing {
namespace {

TEST(BaudDivider, Ald4) {
    // 57600 at 20 MHz with the doubler off: reload 10, 56818 baud, -1.4 %
    auto d = link::Ald4BaudDivider(20000000, 0x8011, 57600);
    EXPECT_EQ(d.reload, 10);
    EXPECT_EQ(d.real, 56818);
    EXPECT_NEAR(d.deviation, -1.358, 0.001);
    // 115200 is 8.5 % off
    d = link::Ald4BaudDivider(20000000, 0x8011, 115200);
    EXPECT_EQ(d.reload, 4);
    EXPECT_EQ(d.real, 125000);
    EXPECT_EQ(FormatOneDecimal(d.deviation), "8.5");
    // bit 13 of S0CON divides by 3 instead of 2
    d = link::Ald4BaudDivider(20000000, 0x2000, 9600);
    EXPECT_EQ(d.reload, 42);
    EXPECT_EQ(d.real, 9690);
    // a deviation of exactly 3 %
    d = link::Ald4BaudDivider(329600, 0, 10000);
    EXPECT_EQ(d.reload, 0);
    EXPECT_EQ(d.real, 10300);
    EXPECT_EQ(d.deviation, 3.0);
}

TEST(BaudDivider, ZtSearchStartsAt510AndStopsAtTheFirstBelowTwo) {
    auto d = link::ZtBaudDivider(20000000, 0, 57600);
    EXPECT_EQ(d.reload, 21);
    EXPECT_EQ(d.fdv, 510);
    EXPECT_EQ(d.real, 56596);
    EXPECT_LT(d.deviation, 2.0);
    // from below 256 the search goes up; a deviation below 2 % is taken at once
    d = link::ZtBaudDivider(20000000, 100, 9600);
    EXPECT_EQ(d.fdv, 101);
    // the deviation is signed: a rate far too low is "below 2 %" and the
    // search stops at its first step
    d = link::ZtBaudDivider(20000000, 300, 300);
    EXPECT_EQ(d.fdv, 299);
    EXPECT_LT(d.deviation, -40.0);
}

TEST(BaudDivider, Zt7) {
    // FDRL 0x43F0: step 0x3F0, so the clock is divided by 16 and then by PDIV + 1
    auto d = link::Zt7BaudDivider(20000000, 0x43F0, 0, 57600);
    EXPECT_EQ(d.pdiv, 21);
    EXPECT_EQ(d.real, 56818);
    // exactly 2 % above passes the limit
    d = link::Zt7BaudDivider(1632000, 0x43F0, 0, 10000);
    EXPECT_EQ(d.pdiv, 9);
    EXPECT_EQ(d.real, 10200);
    EXPECT_EQ(d.deviation, 2.0);
}

class Baud : public TargetFixture {
  protected:
    void SetUp() override {
        running();
        setFeatures({"WRITEWORD", "READWORD", "READBLOCK"});
        port.setSettingsText("9600,n,8,1");
        st.BAUDRATE = 9600;
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
    using Writes = std::vector<std::pair<uint32_t, uint32_t>>;
};

TEST_F(Baud, NotConnectedOnlyTheHostChanges) {
    st.ConnectionState = kNotConnected;
    EXPECT_EQ(link::setBaudrate(st, port, 57600), 0);
    EXPECT_TRUE(board->received.empty());
    EXPECT_EQ(st.BAUDRATE, 57600);
    EXPECT_EQ(port.settingsText(), "57600,n,8,1");
    EXPECT_GE(host.statusRefreshes, 1);
}

TEST_F(Baud, Ald4WritesTheReloadThenTheHostFollows) {
    st.ControllerFamily = 0;
    addSfr("S0CON", 0xFFB0);
    addSfr("S0BG", 0xFEB4);
    boardWord(0xFFB0, 0x8011);
    EXPECT_EQ(link::setBaudrate(st, port, 57600), 0);
    EXPECT_EQ(board->wordWrites, (Writes{{0xFEB4, 10}}));
    EXPECT_EQ(port.settingsText(), "57600,n,8,1");
    EXPECT_EQ(text(), "");
}

TEST_F(Baud, Ald4RefusesAndKeepsTheOldRate) {
    st.ControllerFamily = 0;
    addSfr("S0CON", 0xFFB0);
    addSfr("S0BG", 0xFEB4);
    boardWord(0xFFB0, 0x8011);
    EXPECT_EQ(link::setBaudrate(st, port, 115200), 0);
    EXPECT_TRUE(board->wordWrites.empty());
    EXPECT_EQ(
        text(),
        "*ERROR: Baudrate setting due to CPU frequency setting not possible - keeping previous "
        "baudrate (8.5%)\r\n");
    EXPECT_EQ(st.BAUDRATE, 9600);
    EXPECT_EQ(port.settingsText(), "9600,n,8,1");
    // the status line shows the old rate
    EXPECT_NE(port.GetComState().find("-9600,"), std::string::npos);
}

TEST_F(Baud, Ald4ExactlyThreePercentStillChanges) {
    st.ControllerFamily = 0;
    st.CLK = 329600;
    addSfr("S0CON", 0xFFB0);
    addSfr("S0BG", 0xFEB4);
    port.setSettingsText("9600,n,8,1");
    EXPECT_EQ(link::setBaudrate(st, port, 10000), 0);
    EXPECT_EQ(board->wordWrites, (Writes{{0xFEB4, 0}}));
    EXPECT_EQ(st.BAUDRATE, 10000);
}

TEST_F(Baud, ZtWithFdvZeroStartsAt510) {
    st.ControllerFamily = 1;
    addSfr("ASC0FDV", 0xFEB6);
    addSfr("ASC0BG", 0xFEB4);
    EXPECT_EQ(link::setBaudrate(st, port, 57600), 0);
    EXPECT_EQ(board->wordWrites, (Writes{{0xFEB6, 510}, {0xFEB4, 21}}));
    EXPECT_EQ(port.settingsText(), "57600,n,8,1");
}

TEST_F(Baud, Zt7WritesPdivAndLogs) {
    st.ControllerFamily = 2;
    boardWord(0x204004, 0x43F0);
    boardWord(0x20401C, 0x0000);
    boardWord(0x20401E, 0xFC81);
    EXPECT_EQ(link::setBaudrate(st, port, 57600), 0);
    EXPECT_EQ(board->wordWrites, (Writes{{0x20401E, 0xFC00 | 21}}));
    EXPECT_EQ(text(),
              "*_setbaudrate: PDIV old value = 0081\r\n"
              "*_setbaudrate: PDIV new value = 0015\r\n"
              "*_setbaudrate: new real baudrate = 56818\r\n");
    EXPECT_EQ(port.settingsText(), "57600,n,8,1");
}

TEST_F(Baud, Zt7ExactlyTwoPercentPassesAndAnyNegativeToo) {
    st.ControllerFamily = 2;
    st.CLK = 1632000;
    boardWord(0x204004, 0x43F0);
    EXPECT_EQ(link::setBaudrate(st, port, 10000), 0);
    EXPECT_EQ(board->wordWrites.size(), 1u);
    // 1632000 / 16 is 102000 at the most: 11.5 % below 115200, and a
    // deviation below the rate is not tested
    board->wordWrites.clear();
    EXPECT_EQ(link::setBaudrate(st, port, 115200), 0);
    EXPECT_EQ(board->wordWrites, (Writes{{0x20401E, 0}}));
    EXPECT_NE(text().find("*_setbaudrate: new real baudrate = 102000\r\n"), std::string::npos);
    EXPECT_EQ(st.BAUDRATE, 115200);
}

TEST_F(Baud, Zt7RefusalsLeaveThePortAsItWas) {
    st.ControllerFamily = 2;
    boardWord(0x204004, 0x03F0);  // DM not 1
    EXPECT_EQ(link::setBaudrate(st, port, 57600), -1);
    EXPECT_NE(text().find("*ERROR: Baudrate change for ZT7: FDRL.DM<>1 - Baudrate not changed\r\n"),
              std::string::npos);
    EXPECT_EQ(st.BAUDRATE, 9600);
    st.terminalBuffer.clear();
    boardWord(0x204004, 0x43F0);
    boardWord(0x20401C, 0x0001);  // CLKSEL
    EXPECT_EQ(link::setBaudrate(st, port, 57600), -2);
    EXPECT_EQ(text(),
              "*_setbaudrate: PDIV old value = 0000\r\n"
              "*ERROR: Baudrate change for ZT7: CTQSEL, PPPEN, TMEN, CLKSEL<>0 - Baudrate not "
              "changed\r\n");
    st.terminalBuffer.clear();
    boardWord(0x20401C, 0x0000);
    st.CLK = 1000000;  // 1 MHz / 16 / 1 is 62500: 8.5 % above 57600
    EXPECT_EQ(link::setBaudrate(st, port, 57600), -3);
    EXPECT_EQ(text(),
              "*_setbaudrate: PDIV old value = 0000\r\n"
              "*_setbaudrate: PDIV new value = 0000\r\n"
              "*_setbaudrate: new real baudrate = 62500\r\n"
              "*ERROR: Baudrate change for ZT7: accuracy >2% - Baudrate not changed\r\n");
    EXPECT_TRUE(board->wordWrites.empty());
    EXPECT_EQ(st.BAUDRATE, 9600);
    EXPECT_EQ(port.settingsText(), "9600,n,8,1");
}

}  // namespace
}  // namespace vortelm::testing

namespace vortelm::testing {
namespace {

class Asc1 : public TargetFixture {
  protected:
    void SetUp() override {
        running();
        setFeatures({"ASC02ASC1", "READBLOCK"});
        st.memoryUnits[0].driverLoaded = kTrue;
        addSelection(0x100, 0x1FF);
    }
};

TEST_F(Asc1, SwitchToTheSecondChannel) {
    EXPECT_EQ(link::switchToAsc1(st, port), 0);
    EXPECT_EQ(host.boxes, (std::vector<std::string>{"Communication from ASC0 to ASC1 !",
                                                    "Please change RS232 from ASC0 to ASC1 NOW!"}));
    EXPECT_EQ(text(),
              "*ASC1 initialisation OK \r\n*ASC1 Ack: AA\r\n*ASC1 Communication Flag OK \r\n"
              "*VortelmZTA9y communicated with ASC1 \r\n");
    EXPECT_EQ(board->received, (std::vector<uint8_t>{0xCC, 0x00}));
    EXPECT_EQ(st.memoryUnits[0].driverLoaded, kFalse);
    EXPECT_EQ(st.selections.count, 0);
    EXPECT_EQ(port.ComSemaphore, 0);
    EXPECT_FALSE(host.busy);
}

TEST_F(Asc1, CancelKeepsTheSemaphore) {
    host.answer = MsgAnswer::Cancel;
    EXPECT_EQ(link::switchToAsc1(st, port), -1);
    EXPECT_TRUE(board->received.empty());
    EXPECT_NE(port.ComSemaphore, 0);  // given back by the next command
    EXPECT_EQ(text(), "");
}

TEST_F(Asc1, NoAnswerOnEitherChannel) {
    board->silentCommands.insert(0xCC);
    EXPECT_EQ(link::switchToAsc1(st, port), -1);
    EXPECT_EQ(text(), "*ERROR: ASC1 can not be initialized\r\n");
    EXPECT_EQ(port.ComSemaphore, 0);
    st.terminalBuffer.clear();
    board->silentCommands.clear();
    // the line did not change: the 0x00 reaches the core on the first channel
    EXPECT_EQ(link::Asc02Asc1_ASC1Connection(st, port), -3);  // 0x00 is taken as autobaud: 04 03
    EXPECT_EQ(text(), "*ASC1 Ack: 04\r\n*ERROR: NO ASC1 Communication Flag \r\n");
    st.terminalBuffer.clear();
    board->mode = ScriptedBoard::Mode::Dead;
    EXPECT_EQ(link::Asc02Asc1_ASC1Connection(st, port), -2);
    EXPECT_EQ(text(), "*ERROR: not ACK with ASC1_TBUF received\r\n");
}

TEST_F(Asc1, Preconditions) {
    setFeatures({"READBLOCK"});
    EXPECT_EQ(link::switchToAsc1(st, port), -101);
    EXPECT_EQ(text(), "");
    st.ConnectionState = kNotConnected;
    EXPECT_EQ(link::switchToAsc1(st, port), -100);
    EXPECT_EQ(text(), "\r\n*ERROR: Not Connected to Target");
    EXPECT_TRUE(board->received.empty());
}

}  // namespace
}  // namespace vortelm::testing
