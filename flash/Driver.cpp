// Driver loading and the call frame of both driver generations.

#include <string>

#include "config/ControllerTypes.h"
#include "core/Helpers.h"
#include "core/Host.h"
#include "core/RunTimeError.h"
#include "core/Text.h"
#include "flash/Common.h"
#include "flash/Flash.h"
#include "image/Dump.h"
#include "image/ImageLoad.h"
#include "image/Selections.h"
#include "link/ComPort.h"
#include "link/Monitor.h"
#include "target/Target.h"

namespace vortelm::flash {

namespace detail {

int CheckConnectedWithDriverFeatures(ProgramState& st) {
    if (int r = target::CheckPreconditions(st, "CALL"); r != 0) return r;
    return target::CheckPreconditions(st, "WRITEBLOCK");
}

Busy::Busy(ProgramState& st) : st_(st) {
    on();
}
Busy::~Busy() {
    off();
}
void Busy::on() {
    st_.host->setBusy(true);
}
void Busy::off() {
    st_.host->setBusy(false);
}

int EnsureDriver(target::Target& t, Busy& busy, std::string_view operationName, int unit) {
    if (UnitOf(t.st, unit).driverLoaded == kTrue) return 0;
    const int r = LoadDriver(t, operationName, unit);
    busy.on();
    return r;
}

void StoreBufferByte(ProgramState& st, int32_t address, uint8_t value) {
    WriteDumpByte(st.dump, address, value);
    SetDefined(st.dump, address, kTrue);
}

int16_t SendBuffer(target::Target& t, int32_t address, int32_t length) {
    return link::Monitor(t.st, t.port).Cmd_Write(address, length);
}

int16_t CallDriver(target::Target& t, int unit, Frame& frame) {
    return link::Monitor(t.st, t.port).Cmd_Call(UnitOf(t.st, unit).driverEntry, frame.words);
}

MemoryUnit& UnitOf(ProgramState& st, int unit) {
    CheckBound(unit, kMemoryUnitBound, "memory unit");
    return st.memoryUnits[static_cast<size_t>(unit)];
}

}  // namespace detail

using detail::UnitOf;

int IFlashIndex(const ProgramState& st, int unit) {
    CheckBound(unit, kMemoryUnitBound, "memory unit");
    return unit == 0 ? 0 : FlashRank(st, unit - 1);
}

int FirstIFlashUnit(const ProgramState& st) {
    return FirstFlashUnit(st);
}

int32_t BaseHigh(const ProgramState& st, int unit) {
    CheckBound(unit, kMemoryUnitBound, "memory unit");
    return High(st.memoryUnits[static_cast<size_t>(unit)].sections[0].ranges[0].startAddress);
}

namespace {

bool ModeOne(const ProgramState& st, int unit) {
    return st.memoryUnits[static_cast<size_t>(unit)].driverMode == 1;
}

}  // namespace

Frame InitialiseFrame(const ProgramState& st, int unit) {
    Frame f;
    f.set(Slot::R8, op::kInitialise);
    f.set(Slot::R9, BaseHigh(st, unit));
    // the clock in units of 1000, rounded
    f.set(Slot::R10, static_cast<int32_t>((static_cast<int64_t>(st.CLK) + 500) / 1000));
    return f;
}

Frame ProgramBlockFrame(const ProgramState& st, int unit, int32_t address) {
    const MemoryUnit& u = st.memoryUnits[static_cast<size_t>(unit)];
    const int32_t buffer = u.driverBufferAddress;
    Frame f;
    if (ModeOne(st, unit)) {
        f.set(Slot::R8, op::kProgramMode1);
        f.set(Slot::R9, BaseHigh(st, unit));
        f.set(Slot::R10, High(address));
        f.set(Slot::R11, Low(address));
        f.set(Slot::R12, 1);  // one burst
        f.set(Slot::R13, High(buffer));
        f.set(Slot::R14, Low(buffer));
    } else {
        f.set(Slot::R8, op::kProgramMode0);
        f.set(Slot::R9, u.burstSize);
        f.set(Slot::R10, Low(buffer));
        f.set(Slot::R11, High(buffer));
        f.set(Slot::R13, Low(address));
        f.set(Slot::R14, High(address));
    }
    return f;
}

Frame EraseSectorFrame(const ProgramState& st, int unit, int32_t sector) {
    CheckBound(sector, 128, "section");
    const MemoryUnit& u = st.memoryUnits[static_cast<size_t>(unit)];
    Frame f;
    if (ModeOne(st, unit)) {
        const int32_t start = u.sections[static_cast<size_t>(sector)].ranges[0].startAddress;
        f.set(Slot::R8, op::kEraseSectorMode1);
        f.set(Slot::R9, BaseHigh(st, unit));
        f.set(Slot::R10, High(start));
        f.set(Slot::R11, Low(start));
        f.set(Slot::R12, sector);
    } else {
        f.set(Slot::R8, op::kEraseSectorMode0);
        f.set(Slot::R13, IFlashIndex(st, unit));
        f.set(Slot::R14, sector);
    }
    return f;
}

Frame ReadStatusFrame(const ProgramState& st, int unit, int32_t number) {
    Frame f;
    if (ModeOne(st, unit)) {
        f.set(Slot::R8, op::kReadStatusMode1);
        f.set(Slot::R9, BaseHigh(st, unit));
    } else {
        f.set(Slot::R8, op::kReadStatusMode0);
        f.set(Slot::R14, number);
    }
    return f;
}

Frame EraseWordlineFrame(int32_t address) {
    Frame f;
    f.set(Slot::R8, op::kEraseWordline);
    f.set(Slot::R13, Low(address));
    f.set(Slot::R14, High(address));
    return f;
}

Frame PasswordFrame(const ProgramState& st, int unit, int32_t operation, int32_t sector) {
    const int32_t buffer = st.memoryUnits[static_cast<size_t>(unit)].driverBufferAddress;
    Frame f;
    f.set(Slot::R8, operation);
    f.set(Slot::R9, 8);  // the password always goes out as 8 bytes
    f.set(Slot::R10, Low(buffer));
    f.set(Slot::R11, High(buffer));
    if (operation == op::kLock || operation == op::kUnlock) {
        f.set(Slot::R13, IFlashIndex(st, unit));
        f.set(Slot::R14, sector);
    }
    return f;
}

Frame WriteAssemblyBufferFrame(const ProgramState& st, int unit, int32_t count, int32_t address) {
    const int32_t buffer = st.memoryUnits[static_cast<size_t>(unit)].driverBufferAddress;
    Frame f;
    f.set(Slot::R8, op::kWriteAssemblyBuffer);
    f.set(Slot::R9, count);
    f.set(Slot::R10, Low(buffer));
    f.set(Slot::R11, High(buffer));
    f.set(Slot::R13, Low(address));
    f.set(Slot::R14, High(address));
    f.set(Slot::R15, 1);
    return f;
}

std::string DriverFile(const ProgramState& st, int unit) {
    CheckBound(unit, kMemoryUnitBound, "memory unit");
    return ResolveInProgramFolder(st, st.memoryUnits[static_cast<size_t>(unit)].driverPath);
}

int LoadDriver(target::Target& t, std::string_view operationName, int unit) {
    ProgramState& st = t.st;
    MemoryUnit& u = UnitOf(st, unit);
    const std::string name(operationName);
    // Loading an image replaces the selection list.
    SaveSelections(st.selections);
    const std::string file = DriverFile(st, unit);
    Text2Buffer(st, "\r\n*" + name + ": loading driver " + file);
    auto fail = [&](int code) {
        RestoreSelections(st.selections);
        return code;
    };
    LoadImageFile(st, file, t.readHex);  // a bound error is its line and an empty list
    if (st.selections.count < 1) {
        Text2Buffer(st, "\r\n*ERROR: driver " + file + " holds no data");
        return fail(-1);
    }
    // All drivers share the target RAM: whatever was there is gone once the
    // download starts, also when it fails half way.
    for (MemoryUnit& other : st.memoryUnits) other.driverLoaded = kFalse;
    if (target::download(t) != 0) return fail(-1);
    u.driverLoaded = kTrue;
    u.driverEntry = st.selections.start[0];

    if (u.driverMode == 1) {
        Frame f = InitialiseFrame(st, unit);
        link::Monitor mon(st, t.port);
        const int16_t called = mon.Cmd_Call(u.driverEntry, f.words);
        const int32_t r15 = mon.cmd_readgpr(15);
        if (r15 != 0 || called != 0) {
            Text2Buffer(st, "\r\n*" + name + ": initializing driver not successful ");
            return fail(-2);
        }
        // The driver tells its geometry: R11 burst size (high byte) and
        // blank value (low byte), R9 and R10 its buffer address.
        const int32_t geometry = f.get(Slot::R11);
        if (geometry / 256 == 0) {
            Text2Buffer(st, "\r\n*" + name + ": wrong driver mode ??? Please check out !");
        } else {
            if (f.get(Slot::R9) != 0 || f.get(Slot::R10) != 0)
                u.driverBufferAddress = f.get(Slot::R9) * 0x10000 + f.get(Slot::R10);
            if (geometry != 0) {
                u.burstSize = static_cast<int16_t>(geometry / 256);
                u.blank = static_cast<uint8_t>(geometry & 0xFF);
            }
        }
    }

    RestoreSelections(st.selections);
    st.host->gotoPage(st.selections.start[0] / 16);
    st.host->refreshMemory();
    return 0;
}

}  // namespace vortelm::flash
