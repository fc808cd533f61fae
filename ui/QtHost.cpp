#include "ui/QtHost.h"

#include <poll.h>

#include <QApplication>
#include <QClipboard>
#include <QCursor>
#include <QEventLoop>
#include <QGuiApplication>
#include <QInputDialog>
#include <QMessageBox>
#include <QProcess>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>

#include "ui/FAbout.h"
#include "ui/Scaling.h"

namespace vortelm::ui {

namespace {

// The longest time between two looks at the sources.
constexpr int64_t kLookMs = 10;

QString Q(std::string_view s) {
    return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size()));
}

}  // namespace

QtHost::QtHost() : dueTimer_(std::make_unique<QTimer>()) {
    dueTimer_->setSingleShot(true);
    connect(dueTimer_.get(), &QTimer::timeout, this, [this]() { serviceSources(); });
}

QtHost::~QtHost() = default;

// ---- event loop

void QtHost::watch(Watched& w) {
    const int fd = w.source->pollFd();
    if (fd == w.fd) return;
    w.notifier.reset();
    w.fd = fd;
    if (fd < 0) return;
    w.notifier = std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Read);
    connect(w.notifier.get(), &QSocketNotifier::activated, this, [this]() { serviceSources(); });
}

void QtHost::serviceSources() {
    if (servicing_) return;
    servicing_ = true;
    // A source may remove itself or others while it runs: walk a copy and
    // dispatch only those still watched.
    std::vector<EventSource*> current;
    current.reserve(sources_.size());
    for (auto& w : sources_) current.push_back(w->source);
    const int64_t now = nowUs();
    for (EventSource* s : current) {
        auto it = std::find_if(sources_.begin(), sources_.end(),
                               [s](const auto& w) { return w->source == s; });
        if (it == sources_.end()) continue;
        bool ready = false;
        const int fd = s->pollFd();
        if (fd >= 0) {
            pollfd p{fd, POLLIN, 0};
            ready = ::poll(&p, 1, 0) > 0 && (p.revents & (POLLIN | POLLHUP | POLLERR)) != 0;
        }
        const auto due = s->dueUs();
        if (due && *due <= now) ready = true;
        if (ready) s->dispatch();
    }
    // The next due time wakes the loop; descriptors are watched again.
    std::optional<int64_t> next;
    for (auto& w : sources_) {
        watch(*w);
        const auto due = w->source->dueUs();
        if (due && (!next || *due < *next)) next = due;
    }
    // A source can become due without telling (a command that ends sets the
    // receive threshold back to 1 while a byte waits, as a stop of the
    // debugged program does): the sources are looked at every 10 ms at least.
    if (next) {
        const int64_t waitUs = std::max<int64_t>(0, *next - nowUs());
        dueTimer_->start(static_cast<int>(std::min<int64_t>((waitUs + 999) / 1000, kLookMs)));
    } else if (!sources_.empty()) {
        dueTimer_->start(kLookMs);
    } else {
        dueTimer_->stop();
    }
    servicing_ = false;
}

void QtHost::yield(std::optional<int64_t> untilUs) {
    serviceSources();
    QEventLoop::ProcessEventsFlags flags = QEventLoop::AllEvents;
    std::unique_ptr<QTimer> wake;
    if (untilUs) {
        const int64_t waitUs = *untilUs - nowUs();
        if (waitUs > 0) {
            // The wake-up bounds the wait; events end it earlier.
            wake = std::make_unique<QTimer>();
            wake->setSingleShot(true);
            connect(wake.get(), &QTimer::timeout, []() {});
            wake->start(static_cast<int>(std::min<int64_t>((waitUs + 999) / 1000, 50)));
            flags |= QEventLoop::WaitForMoreEvents;
        }
    }
    QCoreApplication::processEvents(flags);
    serviceSources();
}

void QtHost::addSource(EventSource& source) {
    for (auto& w : sources_)
        if (w->source == &source) return;
    auto w = std::make_unique<Watched>();
    w->source = &source;
    watch(*w);
    sources_.push_back(std::move(w));
    QTimer::singleShot(0, this, [this]() { serviceSources(); });
}

void QtHost::removeSource(EventSource& source) {
    std::erase_if(sources_, [&source](const auto& w) { return w->source == &source; });
}

int QtHost::startTimer(int intervalMs, std::function<void()> fn) {
    const int id = nextTimerId_++;
    auto t = std::make_unique<QTimer>();
    t->setInterval(intervalMs);
    connect(t.get(), &QTimer::timeout, this, std::move(fn));
    t->start();
    timers_[id] = std::move(t);
    return id;
}

void QtHost::stopTimer(int id) {
    auto it = timers_.find(id);
    if (it == timers_.end()) return;
    // The timer may be stopped from its own call: let the loop delete it.
    it->second->stop();
    it->second.release()->deleteLater();
    timers_.erase(it);
}

// ---- dialogs

MsgAnswer QtHost::messageBox(std::string_view text, MsgButtons buttons, MsgIcon icon,
                             std::string_view title) {
    if (answerBoxes_) {
        answeredBoxes.emplace_back(text);
        return buttons == MsgButtons::Ok || buttons == MsgButtons::OkCancel ? MsgAnswer::Ok
                                                                            : MsgAnswer::Yes;
    }
    QMessageBox box(QApplication::activeWindow());
    box.setWindowTitle(title.empty() ? QStringLiteral("Vortelm") : Q(title));
    box.setText(Q(text));
    switch (icon) {
        case MsgIcon::Information:
            box.setIcon(QMessageBox::Information);
            break;
        case MsgIcon::Exclamation:
            box.setIcon(QMessageBox::Warning);
            break;
        case MsgIcon::Question:
            box.setIcon(QMessageBox::Question);
            break;
        case MsgIcon::Stop:
            box.setIcon(QMessageBox::Critical);
            break;
        case MsgIcon::None:
            break;
    }
    switch (buttons) {
        case MsgButtons::Ok:
            box.setStandardButtons(QMessageBox::Ok);
            break;
        case MsgButtons::OkCancel:
            box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel);
            break;
        case MsgButtons::YesNo:
            box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
            break;
        case MsgButtons::YesNoCancel:
            box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
            break;
    }
    // A box asked while the hourglass shows takes the normal cursor.
    QGuiApplication::setOverrideCursor(Qt::ArrowCursor);
    const int r = box.exec();
    QGuiApplication::restoreOverrideCursor();
    switch (r) {
        case QMessageBox::Ok:
            return MsgAnswer::Ok;
        case QMessageBox::Yes:
            return MsgAnswer::Yes;
        case QMessageBox::No:
            return MsgAnswer::No;
        default:
            return MsgAnswer::Cancel;
    }
}

void QtHost::showMessageWindow(std::string_view text) {
    if (answerBoxes_) answeredBoxes.emplace_back(text);
    if (!messageWindow_) {
        messageWindow_ = new QMessageBox(QApplication::activeWindow());
        messageWindow_->setObjectName(QStringLiteral("FMessage"));
        messageWindow_->setWindowTitle(QStringLiteral("Vortelm"));
        messageWindow_->setStandardButtons(QMessageBox::Ok);
        messageWindow_->setModal(false);
        messageWindow_->setAttribute(Qt::WA_DeleteOnClose);
    }
    messageWindow_->setText(Q(text));
    messageWindow_->show();
}

bool QtHost::startDetached(const std::string& program, const std::vector<std::string>& args) {
    std::vector<std::string> call{program};
    call.insert(call.end(), args.begin(), args.end());
    started.push_back(call);
    if (answerBoxes_) return true;
    QStringList list;
    for (const std::string& a : args) list << Q(a);
    return QProcess::startDetached(Q(program), list);
}

std::optional<std::string> QtHost::inputBox(std::string_view prompt, std::string_view title,
                                            std::string_view defaultText) {
    if (answerBoxes_) {
        answeredBoxes.emplace_back(prompt);
        if (!inputAnswers.empty()) {
            std::string a = inputAnswers.front();
            inputAnswers.erase(inputAnswers.begin());
            return a;
        }
        return std::string(defaultText);
    }
    bool ok = false;
    const QString text = QInputDialog::getText(QApplication::activeWindow(),
                                               title.empty() ? QStringLiteral("Vortelm") : Q(title),
                                               Q(prompt), QLineEdit::Normal, Q(defaultText), &ok);
    if (!ok) return std::nullopt;
    return text.toStdString();
}

void QtHost::setBusy(bool busy) {
    if (busy) {
        ++busyDepth_;
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    } else if (busyDepth_ > 0) {
        --busyDepth_;
        QGuiApplication::restoreOverrideCursor();
    }
}

// ---- clipboard

std::string QtHost::clipboardText() {
    if (QClipboard* c = QGuiApplication::clipboard()) return c->text().toStdString();
    return clipboard_;
}

void QtHost::setClipboardText(std::string_view text) {
    clipboard_ = std::string(text);
    if (QClipboard* c = QGuiApplication::clipboard()) c->setText(Q(text));
}

// ---- drawing

void QtHost::terminalAppended(std::string_view) {
    if (window_) window_->terminalAppended();
}
void QtHost::terminalCleared() {
    if (window_) window_->terminalCleared();
}
void QtHost::refreshStatus() {
    if (window_) window_->refreshStatus();
}
void QtHost::refreshFeatureButtons() {
    if (window_) window_->refreshFeatureButtons();
}
void QtHost::refreshMemory() {
    if (window_) window_->refreshMemory();
}
void QtHost::gotoPage(int32_t address) {
    if (window_) window_->gotoPage(address);
}
void QtHost::failureReported(std::string_view line) {
    if (window_) window_->showFailure(std::string(line));
}

void QtHost::progress(int64_t value, int64_t maximum) {
    if (launchInfo_) {
        launchInfo_->progress(value, maximum);
        if (maximum <= 0) launchInfo_ = nullptr;
    }
    if (window_) window_->progress(value, maximum);
}

void QtHost::refreshSfrView() {
    if (window_) window_->refreshSfrView();
}
void QtHost::scaleForms(double xFactor, double yFactor) {
    ScaleForms(xFactor, yFactor);
}

}  // namespace vortelm::ui
