#include "ui/FFrontendSettings.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFrame>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/Colours.h"
#include "ui/FormParts.h"
#include "ui/Scaling.h"

namespace vortelm::ui {

FFrontendSettings::FFrontendSettings(ProgramState& st, QWidget* parent)
    : QDialog(parent), logic_(st) {
    setObjectName(QStringLiteral("FFrontendSettings"));
    setWindowTitle(QString::fromUtf8(forms::FFrontendSettings::kTitle));
    log_ = new QCheckBox(QStringLiteral("Enable Log File"));
    log_->setObjectName(QStringLiteral("OLog"));
    refreshSfr_ = new QCheckBox(QStringLiteral("Refresh SFR Window"));
    refreshSfr_->setObjectName(QStringLiteral("ORefreshsfr"));
    blank_ = Field("TBlankchar");
    scale_ = Field("TScaleFactor");

    auto* grid = new QGridLayout;
    int row = 0;
    grid->addWidget(log_, row++, 0, 1, 3);
    grid->addWidget(refreshSfr_, row++, 0, 1, 3);
    grid->addWidget(new QLabel(QStringLiteral("Blank Char")), row, 0);
    grid->addWidget(blank_, row++, 1);
    for (int i = 0; i < forms::kColourBoxes; ++i) {
        const forms::ColourControl& c = forms::kColourControls[static_cast<size_t>(i)];
        colours_[static_cast<size_t>(i)] = Field(c.box);
        auto* preview = new QFrame;
        preview->setObjectName(QString::fromUtf8(c.preview));
        preview->setFrameShape(QFrame::Box);
        preview->setMinimumSize(32, 16);
        preview->setAutoFillBackground(true);
        previews_[static_cast<size_t>(i)] = preview;
        grid->addWidget(new QLabel(QString::fromUtf8(c.caption)), row, 0);
        grid->addWidget(colours_[static_cast<size_t>(i)], row, 1);
        grid->addWidget(preview, row++, 2);
        connect(colours_[static_cast<size_t>(i)], &QLineEdit::textChanged, this,
                [this, i](const QString& text) {
                    logic_.colours[static_cast<size_t>(i)] = text.toStdString();
                    showPreview(i);
                });
    }
    grid->addWidget(new QLabel(QStringLiteral("Scale Factor")), row, 0);
    grid->addWidget(scale_, row++, 1);

    auto* buttons = new QDialogButtonBox;
    QPushButton* ok = buttons->addButton(QDialogButtonBox::Ok);
    ok->setObjectName(QStringLiteral("BOk"));
    QPushButton* cancel = buttons->addButton(QDialogButtonBox::Cancel);
    cancel->setObjectName(QStringLiteral("BCancel"));
    connect(ok, &QPushButton::clicked, this, [this]() { BOk_Click(); });
    connect(cancel, &QPushButton::clicked, this, [this]() { BCancel_Click(); });
    auto* lay = new QVBoxLayout(this);
    lay->addLayout(grid);
    lay->addWidget(buttons);
    get_preferences();
}

void FFrontendSettings::get_preferences() {
    logic_.get_preferences();
    log_->setChecked(logic_.OLog);
    refreshSfr_->setChecked(logic_.ORefreshsfr);
    blank_->setText(QString::fromStdString(logic_.TBlankchar));
    scale_->setText(QString::fromStdString(logic_.TScaleFactor));
    for (int i = 0; i < forms::kColourBoxes; ++i) {
        colours_[static_cast<size_t>(i)]->setText(
            QString::fromStdString(logic_.colours[static_cast<size_t>(i)]));
        showPreview(i);
    }
}

// The preview shows the colour as the hex page will; a text that is no
// colour shows none.
void FFrontendSettings::showPreview(int box) {
    const int32_t c = logic_.preview(static_cast<forms::ColourBox>(box));
    QFrame* p = previews_[static_cast<size_t>(box)];
    QPalette pal = p->palette();
    pal.setColor(QPalette::Window, c < 0 ? QColor(Qt::transparent) : ColourFromKey(c));
    p->setPalette(pal);
}

void FFrontendSettings::BOk_Click() {
    logic_.OLog = log_->isChecked();
    logic_.ORefreshsfr = refreshSfr_->isChecked();
    logic_.TBlankchar = blank_->text().toStdString();
    for (int i = 0; i < forms::kColourBoxes; ++i)
        logic_.colours[static_cast<size_t>(i)] =
            colours_[static_cast<size_t>(i)]->text().toStdString();
    logic_.TScaleFactor = scale_->text().toStdString();
    if (const std::optional<double> factor = logic_.BOk()) ScaleForms(*factor, *factor);
    emit settingsStored();
    hide();
}

void FFrontendSettings::BCancel_Click() {
    hide();
}

}  // namespace vortelm::ui
