// Rows of the log and scripting groups: _logfile, _setlogfile,
// _writelogfile, _print, _delay, _delayms, _pause, _message, _cmessage,
// _assign, _executescript, _poll and _input.

#include <cmath>
#include <fstream>

#include "core/Helpers.h"
#include "core/Host.h"
#include "core/SafeFile.h"
#include "core/Text.h"
#include "link/ComPort.h"
#include "link/Monitor.h"
#include "sfr/SfrTable.h"
#include "shell/Expressions.h"
#include "shell/ImageRowArgs.h"
#include "shell/Rows.h"
#include "shell/Script.h"

namespace vortelm::shell {

namespace {

constexpr RowResult kIllegal{-2, false};
constexpr RowResult kIllegalCount{-3, false};

void Say(ProgramState& st, std::string_view text) {
    std::string line(text);
    line += "\r\n";
    Text2Buffer(st, line);
}

// Replaces each TIMESTAMP, in any case, by the date and time.
std::string WithTimestamps(Host& host, const std::string& text) {
    const std::string upper = UpperCase(text);
    constexpr std::string_view kWord = "TIMESTAMP";
    std::string out;
    size_t from = 0;
    for (size_t at = upper.find(kWord); at != std::string::npos; at = upper.find(kWord, from)) {
        out.append(text, from, at - from);
        out += host.timestampText();
        from = at + kWord.size();
    }
    out.append(text, from, std::string::npos);
    return out;
}

// How the texts of _print and _message differ.
enum class Piece { Print, Message };

// The text of _print and _writelogfile (variables and SFRs as four digits,
// strings as they stand with TIMESTAMP replaced, no separator) or of
// _message and _cmessage (variables as six digits, each string on a line of
// its own).
std::string BuildText(Session& s, Piece kind) {
    ProgramState& st = s.st;
    const int n = s.parsedParameterCount;
    // The arguments are taken out first: a box lets other lines run.
    std::vector<std::string> args;
    for (int i = 0; i < n; ++i) args.push_back(s.parsedParameters[static_cast<size_t>(i)].text);
    std::string text;
    for (const std::string& a : args) {
        if (const int32_t v = VariableIndex(a); v >= 0) {
            text += HexText(VariableAt(st, v), kind == Piece::Print ? 4 : 6);
        } else if (const int32_t sfr = SfrIndexByName(st, a); sfr >= 0) {
            const int32_t value = ReadSfrValue(s, sfr);
            if (value < 0)
                st.host->messageBox("Error reading SFR (maybe not connected)", MsgButtons::Ok,
                                    MsgIcon::None);
            else
                text += HexText(value, 4);
        } else if (kind == Piece::Print) {
            text += WithTimestamps(*st.host, StripOuterQuotes(a));
        } else {
            text += StripOuterQuotes(a);
            text += '\n';
        }
    }
    return text;
}

RowResult LogFile(Session& s) {
    const std::string& text = s.parsedParameters[0].text;
    int32_t value = -1;
    if (const int32_t v = VariableIndex(text); v >= 0) {
        value = VariableAt(s.st, v);
        if (value > 0) value = 1;
        if (value != 0 && value != 1) return kIllegal;
    } else {
        const std::string up = UpperCase(text);
        if (up == "0" || up == "OFF")
            value = 0;
        else if (up == "1" || up == "ON")
            value = 1;
        else
            return kIllegal;
    }
    s.st.logEnabled = value;
    return {};
}

RowResult SetLogFile(Session& s) {
    ProgramState& st = s.st;
    st.logFileName = s.parsedParameters[0].text;
    st.logEnabled = 1;
    if (s.parsedParameterCount >= 2) {
        if (UpperCase(s.parsedParameters[1].text) != "APPEND") return kIllegal;
        return {};
    }
    // A new, empty log.
    const SafeWriteResult r = ReplaceFile(NativePath(ResolveLogPath(st, st.logFileName)), "");
    if (!r.ok) {
        Say(st, "*ERROR: Can not write the log file " + st.logFileName + ": " + r.reason);
        return {0, true};
    }
    return {};
}

RowResult WriteLogFile(Session& s) {
    ProgramState& st = s.st;
    const std::string text = BuildText(s, Piece::Print);
    std::ofstream f(NativePath(ResolveLogPath(st, st.logFileName)),
                    std::ios::binary | std::ios::app);
    f << text << '\n';
    f.close();
    if (!f) {
        Say(st, "*ERROR: Can not write the log file " + st.logFileName);
        return {0, true};
    }
    return {};
}

RowResult Print(Session& s) {
    Say(s.st, BuildText(s, Piece::Print));
    return {};
}

// Waits until the monotonic clock reaches untilUs, serving events; the
// operator's abort request ends the wait early (the script then stops
// before its next statement).
void WaitUntil(ProgramState& st, int64_t untilUs) {
    Host& h = *st.host;
    while (h.nowUs() < untilUs && st.scriptAbort == 0) h.yield(untilUs);
}

RowResult Delay(Session& s) {
    const int32_t seconds = rowargs::ByVariableOrDecimal(s, 0);
    if (seconds < 0) return kIllegal;
    ProgramState& st = s.st;
    // The end time is the clock plus the delay, rounded to a whole second,
    // so the wait may be up to half a second off; it is waited for on the
    // monotonic clock, so that midnight does not stop it.
    const double start = st.host->secondsSinceMidnight();
    const double end = std::nearbyint(start + seconds);
    const auto waitUs = static_cast<int64_t>(std::llround((end - start) * 1e6));
    WaitUntil(st, st.host->nowUs() + waitUs);
    return {};
}

RowResult DelayMs(Session& s) {
    const int32_t ms = rowargs::ByVariableOrDecimal(s, 0);
    if (ms < 0) return kIllegal;
    WaitUntil(s.st, s.st.host->nowUs() + int64_t{ms} * 1000);
    return {};
}

RowResult Pause(Session& s) {
    s.st.host->messageBox("Please klick to the OK Button to continue", MsgButtons::Ok,
                          MsgIcon::None);
    return {};
}

RowResult Message(Session& s) {
    const std::string text = BuildText(s, Piece::Message);
    s.st.host->messageBox(text, MsgButtons::Ok, MsgIcon::None);
    return {};
}

RowResult CMessage(Session& s) {
    s.st.host->showMessageWindow(BuildText(s, Piece::Message));
    return {};
}

RowResult Assign(Session& s) {
    return AssignExpression(s, s.parsedParameters[0].text) < 0 ? kIllegal : RowResult{};
}

RowResult ExecuteScript(Session& s) {
    ProgramState& st = s.st;
    const std::string name = ResolveScriptPath(st, s.parsedParameters[0].text);
    if (!FileExists(st, name, kFalse)) return kIllegal;
    int16_t continueOnError = 0;
    if (s.parsedParameterCount >= 2) {
        const std::string& t = s.parsedParameters[1].text;
        const std::string up = UpperCase(t);
        const auto number = NumericValue(t);
        if (up == "ON" || (number && *number == 1.0))
            continueOnError = 1;
        else if (up == "OFF" || (number && *number == 0.0))
            continueOnError = 0;
        else
            return kIllegal;
    }
    // The subscript's own words tell how it went; the line succeeds.
    (void)RunScript(s, name, continueOnError);
    return {};
}

RowResult Poll(Session& s) {
    ProgramState& st = s.st;
    // Taken out before the loop: lines served meanwhile overwrite them.
    const int32_t address = rowargs::ByVariableOrHex(s, 0);
    const int32_t mask = rowargs::ByVariableOrHex(s, 1);
    const int32_t expected = rowargs::ByVariableOrHex(s, 2);
    if (address < 0 || mask < 0 || expected < 0) return kIllegal;
    if (s.port == nullptr) return {0, true};
    link::Monitor monitor(st, *s.port);
    for (;;) {
        const int32_t value = monitor.Cmd_ReadWord_Value(address);
        if ((value & mask) == (expected & mask)) return {};
        st.host->yield(st.host->nowUs() + 1000);
        // The way out: Esc in the window, Ctrl-C in the terminal.
        if (st.scriptAbort == 1) {
            st.scriptAbort = 0;
            Say(st, "*ERROR: Poll ended by the operator");
            return {0, true};
        }
    }
}

RowResult Input(Session& s) {
    ProgramState& st = s.st;
    const int32_t var = VariableIndex(s.parsedParameters[1].text);
    if (var < 0) return kIllegal;
    const int32_t current = VariableAt(st, var);
    const std::string prompt = s.parsedParameters[0].text;
    if (s.parsedParameterCount == 2) {
        const auto answer = st.host->inputBox(StripOuterQuotes(prompt), {}, HexText(current, 6));
        const int32_t v = HexValue(answer.value_or(std::string()));
        if (v < 0) return kIllegalCount;
        SetVariable(st, var, v);
        return {};
    }
    if (UpperCase(s.parsedParameters[2].text) != "YESNO") return kIllegalCount;
    const MsgAnswer a = st.host->messageBox(prompt, MsgButtons::YesNo, MsgIcon::Question);
    SetVariable(st, var, a == MsgAnswer::Yes ? 1 : 0);
    return {};
}

constexpr RowBinding kRows[] = {
    {"_logfile", &LogFile},
    {"_setlogfile", &SetLogFile},
    {"_writelogfile", &WriteLogFile},
    {"_print", &Print},
    {"_delay", &Delay},
    {"_delayms", &DelayMs},
    {"_pause", &Pause},
    {"_message", &Message},
    {"_cmessage", &CMessage},
    {"_assign", &Assign},
    {"_executescript", &ExecuteScript},
    {"_poll", &Poll},
    {"_input", &Input},
};

}  // namespace

std::span<const RowBinding> ScriptRows() {
    return kRows;
}

}  // namespace vortelm::shell
