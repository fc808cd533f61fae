#pragma once
// "Select Range": adds a selection from a start address and an end address
// or a block length, then shows the page of the start.

#include <string>
#include <vector>

#include "core/ProgramState.h"

namespace vortelm::forms {

class FSelectRange {
  public:
    explicit FSelectRange(ProgramState& st) : st_(st) { initialize(); }

    std::string title = "Select Range";
    std::string TStartaddress;
    std::string TEndAddress;
    std::vector<int32_t> IBlocks;  // the block lengths offered

    // Both boxes to "000000", the block lengths 16 to 1048576.
    void initialize();
    // A block length chosen: the end is start + length - 1.
    void IBlocks_Click(int index);
    // Each change of a box: 7 or more characters, or no hexadecimal number,
    // gives "No 6-digit hexadecimal number!" and the box goes back to
    // "000000". False then.
    bool TStartaddress_Change(const std::string& text);
    bool TEndAddress_Change(const std::string& text);

    // Adds the selection, goes to the page of its start and redraws; true
    // when the form closes (an end beyond FFFFFF keeps it open).
    [[nodiscard]] bool BOk_Click();
    void BCancel_Click() {}
    [[nodiscard]] ProgramState& st() { return st_; }

  private:
    bool check(std::string& box, const std::string& text);
    ProgramState& st_;
};

}  // namespace vortelm::forms
