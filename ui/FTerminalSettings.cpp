#include "ui/FTerminalSettings.h"

#include <QDialogButtonBox>
#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace vortelm::ui {

FTerminalSettings::FTerminalSettings(ProgramState& st, QWidget* parent) : QDialog(parent), st_(st) {
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
    connect(ascii_, &QRadioButton::clicked, this, [this]() { workingMode = 2; });
    connect(hex_, &QRadioButton::clicked, this, [this]() { workingMode = 1; });

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
    GetPreferences();
}

void FTerminalSettings::GetPreferences() {
    workingMode = st_.TMODE;
    if (workingMode == 1)
        hex_->setChecked(true);
    else
        ascii_->setChecked(true);
}

void FTerminalSettings::SetPreferences() { st_.TMODE = workingMode; }

void FTerminalSettings::BOk_Click() {
    SetPreferences();
    accept();
}

void FTerminalSettings::BCancel_Click() { reject(); }

}  // namespace vortelm::ui
