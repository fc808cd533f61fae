#include "ui/FPrint.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QFormLayout>
#include <QGroupBox>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace vortelm::ui {

FPrint::FPrint(ProgramState& st, shell::DecodeAt decode, QWidget* parent)
    : QDialog(parent), logic_(st, std::move(decode)) {
    setObjectName(QStringLiteral("FPrint"));
    setWindowTitle(QStringLiteral("Print"));
    printers_ = new QComboBox;
    printers_->setObjectName(QStringLiteral("DPrinterlist"));
    auto* styles = new QGroupBox(QStringLiteral("Style"));
    text_ = new QRadioButton(QStringLiteral("Text"));
    text_->setObjectName(QStringLiteral("OText"));
    hex_ = new QRadioButton(QStringLiteral("Hexadezimal"));
    hex_->setObjectName(QStringLiteral("OHex"));
    assembler_ = new QRadioButton(QStringLiteral("Assembler Code"));
    assembler_->setObjectName(QStringLiteral("OAssembler"));
    auto* sl = new QVBoxLayout(styles);
    sl->addWidget(text_);
    sl->addWidget(hex_);
    sl->addWidget(assembler_);
    connect(text_, &QRadioButton::toggled, this, [this](bool on) {
        if (on) logic_.setStyle(forms::PrintStyle::Text);
    });
    connect(hex_, &QRadioButton::toggled, this, [this](bool on) {
        if (on) logic_.setStyle(forms::PrintStyle::Hex);
    });
    connect(assembler_, &QRadioButton::toggled, this, [this](bool on) {
        if (on) logic_.setStyle(forms::PrintStyle::Assembler);
    });
    connect(printers_, &QComboBox::currentIndexChanged, this,
            [this](int i) { logic_.setPrinter(i); });

    auto* buttons = new QDialogButtonBox;
    QPushButton* ok = buttons->addButton(QDialogButtonBox::Ok);
    ok->setObjectName(QStringLiteral("BOk"));
    QPushButton* cancel = buttons->addButton(QDialogButtonBox::Cancel);
    cancel->setObjectName(QStringLiteral("BCancel"));
    connect(ok, &QPushButton::clicked, this, [this]() { BOk_Click(); });
    connect(cancel, &QPushButton::clicked, this, [this]() { BCancel_Click(); });

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Printer"), printers_);
    auto* lay = new QVBoxLayout(this);
    lay->addLayout(form);
    lay->addWidget(styles);
    lay->addWidget(buttons);
    Form_Load();
}

void FPrint::Form_Load() {
    std::vector<std::string> names;
    for (const QString& n : QPrinterInfo::availablePrinterNames()) names.push_back(n.toStdString());
    logic_.Form_Load(names);
    printers_->blockSignals(true);
    printers_->clear();
    for (const std::string& n : logic_.printers()) printers_->addItem(QString::fromStdString(n));
    printers_->setCurrentIndex(logic_.printer());
    printers_->blockSignals(false);
    assembler_->setEnabled(logic_.assemblerEnabled());
    switch (logic_.style()) {
        case forms::PrintStyle::Text:
            text_->setChecked(true);
            break;
        case forms::PrintStyle::Hex:
            hex_->setChecked(true);
            break;
        case forms::PrintStyle::Assembler:
            assembler_->setChecked(true);
            break;
    }
}

void FPrint::BOk_Click() {
    const std::vector<std::string> lines = logic_.BOk();
    QPrinter printer(QPrinter::HighResolution);
    if (!outputFile_.isEmpty()) {
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(outputFile_);
    } else {
        if (logic_.printer() >= 0)
            printer.setPrinterName(
                QString::fromStdString(logic_.printers()[static_cast<size_t>(logic_.printer())]));
        QPrintDialog dialog(&printer, this);
        if (dialog.exec() != QDialog::Accepted) return;
    }
    (void)PrintLines(printer, lines);
    hide();
}

void FPrint::BCancel_Click() {
    hide();
}

bool PrintLines(QPrinter& printer, const std::vector<std::string>& lines) {
    QPainter painter;
    if (!painter.begin(&printer)) return false;
    QFont font(QString::fromUtf8(forms::kPrintFont));
    font.setStyleHint(QFont::Monospace);
    font.setFixedPitch(true);
    font.setPointSizeF(9);
    if (!QFontInfo(font).fixedPitch()) {
        const qreal size = font.pointSizeF();
        font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
        font.setPointSizeF(size);
    }
    painter.setFont(font);
    const QFontMetrics metrics(font, &printer);
    const QRect page = painter.viewport();
    const int lineHeight = metrics.lineSpacing();
    int y = metrics.ascent();
    for (const std::string& line : lines) {
        if (y + metrics.descent() > page.height()) {
            printer.newPage();
            y = metrics.ascent();
        }
        painter.drawText(0, y,
                         QString::fromLatin1(line.data(), static_cast<qsizetype>(line.size())));
        y += lineHeight;
    }
    return painter.end();
}

}  // namespace vortelm::ui
