#include <array>

#include "core/BusyScope.h"
#include "core/Helpers.h"
#include "core/Host.h"
#include "core/RunTimeError.h"
#include "core/SafeFile.h"
#include "core/Text.h"
#include "link/ComPort.h"
#include "link/DumpIo.h"
#include "link/Monitor.h"
#include "target/Target.h"

namespace vortelm::target {

namespace {

namespace dio = link::dumpio;

constexpr int32_t kBurst = 1024;

std::string Count(int64_t n) {
    return " " + std::to_string(n);
}

// Bytes of all selections (or of one), for the progress bar.
int64_t SelectedBytes(const SelectionList& sel, int first, int last) {
    int64_t n = 0;
    for (int i = first; i <= last; ++i) n += int64_t{sel.end[i]} - sel.start[i] + 1;
    return n;
}

// The walk over the selections first to last in bursts of 1024 bytes; the
// last burst of a selection is cut to fit. transfer(a, burst) gives 0 to go
// on; anything else ends the walk with that value.
template <typename Fn>
int WalkBursts(const SelectionList& sel, int first, int last, Fn transfer) {
    for (int i = first; i <= last; ++i) {
        const int32_t s = sel.start[i];
        const int32_t e = sel.end[i];
        int32_t a = s;
        int32_t burst = kBurst;
        while (a <= e) {
            if (a + burst >= e) burst = e - a + 1;
            if (int r = transfer(a, burst); r != 0) return r;
            a += burst;
        }
    }
    return 0;
}

}  // namespace

int download(Target& t) {
    ProgramState& st = t.st;
    if (int r = CheckPreconditions(st, "WRITEBLOCK"); r != 0) return r;
    BusyScope busy(st);
    link::Monitor mon(st, t.port);
    const auto& sel = st.selections;
    const int64_t all = SelectedBytes(sel, 0, sel.count - 1);
    int64_t total = 0;
    const int r = WalkBursts(sel, 0, sel.count - 1, [&](int32_t a, int32_t burst) {
        if (mon.Cmd_Write(a, burst) != 0) return -1;
        total += burst;
        Text2Buffer(st, "*Download: " + Count(total) + " bytes \r\n");
        st.host->progress(total, all);
        return 0;
    });
    st.host->progress(0, 0);
    if (r != 0) {
        Text2Buffer(st, "\r\n*ERROR: download not successful");
        return -1;
    }
    st.host->refreshMemory();
    return 0;
}

int upload(Target& t, int32_t selectionIndex) {
    ProgramState& st = t.st;
    if (int r = CheckPreconditions(st, "READBLOCK"); r != 0) return r;
    const auto& sel = st.selections;
    int first = 0;
    int last = sel.count - 1;
    if (selectionIndex != -1) {
        if (selectionIndex < 0 || selectionIndex >= sel.count) return 0;
        first = last = selectionIndex;
    }
    BusyScope busy(st);
    link::Monitor mon(st, t.port);
    const int64_t all = SelectedBytes(sel, first, last);
    int64_t total = 0;
    const int r = WalkBursts(sel, first, last, [&](int32_t a, int32_t burst) {
        if (mon.Cmd_Read(a, burst) != 0) return -1;
        total += burst;
        Text2Buffer(st, "*Upload: " + Count(total) + " bytes \r\n");
        st.host->progress(total, all);
        return 0;
    });
    st.host->progress(0, 0);
    if (r != 0) {
        Text2Buffer(st, "\r\n*ERROR: no data received");
        return -1;
    }
    st.host->refreshMemory();
    return 0;
}

int compare(Target& t, std::string_view logFileName) {
    ProgramState& st = t.st;
    if (int r = CheckPreconditions(st, "READBLOCK"); r != 0) return r;
    st.host->setBusy(true);
    // The report to a file is gathered here and replaces the old file in one
    // step when the compare ends, however it ends.
    std::string file;
    const bool toFile = !logFileName.empty();
    auto writeReport = [&]() {
        if (!toFile) return;
        const std::string resolved = ResolveInProgramFolder(st, logFileName);
        if (const SafeWriteResult w = ReplaceFile(NativePath(resolved), file); !w.ok)
            Text2Buffer(
                st, "\r\n*ERROR: file " + resolved + " cannot be opened for writing: " + w.reason);
    };
    link::Monitor mon(st, t.port);
    const auto& sel = st.selections;
    const int64_t all = SelectedBytes(sel, 0, sel.count - 1);
    int64_t total = 0;
    int64_t different = 0;
    std::array<uint8_t, kBurst + 1> saved{};
    // 1 a failed read, 2 the operator's abort
    const int r = WalkBursts(sel, 0, sel.count - 1, [&](int32_t a, int32_t burst) {
        // burst is at most 1025: a selection's last burst may take one more
        CheckBound(burst - 1, kBurst, "compare buffer");
        for (int32_t i = 0; i < burst; ++i)
            saved[static_cast<size_t>(i)] = dio::Read(st.dump, a + i);
        if (mon.Cmd_Read(a, burst) != 0) return 1;
        for (int32_t i = 0; i < burst; ++i) {
            const uint8_t expected = saved[static_cast<size_t>(i)];
            const uint8_t found = dio::Read(st.dump, a + i);
            if (expected == found) continue;
            ++different;
            const std::string line = "Comparison at address " + HexText(a + i, 6) +
                                     " expected: " + HexText(expected, 2) +
                                     " found: " + HexText(found, 2);
            if (toFile)
                file += line + "\n";
            else
                Text2Buffer(st, "*" + line + "\r\n");
            dio::Write(st.dump, a + i, expected);
            dio::SetMark(st.dump, a + i, dio::kValid, false);
        }
        total += burst;
        Text2Buffer(st, "*Compare: " + Count(total) + " bytes \r\n");
        st.host->progress(total, all);
        if (st.scriptAbort == 1) return 2;
        return 0;
    });
    st.host->progress(0, 0);
    if (r == 1) {
        Text2Buffer(st, "\r\n*ERROR: no data received while comparing");
        writeReport();
        st.host->setBusy(false);
        return -1;
    }
    if (r == 2) {
        Text2Buffer(st, "\r\n*command aborted");
        writeReport();
        st.host->setBusy(false);
        st.scriptAbort = 0;
        return 0;
    }
    const std::string summary = "*Comparison: " + Count(total - different) + " Bytes OK - " +
                                Count(different) + " Bytes different";
    if (toFile) {
        file += summary.substr(1) + "\n";
        writeReport();
    } else {
        Text2Buffer(st, summary + "\r\n");
    }
    st.host->refreshMemory();
    st.host->setBusy(false);
    return static_cast<int>(different);
}

namespace {

// Walks the selections in steps of the width and folds each value in.
template <typename Fold>
void WalkValues(ProgramState& st, int widthBytes, Fold fold) {
    const auto& sel = st.selections;
    for (int i = 0; i < sel.count; ++i)
        for (int64_t a = sel.start[i]; a <= sel.end[i]; a += widthBytes) {
            const auto adr = static_cast<int32_t>(a);
            if (widthBytes == 1) {
                fold(dio::Read(st.dump, adr));
            } else {
                // the word of the even address at or below a
                const int32_t even = adr & ~1;
                fold(dio::Read(st.dump, even) + dio::Read(st.dump, even + 1) * 256);
            }
        }
}

void ReportChecksum(ProgramState& st, int64_t sum, int widthBytes) {
    Text2Buffer(st, "*Checksum: " + HexText(static_cast<int32_t>(sum), 2 * widthBytes) + "  \r\n");
    st.host->refreshMemory();
    st.host->setBusy(false);
}

}  // namespace

int xorChecksum(ProgramState& st, int widthBytes) {
    st.host->setBusy(true);
    int64_t sum = 0;
    WalkValues(st, widthBytes, [&](int64_t v) { sum ^= v; });
    ReportChecksum(st, sum, widthBytes);
    return 0;
}

int addcChecksum(ProgramState& st, int widthBytes, int lastCarry) {
    st.host->setBusy(true);
    const int64_t modulus = widthBytes == 1 ? 256 : 65536;
    int64_t sum = 0;
    int64_t carry = 0;
    WalkValues(st, widthBytes, [&](int64_t v) {
        const int64_t t = sum + v + carry;
        sum = t % modulus;
        carry = t / modulus;
    });
    if (lastCarry == 1) sum += carry;
    ReportChecksum(st, sum, widthBytes);
    return 0;
}

}  // namespace vortelm::target
