#pragma once
// One virtual board: memory, registers, flash units, the bootstrap loader,
// our loader, the monitor core, flash drivers and register helpers. It is
// driven byte by byte by the line (sim/Line.h), which owns time.

#include <array>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "sim/Fault.h"
#include "sim/Model.h"

namespace vortelm::sim {

// Protocol bytes as our monitor core uses them.
namespace wire {
constexpr uint8_t kWriteBlock = 0x84, kReadBlock = 0x85, kWriteWord = 0x82, kEinit = 0x31,
                  kTestComm = 0x93, kSwReset = 0x32, kGo = 0x41, kCall = 0x9F, kGetChecksum = 0x33,
                  kAsc1Con = 0xCC, kReadWord = 0xCD, kWriteSeq = 0xCE, kSetProtection = 0xD1;
constexpr uint8_t kAck1 = 0xAA, kAck2 = 0xEA, kLoaderStarted = 0x01, kCoreStarted = 0x03,
                  kAutobaud = 0x04, kAsc1Flag = 0xD5, kWrongAck = 0x55, kHelperDone = 0x01,
                  kProtectionRefused = 0x15;
}  // namespace wire

enum class Mode : uint8_t {
    HeldInReset,
    Bootstrap,    // waiting for the init byte
    LoaderBytes,  // taking the 32 loader bytes
    CoreBytes,    // our loader takes the core
    Monitor,
    Asc1Wait,     // switched to the second channel, waiting for its init byte
    Application,  // the application in flash runs
    Dead,         // crashed, or running user code for ever
};

// A byte the board sends: `delayUs` is time the board spends before it
// (flash work), `newRate` is the rate the board uses after it (0: unchanged).
struct BoardByte {
    uint8_t byte = 0;
    double delayUs = 0;
    double newRate = 0;
};

// Times of the flash work. A block program takes programWordUs for each
// 16-bit word; an erase runs on in the flash after the driver has returned,
// and the flash is busy until it ends.
struct FlashTimes {
    double initUs = 0, programWordUs = 0, eraseSectorUs = 0, eraseWordlineUs = 0, protectUs = 0;
    [[nodiscard]] static FlashTimes Real();
};

class Board {
  public:
    Board(const BoardModel& model, FlashTimes times, FaultPlan faults, uint32_t seed);

    // A byte from the host. `clean` is false when host and board rates
    // differ by more than the receiver tolerates; `hostRate` is what the
    // board measures from a 0x00 when it autobauds.
    void receive(uint8_t byte, bool clean, double hostRate, std::vector<BoardByte>& out);
    // The line was silent longer than the host waits: a command the monitor
    // has only partly received is given up, so that the next byte is a
    // command again.
    void lineSilent();
    // The line's time (microseconds) when the next byte arrives: the flash
    // knows from it whether it is still busy.
    void setTime(double us) { now_ = us; }

    // RESET held (true) or released; `bootstrap` is the BSL pin at release.
    void holdReset();
    void release(bool bootstrap);
    void powerOn();  // bootstrap mode, registers at reset values
    void runApplication();

    [[nodiscard]] Mode mode() const { return mode_; }
    [[nodiscard]] double rate() const { return rate_; }
    void setRate(double r) { rate_ = r; }
    [[nodiscard]] bool hangupRequested() const { return hangup_; }
    [[nodiscard]] const BoardModel& model() const { return model_; }
    [[nodiscard]] uint32_t coreStart() const { return coreStart_; }
    [[nodiscard]] uint32_t coreEnd() const { return coreEnd_; }
    [[nodiscard]] bool einitDone() const { return einit_; }
    [[nodiscard]] uint32_t commandsSeen() const { return commands_; }
    [[nodiscard]] std::string status() const;

    // Direct access for tests and the status line (no side effects).
    [[nodiscard]] uint8_t peek(uint32_t address) const;
    [[nodiscard]] uint16_t peekWord(uint32_t address) const;
    void pokeFlash(uint32_t address, uint8_t value);  // test set-up of flash contents
    [[nodiscard]] uint16_t registerValue(const std::string& name) const;
    [[nodiscard]] bool sectorLocked(std::size_t unit, std::size_t sector) const;
    [[nodiscard]] bool unitProtected(std::size_t unit) const;
    [[nodiscard]] uint8_t protectionLevel() const { return protLevel_; }
    // Whether the unit's flash is still erasing at the board's time.
    [[nodiscard]] bool flashBusy(std::size_t unit) const;

  private:
    struct FlashState {
        std::vector<uint8_t> data;
        std::vector<bool> locked;
        std::vector<std::array<uint8_t, 8>> lockPassword;
        bool protectedUnit = false;
        std::array<uint8_t, 8> password{};
        bool lastFailed = false;
        bool lastUnknown = false;
        double readyAt = 0;  // board time at which a running erase ends
    };

    // memory
    [[nodiscard]] bool inAreas(const std::vector<Area>& areas, uint32_t a) const;
    [[nodiscard]] int flashAt(uint32_t address, uint32_t& offset) const;  // unit or -1
    [[nodiscard]] bool unitVisible(std::size_t unit) const;
    [[nodiscard]] uint8_t read(uint32_t address) const;
    [[nodiscard]] uint16_t readWord(uint32_t address) const;
    [[nodiscard]] uint8_t raw(uint32_t address) const;
    [[nodiscard]] uint16_t rawWord(uint32_t address) const;
    void setRaw(uint32_t address, uint8_t value);
    // A monitor write; returns false when it hit the running core (death).
    bool write(uint32_t address, uint8_t value);
    void afterRegisterWrite(uint32_t address, uint16_t oldValue, std::vector<BoardByte>& out);
    void resetRegisters();
    void autobaud(double hostRate);

    // protocol
    void startCore(uint32_t first, uint32_t length);
    void monitorByte(uint8_t b, std::vector<BoardByte>& out);
    void finishCommand(std::vector<BoardByte>& out);
    // The steps of a command whose arguments are in; true when the command
    // ends with the second acknowledge, false when it answered itself,
    // waits for more bytes or reset the board.
    bool runCommand(std::vector<BoardByte>& out);
    bool finishWriteBlock();
    bool readBlock(std::vector<BoardByte>& out);
    bool writeSequence(std::vector<BoardByte>& out);
    bool setProtection(std::vector<BoardByte>& out);
    bool startCall(std::vector<BoardByte>& out);
    // The fault "reset" in the middle of a block: the board powers on again.
    void resetNow();
    void emit(std::vector<BoardByte>& out, uint8_t b);
    void ack2(std::vector<BoardByte>& out);
    void die() { mode_ = Mode::Dead; }
    void doCall(std::vector<BoardByte>& out);
    void doGo(uint32_t address, std::vector<BoardByte>& out);
    void runDriver(uint32_t entry, std::array<uint16_t, 8>& r);
    // What a driver image says of itself behind its tag.
    struct DriverHeader {
        uint8_t generation = 0;
        std::size_t unit = 0;
        uint16_t burst = 0;
        uint8_t blank = 0;
        uint32_t buffer = 0;
        uint32_t wordline = 0;
    };
    [[nodiscard]] DriverHeader driverHeaderAt(uint32_t entry);
    // The driver's commands; each gives the result for R15.
    uint16_t lockCommand(std::size_t unit, const std::array<uint16_t, 8>& r);
    uint16_t firstGenerationCommand(uint32_t entry, const DriverHeader& h,
                                    std::array<uint16_t, 8>& r);
    uint16_t secondGenerationCommand(const DriverHeader& h, std::array<uint16_t, 8>& r);
    // A called routine of register moves (sim/Routine.h); r is R8 to R15.
    void runRoutine(uint32_t entry, uint16_t cp, std::array<uint16_t, 8>& r);
    [[nodiscard]] bool coreHeaderAt(uint32_t address, uint16_t& mask, uint16_t& length) const;
    [[nodiscard]] bool offered(uint8_t command) const;
    [[nodiscard]] uint32_t expectedArgs(uint8_t command) const;
    [[nodiscard]] bool hits(FaultKind kind);

    // flash operations, returning 0 or an error code for R15
    uint16_t program(std::size_t unit, uint32_t address, uint32_t buffer, uint32_t count);
    uint16_t eraseSector(std::size_t unit, uint32_t sector);
    uint16_t eraseWordline(std::size_t unit, uint32_t address, uint32_t size);
    [[nodiscard]] uint16_t statusWord(std::size_t unit, uint32_t number) const;
    [[nodiscard]] std::array<uint8_t, 8> passwordAt(uint32_t buffer) const;
    [[nodiscard]] int sectorOf(std::size_t unit, uint32_t address) const;
    // A driver waits for a running erase to end before it starts on the
    // flash again: that wait goes into the reply's delay.
    void waitReady(std::size_t unit);
    // Starts an erase that runs on for `us` after the driver returns.
    void startErase(std::size_t unit, double us);

    const BoardModel& model_;
    FlashTimes times_;
    FaultPlan faults_;
    std::mt19937 rng_;
    std::vector<std::unique_ptr<std::array<uint8_t, 65536>>> segments_;
    std::vector<FlashState> flash_;
    Mode mode_ = Mode::Bootstrap;
    double rate_ = 9600;
    bool einit_ = false;
    bool hangup_ = false;
    uint8_t protLevel_ = 0;
    uint8_t protPassword_ = 0;
    uint32_t coreStart_ = 0, coreEnd_ = 0;
    uint16_t coreMask_ = 0;
    std::vector<uint8_t> collected_;  // loader bytes, core bytes, command arguments
    uint32_t need_ = 0;
    uint32_t coreFirst_ = 0;
    uint8_t command_ = 0;
    bool inData_ = false;      // block write: taking the data
    bool helperZero_ = false;  // call of a helper: taking the trailing zero
    bool afterCall_ = false;   // a call returned; a zero now is its trailing byte
    uint8_t checksum_ = 0;
    uint32_t commands_ = 0;
    bool wrongAck_ = false;
    bool resetMidBlock_ = false;
    double pendingDelay_ = 0;
    double pendingRate_ = 0;
    uint16_t latchedFdv_ = 0;
    uint32_t driverInitialised_ = 0xFFFFFFFF;
    double now_ = 0;  // the line's time of the byte being taken
};

}  // namespace vortelm::sim
