#pragma once
// The image files loaded last (by the load forms, a drop or the menu), the
// newest first, each once, for the File menu. The list is kept in a text
// file of the data home, one path a line, so that it outlives the program.

#include <string>
#include <string_view>
#include <vector>

namespace vortelm::forms {

class RecentFiles {
  public:
    static constexpr size_t kCount = 8;
    // Longer lines of the file are no path and are passed over.
    static constexpr size_t kLongestPath = 4096;
    // The name of the list's file in the data home.
    static constexpr const char* kFileName = "recent-files.txt";

    // The path goes to the top; an older place of it goes, and the list keeps
    // its kCount newest. With a file attached, the file is written again.
    void add(std::string_view path);
    [[nodiscard]] const std::vector<std::string>& items() const { return items_; }

    // Reads the list from its file once (a missing file is an empty list);
    // later adds write it. An empty path attaches nothing.
    void attach(const std::string& file);
    [[nodiscard]] bool attached() const { return !file_.empty(); }

    // The list as its file holds it, and back: empty lines, overlong lines
    // and repeats are passed over, at most kCount are taken.
    [[nodiscard]] std::string Text() const;
    void FromText(std::string_view text);

  private:
    std::vector<std::string> items_;
    std::string file_;
};

}  // namespace vortelm::forms
