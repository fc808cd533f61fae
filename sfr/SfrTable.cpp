#include "sfr/SfrTable.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <deque>
#include <fstream>
#include <iterator>
#include <sstream>
#include <unordered_map>

#include "core/Helpers.h"
#include "core/Host.h"
#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "core/SafeFile.h"
#include "core/Text.h"

namespace vortelm {

namespace {

constexpr size_t kNameField = 32;

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

// Text from the 0-based index on, empty past the end.
std::string_view From(std::string_view text, size_t index) {
    return index < text.size() ? text.substr(index) : std::string_view();
}

// Steps to the next token: the text from NextToken(text, true) + 1 on.
void StepToNextToken(std::string_view& text) {
    text = From(text, static_cast<size_t>(NextToken(text, true)));
}

std::string_view FirstToken(std::string_view text) {
    size_t i = 0;
    while (i < text.size() && !IsBlank(text[i])) ++i;
    return text.substr(0, i);
}

int32_t ValOf(std::string_view text) {
    size_t i = 0;
    while (i < text.size() && IsBlank(text[i])) ++i;
    int64_t v = 0;
    while (i < text.size() && text[i] >= '0' && text[i] <= '9') {
        v = std::min<int64_t>(v * 10 + (text[i] - '0'), INT32_MAX);
        ++i;
    }
    return static_cast<int32_t>(v);
}

// The loader: the table and, while it is unsorted, the first index of each
// name (what the linear lookup finds).
//
// The working text of a line is a view: into the line as read until a
// keyword has been cut off, and from then on into the line's upper-cased
// copy, since the reader upper-cases the text when it cuts the keyword.
class Loader {
  public:
    explicit Loader(ProgramState& st) : st_(st) {}

    void line(std::string_view raw) {
        if (auto p = raw.find(';'); p != std::string_view::npos) raw = raw.substr(0, p);
        if (auto p = raw.find(','); p != std::string_view::npos) raw = raw.substr(0, p);
        original_ = raw;
        upper_.assign(raw);
        for (char& c : upper_)
            if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
        text_ = raw;
        cut_ = false;
        // The tests are made on the upper-cased text; a branch that runs
        // changes the text that the later tests see.
        if (has("SFR") && !has("BFLD")) registerLine();
        if (has("BFLD")) fieldLine();
        if (has("BITFLD"))
            bitLine("BITFLD", true);
        else if (has("BIT") && text_.find('.') != std::string_view::npos)
            bitLine("BIT", false);
    }

    [[nodiscard]] int32_t indexOf(std::string_view upperName) const {
        auto it = first_.find(std::string(upperName));
        return it == first_.end() ? -1 : it->second;
    }

    void append(std::string_view name, int32_t address) {
        CheckBound(st_.sfrCount, kSfrBound, "SFR table");
        SfrRecord& r = st_.sfrTable[static_cast<size_t>(st_.sfrCount)];
        r.name.assign(name);
        r.address = address;
        r.shortAddress = static_cast<int16_t>((address / 2) & 255);
        r.extended = address < 0xFE00 ? kTrue : kFalse;
        for (auto& b : r.bitName) b.clear();
        r.bitWidth.fill(0);
        r.reserved1.fill(0);
        r.reserved2.fill(0);
        r.reserved3 = 0;
        first_.try_emplace(r.name, st_.sfrCount);
        ++st_.sfrCount;
    }

  private:
    // The working text, upper-cased.
    [[nodiscard]] std::string_view upperText() const {
        if (cut_) return text_;
        return std::string_view(upper_).substr(static_cast<size_t>(text_.data() - original_.data()),
                                               text_.size());
    }

    [[nodiscard]] bool has(std::string_view key) const {
        return upperText().find(key) != std::string_view::npos;
    }

    // The text behind the keyword, upper-cased. The keyword's position is
    // found case-sensitively; a keyword not in capitals has the position 0,
    // which starts inside it, and the step to the next token then passes
    // over what is left of it.
    void cutKeyword(std::string_view key) {
        const auto p = text_.find(key);
        const size_t pos = p == std::string_view::npos ? 0 : p + 1;
        text_ = From(upperText(), pos + key.size() - 1);
        cut_ = true;
    }

    void registerLine() {
        cutKeyword("SFR");
        StepToNextToken(text_);
        int32_t k = NextToken(text_, false);
        // The token without its first two characters, taken to be "0x".
        const std::string_view hex =
            k - 2 > 0 ? From(text_, 2).substr(0, static_cast<size_t>(k - 2)) : std::string_view();
        const int32_t address = HexValue(hex);
        StepToNextToken(text_);
        k = NextToken(text_, false);
        // A name followed by a blank loses its last character.
        append(text_.substr(0, static_cast<size_t>(std::max(k - 1, 0))), address);
    }

    void fieldLine() {
        cutKeyword("BFLD");
        StepToNextToken(text_);
        const auto dot = text_.find('.');
        if (dot == std::string_view::npos) return;
        const int32_t index = indexOf(text_.substr(0, dot));
        if (index < 0) return;
        text_ = text_.substr(dot + 1);
        int32_t first = 0;
        int32_t second = 0;
        if (const auto dash = text_.find('-'); dash == std::string_view::npos) {
            first = second = ValOf(FirstToken(text_));
        } else {
            first = ValOf(text_.substr(0, dash));
            text_ = text_.substr(dash + 1);
            second = ValOf(FirstToken(text_));
        }
        StepToNextToken(text_);
        const int32_t high = std::max(first, second);
        const int32_t low = std::min(first, second);
        CheckBound(low, 15, "SFR bit");
        // The width is kept in a byte: a wider field is a bound of the load,
        // worked out in 64 bits so that no bound of the line overflows.
        const int64_t width = int64_t{high} - int64_t{low} + 1;
        CheckBound(width, 255, "SFR bit field width");
        SfrRecord& r = st_.sfrTable[static_cast<size_t>(index)];
        r.bitWidth[static_cast<size_t>(low)] = static_cast<uint8_t>(width);
        const std::string_view name = FirstToken(text_);
        r.bitName[static_cast<size_t>(low)].assign(name.empty() ? text_ : name);
    }

    void bitLine(std::string_view key, bool unknownFails) {
        cutKeyword(key);
        StepToNextToken(text_);
        const auto dot = text_.find('.');
        const int32_t index = indexOf(dot == std::string_view::npos ? text_ : text_.substr(0, dot));
        if (index < 0) {
            if (unknownFails) CheckBound(index, st_.sfrCount - 1, "SFR register");
            return;
        }
        text_ = dot == std::string_view::npos ? std::string_view() : text_.substr(dot + 1);
        const int32_t bit = ValOf(FirstToken(text_));
        StepToNextToken(text_);
        CheckBound(bit, 15, "SFR bit");
        SfrRecord& r = st_.sfrTable[static_cast<size_t>(index)];
        r.bitWidth[static_cast<size_t>(bit)] = 1;
        r.bitName[static_cast<size_t>(bit)].assign(text_);
    }

    ProgramState& st_;
    std::unordered_map<std::string, int32_t> first_;
    std::string_view original_;
    std::string upper_;
    std::string_view text_;
    bool cut_ = false;
};

std::optional<std::string> ReadWholeFile(const ProgramState& st, std::string_view name) {
    std::ifstream f(NativePath(ResolveInProgramFolder(st, name)), std::ios::binary);
    if (!f.is_open()) return std::nullopt;
    std::string s;
    f.seekg(0, std::ios::end);
    const auto size = f.tellg();
    f.seekg(0);
    if (size > 0) {
        s.resize(static_cast<size_t>(size));
        f.read(s.data(), size);
        s.resize(static_cast<size_t>(f.gcount()));
    }
    return s;
}

void PutName(std::string& out, const std::string& name) {
    const size_t n = std::min(name.size(), kNameField);
    out.append(name, 0, n);
    out.append(kNameField - n, ' ');
}

template <typename T>
void PutLe(std::string& out, T value) {
    auto v = static_cast<std::make_unsigned_t<T>>(value);
    for (size_t i = 0; i < sizeof(T); ++i) out += static_cast<char>((v >> (8 * i)) & 0xFF);
}

std::string GetName(const uint8_t* p) {
    // Cut before the first blank (and before a NUL of a damaged file).
    size_t n = 0;
    while (n < kNameField && p[n] != ' ' && p[n] != 0) ++n;
    return std::string(reinterpret_cast<const char*>(p), n);
}

template <typename T>
T GetLe(const uint8_t* p) {
    std::make_unsigned_t<T> v = 0;
    for (size_t i = 0; i < sizeof(T); ++i)
        v |= static_cast<std::make_unsigned_t<T>>(p[i]) << (8 * i);
    return static_cast<T>(v);
}

}  // namespace

int32_t NextToken(std::string_view text, bool skipBlanks) {
    const auto len = static_cast<int32_t>(text.size());
    int32_t p = 1;
    while (p <= len && !IsBlank(text[p - 1])) ++p;
    if (skipBlanks)
        while (p <= len && IsBlank(text[p - 1])) ++p;
    return p > len ? len + 1 : p - 1;
}

std::string SfrCachePath(std::string_view path) {
    const auto dot = path.find('.');
    if (dot == std::string_view::npos) return "sb";
    return std::string(path.substr(0, dot + 1)) + "sb";
}

std::string SfrCachePath(std::string_view path, std::string_view programFolder) {
    if (!programFolder.empty() && path.size() > programFolder.size() &&
        path.substr(0, programFolder.size()) == programFolder &&
        (path[programFolder.size()] == '\\' || path[programFolder.size()] == '/')) {
        const std::string_view rest = path.substr(programFolder.size());
        if (rest.find('.') == std::string_view::npos)
            return "sb";  // the bare name, in the program folder
        return std::string(programFolder) + SfrCachePath(rest);
    }
    return SfrCachePath(path);
}

namespace {

// The rank of each record's name among the distinct names (0 for the
// smallest); groups is set to the number of distinct names.
std::vector<size_t> NameRanks(std::span<const SfrRecord> records, size_t n, size_t& groups) {
    std::vector<std::pair<std::string_view, size_t>> order(n);
    for (size_t i = 0; i < n; ++i) order[i] = {records[i].name, i};
    std::stable_sort(order.begin(), order.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<size_t> rank(n);
    groups = 0;
    for (size_t k = 0; k < n; ++k) {
        if (k > 0 && order[k].first != order[k - 1].first) ++groups;
        rank[order[k].second] = groups;
    }
    ++groups;
    return rank;
}

// Where each record ends: the stable order of names with each group of equal
// names turned by the number of smaller names inserted after each member
// joined (counted with a Fenwick tree over the ranks).
std::vector<size_t> FinalPlaces(const std::vector<size_t>& rank, size_t groups, size_t n) {
    std::vector<int64_t> tree(groups + 1, 0);  // counts of ranks inserted so far (from index 1)
    auto add = [&](size_t r) {
        for (size_t x = r + 1; x <= groups; x += x & (~x + 1)) ++tree[x];
    };
    auto smaller = [&](size_t r) {  // inserted ranks below r
        int64_t s = 0;
        for (size_t x = r; x > 0; x -= x & (~x + 1)) s += tree[x];
        return s;
    };
    // Groups of one name need no turning: only groups of two or more keep
    // their members (most names are unique).
    std::vector<size_t> groupSize(groups, 0), groupStart(groups, 0);
    for (size_t i = 0; i < n; ++i) ++groupSize[rank[i]];
    for (size_t g = 1; g < groups; ++g) groupStart[g] = groupStart[g - 1] + groupSize[g - 1];
    std::vector<size_t> slot(groups, SIZE_MAX);  // index into members for groups of two or more
    std::vector<std::deque<size_t>> members;
    for (size_t g = 0; g < groups; ++g)
        if (groupSize[g] > 1) {
            slot[g] = members.size();
            members.emplace_back();
        }
    std::vector<int64_t> seen(groups, 0);
    auto turn = [&](size_t g, int64_t times) {
        auto& d = members[slot[g]];
        if (d.size() < 2) return;
        for (int64_t r = times % static_cast<int64_t>(d.size()); r > 0; --r) {
            d.push_back(d.front());
            d.pop_front();
        }
    };
    std::vector<size_t> target(n);
    for (size_t i = 0; i < n; ++i) {
        const size_t g = rank[i];
        if (slot[g] != SIZE_MAX) {
            const int64_t c = smaller(g);
            turn(g, c - seen[g]);
            members[slot[g]].push_back(i);
            seen[g] = c;
        } else {
            target[i] = groupStart[g];
        }
        if (i >= 1) add(g);
    }
    // Where each member of a group of two or more goes.
    for (size_t g = 0; g < groups; ++g) {
        if (slot[g] == SIZE_MAX) continue;
        turn(g, smaller(g) - seen[g]);
        size_t next = groupStart[g];
        for (size_t i : members[slot[g]]) target[i] = next++;
    }
    return target;
}

// Moves the records along the cycles of the permutation, so that each record
// moves once.
void MoveToPlaces(std::span<SfrRecord> records, std::vector<size_t>& target, size_t n) {
    for (size_t start = 0; start < n; ++start) {
        if (target[start] == start) continue;
        SfrRecord carried = std::move(records[start]);
        size_t at = start;
        while (true) {
            const size_t to = target[at];
            target[at] = at;
            if (to == start) {
                records[start] = std::move(carried);
                break;
            }
            std::swap(carried, records[to]);
            at = to;
        }
    }
}

}  // namespace

void SortSfrRecords(std::span<SfrRecord> records, size_t count) {
    const size_t n = std::min(count, records.size());
    if (n < 2) return;
    // The first pass of the exchange sort (i = 0) carries the first largest
    // name to the front: each strictly larger name met trades places with it.
    for (size_t j = 1; j < n; ++j)
        if (records[0].name < records[j].name) std::swap(records[0], records[j]);
    // From there on each pass inserts record i behind the names not larger
    // than it, and every group of equal larger names turns by one: its first
    // member goes to the group's end. So the order is the stable order of
    // names with each group of equal names turned by the number of smaller
    // names inserted after each member joined.
    size_t groups = 0;
    const std::vector<size_t> rank = NameRanks(records, n, groups);
    std::vector<size_t> target = FinalPlaces(rank, groups, n);
    MoveToPlaces(records, target, n);
}

int ReadSfrFile(ProgramState& st, std::string_view path) {
    const std::string cache = SfrCachePath(path, st.programFolder);
    st.sfrCount = 0;
    auto text = ReadWholeFile(st, path);
    if (!text) {
        Text2Buffer(st, CrLf() + "*ERROR: File " + std::string(path) + " not found");
        return -1;
    }
    try {
        if (FileDate(st, cache) > FileDate(st, path)) {
            ReadSfrCache(st, cache);
            return 0;
        }
        Loader loader(st);
        std::string_view all(*text);
        while (!all.empty()) {
            // The line feed, then a carriage return before it: find_first_of
            // would look the set up once per character.
            const char* base = all.data();
            const void* nl = std::memchr(base, '\n', all.size());
            size_t end = nl ? static_cast<size_t>(static_cast<const char*>(nl) - base) : all.size();
            if (const void* cr = std::memchr(base, '\r', end))
                end = static_cast<size_t>(static_cast<const char*>(cr) - base);
            if (end == all.size()) end = std::string_view::npos;
            loader.line(all.substr(0, end));
            if (end == std::string_view::npos) break;
            if (all[end] == '\r' && end + 1 < all.size() && all[end + 1] == '\n') ++end;
            all.remove_prefix(end + 1);
        }
        if (loader.indexOf("ZEROS") < 0) loader.append("ZEROS", 0xFF1C);
        if (loader.indexOf("ONES") < 0) loader.append("ONES", 0xFF1E);
    } catch (const RunTimeError& e) {
        Text2Buffer(st, CrLf() + "*ERROR: " + e.what() + " in " + std::string(path));
        return -2;
    }
    const auto count = static_cast<size_t>(std::clamp<int32_t>(st.sfrCount, 0, kSfrBound + 1));
    SortSfrRecords(st.sfrTable.first(count), count);
    (void)WriteSfrCache(st, cache);
    return 0;
}

bool WriteSfrCache(const ProgramState& st, std::string_view cachePath) {
    // The whole cache replaces the old one in one step: a reader never finds
    // half a cache with a newer time than its .SFR file. It is not synced to
    // the disk: it is made again from the .SFR file whenever it is missing
    // or older, and the syncs of its 5 MB for a large table would double the
    // wall time of every cold load. The usual file systems write a file's
    // data before a rename over an older file takes effect; where one does
    // not, a power loss right after a load can leave a short cache, and
    // deleting the .sb file (or touching the .SFR file) makes it again.
    std::string out;
    const int32_t n = std::clamp<int32_t>(st.sfrCount, 0, kSfrBound + 1);
    out.reserve(static_cast<size_t>(n) * kSfrCacheRecordSize);
    for (int32_t i = 0; i < n; ++i) {
        const SfrRecord& r = st.sfrTable[static_cast<size_t>(i)];
        const size_t begin = out.size();
        PutName(out, r.name);
        PutLe<int32_t>(out, r.address);
        PutLe<int16_t>(out, r.shortAddress);
        for (const auto& b : r.bitName) PutName(out, b);
        for (uint8_t w : r.bitWidth) out += static_cast<char>(w);
        for (uint8_t w : r.reserved1) out += static_cast<char>(w);
        for (int16_t w : r.reserved2) PutLe<int16_t>(out, w);
        out += static_cast<char>(r.reserved3);
        PutLe<int16_t>(out, r.extended);
        out.append(kSfrCacheRecordSize - (out.size() - begin), '\0');
    }
    return ReplaceFileUnsynced(NativePath(ResolveInProgramFolder(st, cachePath)), out).ok;
}

void ReadSfrCache(ProgramState& st, std::string_view cachePath) {
    st.sfrCount = 0;
    auto bytes = ReadWholeFile(st, cachePath);
    if (!bytes) return;
    ReadSfrCacheBytes(st,
                      std::span(reinterpret_cast<const uint8_t*>(bytes->data()), bytes->size()));
}

void ReadSfrCacheBytes(ProgramState& st, std::span<const uint8_t> bytes) {
    st.sfrCount = 0;
    for (size_t at = 0; at + kSfrCacheRecordSize <= bytes.size(); at += kSfrCacheRecordSize) {
        CheckBound(st.sfrCount, kSfrBound, "SFR table");
        const uint8_t* p = bytes.data() + at;
        SfrRecord& r = st.sfrTable[static_cast<size_t>(st.sfrCount)];
        r.name = GetName(p);
        p += kNameField;
        r.address = GetLe<int32_t>(p);
        p += 4;
        r.shortAddress = GetLe<int16_t>(p);
        p += 2;
        for (auto& b : r.bitName) {
            b = GetName(p);
            p += kNameField;
        }
        for (auto& w : r.bitWidth) w = *p++;
        for (auto& w : r.reserved1) w = *p++;
        for (auto& w : r.reserved2) {
            w = GetLe<int16_t>(p);
            p += 2;
        }
        r.reserved3 = *p++;
        r.extended = GetLe<int16_t>(p);
        ++st.sfrCount;
    }
}

namespace {

// The records a lookup searches: the count, kept inside the bound and the
// table as it is.
int32_t SearchedCount(const ProgramState& st) {
    return std::clamp<int32_t>(st.sfrCount, 0, kSfrBound + 1);
}

}  // namespace

int32_t SfrIndexByName(const ProgramState& st, std::string_view name) {
    const int32_t count = SearchedCount(st);
    // The length is compared first, here: most names differ in it.
    for (int32_t i = 0; i < count; ++i) {
        const SfrRecord& r = st.sfrTable[static_cast<size_t>(i)];
        if (r.name.size() == name.size() && EqualUpper(r.name, name)) return i;
    }
    return -1;
}

int32_t SfrAddressByName(const ProgramState& st, std::string_view name) {
    const int32_t i = SfrIndexByName(st, name);
    return i < 0 ? -1 : st.sfrTable[static_cast<size_t>(i)].address;
}

int32_t SfrIndexByAddress(const ProgramState& st, int32_t address) {
    for (int32_t i = 0; i < SearchedCount(st); ++i)
        if (st.sfrTable[static_cast<size_t>(i)].address == address) return i;
    return -1;
}

int32_t SfrIndexByShort(const ProgramState& st, int32_t shortAddress, int16_t extended) {
    for (int32_t i = 0; i < SearchedCount(st); ++i) {
        const SfrRecord& r = st.sfrTable[static_cast<size_t>(i)];
        if (r.extended == extended && r.shortAddress == shortAddress) return i;
    }
    return -1;
}

}  // namespace vortelm
