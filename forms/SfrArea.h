#pragma once
// The SFR area of the main window: the tab strip of the eight sets
// (XSFRReg), the register list of the current set (ISfr) and its buttons
// (BAdd, BRemove, BChange, BRefresh). The list itself lives in the program
// state (sfr/SfrSets.h), so that the shell's rows change it as well; this
// class holds what the keys, the mouse and the buttons do with it.

#include <cstdint>
#include <string>
#include <vector>

#include "core/ProgramState.h"

namespace vortelm::link {
class ComPort;
}

namespace vortelm::forms {

class SfrArea {
  public:
    // port may be null: the lines then show the dump memory as it stands.
    SfrArea(ProgramState& st, link::ComPort* port) : st_(st), port_(port) {}

    // RefreshSfrView: the registers of the list are read (when connected)
    // and the lines rebuilt. Gives the number of exchanges it made.
    int Refresh();
    // A refresh the program asks for: done now, or put off while an exchange
    // is on the line, a transfer or a connection runs (hostBusy, the
    // hourglass) or a refresh waits for the line itself; a refresh put off
    // is pending until a later request is done. Gives the exchanges made,
    // or -1 when put off.
    int RequestRefresh(bool hostBusy);
    [[nodiscard]] bool pending() const { return pending_; }

    // A click on tab n: another set is shown; the current one asks for a new
    // title (a cancelled box gives an empty title). Never refreshes for that.
    void XSFRReg_Click(int tab);

    // The selection as the operator made it: the selected lines and the
    // current line (-1 for none).
    void SetSelection(const std::vector<int>& selectedLines, int currentLine);

    // Delete (and BRemove): the lines selected when the key came are removed
    // top to bottom; each removal selects the line at its place, or the new
    // last line.
    void ISfr_Delete();
    // Ctrl + Up / Ctrl + Down: the current line changes place with the one
    // above or below it and stays current. False when there is none.
    bool ISfr_CtrlUp();
    bool ISfr_CtrlDown();
    // Ctrl + C: the selected lines to the clipboard.
    void ISfr_Copy2Clipboard();

    // The register the change dialog opens for (double click, BChange): the
    // current set's entry at the current line, or -1 when no line is
    // current.
    [[nodiscard]] int32_t RegisterToChange() const;

    // The captions of the eight tabs (first 4 characters of each title).
    [[nodiscard]] std::vector<std::string> TabCaptions() const;

  private:
    ProgramState& st_;
    link::ComPort* port_;
    bool pending_ = false;
    bool refreshing_ = false;
};

}  // namespace vortelm::forms
