#include "core/Bits.h"

#include <gtest/gtest.h>

namespace vortelm {

TEST(RotateRight, TwentyFourBits) {
    EXPECT_EQ(RotateRight(0x00A38F, 4, true, 24), 0xF00A38);
    EXPECT_EQ(RotateRight(1, 1, true, 24), 0x800000);
    EXPECT_EQ(RotateRight(0x123456, 24, true, 24), 0x123456);
    EXPECT_EQ(RotateRight(0x123456, 0, true, 24), 0x123456);
    EXPECT_EQ(RotateRight(0x123456, -3, true, 24), 0x123456);
    EXPECT_EQ(RotateRight(0x123456, 24 * 1000 + 4, true, 24), 0x612345);
}

TEST(RotateRight, WithoutRotateDivides) {
    EXPECT_EQ(RotateRight(0x100, 4, false, 24), 0x10);
    EXPECT_EQ(RotateRight(0x1F, 4, false, 24), 1);
    EXPECT_EQ(RotateRight(0x1F, 100, false, 24), 0);
}

TEST(RotateLeft, TwentyFourBits) {
    EXPECT_EQ(RotateLeft(0xA38F00, 4, true, 24), 0x38F00A);
    EXPECT_EQ(RotateLeft(0x800000, 1, true, 24), 1);
    // The true rotation also for counts that would overflow a plain loop.
    EXPECT_EQ(RotateLeft(0x800000, 8, true, 24), 0x80);
    EXPECT_EQ(RotateLeft(0x123456, 24, true, 24), 0x123456);
    EXPECT_EQ(RotateLeft(0x123456, 28, true, 24), 0x234561);
    EXPECT_EQ(RotateLeft(0x8001, 1, true, 16), 0x0003);
}

TEST(RotateLeft, WithoutRotateMultipliesAndMasks) {
    EXPECT_EQ(RotateLeft(0x1234, 4, false, 16), 0x2340);
    EXPECT_EQ(RotateLeft(0x1234, 40, false, 16), 0);
    EXPECT_EQ(RotateLeft(0x1234, 0, false, 8), 0x34);
}

TEST(Complement, LowBitsInverted) {
    EXPECT_EQ(Complement(5, 24), 0xFFFFFA);
    EXPECT_EQ(Complement(0, 16), 0xFFFF);
    EXPECT_EQ(Complement(0xFFFF, 16), 0);
    EXPECT_EQ(Complement(5, 0), 0);
    EXPECT_EQ(Complement(5, -1), 0);
}

}  // namespace vortelm
