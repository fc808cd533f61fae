#include "sim/Model.h"

#include <algorithm>
#include <cctype>

namespace vortelm::sim {
namespace {

std::vector<RegisterDef> CommonCpuRegisters() {
    return {
        {"DPP0", 0xFE00, 0x0000, kRegPlain},   {"DPP1", 0xFE02, 0x0001, kRegPlain},
        {"DPP2", 0xFE04, 0x0002, kRegPlain},   {"DPP3", 0xFE06, 0x0003, kRegPlain},
        {"CSP", 0xFE08, 0x0000, kRegReadOnly}, {"CP", 0xFE10, 0xFC00, kRegPlain},
        {"SP", 0xFE12, 0xFC00, kRegPlain},     {"STKOV", 0xFE14, 0xFA00, kRegPlain},
        {"STKUN", 0xFE16, 0xFC00, kRegPlain},  {"BUSCON0", 0xFF0C, 0x04C0, kRegLockedByEinit},
        {"PSW", 0xFF10, 0x0000, kRegPlain},    {"SYSCON", 0xFF12, 0x0090, kRegLockedByEinit},
    };
}

void AddIdRegisters(std::vector<RegisterDef>& regs, uint16_t manuf, uint16_t chip, uint16_t mem,
                    uint16_t prog, uint16_t mem2) {
    regs.push_back({"IDMANUF", 0xF07E, manuf, kRegReadOnly});
    regs.push_back({"IDCHIP", 0xF07C, chip, kRegReadOnly});
    regs.push_back({"IDMEM", 0xF07A, mem, kRegReadOnly});
    regs.push_back({"IDPROG", 0xF078, prog, kRegReadOnly});
    regs.push_back({"IDMEM2", 0xF076, mem2, kRegReadOnly});
    regs.push_back({"IDRES2", 0xF074, 0x0000, kRegReadOnly});
    regs.push_back({"IDRES1", 0xF072, 0x0000, kRegReadOnly});
    regs.push_back({"IDRES0", 0xF070, 0x0000, kRegReadOnly});
}

// The ports and timers every board has, at the same places.
void AddPortAndTimerRegisters(std::vector<RegisterDef>& regs) {
    regs.push_back({"P2", 0xFFC0, 0x0000, kRegPlain});
    regs.push_back({"DP2", 0xFFC2, 0x0000, kRegPlain});
    regs.push_back({"P3", 0xFFC4, 0x0000, kRegPlain});
    regs.push_back({"DP3", 0xFFC6, 0x0000, kRegPlain});
    regs.push_back({"T2", 0xFE40, 0x0000, kRegPlain});
    regs.push_back({"T3", 0xFE42, 0x0000, kRegPlain});
    regs.push_back({"T4", 0xFE44, 0x0000, kRegPlain});
    regs.push_back({"T2CON", 0xFF40, 0x0000, kRegPlain});
    regs.push_back({"T3CON", 0xFF42, 0x0000, kRegPlain});
    regs.push_back({"T4CON", 0xFF44, 0x0000, kRegPlain});
}

std::vector<std::vector<Area>> EqualSections(uint32_t first, uint32_t count, uint32_t size) {
    std::vector<std::vector<Area>> s;
    for (uint32_t i = 0; i < count; ++i)
        s.push_back({{first + i * size, first + (i + 1) * size - 1}});
    return s;
}

BoardModel Ald4() {
    BoardModel m;
    m.controller = "ALD7RK_BB";
    m.family = Family::Ald4;
    m.idByte = 0xA5;
    m.ram = {{0x00F600, 0x00FDFF}, {0x100000, 0x13FFFF}};
    m.sfr = {{0x00F000, 0x00F1FF}, {0x00FE00, 0x00FFFF}};
    m.registers = CommonCpuRegisters();
    m.registers.push_back({"ADDRSEL1", 0xFE18, 0x0000, kRegPlain});
    m.registers.push_back({"ADDRSEL2", 0xFE1A, 0x0000, kRegPlain});
    m.registers.push_back({"ADDRSEL3", 0xFE1C, 0x0000, kRegPlain});
    m.registers.push_back({"S0TBUF", 0xFEB0, 0x0000, kRegPlain});
    m.registers.push_back({"S0RBUF", 0xFEB2, 0x0000, kRegReadOnly});
    m.registers.push_back({"S0BG", 0xFEB4, 0x0000, kRegBaud});
    m.registers.push_back({"BUSCON1", 0xFF14, 0x0000, kRegPlain});
    m.registers.push_back({"S0CON", 0xFFB0, 0x8011, kRegPlain});
    m.registers.push_back({"RSTCON", 0xF1E0, 0x0000, kRegHelperOnly});
    m.registers.push_back({"PLLCON", 0xF1E2, 0x0000, kRegHelperOnly});
    AddIdRegisters(m.registers, 0x1820, 0x0D12, 0x3040, 0x8080, 0x6001);
    AddPortAndTimerRegisters(m.registers);

    FlashUnitDef ifl;
    ifl.name = "IFLASH";
    ifl.internal = true;
    ifl.first = 0x010000;
    ifl.size = 0x40000;
    ifl.blank = 0xFF;
    ifl.sections = {{{0x010000, 0x017FFF}, {0x018000, 0x01FFFF}},
                    {{0x020000, 0x02FFFF}},
                    {{0x030000, 0x03FFFF}},
                    {{0x040000, 0x04FFFF}}};
    m.flash.push_back(ifl);

    FlashUnitDef xfl;
    xfl.name = "XFLASH";
    xfl.internal = false;
    xfl.first = 0x400000;
    xfl.size = 0x80000;
    xfl.blank = 0xFF;
    xfl.sections = EqualSections(0x400000, 8, 0x10000);
    xfl.activation = {{0xFE18, 0x4008}, {0xFF14, 0x0400}};
    xfl.windows = {{0x200000, 0x400000, 0x10000, {0xFE1A, 0x2003}}};
    m.flash.push_back(xfl);
    return m;
}

BoardModel Zt() {
    BoardModel m;
    m.controller = "ZTA9Y_BB";
    m.family = Family::Zt;
    m.idByte = 0xC6;
    m.ram = {{0x00C000, 0x00EFFF}, {0x00F200, 0x00FDFF}};
    m.sfr = {{0x00F000, 0x00F1FF}, {0x00FE00, 0x00FFFF}};
    m.registers = CommonCpuRegisters();
    m.registers.push_back({"ASC0TBUF", 0xFEB0, 0x0000, kRegPlain});
    m.registers.push_back({"ASC0RBUF", 0xFEB2, 0x0000, kRegReadOnly});
    m.registers.push_back({"ASC0BG", 0xFEB4, 0x0000, kRegBaud});
    m.registers.push_back({"ASC0FDV", 0xFEB6, 0x0000, kRegBaud});
    m.registers.push_back({"ASC0CON", 0xFFB0, 0x8811, kRegPlain});
    m.registers.push_back({"RSTCFG", 0xF0A0, 0x3200, kRegReadOnly});
    m.registers.push_back({"SYSSTAT", 0xF0A2, 0xC000, kRegReadOnly});
    m.registers.push_back({"RSTCON2", 0xF0A4, 0x0200, kRegReadOnly});
    m.registers.push_back({"TSTMOD", 0xF0A6, 0x4000, kRegReadOnly});
    m.registers.push_back({"FCONCS0", 0xF0A8, 0x0020, kRegLockedByEinit});
    m.registers.push_back({"PLLCON", 0xF0AC, 0x0C31, kRegHelperOnly});
    m.registers.push_back({"RSTCON", 0xF0AE, 0x0000, kRegHelperOnly});
    AddIdRegisters(m.registers, 0x1821, 0x8A01, 0x3040, 0x2020, 0x6003);
    AddPortAndTimerRegisters(m.registers);

    FlashUnitDef ifl;
    ifl.name = "IFLASH";
    ifl.internal = true;
    ifl.first = 0xC00000;
    ifl.size = 0x40000;
    ifl.blank = 0xFF;
    ifl.sections = EqualSections(0xC00000, 16, 0x4000);
    m.flash.push_back(ifl);
    return m;
}

BoardModel Zt7() {
    BoardModel m;
    m.controller = "ZT7000_BB";
    m.family = Family::Zt7;
    m.idByte = 0xC7;
    m.ram = {{0x00A000, 0x00EFFF}, {0x00F200, 0x00FDFF}};
    m.sfr = {{0x00F000, 0x00F1FF}, {0x00FE00, 0x00FFFF}, {0x204000, 0x2040FF}};
    m.registers = CommonCpuRegisters();
    m.registers.push_back({"FDRL", 0x204004, 0x43F0, kRegPlain});
    m.registers.push_back({"BRGL", 0x20401C, 0x0000, kRegPlain});
    m.registers.push_back({"BRGH", 0x20401E, 0x0000, kRegBaud});
    m.registers.push_back({"PLLCON", 0xF0AC, 0x0C31, kRegHelperOnly});
    m.registers.push_back({"RSTCON", 0xF0AE, 0x0000, kRegHelperOnly});
    AddIdRegisters(m.registers, 0x0400, 0x7001, 0x3080, 0x2020, 0x6004);
    AddPortAndTimerRegisters(m.registers);

    FlashUnitDef ifl;
    ifl.name = "IFLASH";
    ifl.internal = true;
    ifl.first = 0xC00000;
    ifl.size = 0x80000;
    ifl.blank = 0x00;
    ifl.sections = EqualSections(0xC00000, 8, 0x10000);
    m.flash.push_back(ifl);
    return m;
}

}  // namespace

const std::vector<BoardModel>& BoardModels() {
    static const std::vector<BoardModel> models = {Ald4(), Zt(), Zt7()};
    return models;
}

const BoardModel* FindBoardModel(std::string_view controller) {
    auto same = [](std::string_view a, std::string_view b) {
        return a.size() == b.size() &&
               std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
                   return std::toupper(static_cast<unsigned char>(x)) ==
                          std::toupper(static_cast<unsigned char>(y));
               });
    };
    for (const auto& m : BoardModels())
        if (same(m.controller, controller)) return &m;
    return nullptr;
}

const RegisterDef* FindRegister(const BoardModel& m, std::string_view name) {
    for (const auto& r : m.registers)
        if (r.name == name) return &r;
    return nullptr;
}

}  // namespace vortelm::sim
