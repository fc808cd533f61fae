// Preference file reader (with a controller type, registers and kernels in
// place so that every branch can run), and the writer on what it read.
#include "config/ControllerTypes.h"
#include "config/Kernels.h"
#include "config/Preferences.h"
#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "fuzz/FuzzHome.h"

namespace {
void WriteText(const std::string& name, const std::string& text) {
    vortelm::fuzz::WriteInput(name, reinterpret_cast<const uint8_t*>(text.data()), text.size());
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool once = [] {
        WriteText("mctypes.dat", "[ALD7RK_BB]\nFAMILY=ZT\nREGDEF=LD7RK.SFR\nDEFAULT_KERNEL=K0\n");
        WriteText("LD7RK.SFR", "SFR 0xFF12 SYSCON\nSFR 0xFF14 BUSCON\nBFLD SYSCON.3-0 F\n");
        WriteText("kernel.dat", "KERNELNAME(0)=K0\nKERNELNAME(1)=K1\nVORTELMPATH(1)=M.HEX\n");
        return true;
    }();
    (void)once;
    // One state for the whole run: building one per input costs more than
    // the read; each reader starts its table afresh.
    static vortelm::ProgramState st;
    st.programFolder = vortelm::fuzz::Home();
    st.terminalBuffer.clear();
    st.terminalLines = 0;
    st.controllerTypeCount = 0;
    st.kernelCount = 0;
    try {
        vortelm::ReadControllerTypes(st, "mctypes.dat");
        vortelm::ReadKernels(st, "kernel.dat");
    } catch (const vortelm::RunTimeError&) {
    }
    vortelm::fuzz::WriteInput("a.ini", data, size);
    try {
        vortelm::ReadPreferences(st, "a.ini");
    } catch (const vortelm::RunTimeError&) {
    }
    try {
        (void)vortelm::PreferencesText(st);
    } catch (const vortelm::RunTimeError&) {
    }
    return 0;
}
