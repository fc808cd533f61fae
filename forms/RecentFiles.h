#pragma once
// The image files loaded last (by the load forms, a drop or the menu), the
// newest first, each once, for the File menu.

#include <string>
#include <string_view>
#include <vector>

namespace vortelm::forms {

class RecentFiles {
  public:
    static constexpr size_t kCount = 8;
    // The path goes to the top; an older place of it goes, and the list keeps
    // its kCount newest.
    void add(std::string_view path);
    [[nodiscard]] const std::vector<std::string>& items() const { return items_; }

  private:
    std::vector<std::string> items_;
};

}  // namespace vortelm::forms
