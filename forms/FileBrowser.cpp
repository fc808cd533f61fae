#include "forms/FileBrowser.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

#include "core/Helpers.h"
#include "core/Host.h"

namespace vortelm::forms {

namespace fs = std::filesystem;

namespace {

// The folders directly under a folder, sorted; nothing if it cannot be read.
std::vector<std::string> SubFolders(const std::string& path) {
    std::vector<std::string> out;
    std::error_code ec;
    for (fs::directory_iterator it(path, ec), end; !ec && it != end; it.increment(ec)) {
        std::error_code e2;
        if (it->is_directory(e2)) out.push_back(it->path().filename().string());
    }
    std::sort(out.begin(), out.end());
    return out;
}

bool Readable(const std::string& path) {
    std::error_code ec;
    fs::directory_iterator it(path, ec);
    return !ec;
}

bool MatchOne(std::string_view name, std::string_view pattern) {
    // "*" stands for any run of characters, "?" for one; letters without case.
    size_t n = 0, p = 0, star = std::string_view::npos, mark = 0;
    auto same = [](char a, char b) {
        auto up = [](char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 32) : c; };
        return up(a) == up(b);
    };
    while (n < name.size()) {
        if (p < pattern.size() && (pattern[p] == '?' || same(pattern[p], name[n]))) {
            ++n;
            ++p;
        } else if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            mark = n;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            n = ++mark;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*') ++p;
    return p == pattern.size();
}

}  // namespace

std::vector<Place> StandardPlaces(const ProgramState& st) {
    std::vector<Place> out;
    out.push_back({"/", "/"});
    if (const char* home = std::getenv("HOME"); home && *home) out.push_back({"home", home});
    if (!st.programFolder.empty()) out.push_back({"data home", st.programFolder});
    std::string user;
    if (const char* u = std::getenv("USER"); u && *u) user = u;
    std::vector<std::string> roots = {"/mnt"};
    if (!user.empty()) {
        roots.push_back("/media/" + user);
        roots.push_back("/run/media/" + user);
    }
    for (const std::string& root : roots)
        for (const std::string& name : SubFolders(root))
            out.push_back({"media: " + name, root + "/" + name});
    return out;
}

bool MatchesPattern(std::string_view name, std::string_view patterns) {
    size_t from = 0;
    while (from <= patterns.size()) {
        size_t to = patterns.find(';', from);
        if (to == std::string_view::npos) to = patterns.size();
        std::string_view one = patterns.substr(from, to - from);
        if (one == "*.*" || MatchOne(name, one)) return true;
        from = to + 1;
    }
    return false;
}

std::string BaseName(std::string_view path) {
    const size_t p = path.find_last_of("/\\");
    return std::string(p == std::string_view::npos ? path : path.substr(p + 1));
}

bool HasExtension(std::string_view name) {
    return BaseName(name).find('.') != std::string::npos;
}

FileBrowser::FileBrowser(ProgramState& st, std::vector<FileType> t)
    : places(StandardPlaces(st)), types(std::move(t)), st_(st) {}

bool FileBrowser::XDrivelist_Change(int index) {
    if (index < 0 || index >= static_cast<int>(places.size())) return false;
    const std::string& path = places[static_cast<size_t>(index)].path;
    if (!Readable(path)) {
        (void)st_.host->messageBox("DRIVE NOT READY", MsgButtons::Ok, MsgIcon::Exclamation);
        return false;
    }
    XDrivelist = index;
    return ShowFolder(path);
}

void FileBrowser::XDirlist_DblClick(int index) {
    if (index < 0 || index >= static_cast<int>(XDirlist.size())) return;
    const std::string& entry = XDirlist[static_cast<size_t>(index)];
    fs::path next = entry == ".." ? fs::path(folder).parent_path() : fs::path(folder) / entry;
    (void)ShowFolder(next.empty() ? std::string("/") : next.string());
}

bool FileBrowser::ShowFolder(const std::string& path) {
    if (!Readable(path)) return false;
    folder = path;
    if (folder.size() > 1 && folder.back() == '/') folder.pop_back();
    XDirlist.clear();
    if (folder != "/") XDirlist.push_back("..");
    for (std::string& s : SubFolders(folder)) XDirlist.push_back(std::move(s));
    selectPlaceOf(folder);
    fillFiles();
    return true;
}

void FileBrowser::DFiletype_Click(int index) {
    if (index < 0 || index >= static_cast<int>(types.size())) return;
    DFiletype = index;
    fillFiles();
}

void FileBrowser::XFilelist_Click(int index) {
    if (index < 0 || index >= static_cast<int>(XFilelist.size())) return;
    TFilename = XFilelist[static_cast<size_t>(index)];
}

void FileBrowser::fillFiles() {
    XFilelist.clear();
    const std::string pattern =
        types.empty() ? std::string("*.*") : types[static_cast<size_t>(DFiletype)].pattern;
    std::error_code ec;
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        std::error_code e2;
        if (!it->is_regular_file(e2)) continue;
        const std::string name = it->path().filename().string();
        if (MatchesPattern(name, pattern)) XFilelist.push_back(name);
    }
    std::sort(XFilelist.begin(), XFilelist.end());
}

void FileBrowser::selectPlaceOf(const std::string& path) {
    // the place whose folder is the longest start of the path
    size_t best = 0;
    int found = -1;
    for (size_t i = 0; i < places.size(); ++i) {
        const std::string& p = places[i].path;
        const bool under =
            path == p || (path.rfind(p, 0) == 0 && (p == "/" || path[p.size()] == '/'));
        if (under && p.size() >= best) {
            best = p.size();
            found = static_cast<int>(i);
        }
    }
    if (found >= 0) XDrivelist = found;
}

void FileBrowser::get_preferences(const FileMemo& memo, const std::string& startFolder) {
    if (memo.type >= 0 && memo.type < static_cast<int>(types.size())) DFiletype = memo.type;
    const std::string memoFolder = NativePath(memo.folder);
    const bool used = !memo.name.empty() && !memo.folder.empty() && Readable(memoFolder);
    // A memo without a file name keeps a folder whose last part stands as
    // the name: that folder is shown, with no name.
    std::error_code ec;
    const std::string whole = ChosenPathIn(memoFolder, memo.name);
    if (used && fs::is_directory(whole, ec) && ShowFolder(whole)) return;
    if (used && ShowFolder(memoFolder)) {
        TFilename = memo.name;
        return;
    }
    if (ShowFolder(NativePath(startFolder))) return;
    // the fallback: the data home, else the root
    if (!ShowFolder(st_.programFolder)) (void)ShowFolder("/");
}

void FileBrowser::set_preferences(FileMemo& memo) const {
    memo.drive = folder.substr(0, 1);
    memo.folder = folder;
    memo.name = BaseName(TFilename);
    memo.type = static_cast<int16_t>(DFiletype);
}

std::string FileBrowser::ChosenPath() const {
    return ChosenPath(TFilename);
}

std::string FileBrowser::ChosenPath(const std::string& name) const {
    return ChosenPathIn(folder, name);
}

std::string ChosenPathIn(const std::string& folder, const std::string& name) {
    if (!name.empty() && name.front() == '/') return name;
    if (folder == "/") return "/" + name;
    return folder + "/" + name;
}

}  // namespace vortelm::forms
