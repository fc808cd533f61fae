#pragma once
// The Host seam on Qt: yield is one pass of the Qt event loop (blocking at
// most until the deadline), sources are socket notifiers and a timer for
// their due times, timers are QTimers, message and input boxes are Qt
// dialogs, the clipboard is the system's. The drawing calls go to the main
// window once it is attached.

#include <QMessageBox>
#include <QObject>
#include <QPointer>

#include <map>
#include <memory>
#include <vector>

#include "core/Host.h"

class QSocketNotifier;
class QTimer;

namespace vortelm::ui {

class FInfo;

// What the host asks of the main window.
class HostWindow {
  public:
    virtual ~HostWindow() = default;
    virtual void terminalAppended() = 0;
    virtual void terminalCleared() = 0;
    virtual void refreshStatus() = 0;
    virtual void refreshFeatureButtons() = 0;
    virtual void refreshMemory() = 0;
    virtual void gotoPage(int32_t address) = 0;
    virtual void progress(int64_t value, int64_t maximum) = 0;
    // A failed operation's line, shown in the status bar.
    virtual void showFailure(const std::string& /*line*/) {}
    virtual void refreshSfrView() {}
};

class QtHost : public QObject, public Host {
    Q_OBJECT
  public:
    QtHost();
    ~QtHost() override;

    void attach(HostWindow* window) { window_ = window; }
    // Boxes are not shown but answered at once with their default (OK or
    // Yes, the text given for an input box): for unattended runs.
    void setAnswerBoxes(bool on) { answerBoxes_ = on; }

    void yield(std::optional<int64_t> untilUs = std::nullopt) override;
    void addSource(EventSource& source) override;
    void removeSource(EventSource& source) override;
    int startTimer(int intervalMs, std::function<void()> fn) override;
    void stopTimer(int id) override;

    MsgAnswer messageBox(std::string_view text, MsgButtons buttons, MsgIcon icon,
                         std::string_view title = {}) override;
    std::optional<std::string> inputBox(std::string_view prompt, std::string_view title,
                                        std::string_view defaultText) override;
    void setBusy(bool busy) override;
    // The small message window FMessage of _cmessage: shown without
    // modality (also in unattended runs, where its text is kept as well).
    void showMessageWindow(std::string_view text) override;

    // A program with an argument list, never through a shell. Unattended
    // runs keep the call in `started` and start nothing.
    bool startDetached(const std::string& program, const std::vector<std::string>& args) override;
    std::vector<std::vector<std::string>> started;

    [[nodiscard]] std::string clipboardText() override;
    void setClipboardText(std::string_view text) override;

    void terminalAppended(std::string_view text) override;
    void terminalCleared() override;
    void refreshStatus() override;
    void refreshFeatureButtons() override;
    void refreshMemory() override;
    void gotoPage(int32_t address) override;
    void progress(int64_t value, int64_t maximum) override;
    void failureReported(std::string_view line) override;
    void refreshSfrView() override;
    // True while an operation shows the hourglass (a transfer, a connect).
    [[nodiscard]] bool busy() const { return busyDepth_ > 0; }
    void scaleForms(double xFactor, double yFactor) override;
    // The launch form takes start-up's progress until start-up hides it.
    void showLaunchInfo(FInfo* info) { launchInfo_ = info; }

    // Runs the ready and due sources and arms the wake-up for the next due
    // time (also called by the notifiers and the due timer).
    void serviceSources();

    // The last texts of the boxes answered unattended (tests read them), and
    // the texts that unattended input boxes give, first to last (then their
    // default text).
    std::vector<std::string> answeredBoxes;
    std::vector<std::string> inputAnswers;

  private:
    struct Watched {
        EventSource* source = nullptr;
        int fd = -1;
        std::unique_ptr<QSocketNotifier> notifier;
    };
    void watch(Watched& w);

    HostWindow* window_ = nullptr;
    FInfo* launchInfo_ = nullptr;
    bool answerBoxes_ = false;
    QPointer<QMessageBox> messageWindow_;
    int busyDepth_ = 0;
    std::vector<std::unique_ptr<Watched>> sources_;
    std::unique_ptr<QTimer> dueTimer_;
    std::map<int, std::unique_ptr<QTimer>> timers_;
    int nextTimerId_ = 1;
    bool servicing_ = false;
};

}  // namespace vortelm::ui
