#pragma once
// What a shell row works with: the program state, the parsed arguments of the
// line being run, and the objects of the layers below that rows call. The
// program (Program.h) owns one session; tests build their own.

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "core/ProgramState.h"

namespace vortelm::link {
class ComPort;
}
namespace vortelm::target {
struct Target;
}

namespace vortelm::shell {

struct ScriptTables;

// One argument of a shell line, classified as every kind it can be.
struct ParsedParameter {
    std::string text;  // without leading blanks; always valid as a string
    int32_t decimal = 0;
    int16_t isDecimal = 0;
    int32_t hex8 = 0;
    int16_t isHex8 = 0;
    int32_t hex16 = 0;
    int16_t isHex16 = 0;
    int32_t hex24 = 0;
    int16_t isHex24 = 0;
    int32_t memDevice = 0;
    int16_t isMemDevice = 0;
    int32_t sfr = 0;
    int16_t isSfr = 0;
    int16_t onOff = 0;
    int16_t isOnOff = 0;
    int32_t variable = 0;
    int16_t isVariable = 0;
    std::string fileName;
    int16_t isFileName = 0;
};

struct ShellParameterRecord {
    std::string name;
    int16_t optional = 0;
    std::string type;
    std::array<std::array<int32_t, 2>, 16> ranges{};
    std::string alternativeType;
    std::string description;
};

struct ShellCommandRecord {
    int32_t group = 0;
    std::string name;
    int32_t id = 0;
    int16_t minParameters = 0;
    int16_t maxParameters = 0;
    int16_t listed = 0;
    std::string usage;
    std::string description;
    std::array<ShellParameterRecord, 16> parameters{};
    int16_t parameterCount = 0;
};

struct ShellTable {
    std::array<ShellCommandRecord, 257> shellCommands{};
    int16_t shellCommandCount = 0;
    std::array<std::string, 32> shellGroupNames{};
};

struct Session {
    explicit Session(ProgramState& state) : st(state) {}

    ProgramState& st;
    ShellTable table;
    std::array<ParsedParameter, 16> parsedParameters{};
    int16_t parsedParameterCount = 0;

    // The serial channel, once the link is wired (null in tests that need none).
    link::ComPort* port = nullptr;

    // The target operations (connection, transfers) over that channel, once
    // wired; the target rows need it.
    target::Target* target = nullptr;

    // Ends the program (the _quit row): set by the program.
    std::function<void()> shutDown;

    // The history of the command box: a line that begins with "_" goes in
    // before it runs (the main window keeps the newest 50).
    std::function<void(std::string_view)> addHistory;

    // Sends one byte to the target for the terminal (":" lines and plain
    // text of the command box). Unset while no serial channel is wired.
    std::function<void(uint8_t)> sendByte;

    // Reads the SFR view again after a command while connected (when the
    // global SFR refresh is on). Unset: the host's refreshSfrView.
    std::function<void()> readSfrView;

    // The code of the operation that failed in the last line run, 0 when
    // none did (read by the command box for its failure line).
    int32_t lastFailureCode = 0;
    // The tables of the running scripts, one set per depth (Script.h).
    std::shared_ptr<ScriptTables> scripts;
};

}  // namespace vortelm::shell
