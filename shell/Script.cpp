#include "shell/Script.h"

#include <algorithm>
#include <fstream>
#include <memory>

#include "core/Helpers.h"
#include "core/Host.h"
#include "core/RunTimeError.h"
#include "core/Text.h"
#include "shell/Shell.h"

namespace vortelm::shell {

namespace {

void Say(ProgramState& st, std::string_view text) {
    std::string line(text);
    line += "\r\n";
    Text2Buffer(st, line);
}

bool Begins(std::string_view text, std::string_view word) {
    return text.substr(0, word.size()) == word;
}

// The text without blanks, upper-cased, as labels are compared.
std::string LabelText(std::string_view text) {
    return UpperCase(StripBlanks(text, kFalse));
}

// Why the classification ended a script before it started.
struct Refused {};

// The open blocks of the classification: line indexes.
class BlockStack {
  public:
    void push(int32_t index) {
        CheckBound(sp_, kBlockStackSize - 1, "script block stack");
        items_[static_cast<size_t>(sp_++)] = index;
    }
    // The kind of the record on top, or -1 on an empty stack.
    [[nodiscard]] int32_t topKind(const ScriptLevel& l) const {
        return sp_ > 0 ? l.scriptRecords[static_cast<size_t>(top())].kind : -1;
    }
    [[nodiscard]] int32_t top() const { return sp_ > 0 ? items_[static_cast<size_t>(sp_ - 1)] : 0; }
    void drop(int n) { sp_ = std::max(0, sp_ - n); }

  private:
    std::array<int32_t, kBlockStackSize> items_{};
    int sp_ = 0;
};

// The repeat count of "LOOP UNTIL n": the cleaned text as a decimal number.
int16_t RepeatCount(const std::string& text) {
    const auto v = NumericValue(text);
    const auto r = v ? RoundToInt32(*v) : std::nullopt;
    if (!r || *r < -32768 || *r > 32767)
        throw RunTimeError("repeat count " + text + " of LOOP UNTIL is no 16-bit number");
    return static_cast<int16_t>(*r);
}

// The classification pass: kinds, conditions and jumps of every line.
// Throws Refused after its words when the script may not start.
void Classify(Session& s, ScriptLevel& l, int16_t continueOnError) {
    ProgramState& st = s.st;
    const bool goOn = continueOnError == 1;
    BlockStack stack;
    auto refuse = [&](std::string_view words) {
        Say(st, words);
        throw Refused{};
    };
    for (int32_t i = 0; i < l.scriptLineCount; ++i) {
        const std::string& line = l.scriptLines[static_cast<size_t>(i)];
        ScriptLineRecord& rec = l.scriptRecords[static_cast<size_t>(i)];
        const std::string upper = UpperCase(line);
        const auto own = static_cast<int16_t>(i);
        int16_t kind = -1;

        if (Begins(upper, "IF")) {
            kind = kIf;
            std::string cond = line.substr(2);
            if (ParseCondition(st, cond, rec.condition) < 0) {
                Say(st, "*ERROR: Error in expression in IF statement");
                if (!goOn) refuse("*ERROR: Script aborted");
            }
            rec.jumpTrue = own;
            stack.push(i);
        }
        if (Begins(upper, "ELSE")) {
            kind = kElse;
            if (stack.topKind(l) != kIf) {
                Say(st, "*ERROR: Unexpected ELSE");
                refuse("*ERROR: Script aborted");
            }
            l.scriptRecords[static_cast<size_t>(stack.top())].jumpFalse = own;
            stack.push(i);
        }
        if (Begins(upper, "ENDIF")) {
            kind = kEndIf;
            const int32_t top = stack.topKind(l);
            if (top == kIf) {
                ScriptLineRecord& r = l.scriptRecords[static_cast<size_t>(stack.top())];
                if (r.jumpFalse == 0) r.jumpFalse = own;
                stack.drop(1);
            } else if (top == kElse) {
                l.scriptRecords[static_cast<size_t>(stack.top())].jumpFalse = own;
                stack.drop(2);
            } else {
                Say(st, "*ERROR: Unexpected ENDIF");
                refuse("*ERROR: Script aborted");
            }
        }
        if (Begins(upper, "WHILE")) {
            kind = kWhile;
            std::string cond = line.substr(5);
            if (ParseCondition(st, cond, rec.condition) < 0) {
                Say(st, "*ERROR: Error in expression in WHILE statement");
                if (!goOn) refuse("*ERROR: Script aborted");
            }
            rec.jumpTrue = own;
            stack.push(i);
        }
        if (Begins(upper, "ENDW")) {
            kind = kEndW;
            if (stack.topKind(l) != kWhile) {
                Say(st, "*ERROR: Unexpected ENDW");
                refuse("*ERROR: Script aborted");
            }
            rec.jumpTrue = static_cast<int16_t>(stack.top());
            l.scriptRecords[static_cast<size_t>(stack.top())].jumpFalse = own;
            stack.drop(1);
        }
        if (Begins(upper, "DO")) {
            kind = kDo;
            stack.push(i);
        }
        if (Begins(upper, "LOOP")) {
            const size_t until = upper.find("UNTIL");
            if (until != std::string::npos) {
                std::string cond = line.substr(until + 5);
                const int32_t r = ParseCondition(st, cond, rec.condition);
                if (r == 1) {
                    kind = kLoopCount;
                    rec.repeatCount = RepeatCount(cond);
                    rec.repeatCounter = 0;
                } else if (r == 2) {
                    kind = kLoopUntil;
                } else {
                    Say(st, "*ERROR: Error in expression in LOOP statement");
                    if (!goOn) refuse("*ERROR: Script aborted");
                    // Going on, the broken LOOP ends its block after one pass.
                    kind = kLoop;
                    rec.condition = ConditionRecord{0, kConstant, "=", 0, kConstant};
                }
            } else {
                kind = kLoop;
                rec.condition = ConditionRecord{0, kConstant, "=", 0, kConstant};
            }
            if (stack.topKind(l) != kDo) {
                Say(st, "*ERROR: Unexpected LOOP ");
                refuse("*ERROR: Script aborted");
            }
            rec.jumpTrue = own;
            rec.jumpFalse = static_cast<int16_t>(stack.top());
            stack.drop(1);
        }
        if (Begins(upper, "GOTO")) {
            kind = kGoto;
            const int32_t label = FindLabel(l, line.substr(4));
            if (label < 0) {
                Say(st, "*ERROR: Label in Goto Statement not found");
                refuse("*ERROR: Script aborted");
            }
            rec.jumpTrue = static_cast<int16_t>(label);
        }
        if (kind == -1 && !line.empty() && line.back() == ':') kind = kLabel;
        if (kind == -1) {
            if (ExecuteShellCommand(s, line, kTrue) < 0 && !goOn) {
                Say(st, "*ERROR: No valid command (" + line + ")");
                refuse("*ERROR: Script aborted");
            }
            kind = kCommand;
        }
        rec.kind = kind;
    }
}

// The execution pass. Gives 0 when the script ran to its end (or the
// operator stopped it), -1 when a failing line aborted it.
int Execute(Session& s, ScriptLevel& l, int16_t continueOnError, int16_t& lastLine) {
    ProgramState& st = s.st;
    int64_t& counted = ScriptsOf(s).statementsRun;
    int64_t servedUs = st.host->nowUs();
    int32_t i = 0;
    while (i < l.scriptLineCount && st.scriptAbort == 0) {
        // A loop without waits still lets the front end serve its events
        // (Esc, Ctrl-C, drawing) every 50 ms.
        if ((++counted & 1023) == 0) {
            if (const int64_t now = st.host->nowUs(); now - servedUs >= 50'000) {
                st.host->yield(now);
                servedUs = now;
                if (st.scriptAbort != 0) break;
            }
        }
        ScriptLineRecord& r = l.scriptRecords[static_cast<size_t>(i)];
        switch (r.kind) {
            case kCommand:
                lastLine = ExecuteShellCommand(s, l.scriptLines[static_cast<size_t>(i)], kFalse);
                if (lastLine != 0 && continueOnError != 1) {
                    Say(st, "*ERROR: Script aborted");
                    return -1;
                }
                ++i;
                break;
            case kIf:
            case kWhile:
            case kLoopUntil:
                i = (EvaluateCondition(s, r.condition) == 1 ? r.jumpTrue : r.jumpFalse) + 1;
                break;
            case kElse:
                i = r.jumpFalse + 1;
                break;
            case kEndW:
            case kGoto:
                i = r.jumpTrue;
                break;
            case kLoop:
                i = r.jumpTrue + 1;
                break;
            case kLoopCount:
                ++r.repeatCounter;
                if (r.repeatCounter >= r.repeatCount) {
                    l.scriptRecords[static_cast<size_t>(r.jumpTrue)].repeatCounter = 0;
                    i = r.jumpTrue + 1;
                } else {
                    i = r.jumpFalse + 1;
                }
                break;
            default:
                ++i;
                break;
        }
    }
    if (st.scriptAbort == 1) {
        Say(st, "*Script aborted");
        st.host->setBusy(false);
        st.scriptAbort = 0;
        return -1;
    }
    Say(st, "*Script successfully executed");
    return 0;
}

// Reads the cleaned, non-empty lines; stops at the line past the bound.
void Load(ProgramState& st, ScriptLevel& l, std::string_view fileName) {
    std::ifstream f(NativePath(ResolveInProgramFolder(st, fileName)), std::ios::binary);
    std::string line;
    while (l.scriptLineCount <= kScriptLineBound && std::getline(f, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (const size_t semi = line.find(';'); semi != std::string::npos) line.erase(semi);
        NormaliseScriptLine(line);
        if (line.empty()) continue;
        l.scriptLines[static_cast<size_t>(l.scriptLineCount)] = line;
        ++l.scriptLineCount;
    }
}

}  // namespace

ScriptTables& ScriptsOf(Session& s) {
    if (!s.scripts) s.scripts = std::make_shared<ScriptTables>();
    return *s.scripts;
}

void ClearScriptLevel(ScriptLevel& level) {
    for (ScriptLineRecord& r : level.scriptRecords) {
        r.kind = 0;
        r.jumpTrue = 0;
        r.jumpFalse = 0;
        r.condition = ConditionRecord{};
    }
    for (std::string& t : level.scriptLines) t.clear();
    level.scriptLineCount = 0;
}

int32_t FindLabel(const ScriptLevel& level, std::string_view text) {
    const std::string wanted = LabelText(text);
    for (int32_t i = 0; i < level.scriptLineCount; ++i)
        if (LabelText(level.scriptLines[static_cast<size_t>(i)]) == wanted) return i;
    return -1;
}

void SetLastScriptFile(ProgramState& st, std::string_view name) {
    auto& list = st.lastScriptFiles;
    auto at = std::find(list.begin(), list.end(), name);
    if (at == list.end()) at = list.end() - 1;
    std::move_backward(list.begin(), at, at + 1);
    list.front() = std::string(name);
}

Prepared PrepareScript(Session& s, ScriptLevel& level, std::string_view fileName,
                       int16_t continueOnError) {
    ProgramState& st = s.st;
    ClearScriptLevel(level);
    Load(st, level, fileName);
    for (int32_t i = 0; i < level.scriptLineCount; ++i)
        Say(st, level.scriptLines[static_cast<size_t>(i)]);
    if (level.scriptLineCount > kScriptLineBound) {
        Say(st, "*ERROR: Script exceeds maximum number of lines (" +
                    std::to_string(kScriptLineBound) + ")");
        return Prepared::TooLong;
    }
    try {
        Classify(s, level, continueOnError);
    } catch (const Refused&) {
        return Prepared::Refused;
    } catch (const std::exception& e) {
        // A bound met by the script's text (a repeat count, the block stack).
        Say(st, std::string("*ERROR: ") + e.what());
        return Prepared::Refused;
    }
    return Prepared::Ready;
}

int RunScript(Session& s, std::string_view fileName, int16_t continueOnError) {
    ProgramState& st = s.st;
    ScriptTables& t = ScriptsOf(s);
    if (t.scriptDepth == 0) SetLastScriptFile(st, fileName);
    st.scriptAbort = 0;
    if (t.scriptDepth >= kScriptLevels) {
        Say(st, "*ERROR: Too many subscripts executed");
        return -1;
    }
    ScriptLevel& level = t.levels[static_cast<size_t>(t.scriptDepth)];
    ++t.scriptDepth;

    const Prepared p = PrepareScript(s, level, fileName, continueOnError);
    // A script too long leaves the depth raised: a known trait.
    if (p == Prepared::TooLong) return -1;
    int result = -1;
    if (p == Prepared::Ready) {
        try {
            int16_t lastLine = 0;
            result = Execute(s, level, continueOnError, lastLine);
            if (result == 0 && lastLine != 0) result = -1;
        } catch (const std::exception& e) {
            // A bound met while running (a variable past 99 in a condition,
            // a condition's value past 32 bits) ends the script with one line.
            Say(st, std::string("*ERROR: ") + e.what());
            result = -1;
        }
    }
    --t.scriptDepth;
    return result;
}

}  // namespace vortelm::shell
