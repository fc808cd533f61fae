// .sb cache reader, from memory.
#include <span>

#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "sfr/SfrTable.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static vortelm::ProgramState st;
    try {
        vortelm::ReadSfrCacheBytes(st, std::span<const uint8_t>(data, size));
    } catch (const vortelm::RunTimeError&) {
    }
    if (st.sfrCount < 0 || st.sfrCount > vortelm::kSfrBound + 1) __builtin_trap();
    (void)vortelm::SfrIndexByAddress(st, 0xFF12);
    return 0;
}
