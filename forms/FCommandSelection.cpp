#include "forms/FCommandSelection.h"

#include "shell/Shell.h"

namespace vortelm::forms {

namespace {
constexpr const char* kStars = "**********************************************************";
}

void FCommandSelection::get_commands() {
    LCommands.clear();
    int32_t group = 1;
    for (int i = 0; i < table_.shellCommandCount; ++i) {
        const shell::ShellCommandRecord& r = table_.shellCommands[static_cast<size_t>(i)];
        if (r.listed == 0) continue;
        if (r.group != group) {
            LCommands.emplace_back();
            LCommands.push_back(
                r.group >= 0 && r.group < static_cast<int32_t>(table_.shellGroupNames.size())
                    ? table_.shellGroupNames[static_cast<size_t>(r.group)]
                    : std::string());
            LCommands.emplace_back(kStars);
            group = r.group;
        }
        LCommands.push_back(r.name);
    }
}

void FCommandSelection::LCommands_Click(int index) {
    picked = index >= 0 && index < static_cast<int>(LCommands.size()) ? index : -1;
    RefreshInfo();
}

void FCommandSelection::RefreshInfo() {
    LDescription.clear();
    LUsage.clear();
    LParameters.clear();
    if (picked < 0) return;
    const std::string& line = LCommands[static_cast<size_t>(picked)];
    if (line.empty()) return;
    const int32_t i = shell::FindShellCommand(table_, line);
    if (i < 0 || i >= table_.shellCommandCount) return;
    const shell::ShellCommandRecord& r = table_.shellCommands[static_cast<size_t>(i)];
    LDescription = r.description;
    LUsage = r.usage;
    for (int p = 0; p < r.parameterCount; ++p) {
        const shell::ShellParameterRecord& par = r.parameters[static_cast<size_t>(p)];
        LParameters.push_back(par.name + "\t" + par.description);
    }
}

std::string FCommandSelection::Takeit() const {
    if (picked < 0) return {};
    return LCommands[static_cast<size_t>(picked)];
}

}  // namespace vortelm::forms
