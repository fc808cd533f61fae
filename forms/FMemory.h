#pragma once
// The memory unit form (FMemory) and its three small forms for a region, an
// activate register and a driver feature. FMemory edits a working copy of
// the unit; the table's unit takes it as a whole on OK.

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace vortelm {
struct ProgramState;
}

namespace vortelm::forms {

constexpr std::array<const char*, 14> kMemoryTypes{"RAM",    "IRAM",   "XRAM",  "DPRAM", "DSRAM",
                                                   "PSRAM",  "IROM",   "ROM",   "OTP",   "IEEPROM",
                                                   "EEPROM", "IFLASH", "FLASH", "XPER"};
constexpr std::array<const char*, 2> kDriverModes{"Vortelm", "Banhart"};
constexpr std::array<const char*, 8> kDriverFeatures{"ERASE",  "PROGRAM", "STATUS",    "LOCK",
                                                     "UNLOCK", "PROTECT", "UNPROTECT", "ERASEWL"};

class FMemory {
  public:
    FMemory(ProgramState& st, int unit) : st_(st), unit_(unit) {}

    // Takes the copy of the unit and shows it.
    void GetMemUnit();
    void RefreshAll();

    // Field checks: the message, or empty.
    [[nodiscard]] static std::string CheckBlank(std::string_view text);
    [[nodiscard]] static std::string CheckBurstSize(std::string_view text);
    [[nodiscard]] std::string CheckDriverPath(std::string_view text);

    // The small forms' OK: the message, or empty when the copy took it.
    [[nodiscard]] std::string AddRegion(std::string_view start, std::string_view length,
                                        std::string_view mapStart, std::string_view mapMask,
                                        std::string_view mapRegister);
    [[nodiscard]] std::string AddActivate(std::string_view reg, std::string_view mask);
    void AddFeature(std::string_view feature);
    void RemoveSection(int index);
    void RemoveActivate(int index);
    void RemoveFeature(int index);

    // OK: the fields go to the copy, the copy to the table.
    void BOk();

    std::string TName;
    std::string DType = "RAM";
    std::string TBlank;
    std::string TBurstsize;
    std::string TDriverPath;
    int DDriverMode = 0;
    std::vector<std::string> LActivate;
    std::vector<std::string> LSections;
    std::vector<std::string> LFeatures;

  private:
    // The fields go to the copy, so that a list redrawn from it keeps what
    // was typed before.
    void StoreFields();

    ProgramState& st_;
    int unit_;
};

}  // namespace vortelm::forms
