#pragma once
// What the file forms share: the list of places (there are no drives here:
// the root, the home folder, the data home and mounted media), the folder
// list, the file list filtered by the chosen file type, the name box, and
// the memo of the last place, folder, name and type for each kind of use.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/ProgramState.h"

namespace vortelm::forms {

// One entry of a file type list: its caption and the patterns it filters by.
struct FileType {
    std::string caption;  // "Intel hex files (*.hex;*.h86)"
    std::string pattern;  // "*.hex;*.h86"
};

// A place of the place list.
struct Place {
    std::string caption;  // "/", "home", "data home", "media: STICK"
    std::string path;
};

// The places a file form offers: the root, the home folder, the data home and
// every folder under /media/<user>, /run/media/<user> and /mnt.
[[nodiscard]] std::vector<Place> StandardPlaces(const ProgramState& st);

// True when a file name matches one of the ";"-separated patterns, without
// regard to case ("SAMPLE.HEX" is a "*.hex" file). "*.*" matches every name.
[[nodiscard]] bool MatchesPattern(std::string_view name, std::string_view patterns);

// The name behind the last "/" or "\".
[[nodiscard]] std::string BaseName(std::string_view path);

// True when the name has a "." (the forms add their extension otherwise).
[[nodiscard]] bool HasExtension(std::string_view name);

// A name joined to a folder; an absolute name stands alone.
[[nodiscard]] std::string ChosenPathIn(const std::string& folder, const std::string& name);

class FileBrowser {
  public:
    FileBrowser(ProgramState& st, std::vector<FileType> types);

    // ---- the controls
    std::vector<Place> places;           // XDrivelist
    int XDrivelist = 0;                  // the chosen place
    std::string folder;                  // the folder XDirlist shows
    std::vector<std::string> XDirlist;   // ".." (unless at the root) and the subfolders
    std::vector<std::string> XFilelist;  // the files of the folder the type lets through
    std::vector<FileType> types;         // DFiletype's entries
    int DFiletype = 0;                   // the chosen type
    std::string TFilename;               // the name box

    // ---- events
    // A place chosen: its folder is shown. A place that cannot be read gives
    // "DRIVE NOT READY" and the old place and folder stay. False then.
    bool XDrivelist_Change(int index);
    // A folder of XDirlist opened (".." goes up).
    void XDirlist_DblClick(int index);
    // Shows a folder; one that cannot be read leaves the lists as they were
    // and gives false.
    bool ShowFolder(const std::string& path);
    void DFiletype_Click(int index);
    // A file picked: its name goes into the name box.
    void XFilelist_Click(int index);

    // ---- the memo of the kind of use
    // Takes place, folder, name and type from a memo; a memo folder that does
    // not exist (or was never used) gives the start folder.
    void get_preferences(const FileMemo& memo, const std::string& startFolder);
    // The memo of what was chosen.
    void set_preferences(FileMemo& memo) const;

    // The name box joined to the folder; an absolute name stands alone.
    [[nodiscard]] std::string ChosenPath() const;
    [[nodiscard]] std::string ChosenPath(const std::string& name) const;
    [[nodiscard]] ProgramState& st() { return st_; }

  protected:
    ProgramState& st_;

  private:
    void fillFiles();
    void selectPlaceOf(const std::string& path);
};

}  // namespace vortelm::forms
