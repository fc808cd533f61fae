#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <random>

#include "core/RunTimeError.h"
#include "sfr/SfrSets.h"
#include "sfr/SfrTable.h"
#include "tests/config/TestFiles.h"

namespace vortelm {
namespace {

using testing::DataHome;
namespace fs = std::filesystem;

// Loads a text .SFR file written by the test (no cache in the way).
int Load(DataHome& h, const std::string& text, const std::string& name = "SFRDEF/T.SFR") {
    h.write(name, text);
    fs::remove(h.path(SfrCachePath(name)));
    return ReadSfrFile(*h.st, h.path(name));
}

const SfrRecord& Rec(DataHome& h, const std::string& name) {
    const int32_t i = SfrIndexByName(*h.st, name);
    EXPECT_GE(i, 0) << name;
    return h.st->sfrTable[static_cast<size_t>(std::max(i, 0))];
}

void MakeCacheNewer(DataHome& h, const std::string& sfr, const std::string& sb) {
    fs::last_write_time(h.path(sb), fs::last_write_time(h.path(sfr)) + std::chrono::seconds(5));
}

TEST(SfrTable, NextTokenCountsAsTheReaderDoes) {
    EXPECT_EQ(NextToken("ABC DEF", false), 3);
    EXPECT_EQ(NextToken("ABC   DEF", true), 6);
    EXPECT_EQ(NextToken("ABC", false), 4);  // at the end: length plus 1
    EXPECT_EQ(NextToken("ABC  ", true), 6);
    EXPECT_EQ(NextToken("", false), 1);
    EXPECT_EQ(NextToken("A\tB", false), 1);
}

TEST(SfrTable, CachePathCutsAtTheFirstPoint) {
    EXPECT_EQ(SfrCachePath("SFRDEF\\LD7RK.SFR"), "SFRDEF\\LD7RK.sb");
    EXPECT_EQ(SfrCachePath("A.B\\LD7RK.SFR"), "A.sb");
    EXPECT_EQ(SfrCachePath("NODOT"), "sb");
}

TEST(SfrTable, CachePathRuleStartsBehindTheProgramFolder) {
    const std::string home = "/home/u/.local/share/vortelm";
    EXPECT_EQ(SfrCachePath(home + "\\SFRDEF\\LD7RK.SFR", home), home + "\\SFRDEF\\LD7RK.sb");
    EXPECT_EQ(SfrCachePath(home + "/OLD.V1/LD7RK.SFR", home), home + "/OLD.sb");
    EXPECT_EQ(SfrCachePath(home + "/SFRDEF/NODOT", home), "sb");
    EXPECT_EQ(SfrCachePath("/elsewhere/a.b/X.SFR", home), "/elsewhere/a.sb");
}

TEST(SfrTable, DataHomeWithAPointKeepsTheCacheBesideTheFile) {
    DataHome h;
    const std::string dotted = h.path(".local");
    fs::create_directories(dotted + "/SFRDEF");
    h.st->programFolder = dotted;
    h.write(".local/SFRDEF/A.SFR", "SFR 0xFF12 AREG\n");
    h.write(".local/SFRDEF/B.SFR", "SFR 0xFF12 BREG\n");
    ASSERT_EQ(ReadSfrFile(*h.st, dotted + "\\SFRDEF\\A.SFR"), 0);
    ASSERT_EQ(ReadSfrFile(*h.st, dotted + "\\SFRDEF\\B.SFR"), 0);
    EXPECT_TRUE(fs::exists(dotted + "/SFRDEF/A.sb"));
    EXPECT_TRUE(fs::exists(dotted + "/SFRDEF/B.sb"));
    EXPECT_GE(SfrIndexByName(*h.st, "BREG"), 0);
}

TEST(SfrTable, OnlyCommentsGiveOnesAndZerosInThatOrder) {
    DataHome h;
    ASSERT_EQ(Load(h, "; nothing here\n\n   ; still nothing\n"), 0);
    ASSERT_EQ(h.st->sfrCount, 2);
    EXPECT_EQ(h.st->sfrTable[0].name, "ONES");
    EXPECT_EQ(h.st->sfrTable[0].address, 0xFF1E);
    EXPECT_EQ(h.st->sfrTable[0].shortAddress, 0x8F);
    EXPECT_EQ(h.st->sfrTable[0].extended, 0);
    EXPECT_EQ(h.st->sfrTable[1].name, "ZEROS");
    EXPECT_EQ(h.st->sfrTable[1].address, 0xFF1C);
    EXPECT_EQ(h.st->sfrTable[1].shortAddress, 0x8E);
}

TEST(SfrTable, OwnZerosIsKeptWithoutASecond) {
    DataHome h;
    ASSERT_EQ(Load(h, "SFR 0x1234 ZEROS\n"), 0);
    ASSERT_EQ(h.st->sfrCount, 2);
    EXPECT_EQ(SfrAddressByName(*h.st, "zeros"), 0x1234);
    EXPECT_EQ(SfrAddressByName(*h.st, "ONES"), 0xFF1E);
}

TEST(SfrTable, NameBeforeABlankLosesItsLastCharacter) {
    DataHome h;
    ASSERT_EQ(Load(h, "SFR 0xFF12 SYSCON ; system\nSFR 0xFF14 BUSCON; bus\nSFR 0xFF16 PSWX,x\n"),
              0);
    EXPECT_GE(SfrIndexByName(*h.st, "SYSCO"), 0);
    EXPECT_EQ(SfrIndexByName(*h.st, "SYSCON"), -1);
    EXPECT_EQ(SfrAddressByName(*h.st, "BUSCON"), 0xFF14);
    EXPECT_EQ(SfrAddressByName(*h.st, "PSWX"), 0xFF16);
}

TEST(SfrTable, RegisterFields) {
    DataHome h;
    ASSERT_EQ(Load(h, "SFR 0xFF12 SYSCON\nSFR 0xF1C0 EXTREG\nSFR 0xZZ BAD\n"), 0);
    const SfrRecord& s = Rec(h, "SYSCON");
    EXPECT_EQ(s.shortAddress, (0xFF12 / 2) & 255);
    EXPECT_EQ(s.extended, 0);
    const SfrRecord& e = Rec(h, "EXTREG");
    EXPECT_EQ(e.extended, kTrue);
    EXPECT_EQ(SfrAddressByName(*h.st, "BAD"), -1);  // not hexadecimal: -1 without a word
    EXPECT_EQ(h.st->terminalBuffer, "");
}

TEST(SfrTable, FieldBoundsInEitherOrder) {
    for (const char* line : {"BFLD SYSCON.1-0 X", "BFLD SYSCON.0-1 X"}) {
        DataHome h;
        ASSERT_EQ(Load(h, std::string("SFR 0xFF12 SYSCON\n") + line + "\n"), 0);
        const SfrRecord& s = Rec(h, "SYSCON");
        EXPECT_EQ(s.bitWidth[0], 2) << line;
        EXPECT_EQ(s.bitName[0], "X") << line;
    }
}

TEST(SfrTable, DashInFieldNameAndSingleBoundWithDash) {
    DataHome h;
    ASSERT_EQ(Load(h, "SFR 0xFF12 SYSCON\nBFLD SYSCON.1-0 TWO-BITS\nBFLD SYSCON.7-6 MODE\n"), 0);
    const SfrRecord& s = Rec(h, "SYSCON");
    EXPECT_EQ(s.bitName[0], "TWO-BITS");
    EXPECT_EQ(s.bitWidth[0], 2);
    EXPECT_EQ(s.bitWidth[6], 2);
    EXPECT_EQ(s.bitName[6], "MODE");
}

TEST(SfrTable, AntiXOverwritesTheFieldOnBitZero) {
    DataHome h;
    ASSERT_EQ(Load(h, "SFR 0xFF12 SYSCON\nBFLD SYSCON.3 ANTI-X\n"), 0);
    const SfrRecord& s = Rec(h, "SYSCON");
    // "3 ANTI" - "X": bounds 3 and 0, so the field starts at bit 0 and is 4 wide
    EXPECT_EQ(s.bitWidth[0], 4);
    EXPECT_EQ(s.bitWidth[3], 0);
}

TEST(SfrTable, BitNameOfSeveralWordsIsCutWhenItComesFromTheCache) {
    DataHome h;
    ASSERT_EQ(Load(h, "SFR 0xFF12 SYSCON\nBIT SYSCON.3 ONE TWO\n"), 0);
    EXPECT_EQ(Rec(h, "SYSCON").bitName[3], "ONE TWO");
    EXPECT_EQ(Rec(h, "SYSCON").bitWidth[3], 1);
    ASSERT_TRUE(fs::exists(h.path("SFRDEF/T.sb")));
    EXPECT_EQ(fs::file_size(h.path("SFRDEF/T.sb")), 3 * kSfrCacheRecordSize);
    MakeCacheNewer(h, "SFRDEF/T.SFR", "SFRDEF/T.sb");
    ASSERT_EQ(ReadSfrFile(*h.st, h.path("SFRDEF/T.SFR")), 0);
    ASSERT_EQ(h.st->sfrCount, 3);
    EXPECT_EQ(Rec(h, "SYSCON").bitName[3], "ONE");
}

TEST(SfrTable, LowerCaseKeywordStillWorksWhenItOpensTheLine) {
    DataHome h;
    ASSERT_EQ(Load(h, "sfr 0xff12 syscon\nbit syscon.3 x\nbfld syscon.5-4 y\nbitfld syscon.7 z\n"),
              0);
    const SfrRecord& s = Rec(h, "SYSCON");
    EXPECT_EQ(s.name, "SYSCON");
    EXPECT_EQ(s.address, 0xFF12);
    EXPECT_EQ(s.bitName[3], "X");
    EXPECT_EQ(s.bitName[4], "Y");
    EXPECT_EQ(s.bitWidth[4], 2);
    EXPECT_EQ(s.bitName[7], "Z");
}

TEST(SfrTable, BitDefinitionBeforeItsRegisterIsIgnoredOrFails) {
    DataHome h;
    ASSERT_EQ(Load(h, "BFLD SYSCON.1-0 X\nBIT SYSCON.3 Y\nSFR 0xFF12 SYSCON\n"), 0);
    EXPECT_EQ(Rec(h, "SYSCON").bitWidth[0], 0);
    EXPECT_EQ(Rec(h, "SYSCON").bitWidth[3], 0);

    DataHome h2;
    EXPECT_EQ(Load(h2, "SFR 0xFF10 FIRST\nBITFLD SYSCON.3 Y\nSFR 0xFF12 SYSCON\n"), -2);
    // the load ends there: one error line, the records so far stay, no ZEROS/ONES
    EXPECT_EQ(h2.st->sfrCount, 1);
    EXPECT_EQ(h2.st->sfrTable[0].name, "FIRST");
    EXPECT_EQ(h2.st->terminalBuffer.rfind("\r\n*ERROR: ", 0), 0u);
    EXPECT_EQ(std::count(h2.st->terminalBuffer.begin(), h2.st->terminalBuffer.end(), '*'), 1);
}

TEST(SfrTable, BitAboveFifteenEndsTheLoadUnsorted) {
    DataHome h;
    EXPECT_EQ(Load(h, "SFR 0xFF12 ZZZ\nSFR 0xFF14 AAA\nBIT AAA.16 X\n"), -2);
    ASSERT_EQ(h.st->sfrCount, 2);
    EXPECT_EQ(h.st->sfrTable[0].name, "ZZZ");
    EXPECT_NE(h.st->terminalBuffer.find("*ERROR: SFR bit index 16 out of range 0 to 15"),
              std::string::npos);
    EXPECT_EQ(SfrIndexByName(*h.st, "AAA"), 1);  // usable
}

TEST(SfrTable, HugeFieldBoundsEndTheLoadWithoutOverflow) {
    // The largest bound Val gives, on either side of the dash: the width does
    // not fit the byte it is kept in, and working it out must not overflow.
    for (const char* line : {"BFLD SYSCON.99999999999-0 X", "BFLD SYSCON.0-2147483647 X",
                             "BFLD SYSCON.2147483647-15 X"}) {
        DataHome h;
        EXPECT_EQ(Load(h, std::string("SFR 0xFF12 SYSCON\n") + line + "\n"), -2) << line;
        EXPECT_EQ(h.st->sfrCount, 1) << line;
        EXPECT_NE(h.st->terminalBuffer.find("*ERROR: SFR bit field width index "),
                  std::string::npos)
            << line;
        EXPECT_EQ(h.st->sfrTable[0].bitWidth[0], 0) << line;
    }
    // The widest field a byte holds is still stored.
    DataHome h;
    ASSERT_EQ(Load(h, "SFR 0xFF12 SYSCON\nBFLD SYSCON.254-0 WIDE\n"), 0);
    EXPECT_EQ(Rec(h, "SYSCON").bitWidth[0], 255);
}

TEST(SfrTable, TableFullEndsTheLoad) {
    DataHome h;
    std::string text;
    for (int i = 0; i < 8200; ++i) text += "SFR 0xF000 R" + std::to_string(i) + "\n";
    EXPECT_EQ(Load(h, text), -2);
    EXPECT_EQ(h.st->sfrCount, 8193);
    EXPECT_NE(h.st->terminalBuffer.find("SFR table index 8193 out of range 0 to 8192"),
              std::string::npos);
}

TEST(SfrTable, MissingFileLeavesTableEmpty) {
    DataHome h;
    Load(h, "SFR 0xFF12 SYSCON\n");
    EXPECT_EQ(ReadSfrFile(*h.st, h.path("NOPE.SFR")), -1);
    EXPECT_EQ(h.st->sfrCount, 0);
    EXPECT_EQ(h.st->terminalBuffer, "\r\n*ERROR: File " + h.path("NOPE.SFR") + " not found");
    EXPECT_EQ(SfrIndexByName(*h.st, "SYSCON"), -1);
    EXPECT_EQ(SfrIndexByAddress(*h.st, 0xFF12), -1);
}

TEST(SfrTable, EqualCacheTimeCountsAsStale) {
    DataHome h;
    Load(h, "SFR 0xFF12 SYSCON\n");
    h.write("SFRDEF/T.SFR", "SFR 0xFF14 OTHER\n");
    fs::last_write_time(h.path("SFRDEF/T.sb"), fs::last_write_time(h.path("SFRDEF/T.SFR")));
    ASSERT_EQ(ReadSfrFile(*h.st, h.path("SFRDEF/T.SFR")), 0);
    EXPECT_GE(SfrIndexByName(*h.st, "OTHER"), 0);
    EXPECT_EQ(SfrIndexByName(*h.st, "SYSCON"), -1);
}

TEST(SfrTable, NewerCacheOfAnotherFileWithTheSameStemIsUsed) {
    DataHome h;
    Load(h, "SFR 0xFF12 FROMSFR\n", "SFRDEF/T.SFR");
    // T.XYZ has the cache name T.sb too; the newer cache wins.
    h.write("SFRDEF/T.XYZ", "SFR 0xFF14 FROMXYZ\n");
    MakeCacheNewer(h, "SFRDEF/T.XYZ", "SFRDEF/T.sb");
    ASSERT_EQ(ReadSfrFile(*h.st, h.path("SFRDEF/T.XYZ")), 0);
    EXPECT_GE(SfrIndexByName(*h.st, "FROMSFR"), 0);
    EXPECT_EQ(SfrIndexByName(*h.st, "FROMXYZ"), -1);
}

TEST(SfrTable, CacheCutsLongNamesTo32) {
    DataHome h;
    const std::string longName(40, 'L');
    Load(h, "SFR 0xFF12 " + longName + "\n");
    MakeCacheNewer(h, "SFRDEF/T.SFR", "SFRDEF/T.sb");
    ReadSfrFile(*h.st, h.path("SFRDEF/T.SFR"));
    EXPECT_GE(SfrIndexByName(*h.st, std::string(32, 'L')), 0);
}

TEST(SfrTable, CacheRecordLayout) {
    DataHome h;
    Load(h, "SFR 0xF012 ABC\nBFLD ABC.5-4 FLD\n");
    const std::string sb = h.read("SFRDEF/T.sb");
    ASSERT_EQ(sb.size(), 3 * kSfrCacheRecordSize);
    // record 0 is ABC (sorted)
    EXPECT_EQ(sb.substr(0, 32), "ABC" + std::string(29, ' '));
    EXPECT_EQ(static_cast<uint8_t>(sb[32]), 0x12);
    EXPECT_EQ(static_cast<uint8_t>(sb[33]), 0xF0);
    EXPECT_EQ(static_cast<uint8_t>(sb[36]), (0xF012 / 2) & 255);
    EXPECT_EQ(sb.substr(38 + 4 * 32, 3), "FLD");
    EXPECT_EQ(static_cast<uint8_t>(sb[38 + 512 + 4]), 2);                    // bitWidth[4]
    EXPECT_EQ(static_cast<uint8_t>(sb[38 + 512 + 16 + 16 + 32 + 1]), 0xFF);  // extended
}

TEST(SfrTable, LookupsByAddressAndShort) {
    DataHome h;
    Load(h, "SFR 0xFF12 B\nSFR 0xFF12 A\nSFR 0xF024 C\n");
    // sorted: A B C ONES ZEROS
    EXPECT_EQ(SfrIndexByAddress(*h.st, 0xFF12), 0);
    EXPECT_EQ(SfrIndexByAddress(*h.st, 0x1), -1);
    EXPECT_EQ(SfrIndexByShort(*h.st, 0x89), 0);
    EXPECT_EQ(SfrIndexByShort(*h.st, 0x12, kTrue), 2);
    EXPECT_EQ(SfrIndexByShort(*h.st, 0x12), -1);
}

TEST(SfrTable, LookupByNameIgnoresCaseAndStaysInsideTheTable) {
    DataHome h;
    Load(h, "SFR 0xFF12 SYSCON\n");
    EXPECT_EQ(SfrAddressByName(*h.st, "syscon"), 0xFF12);
    EXPECT_EQ(SfrIndexByName(*h.st, "SysCon"), SfrIndexByName(*h.st, "SYSCON"));
    // A count beyond the records made searches empty records there.
    h.st->sfrCount = 10;
    EXPECT_EQ(SfrIndexByName(*h.st, "NOSUCH"), -1);
    EXPECT_EQ(SfrIndexByAddress(*h.st, 0x123456), -1);
    h.st->sfrCount = -4;
    EXPECT_EQ(SfrIndexByName(*h.st, "SYSCON"), -1);
}

// The exchange sort of the old design, kept here as the reference.
std::vector<std::string> ExchangeSort(std::vector<SfrRecord> v) {
    for (size_t i = 0; i < v.size(); ++i)
        for (size_t j = 0; j < v.size(); ++j)
            if (v[i].name < v[j].name) std::swap(v[i], v[j]);
    std::vector<std::string> out;
    for (auto& r : v) out.push_back(r.name + "@" + std::to_string(r.address));
    return out;
}

TEST(SfrTable, SortGivesTheExchangeSortOrderIncludingEqualNames) {
    std::mt19937 rng(7);
    for (int round = 0; round < 3000; ++round) {
        const size_t n = 1 + rng() % 14;
        std::vector<SfrRecord> v(n);
        for (size_t i = 0; i < n; ++i) {
            v[i].name = std::string(1, static_cast<char>('A' + rng() % 4));
            v[i].address = static_cast<int32_t>(i);
        }
        const auto expected = ExchangeSort(v);
        SortSfrRecords(v, n);
        std::vector<std::string> got;
        for (auto& r : v) got.push_back(r.name + "@" + std::to_string(r.address));
        ASSERT_EQ(got, expected) << "round " << round;
    }
}

TEST(SfrTable, EqualNamesDoNotKeepTheirFileOrder) {
    // Duplicates are kept; exchange sort leaves them in an order of its own,
    // and the lookup finds the first one after sorting.
    DataHome h;
    Load(h, "SFR 0x0002 DUP\nSFR 0x0004 DUP\nSFR 0x0006 DUP\nSFR 0x0008 AAA\n");
    std::vector<int32_t> dups;
    for (int i = 0; i < h.st->sfrCount; ++i)
        if (h.st->sfrTable[i].name == "DUP") dups.push_back(h.st->sfrTable[i].address);
    // file order 2, 4, 6; each smaller name inserted later turns the group
    EXPECT_EQ(dups, (std::vector<int32_t>{6, 4, 2}));
    EXPECT_EQ(SfrAddressByName(*h.st, "DUP"), 6);
}

TEST(SfrSets, ReloadFollowsNamesAndDropsLostOnes) {
    DataHome h;
    Load(h, "SFR 0xFF12 SYSCON\nSFR 0xFF14 BUSCON\n");
    ClearSfrSets(*h.st);
    AddSfrToSet(*h.st, 1, SfrIndexByName(*h.st, "SYSCON"));
    AddSfrToSet(*h.st, 1, SfrIndexByName(*h.st, "BUSCON"));
    AddSfrToSet(*h.st, 1, SfrIndexByName(*h.st, "BUSCON"));
    EXPECT_EQ(h.st->sfrSets[1].count, 2);
    Load(h, "SFR 0xFF14 BUSCON\nSFR 0xFF16 AAA\n");
    ReloadSfrSets(*h.st);
    ASSERT_EQ(h.st->sfrSets[1].count, 1);
    EXPECT_EQ(h.st->sfrSets[1].names[0], "BUSCON");
    EXPECT_EQ(h.st->sfrSets[1].entries[0], SfrIndexByName(*h.st, "BUSCON"));
}

}  // namespace
}  // namespace vortelm
