#include "core/TerminalText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>

#include "core/ProgramState.h"
#include "core/Text.h"

namespace vortelm {
namespace {

TEST(TerminalText, ReadsAsTheTextWithoutItsDroppedFront) {
    TerminalText t;
    t.append("abc\r\ndef");
    t.dropFront(5);
    EXPECT_EQ(t.size(), 3u);
    EXPECT_EQ(t.view(), "def");
    EXPECT_EQ(t, "def");
    EXPECT_EQ(t.str(), "def");
    EXPECT_EQ(t.find('e'), 1u);
    EXPECT_EQ(t.substr(1), "ef");
    EXPECT_EQ(std::string(t.data(), t.size()), "def");
    std::ostringstream out;
    out << t;
    EXPECT_EQ(out.str(), "def");
    t.dropFront(99);  // more than there is
    EXPECT_TRUE(t.empty());
    t.append("x");
    EXPECT_EQ(t, "x");
    t.clear();
    EXPECT_TRUE(t.empty());
}

TEST(TerminalText, ManyDropsKeepExactlyTheRest) {
    TerminalText t;
    std::string model;
    for (int i = 0; i < 20000; ++i) {
        const std::string line = "line " + std::to_string(i) + "\r\n";
        t.append(line);
        model += line;
        if (i >= 100) {
            const size_t cr = model.find('\r');
            model.erase(0, cr + 2);
            t.dropFront(t.view().find('\r') + 2);
        }
        // Reads in between (some make the cut, some do not) see the same text.
        if (i % 997 == 0) {
            ASSERT_EQ(t.str(), model) << i;
        }
        ASSERT_EQ(t.view(), model) << i;
    }
    EXPECT_EQ(static_cast<const std::string&>(t), model);
}

TEST(TerminalText, TheTerminalDropsOneLinePerCallAsAPlainStringWould) {
    ProgramState st;
    // The text as a plain string that moves its rest down at every drop.
    std::string model;
    int lines = 0;
    for (int i = 0; i < 5000; ++i) {
        const std::string text = "\r\n>_assign %1=%1+" + std::to_string(i);
        Text2Buffer(st, text);
        model += text;
        if (++lines > 1000) {
            model.erase(0, std::min(model.find('\r') + 2, model.size()));
            --lines;
        }
        if (i % 1234 == 0) {
            ASSERT_EQ(st.terminalBuffer.str(), model) << i;
        }
    }
    EXPECT_EQ(st.terminalLines, 1000);
    EXPECT_EQ(st.terminalBuffer, model);
    EXPECT_EQ(st.terminalBuffer.find(">_assign %1=%1+3999\r\n"), 0u);
}

}  // namespace
}  // namespace vortelm
