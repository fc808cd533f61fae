#pragma once
// Flash programming: finding, loading and starting a memory unit's driver,
// the register frame of a driver call, and the operations that run through
// a driver (program, intelligent program, erase, lock, unlock, protect,
// unprotect, status, the assembly buffer) with the two dump operations of
// the flash test work. Every operation reaches the target only by writing
// the driver buffer and calling the driver; each logs its own words and
// gives 0 or a negative code.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "core/ProgramState.h"
#include "link/Monitor.h"

namespace vortelm::target {
struct Target;
}

namespace vortelm::flash {

// ---- the call frame

// The eight words of a driver call, R8 to R15, as slots of the frame.
enum class Slot : std::size_t { R8 = 0, R9, R10, R11, R12, R13, R14, R15 };

// What a driver is asked to do: the value of R8. The two driver
// generations (driver mode 1 and the others) number some operations
// differently.
namespace op {
constexpr int32_t kInitialise = 0x00;  // mode 1 only
constexpr int32_t kProgramMode1 = 0x03;
constexpr int32_t kProgramMode0 = 0x00;
constexpr int32_t kEraseSectorMode1 = 0x02;
constexpr int32_t kEraseSectorMode0 = 0x01;
constexpr int32_t kReadStatusMode1 = 0x05;
constexpr int32_t kReadStatusMode0 = 0x06;
constexpr int32_t kEraseWordline = 0x88;  // mode 0 only
constexpr int32_t kLock = 0x10;
constexpr int32_t kUnlock = 0x11;
constexpr int32_t kProtect = 0x20;
constexpr int32_t kUnprotect = 0x21;
constexpr int32_t kWriteAssemblyBuffer = 0x00;  // with R15 = 1
}  // namespace op

// A frame with named slots over the words Cmd_Call sends and takes back.
struct Frame {
    link::CallFrame words;
    void set(Slot s, int32_t value) { words.r[static_cast<std::size_t>(s)] = value; }
    [[nodiscard]] int32_t get(Slot s) const { return words.r[static_cast<std::size_t>(s)]; }
};

// Value divided by 10000 hexadecimal, and value AND FFFF.
[[nodiscard]] constexpr int32_t High(int32_t v) {
    return v / 0x10000;
}
[[nodiscard]] constexpr int32_t Low(int32_t v) {
    return v & 0xFFFF;
}

// The unit's place among the units of type "IFLASH" before it, from 0.
[[nodiscard]] int IFlashIndex(const ProgramState& st, int unit);
// The first unit of type "IFLASH", or -1.
[[nodiscard]] int FirstIFlashUnit(const ProgramState& st);
// Start of the first range of the unit's first section, divided by 10000
// hexadecimal.
[[nodiscard]] int32_t BaseHigh(const ProgramState& st, int unit);

// The frames of the call-frame table, all other slots 0.
[[nodiscard]] Frame InitialiseFrame(const ProgramState& st, int unit);
[[nodiscard]] Frame ProgramBlockFrame(const ProgramState& st, int unit, int32_t address);
[[nodiscard]] Frame EraseSectorFrame(const ProgramState& st, int unit, int32_t sector);
[[nodiscard]] Frame ReadStatusFrame(const ProgramState& st, int unit, int32_t number);
[[nodiscard]] Frame EraseWordlineFrame(int32_t address);
// Lock and unlock (with the sector), protect and unprotect (sector unused).
[[nodiscard]] Frame PasswordFrame(const ProgramState& st, int unit, int32_t operation,
                                  int32_t sector);
[[nodiscard]] Frame WriteAssemblyBufferFrame(const ProgramState& st, int unit, int32_t count,
                                             int32_t address);

// ---- drivers

// Loads the unit's driver image, downloads it and starts it: 0, -1 when the
// image could not be read or downloaded, -2 when its initialisation failed.
// `operationName` prefixes the log words.
int LoadDriver(target::Target& t, std::string_view operationName, int unit);

// The driver file's name as the program opens it: a name without ":" is
// taken in the program's folder.
[[nodiscard]] std::string DriverFile(const ProgramState& st, int unit);

// ---- program and intelligent program

int Program(target::Target& t);
int IProgram(target::Target& t);

// ---- erase, lock, protection, status

int Erase(target::Target& t, int unit, int32_t sector);
// The length is the password's; afterwards it is 8.
int Lock(target::Target& t, int unit, int32_t sector, std::string_view password,
         int32_t& passwordLength);
int Unlock(target::Target& t, int unit, int32_t sector, std::string_view password,
           int32_t& passwordLength);
int Protect(target::Target& t, int unit, std::string_view password, int32_t& passwordLength);
int Unprotect(target::Target& t, int unit, std::string_view password, int32_t& passwordLength);
// `value` receives status word `statusNumber` of the unit.
int Status(target::Target& t, int unit, int32_t statusNumber, int32_t& value);

// ---- assembly buffer and dump operations

// Modes of WriteAsb.
namespace asb {
constexpr int32_t kSelection = 0;
constexpr int32_t kRandomBytes = 10;
constexpr int32_t kByte = 11;
constexpr int32_t kRandomWords = 20;
constexpr int32_t kWord = 21;
}  // namespace asb

int WriteAsb(target::Target& t, int32_t mode, int32_t value, int32_t count);
int DumpMemEcc(target::Target& t, int32_t address, int32_t dummyRead, int32_t clearStatus,
               int32_t step);
int DumpModify(ProgramState& st, int32_t xorMask, int32_t andMask, int32_t orMask, int32_t rotate,
               int32_t step);

}  // namespace vortelm::flash
