#include "forms/RecentFiles.h"

#include <algorithm>

namespace vortelm::forms {

void RecentFiles::add(std::string_view path) {
    if (path.empty()) return;
    items_.erase(std::remove(items_.begin(), items_.end(), path), items_.end());
    items_.insert(items_.begin(), std::string(path));
    if (items_.size() > kCount) items_.resize(kCount);
}

}  // namespace vortelm::forms
