// Files written by objcopy and srec_cat load to the bytes they came from, and
// files Vortelm writes read back through both tools to the same bytes.

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "image/BinaryFile.h"
#include "image/Dump.h"
#include "image/HexFile.h"
#include "image/SRecordFile.h"
#include "image/Selections.h"
#include "ImageTestSupport.h"

namespace vortelm {
namespace {

bool HaveTool(const char* name) {
    const std::string cmd = std::string("command -v ") + name + " >/dev/null 2>&1";
    return std::system(cmd.c_str()) == 0;
}

class Interop : public test::ImageTest {
protected:
    void SetUp() override {
        test::ImageTest::SetUp();
        if (!HaveTool("objcopy") || !HaveTool("srec_cat")) GTEST_SKIP() << "objcopy or srec_cat missing";
    }
    static std::string Random(size_t n, uint32_t seed) {
        std::mt19937 rng(seed);
        std::string s(n, '\0');
        for (auto& c : s) c = static_cast<char>(rng() & 0xFF);
        return s;
    }
    void Sh(const std::string& cmd) {
        ASSERT_EQ(std::system((cmd + " 2>/dev/null").c_str()), 0) << cmd;
    }
    // Loads a file with the reader and checks the one selection and its bytes.
    template <class Reader>
    void ExpectLoads(Reader read, const std::string& file, int32_t base, const std::string& bytes) {
        ProgramState other(*host);
        InitDumpMemory(other.dump);
        read(other, file);
        ASSERT_EQ(other.selections.count, 1) << file;
        EXPECT_EQ(other.selections.start[0], base) << file;
        EXPECT_EQ(other.selections.end[0], base + static_cast<int32_t>(bytes.size()) - 1) << file;
        std::vector<uint8_t> got(bytes.size());
        ReadDumpBlock(other.dump, base, got);
        EXPECT_TRUE(std::equal(got.begin(), got.end(), bytes.begin(),
                               [](uint8_t a, char b) { return a == static_cast<uint8_t>(b); }))
            << file;
    }
    // Puts the bytes into the image as loaded, with one selection.
    void Place(int32_t base, const std::string& bytes) {
        WriteDumpBlock(st->dump, base,
                       std::span<const uint8_t>(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()),
                       kMarksLoaded);
        ClearSelections(st->selections);
        AddSelection(st->selections, base, base + static_cast<int32_t>(bytes.size()) - 1);
    }
};

auto HexReader = [](ProgramState& s, const std::string& f) { ReadHexFile(s, f); };
auto SReader = [](ProgramState& s, const std::string& f) { ReadSRecordFile(s, f); };

TEST_F(Interop, IntelHexOfObjcopyType2AndType4) {
    const std::string bytes = Random(70000, 1);
    WriteFile(path("src.bin"), bytes);
    Sh("objcopy -I binary -O ihex --change-addresses 0x12340 " + path("src.bin") + " " + path("o2.hex"));
    ASSERT_NE(ReadFile(path("o2.hex")).find(":02000002"), std::string::npos);
    ExpectLoads(HexReader, path("o2.hex"), 0x12340, bytes);
    Sh("objcopy -I binary -O ihex --change-addresses 0x123400 " + path("src.bin") + " " + path("o4.hex"));
    ASSERT_NE(ReadFile(path("o4.hex")).find(":02000004"), std::string::npos);
    ExpectLoads(HexReader, path("o4.hex"), 0x123400, bytes);
}

TEST_F(Interop, IntelHexOfSrecCatType2AndType4) {
    const std::string bytes = Random(70000, 2);
    WriteFile(path("src.bin"), bytes);
    Sh("srec_cat " + path("src.bin") + " -binary -offset 0x12340 -o " + path("s4.hex") + " -intel");
    ASSERT_NE(ReadFile(path("s4.hex")).find(":02000004"), std::string::npos);
    ExpectLoads(HexReader, path("s4.hex"), 0x12340, bytes);
    Sh("srec_cat " + path("src.bin") + " -binary -offset 0x12340 -o " + path("s2.hex") +
       " -intel -address-length=3");
    ASSERT_NE(ReadFile(path("s2.hex")).find(":02000002"), std::string::npos);
    ExpectLoads(HexReader, path("s2.hex"), 0x12340, bytes);
}

TEST_F(Interop, SRecordsOfSrecCatAndObjcopy) {
    const std::string small = Random(40000, 3);
    WriteFile(path("small.bin"), small);
    Sh("srec_cat " + path("small.bin") + " -binary -offset 0x1000 -o " + path("a.s19") +
       " -motorola -address-length=2");
    ASSERT_EQ(ReadFile(path("a.s19")).find("S2"), std::string::npos);
    ExpectLoads(SReader, path("a.s19"), 0x1000, small);

    const std::string bytes = Random(70000, 4);
    WriteFile(path("src.bin"), bytes);
    Sh("srec_cat " + path("src.bin") + " -binary -offset 0x12340 -o " + path("a.s28") +
       " -motorola -address-length=3");
    ASSERT_NE(ReadFile(path("a.s28")).find("\nS2"), std::string::npos);
    ExpectLoads(SReader, path("a.s28"), 0x12340, bytes);
    Sh("srec_cat " + path("src.bin") + " -binary -offset 0x12340 -o " + path("a.s37") +
       " -motorola -address-length=4");
    ASSERT_NE(ReadFile(path("a.s37")).find("\nS3"), std::string::npos);
    ExpectLoads(SReader, path("a.s37"), 0x12340, bytes);
    Sh("objcopy -I binary -O srec --srec-forceS3 --change-addresses 0x12340 " + path("src.bin") +
       " " + path("o.s37"));
    ExpectLoads(SReader, path("o.s37"), 0x12340, bytes);
}

TEST_F(Interop, IntelHexWrittenByVortelmReadsBackThroughBothTools) {
    const std::string bytes = Random(70000, 5);
    Place(0x12340, bytes);
    for (int16_t format : {kHexFormatSegment, kHexFormatLinear}) {
        SCOPED_TRACE(format);
        WriteHexSelections(*st, path("v.hex"), 32, format);
        Sh("srec_cat " + path("v.hex") + " -intel -offset -0x12340 -o " + path("sc.bin") + " -binary");
        EXPECT_TRUE(ReadFile(path("sc.bin")) == bytes);
        Sh("objcopy -I ihex -O binary " + path("v.hex") + " " + path("oc.bin"));
        EXPECT_TRUE(ReadFile(path("oc.bin")) == bytes);
        // The range writer too: with 32-byte records from an address that
        // is a multiple of 32 no record crosses a 64 KiB line.
        WriteHexRange(*st, path("r.hex"), 0x12340, 0x12340 + 69999, 32, format);
        Sh("objcopy -I ihex -O binary " + path("r.hex") + " " + path("or.bin"));
        EXPECT_TRUE(ReadFile(path("or.bin")) == bytes);
    }
}

TEST_F(Interop, SRecordsWrittenByVortelmReadBackThroughBothTools) {
    const std::string small = Random(40000, 6);
    Place(0x1000, small);
    WriteSRecordSelections(*st, path("v.s19"), 32, 19);
    Sh("srec_cat " + path("v.s19") + " -motorola -offset -0x1000 -o " + path("sc.bin") + " -binary");
    EXPECT_TRUE(ReadFile(path("sc.bin")) == small);
    Sh("objcopy -I srec -O binary " + path("v.s19") + " " + path("oc.bin"));
    EXPECT_TRUE(ReadFile(path("oc.bin")) == small);

    const std::string bytes = Random(70000, 7);
    Place(0x12340, bytes);
    for (int16_t format : {int16_t(28), int16_t(37)}) {
        SCOPED_TRACE(format);
        const std::string f = path("v.s" + std::to_string(format));
        WriteSRecordSelections(*st, f, 32, format);
        Sh("srec_cat " + f + " -motorola -offset -0x12340 -o " + path("sc.bin") + " -binary");
        EXPECT_TRUE(ReadFile(path("sc.bin")) == bytes);
        Sh("objcopy -I srec -O binary " + f + " " + path("oc.bin"));
        EXPECT_TRUE(ReadFile(path("oc.bin")) == bytes);
    }
}

TEST_F(Interop, BinaryWrittenByVortelmEqualsTheSource) {
    const std::string bytes = Random(5000, 8);
    Place(0x40000, bytes);
    WriteBinarySelections(*st, path("v.bin"), -1);
    EXPECT_TRUE(ReadFile(path("v.bin")) == bytes);
}

}  // namespace
}  // namespace vortelm
