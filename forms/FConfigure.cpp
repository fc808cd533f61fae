#include "forms/FConfigure.h"

#include "config/ControllerTypes.h"
#include "config/Kernels.h"
#include "config/Startup.h"
#include "core/Helpers.h"
#include "core/Host.h"
#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "sfr/SfrSets.h"
#include "sfr/SfrTable.h"
#include "target/Target.h"

namespace vortelm::forms {

namespace {

constexpr std::array<const char*, 12> kFamily0Registers{
    "SYSCON",  "SYSCON1",  "SYSCON2", "BUSCON0",  "BUSCON1", "ADDRSEL1",
    "BUSCON2", "ADDRSEL2", "BUSCON3", "ADDRSEL3", "BUSCON4", "ADDRSEL4"};
constexpr std::array<const char*, 12> kFamily1Registers{"SYSCON0", "SYSCON1", "RSTCON",  "F0CON",
                                                        "EBCMOD0", "EBCMOD1", "TCONCS0", "FCONCS0",
                                                        "TCONCS1", "FCONCS1", "TCONCS2", "FCONCS2"};

bool IsGeneric(std::string_view name) {
    return name.size() >= 7 && UpperCase(name.substr(0, 7)) == "GENERIC";
}

bool Yes(ProgramState& st, std::string_view question) {
    return st.host->messageBox(question, MsgButtons::YesNo, MsgIcon::Question) == MsgAnswer::Yes;
}

// Reads the controller's register definitions; the register sets follow.
void ReadControllerRegisters(ProgramState& st, int controller) {
    (void)ReadSfrFile(st,
                      st.controllerTypes[static_cast<size_t>(controller)].registerDefinitionPath);
    ReloadSfrSets(st);
}

// A number behind the line's last "@", and the text before it.
int32_t TakeNumber(std::string& text) {
    const int32_t at = LastPosition(text, '@');
    if (at <= 0) return -1;
    const std::string number = text.substr(static_cast<size_t>(at));
    text.resize(static_cast<size_t>(at - 1));
    return static_cast<int32_t>(LeadingNumberValue(number));
}

}  // namespace

void AddInitRegister(ProgramState& st, std::string_view name, int32_t address, int32_t value) {
    if (address < 1) address = SfrAddressByName(st, name);
    if (!IsGeneric(name) && address < 1) return;
    CheckBound(st.initRegisterCount, kInitRegisterBound, "initialisation register");
    InitRegister& r = st.initRegisters[static_cast<size_t>(st.initRegisterCount++)];
    r.name = std::string(name);
    r.address = std::to_string(address);
    r.value = value;
}

void FConfigure::clear_config() {
    IMemoryList.clear();
    IMemoryActivated.clear();
    IMemoryMapped.clear();
    rows = {};
    generic = {};
}

void FConfigure::initialize() {
    DMCTypeList.clear();
    for (int i = 0; i < st_.controllerTypeCount; ++i)
        DMCTypeList.push_back(st_.controllerTypes[static_cast<size_t>(i)].name);
}

void FConfigure::set_sfr() {
    sfrNames.clear();
    for (int i = 0; i < st_.sfrCount && static_cast<size_t>(i) < st_.sfrTable.size(); ++i)
        sfrNames.push_back(st_.sfrTable[static_cast<size_t>(i)].name);
}

void FConfigure::get_preferences() {
    if (ControllerIndexByName(st_, st_.MCTYPE) >= 0) DMCType = st_.MCTYPE;
    TClk = std::to_string(st_.CLK);
    CEINIT = st_.EINIT != 0;
    set_sfr();
    RefreshInitRegs();
    RefreshMemoryList();
}

void FConfigure::RefreshInitRegs() {
    rows = {};
    generic = {};
    int row = 0;
    for (int i = 0; i < st_.initRegisterCount; ++i) {
        const InitRegister& r = st_.initRegisters[static_cast<size_t>(i)];
        if (IsGeneric(r.name)) {
            const int g = static_cast<int>(LeadingNumberValue(r.name.substr(7))) - 1;
            if (g < 0 || g >= kGenericRows) continue;
            generic[static_cast<size_t>(g)] = {
                true, HexText(static_cast<int32_t>(LeadingNumberValue(r.address)), 6),
                HexText(r.value, 4)};
            continue;
        }
        if (row >= kInitRows) continue;
        rows[static_cast<size_t>(row++)] = {true, r.name, HexText(r.value, 4)};
    }
    nextDefaultRow_ = row;
}

void FConfigure::set_preferences() {
    st_.MCTYPE = DMCType;
    st_.CLK = static_cast<int32_t>(LeadingNumberValue(TClk));
    st_.EINIT = CEINIT ? 1 : 0;
    st_.initRegisterCount = 0;
    for (const InitRow& r : rows)
        if (r.OReg)
            AddInitRegister(st_, r.TReg, SfrAddressByName(st_, r.TReg), HexValue(r.TRegValue));
    for (int g = 0; g < kGenericRows; ++g) {
        const GenericRow& r = generic[static_cast<size_t>(g)];
        const int32_t address = HexValue(r.TGENADDR);
        if (r.CGEN && address > 0)
            AddInitRegister(st_, "GENERIC" + std::to_string(g + 1), address, HexValue(r.TGENDATA));
    }
}

void FConfigure::RefreshMemoryList() {
    IMemoryList.clear();
    IMemoryActivated.clear();
    IMemoryMapped.clear();
    for (int u = 0; u < st_.memoryUnitCount; ++u) {
        const MemoryUnit& unit = st_.memoryUnits[static_cast<size_t>(u)];
        for (int s = 0; s < unit.sectionCount; ++s) {
            const MemorySection& section = unit.sections[static_cast<size_t>(s)];
            for (int r = 0; r < section.rangeCount; ++r) {
                const SectionRange& range = section.ranges[static_cast<size_t>(r)];
                const int32_t start = range.mappedNow ? range.mapAddress : range.startAddress;
                std::string text = unit.name;
                if (text.size() < 14) text.resize(14, ' ');
                text += HexText(start, 6) + "-" + HexText(start + range.length - 1, 6) +
                        std::string(13, ' ');
                text += "@" + std::to_string(u) + "@" + std::to_string(s) + "@" + std::to_string(r);
                IMemoryList.push_back(std::move(text));
                IMemoryActivated.emplace_back(unit.activated ? "X" : " ");
                IMemoryMapped.emplace_back(range.mappedNow ? "X" : " ");
            }
        }
    }
}

void FConfigure::SetDefaultInitRegisters() {
    st_.initRegisterCount = 0;
    rows = {};
    nextDefaultRow_ = 0;
    if (st_.ControllerFamily == 0)
        for (const char* name : kFamily0Registers) AddDefaultInitRegister(name);
    else if (st_.ControllerFamily == 1)
        for (const char* name : kFamily1Registers) AddDefaultInitRegister(name);
    for (int r = st_.initRegisterCount; r < kInitRows; ++r)
        rows[static_cast<size_t>(r)].OReg = false;
}

void FConfigure::AddDefaultInitRegister(std::string_view name) {
    const int32_t address = SfrAddressByName(st_, name);
    if (SfrIndexByName(st_, name) < 0) return;
    CheckBound(st_.initRegisterCount, kInitRegisterBound, "initialisation register");
    InitRegister& r = st_.initRegisters[static_cast<size_t>(st_.initRegisterCount++)];
    r.name = std::string(name);
    r.address = std::to_string(address);
    r.value = 0;
    if (nextDefaultRow_ < kInitRows)
        rows[static_cast<size_t>(nextDefaultRow_++)] = {true, std::string(name), HexText(0, 4)};
}

void FConfigure::DMCType_Click(std::string_view type) {
    DMCType = std::string(type);
    const int c = ControllerIndexByName(st_, type);
    if (c < 0) return;
    st_.MCTYPE = std::string(type);
    const ControllerType& ct = st_.controllerTypes[static_cast<size_t>(c)];
    if (Yes(st_, "Do you want to load default memory units of this Type ?")) {
        ReadMemoryDefinition(st_, ct.memoryDefinitionPath);
        RefreshMemoryList();
    }
    st_.ControllerFamily = ControllerFamilyCode(ct.family);
    ReadControllerRegisters(st_, c);
    set_sfr();
    if (Yes(st_, "Do you want to activate the default kernel for this type ?"))
        SelectDefaultKernel(st_);
    if (Yes(st_, "Do you want to load default initialization registers of this Type ?"))
        SetDefaultInitRegisters();
}

void DisconnectAfterControllerChange(target::Target& t, std::string_view oldType,
                                     int32_t oldClock) {
    if (t.st.MCTYPE == oldType && t.st.CLK == oldClock) return;
    (void)target::disconnect(t);
}

void FConfigure::BOk() {
    set_preferences();
    const int c = ControllerIndexByName(st_, st_.MCTYPE);
    if (c >= 0) {
        st_.ControllerFamily =
            ControllerFamilyCode(st_.controllerTypes[static_cast<size_t>(c)].family);
        ReadControllerRegisters(st_, c);
    }
    RefreshMemoryList();
    // The configuration lives on in the files at once, not only at the end.
    WriteConfigurationFiles(st_);
    st_.host->refreshAfterOperation(true);
}

std::string FConfigure::CheckRegisterValue(std::string_view text) {
    return !text.empty() && HexValue(text) < 0 ? kNoValidHexDigit : "";
}

std::string FConfigure::CheckGenericValue(std::string_view text) {
    return !text.empty() && HexValue(text) < 0 ? kNoHexDigit : "";
}

std::string FConfigure::CheckClock(std::string_view text) {
    const std::optional<double> v = NumericValue(text);
    return !v || *v < 0 ? kNoValidDecimal : "";
}

MemoryLine FConfigure::lineAt(int line) const {
    if (line < 0 || static_cast<size_t>(line) >= IMemoryList.size()) return {};
    std::string text = IMemoryList[static_cast<size_t>(line)];
    MemoryLine m;
    m.range = TakeNumber(text);
    m.section = TakeNumber(text);
    m.unit = TakeNumber(text);
    if (m.unit < 0 || m.unit >= st_.memoryUnitCount) return {};
    const MemoryUnit& u = st_.memoryUnits[static_cast<size_t>(m.unit)];
    if (m.section < 0 || m.section >= u.sectionCount) return {};
    if (m.range < 0 || m.range >= u.sections[static_cast<size_t>(m.section)].rangeCount) return {};
    return m;
}

int FConfigure::BMemoryAdd() {
    CheckBound(st_.memoryUnitCount, kMemoryUnitBound, "memory unit");
    MemoryUnit& u = st_.memoryUnits[static_cast<size_t>(st_.memoryUnitCount)];
    u = MemoryUnit{};
    u.type = "RAM";
    u.blank = 0;
    u.burstSize = 1;
    u.driverBufferAddress = 0xFC80;
    // The count goes up before the unit form opens: Cancel keeps the unit.
    return st_.memoryUnitCount++;
}

int FConfigure::BMemoryEdit(int line) const {
    return lineAt(line).unit;
}

void FConfigure::BMemoryRemove(int line) {
    const int unit = lineAt(line).unit;
    if (unit < 0) return;
    for (int u = unit; u + 1 < st_.memoryUnitCount; ++u)
        st_.memoryUnits[static_cast<size_t>(u)] = st_.memoryUnits[static_cast<size_t>(u + 1)];
    --st_.memoryUnitCount;
    RefreshMemoryList();
}

void FConfigure::IMemoryActivated_Click(int line) {
    const int unit = lineAt(line).unit;
    if (unit < 0) return;
    MemoryUnit& u = st_.memoryUnits[static_cast<size_t>(unit)];
    if (u.activateCount <= 0) return;
    u.activated = u.activated ? kFalse : kTrue;
    RefreshMemoryList();
}

void FConfigure::IMemoryMapped_Click(int line) {
    const MemoryLine m = lineAt(line);
    if (m.unit < 0) return;
    MemoryUnit& u = st_.memoryUnits[static_cast<size_t>(m.unit)];
    if (!u.sections[static_cast<size_t>(m.section)]
             .ranges[static_cast<size_t>(m.range)]
             .mappingDefined)
        return;
    for (int s = 0; s < u.sectionCount; ++s)
        for (int r = 0; r < u.sections[static_cast<size_t>(s)].rangeCount; ++r) {
            SectionRange& range = u.sections[static_cast<size_t>(s)].ranges[static_cast<size_t>(r)];
            if (range.mappingDefined) range.mappedNow = range.mappedNow ? kFalse : kTrue;
        }
    RefreshMemoryList();
}

}  // namespace vortelm::forms
