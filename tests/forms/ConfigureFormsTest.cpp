// The configuration forms' logic on a fresh data home, without a display.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "config/Kernels.h"
#include "core/Helpers.h"
#include "core/TestHost.h"
#include "forms/FConfigure.h"
#include "forms/FKernel.h"
#include "forms/FMemory.h"
#include "sfr/SfrTable.h"
#include "shell/Program.h"

namespace vortelm::forms {
namespace {

struct Configure : ::testing::Test {
    std::string home;
    TestHost host;
    std::unique_ptr<shell::Program> program;
    void SetUp() override {
        char tmpl[] = "/tmp/vortelm-forms-XXXXXX";
        ASSERT_NE(::mkdtemp(tmpl), nullptr);
        home = tmpl;
        shell::ProgramOptions o;
        o.home = home + "/home";
        o.portOverride = "sim:";
        program = std::make_unique<shell::Program>(host, o);
        program->StartUp();
        host.boxes.clear();
    }
    void TearDown() override {
        program.reset();
        std::error_code ec;
        std::filesystem::remove_all(home, ec);
    }
    ProgramState& st() { return program->state(); }
    void answer(std::initializer_list<MsgAnswer> answers) {
        host.messageAnswers.assign(answers.begin(), answers.end());
    }
    std::string file(const std::string& name) {
        std::ifstream f(home + "/home/" + name, std::ios::binary);
        std::ostringstream s;
        s << f.rdbuf();
        return s.str();
    }
};

TEST_F(Configure, ShowsTheControllerClockAndUnits) {
    FConfigure f(st());
    f.initialize();
    f.get_preferences();
    EXPECT_EQ(f.DMCTypeList, (std::vector<std::string>{"ALD7RK_BB", "ZTA9Y_BB", "ZT7000_BB"}));
    EXPECT_EQ(f.DMCType, "ALD7RK_BB");
    EXPECT_EQ(f.TClk, std::to_string(st().CLK));
    ASSERT_FALSE(f.IMemoryList.empty());
    EXPECT_EQ(f.IMemoryList.size(), f.IMemoryActivated.size());
    EXPECT_EQ(f.IMemoryList.size(), f.IMemoryMapped.size());
    // The unit's name in 14 characters, start-end, 13 blanks, the numbers.
    const MemoryUnit& u = st().memoryUnits[0];
    const SectionRange& r = u.sections[0].ranges[0];
    std::string name = u.name;
    name.resize(14, ' ');
    const int32_t start = r.mappedNow ? r.mapAddress : r.startAddress;
    EXPECT_EQ(f.IMemoryList[0], name + HexText(start, 6) + "-" + HexText(start + r.length - 1, 6) +
                                    std::string(13, ' ') + "@0@0@0");
    const MemoryLine line = f.lineAt(0);
    EXPECT_EQ(line.unit, 0);
    EXPECT_EQ(line.section, 0);
    EXPECT_EQ(line.range, 0);
    EXPECT_EQ(f.lineAt(99999).unit, -1);
}

TEST_F(Configure, FamilyTwoWithYesToTheRegistersLeavesAllRowsEmpty) {
    FConfigure f(st());
    f.initialize();
    f.get_preferences();
    answer({MsgAnswer::No, MsgAnswer::No, MsgAnswer::Yes});
    f.DMCType_Click("ZT7000_BB");
    EXPECT_EQ(st().ControllerFamily, 2);
    EXPECT_EQ(st().initRegisterCount, 0);
    for (const InitRow& r : f.rows) {
        EXPECT_FALSE(r.OReg);
        EXPECT_EQ(r.TReg, "");
    }
    ASSERT_EQ(host.boxes.size(), 3u);
    EXPECT_EQ(host.boxes[0].text, "Do you want to load default memory units of this Type ?");
    EXPECT_EQ(host.boxes[1].text, "Do you want to activate the default kernel for this type ?");
    EXPECT_EQ(host.boxes[2].text,
              "Do you want to load default initialization registers of this Type ?");
    EXPECT_EQ(host.boxes[2].buttons, MsgButtons::YesNo);
}

TEST_F(Configure, NoToAllThreeKeepsUnitsKernelAndRegistersButFamilyAndRegistersFollow) {
    FConfigure f(st());
    f.initialize();
    f.get_preferences();
    AddInitRegister(st(), "GENERIC1", 0x1234, 0x55);
    const int units = st().memoryUnitCount;
    const std::string firstUnit = st().memoryUnits[0].name;
    const int kernel = st().CurrentKernel;
    const int registers = st().initRegisterCount;
    const int sfrs = st().sfrCount;
    const int32_t syscon = SfrIndexByName(st(), "SYSCON");
    answer({MsgAnswer::No, MsgAnswer::No, MsgAnswer::No});
    f.DMCType_Click("ZTA9Y_BB");
    EXPECT_EQ(st().memoryUnitCount, units);
    EXPECT_EQ(st().memoryUnits[0].name, firstUnit);
    EXPECT_EQ(st().CurrentKernel, kernel);
    EXPECT_EQ(st().initRegisterCount, registers);
    EXPECT_EQ(st().ControllerFamily, 1);
    // The register table is the new type's.
    EXPECT_TRUE(sfrs != st().sfrCount || syscon != SfrIndexByName(st(), "SYSCON") ||
                SfrIndexByName(st(), "SYSCON0") >= 0);
    EXPECT_EQ(f.sfrNames.size(), static_cast<size_t>(st().sfrCount));
}

TEST_F(Configure, DefaultRegistersOfFamilyZeroFillTheRowsWithTheNamesTheTableHolds) {
    FConfigure f(st());
    f.initialize();
    f.get_preferences();
    st().ControllerFamily = 0;
    f.SetDefaultInitRegisters();
    int marked = 0;
    for (const InitRow& r : f.rows) marked += r.OReg ? 1 : 0;
    EXPECT_EQ(marked, st().initRegisterCount);
    for (int i = 0; i < st().initRegisterCount; ++i)
        EXPECT_GE(SfrIndexByName(st(), st().initRegisters[static_cast<size_t>(i)].name), 0);
    if (st().initRegisterCount > 0) {
        EXPECT_EQ(f.rows[0].TReg, st().initRegisters[0].name);
    }
}

TEST_F(Configure, OkStoresRowsGenericsClockAndEinitAndWritesTheFiles) {
    FConfigure f(st());
    f.initialize();
    f.get_preferences();
    const std::string reg = f.sfrNames.at(0);
    f.rows = {};
    f.rows[0] = {true, reg, "12AB"};
    f.rows[1] = {false, reg, "FFFF"};
    f.generic[1] = {true, "00FE00", "0042"};
    f.generic[0] = {true, "0", "1"};  // address 0: not stored
    f.TClk = "16000000";
    f.CEINIT = true;
    f.BOk();
    EXPECT_EQ(st().CLK, 16000000);
    EXPECT_EQ(st().EINIT, 1);
    ASSERT_EQ(st().initRegisterCount, 2);
    EXPECT_EQ(st().initRegisters[0].name, reg);
    EXPECT_EQ(st().initRegisters[0].value, 0x12AB);
    EXPECT_EQ(st().initRegisters[1].name, "GENERIC2");
    EXPECT_EQ(st().initRegisters[1].address, std::to_string(0xFE00));
    EXPECT_EQ(st().initRegisters[1].value, 0x42);
    f.RefreshInitRegs();
    EXPECT_TRUE(f.generic[1].CGEN);
    EXPECT_EQ(f.generic[1].TGENADDR, "00FE00");
    EXPECT_FALSE(f.generic[0].CGEN);
}

TEST_F(Configure, FieldMessages) {
    EXPECT_EQ(FConfigure::CheckRegisterValue("12G4"), "No valid hexadecimal digit !");
    EXPECT_EQ(FConfigure::CheckRegisterValue("12A4"), "");
    EXPECT_EQ(FConfigure::CheckGenericValue("xyz"), "No hexadecimal digit !");
    EXPECT_EQ(FConfigure::CheckClock("20MHz"), "No valid decimal Number");
    EXPECT_EQ(FConfigure::CheckClock("20000000"), "");
    EXPECT_EQ(FMemory::CheckBlank("F"), "No 2 digit hexadezimal value !");
    EXPECT_EQ(FMemory::CheckBlank("FF"), "");
    EXPECT_EQ(FMemory::CheckBurstSize("zz"), "No hexadezimal value !");
}

TEST_F(Configure, CancelInTheUnitFormAfterAddKeepsTheNewEmptyUnit) {
    FConfigure f(st());
    f.get_preferences();
    const int units = st().memoryUnitCount;
    const int unit = f.BMemoryAdd();
    EXPECT_EQ(unit, units);
    FMemory m(st(), unit);
    m.GetMemUnit();
    EXPECT_EQ(m.DType, "RAM");
    EXPECT_EQ(m.TBurstsize, "0001");
    m.TName = "EXTRA";
    // Cancel: the copy is dropped, the unit stays empty but counted.
    EXPECT_EQ(st().memoryUnitCount, units + 1);
    EXPECT_EQ(st().memoryUnits[static_cast<size_t>(unit)].name, "");
    EXPECT_EQ(st().memoryUnits[static_cast<size_t>(unit)].driverBufferAddress, 0xFC80);
}

TEST_F(Configure, UnitFormAddsRegionsActivatesAndFeaturesAndOkStoresTheWholeUnit) {
    FConfigure f(st());
    f.get_preferences();
    const int unit = f.BMemoryAdd();
    FMemory m(st(), unit);
    m.GetMemUnit();
    EXPECT_EQ(m.AddRegion("", "100", "", "", ""),
              "Please insert at least start address and length");
    EXPECT_EQ(m.AddRegion("G0", "100", "", "", ""), "No hexadezimal Number");
    EXPECT_EQ(m.AddRegion("10000", "8000", "", "", ""), "");
    EXPECT_EQ(m.AddRegion("20000", "100", "30000", "FF", "XADRS"), "");
    EXPECT_EQ(m.LSections,
              (std::vector<std::string>{"Section 0:010000 - 017FFF", "Section 1:020000 - 0200FF"}));
    EXPECT_EQ(m.AddActivate("NOSUCHREG", "1"), "No hexadezimal Number or valid SFR name");
    EXPECT_EQ(m.AddActivate("FF00", "G"), "No hexadezimal Number");
    EXPECT_EQ(m.AddActivate("FF00", "0400"), "");
    EXPECT_EQ(m.LActivate, (std::vector<std::string>{"FF00=0x0400"}));
    m.AddFeature("PROGRAM");
    m.TName = "EXTRA";
    m.DType = "FLASH";
    m.TBlank = "FF";
    m.BOk();
    const MemoryUnit& u = st().memoryUnits[static_cast<size_t>(unit)];
    EXPECT_EQ(u.name, "EXTRA");
    EXPECT_EQ(u.type, "FLASH");
    EXPECT_EQ(u.blank, 0xFF);
    EXPECT_EQ(u.sectionCount, 2);
    EXPECT_EQ(u.sections[1].ranges[0].mappingDefined, kTrue);
    EXPECT_EQ(u.activateCount, 1);
    EXPECT_EQ(u.featureCount, 1);
    // The activated mark switches only for a unit with registers.
    f.RefreshMemoryList();
    int line = -1;
    for (size_t i = 0; i < f.IMemoryList.size(); ++i)
        if (f.lineAt(static_cast<int>(i)).unit == unit) line = static_cast<int>(i);
    ASSERT_GE(line, 0);
    EXPECT_EQ(f.IMemoryActivated[static_cast<size_t>(line)], " ");
    f.IMemoryActivated_Click(line);
    EXPECT_EQ(f.IMemoryActivated[static_cast<size_t>(line)], "X");
    // Mapping: the unit's mapped ranges switch together.
    f.IMemoryMapped_Click(line);
    EXPECT_EQ(u.sections[1].ranges[0].mappedNow, kTrue);
    EXPECT_EQ(u.sections[0].ranges[0].mappedNow, kFalse);
    f.BMemoryRemove(line);
    EXPECT_EQ(st().memoryUnitCount, unit);
}

TEST_F(Configure, KernelListRemoveAndEditRules) {
    FKernel k(st());
    k.RefreshKernelList();
    ASSERT_EQ(k.LKernel().size(), static_cast<size_t>(st().kernelCount));
    EXPECT_EQ(k.LKernel()[static_cast<size_t>(st().CurrentKernel)].substr(0, 1), "A");
    const int ald4 = KernelIndexByName(st(), "ALD4_DEFAULT");
    k.BRemove(ald4);
    EXPECT_EQ(host.boxes.back().text, "This is one of the default Kernels. You can´t remove it !");
    EXPECT_EQ(k.BEdit(ald4), -1);
    EXPECT_EQ(host.boxes.back().text, "This is one of the default Kernels. You can´t modify it !");
    // ZT7000_DEFAULT is not one of them: it can be removed.
    const int count = st().kernelCount;
    answer({MsgAnswer::Yes});
    k.BRemove(KernelIndexByName(st(), "ZT7000_DEFAULT"));
    EXPECT_EQ(host.boxes.back().text, "Do you really want to remove this Kernel ?");
    EXPECT_EQ(st().kernelCount, count - 1);
    EXPECT_EQ(KernelIndexByName(st(), "ZT7000_DEFAULT"), -1);
}

TEST_F(Configure, RemovingTheCurrentKernelFallsBackToTheControllersDefault) {
    FKernel k(st());
    const int small = KernelIndexByName(st(), "ALD4_SMALL");
    ASSERT_GE(small, 0);
    k.BActivate(small);
    EXPECT_EQ(st().CurrentKernel, small);
    answer({MsgAnswer::Yes});
    k.BRemove(small);
    EXPECT_EQ(st().kernels[static_cast<size_t>(st().CurrentKernel)].name, "ALD4_DEFAULT");
}

TEST_F(Configure, AKernelFileTheReaderRefusesIsOneLineAndNoRange) {
    // an extended linear address the image cannot hold
    std::ofstream(home + "/home/BAD.HEX") << ":020000048000FA\r\n:00000001FF\r\n";
    FKernel k(st());
    FKernelEdit e(st(), k.BAdd());
    e.TVortelmPath = "BAD.HEX";
    st().terminalBuffer.clear();
    const std::string start = e.TStart;
    e.TVortelmPath_LostFocus();
    EXPECT_EQ(st().selections.count, 0);
    EXPECT_EQ(e.TStart, start);
    EXPECT_NE(st().terminalBuffer.find(
                  "*ERROR: Intel HEX extended linear address 8000 overflow in line 1"),
              std::string::npos)
        << st().terminalBuffer;
}

TEST_F(Configure, ANewKernelIsCheckedStoredAndWrittenToTheKernelFile) {
    FKernel k(st());
    const int index = k.BAdd();
    FKernelEdit e(st(), index);
    e.TName = "MY_KERNEL";
    e.TVortelmPath = "NOSUCH.HEX";
    EXPECT_EQ(e.BOk(), "Vortelm Kernel File does not exist !");
    const Kernel& base = st().kernels[static_cast<size_t>(KernelIndexByName(st(), "ALD4_DEFAULT"))];
    e.TVortelmPath = base.monitorPath;
    e.TLoaderPath = "NOSUCH.HEX";
    EXPECT_EQ(e.BOk(), "Loader File does not exist !");
    e.TLoaderPath = base.loaderPath;
    e.TVortelmPath_LostFocus();
    EXPECT_EQ(e.TStart.size(), 6u);
    EXPECT_EQ(st().selections.count, 0);
    const std::vector<std::string> names = FKernelSelectFeatureNames(st());
    ASSERT_FALSE(names.empty());
    e.BAddFeature(names[0]);
    EXPECT_EQ(e.BOk(), "");
    k.BOk();
    EXPECT_EQ(st().kernels[static_cast<size_t>(index)].name, "MY_KERNEL");
    EXPECT_TRUE(HasFeature(st(), names[0], index));
    EXPECT_NE(file("kernel.dat").find("MY_KERNEL"), std::string::npos);
}

}  // namespace
}  // namespace vortelm::forms
