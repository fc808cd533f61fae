#include "ui/SfrArea.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QListWidget>
#include <QPushButton>
#include <QTabBar>
#include <QVBoxLayout>

#include "core/RunTimeError.h"
#include "core/Text.h"
#include "link/ComPort.h"
#include "sfr/SfrSets.h"
#include "ui/FSFRChange.h"
#include "ui/FSfr.h"
#include "ui/QtHost.h"

namespace vortelm::ui {

// The list: Delete, Ctrl + Up, Ctrl + Down and Ctrl + C belong to it while
// it has the focus, before the menu's shortcuts.
class SfrList : public QListWidget {
  public:
    explicit SfrList(SfrArea& area) : area_(area) {
        setObjectName(QStringLiteral("ISfr"));
        setSelectionMode(QAbstractItemView::ExtendedSelection);
        QFont f = QFontDatabase::systemFont(QFontDatabase::FixedFont);
        f.setStyleHint(QFont::Monospace);
        setFont(f);
        setUniformItemSizes(true);
    }

  protected:
    static bool ours(const QKeyEvent* e) {
        const bool ctrl = (e->modifiers() & Qt::ControlModifier) != 0;
        return e->key() == Qt::Key_Delete ||
               (ctrl &&
                (e->key() == Qt::Key_Up || e->key() == Qt::Key_Down || e->key() == Qt::Key_C));
    }
    bool event(QEvent* e) override {
        if (e->type() == QEvent::ShortcutOverride && ours(static_cast<QKeyEvent*>(e))) {
            e->accept();
            return true;
        }
        return QListWidget::event(e);
    }
    void keyPressEvent(QKeyEvent* e) override {
        if (ours(e) && area_.key(e->key(), e->modifiers())) return;
        QListWidget::keyPressEvent(e);
    }

  private:
    SfrArea& area_;
};

SfrArea::SfrArea(ProgramState& st, link::ComPort* port, QtHost& host, QWidget* parent)
    : QWidget(parent), st_(st), port_(port), host_(host), logic_(st, port) {
    setObjectName(QStringLiteral("XSfrArea"));
    tabs_ = new QTabBar;
    tabs_->setObjectName(QStringLiteral("XSFRReg"));
    tabs_->setExpanding(false);
    tabs_->setDocumentMode(true);
    for (int i = 0; i < 8; ++i) tabs_->addTab(QString());
    connect(tabs_, &QTabBar::tabBarClicked, this, [this](int tab) {
        if (tab < 0) return;
        guarded([&]() { logic_.XSFRReg_Click(tab); });
        draw(true);
    });

    list_ = new SfrList(*this);
    list_->setMinimumWidth(QFontMetrics(list_->font()).horizontalAdvance(QString(34, QChar('0'))) +
                           24);
    connect(list_, &QListWidget::itemSelectionChanged, this, [this]() {
        if (!drawing_) takeSelection();
    });
    connect(list_, &QListWidget::itemDoubleClicked, this, [this]() { openChange(); });

    auto button = [this](const char* name, const char* caption, const char* tip,
                         std::function<void()> work) {
        auto* b = new QPushButton(QString::fromUtf8(caption));
        b->setObjectName(QString::fromUtf8(name));
        b->setToolTip(QString::fromUtf8(tip));
        b->setAutoDefault(false);
        connect(b, &QPushButton::clicked, this, [work]() { work(); });
        return b;
    };
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(4);
    buttons->addWidget(
        button("BAdd", "ADD", "Add registers to this set", [this]() { openPicker(); }));
    buttons->addWidget(button("BRemove", "REMOVE", "Remove the selected registers",
                              [this]() { removeSelected(); }));
    buttons->addWidget(
        button("BChange", "CHANGE", "Change the selected register", [this]() { openChange(); }));
    buttons->addWidget(
        button("BRefresh", "REFRESH", "Read the registers again", [this]() { refresh(); }));

    auto* lay = new QVBoxLayout(this);
    lay->setContentsMargins(0, 0, 0, 0);
    lay->setSpacing(2);
    lay->addWidget(tabs_);
    lay->addWidget(list_, 1);
    lay->addLayout(buttons);
    draw(true);
}

void SfrArea::guarded(const std::function<void()>& work) {
    try {
        work();
    } catch (const RunTimeError& e) {
        Text2Buffer(st_, std::string("\r\n*ERROR: ") + e.what());
    }
}

void SfrArea::takeSelection() {
    std::vector<int> rows;
    for (int i = 0; i < list_->count(); ++i)
        if (list_->item(i)->isSelected()) rows.push_back(i);
    logic_.SetSelection(rows, list_->currentRow());
}

void SfrArea::refresh() {
    const std::vector<std::string> before = st_.sfrList.lines;
    int exchanges = -1;
    guarded([&]() { exchanges = logic_.RequestRefresh(host_.busy()); });
    if (exchanges < 0 && logic_.pending()) return;  // done at the next drawing
    changed_.clear();
    const auto& after = st_.sfrList.lines;
    for (size_t i = 0; i < after.size() && i < before.size(); ++i) {
        // the same register with another value
        const auto name = [](const std::string& l) { return l.substr(0, 23 + 6); };
        if (name(before[i]) == name(after[i]) && before[i] != after[i]) changed_.insert(i);
    }
    draw(true);
}

void SfrArea::draw(bool force) {
    if (logic_.pending() && !host_.busy()) {
        refresh();
        if (!logic_.pending()) return;
    }
    // the tabs are few: drawn every time, since the preferences set titles
    // without a change of the list
    drawing_ = true;
    for (int i = 0; i < tabs_->count() && i < st_.sfrSetCount && i <= kSfrSetBound; ++i) {
        const std::string caption = SfrTabCaption(st_, i);
        const QString text = caption.empty() ? QString::number(i) : QString::fromStdString(caption);
        if (tabs_->tabText(i) != text) tabs_->setTabText(i, text);
        tabs_->setTabToolTip(i, QString::fromStdString(st_.sfrSets[static_cast<size_t>(i)].title));
    }
    if (tabs_->currentIndex() != st_.currentSfrSet) tabs_->setCurrentIndex(st_.currentSfrSet);
    const SfrListBox& box = st_.sfrList;
    if (!force && box.changes == drawn_) {
        drawing_ = false;
        return;
    }
    drawn_ = box.changes;
    while (list_->count() > static_cast<int>(box.lines.size()))
        delete list_->takeItem(list_->count() - 1);
    while (list_->count() < static_cast<int>(box.lines.size())) list_->addItem(QString());
    const QColor normal = list_->palette().color(QPalette::Text);
    for (size_t i = 0; i < box.lines.size(); ++i) {
        QListWidgetItem* item = list_->item(static_cast<int>(i));
        item->setText(QString::fromStdString(box.lines[i]));
        item->setForeground(changed_.count(i) != 0 ? QColor(0xC0, 0x20, 0x20) : normal);
        item->setSelected(i < box.selected.size() && box.selected[i] != 0);
    }
    if (box.listIndex >= 0 && box.listIndex < list_->count())
        list_->setCurrentRow(box.listIndex, QItemSelectionModel::NoUpdate);
    drawing_ = false;
}

bool SfrArea::key(int key, Qt::KeyboardModifiers modifiers) {
    takeSelection();
    const bool ctrl = (modifiers & Qt::ControlModifier) != 0;
    guarded([&]() {
        if (key == Qt::Key_Delete)
            logic_.ISfr_Delete();
        else if (ctrl && key == Qt::Key_Up)
            (void)logic_.ISfr_CtrlUp();
        else if (ctrl && key == Qt::Key_Down)
            (void)logic_.ISfr_CtrlDown();
        else if (ctrl && key == Qt::Key_C)
            logic_.ISfr_Copy2Clipboard();
    });
    changed_.clear();
    draw(true);
    return true;
}

void SfrArea::removeSelected() {
    takeSelection();
    guarded([&]() { logic_.ISfr_Delete(); });
    changed_.clear();
    draw(true);
}

void SfrArea::openPicker() {
    FSfr picker(st_, port_, window());
    picker.get_preferences();
    (void)picker.exec();
    draw(true);
}

void SfrArea::openChange() {
    takeSelection();
    const int32_t index = logic_.RegisterToChange();
    if (index < 0) return;
    FSFRChange dialog(st_, port_, window());
    dialog.method0(index);
    (void)dialog.exec();
    draw(true);
}

}  // namespace vortelm::ui
