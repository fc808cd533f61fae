// Rows of the flash group: program and intelligent program, erase, lock,
// unlock, protect, unprotect, status, the assembly buffer and the two dump
// operations of flash test work.

#include <string>

#include "core/Helpers.h"
#include "core/Text.h"
#include "flash/Flash.h"
#include "shell/ImageRowArgs.h"
#include "shell/Rows.h"
#include "target/Target.h"

namespace vortelm::shell {

namespace {

using namespace rowargs;

// An argument by variable, else its parsed value.
int32_t VariableOr(const Session& s, int i, int32_t parsed) {
    const ParsedParameter& p = s.parsedParameters[static_cast<size_t>(i)];
    return p.isVariable != 0 ? VariableValue(s, p.variable) : parsed;
}
int32_t VariableOrHex24(const Session& s, int i) {
    return VariableOr(s, i, s.parsedParameters[static_cast<size_t>(i)].hex24);
}
int32_t VariableOrHex16(const Session& s, int i) {
    return VariableOr(s, i, s.parsedParameters[static_cast<size_t>(i)].hex16);
}
bool Given(const Session& s, int i) {
    return s.parsedParameterCount > i;
}

int Device(const Session& s) {
    return s.parsedParameters[0].memDevice;
}
const std::string& Password(const Session& s) {
    return s.parsedParameters[1].text;
}

RowResult IProgramRow(Session& s) {
    auto* t = TargetOf(s);
    return t ? Passed(flash::IProgram(*t)) : RowResult{0, true};
}

RowResult ProgramRow(Session& s) {
    auto* t = TargetOf(s);
    return t ? Passed(flash::Program(*t)) : RowResult{0, true};
}

RowResult EraseRow(Session& s) {
    const int32_t sector = Decimal(s, 1);
    auto* t = TargetOf(s);
    return t ? Passed(flash::Erase(*t, Device(s), sector)) : RowResult{0, true};
}

RowResult StatusRow(Session& s) {
    auto* t = TargetOf(s);
    if (t == nullptr) return {0, true};
    const int unit = Device(s);
    bool failed = false;
    const int n = s.st.memoryUnits[static_cast<size_t>(unit)].statusRegisterCount;
    for (int i = 0; i < n; ++i) {
        int32_t value = 0;
        if (flash::Status(*t, unit, i, value) != 0) failed = true;
    }
    return {0, failed};
}

RowResult ProtectRow(Session& s) {
    auto* t = TargetOf(s);
    if (t == nullptr) return {0, true};
    auto length = static_cast<int32_t>(Password(s).size());
    return Passed(flash::Protect(*t, Device(s), Password(s), length));
}

RowResult UnprotectRow(Session& s) {
    auto* t = TargetOf(s);
    if (t == nullptr) return {0, true};
    auto length = static_cast<int32_t>(Password(s).size());
    return Passed(flash::Unprotect(*t, Device(s), Password(s), length));
}

// Lock or unlock one sector, or every section of the unit in turn, going
// on after a failure.
template <typename Op>
RowResult PerSector(Session& s, Op op) {
    auto* t = TargetOf(s);
    if (t == nullptr) return {0, true};
    const int unit = Device(s);
    if (Given(s, 2)) {
        auto length = static_cast<int32_t>(Password(s).size());
        return Passed(op(*t, unit, Decimal(s, 2), Password(s), length));
    }
    bool failed = false;
    const int n = s.st.memoryUnits[static_cast<size_t>(unit)].sectionCount;
    for (int i = 0; i < n; ++i) {
        auto length = static_cast<int32_t>(Password(s).size());
        if (op(*t, unit, i, Password(s), length) != 0) failed = true;
    }
    return {0, failed};
}

RowResult LockRow(Session& s) {
    return PerSector(s, &flash::Lock);
}
RowResult UnlockRow(Session& s) {
    return PerSector(s, &flash::Unlock);
}

RowResult DumpMemEccRow(Session& s) {
    const int32_t address = VariableOrHex24(s, 0);
    const int32_t dummyRead = Given(s, 1) ? ByVariableOrDecimal(s, 1) : 0;
    const int32_t clearStatus = Given(s, 2) ? ByVariableOrDecimal(s, 2) : 0;
    const int32_t step = Given(s, 3) ? VariableOrHex24(s, 3) : 2;
    auto* t = TargetOf(s);
    return t ? Passed(flash::DumpMemEcc(*t, address, dummyRead, clearStatus, step))
             : RowResult{0, true};
}

RowResult DumpModifyRow(Session& s) {
    const int32_t xorMask = VariableOrHex16(s, 0);
    const int32_t andMask = VariableOrHex16(s, 1);
    const int32_t orMask = VariableOrHex16(s, 2);
    const int32_t rotate = Given(s, 3) ? ByVariableOrDecimal(s, 3) : 0;
    const int32_t step = Given(s, 4) ? VariableOrHex24(s, 4) : 2;
    return Passed(flash::DumpModify(s.st, xorMask, andMask, orMask, rotate, step));
}

RowResult DownloadToAsbRow(Session& s) {
    auto* t = TargetOf(s);
    return t ? Passed(flash::WriteAsb(*t, flash::asb::kSelection, 0, 0)) : RowResult{0, true};
}

// _loadasb_byte and _loadasb_word: a variable, the random word, or a value.
RowResult LoadAsb(Session& s, std::string_view randomWord, int32_t randomMode, int32_t valueMode,
                  bool word) {
    const ParsedParameter& first = s.parsedParameters[0];
    int32_t mode = valueMode;
    int32_t value = word ? first.hex16 : first.hex8;
    if (first.isVariable != 0) {
        value = VariableValue(s, first.variable);
    } else if (UpperCase(first.text) == randomWord) {
        mode = randomMode;
        value = 0;
    }
    const int32_t count = Given(s, 1) ? s.parsedParameters[1].hex8 : 0x80;
    auto* t = TargetOf(s);
    return t ? Passed(flash::WriteAsb(*t, mode, value, count)) : RowResult{0, true};
}

RowResult LoadAsbByteRow(Session& s) {
    return LoadAsb(s, "RND8", flash::asb::kRandomBytes, flash::asb::kByte, false);
}
RowResult LoadAsbWordRow(Session& s) {
    return LoadAsb(s, "RND16", flash::asb::kRandomWords, flash::asb::kWord, true);
}

constexpr RowBinding kRows[] = {
    {"_iprogram", &IProgramRow},
    {"_program", &ProgramRow},
    {"_erase", &EraseRow},
    {"_status", &StatusRow},
    {"_protect", &ProtectRow},
    {"_unprotect", &UnprotectRow},
    {"_lock", &LockRow},
    {"_unlock", &UnlockRow},
    {"_dumpmemecc", &DumpMemEccRow},
    {"_dumpmodify", &DumpModifyRow},
    {"_downloadtoasb", &DownloadToAsbRow},
    {"_loadasb_byte", &LoadAsbByteRow},
    {"_loadasb_word", &LoadAsbWordRow},
};

}  // namespace

std::span<const RowBinding> FlashRows() {
    return kRows;
}

}  // namespace vortelm::shell
