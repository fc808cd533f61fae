// The operations on a whole flash device or one of its sectors: erase,
// lock, unlock, protect, unprotect and the status words. Passwords are
// only passed on: the check is the target's, and none is stored or logged.

#include <string>

#include "core/Helpers.h"
#include "core/RunTimeError.h"
#include "core/Text.h"
#include "flash/Common.h"
#include "flash/Flash.h"
#include "image/Selections.h"
#include "target/Target.h"

namespace vortelm::flash {

namespace {

using detail::Busy;
using detail::UnitOf;

// The selection list is kept across an operation whose driver load would
// replace it.
class KeepSelections {
  public:
    explicit KeepSelections(ProgramState& st) : st_(st) { SaveSelections(st_.selections); }
    ~KeepSelections() { RestoreSelections(st_.selections); }
    KeepSelections(const KeepSelections&) = delete;
    KeepSelections& operator=(const KeepSelections&) = delete;

  private:
    ProgramState& st_;
};

// The password into the driver buffer: its characters, then blanks up to
// 8; all characters reach the dump memory, 8 bytes go to the target.
int16_t SendPassword(target::Target& t, int unit, std::string_view password, int32_t& length) {
    const int32_t buffer = UnitOf(t.st, unit).driverBufferAddress;
    const int32_t n =
        std::max<int32_t>(0, std::min<int32_t>(length, static_cast<int32_t>(password.size())));
    for (int32_t i = 0; i < n; ++i)
        detail::StoreBufferByte(t.st, buffer + i,
                                static_cast<uint8_t>(password[static_cast<size_t>(i)]));
    for (int32_t i = n; i < 8; ++i) detail::StoreBufferByte(t.st, buffer + i, ' ');
    length = 8;
    return detail::SendBuffer(t, buffer, 8);
}

// The common frame of the four password operations. 0, or the failure of
// the load (-1) or the driver (-2, with the words of `failed`).
struct PasswordCall {
    int32_t operation;
    const char* loadName;
    int32_t sector;
};

// The call's outcome: 0 success; 1 the exchange failed; 2 the driver
// reported failure; negative: the driver did not load.
int RunPasswordCall(target::Target& t, int unit, const PasswordCall& c, std::string_view password,
                    int32_t& length) {
    ProgramState& st = t.st;
    if (int r = detail::CheckConnectedWithDriverFeatures(st); r != 0) return r;
    Busy busy(st);
    KeepSelections keep(st);
    (void)UnitOf(st, unit);
    if (detail::EnsureDriver(t, busy, c.loadName, unit) != 0) return -1;
    const int16_t sent = SendPassword(t, unit, password, length);
    Frame f = PasswordFrame(st, unit, c.operation, c.sector);
    const int16_t called = detail::CallDriver(t, unit, f);
    if (sent != 0 || called != 0) return 1;
    return f.get(Slot::R15) != 0 ? 2 : 0;
}

}  // namespace

int Erase(target::Target& t, int unit, int32_t sector) {
    ProgramState& st = t.st;
    CheckBound(sector, 128, "section");
    if (int r = detail::CheckConnectedWithDriverFeatures(st); r != 0) return r;
    Busy busy(st);
    KeepSelections keep(st);
    const MemoryUnit& u = UnitOf(st, unit);
    if (detail::EnsureDriver(t, busy, "Erase", unit) != 0) return -1;
    Frame f = EraseSectorFrame(st, unit, sector);
    if (detail::CallDriver(t, unit, f) != 0 || f.get(Slot::R15) != 0) {
        Text2Buffer(st, "\r\n*ERROR: Erase not successful");
        return -2;
    }
    Text2Buffer(st, "\r\n*Erase: Sector " + std::to_string(sector) + " in " + u.name +
                        " successfully erased");
    return 0;
}

int Lock(target::Target& t, int unit, int32_t sector, std::string_view password,
         int32_t& passwordLength) {
    const int r = RunPasswordCall(t, unit, {op::kLock, "Lock", sector}, password, passwordLength);
    if (r < 0) return r;
    if (r != 0) {
        Text2Buffer(t.st, "\r\n*ERROR: Lock not successful");
        return -2;
    }
    Text2Buffer(t.st, "\r\n*Lock: " + UnitOf(t.st, unit).name + " successfully locked");
    return 0;
}

int Unlock(target::Target& t, int unit, int32_t sector, std::string_view password,
           int32_t& passwordLength) {
    const int r =
        RunPasswordCall(t, unit, {op::kUnlock, "Unlock", sector}, password, passwordLength);
    if (r < 0) return r;
    if (r != 0) {
        Text2Buffer(t.st, "\r\n*ERROR: Unlock not successful");
        return -2;
    }
    Text2Buffer(t.st, "\r\n*Unlock: Sector " + std::to_string(sector) + " in " +
                          UnitOf(t.st, unit).name + " successfully unlocked");
    return 0;
}

int Protect(target::Target& t, int unit, std::string_view password, int32_t& passwordLength) {
    const int r = RunPasswordCall(t, unit, {op::kProtect, "Protect", 0}, password, passwordLength);
    if (r < 0) return r;
    if (r != 0) {
        Text2Buffer(t.st, "\r\n*ERROR: Protect not successful");
        return -2;
    }
    Text2Buffer(t.st, "\r\n*Protect: " + UnitOf(t.st, unit).name + " successfully protected");
    return 0;
}

int Unprotect(target::Target& t, int unit, std::string_view password, int32_t& passwordLength) {
    // The load is logged under "Protect", and a failed exchange with the
    // words of Protect: both as the operator has always seen them.
    const int r =
        RunPasswordCall(t, unit, {op::kUnprotect, "Protect", 0}, password, passwordLength);
    if (r < 0) return r;
    if (r == 1) {
        Text2Buffer(t.st, "\r\n*ERROR: Protect not successful");
        return -2;
    }
    if (r == 2) {
        Text2Buffer(t.st, "\r\n*ERROR: Unprotect not successful");
        return -2;
    }
    Text2Buffer(t.st, "\r\n*Unprotect: Read protection of " + UnitOf(t.st, unit).name +
                          " successfully removed");
    return 0;
}

int Status(target::Target& t, int unit, int32_t statusNumber, int32_t& value) {
    ProgramState& st = t.st;
    CheckBound(statusNumber, 20, "status register");
    if (int r = detail::CheckConnectedWithDriverFeatures(st); r != 0) return r;
    Busy busy(st);
    KeepSelections keep(st);
    const MemoryUnit& u = UnitOf(st, unit);
    if (detail::EnsureDriver(t, busy, "Status", unit) != 0) return -1;
    Frame f = ReadStatusFrame(st, unit, statusNumber);
    if (detail::CallDriver(t, unit, f) != 0 || f.get(Slot::R15) != 0) {
        Text2Buffer(st, "\r\n*ERROR: Read Status not successful");
        return -2;
    }
    value = f.get(Slot::R9);
    Text2Buffer(st, "\r\n*Status: Statusword " + std::to_string(statusNumber) + " in " + u.name +
                        " read: " + u.statusRegisters[static_cast<size_t>(statusNumber)].name +
                        "=" + HexText(value, 4));
    return 0;
}

}  // namespace vortelm::flash
