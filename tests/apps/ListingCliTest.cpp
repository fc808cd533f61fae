// The view rows through vortelm-cli against the virtual board: a loaded
// image listed in every mode of the shell's listing.

#include <fstream>

#include "tests/apps/CliFixture.h"

namespace {

using vortelm::testing::Cli;

// Five bytes at 1000: 'H' 'i' 00 FF 'A'.
constexpr const char* kHex = ":05100000486900FF41AA\n:00000001FF\n";

TEST_F(Cli, ViewRowsListTheLoadedSelection) {
    std::ofstream(dir + "/five.hex", std::ios::binary) << kHex;
    Run("_load " + dir +
            "/five.hex\n_clearselection\n_addselection 1000,1004\n_viewbyte\n_viewword\n_viewlong\n"
            "_viewascii\n_viewascii 1\n",
        "--port sim:");
    const std::string stars = "***************************************\n";
    const std::string expected =
        ">_viewbyte\n\n001000: 48\n001001: 69\n001002: 00\n001003: FF\n001004: 41\n" + stars +
        ">_viewword\n\n001000: 6948\n001002: FF00\n001004: ....\n" + stars +
        ">_viewlong\n\n001000: FF006948\n001004: ........\n" + stars +
        ">_viewascii\n\n001000: H\n001001: i\n001002: .\n001003: \xFF\n001004: A\n" + stars +
        ">_viewascii 1\n\n001000: iH\n001002: \xFF.\n001004: .A\n" + stars;
    // Each row comes on a new line; whether the next command's echo starts
    // a line of its own is the CLI's business, not the listing's.
    std::string text = out;
    for (size_t p = 0; (p = text.find("*>", p)) != std::string::npos;) text.insert(++p, "\n");
    const size_t at = text.find(">_viewbyte");
    ASSERT_NE(at, std::string::npos) << out;
    while (!text.empty() && text.back() == '\n') text.pop_back();
    EXPECT_EQ(text.substr(at) + "\n", expected) << out;
    EXPECT_EQ(status, 0);
}

TEST_F(Cli, ClearTerminalWindowSucceeds) {
    Run("_clearterminalwindow\n", "--port sim:");
    EXPECT_EQ(out, ">_clearterminalwindow\n");
    EXPECT_EQ(status, 0);
}

}  // namespace
