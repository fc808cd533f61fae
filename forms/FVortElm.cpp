#include "forms/FVortElm.h"

#include <array>
#include <string>
#include <utility>

#include "config/Kernels.h"

namespace vortelm::forms {

std::vector<FeatureButton> FVortElm::featureButtons() const {
    static constexpr std::array<const char*, 7> kFlash{
        "BProgram", "BErase", "BProtect", "BUnprotect", "BLock", "BUnlock", "BStatus"};
    static constexpr std::array<const char*, 7> kFeatures{
        "PROGRAM", "ERASE", "PROTECT", "UNPROTECT", "LOCK", "UNLOCK", "STATUS"};
    const bool connected = st_.ConnectionState != kNotConnected;
    std::vector<FeatureButton> out;
    for (size_t j = 0; j < kFlash.size(); ++j)
        out.push_back({kFlash[j], connected && HasFeature(st_, kFeatures[j], -1), {}});
    out.push_back({"BASC02ASC1", connected && HasFeature(st_, "ASC02ASC1", -1), {}});
    for (size_t i = 0; i < 8; ++i) {
        const UserScript& us = st_.userScripts[i];
        const bool defined = !us.path.empty();
        FeatureButton b{"BFunc" + std::to_string(i), defined, std::nullopt};
        if (defined) b.caption = us.name;
        out.push_back(std::move(b));
    }
    return out;
}

StatusLamp FVortElm::statusLamp() const {
    if (st_.ConnectionState == kNotConnected) return StatusLamp::Red;
    if (st_.ConnectionState == kConnectedAndReady) return StatusLamp::Green;
    return StatusLamp::Yellow;
}

const char* FVortElm::LampName(StatusLamp lamp) {
    switch (lamp) {
        case StatusLamp::Red:
            return "XStatusRed";
        case StatusLamp::Green:
            return "XStatusGreen";
        case StatusLamp::Yellow:
            break;
    }
    return "XStatusYellow";
}

}  // namespace vortelm::forms
