#include "sim/Board.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "sim/Images.h"
#include "sim/Walk.h"

namespace vortelm::sim {
namespace {

constexpr uint16_t kFeatRelocatable = 1u << 0, kFeatWriteWord = 1u << 1, kFeatWriteBlock = 1u << 2,
                   kFeatReadBlock = 1u << 3, kFeatCall = 1u << 4, kFeatJmp = 1u << 5,
                   kFeatEinit = 1u << 6, kFeatSwReset = 1u << 7, kFeatChecksum = 1u << 8,
                   kFeatTest = 1u << 9, kFeatAsc1 = 1u << 10, kFeatReadWord = 1u << 11,
                   kFeatWriteSeq = 1u << 12, kFeatSetProtection = 1u << 13;

uint32_t Addr3(const std::vector<uint8_t>& v, std::size_t i) {
    return v[i] | (uint32_t(v[i + 1]) << 8) | (uint32_t(v[i + 2]) << 16);
}

}  // namespace

FlashTimes FlashTimes::Real() {
    FlashTimes t;
    t.initUs = 1000;
    t.programWordUs = 20;
    t.eraseSectorUs = 400000;
    t.eraseWordlineUs = 20000;
    t.protectUs = 10000;
    return t;
}

Board::Board(const BoardModel& model, FlashTimes times, FaultPlan faults, uint32_t seed)
    : model_(model), times_(times), faults_(std::move(faults)), rng_(seed), segments_(256) {
    for (const auto& u : model_.flash) {
        FlashState f;
        f.data.assign(u.size, u.blank);
        f.locked.assign(u.sections.size(), false);
        f.lockPassword.resize(u.sections.size());
        flash_.push_back(std::move(f));
    }
    powerOn();
}

// ---- reset and modes ---------------------------------------------------------

void Board::resetRegisters() {
    for (const auto& r : model_.registers) {
        setRaw(r.address, static_cast<uint8_t>(r.reset & 0xFF));
        setRaw(r.address + 1, static_cast<uint8_t>(r.reset >> 8));
    }
    einit_ = false;
    latchedFdv_ = 0;
    collected_.clear();
    need_ = 0;
    inData_ = false;
    helperZero_ = false;
    pendingDelay_ = 0;
    pendingRate_ = 0;
    driverInitialised_ = 0xFFFFFFFF;
    afterCall_ = false;
}

void Board::powerOn() {
    resetRegisters();
    mode_ = Mode::Bootstrap;
}

void Board::holdReset() {
    mode_ = Mode::HeldInReset;
}

void Board::release(bool bootstrap) {
    resetRegisters();
    mode_ = bootstrap ? Mode::Bootstrap : Mode::Application;
}

void Board::runApplication() {
    release(false);
}

void Board::autobaud(double hostRate) {
    rate_ = hostRate;
    const double clk = model_.clk;
    auto set = [&](const char* name, double v) {
        if (const RegisterDef* r = FindRegister(model_, name)) {
            const auto w = static_cast<uint16_t>(std::clamp(std::lround(v), 0L, 0x1FFFL));
            setRaw(r->address, static_cast<uint8_t>(w & 0xFF));
            setRaw(r->address + 1, static_cast<uint8_t>(w >> 8));
        }
    };
    switch (model_.family) {
        case Family::Ald4:
            set("S0BG", clk / (32.0 * hostRate) - 1);
            break;
        case Family::Zt:
            set("ASC0FDV", 0);
            latchedFdv_ = 0;
            set("ASC0BG", clk / (16.0 * hostRate) - 1);
            break;
        case Family::Zt7: {
            const RegisterDef* fdrl = FindRegister(model_, "FDRL");
            const RegisterDef* brgh = FindRegister(model_, "BRGH");
            if (fdrl && brgh) {
                const double step = readWord(fdrl->address) & 0x3FF;
                const uint16_t pdiv = static_cast<uint16_t>(
                    std::clamp(std::lround(clk / hostRate / (1024 - step) - 1), 0L, 0x3FFL));
                const uint16_t old = readWord(brgh->address);
                set("BRGH", (old & 0xFC00) | pdiv);
            }
            break;
        }
    }
}

std::string Board::status() const {
    static constexpr const char* names[] = {"reset",   "bootstrap", "loader",      "loading",
                                            "monitor", "asc1-wait", "application", "dead"};
    char buf[200];
    std::snprintf(buf, sizeof buf,
                  "controller=%s mode=%s rate=%.0f core=%06X-%06X einit=%d commands=%u",
                  model_.controller.c_str(), names[static_cast<int>(mode_)], rate_,
                  static_cast<unsigned>(coreStart_), static_cast<unsigned>(coreEnd_),
                  einit_ ? 1 : 0, static_cast<unsigned>(commands_));
    return buf;
}

// ---- memory ------------------------------------------------------------------

bool Board::inAreas(const std::vector<Area>& areas, uint32_t a) const {
    return std::any_of(areas.begin(), areas.end(),
                       [a](const Area& r) { return a >= r.first && a <= r.last; });
}

bool Board::unitVisible(std::size_t unit) const {
    for (const auto& c : model_.flash[unit].activation)
        if ((rawWord(c.registerAddress) & c.mask) != c.mask) return false;
    return true;
}

int Board::flashAt(uint32_t address, uint32_t& offset) const {
    for (std::size_t u = 0; u < model_.flash.size(); ++u) {
        const auto& def = model_.flash[u];
        if (!unitVisible(u)) continue;
        if (address >= def.first && address - def.first < def.size) {
            offset = address - def.first;
            return static_cast<int>(u);
        }
        for (const auto& w : def.windows) {
            if ((rawWord(w.when.registerAddress) & w.when.mask) != w.when.mask) continue;
            if (address >= w.mapAddress && address - w.mapAddress < w.length) {
                offset = w.target + (address - w.mapAddress) - def.first;
                return static_cast<int>(u);
            }
        }
    }
    return -1;
}

uint8_t Board::raw(uint32_t address) const {
    const auto& seg = segments_[(address >> 16) & 0xFF];
    return seg ? (*seg)[address & 0xFFFF] : 0;
}

void Board::setRaw(uint32_t address, uint8_t value) {
    auto& seg = segments_[(address >> 16) & 0xFF];
    if (!seg) seg = std::make_unique<std::array<uint8_t, 65536>>();  // zero-filled
    (*seg)[address & 0xFFFF] = value;
}

uint16_t Board::rawWord(uint32_t address) const {
    return static_cast<uint16_t>(raw(address) | (raw(address + 1) << 8));
}

uint8_t Board::read(uint32_t address) const {
    address &= 0xFFFFFF;
    uint32_t off = 0;
    const int u = flashAt(address, off);
    if (u >= 0) {
        const bool hidden = flash_[static_cast<std::size_t>(u)].protectedUnit ||
                            (model_.flash[static_cast<std::size_t>(u)].internal && protLevel_ >= 1);
        return hidden ? 0x00 : flash_[static_cast<std::size_t>(u)].data[off];
    }
    if (inAreas(model_.ram, address) || inAreas(model_.sfr, address)) return raw(address);
    return 0x00;
}

uint16_t Board::readWord(uint32_t address) const {
    return static_cast<uint16_t>(read(address) | (read(address + 1) << 8));
}

uint8_t Board::peek(uint32_t address) const {
    return read(address);
}
uint16_t Board::peekWord(uint32_t address) const {
    return readWord(address);
}

void Board::pokeFlash(uint32_t address, uint8_t value) {
    uint32_t off = 0;
    const int u = flashAt(address, off);
    if (u >= 0) flash_[static_cast<std::size_t>(u)].data[off] = value;
}

uint16_t Board::registerValue(const std::string& name) const {
    const RegisterDef* r = FindRegister(model_, name);
    return r ? readWord(r->address) : 0;
}

bool Board::sectorLocked(std::size_t unit, std::size_t sector) const {
    return unit < flash_.size() && sector < flash_[unit].locked.size() &&
           flash_[unit].locked[sector];
}

bool Board::unitProtected(std::size_t unit) const {
    return unit < flash_.size() && flash_[unit].protectedUnit;
}

bool Board::write(uint32_t address, uint8_t value) {
    address &= 0xFFFFFF;
    if (mode_ == Mode::Monitor && address >= coreStart_ && address <= coreEnd_) {
        die();
        return false;
    }
    uint32_t off = 0;
    if (flashAt(address, off) >= 0) return true;  // a plain write to flash changes nothing
    if (inAreas(model_.sfr, address)) {
        for (const auto& r : model_.registers) {
            if (address != r.address && address != r.address + 1) continue;
            if (r.flags & (kRegReadOnly | kRegHelperOnly)) return true;
            if ((r.flags & kRegLockedByEinit) && einit_) return true;
        }
        setRaw(address, value);
        return true;
    }
    if (inAreas(model_.ram, address)) setRaw(address, value);
    return true;
}

void Board::afterRegisterWrite(uint32_t address, uint16_t oldValue,
                               std::vector<BoardByte>& /*out*/) {
    const RegisterDef* reg = nullptr;
    for (const auto& r : model_.registers)
        if (r.address == (address & 0xFFFFFE)) reg = &r;
    if (!reg || !(reg->flags & kRegBaud)) return;
    const double clk = model_.clk;
    const uint16_t value = readWord(reg->address);
    (void)oldValue;
    switch (model_.family) {
        case Family::Ald4: {
            const uint16_t s0con = registerValue("S0CON");
            const double f = 2 + ((s0con >> 13) & 1);
            pendingRate_ = clk / ((value + 1.0) * 16.0 * f);
            break;
        }
        case Family::Zt:
            // The fractional divider is latched and takes effect with the
            // reload value, so the two writes of a rate change act as one.
            if (reg->name == "ASC0FDV") {
                latchedFdv_ = value & 0x1FF;
            } else {
                const double base = clk / ((value + 1.0) * 16.0);
                pendingRate_ = latchedFdv_ == 0 ? base : latchedFdv_ / 512.0 * base;
            }
            break;
        case Family::Zt7: {
            const uint16_t fdrl = registerValue("FDRL");
            const uint16_t brgl = registerValue("BRGL");
            const double step = fdrl & 0x3FF;
            const double pctq = (brgl >> 8) & 3;
            const double dctq = (brgl >> 10) & 0x1F;
            const double pdiv = value & 0x3FF;
            if ((fdrl & 0xC000) == 0x4000 && (brgl & 0xDB) == 0)
                pendingRate_ = clk / (1024 - step) / (pdiv + 1) / (pctq + 1) / (dctq + 1);
            else
                pendingRate_ = 1;  // a mode the host cannot follow: nothing gets through
            break;
        }
    }
}

// ---- output ----------------------------------------------------------------------

void Board::emit(std::vector<BoardByte>& out, uint8_t b) {
    out.push_back({b, pendingDelay_, 0});
    pendingDelay_ = 0;
}

void Board::ack2(std::vector<BoardByte>& out) {
    emit(out, wrongAck_ ? wire::kWrongAck : wire::kAck2);
    wrongAck_ = false;
    if (pendingRate_ > 0) {
        out.back().newRate = pendingRate_;
        rate_ = pendingRate_;
        pendingRate_ = 0;
    }
}

bool Board::hits(FaultKind kind) {
    bool hit = false;
    for (const auto& f : faults_.faults) {
        if (f.kind != kind) continue;
        if (f.at != 0 && f.at == commands_) hit = true;
        if (f.at == 0 && f.percent > 0 &&
            std::uniform_real_distribution<double>(0, 100)(rng_) < f.percent)
            hit = true;
    }
    return hit;
}

// ---- the byte path -----------------------------------------------------------------

void Board::lineSilent() {
    if (mode_ != Mode::Monitor || command_ == 0) return;
    command_ = 0;
    collected_.clear();
    inData_ = false;
    helperZero_ = false;
}

void Board::receive(uint8_t byte, bool clean, double hostRate, std::vector<BoardByte>& out) {
    const bool measures = byte == 0x00;
    if (!clean)
        byte = static_cast<uint8_t>(byte ^ 0x5A) == 0 ? 0xFF : static_cast<uint8_t>(byte ^ 0x5A);
    switch (mode_) {
        case Mode::HeldInReset:
        case Mode::Application:
        case Mode::Dead:
            return;
        case Mode::Bootstrap:
            // Only a zero byte gives a start bit the loader can measure.
            if (!measures) return;
            autobaud(hostRate);
            emit(out, model_.idByte);
            mode_ = Mode::LoaderBytes;
            collected_.clear();
            return;
        case Mode::LoaderBytes: {
            collected_.push_back(byte);
            setRaw(kBootstrapAddress + static_cast<uint32_t>(collected_.size() - 1), byte);
            if (collected_.size() < kLoaderSize) return;
            const auto& l = collected_;
            if (std::memcmp(l.data(), "VtLd", 4) != 0) {
                die();  // not our loader: it runs off into the weeds
                return;
            }
            uint32_t first = l[4] | (l[5] << 8);
            const uint32_t last = l[6] | (l[7] << 8);
            if (l[8] & kLoaderFlagFirstMinusOne) first = (first + 1) & 0xFFFF;
            if (last < first) {
                die();
                return;
            }
            coreFirst_ = first;
            need_ = last - first + 1;
            if (l[8] & kLoaderFlagAck) emit(out, wire::kLoaderStarted);
            collected_.clear();
            mode_ = Mode::CoreBytes;
            return;
        }
        case Mode::CoreBytes: {
            const uint32_t a = coreFirst_ + static_cast<uint32_t>(collected_.size());
            collected_.push_back(byte);
            if (inAreas(model_.ram, a)) setRaw(a, byte);
            if (collected_.size() < need_) return;
            collected_.clear();
            startCore(coreFirst_, need_);
            if (mode_ == Mode::Monitor) emit(out, wire::kCoreStarted);
            return;
        }
        case Mode::Asc1Wait:
            if (!measures) return;
            rate_ = hostRate;
            emit(out, wire::kAck1);
            emit(out, wire::kAsc1Flag);
            mode_ = Mode::Monitor;
            return;
        case Mode::Monitor:
            if (command_ == 0 && afterCall_ && byte == 0x00) {
                // The zero a host may send behind a call's registers: the
                // routine returned without taking it, the core does.
                afterCall_ = false;
                emit(out, wire::kHelperDone);
                return;
            }
            afterCall_ = false;
            if (command_ == 0 && measures) {
                // Idle: a zero byte means the host lost our rate; measure it again.
                rate_ = hostRate;
                emit(out, wire::kAutobaud);
                emit(out, wire::kCoreStarted);
                return;
            }
            monitorByte(byte, out);
            return;
    }
}

bool Board::coreHeaderAt(uint32_t address, uint16_t& mask, uint16_t& length) const {
    const char sig[4] = {'V', 't', 'C', 'r'};
    for (int i = 0; i < 4; ++i)
        if (read(address + 2 + static_cast<uint32_t>(i)) != static_cast<uint8_t>(sig[i]))
            return false;
    mask = readWord(address + 6);
    length = readWord(address + 8);
    return length >= kCoreHeaderSize;
}

void Board::startCore(uint32_t first, uint32_t length) {
    uint16_t mask = 0, len = 0;
    if (!coreHeaderAt(first, mask, len) || len > length) {
        die();  // the core is not where the loader jumps, or it is cut short
        return;
    }
    coreStart_ = first;
    coreEnd_ = first + len - 1;
    coreMask_ = mask;
    command_ = 0;
    mode_ = Mode::Monitor;
}

bool Board::offered(uint8_t c) const {
    uint16_t bit = 0;
    switch (c) {
        case wire::kWriteWord:
            bit = kFeatWriteWord;
            break;
        case wire::kWriteBlock:
            bit = kFeatWriteBlock;
            break;
        case wire::kReadBlock:
            bit = kFeatReadBlock;
            break;
        case wire::kCall:
            bit = kFeatCall;
            break;
        case wire::kGo:
            bit = kFeatJmp;
            break;
        case wire::kEinit:
            bit = kFeatEinit;
            break;
        case wire::kSwReset:
            bit = kFeatSwReset;
            break;
        case wire::kGetChecksum:
            bit = kFeatChecksum;
            break;
        case wire::kTestComm:
            bit = kFeatTest;
            break;
        case wire::kAsc1Con:
            bit = kFeatAsc1;
            break;
        case wire::kReadWord:
            bit = kFeatReadWord;
            break;
        case wire::kWriteSeq:
            bit = kFeatWriteSeq;
            break;
        case wire::kSetProtection:
            bit = kFeatSetProtection;
            break;
        default:
            return false;
    }
    (void)kFeatRelocatable;
    return (coreMask_ & bit) != 0;
}

uint32_t Board::expectedArgs(uint8_t c) const {
    switch (c) {
        case wire::kWriteWord:
            return 5;
        case wire::kWriteBlock:
        case wire::kReadBlock:
            return 5;
        case wire::kReadWord:
            return 3;
        case wire::kWriteSeq:
            return 4;
        case wire::kSetProtection:
            return 3;
        case wire::kGo:
            return 3;
        case wire::kCall:
            return 19;
        default:
            return 0;
    }
}

void Board::monitorByte(uint8_t b, std::vector<BoardByte>& out) {
    if (command_ == 0) {
        if (!offered(b)) return;  // unknown or not offered: no answer at all
        ++commands_;
        if (hits(FaultKind::Hangup)) hangup_ = true;
        if (hits(FaultKind::Die)) {
            die();
            return;
        }
        wrongAck_ = hits(FaultKind::WrongAck);
        resetMidBlock_ = hits(FaultKind::Reset);
        command_ = b;
        collected_.clear();
        inData_ = false;
        helperZero_ = false;
        need_ = expectedArgs(b);
        emit(out, wire::kAck1);
        if (need_ == 0) finishCommand(out);
        return;
    }
    collected_.push_back(b);
    if (command_ == wire::kWriteBlock && inData_) {
        const uint32_t address = Addr3(collected_, 0);
        const uint32_t index = static_cast<uint32_t>(collected_.size()) - 6;
        if (!write(address + index, b)) return;  // the write hit the core
        afterRegisterWrite(address + index, 0, out);
        checksum_ ^= b;
        if (resetMidBlock_ && index + 1 == need_ / 2) {
            resetNow();
            return;
        }
    }
    if (collected_.size() < (inData_ ? 5 + need_ : need_) + (helperZero_ ? 1 : 0)) return;
    finishCommand(out);
}

void Board::resetNow() {
    resetMidBlock_ = false;
    command_ = 0;
    powerOn();
}

void Board::finishCommand(std::vector<BoardByte>& out) {
    const uint8_t c = command_;
    if (resetMidBlock_ && c != wire::kWriteBlock && c != wire::kReadBlock) {
        resetNow();
        return;
    }
    if (!runCommand(out)) return;  // it answered itself, waits for more, or reset
    command_ = 0;
    if (mode_ == Mode::Monitor) ack2(out);
}

bool Board::runCommand(std::vector<BoardByte>& out) {
    const auto& a = collected_;
    switch (command_) {
        case wire::kWriteBlock:
            return finishWriteBlock();
        case wire::kReadBlock:
            return readBlock(out);
        case wire::kWriteWord: {
            const uint32_t address = Addr3(a, 0);
            const uint16_t old = readWord(address);
            if (!write(address, a[3]) || !write(address + 1, a[4])) return false;
            afterRegisterWrite(address, old, out);
            return true;
        }
        case wire::kReadWord: {
            const uint32_t address = Addr3(a, 0);
            emit(out, read(address));
            emit(out, read(address + 1));
            return true;
        }
        case wire::kWriteSeq:
            return writeSequence(out);
        case wire::kSetProtection:
            return setProtection(out);
        case wire::kEinit:
            einit_ = true;
            return true;
        case wire::kGetChecksum:
            emit(out, checksum_);
            return true;
        case wire::kSwReset:
            command_ = 0;
            ack2(out);
            runApplication();
            return false;
        case wire::kAsc1Con:
            command_ = 0;
            ack2(out);
            mode_ = Mode::Asc1Wait;
            return false;
        case wire::kGo:
            command_ = 0;
            doGo(Addr3(a, 0), out);
            return false;
        case wire::kCall:
            return startCall(out);
        default:  // the connection test and the rest answer with the acknowledge alone
            return true;
    }
}

bool Board::finishWriteBlock() {
    const auto& a = collected_;
    if (!inData_) {
        need_ = a[3] | (a[4] << 8);
        inData_ = true;
        checksum_ = 0;
        if (need_ > 0) return false;  // the data follow
    }
    if (resetMidBlock_) {
        resetNow();
        return false;
    }
    return true;
}

bool Board::readBlock(std::vector<BoardByte>& out) {
    const uint32_t address = Addr3(collected_, 0);
    const uint32_t length = collected_[3] | (collected_[4] << 8);
    checksum_ = 0;
    for (uint32_t i = 0; i < length; ++i) {
        const uint8_t v = read(address + i);
        checksum_ ^= v;
        emit(out, v);
        if (resetMidBlock_ && i + 1 == length / 2) break;
    }
    if (resetMidBlock_) {
        resetNow();
        return false;
    }
    return true;
}

bool Board::writeSequence(std::vector<BoardByte>& out) {
    // Entries of 6 bytes at the buffer: address (3 bytes), a pad byte, the
    // word to write.
    const uint32_t buffer = Addr3(collected_, 0);
    for (uint32_t i = 0; i < collected_[3]; ++i) {
        const uint32_t e = buffer + 6 * i;
        const uint32_t address = read(e) | (read(e + 1) << 8) | (uint32_t(read(e + 2)) << 16);
        const uint16_t old = readWord(address);
        if (!write(address, read(e + 4)) || !write(address + 1, read(e + 5))) return false;
        afterRegisterWrite(address, old, out);
    }
    return true;
}

bool Board::setProtection(std::vector<BoardByte>& out) {
    if (model_.family != Family::Zt || collected_[0] != protPassword_) {
        command_ = 0;
        emit(out, wire::kProtectionRefused);
        return false;
    }
    protPassword_ = collected_[1];
    protLevel_ = collected_[2];
    return true;
}

bool Board::startCall(std::vector<BoardByte>& out) {
    const uint32_t entry = Addr3(collected_, 0);
    if (!helperZero_ && read(entry) == 'V' && read(entry + 1) == 't' && read(entry + 2) == 'H' &&
        read(entry + 3) == 'p') {
        helperZero_ = true;  // a helper takes a trailing zero byte
        return false;
    }
    doCall(out);
    return false;
}

// ---- jumps, calls, drivers ---------------------------------------------------------------

void Board::doGo(uint32_t address, std::vector<BoardByte>& out) {
    ack2(out);
    uint16_t mask = 0, len = 0;
    if (address == coreStart_ || coreHeaderAt(address, mask, len)) {
        if (address != coreStart_) {
            coreStart_ = address;
            coreEnd_ = address + len - 1;
            coreMask_ = mask;
        }
        emit(out, wire::kCoreStarted);
        return;
    }
    // User code: walk it until it calls the core's start (a breakpoint patch).
    const WalkResult w = Walk(address, coreStart_, [this](uint32_t x) { return read(x); });
    if (!w.reachedPatch) {
        die();  // runs for ever
        return;
    }
    uint16_t sp = registerValue("SP");
    auto push = [&](uint16_t v) {
        sp = static_cast<uint16_t>(sp - 2);
        setRaw(sp, static_cast<uint8_t>(v & 0xFF));
        setRaw(sp + 1u, static_cast<uint8_t>(v >> 8));
    };
    push(static_cast<uint16_t>(w.returnAddress >> 16));
    push(static_cast<uint16_t>(w.returnAddress & 0xFFFF));
    if (const RegisterDef* r = FindRegister(model_, "SP")) {
        setRaw(r->address, static_cast<uint8_t>(sp & 0xFF));
        setRaw(r->address + 1, static_cast<uint8_t>(sp >> 8));
    }
    emit(out, wire::kCoreStarted);
}

void Board::doCall(std::vector<BoardByte>& out) {
    const auto& a = collected_;
    const uint32_t entry = Addr3(a, 0);
    std::array<uint16_t, 8> r{};
    for (int i = 0; i < 8; ++i)
        r[static_cast<std::size_t>(i)] = static_cast<uint16_t>(a[3 + 2 * i] | (a[4 + 2 * i] << 8));
    const uint16_t cp = registerValue("CP");
    auto storeGprs = [&] {
        for (uint32_t i = 0; i < 8; ++i) {
            setRaw(cp + 16u + 2 * i, static_cast<uint8_t>(r[i] & 0xFF));
            setRaw(cp + 17u + 2 * i, static_cast<uint8_t>(r[i] >> 8));
        }
    };
    storeGprs();
    const bool helper = helperZero_;
    if (read(entry) == 'V' && read(entry + 1) == 't' && read(entry + 2) == 'D' &&
        read(entry + 3) == 'r') {
        runDriver(entry, r);
    } else if (helper) {
        const char which = static_cast<char>(read(entry + 4));
        if (const RegisterDef* reg = FindRegister(model_, which == 'P' ? "PLLCON" : "RSTCON")) {
            setRaw(reg->address, static_cast<uint8_t>(r[0] & 0xFF));
            setRaw(reg->address + 1, static_cast<uint8_t>(r[0] >> 8));
        }
    } else {
        runRoutine(entry, cp, r);
    }
    // Any other routine returns the registers as they were.
    storeGprs();
    for (uint16_t v : r) {
        emit(out, static_cast<uint8_t>(v & 0xFF));
        emit(out, static_cast<uint8_t>(v >> 8));
    }
    command_ = 0;
    ack2(out);
    if (helper) emit(out, wire::kHelperDone);
    afterCall_ = !helper;
}

std::array<uint8_t, 8> Board::passwordAt(uint32_t buffer) const {
    std::array<uint8_t, 8> p{};
    for (uint32_t i = 0; i < 8; ++i) p[i] = read(buffer + i);
    return p;
}

int Board::sectorOf(std::size_t unit, uint32_t address) const {
    const auto& s = model_.flash[unit].sections;
    for (std::size_t i = 0; i < s.size(); ++i)
        for (const auto& r : s[i])
            if (address >= r.first && address <= r.last) return static_cast<int>(i);
    return -1;
}

void Board::waitReady(std::size_t unit) {
    const double busyFor = flash_[unit].readyAt - (now_ + pendingDelay_);
    if (busyFor > 0) pendingDelay_ += busyFor;
}

void Board::startErase(std::size_t unit, double us) {
    flash_[unit].readyAt = now_ + pendingDelay_ + us;
}

bool Board::flashBusy(std::size_t unit) const {
    return unit < flash_.size() && now_ + pendingDelay_ < flash_[unit].readyAt;
}

uint16_t Board::program(std::size_t unit, uint32_t address, uint32_t buffer, uint32_t count) {
    const auto& def = model_.flash[unit];
    auto& st = flash_[unit];
    if (st.protectedUnit || (def.internal && protLevel_ >= 2)) return 4;
    waitReady(unit);
    // a block that leaves the unit or touches a locked sector changes nothing
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t a = address + i;
        if (a < def.first || a - def.first >= def.size) return 2;
        const int sector = sectorOf(unit, a);
        if (sector >= 0 && st.locked[static_cast<std::size_t>(sector)]) return 4;
    }
    uint16_t result = 0;
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t a = address + i;
        const uint8_t want = read(buffer + i);
        uint8_t& cell = st.data[a - def.first];
        // Programming moves bits away from the blank value only: an
        // erased-high flash clears bits, an erased-low flash sets them. A
        // blank byte programs nothing; another byte that the cell cannot
        // reach fails the block.
        cell = static_cast<uint8_t>(def.blank == 0x00 ? (cell | want) : (cell & want));
        if (want != def.blank && cell != want) result = 1;
    }
    pendingDelay_ += times_.programWordUs * ((count + 1) / 2);
    return result;
}

uint16_t Board::eraseSector(std::size_t unit, uint32_t sector) {
    const auto& def = model_.flash[unit];
    auto& st = flash_[unit];
    if (sector >= def.sections.size()) return 6;
    if (st.protectedUnit || (def.internal && protLevel_ >= 2) || st.locked[sector]) return 4;
    waitReady(unit);
    for (const auto& r : def.sections[sector])
        std::fill(st.data.begin() + (r.first - def.first),
                  st.data.begin() + (r.last - def.first) + 1, def.blank);
    startErase(unit, times_.eraseSectorUs);
    return 0;
}

uint16_t Board::eraseWordline(std::size_t unit, uint32_t address, uint32_t size) {
    const auto& def = model_.flash[unit];
    auto& st = flash_[unit];
    if (size == 0 || size > def.size) size = 128;
    const uint32_t start = address & ~(size - 1);
    if (start < def.first || start - def.first >= def.size) return 2;
    if (st.protectedUnit || (def.internal && protLevel_ >= 2)) return 4;
    const int sector = sectorOf(unit, start);
    if (sector >= 0 && st.locked[static_cast<std::size_t>(sector)]) return 4;
    waitReady(unit);
    const auto end =
        static_cast<std::size_t>(std::min<uint64_t>(uint64_t{start - def.first} + size, def.size));
    std::fill(st.data.begin() + (start - def.first),
              st.data.begin() + static_cast<std::ptrdiff_t>(end), def.blank);
    startErase(unit, times_.eraseWordlineUs);
    return 0;
}

// Status word 0: bit 0 busy, bit 1 error of the last operation, bit 2 the
// unit is protected, bit 3 a sector is locked, bit 4 unknown command.
// Status word 1: one bit per locked sector.
uint16_t Board::statusWord(std::size_t unit, uint32_t number) const {
    const auto& st = flash_[unit];
    if (number == 0) {
        uint16_t w = 0;
        if (flashBusy(unit)) w |= 0x0001;
        if (st.lastFailed) w |= 0x0002;
        if (st.protectedUnit) w |= 0x0004;
        if (std::find(st.locked.begin(), st.locked.end(), true) != st.locked.end()) w |= 0x0008;
        if (st.lastUnknown) w |= 0x0010;
        return w;
    }
    if (number == 1) {
        uint16_t w = 0;
        for (std::size_t i = 0; i < st.locked.size() && i < 16; ++i)
            if (st.locked[i]) w = static_cast<uint16_t>(w | (1u << i));
        return w;
    }
    return 0;
}

namespace {

uint32_t Join(uint16_t high, uint16_t low) {
    return (uint32_t(high) << 16) | low;
}

}  // namespace

Board::DriverHeader Board::driverHeaderAt(uint32_t entry) {
    DriverHeader h;
    h.generation = read(entry + 4);
    h.unit = read(entry + 5);
    h.burst = readWord(entry + 6);
    h.blank = read(entry + 8);
    h.buffer = Join(readWord(entry + 12), readWord(entry + 10));
    h.wordline = Join(readWord(entry + 16), readWord(entry + 14));
    return h;
}

void Board::runDriver(uint32_t entry, std::array<uint16_t, 8>& r) {
    // r[0] is R8 ... r[7] is R15.
    const DriverHeader h = driverHeaderAt(entry);
    if (h.unit >= model_.flash.size() || !unitVisible(h.unit)) {
        r[7] = 0x0E;  // the flash does not answer
        return;
    }
    flash_[h.unit].lastUnknown = false;
    const uint16_t op = r[0];
    uint16_t result = 0;
    if (op == 0x10 || op == 0x11 || op == 0x20 || op == 0x21) {
        result = lockCommand(h.unit, r);
    } else if (op == 0 && r[7] == 1) {
        // assembly-buffer write: R9 bytes from the buffer at R11:R10 to R14:R13
        result = program(h.unit, Join(r[6], r[5]), Join(r[3], r[2]), r[1] & ~1u);
    } else if (h.generation == 1) {
        result = firstGenerationCommand(entry, h, r);
    } else {
        result = secondGenerationCommand(h, r);
    }
    if (op != 5 && op != 6) flash_[h.unit].lastFailed = result != 0;
    r[7] = result;
}

uint16_t Board::lockCommand(std::size_t unit, const std::array<uint16_t, 8>& r) {
    auto& st = flash_[unit];
    // the password at R11:R10, R9 characters of it, blanks behind
    std::array<uint8_t, 8> pw = passwordAt(Join(r[3], r[2]));
    for (std::size_t i = std::min<std::size_t>(r[1], 8); i < 8; ++i) pw[i] = ' ';
    const uint16_t sector = r[6];
    waitReady(unit);
    pendingDelay_ += times_.protectUs;
    switch (r[0]) {
        case 0x10:
            if (sector >= st.locked.size()) return 6;
            if (st.locked[sector] && st.lockPassword[sector] != pw) return 5;
            st.locked[sector] = true;
            st.lockPassword[sector] = pw;
            return 0;
        case 0x11:
            if (sector >= st.locked.size()) return 6;
            if (st.locked[sector] && st.lockPassword[sector] != pw) return 5;
            st.locked[sector] = false;
            return 0;
        case 0x20:
            if (st.protectedUnit && st.password != pw) return 5;
            st.protectedUnit = true;
            st.password = pw;
            return 0;
        default:  // 0x21
            if (!st.protectedUnit) return 0;
            if (st.password != pw) return 5;
            st.protectedUnit = false;
            return 0;
    }
}

uint16_t Board::firstGenerationCommand(uint32_t entry, const DriverHeader& h,
                                       std::array<uint16_t, 8>& r) {
    const auto& def = model_.flash[h.unit];
    const uint16_t op = r[0];
    const auto baseHigh = static_cast<uint16_t>(def.sections.at(0).at(0).first >> 16);
    if (op != 0 && driverInitialised_ != entry) return 3;  // used before its initialisation
    if (r[1] != baseHigh) return 2;
    switch (op) {
        case 0:
            driverInitialised_ = entry;
            pendingDelay_ += times_.initUs;
            r[3] = static_cast<uint16_t>((h.burst << 8) | h.blank);
            r[1] = static_cast<uint16_t>(h.buffer >> 16);
            r[2] = static_cast<uint16_t>(h.buffer & 0xFFFF);
            return 0;
        case 3:
            return program(h.unit, Join(r[2], r[3]), Join(r[5], r[6]),
                           uint32_t(h.burst) * std::max<uint16_t>(r[4], 1));
        case 2:
            if (r[4] >= def.sections.size()) return 6;
            if (def.sections[r[4]][0].first != Join(r[2], r[3])) return 7;
            return eraseSector(h.unit, r[4]);
        case 5:
            r[1] = statusWord(h.unit, 0);
            return 0;
        default:
            flash_[h.unit].lastUnknown = true;
            return 0xFF;
    }
}

uint16_t Board::secondGenerationCommand(const DriverHeader& h, std::array<uint16_t, 8>& r) {
    switch (r[0]) {
        case 0:
            return program(h.unit, Join(r[6], r[5]), Join(r[3], r[2]), r[1]);
        case 1:
            return eraseSector(h.unit, r[6]);
        case 6:
            r[1] = statusWord(h.unit, r[6]);
            return 0;
        case 0x88:
            return eraseWordline(h.unit, Join(r[6], r[5]), h.wordline);
        default:
            flash_[h.unit].lastUnknown = true;
            return 0xFF;
    }
}

}  // namespace vortelm::sim
