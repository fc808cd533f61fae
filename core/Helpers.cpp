#include "core/Helpers.h"

#include <dirent.h>
#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <vector>

#include "core/Host.h"
#include "core/ProgramState.h"

namespace vortelm {

std::string HexText(int32_t value, int32_t width) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "%X", static_cast<uint32_t>(value));
    std::string s = buf;
    if (width > 0 && static_cast<int32_t>(s.size()) < width) s.insert(0, width - s.size(), '0');
    return s;
}

int32_t HexValue(std::string_view text) {
    if (text.size() > 6) return -1;
    int32_t v = 0;
    bool bad = false;
    for (char c : text) {
        v *= 16;
        if (c >= '0' && c <= '9')
            v += c - '0';
        else if (c >= 'A' && c <= 'F')
            v += c - 'A' + 10;
        else if (c >= 'a' && c <= 'f')
            v += c - 'a' + 10;
        else
            bad = true;
    }
    return bad ? -1 : v;
}

int32_t BinaryTextValue(std::string_view text) {
    uint32_t v = 0;
    for (char c : text) v = (v << 1) | (c == '1' ? 1u : 0u);
    return static_cast<int32_t>(v);
}

std::string CrLf() {
    return "\r\n";
}

namespace {
bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Reads a number from position i on: sign, digits, fraction, exponent. Gives
// the number of characters taken (0 if no digit stood there).
size_t ScanNumber(std::string_view t, size_t i, double& value) {
    const size_t start = i;
    if (i < t.size() && (t[i] == '+' || t[i] == '-')) ++i;
    size_t digits = 0;
    while (i < t.size() && IsDigit(t[i])) ++i, ++digits;
    if (i < t.size() && t[i] == '.') {
        ++i;
        while (i < t.size() && IsDigit(t[i])) ++i, ++digits;
    }
    if (digits == 0) return 0;
    if (i < t.size() && (t[i] == 'e' || t[i] == 'E')) {
        size_t j = i + 1;
        if (j < t.size() && (t[j] == '+' || t[j] == '-')) ++j;
        size_t expDigits = 0;
        while (j < t.size() && IsDigit(t[j])) ++j, ++expDigits;
        if (expDigits > 0) i = j;
    }
    value = std::strtod(std::string(t.substr(start, i - start)).c_str(), nullptr);
    return i - start;
}
}  // namespace

std::optional<double> NumericValue(std::string_view text) {
    size_t i = 0;
    while (i < text.size() && text[i] == ' ') ++i;
    double v = 0;
    const size_t n = ScanNumber(text, i, v);
    if (n == 0) return std::nullopt;
    i += n;
    while (i < text.size() && text[i] == ' ') ++i;
    if (i != text.size() || !std::isfinite(v)) return std::nullopt;
    return v;
}

double LeadingNumberValue(std::string_view text) {
    size_t i = 0;
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
    double v = 0;
    if (ScanNumber(text, i, v) == 0 || !std::isfinite(v)) return 0;
    return v;
}

std::optional<int32_t> RoundToInt32(double value) {
    if (!std::isfinite(value)) return std::nullopt;
    const double r = std::nearbyint(value);  // the default mode rounds half to even
    if (r < -2147483648.0 || r > 2147483647.0) return std::nullopt;
    return static_cast<int32_t>(r);
}

std::string FormatOneDecimal(double value) {
    if (!std::isfinite(value)) return "0.0";
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.1f", std::round(value * 10.0) / 10.0);
    return buf;
}

int32_t LastPosition(std::string_view text, char c) {
    auto p = text.rfind(c);
    return p == std::string_view::npos ? 0 : static_cast<int32_t>(p + 1);
}

int32_t SkipWord(std::string_view text, int16_t skipBlanks) {
    size_t pos = 1;
    const size_t len = text.size();
    auto blank = [&](size_t p) { return text[p - 1] == ' ' || text[p - 1] == '\t'; };
    while (pos <= len && !blank(pos)) ++pos;
    if (skipBlanks == kTrue)
        while (pos <= len && blank(pos)) ++pos;
    if (pos > len) return static_cast<int32_t>(len + 1);
    return static_cast<int32_t>(pos - 1);
}

std::string StripOuterQuotes(std::string_view text) {
    std::string s(text);
    if (!s.empty() && s.front() == '"') s.erase(0, 1);
    if (!s.empty() && s.back() == '"') s.pop_back();
    return s;
}

std::string StripBlanks(std::string_view text, int16_t keepQuoted) {
    std::string out;
    bool quoted = false;
    for (char c : text) {
        if (keepQuoted == kTrue && c == '"') quoted = !quoted;
        if (c == ' ' && !(keepQuoted == kTrue && quoted)) continue;
        out += c;
    }
    return out;
}

std::string QuotePath(std::string_view text) {
    if (text.find(' ') != std::string_view::npos) return "\"" + std::string(text) + "\"";
    return std::string(text);
}

std::string UnquotePath(std::string_view text) {
    if (text.find('"') != std::string_view::npos) {
        if (text.size() < 2) return {};
        return std::string(text.substr(1, text.size() - 2));
    }
    return std::string(text);
}

void NormaliseScriptLine(std::string& line) {
    auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    size_t b = 0;
    while (b < line.size() && isBlank(line[b])) ++b;
    line.erase(0, b);
    if (!line.empty()) {
        size_t e = line.size();
        while (e > 0 && isBlank(line[e - 1])) --e;
        line.erase(e);
    }
    for (size_t i = 0; i + 1 < line.size();) {
        if (isBlank(line[i]) && isBlank(line[i + 1]))
            line.erase(i, 1);
        else
            ++i;
    }
    for (char& c : line)
        if (c == '\t') c = ' ';
    for (size_t i = 0; i < line.size(); ++i) {
        if (line[i] != ',') continue;
        if (i > 0 && line[i - 1] == ' ') {
            line.erase(i - 1, 1);
            --i;
        }
        if (i + 1 < line.size() && line[i + 1] == ' ') line.erase(i + 1, 1);
    }
}

std::string FirstWord(std::string_view text) {
    auto p = text.find(' ');
    return std::string(p == std::string_view::npos ? text : text.substr(0, p));
}

std::string StripTrailingBackslash(std::string_view text) {
    if (!text.empty() && text.back() == '\\') text.remove_suffix(1);
    return std::string(text);
}

std::string FileNameOfPath(std::string_view text) {
    auto p = text.rfind('\\');
    return std::string(p == std::string_view::npos ? text : text.substr(p + 1));
}

namespace {
// The letters a to z only, as the upper-casing of the "C" locale does.
constexpr char UpperAscii(char c) {
    return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
}
}  // namespace

std::string UpperCase(std::string_view text) {
    std::string s(text);
    for (char& c : s) c = UpperAscii(c);
    return s;
}

bool EqualUpper(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (UpperAscii(a[i]) != UpperAscii(b[i])) return false;
    return true;
}

std::string DateStamp(std::time_t when) {
    std::tm t{};
    localtime_r(&when, &t);
    char buf[32];
    std::snprintf(buf, sizeof buf, "%04d%02d%02d_%02d%02d%02d", t.tm_year + 1900, t.tm_mon + 1,
                  t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec);
    return buf;
}

std::string DateStamp() {
    return DateStamp(std::time(nullptr));
}

namespace {
std::vector<std::string> Words(std::string_view line) {
    std::vector<std::string> words;
    if (line.empty()) return words;
    std::string cur;
    bool inSep = false;
    words.emplace_back();
    for (char c : line) {
        if (c == ' ' || c == '\t') {
            inSep = true;
        } else {
            if (inSep && !(words.size() == 1 && words.back().empty())) words.emplace_back();
            inSep = false;
            words.back() += c;
        }
    }
    if (inSep && !words.back().empty())
        words.emplace_back();  // trailing blank: one more, empty word
    return words;
}
}  // namespace

int16_t StartupArgumentCount(std::string_view commandLine) {
    return static_cast<int16_t>(Words(commandLine).size());
}

std::string StartupArgument(std::string_view commandLine, int16_t n) {
    auto w = Words(commandLine);
    if (n < 1 || n > static_cast<int16_t>(w.size())) return {};
    return w[n - 1];
}

bool IsAbsoluteName(std::string_view name) {
    return (!name.empty() && name.front() == '/') || name.find(':') != std::string_view::npos ||
           name.find("\\\\") != std::string_view::npos;
}

std::string ResolveIn(std::string_view folder, std::string_view name) {
    // With no folder set a name stays relative to the working folder.
    if (IsAbsoluteName(name) || folder.empty()) return std::string(name);
    return std::string(folder) + "/" + std::string(name);
}

std::string ResolveInProgramFolder(const ProgramState& st, std::string_view name) {
    return ResolveIn(st.programFolder, name);
}
std::string ResolveLoadPath(const ProgramState& st, std::string_view name) {
    return ResolveIn(st.PATH_LOAD, name);
}
std::string ResolveSavePath(const ProgramState& st, std::string_view name) {
    return ResolveIn(st.PATH_SAVE, name);
}
std::string ResolveScriptPath(const ProgramState& st, std::string_view name) {
    return ResolveIn(st.PATH_SCRIPT, name);
}
std::string ResolveLogPath(const ProgramState& st, std::string_view name) {
    return ResolveIn(st.PATH_LOG, name);
}

std::string NativePath(std::string_view name) {
    std::string p(name);
    for (char& c : p)
        if (c == '\\') c = '/';
    struct stat sb {};
    if (p.empty() || ::stat(p.c_str(), &sb) == 0) return p;
    // Find each component without regard to case.
    std::string out = p.front() == '/' ? "/" : "";
    size_t i = 0;
    while (i < p.size()) {
        size_t j = p.find('/', i);
        if (j == std::string::npos) j = p.size();
        std::string comp = p.substr(i, j - i);
        i = j + 1;
        if (comp.empty()) continue;
        std::string dir = out.empty() ? "." : out;
        std::string cand = out + comp;
        if (::stat(cand.c_str(), &sb) != 0) {
            if (DIR* d = ::opendir(dir.c_str())) {
                while (dirent* e = ::readdir(d)) {
                    if (::strcasecmp(e->d_name, comp.c_str()) == 0) {
                        cand = out + e->d_name;
                        break;
                    }
                }
                ::closedir(d);
            }
        }
        out = cand;
        if (j < p.size()) out += "/";
    }
    return out;
}

bool CanOpenForReading(std::string_view path) {
    const int fd = ::open(NativePath(path).c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    struct stat sb {};
    const bool regular = ::fstat(fd, &sb) == 0 && S_ISREG(sb.st_mode);
    ::close(fd);
    return regular;
}

bool FileExists(ProgramState& st, std::string_view name, int16_t askOverwrite) {
    if (!CanOpenForReading(ResolveInProgramFolder(st, name))) return false;
    if (askOverwrite == kTrue) {
        return st.host->messageBox("File allready exists ! Overwrite ?", MsgButtons::YesNo,
                                   MsgIcon::Question) != MsgAnswer::Yes;
    }
    return true;
}

int64_t FileDate(const ProgramState& st, std::string_view name) {
    struct stat sb {};
    if (::stat(NativePath(ResolveInProgramFolder(st, name)).c_str(), &sb) != 0) return -1;
    return int64_t(sb.st_mtim.tv_sec);
}

int32_t FileSize(const ProgramState& st, std::string_view name) {
    struct stat sb {};
    if (::stat(NativePath(ResolveInProgramFolder(st, name)).c_str(), &sb) != 0) return -1;
    return static_cast<int32_t>(sb.st_size);
}

void RemoveFile(const ProgramState& st, std::string_view name) {
    ::unlink(NativePath(ResolveInProgramFolder(st, name)).c_str());
}

}  // namespace vortelm
