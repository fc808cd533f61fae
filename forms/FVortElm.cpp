#include "forms/FVortElm.h"

#include <array>
#include <string>
#include <utility>

#include "config/Kernels.h"
#include "forms/FFlash.h"

namespace vortelm::forms {

std::vector<FeatureButton> FVortElm::featureButtons() const {
    const bool connected = st_.ConnectionState != kNotConnected;
    std::vector<FeatureButton> out;
    // the flash buttons: the kernel's feature rows, or a unit's driver
    for (const FlashButton& b : kFlashButtons)
        out.push_back({b.name, FlashButtonVisible(st_, b.feature), {}});
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
