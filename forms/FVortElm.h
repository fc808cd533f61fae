#pragma once
// The main window without Qt: which tool buttons show (the flash buttons and
// the channel switch by the kernel's features, the user script buttons by
// their slots) and how the status panels read. The Qt class ui::FVortElm
// draws what these give.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/ProgramState.h"

namespace vortelm::forms {

// One tool button whose showing depends on the state.
struct FeatureButton {
    std::string name;  // the control's name, e.g. "BProgram", "BFunc3"
    bool visible = false;
    std::optional<std::string> caption;  // a user script's caption; none: the button keeps its own
};

// The status lamp's three pictures.
enum class StatusLamp { Red, Green, Yellow };

class FVortElm {
  public:
    explicit FVortElm(const ProgramState& st) : st_(st) {}

    // The flash buttons and BASC02ASC1 show while connected when the current
    // kernel has their feature; BFunc0 to BFunc7 show when their user script
    // slot has a file, with its caption.
    [[nodiscard]] std::vector<FeatureButton> featureButtons() const;

    // Not connected: red; connected and ready: green; any other state
    // (a program or driver runs, debugging): yellow.
    [[nodiscard]] StatusLamp statusLamp() const;
    // The lamp's name as the window's property keeps it ("XStatusRed" ...).
    [[nodiscard]] static const char* LampName(StatusLamp lamp);

  private:
    const ProgramState& st_;
};

}  // namespace vortelm::forms
