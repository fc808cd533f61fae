#include "config/Startup.h"

#include "config/ControllerTypes.h"
#include "config/Kernels.h"
#include "config/Preferences.h"
#include "core/Helpers.h"
#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "core/Text.h"
#include "sfr/SfrSets.h"

namespace vortelm {

namespace {

template <typename Fn>
void Step(ProgramState& st, Fn&& fn) {
    try {
        fn();
    } catch (const RunTimeError& e) {
        Text2Buffer(st, CrLf() + "*ERROR: " + e.what());
    }
}

}  // namespace

void ResetConfigurationTables(ProgramState& st) {
    st.initRegisterCount = 0;
    st.ConnectionState = kNotConnected;
    st.memoryUnitCount = 0;
    st.sfrCount = 0;
    st.IdRegisterAddresses = {0xF07E, 0xF07C, 0xF07A, 0xF078, 0xF076, 0xF070};
    st.logFileName = "LOG.TXT";
    InitFeatureNames(st);
    ClearSfrSets(st);
    st.variables.fill(0);
}

void ReadDataFiles(ProgramState& st) {
    Step(st, [&] { ReadControllerTypes(st, "mctypes.dat"); });
    Step(st, [&] { ReadKernels(st, "kernel.dat"); });
}

void ReadDefaultPreferences(ProgramState& st) {
    Step(st, [&] { ReadPreferences(st, "default.ini"); });
}

void WriteConfigurationFiles(ProgramState& st) {
    Step(st, [&] {
        if (!WriteKernels(st, "kernel.dat"))
            Text2Buffer(st, CrLf() + "*ERROR: File kernel.dat could not be written");
    });
    Step(st, [&] {
        if (!WritePreferences(st, "default.ini"))
            Text2Buffer(st, CrLf() + "*ERROR: File default.ini could not be written");
    });
}

}  // namespace vortelm
