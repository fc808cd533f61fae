#pragma once
// Changes of the channel after a connect: a new baud rate on both ends (the
// divider is computed here from the CPU clock and written into the target's
// baud registers while the old rate still holds, then the host follows), and
// the move of the monitor to the second serial channel.

#include <cstdint>

#include "core/ProgramState.h"

namespace vortelm::link {

class ComPort;

// The divider arithmetic of the three families, on their own so that it can
// be checked without a line. Deviations are in percent.
struct Ald4Divider {
    int32_t reload = 0;
    int32_t real = 0;
    double deviation = 0;  // (real - rate) / rate * 100
};
[[nodiscard]] Ald4Divider Ald4BaudDivider(int32_t clk, int32_t s0con, int32_t rate);

struct ZtDivider {
    int32_t fdv = 0;
    int32_t reload = 0;
    int32_t real = 0;
    double deviation = 0;  // signed
};
// The fractional divider search: it stops at the first divider whose
// deviation is below 2 %, not at the best one.
[[nodiscard]] ZtDivider ZtBaudDivider(int32_t clk, int32_t fdv, int32_t rate);

struct Zt7Divider {
    int32_t pdiv = 0;
    int32_t real = 0;
    double deviation = 0;  // signed
};
[[nodiscard]] Zt7Divider Zt7BaudDivider(int32_t clk, int32_t fdrl, int32_t brgl, int32_t rate);

// The addresses of the first serial channel's registers on the ZT7 family.
constexpr int32_t kZt7Fdrl = 0x204004, kZt7Brgl = 0x20401C, kZt7Brgh = 0x20401E;

// Stores the new rate, changes the target's divider when a monitor runs,
// then sets the host's port to it: 0, or -1, -2, -3 when the ZT7 channel
// cannot follow (the old rate is kept and the port left as it was).
int setBaudrate(ProgramState& st, ComPort& port, int32_t newRate);

// The move to the second serial channel: 0, -1, -2, -100, -101.
int switchToAsc1(ProgramState& st, ComPort& port);
int Asc02Asc1_pre(ProgramState& st, ComPort& port);
int Asc02Asc1_ASC1Connection(ProgramState& st, ComPort& port);

}  // namespace vortelm::link
