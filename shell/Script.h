#pragma once
// The script interpreter. A script is loaded whole, its lines cleaned and
// classified once, every jump resolved, and then stepped through. Scripts
// call scripts to a depth of three; each depth has its own tables, which
// stay as they are after a run and are cleared when the depth is used again.
// The operator's abort request (ProgramState::scriptAbort) is read between
// statements.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "shell/Expressions.h"
#include "shell/Session.h"

namespace vortelm::shell {

constexpr int kScriptLineBound = 5000;  // lines 0 to 5000 of a depth
constexpr int kScriptLevels = 3;
constexpr int kBlockStackSize = 100;

// What a cleaned line is.
enum ScriptKind : int16_t {
    kCommand = 0,
    kIf = 10,
    kElse = 11,
    kEndIf = 12,
    kWhile = 20,
    kEndW = 21,
    kDo = 30,
    kLoopUntil = 31,
    kLoop = 32,
    kLoopCount = 33,
    kGoto = 40,
    kLabel = 41,
};

struct ScriptLineRecord {
    int16_t kind = 0;
    ConditionRecord condition;
    int16_t jumpTrue = 0;
    int16_t jumpFalse = 0;
    int16_t repeatCount = 0;
    int16_t repeatCounter = 0;
};

struct ScriptLevel {
    std::vector<std::string> scriptLines = std::vector<std::string>(kScriptLineBound + 1);
    std::vector<ScriptLineRecord> scriptRecords =
        std::vector<ScriptLineRecord>(kScriptLineBound + 1);
    int32_t scriptLineCount = 0;
};

struct ScriptTables {
    std::array<ScriptLevel, kScriptLevels> levels;
    int16_t scriptDepth = 0;    // the number of running scripts
    int64_t statementsRun = 0;  // statements stepped through, all depths (for the benchmark)
};

// The script tables of the session (made on first use).
[[nodiscard]] ScriptTables& ScriptsOf(Session& s);

// Runs a script file (resolved against the program folder; callers test
// that it exists). continueOnError 1 goes on after failing lines. Gives 0
// when the script ran to its end and its last line run succeeded, -1
// otherwise; the shell row ignores it (a failing script does not fail its
// caller), the command line of the CLI takes it as its status.
int RunScript(Session& s, std::string_view fileName, int16_t continueOnError);

// How loading and classifying went.
enum class Prepared { Ready, Refused, TooLong };

// Loads, cleans, lists and classifies a script into a depth's tables. Every
// refusal is logged with its words; TooLong is the script past 5000 lines.
[[nodiscard]] Prepared PrepareScript(Session& s, ScriptLevel& level, std::string_view fileName,
                                     int16_t continueOnError);

// Sets kind, jumps, texts and the count of a depth to zero; the repeat
// counts and counters stay.
void ClearScriptLevel(ScriptLevel& level);

// The first line of the depth equal to text, both without blanks and
// upper-cased; -1 when none is.
[[nodiscard]] int32_t FindLabel(const ScriptLevel& level, std::string_view text);

// Puts a script name at the top of the list of the last 16 scripts.
void SetLastScriptFile(ProgramState& st, std::string_view name);

}  // namespace vortelm::shell
