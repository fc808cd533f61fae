#pragma once
// The colours of the preference keys as Qt colours.

#include <QColor>

#include <cstdint>

namespace vortelm::ui {

// The colour keys hold blue in the high byte, red in the low one.
[[nodiscard]] inline QColor ColourFromKey(int32_t c) {
    return QColor(c & 0xFF, (c >> 8) & 0xFF, (c >> 16) & 0xFF);
}

}  // namespace vortelm::ui
