#include "core/SafeFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "TempDir.h"

namespace vortelm {
namespace {

std::string Slurp(const std::string& path) {
    std::ifstream f(path, std::ios::binary);
    std::ostringstream all;
    all << f.rdbuf();
    return all.str();
}

size_t EntriesIn(const std::string& folder) {
    size_t n = 0;
    for ([[maybe_unused]] const auto& e : std::filesystem::directory_iterator(folder)) ++n;
    return n;
}

TEST(SafeFile, CreatesANewFile) {
    testing::TempDir dir;
    const SafeWriteResult r = ReplaceFile(dir.file("a.bin"), std::string_view("abc\0d", 5));
    EXPECT_TRUE(r.ok);
    EXPECT_EQ(Slurp(dir.file("a.bin")), std::string("abc\0d", 5));
    EXPECT_EQ(EntriesIn(dir.path), 1u);  // no temporary file left behind
}

TEST(SafeFile, WritesPiecesInOrderPastTheLimitOfOneCall) {
    testing::TempDir dir;
    // More pieces than one gathered write takes, some of them empty.
    std::vector<std::string> texts;
    std::string expected;
    for (int i = 0; i < 3000; ++i) {
        texts.push_back(i % 7 == 0 ? std::string() : std::to_string(i) + ",");
        expected += texts.back();
    }
    std::vector<std::string_view> pieces(texts.begin(), texts.end());
    ASSERT_TRUE(ReplaceFile(dir.file("p.txt"), pieces).ok);
    EXPECT_EQ(Slurp(dir.file("p.txt")), expected);
    EXPECT_EQ(EntriesIn(dir.path), 1u);
    ASSERT_TRUE(ReplaceFile(dir.file("p.txt"), std::span<const std::string_view>()).ok);
    EXPECT_EQ(Slurp(dir.file("p.txt")), "");
}

TEST(SafeFile, LargePiecesAreCutWhereTheEarlySyncsFallAndStayInOrder) {
    testing::TempDir dir;
    // Pieces of 3 MiB and a few bytes: every 4 MiB a write ends inside a
    // piece, and the next write goes on from the middle of it.
    std::vector<std::string> texts;
    std::string expected;
    for (int i = 0; i < 5; ++i) {
        texts.emplace_back((size_t(3) << 20) + 7 * size_t(i), static_cast<char>('a' + i));
        texts.emplace_back(std::to_string(i));
        for (const auto& t : {texts[texts.size() - 2], texts.back()}) expected += t;
    }
    std::vector<std::string_view> pieces(texts.begin(), texts.end());
    ASSERT_TRUE(ReplaceFile(dir.file("big.bin"), pieces).ok);
    EXPECT_TRUE(Slurp(dir.file("big.bin")) == expected);
    EXPECT_EQ(EntriesIn(dir.path), 1u);
}

TEST(SafeFile, AnUnsyncedReplaceIsStillWholeAndLeavesNoTemporary) {
    testing::TempDir dir;
    dir.write("c.sb", "old cache");
    ASSERT_EQ(::chmod(dir.file("c.sb").c_str(), 0600), 0);
    ASSERT_TRUE(ReplaceFileUnsynced(dir.file("c.sb"), std::string_view("new\0", 4)).ok);
    EXPECT_EQ(Slurp(dir.file("c.sb")), std::string("new\0", 4));
    struct stat st {};
    ASSERT_EQ(::stat(dir.file("c.sb").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0600u);
    EXPECT_EQ(EntriesIn(dir.path), 1u);
    EXPECT_FALSE(ReplaceFileUnsynced(dir.file("no/such/folder/c.sb"), "x").ok);
}

TEST(SafeFile, ReplacesAndKeepsThePermissions) {
    testing::TempDir dir;
    dir.write("a.ini", "old contents that are longer");
    ASSERT_EQ(::chmod(dir.file("a.ini").c_str(), 0640), 0);
    ASSERT_TRUE(ReplaceFile(dir.file("a.ini"), "new").ok);
    EXPECT_EQ(Slurp(dir.file("a.ini")), "new");
    struct stat st {};
    ASSERT_EQ(::stat(dir.file("a.ini").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0640u);
    EXPECT_EQ(EntriesIn(dir.path), 1u);
}

TEST(SafeFile, AFailedReplaceLeavesTheOldFileAndNoTemporary) {
    testing::TempDir dir;
    // A folder where the file should be: the rename cannot replace it.
    std::filesystem::create_directories(dir.file("busy/inner"));
    const SafeWriteResult r = ReplaceFile(dir.file("busy"), "data");
    EXPECT_FALSE(r.ok);
    EXPECT_FALSE(r.reason.empty());
    EXPECT_TRUE(std::filesystem::is_directory(dir.file("busy/inner")));
    EXPECT_EQ(EntriesIn(dir.path), 1u);
}

TEST(SafeFile, AMissingFolderFailsWithTheSystemsReason) {
    testing::TempDir dir;
    const SafeWriteResult r = ReplaceFile(dir.file("no/such/file"), "data");
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(r.reason, "No such file or directory");
}

TEST(SafeFile, RepeatedReplacesKeepOneWholeFile) {
    testing::TempDir dir;
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(ReplaceFile(dir.file("p.ini"), std::string(100 + i, 'x')).ok);
        EXPECT_EQ(Slurp(dir.file("p.ini")).size(), 100u + i);
    }
    EXPECT_EQ(EntriesIn(dir.path), 1u);
}

}  // namespace
}  // namespace vortelm
