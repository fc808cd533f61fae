#pragma once
// The command picker: every listed shell command under its group's heading,
// the picked command's description, usage and parameters, and the picked
// line taken into the command box.

#include <string>
#include <vector>

#include "shell/Session.h"

namespace vortelm::forms {

class FCommandSelection {
  public:
    explicit FCommandSelection(const shell::ShellTable& table) : table_(table) { get_commands(); }

    std::vector<std::string> LCommands;
    int picked = -1;
    std::string LDescription;
    std::string LUsage;
    std::vector<std::string> LParameters;  // name, a tab, description

    // The listed rows in table order, each new group after an empty line,
    // its text and a line of stars.
    void get_commands();
    // A line picked: RefreshInfo.
    void LCommands_Click(int index);
    // The picked line's command in the three boxes; a line that is no
    // command clears them.
    void RefreshInfo();
    // The picked line's text as it stands, for the command box (nothing is
    // run); empty when no line is picked.
    [[nodiscard]] std::string Takeit() const;

  private:
    const shell::ShellTable& table_;
};

}  // namespace vortelm::forms
