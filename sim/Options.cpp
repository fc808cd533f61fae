#include "sim/Options.h"

#include <cstdlib>

namespace vortelm::sim {
namespace {

bool Number(std::string_view v, double& out) {
    const std::string s(v);
    char* end = nullptr;
    out = std::strtod(s.c_str(), &end);
    return !s.empty() && *end == '\0' && out >= 0;
}

bool Flag(std::string_view v, bool& out) {
    if (v == "1" || v == "on" || v == "true" || v == "yes") return out = true, true;
    if (v == "0" || v == "off" || v == "false" || v == "no") return out = false, true;
    return false;
}

}  // namespace

bool ApplySimOption(std::string_view key, std::string_view value, SimOptions& o,
                    std::string& error) {
    double d = 0;
    const std::string k(key);
    if (k == "kline" || k == "pace") {
        if (!Flag(value, k == "kline" ? o.kline : o.pace))
            return error = k + " takes 0 or 1", false;
    } else if (k == "latency") {
        if (!Number(value, d) || d > 10000) return error = "latency takes milliseconds", false;
        o.latencyMs = d;
    } else if (k == "flashtime") {
        if (value == "0")
            o.flashReal = false;
        else if (value == "real")
            o.flashReal = true;
        else
            return error = "flashtime takes 0 or real", false;
    } else if (k == "seed") {
        if (!Number(value, d) || d > 4294967295.0) return error = "seed takes a number", false;
        o.seed = static_cast<uint32_t>(d);
    } else if (k == "fault") {
        if (!ParseFaults(value, o.faults, error)) return false;
    } else if (k == "stallms") {
        if (!Number(value, d) || d > 600000) return error = "stallms takes milliseconds", false;
        o.faults.stallMs = d;
    } else if (k == "trace") {
        o.tracePath = std::string(value);
    } else if (k == "mc") {
        o.controller = std::string(value);
    } else if (k == "clk") {
        if (!Number(value, d) || d < 1000 || d > 1e9) return error = "clk takes hertz", false;
        o.clk = static_cast<uint32_t>(d);
    } else if (k == "lines") {
        if (value == "rts-reset-dtr-boot" || value == "rts-reset-dtr-boot-inverted")
            o.resetOnDtr = false;
        else if (value == "dtr-reset-rts-boot" || value == "dtr-reset-rts-boot-inverted")
            o.resetOnDtr = true;
        else
            return error =
                       "lines takes rts-reset-dtr-boot or dtr-reset-rts-boot, each with -inverted "
                       "or without",
                   false;
        o.linesInverted = value.ends_with("-inverted");
    } else if (k == "start") {
        if (value == "bootstrap")
            o.startInApplication = false;
        else if (value == "run")
            o.startInApplication = true;
        else
            return error = "start takes bootstrap or run", false;
    } else {
        error = "unknown option '" + k + "'";
        return false;
    }
    return true;
}

bool ParseSimOptions(std::string_view text, SimOptions& o, std::string& error) {
    if (!text.empty() && text.front() == '?') text.remove_prefix(1);
    while (!text.empty()) {
        const std::size_t amp = text.find('&');
        const std::string_view item = text.substr(0, amp);
        text = amp == std::string_view::npos ? std::string_view{} : text.substr(amp + 1);
        if (item.empty()) continue;
        const std::size_t eq = item.find('=');
        if (eq == std::string_view::npos) {
            error = "option '" + std::string(item) + "' needs a value";
            return false;
        }
        if (!ApplySimOption(item.substr(0, eq), item.substr(eq + 1), o, error)) return false;
    }
    return true;
}

}  // namespace vortelm::sim
