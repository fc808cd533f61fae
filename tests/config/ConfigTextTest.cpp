#include "config/ConfigText.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "tests/config/TestFiles.h"

namespace vortelm {
namespace {

using testing::DataHome;

ino_t InodeOf(const std::string& path) {
    struct stat sb {};
    return ::stat(path.c_str(), &sb) == 0 ? sb.st_ino : 0;
}

TEST(WriteFileAtomically, AFileHoldingTheTextStaysTheSameFile) {
    DataHome h;
    h.write("default.ini", "[Vortelm]\nKERNEL=1\n");
    const ino_t before = InodeOf(h.path("default.ini"));
    ASSERT_NE(before, 0u);
    EXPECT_TRUE(config::WriteFileAtomically(*h.st, "default.ini", "[Vortelm]\nKERNEL=1\n"));
    EXPECT_EQ(InodeOf(h.path("default.ini")), before);  // not replaced
    EXPECT_EQ(h.read("default.ini"), "[Vortelm]\nKERNEL=1\n");
}

TEST(WriteFileAtomically, AnyDifferenceReplacesTheFile) {
    DataHome h;
    // Longer than the text, with the text as its beginning.
    h.write("a.dat", "ABCD");
    EXPECT_TRUE(config::WriteFileAtomically(*h.st, "a.dat", "ABC"));
    EXPECT_EQ(h.read("a.dat"), "ABC");
    // Shorter than the text.
    EXPECT_TRUE(config::WriteFileAtomically(*h.st, "a.dat", "ABCDE"));
    EXPECT_EQ(h.read("a.dat"), "ABCDE");
    // Same length, one byte differs.
    EXPECT_TRUE(config::WriteFileAtomically(*h.st, "a.dat", "ABCDF"));
    EXPECT_EQ(h.read("a.dat"), "ABCDF");
    // An empty text over an empty file, and a new file.
    h.write("e.dat", "");
    EXPECT_TRUE(config::WriteFileAtomically(*h.st, "e.dat", ""));
    EXPECT_EQ(h.read("e.dat"), "");
    EXPECT_TRUE(config::WriteFileAtomically(*h.st, "new.dat", "x"));
    EXPECT_EQ(h.read("new.dat"), "x");
}

}  // namespace
}  // namespace vortelm
