// The main window's configuration and kernel dialogs: modal, and the
// window redraws what they changed.

#include "forms/FConfigure.h"
#include "ui/FConfigure.h"
#include "ui/FKernel.h"
#include "ui/FVortElm.h"

namespace vortelm::ui {

void FVortElm::showConfiguration() {
    const std::string type = st_.MCTYPE;
    const int32_t clock = st_.CLK;
    FConfigure dialog(st_, this);
    if (dialog.exec() == QDialog::Accepted)
        forms::DisconnectAfterControllerChange(target(), type, clock);
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
