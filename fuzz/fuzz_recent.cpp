// The recent files list read from its file: whatever the text, at most eight
// paths come back, none empty, none twice, and the text the list writes
// reads back as the same list.
#include <cstdint>
#include <string_view>

#include "forms/RecentFiles.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    vortelm::forms::RecentFiles list;
    list.FromText(std::string_view(reinterpret_cast<const char*>(data), size));
    const auto& items = list.items();
    if (items.size() > vortelm::forms::RecentFiles::kCount) __builtin_trap();
    for (const auto& p : items)
        if (p.empty() || p.size() > vortelm::forms::RecentFiles::kLongestPath) __builtin_trap();
    vortelm::forms::RecentFiles again;
    again.FromText(list.Text());
    if (again.items() != items) __builtin_trap();
    return 0;
}
