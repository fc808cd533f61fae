#pragma once
// Faults the line or the board can be told to make, from the option text
// "fault=KIND@N" (the n-th byte the board sends, or the n-th monitor
// command, counted from 1) or "fault=KIND%P" (each with a chance of P
// percent, drawn from the seed). Several are joined with ",".
//   drop    a byte the board sends is lost            (bytes)
//   flip    one bit of a byte the board sends flips   (bytes)
//   stall   the board pauses before a byte (stallms)  (bytes)
//   wrongack the second acknowledge is wrong          (commands)
//   reset   the board resets in the middle of a block (commands)
//   die     the monitor stops answering               (commands)
//   hangup  the line goes away                        (commands)

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vortelm::sim {

enum class FaultKind : uint8_t { Drop, Flip, Stall, WrongAck, Reset, Die, Hangup };

struct Fault {
    FaultKind kind = FaultKind::Drop;
    uint32_t at = 0;     // n-th byte or command, 0 if by chance
    double percent = 0;  // chance per byte or command
};

struct FaultPlan {
    std::vector<Fault> faults;
    double stallMs = 3000;
};

// Parses "drop@3,flip%0.5"; returns false with `error` set on bad text.
[[nodiscard]] bool ParseFaults(std::string_view text, FaultPlan& plan, std::string& error);
[[nodiscard]] bool IsByteFault(FaultKind kind);

}  // namespace vortelm::sim
