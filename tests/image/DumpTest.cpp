#include <gtest/gtest.h>

#include <array>
#include <random>
#include <vector>

#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "image/Dump.h"

namespace vortelm {
namespace {

struct Fresh {
    Fresh() { InitDumpMemory(st.dump); }
    ProgramState st;
};

TEST(Dump, AfterStartUpNothingIsDefinedAndBytesAreZero) {
    Fresh f;
    for (int32_t a : {0, 1, 0x3FFFF, 0x40000, 0x123456, 0xFFFFFF, 0x100FFFF}) {
        EXPECT_EQ(IsDefined(f.st.dump, a), kFalse) << a;
        EXPECT_EQ(ReadDumpByte(f.st.dump, a), 0) << a;
        EXPECT_EQ(IsValid(f.st.dump, a), kFalse) << a;
        EXPECT_EQ(IsMonitorMark(f.st.dump, a), kFalse) << a;
    }
}

TEST(Dump, WordsAreLowByteFirstAcrossASegmentAndLeaveTheMarks) {
    Fresh f;
    const int32_t edge = 0x3FFFF;  // the last byte of a segment
    WriteDumpWord(f.st.dump, edge, 0xA55A);
    EXPECT_EQ(ReadDumpByte(f.st.dump, edge), 0x5A);
    EXPECT_EQ(ReadDumpByte(f.st.dump, edge + 1), 0xA5);
    EXPECT_EQ(ReadDumpWord(f.st.dump, edge), 0xA55A);
    EXPECT_EQ(IsDefined(f.st.dump, edge), kFalse);
    EXPECT_EQ(IsValid(f.st.dump, edge + 1), kFalse);
}

TEST(Dump, InitAllocatesTheFirstFourSegmentsOnly) {
    Fresh f;
    for (int s = 0; s < 4; ++s) EXPECT_TRUE(IsSegmentAllocated(f.st.dump, s)) << s;
    for (int s = 4; s < 257; ++s) EXPECT_FALSE(IsSegmentAllocated(f.st.dump, s)) << s;
}

TEST(Dump, SetDefinedWithOneClearsTheMark) {
    Fresh f;
    SetDefined(f.st.dump, 0x100, kTrue);
    EXPECT_EQ(IsDefined(f.st.dump, 0x100), kTrue);
    SetDefined(f.st.dump, 0x100, 1);
    EXPECT_EQ(IsDefined(f.st.dump, 0x100), kFalse);
}

TEST(Dump, MarksAreIndependentAndWritingSetsNone) {
    Fresh f;
    WriteDumpByte(f.st.dump, 0x20, 0xAB);
    EXPECT_EQ(IsDefined(f.st.dump, 0x20), kFalse);
    EXPECT_EQ(IsValid(f.st.dump, 0x20), kFalse);
    SetValid(f.st.dump, 0x20, kTrue);
    SetMonitorMark(f.st.dump, 0x20, kTrue);
    EXPECT_EQ(IsDefined(f.st.dump, 0x20), kFalse);
    SetDefined(f.st.dump, 0x20, kTrue);
    SetMonitorMark(f.st.dump, 0x20, kFalse);
    EXPECT_EQ(IsValid(f.st.dump, 0x20), kTrue);
    EXPECT_EQ(IsDefined(f.st.dump, 0x20), kTrue);
    EXPECT_EQ(IsMonitorMark(f.st.dump, 0x20), kFalse);
    EXPECT_EQ(ReadDumpByte(f.st.dump, 0x20), 0xAB);
}

TEST(Dump, IsValidOfAnAddressAllocatesItsSegment) {
    Fresh f;
    EXPECT_FALSE(IsSegmentAllocated(f.st.dump, 127));
    EXPECT_EQ(IsValid(f.st.dump, 0x7F0000), kFalse);
    EXPECT_TRUE(IsSegmentAllocated(f.st.dump, 127));
    EXPECT_FALSE(IsSegmentAllocated(f.st.dump, 128));
}

TEST(Dump, SegmentTwoHundredFiftySixIsRealAndTheNextAddressIsTheBound) {
    Fresh f;
    WriteDumpByte(f.st.dump, 0x1000000, 0x5A);
    EXPECT_EQ(ReadDumpByte(f.st.dump, 0x1000000), 0x5A);
    WriteDumpByte(f.st.dump, 0x100FFFF, 0x5B);
    EXPECT_EQ(ReadDumpByte(f.st.dump, 0x100FFFF), 0x5B);
    try {
        WriteDumpByte(f.st.dump, 0x1010000, 1);
        FAIL() << "no run-time error";
    } catch (const RunTimeError& e) {
        EXPECT_STREQ(e.what(), "DumpMemory address 1010000 out of range -FFFF to 100FFFF");
    }
    EXPECT_THROW((void)IsDefined(f.st.dump, 0x7FFFFFFF), RunTimeError);
}

TEST(Dump, SmallNegativeAddressesLandInSegmentZero) {
    Fresh f;
    WriteDumpByte(f.st.dump, -1, 0x11);
    EXPECT_EQ(ReadDumpByte(f.st.dump, 0xFFFF), 0x11);
    WriteDumpByte(f.st.dump, -65535, 0x22);
    EXPECT_EQ(ReadDumpByte(f.st.dump, 1), 0x22);
    EXPECT_THROW(WriteDumpByte(f.st.dump, -65536, 1), RunTimeError);
    EXPECT_THROW(SetDefined(f.st.dump, -0x7FFFFFFF, kTrue), RunTimeError);
}

TEST(Dump, BulkWriteEqualsPerByteWritesAcrossSegments) {
    Fresh f;
    std::vector<uint8_t> bytes(70000);
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i * 7);
    SetValid(f.st.dump, 0x4FFF0, kTrue);
    WriteDumpBlock(f.st.dump, 0x4FFF0, bytes, kMarksLoaded);
    for (size_t i = 0; i < bytes.size(); i += 997) {
        const auto a = static_cast<int32_t>(0x4FFF0 + i);
        EXPECT_EQ(ReadDumpByte(f.st.dump, a), bytes[i]);
        EXPECT_EQ(IsDefined(f.st.dump, a), kTrue);
        EXPECT_EQ(IsValid(f.st.dump, a), kFalse);
    }
    EXPECT_EQ(IsDefined(f.st.dump, 0x4FFEF), kFalse);
    EXPECT_EQ(IsDefined(f.st.dump, static_cast<int32_t>(0x4FFF0 + bytes.size())), kFalse);

    std::vector<uint8_t> back(bytes.size()), status(bytes.size());
    ReadDumpBlock(f.st.dump, 0x4FFF0, back, status);
    EXPECT_EQ(back, bytes);
    EXPECT_EQ(status[0], kMarkDefined);
}

TEST(Dump, BulkOperationsAcrossTheBoundWriteUpToItAndThrow) {
    Fresh f;
    std::array<uint8_t, 4> b{1, 2, 3, 4};
    EXPECT_THROW(WriteDumpBlock(f.st.dump, 0x100FFFE, b, kMarksLoaded), RunTimeError);
    EXPECT_EQ(ReadDumpByte(f.st.dump, 0x100FFFF), 2);
    // From -2 upwards the offsets run FFFE, FFFF, 0, 1 of segment 0.
    WriteDumpBlock(f.st.dump, -2, b, kMarksFromTarget);
    EXPECT_EQ(ReadDumpByte(f.st.dump, 0xFFFE), 1);
    EXPECT_EQ(ReadDumpByte(f.st.dump, 0xFFFF), 2);
    EXPECT_EQ(ReadDumpByte(f.st.dump, 0), 3);
    EXPECT_EQ(IsValid(f.st.dump, 1), kTrue);
}

TEST(Dump, MarkAndFillBlocks) {
    Fresh f;
    FillDumpBlock(f.st.dump, 0x10, 0x20, 0xEE, kMarksFromTarget);
    EXPECT_EQ(ReadDumpByte(f.st.dump, 0x2F), 0xEE);
    EXPECT_EQ(IsValid(f.st.dump, 0x2F), kTrue);
    EXPECT_EQ(ReadDumpByte(f.st.dump, 0x30), 0);
    MarkDumpBlock(f.st.dump, 0x18, 4, MarkChange{0, kMarkDefined | kMarkValid});
    EXPECT_EQ(IsDefined(f.st.dump, 0x18), kFalse);
    EXPECT_EQ(IsValid(f.st.dump, 0x1B), kFalse);
    EXPECT_EQ(IsDefined(f.st.dump, 0x1C), kTrue);
    EXPECT_EQ(ReadDumpByte(f.st.dump, 0x18), 0xEE);
}

TEST(Dump, FindMarkedRunFindsRunsAcrossSegments) {
    Fresh f;
    FillDumpBlock(f.st.dump, 0x1FFF0, 0x20, 0, kMarksLoaded);
    FillDumpBlock(f.st.dump, 0x20100, 1, 0, kMarksLoaded);
    DumpRun r = FindMarkedRun(f.st.dump, 0x10000, 0x2FFFF, kMarkDefined);
    ASSERT_TRUE(r.found);
    EXPECT_EQ(r.first, 0x1FFF0);
    EXPECT_EQ(r.last, 0x2000F);
    r = FindMarkedRun(f.st.dump, 0x20010, 0x2FFFF, kMarkDefined);
    ASSERT_TRUE(r.found);
    EXPECT_EQ(r.first, 0x20100);
    EXPECT_EQ(r.last, 0x20100);
    r = FindMarkedRun(f.st.dump, 0x1FFF0, 0x1FFF3, kMarkDefined);
    EXPECT_EQ(r.last, 0x1FFF3);
    EXPECT_FALSE(FindMarkedRun(f.st.dump, 0x20101, 0x2FFFF, kMarkDefined).found);
    EXPECT_FALSE(FindMarkedRun(f.st.dump, 0x20101, 0x20100, kMarkDefined).found);
}

// A plain model of six segments: a value and a status byte per address.
struct Model {
    static constexpr int32_t kBase = 0x40000;
    static constexpr int32_t kSize = 6 * 65536;
    std::vector<uint8_t> values = std::vector<uint8_t>(kSize, 0);
    std::vector<uint8_t> status = std::vector<uint8_t>(kSize, 0);
    void change(int32_t a, int64_t n, MarkChange m, const uint8_t* bytes, int fill) {
        for (int64_t i = 0; i < n; ++i) {
            auto& s = status[static_cast<size_t>(a - kBase + i)];
            s = static_cast<uint8_t>((s | m.set) & ~m.clear);
            if (bytes) values[static_cast<size_t>(a - kBase + i)] = bytes[i];
            if (fill >= 0) values[static_cast<size_t>(a - kBase + i)] = static_cast<uint8_t>(fill);
        }
    }
};

TEST(Dump, WholeSegmentAndPartialChangesAgreeWithAPlainModel) {
    std::mt19937 rng(20261123);
    const MarkChange kinds[] = {kMarksLoaded,
                                kMarksFromTarget,
                                {0, kMarkDefined},
                                {kMarkMonitor, 0},
                                {0, kMarkDefined | kMarkValid}};
    for (int round = 0; round < 40; ++round) {
        Fresh f;
        Model m;
        for (int step = 0; step < 30; ++step) {
            // Half of the changes cover whole segments, the rest a piece.
            const bool whole = rng() % 2 == 0;
            const int32_t seg = static_cast<int32_t>(rng() % 6);
            int32_t a = Model::kBase + seg * 65536;
            int64_t n = 65536 * (1 + rng() % 2);
            if (!whole) {
                a += static_cast<int32_t>(rng() % 65536);
                n = 1 + rng() % 3000;
            }
            n = std::min<int64_t>(n, Model::kBase + Model::kSize - a);
            const MarkChange mc = kinds[rng() % 5];
            switch (rng() % 4) {
                case 0: {
                    std::vector<uint8_t> bytes(static_cast<size_t>(n));
                    for (auto& b : bytes) b = static_cast<uint8_t>(rng());
                    WriteDumpBlock(f.st.dump, a, bytes, mc);
                    m.change(a, n, mc, bytes.data(), -1);
                    break;
                }
                case 1: {
                    const auto v = static_cast<uint8_t>(rng());
                    FillDumpBlock(f.st.dump, a, n, v, mc);
                    m.change(a, n, mc, nullptr, v);
                    break;
                }
                case 2:
                    MarkDumpBlock(f.st.dump, a, n, mc);
                    m.change(a, n, mc, nullptr, -1);
                    break;
                default: {
                    const int16_t on = rng() % 2 ? kTrue : kFalse;
                    SetValid(f.st.dump, a, on);
                    m.change(a, 1,
                             on == kTrue ? MarkChange{kMarkValid, 0} : MarkChange{0, kMarkValid},
                             nullptr, -1);
                }
            }
        }
        std::vector<uint8_t> values(Model::kSize), status(Model::kSize);
        ReadDumpBlock(f.st.dump, Model::kBase, values, status);
        ASSERT_EQ(values, m.values) << "round " << round;
        ASSERT_EQ(status, m.status) << "round " << round;
        std::vector<uint8_t> seen;
        VisitDumpBlock(f.st.dump, Model::kBase, Model::kSize, [&](const DumpPiece& piece) {
            for (size_t i = 0; i < piece.length; ++i) seen.push_back(piece.statusAt(i));
        });
        ASSERT_EQ(seen, m.status) << "round " << round;
        for (int32_t a = Model::kBase; a < Model::kBase + Model::kSize; a += 4099)
            ASSERT_EQ(IsDefined(f.st.dump, a) == kTrue,
                      (m.status[static_cast<size_t>(a - Model::kBase)] & kMarkDefined) != 0);
        // The first run of Defined bytes as the model has it.
        const auto from = static_cast<int32_t>(rng() % Model::kSize);
        size_t i = static_cast<size_t>(from);
        while (i < m.status.size() && !(m.status[i] & kMarkDefined)) ++i;
        const DumpRun r = FindMarkedRun(f.st.dump, Model::kBase + from,
                                        Model::kBase + Model::kSize - 1, kMarkDefined);
        ASSERT_EQ(r.found, i < m.status.size()) << "round " << round;
        if (!r.found) continue;
        size_t j = i;
        while (j < m.status.size() && (m.status[j] & kMarkDefined)) ++j;
        EXPECT_EQ(r.first, Model::kBase + static_cast<int32_t>(i));
        EXPECT_EQ(r.last, Model::kBase + static_cast<int32_t>(j) - 1);
    }
}

TEST(Dump, InitAgainClearsTheValuesAndMarksOfSegmentsUsedBefore) {
    Fresh f;
    std::vector<uint8_t> bytes(3 * 65536, 0xA5);
    WriteDumpBlock(f.st.dump, 0x50000, bytes, kMarksLoaded);  // whole segments
    SetValid(f.st.dump, 0x1234, kTrue);                       // one byte of segment 0
    InitDumpMemory(f.st.dump);
    for (int32_t a : {0x1234, 0x50000, 0x5FFFF, 0x6ABCD, 0x7FFFF}) {
        EXPECT_EQ(ReadDumpByte(f.st.dump, a), 0) << a;
        EXPECT_EQ(IsDefined(f.st.dump, a), kFalse) << a;
        EXPECT_EQ(IsValid(f.st.dump, a), kFalse) << a;
    }
    // A byte changed in a segment whose marks were all alike keeps the others.
    WriteDumpBlock(f.st.dump, 0x50000, std::span<const uint8_t>(bytes.data(), 65536),
                   kMarksFromTarget);
    SetValid(f.st.dump, 0x50010, kFalse);
    EXPECT_EQ(IsValid(f.st.dump, 0x50010), kFalse);
    EXPECT_EQ(IsValid(f.st.dump, 0x5000F), kTrue);
    EXPECT_EQ(IsValid(f.st.dump, 0x50011), kTrue);
    EXPECT_EQ(IsDefined(f.st.dump, 0x50010), kTrue);
}

}  // namespace
}  // namespace vortelm
