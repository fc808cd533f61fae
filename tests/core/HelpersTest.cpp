#include "core/Helpers.h"

#include <gtest/gtest.h>

namespace vortelm {

TEST(HexValue, SixDigitLimit) {
    EXPECT_EQ(HexValue("1000000"), -1);
    EXPECT_EQ(HexValue("FFFFFF"), 16777215);
    EXPECT_EQ(HexValue(""), 0);
    EXPECT_EQ(HexValue("0x10"), -1);
}

TEST(HexText, WidthPadsButNeverCuts) {
    EXPECT_EQ(HexText(255, 2), "FF");
    EXPECT_EQ(HexText(255, 1), "FF");
    EXPECT_EQ(HexText(255, 6), "0000FF");
    EXPECT_EQ(HexText(-1, 2), "FFFFFFFF");
}

}  // namespace vortelm
