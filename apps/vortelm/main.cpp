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

#include "apps/SimOpener.h"
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

struct Args {
    vortelm::shell::ProgramOptions options;
    std::vector<Step> steps;
    std::string screenshot;
    bool answerYes = false;
};

// Reads the options into a. Returns -1 to go on, else the exit code.
int ParseArgs(int argc, char** argv, Args& a) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view w = argv[i];
        auto value = [&](std::string& into) {
            if (i + 1 >= argc) return false;
            into = argv[++i];
            return true;
        };
        std::string v;
        if (w == "--help") {
            std::fputs(kHelp, stdout);
            return 0;
        }
        if (w == "--version") {
            std::printf("vortelm %s\n", VORTELM_VERSION);
            return 0;
        }
        if (w == "--home" || w == "--port" || w == "--press" || w == "--run" ||
            w == "--screenshot") {
            if (!value(v)) {
                std::fprintf(stderr, "vortelm: %s needs a value\n%s", argv[i], kUsage);
                return 2;
            }
            if (w == "--home") a.options.home = v;
            if (w == "--port") a.options.portOverride = v;
            if (w == "--press") a.steps.push_back({true, v});
            if (w == "--run") a.steps.push_back({false, v});
            if (w == "--screenshot") a.screenshot = v;
        } else if (w == "--yes") {
            a.answerYes = true;
        } else if (w.size() > 1 && w.front() == '-' && w.substr(0, 4) != "-qws" && w != "-") {
            std::fprintf(stderr, "vortelm: unknown option %s\n%s", argv[i], kUsage);
            return 2;
        } else {
            a.options.AddScriptWord(w);
        }
    }
    return -1;
}

// The --press and --run steps, in the order given, until the program ends.
void RunSteps(vortelm::ui::FVortElm& window, const vortelm::shell::Program& program,
              const std::vector<Step>& steps) {
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
}

// A picture of the window a moment after start-up, then the end.
void TakeScreenshot(vortelm::ui::FVortElm& window, const std::string& screenshot) {
    QTimer::singleShot(400, &window, [&window, &screenshot]() {
        window.RefreshTerminalWindow();
        const bool ok = window.grab().save(QString::fromStdString(screenshot), "PNG");
        if (!ok) std::fprintf(stderr, "vortelm: cannot write %s\n", screenshot.c_str());
        window.close();
        QApplication::exit(ok ? 0 : 1);
    });
}

}  // namespace

int main(int argc, char** argv) {
    Args args;
    if (const int code = ParseArgs(argc, argv, args); code >= 0) return code;
    args.options.ResolveHome();
    std::signal(SIGCHLD, SIG_IGN);

    int qtArgc = 1;
    QApplication app(qtArgc, argv);
    QApplication::setApplicationName(QStringLiteral("Vortelm"));
    QApplication::setStyle(QStringLiteral("Fusion"));

    vortelm::ui::QtHost host;
    host.setAnswerBoxes(args.answerYes);
    vortelm::apps::AddSimOpener(args.options.openers);
    vortelm::shell::Program program(host, args.options);
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
        RunSteps(window, program, args.steps);
        if (program.quitRequested()) {
            window.close();
            return;
        }
        if (!args.screenshot.empty()) TakeScreenshot(window, args.screenshot);
    });
    return QApplication::exec();
}
