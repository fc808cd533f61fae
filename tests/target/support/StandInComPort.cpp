// A stand-in for the serial channel's primitives, built into the target tests
// only while the link library has none of its own. It keeps to the
// primitives' contract: waits loop over the channel and yield to the host
// until their deadline; on K-Line each byte sent is read back as its echo.

#include <algorithm>

#include "core/Host.h"
#include "core/ProgramState.h"
#include "link/ComPort.h"

namespace vortelm::link {

struct ComPort::Impl {
    ProgramState& st;
    std::unique_ptr<channel::ByteChannel> ch;
    int threshold = 1;
    explicit Impl(ProgramState& s) : st(s) {}

    int64_t deadline(int32_t ms) const { return st.host->nowUs() + int64_t{ms} * 1000; }
    size_t in() const { return ch ? ch->bytesWaitingIn() : 0; }
    void put(std::span<const uint8_t> bytes) {
        if (!ch) return;
        size_t done = 0;
        while (done < bytes.size()) {
            auto n = ch->write(bytes.subspan(done));
            if (n <= 0) return;
            done += static_cast<size_t>(n);
        }
    }
    int waitFor(size_t count, int32_t ms, bool restartOnGrowth) {
        int64_t until = deadline(ms);
        size_t seen = in();
        while (in() < count && st.host->nowUs() < until) {
            st.host->yield(until);
            if (restartOnGrowth && in() > seen) {
                seen = in();
                until = deadline(ms);
            }
        }
        return in() >= count ? 0 : -1;
    }
};

ComPort::ComPort(ProgramState& st) : impl_(std::make_unique<Impl>(st)) {}
ComPort::~ComPort() = default;

std::string ComPort::portText() const { return impl_->st.PORTNAME; }
bool ComPort::open() { return impl_->ch && impl_->ch->isOpen(); }
void ComPort::close() {
    if (impl_->ch) impl_->ch->close();
}
bool ComPort::isOpen() const { return impl_->ch && impl_->ch->isOpen(); }
void ComPort::attach(std::unique_ptr<channel::ByteChannel> ch) { impl_->ch = std::move(ch); }
channel::ByteChannel* ComPort::channel() const { return impl_->ch.get(); }
std::string ComPort::CSettings() const { return std::to_string(impl_->st.BAUDRATE) + ",n,8,1"; }
std::string ComPort::GetComState() const { return "COM"; }
void ComPort::get_preferences() {}

void ComPort::SSSend(uint8_t b) {
    const uint8_t one[1] = {b};
    impl_->put(one);
    if (impl_->st.KLINE == 1 && impl_->waitFor(1, impl_->st.TIMEOUT, false) == 0) {
        uint8_t echo = 0;
        (void)impl_->ch->read({&echo, 1});
    }
}

void ComPort::SSSendN(std::span<uint8_t> buffer) {
    impl_->put(buffer);
    if (impl_->st.KLINE == 1) {
        (void)impl_->waitFor(buffer.size(), impl_->st.TIMEOUT, true);
        if (impl_->ch) (void)impl_->ch->read(buffer.first(std::min(buffer.size(), impl_->in())));
    }
}

int ComPort::SSReceive(int32_t timeoutMs) {
    if (impl_->waitFor(1, timeoutMs, false) != 0) return -1;
    uint8_t b = 0;
    (void)impl_->ch->read({&b, 1});
    return b;
}

int ComPort::SSReceive2(int32_t timeoutMs) {
    if (impl_->waitFor(1, timeoutMs, false) != 0 || ComSemaphore >= 2) return -1;
    uint8_t b = 0;
    (void)impl_->ch->read({&b, 1});
    return b;
}

int ComPort::SSReceiveN(std::span<uint8_t> buffer, int32_t timeoutMs) {
    if (impl_->waitFor(buffer.size(), timeoutMs, true) != 0) return -1;
    (void)impl_->ch->read(buffer);
    return 0;
}

void ComPort::SSSendT(int) {}
int ComPort::inCount() { return static_cast<int>(impl_->in()); }
void ComPort::clearInput() {
    if (impl_->ch) impl_->ch->clearInput();
}
void ComPort::setReceiveThreshold(int threshold) { impl_->threshold = threshold; }
int ComPort::receiveThreshold() const { return impl_->threshold; }

void ComPort::Cmd_P() {
    ComSemaphore = static_cast<int16_t>(ComSemaphore | 2);
    if (ComSemaphore == 3) {
        TestAbort = 1;
        (void)SSReceive(impl_->st.CONNECTTIMEOUT);
        (void)SSReceive(impl_->st.CONNECTTIMEOUT);
    }
}
void ComPort::Cmd_V() { ComSemaphore = static_cast<int16_t>(ComSemaphore & ~2); }
void ComPort::Cmd_P2() { ComSemaphore = static_cast<int16_t>(ComSemaphore | 1); }
void ComPort::Cmd_V2() { ComSemaphore = static_cast<int16_t>(ComSemaphore & ~1); }
void ComPort::setRts(bool) {}
void ComPort::setDtr(bool) {}
int ComPort::pollFd() const { return -1; }
std::optional<int64_t> ComPort::dueUs() const { return std::nullopt; }
void ComPort::dispatch() {}

}  // namespace vortelm::link
