#pragma once
// A program with its main window on the offscreen platform, on a fresh data
// home with the virtual board as its port. Message and input boxes are
// answered at once and their texts kept.

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTest>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "apps/SimOpener.h"
#include "image/Dump.h"
#include "shell/Program.h"
#include "ui/FVortElm.h"
#include "ui/QtHost.h"

namespace vortelm::testing {

// Runs a line as Enter in the command box does.
inline void Enter(QComboBox* box, const QString& line) {
    box->setFocus();
    box->lineEdit()->setText(line);
    QTest::keyClick(box->lineEdit(), Qt::Key_Return);
}

// The program started again on the same data home, as the next start of the
// GUI reads it (without a window).
struct NextStart {
    explicit NextStart(const std::string& dir) {
        host.setAnswerBoxes(true);
        shell::ProgramOptions o;
        o.home = dir + "/home";
        o.portOverride = "sim:";
        program = std::make_unique<shell::Program>(host, o);
        program->StartUp();
    }
    ProgramState& state() { return program->state(); }

    ui::QtHost host;
    std::unique_ptr<shell::Program> program;
};

class UiTest : public ::testing::Test {
  protected:
    void SetUp() override {
        char tmpl[] = "/tmp/vortelm-ui-XXXXXX";
        const char* dir = ::mkdtemp(tmpl);
        ASSERT_NE(dir, nullptr);
        home = dir;
        shell::ProgramOptions o;
        o.home = home + "/home";
        o.portOverride = "sim:";
        apps::AddSimOpener(o.openers);
        host = std::make_unique<ui::QtHost>();
        host->setAnswerBoxes(true);
        program = std::make_unique<shell::Program>(*host, o);
        window = std::make_unique<ui::FVortElm>(*program, *host);
        host->attach(window.get());
        program->StartUp();
        window->show();
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        st().selections.count = 0;
        host->answeredBoxes.clear();
    }
    void TearDown() override {
        window.reset();
        program.reset();
        host.reset();
        std::error_code ec;
        std::filesystem::remove_all(home, ec);
    }

    ProgramState& st() { return program->state(); }
    template <class T = QWidget>
    T* find(const char* name) {
        T* w = window->findChild<T*>(QString::fromUtf8(name));
        EXPECT_NE(w, nullptr) << name;
        return w;
    }
    QLineEdit* cell(int i) { return find<QLineEdit>(("TMemView" + std::to_string(i)).c_str()); }
    std::string lastBox() const {
        return host->answeredBoxes.empty() ? std::string() : host->answeredBoxes.back();
    }
    bool logged(const std::string& s) { return st().terminalBuffer.find(s) != std::string::npos; }
    void defineByte(int32_t a, uint8_t v) {
        WriteDumpByte(st().dump, a, v);
        SetDefined(st().dump, a, kTrue);
    }

    std::string home;
    std::unique_ptr<ui::QtHost> host;
    std::unique_ptr<shell::Program> program;
    std::unique_ptr<ui::FVortElm> window;
};

}  // namespace vortelm::testing
