// The serial settings dialog's logic.
#include <gtest/gtest.h>

#include <memory>

#include "core/ProgramState.h"
#include "link/ComPort.h"
#include "link/ComSettings.h"
#include "link/ScriptedChannel.h"
#include "VirtualHost.h"

namespace vortelm::link {
namespace {

using channel::ScriptedChannel;

class ComSettingsTest : public ::testing::Test {
protected:
    ComSettingsTest() {
        port.opener = [this](std::string_view text, const channel::LineSettings& ls) {
            opened.emplace_back(text);
            settings = ls;
            OpenResult r;
            r.channel = std::make_unique<ScriptedChannel>([this] { return host.clockUs; });
            return r;
        };
        initialize(port, form);
    }

    test::VirtualHost host;
    ProgramState st{host};
    ComPort port{st};
    ComSettingsForm& form = port.form;
    std::vector<std::string> opened;
    channel::LineSettings settings;
};

TEST_F(ComSettingsTest, ListsInTheirOrder) {
    EXPECT_EQ(form.baudItems, (std::vector<std::string>{"300", "600", "1200", "2400", "4800", "9600",
                                                        "19200", "28800", "38400", "57600",
                                                        "115200"}));
    EXPECT_EQ(form.parityItems, (std::vector<std::string>{"none", "odd", "even"}));
    EXPECT_EQ(form.dataItems, (std::vector<std::string>{"7 Bit", "8 Bit"}));
    EXPECT_EQ(form.stopItems, (std::vector<std::string>{"1", "2"}));
    ASSERT_EQ(form.comPortCount, 16);
    EXPECT_EQ(form.portItems[0], "COM1");
    EXPECT_EQ(form.portItems[15], "COM16");
    EXPECT_EQ(form.portItems.back(), "sim:");
}

TEST_F(ComSettingsTest, ControlsStoreTheirValues) {
    DPortNumber_Click(st, form, 2);
    EXPECT_EQ(st.PORT, 3);
    DBaudrate_Click(st, form, 10);
    EXPECT_EQ(st.BAUDRATE, 115200);
    DBaudrate_Click(st, form, 7);
    EXPECT_EQ(st.BAUDRATE, 28800);
    DParity_Click(st, form, 1);
    EXPECT_EQ(st.PARITY, 1);
    DData_Click(st, form, 0);
    EXPECT_EQ(st.DATA, 7);
    DStopbits_Click(st, form, 1);
    EXPECT_EQ(st.STOPBITS, 2);
    CCheckConnection_Click(st, form, false);
    EXPECT_EQ(st.CHECKCONNECTION, 0);
}

TEST_F(ComSettingsTest, ADeviceEntryNamesThePort) {
    DPortNumber_Click(st, form, int(form.portItems.size()) - 1);
    EXPECT_EQ(st.PORTNAME, "sim:");
    DPortNumber_Click(st, form, 0);
    EXPECT_EQ(st.PORT, 1);
    EXPECT_EQ(st.PORTNAME, "");
}

TEST_F(ComSettingsTest, GetPreferencesShowsTheStoredSettings) {
    st.PORT = 4;
    st.BAUDRATE = 38400;
    st.PARITY = 2;
    st.DATA = 7;
    st.STOPBITS = 2;
    st.KLINE = 1;
    st.TIMEOUT = 1500;
    st.CONNECTTIMEOUT = 250;
    st.CONNECTRETRY = 3;
    port.get_preferences();
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

TEST_F(ComSettingsTest, KLineQuestionOnlyWhileShown) {
    CKline_Click(st, form, true);
    EXPECT_EQ(st.KLINE, 1);
    EXPECT_TRUE(host.boxes.empty());
}

TEST_F(ComSettingsTest, KLineYesSelectsTheDefaultKernel) {
    st.MCTYPE = "UNKNOWN_TYPE";
    st.ControllerFamily = 0;
    st.kernels[0].name = "ALD4_DEFAULT";
    st.kernels[1].name = "ALD4_KLINE";
    st.kernelCount = 2;
    st.CurrentKernel = 0;
    form.visible = true;
    CKline_Click(st, form, true);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0], "Do you want to activate the default kernel for this setting ?");
    EXPECT_EQ(st.KLINE, 1);
    EXPECT_EQ(st.CurrentKernel, 1);
    CKline_Click(st, form, false);
    EXPECT_EQ(st.CurrentKernel, 0);
}

TEST_F(ComSettingsTest, OkWhileNotConnectedReopensWithTheNewSettings) {
    port.get_preferences();
    opened.clear();
    DBaudrate_Click(st, form, 6);
    DStopbits_Click(st, form, 1);
    form.TTimeout = " 1234xyz";
    form.TConnectTimeout = "abc";
    form.TConnectRetry = "-5";
    int baudChanges = 0;
    form.changeBaudrate = [&](int32_t) { ++baudChanges; };
    const int refreshes = host.statusRefreshes;
    BOk_Click(port, form);
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

TEST_F(ComSettingsTest, OkWhileConnectedLeavesTheRateToTheBaudChange) {
    port.get_preferences();
    st.ConnectionState = kConnectedAndReady;
    DBaudrate_Click(st, form, 10);
    std::vector<int32_t> changes;
    form.changeBaudrate = [&](int32_t rate) { changes.push_back(rate); };
    BOk_Click(port, form);
    EXPECT_EQ(changes, std::vector<int32_t>{115200});
    EXPECT_EQ(port.settingsText(), "9600,n,8,1");  // the host follows only through the change
    EXPECT_TRUE(port.isOpen());
}

TEST_F(ComSettingsTest, CancelReopensAClosedPort) {
    port.close();
    form.visible = true;
    BCancel_Click(port, form);
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
}  // namespace vortelm::link
