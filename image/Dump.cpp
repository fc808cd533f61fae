#include "image/Dump.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <string>

#include "core/Helpers.h"
#include "core/RunTimeError.h"

namespace vortelm {

namespace {

[[noreturn]] void AddressPastImage(int64_t address) {
    std::string text = address < 0 ? "-" + HexText(static_cast<int32_t>(-address), 1)
                                   : HexText(static_cast<int32_t>(address), 1);
    throw RunTimeError("DumpMemory address " + text + " out of range -FFFF to 100FFFF");
}

// The space of all segments: address space reserved once, touched only where
// a segment is placed, one slot per segment.
constexpr size_t kLargePage = size_t(2) << 20;
constexpr size_t kSlot = sizeof(DumpSegment);
static_assert(kSlot % 4096 == 0, "segments fill whole pages");

struct SegmentSpace {
    SegmentSpace() {
        mappingSize = kSlot * DumpMemory::kSegments + kLargePage;
        mapping = ::mmap(nullptr, mappingSize, PROT_READ | PROT_WRITE,
                         MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (mapping == MAP_FAILED) {
            mapping = nullptr;
            return;
        }
        const auto a = (reinterpret_cast<uintptr_t>(mapping) + kLargePage - 1) & ~(kLargePage - 1);
        base = reinterpret_cast<char*>(a);
    }
    ~SegmentSpace() {
        if (mapping) ::munmap(mapping, mappingSize);
    }
    SegmentSpace(const SegmentSpace&) = delete;
    SegmentSpace& operator=(const SegmentSpace&) = delete;

    void* mapping = nullptr;
    size_t mappingSize = 0;
    char* base = nullptr;  // aligned to a large page
    bool bulkAdvised = false;
};

SegmentSpace* Space(DumpMemory& dump) {
    if (!dump.space) dump.space = std::make_shared<SegmentSpace>();
    return static_cast<SegmentSpace*>(dump.space.get());
}

DumpMemory::SegmentPtr NewSegment(DumpMemory& dump, size_t seg) {
    SegmentSpace* space = Space(dump);
    if (!space->base) return DumpMemory::SegmentPtr(new DumpSegment(), {true});
    // A segment that follows one already there is part of a bulk load: the
    // space from here on may then use large pages, which makes the
    // first touch of many segments much cheaper. Lone segments stay small.
    if (!space->bulkAdvised && seg > 4 && dump.segments[seg - 1]) {
        const auto from =
            reinterpret_cast<uintptr_t>(space->base + seg * kSlot) & ~(kLargePage - 1);
        const auto to = reinterpret_cast<uintptr_t>(space->base + DumpMemory::kSegments * kSlot);
        ::madvise(reinterpret_cast<void*>(from), to - from, MADV_HUGEPAGE);
        space->bulkAdvised = true;
    }
    char* slot = space->base + seg * kSlot;
    return DumpMemory::SegmentPtr(::new (slot) DumpSegment(), {false});
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
    auto& s = Touch(dump, address).status[Offset(address)];
    if (flag == kTrue)
        s = static_cast<uint8_t>(s | mark);
    else
        s = static_cast<uint8_t>(s & ~mark);
}

int16_t HasMark(DumpMemory& dump, int32_t address, uint8_t mark) {
    return (Touch(dump, address).status[Offset(address)] & mark) ? kTrue : kFalse;
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

void ApplyMarks(uint8_t* status, size_t n, MarkChange marks) {
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
                     std::memcpy(seg.data.data() + off, bytes.data() + pos, len);
                     ApplyMarks(seg.status.data() + off, len, marks);
                 });
}

void FillDumpBlock(DumpMemory& dump, int32_t address, int64_t count, uint8_t value,
                   MarkChange marks) {
    if (count <= 0) return;
    ForEachPiece(dump, address, count, [&](DumpSegment& seg, uint32_t off, size_t len, size_t) {
        std::memset(seg.data.data() + off, value, len);
        ApplyMarks(seg.status.data() + off, len, marks);
    });
}

void ReadDumpBlock(DumpMemory& dump, int32_t address, std::span<uint8_t> values,
                   std::span<uint8_t> status) {
    ForEachPiece(dump, address, static_cast<int64_t>(values.size()),
                 [&](DumpSegment& seg, uint32_t off, size_t len, size_t pos) {
                     std::memcpy(values.data() + pos, seg.data.data() + off, len);
                     if (pos + len <= status.size())
                         std::memcpy(status.data() + pos, seg.status.data() + off, len);
                 });
}

void MarkDumpBlock(DumpMemory& dump, int32_t address, int64_t count, MarkChange marks) {
    if (count <= 0) return;
    ForEachPiece(dump, address, count, [&](DumpSegment& seg, uint32_t off, size_t len, size_t) {
        ApplyMarks(seg.status.data() + off, len, marks);
    });
}

void VisitDumpBlock(DumpMemory& dump, int32_t address, int64_t count,
                    const std::function<void(const uint8_t*, const uint8_t*, size_t)>& fn) {
    if (count <= 0) return;
    ForEachPiece(dump, address, count, [&](DumpSegment& seg, uint32_t off, size_t len, size_t) {
        fn(seg.data.data() + off, seg.status.data() + off, len);
    });
}

DumpRun FindMarkedRun(DumpMemory& dump, int32_t from, int32_t to, uint8_t marks) {
    DumpRun run;
    int64_t a = from;
    while (a <= to) {
        DumpSegment& seg = Touch(dump, a);
        const uint32_t off = Offset(a);
        const int64_t len = std::min<int64_t>(int64_t(to) - a + 1, 65536 - off);
        const uint8_t* s = seg.status.data() + off;
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
