#include "ui/FSfr.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include "core/RunTimeError.h"
#include "core/Text.h"
#include "ui/Scaling.h"

namespace vortelm::ui {

FSfr::FSfr(ProgramState& st, link::ComPort* port, QWidget* parent)
    : QDialog(parent), logic_(st, port), st_(st) {
    setObjectName(QStringLiteral("FSfr"));
    setWindowTitle(QStringLiteral("Add SFR"));
    search_ = new QLineEdit;
    search_->setObjectName(QStringLiteral("TSearch"));
    search_->setPlaceholderText(QStringLiteral("part of a name, Enter"));
    connect(search_, &QLineEdit::returnPressed, this, [this]() {
        logic_.searchText = search_->text().toStdString();
        logic_.TSearch_Enter();
        draw();
    });
    list_ = new QListWidget;
    list_->setObjectName(QStringLiteral("ISfr"));
    list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    connect(list_, &QListWidget::itemDoubleClicked, this, [this]() { ok(); });

    auto* okButton = new QPushButton(QStringLiteral("OK"));
    okButton->setObjectName(QStringLiteral("BOk"));
    okButton->setAutoDefault(false);
    auto* cancel = new QPushButton(QStringLiteral("Cancel"));
    cancel->setObjectName(QStringLiteral("BCancel"));
    cancel->setAutoDefault(false);
    connect(okButton, &QPushButton::clicked, this, [this]() { ok(); });
    connect(cancel, &QPushButton::clicked, this, [this]() {
        logic_.BCancel_Click();
        reject();
    });

    auto* searchRow = new QHBoxLayout;
    auto* label = new QLabel(QStringLiteral("Search:"));
    label->setBuddy(search_);
    searchRow->addWidget(label);
    searchRow->addWidget(search_);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(okButton);
    buttons->addWidget(cancel);
    auto* lay = new QVBoxLayout(this);
    lay->addLayout(searchRow);
    lay->addWidget(list_, 1);
    lay->addLayout(buttons);
    resize(300, 420);
    // the search box has the focus whenever the form has it
    setFocusProxy(search_);
    ScaleNewForm(this);
}

void FSfr::get_preferences() {
    logic_.get_preferences();
    draw();
    QTimer::singleShot(0, search_, [this]() { search_->setFocus(); });
}

void FSfr::draw() {
    list_->clear();
    for (const std::string& n : logic_.names) list_->addItem(QString::fromStdString(n));
    search_->setText(QString::fromStdString(logic_.searchText));
}

void FSfr::takeSelection() {
    logic_.selected.assign(logic_.names.size(), 0);
    for (int i = 0; i < list_->count(); ++i)
        if (list_->item(i)->isSelected() && static_cast<size_t>(i) < logic_.selected.size())
            logic_.selected[static_cast<size_t>(i)] = 1;
}

void FSfr::ok() {
    takeSelection();
    try {
        logic_.BOk_Click();
    } catch (const RunTimeError& e) {
        Text2Buffer(st_, std::string("\r\n*ERROR: ") + e.what());
    }
    accept();
}

}  // namespace vortelm::ui
