#include "ui/FDisassemble.h"

#include <QCloseEvent>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QListWidget>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>

#include "ui/Scaling.h"

namespace vortelm::ui {

namespace {

QFont CodeFont() {
    QFont f(QStringLiteral("Courier New"));
    f.setStyleHint(QFont::Monospace);
    f.setFixedPitch(true);
    return f;
}

}  // namespace

FDisassemble::FDisassemble(ProgramState& st, link::ComPort& port, QWidget* parent)
    : QDialog(parent), logic_(std::make_unique<forms::FDisassemble>(st, port)) {
    setObjectName(QStringLiteral("FDisassemble"));
    setWindowTitle(QStringLiteral("Disassemble"));
    setModal(false);

    marks_ = new QListWidget;
    marks_->setObjectName(QStringLiteral("IBreakpoints"));
    marks_->setFont(CodeFont());
    marks_->setFixedWidth(28);
    marks_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    marks_->setSelectionMode(QAbstractItemView::NoSelection);
    marks_->setToolTip(QStringLiteral("Click to set or clear a breakpoint"));

    code_ = new QListWidget;
    code_->setObjectName(QStringLiteral("IDisassemble"));
    code_->setFont(CodeFont());
    code_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    code_->installEventFilter(this);

    step_ = new QPushButton(QStringLiteral("STEP"));
    step_->setObjectName(QStringLiteral("BStep"));
    go_ = new QPushButton(QStringLiteral("GO"));
    go_->setObjectName(QStringLiteral("BGo"));
    cancel_ = new QPushButton(QStringLiteral("Cancel"));
    cancel_->setObjectName(QStringLiteral("BCancel"));

    auto* lists = new QHBoxLayout;
    lists->setSpacing(0);
    lists->addWidget(marks_);
    lists->addWidget(code_, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(step_);
    buttons->addWidget(go_);
    buttons->addStretch(1);
    buttons->addWidget(cancel_);
    auto* lay = new QVBoxLayout(this);
    lay->addLayout(lists, 1);
    lay->addLayout(buttons);
    resize(520, 480);

    // The lists scroll together.
    connect(code_->verticalScrollBar(), &QScrollBar::valueChanged, marks_->verticalScrollBar(),
            &QScrollBar::setValue);
    connect(marks_, &QListWidget::itemClicked, this,
            [this](QListWidgetItem* item) { logic_->IBreakpoints_Click(marks_->row(item)); });
    connect(code_, &QListWidget::itemSelectionChanged, this, [this]() { takeSelection(); });
    connect(code_, &QListWidget::itemDoubleClicked, this,
            [this](QListWidgetItem* item) { logic_->IDisassemble_DblClick(code_->row(item)); });
    connect(step_, &QPushButton::clicked, this, [this]() { logic_->BStep_Click(); });
    connect(go_, &QPushButton::clicked, this, [this]() { logic_->BGo_Click(); });
    connect(cancel_, &QPushButton::clicked, this, [this]() { close(); });
    logic_->onChanged = [this]() { draw(); };
    logic_->onShow = [this]() {
        show();
        raise();
    };
    ScaleNewForm(this);
}

FDisassemble::~FDisassemble() {
    logic_->onChanged = nullptr;
}

void FDisassemble::ShowDisassembly() {
    logic_->ShowDisassembly();
    draw();
}

void FDisassemble::draw() {
    drawing_ = true;
    const auto& rows = logic_->IDisassemble;
    if (code_->count() != static_cast<int>(rows.size())) {
        code_->clear();
        marks_->clear();
        for (size_t i = 0; i < rows.size(); ++i) {
            code_->addItem(QString());
            marks_->addItem(QString());
        }
    }
    for (int i = 0; i < code_->count(); ++i) {
        const auto n = static_cast<size_t>(i);
        code_->item(i)->setText(QString::fromStdString(rows[n]));
        marks_->item(i)->setText(n < logic_->IBreakpoints.size()
                                     ? QString::fromStdString(logic_->IBreakpoints[n])
                                     : QStringLiteral(" "));
        code_->item(i)->setSelected(n < logic_->selected.size() && logic_->selected[n]);
    }
    if (logic_->listIndex >= 0 && logic_->listIndex < code_->count()) {
        code_->setCurrentRow(logic_->listIndex, QItemSelectionModel::NoUpdate);
        code_->scrollToItem(code_->item(logic_->listIndex));
    }
    marks_->verticalScrollBar()->setValue(code_->verticalScrollBar()->value());
    drawing_ = false;
}

void FDisassemble::takeSelection() {
    if (drawing_) return;
    logic_->selected.assign(static_cast<size_t>(code_->count()), false);
    for (int i = 0; i < code_->count(); ++i)
        logic_->selected[static_cast<size_t>(i)] = code_->item(i)->isSelected();
    logic_->listIndex = code_->currentRow();
}

void FDisassemble::closeEvent(QCloseEvent* event) {
    // Closing the window takes every breakpoint out of the code.
    logic_->Form_Unload();
    QDialog::closeEvent(event);
}

void FDisassemble::reject() {
    // Esc hides a dialog without a close event: the breakpoints come out of
    // the code here too, or the patches would stay in target memory.
    logic_->Form_Unload();
    QDialog::reject();
}

bool FDisassemble::eventFilter(QObject* watched, QEvent* event) {
    // Ctrl + C belongs to the list here, not to the main window's copy entry.
    if (watched == code_ && event->type() == QEvent::ShortcutOverride) {
        auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_C && (key->modifiers() & Qt::ControlModifier)) {
            event->accept();
            return true;
        }
    }
    if (watched == code_ && event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_C && (key->modifiers() & Qt::ControlModifier)) {
            logic_->IDisassemble_Copy2Clipboard();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

}  // namespace vortelm::ui
