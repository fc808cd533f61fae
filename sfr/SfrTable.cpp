#include "sfr/SfrTable.h"

#include <algorithm>
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
#include "core/Text.h"

namespace vortelm {

namespace {

constexpr size_t kNameField = 32;

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

// Text from the 0-based index on, empty past the end.
std::string From(const std::string& text, size_t index) {
    return index < text.size() ? text.substr(index) : std::string();
}

// Steps to the next token: the text from NextToken(text, true) + 1 on.
void StepToNextToken(std::string& text) {
    text = From(text, static_cast<size_t>(NextToken(text, true)));
}

std::string FirstToken(const std::string& text) {
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

// 1-based position of key in text found case-sensitively, 0 if absent.
size_t Position(const std::string& text, std::string_view key) {
    const auto p = text.find(key);
    return p == std::string::npos ? 0 : p + 1;
}

bool SameUpper(std::string_view stored, std::string_view wanted) {
    if (stored.size() != wanted.size()) return false;
    for (size_t i = 0; i < stored.size(); ++i)
        if (std::toupper(static_cast<unsigned char>(stored[i])) !=
            std::toupper(static_cast<unsigned char>(wanted[i])))
            return false;
    return true;
}

// The loader: the table and, while it is unsorted, the first index of each
// name (what the linear lookup finds).
class Loader {
public:
    explicit Loader(ProgramState& st) : st_(st) {}

    void line(std::string_view raw) {
        if (auto p = raw.find(';'); p != std::string_view::npos) raw = raw.substr(0, p);
        if (auto p = raw.find(','); p != std::string_view::npos) raw = raw.substr(0, p);
        std::string text(raw);
        if (Contains(text, "SFR") && !Contains(text, "BFLD")) registerLine(text);
        if (Contains(text, "BFLD")) fieldLine(text);
        if (Contains(text, "BITFLD")) bitLine(text, "BITFLD", true);
        else if (Contains(text, "BIT") && text.find('.') != std::string::npos)
            bitLine(text, "BIT", false);
    }

    [[nodiscard]] int32_t indexOf(const std::string& upperName) const {
        auto it = first_.find(upperName);
        return it == first_.end() ? -1 : it->second;
    }

    void append(std::string name, int32_t address) {
        CheckBound(st_.sfrCount, kSfrBound, "SFR table");
        SfrRecord& r = st_.sfrTable[st_.sfrCount];
        r.name = std::move(name);
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
    static bool Contains(const std::string& text, std::string_view key) {
        // The test is made on the upper-cased text.
        auto it = std::search(text.begin(), text.end(), key.begin(), key.end(), [](char a, char b) {
            return std::toupper(static_cast<unsigned char>(a)) == b;
        });
        return it != text.end();
    }

    // The text behind the keyword, upper-cased. A keyword not in capitals has
    // the position 0, which starts inside it; the step to the next token then
    // passes over what is left of it.
    static void CutKeyword(std::string& text, std::string_view key) {
        const size_t pos = Position(text, key);
        text = UpperCase(From(text, pos + key.size() - 1));
    }

    void registerLine(std::string& text) {
        CutKeyword(text, "SFR");
        StepToNextToken(text);
        int32_t k = NextToken(text, false);
        // The token without its first two characters, taken to be "0x".
        const std::string hex = k - 2 > 0 ? From(text, 2).substr(0, static_cast<size_t>(k - 2)) : "";
        const int32_t address = HexValue(hex);
        StepToNextToken(text);
        k = NextToken(text, false);
        // A name followed by a blank loses its last character.
        std::string name = text.substr(0, static_cast<size_t>(std::max(k - 1, 0)));
        append(std::move(name), address);
    }

    void fieldLine(std::string& text) {
        CutKeyword(text, "BFLD");
        StepToNextToken(text);
        const auto dot = text.find('.');
        if (dot == std::string::npos) return;
        const int32_t index = indexOf(text.substr(0, dot));
        if (index < 0) return;
        text = text.substr(dot + 1);
        int32_t first = 0;
        int32_t second = 0;
        if (const auto dash = text.find('-'); dash == std::string::npos) {
            first = second = ValOf(FirstToken(text));
        } else {
            first = ValOf(text.substr(0, dash));
            text = text.substr(dash + 1);
            second = ValOf(FirstToken(text));
        }
        StepToNextToken(text);
        const int32_t high = std::max(first, second);
        const int32_t low = std::min(first, second);
        CheckBound(low, 15, "SFR bit");
        SfrRecord& r = st_.sfrTable[index];
        r.bitWidth[low] = static_cast<uint8_t>(high - low + 1);
        std::string name = FirstToken(text);
        r.bitName[low] = name.empty() ? text : name;
    }

    void bitLine(std::string& text, std::string_view key, bool unknownFails) {
        CutKeyword(text, key);
        StepToNextToken(text);
        const auto dot = text.find('.');
        const int32_t index = indexOf(dot == std::string::npos ? text : text.substr(0, dot));
        if (index < 0) {
            if (unknownFails) CheckBound(index, st_.sfrCount - 1, "SFR register");
            return;
        }
        text = dot == std::string::npos ? std::string() : text.substr(dot + 1);
        const int32_t bit = ValOf(FirstToken(text));
        StepToNextToken(text);
        CheckBound(bit, 15, "SFR bit");
        SfrRecord& r = st_.sfrTable[index];
        r.bitWidth[bit] = 1;
        r.bitName[bit] = text;
    }

    ProgramState& st_;
    std::unordered_map<std::string, int32_t> first_;
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
    for (size_t i = 0; i < sizeof(T); ++i) v |= static_cast<std::make_unsigned_t<T>>(p[i]) << (8 * i);
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

void SortSfrRecords(std::vector<SfrRecord>& records, size_t count) {
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
    std::vector<size_t> order(n);
    for (size_t i = 0; i < n; ++i) order[i] = i;
    std::stable_sort(order.begin(), order.end(),
                     [&](size_t a, size_t b) { return records[a].name < records[b].name; });
    std::vector<size_t> rank(n);
    size_t groups = 0;
    for (size_t k = 0; k < n; ++k) {
        if (k > 0 && records[order[k]].name != records[order[k - 1]].name) ++groups;
        rank[order[k]] = groups;
    }
    ++groups;
    std::vector<int64_t> tree(groups + 1, 0);  // counts of ranks inserted so far (from index 1)
    auto add = [&](size_t r) {
        for (size_t x = r + 1; x <= groups; x += x & (~x + 1)) ++tree[x];
    };
    auto smaller = [&](size_t r) {  // inserted ranks below r
        int64_t s = 0;
        for (size_t x = r; x > 0; x -= x & (~x + 1)) s += tree[x];
        return s;
    };
    std::vector<std::deque<size_t>> members(groups);
    std::vector<int64_t> seen(groups, 0);
    auto turn = [&](size_t g, int64_t times) {
        auto& d = members[g];
        if (d.size() < 2) return;
        for (int64_t r = times % static_cast<int64_t>(d.size()); r > 0; --r) {
            d.push_back(d.front());
            d.pop_front();
        }
    };
    for (size_t i = 0; i < n; ++i) {
        const size_t g = rank[i];
        const int64_t c = smaller(g);
        turn(g, c - seen[g]);
        members[g].push_back(i);
        seen[g] = c;
        if (i >= 1) add(g);
    }
    std::vector<SfrRecord> sorted;
    sorted.reserve(n);
    for (size_t g = 0; g < groups; ++g) {
        turn(g, smaller(g) - seen[g]);
        for (size_t i : members[g]) sorted.push_back(std::move(records[i]));
    }
    std::move(sorted.begin(), sorted.end(), records.begin());
}

int ReadSfrFile(ProgramState& st, std::string_view path) {
    const std::string cache = SfrCachePath(path);
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
            auto end = all.find_first_of("\r\n");
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
    SortSfrRecords(st.sfrTable, static_cast<size_t>(st.sfrCount));
    (void)WriteSfrCache(st, cache);
    return 0;
}

bool WriteSfrCache(const ProgramState& st, std::string_view cachePath) {
    std::string out;
    out.reserve(static_cast<size_t>(std::max<int16_t>(st.sfrCount, 0)) * kSfrCacheRecordSize);
    for (int32_t i = 0; i < st.sfrCount && i <= kSfrBound; ++i) {
        const SfrRecord& r = st.sfrTable[static_cast<size_t>(i)];
        const size_t start = out.size();
        PutName(out, r.name);
        PutLe<int32_t>(out, r.address);
        PutLe<int16_t>(out, r.shortAddress);
        for (const auto& b : r.bitName) PutName(out, b);
        for (uint8_t w : r.bitWidth) out += static_cast<char>(w);
        for (uint8_t w : r.reserved1) out += static_cast<char>(w);
        for (int16_t w : r.reserved2) PutLe<int16_t>(out, w);
        out += static_cast<char>(r.reserved3);
        PutLe<int16_t>(out, r.extended);
        out.append(kSfrCacheRecordSize - (out.size() - start), '\0');
    }
    std::ofstream f(NativePath(ResolveInProgramFolder(st, cachePath)), std::ios::binary | std::ios::trunc);
    if (!f.is_open()) return false;
    f.write(out.data(), static_cast<std::streamsize>(out.size()));
    return static_cast<bool>(f);
}

void ReadSfrCache(ProgramState& st, std::string_view cachePath) {
    st.sfrCount = 0;
    auto bytes = ReadWholeFile(st, cachePath);
    if (!bytes) return;
    ReadSfrCacheBytes(st, std::span(reinterpret_cast<const uint8_t*>(bytes->data()), bytes->size()));
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

int32_t SfrIndexByName(const ProgramState& st, std::string_view name) {
    for (int32_t i = 0; i < st.sfrCount && i <= kSfrBound; ++i)
        if (SameUpper(st.sfrTable[static_cast<size_t>(i)].name, name)) return i;
    return -1;
}

int32_t SfrAddressByName(const ProgramState& st, std::string_view name) {
    const int32_t i = SfrIndexByName(st, name);
    return i < 0 ? -1 : st.sfrTable[static_cast<size_t>(i)].address;
}

int32_t SfrIndexByAddress(const ProgramState& st, int32_t address) {
    for (int32_t i = 0; i < st.sfrCount && i <= kSfrBound; ++i)
        if (st.sfrTable[static_cast<size_t>(i)].address == address) return i;
    return -1;
}

int32_t SfrIndexByShort(const ProgramState& st, int32_t shortAddress, int16_t extended) {
    for (int32_t i = 0; i < st.sfrCount && i <= kSfrBound; ++i) {
        const SfrRecord& r = st.sfrTable[static_cast<size_t>(i)];
        if (r.extended == extended && r.shortAddress == shortAddress) return i;
    }
    return -1;
}

}  // namespace vortelm
