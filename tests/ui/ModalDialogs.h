#pragma once
// Driving a modal dialog: the dialog's exec() runs its own event loop, so the
// test hands over what to do before it clicks the button that opens it.

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QListWidget>
#include <QTest>
#include <QTimer>

#include <functional>
#include <memory>
#include <string>

namespace vortelm::testing {

// Runs work on the dialog named name as soon as it is on screen. A dialog
// that does not come within a few seconds fails the test, and whatever modal
// dialog is open then is rejected, so that no exec() waits for ever.
inline void WhenModal(const char* name, std::function<void(QDialog*)> work) {
    auto* timer = new QTimer;
    auto tries = std::make_shared<int>(0);
    timer->setInterval(5);
    QObject::connect(timer, &QTimer::timeout, timer,
                     [timer, tries, wanted = QString::fromUtf8(name), work = std::move(work)]() {
                         for (QWidget* w : QApplication::topLevelWidgets()) {
                             auto* d = qobject_cast<QDialog*>(w);
                             if (!d || !d->isVisible() || d->objectName() != wanted) continue;
                             timer->stop();
                             timer->deleteLater();
                             work(d);
                             return;
                         }
                         if (++*tries < 1000) return;
                         timer->stop();
                         timer->deleteLater();
                         ADD_FAILURE() << "the dialog " << wanted.toStdString() << " did not open";
                         if (auto* open = qobject_cast<QDialog*>(QApplication::activeModalWidget()))
                             open->reject();
                     });
    timer->start();
}

// A named child of a dialog; fails the test when it is missing.
template <class T = QWidget>
T* Child(QWidget* parent, const char* name) {
    T* w = parent->findChild<T*>(QString::fromUtf8(name));
    EXPECT_NE(w, nullptr) << name;
    return w;
}

inline void Click(QWidget* parent, const char* name) {
    if (auto* b = Child<QAbstractButton>(parent, name)) b->click();
}

// A mouse click on a row of a list, as the operator makes it.
inline void ClickRow(QListWidget* list, int row, bool twice = false) {
    const QRect r = list->visualItemRect(list->item(row));
    // A double click is a click and then the second press within the
    // interval, as the item view sees it.
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, r.center());
    if (twice) QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, r.center());
}

}  // namespace vortelm::testing
