#include "forms/FMemory.h"

#include "core/Helpers.h"
#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "sfr/SfrTable.h"

namespace vortelm::forms {

namespace {

constexpr const char* kNoHexNumber = "No hexadezimal Number";

bool IsHex(std::string_view text) {
    return !text.empty() && HexValue(text) >= 0;
}

}  // namespace

void FMemory::GetMemUnit() {
    CheckBound(unit_, st_.memoryUnitCount - 1, "memory unit");
    st_.memoryUnitCopy = st_.memoryUnits[static_cast<size_t>(unit_)];
    RefreshAll();
}

void FMemory::RefreshAll() {
    const MemoryUnit& u = st_.memoryUnitCopy;
    TName = u.name;
    DType = u.type;
    TBlank = HexText(u.blank, 2);
    TBurstsize = HexText(u.burstSize, 4);
    TDriverPath = u.driverPath;
    DDriverMode = u.driverMode;
    LActivate.clear();
    for (int i = 0; i < u.activateCount; ++i)
        LActivate.push_back(u.activateRegisters[static_cast<size_t>(i)] + "=0x" +
                            HexText(u.activateMasks[static_cast<size_t>(i)], 4));
    LSections.clear();
    for (int s = 0; s < u.sectionCount; ++s) {
        const MemorySection& section = u.sections[static_cast<size_t>(s)];
        for (int r = 0; r < section.rangeCount; ++r) {
            const SectionRange& range = section.ranges[static_cast<size_t>(r)];
            LSections.push_back("Section " + std::to_string(s) + ":" +
                                HexText(range.startAddress, 6) + " - " +
                                HexText(range.startAddress + range.length - 1, 6));
        }
    }
    LFeatures.clear();
    for (int i = 0; i < u.featureCount; ++i)
        LFeatures.push_back(u.features[static_cast<size_t>(i)]);
}

std::string FMemory::CheckBlank(std::string_view text) {
    return text.size() == 2 && IsHex(text) ? "" : "No 2 digit hexadezimal value !";
}

std::string FMemory::CheckBurstSize(std::string_view text) {
    return IsHex(text) ? "" : "No hexadezimal value !";
}

std::string FMemory::CheckDriverPath(std::string_view text) {
    return !text.empty() && FileExists(st_, text, 0) ? "" : "File does not exist !";
}

std::string FMemory::AddRegion(std::string_view start, std::string_view length,
                               std::string_view mapStart, std::string_view mapMask,
                               std::string_view mapRegister) {
    for (std::string_view f : {start, length, mapStart, mapMask})
        if (!f.empty() && HexValue(f) < 0) return kNoHexNumber;
    if (start.empty() || length.empty()) return "Please insert at least start address and length";
    MemoryUnit& u = st_.memoryUnitCopy;
    CheckBound(u.sectionCount, static_cast<long long>(u.sections.size()) - 1, "memory section");
    MemorySection& section = u.sections[static_cast<size_t>(u.sectionCount++)];
    section = MemorySection{};
    section.rangeCount = 1;
    SectionRange& r = section.ranges[0];
    r.startAddress = HexValue(start);
    r.length = HexValue(length);
    if (!mapStart.empty()) {
        r.mappingDefined = kTrue;
        r.mapAddress = HexValue(mapStart);
        r.mapMask = mapMask.empty() ? 0 : HexValue(mapMask);
        r.mapRegister = std::string(mapRegister);
    }
    StoreFields();
    RefreshAll();
    return {};
}

std::string FMemory::AddActivate(std::string_view reg, std::string_view mask) {
    if (SfrIndexByName(st_, reg) < 0 && !IsHex(reg))
        return "No hexadezimal Number or valid SFR name";
    if (!IsHex(mask)) return kNoHexNumber;
    MemoryUnit& u = st_.memoryUnitCopy;
    CheckBound(u.activateCount, static_cast<long long>(u.activateRegisters.size()) - 1,
               "activate register");
    u.activateRegisters[static_cast<size_t>(u.activateCount)] = std::string(reg);
    u.activateMasks[static_cast<size_t>(u.activateCount)] = HexValue(mask);
    ++u.activateCount;
    StoreFields();
    RefreshAll();
    return {};
}

void FMemory::AddFeature(std::string_view feature) {
    MemoryUnit& u = st_.memoryUnitCopy;
    CheckBound(u.featureCount, static_cast<long long>(u.features.size()) - 1, "driver feature");
    u.features[static_cast<size_t>(u.featureCount++)] = std::string(feature);
    StoreFields();
    RefreshAll();
}

void FMemory::RemoveSection(int index) {
    MemoryUnit& u = st_.memoryUnitCopy;
    if (index < 0 || index >= u.sectionCount) return;
    for (int s = index; s + 1 < u.sectionCount; ++s)
        u.sections[static_cast<size_t>(s)] = u.sections[static_cast<size_t>(s + 1)];
    --u.sectionCount;
    StoreFields();
    RefreshAll();
}

void FMemory::RemoveActivate(int index) {
    MemoryUnit& u = st_.memoryUnitCopy;
    if (index < 0 || index >= u.activateCount) return;
    for (int i = index; i + 1 < u.activateCount; ++i) {
        u.activateRegisters[static_cast<size_t>(i)] =
            u.activateRegisters[static_cast<size_t>(i + 1)];
        u.activateMasks[static_cast<size_t>(i)] = u.activateMasks[static_cast<size_t>(i + 1)];
    }
    --u.activateCount;
    StoreFields();
    RefreshAll();
}

void FMemory::RemoveFeature(int index) {
    MemoryUnit& u = st_.memoryUnitCopy;
    if (index < 0 || index >= u.featureCount) return;
    for (int i = index; i + 1 < u.featureCount; ++i)
        u.features[static_cast<size_t>(i)] = u.features[static_cast<size_t>(i + 1)];
    --u.featureCount;
    StoreFields();
    RefreshAll();
}

void FMemory::StoreFields() {
    MemoryUnit& u = st_.memoryUnitCopy;
    u.name = TName;
    u.type = DType;
    if (CheckBlank(TBlank).empty()) u.blank = static_cast<uint8_t>(HexValue(TBlank));
    if (CheckBurstSize(TBurstsize).empty())
        u.burstSize = static_cast<int16_t>(HexValue(TBurstsize));
    u.driverPath = TDriverPath;
    u.driverMode = static_cast<int16_t>(DDriverMode);
}

void FMemory::BOk() {
    StoreFields();
    const MemoryUnit& u = st_.memoryUnitCopy;
    CheckBound(unit_, st_.memoryUnitCount - 1, "memory unit");
    st_.memoryUnits[static_cast<size_t>(unit_)] = u;
}

}  // namespace vortelm::forms
