// Rows of the terminal: _send, _sendfile, _setp and _openport. They reach the
// line only through the port object's primitives.

#include <fstream>
#include <iterator>
#include <vector>

#include "core/Helpers.h"
#include "link/ComPort.h"
#include "shell/Rows.h"

namespace vortelm::shell {

namespace {

// A row that needs the port fails when the program has none.
bool HasPort(const Session& s) {
    return s.port != nullptr;
}

// ":4142" sends 0x41 0x42: pairs from the second character, a last single
// digit dropped, pairs that are not hexadecimal skipped. Any other text goes
// out character by character. Nothing is logged and no line end is added.
RowResult Send(Session& s) {
    if (!HasPort(s)) return {0, true};
    const std::string& text = s.parsedParameters[0].text;
    if (!text.empty() && text.front() == ':') {
        for (std::size_t i = 1; i + 1 < text.size(); i += 2) {
            const int32_t v = HexValue(std::string_view(text).substr(i, 2));
            if (v >= 0) s.port->SSSend(static_cast<uint8_t>(v));
        }
        return {};
    }
    for (char c : text) s.port->SSSend(static_cast<uint8_t>(c));
    return {};
}

// The file is found in the program folder (not by a base path) and goes out
// byte after byte.
RowResult SendFile(Session& s) {
    const std::string name = ResolveInProgramFolder(s.st, s.parsedParameters[0].text);
    if (!FileExists(s.st, name, 0)) return {-2, false};
    if (!HasPort(s)) return {0, true};
    std::ifstream f(NativePath(name), std::ios::binary);
    if (!f) return {-2, false};
    std::vector<char> bytes((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
    for (char c : bytes) s.port->SSSend(static_cast<uint8_t>(c));
    return {};
}

// RESET or RTS is line 0, BSL or DTR line 1; the level must be exactly "0"
// or "1" (the frame would let ON pass, this row does not).
RowResult SetP(Session& s) {
    const std::string signal = UpperCase(s.parsedParameters[0].text);
    const std::string& level = s.parsedParameters[1].text;
    int line = -1;
    if (signal == "RESET" || signal == "RTS")
        line = 0;
    else if (signal == "BSL" || signal == "DTR")
        line = 1;
    if (line < 0 || (level != "0" && level != "1")) return {-2, false};
    if (!HasPort(s)) return {0, true};
    s.port->setPort(line, level == "1" ? 1 : 0);
    return {};
}

// Opens the port for the terminal if it is closed; a failure shows the
// "Caution !" box and its diagnosis.
RowResult OpenPort(Session& s) {
    if (!HasPort(s)) return {0, true};
    if (s.port->isOpen()) return {};
    return {0, !s.port->open()};
}

constexpr RowBinding kRows[] = {
    {"_send", &Send},
    {"_sendfile", &SendFile},
    {"_setp", &SetP},
    {"_openport", &OpenPort},
};

}  // namespace

std::span<const RowBinding> TerminalRows() {
    return kRows;
}

}  // namespace vortelm::shell
