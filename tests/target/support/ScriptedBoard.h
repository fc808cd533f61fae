#pragma once
// A small in-memory board for the target tests: a byte channel that answers
// the bootstrap loader, the loader and the monitor commands at once as they
// are written, with knobs for every way a board can misbehave. It records
// every byte the host sent.

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "link/ByteChannel.h"

namespace vortelm::testing {

class ScriptedBoard : public channel::ByteChannel {
  public:
    enum class Mode { Bootstrap, Loader, Core, Monitor, Dead };

    // ---- configuration
    Mode mode = Mode::Bootstrap;
    uint8_t idByte = 0xC5;
    int loaderLength = 32;
    bool loaderAck = true;
    uint8_t loaderAckValue = 0x01;
    int coreLength = 64;
    uint8_t coreAckValue = 0x03;
    bool kline = false;
    bool callZero = false;             // the called routine takes a zero byte and sends one more
    int64_t callDelayUs = 0;           // the call's reply comes this late (needs clock)
    std::function<int64_t()> clock;    // for held replies
    std::set<uint8_t> silentCommands;  // commands that get no answer at all
    std::map<uint8_t, uint8_t> wrongAck1;  // command -> byte sent instead of AA
    std::map<uint8_t, uint8_t> wrongAck2;  // command -> byte sent instead of EA
    bool wrongChecksum = false;
    int dropReadDataAfter = -1;       // a read block stops after this many data bytes
    int dieAfterCommands = -1;        // the board stops answering after this many commands
    bool failWrites = false;          // channel write fails
    bool coreRestartsOnJump = false;  // a jump is answered by the core's start byte 0x03
    bool asc1Wait = false;            // switched to the second channel: a 0x00 gives AA D5

    // ---- what happened
    std::vector<uint8_t> received;  // every byte the host wrote
    std::vector<uint8_t> loader;    // the loader as received
    std::vector<uint8_t> core;      // the core as received
    std::vector<uint8_t> commands;  // command bytes in order
    std::map<uint32_t, uint8_t> memory;
    int einitCount = 0;
    std::vector<uint32_t> jumps;                            // target addresses of the jumps
    std::vector<std::pair<uint32_t, uint32_t>> wordWrites;  // address, word of each word write
    bool open = true;

    uint8_t peek(uint32_t a) const {
        auto it = memory.find(a);
        return it == memory.end() ? 0 : it->second;
    }

    // ---- ByteChannel
    std::string describe() const override { return "scripted"; }
    bool isOpen() const override { return open; }
    void close() override { open = false; }
    std::ptrdiff_t write(std::span<const uint8_t> bytes) override {
        if (failWrites || !open) return -1;
        for (uint8_t b : bytes) {
            received.push_back(b);
            if (kline) in_.push_back(b);
            take(b);
        }
        return static_cast<std::ptrdiff_t>(bytes.size());
    }
    std::ptrdiff_t read(std::span<uint8_t> out) override {
        size_t n = std::min(out.size(), bytesWaitingIn());
        for (size_t i = 0; i < n; ++i) {
            out[i] = in_.front();
            in_.pop_front();
        }
        return static_cast<std::ptrdiff_t>(n);
    }
    size_t bytesWaitingIn() override { return held() ? 0 : in_.size(); }
    size_t bytesWaitingOut() override { return 0; }
    void clearInput() override { in_.clear(); }
    channel::Control configure(const channel::LineSettings&) override {
        return channel::Control::Ok;
    }
    channel::Control setRts(bool) override { return channel::Control::Unsupported; }
    channel::Control setDtr(bool) override { return channel::Control::Unsupported; }
    channel::Control setBreak(bool) override { return channel::Control::Unsupported; }
    std::string lastError() const override { return ""; }

    // Bytes that appear on the line without a command (a running program).
    void inject(std::initializer_list<uint8_t> bytes) { in_.insert(in_.end(), bytes); }

  private:
    bool held() const { return clock && clock() < holdUntil_; }
    void send(uint8_t b) { in_.push_back(b); }
    void send16(uint32_t v) {
        send(static_cast<uint8_t>(v & 0xFF));
        send(static_cast<uint8_t>((v >> 8) & 0xFF));
    }
    uint32_t addr(size_t at) const {
        return args_[at] | (args_[at + 1] << 8) | (args_[at + 2] << 16);
    }
    uint32_t word(size_t at) const { return args_[at] | (args_[at + 1] << 8); }
    uint8_t ack1For(uint8_t cmd) const {
        auto it = wrongAck1.find(cmd);
        return it == wrongAck1.end() ? 0xAA : it->second;
    }
    uint8_t ack2For(uint8_t cmd) const {
        auto it = wrongAck2.find(cmd);
        return it == wrongAck2.end() ? 0xEA : it->second;
    }

    void take(uint8_t b) {
        switch (mode) {
            case Mode::Dead:
                return;
            case Mode::Bootstrap:
                if (b == 0x00) {
                    send(idByte);
                    mode = Mode::Loader;
                }
                return;
            case Mode::Loader:
                loader.push_back(b);
                if (static_cast<int>(loader.size()) == loaderLength) {
                    if (loaderAck) send(loaderAckValue);
                    mode = Mode::Core;
                    if (coreLength == 0) finishCore();
                }
                return;
            case Mode::Core:
                core.push_back(b);
                if (static_cast<int>(core.size()) == coreLength) finishCore();
                return;
            case Mode::Monitor:
                monitorByte(b);
                return;
        }
    }

    void finishCore() {
        send(coreAckValue);
        mode = Mode::Monitor;
    }

    void monitorByte(uint8_t b) {
        if (cmd_ < 0) {
            if (asc1Wait && b == 0x00) {  // the first byte on the second channel
                asc1Wait = false;
                send(0xAA);
                send(0xD5);
                return;
            }
            if (b == 0x00) {  // the init byte of a new connect: autobaud
                send(0x04);
                send(0x03);
                return;
            }
            if (dieAfterCommands == 0) {
                mode = Mode::Dead;
                return;
            }
            if (dieAfterCommands > 0) --dieAfterCommands;
            commands.push_back(b);
            cmd_ = b;
            args_.clear();
            need_ = argsFor(b);
            silent_ = silentCommands.count(b) != 0;
            if (silent_) {  // takes its arguments and says nothing
                if (need_ <= 0) cmd_ = -1;
                return;
            }
            if (need_ < 0) {  // unknown byte: no answer
                cmd_ = -1;
                return;
            }
            send(ack1For(b));
            if (need_ == 0) finish();
            return;
        }
        args_.push_back(b);
        if (cmd_ == 0x84 && args_.size() == 5) need_ = 5 + static_cast<int>(word(3));
        if (static_cast<int>(args_.size()) >= need_) finish();
    }

    int argsFor(uint8_t c) const {
        switch (c) {
            case 0x84:
                return 5;
            case 0x85:
                return 5;
            case 0x33:
                return 0;
            case 0x82:
                return 5;
            case 0xCD:
                return 3;
            case 0x31:
            case 0x93:
            case 0x32:
            case 0xCC:
                return 0;
            case 0x41:
                return 3;
            case 0x9F:
                return 3 + 16 + (callZero ? 1 : 0);
            case 0xCE:
                return 4;
            case 0xD1:
                return 3;
            default:
                return -1;
        }
    }

    void finish() {
        const auto c = static_cast<uint8_t>(cmd_);
        cmd_ = -1;
        if (silent_) return;
        switch (c) {
            case 0x84: {
                uint32_t a = addr(0);
                uint8_t sum = 0;
                for (size_t i = 5; i < args_.size(); ++i) {
                    memory[a + static_cast<uint32_t>(i - 5)] = args_[i];
                    sum ^= args_[i];
                }
                checksum_ = sum;
                send(ack2For(c));
                break;
            }
            case 0x85: {
                uint32_t a = addr(0);
                uint32_t n = word(3);
                uint8_t sum = 0;
                for (uint32_t i = 0; i < n; ++i) {
                    if (dropReadDataAfter >= 0 && static_cast<int>(i) >= dropReadDataAfter) {
                        checksum_ = sum;
                        return;  // the rest of the block never comes
                    }
                    send(peek(a + i));
                    sum ^= peek(a + i);
                }
                checksum_ = sum;
                send(ack2For(c));
                break;
            }
            case 0x33:
                send(wrongChecksum ? static_cast<uint8_t>(checksum_ ^ 0x5A) : checksum_);
                send(ack2For(c));
                break;
            case 0x82:
                memory[addr(0)] = args_[3];
                memory[addr(0) + 1] = args_[4];
                wordWrites.emplace_back(addr(0), word(3));
                send(ack2For(c));
                break;
            case 0xCD:
                send(peek(addr(0)));
                send(peek(addr(0) + 1));
                send(ack2For(c));
                break;
            case 0x31:
                ++einitCount;
                send(ack2For(c));
                break;
            case 0x93:
            case 0x32:
                send(ack2For(c));
                break;
            case 0xCC:
                send(ack2For(c));
                asc1Wait = true;
                break;
            case 0x41:
                send(ack2For(c));
                if (coreRestartsOnJump) send(0x03);
                jumps.push_back(addr(0));
                break;
            case 0x9F: {
                if (callDelayUs > 0 && clock) holdUntil_ = clock() + callDelayUs;
                for (int i = 0; i < 8; ++i) {
                    uint32_t v = word(3 + 2 * static_cast<size_t>(i));
                    if (i == 7) v = 0;      // R15: success
                    if (i == 0) v = v + 1;  // R8 comes back changed
                    send16(v);
                }
                send(ack2For(c));
                if (callZero) send(0x77);
                break;
            }
            case 0xCE: {
                uint32_t buf = addr(0);
                int n = args_[3];
                for (int i = 0; i < n; ++i) {
                    uint32_t e = buf + 6 * static_cast<uint32_t>(i);
                    uint32_t target = peek(e) | (peek(e + 1) << 8) | (peek(e + 2) << 16);
                    memory[target] = peek(e + 4);
                    memory[target + 1] = peek(e + 5);
                }
                send(ack2For(c));
                break;
            }
            case 0xD1:
                protection = {args_[0], args_[1], args_[2]};
                send(ack2For(c));
                break;
            default:
                break;
        }
    }

  public:
    std::vector<uint8_t> protection;

  private:
    std::deque<uint8_t> in_;
    int cmd_ = -1;
    int need_ = 0;
    std::vector<uint8_t> args_;
    uint8_t checksum_ = 0;
    int64_t holdUntil_ = 0;
    bool silent_ = false;
};

}  // namespace vortelm::testing
