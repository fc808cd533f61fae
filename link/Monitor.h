#pragma once
// The host side of the monitor command protocol: one function per exchange
// with the running core. Each exchange is bracketed by the semaphore and the
// receive threshold, runs all its steps whatever fails on the way, and gives
// the last failure's code (0 for success). Nothing here logs; the callers
// turn the codes into messages.

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "core/ProgramState.h"

namespace vortelm::link {

class ComPort;

// The eight words a called routine gets in R8 to R15 and gives back.
struct CallFrame {
    std::array<int32_t, 8> r{};  // r[0] is R8, r[7] is R15
};

class Monitor {
  public:
    Monitor(ProgramState& st, ComPort& port) : st_(st), port_(port) {}

    [[nodiscard]] int16_t Cmd_WriteWord(int32_t adr1, int32_t val1);
    [[nodiscard]] int16_t Cmd_ReadWord(int32_t adr1);
    // The word (0 to 65535), or -2 / -3.
    [[nodiscard]] int32_t Cmd_ReadWord_Value(int32_t adr1);
    [[nodiscard]] int16_t Cmd_WriteWordSequence(int32_t bufferStartAddress, int32_t seqCount);
    [[nodiscard]] int16_t Cmd_SetProtection(int32_t password, int32_t level, int32_t newpassword);
    [[nodiscard]] int16_t Cmd_Einit();
    [[nodiscard]] int16_t Cmd_reconnect();
    // The background test of the connection check; gives way to a foreground
    // command through TestAbort, and then tells so through gaveWay.
    [[nodiscard]] int16_t Cmd_testconnection(bool* gaveWay = nullptr);
    [[nodiscard]] int16_t Cmd_Swreset();
    [[nodiscard]] int16_t Cmd_Jmp(int32_t absadr1);
    [[nodiscard]] int16_t Cmd_Write(int32_t address, int32_t length);
    [[nodiscard]] int16_t Cmd_Read(int32_t address, int32_t length);
    // Calls a routine on the target. The frame's words go out and, when the
    // second acknowledge is right, take the words the routine left.
    [[nodiscard]] int16_t Cmd_Call(int32_t absadr1, CallFrame& frame, bool sendZero = false);

    // True when the range touches the running core.
    [[nodiscard]] bool CheckKernelOverwrite(int32_t address1, int32_t length1) const;

    // Register helpers on top of the exchanges.
    [[nodiscard]] int32_t cmd_readsfr(std::string_view name);
    [[nodiscard]] int32_t cmd_readgpr(int32_t number);
    [[nodiscard]] int32_t cmd_pop(bool changeStackpointer);
    [[nodiscard]] int32_t cmd_pop2nd(bool changeStackpointer);

  private:
    void begin();              // Cmd_P, threshold 0, the input drained
    void end(int32_t result);  // after a failure the line settles; threshold 1, Cmd_V
    void sendAddress(int32_t address);
    void sendWord(int32_t value);
    // Address, length and the data behind them (empty for a read), as the
    // byte-by-byte sends would put them on the line; without the K-Line
    // echo to take byte by byte they go out as one block, so that the line
    // does not stand still between them waiting for each to drain.
    void sendBlockRequest(int32_t address, int32_t length, std::span<const uint8_t> data);
    [[nodiscard]] bool expect(uint8_t byte, int32_t timeoutMs);
    [[nodiscard]] int32_t readWordVia(int32_t address);  // Cmd_Read(address, 2), word from dump

    ProgramState& st_;
    ComPort& port_;
    bool stray_ = false;  // a byte came that the exchange did not expect
    bool hunt_ = false;   // the first acknowledge is looked for past late bytes
};

}  // namespace vortelm::link
