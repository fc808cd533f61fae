// The configuration and kernel dialogs on the offscreen platform: a change
// of controller reaches the next connect and the preference file, and a new
// kernel reaches kernel.dat.

#include <QCheckBox>
#include <QListWidget>

#include <fstream>
#include <sstream>

#include "config/Kernels.h"
#include "tests/ui/UiFixture.h"
#include "ui/FConfigure.h"
#include "ui/FKernel.h"

namespace vortelm::testing {
namespace {

using ConfigureDialog = UiTest;

std::string FileText(const std::string& path) {
    std::ifstream f(path, std::ios::binary);
    std::ostringstream s;
    s << f.rdbuf();
    return s.str();
}

TEST_F(ConfigureDialog, EachOtherFamilyConnectsAfterOkAndIsWrittenToThePreferences) {
    const std::pair<const char*, int16_t> types[] = {
        {"ZTA9Y_BB", 1}, {"ZT7000_BB", 2}, {"ALD7RK_BB", 0}};
    for (const auto& [type, family] : types) {
        window->doDisconnect();
        ui::FConfigure d(st(), window.get());
        auto* list = d.findChild<QComboBox*>("DMCType");
        ASSERT_NE(list, nullptr);
        const int index = list->findText(QString::fromUtf8(type));
        ASSERT_GE(index, 0) << type;
        list->setCurrentIndex(index);
        emit list->activated(index);  // the three questions, answered Yes
        d.findChild<QAbstractButton*>("BOk")->click();
        EXPECT_EQ(st().MCTYPE, type);
        EXPECT_EQ(st().ControllerFamily, family);
        EXPECT_NE(FileText(home + "/home/default.ini").find(std::string("MCTYPE=") + type),
                  std::string::npos);
        window->doConnect();
        EXPECT_EQ(st().ConnectionState, kConnectedAndReady) << type << "\n" << st().terminalBuffer;
    }
}

TEST_F(ConfigureDialog, ClockAndEinitAreStoredOnOkAndNotOnCancel) {
    const int32_t clock = st().CLK;
    {
        ui::FConfigure d(st(), window.get());
        d.findChild<QLineEdit*>("TClk")->setText("12345678");
        d.findChild<QAbstractButton*>("BCancel")->click();
    }
    EXPECT_EQ(st().CLK, clock);
    ui::FConfigure d(st(), window.get());
    d.findChild<QLineEdit*>("TClk")->setText("12345678");
    d.findChild<QCheckBox*>("CEINIT")->setChecked(true);
    d.findChild<QAbstractButton*>("BOk")->click();
    EXPECT_EQ(st().CLK, 12345678);
    EXPECT_EQ(st().EINIT, 1);
}

TEST_F(ConfigureDialog, ANewKernelAddedThroughTheDialogsAppearsInTheKernelFileAndCanBeChosen) {
    const std::string monitor = st().kernels[0].monitorPath;
    const std::string loader = st().kernels[0].loaderPath;
    ui::FKernel k(st(), window.get());
    const int index = k.logic().BAdd();
    {
        ui::FKernelEdit e(st(), index, &k);
        e.findChild<QLineEdit*>("TName")->setText("BENCH_KERNEL");
        e.findChild<QLineEdit*>("TVortelmPath")->setText(QString::fromStdString(monitor));
        e.findChild<QLineEdit*>("TLoaderPath")->setText(QString::fromStdString(loader));
        e.findChild<QAbstractButton*>("BOk")->click();
        EXPECT_EQ(e.result(), QDialog::Accepted);
    }
    k.RefreshKernelList();
    auto* list = k.findChild<QListWidget*>("LKernel");
    ASSERT_NE(list, nullptr);
    list->setCurrentRow(index);
    k.findChild<QAbstractButton*>("BActivate")->click();
    EXPECT_TRUE(list->item(index)->text().startsWith("ABENCH_KERNEL\t"));
    k.findChild<QAbstractButton*>("BOk")->click();
    EXPECT_EQ(st().CurrentKernel, index);
    EXPECT_NE(FileText(home + "/home/kernel.dat").find("BENCH_KERNEL"), std::string::npos);
}

TEST_F(ConfigureDialog, ADefaultKernelCannotBeEdited) {
    ui::FKernel k(st(), window.get());
    auto* list = k.findChild<QListWidget*>("LKernel");
    list->setCurrentRow(KernelIndexByName(st(), "ALD4_DEFAULT"));
    k.findChild<QAbstractButton*>("BEdit")->click();
    EXPECT_EQ(lastBox(), "This is one of the default Kernels. You can´t modify it !");
}

}  // namespace
}  // namespace vortelm::testing
