// The memory unit dialog and its region, activate register and feature
// dialogs on the offscreen platform, opened from the target configuration:
// what they store reaches the preference file, the next connect to the
// virtual board and a fresh start.

#include <QListWidget>

#include <fstream>
#include <sstream>

#include "link/Monitor.h"
#include "tests/ui/ModalDialogs.h"
#include "tests/ui/UiFixture.h"
#include "ui/FConfigure.h"

namespace vortelm::testing {
namespace {

using MemoryDialog = UiTest;

std::string FileText(const std::string& path) {
    std::ifstream f(path, std::ios::binary);
    std::ostringstream s;
    s << f.rdbuf();
    return s.str();
}

std::vector<std::string> Items(QListWidget* list) {
    std::vector<std::string> v;
    for (int i = 0; i < list->count(); ++i) v.push_back(list->item(i)->text().toStdString());
    return v;
}

void Type(QWidget* dialog, const char* field, const char* text) {
    if (auto* e = Child<QLineEdit>(dialog, field)) e->setText(QString::fromUtf8(text));
}

// The rows of the configuration's memory list that belong to a unit.
std::vector<int> RowsOf(QListWidget* list, const QString& unit) {
    std::vector<int> rows;
    for (int i = 0; i < list->count(); ++i)
        if (list->item(i)->text().startsWith(unit + " ")) rows.push_back(i);
    return rows;
}

int16_t BoardWord(shell::Program& program, int32_t address) {
    link::Monitor mon(program.state(), program.port());
    EXPECT_EQ(mon.Cmd_Read(address, 2), 0);
    return static_cast<int16_t>(ReadDumpByte(program.state().dump, address) |
                                ReadDumpByte(program.state().dump, address + 1) << 8);
}

constexpr int32_t kAddrsel2 = 0xFE1A;
constexpr int32_t kAddrsel3 = 0xFE1C;

// The unit form as the operator fills it: name and fields first, then a
// plain region, a mapped region, an activate register and a feature, each
// through its own small dialog.
void FillTheUnitForm(QDialog* m) {
    Type(m, "TName", "TESTUNIT");
    if (auto* type = Child<QComboBox>(m, "DType")) type->setCurrentText("XRAM");
    Type(m, "TBlank", "A5");
    Type(m, "TBurstsize", "0010");

    WhenModal("FMemoryRegions", [](QDialog* r) {
        // OK without a length answers with the dialog's message and stays.
        Type(r, "TStart", "110000");
        Click(r, "BOk");
        EXPECT_TRUE(r->isVisible());
        Type(r, "TLength", "8000");
        Click(r, "BOk");
    });
    Click(m, "BAddRegion");
    WhenModal("FMemoryRegions", [](QDialog* r) {
        Type(r, "TStart", "118000");
        Type(r, "TLength", "100");
        Type(r, "TMapStart", "300000");
        Type(r, "TMapMask", "0100");
        Type(r, "TMapRegister", "ADDRSEL2");
        Click(r, "BOk");
    });
    Click(m, "BAddRegion");
    WhenModal("FMemoryActivate", [](QDialog* a) {
        Type(a, "TRegister", "NOSUCHREG");
        Type(a, "TMask", "10");
        Click(a, "BOk");
        EXPECT_TRUE(a->isVisible());
        Type(a, "TRegister", "ADDRSEL3");
        Click(a, "BOk");
    });
    Click(m, "BAddActivate");
    WhenModal("FMemoryFeature", [](QDialog* f) {
        auto* list = Child<QComboBox>(f, "DFeature");
        ASSERT_NE(list, nullptr);
        EXPECT_EQ(list->count(), 8);
        list->setCurrentText("ERASEWL");
        Click(f, "BOk");
    });
    Click(m, "BAddFeature");

    // What the small dialogs added shows, and the fields typed before stay.
    EXPECT_EQ(Items(Child<QListWidget>(m, "LSections")),
              (std::vector<std::string>{"Section 0:110000 - 117FFF", "Section 1:118000 - 1180FF"}));
    EXPECT_EQ(Items(Child<QListWidget>(m, "LActivate")),
              (std::vector<std::string>{"ADDRSEL3=0x0010"}));
    EXPECT_EQ(Items(Child<QListWidget>(m, "LFeatures")), (std::vector<std::string>{"ERASEWL"}));
    EXPECT_EQ(Child<QLineEdit>(m, "TName")->text(), "TESTUNIT");
    EXPECT_EQ(Child<QComboBox>(m, "DType")->currentText(), "XRAM");
    EXPECT_EQ(Child<QLineEdit>(m, "TBlank")->text(), "A5");
    Click(m, "BOk");
}

TEST_F(MemoryDialog, ANewUnitReachesThePreferencesTheNextConnectAndAFreshStart) {
    const int units = st().memoryUnitCount;
    {
        ui::FConfigure d(st(), window.get());
        d.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&d));
        WhenModal("FMemory", FillTheUnitForm);
        Click(&d, "BMemoryAdd");
        ASSERT_EQ(st().memoryUnitCount, units + 1);
        auto* list = Child<QListWidget>(&d, "IMemoryList");
        const std::vector<int> rows = RowsOf(list, "TESTUNIT");
        ASSERT_EQ(rows.size(), 2u) << Items(list).size();
        EXPECT_TRUE(list->item(rows[1])->text().contains("118000-1180FF"))
            << list->item(rows[1])->text().toStdString();
        // Switch the unit on and its mapped region in.
        auto* activated = Child<QListWidget>(&d, "IMemoryActivated");
        auto* mapped = Child<QListWidget>(&d, "IMemoryMapped");
        ClickRow(activated, rows[0]);
        ClickRow(mapped, rows[1]);
        EXPECT_EQ(activated->item(rows[0])->text(), "X");
        EXPECT_EQ(mapped->item(rows[1])->text(), "X");
        EXPECT_EQ(mapped->item(rows[0])->text(), " ");
        Click(&d, "BOk");
        EXPECT_EQ(d.result(), QDialog::Accepted);
    }

    const MemoryUnit& u = st().memoryUnits[static_cast<size_t>(units)];
    EXPECT_EQ(u.name, "TESTUNIT");
    EXPECT_EQ(u.type, "XRAM");
    EXPECT_EQ(u.blank, 0xA5);
    EXPECT_EQ(u.burstSize, 0x10);
    EXPECT_EQ(u.activated, kTrue);

    const std::string ini = FileText(home + "/home/default.ini");
    for (const char* line :
         {"NAME=TESTUNIT\nTYPE=XRAM\nBLANK=0xA5\nBURSTSIZE=0x0010\n", "ACTIVATED\n",
          "ACTIVATEREGISTER(0)=ADDRSEL3\nACTIVATEMASK(0)=0x0010\n",
          "SECTION(0).STARTADDRESS(0)=0x110000\nSECTION(0).LENGTH(0)=0x008000\n",
          "SECTION(1).MAPPED(0)\n", "SECTION(1).MAPADDRESS(0)=0x300000\n",
          "SECTION(1).MAPREGISTER(0)=ADDRSEL2\nSECTION(1).MAPMASK(0)=0x0100\n",
          "DRIVER.FEATURES=ERASEWL\n"})
        EXPECT_NE(ini.find(line), std::string::npos) << line << "\n" << ini;

    // The next connect switches the unit on and maps its region.
    window->doConnect();
    ASSERT_EQ(st().ConnectionState, kConnectedAndReady) << st().terminalBuffer;
    EXPECT_TRUE(logged("*Initialisation: Memory Unit TESTUNIT activated")) << st().terminalBuffer;
    EXPECT_TRUE(logged("*Initialisation: Memory Region in TESTUNIT mapped")) << st().terminalBuffer;
    EXPECT_EQ(BoardWord(*program, kAddrsel3), 0x0010);
    EXPECT_EQ(BoardWord(*program, kAddrsel2), 0x0100);

    // A fresh start from the file gives the same unit.
    NextStart next(home);
    ProgramState& again = next.state();
    ASSERT_EQ(again.memoryUnitCount, st().memoryUnitCount);
    const MemoryUnit& v = again.memoryUnits[static_cast<size_t>(units)];
    EXPECT_EQ(v.name, u.name);
    EXPECT_EQ(v.type, u.type);
    EXPECT_EQ(v.blank, u.blank);
    EXPECT_EQ(v.burstSize, u.burstSize);
    EXPECT_EQ(v.activated, u.activated);
    ASSERT_EQ(v.activateCount, 1);
    EXPECT_EQ(v.activateRegisters[0], "ADDRSEL3");
    EXPECT_EQ(v.activateMasks[0], 0x0010);
    ASSERT_EQ(v.sectionCount, 2);
    EXPECT_EQ(v.sections[1].ranges[0].mapAddress, 0x300000);
    EXPECT_EQ(v.sections[1].ranges[0].mapRegister, "ADDRSEL2");
    EXPECT_EQ(v.sections[1].ranges[0].mappedNow, kTrue);
    ASSERT_EQ(v.featureCount, 1);
    EXPECT_EQ(v.features[0], "ERASEWL");
}

TEST_F(MemoryDialog, EditingAUnitAndCancellingKeepsTheTable) {
    ui::FConfigure d(st(), window.get());
    d.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&d));
    auto* list = Child<QListWidget>(&d, "IMemoryList");
    const std::vector<int> rows = RowsOf(list, "XRAM");
    ASSERT_FALSE(rows.empty());
    const int unit = d.logic().lineAt(rows[0]).unit;
    ASSERT_GE(unit, 0);
    const std::string name = st().memoryUnits[static_cast<size_t>(unit)].name;

    // A double click opens the unit; Cancel drops what was typed.
    WhenModal("FMemory", [](QDialog* m) {
        EXPECT_EQ(Child<QLineEdit>(m, "TName")->text(), "XRAM");
        Type(m, "TName", "RENAMED");
        Click(m, "BCancel");
    });
    ClickRow(list, rows[0], true);
    EXPECT_EQ(st().memoryUnits[static_cast<size_t>(unit)].name, name);

    // Edit and OK renames it; the configuration's list follows.
    list->setCurrentRow(rows[0]);
    WhenModal("FMemory", [](QDialog* m) {
        Type(m, "TName", "BIGRAM");
        Click(m, "BOk");
    });
    Click(&d, "BMemoryEdit");
    EXPECT_EQ(st().memoryUnits[static_cast<size_t>(unit)].name, "BIGRAM");
    EXPECT_TRUE(list->item(rows[0])->text().startsWith("BIGRAM "));
    Click(&d, "BOk");
    EXPECT_NE(FileText(home + "/home/default.ini").find("NAME=BIGRAM\n"), std::string::npos);
}

// A field that fails its check says so when the operator leaves it.
void ExpectMessageOnLeaving(QWidget* dialog, const char* field, const char* text,
                            const std::string& message, ui::QtHost& host) {
    auto* e = Child<QLineEdit>(dialog, field);
    ASSERT_NE(e, nullptr);
    host.answeredBoxes.clear();
    e->setFocus();
    e->setText(QString::fromUtf8(text));
    QTest::keyClick(e, Qt::Key_Return);
    ASSERT_FALSE(host.answeredBoxes.empty()) << field;
    EXPECT_EQ(host.answeredBoxes.back(), message) << field;
}

TEST_F(MemoryDialog, FieldsCheckThemselvesWithTheirMessages) {
    ui::FConfigure d(st(), window.get());
    d.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&d));
    ExpectMessageOnLeaving(&d, "TClk", "abc", "No valid decimal Number", *host);
    ExpectMessageOnLeaving(&d, "TRegValue0", "XYZ", "No valid hexadecimal digit !", *host);
    ExpectMessageOnLeaving(&d, "TGENADDR0", "G", "No hexadecimal digit !", *host);
    ExpectMessageOnLeaving(&d, "TGENDATA1", "-", "No hexadecimal digit !", *host);
    auto* list = Child<QListWidget>(&d, "IMemoryList");
    list->setCurrentRow(0);
    WhenModal("FMemory", [this](QDialog* m) {
        ExpectMessageOnLeaving(m, "TBlank", "F", "No 2 digit hexadezimal value !", *host);
        ExpectMessageOnLeaving(m, "TBurstsize", "zz", "No hexadezimal value !", *host);
        ExpectMessageOnLeaving(m, "TDriverPath", "NOSUCH.HEX", "File does not exist !", *host);
        WhenModal("FMemoryRegions", [this](QDialog* r) {
            Type(r, "TStart", "G0");
            Type(r, "TLength", "100");
            host->answeredBoxes.clear();
            Click(r, "BOk");
            EXPECT_EQ(lastBox(), "No hexadezimal Number");
            EXPECT_TRUE(r->isVisible());
            Click(r, "BCancel");
        });
        Click(m, "BAddRegion");
        WhenModal("FMemoryActivate", [this](QDialog* a) {
            Type(a, "TRegister", "ADDRSEL3");
            Type(a, "TMask", "Q");
            host->answeredBoxes.clear();
            Click(a, "BOk");
            EXPECT_EQ(lastBox(), "No hexadezimal Number");
            Click(a, "BCancel");
        });
        Click(m, "BAddActivate");
        Click(m, "BCancel");
    });
    Click(&d, "BMemoryEdit");
    Click(&d, "BCancel");
}

}  // namespace
}  // namespace vortelm::testing
