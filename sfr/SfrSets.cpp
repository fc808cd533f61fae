#include "sfr/SfrSets.h"

#include "core/Host.h"
#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "sfr/SfrTable.h"

namespace vortelm {

void ClearSfrSets(ProgramState& st) {
    for (int s = 0; s < 8; ++s) {
        st.sfrSets[s].title.clear();
        st.sfrSets[s].count = 0;
    }
    st.sfrSetCount = 8;
    st.currentSfrSet = 0;
}

bool SfrInSet(const ProgramState& st, int set, int32_t index) {
    CheckBound(set, kSfrSetBound, "SFR set");
    const SfrSet& s = st.sfrSets[set];
    for (int i = 0; i < s.count && i < 256; ++i)
        if (s.entries[i] == index) return true;
    return false;
}

void AddSfrToSet(ProgramState& st, int set, int32_t index) {
    if (SfrInSet(st, set, index)) return;
    CheckBound(index, st.sfrCount - 1, "SFR table");
    SfrSet& s = st.sfrSets[set];
    CheckBound(s.count, 255, "SFR set entry");
    s.entries[s.count] = static_cast<int16_t>(index);
    s.names[s.count] = st.sfrTable[static_cast<size_t>(index)].name;
    ++s.count;
}

void ReloadSfrSets(ProgramState& st) {
    for (int set = 0; set < st.sfrSetCount && set <= kSfrSetBound; ++set) {
        SfrSet& s = st.sfrSets[set];
        int j = 0;
        while (j < s.count && j < 256) {
            const int32_t i = SfrIndexByName(st, s.names[j]);
            if (i >= 0) {
                s.entries[j] = static_cast<int16_t>(i);
                ++j;
                continue;
            }
            for (int k = j; k + 1 < s.count; ++k) {
                s.entries[k] = s.entries[k + 1];
                s.names[k] = s.names[k + 1];
            }
            --s.count;
        }
    }
    if (st.REFRESHSFR != 0) st.host->refreshSfrView();
}

}  // namespace vortelm
