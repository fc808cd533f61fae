// The automatic boot entry against the in-process board, wired each way:
// only the sequence that matches the board's wiring brings it into its
// bootstrap loader.
#include <gtest/gtest.h>

#include "VirtualHost.h"
#include "apps/SimOpener.h"
#include "core/ProgramState.h"
#include "link/BootEntry.h"
#include "link/ComPort.h"

namespace vortelm::link {
namespace {

constexpr BootEntry kSequences[] = {BootEntry::RtsResetDtrBoot, BootEntry::RtsResetDtrBootInverted,
                                    BootEntry::DtrResetRtsBoot, BootEntry::DtrResetRtsBootInverted};

// Opens a board wired as `lines`, running its application (or in its loader
// with start=bootstrap), plays `e` and sends the init byte: the answer, or -1.
int AnswerAfter(BootEntry e, std::string_view lines, std::string_view start = "run") {
    test::VirtualHost host;
    ProgramState st{host};
    ComPort port{st};
    apps::AddSimOpener(port.openers);
    st.portOverride = "sim:?lines=" + std::string(lines) + "&start=" + std::string(start);
    st.CONNECTTIMEOUT = 100;
    EXPECT_TRUE(port.open()) << host.terminal;
    const int64_t before = host.clockUs;
    const bool played = PlayBootEntry(port, e);
    EXPECT_EQ(played, e != BootEntry::None);
    if (played) {
        EXPECT_GE(host.clockUs - before, (kBootEntryResetMs + kBootEntrySettleMs) * 1000);
    }
    port.setReceiveThreshold(0);
    port.clearInput();
    port.SSSend(0x00);
    return port.SSReceive(st.CONNECTTIMEOUT);
}

TEST(BootEntry, EachSequenceEntersTheBoardWiredForIt) {
    for (BootEntry e : kSequences) {
        SCOPED_TRACE(std::string(BootEntryName(e)));
        EXPECT_GE(AnswerAfter(e, BootEntryName(e)), 0);
    }
}

TEST(BootEntry, NoOtherSequenceDoes) {
    for (BootEntry wired : kSequences)
        for (BootEntry played : kSequences) {
            if (wired == played) continue;
            SCOPED_TRACE(std::string(BootEntryName(wired)) + " played " +
                         std::string(BootEntryName(played)));
            EXPECT_EQ(AnswerAfter(played, BootEntryName(wired)), -1);
        }
}

TEST(BootEntry, WithoutASequenceARunningBoardStaysSilent) {
    EXPECT_EQ(AnswerAfter(BootEntry::None, "rts-reset-dtr-boot"), -1);
    // A board waiting in its loader answers as it always did.
    EXPECT_GE(AnswerAfter(BootEntry::None, "rts-reset-dtr-boot", "bootstrap"), 0);
}

TEST(BootEntry, PlayedOnABoardAlreadyInItsLoader) {
    for (BootEntry e : kSequences) EXPECT_GE(AnswerAfter(e, BootEntryName(e), "bootstrap"), 0);
}

TEST(BootEntry, NamesAndNumbers) {
    for (int i = 0; i <= kBootEntryLast; ++i) {
        const auto e = static_cast<BootEntry>(i);
        EXPECT_EQ(BootEntryFromText(BootEntryName(e)), e);
        EXPECT_EQ(BootEntryFromText(std::string(1, static_cast<char>('0' + i))), e);
    }
    EXPECT_FALSE(BootEntryFromText("").has_value());
    EXPECT_FALSE(BootEntryFromText("5").has_value());
    EXPECT_FALSE(BootEntryFromText("RTS-RESET-DTR-BOOT").has_value());
    EXPECT_FALSE(BootEntryFromText("rts").has_value());
}

TEST(BootEntry, CommandLineWinsOverThePreference) {
    test::VirtualHost host;
    ProgramState st{host};
    EXPECT_EQ(BootEntryOf(st), BootEntry::None);
    st.BOOTENTRY = 3;
    EXPECT_EQ(BootEntryOf(st), BootEntry::DtrResetRtsBoot);
    st.bootEntryOverride = 0;
    EXPECT_EQ(BootEntryOf(st), BootEntry::None);
    st.bootEntryOverride = -1;
    st.BOOTENTRY = 99;  // out of range: off
    EXPECT_EQ(BootEntryOf(st), BootEntry::None);
    st.BOOTENTRY = -7;
    EXPECT_EQ(BootEntryOf(st), BootEntry::None);
}

TEST(BootEntry, ClosedPortPlaysNothing) {
    test::VirtualHost host;
    ProgramState st{host};
    ComPort port{st};
    apps::AddSimOpener(port.openers);
    EXPECT_FALSE(PlayBootEntry(port, BootEntry::RtsResetDtrBoot));
    EXPECT_TRUE(host.terminal.empty());
}

}  // namespace
}  // namespace vortelm::link
