// .SFR text reader (the cache is removed first so the text is always read).
#include <filesystem>

#include "core/ProgramState.h"
#include "fuzz/FuzzHome.h"
#include "sfr/SfrTable.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // One state for the whole run: building one per input costs more than
    // the read; each reader starts its table afresh.
    static vortelm::ProgramState st;
    st.programFolder = vortelm::fuzz::Home();
    st.terminalBuffer.clear();
    st.terminalLines = 0;
    const std::string path = vortelm::fuzz::WriteInput("T.SFR", data, size);
    std::filesystem::remove(vortelm::SfrCachePath(path));
    (void)vortelm::ReadSfrFile(st, path);
    if (st.sfrCount < 0 || st.sfrCount > vortelm::kSfrBound + 1) __builtin_trap();
    for (int i = 0; i < st.sfrCount && i < 64; ++i) {
        (void)vortelm::SfrIndexByName(st, st.sfrTable[i].name);
        (void)vortelm::SfrIndexByShort(st, st.sfrTable[i].shortAddress, st.sfrTable[i].extended);
    }
    return 0;
}
