#pragma once
// The target configuration form: controller type, clock, the memory units'
// sections with their activated and mapped marks, twelve init register rows,
// two generic rows and EINIT. Every change of the target configuration by
// hand goes through here and the unit and kernel forms it opens.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vortelm {
struct ProgramState;
}
namespace vortelm::target {
struct Target;
}

namespace vortelm::forms {

constexpr int kInitRows = 12;
constexpr int kGenericRows = 2;

struct InitRow {
    bool OReg = false;
    std::string TReg;
    std::string TRegValue;
};

struct GenericRow {
    bool CGEN = false;
    std::string TGENADDR;
    std::string TGENDATA;
};

// Where a line of the memory lists points: unit, section and range.
struct MemoryLine {
    int unit = -1;
    int section = -1;
    int range = -1;
};

// The messages of the fields.
constexpr const char* kNoValidHexDigit = "No valid hexadecimal digit !";
constexpr const char* kNoHexDigit = "No hexadecimal digit !";
constexpr const char* kNoValidDecimal = "No valid decimal Number";

// Appends an init register: an address below 1 asks for the register's
// address by name; the record is kept only for a GENERIC name or an
// address of at least 1.
void AddInitRegister(ProgramState& st, std::string_view name, int32_t address, int32_t value);

// After OK: a new controller type or clock closes the port (as a disconnect
// does), so that the next connect opens it for the new type. A core started
// for the old type is no longer the program's partner, and the virtual board
// is made for the type the port is opened with.
void DisconnectAfterControllerChange(target::Target& t, std::string_view oldType, int32_t oldClock);

class FConfigure {
  public:
    explicit FConfigure(ProgramState& st) : st_(st) {}

    void clear_config();
    void initialize();
    void set_sfr();
    void get_preferences();
    void RefreshInitRegs();
    void set_preferences();
    void RefreshMemoryList();
    void SetDefaultInitRegisters();
    void AddDefaultInitRegister(std::string_view name);

    // A click on DMCType while the form is open: the three questions.
    void DMCType_Click(std::string_view type);
    // OK: stores, reads the controller's registers, refreshes.
    void BOk();

    // The field checks on focus loss or change: the message, or empty.
    [[nodiscard]] static std::string CheckRegisterValue(std::string_view text);
    [[nodiscard]] static std::string CheckGenericValue(std::string_view text);
    [[nodiscard]] static std::string CheckClock(std::string_view text);

    // The memory lists' buttons. Add and Edit give the unit FMemory opens.
    [[nodiscard]] int BMemoryAdd();
    [[nodiscard]] int BMemoryEdit(int line) const;
    void BMemoryRemove(int line);
    void IMemoryActivated_Click(int line);
    void IMemoryMapped_Click(int line);
    [[nodiscard]] MemoryLine lineAt(int line) const;

    // The controls.
    std::vector<std::string> DMCTypeList;
    std::string DMCType;
    std::string TClk;
    std::vector<std::string> sfrNames;  // each TReg list
    std::array<InitRow, kInitRows> rows{};
    std::array<GenericRow, kGenericRows> generic{};
    bool CEINIT = false;
    std::vector<std::string> IMemoryList;
    std::vector<std::string> IMemoryActivated;
    std::vector<std::string> IMemoryMapped;

  private:
    ProgramState& st_;
    int nextDefaultRow_ = 0;
};

}  // namespace vortelm::forms
