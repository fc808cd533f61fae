#include "ui/FFlash.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/Scaling.h"

namespace vortelm::ui {

FFlash::FFlash(ProgramState& st, target::Target& t, QWidget* parent)
    : QDialog(parent), form_(st, t) {
    setObjectName(QStringLiteral("FFlash"));
    units_ = new QComboBox;
    units_->setObjectName(QStringLiteral("DMemUnit"));
    sections_ = new QListWidget;
    sections_->setObjectName(QStringLiteral("ISections"));
    sections_->setSelectionMode(QAbstractItemView::MultiSelection);
    bits_ = new QListWidget;
    bits_->setObjectName(QStringLiteral("IBits"));
    passwordLabel_ = new QLabel(QStringLiteral("Password:"));
    passwordLabel_->setObjectName(QStringLiteral("LPassword"));
    password_ = new QLineEdit;
    password_->setObjectName(QStringLiteral("TPassword"));
    password_->setEchoMode(QLineEdit::Password);

    connect(units_, &QComboBox::activated, this, [this](int line) {
        form_.DMemUnit_Click(line);
        drawSections();
    });
    connect(sections_, &QListWidget::itemSelectionChanged, this, [this]() {
        for (int i = 0; i < sections_->count(); ++i)
            form_.setSectionSelected(i, sections_->item(i)->isSelected());
    });
    connect(sections_, &QListWidget::currentRowChanged, this, [this](int line) {
        form_.ISections_Click(line);
        bits_->clear();
        for (const std::string& f : form_.bitFields()) bits_->addItem(QString::fromStdString(f));
    });
    connect(password_, &QLineEdit::textChanged, this,
            [this](const QString& text) { form_.password = text.toStdString(); });

    auto* buttons = new QDialogButtonBox;
    QPushButton* ok = buttons->addButton(QDialogButtonBox::Ok);
    ok->setObjectName(QStringLiteral("BOk"));
    QPushButton* cancel = buttons->addButton(QDialogButtonBox::Cancel);
    cancel->setObjectName(QStringLiteral("BCancel"));
    connect(ok, &QPushButton::clicked, this, [this]() {
        form_.BOk_Click();
        accept();
    });
    connect(cancel, &QPushButton::clicked, this, [this]() {
        form_.BCancel_Click();
        reject();
    });

    auto* lay = new QVBoxLayout(this);
    lay->addWidget(new QLabel(QStringLiteral("Device:")));
    lay->addWidget(units_);
    lay->addWidget(sections_);
    lay->addWidget(bits_);
    lay->addWidget(passwordLabel_);
    lay->addWidget(password_);
    lay->addWidget(buttons);
    resize(460, 420);
    ScaleNewForm(this);
}

void FFlash::setfeature(std::string_view feature1) {
    form_.setfeature(feature1);
    draw();
}

void FFlash::draw() {
    setWindowTitle(QString::fromStdString(form_.caption()));
    units_->clear();
    for (const std::string& n : form_.memUnits()) units_->addItem(QString::fromStdString(n));
    units_->setCurrentIndex(form_.memUnitLine());
    sections_->setVisible(form_.sectionsVisible());
    bits_->setVisible(form_.mode() == "STATUS");
    password_->setVisible(form_.passwordVisible());
    passwordLabel_->setVisible(form_.passwordVisible());
    password_->clear();
    drawSections();
}

void FFlash::drawSections() {
    const QSignalBlocker block(sections_);
    sections_->clear();
    bits_->clear();
    for (const std::string& line : form_.sections())
        sections_->addItem(QString::fromStdString(line));
}

}  // namespace vortelm::ui
