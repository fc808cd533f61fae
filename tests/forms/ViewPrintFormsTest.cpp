// The view, print, front-end settings and about forms, without a display.

#include <gtest/gtest.h>

#include <cmath>

#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "forms/FAbout.h"
#include "forms/FFrontendSettings.h"
#include "forms/FPrint.h"
#include "forms/FView.h"
#include "image/Dump.h"
#include "image/Selections.h"

namespace vortelm::forms {
namespace {

struct Forms : ::testing::Test {
    TestHost host;
    std::unique_ptr<ProgramState> st = std::make_unique<ProgramState>(host);
    void Put(int32_t address, std::initializer_list<int> bytes) {
        for (int b : bytes) {
            WriteDumpByte(st->dump, address, static_cast<uint8_t>(b));
            SetDefined(st->dump, address, kTrue);
            ++address;
        }
    }
};

constexpr const char* kStars37 = "*************************************";

TEST_F(Forms, ViewWordAndLongTitlesAndRows) {
    Put(0x100, {0x34, 0x12, 0x78});
    AddSelection(st->selections, 0x100, 0x102);
    FView view(*st);
    view.setmode(0);
    EXPECT_EQ(view.title(), "View Word");
    // Three bytes give two rows; the fourth byte is not Defined.
    EXPECT_EQ(view.rows(), (std::vector<std::string>{"000100: 1234", "000102: ....", kStars37}));
    view.setmode(1);
    EXPECT_EQ(view.title(), "View Long");
    EXPECT_EQ(view.rows(), (std::vector<std::string>{"000100: ........", kStars37}));
}

TEST_F(Forms, ViewLongOfUndefinedBytesGivesOnlyPoints) {
    AddSelection(st->selections, 0x20, 0x27);
    AddSelection(st->selections, 0x40, 0x41);
    FView view(*st);
    view.setmode(1);
    EXPECT_EQ(view.rows(), (std::vector<std::string>{"000020: ........", "000024: ........",
                                                     kStars37, "000040: ........", kStars37}));
}

TEST_F(Forms, ViewCopiesTheSelectedRowsEachBehindALineEnd) {
    Put(0x100, {0x01, 0x00, 0x02, 0x00});
    AddSelection(st->selections, 0x100, 0x103);
    FView view(*st);
    view.setmode(0);
    const int rows[] = {0, 2, 7, -1};
    EXPECT_EQ(view.copyText(rows), "\r\n000100: 0001\r\n" + std::string(kStars37));
    EXPECT_EQ(view.copyText({}), "");
}

TEST_F(Forms, ViewRefreshFollowsTheSelections) {
    FView view(*st);
    view.setmode(0);
    EXPECT_TRUE(view.rows().empty());
    AddSelection(st->selections, 0x0, 0x1);
    view.refreshview();
    EXPECT_EQ(view.rows().size(), 2u);
}

TEST_F(Forms, PrintHexStyleHasTheHeadAndRowsOfSixteen) {
    for (int i = 0; i < 18; ++i) Put(0x1000 + i, {0x41 + i});
    AddSelection(st->selections, 0x1000, 0x1011);
    const std::vector<std::string> lines = PrintLines(*st, PrintStyle::Hex);
    const std::vector<std::string> expected = {
        "",
        "",
        "               00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F",
        "      001000 : 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 ",
        "      001010 : 51 52 ",
        "",
        "*******************************************************************",
        "",
    };
    EXPECT_EQ(lines, expected);
}

TEST_F(Forms, PrintTextStyleAddsTheCharactersWithPointsBelowBlank) {
    Put(0x10, {'O', 'K', 0x0D, 0x0A, ' '});
    AddSelection(st->selections, 0x10, 0x14);
    const std::vector<std::string> lines = PrintLines(*st, PrintStyle::Text);
    ASSERT_EQ(lines.size(), 7u);
    EXPECT_EQ(lines[3], "      000010 : 4F 4B 0D 0A 20 OK.. ");
}

shell::DecodedInstruction FakeDecode(ProgramState& st, int32_t address) {
    const uint8_t op = ReadDumpByte(st.dump, address);
    if (op == 0xFF) return {"Illegal Instruction", 2};
    return {"OP" + std::to_string(op), op >= 0x80 ? 4 : 2};
}

TEST_F(Forms, PrintAssemblerStyleStartsOneByteEarlierAtAnOddStart) {
    Put(0x200, {0x01, 0x00, 0x81, 0x00, 0x00, 0x00, 0xFF, 0x00, 0x02, 0x00});
    AddSelection(st->selections, 0x201, 0x209);
    const std::vector<std::string> lines = PrintLines(*st, PrintStyle::Assembler, &FakeDecode);
    const std::vector<std::string> expected = {
        "",
        "",
        "      000200 : OP1",
        "      000202 : OP129",
        "      000206 : Illegal Instruction",
        "",
        "*******************************************************************",
        "",
    };
    EXPECT_EQ(lines, expected);
}

TEST_F(Forms, PrintFormOffersAssemblerOnlyWithADecoder) {
    FPrint without(*st, {});
    without.setStyle(PrintStyle::Assembler);
    without.Form_Load({"office", "lab"});
    EXPECT_FALSE(without.assemblerEnabled());
    EXPECT_EQ(without.style(), PrintStyle::Hex);
    EXPECT_EQ(without.printer(), 0);
    without.setPrinter(1);
    EXPECT_EQ(without.printer(), 1);
    without.setPrinter(5);
    EXPECT_EQ(without.printer(), 1);
    FPrint with(*st, &FakeDecode);
    with.Form_Load({});
    EXPECT_TRUE(with.assemblerEnabled());
    EXPECT_EQ(with.printer(), -1);
    EXPECT_EQ(with.BOk(), (std::vector<std::string>{"", ""}));
}

TEST_F(Forms, FrontendSettingsShowAndStoreTheValues) {
    st->COLOR_BGMARKED = 0xDDDDDD;
    st->COLOR_FGINVALID = 0x0000FF;
    st->logEnabled = 0;
    st->REFRESHSFR = kTrue;
    st->BLANK_CHAR = ".";
    FFrontendSettings f(*st);
    f.get_preferences();
    EXPECT_FALSE(f.OLog);
    EXPECT_TRUE(f.ORefreshsfr);
    EXPECT_EQ(f.TBlankchar, ".");
    EXPECT_EQ(f.colours[0], "DDDDDD");
    EXPECT_EQ(f.colours[3], "0000FF");
    EXPECT_EQ(f.TScaleFactor, "100");
    f.OLog = true;
    f.ORefreshsfr = false;
    f.TBlankchar = "_";
    f.colours[1] = "123456";
    EXPECT_EQ(f.preview(ColourBox::BGNormal), 0x123456);
    EXPECT_FALSE(f.BOk().has_value());  // the scale did not change
    EXPECT_EQ(st->logEnabled, 1);
    EXPECT_EQ(st->REFRESHSFR, kFalse);
    EXPECT_EQ(st->BLANK_CHAR, "_");
    EXPECT_EQ(st->COLOR_BGNORMAL, 0x123456);
}

TEST_F(Forms, AColourThatIsNoHexadecimalNumberIsStoredAsMinusOne) {
    FFrontendSettings f(*st);
    f.get_preferences();
    f.colours[4] = "green";
    EXPECT_EQ(f.preview(ColourBox::FGMonitor), -1);
    (void)f.BOk();
    EXPECT_EQ(st->COLOR_FGMONITOR, -1);
    f.get_preferences();
    EXPECT_EQ(f.colours[4], "-1");
}

TEST_F(Forms, ScaleFrom100To200AndBackGivesFactorsTwoAndOneHalf) {
    FFrontendSettings f(*st);
    f.get_preferences();
    f.TScaleFactor = "200";
    const std::optional<double> up = f.BOk();
    ASSERT_TRUE(up.has_value());
    EXPECT_DOUBLE_EQ(*up, 2.0);
    EXPECT_EQ(st->SCALEFACTOR, 200);
    f.get_preferences();
    f.TScaleFactor = "100";
    const std::optional<double> down = f.BOk();
    ASSERT_TRUE(down.has_value());
    EXPECT_DOUBLE_EQ(*down, 0.5);
    EXPECT_DOUBLE_EQ(*up * *down, 1.0);
}

TEST_F(Forms, AScaleTextThatIsNoNumberIsTakenAsZero) {
    FFrontendSettings f(*st);
    f.get_preferences();
    f.TScaleFactor = "big";
    const std::optional<double> factor = f.BOk();
    ASSERT_TRUE(factor.has_value());
    EXPECT_DOUBLE_EQ(*factor, 0.0);
    EXPECT_EQ(st->SCALEFACTOR, 0);
    // From 0 on the factor is not finite; the front end refuses to apply it.
    f.get_preferences();
    f.TScaleFactor = "100";
    const std::optional<double> back = f.BOk();
    ASSERT_TRUE(back.has_value());
    EXPECT_FALSE(std::isfinite(*back));
    EXPECT_EQ(st->SCALEFACTOR, 100);
}

TEST_F(Forms, AboutNamesVersionBuildDateAndLicence) {
    FAbout about;
    const std::vector<std::string> lines = about.lines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0], "Vortelm " + about.version());
    EXPECT_NE(about.version().find('.'), std::string::npos);
    EXPECT_EQ(lines[2], "Built " + about.buildDate());
    EXPECT_EQ(about.buildDate().size(), 10u);  // YYYY-MM-DD
    EXPECT_NE(about.licence().find("Copyright"), std::string::npos);
}

TEST_F(Forms, LaunchInfoFollowsStartUpAndHidesAtTheEnd) {
    FInfo info;
    EXPECT_TRUE(info.visible());
    info.progress(1, 100);
    EXPECT_EQ(info.XProgress(), 1);
    info.progress(80, 100);
    EXPECT_EQ(info.XProgress(), 80);
    info.progress(500, 100);
    EXPECT_EQ(info.XProgress(), 100);
    info.progress(0, 0);
    EXPECT_FALSE(info.visible());
}

}  // namespace
}  // namespace vortelm::forms
