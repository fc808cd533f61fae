#include "ui/FKernel.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "core/Host.h"
#include "core/ProgramState.h"
#include "ui/FormParts.h"
#include "ui/Scaling.h"

namespace vortelm::ui {

// ---- FKernelEdit

FKernelEdit::FKernelEdit(ProgramState& st, int index, QWidget* parent)
    : QDialog(parent), logic_(st, index), st_(st) {
    setObjectName(QStringLiteral("FKernelEdit"));
    setWindowTitle(QStringLiteral("Kernel"));
    setModal(true);
    name_ = Field("TName");
    monitor_ = Field("TVortelmPath");
    loader_ = Field("TLoaderPath");
    start_ = Field("TStart");
    end_ = Field("TEnd");
    patch_ = Field("TPatchStart");
    ack_ = new QCheckBox(QStringLiteral("Loader acknowledges"));
    ack_->setObjectName(QStringLiteral("CLoaderAck"));
    features_ = new QListWidget;
    features_->setObjectName(QStringLiteral("LFeatures"));
    features_->installEventFilter(this);
    connect(monitor_, &QLineEdit::editingFinished, this, [this]() {
        take();
        logic_.TVortelmPath_LostFocus();
        start_->setText(Q(logic_.TStart));
        end_->setText(Q(logic_.TEnd));
    });
    QPushButton* add = Button("BAddFeature", "Add ...");
    QPushButton* remove = Button("BRemove", "Remove");
    connect(add, &QPushButton::clicked, this, [this]() { BAddFeature_Click(); });
    connect(remove, &QPushButton::clicked, this, [this]() {
        logic_.BRemove(features_->currentRow());
        showFeatures();
    });
    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Name"), name_);
    form->addRow(QStringLiteral("Monitor file"), monitor_);
    form->addRow(QStringLiteral("Loader file"), loader_);
    form->addRow(QStringLiteral("Start address"), start_);
    form->addRow(QStringLiteral("End address"), end_);
    form->addRow(QStringLiteral("Patch start address"), patch_);
    form->addRow(QString(), ack_);
    auto* row = new QHBoxLayout;
    row->addWidget(add);
    row->addWidget(remove);
    auto* lay = new QVBoxLayout(this);
    lay->addLayout(form);
    lay->addWidget(features_);
    lay->addLayout(row);
    lay->addWidget(OkCancel(this, [this]() { BOk_Click(); }));
    name_->setText(Q(logic_.TName));
    monitor_->setText(Q(logic_.TVortelmPath));
    loader_->setText(Q(logic_.TLoaderPath));
    start_->setText(Q(logic_.TStart));
    end_->setText(Q(logic_.TEnd));
    patch_->setText(Q(logic_.TPatchStart));
    ack_->setChecked(logic_.CLoaderAck);
    showFeatures();
    ScaleNewForm(this);
}

void FKernelEdit::take() {
    logic_.TName = name_->text().toStdString();
    logic_.TVortelmPath = monitor_->text().toStdString();
    logic_.TLoaderPath = loader_->text().toStdString();
    logic_.TStart = start_->text().toStdString();
    logic_.TEnd = end_->text().toStdString();
    logic_.TPatchStart = patch_->text().toStdString();
    logic_.CLoaderAck = ack_->isChecked();
}

void FKernelEdit::showFeatures() {
    features_->clear();
    for (const std::string& f : logic_.LFeatures) features_->addItem(Q(f));
}

void FKernelEdit::BOk_Click() {
    take();
    const std::string message = logic_.BOk();
    if (!message.empty()) {
        st_.host->messageBox(message, MsgButtons::Ok, MsgIcon::Exclamation);
        return;
    }
    accept();
}

// FKernelSelectFeature: the known feature names; a double click or OK adds.
void FKernelEdit::BAddFeature_Click() {
    QDialog d(this);
    d.setObjectName(QStringLiteral("FKernelSelectFeature"));
    d.setWindowTitle(QStringLiteral("Select Feature"));
    auto* list = new QListWidget;
    list->setObjectName(QStringLiteral("LFeatureNames"));
    for (const std::string& n : forms::FKernelSelectFeatureNames(st_)) list->addItem(Q(n));
    auto add = [&]() {
        if (list->currentItem()) logic_.BAddFeature(list->currentItem()->text().toStdString());
        d.accept();
    };
    connect(list, &QListWidget::itemDoubleClicked, &d, [&](QListWidgetItem*) { add(); });
    auto* lay = new QVBoxLayout(&d);
    lay->addWidget(list);
    lay->addWidget(OkCancel(&d, add));
    ScaleNewForm(&d);
    (void)d.exec();
    showFeatures();
}

bool FKernelEdit::eventFilter(QObject* watched, QEvent* event) {
    if (watched == features_ && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Delete) {
        logic_.BRemove(features_->currentRow());
        showFeatures();
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

// ---- FKernel

FKernel::FKernel(ProgramState& st, QWidget* parent) : QDialog(parent), logic_(st), st_(st) {
    setObjectName(QStringLiteral("FKernel"));
    setWindowTitle(QStringLiteral("Kernels"));
    setModal(true);
    list_ = new QListWidget;
    list_->setObjectName(QStringLiteral("LKernel"));
    list_->setMinimumWidth(480);
    connect(list_, &QListWidget::itemDoubleClicked, this,
            [this](QListWidgetItem*) { BEdit_Click(); });
    QPushButton* activate = Button("BActivate", "Activate");
    QPushButton* add = Button("BAdd", "Add");
    QPushButton* edit = Button("BEdit", "Edit");
    QPushButton* remove = Button("BRemove", "Remove");
    connect(activate, &QPushButton::clicked, this, [this]() {
        logic_.BActivate(list_->currentRow());
        RefreshKernelList();
    });
    connect(add, &QPushButton::clicked, this, [this]() { BAdd_Click(); });
    connect(edit, &QPushButton::clicked, this, [this]() { BEdit_Click(); });
    connect(remove, &QPushButton::clicked, this, [this]() {
        logic_.BRemove(list_->currentRow());
        RefreshKernelList();
    });
    auto* row = new QHBoxLayout;
    for (QPushButton* b : {activate, add, edit, remove}) row->addWidget(b);
    auto* lay = new QVBoxLayout(this);
    lay->addWidget(list_);
    lay->addLayout(row);
    lay->addWidget(OkCancel(this, [this]() { BOk_Click(); }));
    RefreshKernelList();
    ScaleNewForm(this);
}

void FKernel::RefreshKernelList() {
    const int row = list_->currentRow();
    logic_.RefreshKernelList();
    list_->clear();
    for (const std::string& l : logic_.LKernel()) list_->addItem(Q(l));
    if (row >= 0 && row < list_->count()) list_->setCurrentRow(row);
}

void FKernel::BAdd_Click() {
    const int index = logic_.BAdd();
    RefreshKernelList();
    list_->setCurrentRow(index);
    FKernelEdit e(st_, index, this);
    (void)e.exec();
    RefreshKernelList();
}

void FKernel::BEdit_Click() {
    const int index = logic_.BEdit(list_->currentRow());
    if (index < 0) return;
    FKernelEdit e(st_, index, this);
    (void)e.exec();
    RefreshKernelList();
}

void FKernel::BOk_Click() {
    logic_.BOk();
    accept();
}

}  // namespace vortelm::ui
