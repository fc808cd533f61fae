// A dialog made after the scale changed comes up at that scale: every
// control's text and every size a control sets for itself is twice as large
// at 200 as at 100, and nothing is cut off.

#include <QDialog>
#include <QToolBar>

#include <cmath>
#include <functional>
#include <memory>

#include "shell/Session.h"
#include "tests/ui/NothingCut.h"
#include "tests/ui/UiFixture.h"
#include "ui/FComPort.h"
#include "ui/FConfigure.h"
#include "ui/FDisassemble.h"
#include "ui/FFlash.h"
#include "ui/FKernel.h"
#include "ui/FSFRChange.h"
#include "ui/FSfr.h"
#include "ui/FTerminalSettings.h"
#include "ui/Scaling.h"

namespace vortelm::testing {
namespace {

struct ScaledNewForms : UiTest {
    void TearDown() override {
        ui::ScaleForms(1.0 / ui::AppliedScale(), 1.0 / ui::AppliedScale());
        UiTest::TearDown();
    }
};

// What the scale changes on a form, control by control.
struct Measures {
    std::vector<std::string> names;
    std::vector<double> fonts;  // text size of each control, in points or pixels
    std::vector<int> lengths;   // least and largest sizes the controls set
};

double TextSize(const QFont& f) {
    return f.pointSizeF() > 0 ? f.pointSizeF() : f.pixelSize();
}

Measures Measure(QWidget* form) {
    Measures m;
    QList<QWidget*> widgets = form->findChildren<QWidget*>();
    widgets.prepend(form);
    for (QWidget* w : widgets) {
        m.names.push_back(w->objectName().toStdString());
        m.fonts.push_back(TextSize(w->font()));
        if (w == form) continue;  // the layout sets the window's least size
        for (int v : {w->minimumWidth(), w->minimumHeight()})
            if (v > 0) m.lengths.push_back(v);
        for (int v : {w->maximumWidth(), w->maximumHeight()})
            if (v < QWIDGETSIZE_MAX) m.lengths.push_back(v);
    }
    return m;
}

void ExpectTwice(const Measures& at100, const Measures& at200, const std::string& form) {
    ASSERT_EQ(at100.fonts.size(), at200.fonts.size()) << form;
    for (size_t i = 0; i < at100.fonts.size(); ++i)
        EXPECT_NEAR(at200.fonts[i], 2 * at100.fonts[i], 0.05)
            << form << ": the text of " << at100.names[i];
    ASSERT_EQ(at100.lengths.size(), at200.lengths.size()) << form;
    for (size_t i = 0; i < at100.lengths.size(); ++i)
        EXPECT_NEAR(at200.lengths[i], 2 * at100.lengths[i], 1) << form << ": length " << i;
}

TEST_F(ScaledNewForms, EveryDialogMadeAtScale200IsTwiceItsSizeAt100) {
    link::ComPort& port = program->port();
    target::Target& target = *program->session().target;
    const int32_t sfr = 0;
    ASSERT_GT(st().sfrCount, 0);
    using Make = std::function<std::unique_ptr<QDialog>()>;
    const std::pair<const char*, Make> forms[] = {
        {"FComPort", [&]() { return std::make_unique<ui::FComPort>(port, window.get()); }},
        {"FTerminalSettings",
         [&]() { return std::make_unique<ui::FTerminalSettings>(st(), window.get()); }},
        {"FFlash", [&]() { return std::make_unique<ui::FFlash>(st(), target, window.get()); }},
        {"FSfr", [&]() { return std::make_unique<ui::FSfr>(st(), &port, window.get()); }},
        {"FSFRChange",
         [&]() {
             auto d = std::make_unique<ui::FSFRChange>(st(), &port, window.get());
             d->method0(sfr);
             return d;
         }},
        {"FDisassemble",
         [&]() { return std::make_unique<ui::FDisassemble>(st(), port, window.get()); }},
        {"FConfigure", [&]() { return std::make_unique<ui::FConfigure>(st(), window.get()); }},
        {"FMemory", [&]() { return std::make_unique<ui::FMemory>(st(), 0, window.get()); }},
        {"FKernel", [&]() { return std::make_unique<ui::FKernel>(st(), window.get()); }},
        {"FKernelEdit", [&]() { return std::make_unique<ui::FKernelEdit>(st(), 0, window.get()); }},
    };
    std::vector<Measures> at100;
    for (const auto& [name, make] : forms) {
        std::unique_ptr<QDialog> d = make();
        EXPECT_EQ(d->objectName().toStdString(), name);
        at100.push_back(Measure(d.get()));
    }
    ui::ScaleForms(2.0, 2.0);
    ASSERT_DOUBLE_EQ(ui::AppliedScale(), 2.0);
    for (size_t i = 0; i < std::size(forms); ++i) {
        std::unique_ptr<QDialog> d = forms[i].second();
        ExpectTwice(at100[i], Measure(d.get()), forms[i].first);
        d->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(d.get()));
        ExpectNothingCut(d.get(), forms[i].first);
        d->hide();
    }
}

TEST_F(ScaledNewForms, OpenWindowsGrowByTheFactorAndBackAgain) {
    find<QAction>("UViewDisassemble")->trigger();
    QWidget* debug = window->disassembleWindow();
    ASSERT_NE(debug, nullptr);
    const Measures main100 = Measure(window.get());
    const Measures debug100 = Measure(debug);
    const QSize size = window->size();
    auto* tools = find<QToolBar>("XToolbar");
    ASSERT_NE(tools, nullptr);
    const QSize icons = tools->iconSize();
    ui::ScaleForms(2.0, 2.0);
    QApplication::processEvents();
    ExpectTwice(main100, Measure(window.get()), "FVortElm");
    EXPECT_EQ(tools->iconSize(), icons * 2);
    ExpectTwice(debug100, Measure(debug), "FDisassemble");
    ui::ScaleForms(0.5, 0.5);
    QApplication::processEvents();
    const Measures main100Again = Measure(window.get());
    EXPECT_EQ(main100Again.fonts, main100.fonts);
    EXPECT_EQ(main100Again.lengths, main100.lengths);
    EXPECT_EQ(tools->iconSize(), icons);
    EXPECT_NEAR(window->width(), size.width(), 2);
    EXPECT_NEAR(window->height(), size.height(), 2);
}

}  // namespace
}  // namespace vortelm::testing
