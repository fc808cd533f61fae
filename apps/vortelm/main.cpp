// vortelm: the Qt front end. One Program, the Qt host and the main window;
// start-up runs once the event loop does.

#include <csignal>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QPixmap>
#include <QTimer>

#include "shell/Program.h"
#include "ui/FAbout.h"
#include "ui/FVortElm.h"
#include "ui/QtHost.h"

namespace {

constexpr const char* kUsage =
    "Usage: vortelm [--home DIR] [--port TEXT] [--yes] [--press NAME] [--run LINE]\n"
    "               [--screenshot FILE] [SCRIPT...]\n"
    "       vortelm --help | --version\n";

constexpr const char* kHelp =
    "vortelm - monitor and flash tool for 16-bit controllers (the window).\n"
    "\n"
    "Options:\n"
    "  --home DIR         data home (default $XDG_DATA_HOME/vortelm, else\n"
    "                     ~/.local/share/vortelm)\n"
    "  --port TEXT        port for this run: a device path, socket://host:port or sim:\n"
    "  --yes              answer every message box with OK/Yes without showing it\n"
    "  --press NAME       after start-up, click the button or menu entry NAME\n"
    "                     (BConnect, UTargetDownload, BSelectWindow ...)\n"
    "  --run LINE         after start-up, run LINE as the command box does\n"
    "  --screenshot FILE  after start-up and the --press/--run steps, save a\n"
    "                     picture of the window to FILE (PNG) and end\n"
    "  --help, --version\n"
    "Words that are not options are script files run at the end of start-up.\n"
    "--press and --run steps run in the order given.\n";

struct Step {
    bool press = false;
    std::string text;
};

}  // namespace

int main(int argc, char** argv) {
    vortelm::shell::ProgramOptions options;
    std::vector<Step> steps;
    std::string screenshot;
    bool answerYes = false;
    for (int i = 1; i < argc; ++i) {
        const std::string_view a = argv[i];
        auto value = [&](std::string& into) {
            if (i + 1 >= argc) return false;
            into = argv[++i];
            return true;
        };
        std::string v;
        if (a == "--help") {
            std::fputs(kHelp, stdout);
            return 0;
        }
        if (a == "--version") {
            std::printf("vortelm %s\n", VORTELM_VERSION);
            return 0;
        }
        if (a == "--home" || a == "--port" || a == "--press" || a == "--run" || a == "--screenshot") {
            if (!value(v)) {
                std::fprintf(stderr, "vortelm: %s needs a value\n%s", argv[i], kUsage);
                return 2;
            }
            if (a == "--home") options.home = v;
            if (a == "--port") options.portOverride = v;
            if (a == "--press") steps.push_back({true, v});
            if (a == "--run") steps.push_back({false, v});
            if (a == "--screenshot") screenshot = v;
        } else if (a == "--yes") {
            answerYes = true;
        } else if (a.size() > 1 && a.front() == '-' && a.substr(0, 4) != "-qws" && a != "-") {
            std::fprintf(stderr, "vortelm: unknown option %s\n%s", argv[i], kUsage);
            return 2;
        } else {
            options.AddScriptWord(a);
        }
    }
    options.ResolveHome();
    std::signal(SIGCHLD, SIG_IGN);

    int qtArgc = 1;
    QApplication app(qtArgc, argv);
    QApplication::setApplicationName(QStringLiteral("Vortelm"));
    QApplication::setStyle(QStringLiteral("Fusion"));

    vortelm::ui::QtHost host;
    host.setAnswerBoxes(answerYes);
    vortelm::shell::Program program(host, options);
    vortelm::ui::FVortElm window(program, host);
    host.attach(&window);
    window.show();
    // The launch form shows start-up's progress; start-up hides it when it
    // gets to the main window.
    vortelm::ui::FInfo launch;
    host.showLaunchInfo(&launch);
    launch.show();

    QTimer::singleShot(0, &window, [&]() {
        window.guarded([&]() { program.StartUp(); });
        launch.hide();
        host.showLaunchInfo(nullptr);
        window.refreshStatus();
        window.refreshFeatureButtons();
        window.refreshMemory();
        window.RefreshTerminalWindow();
        for (const Step& s : steps) {
            if (program.quitRequested()) break;
            if (s.press) {
                const QString name = QString::fromStdString(s.text);
                if (auto* b = window.findChild<QAbstractButton*>(name))
                    b->click();
                else if (auto* act = window.findChild<QAction*>(name))
                    act->trigger();
                else
                    std::fprintf(stderr, "vortelm: no control named %s\n", s.text.c_str());
            } else {
                window.runCommandLine(QString::fromStdString(s.text));
            }
        }
        if (program.quitRequested()) {
            window.close();
            return;
        }
        if (!screenshot.empty()) {
            QTimer::singleShot(400, &window, [&]() {
                window.RefreshTerminalWindow();
                const bool ok = window.grab().save(QString::fromStdString(screenshot), "PNG");
                if (!ok) std::fprintf(stderr, "vortelm: cannot write %s\n", screenshot.c_str());
                window.close();
                QApplication::exit(ok ? 0 : 1);
            });
        }
    });
    return QApplication::exec();
}
