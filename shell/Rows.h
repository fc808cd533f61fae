#pragma once
// Dispatch of shell rows by the command's name in the command table. Each
// group of rows lives in its own source file (Rows_<Group>.cpp) and offers a
// list of bindings, a name and a handler each; Dispatch.cpp joins the lists
// with one line per group. A table row with no binding answers "*ERROR:
// Command not available in this build" and fails with its id.

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "shell/Session.h"

namespace vortelm::shell {

// What a row did: status 0 when its arguments were right (otherwise the
// status word of the frame, e.g. -2), and failed when the operation it
// called reported a failure, which makes the line's result the row's id.
struct RowResult {
    int16_t status = 0;
    bool failed = false;
    // Added to the line's result (the checksum rows lower a bad width's
    // result by a further amount).
    int32_t adjust = 0;
    // The code the failed operation gave (the target operations' and the
    // monitor commands' codes), for the failure line of the front ends.
    int32_t code = 0;
};

using RowFn = RowResult (*)(Session&);

// A row that ran its operation: it fails when the operation gave a code
// other than 0, and the code goes with it to the front ends' failure line.
[[nodiscard]] constexpr RowResult Passed(int32_t result) {
    return {0, result != 0, 0, result};
}

// The rows that talk to the board need the wired channel; a session without
// one reports as an unconnected target does and gets nullptr.
[[nodiscard]] target::Target* TargetOf(Session& s);

// A row id as the table keeps it: the 16-bit value sign-extended, so that
// RowId(0xC007) is the id of _quit.
[[nodiscard]] constexpr int32_t RowId(uint32_t hex16) {
    return static_cast<int16_t>(static_cast<uint16_t>(hex16));
}

// A handler for the table row of that name, written as the table writes it
// ("_help"). Every binding names a row, and no row is bound twice.
struct RowBinding {
    std::string_view name;
    RowFn run;
};

// The row lists, one per source file.
std::span<const RowBinding> FrameRows();      // _help, _test, _quit (Rows_Frame.cpp)
std::span<const RowBinding> FileRows();       // group 2 (Rows_Files.cpp)
std::span<const RowBinding> HexEditorRows();  // group 3 (Rows_HexEditor.cpp)
std::span<const RowBinding> SelectionRows();  // group 4 (Rows_Selection.cpp)
std::span<const RowBinding>
TerminalRows();                            // _send, _sendfile, _setp, _openport (Rows_Terminal.cpp)
std::span<const RowBinding> TargetRows();  // groups 5 to 8 and 14, the target (Rows_Target.cpp)
std::span<const RowBinding>
TargetSetupRows();  // _initialize, _idreg, _call, _movemonitor, ... (Rows_TargetSetup.cpp)
std::span<const RowBinding> FlashRows();   // group 13, flash (Rows_Flash.cpp)
std::span<const RowBinding> ScriptRows();  // groups 11 and 12, log and scripting (Rows_Script.cpp)
std::span<const RowBinding> SfrRows();     // group 9 and _viewsfrs (Rows_Sfr.cpp)
std::span<const RowBinding>
ListingViewRows();                       // the view rows that list selections (Rows_Listing.cpp)
std::span<const RowBinding> ViewRows();  // _viewassembler (Rows_View.cpp)

// The handler bound to the row of that name, or nullptr when its operation
// is not in this build.
[[nodiscard]] RowFn FindRow(std::string_view name);
// Every binding of every list, in list order.
[[nodiscard]] std::vector<RowBinding> AllRows();

}  // namespace vortelm::shell
