// The view, print, front-end settings and about forms on the offscreen
// platform: opened from the menu, driven by their controls' names.

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QListWidget>
#include <QProcess>
#include <QRadioButton>

#include <cstdio>

#include "image/Selections.h"
#include "tests/ui/NothingCut.h"
#include "tests/ui/UiFixture.h"
#include "ui/Colours.h"
#include "ui/FAbout.h"
#include "ui/FFrontendSettings.h"
#include "ui/FPrint.h"
#include "ui/FView.h"
#include "ui/Scaling.h"

namespace vortelm::testing {
namespace {

struct Forms : UiTest {
    void TearDown() override {
        // The scale belongs to the application: the next test starts at 100.
        ui::ScaleForms(1.0 / ui::AppliedScale(), 1.0 / ui::AppliedScale());
        UiTest::TearDown();
    }
    void trigger(const char* name) {
        QAction* a = find<QAction>(name);
        ASSERT_TRUE(a && a->isEnabled()) << name;
        a->trigger();
    }
    template <class T>
    T* form(const char* name) {
        T* f = window->findChild<T*>(QString::fromUtf8(name));
        EXPECT_NE(f, nullptr) << name;
        return f;
    }
    void selectBytes(int32_t start, std::initializer_list<int> bytes) {
        int32_t a = start;
        for (int b : bytes) defineByte(a++, static_cast<uint8_t>(b));
        AddSelection(st().selections, start, a - 1);
    }
};

TEST_F(Forms, ViewWordShowsTheRowsAndCtrlCCopiesTheSelectedOnes) {
    selectBytes(0x100, {0x34, 0x12, 0x78});
    trigger("UViewWords");
    auto* view = form<ui::FView>("FView");
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view->windowTitle(), "View Word");
    auto* list = view->findChild<QListWidget*>("IView");
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(list->count(), 3);
    EXPECT_EQ(list->item(0)->text(), "000100: 1234");
    EXPECT_EQ(list->item(1)->text(), "000102: ....");
    EXPECT_EQ(list->item(2)->text(), "*************************************");
    list->item(0)->setSelected(true);
    list->item(1)->setSelected(true);
    QTest::keyClick(list, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), "\r\n000100: 1234\r\n000102: ....");
    trigger("UViewLong");
    EXPECT_EQ(view->windowTitle(), "View Long");
    EXPECT_EQ(list->item(0)->text().toStdString(), "000100: ........");
}

std::string PdfText(const QString& pdf) {
    QProcess p;
    p.start(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), pdf, QStringLiteral("-")});
    if (!p.waitForFinished(30000)) return {};
    return p.readAllStandardOutput().toStdString();
}

TEST_F(Forms, PrintWritesEachOfTheThreeStylesLinesToAPdf) {
    selectBytes(0x1000, {'O', 'K', 0x0D, 0x0A, 0x20, 0x41});
    trigger("UFilePrint");
    auto* print = form<ui::FPrint>("FPrint");
    ASSERT_NE(print, nullptr);
    EXPECT_TRUE(print->isVisible());
    EXPECT_NE(print->findChild<QComboBox*>("DPrinterlist"), nullptr);
    const QString dir = QString::fromStdString(home);
    struct Style {
        const char* control;
        const char* file;
        std::vector<std::string> lines;
    };
    const Style styles[] = {
        {"OHex",
         "hex.pdf",
         {"00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F", "001000 : 4F 4B 0D 0A 20 41"}},
        {"OText", "text.pdf", {"001000 : 4F 4B 0D 0A 20 41", "OK.. A"}},
    };
    for (const Style& s : styles) {
        print->findChild<QRadioButton*>(s.control)->click();
        print->setOutputFile(dir + "/" + s.file);
        print->findChild<QAbstractButton*>("BOk")->click();
        EXPECT_FALSE(print->isVisible());
        const std::string text = PdfText(dir + "/" + s.file);
        for (const std::string& line : s.lines)
            EXPECT_NE(text.find(line), std::string::npos) << line << "\n" << text;
        EXPECT_NE(text.find("*******************************************************************"),
                  std::string::npos)
            << text;
        trigger("UFilePrint");
    }
    // Assembler style, from a selection that starts on an odd address: the
    // listing starts one byte earlier.
    ClearSelections(st().selections);
    selectBytes(0x2000, {0xE6, 0xF0, 0x34, 0x12, 0xCC, 0x00});
    st().selections.start[0] = 0x2001;
    print->findChild<QRadioButton*>("OAssembler")->click();
    print->setOutputFile(dir + "/assembler.pdf");
    print->findChild<QAbstractButton*>("BOk")->click();
    EXPECT_FALSE(print->isVisible());
    const std::string text = PdfText(dir + "/assembler.pdf");
    for (const char* line : {"002000 : MOV", "R0,#1234h", "002004 : NOP"})
        EXPECT_NE(text.find(line), std::string::npos) << line << "\n" << text;
    EXPECT_EQ(text.find("002001"), std::string::npos) << text;
    EXPECT_EQ(text.find("00 01 02 03"), std::string::npos) << text;
    EXPECT_NE(text.find("*******************************************************************"),
              std::string::npos)
        << text;

    trigger("UFilePrint");
    print->findChild<QAbstractButton*>("BCancel")->click();
    EXPECT_FALSE(print->isVisible());
}

TEST_F(Forms, FrontendSettingsChangeTheHexPageColoursAndSurviveARestart) {
    trigger("USettingsFrontend");
    auto* settings = form<ui::FFrontendSettings>("FFrontendSettings");
    ASSERT_NE(settings, nullptr);
    EXPECT_EQ(settings->windowTitle(), "Frontend Settings");
    auto* background = settings->findChild<QLineEdit*>("TBGNormal");
    ASSERT_NE(background, nullptr);
    background->setText("00FF00");
    EXPECT_EQ(
        settings->findChild<QFrame*>("XColorPreviewBGNORMAL")->palette().color(QPalette::Window),
        ui::ColourFromKey(0x00FF00));
    settings->findChild<QAbstractButton*>("BOk")->click();
    EXPECT_EQ(st().COLOR_BGNORMAL, 0x00FF00);
    EXPECT_EQ(cell(0)->palette().color(QPalette::Base), ui::ColourFromKey(0x00FF00));

    // The preference file written at the end holds it for the next start.
    program->ShutDownProgram();
    NextStart next(home);
    EXPECT_EQ(next.state().COLOR_BGNORMAL, 0x00FF00);
}

TEST_F(Forms, NothingIsCutOffAtScale100And200) {
    trigger("UViewWords");
    trigger("UFilePrint");
    trigger("USettingsFrontend");
    trigger("UHelpAbout");
    const char* forms[] = {"FView", "FPrint", "FFrontendSettings", "FAbout"};
    for (double scale : {1.0, 2.0}) {
        if (scale != 1.0) {
            auto* settings = form<ui::FFrontendSettings>("FFrontendSettings");
            settings->findChild<QLineEdit*>("TScaleFactor")->setText("200");
            settings->findChild<QAbstractButton*>("BOk")->click();
            EXPECT_EQ(st().SCALEFACTOR, 200);
            EXPECT_DOUBLE_EQ(ui::AppliedScale(), 2.0);
            trigger("UViewWords");
            trigger("UFilePrint");
            trigger("USettingsFrontend");
            trigger("UHelpAbout");
        }
        QApplication::processEvents();
        ExpectNothingCut(window.get(), "FVortElm");
        const QString shot =
            QString::fromStdString(home) + QStringLiteral("/main-%1.png").arg(scale * 100);
        EXPECT_TRUE(window->grab().save(shot, "PNG"));
        for (const char* name : forms) {
            auto* f = window->findChild<QWidget*>(QString::fromUtf8(name));
            ASSERT_NE(f, nullptr) << name;
            f->adjustSize();
            QApplication::processEvents();
            ExpectNothingCut(f, name);
            EXPECT_TRUE(f->grab().save(QString::fromStdString(home) +
                                           QStringLiteral("/%1-%2.png").arg(name).arg(scale * 100),
                                       "PNG"));
        }
    }
}

TEST_F(Forms, AboutShowsVersionAndLicence) {
    trigger("UHelpAbout");
    auto* about = form<ui::FAbout>("FAbout");
    ASSERT_NE(about, nullptr);
    EXPECT_TRUE(about->isVisible());
    EXPECT_EQ(about->findChild<QLabel*>("LVersion")->text(),
              QString::fromStdString("Vortelm " + shell::Program::VersionText()));
    EXPECT_TRUE(about->findChild<QLabel*>("LLicence")->text().contains("Copyright"));
    about->findChild<QAbstractButton*>("BOk")->click();
    EXPECT_FALSE(about->isVisible());
}

TEST_F(Forms, StartUpScalesTheWindowsByThePreference) {
    const QSize before = window->size();
    st().SCALEFACTOR = 150;
    program->StepScaleForms();
    EXPECT_DOUBLE_EQ(ui::AppliedScale(), 1.5);
    EXPECT_GT(window->width(), before.width());
}

}  // namespace
}  // namespace vortelm::testing
