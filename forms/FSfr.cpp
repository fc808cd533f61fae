#include "forms/FSfr.h"

#include "core/Helpers.h"
#include "link/ComPort.h"
#include "link/Monitor.h"
#include "sfr/SfrSets.h"
#include "sfr/SfrTable.h"

namespace vortelm::forms {

void FSfr::fill(std::string_view part) {
    names.clear();
    const int32_t n = std::min<int32_t>(st_.sfrCount, static_cast<int32_t>(st_.sfrTable.size()));
    for (int32_t i = 0; i < n; ++i) {
        const std::string& name = st_.sfrTable[static_cast<size_t>(i)].name;
        if (part.empty() || name.find(part) != std::string::npos) names.push_back(name);
    }
    selected.assign(names.size(), 0);
}

void FSfr::get_preferences() {
    fill({});
}

void FSfr::TSearch_Enter() {
    const std::string text = UpperCase(searchText);
    fill(text == "*" ? std::string() : text);
    searchText.clear();
}

void FSfr::BOk_Click() {
    for (size_t i = 0; i < names.size(); ++i) {
        if (i >= selected.size() || selected[i] == 0) continue;
        const int32_t index = SfrIndexByName(st_, names[i]);
        if (index < 0) continue;
        if (st_.ConnectionState == 1 && port_ != nullptr)
            (void)link::Monitor(st_, *port_).cmd_readsfr(names[i]);
        AddSfrToCurrentSet(st_, index);
    }
    visible = false;
}

}  // namespace vortelm::forms
