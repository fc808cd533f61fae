#include "sfr/SfrSets.h"

#include <fstream>
#include <iterator>

#include "core/Helpers.h"
#include "core/Host.h"
#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "core/SafeFile.h"
#include "core/Text.h"
#include "image/Dump.h"
#include "sfr/SfrTable.h"

namespace vortelm {

namespace {

constexpr int kSetEntries = 256;

SfrSet& SetAt(ProgramState& st, int set) {
    CheckBound(set, kSfrSetBound, "SFR set");
    return st.sfrSets[static_cast<size_t>(set)];
}

const SfrRecord& RecordAt(const ProgramState& st, int32_t index) {
    CheckBound(index, std::min<int32_t>(st.sfrCount, static_cast<int32_t>(st.sfrTable.size())) - 1,
               "SFR table");
    return st.sfrTable[static_cast<size_t>(index)];
}

// The place of the register in the set, or -1.
int PlaceInSet(const SfrSet& s, int32_t index) {
    for (int i = 0; i < s.count && i < kSetEntries; ++i)
        if (s.entries[static_cast<size_t>(i)] == index) return i;
    return -1;
}

void DeleteEntry(SfrSet& s, int p) {
    for (int k = p; k + 1 < s.count && k + 1 < kSetEntries; ++k) {
        s.entries[static_cast<size_t>(k)] = s.entries[static_cast<size_t>(k + 1)];
        s.names[static_cast<size_t>(k)] = s.names[static_cast<size_t>(k + 1)];
    }
    --s.count;
}

void AppendLine(SfrListBox& list, std::string line) {
    list.lines.push_back(std::move(line));
    list.selected.push_back(0);
    ++list.changes;
}

void RemoveLine(SfrListBox& list, int p) {
    list.selected.resize(list.lines.size());
    list.lines.erase(list.lines.begin() + p);
    list.selected.erase(list.selected.begin() + p);
    if (list.listIndex >= static_cast<int32_t>(list.lines.size()))
        list.listIndex = static_cast<int32_t>(list.lines.size()) - 1;
    ++list.changes;
}

void ClearList(SfrListBox& list) {
    list.lines.clear();
    list.selected.clear();
    list.listIndex = -1;
    ++list.changes;
}

// Selects the line at the removed line's place, or the one before it when
// that was the last line; the others lose their selection.
void SelectAfterRemoval(SfrListBox& list, int p) {
    if (list.lines.empty()) return;
    const int n = static_cast<int>(list.lines.size());
    const int q = p < n ? p : n - 1;
    list.selected.assign(list.lines.size(), 0);
    list.selected[static_cast<size_t>(q)] = 1;
    list.listIndex = q;
    ++list.changes;
}

std::string FixedName(std::string_view name, size_t cut, size_t width) {
    std::string s(name.substr(0, std::min(cut, name.size())));
    s.resize(width, ' ');
    return s;
}

std::string ValueText(ProgramState& st, int32_t address) {
    return HexText(ReadDumpByte(st.dump, address + 1), 2) +
           HexText(ReadDumpByte(st.dump, address), 2);
}

}  // namespace

void ClearSfrSets(ProgramState& st) {
    for (int s = 0; s < 8; ++s) {
        st.sfrSets[static_cast<size_t>(s)].title.clear();
        st.sfrSets[static_cast<size_t>(s)].count = 0;
    }
    st.sfrSetCount = 8;
    st.currentSfrSet = 0;
    ClearList(st.sfrList);
}

bool SfrInSet(const ProgramState& st, int set, int32_t index) {
    CheckBound(set, kSfrSetBound, "SFR set");
    return PlaceInSet(st.sfrSets[static_cast<size_t>(set)], index) >= 0;
}

void AddSfrToSet(ProgramState& st, int set, int32_t index) {
    SfrSet& s = SetAt(st, set);
    if (PlaceInSet(s, index) >= 0) return;
    const SfrRecord& r = RecordAt(st, index);
    CheckBound(s.count, kSetEntries - 1, "SFR set entry");
    if (set == st.currentSfrSet) AppendLine(st.sfrList, SfrListLine(st, index));
    s.entries[static_cast<size_t>(s.count)] = static_cast<int16_t>(index);
    s.names[static_cast<size_t>(s.count)] = r.name;
    ++s.count;
}

void AddSfrToCurrentSet(ProgramState& st, int32_t index) {
    AddSfrToSet(st, st.currentSfrSet, index);
}

void RemoveSfrFromCurrentSet(ProgramState& st, int32_t index) {
    SfrSet& s = SetAt(st, st.currentSfrSet);
    const int p = PlaceInSet(s, index);
    if (p < 0) return;
    SfrListBox& list = st.sfrList;
    if (p < static_cast<int>(list.lines.size())) RemoveLine(list, p);
    DeleteEntry(s, p);
    SelectAfterRemoval(list, p);
}

void RemoveSfrFromSet(ProgramState& st, int set, int32_t index) {
    SfrSet& s = SetAt(st, set);
    const int p = PlaceInSet(s, index);
    if (p < 0) return;
    SfrListBox& list = st.sfrList;
    // The line at that place goes from the list on show, whichever set was
    // named; a list without such a line is the bound of this operation.
    CheckBound(p, static_cast<long long>(list.lines.size()) - 1, "SFR list line");
    RemoveLine(list, p);
    DeleteEntry(s, p);
    if (index == st.currentSfrSet) SelectAfterRemoval(list, p);
}

void SwapSfrLines(ProgramState& st, int a, int b) {
    SfrListBox& list = st.sfrList;
    const long long last = static_cast<long long>(list.lines.size()) - 1;
    CheckBound(a, last, "SFR list line");
    CheckBound(b, last, "SFR list line");
    CheckBound(a, kSetEntries - 1, "SFR set entry");
    CheckBound(b, kSetEntries - 1, "SFR set entry");
    SfrSet& s = SetAt(st, st.currentSfrSet);
    std::swap(list.lines[static_cast<size_t>(a)], list.lines[static_cast<size_t>(b)]);
    std::swap(s.entries[static_cast<size_t>(a)], s.entries[static_cast<size_t>(b)]);
    std::swap(s.names[static_cast<size_t>(a)], s.names[static_cast<size_t>(b)]);
    ++list.changes;
}

void ViewSfrSet(ProgramState& st, int set) {
    if (set == st.currentSfrSet) return;
    const SfrSet& s = SetAt(st, set);
    ClearList(st.sfrList);
    st.currentSfrSet = static_cast<int16_t>(set);
    for (int j = 0; j < s.count && j < kSetEntries; ++j)
        AppendLine(st.sfrList, SfrListLine(st, s.entries[static_cast<size_t>(j)]));
    if (st.REFRESHSFR != 0) st.host->refreshSfrView();
}

void ReloadSfrSets(ProgramState& st) {
    for (int set = 0; set < st.sfrSetCount && set <= kSfrSetBound; ++set) {
        SfrSet& s = st.sfrSets[static_cast<size_t>(set)];
        int j = 0;
        while (j < s.count && j < kSetEntries) {
            const int32_t i = SfrIndexByName(st, s.names[static_cast<size_t>(j)]);
            if (i >= 0) {
                s.entries[static_cast<size_t>(j)] = static_cast<int16_t>(i);
                ++j;
                continue;
            }
            DeleteEntry(s, j);
            SfrListBox& list = st.sfrList;
            if (set == st.currentSfrSet && !list.lines.empty()) {
                // the lines behind move up one and the last line goes
                const int n = static_cast<int>(list.lines.size());
                RemoveLine(list, j < n ? j : n - 1);
            }
        }
    }
    if (st.REFRESHSFR != 0) st.host->refreshSfrView();
}

// ---- lines

std::string SfrListLine(ProgramState& st, int32_t index) {
    const SfrRecord& r = RecordAt(st, index);
    return FixedName(r.name, 22, 23) + HexText(r.address, 6) + " " + ValueText(st, r.address);
}

std::string SfrShowLine(ProgramState& st, int32_t index) {
    const SfrRecord& r = RecordAt(st, index);
    return FixedName(r.name, 19, 20) + HexText(r.address, 6) + " " + ValueText(st, r.address);
}

void RebuildSfrListLines(ProgramState& st) {
    SfrListBox& list = st.sfrList;
    const SfrSet& s = SetAt(st, st.currentSfrSet);
    for (size_t i = 0; i < list.lines.size(); ++i) {
        CheckBound(static_cast<long long>(i), kSetEntries - 1, "SFR set entry");
        const int32_t index = s.entries[i];
        if (index < 0) continue;
        list.lines[i] = SfrListLine(st, index);
    }
    ++list.changes;
}

std::string SfrListClipboardText(const ProgramState& st) {
    std::string text;
    const SfrListBox& list = st.sfrList;
    for (size_t i = 0; i < list.lines.size(); ++i)
        if (i < list.selected.size() && list.selected[i] != 0) text += CrLf() + list.lines[i];
    return text;
}

void SetSfrSetTitle(ProgramState& st, int set, std::string_view title) {
    SetAt(st, set).title = std::string(title);
    ++st.sfrList.changes;
}

std::string SfrTabCaption(const ProgramState& st, int set) {
    CheckBound(set, kSfrSetBound, "SFR set");
    const std::string& t = st.sfrSets[static_cast<size_t>(set)].title;
    return t.substr(0, std::min<size_t>(4, t.size()));
}

// ---- register set files

std::vector<std::string> RegisterSetNames(std::string_view text) {
    std::vector<std::string> names;
    while (!text.empty()) {
        const size_t end = text.find_first_of("\r\n");
        const std::string_view line = text.substr(0, end);
        if (line.size() >= 8 && UpperCase(line.substr(0, 8)) == "DISPLAY=")
            names.emplace_back(line.substr(8));
        if (end == std::string_view::npos) break;
        size_t next = end + 1;
        if (text[end] == '\r' && next < text.size() && text[next] == '\n') ++next;
        text.remove_prefix(next);
    }
    return names;
}

int LoadSfrRegisterSet(ProgramState& st, std::string_view path) {
    const std::string native = NativePath(path);
    std::ifstream f;
    if (CanOpenForReading(native)) f.open(native, std::ios::binary);
    if (!f.is_open()) {
        Text2Buffer(st, CrLf() + "*ERROR: File " + std::string(path) + " not found");
        return -1;
    }
    const std::string text((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
    for (const std::string& name : RegisterSetNames(text)) {
        const int32_t i = SfrIndexByName(st, name);
        if (i >= 0) AddSfrToCurrentSet(st, i);
    }
    return 0;
}

std::string RegisterSetText(const ProgramState& st) {
    std::string text;
    for (const std::string& line : st.sfrList.lines) {
        const std::string name = line.substr(0, line.find(' '));
        if (SfrIndexByName(st, name) >= 0) text += "DISPLAY=" + name + "\n";
    }
    return text + "\n";
}

int SaveSfrRegisterSet(ProgramState& st, std::string_view path) {
    const SafeWriteResult r = ReplaceFile(NativePath(path), RegisterSetText(st));
    if (!r.ok) {
        Text2Buffer(st, CrLf() + "*ERROR: Could not write " + std::string(path) + ": " + r.reason);
        return -1;
    }
    return 0;
}

}  // namespace vortelm
