#pragma once
// The register picker FSfr: a list of all register names with a search box
// (TSearch); OK or a double click adds the selected registers to the set on
// show.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/ProgramState.h"

namespace vortelm::link {
class ComPort;
}

namespace vortelm::forms {

class FSfr {
  public:
    FSfr(ProgramState& st, link::ComPort* port) : st_(st), port_(port) {}

    // Fills the list with all names of the register table, in table order.
    void get_preferences();
    // Enter in TSearch: the text upper-cased; "*" or nothing lists all,
    // otherwise the names that hold the text. The box is cleared.
    void TSearch_Enter();
    // OK and a double click on the list: every selected name is read from
    // the target when connected and added to the set on show; the form hides.
    void BOk_Click();
    void ISfr_DblClick() { BOk_Click(); }
    void BCancel_Click() { visible = false; }

    std::vector<std::string> names;  // the list ISfr
    std::vector<uint8_t> selected;   // one per name
    std::string searchText;          // TSearch
    bool visible = false;

  private:
    void fill(std::string_view part);

    ProgramState& st_;
    link::ComPort* port_;
};

}  // namespace vortelm::forms
