#include "image/ImageLoad.h"

#include <string>
#include <vector>

#include "ImageTestSupport.h"
#include "core/RunTimeError.h"
#include "image/HexFile.h"
#include "image/SRecordFile.h"
#include "image/Selections.h"

namespace vortelm::test {
namespace {

class ImageLoad : public ImageTest {
  protected:
    // The boot sequence's use: load, then flatten.
    std::vector<uint8_t> loadAndFlatten(std::string_view name, const ImageFileReader& reader) {
        LoadImageFile(*st, name, reader);
        return FlattenSelections(*st);
    }
};

// Two runs with a gap: 11 22 at 0x0100, 33 at 0x0200.
const char* kTwoRuns =
    ":020100001122CA\r\n"
    ":0102000033CA\r\n"
    ":00000001FF\r\n";

TEST_F(ImageLoad, FlattenJoinsTheSelectionsWithoutFillingGaps) {
    WriteFile(path("home/TWO.HEX"), kTwoRuns);
    const std::vector<uint8_t> bytes =
        loadAndFlatten("TWO.HEX", [](ProgramState& s, const std::string& n) { ReadHexFile(s, n); });
    EXPECT_EQ(bytes, (std::vector<uint8_t>{0x11, 0x22, 0x33}));
    EXPECT_EQ(st->selections.count, 2);
    EXPECT_EQ(IsValid(st->dump, 0x0100), kTrue);
    EXPECT_EQ(IsValid(st->dump, 0x0200), kTrue);
    EXPECT_EQ(IsValid(st->dump, 0x0102), kFalse);
}

TEST_F(ImageLoad, SRecordFilesLoadTheSameWay) {
    WriteFile(path("home/ONE.SRE"), "S10501001122C6\r\nS9030000FC\r\n");
    EXPECT_EQ(loadAndFlatten("ONE.SRE", &ReadSRecordFile), (std::vector<uint8_t>{0x11, 0x22}));
}

TEST_F(ImageLoad, NoReaderGivesNothingAndAnEmptyList) {
    st->selections.count = 1;
    EXPECT_TRUE(loadAndFlatten("TWO.HEX", nullptr).empty());
    EXPECT_EQ(st->selections.count, 0);
}

TEST_F(ImageLoad, ABoundErrorOfTheReaderIsOneLineAndAnEmptyImage) {
    const ImageFileReader failing = [](ProgramState& s, const std::string&) {
        AddSelection(s.selections, 0, 3);
        throw RunTimeError("record beyond the image");
    };
    EXPECT_TRUE(loadAndFlatten("X.HEX", failing).empty());
    EXPECT_EQ(takeText(), "\r\n*ERROR: record beyond the image");
    EXPECT_EQ(st->selections.count, 0);
}

TEST_F(ImageLoad, TheNameIsTakenInTheProgramFolder) {
    std::string seen;
    LoadImageFile(*st, "KERNEL\\A.HEX", [&](ProgramState&, const std::string& p) { seen = p; });
    EXPECT_NE(seen.find(path("home")), std::string::npos) << seen;
}

}  // namespace
}  // namespace vortelm::test
