// The target initialisation: the configured start-up registers, the
// registers that switch on the memory units and their mapped regions, the
// X-peripherals of the ALD4 family in one step after them, and EINIT last.

#include <algorithm>
#include <string>

#include "config/Kernels.h"
#include "core/Helpers.h"
#include "core/Host.h"
#include "core/RunTimeError.h"
#include "core/Text.h"
#include "image/Dump.h"
#include "link/ComPort.h"
#include "link/Monitor.h"
#include "sfr/SfrTable.h"
#include "target/Target.h"

namespace vortelm::target {

namespace {

// The bit of SYSCON that enables the X-peripherals on the ALD4 family.
constexpr int32_t kXpen = 0x0004;

int32_t DumpWord(ProgramState& st, int32_t address) {
    return ReadDumpWord(st.dump, address);
}

void PutDumpWord(ProgramState& st, int32_t address, int32_t value) {
    WriteDumpWord(st.dump, address, static_cast<uint16_t>(value));
}

// The address of an activation or mapping register: its entry in the
// register table, else the hexadecimal digits behind the first "X" of the
// name; -1 when neither gives one.
int32_t RegisterAddress(const ProgramState& st, const std::string& name) {
    const int32_t a = SfrAddressByName(st, name);
    if (a >= 0) return a;
    const auto x = name.find('X');
    if (x == std::string::npos) return -1;
    return HexValue(std::string_view(name).substr(x + 1));
}

// Read the register into dump memory, OR the mask into the word there, put
// it back and write it: masks only ever set bits.
void OrRegister(link::Monitor& mon, ProgramState& st, int32_t address, int32_t mask) {
    const int32_t word = DumpWord(st, address) | (mask & 0xFFFF);
    PutDumpWord(st, address, word);
    (void)mon.Cmd_WriteWord(address, word);
}

}  // namespace

void ClearInitRegisters(ProgramState& st) {
    st.initRegisterCount = 0;
}

void AddInitRegister(ProgramState& st, std::string_view name, int32_t address, int32_t value) {
    if (address < 1) address = SfrAddressByName(st, name);
    if (address < 1 && UpperCase(name).rfind("GENERIC", 0) != 0) return;
    CheckBound(st.initRegisterCount, kInitRegisterBound, "initialisation register");
    InitRegister& r = st.initRegisters[static_cast<size_t>(st.initRegisterCount++)];
    r.name = std::string(name);
    r.address = std::to_string(address);
    r.value = value;
}

int WriteInitRegisters(Target& t) {
    ProgramState& st = t.st;
    link::Monitor mon(st, t.port);
    int deferred = 0;
    const int n = std::min<int>(st.initRegisterCount, static_cast<int>(st.initRegisters.size()));
    for (int i = 0; i < n; ++i) {
        const InitRegister& reg = st.initRegisters[static_cast<size_t>(i)];
        const auto address = static_cast<int32_t>(LeadingNumberValue(reg.address));
        int32_t value = reg.value & 0xFFFF;
        PutDumpWord(st, address, value);
        SetDefined(st.dump, address, kTrue);
        SetDefined(st.dump, address + 1, kTrue);
        if (reg.name == "SYSCON" && st.ControllerFamily == 0) {
            value &= ~kXpen;
            deferred = 1;
        }
        (void)mon.Cmd_WriteWord(address, value);
        Text2Buffer(st, "*Initialisation: Write to " + reg.name + "\r\n");
        if (reg.name == "SYSCON") {
            // The register moved the core's stack or bus: the core restarts.
            (void)mon.Cmd_Jmp(st.KernelStartAddress);
            t.port.Cmd_P();
            t.port.setReceiveThreshold(0);
            const int r = t.port.SSReceive(st.TIMEOUT);
            t.port.setReceiveThreshold(1);
            t.port.Cmd_V();
            if (r != st.codes.A_APPLICATION_STARTED)
                Text2Buffer(st, "*ERROR: Vortelm Acknowledge not Received\r\n");
        }
    }
    return deferred;
}

int initialise(Target& t) {
    ProgramState& st = t.st;
    if (const int r = CheckPreconditions(st, ""); r != 0) return r;
    if (!HasFeature(st, "WRITEWORD", -1) || !HasFeature(st, "EINIT", -1) ||
        (!HasFeature(st, "READBLOCK", -1) && !HasFeature(st, "READWORD", -1))) {
        Text2Buffer(st, "\r\n*ERROR: Kernel feature not supported ");
        return -101;
    }
    st.host->setBusy(true);
    link::Monitor mon(st, t.port);
    int deferred = WriteInitRegisters(t);
    const int units = std::min<int>(st.memoryUnitCount, static_cast<int>(st.memoryUnits.size()));
    for (int u = 0; u < units; ++u) {
        const MemoryUnit& unit = st.memoryUnits[static_cast<size_t>(u)];
        if (unit.activateCount > 0 && unit.activated == kTrue) {
            const int entries =
                std::min<int>(unit.activateCount, static_cast<int>(unit.activateRegisters.size()));
            for (int j = 0; j < entries; ++j) {
                const std::string& name = unit.activateRegisters[static_cast<size_t>(j)];
                if (name == "SYSCON" && st.ControllerFamily == 0) {
                    // The X-peripherals come on after all units and regions.
                    deferred = 1;
                    continue;
                }
                const int32_t address = RegisterAddress(st, name);
                if (address < 0) continue;
                (void)mon.cmd_readsfr(name);
                OrRegister(mon, st, address, unit.activateMasks[static_cast<size_t>(j)]);
            }
            Text2Buffer(st, "*Initialisation: Memory Unit " + unit.name + " activated\r\n");
        }
        const int sections =
            std::min<int>(unit.sectionCount, static_cast<int>(unit.sections.size()));
        for (int s = 0; s < sections; ++s) {
            const MemorySection& section = unit.sections[static_cast<size_t>(s)];
            const int ranges =
                std::min<int>(section.rangeCount, static_cast<int>(section.ranges.size()));
            for (int r = 0; r < ranges; ++r) {
                const SectionRange& range = section.ranges[static_cast<size_t>(r)];
                if (range.mappingDefined != kTrue || range.mappedNow != kTrue) continue;
                const int32_t address = RegisterAddress(st, range.mapRegister);
                if (address < 0) continue;
                (void)mon.Cmd_Read(address, 2);
                OrRegister(mon, st, address, range.mapMask);
                Text2Buffer(st, "*Initialisation: Memory Region in " + unit.name + " mapped\r\n");
            }
        }
    }
    if (deferred == 1 && st.ControllerFamily == 0) {
        (void)mon.cmd_readsfr("SYSCON");
        const int32_t address = SfrAddressByName(st, "SYSCON");
        if (address >= 0) OrRegister(mon, st, address, kXpen);
        Text2Buffer(st, "*Initialisation: Enable X-Peripherals via SYSCON\r\n");
    }
    if (st.EINIT == 1) {
        (void)mon.Cmd_Einit();
        Text2Buffer(st, "*Initialisation: Call EINIT Command\r\n");
    }
    st.host->setBusy(false);
    return 0;
}

}  // namespace vortelm::target
