#include "forms/FAbout.h"

#include <algorithm>

#include "shell/Program.h"

namespace vortelm::forms {

FAbout::FAbout()
    : version_(shell::Program::VersionText()),
      buildDate_(shell::Program::BuildDateText()),
      licence_(shell::Program::LicenceText()) {}

std::vector<std::string> FAbout::lines() const {
    return {
        "Vortelm " + version_,
        "Monitor and flash tool for 16-bit controllers",
        "Built " + buildDate_,
        licence_,
    };
}

void FInfo::progress(long long value, long long maximum) {
    if (maximum <= 0) {
        visible_ = false;
        value_ = 0;
        return;
    }
    value_ = static_cast<int>(std::clamp<long long>(value * 100 / maximum, 0, 100));
}

}  // namespace vortelm::forms
