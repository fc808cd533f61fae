#pragma once
// The board models: one per family, each matching a controller of the
// delivered mctypes.dat. Addresses are 24-bit target addresses.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vortelm::sim {

enum class Family : uint8_t { Ald4 = 0, Zt = 1, Zt7 = 2 };

// Register behaviour flags.
enum RegFlag : uint8_t {
    kRegPlain = 0,
    kRegLockedByEinit = 1,  // writes after EINIT are ignored
    kRegReadOnly = 2,       // writes are ignored
    kRegHelperOnly = 4,     // only the register helper can change it
    kRegBaud = 8,           // a write changes the serial rate
};

struct RegisterDef {
    std::string name;
    uint32_t address = 0;
    uint16_t reset = 0;
    uint8_t flags = kRegPlain;
};

struct Area {
    uint32_t first = 0;
    uint32_t last = 0;
};

struct CondBits {
    uint32_t registerAddress = 0;
    uint16_t mask = 0;  // all these bits set
};

struct FlashWindow {  // a section seen at a second address
    uint32_t mapAddress = 0;
    uint32_t target = 0;
    uint32_t length = 0;
    CondBits when;
};

struct FlashUnitDef {
    std::string name;  // the unit's name in the .MEM file
    bool internal = true;
    uint32_t first = 0;
    uint32_t size = 0;
    uint8_t blank = 0xFF;
    std::vector<std::vector<Area>> sections;  // ranges of each section
    std::vector<CondBits> activation;         // all must hold for the unit to be seen
    std::vector<FlashWindow> windows;
};

struct BoardModel {
    std::string controller;  // e.g. ALD7RK_BB
    Family family = Family::Ald4;
    uint8_t idByte = 0;
    uint32_t clk = 20000000;
    std::vector<Area> ram;
    std::vector<Area> sfr;
    std::vector<RegisterDef> registers;
    std::vector<FlashUnitDef> flash;
};

[[nodiscard]] const std::vector<BoardModel>& BoardModels();
// By controller name without regard to case; null if unknown.
[[nodiscard]] const BoardModel* FindBoardModel(std::string_view controller);
[[nodiscard]] const RegisterDef* FindRegister(const BoardModel& m, std::string_view name);

}  // namespace vortelm::sim
