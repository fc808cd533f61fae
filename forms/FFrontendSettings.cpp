#include "forms/FFrontendSettings.h"

#include "config/ConfigText.h"
#include "core/Helpers.h"
#include "core/ProgramState.h"

namespace vortelm::forms {

namespace {

int32_t& ColourOf(ProgramState& st, ColourBox box) {
    switch (box) {
        case ColourBox::BGMarked:
            return st.COLOR_BGMARKED;
        case ColourBox::BGNormal:
            return st.COLOR_BGNORMAL;
        case ColourBox::FGValid:
            return st.COLOR_FGVALID;
        case ColourBox::FGInvalid:
            return st.COLOR_FGINVALID;
        case ColourBox::FGMonitor:
            break;
    }
    return st.COLOR_FGMONITOR;
}

// A stored colour as the box shows it: six hexadecimal digits, or the -1 a
// bad text left.
std::string ColourText(int32_t colour) {
    return colour < 0 ? std::to_string(colour) : HexText(colour, 6);
}

}  // namespace

void FFrontendSettings::get_preferences() {
    OLog = st_.logEnabled != 0;
    ORefreshsfr = st_.REFRESHSFR != 0;
    TBlankchar = st_.BLANK_CHAR;
    for (int i = 0; i < kColourBoxes; ++i)
        colours[i] = ColourText(ColourOf(st_, static_cast<ColourBox>(i)));
    TScaleFactor = std::to_string(st_.SCALEFACTOR);
    oldScale_ = st_.SCALEFACTOR;
}

int32_t FFrontendSettings::preview(ColourBox box) const {
    return HexValue(colours[static_cast<int>(box)]);
}

std::optional<double> FFrontendSettings::BOk() {
    st_.logEnabled = OLog ? 1 : 0;
    st_.REFRESHSFR = ORefreshsfr ? kTrue : kFalse;
    st_.BLANK_CHAR = TBlankchar;
    for (int i = 0; i < kColourBoxes; ++i)
        ColourOf(st_, static_cast<ColourBox>(i)) = preview(static_cast<ColourBox>(i));
    // A scale text that is no number is taken as 0, as the preference reader does.
    const auto newScale = static_cast<int16_t>(config::Val(TScaleFactor));
    if (newScale == oldScale_) return std::nullopt;
    const double factor = static_cast<double>(newScale) / static_cast<double>(oldScale_);
    st_.SCALEFACTOR = newScale;
    oldScale_ = newScale;
    return factor;
}

}  // namespace vortelm::forms
