#include "image/Dump.h"

#include <algorithm>
#include <bitset>
#include <cstring>
#include <new>
#include <string>

#include "core/Helpers.h"
#include "core/RunTimeError.h"
#include "image/FreshPages.h"

namespace vortelm {

namespace {

[[noreturn]] void AddressPastImage(int64_t address) {
    std::string text = address < 0 ? "-" + HexText(static_cast<int32_t>(-address), 1)
                                   : HexText(static_cast<int32_t>(address), 1);
    throw RunTimeError("DumpMemory address " + text + " out of range -FFFF to 100FFFF");
}

// The space of all segments: address space reserved once, touched only where
// a segment's bytes are placed. The values of segment i lie at
// values + i * 64 KiB, its status bytes one region further on, so that a
// load that touches values only never has the kernel clear status pages.
constexpr size_t kSegmentBytes = 65536;
constexpr size_t kRegion = kSegmentBytes * DumpMemory::kSegments;

struct SegmentSpace {
    SegmentSpace() {
        try {
            pages = FreshPages(2 * kRegion, false);
        } catch (const std::bad_alloc&) {
            // No space to reserve: the segments then live on the heap.
        }
    }

    // A slot that held bytes before (the image was initialised again since)
    // is cleared when it is placed again; a fresh one is zero already.
    uint8_t* place(size_t slot, size_t region, std::bitset<DumpMemory::kSegments>& used) {
        uint8_t* p = values() + region * kRegion + slot * kSegmentBytes;
        if (used.test(slot)) std::memset(p, 0, kSegmentBytes);
        used.set(slot);
        return p;
    }

    // The values' region, then the status bytes' region; null when the
    // space could not be reserved.
    [[nodiscard]] uint8_t* values() const { return pages.data(); }

    FreshPages pages;
    bool bulkAdvised = false;
    std::bitset<DumpMemory::kSegments> valuesUsed;
    std::bitset<DumpMemory::kSegments> statusUsed;
};

SegmentSpace* Space(DumpMemory& dump) {
    if (!dump.space) dump.space = std::make_shared<SegmentSpace>();
    return static_cast<SegmentSpace*>(dump.space.get());
}

std::unique_ptr<DumpSegment> NewSegment(DumpMemory& dump, size_t seg) {
    auto s = std::make_unique<DumpSegment>();
    SegmentSpace* space = Space(dump);
    if (!space->values()) {
        s->heapData = std::make_unique<uint8_t[]>(kSegmentBytes);
        s->data = s->heapData.get();
        return s;
    }
    // A segment that follows one already there is part of a bulk load: the
    // values from here on may then use large pages, which makes the first
    // touch of many segments much cheaper. Lone segments stay small.
    if (!space->bulkAdvised && seg > 4 && dump.segments[seg - 1]) {
        space->pages.useLargePages(seg * kSegmentBytes, kRegion);
        space->bulkAdvised = true;
    }
    s->data = space->place(seg, 0, space->valuesUsed);
    return s;
}

// The status bytes of a segment, placed (with the uniform value in every
// byte) on the first change that leaves them not all equal.
uint8_t* PlacedStatus(DumpMemory& dump, DumpSegment& s) {
    if (s.status) return s.status;
    SegmentSpace* space = Space(dump);
    if (!space->values()) {
        try {
            s.heapStatus = std::make_unique<uint8_t[]>(kSegmentBytes);
        } catch (const std::bad_alloc&) {
            throw RunTimeError("DumpMemory status bytes out of memory");
        }
        s.status = s.heapStatus.get();
    } else {
        const auto slot = static_cast<size_t>(s.data - space->values()) / kSegmentBytes;
        s.status = space->place(slot, 1, space->statusUsed);
    }
    if (s.uniformStatus != 0) std::memset(s.status, s.uniformStatus, kSegmentBytes);
    return s.status;
}

uint8_t StatusAt(const DumpSegment& s, uint32_t offset) {
    return s.status ? s.status[offset] : s.uniformStatus;
}

// The access step: segment of the address (allocated on touch) and offset.
DumpSegment& Touch(DumpMemory& dump, int64_t address) {
    if (address < kDumpLowestAddress || address >= kDumpEndAddress) AddressPastImage(address);
    const auto seg = static_cast<size_t>(address / 65536);  // truncates towards zero
    auto& p = dump.segments[seg];
    if (!p) {
        try {
            p = NewSegment(dump, seg);
        } catch (const std::bad_alloc&) {
            throw RunTimeError("DumpMemory segment " + std::to_string(seg) + " out of memory");
        }
    }
    return *p;
}

constexpr uint32_t Offset(int64_t address) {
    return static_cast<uint32_t>(address) & 0xFFFFu;
}

void SetMark(DumpMemory& dump, int32_t address, int16_t flag, uint8_t mark) {
    DumpSegment& seg = Touch(dump, address);
    const uint8_t old = StatusAt(seg, Offset(address));
    const auto now = static_cast<uint8_t>(flag == kTrue ? old | mark : old & ~mark);
    if (now != old) PlacedStatus(dump, seg)[Offset(address)] = now;
}

int16_t HasMark(DumpMemory& dump, int32_t address, uint8_t mark) {
    return (StatusAt(Touch(dump, address), Offset(address)) & mark) ? kTrue : kFalse;
}

// Walks address .. address+count-1 in pieces that lie in one segment with
// rising offsets; fn(segment, offset, length, position in the range).
template <class Fn>
void ForEachPiece(DumpMemory& dump, int64_t address, int64_t count, Fn&& fn) {
    int64_t done = 0;
    while (done < count) {
        const int64_t a = address + done;
        DumpSegment& seg = Touch(dump, a);
        const uint32_t off = Offset(a);
        const int64_t len = std::min<int64_t>(count - done, 65536 - off);
        fn(seg, off, static_cast<size_t>(len), static_cast<size_t>(done));
        done += len;
    }
}

void ApplyMarksTo(uint8_t* status, size_t n, MarkChange marks) {
    const auto keep = static_cast<uint8_t>(~marks.clear);
    // Eight status bytes at a time: a load loses a byte-wise loop's time
    // here on every byte it reads.
    constexpr uint64_t kEach = 0x0101010101010101ull;
    const uint64_t set8 = kEach * marks.set;
    const uint64_t keep8 = kEach * keep;
    size_t i = 0;
    for (; i + 8 <= n; i += 8) {
        uint64_t w = 0;
        std::memcpy(&w, status + i, 8);
        w = (w | set8) & keep8;
        std::memcpy(status + i, &w, 8);
    }
    for (; i < n; ++i) status[i] = static_cast<uint8_t>((status[i] | marks.set) & keep);
}

// Changes the marks of len status bytes of a segment from off on. Status
// bytes that are all equal stay so when the change covers the segment or
// changes nothing.
void ApplyMarks(DumpMemory& dump, DumpSegment& seg, uint32_t off, size_t len, MarkChange marks) {
    if (!seg.status) {
        const auto now = static_cast<uint8_t>((seg.uniformStatus | marks.set) & ~marks.clear);
        if (now == seg.uniformStatus) return;
        if (len == kSegmentBytes) {
            seg.uniformStatus = now;
            return;
        }
    }
    ApplyMarksTo(PlacedStatus(dump, seg) + off, len, marks);
}

}  // namespace

void InitDumpMemory(DumpMemory& dump) {
    for (int i = 0; i <= 255; ++i) dump.segments[i].reset();
    for (int i = 0; i <= 3; ++i) (void)Touch(dump, int64_t(i) * 65536);
}

void WriteDumpByte(DumpMemory& dump, int32_t address, uint8_t value) {
    Touch(dump, address).data[Offset(address)] = value;
}
uint8_t ReadDumpByte(DumpMemory& dump, int32_t address) {
    return Touch(dump, address).data[Offset(address)];
}
uint16_t ReadDumpWord(DumpMemory& dump, int32_t address) {
    return static_cast<uint16_t>(ReadDumpByte(dump, address) |
                                 (ReadDumpByte(dump, address + 1) << 8));
}
void WriteDumpWord(DumpMemory& dump, int32_t address, uint16_t value) {
    WriteDumpByte(dump, address, static_cast<uint8_t>(value & 0xFF));
    WriteDumpByte(dump, address + 1, static_cast<uint8_t>(value >> 8));
}
void SetDefined(DumpMemory& dump, int32_t address, int16_t flag) {
    SetMark(dump, address, flag, kMarkDefined);
}
void SetMonitorMark(DumpMemory& dump, int32_t address, int16_t flag) {
    SetMark(dump, address, flag, kMarkMonitor);
}
void SetValid(DumpMemory& dump, int32_t address, int16_t flag) {
    SetMark(dump, address, flag, kMarkValid);
}
int16_t IsDefined(DumpMemory& dump, int32_t address) {
    return HasMark(dump, address, kMarkDefined);
}
int16_t IsMonitorMark(DumpMemory& dump, int32_t address) {
    return HasMark(dump, address, kMarkMonitor);
}
int16_t IsValid(DumpMemory& dump, int32_t address) {
    return HasMark(dump, address, kMarkValid);
}

bool IsSegmentAllocated(const DumpMemory& dump, int segment) {
    return segment >= 0 && segment < DumpMemory::kSegments && dump.segments[segment] != nullptr;
}

void WriteDumpBlock(DumpMemory& dump, int32_t address, std::span<const uint8_t> bytes,
                    MarkChange marks) {
    ForEachPiece(dump, address, static_cast<int64_t>(bytes.size()),
                 [&](DumpSegment& seg, uint32_t off, size_t len, size_t pos) {
                     std::memcpy(seg.data + off, bytes.data() + pos, len);
                     ApplyMarks(dump, seg, off, len, marks);
                 });
}

void FillDumpBlock(DumpMemory& dump, int32_t address, int64_t count, uint8_t value,
                   MarkChange marks) {
    if (count <= 0) return;
    ForEachPiece(dump, address, count, [&](DumpSegment& seg, uint32_t off, size_t len, size_t) {
        std::memset(seg.data + off, value, len);
        ApplyMarks(dump, seg, off, len, marks);
    });
}

void ReadDumpBlock(DumpMemory& dump, int32_t address, std::span<uint8_t> values,
                   std::span<uint8_t> status) {
    ForEachPiece(dump, address, static_cast<int64_t>(values.size()),
                 [&](DumpSegment& seg, uint32_t off, size_t len, size_t pos) {
                     std::memcpy(values.data() + pos, seg.data + off, len);
                     if (pos + len > status.size()) return;
                     if (seg.status)
                         std::memcpy(status.data() + pos, seg.status + off, len);
                     else
                         std::memset(status.data() + pos, seg.uniformStatus, len);
                 });
}

void MarkDumpBlock(DumpMemory& dump, int32_t address, int64_t count, MarkChange marks) {
    if (count <= 0) return;
    ForEachPiece(dump, address, count, [&](DumpSegment& seg, uint32_t off, size_t len, size_t) {
        ApplyMarks(dump, seg, off, len, marks);
    });
}

void VisitDumpBlock(DumpMemory& dump, int32_t address, int64_t count,
                    const std::function<void(const DumpPiece&)>& fn) {
    if (count <= 0) return;
    ForEachPiece(dump, address, count, [&](DumpSegment& seg, uint32_t off, size_t len, size_t) {
        fn({seg.data + off, seg.status ? seg.status + off : nullptr, seg.uniformStatus, len});
    });
}

DumpRun FindMarkedRun(DumpMemory& dump, int32_t from, int32_t to, uint8_t marks) {
    DumpRun run;
    int64_t a = from;
    while (a <= to) {
        DumpSegment& seg = Touch(dump, a);
        const uint32_t off = Offset(a);
        const int64_t len = std::min<int64_t>(int64_t(to) - a + 1, 65536 - off);
        if (!seg.status) {
            // All status bytes of the segment alike: the piece is one run or none.
            const bool marked = (seg.uniformStatus & marks) != 0;
            if (marked && !run.found) {
                run.found = true;
                run.first = static_cast<int32_t>(a);
            }
            if (run.found) {
                if (!marked) break;
                run.last = static_cast<int32_t>(a + len - 1);
            }
            a += len;
            continue;
        }
        const uint8_t* s = seg.status + off;
        int64_t i = 0;
        if (!run.found) {
            while (i < len && !(s[i] & marks)) ++i;
            if (i < len) {
                run.found = true;
                run.first = static_cast<int32_t>(a + i);
            }
        }
        if (run.found) {
            while (i < len && (s[i] & marks)) ++i;
            run.last = static_cast<int32_t>(a + i - 1);
            if (i < len) break;
        }
        a += len;
    }
    return run;
}

}  // namespace vortelm
