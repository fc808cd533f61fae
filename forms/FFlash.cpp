#include "forms/FFlash.h"

#include <algorithm>

#include "config/ControllerTypes.h"
#include "config/Kernels.h"
#include "core/Helpers.h"
#include "core/Text.h"
#include "flash/Flash.h"
#include "target/Target.h"

namespace vortelm::forms {

namespace {

struct ModeText {
    const char* mode;
    const char* caption;
    bool sections;
    bool password;
};

constexpr std::array<ModeText, 6> kModes{{
    {"ERASE", "Erase Sector", true, false},
    {"PROTECT", "Protect Flash", false, true},
    {"UNPROTECT", "Unprotect Flash", false, true},
    {"LOCK", "Lock Flash - Enable Write Protection", true, true},
    {"UNLOCK", "Unlock - Disable Write Protection", true, true},
    {"STATUS", "Read Status", true, false},
}};

const ModeText* FindMode(std::string_view mode) {
    for (const ModeText& m : kModes)
        if (mode == m.mode) return &m;
    return nullptr;
}

int UnitCount(const ProgramState& st) {
    return std::clamp<int>(st.memoryUnitCount, 0, kMemoryUnitBound + 1);
}

}  // namespace

bool FlashButtonVisible(const ProgramState& st, std::string_view feature) {
    if (st.ConnectionState == 0) return false;
    if (HasFeature(st, feature, -1)) return true;
    for (int i = 0; i < UnitCount(st); ++i)
        if (UnitHasFeature(st, i, feature)) return true;
    return false;
}

bool FlashButtonConnected(ProgramState& st) {
    if (st.ConnectionState == 1) return true;
    Text2Buffer(st, "\r\n*ERROR: Not connected to Monitor");
    return false;
}

int BProgram_Click(target::Target& t) {
    if (!FlashButtonConnected(t.st)) return -100;
    return flash::IProgram(t);
}

void FFlash::setfeature(std::string_view feature1) {
    mode_ = std::string(feature1);
    unitNames_.clear();
    unitIndex_.clear();
    for (int i = 0; i < UnitCount(st_); ++i) {
        if (!UnitHasFeature(st_, i, mode_)) continue;
        unitNames_.push_back(st_.memoryUnits[static_cast<size_t>(i)].name);
        unitIndex_.push_back(i);
    }
    unitLine_ = unitNames_.empty() ? -1 : 0;
    closed_ = false;
    bitFields_.clear();
    RefreshSectionList();
}

std::string FFlash::caption() const {
    const ModeText* m = FindMode(mode_);
    return m ? m->caption : "";
}

bool FFlash::sectionsVisible() const {
    const ModeText* m = FindMode(mode_);
    return m && m->sections;
}

bool FFlash::passwordVisible() const {
    const ModeText* m = FindMode(mode_);
    return m && m->password;
}

int FFlash::unit() const {
    if (unitLine_ < 0 || unitLine_ >= static_cast<int>(unitIndex_.size())) return -1;
    return unitIndex_[static_cast<size_t>(unitLine_)];
}

void FFlash::DMemUnit_Click(int line) {
    if (line < 0 || line >= static_cast<int>(unitNames_.size())) return;
    unitLine_ = line;
    bitFields_.clear();
    RefreshSectionList();
}

void FFlash::RefreshSectionList() {
    sectionLines_.clear();
    statusValues_.clear();
    const int u = unit();
    if (u >= 0) {
        const MemoryUnit& mu = st_.memoryUnits[static_cast<size_t>(u)];
        if (mode_ == "STATUS") {
            const int n = std::clamp<int>(mu.statusRegisterCount, 0, 21);
            for (int i = 0; i < n; ++i) {
                int32_t value = 0;
                (void)flash::Status(t_, u, i, value);
                statusValues_.push_back(value);
                sectionLines_.push_back("Statusword " + std::to_string(i) + ": " +
                                        mu.statusRegisters[static_cast<size_t>(i)].name + "=" +
                                        HexText(value, 4));
            }
        } else {
            const int n = std::clamp<int>(mu.sectionCount, 0, 129);
            for (int i = 0; i < n; ++i) {
                const MemorySection& s = mu.sections[static_cast<size_t>(i)];
                std::string line = "Section " + std::to_string(i) + ": ";
                const int ranges = std::clamp<int>(s.rangeCount, 0, 5);
                for (int r = 0; r < ranges; ++r) {
                    const SectionRange& range = s.ranges[static_cast<size_t>(r)];
                    if (r > 0) line += ",";
                    line += HexText(range.startAddress, 6) + " - " +
                            HexText(range.startAddress + range.length - 1, 6);
                }
                sectionLines_.push_back(line);
            }
        }
    }
    selected_.assign(sectionLines_.size(), false);
}

void FFlash::setSectionSelected(int line, bool selected) {
    if (line >= 0 && line < static_cast<int>(selected_.size()))
        selected_[static_cast<size_t>(line)] = selected;
}

void FFlash::ISections_Click(int line) {
    bitFields_.clear();
    const int u = unit();
    if (mode_ != "STATUS" || u < 0 || line < 0 || line >= static_cast<int>(statusValues_.size()))
        return;
    const StatusRegister& reg =
        st_.memoryUnits[static_cast<size_t>(u)].statusRegisters[static_cast<size_t>(line)];
    const int32_t value = statusValues_[static_cast<size_t>(line)];
    // A field starts at its bit and is as wide as its value says.
    for (int bit = 0; bit < 16; ++bit) {
        const StatusBit& b = reg.bits[static_cast<size_t>(bit)];
        if (b.value <= 0) continue;
        const int width = std::min<int>(b.value, 16 - bit);
        const int32_t field = (value >> bit) & ((1 << width) - 1);
        bitFields_.push_back(b.text + "=" + HexText(field, (width + 3) / 4));
    }
}

void FFlash::BOk_Click() {
    const int u = unit();
    if (u >= 0) {
        const auto length = [this] { return static_cast<int32_t>(password.size()); };
        if (mode_ == "PROTECT" || mode_ == "UNPROTECT") {
            int32_t n = length();
            (void)(mode_ == "PROTECT" ? flash::Protect(t_, u, password, n)
                                      : flash::Unprotect(t_, u, password, n));
        } else if (mode_ == "ERASE" || mode_ == "LOCK" || mode_ == "UNLOCK") {
            for (size_t i = 0; i < selected_.size(); ++i) {
                if (!selected_[i]) continue;
                const auto sector = static_cast<int32_t>(i);
                int32_t n = length();
                if (mode_ == "ERASE")
                    (void)flash::Erase(t_, u, sector);
                else if (mode_ == "LOCK")
                    (void)flash::Lock(t_, u, sector, password, n);
                else
                    (void)flash::Unlock(t_, u, sector, password, n);
            }
        }
    }
    closed_ = true;
}

}  // namespace vortelm::forms
