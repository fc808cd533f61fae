// Rows of the SFR view group and the set listing: the refresh switch, adding
// and removing registers of a set, and the listing of a set.

#include "core/Helpers.h"
#include "core/Host.h"
#include "sfr/SfrSets.h"
#include "sfr/SfrTable.h"
#include "shell/ImageRowArgs.h"
#include "shell/Rows.h"
#include "target/SfrView.h"

namespace vortelm::shell {

namespace {

constexpr RowResult kIllegal{-2, false};

// The set a row names: its second (or only) argument's number value, or the
// current set without one; -1 when it is not one of the sets.
int SetArgument(const Session& s, int argument) {
    if (s.parsedParameterCount <= argument) return s.st.currentSfrSet;
    const int32_t set = rowargs::Decimal(s, argument);
    return set >= 0 && set < s.st.sfrSetCount && set <= kSfrSetBound ? set : -1;
}

RowResult RefreshSfr(Session& s) {
    if (s.parsedParameterCount == 0) {
        s.st.host->refreshSfrView();
        return {};
    }
    const std::string word = UpperCase(s.parsedParameters[0].text);
    if (word == "0" || word == "OFF") {
        s.st.REFRESHSFR = 0;
    } else if (word == "1" || word == "ON") {
        s.st.REFRESHSFR = kTrue;
    } else {
        return kIllegal;
    }
    return {};
}

RowResult AddSfr(Session& s) {
    const int32_t index = SfrIndexByName(s.st, s.parsedParameters[0].text);
    const int set = SetArgument(s, 1);
    if (index < 0 || set < 0) return kIllegal;
    AddSfrToSet(s.st, set, index);
    return {};
}

RowResult RemoveSfr(Session& s) {
    const int32_t index = SfrIndexByName(s.st, s.parsedParameters[0].text);
    const int set = SetArgument(s, 1);
    if (index < 0 || set < 0) return kIllegal;
    RemoveSfrFromSet(s.st, set, index);
    return {};
}

RowResult ViewSfrs(Session& s) {
    const int set = SetArgument(s, 0);
    if (set < 0) return kIllegal;
    target::ShowSfrSet(s.st, s.port, set);
    return {};
}

constexpr RowBinding kRows[] = {
    {"_refreshsfr", &RefreshSfr},
    {"_addsfr", &AddSfr},
    {"_removesfr", &RemoveSfr},
    {"_viewsfrs", &ViewSfrs},
};

}  // namespace

std::span<const RowBinding> SfrRows() {
    return kRows;
}

}  // namespace vortelm::shell
