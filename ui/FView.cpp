#include "ui/FView.h"

#include <QApplication>
#include <QClipboard>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QListWidget>
#include <QVBoxLayout>

#include <vector>

#include "ui/Scaling.h"

namespace vortelm::ui {

FView::FView(ProgramState& st, QWidget* parent) : QDialog(parent), logic_(st) {
    setObjectName(QStringLiteral("FView"));
    list_ = new QListWidget;
    list_->setObjectName(QStringLiteral("IView"));
    list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    QFont mono = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    mono.setPointSizeF(QApplication::font().pointSizeF());
    list_->setFont(mono);
    list_->installEventFilter(this);
    auto* lay = new QVBoxLayout(this);
    lay->addWidget(list_);
    resize(320, 400);
}

void FView::setmode(int mode) {
    logic_.setmode(mode);
    setWindowTitle(QString::fromStdString(logic_.title()));
    refreshview();
    show();
    raise();
}

void FView::refreshview() {
    logic_.refreshview();
    list_->clear();
    for (const std::string& row : logic_.rows()) list_->addItem(QString::fromStdString(row));
}

void FView::IView_Copy2Clipboard() {
    std::vector<int> selected;
    for (int i = 0; i < list_->count(); ++i)
        if (list_->item(i)->isSelected()) selected.push_back(i);
    QApplication::clipboard()->clear();
    QApplication::clipboard()->setText(QString::fromStdString(logic_.copyText(selected)));
}

bool FView::eventFilter(QObject* watched, QEvent* event) {
    // Ctrl+C in the list copies its rows, not the main window's selection:
    // the list claims the key before the window's shortcut takes it.
    const bool key = event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride;
    if (watched == list_ && key) {
        auto* k = static_cast<QKeyEvent*>(event);
        if (k->key() == Qt::Key_C && (k->modifiers() & Qt::ControlModifier)) {
            if (event->type() == QEvent::ShortcutOverride) {
                k->accept();
                return true;
            }
            IView_Copy2Clipboard();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

}  // namespace vortelm::ui
