#include "config/ConfigText.h"

#include <cstdio>
#include <fstream>
#include <sstream>

#include "core/Helpers.h"
#include "core/ProgramState.h"
#include "core/SafeFile.h"
#include "core/Text.h"

namespace vortelm::config {

std::optional<std::vector<std::string>> ReadLines(const ProgramState& st, std::string_view name) {
    std::ifstream f(NativePath(ResolveInProgramFolder(st, name)), std::ios::binary);
    if (!f.is_open()) return std::nullopt;
    std::ostringstream all;
    all << f.rdbuf();
    const std::string text = all.str();
    std::vector<std::string> lines;
    std::string line;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '\n' || c == '\r') {
            lines.push_back(std::move(line));
            line.clear();
            if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
        } else {
            line += c;
        }
    }
    if (!line.empty()) lines.push_back(std::move(line));
    return lines;
}

bool WriteFileAtomically(const ProgramState& st, std::string_view name, std::string_view text) {
    const std::string path = NativePath(ResolveInProgramFolder(st, name));
    // The settings are written at every exit, mostly unchanged: a file that
    // already holds exactly the text is left alone, which spares the two
    // syncs to the disk of a replacement.
    {
        std::ifstream old(path, std::ios::binary);
        if (old.is_open()) {
            std::string have(text.size() + 1, '\0');
            old.read(have.data(), static_cast<std::streamsize>(have.size()));
            if (static_cast<size_t>(old.gcount()) == text.size() &&
                std::string_view(have.data(), text.size()) == text)
                return true;
        }
    }
    return ReplaceFile(path, text).ok;
}

int32_t Val(std::string_view text) {
    size_t i = 0;
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == '-' || text[i] == '+')) {
        negative = text[i] == '-';
        ++i;
    }
    int64_t v = 0;
    while (i < text.size() && text[i] >= '0' && text[i] <= '9') {
        v = v * 10 + (text[i] - '0');
        if (v > INT32_MAX) v = INT32_MAX;
        ++i;
    }
    return static_cast<int32_t>(negative ? -v : v);
}

std::optional<std::string> ParenthesisedText(std::string_view text) {
    const auto open = text.find('(');
    if (open == std::string_view::npos) return std::nullopt;
    const auto close = text.find(')', open + 1);
    if (close == std::string_view::npos) return std::string(text.substr(open + 1));
    return std::string(text.substr(open + 1, close - open - 1));
}

std::string RemoveSpaces(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (char c : text)
        if (c != ' ') out += c;
    return out;
}

void ReportMissingFile(ProgramState& st, std::string_view name) {
    Text2Buffer(st, CrLf() + "*ERROR: File " + std::string(name) + " not found");
}

}  // namespace vortelm::config
