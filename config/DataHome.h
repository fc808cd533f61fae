#pragma once
// The data home's copy of the delivered data tree. Each file is copied
// whole into place (a temporary file renamed over it), and the home is
// marked complete only when every delivered file is there. A start that
// finds no mark repairs the tree: delivered files that are missing or empty
// are copied again; files that hold something, changed by the user or
// not, stay as they are.

#include <string>
#include <vector>

namespace vortelm {

// The mark of a complete copy, in the data home.
inline constexpr const char* kDataHomeMark = ".vortelm-data-complete";

struct DataCopyResult {
    int copied = 0;                   // files written
    std::vector<std::string> errors;  // one text for each file that failed
    bool complete = false;            // the mark was written
};

// True when the data home carries the mark of a complete copy.
[[nodiscard]] bool DataHomeComplete(const std::string& home);

// Copies what is missing or empty in home from the delivered tree source,
// then marks home complete when nothing failed.
[[nodiscard]] DataCopyResult InstallDataTree(const std::string& source, const std::string& home);

}  // namespace vortelm
