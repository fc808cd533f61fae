#include "shell/Shell.h"

#include <algorithm>

#include "core/Helpers.h"
#include "core/Host.h"
#include "core/RunTimeError.h"
#include "core/Text.h"
#include "sfr/SfrTable.h"
#include "shell/Rows.h"

namespace vortelm::shell {

namespace {

bool HasCapitalE(std::string_view t) {
    return t.find('E') != std::string_view::npos;
}

void Say(ProgramState& st, std::string_view text) {
    Text2Buffer(st, std::string(text) + CrLf());
}

// Whether the argument's file opens; tested when a type asks for it (the
// test costs a look into the file system, which most arguments never need).
bool IsFileName(const ProgramState& st, ParsedParameter& a) {
    if (a.isFileName == 0 && CanOpenForReading(ResolveInProgramFolder(st, a.text))) {
        a.fileName = a.text;
        a.isFileName = kTrue;
    }
    return a.isFileName != 0;
}

// Whether an argument passes the check of one type word. "FILENAME" as the
// first type lets a name without ":" through untested; as the alternative
// only a file that opens counts.
bool Accepts(const ProgramState& st, ParsedParameter& a, const std::string& typeWord,
             bool alternative) {
    const std::string t = UpperCase(typeWord);
    if (t == "STRING") return true;
    if (t == "DECIMAL VALUE") return a.isDecimal != 0;
    if (t == "HEXADECIMAL VALUE (24 BIT)") return a.isHex24 != 0;
    if (t == "HEXADECIMAL VALUE (16 BIT)") return a.isHex16 != 0;
    if (t == "HEXADECIMAL VALUE (8 BIT)") return a.isHex8 != 0;
    if (t == "FILENAME") {
        if (!alternative && a.text.find(':') == std::string::npos) return true;
        return IsFileName(st, a);
    }
    if (t == "MEM DEVICE") return a.isMemDevice != 0;
    if (t == "SFR") return a.isSfr != 0;
    if (t == "ON OR OFF") return a.isOnOff != 0;
    if (t == "VARIABLE") return a.isVariable != 0;
    return false;
}

}  // namespace

ParsedParameter ClassifyArgument(const ProgramState& st, std::string_view text) {
    ParsedParameter p = ClassifyArgumentNoFile(st, text);
    (void)IsFileName(st, p);
    return p;
}

ParsedParameter ClassifyArgumentNoFile(const ProgramState& st, std::string_view text) {
    ParsedParameter p;
    p.text = std::string(text);
    const bool capitalE = HasCapitalE(text);

    if (!capitalE) {
        if (auto v = NumericValue(text)) {
            if (auto r = RoundToInt32(*v); r && *r >= 0) {
                p.decimal = *r;
                p.isDecimal = kTrue;
            }
            if (*v == 0.0 || *v == 1.0) {
                p.onOff = static_cast<int16_t>(*v);
                p.isOnOff = kTrue;
            }
        }
    }
    const std::string upper = UpperCase(text);
    if (upper == "ON" || upper == "OFF") {
        p.onOff = upper == "ON" ? 1 : 0;
        p.isOnOff = kTrue;
    }

    const int32_t h = HexValue(text);
    if (h >= 0) {
        p.hex24 = h;
        p.isHex24 = kTrue;
        if (h < 65536) {
            p.hex16 = h;
            p.isHex16 = kTrue;
        }
        if (h < 256) {
            p.hex8 = h;
            p.isHex8 = kTrue;
        }
    }

    const int units = std::clamp<int>(st.memoryUnitCount, 0, kMemoryUnitBound + 1);
    for (int i = 0; i < units; ++i) {
        if (EqualUpper(st.memoryUnits[i].name, upper)) {
            p.memDevice = i;
            p.isMemDevice = kTrue;
            break;
        }
    }
    if (const int32_t i = SfrIndexByName(st, upper); i >= 0) {
        p.sfr = i;
        p.isSfr = kTrue;
    }

    // "%" and a number from 0 to 99; a number that can't be read is 0.
    if (!text.empty() && text.front() == '%') {
        if (auto r = RoundToInt32(LeadingNumberValue(text.substr(1))); r && *r >= 0 && *r <= 99) {
            p.variable = *r;
            p.isVariable = kTrue;
        }
    }

    return p;
}

int16_t ParseShellArguments(Session& s, std::string_view line) {
    s.parsedParameterCount = 0;
    const size_t from = std::min<size_t>(static_cast<size_t>(SkipWord(line, kTrue)), line.size());
    std::string args(line.substr(from));
    if (!args.empty()) args += ',';
    size_t pos = 0;
    while (pos < args.size()) {
        const size_t comma = args.find(',', pos);
        if (comma == std::string::npos) break;
        std::string_view arg = std::string_view(args).substr(pos, comma - pos);
        while (!arg.empty() && arg.front() == ' ') arg.remove_prefix(1);
        CheckBound(s.parsedParameterCount, kShellParameterBound, "parsedParameters");
        s.parsedParameters[s.parsedParameterCount] = ClassifyArgumentNoFile(s.st, arg);
        ++s.parsedParameterCount;
        pos = comma + 1;
    }
    return s.parsedParameterCount;
}

std::string StatusText(int16_t status) {
    switch (status) {
        case -1:
            return "*ERROR: Illegal command";
        case -2:
            return "*ERROR: Illegal parameters";
        case -3:
            return "*ERROR: Illegal number of parameters";
        case -4:
            return "*ERROR: Not connected to target";
        case -5:
            return "*ERROR: Feature not supported by this kernel";
        case -6:
            return "*ERROR: Feature not supported by this controller";
        default:
            return {};
    }
}

int16_t ExecuteShellCommand(Session& s, std::string_view line, int16_t checkOnly) {
    ProgramState& st = s.st;
    int32_t status = -1;
    int32_t extra = 0;
    int32_t row = -1;

    if (checkOnly == 0) Text2Buffer(st, ">" + std::string(line) + CrLf());
    if (checkOnly == 0) s.lastFailureCode = 0;
    try {
        ParseShellArguments(s, line);
        const size_t wordEnd =
            std::min<size_t>(static_cast<size_t>(SkipWord(line, kFalse)), line.size());
        row = FindShellCommand(s.table, line.substr(0, wordEnd));
        if (row >= 0) {
            const ShellCommandRecord& cmd = s.table.shellCommands[row];
            if (s.parsedParameterCount < cmd.minParameters ||
                s.parsedParameterCount > cmd.maxParameters) {
                status = -3;
            } else {
                status = 0;
                for (int i = 0; i < s.parsedParameterCount; ++i) {
                    ParsedParameter& a = s.parsedParameters[i];
                    bool ok = false;
                    std::string typeText;
                    std::string altText;
                    if (i < cmd.parameterCount) {
                        const ShellParameterRecord& p = cmd.parameters[i];
                        typeText = p.type;
                        altText = p.alternativeType;
                        ok =
                            Accepts(st, a, p.type, false) ||
                            (!p.alternativeType.empty() && Accepts(st, a, p.alternativeType, true));
                    }
                    if (ok) {
                        extra = 0;
                        continue;
                    }
                    status = -2;
                    extra = (i == s.parsedParameterCount - 1) ? 1 : 0;
                    std::string msg =
                        "*ERROR: Parameter " + std::to_string(i + 1) + " must be valid " + typeText;
                    if (!altText.empty()) msg += " or " + altText;
                    Say(st, msg);
                }
                if (status == 0 && checkOnly == 0) {
                    if (RowFn fn = FindRow(cmd.name)) {
                        const RowResult r = fn(s);
                        status = r.status;
                        if (r.failed) extra = cmd.id;
                        s.lastFailureCode = r.code;
                        extra += r.adjust;
                    } else {
                        Say(st, "*ERROR: Command not available in this build");
                        extra = cmd.id;
                    }
                }
            }
        }
        if (status != 0) {
            if (const std::string text = StatusText(static_cast<int16_t>(status)); !text.empty())
                Say(st, text);
            if ((status == -2 || status == -3) && row >= 0)
                Say(st, "usage: " + s.table.shellCommands[row].usage);
        }
    } catch (const std::exception& e) {
        // The operation met a bound (RunTimeError, or a library's own range
        // check): it ends here, the program goes on.
        Say(st, std::string("*ERROR: ") + e.what());
        status = -1;
        extra = 0;
        if (row >= 0) {
            status = 0;
            extra = s.table.shellCommands[row].id;
        }
    }

    if (st.ConnectionState == kConnectedAndReady) {
        // The register view is read from the target where the session can;
        // otherwise it is redrawn from the table.
        const bool readView = st.REFRESHSFR == kTrue && s.readSfrView;
        st.host->refreshAfterOperation(st.REFRESHSFR == kTrue && !readView);
        if (readView) s.readSfrView();
    }
    return static_cast<int16_t>(status + extra);
}

}  // namespace vortelm::shell
