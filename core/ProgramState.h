#pragma once
// The one state record of the program. The program owns exactly one and every
// operation gets it by reference; a test builds a fresh one. Start values are
// those that SetDefaultPreferences assigns; the constructor gives the same so
// that a fresh state is usable before any preference file is read.

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "core/InstructionTable.h"
#include "core/TerminalText.h"
#include "core/Types.h"

namespace vortelm {

class Host;

// The SFR table: kSfrBound + 1 records by index. A record is made when it is
// first written to, and one never written reads as an empty record: most
// register files hold a few hundred records, and making all of them cost a
// large part of every start. References to records stay valid as it grows.
class SfrRecords {
  public:
    [[nodiscard]] static constexpr size_t size() { return kSfrBound + 1; }
    // Past the table's bound this throws RunTimeError naming it.
    SfrRecord& operator[](size_t i);
    const SfrRecord& operator[](size_t i) const;
    // Records 0 to n-1, made where they were not yet (n at most size()).
    [[nodiscard]] std::span<SfrRecord> first(size_t n);

  private:
    std::vector<SfrRecord> made_;
};

struct ProgramState {
    ProgramState();
    explicit ProgramState(Host& h);
    ~ProgramState();
    ProgramState(const ProgramState&) = delete;
    ProgramState& operator=(const ProgramState&) = delete;

  private:
    std::unique_ptr<Host> ownHost_;

  public:
    // The platform seam (never null; a state made without one gets a host
    // that answers every question with its default and draws nothing).
    Host* host;

    // The program folder: the data home.
    std::string programFolder;

    // ---- run-time state
    Connection ConnectionState = kNotConnected;
    int16_t ControllerFamily = 0;
    int32_t KernelStartAddress = 0;
    int32_t KernelEndAddress = 0;
    int16_t CurrentKernel = 0;
    std::array<int32_t, 6> IdRegisterAddresses{0xF07E, 0xF07C, 0xF07A, 0xF078, 0xF076, 0xF070};

    // ---- communication
    int16_t IDLENGTH = 1;
    int32_t TRANSFERBUFFERSTARTADDRESS = 0xFC80;
    int16_t PORT = 1;      // PORT=COM<n>
    std::string PORTNAME;  // device path, socket://host:port or sim:...; wins over PORT
    int32_t BAUDRATE = 9600;
    int16_t PARITY = 0;
    int16_t DATA = 8;
    int16_t STOPBITS = 1;
    int32_t TIMEOUT = 2000;
    int32_t CONNECTTIMEOUT = 100;
    int32_t CONNECTRETRY = 10;
    int16_t KLINE = 0;
    int16_t TMODE = 0;
    int16_t INITCHAR = 0;
    int16_t COMPORTS = 16;
    int16_t CHECKCONNECTION = 1;
    // BOOTENTRY=: the RTS/DTR sequence a connect plays before its first byte
    // (0 none, see link/BootEntry.h); the command line's choice (-1: none
    // given) wins for one run and is never written.
    int16_t BOOTENTRY = 0;
    int16_t bootEntryOverride = -1;
    // The port text of the command line (--port); wins over both keys for one
    // run and is never written to a preference file.
    std::string portOverride;

    // ---- controller
    std::string MCTYPE = "ALD7RK_BB";
    int32_t CLK = 20000000;
    int16_t EINIT = 0;

    // ---- tables, each with its count
    std::array<ControllerType, kControllerTypeBound + 1> controllerTypes{};
    int16_t controllerTypeCount = 0;

    std::array<MemoryUnit, kMemoryUnitBound + 1> memoryUnits{};
    int16_t memoryUnitCount = 0;
    // The unit the memory unit form edits; the table's unit takes it on OK.
    MemoryUnit memoryUnitCopy;

    std::array<Kernel, kKernelBound + 1> kernels{};
    int16_t kernelCount = 0;

    std::array<std::string, kFeatureNameBound + 1> featureNames{};
    int16_t featureNameCount = 0;

    std::array<InitRegister, kInitRegisterBound + 1> initRegisters{};
    int16_t initRegisterCount = 0;

    SfrRecords sfrTable;
    int16_t sfrCount = 0;

    std::array<SfrSet, kSfrSetBound + 1> sfrSets{};
    int16_t sfrSetCount = 8;
    int16_t currentSfrSet = 0;
    SfrListBox sfrList;

    SelectionList selections;
    DumpMemory dump;

    // The decoder's instruction table and sequence counters.
    InstructionTable instructions;

    std::array<int32_t, 100> variables{};

    // ---- file memory
    std::array<FileMemo, 11> LoadFileMemos{};
    std::array<FileMemo, 11> SaveFileMemos{};

    // ---- save settings
    FileMemo saveFile{"C", "C:", "test.hex", 0};
    int16_t SAVEFORMAT = 20;
    int16_t SAVERECORDSIZE = 32;
    int16_t SAVEFILETYPE = 0;
    int32_t SAVESTARTADDR = 0;
    int32_t SAVEENDADDR = 65535;
    int16_t saveAddressesFromPreferences = 0;

    // ---- script memory
    std::array<std::string, 16> lastScriptFiles{};
    std::array<UserScript, 8> userScripts{};

    // ---- folders
    std::string PATH_LOAD;
    std::string PATH_SAVE;
    std::string PATH_SCRIPT;
    std::string PATH_LOG;

    // ---- protocol bytes
    MessageCodes codes;

    // ---- running text and log
    TerminalText terminalBuffer;
    int32_t terminalLines = 0;
    int32_t logEnabled = 0;  // the value of LOGFILE=
    std::string logFileName = "LOG.TXT";
    int16_t scriptAbort = 0;

    // ---- front end
    std::string BLANK_CHAR = ".";
    int32_t COLOR_BGMARKED = 0xDDDDDD;
    int32_t COLOR_BGNORMAL = 0xFFFFFF;
    int32_t COLOR_FGVALID = 0x000000;
    int32_t COLOR_FGINVALID = 0x0000FF;
    int32_t COLOR_FGMONITOR = 0x007777;
    int16_t REFRESHSFR = kTrue;  // refreshSfrEnabled
    int16_t SCALEFACTOR = 100;
};

// The values that hang on the program folder: the four base paths, and the
// drive letter (its first character), folder and type 0 of the file memos
// 0 to 9 of both tables. Part of the preference defaults; start-up calls it
// as soon as the folder is known.
void SetProgramFolderDefaults(ProgramState& st);

// The factor by which the forms are scaled in both directions.
[[nodiscard]] double FormScale(const ProgramState& st);

}  // namespace vortelm
