#pragma once
// Record types of the tables that ProgramState owns. They are plain data:
// the operations that fill and read them live with their subsystem
// (config/, sfr/, image/, shell/).

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vortelm {

// 16-bit booleans hold -1 for true and 0 for false.
constexpr int16_t kTrue = -1;
constexpr int16_t kFalse = 0;
[[nodiscard]] constexpr int16_t Flag(bool b) {
    return b ? kTrue : kFalse;
}

// ---- connection ------------------------------------------------------------

// The connection state, a 16-bit value as the status bar and the scripts see
// it. It stays comparable with its numbers; a state is set by its name.
enum Connection : int16_t {
    kNotConnected = 0,           // no monitor
    kConnectedAndReady = 1,      // the monitor waits for commands
    kUserProgramRunning = 2,     // a user program runs
    kDebugging = 3,              // debugger: the program runs
    kStepMode = 4,               // a step runs
    kDebuggingToBreakpoint = 5,  // debugger: run to a breakpoint
    kStepModeToBreakpoint = 6,   // a step that returns to a breakpoint
    kDriverRunning = 7,          // a driver or routine called on the target runs
};

// ---- controller types and memory units -----------------------------------

struct ControllerType {
    std::string name;
    std::string family;
    std::string registerDefinitionPath;  // REGDEF=
    std::string memoryDefinitionPath;    // MEMDEF=
    std::string defaultKernel;           // DEFAULT_KERNEL=
    std::string defaultKernelKline;      // DEFAULT_KERNEL_KLINE=
    std::array<int16_t, 256> id{};       // ID=
};
constexpr int kControllerTypeBound = 64;

struct SectionRange {
    int32_t startAddress = 0;
    int32_t length = 0;
    int16_t mappingDefined = kFalse;
    int32_t mapAddress = 0;
    std::string mapRegister;
    int32_t mapMask = 0;
    int16_t mappedNow = kFalse;
};

struct MemorySection {
    int16_t rangeCount = 0;
    std::array<SectionRange, 5> ranges{};
};

struct StatusBit {
    std::string text;
    int16_t value = 0;  // 0 marks an unused entry
};

struct StatusRegister {
    std::string name;
    std::array<StatusBit, 17> bits{};
};

struct MemoryUnit {
    std::string name;
    std::string type;
    uint8_t blank = 0;
    int16_t burstSize = 128;
    int32_t eraseSize = 128;
    int16_t activateCount = 0;
    std::array<std::string, 6> activateRegisters{};
    std::array<int32_t, 6> activateMasks{};
    int16_t sectionCount = 0;
    std::array<MemorySection, 129> sections{};
    std::string driverPath;
    int16_t driverMode = 0;
    int16_t featureCount = 0;
    std::array<std::string, 21> features{};
    int32_t driverBufferAddress = 0xFC80;
    int16_t statusRegisterCount = 0;
    std::array<StatusRegister, 21> statusRegisters{};
    int16_t activated = kFalse;
    int16_t driverLoaded = kFalse;
    int32_t driverEntry = 0;
};
constexpr int kMemoryUnitBound = 32;

// ---- kernels ---------------------------------------------------------------

struct KernelFeature {
    std::string name;
    int16_t unused = 0;
    int16_t flag = kFalse;
};

struct Kernel {
    std::string name;         // KERNELNAME
    std::string loaderPath;   // LOADERPATH
    std::string monitorPath;  // VORTELMPATH
    std::array<KernelFeature, 64> features{};
    int16_t featureCount = 0;
    int32_t startAddress = 0;       // STARTADDRESS
    int32_t endAddress = 0;         // ENDADDRESS
    int32_t patchStartAddress = 0;  // PATCHSTARTADDRESS
    int16_t reserved = 0;
    int16_t loaderAck = kTrue;  // LOADERACK
};
constexpr int kKernelBound = 15;
constexpr int kFeatureNameBound = 63;

// ---- initialisation registers ---------------------------------------------

struct InitRegister {
    std::string name;
    std::string address;  // decimal text
    int32_t value = 0;
};
constexpr int kInitRegisterBound = 31;

// ---- special function registers --------------------------------------------

struct SfrRecord {
    std::string name;
    int32_t address = 0;
    int16_t shortAddress = 0;
    std::array<std::string, 16> bitName{};
    std::array<uint8_t, 16> bitWidth{};
    std::array<uint8_t, 16> reserved1{};
    std::array<int16_t, 16> reserved2{};
    uint8_t reserved3 = 0;
    int16_t extended = kFalse;
};
constexpr int kSfrBound = 8192;

struct SfrSet {
    std::string title;
    std::array<int16_t, 256> entries{};
    std::array<std::string, 256> names{};
    int16_t count = 0;
};
constexpr int kSfrSetBound = 8;

// The SFR list of the main window (ISfr): its lines, which of them are
// selected, and the current line (-1 for none). Line i shows entry i of the
// current set; a removal by the shell from a set not on show takes a line
// away all the same, so list and set may differ until that set is viewed
// again. changes counts every change, so a front end redraws only then.
struct SfrListBox {
    std::vector<std::string> lines;
    std::vector<uint8_t> selected;
    int32_t listIndex = -1;
    uint64_t changes = 0;
};

// ---- files -------------------------------------------------------------------

struct FileMemo {
    std::string drive;   // one character
    std::string folder;  // without trailing separator
    std::string name;
    int16_t type = 0;
};

struct UserScript {
    std::string path;
    std::string name;
    int16_t flag = kFalse;
};

// ---- dump memory and selections (operations in image/) ---------------------

// One segment of the image: 64 KiB of values and their status bytes, both
// placed by image/ (in the space it reserves for the image, or on the heap
// where that space cannot be had). The status bytes stay unplaced while all
// of them have one value, uniformStatus: a bulk load of whole segments then
// touches the values only.
struct DumpSegment {
    uint8_t* data = nullptr;
    uint8_t* status = nullptr;
    uint8_t uniformStatus = 0;
    // Only where the reserved space could not be had.
    std::unique_ptr<uint8_t[]> heapData;
    std::unique_ptr<uint8_t[]> heapStatus;
};

// The local image of the target's address space: 257 segments of 64 KiB,
// allocated on first touch, never freed before the end of the process.
struct DumpMemory {
    static constexpr int kSegments = 257;
    // The reserved space the segments are placed in (image/Dump.cpp); it is
    // declared before the segments so that it is given back after them.
    std::shared_ptr<void> space;
    std::array<std::unique_ptr<DumpSegment>, kSegments> segments{};
};

struct SelectionList {
    static constexpr int kBound = 1000;  // entries 0 to 1000
    int16_t count = 0;
    std::array<int32_t, kBound + 1> start{};
    std::array<int32_t, kBound + 1> end{};
    // the copy of SaveSelections / RestoreSelections
    int16_t savedCount = 0;
    std::array<int32_t, kBound + 1> savedStart{};
    std::array<int32_t, kBound + 1> savedEnd{};
};

// ---- protocol bytes ------------------------------------------------------------

struct MessageCodes {
    uint8_t C_WRITE_BLOCK = 0x84;
    uint8_t C_READ_BLOCK = 0x85;
    uint8_t C_EINIT = 0x31;
    uint8_t C_TEST_COMM = 0x93;
    uint8_t C_SWRESET = 0x32;
    uint8_t C_GO = 0x41;
    uint8_t C_CALL = 0x9F;
    uint8_t C_GETCHECKSUM = 0x33;
    uint8_t C_WRITE_WORD = 0x82;
    uint8_t C_ASC1_CON = 0xCC;
    // commands without a preference key
    uint8_t C_WRITE_SEQ = 0xCE;
    uint8_t C_READ_WORD = 0xCD;
    uint8_t C_CF = 0xCF;  // held, read by nothing
    uint8_t C_D0 = 0xD0;  // held, read by nothing
    uint8_t C_SET_PROTECTION = 0xD1;
    uint8_t A_ACK1 = 0xAA;
    uint8_t A_ACK2 = 0xEA;
    uint8_t A_LOADER_STARTED = 0x01;
    uint8_t A_LOADER_ACK2 = 0x02;  // held, read by nothing
    uint8_t A_APPLICATION_STARTED = 0x03;
    uint8_t A_AUTOBAUD = 0x04;  // a running core took the init byte
};

}  // namespace vortelm
