#include "sim/Fault.h"

#include <cstdlib>

namespace vortelm::sim {

bool IsByteFault(FaultKind kind) {
    return kind == FaultKind::Drop || kind == FaultKind::Flip || kind == FaultKind::Stall;
}

bool ParseFaults(std::string_view text, FaultPlan& plan, std::string& error) {
    while (!text.empty()) {
        const std::size_t comma = text.find(',');
        std::string item(text.substr(0, comma));
        text = comma == std::string_view::npos ? std::string_view{} : text.substr(comma + 1);
        if (item.empty()) continue;
        const std::size_t at = item.find_first_of("@%");
        if (at == std::string::npos) {
            error = "fault '" + item + "' needs @N or %P";
            return false;
        }
        const std::string kind = item.substr(0, at);
        const std::string value = item.substr(at + 1);
        Fault f;
        if (kind == "drop")
            f.kind = FaultKind::Drop;
        else if (kind == "flip")
            f.kind = FaultKind::Flip;
        else if (kind == "stall")
            f.kind = FaultKind::Stall;
        else if (kind == "wrongack")
            f.kind = FaultKind::WrongAck;
        else if (kind == "reset")
            f.kind = FaultKind::Reset;
        else if (kind == "die")
            f.kind = FaultKind::Die;
        else if (kind == "hangup")
            f.kind = FaultKind::Hangup;
        else {
            error = "unknown fault '" + kind + "'";
            return false;
        }
        char* end = nullptr;
        if (item[at] == '@') {
            const unsigned long n = std::strtoul(value.c_str(), &end, 10);
            if (value.empty() || *end != '\0' || n == 0 || n > 0xFFFFFFFFul) {
                error = "fault '" + item + "': N counts from 1";
                return false;
            }
            f.at = static_cast<uint32_t>(n);
        } else {
            const double p = std::strtod(value.c_str(), &end);
            if (value.empty() || *end != '\0' || !(p >= 0 && p <= 100)) {
                error = "fault '" + item + "': P is a percentage";
                return false;
            }
            f.percent = p;
        }
        plan.faults.push_back(f);
    }
    return true;
}

}  // namespace vortelm::sim
