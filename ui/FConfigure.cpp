#include "ui/FConfigure.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QEvent>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include <functional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "core/Host.h"
#include "core/ProgramState.h"
#include "ui/FormParts.h"
#include "ui/Scaling.h"

namespace vortelm::ui {

namespace {

// Checks a field when it loses the focus: the message goes through the
// host's box and the focus goes back to the field.
void CheckOnFocusLoss(QLineEdit* field, ProgramState& st,
                      std::function<std::string(std::string_view)> check) {
    QObject::connect(field, &QLineEdit::editingFinished, field, [field, &st, check]() {
        const std::string message = check(field->text().toStdString());
        if (message.empty()) return;
        st.host->messageBox(message, MsgButtons::Ok, MsgIcon::Exclamation);
        field->setFocus();
    });
}

void Fill(QListWidget* list, const std::vector<std::string>& lines) {
    list->clear();
    for (const std::string& l : lines) list->addItem(Q(l));
}

}  // namespace

// ---- FMemory

FMemory::FMemory(ProgramState& st, int unit, QWidget* parent)
    : QDialog(parent), logic_(st, unit), st_(st) {
    setObjectName(QStringLiteral("FMemory"));
    setWindowTitle(QStringLiteral("Memory Unit"));
    setModal(true);
    name_ = Field("TName");
    type_ = new QComboBox;
    type_->setObjectName(QStringLiteral("DType"));
    for (const char* t : forms::kMemoryTypes) type_->addItem(QString::fromUtf8(t));
    blank_ = Field("TBlank");
    burst_ = Field("TBurstsize");
    driver_ = Field("TDriverPath");
    mode_ = new QComboBox;
    mode_->setObjectName(QStringLiteral("DDriverMode"));
    for (const char* m : forms::kDriverModes) mode_->addItem(QString::fromUtf8(m));
    CheckOnFocusLoss(blank_, st, &forms::FMemory::CheckBlank);
    CheckOnFocusLoss(burst_, st, &forms::FMemory::CheckBurstSize);
    CheckOnFocusLoss(driver_, st, [this](std::string_view t) { return logic_.CheckDriverPath(t); });
    activate_ = new QListWidget;
    activate_->setObjectName(QStringLiteral("LActivate"));
    sections_ = new QListWidget;
    sections_->setObjectName(QStringLiteral("LSections"));
    features_ = new QListWidget;
    features_->setObjectName(QStringLiteral("LFeatures"));

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Name"), name_);
    form->addRow(QStringLiteral("Type"), type_);
    form->addRow(QStringLiteral("Blank value"), blank_);
    form->addRow(QStringLiteral("Burst size"), burst_);
    form->addRow(QStringLiteral("Driver"), driver_);
    form->addRow(QStringLiteral("Driver mode"), mode_);
    auto* lists = new QGridLayout;
    auto column = [&](int c, const char* caption, QListWidget* list, QPushButton* add,
                      QPushButton* remove) {
        lists->addWidget(new QLabel(QString::fromUtf8(caption)), 0, c);
        lists->addWidget(list, 1, c);
        auto* row = new QHBoxLayout;
        row->addWidget(add);
        row->addWidget(remove);
        lists->addLayout(row, 2, c);
    };
    QPushButton* addRegion = Button("BAddRegion", "Add ...");
    QPushButton* removeRegion = Button("BRemoveRegion", "Remove");
    QPushButton* addActivate = Button("BAddActivate", "Add ...");
    QPushButton* removeActivate = Button("BRemoveActivate", "Remove");
    QPushButton* addFeature = Button("BAddFeature", "Add ...");
    QPushButton* removeFeature = Button("BRemoveFeature", "Remove");
    column(0, "Sections", sections_, addRegion, removeRegion);
    column(1, "Activate registers", activate_, addActivate, removeActivate);
    column(2, "Driver features", features_, addFeature, removeFeature);
    connect(addRegion, &QPushButton::clicked, this, [this]() { BAddRegion_Click(); });
    connect(addActivate, &QPushButton::clicked, this, [this]() { BAddActivate_Click(); });
    connect(addFeature, &QPushButton::clicked, this, [this]() { BAddFeature_Click(); });
    connect(removeRegion, &QPushButton::clicked, this, [this]() {
        take();
        logic_.RemoveSection(sections_->currentRow());
        RefreshAll();
    });
    connect(removeActivate, &QPushButton::clicked, this, [this]() {
        take();
        logic_.RemoveActivate(activate_->currentRow());
        RefreshAll();
    });
    connect(removeFeature, &QPushButton::clicked, this, [this]() {
        take();
        logic_.RemoveFeature(features_->currentRow());
        RefreshAll();
    });
    auto* lay = new QVBoxLayout(this);
    lay->addLayout(form);
    lay->addLayout(lists);
    lay->addWidget(OkCancel(this, [this]() { BOk_Click(); }));
    logic_.GetMemUnit();
    RefreshAll();
    ScaleNewForm(this);
}

void FMemory::RefreshAll() {
    name_->setText(Q(logic_.TName));
    type_->setCurrentText(Q(logic_.DType));
    blank_->setText(Q(logic_.TBlank));
    burst_->setText(Q(logic_.TBurstsize));
    driver_->setText(Q(logic_.TDriverPath));
    mode_->setCurrentIndex(logic_.DDriverMode);
    Fill(activate_, logic_.LActivate);
    Fill(sections_, logic_.LSections);
    Fill(features_, logic_.LFeatures);
}

void FMemory::take() {
    logic_.TName = name_->text().toStdString();
    logic_.DType = type_->currentText().toStdString();
    logic_.TBlank = blank_->text().toStdString();
    logic_.TBurstsize = burst_->text().toStdString();
    logic_.TDriverPath = driver_->text().toStdString();
    logic_.DDriverMode = mode_->currentIndex();
}

// A small form of fields under the unit dialog: OK stores the typed unit
// fields, then runs the logic's add with the fields' texts; its message
// comes in a box and the form stays open.
bool FMemory::AddThroughForm(
    const char* name, const char* title,
    std::span<const std::pair<const char*, const char*>> fields,
    const std::function<std::string(const std::vector<std::string>&)>& add) {
    QDialog d(this);
    d.setObjectName(QString::fromUtf8(name));
    d.setWindowTitle(QString::fromUtf8(title));
    std::vector<QLineEdit*> boxes;
    auto* form = new QFormLayout;
    for (const auto& [object, caption] : fields) {
        boxes.push_back(Field(object));
        form->addRow(QString::fromUtf8(caption), boxes.back());
    }
    auto* lay = new QVBoxLayout(&d);
    lay->addLayout(form);
    lay->addWidget(OkCancel(&d, [&]() {
        take();
        std::vector<std::string> texts;
        for (QLineEdit* b : boxes) texts.push_back(b->text().toStdString());
        const std::string message = add(texts);
        if (!message.empty()) {
            st_.host->messageBox(message, MsgButtons::Ok, MsgIcon::Exclamation);
            return;
        }
        d.accept();
    }));
    ScaleNewForm(&d);
    return d.exec() == QDialog::Accepted;
}

void FMemory::BAddRegion_Click() {
    static constexpr std::pair<const char*, const char*> kFields[] = {
        {"TStart", "Start address"},
        {"TLength", "Length"},
        {"TMapStart", "Map start address"},
        {"TMapMask", "Map mask"},
        {"TMapRegister", "Map register"}};
    if (AddThroughForm("FMemoryRegions", "Memory Region", kFields,
                       [this](const std::vector<std::string>& t) {
                           return logic_.AddRegion(t[0], t[1], t[2], t[3], t[4]);
                       }))
        RefreshAll();
}

void FMemory::BAddActivate_Click() {
    static constexpr std::pair<const char*, const char*> kFields[] = {{"TRegister", "Register"},
                                                                      {"TMask", "Mask"}};
    if (AddThroughForm(
            "FMemoryActivate", "Activate Register", kFields,
            [this](const std::vector<std::string>& t) { return logic_.AddActivate(t[0], t[1]); }))
        RefreshAll();
}

void FMemory::BAddFeature_Click() {
    QDialog d(this);
    d.setObjectName(QStringLiteral("FMemoryFeature"));
    d.setWindowTitle(QStringLiteral("Driver Feature"));
    auto* list = new QComboBox;
    list->setObjectName(QStringLiteral("DFeature"));
    for (const char* f : forms::kDriverFeatures) list->addItem(QString::fromUtf8(f));
    auto* lay = new QVBoxLayout(&d);
    lay->addWidget(list);
    lay->addWidget(OkCancel(&d, [&]() {
        take();
        logic_.AddFeature(list->currentText().toStdString());
        d.accept();
    }));
    ScaleNewForm(&d);
    if (d.exec() == QDialog::Accepted) RefreshAll();
}

void FMemory::BOk_Click() {
    take();
    logic_.BOk();
    accept();
}

// ---- FConfigure

FConfigure::FConfigure(ProgramState& st, QWidget* parent) : QDialog(parent), logic_(st), st_(st) {
    setObjectName(QStringLiteral("FConfigure"));
    setWindowTitle(QStringLiteral("Target Configuration"));
    setModal(true);
    type_ = new QComboBox;
    type_->setObjectName(QStringLiteral("DMCType"));
    clock_ = Field("TClk");
    CheckOnFocusLoss(clock_, st, &forms::FConfigure::CheckClock);
    connect(type_, &QComboBox::activated, this, [this](int) {
        if (loading_) return;
        take();
        logic_.DMCType_Click(type_->currentText().toStdString());
        show_all();
    });

    auto* top = new QFormLayout;
    top->addRow(QStringLiteral("Controller type"), type_);
    top->addRow(QStringLiteral("Clock (Hz)"), clock_);
    auto* lay = new QVBoxLayout(this);
    lay->addLayout(top);
    lay->addLayout(memoryLists());
    lay->addWidget(registerGrid());
    lay->addWidget(OkCancel(this, [this]() { BOk_Click(); }));

    logic_.clear_config();
    logic_.initialize();
    logic_.get_preferences();
    show_all();
    ScaleNewForm(this);
}

// The memory units with their activated and mapped marks, and the unit
// buttons under them.
QLayout* FConfigure::memoryLists() {
    memory_ = new QListWidget;
    memory_->setObjectName(QStringLiteral("IMemoryList"));
    activated_ = new QListWidget;
    activated_->setObjectName(QStringLiteral("IMemoryActivated"));
    mapped_ = new QListWidget;
    mapped_->setObjectName(QStringLiteral("IMemoryMapped"));
    activated_->setMaximumWidth(40);
    mapped_->setMaximumWidth(40);
    connect(activated_, &QListWidget::itemClicked, this, [this](QListWidgetItem* item) {
        logic_.IMemoryActivated_Click(activated_->row(item));
        showMemoryLists();
    });
    connect(mapped_, &QListWidget::itemClicked, this, [this](QListWidgetItem* item) {
        logic_.IMemoryMapped_Click(mapped_->row(item));
        showMemoryLists();
    });
    connect(memory_, &QListWidget::itemDoubleClicked, this,
            [this](QListWidgetItem*) { BMemoryEdit_Click(); });
    QPushButton* add = Button("BMemoryAdd", "Add");
    QPushButton* edit = Button("BMemoryEdit", "Edit");
    QPushButton* remove = Button("BMemoryRemove", "Remove");
    connect(add, &QPushButton::clicked, this, [this]() { BMemoryAdd_Click(); });
    connect(edit, &QPushButton::clicked, this, [this]() { BMemoryEdit_Click(); });
    connect(remove, &QPushButton::clicked, this, [this]() { BMemoryRemove_Click(); });

    auto* lists = new QHBoxLayout;
    lists->addWidget(memory_, 1);
    lists->addWidget(activated_);
    lists->addWidget(mapped_);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(add);
    buttons->addWidget(edit);
    buttons->addWidget(remove);
    buttons->addStretch();
    auto* box = new QVBoxLayout;
    box->addLayout(lists);
    box->addLayout(buttons);
    return box;
}

// The twelve init register rows, the two generic rows and EINIT.
QGroupBox* FConfigure::registerGrid() {
    auto* regs = new QGroupBox(QStringLiteral("Initialization registers"));
    auto* grid = new QGridLayout(regs);
    for (int i = 0; i < forms::kInitRows; ++i) {
        marks_[static_cast<size_t>(i)] = new QCheckBox;
        marks_[static_cast<size_t>(i)]->setObjectName(QStringLiteral("OReg%1").arg(i));
        names_[static_cast<size_t>(i)] = new QComboBox;
        names_[static_cast<size_t>(i)]->setObjectName(QStringLiteral("TReg%1").arg(i));
        names_[static_cast<size_t>(i)]->setEditable(true);
        values_[static_cast<size_t>(i)] = new QLineEdit;
        values_[static_cast<size_t>(i)]->setObjectName(QStringLiteral("TRegValue%1").arg(i));
        CheckOnFocusLoss(values_[static_cast<size_t>(i)], st_,
                         &forms::FConfigure::CheckRegisterValue);
        const int row = i % 6;
        const int col = (i / 6) * 3;
        grid->addWidget(marks_[static_cast<size_t>(i)], row, col);
        grid->addWidget(names_[static_cast<size_t>(i)], row, col + 1);
        grid->addWidget(values_[static_cast<size_t>(i)], row, col + 2);
    }
    for (int g = 0; g < forms::kGenericRows; ++g) {
        genericMarks_[static_cast<size_t>(g)] =
            new QCheckBox(QStringLiteral("Generic %1").arg(g + 1));
        genericMarks_[static_cast<size_t>(g)]->setObjectName(QStringLiteral("CGEN%1").arg(g));
        genericAddresses_[static_cast<size_t>(g)] = Field("TGENADDR");
        genericAddresses_[static_cast<size_t>(g)]->setObjectName(
            QStringLiteral("TGENADDR%1").arg(g));
        genericData_[static_cast<size_t>(g)] = Field("TGENDATA");
        genericData_[static_cast<size_t>(g)]->setObjectName(QStringLiteral("TGENDATA%1").arg(g));
        CheckOnFocusLoss(genericAddresses_[static_cast<size_t>(g)], st_,
                         &forms::FConfigure::CheckGenericValue);
        CheckOnFocusLoss(genericData_[static_cast<size_t>(g)], st_,
                         &forms::FConfigure::CheckGenericValue);
        grid->addWidget(genericMarks_[static_cast<size_t>(g)], 6 + g, 0, 1, 2);
        grid->addWidget(genericAddresses_[static_cast<size_t>(g)], 6 + g, 2, 1, 2);
        grid->addWidget(genericData_[static_cast<size_t>(g)], 6 + g, 4, 1, 2);
    }
    einit_ = new QCheckBox(QStringLiteral("EINIT"));
    einit_->setObjectName(QStringLiteral("CEINIT"));
    grid->addWidget(einit_, 8, 0, 1, 3);

    return regs;
}

void FConfigure::show_all() {
    loading_ = true;
    type_->clear();
    for (const std::string& n : logic_.DMCTypeList) type_->addItem(Q(n));
    type_->setCurrentText(Q(logic_.DMCType));
    clock_->setText(Q(logic_.TClk));
    QStringList names;
    for (const std::string& n : logic_.sfrNames) names << Q(n);
    for (int i = 0; i < forms::kInitRows; ++i) {
        const forms::InitRow& r = logic_.rows[static_cast<size_t>(i)];
        marks_[static_cast<size_t>(i)]->setChecked(r.OReg);
        QComboBox* n = names_[static_cast<size_t>(i)];
        n->clear();
        n->addItems(names);
        n->setCurrentText(Q(r.TReg));
        values_[static_cast<size_t>(i)]->setText(Q(r.TRegValue));
    }
    for (int g = 0; g < forms::kGenericRows; ++g) {
        const forms::GenericRow& r = logic_.generic[static_cast<size_t>(g)];
        genericMarks_[static_cast<size_t>(g)]->setChecked(r.CGEN);
        genericAddresses_[static_cast<size_t>(g)]->setText(Q(r.TGENADDR));
        genericData_[static_cast<size_t>(g)]->setText(Q(r.TGENDATA));
    }
    einit_->setChecked(logic_.CEINIT);
    showMemoryLists();
    loading_ = false;
}

void FConfigure::showMemoryLists() {
    const int row = memory_->currentRow();
    Fill(memory_, logic_.IMemoryList);
    Fill(activated_, logic_.IMemoryActivated);
    Fill(mapped_, logic_.IMemoryMapped);
    if (row >= 0 && row < memory_->count()) memory_->setCurrentRow(row);
}

void FConfigure::take() {
    logic_.DMCType = type_->currentText().toStdString();
    logic_.TClk = clock_->text().toStdString();
    for (int i = 0; i < forms::kInitRows; ++i)
        logic_.rows[static_cast<size_t>(i)] = {
            marks_[static_cast<size_t>(i)]->isChecked(),
            names_[static_cast<size_t>(i)]->currentText().toStdString(),
            values_[static_cast<size_t>(i)]->text().toStdString()};
    for (int g = 0; g < forms::kGenericRows; ++g)
        logic_.generic[static_cast<size_t>(g)] = {
            genericMarks_[static_cast<size_t>(g)]->isChecked(),
            genericAddresses_[static_cast<size_t>(g)]->text().toStdString(),
            genericData_[static_cast<size_t>(g)]->text().toStdString()};
    logic_.CEINIT = einit_->isChecked();
}

void FConfigure::BOk_Click() {
    take();
    logic_.BOk();
    emit stored();
    accept();
}

void FConfigure::BMemoryAdd_Click() {
    take();
    const int unit = logic_.BMemoryAdd();
    FMemory m(st_, unit, this);
    (void)m.exec();
    logic_.RefreshMemoryList();
    showMemoryLists();
}

void FConfigure::BMemoryEdit_Click() {
    const int unit = logic_.BMemoryEdit(memory_->currentRow());
    if (unit < 0) return;
    FMemory m(st_, unit, this);
    (void)m.exec();
    logic_.RefreshMemoryList();
    showMemoryLists();
}

void FConfigure::BMemoryRemove_Click() {
    logic_.BMemoryRemove(memory_->currentRow());
    showMemoryLists();
}

}  // namespace vortelm::ui
