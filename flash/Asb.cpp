// The assembly buffer of the flash module, filled through the driver, and
// the two word-wise dump operations of flash test work.

#include <cmath>
#include <string>

#include "core/Bits.h"
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

constexpr int32_t kClearStatusAddress = 0xC000AA;
constexpr int32_t kClearStatusValue = 0xF5;

// A random byte: a number below 1 times 255, rounded.
uint8_t RandomByte(ProgramState& st) {
    return static_cast<uint8_t>(std::lround(st.host->random() * 255.0));
}

// A step below 1 would never reach the end of a selection.
void CheckStep(int32_t step) {
    if (step < 1) throw RunTimeError("step " + std::to_string(step) + " below 1");
}

}  // namespace

int WriteAsb(target::Target& t, int32_t mode, int32_t value, int32_t count) {
    ProgramState& st = t.st;
    if (int r = detail::CheckConnectedWithDriverFeatures(st); r != 0) return r;
    Busy busy(st);
    const auto& sel = st.selections;
    if ((mode != asb::kSelection && count < 2) || (mode == asb::kSelection && sel.count < 1)) {
        Text2Buffer(st, "\r\n*ERROR: Please select at least 2 bytes ");
        return -102;
    }
    const int unit = FirstIFlashUnit(st);
    if (unit < 0) {
        Text2Buffer(st, "\r\n*ERROR: No internal flash configured");
        return -1;
    }
    {
        // the load replaces the selection list; the selection is its data
        SaveSelections(st.selections);
        const int r = detail::EnsureDriver(t, busy, "Program", unit);
        RestoreSelections(st.selections);
        if (r != 0) return -1;
    }
    const MemoryUnit& u = UnitOf(st, unit);
    const int32_t buffer = u.driverBufferAddress;
    int32_t bytes = 0;
    int32_t address = u.sections[0].ranges[0].startAddress;
    switch (mode) {
        case asb::kSelection: {
            address = sel.start[0];
            bytes = static_cast<int32_t>((int64_t{sel.end[0]} - sel.start[0] + 1) & ~int64_t{1});
            for (int32_t i = 0; i < bytes; ++i) {
                const int32_t a = address + i;
                detail::StoreBufferByte(
                    st, buffer + i,
                    SelectionsContain(sel, a) != 0 ? ReadDumpByte(st.dump, a) : u.blank);
            }
            break;
        }
        case asb::kRandomBytes:
        case asb::kByte:
            bytes = count & ~1;
            for (int32_t i = 0; i < bytes; ++i)
                detail::StoreBufferByte(
                    st, buffer + i,
                    mode == asb::kByte ? static_cast<uint8_t>(value & 0xFF) : RandomByte(st));
            break;
        case asb::kRandomWords:
        case asb::kWord:
            bytes = count & ~1;
            for (int32_t i = 0; i + 1 < bytes; i += 2) {
                uint8_t lo = static_cast<uint8_t>(value & 0xFF);
                uint8_t hi = static_cast<uint8_t>((value >> 8) & 0xFF);
                if (mode == asb::kRandomWords) {
                    lo = RandomByte(st);
                    hi = RandomByte(st);
                }
                detail::StoreBufferByte(st, buffer + i, lo);
                detail::StoreBufferByte(st, buffer + i + 1, hi);
            }
            break;
        default:
            Text2Buffer(st, "\r\nError: unknown asm write mode " + std::to_string(mode));
            return -1;
    }
    if (bytes < 2) {
        Text2Buffer(st, "\r\n*ERROR: Please select at least 2 bytes ");
        return -102;
    }
    Frame f = WriteAssemblyBufferFrame(st, unit, bytes, address);
    if (detail::SendBuffer(t, buffer, bytes) != 0 || detail::CallDriver(t, unit, f) != 0 ||
        f.get(Slot::R15) != 0) {
        Text2Buffer(st, "\r\n*ERROR: Write ASB buffer not successful");
        return -2;
    }
    Text2Buffer(
        st, "\r\n*writeAsbPage:" + std::to_string(bytes) + " bytes successfully written to ASB");
    return 0;
}

int DumpMemEcc(target::Target& t, int32_t address, int32_t dummyRead, int32_t clearStatus,
               int32_t step) {
    ProgramState& st = t.st;
    CheckStep(step);
    if (int r = target::CheckPreconditions(st, "READBLOCK"); r != 0) return r;
    Busy busy(st);
    link::Monitor mon(st, t.port);
    const auto& sel = st.selections;
    int result = 0;
    for (int i = 0; i < sel.count && result == 0; ++i) {
        for (int64_t a = sel.start[static_cast<size_t>(i)]; a <= sel.end[static_cast<size_t>(i)];
             a += step) {
            const auto dumpAddress = static_cast<int32_t>(a);
            // a read at the dump position first puts the read path into
            // the row under test
            if (dummyRead == 1) (void)mon.Cmd_ReadWord_Value(dumpAddress);
            const int32_t word = mon.Cmd_ReadWord_Value(address);
            if (word < 0) {
                Text2Buffer(st, "\r\n*ERROR: no data received");
                result = -1;
                break;
            }
            if (clearStatus == 1) (void)mon.Cmd_WriteWord(kClearStatusAddress, kClearStatusValue);
            for (int32_t k = 0; k < 2; ++k) {
                SetDefined(st.dump, dumpAddress + k, kTrue);
                WriteDumpByte(st.dump, dumpAddress + k,
                              static_cast<uint8_t>((word >> (8 * k)) & 0xFF));
                SetValid(st.dump, dumpAddress + k, kFalse);
            }
        }
    }
    st.host->refreshMemory();
    return result;
}

int DumpModify(ProgramState& st, int32_t xorMask, int32_t andMask, int32_t orMask, int32_t rotate,
               int32_t step) {
    CheckStep(step);
    Busy busy(st);
    const auto& sel = st.selections;
    for (int i = 0; i < sel.count; ++i) {
        for (int64_t a = sel.start[static_cast<size_t>(i)]; a <= sel.end[static_cast<size_t>(i)];
             a += step) {
            const auto address = static_cast<int32_t>(a);
            const int32_t word = ReadDumpWord(st.dump, address);
            int32_t changed = ((word ^ xorMask) & andMask) | orMask;
            changed = RotateRight(changed, rotate, true, 16);
            WriteDumpWord(st.dump, address, static_cast<uint16_t>(changed));
        }
    }
    st.host->refreshMemory();
    return 0;
}

}  // namespace vortelm::flash
