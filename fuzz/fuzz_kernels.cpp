// kernel.dat reader, and the writer on what it read.
#include "config/Kernels.h"
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
    st.kernelCount = 0;
    st.CurrentKernel = 0;
    vortelm::fuzz::WriteInput("kernel.dat", data, size);
    try {
        vortelm::ReadKernels(st, "kernel.dat");
    } catch (const vortelm::RunTimeError&) {
    }
    if (st.kernelCount < 0 || st.kernelCount > vortelm::kKernelBound + 1) __builtin_trap();
    (void)vortelm::WriteKernels(st, "out.dat");
    try {
        for (int i = 0; i < st.kernelCount; ++i) {
            (void)vortelm::HasFeature(st, "CALL", i);
            (void)vortelm::IsDefaultKernel(st, i);
        }
        vortelm::SelectDefaultKernel(st);
    } catch (const vortelm::RunTimeError&) {
    }
    return 0;
}
