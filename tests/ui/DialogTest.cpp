// The serial settings and terminal settings dialogs, found by their names.

#include <QCheckBox>
#include <QRadioButton>

#include "tests/ui/UiFixture.h"
#include "ui/FComPort.h"
#include "ui/FTerminalSettings.h"

namespace vortelm::testing {
namespace {

using Dialogs = UiTest;

TEST_F(Dialogs, TerminalSettingsOkStoresTheModeAndCancelDoesNot) {
    st().TMODE = 1;
    {
        ui::FTerminalSettings d(st(), window.get());
        auto* hex = d.findChild<QRadioButton*>("OTModeHex");
        auto* ascii = d.findChild<QRadioButton*>("OTModeASCII");
        ASSERT_TRUE(hex && ascii);
        EXPECT_TRUE(hex->isChecked());
        ascii->click();
        d.findChild<QAbstractButton*>("BCancel")->click();
        EXPECT_EQ(st().TMODE, 1);
    }
    ui::FTerminalSettings d(st(), window.get());
    d.findChild<QRadioButton*>("OTModeASCII")->click();
    d.findChild<QAbstractButton*>("BOk")->click();
    EXPECT_EQ(st().TMODE, 2);
}

TEST_F(Dialogs, SerialSettingsListTheVirtualBoardAndStoreWhatIsChosen) {
    ui::FComPort d(program->port(), window.get());
    auto* ports = d.findChild<QComboBox*>("DPortNumber");
    ASSERT_NE(ports, nullptr);
    bool sim = false;
    for (int i = 0; i < ports->count(); ++i) sim = sim || ports->itemText(i).startsWith("sim:");
    EXPECT_TRUE(sim);
    EXPECT_EQ(ports->itemText(0), "COM1");
    auto* baud = d.findChild<QComboBox*>("DBaudrate");
    ASSERT_NE(baud, nullptr);
    EXPECT_EQ(baud->count(), 11);
    Q_EMIT baud->activated(10);
    EXPECT_EQ(st().BAUDRATE, 115200);
    d.findChild<QLineEdit*>("TTimeout")->setText("3000");
    d.findChild<QAbstractButton*>("BOk")->click();
    EXPECT_EQ(st().TIMEOUT, 3000);
    for (const char* name : {"DParity", "DData", "DStopbits", "CKline", "CCheckConnection",
                             "TConnectTimeout", "TConnectRetry", "BCancel"})
        EXPECT_NE(d.findChild<QWidget*>(name), nullptr) << name;
}

}  // namespace
}  // namespace vortelm::testing
