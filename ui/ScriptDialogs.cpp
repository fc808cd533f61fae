#include "ui/ScriptDialogs.h"

#include <QFontDatabase>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QVBoxLayout>

#include "ui/FormParts.h"

namespace vortelm::ui {

// ---- user scripts

FAssignScript::FAssignScript(ProgramState& st, std::function<void(FAssignScript&)> search,
                             QWidget* parent)
    : QDialog(parent), form_(st) {
    setObjectName(QStringLiteral("FAssignScript"));
    setWindowTitle(QStringLiteral("User Scripts"));
    auto* grid = new QGridLayout;
    grid->addWidget(new QLabel(QStringLiteral("Script file")), 0, 1);
    grid->addWidget(new QLabel(QStringLiteral("Button caption")), 0, 2);
    for (int i = 0; i < forms::kUserScriptSlots; ++i) {
        const auto row = static_cast<size_t>(i);
        const std::string n = std::to_string(i);
        files_[row] = Field(("TFilename" + n).c_str());
        names_[row] = Field(("TName" + n).c_str());
        QPushButton* find = Button(("BSearch" + n).c_str(), "Search ...");
        QPushButton* edit = Button(("BEdit" + n).c_str(), "Edit");
        connect(find, &QPushButton::clicked, this, [this, i, search]() {
            take();
            form_.BSearch_Click(i);
            if (search) search(*this);
            redraw();
        });
        connect(edit, &QPushButton::clicked, this, [this, i]() {
            take();
            (void)form_.BEdit_Click(i);
        });
        grid->addWidget(new QLabel(QString::number(i + 1)), i + 1, 0);
        grid->addWidget(files_[row], i + 1, 1);
        grid->addWidget(names_[row], i + 1, 2);
        grid->addWidget(find, i + 1, 3);
        grid->addWidget(edit, i + 1, 4);
    }
    grid->setColumnStretch(1, 3);
    grid->setColumnStretch(2, 1);
    QPushButton* remove = Button("BRemove", "Remove ...");
    connect(remove, &QPushButton::clicked, this, [this]() {
        form_.BRemove_Click();
        redraw();
    });
    auto* lay = new QVBoxLayout(this);
    lay->addLayout(grid);
    lay->addWidget(remove, 0, Qt::AlignLeft);
    lay->addWidget(OkCancel(this, [this]() { BOk_Click(); }));
    setMinimumWidth(720);
    redraw();
}

void FAssignScript::redraw() {
    for (size_t i = 0; i < form_.rows.size(); ++i) {
        files_[i]->setText(Q(form_.rows[i].TFilename));
        names_[i]->setText(Q(form_.rows[i].TName));
    }
}

void FAssignScript::take() {
    for (size_t i = 0; i < form_.rows.size(); ++i) {
        form_.rows[i].TFilename = files_[i]->text().toStdString();
        form_.rows[i].TName = names_[i]->text().toStdString();
    }
}

void FAssignScript::BOk_Click() {
    take();
    if (form_.BOk_Click()) accept();
}

// ---- the command picker

FCommandSelection::FCommandSelection(const shell::ShellTable& table, QWidget* parent)
    : QDialog(parent), form_(table) {
    setObjectName(QStringLiteral("FCommandSelection"));
    setWindowTitle(QStringLiteral("Select Command"));
    auto* commands = new QListWidget;
    commands->setObjectName(QStringLiteral("LCommands"));
    commands->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    for (const std::string& line : form_.LCommands) commands->addItem(Q(line));
    description_ = new QLabel;
    description_->setObjectName(QStringLiteral("LDescription"));
    description_->setWordWrap(true);
    usage_ = new QLabel;
    usage_->setObjectName(QStringLiteral("LUsage"));
    usage_->setWordWrap(true);
    usage_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    parameters_ = new QListWidget;
    parameters_->setObjectName(QStringLiteral("LParameters"));
    connect(commands, &QListWidget::currentRowChanged, this, [this](int row) {
        form_.LCommands_Click(row);
        description_->setText(Q(form_.LDescription));
        usage_->setText(Q(form_.LUsage));
        parameters_->clear();
        for (const std::string& p : form_.LParameters) parameters_->addItem(Q(p));
    });
    connect(commands, &QListWidget::itemDoubleClicked, this, [this]() { Takeit(); });

    auto* right = new QVBoxLayout;
    right->addWidget(new QLabel(QStringLiteral("Description:")));
    right->addWidget(description_);
    right->addWidget(new QLabel(QStringLiteral("Usage:")));
    right->addWidget(usage_);
    right->addWidget(new QLabel(QStringLiteral("Parameters:")));
    right->addWidget(parameters_, 1);
    auto* row = new QHBoxLayout;
    row->addWidget(commands, 1);
    row->addLayout(right, 1);
    auto* lay = new QVBoxLayout(this);
    lay->addLayout(row, 1);
    lay->addWidget(OkCancel(this, [this]() { Takeit(); }));
    resize(820, 520);
}

void FCommandSelection::Takeit() {
    taken_ = form_.Takeit();
    accept();
}

}  // namespace vortelm::ui
