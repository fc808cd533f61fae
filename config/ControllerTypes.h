#pragma once
// Controller types ("mctypes.dat") and memory units (".MEM" files and the
// [Memory] section of a preference file), with the lookups over both tables.

#include <cstdint>
#include <string>
#include <string_view>

namespace vortelm {

struct MemoryUnit;
struct ProgramState;

// Fills the controller table from "mctypes.dat" (the count is the number of
// "[" lines read). A missing file logs "*ERROR: File ... not found" and
// leaves the table empty.
void ReadControllerTypes(ProgramState& st, std::string_view path);

// Replaces the whole memory unit table by the units of a .MEM file. A
// missing file logs the error and leaves the table alone.
void ReadMemoryDefinition(ProgramState& st, std::string_view path);

// "ALD4" 0, "ZT" 1, "ZT7" 2, every other text 0.
[[nodiscard]] int16_t ControllerFamilyCode(std::string_view family);

// Index of a controller type by name, without regard to case, or -1.
[[nodiscard]] int ControllerIndexByName(const ProgramState& st, std::string_view name);

// The default kernel of a controller: the K-Line one if kline is 1. Empty for
// an unknown controller.
[[nodiscard]] std::string DefaultKernelOfController(const ProgramState& st, std::string_view name,
                                                    int16_t kline);

// Where an address lies: unit, section and range, 0xFFFF in each if nowhere.
struct MemoryPosition {
    int32_t unit = 0xFFFF;
    int32_t section = 0xFFFF;
    int32_t range = 0xFFFF;
    [[nodiscard]] bool found() const { return unit != 0xFFFF; }
};
// Goes through all units, passing over a unit that has activate registers
// and is not activated; a mapped range is matched at its map address. The
// last match wins.
[[nodiscard]] MemoryPosition FindMemoryPosition(const ProgramState& st, int32_t address);

// Index of a memory unit by name, without regard to case, or -1.
[[nodiscard]] int MemoryUnitIndexByName(const ProgramState& st, std::string_view name);
// The first unit of type "IFLASH", or -1.
[[nodiscard]] int FirstFlashUnit(const ProgramState& st);
// How many units of type "IFLASH" there are among units 0 to index.
[[nodiscard]] int FlashRank(const ProgramState& st, int index);
// True if the unit's driver feature list holds the text exactly.
[[nodiscard]] bool UnitHasFeature(const ProgramState& st, int index, std::string_view feature);

namespace config {

// The line reader of memory units, shared by the .MEM reader and the
// [Memory] section of a preference file. The caller sets the unit count to
// -1 before the first line and calls finish() after the last one (or when a
// bound failure ends the read), which adds 1 to make it the number of units.
class MemoryUnitReader {
  public:
    enum class Form { MemFile, Preferences };
    MemoryUnitReader(ProgramState& st, Form form) : st_(st), form_(form) {}
    // One line, already upper-cased. Throws RunTimeError on an index past
    // its bound; the table is then valid up to the unit being read.
    void line(std::string text);
    void finish();

  private:
    void openUnit(std::string name);
    // Each returns true when the line was its key.
    bool opensUnit(const std::string& t);
    bool readUnitKey(MemoryUnit& u, const std::string& t) const;
    bool readSectionKey(MemoryUnit& u, const std::string& t);
    bool readDriverKey(MemoryUnit& u, const std::string& t) const;
    bool readStatusKey(MemoryUnit& u, const std::string& t) const;
    ProgramState& st_;
    Form form_;
    int32_t section_ = 0;  // indices carried over when a line leaves them out
    int32_t range_ = 0;
};

}  // namespace config
}  // namespace vortelm
