// Download, upload, compare and the checksums over the selections.

#include <filesystem>
#include <fstream>
#include <sstream>

#include <unistd.h>

#include "Fixture.h"
#include "core/Helpers.h"

namespace vortelm::testing {
namespace {

class Transfer : public TargetFixture {
  protected:
    void SetUp() override { running(); }
    size_t count(const std::string& s) const {
        size_t n = 0;
        for (size_t p = text().find(s); p != std::string::npos; p = text().find(s, p + 1)) ++n;
        return n;
    }
};

TEST_F(Transfer, NotConnectedAndMissingFeature) {
    st.ConnectionState = kNotConnected;
    EXPECT_EQ(target::download(tgt), -100);
    EXPECT_EQ(target::upload(tgt, -1), -100);
    EXPECT_EQ(target::compare(tgt, ""), -100);
    EXPECT_EQ(count("*ERROR: Not Connected to Target"), 3u);
    st.ConnectionState = kConnectedAndReady;
    setFeatures({});
    EXPECT_EQ(target::download(tgt), -101);
    EXPECT_EQ(target::upload(tgt, -1), -101);
    EXPECT_EQ(target::compare(tgt, ""), -101);
    EXPECT_EQ(count("*ERROR: Kernel feature not supported "), 3u);
    EXPECT_TRUE(board->received.empty());
}

TEST_F(Transfer, RoundTripWithHolesAndBursts) {
    auto a = pattern(3000, 3);
    auto b = pattern(1, 9);
    load(0x10000, a);
    load(0x20000, b);  // a single byte: one burst of length 1
    ASSERT_EQ(target::download(tgt), 0);
    EXPECT_TRUE(logged("*Download:  1024 bytes \r\n"));
    EXPECT_TRUE(logged("*Download:  2048 bytes \r\n"));
    EXPECT_TRUE(logged("*Download:  3000 bytes \r\n"));
    EXPECT_TRUE(logged("*Download:  3001 bytes \r\n"));
    EXPECT_EQ(count("*Download: "), 4u);
    for (size_t i = 0; i < a.size(); ++i)
        ASSERT_EQ(board->peek(0x10000 + static_cast<uint32_t>(i)), a[i]);
    EXPECT_EQ(board->peek(0x20000), b[0]);
    EXPECT_EQ(board->peek(0x10000 + 3000), 0);  // the hole stays untouched
    // clear the image and read it back
    for (int32_t i = 0; i < 3000; ++i) link::dumpio::Write(st.dump, 0x10000 + i, 0);
    link::dumpio::Write(st.dump, 0x20000, 0);
    ASSERT_EQ(target::upload(tgt, -1), 0);
    EXPECT_TRUE(logged("*Upload:  3001 bytes \r\n"));
    for (size_t i = 0; i < a.size(); ++i)
        ASSERT_EQ(dumpByte(0x10000 + static_cast<int32_t>(i)), a[i]);
    EXPECT_EQ(dumpByte(0x20000), b[0]);
    EXPECT_EQ(target::compare(tgt, ""), 0);
    EXPECT_TRUE(logged("*Comparison:  3001 Bytes OK -  0 Bytes different\r\n"));
    EXPECT_FALSE(host.busy);
}

TEST_F(Transfer, LastBurstTakesOneMoreByte) {
    // a + 1024 >= e already when exactly 1025 bytes are left
    load(0x1000, pattern(1025, 1));
    ASSERT_EQ(target::download(tgt), 0);
    EXPECT_EQ(count("*Download: "), 1u);
    EXPECT_TRUE(logged("*Download:  1025 bytes \r\n"));
    EXPECT_EQ(target::compare(tgt, ""), 0);
}

TEST_F(Transfer, OverlapWithCoreFailsAfterEarlierBursts) {
    st.KernelStartAddress = 0xF600;
    st.KernelEndAddress = 0xF8FF;
    load(0xF000, pattern(0x700, 5));  // F000..F6FF, third burst touches the core
    EXPECT_EQ(target::download(tgt), -1);
    EXPECT_TRUE(logged("*ERROR: download not successful"));
    EXPECT_EQ(count("*Download: "), 1u);
    EXPECT_EQ(board->peek(0xF000), pattern(1, 5)[0]);
    EXPECT_EQ(board->peek(0xF3FF), pattern(0x400, 5)[0x3FF]);
    EXPECT_EQ(board->peek(0xF400), 0);
    EXPECT_FALSE(host.busy);
}

TEST_F(Transfer, EmptyListDownloadsNothing) {
    const std::string before = text();
    EXPECT_EQ(target::download(tgt), 0);
    EXPECT_EQ(text(), before);
    EXPECT_TRUE(board->received.empty());
}

TEST_F(Transfer, UploadOneSelectionOrNone) {
    board->memory[0x100] = 0x11;
    board->memory[0x200] = 0x22;
    addSelection(0x100, 0x100);
    addSelection(0x200, 0x200);
    EXPECT_EQ(target::upload(tgt, 1), 0);
    EXPECT_EQ(dumpByte(0x200), 0x22);
    EXPECT_EQ(dumpByte(0x100), 0);
    // an index equal to the count reads nothing and succeeds
    board->received.clear();
    EXPECT_EQ(target::upload(tgt, 2), 0);
    EXPECT_TRUE(board->received.empty());
    EXPECT_EQ(target::upload(tgt, -5), 0);
    EXPECT_TRUE(board->received.empty());
}

TEST_F(Transfer, FaultsGiveErrorWordsNeverSuccess) {
    load(0x1000, pattern(16, 1));
    board->wrongChecksum = true;
    EXPECT_EQ(target::download(tgt), -1);
    EXPECT_EQ(target::upload(tgt, -1), -1);
    EXPECT_TRUE(logged("*ERROR: no data received"));
    EXPECT_EQ(target::compare(tgt, ""), -1);
    EXPECT_TRUE(logged("*ERROR: no data received while comparing"));
    board->wrongChecksum = false;
    board->dropReadDataAfter = 3;
    EXPECT_EQ(target::upload(tgt, -1), -1);
    board->dropReadDataAfter = -1;
    board->mode = ScriptedBoard::Mode::Dead;
    EXPECT_EQ(target::download(tgt), -1);
    EXPECT_EQ(target::upload(tgt, -1), -1);
    EXPECT_EQ(target::compare(tgt, ""), -1);
    EXPECT_FALSE(logged("*Comparison: "));
}

TEST_F(Transfer, CompareReportsDifferencesAndRestoresDump) {
    load(0x3000, {1, 2, 3, 4});
    board->memory[0x3000] = 1;
    board->memory[0x3001] = 9;
    board->memory[0x3002] = 3;
    board->memory[0x3003] = 4;
    EXPECT_EQ(target::compare(tgt, ""), 1);
    EXPECT_TRUE(logged("*Comparison at address 003001 expected: 02 found: 09\r\n"));
    EXPECT_TRUE(logged("*Compare:  4 bytes \r\n"));
    EXPECT_TRUE(logged("*Comparison:  3 Bytes OK -  1 Bytes different\r\n"));
    EXPECT_EQ(dumpByte(0x3001), 2);
    EXPECT_FALSE(isValid(0x3001));
    EXPECT_TRUE(isValid(0x3000));
}

TEST_F(Transfer, CompareToFileKeepsTerminalToProgress) {
    const auto dir =
        std::filesystem::temp_directory_path() / ("vortelm-cmp-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    st.programFolder = dir.string();
    load(0x3000, {1, 2});
    board->memory[0x3000] = 7;
    board->memory[0x3001] = 2;
    const std::string before = text();
    EXPECT_EQ(target::compare(tgt, "result.txt"), 1);
    EXPECT_EQ(text(), before + "*Compare:  2 bytes \r\n");
    std::ifstream f(dir / "result.txt");
    std::stringstream ss;
    ss << f.rdbuf();
    EXPECT_EQ(ss.str(),
              "Comparison at address 003000 expected: 01 found: 07\n"
              "Comparison:  1 Bytes OK -  1 Bytes different\n");
    std::filesystem::remove_all(dir);
}

TEST_F(Transfer, CompareAbortsOnEscAfterAProgressLine) {
    load(0x1000, pattern(2048, 1));
    ASSERT_EQ(target::download(tgt), 0);
    st.scriptAbort = 1;
    EXPECT_EQ(target::compare(tgt, ""), 0);
    EXPECT_TRUE(logged("*Compare:  1024 bytes \r\n\r\n*command aborted"));
    EXPECT_FALSE(logged("*Compare:  2048"));
    EXPECT_EQ(st.scriptAbort, 0);
}

TEST_F(Transfer, DownloadIsNotStoppedByEsc) {
    load(0x1000, pattern(2048, 1));
    st.scriptAbort = 1;
    EXPECT_EQ(target::download(tgt), 0);
    EXPECT_TRUE(logged("*Download:  2048 bytes \r\n"));
    EXPECT_EQ(st.scriptAbort, 1);
}

TEST_F(Transfer, ProgressReachesTheHost) {
    load(0x1000, pattern(2048, 1));
    ASSERT_EQ(target::download(tgt), 0);
    ASSERT_GE(host.progressCalls.size(), 3u);
    EXPECT_EQ(host.progressCalls[0], (std::pair<int64_t, int64_t>{1024, 2048}));
    EXPECT_EQ(host.progressCalls[1], (std::pair<int64_t, int64_t>{2048, 2048}));
    EXPECT_EQ(host.progressCalls.back(), (std::pair<int64_t, int64_t>{0, 0}));
}

TEST_F(Transfer, XorChecksums) {
    st.ConnectionState = kNotConnected;  // no target needed
    load(0x11, {0x12, 0x34, 0x56});
    EXPECT_EQ(target::xorChecksum(st, 1), 0);
    EXPECT_TRUE(logged("*Checksum: " + HexText(0x12 ^ 0x34 ^ 0x56, 2) + "  \r\n"));
    // width 2 from the odd address 11 reads the word at 10 first: 1200, then 5634
    EXPECT_EQ(target::xorChecksum(st, 2), 0);
    EXPECT_TRUE(logged("*Checksum: " + HexText(0x1200 ^ 0x5634, 4) + "  \r\n"));
}

TEST_F(Transfer, AddcChecksumsAndLastCarry) {
    load(0x100, {0xF0, 0x20});
    EXPECT_EQ(target::addcChecksum(st, 1, 0), 0);
    EXPECT_TRUE(logged("*Checksum: 10  \r\n"));  // F0 + 20 = 110: sum 10, carry 1
    EXPECT_EQ(target::addcChecksum(st, 1, 1), 0);
    EXPECT_TRUE(logged("*Checksum: 11  \r\n"));
    st.selections.count = 0;
    load(0x200, {0x10, 0x20});
    EXPECT_EQ(target::addcChecksum(st, 1, 0), 0);
    EXPECT_EQ(target::addcChecksum(st, 1, 1), 0);
    EXPECT_EQ(count("*Checksum: 30  \r\n"), 2u);  // no overflow: the same
}

}  // namespace
}  // namespace vortelm::testing
