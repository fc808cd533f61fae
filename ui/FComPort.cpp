#include "ui/FComPort.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "link/ComPort.h"
#include "ui/Scaling.h"

namespace vortelm::ui {

namespace {

QComboBox* List(const char* name, const std::vector<std::string>& items, int index) {
    auto* c = new QComboBox;
    c->setObjectName(QString::fromUtf8(name));
    for (const std::string& s : items) c->addItem(QString::fromStdString(s));
    c->setCurrentIndex(index);
    return c;
}

}  // namespace

FComPort::FComPort(link::ComPort& port, QWidget* parent) : QDialog(parent), form_(port) {
    setObjectName(QStringLiteral("FComPort"));
    setWindowTitle(QStringLiteral("Interface Settings"));

    // The list shows what is known about each device beside its path; the
    // entry's index is what the dialog stores.
    portNumber_ = List("DPortNumber", form_.portLines, form_.DPortNumber);
    auto* baud = List("DBaudrate", form_.baudItems, form_.DBaudrate);
    auto* parity = List("DParity", form_.parityItems, form_.DParity);
    auto* data = List("DData", form_.dataItems, form_.DData);
    auto* stop = List("DStopbits", form_.stopItems, form_.DStopbits);
    auto* kline = new QCheckBox(QStringLiteral("K-Line (one-wire, echoes every byte)"));
    kline->setObjectName(QStringLiteral("CKline"));
    kline->setChecked(form_.CKline);
    auto* check = new QCheckBox(QStringLiteral("Check the connection"));
    check->setObjectName(QStringLiteral("CCheckConnection"));
    check->setChecked(form_.CCheckConnection);
    auto text = [](const char* name, const std::string& value) {
        auto* e = new QLineEdit(QString::fromStdString(value));
        e->setObjectName(QString::fromUtf8(name));
        return e;
    };
    timeout_ = text("TTimeout", form_.TTimeout);
    connectTimeout_ = text("TConnectTimeout", form_.TConnectTimeout);
    connectRetry_ = text("TConnectRetry", form_.TConnectRetry);

    connect(portNumber_, &QComboBox::activated, this,
            [this](int i) { form_.DPortNumber_Click(i); });
    connect(baud, &QComboBox::activated, this, [this](int i) { form_.DBaudrate_Click(i); });
    connect(parity, &QComboBox::activated, this, [this](int i) { form_.DParity_Click(i); });
    connect(data, &QComboBox::activated, this, [this](int i) { form_.DData_Click(i); });
    connect(stop, &QComboBox::activated, this, [this](int i) { form_.DStopbits_Click(i); });
    connect(kline, &QCheckBox::clicked, this, [this](bool on) { form_.CKline_Click(on); });
    connect(check, &QCheckBox::clicked, this,
            [this](bool on) { form_.CCheckConnection_Click(on); });

    auto* formLayout = new QFormLayout;
    formLayout->addRow(QStringLiteral("Port:"), portNumber_);
    formLayout->addRow(QStringLiteral("Baud rate:"), baud);
    formLayout->addRow(QStringLiteral("Parity:"), parity);
    formLayout->addRow(QStringLiteral("Data bits:"), data);
    formLayout->addRow(QStringLiteral("Stop bits:"), stop);
    formLayout->addRow(QString(), kline);
    formLayout->addRow(QString(), check);
    formLayout->addRow(QStringLiteral("Time-out (ms):"), timeout_);
    formLayout->addRow(QStringLiteral("Connect time-out (ms):"), connectTimeout_);
    formLayout->addRow(QStringLiteral("Connect retries:"), connectRetry_);

    auto* buttons = new QDialogButtonBox;
    QPushButton* ok = buttons->addButton(QDialogButtonBox::Ok);
    ok->setObjectName(QStringLiteral("BOk"));
    QPushButton* cancel = buttons->addButton(QDialogButtonBox::Cancel);
    cancel->setObjectName(QStringLiteral("BCancel"));
    connect(ok, &QPushButton::clicked, this, [this]() { BOk_Click(); });
    connect(cancel, &QPushButton::clicked, this, [this]() { BCancel_Click(); });

    auto* lay = new QVBoxLayout(this);
    lay->addLayout(formLayout);
    lay->addWidget(buttons);
    setMinimumWidth(480);
    ScaleNewForm(this);
}

FComPort::~FComPort() = default;

void FComPort::showEvent(QShowEvent* e) {
    form_.visible = true;
    QDialog::showEvent(e);
}

void FComPort::hideEvent(QHideEvent* e) {
    form_.visible = false;
    QDialog::hideEvent(e);
}

void FComPort::BOk_Click() {
    form_.TTimeout = timeout_->text().toStdString();
    form_.TConnectTimeout = connectTimeout_->text().toStdString();
    form_.TConnectRetry = connectRetry_->text().toStdString();
    form_.BOk_Click();
    accept();
}

void FComPort::BCancel_Click() {
    form_.BCancel_Click();
    reject();
}

}  // namespace vortelm::ui
