// The configuration and kernel dialogs at scale 100 and 200 on the offscreen
// platform: each shows all of its controls as it opens, and a picture of it
// is taken.

#include <QListWidget>

#include "tests/ui/ModalDialogs.h"
#include "tests/ui/NothingCut.h"
#include "tests/ui/UiFixture.h"
#include "ui/Scaling.h"

namespace vortelm::testing {
namespace {

struct ScaledDialogs : UiTest {
    void TearDown() override {
        // The scale belongs to the application: the next test starts at 100.
        ui::ScaleForms(1.0 / ui::AppliedScale(), 1.0 / ui::AppliedScale());
        UiTest::TearDown();
    }
    // Checks the dialog as it opened, keeps its picture, and lists its name.
    void look(QDialog* d) {
        QApplication::processEvents();
        const std::string name = d->objectName().toStdString();
        ExpectNothingCut(d, name.c_str());
        EXPECT_TRUE(d->grab().save(
            QString::fromStdString(home + "/" + name + "-" + std::to_string(scale) + ".png"),
            "PNG"));
        // The dialog's text grows with the scale.
        EXPECT_NEAR(d->font().pointSizeF(), baseFont * scale / 100.0, 0.01) << name;
        seen.push_back(name);
    }
    // Opens each dialog through its menu entry or button and cancels it.
    void openAll() {
        WhenModal("FConfigure", [this](QDialog* c) {
            look(c);
            auto* list = Child<QListWidget>(c, "IMemoryList");
            ASSERT_NE(list, nullptr);
            ASSERT_GT(list->count(), 0);
            list->setCurrentRow(0);
            WhenModal("FMemory", [this](QDialog* m) {
                look(m);
                const std::pair<const char*, const char*> subs[] = {
                    {"FMemoryRegions", "BAddRegion"},
                    {"FMemoryActivate", "BAddActivate"},
                    {"FMemoryFeature", "BAddFeature"}};
                for (const auto& [sub, button] : subs) {
                    WhenModal(sub, [this](QDialog* s) {
                        look(s);
                        Click(s, "BCancel");
                    });
                    Click(m, button);
                }
                Click(m, "BCancel");
            });
            Click(c, "BMemoryEdit");
            Click(c, "BCancel");
        });
        find<QAction>("UTargetConfiguration")->trigger();
        WhenModal("FKernel", [this](QDialog* k) {
            look(k);
            WhenModal("FKernelEdit", [this](QDialog* e) {
                look(e);
                WhenModal("FKernelSelectFeature", [this](QDialog* f) {
                    look(f);
                    Click(f, "BCancel");
                });
                Click(e, "BAddFeature");
                Click(e, "BCancel");
            });
            Click(k, "BAdd");
            Click(k, "BCancel");
        });
        find<QAction>("USettingsKernel")->trigger();
    }

    int scale = 100;
    double baseFont = 0;
    std::vector<std::string> seen;
};

TEST_F(ScaledDialogs, EveryConfigurationDialogShowsAllItsControlsAt100And200) {
    const std::vector<std::string> all{
        "FConfigure",     "FMemory", "FMemoryRegions", "FMemoryActivate",
        "FMemoryFeature", "FKernel", "FKernelEdit",    "FKernelSelectFeature"};
    baseFont = QApplication::font().pointSizeF();
    ASSERT_GT(baseFont, 0);
    openAll();
    EXPECT_EQ(seen, all);

    seen.clear();
    scale = 200;
    ui::ScaleForms(2.0, 2.0);
    ASSERT_DOUBLE_EQ(ui::AppliedScale(), 2.0);
    QApplication::processEvents();
    ExpectNothingCut(window.get(), "FVortElm");
    openAll();
    EXPECT_EQ(seen, all);
}

}  // namespace
}  // namespace vortelm::testing
