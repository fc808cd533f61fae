// The main window's configuration and kernel dialogs: modal, and the
// window redraws what they changed.

#include "ui/FConfigure.h"
#include "ui/FKernel.h"
#include "ui/FVortElm.h"

namespace vortelm::ui {

void FVortElm::showConfiguration() {
    FConfigure dialog(st_, this);
    (void)dialog.exec();
    refreshStatus();
    refreshFeatureButtons();
}

void FVortElm::showKernels() {
    FKernel dialog(st_, this);
    (void)dialog.exec();
    refreshStatus();
    refreshFeatureButtons();
}

}  // namespace vortelm::ui
