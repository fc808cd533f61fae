// .MEM reader and the memory unit lookups.
#include "config/ControllerTypes.h"
#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "fuzz/FuzzHome.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // One state for the whole run: building one per input costs more than
    // the read; each reader starts its table afresh.
    static vortelm::ProgramState st;
    st.programFolder = vortelm::fuzz::Home();
    st.terminalBuffer.clear();
    st.terminalLines = 0;
    st.memoryUnitCount = 0;
    vortelm::fuzz::WriteInput("T.MEM", data, size);
    try {
        vortelm::ReadMemoryDefinition(st, "T.MEM");
    } catch (const vortelm::RunTimeError&) {
    }
    if (st.memoryUnitCount < 0 || st.memoryUnitCount > vortelm::kMemoryUnitBound + 1) __builtin_trap();
    for (int32_t a : {0, 0xFC80, 0x10000, 0xFFFFFF, -1}) (void)vortelm::FindMemoryPosition(st, a);
    (void)vortelm::FirstFlashUnit(st);
    for (int i = 0; i < st.memoryUnitCount; ++i) {
        (void)vortelm::FlashRank(st, i);
        (void)vortelm::UnitHasFeature(st, i, "PROGRAM");
        (void)vortelm::MemoryUnitIndexByName(st, st.memoryUnits[i].name);
    }
    return 0;
}
