// mctypes.dat reader and the controller lookups.
#include "config/ControllerTypes.h"
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
    st.controllerTypeCount = 0;
    st.kernelCount = 0;
    st.CurrentKernel = 0;
    vortelm::fuzz::WriteInput("mctypes.dat", data, size);
    try {
        vortelm::ReadControllerTypes(st, "mctypes.dat");
    } catch (const vortelm::RunTimeError&) {
    }
    for (int i = 0; i < st.controllerTypeCount; ++i) {
        (void)vortelm::ControllerIndexByName(st, st.controllerTypes[i].name);
        (void)vortelm::ControllerFamilyCode(st.controllerTypes[i].family);
        st.MCTYPE = st.controllerTypes[i].name;
        try {
            vortelm::SelectDefaultKernel(st);
        } catch (const vortelm::RunTimeError&) {
        }
    }
    return 0;
}
