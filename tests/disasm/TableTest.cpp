// The delivered instruction table against the decoder's operand syntax, and
// the reader's acceptance rules.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <unistd.h>

#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "disasm/CommandTable.h"
#include "disasm/Decoder.h"

namespace vortelm::disasm {
namespace {

namespace fs = std::filesystem;

std::string DeliveredTable() {
    std::ifstream in(fs::path(VORTELM_SOURCE_DIR) / "data" / "CMDDEF" / "command.cmd",
                     std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

// The operand syntax of each first byte, written out again from the syntax
// table: the field references each row uses, first matching row winning.
// "-" marks a byte whose whole result is "Illegal Instruction", "~" the
// rows whose three following bytes are checked.
struct SyntaxRow {
    std::vector<int> bytes;
    std::string refs;
};

std::vector<int> Column(int low, int highest) {
    std::vector<int> v;
    for (int x = 0; x <= highest; ++x) v.push_back(x * 16 + low);
    return v;
}
std::vector<int> Plus(std::vector<int> a, std::initializer_list<int> b) {
    a.insert(a.end(), b);
    return a;
}

const std::vector<SyntaxRow>& SyntaxRows() {
    static const std::vector<SyntaxRow> rows{
        {{0xCB, 0xCC, 0xDB, 0xFB, 0x83, 0x8C, 0x93, 0xA3, 0xB3, 0xC3, 0xD3}, ""},
        {{0x85, 0x87, 0x97, 0xA5, 0xA7, 0xB5, 0xB7}, "~"},
        {{0x4B, 0x5B, 0x6B, 0x7B, 0x81, 0x91}, "Q0"},
        {{0xA1, 0xB1}, "Q0"},
        {{0xEB, 0xEC, 0xFC}, "B1"},
        {{0x00, 0x0B, 0x0C, 0x10, 0x1B, 0x20, 0x2B, 0x2C, 0x30, 0x40, 0x50, 0x60, 0x4C, 0x6C, 0x70,
          0xF0, 0xAC},
         "Q0 Q1"},
        {{0x01, 0x11, 0x21, 0x31, 0x41, 0x51, 0x61, 0x71, 0xF1}, "Q0 Q1"},
        {{0xC0, 0xD0}, "Q0 Q1"},
        {{0xC8, 0xC9, 0xA8, 0xB8, 0xA9, 0xB9, 0x98, 0xE8, 0xE9, 0xD8, 0xD9, 0x88, 0x89, 0x99},
         "Q0 Q1"},
        {Plus(Column(0x2, 7), {0xD6, 0xF2}), "B1 W0"},
        {Plus(Column(0x3, 7), {0xC2, 0xD2, 0xF3}), "B1 W0"},
        {{0x04, 0x14, 0x24, 0x34, 0x54, 0x64, 0x74, 0xF6}, "B1 W0"},
        {{0x05, 0x15, 0x25, 0x35, 0x55, 0x65, 0x75, 0xF7, 0xC5, 0xD5}, "B1 W0"},
        {Plus(Column(0x6, 7), {0xC6, 0xE6}), "B1 W0"},
        {{0x86, 0x96, 0xA6, 0xB6}, "Q1 W0"},
        {{0x1C, 0x3C, 0x5C, 0x7C, 0x80, 0x90, 0xA0, 0xB0, 0xBC, 0xE0}, "Q0 Q1"},
        {{0xE1}, "Q0 Q1"},
        {Plus(Column(0x7, 7), {0xE7}), "B1 B2"},
        {{0x82, 0x92, 0xA2, 0xB2}, "Q1 W0"},
        {{0x84, 0xA4}, "Q1 W0"},
        {{0x94, 0xB4}, "Q1 W0"},
        {Column(0x8, 7), "Q0 Q1"},
        {Column(0x9, 7), "Q0 Q1"},
        {{0xC4, 0xD4, 0xE4, 0xF4}, "Q0 Q1 W0"},
        {{0x0A, 0x1A}, "B1 B2 B3"},
        {{0x2A, 0x3A, 0x4A, 0x5A, 0x6A, 0x7A}, "B1 B2 q0 q1"},
        {{0x8A, 0x9A, 0xAA, 0xBA}, "B1 B2 q0"},
        {{0x9C, 0xAB}, "Q0 Q1"},
        {{0xCA, 0xEA}, "Q0 W0"},
        {Column(0xD, 15), "h0 b0"},
        {{0xBB}, "B1"},
        {Column(0xE, 15), "h0 b0"},
        {Column(0xF, 15), "h0 b0"},
        {{0xFA, 0xDA}, "B1 W0"},
        {{0xE2}, "B1 W0"},
        {{0x9B}, "B1"},
        {{0xD1}, "T0 T1"},
        {{0xDC}, "T0 T1 Q0@12"},
        {{0xD7}, "T0 T1 B1@16 T3"},
        {{0x3B, 0x44, 0x45, 0x8B, 0x95, 0xC1, 0xC7, 0xE3, 0xE5, 0xF5, 0xF8, 0xF9}, "-"},
    };
    return rows;
}

// The references of each first byte after the first-match rule.
std::map<int, std::string> RefsByByte() {
    std::map<int, std::string> m;
    for (const auto& r : SyntaxRows())
        for (int b : r.bytes) m.emplace(b, r.refs);
    return m;
}

// Where each reference must begin in the bit stream: the opcode is B0, the
// nibbles of the second byte Q0 and Q1, the word of bytes 2 and 3 is W0. In
// the bit rows the nibbles of the last byte are Q0 and Q1 ("q"); in the
// rows xD, xE, xF the nibbles of the first byte are Q0 and Q1 ("h") and the
// second byte is B0 ("b").
// A reference written "B1@16" begins where it says.
int ExpectedOffset(const std::string& ref) {
    if (const size_t at = ref.find('@'); at != std::string::npos)
        return std::stoi(ref.substr(at + 1));
    static const std::map<std::string, int> at{
        {"T0", 8},  {"T1", 10}, {"T3", 30}, {"Q0", 8},  {"Q1", 12}, {"B1", 8}, {"B2", 16},
        {"B3", 24}, {"W0", 16}, {"q0", 24}, {"q1", 28}, {"h0", 0},  {"b0", 8},
    };
    return at.at(ref);
}

struct Row {
    int opcode = -1;
    std::string mnemonic;
    int length = 0;
    std::vector<int> widths;
};

std::map<int, Row> ParseRows(const std::string& text) {
    std::map<int, Row> rows;
    std::stringstream s(text);
    std::string line;
    while (std::getline(s, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty()) continue;
        std::vector<std::string> parts;
        std::stringstream ls(line);
        std::string p;
        while (std::getline(ls, p, ',')) parts.push_back(p);
        Row r;
        r.opcode = std::stoi(parts.at(0), nullptr, 16);
        r.mnemonic = parts.at(1);
        r.length = std::stoi(parts.at(2));
        for (size_t i = 3; i < parts.size(); ++i) r.widths.push_back(std::stoi(parts[i]));
        EXPECT_FALSE(rows.count(r.opcode)) << line;
        rows[r.opcode] = r;
    }
    return rows;
}

// The bit offset at which a reference's field begins, -1 if no field fills it.
int OffsetOf(const Row& r, const std::string& ref) {
    const char kind = ref[0] == 'q' || ref[0] == 'h' ? 'Q' : (ref[0] == 'b' ? 'B' : ref[0]);
    const int index = ref[1] - '0';
    const int width = kind == 'T' ? 2 : kind == 'Q' ? 4 : kind == 'B' ? 8 : 16;
    int pos = 0, seen = 0;
    for (int w : r.widths) {
        if (w == width && seen++ == index) return pos;
        if (w == 2 || w == 4 || w == 8 || w == 16) pos += w;
    }
    return -1;
}

TEST(CommandTable, DeliveredFileHasOneRowForEveryFirstByte) {
    const auto rows = ParseRows(DeliveredTable());
    ASSERT_EQ(rows.size(), 256u);
    for (int op = 0; op < 256; ++op) EXPECT_TRUE(rows.count(op)) << op;
}

TEST(CommandTable, EveryFirstByteHasASyntaxRowOrPlainMnemonic) {
    // Every byte falls into one row of the syntax table.
    const auto refs = RefsByByte();
    EXPECT_EQ(refs.size(), 256u);
}

TEST(CommandTable, WidthsFillTheReferencesOfTheSyntaxTable) {
    const auto rows = ParseRows(DeliveredTable());
    const auto refs = RefsByByte();
    for (const auto& [op, r] : rows) {
        SCOPED_TRACE(r.mnemonic + " opcode " + std::to_string(op));
        EXPECT_GE(r.widths.size(), 2u);
        EXPECT_LE(r.widths.size(), 9u);
        int bits = 0;
        for (int w : r.widths) {
            EXPECT_TRUE(w == 2 || w == 4 || w == 8 || w == 16) << w;
            bits += w;
        }
        // The instruction set has two- and four-byte instructions; the
        // fields cover every bit.
        EXPECT_TRUE(r.length == 2 || r.length == 4);
        EXPECT_EQ(bits, 8 * r.length);
        const std::string& use = refs.at(op);
        // The first byte is the opcode: B0, or its two nibbles.
        if (use.find('h') != std::string::npos) {
            ASSERT_GE(r.widths.size(), 3u);
            EXPECT_EQ(r.widths[0], 4);
            EXPECT_EQ(r.widths[1], 4);
        } else {
            EXPECT_EQ(r.widths[0], 8);
        }
        if (use == "~") {
            EXPECT_EQ(r.length, 4);
        }
        if (use == "-" || use == "~") continue;
        std::stringstream s(use);
        std::string ref;
        while (s >> ref) EXPECT_EQ(OffsetOf(r, ref), ExpectedOffset(ref)) << ref;
    }
}

TEST(CommandTable, IllegalRowsArePresent) {
    const auto rows = ParseRows(DeliveredTable());
    for (int op : {0x3B, 0x44, 0x45, 0x8B, 0x95, 0xC1, 0xC7, 0xE3, 0xE5, 0xF5, 0xF8, 0xF9}) {
        ASSERT_TRUE(rows.count(op));
        EXPECT_FALSE(rows.at(op).mnemonic.empty());
    }
}

TEST(CommandTable, ReaderTakesTheDeliveredFile) {
    InstructionTable t;
    const TableFault f = ParseCommandTable(DeliveredTable(), t);
    EXPECT_TRUE(f.ok()) << f.line << " " << f.reason;
    EXPECT_TRUE(t.loaded);
    EXPECT_EQ(t.rows[0xE6].mnemonic, "MOV");
    EXPECT_EQ(t.rows[0xE6].byteLength, 4);
    EXPECT_EQ(t.rows[0xE6].fieldCount, 3);
    EXPECT_EQ(t.rows[0xD7].fieldCount, 8);
    EXPECT_EQ(InstructionLength(t, 0xCC), 2);
}

struct Bad {
    const char* text;
    int line;
    const char* reason;
};

TEST(CommandTable, MalformedLinesAreNamed) {
    const Bad cases[] = {
        {"00,ADD,2\n", 1, "fewer than five fields"},
        {"00,ADD,2,8\n", 1, "fewer than two field widths"},
        {"00,ADD,2,8,4,4\n01,ADDB,2,16\n", 2, "fewer than two field widths"},
        {"00,ADD,2,8,4,4\n\n01,ADDB,2,8,\n", 3, "field width \"\" is no decimal number"},
        {"0G,ADD,2,8,8\n", 1, "opcode \"0G\" is no number from 0 to 100"},
        {"101,ADD,2,8,8\n", 1, "opcode \"101\" is no number from 0 to 100"},
        {"00,,2,8,8\n", 1, "empty mnemonic"},
        {"00,ADD,9,8,8\n", 1, "length \"9\" is no number from 0 to 8"},
        {"00,ADD,x,8,8\n", 1, "length \"x\" is no number from 0 to 8"},
        {"00,ADD,2,8,8,8\n", 1, "fields reach past the instruction's 2 bytes"},
        {"00,ADD,8,2,2,2,2,2,2,2,2\n", 1, "more than seven fields of 2 bits"},
        {"00,ADD,8,1,1,1,1,1,1,1,1,1,1\n", 1, "more than nine field widths"},
        {"00,ADD,2,8,8\n00,ADD,2,8,8\n", 2, "opcode 00 given twice"},
        {"00,ADD,2,8, 8\n", 1, "field width \" 8\" is no decimal number"},
    };
    for (const Bad& b : cases) {
        InstructionTable t;
        t.rows[5].mnemonic = "OLD";
        const TableFault f = ParseCommandTable(b.text, t);
        EXPECT_EQ(f.line, b.line) << b.text;
        EXPECT_EQ(f.reason, b.reason) << b.text;
        EXPECT_FALSE(t.loaded);
        EXPECT_TRUE(t.rows[0].mnemonic.empty());
        EXPECT_TRUE(t.rows[5].mnemonic.empty());
    }
}

TEST(CommandTable, WidthsThatMoveNoBitAreKeptAndSkipped) {
    InstructionTable t;
    const TableFault f = ParseCommandTable("CC,NOP,2,8,3,8\r\n", t);
    ASSERT_TRUE(f.ok()) << f.reason;
    EXPECT_EQ(t.rows[0xCC].fieldCount, 3);
    EXPECT_EQ(t.rows[0xCC].fieldWidth[1], 3);
}

struct Home : ::testing::Test {
    fs::path dir = fs::temp_directory_path() / ("vortelm-disasm-" + std::to_string(::getpid()));
    TestHost host;
    ProgramState st{host};
    void SetUp() override {
        fs::remove_all(dir);
        fs::create_directories(dir / "CMDDEF");
        st.programFolder = dir.string();
    }
    void TearDown() override { fs::remove_all(dir); }
};

TEST_F(Home, MissingFileIsReportedAndDecodingGoesOn) {
    EXPECT_EQ(ReadCommandTable(st), -1);
    EXPECT_EQ(host.terminal, "*ERROR: Instruction table " + dir.string() +
                                 "/CMDDEF/command.cmd not found, the disassembler is off\r\n");
    EXPECT_FALSE(st.instructions.loaded);
    EXPECT_EQ(DisassembleAt(st, 0x1000), "Illegal Instruction");
}

TEST_F(Home, MalformedFileNamesFileAndLine) {
    std::ofstream(dir / "CMDDEF" / "command.cmd") << "CC,NOP,2,8,8\r\nCB,RET,2,8\r\n";
    EXPECT_EQ(ReadCommandTable(st), -2);
    EXPECT_EQ(
        host.terminal,
        "*ERROR: Instruction table " + dir.string() +
            "/CMDDEF/command.cmd line 2: fewer than two field widths, the disassembler is off\r\n");
    EXPECT_FALSE(st.instructions.loaded);
    EXPECT_TRUE(st.instructions.rows[0xCC].mnemonic.empty());
}

TEST_F(Home, GoodFileIsRead) {
    std::ofstream(dir / "CMDDEF" / "command.cmd") << DeliveredTable();
    EXPECT_EQ(ReadCommandTable(st), 0);
    EXPECT_TRUE(host.terminal.empty());
    EXPECT_TRUE(st.instructions.loaded);
    EXPECT_EQ(st.instructions.rows[0xDA].mnemonic, "CALLS");
}

}  // namespace
}  // namespace vortelm::disasm
