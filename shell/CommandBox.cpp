#include "shell/CommandBox.h"

#include "core/Helpers.h"
#include "core/Text.h"
#include "link/ComPort.h"
#include "shell/Shell.h"

namespace vortelm::shell {

namespace {

// Sends one byte; without a channel says so once per line and gives false.
bool Send(Session& s, uint8_t b, bool& reported) {
    if (s.port) {
        // A closed port shows its "Caution !" box; the line then stops.
        s.port->SSSend(b);
        return s.port->isOpen();
    }
    if (s.sendByte) {
        s.sendByte(b);
        return true;
    }
    if (!reported) Text2Buffer(s.st, CrLf() + "*ERROR: No communication port open");
    reported = true;
    return false;
}

}  // namespace

std::string FailureLine(std::string_view line, int16_t result, int32_t operationCode) {
    std::string text(line.substr(0, 60));
    if (line.size() > 60) text += "...";
    if (operationCode == 0) return text + ": failed with result " + std::to_string(result);
    text += ": failed with code " + std::to_string(operationCode);
    switch (operationCode) {
        case -100:
            return text + " (not connected to the target)";
        case -101:
            return text + " (kernel feature not supported)";
        case -6:
            return text + " (the range touches the running monitor)";
        default:
            return text;
    }
}

void CommandHistory::add(std::string_view line) {
    lines.insert(lines.begin(), std::string(line));
    if (lines.size() > kKeep) lines.erase(lines.begin() + kKeep);
}

int16_t RunCommandBoxLine(Session& s, std::string_view line) {
    if (!line.empty() && line.front() == '_') {
        if (s.addHistory) s.addHistory(line);
        return ExecuteShellCommand(s, line, 0);
    }
    bool reported = false;
    bool ok = true;
    if (!line.empty() && line.front() == ':') {
        // Pairs from the second character on; a last single digit is dropped.
        for (size_t i = 1; i + 1 < line.size(); i += 2) {
            const int32_t v = HexValue(line.substr(i, 2));
            if (v < 0) continue;
            if (!Send(s, static_cast<uint8_t>(v), reported)) {
                ok = false;
                break;
            }
            Text2Buffer(s.st, CrLf() + "-> SENDING: " + HexText(v, 2));
        }
        return ok ? 0 : -1;
    }
    Text2Buffer(s.st, CrLf() + "-> SENDING: " + std::string(line));
    for (char c : line) {
        if (!Send(s, static_cast<uint8_t>(c), reported)) {
            ok = false;
            break;
        }
    }
    return ok ? 0 : -1;
}

}  // namespace vortelm::shell
