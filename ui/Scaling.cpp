#include "ui/Scaling.h"

#include <QApplication>
#include <QFont>
#include <QToolBar>
#include <QVariant>
#include <QWidget>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace vortelm::ui {

namespace {

// The scale applied so far lives with the application, as its font does.
constexpr const char* kScaleProperty = "vortelmScale";
// The smallest and largest scale the windows take: beyond them a window is
// unusable, whatever the preference says.
constexpr double kLowest = 0.25;
constexpr double kHighest = 8.0;

QFont Scaled(QFont f, double factor) {
    if (f.pointSizeF() > 0)
        f.setPointSizeF(f.pointSizeF() * factor);
    else if (f.pixelSize() > 0)
        f.setPixelSize(std::max(1, static_cast<int>(std::lround(f.pixelSize() * factor))));
    return f;
}

double TextSize(const QFont& f) {
    return f.pointSizeF() > 0 ? f.pointSizeF() : f.pixelSize();
}

int ScaledLength(int length, double factor, int unset) {
    if (length == unset || length <= 0) return length;
    return std::max(1, static_cast<int>(std::lround(length * factor)));
}

// One window and its controls: explicit fonts, fixed and least sizes.
// Controls without such properties are left as they are.
void ScaleTree(QWidget* form, double x, double y) {
    // A window not yet shown and never sized takes its size from its layout
    // when it shows: only a size that is already there is scaled.
    const QSize size = form->size();
    const bool sized = form->isVisible() || form->testAttribute(Qt::WA_Resized);
    // The controls of this window only: a window inside it (a list's
    // popup) is scaled as a window of its own, or follows its owner.
    QList<QWidget*> widgets;
    widgets.append(form);
    for (QWidget* w : form->findChildren<QWidget*>())
        if (w->window() == form) widgets.append(w);
    // A font that sets its own size (or inherits one from a control that
    // does) is scaled here, from the size it had before anything changed: a
    // control that inherits the new size from its parent meanwhile is left
    // alone, so nothing grows twice. A font that sets only its family or
    // weight takes its size from the application's font, scaled already.
    std::vector<std::pair<QWidget*, QFont>> sizedFonts;
    for (QWidget* w : widgets)
        if (w->testAttribute(Qt::WA_SetFont) && (w->font().resolveMask() & QFont::SizeResolved))
            sizedFonts.emplace_back(w, Scaled(w->font(), y));
    for (auto& [w, font] : sizedFonts)
        if (TextSize(w->font()) != TextSize(font)) w->setFont(font);
    for (QWidget* w : widgets) {
        // The pictures of a tool bar grow with their captions.
        if (auto* bar = qobject_cast<QToolBar*>(w)) {
            const QSize icon = bar->iconSize();
            bar->setIconSize(
                QSize(ScaledLength(icon.width(), x, 0), ScaledLength(icon.height(), y, 0)));
        }
        const QSize min = w->minimumSize();
        const QSize max = w->maximumSize();
        w->setMinimumSize(ScaledLength(min.width(), x, 0), ScaledLength(min.height(), y, 0));
        w->setMaximumSize(ScaledLength(max.width(), x, QWIDGETSIZE_MAX),
                          ScaledLength(max.height(), y, QWIDGETSIZE_MAX));
    }
    if (sized) form->resize(ScaledLength(size.width(), x, 0), ScaledLength(size.height(), y, 0));
}

}  // namespace

void ScaleForms(double xFactor, double yFactor) {
    const double applied = AppliedScale();
    if (!std::isfinite(xFactor) || !std::isfinite(yFactor) || xFactor <= 0 || yFactor <= 0) return;
    // One factor for both directions keeps the text's proportions.
    const double target = std::clamp(applied * yFactor, kLowest, kHighest);
    const double factor = target / applied;
    if (std::abs(factor - 1.0) < 1e-9) return;
    QApplication::setFont(Scaled(QApplication::font(), factor));
    for (QWidget* form : QApplication::topLevelWidgets()) {
        // A popup (a list's drop-down, a menu) takes its font from its owner.
        if (form->windowType() == Qt::Popup || form->windowType() == Qt::ToolTip) continue;
        ScaleTree(form, factor, factor);
    }
    qApp->setProperty(kScaleProperty, target);
}

void ScaleNewForm(QWidget* form) {
    const double applied = AppliedScale();
    if (std::abs(applied - 1.0) < 1e-9) return;
    // The application font is already scaled; explicit fonts and sizes are not.
    ScaleTree(form, applied, applied);
}

double AppliedScale() {
    const QVariant v = qApp ? qApp->property(kScaleProperty) : QVariant();
    return v.isValid() ? v.toDouble() : 1.0;
}

}  // namespace vortelm::ui
