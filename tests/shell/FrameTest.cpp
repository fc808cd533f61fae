#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "core/TestHost.h"
#include "shell/Rows.h"
#include "shell/Shell.h"

namespace vortelm::shell {

struct Frame : ::testing::Test {
    TestHost host;
    std::unique_ptr<ProgramState> st = std::make_unique<ProgramState>(host);
    Session s{*st};
    int16_t result = 0;
    void SetUp() override { BuildShellCommandTable(s.table); }
    std::string Run(std::string_view line, int16_t checkOnly = 0) {
        host.terminal.clear();
        result = ExecuteShellCommand(s, line, checkOnly);
        return host.terminal;
    }
};

// ---- the table

TEST_F(Frame, TableHasAllRowsAndGroups) {
    EXPECT_EQ(s.table.shellCommandCount, 87);
    const char* groups[] = {"HELP FUNCTIONS",
                            "FILE FUNCTIONS",
                            "HEX EDITOR FUNCTIONS",
                            "SELECTION FUNCTIONS",
                            "TARGET CONNECTION FUNCTIONS",
                            "TARGET TRANSFER FUNCTIONS",
                            "TARGET EXECUTION FUNCTIONS",
                            "TARGET MISC FUNCTIONS",
                            "SFR VIEW FUNCTIONS",
                            "TERMINAL / COMM FUNCTIONS",
                            "LOGFILE FUNCTIONS",
                            "SCRIPTING FUNCTIONS",
                            "FLASH FUNCTIONS",
                            "NOT DOCUMENTED FUNCTIONS",
                            "VIEW FUNCTIONS"};
    for (int g = 1; g <= 15; ++g) EXPECT_EQ(s.table.shellGroupNames[g], groups[g - 1]);
    EXPECT_EQ(s.table.shellGroupNames[0], "");
    EXPECT_EQ(s.table.shellGroupNames[16], "");
}

TEST_F(Frame, EveryRowDeclaresAsManyParametersAsItsMost) {
    for (int i = 0; i < s.table.shellCommandCount; ++i) {
        const auto& r = s.table.shellCommands[i];
        EXPECT_EQ(r.parameterCount, r.maxParameters) << r.name;
        EXPECT_LE(r.minParameters, r.maxParameters) << r.name;
        EXPECT_GE(r.group, 1);
        EXPECT_LE(r.group, 15);
        for (int j = 0; j < r.parameterCount; ++j) {
            const std::string t = r.parameters[j].type;
            EXPECT_TRUE(t == "string" || t == "decimal value" ||
                        t == "hexadecimal value (24 bit)" || t == "hexadecimal value (16 bit)" ||
                        t == "hexadecimal value (8 bit)" || t == "filename" || t == "mem device" ||
                        t == "SFR" || t == "ON or OFF" || t == "variable")
                << r.name << " " << t;
        }
    }
}

TEST_F(Frame, RowsInOrderWithIdsAndGroups) {
    // name, id, group, min, max in the order of _help
    struct Row {
        const char* name;
        uint32_t id;
        int group, min, max;
    };
    const Row rows[] = {
        {"_help", 0x1001, 1, 0, 0},
        {"_test", 0x1002, 1, 0, 0},
        {"_load", 0x2001, 2, 1, 1},
        {"_save", 0x2002, 2, 1, 3},
        {"_binload", 0x2003, 2, 1, 2},
        {"_binsave", 0x2004, 2, 1, 2},
        {"_loadsre", 0x2005, 2, 1, 1},
        {"_savesre", 0x2006, 2, 1, 3},
        {"_setpath", 0x2007, 2, 2, 2},
        {"_savex", 0x2008, 2, 2, 4},
        {"_copy", 0x3001, 3, 0, 0},
        {"_cut", 0x3002, 3, 0, 0},
        {"_paste", 0x3003, 3, 1, 1},
        {"_fillmemory", 0x3004, 3, 1, 1},
        {"_clearmemory", 0x3005, 3, 0, 0},
        {"_randomfill", 0x3006, 3, 0, 0},
        {"_addselection", 0x4001, 4, 2, 2},
        {"_clearselections", 0x4002, 4, 0, 0},
        {"_showselections", 0x4003, 4, 0, 0},
        {"_moveselection", 0x4004, 4, 2, 2},
        {"_removeselection", 0x4005, 4, 1, 1},
        {"_connect", 0x5001, 5, 0, 1},
        {"_reconnect", 0x5002, 5, 0, 0},
        {"_disconnect", 0x5003, 5, 0, 0},
        {"_download", 0x6001, 6, 0, 0},
        {"_upload", 0x6002, 6, 0, 1},
        {"_compare", 0x6003, 6, 0, 1},
        {"_mov", 0x6004, 6, 2, 2},
        {"_movseq", 0x6005, 6, 2, 16},
        {"_r16", 0x6006, 6, 1, 2},
        {"_w16", 0x6007, 6, 2, 2},
        {"_d16", 0x6009, 6, 2, 2},
        {"_u16", 0x6008, 6, 2, 2},
        {"_srst", 0x7001, 7, 0, 0},
        {"_jmp", 0x7002, 7, 1, 1},
        {"_call", 0x7003, 7, 1, 9},
        {"_einit", 0x8001, 8, 0, 0},
        {"_movemonitor", 0x8002, 8, 1, 1},
        {"_setprotection", 0x8003, 8, 2, 3},
        {"_pllcon", 0x8004, 8, 1, 1},
        {"_rstcon", 0x8005, 8, 1, 1},
        {"_refreshsfr", 0x9001, 9, 0, 1},
        {"_addsfr", 0x9002, 9, 1, 2},
        {"_removesfr", 0x9003, 9, 1, 2},
        {"_send", 0xA001, 10, 1, 1},
        {"_sendfile", 0xA002, 10, 1, 1},
        {"_setp", 0xA003, 10, 2, 2},
        {"_setbaudrate", 0xE005, 10, 1, 1},
        {"_openport", 0x5004, 10, 0, 0},
        {"_logfile", 0xB001, 11, 1, 1},
        {"_setlogfile", 0xB002, 11, 1, 2},
        {"_writelogfile", 0xB003, 11, 1, 16},
        {"_print", 0xC008, 11, 1, 16},
        {"_delay", 0xC001, 12, 1, 1},
        {"_pause", 0xC002, 12, 0, 0},
        {"_message", 0xC003, 12, 1, 16},
        {"_cmessage", 0xC004, 12, 1, 16},
        {"_assign", 0xC005, 12, 1, 1},
        {"_executescript", 0xC006, 12, 1, 2},
        {"_quit", 0xC007, 12, 0, 0},
        {"_poll", 0xC009, 12, 3, 3},
        {"_input", 0xC00A, 12, 2, 3},
        {"_delayms", 0xC00B, 12, 1, 1},
        {"_iprogram", 0xD001, 13, 0, 0},
        {"_program", 0xD002, 13, 0, 0},
        {"_erase", 0xD003, 13, 2, 2},
        {"_status", 0xD004, 13, 1, 1},
        {"_protect", 0xD005, 13, 2, 2},
        {"_unprotect", 0xD006, 13, 2, 2},
        {"_lock", 0xD007, 13, 2, 3},
        {"_unlock", 0xD008, 13, 2, 3},
        {"_dumpmemecc", 0xD009, 13, 1, 4},
        {"_dumpmodify", 0xD00A, 13, 3, 5},
        {"_downloadtoasb", 0xD00B, 13, 0, 0},
        {"_loadasb_byte", 0xD00C, 13, 1, 2},
        {"_loadasb_word", 0xD00D, 13, 1, 2},
        {"_idreg", 0xE001, 14, 0, 0},
        {"_xorchecksum", 0xE002, 14, 1, 1},
        {"_addcchecksum", 0xE003, 14, 1, 2},
        {"_initialize", 0xE004, 14, 0, 0},
        {"_viewword", 0xF001, 15, 0, 0},
        {"_viewlong", 0xF002, 15, 0, 0},
        {"_viewbyte", 0xF003, 15, 0, 0},
        {"_viewassembler", 0xF004, 15, 0, 0},
        {"_viewsfrs", 0xF005, 15, 0, 1},
        {"_clearterminalwindow", 0xF006, 15, 0, 0},
        {"_viewascii", 0xF007, 15, 0, 1},
    };
    ASSERT_EQ(std::size(rows), 87u);
    for (size_t i = 0; i < std::size(rows); ++i) {
        const auto& r = s.table.shellCommands[i];
        EXPECT_EQ(r.name, rows[i].name);
        EXPECT_EQ(r.id, RowId(rows[i].id)) << r.name;
        EXPECT_EQ(r.group, rows[i].group) << r.name;
        EXPECT_EQ(r.minParameters, rows[i].min) << r.name;
        EXPECT_EQ(r.maxParameters, rows[i].max) << r.name;
        const bool unlisted = r.group == 14;
        EXPECT_EQ(r.listed, unlisted ? kFalse : kTrue) << r.name;
    }
    EXPECT_EQ(s.table.shellCommands[FindShellCommand(s.table, "_quit")].id, -16377);
}

TEST_F(Frame, SampleTextsStandAsGiven) {
    const auto& savex = s.table.shellCommands[FindShellCommand(s.table, "_savex")];
    EXPECT_EQ(savex.usage, "_saveindexed <filename>[,<recordsize>[,<format>]]");
    EXPECT_EQ(FindShellCommand(s.table, "_saveindexed"), -1);
    const auto& paste = s.table.shellCommands[FindShellCommand(s.table, "_paste")];
    EXPECT_EQ(paste.parameters[0].name, " <start address>");
    EXPECT_EQ(paste.parameters[0].alternativeType, "variable");
    const auto& jmp = s.table.shellCommands[FindShellCommand(s.table, "_jmp")];
    EXPECT_EQ(jmp.usage, "_jmp  <start address>");
    const auto& msg = s.table.shellCommands[FindShellCommand(s.table, "_message")];
    EXPECT_EQ(msg.usage, " _message <string>|<SFR>|<variable>[,....]");
    EXPECT_EQ(msg.parameters[15].name, "<string>|<SFR>|<variable>");
    EXPECT_EQ(msg.parameters[15].alternativeType, "SFR");
    EXPECT_EQ(msg.parameters[0].optional, kTrue);
    const auto& movseq = s.table.shellCommands[FindShellCommand(s.table, "_movseq")];
    EXPECT_EQ(movseq.parameters[14].name, "<address 8>");
    EXPECT_EQ(movseq.parameters[15].description, "data word of sequence entry no 8");
    EXPECT_EQ(movseq.parameters[1].optional, kFalse);
    EXPECT_EQ(movseq.parameters[2].optional, kTrue);
    const auto& call = s.table.shellCommands[FindShellCommand(s.table, "_call")];
    EXPECT_EQ(call.parameters[8].name, "<R15>");
    EXPECT_EQ(call.parameters[8].description, "Parameter for R15 passed to driver/subroutine");
    const auto& setp = s.table.shellCommands[FindShellCommand(s.table, "_setp")];
    EXPECT_EQ(setp.parameters[1].type, "ON or OFF");
    const auto& erase = s.table.shellCommands[FindShellCommand(s.table, "_erase")];
    EXPECT_EQ(erase.parameters[0].type, "mem device");
    const auto& delayms = s.table.shellCommands[FindShellCommand(s.table, "_delayms")];
    EXPECT_EQ(delayms.description, "Wait for <delay time> miliseconds");
}

TEST_F(Frame, RangeTextsAreRead) {
    auto param = [&](const char* cmd, int i) -> const ShellParameterRecord& {
        return s.table.shellCommands[FindShellCommand(s.table, cmd)].parameters[i];
    };
    EXPECT_EQ(param("_save", 2).ranges[0], (std::array<int32_t, 2>{20, 20}));
    EXPECT_EQ(param("_save", 2).ranges[1], (std::array<int32_t, 2>{32, 32}));
    // The commas are one piece whose number value is its leading digits.
    EXPECT_EQ(param("_savesre", 2).ranges[0], (std::array<int32_t, 2>{19, 19}));
    EXPECT_EQ(param("_savesre", 2).ranges[1], (std::array<int32_t, 2>{0, 0}));
    EXPECT_EQ(param("_delay", 0).ranges[0], (std::array<int32_t, 2>{1, 100}));
    EXPECT_EQ(param("_delayms", 0).ranges[0], (std::array<int32_t, 2>{1, 100000}));
    EXPECT_EQ(param("_setbaudrate", 0).ranges[10], (std::array<int32_t, 2>{115200, 115200}));
    // An empty text gives the one pair 0, 0.
    EXPECT_EQ(param("_load", 0).ranges[0], (std::array<int32_t, 2>{0, 0}));
}

TEST_F(Frame, AddingRowsAndParameters) {
    ShellTable t;
    AddShellCommand(t, 3, "_x", 7, 0, 1, kTrue, "d", "u");
    AddShellParameter(t, "_X", "<a>", kTrue, "string", "1-5;9", "", "p");
    AddShellParameter(t, "_none", "<a>", kTrue, "string", "", "", "p");  // adds nothing
    ASSERT_EQ(t.shellCommandCount, 1);
    EXPECT_EQ(t.shellCommands[0].parameterCount, 1);
    EXPECT_EQ(t.shellCommands[0].parameters[0].ranges[0], (std::array<int32_t, 2>{1, 5}));
    EXPECT_EQ(t.shellCommands[0].parameters[0].ranges[1], (std::array<int32_t, 2>{9, 9}));
    for (int i = 0; i < 15; ++i) AddShellParameter(t, "_x", "<b>", kTrue, "string", "", "", "");
    EXPECT_EQ(t.shellCommands[0].parameterCount, 16);
    EXPECT_THROW(AddShellParameter(t, "_x", "<c>", kTrue, "string", "", "", ""), RunTimeError);
    EXPECT_EQ(t.shellCommands[0].parameterCount, 16);
}

TEST_F(Frame, TableBoundIsARunTimeError) {
    ShellTable t;
    for (int i = 0; i <= kShellCommandBound; ++i)
        AddShellCommand(t, 1, "_r", i, 0, 0, kTrue, "", "");
    EXPECT_EQ(t.shellCommandCount, 257);
    EXPECT_THROW(AddShellCommand(t, 1, "_r", 0, 0, 0, kTrue, "", ""), RunTimeError);
    EXPECT_EQ(t.shellCommandCount, 257);
}

TEST_F(Frame, FindIgnoresCase) {
    EXPECT_EQ(FindShellCommand(s.table, "_HELP"), 0);
    EXPECT_EQ(FindShellCommand(s.table, "_Test"), 1);
    EXPECT_EQ(FindShellCommand(s.table, "_nothing"), -1);
    EXPECT_EQ(FindShellCommand(s.table, ""), -1);
}

// ---- parsing

TEST_F(Frame, EmptyArgumentListGivesNoArguments) {
    EXPECT_EQ(ParseShellArguments(s, "_help"), 0);
    EXPECT_EQ(ParseShellArguments(s, "_help   "), 0);
}

TEST_F(Frame, TrailingCommaMakesAnEmptyArgument) {
    EXPECT_EQ(ParseShellArguments(s, "_load a.hex,"), 2);
    EXPECT_EQ(s.parsedParameters[0].text, "a.hex");
    EXPECT_EQ(s.parsedParameters[1].text, "");
    EXPECT_EQ(s.parsedParameters[1].isHex24, kTrue);
    EXPECT_EQ(
        Run("_load a.hex,"),
        ">_load a.hex,\r\n*ERROR: Illegal number of parameters\r\nusage: _load <filename>\r\n");
    EXPECT_EQ(result, -3);
}

TEST_F(Frame, OnlyLeadingBlanksAreRemoved) {
    EXPECT_EQ(ParseShellArguments(s, "_mov 10 ,  5\t"), 2);
    EXPECT_EQ(s.parsedParameters[0].text, "10 ");
    EXPECT_EQ(s.parsedParameters[1].text, "5\t");
    ParseShellArguments(s, "_mov 10,\t5");
    EXPECT_EQ(s.parsedParameters[1].text, "\t5");
}

TEST_F(Frame, QuotesDoNotProtectCommas) {
    EXPECT_EQ(ParseShellArguments(s, "_print \"a,b\""), 2);
    EXPECT_EQ(s.parsedParameters[0].text, "\"a");
    EXPECT_EQ(s.parsedParameters[1].text, "b\"");
}

TEST_F(Frame, SeventeenthArgumentEndsTheLine) {
    std::string line = "_print 1";
    for (int i = 0; i < 15; ++i) line += ",1";
    EXPECT_EQ(ParseShellArguments(s, line), 16);
    line += ",1";
    EXPECT_THROW(ParseShellArguments(s, line), RunTimeError);
    EXPECT_EQ(s.parsedParameterCount, 16);
    EXPECT_EQ(Run(line),
              ">" + line + "\r\n*ERROR: parsedParameters index 16 out of range 0 to 15\r\n");
    EXPECT_NE(result, 0);
}

TEST_F(Frame, DecimalClassification) {
    auto a = ClassifyArgument(*st, "1.5");
    EXPECT_EQ(a.isDecimal, kTrue);
    EXPECT_EQ(a.decimal, 2);
    EXPECT_EQ(a.isHex24, 0);
    a = ClassifyArgument(*st, "1E3");
    EXPECT_EQ(a.isDecimal, 0);
    EXPECT_EQ(a.isHex24, kTrue);
    EXPECT_EQ(a.hex24, 0x1E3);
    a = ClassifyArgument(*st, "1e3");
    EXPECT_EQ(a.isDecimal, kTrue);
    EXPECT_EQ(a.decimal, 1000);
    EXPECT_EQ(a.isHex24, kTrue);
    EXPECT_EQ(a.hex24, 0x1E3);
    a = ClassifyArgument(*st, "-1");
    EXPECT_EQ(a.isDecimal, 0);
    a = ClassifyArgument(*st, "500");
    EXPECT_EQ(a.decimal, 500);
    EXPECT_EQ(a.hex16, 0x500);
    EXPECT_EQ(a.isHex8, 0);
}

TEST_F(Frame, HexClassificationByWidth) {
    auto a = ClassifyArgument(*st, "FF");
    EXPECT_EQ(a.isHex8, kTrue);
    EXPECT_EQ(a.isHex16, kTrue);
    a = ClassifyArgument(*st, "100");
    EXPECT_EQ(a.isHex8, 0);
    EXPECT_EQ(a.isHex16, kTrue);
    a = ClassifyArgument(*st, "1FFFF");
    EXPECT_EQ(a.isHex16, 0);
    EXPECT_EQ(a.isHex24, kTrue);
    EXPECT_EQ(a.hex24, 0x1FFFF);
    a = ClassifyArgument(*st, "1234567");
    EXPECT_EQ(a.isHex24, 0);
}

TEST_F(Frame, OnOffAndVariables) {
    EXPECT_EQ(ClassifyArgument(*st, "on").isOnOff, kTrue);
    EXPECT_EQ(ClassifyArgument(*st, "on").onOff, 1);
    EXPECT_EQ(ClassifyArgument(*st, "OFF").onOff, 0);
    EXPECT_EQ(ClassifyArgument(*st, "1").onOff, 1);
    EXPECT_EQ(ClassifyArgument(*st, "0").isOnOff, kTrue);
    EXPECT_EQ(ClassifyArgument(*st, "2").isOnOff, 0);
    EXPECT_EQ(ClassifyArgument(*st, "1E0").isOnOff, 0);
    auto v = ClassifyArgument(*st, "%12");
    EXPECT_EQ(v.isVariable, kTrue);
    EXPECT_EQ(v.variable, 12);
    v = ClassifyArgument(*st, "%X");
    EXPECT_EQ(v.isVariable, kTrue);
    EXPECT_EQ(v.variable, 0);
    EXPECT_EQ(ClassifyArgument(*st, "%99").isVariable, kTrue);
    EXPECT_EQ(ClassifyArgument(*st, "%100").isVariable, 0);
    EXPECT_EQ(ClassifyArgument(*st, "12").isVariable, 0);
}

TEST_F(Frame, DevicesAndRegistersByName) {
    st->memoryUnits[0].name = "IFLASH";
    st->memoryUnits[1].name = "XFLASH";
    st->memoryUnitCount = 2;
    st->sfrTable[0].name = "PSW";
    st->sfrTable[1].name = "DP0";
    st->sfrCount = 2;
    auto a = ClassifyArgument(*st, "xflash");
    EXPECT_EQ(a.isMemDevice, kTrue);
    EXPECT_EQ(a.memDevice, 1);
    a = ClassifyArgument(*st, "dp0");
    EXPECT_EQ(a.isSfr, kTrue);
    EXPECT_EQ(a.sfr, 1);
    EXPECT_EQ(a.isHex24, 0);
    EXPECT_EQ(ClassifyArgument(*st, "PSW2").isSfr, 0);
}

TEST_F(Frame, FileNamesAreTestedInTheProgramFolder) {
    const std::string dir = std::filesystem::temp_directory_path() / "vortelm-frame-files";
    std::filesystem::create_directories(dir);
    std::ofstream(dir + "/a.hex") << ":00000001FF\n";
    st->programFolder = dir;
    EXPECT_EQ(ClassifyArgument(*st, "a.hex").isFileName, kTrue);
    EXPECT_EQ(ClassifyArgument(*st, "b.hex").isFileName, 0);
    EXPECT_EQ(ClassifyArgument(*st, dir + "/a.hex").isFileName, kTrue);
    // A name without ":" passes the type check untested.
    EXPECT_EQ(Run("_load b.hex", -1), "");
    EXPECT_EQ(result, 0);
    // As the alternative type only a file that opens counts.
    EXPECT_EQ(ClassifyArgument(*st, "C:b.hex").isFileName, 0);
    std::filesystem::remove_all(dir);
}

// ---- the checks and the status words

TEST_F(Frame, MovAloneHasTooFewArguments) {
    EXPECT_EQ(Run("_mov"),
              ">_mov\r\n*ERROR: Illegal number of parameters\r\nusage: _mov <address>,<value>\r\n");
    EXPECT_EQ(result, -3);
}

TEST_F(Frame, TrailingBlankIsNoHexNumber) {
    EXPECT_EQ(Run("_mov 10 ,5"),
              ">_mov 10 ,5\r\n"
              "*ERROR: Parameter 1 must be valid hexadecimal value (24 bit) or SFR\r\n"
              "*ERROR: Illegal parameters\r\n"
              "usage: _mov <address>,<value>\r\n");
    EXPECT_EQ(result, -2);  // the last argument was good
}

TEST_F(Frame, SevenDigitsAreNoHexNumber) {
    EXPECT_EQ(Run("_mov 1234567,0"),
              ">_mov 1234567,0\r\n"
              "*ERROR: Parameter 1 must be valid hexadecimal value (24 bit) or SFR\r\n"
              "*ERROR: Illegal parameters\r\n"
              "usage: _mov <address>,<value>\r\n");
}

TEST_F(Frame, FillMemoryAboveSixteenBits) {
    EXPECT_EQ(Run("_fillmemory 1FFFF"),
              ">_fillmemory 1FFFF\r\n"
              "*ERROR: Parameter 1 must be valid hexadecimal value (16 bit) or variable\r\n"
              "*ERROR: Illegal parameters\r\n"
              "usage: _fillmemory <fill value>|<variable>\r\n");
    // The rejected argument was the last: the result is -2 + 1.
    EXPECT_EQ(result, -1);
}

TEST_F(Frame, AllBadArgumentsAreReported) {
    EXPECT_EQ(Run("_w16 X,Y"),
              ">_w16 X,Y\r\n"
              "*ERROR: Parameter 1 must be valid hexadecimal value (24 bit) or variable\r\n"
              "*ERROR: Parameter 2 must be valid hexadecimal value (16 bit) or variable\r\n"
              "*ERROR: Illegal parameters\r\n"
              "usage: _w16 <Address>|<variable>,<Data>|<variable>\r\n");
    EXPECT_EQ(Run("_jmp X"),
              ">_jmp X\r\n*ERROR: Parameter 1 must be valid hexadecimal value (24 bit)\r\n"
              "*ERROR: Illegal parameters\r\nusage: _jmp  <start address>\r\n");
}

TEST_F(Frame, DeclaredRangeIsNotChecked) {
    // _delay 500 passes the frame although its declared range is 1-100.
    EXPECT_EQ(Run("_delay 500", -1), "");
    EXPECT_EQ(result, 0);
}

TEST_F(Frame, TooManyArguments) {
    EXPECT_EQ(Run("_call 10,1,2,3,4,5,6,7,8,9"),
              ">_call 10,1,2,3,4,5,6,7,8,9\r\n*ERROR: Illegal number of parameters\r\n"
              "usage: _call <start address>[,<R8>[,<R9>[...]]\r\n");
    EXPECT_EQ(result, -3);
}

TEST_F(Frame, TabAfterTheWordWorksTabAfterACommaDoesNot) {
    Run("_jmp\t10", -1);
    EXPECT_EQ(s.parsedParameterCount, 1);
    EXPECT_EQ(s.parsedParameters[0].text, "10");
    EXPECT_EQ(Run("_mov 10,\t5"),
              ">_mov 10,\t5\r\n*ERROR: Parameter 2 must be valid hexadecimal value (16 bit)\r\n"
              "*ERROR: Illegal parameters\r\nusage: _mov <address>,<value>\r\n");
}

TEST_F(Frame, EmptyArgumentIsZero) {
    EXPECT_EQ(Run("_mov ,5", -1), "");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(s.parsedParameters[0].isHex24, kTrue);
    EXPECT_EQ(s.parsedParameters[0].hex24, 0);
}

TEST_F(Frame, UnknownWord) {
    EXPECT_EQ(Run("_nothing 1,2"), ">_nothing 1,2\r\n*ERROR: Illegal command\r\n");
    EXPECT_EQ(result, -1);
    EXPECT_EQ(Run("help"), ">help\r\n*ERROR: Illegal command\r\n");
}

TEST_F(Frame, CheckOnlyHasNoEchoAndRunsNothing) {
    EXPECT_EQ(Run("_nothing", -1), "*ERROR: Illegal command\r\n");
    EXPECT_EQ(result, -1);
    EXPECT_EQ(Run("_mov", -1),
              "*ERROR: Illegal number of parameters\r\nusage: _mov <address>,<value>\r\n");
    EXPECT_EQ(Run("_test", -1), "");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(Run("_delay 5", -1), "");
    EXPECT_EQ(result, 0);
}

TEST_F(Frame, UpperCaseWordFindsTheRow) {
    EXPECT_EQ(Run("_TEST"), ">_TEST\r\n38F00A\r\n");
    EXPECT_EQ(result, 0);
}

TEST_F(Frame, StatusWords) {
    EXPECT_EQ(StatusText(-1), "*ERROR: Illegal command");
    EXPECT_EQ(StatusText(-2), "*ERROR: Illegal parameters");
    EXPECT_EQ(StatusText(-3), "*ERROR: Illegal number of parameters");
    EXPECT_EQ(StatusText(-4), "*ERROR: Not connected to target");
    EXPECT_EQ(StatusText(-5), "*ERROR: Feature not supported by this kernel");
    EXPECT_EQ(StatusText(-6), "*ERROR: Feature not supported by this controller");
}

TEST_F(Frame, RefreshAfterEveryLineWhenConnected) {
    Run("_test");
    EXPECT_EQ(host.refreshMemoryCount, 0);
    st->ConnectionState = kConnectedAndReady;
    Run("_nothing", -1);
    EXPECT_EQ(host.refreshMemoryCount, 1);
    EXPECT_EQ(host.refreshSfrViewCount, 1);
    st->REFRESHSFR = 0;
    Run("_test");
    EXPECT_EQ(host.refreshMemoryCount, 2);
    EXPECT_EQ(host.refreshSfrViewCount, 1);
    st->REFRESHSFR = kTrue;
    int reads = 0;
    s.readSfrView = [&] { ++reads; };
    Run("_test");
    EXPECT_EQ(reads, 1);
    st->ConnectionState = kUserProgramRunning;
    Run("_test");
    EXPECT_EQ(host.refreshMemoryCount, 3);
}

}  // namespace vortelm::shell
