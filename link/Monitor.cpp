#include "link/Monitor.h"

#include <algorithm>
#include <vector>

#include "config/Kernels.h"
#include "core/Helpers.h"
#include "core/Host.h"
#include "core/RunTimeError.h"
#include "link/ComPort.h"
#include "link/DumpIo.h"
#include "sfr/SfrTable.h"

namespace vortelm::link {

void Monitor::begin() {
    port_.Cmd_P();
    port_.setReceiveThreshold(0);
    // Every exchange starts from a clean line: what waits in the input now
    // is the late rest of an earlier exchange, never an answer to this one.
    port_.clearInput();
    stray_ = false;
    // After a failed exchange the board's late answer may still come: this
    // exchange passes over what comes before its first acknowledge.
    hunt_ = port_.lineMayLag;
}

void Monitor::end(int32_t result) {
    // After a failure in which the board said something else than the
    // exchange expects, or more than it took, the rest of its late answer
    // may still be on its way: it is taken away until the line has been
    // quiet for a time-out (three time-outs at most in all), so that the
    // next command meets the board in step. A board that said nothing
    // costs nothing more.
    if (result != 0 && (stray_ || port_.inCount() > 0)) {
        const int32_t quietMs = std::max(st_.TIMEOUT, 1);
        const int64_t giveUp = st_.host->nowUs() + 3 * int64_t{quietMs} * 1000;
        while (port_.SSReceive(quietMs) >= 0 && st_.host->nowUs() < giveUp) {
        }
        port_.clearInput();
    }
    port_.lineMayLag = result != 0;
    port_.setReceiveThreshold(1);
    port_.Cmd_V();
}

void Monitor::sendAddress(int32_t address) {
    port_.SSSend(static_cast<uint8_t>(address & 0xFF));
    port_.SSSend(static_cast<uint8_t>((address >> 8) & 0xFF));
    port_.SSSend(static_cast<uint8_t>((address >> 16) & 0xFF));
}

void Monitor::sendWord(int32_t value) {
    port_.SSSend(static_cast<uint8_t>(value & 0xFF));
    port_.SSSend(static_cast<uint8_t>((value >> 8) & 0xFF));
}

void Monitor::sendBlockRequest(int32_t address, int32_t length, std::span<const uint8_t> data) {
    if (st_.KLINE == 1) {
        sendAddress(address);
        sendWord(length);
        if (!data.empty()) {
            std::vector<uint8_t> copy(data.begin(), data.end());
            port_.SSSendN(copy);
        }
        return;
    }
    std::vector<uint8_t> block;
    block.reserve(5 + data.size());
    for (int shift : {0, 8, 16}) block.push_back(static_cast<uint8_t>((address >> shift) & 0xFF));
    for (int shift : {0, 8}) block.push_back(static_cast<uint8_t>((length >> shift) & 0xFF));
    block.insert(block.end(), data.begin(), data.end());
    port_.SSSendN(block);
}

bool Monitor::expect(uint8_t byte, int32_t timeoutMs) {
    if (hunt_ && byte == st_.codes.A_ACK1) {
        hunt_ = false;
        const int64_t deadline = st_.host->nowUs() + int64_t{std::max(timeoutMs, 0)} * 1000;
        for (;;) {
            const int64_t leftMs = (deadline - st_.host->nowUs() + 999) / 1000;
            if (leftMs <= 0) return false;
            const int b = port_.SSReceive(static_cast<int32_t>(leftMs));
            if (b == byte) return true;
            if (b < 0) return false;
        }
    }
    hunt_ = false;
    const int b = port_.SSReceive(timeoutMs);
    if (b >= 0 && b != byte) stray_ = true;
    return b == byte;
}

int16_t Monitor::Cmd_WriteWord(int32_t adr1, int32_t val1) {
    const auto& c = st_.codes;
    int16_t r = 0;
    begin();
    port_.SSSend(c.C_WRITE_WORD);
    if (!expect(c.A_ACK1, st_.TIMEOUT)) r = -1;
    sendAddress(adr1);
    sendWord(val1);
    if (!expect(c.A_ACK2, st_.TIMEOUT)) r = -2;
    end(r);
    return r;
}

int16_t Monitor::Cmd_ReadWord(int32_t adr1) {
    const auto& c = st_.codes;
    int16_t r = 0;
    begin();
    port_.SSSend(c.C_READ_WORD);
    if (!expect(c.A_ACK1, st_.TIMEOUT)) r = -1;
    sendAddress(adr1);
    bool dataOk = true;
    for (int32_t i = 0; i < 2 && dataOk; ++i) {
        int b = port_.SSReceive(st_.TIMEOUT);
        if (b < 0) {
            r = -3;
            dataOk = false;
        } else {
            dumpio::Write(st_.dump, adr1 + i, static_cast<uint8_t>(b));
            dumpio::SetMark(st_.dump, adr1 + i, dumpio::kDefined, true);
            dumpio::SetMark(st_.dump, adr1 + i, dumpio::kValid, true);
        }
    }
    if (dataOk && !expect(c.A_ACK2, st_.TIMEOUT)) r = -2;
    end(r);
    return r;
}

int32_t Monitor::Cmd_ReadWord_Value(int32_t adr1) {
    const auto& c = st_.codes;
    int32_t r = 0;
    begin();
    port_.SSSend(c.C_READ_WORD);
    if (!expect(c.A_ACK1, st_.TIMEOUT)) r = -1;
    sendAddress(adr1);
    int lo = port_.SSReceive(st_.TIMEOUT);
    int hi = lo < 0 ? -1 : port_.SSReceive(st_.TIMEOUT);
    if (lo < 0 || hi < 0) {
        r = -3;
    } else {
        // the value takes the place of a wrong first acknowledge
        r = lo + hi * 256;
        if (!expect(c.A_ACK2, st_.TIMEOUT)) r = -2;
    }
    end(r < 0 ? r : 0);
    return r;
}

int16_t Monitor::Cmd_WriteWordSequence(int32_t bufferStartAddress, int32_t seqCount) {
    const auto& c = st_.codes;
    int16_t r = 0;
    begin();
    port_.SSSend(c.C_WRITE_SEQ);
    if (!expect(c.A_ACK1, st_.TIMEOUT)) r = -1;
    sendAddress(bufferStartAddress);
    port_.SSSend(static_cast<uint8_t>(seqCount & 0xFF));
    if (!expect(c.A_ACK2, st_.TIMEOUT)) r = -2;
    end(r);
    return r;
}

int16_t Monitor::Cmd_SetProtection(int32_t password, int32_t level, int32_t newpassword) {
    const auto& c = st_.codes;
    int16_t r = 0;
    begin();
    port_.SSSend(c.C_SET_PROTECTION);
    if (!expect(c.A_ACK1, st_.TIMEOUT)) r = -1;
    port_.SSSend(static_cast<uint8_t>(password & 0xFF));
    port_.SSSend(static_cast<uint8_t>(newpassword & 0xFF));
    port_.SSSend(static_cast<uint8_t>(level & 0xFF));
    if (!expect(c.A_ACK2, st_.TIMEOUT)) r = -2;
    end(r);
    return r;
}

int16_t Monitor::Cmd_Einit() {
    const auto& c = st_.codes;
    int16_t r = 0;
    port_.Cmd_P();
    port_.SSSend(c.C_EINIT);
    // Here alone the threshold drops after the command byte has gone out.
    port_.setReceiveThreshold(0);
    if (!expect(c.A_ACK1, st_.TIMEOUT)) r = -1;
    if (!expect(c.A_ACK2, st_.TIMEOUT)) r = -2;
    end(r);
    return r;
}

int16_t Monitor::Cmd_reconnect() {
    const auto& c = st_.codes;
    int16_t r = 0;
    begin();
    port_.SSSend(c.C_TEST_COMM);
    if (!expect(c.A_ACK1, st_.CONNECTTIMEOUT)) r = -1;
    if (!expect(c.A_ACK2, st_.CONNECTTIMEOUT)) r = -2;
    end(r);
    return r;
}

int16_t Monitor::Cmd_testconnection(bool* gaveWay) {
    const auto& c = st_.codes;
    int16_t r = 0;
    port_.Cmd_P2();
    port_.setReceiveThreshold(0);
    // A foreground command that took the line meanwhile owns the threshold
    // now; the test leaves it as it is and gives up.
    auto giveWay = [&]() {
        port_.Cmd_V2();
        port_.TestAbort = 0;
        if (gaveWay) *gaveWay = true;
        return r;
    };
    if (port_.TestAbort == 1) return giveWay();
    port_.SSSend(c.C_TEST_COMM);
    if (port_.TestAbort == 1) return giveWay();
    if (port_.SSReceive2(st_.CONNECTTIMEOUT) != c.A_ACK1) r = -1;
    if (port_.TestAbort == 1) return giveWay();
    if (port_.SSReceive2(st_.CONNECTTIMEOUT) != c.A_ACK2) r = -2;
    if (port_.TestAbort == 1) return giveWay();
    port_.setReceiveThreshold(1);
    port_.Cmd_V2();
    return r;
}

int16_t Monitor::Cmd_Swreset() {
    const auto& c = st_.codes;
    int16_t r = 0;
    begin();
    port_.SSSend(c.C_SWRESET);
    if (!expect(c.A_ACK1, st_.TIMEOUT)) r = -1;
    if (!expect(c.A_ACK2, st_.TIMEOUT)) r = -2;
    end(r);
    return r;
}

int16_t Monitor::Cmd_Jmp(int32_t absadr1) {
    const auto& c = st_.codes;
    int16_t r = 0;
    begin();
    port_.SSSend(c.C_GO);
    if (!expect(c.A_ACK1, st_.TIMEOUT)) r = -1;
    sendAddress(absadr1);
    if (!expect(c.A_ACK2, st_.TIMEOUT)) r = -2;
    end(r);
    return r;
}

bool Monitor::CheckKernelOverwrite(int32_t address1, int32_t length1) const {
    const int64_t first = address1;
    const int64_t last = static_cast<int64_t>(address1) + length1 - 1;
    const int64_t ks = st_.KernelStartAddress;
    const int64_t ke = st_.KernelEndAddress;
    auto inside = [&](int64_t a) { return a >= ks && a <= ke; };
    return inside(first) || inside(last) || (first < ks && last > ke);
}

int16_t Monitor::Cmd_Write(int32_t address, int32_t length) {
    if (CheckKernelOverwrite(address, length)) return -6;
    CheckBound(length, 65535, "block length");
    const auto& c = st_.codes;
    int16_t r = 0;
    auto clearValid = [&]() { MarkDumpBlock(st_.dump, address, length, {0, kMarkValid}); };
    begin();
    port_.SSSend(c.C_WRITE_BLOCK);
    if (!expect(c.A_ACK1, st_.TIMEOUT)) r = -1;
    std::vector<uint8_t> buffer(static_cast<size_t>(length));
    uint8_t sum = 0;
    if (length > 0) {
        ReadDumpBlock(st_.dump, address, buffer);
        MarkDumpBlock(st_.dump, address, length, {kMarkValid, 0});
        for (uint8_t b : buffer) sum ^= b;
    }
    sendBlockRequest(address, length, buffer);
    if (!expect(c.A_ACK2, st_.TIMEOUT)) {
        r = -2;
        clearValid();
    }
    port_.SSSend(c.C_GETCHECKSUM);
    if (!expect(c.A_ACK1, st_.TIMEOUT)) r = -5;
    if (!expect(sum, st_.TIMEOUT)) {
        r = -3;
        clearValid();
    }
    if (!expect(c.A_ACK2, st_.TIMEOUT)) {
        r = -4;
        clearValid();
    }
    end(r);
    return r;
}

int16_t Monitor::Cmd_Read(int32_t address, int32_t length) {
    CheckBound(length, 65535, "block length");
    const auto& c = st_.codes;
    int16_t r = 0;
    auto clearValid = [&]() { MarkDumpBlock(st_.dump, address, length, {0, kMarkValid}); };
    begin();
    port_.SSSend(c.C_READ_BLOCK);
    if (!expect(c.A_ACK1, st_.TIMEOUT)) r = -1;
    sendBlockRequest(address, length, {});
    std::vector<uint8_t> buffer(static_cast<size_t>(length));
    uint8_t sum = 0;
    if (port_.SSReceiveN(buffer, st_.TIMEOUT) == -1) {
        r = -3;
    } else {
        if (length > 0) WriteDumpBlock(st_.dump, address, buffer, kMarksFromTarget);
        for (uint8_t b : buffer) sum ^= b;
    }
    if (!expect(c.A_ACK2, st_.TIMEOUT)) {
        r = -2;
        clearValid();
    }
    port_.SSSend(c.C_GETCHECKSUM);
    if (!expect(c.A_ACK1, st_.TIMEOUT)) r = -5;
    // A mismatch alone leaves the Valid marks as they are.
    if (!expect(sum, st_.TIMEOUT)) r = -3;
    if (!expect(c.A_ACK2, st_.TIMEOUT)) {
        r = -4;
        clearValid();
    }
    end(r);
    return r;
}

int16_t Monitor::Cmd_Call(int32_t absadr1, CallFrame& frame, bool sendZero) {
    const auto& c = st_.codes;
    int16_t r = 0;
    begin();
    port_.SSSend(c.C_CALL);
    if (!expect(c.A_ACK1, st_.TIMEOUT)) r = -1;
    sendAddress(absadr1);
    for (int32_t w : frame.r) sendWord(w);
    if (sendZero) port_.SSSend(0);

    // A routine may run long: up to ten rounds of the time-out for its first
    // byte. A byte that comes in the tenth round is taken as a failure.
    int first = -1;
    int counter = 0;
    do {
        first = port_.SSReceive(st_.TIMEOUT);
        ++counter;
    } while (first < 0 && counter < 10);
    if (first < 0 || counter >= 10) {
        r = -2;
    } else {
        std::array<uint8_t, 16> in{};
        in[0] = static_cast<uint8_t>(first);
        for (size_t i = 1; i < in.size(); ++i) {
            const int b = port_.SSReceive(st_.TIMEOUT);
            in[i] = b < 0 ? 0 : static_cast<uint8_t>(b);
        }
        if (!expect(c.A_ACK2, st_.TIMEOUT)) {
            r = -1;
        } else {
            for (size_t i = 0; i < frame.r.size(); ++i)
                frame.r[i] = in[2 * i] + in[2 * i + 1] * 256;
        }
        // the driver's extra trailing byte is taken here so that it never
        // reaches the terminal
        if (sendZero) (void)port_.SSReceive(st_.TIMEOUT);
    }
    end(r);
    return r;
}

int32_t Monitor::readWordVia(int32_t address) {
    (void)Cmd_Read(address, 2);
    return dumpio::Read(st_.dump, address) + dumpio::Read(st_.dump, address + 1) * 256;
}

int32_t Monitor::cmd_readsfr(std::string_view name) {
    const int32_t i = SfrIndexByName(st_, name);
    if (i < 0) return -1;
    if (st_.ConnectionState != kConnectedAndReady) return -2;
    const int32_t address = st_.sfrTable[static_cast<size_t>(i)].address;
    if (HasFeature(st_, "READWORD", -1)) {
        (void)Cmd_ReadWord(address);
    } else {
        (void)Cmd_Read(address, 1);
        (void)Cmd_Read(address + 1, 1);
    }
    return 0;
}

int32_t Monitor::cmd_readgpr(int32_t number) {
    const int32_t cp = SfrIndexByName(st_, "CP");
    if (cp < 0) return -1;
    const int32_t cpValue = readWordVia(st_.sfrTable[static_cast<size_t>(cp)].address);
    return readWordVia(cpValue + 2 * number);
}

int32_t Monitor::cmd_pop(bool changeStackpointer) {
    const int32_t sp = SfrIndexByName(st_, "SP");
    if (sp < 0) return -1;
    const int32_t spAddress = st_.sfrTable[static_cast<size_t>(sp)].address;
    const int32_t spValue = readWordVia(spAddress);
    const int32_t value = readWordVia(spValue);
    if (changeStackpointer) (void)Cmd_WriteWord(spAddress, spValue + 2);
    return value;
}

int32_t Monitor::cmd_pop2nd(bool changeStackpointer) {
    const int32_t sp = SfrIndexByName(st_, "SP");
    if (sp < 0) return -1;
    const int32_t spAddress = st_.sfrTable[static_cast<size_t>(sp)].address;
    const int32_t spValue = readWordVia(spAddress);
    const int32_t value = readWordVia(spValue + 2);
    if (changeStackpointer) (void)Cmd_WriteWord(spAddress, spValue + 2);
    return value;
}

}  // namespace vortelm::link
