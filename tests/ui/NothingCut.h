#pragma once
// The check that a window shows all of its controls: every visible control
// lies inside its window, and the window is at least as large as its layout
// needs.

#include <gtest/gtest.h>

#include <QAbstractScrollArea>
#include <QLayout>
#include <QWidget>

namespace vortelm::testing {

inline void ExpectNothingCut(QWidget* form, const char* what) {
    ASSERT_NE(form, nullptr) << what;
    if (form->layout()) {
        EXPECT_GE(form->width(), form->layout()->minimumSize().width()) << what;
        EXPECT_GE(form->height(), form->layout()->minimumSize().height()) << what;
    }
    for (QWidget* w : form->findChildren<QWidget*>()) {
        if (!w->isVisible() || w->window() != form) continue;
        bool scrolled = false;
        for (QWidget* p = w->parentWidget(); p && p != form; p = p->parentWidget())
            scrolled = scrolled || qobject_cast<QAbstractScrollArea*>(p) != nullptr;
        if (scrolled) continue;  // a scroll area shows part of its contents by design
        const QRect r(w->mapTo(form, QPoint(0, 0)), w->size());
        EXPECT_TRUE(form->rect().contains(r))
            << what << ": " << w->objectName().toStdString() << " " << r.x() << "," << r.y() << " "
            << r.width() << "x" << r.height() << " outside " << form->width() << "x"
            << form->height();
    }
}

}  // namespace vortelm::testing
