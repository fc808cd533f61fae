#include "forms/FDisassemble.h"

#include <exception>

#include "core/Helpers.h"
#include "core/Host.h"
#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "core/Text.h"
#include "disasm/Decoder.h"
#include "disasm/Listing.h"
#include "image/Dump.h"
#include "link/ComPort.h"
#include "link/Monitor.h"

namespace vortelm::forms {

namespace {

const std::string kSeparator(29, '*');

bool Contains(std::string_view text, std::string_view word) {
    return text.find(word) != std::string_view::npos;
}

}  // namespace

FDisassemble::FDisassemble(ProgramState& st, link::ComPort& port) : st_(st), port_(port) {
    port_.onDebuggerReturn = [this]() { TargetReturned(); };
}

FDisassemble::~FDisassemble() {
    port_.onDebuggerReturn = nullptr;
}

void FDisassemble::guarded(const std::function<void()>& work) {
    try {
        work();
    } catch (const std::exception& e) {
        // A bound met on the way ends the event; the tables stay valid.
        Text2Buffer(st_, std::string("*ERROR: ") + e.what() + CrLf());
    }
    changed();
}

void FDisassemble::changed() {
    if (onChanged) onChanged();
}

void FDisassemble::write(int32_t address) {
    if (link::Monitor(st_, port_).Cmd_Write(address, kPatchLength) != 0)
        Text2Buffer(st_, "*ERROR: Debug: code at " + HexText(address, 6) + " not written" + CrLf());
}

void FDisassemble::jump(int32_t address) {
    if (link::Monitor(st_, port_).Cmd_Jmp(address) != 0)
        Text2Buffer(st_, "*ERROR: Debug: jump to " + HexText(address, 6) + " failed" + CrLf());
}

// ---- the lists

void FDisassemble::ShowDisassembly() {
    guarded([this]() {
        IDisassemble.clear();
        IBreakpoints.clear();
        selected.clear();
        listIndex = -1;
        if (onShow) onShow();
        disasm::ResetSequenceCounters(st_.instructions);
        const SelectionList& sel = st_.selections;
        for (int i = 0; i < sel.count; ++i) {
            disasm::ListSelectionCode(st_, sel.start[static_cast<size_t>(i)],
                                      sel.end[static_cast<size_t>(i)],
                                      [this](int32_t address, const std::string& text) {
                                          IDisassemble.push_back(HexText(address, 6) + ": " + text);
                                          IBreakpoints.emplace_back(" ");
                                      });
            IDisassemble.push_back(kSeparator);
            IBreakpoints.emplace_back(" ");
        }
        selected.assign(IDisassemble.size(), false);
        if (!IDisassemble.empty() && Contains(IDisassemble[0], ":")) {
            DebugPC = RowAddress(IDisassemble[0]);
            selected[0] = true;
            listIndex = 0;
        }
    });
}

int32_t FDisassemble::RowAddress(std::string_view row) {
    const size_t colon = row.find(':');
    if (colon == std::string_view::npos) return 1;
    return HexValue(row.substr(0, colon));
}

void FDisassemble::RefreshDisassembler() {
    selected.resize(IDisassemble.size(), false);
    IBreakpoints.resize(IDisassemble.size(), " ");
    for (size_t i = 0; i < IDisassemble.size(); ++i) {
        const int32_t address = RowAddress(IDisassemble[i]);
        if (address == DebugPC) {
            selected[i] = true;
            listIndex = static_cast<int>(i);
        }
        IBreakpoints[i] = IsBreakpoint(address) ? "O" : " ";
    }
    changed();
}

void FDisassemble::IDisassemble_Copy2Clipboard() {
    std::string text;
    for (size_t i = 0; i < IDisassemble.size() && i < selected.size(); ++i)
        if (selected[i]) text += CrLf() + IDisassemble[i];
    st_.host->setClipboardText(text);
}

void FDisassemble::IDisassemble_Click(int row, bool extend) {
    if (row < 0 || row >= static_cast<int>(IDisassemble.size())) return;
    selected.resize(IDisassemble.size(), false);
    if (!extend) selected.assign(IDisassemble.size(), false);
    selected[static_cast<size_t>(row)] = !extend || !selected[static_cast<size_t>(row)];
    listIndex = row;
}

// ---- the breakpoint table

bool FDisassemble::IsBreakpoint(int32_t address) const {
    return FindBreakpoint(address) >= 0;
}

int FDisassemble::FindBreakpoint(int32_t address) const {
    for (int i = 0; i < breakpointCount; ++i)
        if (breakpoints[static_cast<size_t>(i)].address == address) return i;
    return -1;
}

void FDisassemble::SetBreakpoint(int32_t address) {
    CheckBound(breakpointCount, kBreakpointBound, "breakpoint");
    breakpoints[static_cast<size_t>(breakpointCount)].address = address;
    PatchBreakpoint(breakpointCount);
    ++breakpointCount;
}

void FDisassemble::PatchBreakpoint(int index) {
    CheckBound(index, kBreakpointBound, "breakpoint");
    Breakpoint& b = breakpoints[static_cast<size_t>(index)];
    for (int i = 0; i < kPatchLength; ++i)
        b.saved[static_cast<size_t>(i)] = ReadDumpByte(st_.dump, b.address + i);
    // A long call to the kernel's entry: segment, then the offset low first.
    const int32_t k = st_.KernelStartAddress;
    const uint8_t patch[kPatchLength] = {0xDA, static_cast<uint8_t>((k / 65536) & 255),
                                         static_cast<uint8_t>(k & 255),
                                         static_cast<uint8_t>((k / 256) & 255)};
    for (int i = 0; i < kPatchLength; ++i) WriteDumpByte(st_.dump, b.address + i, patch[i]);
    write(b.address);
}

void FDisassemble::RestoreBreakpoint(int index) {
    CheckBound(index, kBreakpointBound, "breakpoint");
    const Breakpoint& b = breakpoints[static_cast<size_t>(index)];
    for (int i = 0; i < kPatchLength; ++i)
        WriteDumpByte(st_.dump, b.address + i, b.saved[static_cast<size_t>(i)]);
    write(b.address);
}

void FDisassemble::RemoveBreakpoint(int32_t address) {
    const int i = FindBreakpoint(address);
    if (i < 0) return;
    RestoreBreakpoint(i);
    // The later patches are lifted and laid again in turn.
    for (int j = i; j <= breakpointCount - 2; ++j) {
        RestoreBreakpoint(j + 1);
        breakpoints[static_cast<size_t>(j)] = breakpoints[static_cast<size_t>(j + 1)];
        PatchBreakpoint(j);
    }
    --breakpointCount;
}

// ---- go and step

void FDisassemble::IBreakpoints_Click(int row) {
    if (st_.ConnectionState != kConnectedAndReady) return;
    guarded([this, row]() {
        CheckBound(row, static_cast<long long>(IDisassemble.size()) - 1, "code row");
        const std::string& text = IDisassemble[static_cast<size_t>(row)];
        // The text before a colon: a row of stars has none and gives no number.
        const size_t colon = text.find(':');
        const int32_t address = HexValue(std::string_view(text).substr(0, colon));
        if (address < 0)
            throw RunTimeError("code row " + std::to_string(row) + " holds no address");
        if (IsBreakpoint(address))
            RemoveBreakpoint(address);
        else
            SetBreakpoint(address);
        RefreshDisassembler();
    });
}

void FDisassemble::BStep_Click() {
    if (st_.ConnectionState != kConnectedAndReady) return;
    guarded([this]() {
        const int32_t next = getnextposition();
        SetBreakpoint(next);  // the temporary one, always the last record
        if (const int i = FindBreakpoint(DebugPC); i >= 0 && i != breakpointCount - 1) {
            RestoreBreakpoint(i);
            st_.ConnectionState = kStepModeToBreakpoint;
        } else {
            st_.ConnectionState = kStepMode;
        }
        st_.host->refreshStatus();
        jump(DebugPC);
    });
}

void FDisassemble::BGo_Click() {
    if (st_.ConnectionState != kConnectedAndReady) return;
    guarded([this]() {
        if (const int i = FindBreakpoint(DebugPC); i >= 0) {
            RestoreBreakpoint(i);
            SetBreakpoint(getnextposition());
            st_.ConnectionState = kDebuggingToBreakpoint;
        } else {
            st_.ConnectionState = kDebugging;
        }
        st_.host->refreshStatus();
        jump(DebugPC);
    });
}

void FDisassemble::IDisassemble_DblClick(int row) {
    guarded([this, row]() {
        CheckBound(row, static_cast<long long>(IDisassemble.size()) - 1, "code row");
        // The first six digits; the state is not tested first.
        const int32_t address =
            HexValue(std::string_view(IDisassemble[static_cast<size_t>(row)]).substr(0, 6));
        jump(address);
        st_.ConnectionState = kUserProgramRunning;
        st_.host->refreshStatus();
    });
}

void FDisassemble::Form_Unload() {
    guarded([this]() {
        while (breakpointCount > 0)
            RemoveBreakpoint(breakpoints[static_cast<size_t>(breakpointCount - 1)].address);
    });
}

void FDisassemble::TargetReturned() {
    guarded([this]() {
        link::Monitor mon(st_, port_);
        // The long call pushed the segment, then the offset behind the patch.
        const int32_t offset = mon.cmd_pop(true);
        const int32_t segment = mon.cmd_pop(true);
        const int32_t address = segment * 65536 + offset - kPatchLength;
        const int16_t state = st_.ConnectionState;
        if (state == 4 || state == 6) {
            RestoreBreakpoint(breakpointCount - 1);
            --breakpointCount;
            if (state == 6) PatchBreakpoint(FindBreakpoint(DebugPC));
        }
        if (state != 5) {
            DebugPC = address;
            RefreshDisassembler();
            if (st_.REFRESHSFR == kTrue) st_.host->refreshSfrView();
            st_.ConnectionState = kConnectedAndReady;
            st_.host->refreshStatus();
        } else {
            PatchBreakpoint(FindBreakpoint(DebugPC));
            RemoveBreakpoint(address);
            st_.ConnectionState = kDebugging;
            st_.host->refreshStatus();
            jump(address);
        }
    });
}

// ---- the step's view of a row

int32_t FDisassemble::getnextposition() {
    const std::string text = listIndex >= 0 && listIndex < static_cast<int>(IDisassemble.size())
                                 ? IDisassemble[static_cast<size_t>(listIndex)]
                                 : std::string();
    if (BranchTarget(text) != -1) return BranchTarget(text);
    const int32_t n = SequenceLength(text);
    int32_t address = DebugPC;
    const int32_t steps = n < 1 ? 1 : n;
    for (int32_t i = 0; i < steps; ++i)
        address += disasm::InstructionLength(st_.instructions, CodeByte(address));
    return address;
}

uint8_t FDisassemble::CodeByte(int32_t address) {
    // Under a patch the code's own byte is the saved one: the length of the
    // instruction at a breakpoint is its own, not that of the long call.
    for (int i = breakpointCount - 1; i >= 0; --i) {
        const Breakpoint& b = breakpoints[static_cast<size_t>(i)];
        if (address >= b.address && address < b.address + kPatchLength)
            return b.saved[static_cast<size_t>(address - b.address)];
    }
    return ReadDumpByte(st_.dump, address);
}

int32_t FDisassemble::SequenceLength(std::string_view text) {
    if (!Contains(text, "ATOMIC") && !Contains(text, "EXT")) return -1;
    const size_t hash = text.find('#');
    if (hash == std::string_view::npos || hash + 1 >= text.size()) return 1;
    const char c = text[hash + 1];
    // The platform reads a character that is no digit as 0.
    return (c >= '0' && c <= '9' ? c - '0' : 0) + 1;
}

int32_t FDisassemble::BranchTarget(std::string_view text) {
    int32_t result = -1;
    link::Monitor mon(st_, port_);
    const size_t comma = text.find(',');
    auto behind = [&](size_t skip) {
        if (comma == std::string_view::npos || comma + skip > text.size())
            return std::string_view();
        return text.substr(comma + skip);
    };
    if (Contains(text, "JMPA") || Contains(text, "CALLA")) result = HexValue(behind(2));
    if (Contains(text, "CALLR"))
        result = HexValue(text.size() >= 4 ? text.substr(text.size() - 4) : text);
    if (Contains(text, "JMPI") || Contains(text, "CALLI")) {
        const size_t r = text.find('R');
        const size_t close = text.find(']');
        int32_t number = -1;
        if (r != std::string_view::npos && close != std::string_view::npos && close > r + 1) {
            number = static_cast<int32_t>(LeadingNumberValue(text.substr(r + 1, close - r - 1)));
        }
        if (number < 0 || number > 15)
            throw RunTimeError("register number in \"" + std::string(text) + "\"");
        result = mon.cmd_readgpr(number);
    }
    if (Contains(text, "JMPS") || Contains(text, "CALLS")) {
        const size_t blank = text.rfind(' ');
        const size_t from = blank == std::string_view::npos ? 0 : blank + 1;
        const std::string_view segment = comma != std::string_view::npos && comma >= from
                                             ? text.substr(from, comma - from)
                                             : text.substr(from);
        result = HexValue(segment) * 65536 + HexValue(behind(1));
    }
    if (Contains(text, "RET ") || Contains(text, "RETP ")) result = mon.cmd_pop(false);
    if (Contains(text, "RETI ")) {
        const int32_t offset = mon.cmd_pop(false);
        (void)mon.cmd_readsfr("SYSCON");
        result = mon.cmd_pop2nd(false) * 65536 + offset;
    }
    if (Contains(text, "RETS ")) {
        const int32_t offset = mon.cmd_pop(false);
        result = mon.cmd_pop2nd(false) * 65536 + offset;
    }
    if (Contains(text, "SRST")) result = 0;
    if (Contains(text, "JB") || Contains(text, "JMPR") || Contains(text, "JNB") ||
        Contains(text, "JBC") || Contains(text, "JNBS"))
        result = HexValue(behind(1));
    return result;
}

}  // namespace vortelm::forms
