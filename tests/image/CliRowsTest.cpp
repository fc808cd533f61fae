// The file, hex editor and selection rows through vortelm-cli: what an
// operator types and sees, byte for byte (the CLI writes each CR LF as one
// line feed).

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

#include "ImageTestSupport.h"

#ifdef VORTELM_CLI

namespace vortelm {
namespace {

class CliRows : public test::ImageTest {
  protected:
    // Runs the lines through the CLI; gives its standard output.
    std::string Cli(const std::string& lines) {
        WriteFile(path("input.txt"), lines);
        const std::string cmd = std::string(VORTELM_CLI) + " --home " + path("clihome") + " < " +
                                path("input.txt") + " 2>/dev/null";
        std::string out;
        if (FILE* p = ::popen(cmd.c_str(), "r")) {
            char buf[4096];
            size_t n;
            while ((n = std::fread(buf, 1, sizeof buf, p)) > 0) out.append(buf, n);
            exitStatus = ::pclose(p);
        }
        return out;
    }
    std::string Setpaths() const {
        return "_setpath LOAD," + path("load") + "\n_setpath SAVE," + path("save") + "\n";
    }
    std::string Echo(const std::string& line) const { return ">" + line + "\n"; }
    int exitStatus = -1;
};

TEST_F(CliRows, LoadWarnsAndReports) {
    WriteFile(path("load/a.hex"), "junk\r\n:0100000011EF\r\n:00000001FF\r\n");
    const std::string out = Cli(Setpaths() + "_load a.hex\n_showselections\n");
    EXPECT_EQ(out, Echo("_setpath LOAD," + path("load")) + Echo("_setpath SAVE," + path("save")) +
                       Echo("_load a.hex") +
                       "\n*WARNING: No ':' at beginning of line - line ignored "
                       "\n*WARNING: Checksum in line 2 wrong. Read: 0xEF, calculated: 0xEE"
                       "\n*Load: 1 bytes loaded"
                       // the report has no line end: the CLI starts the echo on a line of its own
                       "\n" +
                       Echo("_showselections") + "Selection 0: 000000 to 000000\n");
    EXPECT_EQ(exitStatus, 0);
}

TEST_F(CliRows, EmptyShowSelectionsAndUnknownPathType) {
    const std::string out = Cli("_showselections\n_setpath FOO,x\n");
    EXPECT_EQ(out, Echo("_showselections") + Echo("_setpath FOO,x") +
                       "*ERROR: Illegal parameters\nusage: _setpath <type>,<path>\n");
    EXPECT_NE(exitStatus, 0);
}

TEST_F(CliRows, SaveFormatsAndIndexedName) {
    const std::string out = Cli(Setpaths() +
                                "_addselection 10000,10001\n_fillmemory AA\n_save a.hex,32,21\n"
                                "_save b.hex\n_assign %1=10\n_savex c.hex,%1\n");
    EXPECT_NE(out.find(Echo("_save a.hex,32,21") + "\n*SaveAs: selection written to file"),
              std::string::npos);
    EXPECT_EQ(ReadFile(path("save/a.hex")).substr(0, 17), ":020000150001E8\r\n");
    // The settings' defaults: 32-byte records, format 20 (type 02 records).
    EXPECT_EQ(ReadFile(path("save/b.hex")),
              ":020000021000EC\r\n:02000000AAAAAA\r\n:00000001FF\r\n");
    // The index is variable 1's value, 10.
    EXPECT_TRUE(std::filesystem::exists(dir / "save/c000010.hex"));
    EXPECT_FALSE(std::filesystem::exists(dir / "save/c000000.hex"));
}

TEST_F(CliRows, ABoundEndsTheCommandWithOneErrorLine) {
    WriteFile(path("load/o.hex"), ":0200000480007A\r\n");
    const std::string out = Cli(Setpaths() + "_load o.hex\n");
    EXPECT_NE(out.find(Echo("_load o.hex") +
                       "*ERROR: Intel HEX extended linear address 8000 overflow in line 1\n"),
              std::string::npos)
        << out;
    EXPECT_NE(exitStatus, 0);
}

TEST_F(CliRows, BinaryRoundTrip) {
    WriteFile(path("load/a.bin"), std::string("\x01\x02\x03\x04", 4));
    const std::string out =
        Cli(Setpaths() +
            "_binload a.bin,100\n_addselection 108,109\n_binsave b.bin,EE\n_binsave c.bin\n");
    EXPECT_NE(out.find("\n*Load Binary: 4 bytes loaded"), std::string::npos);
    EXPECT_NE(out.find("\n*Save Binary: selection written to binary file"), std::string::npos);
    EXPECT_EQ(ReadFile(path("save/b.bin")),
              std::string("\x01\x02\x03\x04\xEE\xEE\xEE\xEE\xEE\xEE", 10));
    EXPECT_EQ(ReadFile(path("save/c.bin")), std::string("\x01\x02\x03\x04", 4) + "");
}

}  // namespace
}  // namespace vortelm

#endif
