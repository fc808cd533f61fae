#include "core/Helpers.h"

#include <gtest/gtest.h>

#include "TempDir.h"
#include "core/ProgramState.h"
#include "core/TestHost.h"

namespace vortelm {

using testing::TempDir;

TEST(DateStamp, HasItsFixedForm) {
    std::tm t{};
    t.tm_year = 2024 - 1900;
    t.tm_mon = 0;
    t.tm_mday = 2;
    t.tm_hour = 3;
    t.tm_min = 4;
    t.tm_sec = 5;
    t.tm_isdst = -1;
    EXPECT_EQ(DateStamp(std::mktime(&t)), "20240102_030405");
    const std::string now = DateStamp();
    ASSERT_EQ(now.size(), 15u);
    EXPECT_EQ(now[8], '_');
}

TEST(HexValue, SixDigitLimit) {
    EXPECT_EQ(HexValue("1000000"), -1);
    EXPECT_EQ(HexValue("0000001"), -1);  // seven digits, even with leading zeros
    EXPECT_EQ(HexValue("FFFFFF"), 16777215);
    EXPECT_EQ(HexValue(""), 0);
    EXPECT_EQ(HexValue("0x10"), -1);
}

TEST(HexValue, DigitsOfBothCases) {
    EXPECT_EQ(HexValue("aBcD"), 0xABCD);
    EXPECT_EQ(HexValue("09"), 9);
    EXPECT_EQ(HexValue("G"), -1);
    EXPECT_EQ(HexValue("1 "), -1);
    EXPECT_EQ(HexValue(" 1"), -1);
    EXPECT_EQ(HexValue("-1"), -1);
}

TEST(HexText, WidthPadsButNeverCuts) {
    EXPECT_EQ(HexText(255, 2), "FF");
    EXPECT_EQ(HexText(255, 1), "FF");
    EXPECT_EQ(HexText(255, 6), "0000FF");
    EXPECT_EQ(HexText(-1, 2), "FFFFFFFF");
    EXPECT_EQ(HexText(0, 0), "0");
    EXPECT_EQ(HexText(0xabc, 4), "0ABC");
}

TEST(BinaryTextValue, OnesAndEverythingElse) {
    EXPECT_EQ(BinaryTextValue(""), 0);
    EXPECT_EQ(BinaryTextValue("101"), 5);
    EXPECT_EQ(BinaryTextValue("1x1"), 5);
    EXPECT_EQ(BinaryTextValue("0001"), 1);
}

TEST(CrLf, IsCarriageReturnLineFeed) {
    EXPECT_EQ(CrLf(), "\r\n");
}

TEST(LastPosition, OneBasedAndExact) {
    EXPECT_EQ(LastPosition("a\\b\\c", '\\'), 4);
    EXPECT_EQ(LastPosition("abc", 'x'), 0);
    EXPECT_EQ(LastPosition("abA", 'a'), 1);
    EXPECT_EQ(LastPosition("", 'a'), 0);
}

TEST(SkipWord, PositionsAsTheParserUsesThem) {
    EXPECT_EQ(SkipWord("_load a.hex", kFalse), 5);
    EXPECT_EQ(SkipWord("_load a.hex", kTrue), 6);
    EXPECT_EQ(SkipWord("_load \t  a", kTrue), 9);
    EXPECT_EQ(SkipWord("_help", kTrue), 6);
    EXPECT_EQ(SkipWord("_help", kFalse), 6);
    EXPECT_EQ(SkipWord("_help  ", kTrue), 8);
    EXPECT_EQ(SkipWord("_mov\t1", kFalse), 4);
    EXPECT_EQ(SkipWord("", kTrue), 1);
    // A flag counts as true only when it is -1.
    EXPECT_EQ(SkipWord("_load a.hex", 1), 5);
}

TEST(StripOuterQuotes, EachEndOnItsOwn) {
    EXPECT_EQ(StripOuterQuotes("\"a b\""), "a b");
    EXPECT_EQ(StripOuterQuotes("\"a"), "a");
    EXPECT_EQ(StripOuterQuotes("a\""), "a");
    EXPECT_EQ(StripOuterQuotes("\""), "");
    EXPECT_EQ(StripOuterQuotes("a\"b"), "a\"b");
}

TEST(StripBlanks, QuotedBlanksStayWithTheFlag) {
    EXPECT_EQ(StripBlanks("\"A B\"", kTrue), "\"A B\"");
    EXPECT_EQ(StripBlanks("X = 1", kTrue), "X=1");
    EXPECT_EQ(StripBlanks("X = \"A B\"", kTrue), "X=\"A B\"");
    EXPECT_EQ(StripBlanks("X = \"A B\"", kFalse), "X=\"AB\"");
    EXPECT_EQ(StripBlanks("A\tB C", kFalse), "A\tBC");
    EXPECT_EQ(StripBlanks("\"A B\"", 1), "\"AB\"");
}

TEST(QuotePath, QuotesOnlyWithABlank) {
    EXPECT_EQ(QuotePath("C:\\a b\\c"), "\"C:\\a b\\c\"");
    EXPECT_EQ(QuotePath("C:\\ab"), "C:\\ab");
}

TEST(UnquotePath, CutsFirstAndLastWhenAQuoteIsAnywhere) {
    EXPECT_EQ(UnquotePath("\"a b\""), "a b");
    EXPECT_EQ(UnquotePath("ab\"cd"), "b\"c");
    EXPECT_EQ(UnquotePath("abc"), "abc");
    EXPECT_EQ(UnquotePath("\""), "");
}

TEST(NormaliseScriptLine, WordsByOneBlankAndNoneRoundCommas) {
    std::string l = " \t _mov  10 ,\t5 \t";
    NormaliseScriptLine(l);
    EXPECT_EQ(l, "_mov 10,5");
    l = "\t\t";
    NormaliseScriptLine(l);
    EXPECT_EQ(l, "");
    l = "a\t\tb";
    NormaliseScriptLine(l);
    EXPECT_EQ(l, "a b");
    l = "a , , b";
    NormaliseScriptLine(l);
    EXPECT_EQ(l, "a,,b");
}

TEST(FirstWord, UpToTheFirstBlank) {
    EXPECT_EQ(FirstWord("_load a.hex"), "_load");
    EXPECT_EQ(FirstWord("_help"), "_help");
    EXPECT_EQ(FirstWord("a\tb c"), "a\tb");
}

TEST(StripTrailingBackslash, OneOnly) {
    EXPECT_EQ(StripTrailingBackslash("C:\\a\\\\"), "C:\\a\\");
    EXPECT_EQ(StripTrailingBackslash("C:\\a"), "C:\\a");
    EXPECT_EQ(StripTrailingBackslash(""), "");
}

TEST(FileNameOfPath, BehindTheLastBackslash) {
    EXPECT_EQ(FileNameOfPath("C:\\a\\b.hex"), "b.hex");
    EXPECT_EQ(FileNameOfPath("b.hex"), "b.hex");
    EXPECT_EQ(FileNameOfPath("C:\\a\\"), "");
}

TEST(StartupArguments, WordsByRunsOfBlanksAndTabs) {
    EXPECT_EQ(StartupArgumentCount(""), 0);
    EXPECT_EQ(StartupArgumentCount("a"), 1);
    EXPECT_EQ(StartupArgumentCount("a \t b"), 2);
    EXPECT_EQ(StartupArgumentCount("a b "), 3);  // a blank at the end starts one more word
    EXPECT_EQ(StartupArgument("a \t b", 2), "b");
    EXPECT_EQ(StartupArgument("a b ", 3), "");
    EXPECT_EQ(StartupArgument("a b", 3), "");
    EXPECT_EQ(StartupArgument("a b", 0), "");
}

TEST(ResolvePaths, RelativeNamesGetTheFolder) {
    ProgramState st;
    st.programFolder = "/home/p";
    st.PATH_LOAD = "/load";
    st.PATH_SAVE = "/save";
    st.PATH_SCRIPT = "/script";
    st.PATH_LOG = "/log";
    EXPECT_EQ(ResolveInProgramFolder(st, "x.hex"), "/home/p/x.hex");
    EXPECT_EQ(ResolveLoadPath(st, "x.hex"), "/load/x.hex");
    EXPECT_EQ(ResolveSavePath(st, "x.hex"), "/save/x.hex");
    EXPECT_EQ(ResolveScriptPath(st, "x.scm"), "/script/x.scm");
    EXPECT_EQ(ResolveLogPath(st, "LOG.TXT"), "/log/LOG.TXT");
    // A single backslash does not make a name absolute.
    EXPECT_EQ(ResolveLoadPath(st, "\\data\\x.hex"), "/load/\\data\\x.hex");
    EXPECT_EQ(ResolveLoadPath(st, "C:\\x.hex"), "C:\\x.hex");
    EXPECT_EQ(ResolveLoadPath(st, "\\\\server\\x.hex"), "\\\\server\\x.hex");
    EXPECT_EQ(ResolveLoadPath(st, "/abs/x.hex"), "/abs/x.hex");
    EXPECT_FALSE(IsAbsoluteName("\\data\\x.hex"));
    EXPECT_TRUE(IsAbsoluteName("a\\\\b"));
}

TEST(NativePath, BackslashesAndCase) {
    TempDir d;
    d.write("SFRDEF/LD7RK.SFR", "x");
    EXPECT_EQ(NativePath(d.path + "\\SFRDEF\\LD7RK.SFR"), d.path + "/SFRDEF/LD7RK.SFR");
    EXPECT_EQ(NativePath(d.path + "/sfrdef/ld7rk.sfr"), d.path + "/SFRDEF/LD7RK.SFR");
    EXPECT_EQ(NativePath(d.path + "/\\data\\x.hex"), d.path + "/data/x.hex");
    // A name that is not there comes back with "/" separators.
    EXPECT_EQ(NativePath(d.path + "\\none\\x"), d.path + "/none/x");
}

TEST(FileExists, WithoutTheFlagNeverAsks) {
    TempDir d;
    TestHost host;
    ProgramState st(host);
    st.programFolder = d.path;
    d.write("a.hex", "1");
    EXPECT_TRUE(FileExists(st, "a.hex", kFalse));
    EXPECT_TRUE(FileExists(st, "A.HEX", kFalse));
    EXPECT_FALSE(FileExists(st, "b.hex", kFalse));
    EXPECT_TRUE(host.boxes.empty());
}

TEST(FileExists, WithTheFlagAsksAndKeepsUnlessYes) {
    TempDir d;
    TestHost host;
    ProgramState st(host);
    st.programFolder = d.path;
    d.write("a.hex", "1");
    host.messageAnswers = {MsgAnswer::Yes, MsgAnswer::No};
    EXPECT_FALSE(FileExists(st, "a.hex", kTrue));
    EXPECT_TRUE(FileExists(st, "a.hex", kTrue));
    ASSERT_EQ(host.boxes.size(), 2u);
    EXPECT_EQ(host.boxes[0].text, "File allready exists ! Overwrite ?");
    EXPECT_EQ(host.boxes[0].buttons, MsgButtons::YesNo);
    // A missing file asks nothing.
    EXPECT_FALSE(FileExists(st, "b.hex", kTrue));
    EXPECT_EQ(host.boxes.size(), 2u);
}

TEST(FileExists, AFolderIsNoFile) {
    TempDir d;
    ProgramState st;
    st.programFolder = d.path;
    d.write("sub/x", "1");
    EXPECT_FALSE(FileExists(st, "sub", kFalse));
}

TEST(FileInfo, SizeDateAndRemove) {
    TempDir d;
    ProgramState st;
    st.programFolder = d.path;
    d.write("a.bin", "12345");
    EXPECT_EQ(FileSize(st, "a.bin"), 5);
    EXPECT_EQ(FileSize(st, "none"), -1);
    EXPECT_GT(FileDate(st, "a.bin"), 0);
    EXPECT_EQ(FileDate(st, "none"), -1);
    RemoveFile(st, "a.bin");
    EXPECT_FALSE(d.exists("a.bin"));
    RemoveFile(st, "a.bin");  // silently
}

TEST(NumericValue, DigitsFractionExponent) {
    EXPECT_EQ(NumericValue("1.5"), 1.5);
    EXPECT_EQ(NumericValue(" 12 "), 12.0);
    EXPECT_EQ(NumericValue("1e3"), 1000.0);
    EXPECT_EQ(NumericValue("-2"), -2.0);
    EXPECT_EQ(NumericValue(".5"), 0.5);
    EXPECT_FALSE(NumericValue(""));
    EXPECT_FALSE(NumericValue("1A"));
    EXPECT_FALSE(NumericValue("."));
    EXPECT_FALSE(NumericValue("\t1"));
    EXPECT_FALSE(NumericValue("1 2"));
}

TEST(LeadingNumberValue, ReadsWhatStandsThere) {
    EXPECT_EQ(LeadingNumberValue("12AB"), 12.0);
    EXPECT_EQ(LeadingNumberValue("X"), 0.0);
    EXPECT_EQ(LeadingNumberValue(" 7"), 7.0);
    EXPECT_EQ(LeadingNumberValue(""), 0.0);
}

TEST(RoundToInt32, HalfToEvenAndRange) {
    EXPECT_EQ(RoundToInt32(1.5), 2);
    EXPECT_EQ(RoundToInt32(2.5), 2);
    EXPECT_EQ(RoundToInt32(-0.4), 0);
    EXPECT_FALSE(RoundToInt32(3e9));
}

}  // namespace vortelm
