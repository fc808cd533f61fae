// The main window's view, print, front-end settings and about forms: each
// made once, on first use, at the present scale.

#include "ui/FAbout.h"
#include "ui/FFrontendSettings.h"
#include "ui/FPrint.h"
#include "ui/FView.h"
#include "ui/FVortElm.h"
#include "ui/Scaling.h"

namespace vortelm::ui {

namespace {

template <class Form>
void ShowModal(Form* form) {
    form->setWindowModality(Qt::ApplicationModal);
    form->show();
    form->raise();
    form->activateWindow();
}

}  // namespace

void FVortElm::showView(int mode) {
    if (!view_) {
        view_ = new FView(st_, this);
        view_->setWindowFlag(Qt::Window);
        ScaleNewForm(view_);
    }
    view_->setmode(mode);
}

void FVortElm::showPrint() {
    if (!print_) {
        print_ = new FPrint(st_, {}, this);
        ScaleNewForm(print_);
    }
    print_->Form_Load();
    ShowModal(print_);
}

void FVortElm::showFrontendSettings() {
    if (!frontendSettings_) {
        frontendSettings_ = new FFrontendSettings(st_, this);
        connect(frontendSettings_, &FFrontendSettings::settingsStored, this,
                [this]() { refreshMemory(); });
        ScaleNewForm(frontendSettings_);
    }
    frontendSettings_->get_preferences();
    ShowModal(frontendSettings_);
}

void FVortElm::showAbout() {
    if (!about_) {
        about_ = new FAbout(this);
        ScaleNewForm(about_);
    }
    ShowModal(about_);
}

}  // namespace vortelm::ui
