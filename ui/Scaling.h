#pragma once
// ScaleForms on Qt: every window's fonts, fixed sizes and size grow by the
// factor, and the layouts place the controls, so nothing is cut off. The
// factor applied so far is kept, so that a form made later starts at the
// same scale.

class QWidget;

namespace vortelm::ui {

// Scales all windows by the factors relative to their present scale (the
// Part's x = new / old). A factor that is not a positive finite number
// changes nothing.
void ScaleForms(double xFactor, double yFactor);
// Brings a window made after the last ScaleForms to the present scale.
void ScaleNewForm(QWidget* form);
// The scale applied so far (1.0 is the designed size).
[[nodiscard]] double AppliedScale();

}  // namespace vortelm::ui
