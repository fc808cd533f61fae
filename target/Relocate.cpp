// Moving the running monitor, calling a routine on the target, and the two
// registers that only a helper image loaded for the purpose can set, since
// the monitor itself depends on them.

#include <string>
#include <vector>

#include "config/Kernels.h"
#include "core/Helpers.h"
#include "core/Host.h"
#include "core/Text.h"
#include "image/Dump.h"
#include "image/HexFile.h"
#include "image/Selections.h"
#include "link/ComPort.h"
#include "link/Monitor.h"
#include "sfr/SfrTable.h"
#include "target/Target.h"

namespace vortelm::target {

namespace {

// The core image of the current kernel into dump memory, its picture moved
// so that it begins at the running core's address.
void CorePictureAtKernelStart(Target& t) {
    ProgramState& st = t.st;
    auto& sel = st.selections;
    sel.count = 0;
    if (st.CurrentKernel < 0 || st.CurrentKernel > kKernelBound || !t.readHex) return;
    const Kernel& k = st.kernels[static_cast<size_t>(st.CurrentKernel)];
    try {
        t.readHex(st, ResolveInProgramFolder(st, k.monitorPath));
    } catch (const std::exception& e) {
        Text2Buffer(st, std::string("\r\n*ERROR: ") + e.what());
        sel.count = 0;
        return;
    }
    if (sel.count <= 0) return;
    for (int i = 0; i < sel.count; ++i)
        for (int32_t a = sel.start[static_cast<size_t>(i)]; a <= sel.end[static_cast<size_t>(i)];
             ++a)
            SetDefined(st.dump, a, kFalse);
    const int32_t shift = st.KernelStartAddress - sel.start[0];
    for (int i = 0; i < sel.count; ++i) {
        const auto n = static_cast<size_t>(i);
        std::vector<uint8_t> bytes;
        for (int32_t a = sel.start[n]; a <= sel.end[n]; ++a)
            bytes.push_back(ReadDumpByte(st.dump, a));
        sel.start[n] += shift;
        sel.end[n] += shift;
        for (size_t j = 0; j < bytes.size(); ++j) {
            const int32_t a = sel.start[n] + static_cast<int32_t>(j);
            WriteDumpByte(st.dump, a, bytes[j]);
            SetDefined(st.dump, a, kTrue);
        }
    }
}

// Loads a helper image, downloads it and calls it with the value in R8.
int RunHelper(Target& t, const char* file, int32_t value) {
    ProgramState& st = t.st;
    if (LoadHexCommand(st, ResolveInProgramFolder(st, file)) != 0) return -1;
    const int32_t entry = LowestSelectedAddress(st.selections);
    if (const int r = download(t); r != 0) return r;
    link::CallFrame frame;
    frame.r[0] = value & 0xFFFF;
    return link::Monitor(st, t.port).Cmd_Call(entry, frame, true);
}

}  // namespace

int relocateMonitor(Target& t, int32_t newAddress) {
    ProgramState& st = t.st;
    if (const int r = CheckPreconditions(st, ""); r != 0) return r;
    if (!HasFeature(st, "RELOCATABLE", -1) || !HasFeature(st, "WRITEBLOCK", -1) ||
        !HasFeature(st, "JMP", -1)) {
        Text2Buffer(st, "\r\n*ERROR: Kernel feature not supported ");
        return -101;
    }
    st.host->setBusy(true);
    CorePictureAtKernelStart(t);
    const int32_t oldStart = st.KernelStartAddress;
    const int32_t length = st.KernelEndAddress - st.KernelStartAddress + 1;
    // Ascending: a move to a higher overlapping address reads bytes it has
    // already written, and a move onto itself ends with its marks cleared.
    for (int32_t i = 0; i < length; ++i) {
        WriteDumpByte(st.dump, newAddress + i, ReadDumpByte(st.dump, oldStart + i));
        SetDefined(st.dump, newAddress + i, kTrue);
        SetValid(st.dump, newAddress + i, kTrue);
        SetMonitorMark(st.dump, newAddress + i, kTrue);
        SetDefined(st.dump, oldStart + i, kFalse);
        SetValid(st.dump, oldStart + i, kFalse);
        SetMonitorMark(st.dump, oldStart + i, kFalse);
    }
    link::Monitor mon(st, t.port);
    // An overlap with the running core is refused by the block write.
    (void)mon.Cmd_Write(newAddress, length);
    (void)mon.Cmd_Jmp(newAddress);
    t.port.Cmd_P();
    t.port.setReceiveThreshold(0);
    const int r = t.port.SSReceive(st.TIMEOUT);
    t.port.setReceiveThreshold(1);
    t.port.Cmd_V();
    st.KernelStartAddress = newAddress;
    st.KernelEndAddress = newAddress + length - 1;
    st.selections.count = 0;
    if (r != st.codes.A_APPLICATION_STARTED)
        Text2Buffer(st, "\r\n*ERROR: Vortelm Acknowledge not Received");
    else
        Text2Buffer(st, "\r\n*VortElm successfully moved to " + HexText(newAddress, 6));
    st.host->refreshMemory();
    if (st.REFRESHSFR != 0) st.host->refreshSfrView();
    st.host->setBusy(false);
    return 0;
}

int callTarget(Target& t, int32_t absadr, std::array<int32_t, 8>& r) {
    ProgramState& st = t.st;
    if (const int c = CheckPreconditions(st, ""); c != 0) return c;
    st.ConnectionState = kDriverRunning;
    st.host->refreshStatus();
    if (!HasFeature(st, "CALL", -1)) {
        Text2Buffer(st, "\r\n*ERROR: Kernel feature not supported ");
        return -101;
    }
    link::CallFrame frame;
    frame.r = r;
    if (link::Monitor(st, t.port).Cmd_Call(absadr, frame, true) != 0) {
        Text2Buffer(st, "\r\n*ERROR: Wrong acknowledge received");
        st.ConnectionState = kNotConnected;
        st.host->refreshStatus();
        return -1;
    }
    r = frame.r;
    Text2Buffer(st, "\r\n*Driver successfully executed\r\n*Return Parameters:\r\n");
    t.port.setReceiveThreshold(1);
    for (size_t i = 0; i < r.size(); ++i)
        Text2Buffer(st, "  R" + std::to_string(8 + i) + "=" + HexText(r[i] & 0xFFFF, 4) + "\r\n");
    return 0;
}

int setPllcon(Target& t, int32_t value) {
    ProgramState& st = t.st;
    SaveSelections(st.selections);
    const int r = RunHelper(t, "ztprog\\pllcon.hex", value);
    if (r == 0) Text2Buffer(st, "PLLCON set to " + HexText(value & 0xFFFF, 4) + "\r\n");
    RestoreSelections(st.selections);
    if (r != 0) Text2Buffer(st, "Error setting PLLCON \r\n");
    return r;
}

int setRstcon(Target& t, int32_t value) {
    ProgramState& st = t.st;
    SaveSelections(st.selections);
    const int r = RunHelper(t, "mcprog\\rstcon.hex", value);
    if (r == 0) Text2Buffer(st, "RSTCON set to " + HexText(value & 0xFFFF, 4) + "\r\n");
    RestoreSelections(st.selections);
    if (r != 0) Text2Buffer(st, "Error setting RSTCON " + std::to_string(r) + "\r\n");
    return r;
}

int32_t readSfrWord(Target& t, std::string_view name) {
    ProgramState& st = t.st;
    if (st.ConnectionState != 1) return -1;
    const int32_t address = SfrAddressByName(st, name);
    if (address < 0) return -2;
    if (link::Monitor(st, t.port).Cmd_Read(address, 2) != 0) return -2;
    return ReadDumpWord(st.dump, address);
}

int32_t bitComplement(int32_t value, int32_t bits) {
    if (bits < 1) return 0;
    const uint64_t mask = bits >= 32 ? 0xFFFFFFFFull : ((uint64_t{1} << bits) - 1);
    return static_cast<int32_t>(static_cast<uint32_t>(~static_cast<uint32_t>(value) & mask));
}

}  // namespace vortelm::target
