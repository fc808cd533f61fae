#pragma once
// The line between host and board: it owns time. Bytes take 10 bit times
// each at the sender's rate when pacing is on (absolute deadlines, so a late
// wake-up delivers every byte that is due), answers come after a turnaround
// latency, a K-Line adapter echoes every host byte, and a trace records each
// byte with direction and time. All times are microseconds on the clock the
// caller passes in.

#include <cstdint>
#include <cstdio>
#include <deque>
#include <memory>
#include <optional>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "sim/Board.h"
#include "sim/Fault.h"

namespace vortelm::sim {

struct LineOptions {
    bool kline = false;
    bool pace = false;
    double latencyUs = 0;
    bool knowsHostRate = true;  // false on TCP: rates are taken to agree
    std::string tracePath;
    // A silence from the host longer than this makes the monitor give up a
    // command it has only partly received (longer than the host's time-out).
    double resyncUs = 2'500'000;
};

class Line {
  public:
    Line(Board& board, LineOptions options, FaultPlan faults, uint32_t seed);
    ~Line();
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    // Host side.
    void hostWrite(std::span<const uint8_t> bytes, int64_t now);
    std::size_t hostRead(std::span<uint8_t> out, int64_t now);
    [[nodiscard]] std::size_t hostWaitingIn(int64_t now);
    [[nodiscard]] std::size_t hostWaitingOut(int64_t now);
    void clearHostInput(int64_t now);
    void setHostRate(double rate, bool framingMatches);
    [[nodiscard]] double hostRate() const { return hostRate_; }
    [[nodiscard]] std::optional<int64_t> nextEvent() const;
    // The time of the last byte on its way in either direction (nothing when
    // the line is quiet): a program serving the line may take the bytes
    // before it in batches, and only this one needs to be on time.
    [[nodiscard]] std::optional<int64_t> lastEvent() const;
    [[nodiscard]] bool hungUp() const { return hungUp_; }

    // Board side: bytes the board sends on its own (the application prints).
    void boardSend(std::span<const uint8_t> bytes, int64_t now);
    // Runs everything due up to `now`.
    void advance(int64_t now);
    // The board was reset: what it had not sent yet is lost.
    void boardReset(int64_t now);

    [[nodiscard]] Board& board() { return board_; }

  private:
    struct Timed {
        double t;
        uint8_t byte;
        bool fromBoard;
    };
    [[nodiscard]] double byteTime(double rate) const { return options_.pace ? 10e6 / rate : 0.0; }
    [[nodiscard]] bool ratesAgree() const;
    void schedule(const std::vector<BoardByte>& out, double t, bool reply);
    void deliver(double t, uint8_t b, bool fromBoard);
    void trace(double t, const char* dir, uint8_t b);
    [[nodiscard]] bool hit(FaultKind kind);

    Board& board_;
    LineOptions options_;
    FaultPlan faults_;
    std::mt19937 rng_;
    std::FILE* trace_ = nullptr;
    double hostRate_ = 9600;
    bool framingMatches_ = true;
    std::deque<Timed> toBoard_;  // host bytes on their way, by arrival time
    std::deque<Timed> toHost_;   // bytes for the host, by arrival time
    double hostLineFree_ = 0;
    double boardLineFree_ = 0;
    double boardBusyUntil_ = 0;
    uint32_t boardBytes_ = 0;
    bool hungUp_ = false;
    double lastHostByte_ = -1;  // when the board took the host's last byte
};

}  // namespace vortelm::sim
