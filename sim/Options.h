#pragma once
// Options of a virtual board, from the text behind "sim:" ("?a=1&b=2") or
// from the command line of vortelm-sim.

#include <cstdint>
#include <string>
#include <string_view>

#include "sim/Fault.h"

namespace vortelm::sim {

struct SimOptions {
    bool kline = false;
    bool pace = false;
    double latencyMs = 0;
    bool flashReal = false;
    uint32_t seed = 1;
    FaultPlan faults;
    std::string tracePath;
    std::string controller;  // mc=NAME overrides the configured controller
    uint32_t clk = 0;        // 0: the model's clock
    // How the adapter's lines reach the board (lines=): RESET on RTS and the
    // BSL pin on DTR or the other way round, active when the host asserts
    // the line or, inverted, when it does not.
    bool resetOnDtr = false;
    bool linesInverted = false;
    // start=run: the board comes up running its application, as a board
    // plugged in without its boot button does (the default is bootstrap).
    bool startInApplication = false;
};

// Takes "?kline=1&pace=1&latency=2&flashtime=real&seed=7&fault=drop@3&trace=/tmp/t"
// (the "?" is optional). Keys: kline, pace, latency (ms), flashtime (0|real),
// seed, fault, stallms, trace, mc, clk, lines (rts-reset-dtr-boot,
// rts-reset-dtr-boot-inverted, dtr-reset-rts-boot, dtr-reset-rts-boot-inverted),
// start (bootstrap|run). Returns false with `error` set.
[[nodiscard]] bool ParseSimOptions(std::string_view text, SimOptions& options, std::string& error);
// One "key=value" pair, as the two forms share it.
[[nodiscard]] bool ApplySimOption(std::string_view key, std::string_view value, SimOptions& options,
                                  std::string& error);

}  // namespace vortelm::sim
