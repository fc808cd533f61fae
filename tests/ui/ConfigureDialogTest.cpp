// The configuration and kernel dialogs on the offscreen platform: a change
// of controller reaches the next connect and the preference file, and a new
// kernel reaches kernel.dat.

#include <QCheckBox>
#include <QListWidget>

#include <fstream>
#include <sstream>

#include "config/Kernels.h"
#include "link/Monitor.h"
#include "tests/ui/ModalDialogs.h"
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

TEST_F(ConfigureDialog, TheMenuEntrysDialogChangesTheFamilyForTheConnectAndTheFileWrittenAtTheEnd) {
    find<QAbstractButton>("BConnect")->click();
    ASSERT_EQ(st().ConnectionState, kConnectedAndReady) << st().terminalBuffer;
    WhenModal("FConfigure", [](QDialog* d) {
        auto* list = Child<QComboBox>(d, "DMCType");
        ASSERT_NE(list, nullptr);
        ASSERT_EQ(list->currentText(), "ALD7RK_BB");
        list->setFocus();
        QTest::keyClick(list, Qt::Key_Down);  // the three questions, answered Yes
        EXPECT_EQ(list->currentText(), "ZTA9Y_BB");
        Click(d, "BOk");
    });
    find<QAction>("UTargetConfiguration")->trigger();
    EXPECT_EQ(st().MCTYPE, "ZTA9Y_BB");
    EXPECT_EQ(st().ControllerFamily, 1);
    EXPECT_EQ(st().kernels[static_cast<size_t>(st().CurrentKernel)].name, "ZTA9Y_DEFAULT");
    // The core of the old type is no longer the partner: the port closed.
    EXPECT_EQ(st().ConnectionState, kNotConnected);
    st().terminalBuffer.clear();
    find<QAbstractButton>("BConnect")->click();
    EXPECT_EQ(st().ConnectionState, kConnectedAndReady) << st().terminalBuffer;
    EXPECT_EQ(st().terminalBuffer.find("*ERROR"), std::string::npos) << st().terminalBuffer;
    // The file that the end of the program writes names the new type.
    std::filesystem::remove(home + "/home/default.ini");
    program->ShutDownProgram();
    const std::string ini = FileText(home + "/home/default.ini");
    EXPECT_NE(ini.find("MCTYPE=ZTA9Y_BB\n"), std::string::npos) << ini;
    EXPECT_NE(ini.find("KERNEL=ZTA9Y_DEFAULT\n"), std::string::npos) << ini;
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

TEST_F(ConfigureDialog, RegisterRowsReachTheConnectAndAFreshStartGivesTheSameState) {
    {
        ui::FConfigure d(st(), window.get());
        auto* name = d.findChild<QComboBox*>("TReg0");
        ASSERT_NE(name, nullptr);
        ASSERT_GE(name->findText("ADDRSEL3"), 0);
        name->setCurrentText("ADDRSEL3");
        d.findChild<QLineEdit*>("TRegValue0")->setText("0020");
        d.findChild<QCheckBox*>("OReg0")->setChecked(true);
        d.findChild<QCheckBox*>("CGEN1")->setChecked(true);
        d.findChild<QLineEdit*>("TGENADDR1")->setText("00FE1A");
        d.findChild<QLineEdit*>("TGENDATA1")->setText("0300");
        d.findChild<QLineEdit*>("TClk")->setText("16000000");
        d.findChild<QAbstractButton*>("BOk")->click();
    }
    ASSERT_EQ(st().initRegisterCount, 2);
    window->doConnect();
    ASSERT_EQ(st().ConnectionState, kConnectedAndReady) << st().terminalBuffer;
    EXPECT_TRUE(logged("*Initialisation: Write to ADDRSEL3")) << st().terminalBuffer;
    EXPECT_TRUE(logged("*Initialisation: Write to GENERIC2")) << st().terminalBuffer;
    {
        link::Monitor mon(st(), program->port());
        ASSERT_EQ(mon.Cmd_Read(0xFE1A, 4), 0);
        EXPECT_EQ(ReadDumpByte(st().dump, 0xFE1C), 0x20);  // ADDRSEL3
        EXPECT_EQ(ReadDumpByte(st().dump, 0xFE1B), 0x03);  // the generic row's word
    }

    // The dialog opened again shows the rows as they were stored.
    {
        ui::FConfigure d(st(), window.get());
        EXPECT_EQ(d.findChild<QComboBox*>("TReg0")->currentText(), "ADDRSEL3");
        EXPECT_TRUE(d.findChild<QCheckBox*>("OReg0")->isChecked());
        EXPECT_TRUE(d.findChild<QCheckBox*>("CGEN1")->isChecked());
        EXPECT_EQ(d.findChild<QLineEdit*>("TGENADDR1")->text(), "00FE1A");
        EXPECT_FALSE(d.findChild<QCheckBox*>("CGEN0")->isChecked());
    }

    NextStart next(home);
    const ProgramState& again = next.state();
    EXPECT_EQ(again.MCTYPE, st().MCTYPE);
    EXPECT_EQ(again.CLK, 16000000);
    EXPECT_EQ(again.EINIT, st().EINIT);
    ASSERT_EQ(again.initRegisterCount, st().initRegisterCount);
    for (int i = 0; i < again.initRegisterCount; ++i) {
        const auto n = static_cast<size_t>(i);
        EXPECT_EQ(again.initRegisters[n].name, st().initRegisters[n].name);
        EXPECT_EQ(again.initRegisters[n].address, st().initRegisters[n].address);
        EXPECT_EQ(again.initRegisters[n].value, st().initRegisters[n].value);
    }
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

// Picks a feature in the feature picker, by a double click or by OK.
void PickFeature(const char* name, bool doubleClick) {
    WhenModal("FKernelSelectFeature", [name, doubleClick](QDialog* d) {
        auto* list = Child<QListWidget>(d, "LFeatureNames");
        ASSERT_NE(list, nullptr);
        const auto found = list->findItems(QString::fromUtf8(name), Qt::MatchExactly);
        ASSERT_EQ(found.size(), 1) << name;
        const int row = list->row(found[0]);
        if (doubleClick) {
            ClickRow(list, row, true);
        } else {
            ClickRow(list, row);
            Click(d, "BOk");
        }
    });
}

std::vector<std::string> Items(QListWidget* list) {
    std::vector<std::string> v;
    for (int i = 0; i < list->count(); ++i) v.push_back(list->item(i)->text().toStdString());
    return v;
}

TEST_F(ConfigureDialog, FeaturesPickedForANewKernelReachTheKernelFileAndTheNextConnect) {
    const std::string monitor = st().kernels[0].monitorPath;
    const std::string loader = st().kernels[0].loaderPath;
    const int index = st().kernelCount;
    EXPECT_FALSE(find<QAbstractButton>("BASC02ASC1")->isVisible());
    WhenModal("FKernel", [&](QDialog* k) {
        WhenModal("FKernelEdit", [&](QDialog* e) {
            Child<QLineEdit>(e, "TName")->setText("SERIAL_KERNEL");
            Child<QLineEdit>(e, "TVortelmPath")->setText(QString::fromStdString(monitor));
            Child<QLineEdit>(e, "TLoaderPath")->setText(QString::fromStdString(loader));
            auto* features = Child<QListWidget>(e, "LFeatures");
            ASSERT_NE(features, nullptr);
            EXPECT_EQ(features->count(), 0);
            PickFeature("ASC02ASC1", true);
            Click(e, "BAddFeature");
            for (const char* f : {"TEST", "WRITEWORD", "READWORD", "EINIT"}) {
                PickFeature(f, false);
                Click(e, "BAddFeature");
            }
            // The picker's Cancel adds nothing.
            WhenModal("FKernelSelectFeature", [](QDialog* d) { Click(d, "BCancel"); });
            Click(e, "BAddFeature");
            EXPECT_EQ(Items(features), (std::vector<std::string>{"ASC02ASC1", "TEST", "WRITEWORD",
                                                                 "READWORD", "EINIT"}));
            // The Delete key takes the selected one out again.
            ClickRow(features, 1);
            QTest::keyClick(features, Qt::Key_Delete);
            EXPECT_EQ(Items(features),
                      (std::vector<std::string>{"ASC02ASC1", "WRITEWORD", "READWORD", "EINIT"}));
            Click(e, "BOk");
        });
        Click(k, "BAdd");
        auto* list = Child<QListWidget>(k, "LKernel");
        ASSERT_NE(list, nullptr);
        ASSERT_EQ(list->count(), index + 1);
        EXPECT_TRUE(list->item(index)->text().startsWith(" SERIAL_KERNEL\t"));
        ClickRow(list, index);
        Click(k, "BActivate");
        EXPECT_TRUE(list->item(index)->text().startsWith("ASERIAL_KERNEL\t"));
        Click(k, "BOk");
    });
    find<QAction>("USettingsKernel")->trigger();
    EXPECT_EQ(st().CurrentKernel, index);

    const std::string kernels = FileText(home + "/home/kernel.dat");
    const std::string n = std::to_string(index);
    EXPECT_NE(kernels.find("KERNELNAME(" + n + ")=SERIAL_KERNEL"), std::string::npos) << kernels;
    EXPECT_NE(kernels.find("FEATURES(" + n + ")=ASC02ASC1,WRITEWORD,READWORD,EINIT"),
              std::string::npos)
        << kernels;
    EXPECT_NE(FileText(home + "/home/default.ini").find("KERNEL=SERIAL_KERNEL"), std::string::npos);

    // The next connect uses the kernel, and its feature shows its button.
    window->doConnect();
    ASSERT_EQ(st().ConnectionState, kConnectedAndReady) << st().terminalBuffer;
    EXPECT_EQ(st().terminalBuffer.find("*ERROR"), std::string::npos) << st().terminalBuffer;
    EXPECT_TRUE(
        QTest::qWaitFor([&]() { return find<QAbstractButton>("BASC02ASC1")->isVisible(); }, 2000));
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
