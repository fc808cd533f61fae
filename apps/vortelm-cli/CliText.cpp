#include "apps/vortelm-cli/CliText.h"

#include <cstdio>

namespace vortelm::cli {

bool IsCommandEcho(std::string_view piece) {
    return piece.size() >= 3 && piece.front() == '>' && piece.find("\r\n") == piece.size() - 2;
}

std::string CleanLines::feed(std::string_view piece) {
    const bool echo = IsCommandEcho(piece);
    std::string out;
    if (echo && dropEcho_) return out;
    out.reserve(piece.size() + 2);
    if (echo && !atLineStart()) {
        // A report that ended without its line break: the echo goes below it.
        if (heldCr_) heldCr_ = false;
        out += '\n';
        atLineStart_ = true;
    }
    for (char c : piece) {
        if (heldCr_) {
            heldCr_ = false;
            if (c == '\n') {
                out += '\n';
                atLineStart_ = true;
                continue;
            }
            out += '\r';
        }
        if (c == '\r') {
            heldCr_ = true;
        } else {
            out += c;
            atLineStart_ = c == '\n';
        }
    }
    return out;
}

std::string CleanLines::finish() {
    std::string out;
    if (heldCr_ || !atLineStart_) out = "\n";
    heldCr_ = false;
    atLineStart_ = true;
    return out;
}

std::string ProgressBar::Line(int64_t value, int64_t maximum, int64_t elapsedUs) {
    constexpr int kWidth = 30;
    if (maximum <= 0) maximum = 1;
    if (value < 0) value = 0;
    if (value > maximum) value = maximum;
    const int filled = static_cast<int>(value * kWidth / maximum);
    const int percent = static_cast<int>(value * 100 / maximum);
    std::string bar(static_cast<size_t>(filled), '#');
    bar.append(static_cast<size_t>(kWidth - filled), '.');
    char rate[32];
    if (elapsedUs <= 0) {
        std::snprintf(rate, sizeof rate, "-");
    } else {
        const double perSecond = static_cast<double>(value) * 1e6 / static_cast<double>(elapsedUs);
        if (perSecond >= 1024.0 * 1024.0)
            std::snprintf(rate, sizeof rate, "%.1f MiB/s", perSecond / (1024.0 * 1024.0));
        else if (perSecond >= 1024.0)
            std::snprintf(rate, sizeof rate, "%.1f KiB/s", perSecond / 1024.0);
        else
            std::snprintf(rate, sizeof rate, "%.0f B/s", perSecond);
    }
    char line[160];
    std::snprintf(line, sizeof line, "[%s] %lld/%lld bytes %3d%% %s", bar.c_str(),
                  static_cast<long long>(value), static_cast<long long>(maximum), percent, rate);
    return line;
}

std::optional<std::string> ProgressBar::update(int64_t value, int64_t maximum, int64_t nowUs) {
    if (maximum <= 0) {
        const bool wasDrawn = drawn_;
        running_ = drawn_ = false;
        if (!wasDrawn) return std::nullopt;
        return std::string("\r\033[K");
    }
    if (!running_ || value < lastValue_) {
        // A new operation: the rate counts from here.
        running_ = true;
        startUs_ = nowUs;
        lastDrawUs_ = nowUs - kMinIntervalUs;
    }
    lastValue_ = value;
    if (nowUs - lastDrawUs_ < kMinIntervalUs) return std::nullopt;
    lastDrawUs_ = nowUs;
    drawn_ = true;
    return "\r" + Line(value, maximum, nowUs - startUs_) + "\033[K";
}

}  // namespace vortelm::cli
