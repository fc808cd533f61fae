// Rows of the target groups: connection, transfers, word access, execution,
// the protection level and the checksums over the selections.

#include "config/Kernels.h"
#include "core/Helpers.h"
#include "core/Text.h"
#include "image/Dump.h"
#include "link/ComPort.h"
#include "link/Monitor.h"
#include "sfr/SfrTable.h"
#include "shell/ImageRowArgs.h"
#include "shell/Rows.h"
#include "target/Target.h"

namespace vortelm::shell {

target::Target* TargetOf(Session& s) {
    if (s.target == nullptr) Text2Buffer(s.st, "\r\n*ERROR: Not Connected to Target");
    return s.target;
}

namespace {

using namespace rowargs;

constexpr RowResult kIllegal{-2, false};
constexpr RowResult kNoKernelFeature{-5, false};

void StoreWord(ProgramState& st, int32_t address, int32_t value) {
    for (int32_t i = 0; i < 2; ++i) {
        SetDefined(st.dump, address + i, kTrue);
        SetValid(st.dump, address + i, kTrue);
        WriteDumpByte(st.dump, address + i, static_cast<uint8_t>((value >> (8 * i)) & 0xFF));
    }
}

RowResult Connect(Session& s) {
    int prompt = 1;
    if (s.parsedParameterCount >= 1) {
        if (UpperCase(s.parsedParameters[0].text) != "NOPROMPT") return kIllegal;
        prompt = 0;
    }
    auto* t = TargetOf(s);
    if (t == nullptr) return {0, true};
    const int r = target::connect(*t, prompt);
    if (r == 0) s.st.host->refreshStatus();
    return Passed(r);
}

RowResult Reconnect(Session& s) {
    auto* t = TargetOf(s);
    return t ? Passed(target::reconnect(*t)) : RowResult{0, true};
}

RowResult Disconnect(Session& s) {
    auto* t = TargetOf(s);
    return t ? Passed(target::disconnect(*t)) : RowResult{0, true};
}

RowResult Download(Session& s) {
    auto* t = TargetOf(s);
    return t ? Passed(target::download(*t)) : RowResult{0, true};
}

RowResult Upload(Session& s) {
    int32_t index = -1;
    if (s.parsedParameterCount >= 1) {
        index = ByVariableOrDecimal(s, 0);
        if (index < 0) return kIllegal;
    }
    auto* t = TargetOf(s);
    return t ? Passed(target::upload(*t, index)) : RowResult{0, true};
}

RowResult Compare(Session& s) {
    std::string name;
    if (s.parsedParameterCount >= 1) name = s.parsedParameters[0].text;
    auto* t = TargetOf(s);
    if (t == nullptr) return {0, true};
    // A count of differing bytes is a result, not a failure.
    const int r = target::compare(*t, name);
    return {0, r < 0, 0, r};
}

RowResult Mov(Session& s) {
    int32_t address = HexValue(s.parsedParameters[0].text);
    if (address < 0) address = SfrAddressByName(s.st, s.parsedParameters[0].text);
    const int32_t value = HexValue(s.parsedParameters[1].text);
    if (address < 0 || value < 0) return kIllegal;
    auto* t = TargetOf(s);
    if (t == nullptr) return {0, true};
    StoreWord(s.st, address, value);
    return Passed(link::Monitor(s.st, t->port).Cmd_WriteWord(address, value));
}

RowResult MovSeq(Session& s) {
    if (!HasFeature(s.st, "WRITESEQ", -1)) return kNoKernelFeature;
    auto* t = TargetOf(s);
    if (t == nullptr) return {0, true};
    // A last lone address is dropped.
    const int32_t pairs = s.parsedParameterCount / 2;
    const int32_t buffer = s.st.TRANSFERBUFFERSTARTADDRESS;
    for (int32_t i = 0; i < pairs; ++i) {
        const int32_t address = HexValue(s.parsedParameters[static_cast<size_t>(2 * i)].text);
        const int32_t data = HexValue(s.parsedParameters[static_cast<size_t>(2 * i + 1)].text);
        const std::array<uint8_t, 6> entry{static_cast<uint8_t>(address & 0xFF),
                                           static_cast<uint8_t>((address >> 8) & 0xFF),
                                           static_cast<uint8_t>((address >> 16) & 0xFF),
                                           0,
                                           static_cast<uint8_t>(data & 0xFF),
                                           static_cast<uint8_t>((data >> 8) & 0xFF)};
        for (int32_t j = 0; j < 6; ++j) {
            const int32_t a = buffer + 6 * i + j;
            WriteDumpByte(s.st.dump, a, entry[static_cast<size_t>(j)]);
            SetDefined(s.st.dump, a, kTrue);
            SetValid(s.st.dump, a, kTrue);
        }
    }
    link::Monitor mon(s.st, t->port);
    if (mon.Cmd_Write(buffer, pairs * 6) != 0) return {0, true};
    return Passed(mon.Cmd_WriteWordSequence(buffer, pairs));
}

RowResult W16(Session& s) {
    const int32_t address = ByVariableOrHex(s, 0);
    const int32_t data = ByVariableOrHex(s, 1);
    if (address < 0 || data < 0) return kIllegal;
    auto* t = TargetOf(s);
    if (t == nullptr) return {0, true};
    return Passed(link::Monitor(s.st, t->port).Cmd_WriteWord(address, data));
}

RowResult R16(Session& s) {
    const int32_t address = ByVariableOrHex(s, 0);
    if (address < 0) return kIllegal;
    auto* t = TargetOf(s);
    if (t == nullptr) return {0, true};
    link::Monitor mon(s.st, t->port);
    if (s.parsedParameterCount >= 2) {
        // the value goes to the variable as it comes, failure codes included
        const int32_t var = s.parsedParameters[1].variable;
        CheckBound(var, static_cast<long long>(s.st.variables.size()) - 1, "variables");
        s.st.variables[static_cast<size_t>(var)] = mon.Cmd_ReadWord_Value(address);
        return {0, false};
    }
    const int16_t r = mon.Cmd_ReadWord(address);
    const int32_t word = ReadDumpWord(s.st.dump, address);
    if (r == 0) Text2Buffer(s.st, "\r\n*" + HexText(address, 6) + ": " + HexText(word, 4));
    return Passed(r);
}

RowResult U16(Session& s) {
    const int32_t from = ByVariableOrHex(s, 0);
    const int32_t to = ByVariableOrHex(s, 1);
    if (from < 0 || to < 0) return kIllegal;
    auto* t = TargetOf(s);
    if (t == nullptr) return {0, true};
    const int32_t value = link::Monitor(s.st, t->port).Cmd_ReadWord_Value(from);
    if (value < 0) return {-3, false, 0, value};
    StoreWord(s.st, to, value);
    return {0, false};
}

RowResult D16(Session& s) {
    const int32_t from = ByVariableOrHex(s, 0);
    const int32_t to = ByVariableOrHex(s, 1);
    if (from < 0 || to < 0) return kIllegal;
    auto* t = TargetOf(s);
    if (t == nullptr) return {0, true};
    const int32_t word = ReadDumpWord(s.st.dump, from);
    return Passed(link::Monitor(s.st, t->port).Cmd_WriteWord(to, word));
}

// A user program runs from now on.
RowResult Running(Session& s, int16_t r) {
    if (r == 0) {
        s.st.ConnectionState = kUserProgramRunning;
        s.st.host->refreshStatus();
    }
    return Passed(r);
}

RowResult Srst(Session& s) {
    auto* t = TargetOf(s);
    if (t == nullptr) return {0, true};
    return Running(s, link::Monitor(s.st, t->port).Cmd_Swreset());
}

RowResult Jmp(Session& s) {
    const int32_t address = HexValue(s.parsedParameters[0].text);
    if (address < 0) return kIllegal;
    auto* t = TargetOf(s);
    if (t == nullptr) return {0, true};
    return Running(s, link::Monitor(s.st, t->port).Cmd_Jmp(address));
}

RowResult Einit(Session& s) {
    auto* t = TargetOf(s);
    if (t == nullptr) return {0, true};
    return Passed(link::Monitor(s.st, t->port).Cmd_Einit());
}

RowResult SetProtection(Session& s) {
    if (!HasFeature(s.st, "SETPROTECTION", -1)) return kNoKernelFeature;
    const int32_t level = HexValue(s.parsedParameters[0].text);
    const int32_t password = HexValue(s.parsedParameters[1].text);
    const int32_t newPassword =
        s.parsedParameterCount >= 3 ? HexValue(s.parsedParameters[2].text) : 0;
    auto* t = TargetOf(s);
    if (t == nullptr) return {0, true};
    return Passed(link::Monitor(s.st, t->port).Cmd_SetProtection(password, level, newPassword));
}

// 8 and 16 bits give widths 1 and 2; 0 for any other.
int WidthOf(Session& s) {
    const int32_t bits = Decimal(s, 0);
    return bits == 8 ? 1 : bits == 16 ? 2 : 0;
}

RowResult XorChecksum(Session& s) {
    const int width = WidthOf(s);
    if (width == 0) return {-2, false, -23};
    return Passed(target::xorChecksum(s.st, width));
}

RowResult AddcChecksum(Session& s) {
    const int width = WidthOf(s);
    if (width == 0) return {-2, false, -24};
    const int32_t lastCarry = s.parsedParameterCount >= 2 ? Decimal(s, 1) : 0;
    return Passed(target::addcChecksum(s.st, width, lastCarry));
}

constexpr RowBinding kRows[] = {
    {"_connect", &Connect},
    {"_reconnect", &Reconnect},
    {"_disconnect", &Disconnect},
    {"_download", &Download},
    {"_upload", &Upload},
    {"_compare", &Compare},
    {"_mov", &Mov},
    {"_movseq", &MovSeq},
    {"_r16", &R16},
    {"_w16", &W16},
    {"_u16", &U16},
    {"_d16", &D16},
    {"_srst", &Srst},
    {"_jmp", &Jmp},
    {"_einit", &Einit},
    {"_setprotection", &SetProtection},
    {"_xorchecksum", &XorChecksum},
    {"_addcchecksum", &AddcChecksum},
};

}  // namespace

std::span<const RowBinding> TargetRows() {
    return kRows;
}

}  // namespace vortelm::shell
