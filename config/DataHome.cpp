#include "config/DataHome.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "core/SafeFile.h"

namespace fs = std::filesystem;

namespace vortelm {

namespace {

// The whole file, or nothing with ok false.
std::string ReadAll(const fs::path& path, bool& ok) {
    std::ifstream f(path, std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
    ok = !f.bad() && f.is_open();
    return bytes;
}

// A delivered file needs copying when the home has none, or an empty one
// where the delivered one holds something (a copy that was cut short).
bool NeedsCopy(const fs::path& delivered, const fs::path& target) {
    std::error_code ec;
    const auto status = fs::symlink_status(target, ec);
    if (ec || !fs::exists(status)) return true;
    if (!fs::is_regular_file(status)) return false;  // the user's own: left alone
    const auto size = fs::file_size(target, ec);
    if (ec || size != 0) return false;
    return fs::file_size(delivered, ec) != 0 && !ec;
}

}  // namespace

bool DataHomeComplete(const std::string& home) {
    std::error_code ec;
    return fs::is_regular_file(fs::path(home) / kDataHomeMark, ec);
}

DataCopyResult InstallDataTree(const std::string& source, const std::string& home) {
    DataCopyResult result;
    std::error_code ec;
    fs::recursive_directory_iterator it(source, ec), end;
    if (ec) {
        result.errors.push_back(source + ": " + ec.message());
        return result;
    }
    for (; it != end; it.increment(ec)) {
        if (ec) {
            result.errors.push_back(source + ": " + ec.message());
            break;
        }
        const fs::path relative = fs::relative(it->path(), source, ec);
        if (ec) continue;
        const fs::path target = fs::path(home) / relative;
        if (it->is_directory(ec)) {
            fs::create_directories(target, ec);
            if (ec) result.errors.push_back(target.string() + ": " + ec.message());
            continue;
        }
        if (!it->is_regular_file(ec) || !NeedsCopy(it->path(), target)) continue;
        bool ok = false;
        const std::string bytes = ReadAll(it->path(), ok);
        if (!ok) {
            result.errors.push_back(it->path().string() + ": cannot be read");
            continue;
        }
        fs::create_directories(target.parent_path(), ec);
        const SafeWriteResult w = ReplaceFile(target.string(), bytes);
        if (!w.ok) {
            result.errors.push_back(target.string() + ": " + w.reason);
            continue;
        }
        ++result.copied;
    }
    if (result.errors.empty()) {
        const SafeWriteResult w =
            ReplaceFile((fs::path(home) / kDataHomeMark).string(), "delivered data copied\n");
        if (w.ok)
            result.complete = true;
        else
            result.errors.push_back(home + "/" + kDataHomeMark + ": " + w.reason);
    }
    return result;
}

}  // namespace vortelm
