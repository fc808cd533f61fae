#include "link/BootEntry.h"

#include <array>

#include "core/Host.h"
#include "core/ProgramState.h"
#include "core/Text.h"
#include "link/ComPort.h"

namespace vortelm::link {

namespace {

constexpr std::array<std::string_view, kBootEntryLast + 1> kNames = {
    "none", "rts-reset-dtr-boot", "rts-reset-dtr-boot-inverted", "dtr-reset-rts-boot",
    "dtr-reset-rts-boot-inverted"};

// Lets the event loop run for ms milliseconds.
void Hold(ProgramState& st, int ms) {
    const int64_t until = st.host->nowUs() + int64_t{ms} * 1000;
    while (st.host->nowUs() < until) st.host->yield(until);
}

}  // namespace

std::string_view BootEntryName(BootEntry e) {
    const auto i = static_cast<size_t>(e);
    return i < kNames.size() ? kNames[i] : kNames[0];
}

std::optional<BootEntry> BootEntryFromText(std::string_view text) {
    for (size_t i = 0; i < kNames.size(); ++i)
        if (text == kNames[i] || (text.size() == 1 && text[0] == static_cast<char>('0' + i)))
            return static_cast<BootEntry>(i);
    return std::nullopt;
}

BootEntry BootEntryOf(const ProgramState& st) {
    const int16_t v = st.bootEntryOverride >= 0 ? st.bootEntryOverride : st.BOOTENTRY;
    if (v < 0 || v > kBootEntryLast) return BootEntry::None;
    return static_cast<BootEntry>(v);
}

bool PlayBootEntry(ComPort& port, BootEntry e) {
    if (e == BootEntry::None || !port.isOpen()) return false;
    const bool resetOnRts =
        e == BootEntry::RtsResetDtrBoot || e == BootEntry::RtsResetDtrBootInverted;
    const bool active = e == BootEntry::RtsResetDtrBoot || e == BootEntry::DtrResetRtsBoot;
    auto reset = [&](bool on) {
        resetOnRts ? port.setRts(on == active) : port.setDtr(on == active);
    };
    auto boot = [&](bool on) {
        resetOnRts ? port.setDtr(on == active) : port.setRts(on == active);
    };
    ProgramState& st = port.state();
    Text2Buffer(st, "*Boot entry: " + std::string(BootEntryName(e)) + "\r\n");
    boot(true);
    reset(true);
    Hold(st, kBootEntryResetMs);
    reset(false);
    Hold(st, kBootEntrySettleMs);
    boot(false);
    return true;
}

}  // namespace vortelm::link
