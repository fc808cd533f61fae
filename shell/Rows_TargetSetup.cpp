// Rows of the target set-up: the initialisation, the identification report,
// the call of a routine, the monitor's relocation, the two register helpers
// and the change of the baud rate.

#include <algorithm>
#include <array>

#include "core/Helpers.h"
#include "core/Host.h"
#include "core/Text.h"
#include "link/BaudRate.h"
#include "link/ComPort.h"
#include "sfr/SfrTable.h"
#include "shell/ImageRowArgs.h"
#include "shell/Rows.h"
#include "target/Target.h"

namespace vortelm::shell {

namespace {

using namespace rowargs;

constexpr RowResult kIllegal{-2, false};
constexpr RowResult kWrongFamily{-6, false};

RowResult Call(Session& s) {
    // start address, then R8 to R15; every bad value is one status at the end
    std::array<int32_t, 9> values{};
    RowResult status{};
    for (int i = 0; i < s.parsedParameterCount && i < 9; ++i) {
        const int32_t v = ByVariableOrHex(s, i);
        if (v < 0)
            status = kIllegal;
        else
            values[static_cast<size_t>(i)] = v;
    }
    if (status.status != 0) return status;
    auto* t = TargetOf(s);
    if (t == nullptr) return {0, true};
    std::array<int32_t, 8> r{};
    for (size_t i = 0; i < r.size(); ++i) r[i] = values[i + 1];
    const int result = target::callTarget(*t, values[0], r);
    if (result == 0) {
        // the called routine has returned to the monitor
        s.st.ConnectionState = kConnectedAndReady;
        s.st.host->refreshStatus();
    }
    return Passed(result);
}

RowResult MoveMonitor(Session& s) {
    const int32_t address = HexValue(s.parsedParameters[0].text);
    if (address < 0) return kIllegal;
    auto* t = TargetOf(s);
    return t ? Passed(target::relocateMonitor(*t, address)) : RowResult{0, true};
}

RowResult Pllcon(Session& s) {
    const int16_t family = s.st.ControllerFamily;
    if (family < 0 || family > 2) return {};
    if (family != 1) return kWrongFamily;
    const int32_t value = HexValue(s.parsedParameters[0].text);
    if (value < 0) return kIllegal;
    auto* t = TargetOf(s);
    return t ? Passed(target::setPllcon(*t, value)) : RowResult{0, true};
}

RowResult Rstcon(Session& s) {
    if (s.st.ControllerFamily != 0 || SfrIndexByName(s.st, "RSTCON") < 0) return kWrongFamily;
    const int32_t value = HexValue(s.parsedParameters[0].text);
    if (value < 0) return kIllegal;
    auto* t = TargetOf(s);
    return t ? Passed(target::setRstcon(*t, value)) : RowResult{0, true};
}

RowResult IdReg(Session& s) {
    auto* t = TargetOf(s);
    return t ? Passed(target::showIdRegisters(*t)) : RowResult{0, true};
}

RowResult Initialize(Session& s) {
    auto* t = TargetOf(s);
    return t ? Passed(target::initialise(*t)) : RowResult{0, true};
}

RowResult SetBaudrate(Session& s) {
    static constexpr std::array<int32_t, 11> kRates{300,   600,   1200,  2400,  4800,  9600,
                                                    19200, 28800, 38400, 57600, 115200};
    const int32_t rate = Decimal(s, 0);
    if (std::find(kRates.begin(), kRates.end(), rate) == kRates.end()) return kIllegal;
    if (s.port == nullptr) {
        Text2Buffer(s.st, "\r\n*ERROR: Not Connected to Target");
        return {0, true};
    }
    return Passed(link::setBaudrate(s.st, *s.port, rate));
}

constexpr RowBinding kRows[] = {
    {"_call", &Call},
    {"_movemonitor", &MoveMonitor},
    {"_pllcon", &Pllcon},
    {"_rstcon", &Rstcon},
    {"_idreg", &IdReg},
    {"_initialize", &Initialize},
    {"_setbaudrate", &SetBaudrate},
};

}  // namespace

std::span<const RowBinding> TargetSetupRows() {
    return kRows;
}

}  // namespace vortelm::shell
