// The serial settings dialog's logic.
#include "forms/FComPort.h"

#include <gtest/gtest.h>

#include <memory>

#include "core/ProgramState.h"
#include "link/ComPort.h"
#include "link/ScriptedChannel.h"
#include "tests/link/VirtualHost.h"

namespace vortelm::forms {
namespace {

using channel::ScriptedChannel;
using link::ComPort;
using link::OpenResult;

class FComPortTest : public ::testing::Test {
  protected:
    FComPortTest() {
        port.opener = [this](std::string_view text, const channel::LineSettings& ls) {
            opened.emplace_back(text);
            settings = ls;
            OpenResult r;
            r.channel = std::make_unique<ScriptedChannel>([this] { return host.clockUs; });
            return r;
        };
    }

    test::VirtualHost host;
    ProgramState st{host};
    ComPort port{st};
    FComPort form{port};
    std::vector<std::string> opened;
    channel::LineSettings settings;
};

TEST_F(FComPortTest, ListsInTheirOrder) {
    EXPECT_EQ(form.baudItems,
              (std::vector<std::string>{"300", "600", "1200", "2400", "4800", "9600", "19200",
                                        "28800", "38400", "57600", "115200"}));
    EXPECT_EQ(form.parityItems, (std::vector<std::string>{"none", "odd", "even"}));
    EXPECT_EQ(form.dataItems, (std::vector<std::string>{"7 Bit", "8 Bit"}));
    EXPECT_EQ(form.stopItems, (std::vector<std::string>{"1", "2"}));
    ASSERT_EQ(form.comPortCount, 16);
    EXPECT_EQ(form.portItems[0], "COM1");
    EXPECT_EQ(form.portItems[15], "COM16");
    EXPECT_EQ(form.portItems.back(), "sim:");
    // The shown lines stand beside the entries, from the same enumeration.
    ASSERT_EQ(form.portLines.size(), form.portItems.size());
    EXPECT_EQ(form.portLines[0], "COM1");
    EXPECT_EQ(form.portLines.back(), "sim:  (the virtual board)");
    for (size_t i = 16; i + 1 < form.portItems.size(); ++i)
        EXPECT_EQ(form.portLines[i].rfind(form.portItems[i], 0), 0u) << form.portLines[i];
}

TEST_F(FComPortTest, ControlsStoreTheirValues) {
    form.DPortNumber_Click(2);
    EXPECT_EQ(st.PORT, 3);
    form.DBaudrate_Click(10);
    EXPECT_EQ(st.BAUDRATE, 115200);
    form.DBaudrate_Click(7);
    EXPECT_EQ(st.BAUDRATE, 28800);
    form.DParity_Click(1);
    EXPECT_EQ(st.PARITY, 1);
    form.DData_Click(0);
    EXPECT_EQ(st.DATA, 7);
    form.DStopbits_Click(1);
    EXPECT_EQ(st.STOPBITS, 2);
    form.CCheckConnection_Click(false);
    EXPECT_EQ(st.CHECKCONNECTION, 0);
}

TEST_F(FComPortTest, ADeviceEntryNamesThePort) {
    form.DPortNumber_Click(int(form.portItems.size()) - 1);
    EXPECT_EQ(st.PORTNAME, "sim:");
    form.DPortNumber_Click(0);
    EXPECT_EQ(st.PORT, 1);
    EXPECT_EQ(st.PORTNAME, "");
}

TEST_F(FComPortTest, ShowSettingsShowsTheStoredSettings) {
    st.PORT = 4;
    st.BAUDRATE = 38400;
    st.PARITY = 2;
    st.DATA = 7;
    st.STOPBITS = 2;
    st.KLINE = 1;
    st.TIMEOUT = 1500;
    st.CONNECTTIMEOUT = 250;
    st.CONNECTRETRY = 3;
    form.ShowSettings();
    EXPECT_EQ(form.DPortNumber, 3);
    EXPECT_EQ(form.DBaudrate, 8);
    EXPECT_EQ(form.DParity, 2);
    EXPECT_EQ(form.DData, 0);
    EXPECT_EQ(form.DStopbits, 1);
    EXPECT_TRUE(form.CKline);
    EXPECT_EQ(form.TTimeout, "1500");
    EXPECT_EQ(form.TConnectTimeout, "250");
    EXPECT_EQ(form.TConnectRetry, "3");
}

TEST_F(FComPortTest, KLineQuestionOnlyWhileShown) {
    form.CKline_Click(true);
    EXPECT_EQ(st.KLINE, 1);
    EXPECT_TRUE(host.boxes.empty());
}

TEST_F(FComPortTest, KLineYesSelectsTheDefaultKernel) {
    st.MCTYPE = "UNKNOWN_TYPE";
    st.ControllerFamily = 0;
    st.kernels[0].name = "ALD4_DEFAULT";
    st.kernels[1].name = "ALD4_KLINE";
    st.kernelCount = 2;
    st.CurrentKernel = 0;
    form.visible = true;
    form.CKline_Click(true);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0], "Do you want to activate the default kernel for this setting ?");
    EXPECT_EQ(st.KLINE, 1);
    EXPECT_EQ(st.CurrentKernel, 1);
    form.CKline_Click(false);
    EXPECT_EQ(st.CurrentKernel, 0);
}

TEST_F(FComPortTest, OkWhileNotConnectedReopensWithTheNewSettings) {
    port.get_preferences();
    opened.clear();
    form.DBaudrate_Click(6);
    form.DStopbits_Click(1);
    form.TTimeout = " 1234xyz";
    form.TConnectTimeout = "abc";
    form.TConnectRetry = "-5";
    int baudChanges = 0;
    form.changeBaudrate = [&](int32_t) { ++baudChanges; };
    const int refreshes = host.statusRefreshes;
    form.BOk_Click();
    EXPECT_EQ(st.TIMEOUT, 1234);
    EXPECT_EQ(st.CONNECTTIMEOUT, 0);
    EXPECT_EQ(st.CONNECTRETRY, -5);
    ASSERT_EQ(opened.size(), 1u);
    EXPECT_EQ(settings.baud, 19200u);
    EXPECT_EQ(settings.stopBits, 1);  // two stop bits never reach the port
    EXPECT_EQ(port.settingsText(), "19200,n,8,1");
    EXPECT_EQ(baudChanges, 0);
    EXPECT_TRUE(port.isOpen());
    EXPECT_GT(host.statusRefreshes, refreshes);
}

TEST_F(FComPortTest, OkWhileConnectedLeavesTheRateToTheBaudChange) {
    port.get_preferences();
    st.ConnectionState = kConnectedAndReady;
    form.DBaudrate_Click(10);
    std::vector<int32_t> changes;
    form.changeBaudrate = [&](int32_t rate) { changes.push_back(rate); };
    form.BOk_Click();
    EXPECT_EQ(changes, std::vector<int32_t>{115200});
    EXPECT_EQ(port.settingsText(), "9600,n,8,1");  // the host follows only through the change
    EXPECT_TRUE(port.isOpen());
}

TEST_F(FComPortTest, OkWhileConnectedChangesTheRateThroughTheBaudRateOperation) {
    // Wired by the form itself: the same operation _setbaudrate runs.
    ASSERT_TRUE(form.changeBaudrate);
    port.get_preferences();
    st.ConnectionState = kConnectedAndReady;
    form.DBaudrate_Click(10);
    form.BOk_Click();
    // No board answers here: the change fails and the old rate stays.
    EXPECT_EQ(port.settingsText(), "9600,n,8,1");
}

TEST_F(FComPortTest, CancelReopensAClosedPort) {
    port.close();
    form.visible = true;
    form.BCancel_Click();
    EXPECT_TRUE(port.isOpen());
    EXPECT_FALSE(form.visible);
}

TEST(WholeNumber, ReadsLikeATextBox) {
    EXPECT_EQ(WholeNumber("2000"), 2000);
    EXPECT_EQ(WholeNumber("  42abc"), 42);
    EXPECT_EQ(WholeNumber(""), 0);
    EXPECT_EQ(WholeNumber("x1"), 0);
    EXPECT_EQ(WholeNumber("-7"), -7);
    EXPECT_EQ(WholeNumber("99999999999999"), 2147483647);
}

}  // namespace
}  // namespace vortelm::forms
