#pragma once
// The platform seam: everything the logic needs from the platform. The Qt
// front end, the CLI and the tests each implement it. The defaults here make
// a quiet host (answers every box with its default, draws nothing) so that an
// implementation overrides only what it has.

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vortelm {

struct ProgramState;

enum class MsgButtons { Ok, OkCancel, YesNo, YesNoCancel };
enum class MsgIcon { None, Information, Exclamation, Question, Stop };
enum class MsgAnswer { Ok, Cancel, Yes, No };

// Something the event loop watches: a descriptor that becomes readable, or a
// time at which it is due (an in-process board's next byte, for instance).
// The loop calls dispatch() when either happens. A source that wants nothing
// at the moment returns -1 and no time.
class EventSource {
  public:
    virtual ~EventSource() = default;
    [[nodiscard]] virtual int pollFd() const { return -1; }
    [[nodiscard]] virtual std::optional<int64_t> dueUs() const { return std::nullopt; }
    virtual void dispatch() = 0;
};

class Host {
  public:
    Host();
    virtual ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // ---- event loop and time
    // One pass of the event loop: runs due timers and ready sources. It may
    // block until something is ready, a timer is due, or untilUs (monotonic
    // microseconds) has come, whichever is first; it never blocks past
    // untilUs. Every wait on the line, _delay, _delayms and _poll call it.
    virtual void yield(std::optional<int64_t> untilUs = std::nullopt);
    // Monotonic clock in microseconds (virtual in tests).
    [[nodiscard]] virtual int64_t nowUs();
    [[nodiscard]] int64_t nowMs() { return nowUs() / 1000; }
    // Time of day and date, as the log banner and _print show them.
    [[nodiscard]] virtual std::string dateText();
    [[nodiscard]] virtual std::string timeText();
    [[nodiscard]] virtual double secondsSinceMidnight();
    // The present date and time as "YYYYMMDD_hhmmss" (TIMESTAMP of _print).
    [[nodiscard]] virtual std::string timestampText();
    // A random number from 0 up to, not including, 1.
    [[nodiscard]] virtual double random();

    virtual void addSource(EventSource& source);
    virtual void removeSource(EventSource& source);
    // Periodic timers of the front end's loop (connection check, terminal
    // redraw). Returns an id for stopTimer.
    virtual int startTimer(int intervalMs, std::function<void()> fn);
    virtual void stopTimer(int id);

    // ---- dialogs
    virtual MsgAnswer messageBox(std::string_view text, MsgButtons buttons, MsgIcon icon,
                                 std::string_view title = {});
    // Text, or nothing when cancelled.
    virtual std::optional<std::string> inputBox(std::string_view prompt, std::string_view title,
                                                std::string_view defaultText);
    virtual void setBusy(bool busy);  // the hourglass
    // The small message window of _cmessage: shown without modality, the
    // caller goes on at once.
    virtual void showMessageWindow(std::string_view text);

    // ---- clipboard, printing, processes
    [[nodiscard]] virtual std::string clipboardText();
    virtual void setClipboardText(std::string_view text);
    virtual void printLines(std::span<const std::string> lines);
    // Starts a program with an argument list (never a shell string) without
    // waiting for it. False if it could not be started.
    virtual bool startDetached(const std::string& program, const std::vector<std::string>& args);

    // ---- what the operator sees
    // Text2Buffer calls this with every piece of running text it appends, so
    // a front end can show it (the GUI redraws later, the CLI prints at once).
    virtual void terminalAppended(std::string_view text);
    virtual void terminalCleared();
    virtual void refreshStatus();
    virtual void refreshFeatureButtons();
    virtual void refreshMemory();
    virtual void gotoPage(int32_t address);
    virtual void refreshSfrView();
    // After an operation that changed the target or the configuration: the
    // memory page, the register view (when sfrView), the status and the
    // feature buttons, in that order. A front end that redraws them at once
    // overrides this one call; the logic calls RefreshAfterOperation.
    virtual void refreshAfterOperation(bool sfrView);
    // Progress of a long operation: value of maximum; maximum 0 hides it.
    virtual void progress(int64_t value, int64_t maximum);
    // One line naming a failed operation and its code, beside the running
    // text (the CLI's standard error, the GUI's status bar).
    virtual void failureReported(std::string_view line);
    // ScaleForms: every window grows or shrinks by the factors (relative to
    // its present scale).
    virtual void scaleForms(double xFactor, double yFactor);

  protected:
    std::string clipboard_;

  private:
    struct Loop;  // sources, timers and the random generator of the default loop
    std::unique_ptr<Loop> loop_;
};

// The one refresh after an operation: everything the operator sees, with
// the register view when REFRESHSFR is on.
void RefreshAfterOperation(ProgramState& st);

}  // namespace vortelm
