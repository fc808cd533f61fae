#pragma once
// Small parts the Qt dialogs are drawn from: a named text field, a named
// button, and the OK/Cancel row whose OK runs the dialog's own check.

#include <QDialog>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QString>

#include <functional>
#include <string>

namespace vortelm::ui {

[[nodiscard]] inline QString Q(const std::string& s) {
    return QString::fromStdString(s);
}

[[nodiscard]] inline QLineEdit* Field(const char* name) {
    auto* e = new QLineEdit;
    e->setObjectName(QString::fromUtf8(name));
    return e;
}

[[nodiscard]] inline QPushButton* Button(const char* name, const char* caption) {
    auto* b = new QPushButton(QString::fromUtf8(caption));
    b->setObjectName(QString::fromUtf8(name));
    b->setAutoDefault(false);
    return b;
}

// BOk runs ok (which accepts the dialog when its checks pass); BCancel rejects.
[[nodiscard]] inline QDialogButtonBox* OkCancel(QDialog* d, const std::function<void()>& ok) {
    auto* buttons = new QDialogButtonBox;
    QPushButton* b = buttons->addButton(QDialogButtonBox::Ok);
    b->setObjectName(QStringLiteral("BOk"));
    QPushButton* c = buttons->addButton(QDialogButtonBox::Cancel);
    c->setObjectName(QStringLiteral("BCancel"));
    QObject::connect(b, &QPushButton::clicked, d, ok);
    QObject::connect(c, &QPushButton::clicked, d, &QDialog::reject);
    return buttons;
}

}  // namespace vortelm::ui
