// Program and intelligent program: the selections go into flash block by
// block, each block burst size bytes aligned to the burst size, bytes
// outside the selections filled with the blank value.

#include <memory>
#include <optional>
#include <string>

#include "config/ControllerTypes.h"
#include "core/Helpers.h"
#include "core/Host.h"
#include "core/RunTimeError.h"
#include "core/Text.h"
#include "flash/Common.h"
#include "flash/Flash.h"
#include "image/Dump.h"
#include "image/Selections.h"
#include "link/Monitor.h"
#include "target/Target.h"

namespace vortelm::flash {

namespace {

using detail::Busy;
using detail::UnitOf;

// All 24 address bits, less as many low bits as the erase size has
// trailing zero bits.
int32_t WordlineMask(int32_t eraseSize) {
    if (eraseSize < 1) return 0xFFFFFF;
    int32_t mask = 0xFFFFFF;
    for (int32_t s = eraseSize; (s & 1) == 0; s >>= 1) mask = (mask << 1) & 0xFFFFFF;
    return mask;
}

class Run {
  public:
    Run(target::Target& t, bool intelligent)
        : t_(t),
          st_(t.st),
          intelligent_(intelligent),
          name_(intelligent ? "IProgram" : "Program") {}

    int go() {
        try {
            return walk();
        } catch (...) {
            st_.host->progress(0, 0);  // a bound met on the way hides the bar too
            throw;
        }
    }

  private:
    int walk() {
        if (int r = detail::CheckConnectedWithDriverFeatures(st_); r != 0) return r;
        Busy busy(st_);
        // Drivers replace the selection list: the run works on the saved one.
        SaveSelections(st_.selections);
        sel_ = std::make_unique<SelectionList>(st_.selections);
        total_ = SelectedByteCount(*sel_);
        for (int i = 0; i < sel_->count; ++i) {
            int64_t address = sel_->start[static_cast<size_t>(i)];
            while (address <= sel_->end[static_cast<size_t>(i)]) {
                if (int r = step(busy, i, address); r != 0) {
                    st_.host->progress(0, 0);
                    return r;
                }
                report();
            }
        }
        busy.off();
        st_.host->progress(0, 0);
        st_.host->gotoPage(sel_->start[0] / 16);
        st_.host->refreshMemory();
        Text2Buffer(
            st_, "\r\n*" + name_ + ":" + std::to_string(count_) + " bytes successfully programmed");
        return 0;
    }

    // One step of the walk at the address: a block programmed, or the
    // address moved past what holds no flash.
    int step(Busy& busy, int selection, int64_t& address) {
        const MemoryPosition pos = FindMemoryPosition(st_, static_cast<int32_t>(address));
        if (!pos.found()) {
            ++address;
            return 0;
        }
        MemoryUnit& u = UnitOf(st_, pos.unit);
        if (u.type.find("FLASH") == std::string::npos || u.driverPath.empty() ||
            !FileExists(st_, DriverFile(st_, pos.unit), kFalse)) {
            Text2Buffer(st_, "\r\nWarning: No flash configured at address " +
                                 HexText(static_cast<int32_t>(address), 6));
            address += u.sections[static_cast<size_t>(pos.section)]
                           .ranges[static_cast<size_t>(pos.range)]
                           .length;
            return 0;
        }
        if (detail::EnsureDriver(t_, busy, name_, pos.unit) != 0) return -1;
        const int32_t burst = u.burstSize;
        if (burst < 1)
            throw RunTimeError("burst size " + std::to_string(burst) + " of " + u.name +
                               " below 1");
        address -= address % burst;
        // A block that reaches back into the previous selection has gone out
        // with it already.
        if (selection > 0 && address <= sel_->end[static_cast<size_t>(selection - 1)])
            address += burst;
        if (intelligent_) {
            if (int r = erase(busy, pos, static_cast<int32_t>(address)); r != 0) return r;
        }
        if (int r = programBlock(busy, pos.unit, static_cast<int32_t>(address)); r != 0) return r;
        address += burst;
        count_ += burst;
        return 0;
    }

    int erase(Busy& busy, const MemoryPosition& pos, int32_t address) {
        MemoryUnit& u = UnitOf(st_, pos.unit);
        link::Monitor mon(st_, t_.port);
        if (UnitHasFeature(st_, pos.unit, "ERASEWL") && u.driverMode == 0) {
            const int32_t mask = WordlineMask(u.eraseSize);
            const int32_t wordline = address & mask;
            if (lastWordline_ && (*lastWordline_ & mask) == wordline) return 0;
            Text2Buffer(st_, "\r\n*IProgram: Erasing wordline " + HexText(wordline, 6));
            Frame f = EraseWordlineFrame(wordline);
            const int16_t called = detail::CallDriver(t_, pos.unit, f);
            const int32_t r15 = mon.cmd_readgpr(15);
            if (called != 0 || r15 != 0) {
                Text2Buffer(st_, "\r\n*ERROR: Erase wordline not successful");
                busy.off();
                return -2;
            }
            lastWordline_ = address;
            return 0;
        }
        if (UnitHasFeature(st_, pos.unit, "ERASE") &&
            (pos.unit != lastUnit_ || pos.section != lastSection_)) {
            Text2Buffer(st_, "\r\n*IProgram: Erasing sector " + std::to_string(pos.section));
            Frame f = EraseSectorFrame(st_, pos.unit, pos.section);
            const int16_t called = detail::CallDriver(t_, pos.unit, f);
            if (called != 0 || f.get(Slot::R15) != 0) {
                Text2Buffer(st_, "\r\n*ERROR: Erase not successful");
                busy.off();
                return -2;
            }
        }
        lastUnit_ = pos.unit;
        lastSection_ = pos.section;
        return 0;
    }

    int programBlock(Busy& busy, int unit, int32_t address) {
        MemoryUnit& u = UnitOf(st_, unit);
        const int32_t buffer = u.driverBufferAddress;
        for (int32_t offset = 0; offset < u.burstSize; ++offset) {
            const int32_t a = address + offset;
            const uint8_t value =
                SelectionsContain(*sel_, a) != 0 ? ReadDumpByte(st_.dump, a) : u.blank;
            detail::StoreBufferByte(st_, buffer + offset, value);
        }
        Frame f = ProgramBlockFrame(st_, unit, address);
        const bool failed = detail::SendBuffer(t_, buffer, u.burstSize) != 0 ||
                            detail::CallDriver(t_, unit, f) != 0 || f.get(Slot::R15) != 0;
        if (failed) {
            Text2Buffer(st_, "\r\n*ERROR: Program not successful");
            busy.off();
            return -2;
        }
        return 0;
    }

    // The progress line, once per KiB of the count.
    void report() {
        if (count_ / 1024 == reportedKiB_) return;
        reportedKiB_ = count_ / 1024;
        Text2Buffer(st_, "\r\n*" + name_ + ": " + std::to_string(count_) + " bytes programmed ");
        st_.host->progress(std::min(count_, total_), total_);
    }

    target::Target& t_;
    ProgramState& st_;
    bool intelligent_;
    std::string name_;
    std::unique_ptr<SelectionList> sel_;
    int64_t count_ = 0;
    int64_t reportedKiB_ = 0;
    int64_t total_ = 0;
    int lastUnit_ = -1;
    int lastSection_ = -1;
    std::optional<int32_t> lastWordline_;
};

}  // namespace

int Program(target::Target& t) {
    return Run(t, false).go();
}
int IProgram(target::Target& t) {
    return Run(t, true).go();
}

}  // namespace vortelm::flash
