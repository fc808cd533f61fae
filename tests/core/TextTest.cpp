#include "core/Text.h"

#include <gtest/gtest.h>

#include "core/ProgramState.h"

namespace vortelm {

TEST(Text2Buffer, OneMoreLineAfterThousandRemovesTheOldest) {
    auto st = std::make_unique<ProgramState>();
    for (int i = 0; i < 1000; ++i) Text2Buffer(*st, "\r\nline" + std::to_string(i));
    EXPECT_EQ(st->terminalLines, 1000);
    Text2Buffer(*st, "\r\nlast");
    EXPECT_EQ(st->terminalLines, 1000);
    EXPECT_EQ(st->terminalBuffer.substr(0, 7), "line0\r\n");
}

TEST(GetCRLF, CountsCarriageReturns) {
    EXPECT_EQ(GetCRLF("a\r\nb\r\n"), 2);
    EXPECT_EQ(GetCRLF("plain"), 0);
}

}  // namespace vortelm
