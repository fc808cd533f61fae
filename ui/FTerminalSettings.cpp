#include "ui/FTerminalSettings.h"

#include <QDialogButtonBox>
#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "ui/Scaling.h"

namespace vortelm::ui {

FTerminalSettings::FTerminalSettings(ProgramState& st, QWidget* parent)
    : QDialog(parent), form_(st) {
    setObjectName(QStringLiteral("FTerminalSettings"));
    setWindowTitle(QStringLiteral("Terminal Settings"));
    auto* group = new QGroupBox(QStringLiteral("Show bytes from the target as"));
    ascii_ = new QRadioButton(QStringLiteral("ASCII text"));
    ascii_->setObjectName(QStringLiteral("OTModeASCII"));
    hex_ = new QRadioButton(QStringLiteral("Hexadecimal"));
    hex_->setObjectName(QStringLiteral("OTModeHex"));
    auto* gl = new QVBoxLayout(group);
    gl->addWidget(ascii_);
    gl->addWidget(hex_);
    connect(ascii_, &QRadioButton::clicked, this, [this]() { form_.OTModeASCII_Click(); });
    connect(hex_, &QRadioButton::clicked, this, [this]() { form_.OTModeHex_Click(); });

    auto* buttons = new QDialogButtonBox;
    QPushButton* ok = buttons->addButton(QDialogButtonBox::Ok);
    ok->setObjectName(QStringLiteral("BOk"));
    QPushButton* cancel = buttons->addButton(QDialogButtonBox::Cancel);
    cancel->setObjectName(QStringLiteral("BCancel"));
    connect(ok, &QPushButton::clicked, this, [this]() { BOk_Click(); });
    connect(cancel, &QPushButton::clicked, this, [this]() { BCancel_Click(); });
    auto* lay = new QVBoxLayout(this);
    lay->addWidget(group);
    lay->addWidget(buttons);
    if (form_.hexMode())
        hex_->setChecked(true);
    else
        ascii_->setChecked(true);
    ScaleNewForm(this);
}

void FTerminalSettings::BOk_Click() {
    form_.BOk_Click();
    accept();
}

void FTerminalSettings::BCancel_Click() {
    form_.BCancel_Click();
    reject();
}

}  // namespace vortelm::ui
