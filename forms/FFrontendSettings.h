#pragma once
// The front-end settings form ("Frontend Settings"): the hex page's colours
// with their previews, the blank character, the log and SFR refresh switches
// and the scale factor of all windows.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vortelm {
struct ProgramState;
}

namespace vortelm::forms {

// The colour boxes, in the order of the form.
enum class ColourBox { BGMarked, BGNormal, FGValid, FGInvalid, FGMonitor };
constexpr int kColourBoxes = 5;

struct ColourControl {
    const char* box;      // the text box's name
    const char* preview;  // the preview's name
    const char* caption;
};
constexpr std::array<ColourControl, kColourBoxes> kColourControls{{
    {"TBGMarked", "XColorPreviewBGMARKED", "Selection"},
    {"TBGNormal", "XColorPreviewBGNORMAL", "Background"},
    {"TFGValid", "XColorPreviewFGVALID", "Valid"},
    {"TFGINVALID", "XColorPreviewFGINVALID", "Invalid"},
    {"TFGMonitor", "XColorPreviewFGMONITOR", "Monitor"},
}};

class FFrontendSettings {
  public:
    static constexpr const char* kTitle = "Frontend Settings";

    explicit FFrontendSettings(ProgramState& st) : st_(st) {}

    // Copies the values into the controls (colours as hexadecimal text) and
    // remembers the scale factor.
    void get_preferences();

    // The controls' contents.
    bool OLog = false;
    bool ORefreshsfr = false;
    std::string TBlankchar;
    std::array<std::string, kColourBoxes> colours;
    std::string TScaleFactor;

    // The colour a box's text gives its preview: HexValue of the text, -1
    // when it is no hexadecimal number.
    [[nodiscard]] int32_t preview(ColourBox box) const;

    // BOk: writes the values back. When the scale factor changed, the
    // factor new / old for ScaleForms (both directions alike); the front end
    // scales its windows and refreshes the memory page.
    [[nodiscard]] std::optional<double> BOk();

  private:
    ProgramState& st_;
    int32_t oldScale_ = 100;
};

}  // namespace vortelm::forms
