#include "forms/TargetEntries.h"

#include <string>

#include "core/Helpers.h"
#include "core/Host.h"
#include "link/BaudRate.h"
#include "target/Target.h"

namespace vortelm::forms {

void UDisplayResetConfig_Click(target::Target& t) {
    target::showResetConfig(t);
}

std::optional<int32_t> AskRelocationAddress(ProgramState& st) {
    for (;;) {
        const auto answer = st.host->inputBox("Relocate Monitor to Address:", "Vortelm", "");
        if (!answer || answer->empty()) return std::nullopt;
        const std::string text = UpperCase(*answer);
        const int32_t value = text.size() > 6 ? -1 : HexValue(text);
        if (value >= 0) return value;
        st.host->messageBox("No 6-digit hexadecimal number !", MsgButtons::Ok, MsgIcon::None);
    }
}

int UTargetRelocate_Click(target::Target& t) {
    const auto address = AskRelocationAddress(t.st);
    if (!address) return 1;
    return target::relocateMonitor(t, *address);
}

int BASC02ASC1_Click(target::Target& t) {
    return link::switchToAsc1(t.st, t.port);
}

}  // namespace vortelm::forms
