#include "ui/FileDialogs.h"

#include <algorithm>

#include <QButtonGroup>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QRadioButton>
#include <QVBoxLayout>

#include "core/RunTimeError.h"
#include "core/Text.h"
#include "shell/Session.h"
#include "ui/FormParts.h"

namespace vortelm::ui {

namespace {

QListWidget* List(const char* name) {
    auto* l = new QListWidget;
    l->setObjectName(QString::fromUtf8(name));
    return l;
}

void Fill(QListWidget* list, const std::vector<std::string>& items) {
    list->clear();
    for (const std::string& s : items) list->addItem(Q(s));
}

QLineEdit* Box(const char* name, const std::string& text) {
    QLineEdit* e = Field(name);
    e->setText(Q(text));
    return e;
}

// The pane above and the form's own rows and OK/Cancel below.
void Arrange(QDialog* d, QWidget* pane, QLayout* own, QDialogButtonBox* buttons) {
    auto* lay = new QVBoxLayout(d);
    if (pane) lay->addWidget(pane, 1);
    if (own) lay->addLayout(own);
    lay->addWidget(buttons);
}

}  // namespace

bool GuardedOk(ProgramState& st, const std::function<bool()>& ok) {
    try {
        return ok();
    } catch (const RunTimeError& e) {
        Text2Buffer(st, std::string("\r\n*ERROR: ") + e.what());
        return true;
    }
}

// ---- the lists

FileBrowserPane::FileBrowserPane(forms::FileBrowser& form, std::function<void()> ok,
                                 QWidget* parent)
    : QWidget(parent), form_(form) {
    places_ = new QComboBox;
    places_->setObjectName(QStringLiteral("XDrivelist"));
    dirs_ = List("XDirlist");
    files_ = List("XFilelist");
    types_ = new QComboBox;
    types_->setObjectName(QStringLiteral("DFiletype"));
    name_ = Field("TFilename");

    connect(places_, &QComboBox::activated, this, [this](int i) {
        (void)form_.XDrivelist_Change(i);
        redraw();
    });
    connect(dirs_, &QListWidget::itemActivated, this, [this](QListWidgetItem* item) {
        form_.XDirlist_DblClick(dirs_->row(item));
        redraw();
    });
    connect(files_, &QListWidget::currentRowChanged, this, [this](int row) {
        if (row < 0) return;
        form_.XFilelist_Click(row);
        name_->setText(Q(form_.TFilename));
    });
    connect(files_, &QListWidget::itemActivated, this, [this, ok](QListWidgetItem* item) {
        form_.XFilelist_Click(files_->row(item));
        name_->setText(Q(form_.TFilename));
        ok();
    });
    connect(types_, &QComboBox::activated, this, [this](int i) {
        form_.DFiletype_Click(i);
        if (typeChanged) typeChanged();
        redraw();
    });
    connect(name_, &QLineEdit::returnPressed, this, [ok]() { ok(); });

    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->addWidget(new QLabel(QStringLiteral("File name:")), 0, 0);
    grid->addWidget(name_, 1, 0);
    grid->addWidget(files_, 2, 0);
    grid->addWidget(new QLabel(QStringLiteral("File type:")), 3, 0);
    grid->addWidget(types_, 4, 0);
    grid->addWidget(new QLabel(QStringLiteral("Folders:")), 0, 1);
    grid->addWidget(dirs_, 1, 1, 2, 1);
    grid->addWidget(new QLabel(QStringLiteral("Places:")), 3, 1);
    grid->addWidget(places_, 4, 1);
    grid->setRowStretch(2, 1);
    setMinimumSize(560, 320);
    redraw();
}

void FileBrowserPane::redraw() {
    places_->clear();
    for (const forms::Place& p : form_.places)
        places_->addItem(Q(p.caption == p.path ? p.path : p.caption + "  (" + p.path + ")"));
    places_->setCurrentIndex(form_.XDrivelist);
    types_->clear();
    for (const forms::FileType& t : form_.types) types_->addItem(Q(t.caption));
    types_->setCurrentIndex(form_.DFiletype);
    Fill(dirs_, form_.XDirlist);
    dirs_->setToolTip(Q(form_.folder));
    files_->blockSignals(true);
    Fill(files_, form_.XFilelist);
    files_->blockSignals(false);
    name_->setText(Q(form_.TFilename));
}

void FileBrowserPane::take() {
    form_.TFilename = name_->text().toStdString();
}

void FileBrowserPane::focusName() {
    name_->setFocus();
}

// ---- load and save

FFileLoad::FFileLoad(shell::Session& s, forms::LoadType type, QWidget* parent)
    : QDialog(parent), form_(s) {
    setObjectName(QStringLiteral("FFileLoad"));
    form_.SetType(type);
    setWindowTitle(Q(form_.title));
    pane_ = new FileBrowserPane(
        form_, [this]() { BOk_Click(); }, this);
    Arrange(this, pane_, nullptr, OkCancel(this, [this]() { BOk_Click(); }));
}

void FFileLoad::BOk_Click() {
    pane_->take();
    if (GuardedOk(form_.st(), [this]() { return form_.BOk_Click(); })) accept();
}

FFileSave::FFileSave(ProgramState& st, forms::SaveType type, QWidget* parent)
    : QDialog(parent), form_(st) {
    setObjectName(QStringLiteral("FFileSave"));
    form_.SetType(type);
    setWindowTitle(Q(form_.title));
    pane_ = new FileBrowserPane(
        form_, [this]() { BOk_Click(); }, this);
    Arrange(this, pane_, nullptr, OkCancel(this, [this]() { BOk_Click(); }));
}

void FFileSave::BOk_Click() {
    pane_->take();
    if (GuardedOk(form_.st(), [this]() { return form_.BOk_Click(); }))
        accept();
    else if (form_.focusFilename)
        pane_->focusName();
}

// ---- save as

FSaveAs::FSaveAs(ProgramState& st, QWidget* parent) : QDialog(parent), form_(st) {
    setObjectName(QStringLiteral("FSaveAs"));
    setWindowTitle(QStringLiteral("Save File as"));
    form_.initialize();
    pane_ = new FileBrowserPane(
        form_, [this]() { BOk_Click(); }, this);
    pane_->typeChanged = [this]() { drawFormats(); };

    bySelection_ = new QRadioButton(QStringLiteral("By Selection"));
    bySelection_->setObjectName(QStringLiteral("OBySelection"));
    byBlock_ = new QRadioButton(QStringLiteral("Block:"));
    byBlock_->setObjectName(QStringLiteral("OByBlock"));
    (form_.OBySelection ? bySelection_ : byBlock_)->setChecked(true);
    start_ = Box("TStartAddress", form_.TStartAddress);
    end_ = Box("TEndAddress", form_.TEndAddress);
    recordSize_ = Box("TRecordsize", form_.TRecordsize);
    connect(start_, &QLineEdit::textEdited, this,
            [this](const QString& t) { (void)form_.TStartAddress_Change(t.toStdString()); });
    connect(end_, &QLineEdit::textEdited, this,
            [this](const QString& t) { (void)form_.TEndAddress_Change(t.toStdString()); });

    auto* where = new QHBoxLayout;
    where->addWidget(bySelection_);
    where->addWidget(byBlock_);
    where->addWidget(start_);
    where->addWidget(new QLabel(QStringLiteral("-")));
    where->addWidget(end_);
    auto* group = new QGroupBox(QStringLiteral("Format"));
    group->setObjectName(QStringLiteral("OFormat"));
    auto* fl = new QHBoxLayout(group);
    const std::pair<int, const char*> captions[] = {
        {20, "20 Bit (Type 2)"}, {32, "32 Bit (Type 4)"}, {19, "S19"}, {28, "S28"}, {37, "S37"}};
    for (const auto& [code, caption] : captions) {
        auto* r = new QRadioButton(QString::fromUtf8(caption));
        r->setObjectName(QStringLiteral("O%1").arg(code));
        connect(r, &QRadioButton::toggled, this, [this, c = code](bool on) {
            if (on) form_.OFormat = c;
        });
        fl->addWidget(r);
        formats_[code] = r;
    }
    auto* own = new QFormLayout;
    own->addRow(QStringLiteral("Location:"), where);
    own->addRow(QStringLiteral("Record size:"), recordSize_);
    own->addRow(group);
    drawFormats();
    Arrange(this, pane_, own, OkCancel(this, [this]() { BOk_Click(); }));
}

void FSaveAs::drawFormats() {
    const std::vector<int> offered = form_.formats();
    for (auto& [code, r] : formats_) {
        const bool on = std::find(offered.begin(), offered.end(), code) != offered.end();
        r->setVisible(on);
        if (code == form_.OFormat) r->setChecked(true);
    }
}

void FSaveAs::BOk_Click() {
    pane_->take();
    form_.OBySelection = bySelection_->isChecked();
    form_.TStartAddress = start_->text().toStdString();
    form_.TEndAddress = end_->text().toStdString();
    form_.TRecordsize = recordSize_->text().toStdString();
    if (GuardedOk(form_.st(), [this]() { return form_.BOk_Click(); })) accept();
}

// ---- binary files

FBinFileLoad::FBinFileLoad(ProgramState& st, QWidget* parent) : QDialog(parent), form_(st) {
    setObjectName(QStringLiteral("FBinFileLoad"));
    setWindowTitle(QStringLiteral("Load Binary File"));
    pane_ = new FileBrowserPane(
        form_, [this]() { BOk_Click(); }, this);
    offset_ = Box("TOffset", form_.TOffset);
    auto* own = new QFormLayout;
    own->addRow(QStringLiteral("Load address (hex):"), offset_);
    Arrange(this, pane_, own, OkCancel(this, [this]() { BOk_Click(); }));
}

void FBinFileLoad::BOk_Click() {
    pane_->take();
    form_.TOffset = offset_->text().toStdString();
    if (GuardedOk(form_.st(), [this]() { return form_.BOk_Click(); })) accept();
}

FBinFileSave::FBinFileSave(ProgramState& st, QWidget* parent) : QDialog(parent), form_(st) {
    setObjectName(QStringLiteral("FBinFileSave"));
    setWindowTitle(QStringLiteral("Save Binary File"));
    pane_ = new FileBrowserPane(
        form_, [this]() { BOk_Click(); }, this);
    fill_ = Box("TFillchar", form_.TFillchar);
    auto* own = new QFormLayout;
    own->addRow(QStringLiteral("Fill byte for gaps (hex):"), fill_);
    Arrange(this, pane_, own, OkCancel(this, [this]() { BOk_Click(); }));
}

void FBinFileSave::BOk_Click() {
    pane_->take();
    form_.TFillchar = fill_->text().toStdString();
    if (GuardedOk(form_.st(), [this]() { return form_.BOk_Click(); })) accept();
}

// ---- select range

FSelectRange::FSelectRange(ProgramState& st, QWidget* parent) : QDialog(parent), form_(st) {
    setObjectName(QStringLiteral("FSelectRange"));
    setWindowTitle(Q(form_.title));
    start_ = Box("TStartaddress", form_.TStartaddress);
    end_ = Box("TEndAddress", form_.TEndAddress);
    auto* blocks = List("IBlocks");
    for (int32_t len : form_.IBlocks) blocks->addItem(QString::number(len));
    connect(start_, &QLineEdit::textEdited, this, [this](const QString& t) {
        if (!form_.TStartaddress_Change(t.toStdString())) start_->setText(Q(form_.TStartaddress));
    });
    connect(end_, &QLineEdit::textEdited, this, [this](const QString& t) {
        if (!form_.TEndAddress_Change(t.toStdString())) end_->setText(Q(form_.TEndAddress));
    });
    connect(blocks, &QListWidget::currentRowChanged, this, [this](int row) {
        form_.IBlocks_Click(row);
        end_->setText(Q(form_.TEndAddress));
    });
    auto* own = new QFormLayout;
    own->addRow(QStringLiteral("Start address:"), start_);
    own->addRow(QStringLiteral("End address:"), end_);
    own->addRow(QStringLiteral("Block length:"), blocks);
    Arrange(this, nullptr, own, OkCancel(this, [this]() { BOk_Click(); }));
}

void FSelectRange::BOk_Click() {
    form_.TStartaddress = start_->text().toStdString();
    form_.TEndAddress = end_->text().toStdString();
    if (GuardedOk(form_.st(), [this]() { return form_.BOk_Click(); })) accept();
}

}  // namespace vortelm::ui
