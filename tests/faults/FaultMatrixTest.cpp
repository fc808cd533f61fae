// The fault matrix: every fault kind of the virtual board, aimed in turn at
// every byte and every command inside one operation (at least ten runs,
// each with its own seed), against connect, download, upload, compare, the
// word commands, and flash program and erase, run through the shell rows
// as the command box runs them. For every run:
//  - the program does not crash, and the operation ends within the bound
//    its exchanges' time-outs give (virtual clock: a wait costs nothing);
//  - an operation reported good has done on the board what was asked
//    (checked against the board's own memory and flash, not through the
//    line);
//  - after a fault of the line or a wrong acknowledge, the next command
//    meets the board in step again: one fault costs one failed command.
//
// What the protocol itself cannot see is counted, not failed: a word read
// (_r16, _u16) carries no checksum, so one flipped data bit is read as a
// good value. A block's exclusive-or checksum sees every single flip; two
// flips in the same bit position of one block would pass it, but a fault
// of this board flips one bit once. A driver call's eight registers travel
// without checksum both ways: the geometry a flash driver reports when it
// is initialised (burst size, blank value, buffer address) is taken as it
// arrives, so a flipped bit there programs blocks of the wrong size, fills
// their gaps with the wrong blank or sends them to the wrong buffer (into
// the registers, the serial rate among them), and the driver still reports
// each block good. The
// board's faults hit only the bytes it sends; the registers the host sends
// in a call (a block's flash address among them) are as unprotected.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "config/ControllerTypes.h"
#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "image/Dump.h"
#include "image/Selections.h"
#include "link/ComPort.h"
#include "shell/Program.h"
#include "sim/Board.h"
#include "sim/Fault.h"
#include "sim/Line.h"
#include "sim/Model.h"

namespace vortelm {
namespace {

namespace fs = std::filesystem;

constexpr int kSeeds = 10;
constexpr int32_t kArea = 0x100000;  // external RAM of the board
constexpr int32_t kBlock = 1500;     // two bursts

// VORTELM_MATRIX_TRACE=FILE:KIND@N traces the run of that fault to FILE.
std::string TracePath(const sim::FaultPlan& plan) {
    const char* env = std::getenv("VORTELM_MATRIX_TRACE");
    if (!env || plan.faults.size() != 1) return {};
    const std::string want(env);
    const auto colon = want.rfind(':');
    if (colon == std::string::npos) return {};
    sim::FaultPlan wanted;
    std::string error;
    if (!sim::ParseFaults(want.substr(colon + 1), wanted, error) || wanted.faults.size() != 1)
        return {};
    const sim::Fault& a = plan.faults[0];
    const sim::Fault& b = wanted.faults[0];
    return a.kind == b.kind && a.at == b.at ? want.substr(0, colon) : std::string();
}

// The board of the matrix: the board and its line in process, as the port
// text sim: builds them, with the board at hand for the truth and a count
// of the bytes it has sent (read or thrown away by the host).
class MatrixBoard final : public channel::ByteChannel {
  public:
    MatrixBoard(const sim::BoardModel& model, const sim::FaultPlan& faults, uint32_t seed,
                channel::MicrosClock clock)
        : clock_(std::move(clock)),
          board_(model, sim::FlashTimes{}, faults, seed),
          line_(board_, sim::LineOptions{false, false, 0, true, TracePath(faults)}, faults, seed) {}

    [[nodiscard]] std::string describe() const override { return "matrix"; }
    [[nodiscard]] bool isOpen() const override { return open_ && !line_.hungUp(); }
    void close() override { open_ = false; }
    std::ptrdiff_t write(std::span<const uint8_t> bytes) override {
        if (!usable()) return -1;
        line_.hostWrite(bytes, clock_());
        return static_cast<std::ptrdiff_t>(bytes.size());
    }
    std::ptrdiff_t read(std::span<uint8_t> out) override {
        if (!usable()) return -1;
        const std::size_t n = line_.hostRead(out, clock_());
        bytesSeen += n;
        return static_cast<std::ptrdiff_t>(n);
    }
    std::size_t bytesWaitingIn() override { return usable() ? line_.hostWaitingIn(clock_()) : 0; }
    std::size_t bytesWaitingOut() override { return usable() ? line_.hostWaitingOut(clock_()) : 0; }
    void clearInput() override {
        if (!usable()) return;
        bytesSeen += line_.hostWaitingIn(clock_());
        line_.clearHostInput(clock_());
    }
    channel::Control configure(const channel::LineSettings& s) override {
        if (!usable()) return channel::Control::Failed;
        line_.setHostRate(s.baud, s.parity == channel::Parity::None && s.dataBits == 8);
        return channel::Control::Ok;
    }
    channel::Control setRts(bool) override { return channel::Control::Ok; }
    channel::Control setDtr(bool) override { return channel::Control::Ok; }
    channel::Control setBreak(bool) override { return channel::Control::Ok; }
    std::optional<int64_t> nextEventUs() override {
        if (!usable()) return std::nullopt;
        return line_.nextEvent();
    }
    [[nodiscard]] std::string lastError() const override { return line_.hungUp() ? "hung up" : ""; }
    [[nodiscard]] int lastErrno() const override { return line_.hungUp() ? 5 : 0; }

    [[nodiscard]] const sim::Board& board() const { return board_; }
    sim::Board& boardForSetUp() { return board_; }
    std::size_t bytesSeen = 0;

  private:
    bool usable() {
        if (!open_) return false;
        if (!line_.hungUp()) line_.advance(clock_());
        return !line_.hungUp();
    }
    channel::MicrosClock clock_;
    sim::Board board_;
    sim::Line line_;
    bool open_ = true;
};

enum class Op {
    Connect,
    Download,
    Upload,
    Compare,
    W16,
    R16,
    Mov,
    U16,
    D16,
    Program,
    IProgram,
    Erase
};
const std::map<Op, const char*> kOpNames = {
    {Op::Connect, "connect"},  {Op::Download, "download"},  {Op::Upload, "upload"},
    {Op::Compare, "compare"},  {Op::W16, "_w16"},           {Op::R16, "_r16"},
    {Op::Mov, "_mov"},         {Op::U16, "_u16"},           {Op::D16, "_d16"},
    {Op::Program, "_program"}, {Op::IProgram, "_iprogram"}, {Op::Erase, "_erase"}};
const char* const kKinds[] = {"drop", "flip", "stall", "wrongack", "reset", "die", "hangup"};

// The board's internal flash (blank 0xFF), its sector 1, and the block the
// flash runs program inside that sector: two bursts and a part, not aligned.
constexpr uint32_t kFlashFirst = 0x010000;
constexpr uint32_t kFlashEnd = 0x050000;
constexpr uint32_t kSector1 = 0x020000;
constexpr uint32_t kSector1End = 0x030000;
constexpr int32_t kFlashBlock = 0x020123;
// What the erase and _iprogram runs put into the flash before they
// connect: the ends of sector 1 and the neighbouring ends of sectors 0 and 2.
constexpr uint32_t kErasePokes[][2] = {{0x01FF00, 0x020100}, {0x02FF00, 0x030100}};

uint8_t Pattern(int32_t a, int salt) {
    return static_cast<uint8_t>((a * 7 + salt * 31 + (a >> 8)) & 0xFF);
}

struct Tally {
    int runs = 0, failedAsTheyShould = 0, succeeded = 0, falseSuccesses = 0, blindSpots = 0;
    int planned = 0;  // runs of the plan, with those not applicable
    int resyncChecks = 0, resyncFailures = 0, hangs = 0, notApplicable = 0;
    int64_t longestUs = 0;
    std::string blindAt;  // the faults of the blind runs
};

class FaultMatrix : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        std::string t = (fs::temp_directory_path() / "vortelm-faults-XXXXXX").string();
        ASSERT_NE(::mkdtemp(t.data()), nullptr);
        home_ = t;
        fs::copy(fs::path(VORTELM_SOURCE_DIR) / "data", home_, fs::copy_options::recursive);
    }
    static void TearDownTestSuite() {
        std::error_code ec;
        fs::remove_all(home_, ec);
    }

    void SetUp() override {
        shell::ProgramOptions o;
        o.home = home_;
        o.portOverride = "sim:";
        program_ = std::make_unique<shell::Program>(host_, o);
        program_->StartUp();
        st().CHECKCONNECTION = 0;  // the check's own ticks would move the aim
        model_ = sim::FindBoardModel(st().MCTYPE);
        ASSERT_NE(model_, nullptr) << st().MCTYPE;
    }
    void TearDown() override { program_.reset(); }

    ProgramState& st() { return program_->state(); }

    // A fresh board with the faults given; the program's port takes it.
    MatrixBoard* freshBoard(const std::string& faults, uint32_t seed) {
        sim::FaultPlan plan;
        std::string error;
        EXPECT_TRUE(sim::ParseFaults(faults, plan, error)) << error;
        auto b = std::make_unique<MatrixBoard>(*model_, plan, seed, [this] { return host_.now; });
        MatrixBoard* raw = b.get();
        program_->port().attach(std::move(b));
        program_->port().setReceiveThreshold(1);
        st().ConnectionState = kNotConnected;
        board_ = raw;
        return raw;
    }

    int16_t run(const std::string& line) {
        host_.terminal.clear();
        return program_->RunCommandBoxLine(line);
    }

    void select(int32_t first, int32_t last) {
        st().selections.count = 0;
        AddSelection(st().selections, first, last);
    }
    void fillDump(int32_t first, int32_t last, int salt) {
        for (int32_t a = first; a <= last; ++a) {
            WriteDumpByte(st().dump, a, Pattern(a, salt));
            SetDefined(st().dump, a, kTrue);
        }
    }
    uint16_t dumpWord(int32_t a) {
        return static_cast<uint16_t>(ReadDumpByte(st().dump, a) |
                                     (ReadDumpByte(st().dump, a + 1) << 8));
    }

    // What comes before the operation: connect, and for the operations that
    // read, a block written to the board so that there is something to read.
    bool prepare(Op op) {
        if (op == Op::Connect) return true;
        if (op == Op::Erase || op == Op::IProgram) {
            // straight into the board's flash: the erase itself loads the
            // driver, so that its faults meet the driver's download too
            for (const auto& range : kErasePokes)
                for (uint32_t x = range[0]; x < range[1]; ++x)
                    board_->boardForSetUp().pokeFlash(x, Pattern(static_cast<int32_t>(x), 4));
        }
        if (run("_connect NOPROMPT") != 0) return false;
        if (op == Op::Upload || op == Op::Compare || op == Op::R16 || op == Op::U16) {
            fillDump(kArea, kArea + kBlock - 1, 1);
            select(kArea, kArea + kBlock - 1);
            if (run("_download") != 0) return false;
        }
        if (op == Op::D16) fillDump(kArea + 0x800, kArea + 0x801, 5);
        return true;
    }

    // Runs the operation; true when it reported success. `value` takes a
    // number it reported (the differences of compare, the word of _r16).
    bool operate(Op op, long& value) {
        const std::string a = "100010";
        switch (op) {
            case Op::Connect:
                return run("_connect NOPROMPT") == 0;
            case Op::Download:
                fillDump(kArea, kArea + kBlock - 1, 2);
                select(kArea, kArea + kBlock - 1);
                return run("_download") == 0;
            case Op::Upload:
                fillDump(kArea, kArea + kBlock - 1,
                         3);  // to be overwritten by what the board holds
                select(kArea, kArea + kBlock - 1);
                return run("_upload") == 0;
            case Op::Compare: {
                // seven bytes differ from the board's
                for (int32_t i = 0; i < 7; ++i) {
                    const int32_t at = kArea + 3 + i * 211;
                    WriteDumpByte(st().dump, at, static_cast<uint8_t>(Pattern(at, 1) ^ 0x40));
                }
                select(kArea, kArea + kBlock - 1);
                if (run("_compare") != 0) return false;
                std::smatch m;
                static const std::regex summary(
                    "\\*Comparison: +(-?[0-9]+) Bytes OK - +(-?[0-9]+) Bytes different");
                if (!std::regex_search(host_.terminal, m, summary)) return false;
                value = std::stol(m[2].str());
                return true;
            }
            case Op::W16:
                return run("_w16 " + a + ",A55A") == 0;
            case Op::Mov:
                return run("_mov " + a + ",1234") == 0;
            case Op::R16: {
                if (run("_r16 " + a) != 0) return false;
                const auto at = host_.terminal.find("*" + a + ": ");
                if (at == std::string::npos) return false;
                value = std::stol(host_.terminal.substr(at + 1 + a.size() + 2, 4), nullptr, 16);
                return true;
            }
            case Op::U16:
                return run("_u16 " + a + ",100900") == 0;
            case Op::D16:
                return run("_d16 100800,100012") == 0;
            case Op::Program:
                fillDump(kFlashBlock, kFlashBlock + kBlock - 1, 6);
                select(kFlashBlock, kFlashBlock + kBlock - 1);
                return run("_program") == 0;
            case Op::IProgram:
                fillDump(kFlashBlock, kFlashBlock + kBlock - 1, 6);
                select(kFlashBlock, kFlashBlock + kBlock - 1);
                return run("_iprogram") == 0;
            case Op::Erase:
                return run("_erase IFLASH,1") == 0;
        }
        return false;
    }

    // What the whole flash unit must hold after a good program or erase.
    static uint8_t FlashWanted(Op op, uint32_t x) {
        const auto first = static_cast<uint32_t>(kFlashBlock);
        if (op != Op::Erase && x >= first && x < first + kBlock)
            return Pattern(static_cast<int32_t>(x), 6);
        if (op == Op::Program) return 0xFF;
        if (x >= kSector1 && x < kSector1End) return 0xFF;
        for (const auto& range : kErasePokes)
            if (x >= range[0] && x < range[1]) return Pattern(static_cast<int32_t>(x), 4);
        return 0xFF;
    }

    // The flash unit and the geometry its driver reports without faults.
    MemoryUnit& flashUnit() {
        const int i = MemoryUnitIndexByName(st(), "IFLASH");
        EXPECT_GE(i, 0);
        return st().memoryUnits[static_cast<size_t>(std::max(i, 0))];
    }

    // Whether the driver's geometry (burst size, blank value, buffer
    // address) came in other than without faults: its registers carry no
    // checksum.
    bool geometryChanged() {
        const MemoryUnit& u = flashUnit();
        return u.burstSize != burst_ || u.blank != blank_ || u.driverBufferAddress != buffer_;
    }

    // Whether the board holds what a good report says it does. `blind`
    // tells a wrong result that the protocol cannot see.
    bool truthful(Op op, const MatrixBoard& mb, long value, bool& blind) {
        const sim::Board& b = mb.board();
        blind = false;
        switch (op) {
            case Op::Connect:
                blind = b.mode() != sim::Mode::Monitor;
                return !blind;
            case Op::Download:
            case Op::Upload:
                for (int32_t x = kArea; x < kArea + kBlock; ++x)
                    if (b.peek(static_cast<uint32_t>(x)) != ReadDumpByte(st().dump, x))
                        return false;
                return true;
            case Op::Compare: {
                long differ = 0;
                for (int32_t x = kArea; x < kArea + kBlock; ++x)
                    differ += b.peek(static_cast<uint32_t>(x)) != ReadDumpByte(st().dump, x);
                return differ == 7 && value == 7;
            }
            case Op::W16:
                return b.peekWord(0x100010) == 0xA55A;
            case Op::Mov:
                return b.peekWord(0x100010) == 0x1234;
            case Op::R16:
                blind = value != b.peekWord(0x100010);
                return !blind;
            case Op::U16:
                blind = dumpWord(0x100900) != b.peekWord(0x100010);
                return !blind;
            case Op::D16:
                return b.peekWord(0x100012) == dumpWord(0x100800);
            case Op::Program:
            case Op::IProgram:
            case Op::Erase:
                // every byte of the unit: the block or sector asked for, and
                // nothing besides it
                for (uint32_t x = kFlashFirst; x < kFlashEnd; ++x) {
                    if (b.peek(x) != FlashWanted(op, x)) {
                        blind = geometryChanged();
                        return false;
                    }
                }
                return true;
        }
        return false;
    }

    // The longest a run of the operation may take: each exchange's waits
    // at their time-outs, the settling after a failure, and the boot
    // sequence's retries.
    int64_t boundUs(Op op, int64_t faultlessUs) {
        const int64_t to = int64_t{st().TIMEOUT} * 1000;
        const int64_t cto = int64_t{st().CONNECTTIMEOUT} * 1000;
        const int64_t perExchange = 10 * to + 10 * cto;
        const int64_t connect = int64_t{st().CONNECTRETRY} * cto + 40 * perExchange;
        switch (op) {
            case Op::Connect:
                return connect;
            case Op::Download:
            case Op::Upload:
            case Op::Compare:
                return 4 * perExchange;
            case Op::Program:
            case Op::IProgram:
            case Op::Erase:
                // a driver's download and its calls: the time they take
                // without faults, and the waits of the one that fails
                return faultlessUs + 4 * perExchange;
            default:
                return 2 * perExchange;
        }
    }

    struct Probe {
        std::size_t bytesBefore = 0, bytesDuring = 0;
        int64_t usDuring = 0;
        uint32_t commandsBefore = 0, commandsDuring = 0;
    };
    // A run without faults: where the operation's bytes and commands lie.
    Probe probe(Op op) {
        Probe p;
        MatrixBoard* mb = freshBoard("", 1);
        EXPECT_TRUE(prepare(op)) << host_.terminal;
        p.bytesBefore = mb->bytesSeen;
        p.commandsBefore = mb->board().commandsSeen();
        long value = 0;
        const int64_t start = host_.now;
        EXPECT_TRUE(operate(op, value)) << kOpNames.at(op) << host_.terminal;
        p.usDuring = host_.now - start;
        burst_ = flashUnit().burstSize;
        blank_ = flashUnit().blank;
        buffer_ = flashUnit().driverBufferAddress;
        bool blind = false;
        EXPECT_TRUE(truthful(op, *mb, value, blind)) << kOpNames.at(op);
        p.bytesDuring = mb->bytesSeen - p.bytesBefore;
        p.commandsDuring = mb->board().commandsSeen() - p.commandsBefore;
        std::printf("[fault matrix] %-8s aims at board bytes %zu to %zu, commands %u to %u\n",
                    kOpNames.at(op), p.bytesBefore + 1, p.bytesBefore + p.bytesDuring,
                    p.commandsBefore + 1, p.commandsBefore + p.commandsDuring);
        return p;
    }

    void runMatrix(Op op, Tally& t) {
        const Probe p = probe(op);
        ASSERT_GT(p.bytesDuring, 0u);
        for (const char* kind : kKinds) {
            sim::Fault f;
            std::string error;
            sim::FaultPlan plan;
            ASSERT_TRUE(sim::ParseFaults(std::string(kind) + "@1", plan, error));
            const bool byteFault = sim::IsByteFault(plan.faults[0].kind);
            // The board counts command faults by monitor commands; an
            // operation without any cannot be hit by them.
            if (!byteFault && p.commandsDuring == 0) {
                t.notApplicable += kSeeds;
                t.planned += kSeeds;
                continue;
            }
            // Every byte or command of the operation in turn; a shorter
            // operation than ten meets it again with another seed (another
            // bit to flip).
            const std::size_t span = byteFault ? p.bytesDuring : p.commandsDuring;
            const std::size_t first = byteFault ? p.bytesBefore : p.commandsBefore;
            const int seeds = std::max<int>(kSeeds, static_cast<int>(span));
            t.planned += seeds;
            for (int seed = 1; seed <= seeds; ++seed) {
                // the aim: a byte or a command inside the operation
                const uint64_t at = first + 1 + static_cast<uint64_t>(seed - 1) % span;
                const std::string faults = std::string(kind) + "@" + std::to_string(at);
                SCOPED_TRACE(std::string(kOpNames.at(op)) + " " + faults);
                MatrixBoard* mb = freshBoard(faults, static_cast<uint32_t>(seed));
                // a geometry that a fault brought stays until the driver is
                // loaded again: every run starts from the faultless one
                flashUnit().burstSize = burst_;
                flashUnit().blank = blank_;
                flashUnit().driverBufferAddress = buffer_;
                ASSERT_TRUE(prepare(op)) << host_.terminal;
                ++t.runs;
                const int64_t start = host_.now;
                long value = 0;
                const bool good = operate(op, value);
                const int64_t took = host_.now - start;
                t.longestUs = std::max(t.longestUs, took);
                if (took > boundUs(op, p.usDuring)) {
                    ++t.hangs;
                    ADD_FAILURE() << "took " << took / 1000 << " ms";
                }
                if (!good) {
                    ++t.failedAsTheyShould;
                } else {
                    ++t.succeeded;
                    bool blind = false;
                    if (!truthful(op, *mb, value, blind)) {
                        // The connect's initialisation commands come after the
                        // monitor has started, and their answers are not
                        // examined: a command fault there (a reset, a dying
                        // board) is invisible to the connect itself and shows
                        // only at the next command.
                        const bool unexamined = op == Op::Connect && !byteFault;
                        if (blind && (std::string(kind) == "flip" || unexamined)) {
                            ++t.blindSpots;
                            t.blindAt += " " + faults;
                        } else {
                            ++t.falseSuccesses;
                            ADD_FAILURE() << "reported good, the board differs\n" << host_.terminal;
                        }
                    }
                }
                // A fault of the line or a wrong acknowledge costs one
                // command: the next one meets the board in step.
                const bool boardLives = std::string(kind) != "die" &&
                                        std::string(kind) != "reset" &&
                                        std::string(kind) != "hangup";
                if (boardLives && st().ConnectionState == 1) {
                    ++t.resyncChecks;
                    fillDump(kArea + 0x400, kArea + 0x43F, 9);
                    select(kArea + 0x400, kArea + 0x43F);
                    const bool down = run("_download") == 0;
                    const bool up = down && run("_upload") == 0;
                    bool same = up;
                    for (int32_t x = kArea + 0x400; same && x <= kArea + 0x43F; ++x)
                        same = mb->board().peek(static_cast<uint32_t>(x)) == Pattern(x, 9);
                    if (!same && geometryChanged()) {
                        // a flipped buffer address sent the blocks into the
                        // board's registers, its serial rate among them:
                        // the line is lost to a fault nobody could see
                        ++t.blindSpots;
                        t.blindAt += " " + faults + "(next)";
                    } else if (!same) {
                        ++t.resyncFailures;
                        ADD_FAILURE() << "the command after the fault failed\n" << host_.terminal;
                    }
                }
            }
        }
    }

    static void Report(const char* op, const Tally& t) {
        std::printf(
            "[fault matrix] %-8s runs %3d: failed %3d, good %3d, false %d, blind %d, "
            "hangs %d, next command in step %d of %d, longest %lld ms, not applicable %d\n",
            op, t.runs, t.failedAsTheyShould, t.succeeded, t.falseSuccesses, t.blindSpots, t.hangs,
            t.resyncChecks - t.resyncFailures, t.resyncChecks,
            static_cast<long long>(t.longestUs / 1000), t.notApplicable);
        if (!t.blindAt.empty())
            std::printf("[fault matrix] %-8s blind at%s\n", op, t.blindAt.c_str());
    }

    void check(Op op) {
        Tally t;
        runMatrix(op, t);
        Report(kOpNames.at(op), t);
        EXPECT_EQ(t.runs + t.notApplicable, t.planned);
        EXPECT_GE(t.planned, 7 * kSeeds);
        EXPECT_GE(t.runs, 3 * kSeeds);
        EXPECT_EQ(t.falseSuccesses, 0);
        EXPECT_EQ(t.hangs, 0);
        EXPECT_EQ(t.resyncFailures, 0);
        // the faults are aimed inside the operation: most of them end it
        EXPECT_GT(t.failedAsTheyShould, 0);
    }

    static std::string home_;
    TestHost host_;
    std::unique_ptr<shell::Program> program_;
    const sim::BoardModel* model_ = nullptr;
    MatrixBoard* board_ = nullptr;  // the board of the run
    int16_t burst_ = 0;             // the flash driver's geometry without faults
    uint8_t blank_ = 0;
    int32_t buffer_ = 0;
};

std::string FaultMatrix::home_;

TEST_F(FaultMatrix, Connect) {
    check(Op::Connect);
}
TEST_F(FaultMatrix, Download) {
    check(Op::Download);
}
TEST_F(FaultMatrix, Upload) {
    check(Op::Upload);
}
TEST_F(FaultMatrix, Compare) {
    check(Op::Compare);
}
TEST_F(FaultMatrix, WriteWord) {
    check(Op::W16);
}
TEST_F(FaultMatrix, ReadWord) {
    check(Op::R16);
}
TEST_F(FaultMatrix, Mov) {
    check(Op::Mov);
}
TEST_F(FaultMatrix, CopyWordFromTarget) {
    check(Op::U16);
}
TEST_F(FaultMatrix, CopyWordToTarget) {
    check(Op::D16);
}
TEST_F(FaultMatrix, ProgramFlash) {
    check(Op::Program);
}
TEST_F(FaultMatrix, EraseAndProgramFlash) {
    check(Op::IProgram);
}
TEST_F(FaultMatrix, EraseFlash) {
    check(Op::Erase);
}

}  // namespace
}  // namespace vortelm
