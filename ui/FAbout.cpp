#include "ui/FAbout.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace vortelm::ui {

FAbout::FAbout(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("FAbout"));
    setWindowTitle(QString::fromUtf8(forms::FAbout::kTitle));
    auto* lay = new QVBoxLayout(this);
    const std::vector<std::string> lines = logic_.lines();
    const char* names[] = {"LVersion", "LDescription", "LBuildDate", "LLicence"};
    for (size_t i = 0; i < lines.size(); ++i) {
        auto* label = new QLabel(QString::fromStdString(lines[i]));
        label->setObjectName(QString::fromUtf8(i < std::size(names) ? names[i] : "LLine"));
        label->setWordWrap(true);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        if (i == 0) {
            QFont f = label->font();
            f.setBold(true);
            f.setPointSizeF(f.pointSizeF() * 1.3);
            label->setFont(f);
        }
        lay->addWidget(label);
    }
    auto* buttons = new QDialogButtonBox;
    QPushButton* ok = buttons->addButton(QDialogButtonBox::Ok);
    ok->setObjectName(QStringLiteral("BOk"));
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    lay->addWidget(buttons);
    setMinimumWidth(360);
}

FInfo::FInfo(QWidget* parent) : QWidget(parent, Qt::SplashScreen) {
    setObjectName(QStringLiteral("FInfo"));
    setWindowTitle(QString::fromUtf8(forms::FInfo::kCaption));
    auto* caption = new QLabel(QString::fromUtf8(forms::FInfo::kCaption));
    bar_ = new QProgressBar;
    bar_->setObjectName(QStringLiteral("XProgress"));
    bar_->setRange(0, 100);
    auto* lay = new QVBoxLayout(this);
    lay->addWidget(caption);
    lay->addWidget(bar_);
    setMinimumWidth(300);
}

void FInfo::progress(long long value, long long maximum) {
    logic_.progress(value, maximum);
    bar_->setValue(logic_.XProgress());
    if (!logic_.visible()) hide();
}

}  // namespace vortelm::ui
