// Register set file (.mrs) reader: the names are added to a set of a small
// register table; the text a save writes must name the same set again.
#include <string>

#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "fuzz/FuzzHome.h"
#include "image/Dump.h"
#include "sfr/SfrSets.h"
#include "sfr/SfrTable.h"

namespace {

vortelm::ProgramState& State() {
    static vortelm::ProgramState st;
    static const bool ready = [] {
        st.programFolder = vortelm::fuzz::Home();
        vortelm::InitDumpMemory(st.dump);
        const char* names[] = {"CP", "DP2", "P2", "PSW", "S0CON", "SP", "SYSCON", "T3", "T3CON"};
        for (const char* n : names) {
            vortelm::SfrRecord& r = st.sfrTable[static_cast<size_t>(st.sfrCount)];
            r.name = n;
            r.address = 0xFE00 + 2 * st.sfrCount;
            ++st.sfrCount;
        }
        return true;
    }();
    (void)ready;
    return st;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    vortelm::ProgramState& st = State();
    vortelm::ClearSfrSets(st);
    st.terminalBuffer.clear();
    st.terminalLines = 0;
    const std::string path = vortelm::fuzz::WriteInput("T.mrs", data, size);
    try {
        (void)vortelm::LoadSfrRegisterSet(st, path);
    } catch (const vortelm::RunTimeError&) {
        // a bound of the set ends the load; the set stays valid
    }
    const vortelm::SfrSet first = st.sfrSets[0];
    if (first.count < 0 || first.count > 256 ||
        st.sfrList.lines.size() != static_cast<size_t>(first.count))
        __builtin_trap();
    // what a save writes gives the same set again (the writing itself is
    // the program's one file replace, which syncs to the disk: kept out of
    // the loop for speed)
    const auto names = vortelm::RegisterSetNames(vortelm::RegisterSetText(st));
    if (names.size() != static_cast<size_t>(first.count)) __builtin_trap();
    for (int i = 0; i < first.count; ++i)
        if (vortelm::SfrIndexByName(st, names[static_cast<size_t>(i)]) !=
            first.entries[static_cast<size_t>(i)])
            __builtin_trap();
    return 0;
}
