// The main window's file forms, user scripts, command picker, recent files
// and the files dropped on it.

#include <QAction>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QUrl>

#include "forms/FFileLoad.h"
#include "forms/FFileSave.h"
#include "forms/UserScripts.h"
#include "shell/Program.h"
#include "ui/FVortElm.h"
#include "ui/FileDialogs.h"
#include "ui/Scaling.h"
#include "ui/ScriptDialogs.h"

namespace vortelm::ui {

namespace {

// The local files a drag carries.
QStringList LocalFiles(const QMimeData* data) {
    QStringList out;
    if (!data || !data->hasUrls()) return out;
    for (const QUrl& u : data->urls())
        if (u.isLocalFile()) out << u.toLocalFile();
    return out;
}

// The recent files keep their list in the data home, once start-up has set it.
forms::RecentFiles& Attached(forms::RecentFiles& recent, const ProgramState& st) {
    if (!st.programFolder.empty())
        recent.attach(st.programFolder + "/" + forms::RecentFiles::kFileName);
    return recent;
}

}  // namespace

void FVortElm::showFileLoad(forms::LoadType type) {
    FFileLoad d(program_.session(), type, this);
    ScaleNewForm(&d);
    if (d.exec() == QDialog::Accepted && type == forms::LoadType::Hex)
        rememberRecent(d.form().ChosenPath());
    refreshFeatureButtons();
    afterCommand();
}

void FVortElm::showFileSave(forms::SaveType type) {
    FFileSave d(st_, type, this);
    ScaleNewForm(&d);
    (void)d.exec();
    afterCommand();
}

void FVortElm::showSaveAs() {
    FSaveAs d(st_, this);
    ScaleNewForm(&d);
    (void)d.exec();
    afterCommand();
}

void FVortElm::showBinFileLoad() {
    FBinFileLoad d(st_, this);
    ScaleNewForm(&d);
    if (d.exec() == QDialog::Accepted) rememberRecent(d.form().ChosenPath());
    afterCommand();
}

void FVortElm::showBinFileSave() {
    FBinFileSave d(st_, this);
    ScaleNewForm(&d);
    (void)d.exec();
    afterCommand();
}

void FVortElm::showSelectRange() {
    FSelectRange d(st_, this);
    ScaleNewForm(&d);
    (void)d.exec();
    afterCommand();
}

void FVortElm::showUserScripts() {
    // a row's search: the load form in its script mode hands the file back
    auto search = [this](FAssignScript& dialog) {
        FFileLoad load(program_.session(), forms::LoadType::Script, &dialog);
        load.form().picked = [&dialog](const std::string& path) { dialog.form().AssignNew(path); };
        ScaleNewForm(&load);
        (void)load.exec();
    };
    FAssignScript d(st_, search, this);
    ScaleNewForm(&d);
    (void)d.exec();
    refreshFeatureButtons();
}

void FVortElm::showCommandSelection() {
    FCommandSelection d(program_.session().table, this);
    ScaleNewForm(&d);
    if (d.exec() != QDialog::Accepted) return;
    // nothing runs: the operator adds the arguments and presses Enter
    command_->lineEdit()->setText(QString::fromStdString(d.taken()));
    command_->setFocus();
}

void FVortElm::runUserScript(int index) {
    guarded([&]() { forms::BFunc_Click(program_.session(), index); });
    afterCommand();
}

void FVortElm::loadImageFile(const std::string& path) {
    guarded([&]() { forms::LoadImageByKind(st_, path, forms::ImageKindOf(path)); });
    if (st_.selections.count > 0) rememberRecent(path);
    afterCommand();
}

void FVortElm::rememberRecent(const std::string& path) {
    Attached(recent_, st_).add(path);
    refreshRecentFiles();
}

void FVortElm::openRecentFile(int index) {
    const auto& items = Attached(recent_, st_).items();
    if (index < 0 || index >= static_cast<int>(items.size())) return;
    loadImageFile(std::string(items[static_cast<size_t>(index)]));
}

void FVortElm::refreshRecentFiles() {
    const auto& items = Attached(recent_, st_).items();
    const QList<QAction*> actions = recentMenu_->actions();
    for (int i = 0; i < actions.size(); ++i) {
        const bool used = i < static_cast<int>(items.size());
        actions[i]->setVisible(used);
        actions[i]->setText(used ? QString::fromStdString(items[static_cast<size_t>(i)])
                                 : QString());
    }
    recentMenu_->menuAction()->setEnabled(!items.empty());
}

void FVortElm::dragEnterEvent(QDragEnterEvent* event) {
    if (!LocalFiles(event->mimeData()).isEmpty())
        event->acceptProposedAction();
    else
        QMainWindow::dragEnterEvent(event);
}

void FVortElm::dropEvent(QDropEvent* event) {
    const QStringList files = LocalFiles(event->mimeData());
    if (files.isEmpty()) return QMainWindow::dropEvent(event);
    event->acceptProposedAction();
    for (const QString& f : files) loadImageFile(f.toStdString());
}

}  // namespace vortelm::ui
