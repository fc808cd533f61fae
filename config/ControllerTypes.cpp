#include "config/ControllerTypes.h"

#include <optional>

#include "config/ConfigText.h"
#include "core/Helpers.h"
#include "core/ProgramState.h"
#include "core/RunTimeError.h"

namespace vortelm {

namespace {

bool StartsWith(std::string_view text, std::string_view key) {
    return text.substr(0, key.size()) == key;
}

// The text behind the first "=", or empty.
std::string ValueOf(std::string_view line) {
    const auto eq = line.find('=');
    if (eq == std::string_view::npos) return {};
    return std::string(line.substr(eq + 1));
}

// A hexadecimal value behind "=": the text is cut at the letter X, so that a
// "0X" prefix goes. -1 if it is not hexadecimal.
int32_t HexBehindEquals(std::string_view line) {
    std::string v = ValueOf(line);
    const auto x = v.find('X');
    if (x != std::string::npos) v.erase(0, x + 1);
    return HexValue(v);
}

}  // namespace

// ---- controller types --------------------------------------------------------

void ReadControllerTypes(ProgramState& st, std::string_view path) {
    auto lines = config::ReadLines(st, path);
    if (!lines) {
        config::ReportMissingFile(st, path);
        return;
    }
    for (const std::string& raw : *lines) {
        const std::string line = UpperCase(config::RemoveSpaces(raw));
        if (StartsWith(line, "[")) {
            CheckBound(st.controllerTypeCount, kControllerTypeBound, "controller type");
            ControllerType& c = st.controllerTypes[st.controllerTypeCount];
            c = ControllerType{};
            const auto close = line.find(']');
            c.name = line.substr(1, close == std::string::npos ? std::string::npos : close - 1);
            ++st.controllerTypeCount;
        }
        // Keys before the first controller have no record to go to.
        if (st.controllerTypeCount == 0) continue;
        ControllerType& c = st.controllerTypes[st.controllerTypeCount - 1];
        if (StartsWith(line, "FAMILY=")) c.family = line.substr(7);
        if (StartsWith(line, "DEFAULT_KERNEL=")) c.defaultKernel = line.substr(15);
        if (StartsWith(line, "DEFAULT_KERNEL_KLINE=")) c.defaultKernelKline = line.substr(21);
        for (auto [key, field] : {std::pair{"MEMDEF=", &c.memoryDefinitionPath},
                                  std::pair{"REGDEF=", &c.registerDefinitionPath}}) {
            if (!StartsWith(line, key)) continue;
            std::string v = line.substr(7);
            if (line.find(':') == std::string::npos) v = st.programFolder + "\\" + v;
            *field = v;
        }
        if (StartsWith(line, "ID=")) {
            // Comma-separated values, each cut at its "X"; a value without one
            // goes to HexValue as it stands ("ID=" and all for the first).
            size_t start = 0;
            int k = 0;
            while (true) {
                auto comma = line.find(',', start);
                std::string item = line.substr(
                    start, comma == std::string::npos ? std::string::npos : comma - start);
                const auto x = item.find('X');
                if (x != std::string::npos) item.erase(0, x + 1);
                CheckBound(k, 255, "identification value");
                c.id[k] = static_cast<int16_t>(HexValue(item));
                ++k;
                if (comma == std::string::npos) break;
                start = comma + 1;
            }
        }
    }
}

int16_t ControllerFamilyCode(std::string_view family) {
    if (family == "ALD4") return 0;
    if (family == "ZT") return 1;
    if (family == "ZT7") return 2;
    return 0;
}

int ControllerIndexByName(const ProgramState& st, std::string_view name) {
    for (int i = 0; i < st.controllerTypeCount && i <= kControllerTypeBound; ++i)
        if (EqualUpper(st.controllerTypes[i].name, name)) return i;
    return -1;
}

std::string DefaultKernelOfController(const ProgramState& st, std::string_view name,
                                      int16_t kline) {
    const int i = ControllerIndexByName(st, name);
    if (i < 0) return {};
    return kline == 1 ? st.controllerTypes[i].defaultKernelKline
                      : st.controllerTypes[i].defaultKernel;
}

// ---- memory units -------------------------------------------------------------

namespace config {

namespace {

bool Has(const std::string& t, std::string_view key) {
    return t.find(key) != std::string::npos;
}

// The number in parentheses right behind the key, if there is one.
std::optional<int32_t> IndexAfter(const std::string& t, std::string_view key) {
    const auto p = t.find(key);
    const auto q = p + key.size();
    if (q < t.size() && t[q] == '(') return Val(t.substr(q + 1));
    return std::nullopt;
}

}  // namespace

void MemoryUnitReader::openUnit(std::string name) {
    CheckBound(st_.memoryUnitCount + 1, kMemoryUnitBound, "memory unit");
    ++st_.memoryUnitCount;
    MemoryUnit& u = st_.memoryUnits[st_.memoryUnitCount];
    // Sections from 21 on are not reset; the section count hides them.
    auto keep = std::move(u.sections);
    u = MemoryUnit{};
    for (size_t s = 21; s < keep.size(); ++s) u.sections[s] = std::move(keep[s]);
    u.name = std::move(name);
}

void MemoryUnitReader::line(std::string t) {
    if (opensUnit(t)) return;
    // Lines before the first unit have no record to go to.
    if (st_.memoryUnitCount < 0) return;
    MemoryUnit& u = st_.memoryUnits[st_.memoryUnitCount];
    if (readUnitKey(u, t) || readSectionKey(u, t) || readDriverKey(u, t)) return;
    (void)readStatusKey(u, t);
}

// A unit's first line: "[NAME]" in a .MEM file, NAME= in a preference file.
bool MemoryUnitReader::opensUnit(const std::string& t) {
    if (form_ == Form::MemFile) {
        if (const auto open = t.find('['); open != std::string::npos) {
            const auto close = t.find(']');
            std::string name;
            if (close == std::string::npos)
                name = t.substr(open + 1);
            else if (close > open)
                name = t.substr(open + 1, close - open - 1);
            openUnit(std::move(name));
            return true;
        }
    } else if (const auto p = t.find("NAME="); p != std::string::npos) {
        openUnit(t.substr(p + 5));
        return true;
    }
    return false;
}

// TYPE=, ACTIVATED, ACTIVATEREGISTER, ACTIVATEMASK, BLANK, BURSTSIZE, ERASESIZE.
bool MemoryUnitReader::readUnitKey(MemoryUnit& u, const std::string& t) const {
    if (Has(t, "TYPE=")) {
        u.type = t.substr(t.find("TYPE=") + 5);
        return true;
    }
    if (form_ == Form::Preferences && Has(t, "ACTIVATED")) {
        u.activated = kTrue;
        return true;
    }
    for (const bool mask : {false, true}) {
        const char* key = mask ? "ACTIVATEMASK" : "ACTIVATEREGISTER";
        if (!Has(t, key)) continue;
        const int32_t i = IndexAfter(t, key).value_or(0);
        CheckBound(i, 5, "activate register");
        if (mask)
            u.activateMasks[i] = HexBehindEquals(t);
        else
            u.activateRegisters[i] = ValueOf(t);
        if (i >= u.activateCount) u.activateCount = static_cast<int16_t>(i + 1);
        return true;
    }
    if (Has(t, "BLANK")) {
        u.blank = static_cast<uint8_t>(HexBehindEquals(t));
        return true;
    }
    if (Has(t, "BURSTSIZE")) {
        u.burstSize = static_cast<int16_t>(HexBehindEquals(t));
        return true;
    }
    if (Has(t, "ERASESIZE")) {
        u.eraseSize = HexBehindEquals(t);
        return true;
    }
    return false;
}

// The keys of a section's ranges; a line that leaves out the section or range
// index keeps the one before.
bool MemoryUnitReader::readSectionKey(MemoryUnit& u, const std::string& t) {
    const bool prefs = form_ == Form::Preferences;
    for (const char* key :
         {"STARTADDRESS", "LENGTH", "MAPPED", "MAPADDRESS", "MAPMASK", "MAPREGISTER"}) {
        const std::string_view k = key;
        if (k == "MAPPED" && !prefs) continue;  // not a key of a .MEM file
        if (!Has(t, k)) continue;
        const auto p = t.find(k);
        const auto eq = t.find('=');
        if (auto before = ParenthesisedText(std::string_view(t).substr(0, p)))
            section_ = Val(*before);
        const auto open = p + k.size();
        if (open < t.size() && t[open] == '(' && (eq == std::string::npos || open < eq))
            range_ = Val(std::string_view(t).substr(open + 1));
        CheckBound(section_, 128, "memory section");
        CheckBound(range_, 4, "section range");
        MemorySection& s = u.sections[section_];
        SectionRange& r = s.ranges[range_];
        if (k == "STARTADDRESS")
            r.startAddress = HexBehindEquals(t);
        else if (k == "LENGTH")
            r.length = HexBehindEquals(t);
        else if (k == "MAPPED")
            r.mappedNow = kTrue;
        else if (k == "MAPADDRESS")
            r.mapAddress = HexBehindEquals(t), r.mappingDefined = kTrue;
        else if (k == "MAPMASK")
            r.mapMask = HexBehindEquals(t), r.mappingDefined = kTrue;
        else
            r.mapRegister = ValueOf(t), r.mappingDefined = kTrue;
        if (section_ >= u.sectionCount) u.sectionCount = static_cast<int16_t>(section_ + 1);
        if (range_ >= s.rangeCount) s.rangeCount = static_cast<int16_t>(range_ + 1);
        return true;
    }
    return false;
}

// DRIVER.PATH, DRIVER.BUFFERADDRESS, DRIVER.MODE, DRIVER.FEATURES.
bool MemoryUnitReader::readDriverKey(MemoryUnit& u, const std::string& t) const {
    if (Has(t, "DRIVER.PATH")) {
        u.driverPath = form_ == Form::Preferences ? UnquotePath(ValueOf(t)) : ValueOf(t);
        return true;
    }
    if (Has(t, "DRIVER.BUFFERADDRESS")) {
        u.driverBufferAddress = HexBehindEquals(t);
        return true;
    }
    if (Has(t, "DRIVER.MODE")) {
        // Read as hexadecimal, whatever wrote it.
        u.driverMode = static_cast<int16_t>(HexValue(ValueOf(t)));
        return true;
    }
    if (Has(t, "DRIVER.FEATURES")) {
        u.featureCount = 0;
        const std::string v = ValueOf(t);
        if (v.empty()) return true;
        size_t start = 0;
        while (true) {
            const auto comma = v.find(',', start);
            CheckBound(u.featureCount, 20, "driver feature");
            u.features[u.featureCount++] =
                v.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
            if (comma == std::string::npos) break;
            start = comma + 1;
        }
        return true;
    }
    return false;
}

// STATUS(i)= and STATUS(i).BIT(j)=.
bool MemoryUnitReader::readStatusKey(MemoryUnit& u, const std::string& t) const {
    if (Has(t, "STATUS")) {
        const int32_t i = IndexAfter(t, "STATUS").value_or(0);
        CheckBound(i, 20, "status register");
        StatusRegister& reg = u.statusRegisters[i];
        const auto bit = t.find("BIT", t.find("STATUS") + 6);
        if (bit != std::string::npos) {
            int32_t j = 0;
            if (bit + 3 < t.size() && t[bit + 3] == '(')
                j = Val(std::string_view(t).substr(bit + 4));
            CheckBound(j, 16, "status bit");
            std::string v = ValueOf(t);
            int16_t n = 1;
            if (const auto comma = v.find(','); comma != std::string::npos) {
                n = static_cast<int16_t>(Val(std::string_view(v).substr(comma + 1)));
                v.erase(comma);
            }
            reg.bits[j] = StatusBit{v, n};
        } else {
            reg.name = ValueOf(t);
            if (i >= u.statusRegisterCount) u.statusRegisterCount = static_cast<int16_t>(i + 1);
        }
        return true;
    }
    return false;
}

void MemoryUnitReader::finish() {
    ++st_.memoryUnitCount;
}

}  // namespace config

void ReadMemoryDefinition(ProgramState& st, std::string_view path) {
    auto lines = config::ReadLines(st, path);
    if (!lines) {
        config::ReportMissingFile(st, path);
        return;
    }
    st.memoryUnitCount = -1;
    config::MemoryUnitReader reader(st, config::MemoryUnitReader::Form::MemFile);
    try {
        for (const std::string& l : *lines) reader.line(UpperCase(l));
    } catch (...) {
        reader.finish();
        throw;
    }
    reader.finish();
}

MemoryPosition FindMemoryPosition(const ProgramState& st, int32_t address) {
    MemoryPosition pos;
    for (int u = 0; u < st.memoryUnitCount && u <= kMemoryUnitBound; ++u) {
        const MemoryUnit& unit = st.memoryUnits[u];
        if (unit.activated != kTrue && unit.activateCount > 0) continue;
        for (int s = 0; s < unit.sectionCount && s <= 128; ++s) {
            const MemorySection& sec = unit.sections[s];
            for (int r = 0; r < sec.rangeCount && r <= 4; ++r) {
                const SectionRange& range = sec.ranges[r];
                const int64_t from =
                    range.mappedNow == kTrue ? range.mapAddress : range.startAddress;
                if (address >= from && address < from + int64_t(range.length)) pos = {u, s, r};
            }
        }
    }
    return pos;
}

int MemoryUnitIndexByName(const ProgramState& st, std::string_view name) {
    for (int i = 0; i < st.memoryUnitCount && i <= kMemoryUnitBound; ++i)
        if (EqualUpper(st.memoryUnits[i].name, name)) return i;
    return -1;
}

int FirstFlashUnit(const ProgramState& st) {
    for (int i = 0; i < st.memoryUnitCount && i <= kMemoryUnitBound; ++i)
        if (st.memoryUnits[i].type == "IFLASH") return i;
    return -1;
}

int FlashRank(const ProgramState& st, int index) {
    CheckBound(index, kMemoryUnitBound, "memory unit");
    int n = 0;
    for (int i = 0; i <= index; ++i)
        if (st.memoryUnits[i].type == "IFLASH") ++n;
    return n;
}

bool UnitHasFeature(const ProgramState& st, int index, std::string_view feature) {
    CheckBound(index, kMemoryUnitBound, "memory unit");
    const MemoryUnit& u = st.memoryUnits[index];
    for (int i = 0; i < u.featureCount && i <= 20; ++i)
        if (u.features[i] == feature) return true;
    return false;
}

}  // namespace vortelm
