// The reset configuration report, read at every connect and shown again
// from the stored values on request, and the identification report.

#include <span>
#include <string>

#include "core/Helpers.h"
#include "core/Host.h"
#include "core/Text.h"
#include "image/Dump.h"
#include "link/Monitor.h"
#include "sfr/SfrTable.h"
#include "target/Target.h"

namespace vortelm::target {

namespace {

int32_t DumpWord(ProgramState& st, int32_t address) {
    return ReadDumpWord(st.dump, address);
}

void Line(ProgramState& st, const std::string& text) {
    Text2Buffer(st, text + "\r\n");
}

void Choice(ProgramState& st, bool set, const char* whenSet, const char* whenClear) {
    Line(st, set ? whenSet : whenClear);
}

void BusLine(ProgramState& st, int32_t bits) {
    static constexpr const char* kBus[] = {"*Reset Configuration: 8 Bit demultiplexed Bus",
                                           "*Reset Configuration: 8 Bit multiplexed Bus",
                                           "*Reset Configuration: 16 Bit demultiplexed Bus",
                                           "*Reset Configuration: 16 Bit multiplexed Bus"};
    Line(st, kBus[bits & 3]);
}

void ShowFamily0(ProgramState& st, const ResetRegisters& r) {
    Line(st, "*Reset: BUSCON0=" + HexText(r.BUSCON0, 4));
    Line(st, "*Reset: SYSCON=" + HexText(r.SYSCON, 4));
    Choice(st, (r.BUSCON0 & 0x0400) != 0, "*Reset Configuration: External Bus enabled",
           "*Reset Configuration: External Bus disabled");
    BusLine(st, (r.BUSCON0 & 0x00C0) >> 6);
    Choice(st, (r.SYSCON & 0x0080) != 0,
           "*Reset Configuration: WR# acts as WRL#, BHE# acts as WRH# (P0H.0=1)",
           "*Reset Configuration: WR# and BHE# retain their normal function (P0H.0=0)");
    Choice(st, (r.SYSCON & 0x0010) != 0,
           "*Reset Configuration: On chip watchdog timer is enabled (RD#=1)",
           "*Reset Configuration: On chip watchdog timer is disabled (RD#=0)");
    Choice(st, (r.BUSCON0 & 0x0200) != 0, "*Reset Configuration: Lengthened ALE signal ",
           "*Reset Configuration: Normal ALE signal");
}

void ShowFamily1(ProgramState& st, const ResetRegisters& r) {
    Line(st, "*Reset: SYSSTAT=" + HexText(r.SYSSTAT, 4));
    const std::string kind = (r.IDMEM & 0xF000) == 0x1000 ? "ROM" : "FLASH";
    const int32_t pins = r.TSTMOD & 0xC000;
    Line(st, "*Chip: " + kind +
                 (pins == 0x0000   ? "_100 Pins"
                  : pins == 0x4000 ? "_128 Pins"
                                   : "_144 Pins"));
    Choice(st, (r.RSTCON2 & 0x0200) != 0, "*Reset Configuration: Single Chip Mode",
           "*Reset Configuration: Bus Mode");
    BusLine(st, (r.FCONCS0 & 0x0030) >> 4);
    static constexpr const char* kCs[] = {
        "*Reset Configuration: CS0-CS2", "*Reset Configuration: CS0-CS1",
        "*Reset Configuration: No CS Lines", "*Reset Configuration: CS0-CS4"};
    Line(st, kCs[(r.RSTCFG & 0x0600) >> 9]);
    static constexpr const char* kSeg[] = {
        "*Reset Configuration: A16-A19", "*Reset Configuration: No Segment Address Lines",
        "*Reset Configuration: A16-A23", "*Reset Configuration: A16-A17"};
    Line(st, kSeg[(r.RSTCFG & 0x1800) >> 11]);
    static constexpr const char* kPll[] = {"*PLL Reset Configuration: Prescaler Mode. OSC=4-50MHz",
                                           "*PLL Reset Configuration: Direct Drive. OSC=4-40MHZ",
                                           "*PLL Reset Configuration: factor=2,5. OSC=8-12MHZ",
                                           "*PLL Reset Configuration: factor=2,5. OSC=12-16MHz",
                                           "*PLL Reset Configuration: factor=5. OSC=4-6MHZ",
                                           "*PLL Reset Configuration: factor=2. OSC=12,5-18,7MHZ",
                                           "*PLL Reset Configuration: factor=4,5. OSC=5,6-8,3MHZ",
                                           "*PLL Reset Configuration: factor=3. OSC=8,3-12,5MHZ"};
    Line(st, kPll[(r.RSTCFG & 0xE000) >> 13]);
    static constexpr const char* kLock[] = {
        "*Oscillator is unlocked, PLL is unlocked", "*Oscillator is unlocked, PLL is locked",
        "*Oscillator is locked, PLL is unlocked", "*Oscillator is locked, PLL is locked"};
    Line(st, kLock[(r.SYSSTAT & 0xC000) >> 14]);
}

void MemoryLines(ProgramState& st, const std::string& prefix, int32_t w) {
    static constexpr const char* kTypes[] = {" >> Romless",  " >> Mask ROM", " >> EPROM",
                                             " >> Flash",    " >> OTP",      " >> EEPROM",
                                             " >> DRAM/SRAM"};
    const int32_t type = (w & 0xF000) / 4096;
    const int32_t size = w & 0x0FFF;
    Line(st, "*idreg: " + prefix + "/TYPE=" + HexText(type, 2) +
                 (type < 7 ? kTypes[type] : " >> Unknown memory type"));
    Line(st, "*idreg: " + prefix + "/Size= " + std::to_string(size * 4) + " KByte");
}

}  // namespace

int readResetConfig(Target& t) {
    ProgramState& st = t.st;
    if (const int r = CheckPreconditions(st, ""); r != 0) return r;
    struct Entry {
        const char* name;
        int32_t ResetRegisters::*field;
    };
    static constexpr Entry kFamily0[] = {{"SYSCON", &ResetRegisters::SYSCON},
                                         {"BUSCON0", &ResetRegisters::BUSCON0}};
    static constexpr Entry kFamily1[] = {
        {"RSTCFG", &ResetRegisters::RSTCFG},   {"FCONCS0", &ResetRegisters::FCONCS0},
        {"TSTMOD", &ResetRegisters::TSTMOD},   {"RSTCON2", &ResetRegisters::RSTCON2},
        {"SYSSTAT", &ResetRegisters::SYSSTAT}, {"IDMEM", &ResetRegisters::IDMEM}};
    std::span<const Entry> entries;
    if (st.ControllerFamily == 0)
        entries = kFamily0;
    else if (st.ControllerFamily == 1)
        entries = kFamily1;
    link::Monitor mon(st, t.port);
    for (const Entry& e : entries) {
        if (mon.cmd_readsfr(e.name) != 0) {
            Text2Buffer(st, "*ERROR: reading reset configuration\r\n");
            return -2;
        }
        t.reset.*e.field = DumpWord(st, SfrAddressByName(st, e.name));
    }
    return 0;
}

void showResetConfig(Target& t) {
    if (t.st.ControllerFamily == 0)
        ShowFamily0(t.st, t.reset);
    else if (t.st.ControllerFamily == 1)
        ShowFamily1(t.st, t.reset);
}

int showIdRegisters(Target& t) {
    ProgramState& st = t.st;
    if (const int r = CheckPreconditions(st, "READBLOCK"); r != 0) return r;
    st.host->setBusy(true);
    link::Monitor mon(st, t.port);
    int result = 0;
    // All five words first, in the order of their addresses; a failed read
    // leaves what dump memory holds, and the report goes on with it.
    for (int32_t address : {0xF07E, 0xF07C, 0xF07A, 0xF078, 0xF076})
        if (mon.Cmd_Read(address, 2) != 0) result = -1;
    auto word = [&](int32_t address) { return DumpWord(st, address); };

    const int32_t manuf = word(0xF07E);
    const int32_t code = (manuf & 0xFFE0) / 32;
    const int32_t dept = manuf & 0x001F;
    Line(st, "*idreg: MANUF=" + HexText(code, 4) +
                 (code == 0xC1   ? " >> Dorvani Semiconductor Division"
                  : code == 0x20 ? " >> Haldric Micro"
                                 : " >> Unknown Manufacturer"));
    static constexpr const char* kDepts[] = {" >> QR MC", " >> QR CAD Macrocells", " >> QR IT",
                                             " >> QR CR"};
    Line(st, "*idreg: DEPT=" + HexText(dept, 4) +
                 (dept < 4 ? kDepts[dept] : " >> Unknown Department "));

    const int32_t chip = word(0xF07C);
    Line(st, "*idreg: CHIPID=" + HexText(chip >> 8, 2));
    Line(st, "*idreg: REVISION=" + HexText(chip & 0xFF, 2));

    const int32_t prog = word(0xF078);
    const int32_t vdd = prog >> 8;
    const int32_t vpp = prog & 0xFF;
    Line(st, "*idreg: PROGVDD=" + HexText(vdd, 2) + " >> " + FormatOneDecimal(vdd * 20.0 / 256.0) +
                 " Volt");
    Line(st, "*idreg: PROGVPP=" + HexText(vpp, 2) + " >> " + FormatOneDecimal(vpp * 20.0 / 256.0) +
                 " Volt");

    MemoryLines(st, "IDMEM", word(0xF07A));
    MemoryLines(st, "IDMEM2", word(0xF076));
    st.host->setBusy(false);
    return result;
}

}  // namespace vortelm::target
