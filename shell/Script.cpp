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
// Each test of a line is made whatever an earlier test found, so a later
// match overrides the kind of an earlier one and both have had their effect
// on the stack. A step throws Refused after its words when the script may
// not start.
class Classifier {
  public:
    Classifier(Session& s, ScriptLevel& l, bool goOn) : s_(s), st_(s.st), l_(l), goOn_(goOn) {}

    void line(int32_t i) {
        const std::string& line = l_.scriptLines[static_cast<size_t>(i)];
        ScriptLineRecord& rec = l_.scriptRecords[static_cast<size_t>(i)];
        const std::string upper = UpperCase(line);
        int16_t kind = -1;
        if (Begins(upper, "IF")) kind = opening(i, rec, line.substr(2), kIf, "IF");
        if (Begins(upper, "ELSE")) kind = elseLine(i);
        if (Begins(upper, "ENDIF")) kind = endIf(i);
        if (Begins(upper, "WHILE")) kind = opening(i, rec, line.substr(5), kWhile, "WHILE");
        if (Begins(upper, "ENDW")) kind = endWhile(i, rec);
        if (Begins(upper, "DO")) {
            kind = kDo;
            stack_.push(i);
        }
        if (Begins(upper, "LOOP")) kind = loop(i, rec, line, upper);
        if (Begins(upper, "GOTO")) kind = jump(rec, line);
        if (kind == -1 && !line.empty() && line.back() == ':') kind = kLabel;
        if (kind == -1) kind = command(line);
        rec.kind = kind;
    }

  private:
    [[noreturn]] void refuse(std::string_view words) {
        Say(st_, words);
        throw Refused{};
    }
    // A line the block structure does not allow: its words, then the end.
    [[noreturn]] void unexpected(std::string_view words) {
        Say(st_, words);
        refuse("*ERROR: Script aborted");
    }
    // A condition that does not parse: its words, and the end unless the
    // script goes on after errors.
    void badCondition(std::string_view statement) {
        Say(st_, "*ERROR: Error in expression in " + std::string(statement) + " statement");
        if (!goOn_) refuse("*ERROR: Script aborted");
    }

    // IF and WHILE: the condition, and a block opens.
    int16_t opening(int32_t i, ScriptLineRecord& rec, std::string cond, int16_t kind,
                    std::string_view statement) {
        if (ParseCondition(st_, cond, rec.condition) < 0) badCondition(statement);
        rec.jumpTrue = static_cast<int16_t>(i);
        stack_.push(i);
        return kind;
    }
    int16_t elseLine(int32_t i) {
        if (stack_.topKind(l_) != kIf) unexpected("*ERROR: Unexpected ELSE");
        l_.scriptRecords[static_cast<size_t>(stack_.top())].jumpFalse = static_cast<int16_t>(i);
        stack_.push(i);
        return kElse;
    }
    int16_t endIf(int32_t i) {
        const int32_t top = stack_.topKind(l_);
        if (top == kIf) {
            ScriptLineRecord& r = l_.scriptRecords[static_cast<size_t>(stack_.top())];
            if (r.jumpFalse == 0) r.jumpFalse = static_cast<int16_t>(i);
            stack_.drop(1);
        } else if (top == kElse) {
            l_.scriptRecords[static_cast<size_t>(stack_.top())].jumpFalse = static_cast<int16_t>(i);
            stack_.drop(2);
        } else {
            unexpected("*ERROR: Unexpected ENDIF");
        }
        return kEndIf;
    }
    int16_t endWhile(int32_t i, ScriptLineRecord& rec) {
        if (stack_.topKind(l_) != kWhile) unexpected("*ERROR: Unexpected ENDW");
        rec.jumpTrue = static_cast<int16_t>(stack_.top());
        l_.scriptRecords[static_cast<size_t>(stack_.top())].jumpFalse = static_cast<int16_t>(i);
        stack_.drop(1);
        return kEndW;
    }
    int16_t loop(int32_t i, ScriptLineRecord& rec, const std::string& line,
                 const std::string& upper) {
        int16_t kind = kLoop;
        const size_t until = upper.find("UNTIL");
        if (until != std::string::npos) {
            std::string cond = line.substr(until + 5);
            const int32_t r = ParseCondition(st_, cond, rec.condition);
            if (r == 1) {
                kind = kLoopCount;
                rec.repeatCount = RepeatCount(cond);
                rec.repeatCounter = 0;
            } else if (r == 2) {
                kind = kLoopUntil;
            } else {
                // Going on, the broken LOOP ends its block after one pass.
                badCondition("LOOP");
                rec.condition = ConditionRecord{0, kConstant, "=", 0, kConstant};
            }
        } else {
            rec.condition = ConditionRecord{0, kConstant, "=", 0, kConstant};
        }
        if (stack_.topKind(l_) != kDo) unexpected("*ERROR: Unexpected LOOP ");
        rec.jumpTrue = static_cast<int16_t>(i);
        rec.jumpFalse = static_cast<int16_t>(stack_.top());
        stack_.drop(1);
        return kind;
    }
    int16_t jump(ScriptLineRecord& rec, const std::string& line) {
        const int32_t label = FindLabel(l_, line.substr(4));
        if (label < 0) unexpected("*ERROR: Label in Goto Statement not found");
        rec.jumpTrue = static_cast<int16_t>(label);
        return kGoto;
    }
    // Any other line is a shell command, checked without running it.
    int16_t command(const std::string& line) {
        if (ExecuteShellCommand(s_, line, kTrue) < 0 && !goOn_)
            unexpected("*ERROR: No valid command (" + line + ")");
        return kCommand;
    }

    Session& s_;
    ProgramState& st_;
    ScriptLevel& l_;
    const bool goOn_;
    BlockStack stack_;
};

void Classify(Session& s, ScriptLevel& l, int16_t continueOnError) {
    Classifier c(s, l, continueOnError == 1);
    for (int32_t i = 0; i < l.scriptLineCount; ++i) c.line(i);
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
