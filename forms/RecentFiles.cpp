#include "forms/RecentFiles.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include "core/SafeFile.h"

namespace vortelm::forms {

void RecentFiles::add(std::string_view path) {
    if (path.empty() || path.size() > kLongestPath ||
        path.find_first_of("\r\n") != std::string_view::npos)
        return;
    items_.erase(std::remove(items_.begin(), items_.end(), path), items_.end());
    items_.insert(items_.begin(), std::string(path));
    if (items_.size() > kCount) items_.resize(kCount);
    // a list that cannot be written stays in memory for this run
    if (attached()) (void)ReplaceFile(file_, Text());
}

void RecentFiles::attach(const std::string& file) {
    if (file.empty() || attached()) return;
    file_ = file;
    std::ifstream in(file, std::ios::binary);
    if (!in) return;
    std::ostringstream text;
    text << in.rdbuf();
    FromText(text.str());
}

std::string RecentFiles::Text() const {
    std::string out;
    for (const std::string& p : items_) out += p + "\n";
    return out;
}

void RecentFiles::FromText(std::string_view text) {
    items_.clear();
    size_t from = 0;
    while (from < text.size() && items_.size() < kCount) {
        size_t to = text.find('\n', from);
        if (to == std::string_view::npos) to = text.size();
        std::string_view line = text.substr(from, to - from);
        from = to + 1;
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        if (line.empty() || line.size() > kLongestPath || line.find('\r') != std::string_view::npos)
            continue;
        if (std::find(items_.begin(), items_.end(), line) == items_.end())
            items_.emplace_back(line);
    }
}

}  // namespace vortelm::forms
