#include "link/ComPort.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <deque>
#include <thread>

#include "core/Helpers.h"
#include "core/ProgramState.h"
#include "core/Text.h"

namespace vortelm::link {

namespace {

constexpr const char* kCaution =
    "Caution ! Communication port used by other application ! Please select a different port ";

// The highest port number the search tries, whatever COMPORTS says.
constexpr int kSearchLimit = 30;

// A form timer: an interval and an enabled switch. It fires every interval
// while enabled; the waiting code disables it.
struct FormTimer {
    bool enabled = false;
    int32_t intervalMs = 0;
    int64_t dueUs = 0;
};

// The box comes with every failure; the diagnosis once for the same port and
// reason in a row, so that a line of text to a closed port does not repeat it
// for every character.
void ReportFailure(ProgramState& st, std::string& lastDiagnosis, std::string_view path, int err,
                   std::string_view reason) {
    st.host->messageBox(kCaution, MsgButtons::Ok, MsgIcon::Exclamation);
    std::string key = std::string(path) + "\n" + std::to_string(err) + "\n" + std::string(reason);
    if (key == lastDiagnosis) return;
    lastDiagnosis = std::move(key);
    std::vector<PortInfo> ports;
    if (err == ENOENT || err == ENODEV || err == ENXIO) ports = ListPorts();
    Text2Buffer(st, DiagnosePortFailure(path, err, reason, ports) + "\r\n");
}

}  // namespace

struct ComPort::Impl {
    explicit Impl(ProgramState& s) : st(s) {}

    ProgramState& st;
    std::unique_ptr<channel::ByteChannel> ch;
    std::string openedText;  // the port text the channel was opened for
    std::deque<uint8_t> in;  // the input buffer
    bool lineGone = false;   // the channel failed a read: nothing more comes
    int threshold = 0;
    int inputLength = 1;
    std::string settings = "9600,n,8,1";
    FormTimer timer1;  // XSITimer
    FormTimer timer2;  // XSITimer2
    bool inEvent = false;
    bool rtsLevel = false;
    bool dtrLevel = false;
    bool warnedUnsupported = false;
    std::string lastDiagnosis;  // the last failure explained

    int64_t now() const { return st.host->nowUs(); }

    bool usable() const { return ch && ch->isOpen(); }

    // Moves what the channel has received into the input buffer. The buffer
    // is bounded so that a flood from the line cannot eat the memory; what
    // does not fit waits in the channel.
    void pump() {
        if (!usable() || lineGone) return;
        uint8_t buf[4096];
        while (in.size() < (1u << 20)) {
            auto n = ch->read(buf);
            if (n < 0) {
                lineGone = true;
                break;
            }
            if (n == 0) break;
            in.insert(in.end(), buf, buf + n);
        }
    }

    void program(FormTimer& t, int32_t intervalMs) {
        t.intervalMs = intervalMs;
        t.enabled = true;
        t.dueUs = now() + int64_t(std::max(intervalMs, 0)) * 1000;
    }

    // One write of the whole array: the channel takes what it can, the rest
    // follows at once without yielding. False when the port object failed,
    // after the "Caution !" box; a line that is gone stays gone.
    bool writeAll(std::span<const uint8_t> bytes) {
        if (!usable() || lineGone) {
            const int err = usable() ? EIO : EBADF;
            ReportFailure(st, lastDiagnosis, ch ? ch->describe() : PortTextOf(st), err,
                          usable() ? "the line is gone" : "the port is not open");
            return false;
        }
        const int64_t giveUp = now() + int64_t(std::max(st.TIMEOUT, 1)) * 1000;
        std::size_t done = 0;
        while (done < bytes.size()) {
            auto n = ch->write(bytes.subspan(done));
            if (n < 0) {
                const int e = ch->lastErrno();
                if (e == EIO || e == ENXIO || e == ENODEV || e == EPIPE || e == ECONNRESET)
                    lineGone = true;
                ReportFailure(st, lastDiagnosis, ch->describe(), e, ch->lastError());
                return false;
            }
            done += std::size_t(n);
            if (n == 0 && now() > giveUp) {
                ReportFailure(st, lastDiagnosis, ch->describe(), EAGAIN,
                              "the line takes no more bytes");
                return false;
            }
        }
        return true;
    }

    // A control the channel cannot do is told once per opened channel.
    void warnUnsupported(ProgramState& state, const std::string& what) {
        if (warnedUnsupported || !ch) return;
        warnedUnsupported = true;
        Text2Buffer(state, "\r\n*WARNING: " + ch->describe() + ": " + what +
                               " unsupported by this port\r\n");
    }

    std::optional<int64_t> nextTimerUs() const {
        std::optional<int64_t> due;
        for (const FormTimer* t : {&timer1, &timer2})
            if (t->enabled && (!due || t->dueUs < *due)) due = t->dueUs;
        return due;
    }
};

ComPort::ComPort(ProgramState& st) : impl_(std::make_unique<Impl>(st)) {
    opener = [this](std::string_view text, const channel::LineSettings& ls) {
        Host* host = impl_->st.host;
        return openers.open(text, ls, impl_->st.TIMEOUT, impl_->st.MCTYPE,
                            [host] { return host->nowUs(); });
    };
    impl_->st.host->addSource(*this);
}

ComPort::~ComPort() {
    impl_->st.host->removeSource(*this);
}

// ---------------------------------------------------------------- the port

std::string ComPort::portText() const {
    return PortTextOf(impl_->st);
}

bool ComPort::open() {
    auto& m = *impl_;
    if (isOpen()) return true;
    if (m.ch) close();
    const std::string text = portText();
    channel::LineSettings ls;
    if (!ParseSettingsText(m.settings, ls)) {
        ReportFailure(m.st, m.lastDiagnosis, text, EINVAL,
                      "bad settings text \"" + m.settings + "\"");
        return false;
    }
    OpenResult r = opener(text, ls);
    if (!r.channel) {
        m.lastDiagnosis.clear();  // every failed open is explained
        ReportFailure(m.st, m.lastDiagnosis, r.path.empty() ? text : r.path, r.err, r.error);
        return false;
    }
    attach(std::move(r.channel));
    m.openedText = text;
    return true;
}

void ComPort::attach(std::unique_ptr<channel::ByteChannel> ch) {
    auto& m = *impl_;
    if (m.ch) m.ch->close();
    m.ch = std::move(ch);
    m.in.clear();
    m.lineGone = false;
    m.warnedUnsupported = false;
    m.lastDiagnosis.clear();
    m.openedText.clear();
    if (!m.ch) return;
    channel::LineSettings ls;
    if (ParseSettingsText(m.settings, ls) && m.ch->configure(ls) == channel::Control::Unsupported)
        m.warnUnsupported(m.st, "settings " + m.settings);
    // The boot circuit sees the idle levels at once, not what open left.
    (void)m.ch->setRts(m.rtsLevel);
    (void)m.ch->setDtr(m.dtrLevel);
}

void ComPort::close() {
    auto& m = *impl_;
    if (m.ch) m.ch->close();
    m.ch.reset();
    m.in.clear();
    m.lineGone = false;
}

// A line that hung up counts as closed, so that the next open finds the
// device anew (an adapter plugged in again).
bool ComPort::isOpen() const {
    return impl_->usable() && !impl_->lineGone;
}

ProgramState& ComPort::state() const {
    return impl_->st;
}

channel::ByteChannel* ComPort::channel() const {
    return impl_->ch.get();
}

// ---------------------------------------------------------------- port list

bool ComPort::ComPortExists(int portno) {
    channel::LineSettings ls;
    (void)ParseSettingsText(impl_->settings, ls);
    OpenResult r = opener("COM" + std::to_string(portno), ls);
    if (!r.channel) return false;
    r.channel->close();
    return true;
}

void ComPort::SearchComPorts() {
    // The port in use is left as it is: the search opens its own channels.
    for (int n = 1; n <= kSearchLimit; ++n)
        if (ComPortExists(n)) portList.push_back("COM" + std::to_string(n));
}

void ComPort::AddComports(int minport, int maxport) {
    for (int n = minport; n <= maxport; ++n) portList.push_back("COM" + std::to_string(n));
}

// ---------------------------------------------------------------- settings

std::string ComPort::CSettings() const {
    const auto& st = impl_->st;
    const char* p = st.PARITY == 1 ? "o" : st.PARITY == 2 ? "e" : "n";
    // One stop bit always: STOPBITS is shown and stored, never sent to the port.
    return std::to_string(st.BAUDRATE) + "," + p + "," + std::to_string(st.DATA) + ",1";
}

std::string ComPort::GetComState() const {
    const auto& st = impl_->st;
    std::string text = portText();
    std::string name = text;
    if (st.portOverride.empty() && st.PORTNAME.empty()) name = "COM" + std::to_string(st.PORT);
    const char* p = st.PARITY == 1 ? "o" : st.PARITY == 2 ? "e" : "n";
    std::string s = name + "-" + std::to_string(st.BAUDRATE) + "," + p + "," +
                    std::to_string(st.DATA) + "," + std::to_string(st.STOPBITS);
    if (st.KLINE == 1) s += " (K-LINE) ";
    return s;
}

std::string ComPort::settingsText() const {
    return impl_->settings;
}

void ComPort::setSettingsText(std::string_view text) {
    auto& m = *impl_;
    m.settings = std::string(text);
    channel::LineSettings ls;
    if (m.usable() && ParseSettingsText(m.settings, ls)) {
        const auto c = m.ch->configure(ls);
        if (c == channel::Control::Failed)
            ReportFailure(m.st, m.lastDiagnosis, m.ch->describe(), m.ch->lastErrno(),
                          m.ch->lastError());
        else if (c == channel::Control::Unsupported)
            m.warnUnsupported(m.st, "settings " + m.settings);
    }
}

void ComPort::get_preferences() {
    auto& m = *impl_;
    if (isOpen()) close();
    setSettingsText(CSettings());
    setReceiveThreshold(0);
    m.inputLength = 1;
    setReceiveThreshold(1);
    if (!isOpen()) (void)open();
}

// ---------------------------------------------------------------- primitives

namespace {

// The transmit spin: no yield to the event loop by design, bounded so that
// a line that never drains cannot hold the program. Between its looks it
// lets the processor go: the other side of a pseudo-terminal or socket (a
// board program on the same machine) has to run for the bytes to drain.
void SpinUntilSent(ProgramState& st, channel::ByteChannel* ch, int32_t timeoutMs) {
    const int64_t giveUp = st.host->nowUs() + int64_t(std::max(timeoutMs, 1)) * 1000;
    while (ch->isOpen() && ch->bytesWaitingOut() >= 1 && st.host->nowUs() <= giveUp) {
        std::this_thread::yield();
    }
}

}  // namespace

void ComPort::SSSend(uint8_t b) {
    auto& m = *impl_;
    const uint8_t one[1] = {b};
    if (!m.writeAll(one)) return;
    SpinUntilSent(m.st, m.ch.get(), m.st.TIMEOUT);
    if (m.st.KLINE != 1) return;
    // The echo of the byte: waited for with the time-out setting, then
    // thrown away. A missing echo is not reported.
    m.inputLength = 1;
    TimerElapsed = 0;
    m.program(m.timer1, m.st.TIMEOUT);
    while (inCount() < 1 && TimerElapsed == 0) {
        m.st.host->yield(m.nextTimerUs());
        dispatch();
    }
    m.timer1.enabled = false;
    if (!m.in.empty()) m.in.pop_front();
}

void ComPort::SSSendN(std::span<uint8_t> buffer) {
    auto& m = *impl_;
    if (m.st.KLINE != 1) {
        if (!m.writeAll(buffer)) return;
        SpinUntilSent(m.st, m.ch.get(), m.st.TIMEOUT);
        return;
    }
    const int length = int(std::min<std::size_t>(buffer.size(), 32767));
    m.inputLength = length;
    TimerElapsed = 0;
    m.program(m.timer1, m.st.TIMEOUT);
    if (!m.writeAll(buffer)) return;
    // The time-out runs from the last echoed byte, not from the start.
    while (inCount() < length && TimerElapsed == 0) {
        int before = inCount();
        m.st.host->yield(m.nextTimerUs());
        dispatch();
        if (inCount() > before) {
            m.timer1.enabled = false;
            m.program(m.timer1, m.st.TIMEOUT);
        }
    }
    // The echo replaces the caller's bytes. The timer stays enabled: the
    // next wait programs it anew.
    std::size_t n = std::min<std::size_t>(m.in.size(), std::size_t(length));
    std::copy_n(m.in.begin(), n, buffer.begin());
    m.in.erase(m.in.begin(), m.in.begin() + std::ptrdiff_t(n));
}

int ComPort::SSReceive(int32_t timeoutMs) {
    auto& m = *impl_;
    m.inputLength = 1;
    TimerElapsed = 0;
    m.program(m.timer1, timeoutMs);
    while (inCount() < 1 && TimerElapsed == 0) {
        m.st.host->yield(m.nextTimerUs());
        dispatch();
    }
    m.timer1.enabled = false;
    if (inCount() >= 1) {
        int b = m.in.front();
        m.in.pop_front();
        return b;
    }
    return -1;
}

int ComPort::SSReceive2(int32_t timeoutMs) {
    auto& m = *impl_;
    m.inputLength = 1;
    Timer2Elapsed = 0;
    m.program(m.timer2, timeoutMs);
    while (inCount() < 1 && Timer2Elapsed == 0) {
        m.st.host->yield(m.nextTimerUs());
        dispatch();
    }
    m.timer2.enabled = false;
    // A foreground command that claimed the line meanwhile owns the byte.
    if (inCount() >= 1 && ComSemaphore < 2) {
        int b = m.in.front();
        m.in.pop_front();
        return b;
    }
    return -1;
}

int ComPort::SSReceiveN(std::span<uint8_t> buffer, int32_t timeoutMs) {
    auto& m = *impl_;
    const int length = int(std::min<std::size_t>(buffer.size(), 32767));
    TimerElapsed = 0;
    m.program(m.timer1, timeoutMs);
    m.inputLength = length;
    // timeoutMs is the longest silence between bytes, not the time for the block.
    while (inCount() < length && TimerElapsed == 0) {
        int before = inCount();
        m.st.host->yield(m.nextTimerUs());
        dispatch();
        if (inCount() > before) {
            m.timer1.enabled = false;
            m.program(m.timer1, timeoutMs);
        }
    }
    m.timer1.enabled = false;
    int result = -1;
    if (inCount() >= length) {
        std::copy_n(m.in.begin(), length, buffer.begin());
        m.in.erase(m.in.begin(), m.in.begin() + length);
        result = 0;
    }
    m.inputLength = 1;
    return result;
}

void ComPort::SSSendT(int wert) {
    Text2Buffer(impl_->st, "Wert: " + HexText(wert & 0xFF, 2));
}

int ComPort::inCount() {
    impl_->pump();
    return int(std::min<std::size_t>(impl_->in.size(), 32767));
}

void ComPort::clearInput() {
    auto& m = *impl_;
    m.pump();
    m.in.clear();
    if (m.usable()) m.ch->clearInput();
}

void ComPort::setReceiveThreshold(int threshold) {
    impl_->threshold = threshold;
}

int ComPort::receiveThreshold() const {
    return impl_->threshold;
}

// ---------------------------------------------------------------- semaphore

void ComPort::Cmd_P() {
    ComSemaphore = int16_t(ComSemaphore | 2);
    if (ComSemaphore == 3) {
        // The check is in the middle of its exchange: it gives up, and the
        // two replies of its test byte go nowhere.
        TestAbort = 1;
        (void)SSReceive(impl_->st.CONNECTTIMEOUT);
        (void)SSReceive(impl_->st.CONNECTTIMEOUT);
    }
}

void ComPort::Cmd_V() {
    ComSemaphore = int16_t(ComSemaphore & ~2);
}
void ComPort::Cmd_P2() {
    ComSemaphore = int16_t(ComSemaphore | 1);
}
void ComPort::Cmd_V2() {
    ComSemaphore = int16_t(ComSemaphore & ~1);
}

// ---------------------------------------------------------------- signal lines

void ComPort::setRts(bool on) {
    auto& m = *impl_;
    m.rtsLevel = on;
    if (m.usable() && m.ch->setRts(on) == channel::Control::Unsupported)
        m.warnUnsupported(m.st, "RTS");
}

void ComPort::setDtr(bool on) {
    auto& m = *impl_;
    m.dtrLevel = on;
    if (m.usable() && m.ch->setDtr(on) == channel::Control::Unsupported)
        m.warnUnsupported(m.st, "DTR");
}

void ComPort::setPort(int port, int level) {
    if (port == 0)
        setRts(level == 1);
    else if (port == 1)
        setDtr(level == 1);
}

// ---------------------------------------------------------------- receive event

int ComPort::pollFd() const {
    const auto& m = *impl_;
    if (!m.usable() || m.lineGone) return -1;
    return m.ch->pollFd();
}

std::optional<int64_t> ComPort::dueUs() const {
    const auto& m = *impl_;
    std::optional<int64_t> due = m.nextTimerUs();
    if (m.usable() && !m.lineGone) {
        if (auto t = m.ch->nextEventUs(); t && (!due || *t < *due)) due = t;
        if (m.threshold == 1 && !m.inEvent && (!m.in.empty() || m.ch->bytesWaitingIn() > 0))
            due = m.now();
    }
    return due;
}

void ComPort::dispatch() {
    auto& m = *impl_;
    m.pump();
    const int64_t now = m.now();
    if (m.timer1.enabled && now >= m.timer1.dueUs) {
        TimerElapsed = 1;
        m.timer1.dueUs = now + int64_t(std::max(m.timer1.intervalMs, 1)) * 1000;
    }
    if (m.timer2.enabled && now >= m.timer2.dueUs) {
        Timer2Elapsed = 1;
        m.timer2.dueUs = now + int64_t(std::max(m.timer2.intervalMs, 1)) * 1000;
    }
    if (m.threshold != 1 || m.inEvent || m.in.empty()) return;

    // The receive event: a byte nobody waits for.
    m.inEvent = true;
    TimerElapsed = 2;
    m.inputLength = 1;
    auto& st = m.st;
    const uint8_t b = m.in.front();
    m.in.pop_front();
    if (b == st.codes.A_ACK2 && st.ConnectionState == kUserProgramRunning) {
        // A started user program has come back to the monitor.
        st.ConnectionState = kConnectedAndReady;
        st.host->refreshStatus();
        Text2Buffer(st, "\r\n*Call: Successful returned to monitor\r\n");
        clearInput();
    } else if (b == st.codes.A_APPLICATION_STARTED && st.ConnectionState > kUserProgramRunning) {
        // The target stopped at a breakpoint or after a step.
        m.threshold = 0;
        if (onDebuggerReturn) onDebuggerReturn();
    } else {
        auto show = [&](uint8_t c) {
            if (st.TMODE == 1)
                Text2Buffer(st, " " + HexText(c, 2));
            else
                Text2Buffer(st, std::string(1, char(c)));
        };
        show(b);
        while (inCount() >= 1) {
            uint8_t c = m.in.front();
            m.in.pop_front();
            show(c);
        }
    }
    m.inEvent = false;
}

}  // namespace vortelm::link
