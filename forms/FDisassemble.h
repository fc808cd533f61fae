#pragma once
// The debug window "Disassemble": the code of the selections as a list, a
// parallel list of breakpoint marks, go and step. The target has no debug
// hardware: a breakpoint is a four-byte long call to the monitor's entry
// laid over the code, and a step is a temporary breakpoint on the
// instruction that comes next. The board or chip calls the monitor, which
// sends the application-started byte; the serial channel's receive event
// hands it to TargetReturned.

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vortelm {
struct ProgramState;
}
namespace vortelm::link {
class ComPort;
}

namespace vortelm::forms {

struct Breakpoint {
    int32_t address = 0;
    std::array<uint8_t, 8> saved{};  // the four code bytes the patch replaced
};

class FDisassemble {
  public:
    static constexpr int kBreakpointBound = 255;  // records 0 to 255
    static constexpr int kPatchLength = 4;

    // Hooks itself into the channel's receive event for the return from the
    // target; the destructor unhooks it.
    FDisassemble(ProgramState& st, link::ComPort& port);
    ~FDisassemble();
    FDisassemble(const FDisassemble&) = delete;
    FDisassemble& operator=(const FDisassemble&) = delete;

    // ---- what the window shows
    std::vector<std::string> IDisassemble;  // code rows
    std::vector<std::string> IBreakpoints;  // "O" or a blank, one per code row
    std::vector<bool> selected;             // the selected code rows
    int listIndex = -1;                     // the row whose text the list gives
    // The view: show the form, and draw the lists again.
    std::function<void()> onShow;
    std::function<void()> onChanged;

    // ---- the debugger's state
    int32_t DebugPC = 0;
    std::array<Breakpoint, kBreakpointBound + 1> breakpoints{};
    int16_t breakpointCount = 0;

    // Builds the lists from the selections and shows the form.
    void ShowDisassembly();
    // Marks the rows: the one at DebugPC is selected, "O" where a breakpoint lies.
    void RefreshDisassembler();
    // Where the instruction at DebugPC hands on to.
    [[nodiscard]] int32_t getnextposition();
    // The selected rows, each behind a line end, to the clipboard.
    void IDisassemble_Copy2Clipboard();

    [[nodiscard]] bool IsBreakpoint(int32_t address) const;
    [[nodiscard]] int FindBreakpoint(int32_t address) const;
    void SetBreakpoint(int32_t address);
    void RemoveBreakpoint(int32_t address);
    void PatchBreakpoint(int index);
    void RestoreBreakpoint(int index);

    // ---- events; each ends a bound it meets with one "*ERROR: " line
    void IBreakpoints_Click(int row);
    void IDisassemble_Click(int row, bool extend);
    void IDisassemble_DblClick(int row);
    void BStep_Click();
    void BGo_Click();
    // Closing the form removes every breakpoint, the last first.
    void Form_Unload();
    // The target stopped at a patch (the application-started byte came).
    void TargetReturned();

    // ---- the text rules of the step
    // ATOMIC and EXT rows: the digit behind the first "#" plus 1; else -1.
    [[nodiscard]] static int32_t SequenceLength(std::string_view text);
    // Where a branch in the row goes, -1 when the row is no branch the step
    // can follow; reads registers and stack where the row needs them.
    [[nodiscard]] int32_t BranchTarget(std::string_view text);
    // The address of a row: the hexadecimal number before ":", 1 without one.
    [[nodiscard]] static int32_t RowAddress(std::string_view row);
    // The code byte at an address: under a breakpoint patch the saved one.
    [[nodiscard]] uint8_t CodeByte(int32_t address);

  private:
    void guarded(const std::function<void()>& work);
    void changed();
    void write(int32_t address);
    void jump(int32_t address);

    ProgramState& st_;
    link::ComPort& port_;
};

}  // namespace vortelm::forms
