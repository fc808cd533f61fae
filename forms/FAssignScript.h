#pragma once
// The user scripts dialog: eight rows of file and caption, each with a
// search and an edit button; OK stores the rows into the eight slots.

#include <array>
#include <string>

#include "core/ProgramState.h"
#include "forms/UserScripts.h"

namespace vortelm::forms {

class FAssignScript {
  public:
    explicit FAssignScript(ProgramState& st) : st_(st) { get_preferences(); }

    struct Row {
        std::string TFilename;
        std::string TName;
    };
    std::array<Row, kUserScriptSlots> rows;

    // The rows of the active slots filled, the others empty.
    void get_preferences();
    // Remembers the row whose file the load form in script mode picks.
    void BSearch_Click(int row);
    [[nodiscard]] int searchRow() const { return searchRow_; }
    // The file picked for the remembered row: the file and its name.
    void AssignNew(const std::string& filename);
    // Starts the editor with the row's file, without waiting; a row without
    // a file does nothing. False when nothing was started.
    bool BEdit_Click(int row);
    // Clears one slot after asking which (see RemoveUserScriptAssignment)
    // and shows the rows again.
    void BRemove_Click();

    // Stores the rows, or stops at the first file that does not exist with
    // "User Skript File No. n does not exist " and stores nothing. True when
    // the dialog closes.
    [[nodiscard]] bool BOk_Click();
    void BCancel_Click() {}

  private:
    ProgramState& st_;
    int searchRow_ = 0;
};

}  // namespace vortelm::forms
