#include <cctype>

#include "core/Helpers.h"
#include "core/RunTimeError.h"
#include "shell/Shell.h"

namespace vortelm::shell {

namespace {

// Ids are 16-bit values kept sign-extended: 0x8001 is -32767.
constexpr int32_t Id(uint32_t v) {
    return static_cast<int16_t>(static_cast<uint16_t>(v));
}

// The number value of a range piece: its leading decimal digits.
int32_t LeadingDigits(std::string_view t) {
    int64_t v = 0;
    for (char c : t) {
        if (c < '0' || c > '9') break;
        v = v * 10 + (c - '0');
        if (v > 2147483647) return 2147483647;
    }
    return static_cast<int32_t>(v);
}

}  // namespace

void AddShellCommand(ShellTable& table, int32_t group, std::string_view name, int32_t id,
                     int16_t minParameters, int16_t maxParameters, int16_t listed,
                     std::string_view description, std::string_view usage) {
    CheckBound(table.shellCommandCount, kShellCommandBound, "shellCommands");
    ShellCommandRecord& r = table.shellCommands[table.shellCommandCount];
    r = ShellCommandRecord{};
    r.group = group;
    r.name = std::string(name);
    r.id = id;
    r.minParameters = minParameters;
    r.maxParameters = maxParameters;
    r.listed = listed;
    r.description = std::string(description);
    r.usage = std::string(usage);
    r.parameterCount = 0;
    ++table.shellCommandCount;
}

void AddShellParameter(ShellTable& table, std::string_view commandName,
                       std::string_view parameterName, int16_t optional, std::string_view type,
                       std::string_view rangeText, std::string_view alternativeType,
                       std::string_view description) {
    const int32_t row = FindShellCommand(table, commandName);
    if (row < 0) return;
    ShellCommandRecord& r = table.shellCommands[row];
    CheckBound(r.parameterCount, kShellParameterBound, "parameters");
    ShellParameterRecord& p = r.parameters[r.parameterCount];
    p = ShellParameterRecord{};
    p.name = std::string(parameterName);
    p.optional = optional;
    p.type = std::string(type);
    p.alternativeType = std::string(alternativeType);
    p.description = std::string(description);
    // Pieces beyond the sixteenth are not kept.
    std::string_view rest = rangeText;
    for (size_t i = 0; i < p.ranges.size(); ++i) {
        const size_t semi = rest.find(';');
        const std::string_view piece = rest.substr(0, semi);
        const size_t dash = piece.find('-');
        if (dash == std::string_view::npos) {
            p.ranges[i] = {LeadingDigits(piece), LeadingDigits(piece)};
        } else {
            p.ranges[i] = {LeadingDigits(piece.substr(0, dash)),
                           LeadingDigits(piece.substr(dash + 1))};
        }
        if (semi == std::string_view::npos) break;
        rest = rest.substr(semi + 1);
    }
    ++r.parameterCount;
}

int32_t FindShellCommand(const ShellTable& table, std::string_view name) {
    // Compared letter by letter without regard to case, without copies:
    // every line of a script looks its word up.
    // The length is compared first, here: most rows differ in it.
    for (int32_t i = 0; i < table.shellCommandCount; ++i) {
        const std::string& row = table.shellCommands[i].name;
        if (row.size() == name.size() && EqualUpper(row, name)) return i;
    }
    return -1;
}

namespace {

// The rows and their parameters, a few groups to a function: C adds a row,
// P a parameter to the row of that name.
class TableRows {
  public:
    explicit TableRows(ShellTable& table) : table_(table) {}
    void FrameFileAndEditRows();   // groups 1 to 4: help, files, hex editor, selections
    void TargetRows();             // groups 5 to 8: the target
    void SfrTerminalAndLogRows();  // groups 9 to 11: registers, terminal, log
    void ScriptingRows();          // group 12: scripting
    void FlashAndViewRows();       // groups 13 to 15: flash, the rows not listed, views

  private:
    void C(int32_t group, std::string_view name, int32_t id, int16_t minP, int16_t maxP,
           int16_t listed, std::string_view description, std::string_view usage) {
        AddShellCommand(table_, group, name, id, minP, maxP, listed, description, usage);
    }
    void P(std::string_view command, std::string_view name, int16_t optional, std::string_view type,
           std::string_view range, std::string_view alt, std::string_view description) {
        AddShellParameter(table_, command, name, optional, type, range, alt, description);
    }

    ShellTable& table_;
};

// clang-format off
void TableRows::FrameFileAndEditRows() {
    // 1 HELP FUNCTIONS
    C(1, "_help", Id(0x1001), 0, 0, kTrue, "List all shell commands", "_help");
    C(1, "_test", Id(0x1002), 0, 0, kTrue, "Test", "_test");
    // 2 FILE FUNCTIONS
    C(2, "_load", Id(0x2001), 1, 1, kTrue, "Load an intel hex file", "_load <filename>");
    P("_load", "<filename>", kFalse, "filename", "", "", "Name of Intel Hex file to load");
    C(2, "_save", Id(0x2002), 1, 3, kTrue, "Save selection to intel hex file.", "_save <filename>[,<recordsize>[,<format>]]");
    P("_save", "<filename>", kFalse, "string", "", "", "Name of Intel Hex file to save");
    P("_save", "<recordsize>", kTrue, "decimal value", "", "", "Recordsize per line in Bytes");
    P("_save", "<format>", kTrue, "decimal value", "20;32", "", "Intel Hex Format Type (20 or 32)");
    C(2, "_binload", Id(0x2003), 1, 2, kTrue, "Load a binary file", "_binload <filename>[,<address offset>]");
    P("_binload", "<filename>", kFalse, "filename", "", "", "Name of binary file");
    P("_binload", "<address offset>", kTrue, "hexadecimal value (24 bit)", "", "", "Address offset of first byte in File");
    C(2, "_binsave", Id(0x2004), 1, 2, kTrue, "Save selection to binary file", "_binsave <filename>[,<fill char>]");
    P("_binsave", "<filename>", kFalse, "string", "", "", "Name of binary file to save into");
    P("_binsave", "<fill char>", kTrue, "hexadecimal value (8 bit)", "", "", "Fill character for space between selections");
    C(2, "_loadsre", Id(0x2005), 1, 1, kTrue, "Load a file in SRE format", "_loadsre <filename>");
    P("_loadsre", "<filename>", kFalse, "filename", "", "", "Name of SRE file to load");
    C(2, "_savesre", Id(0x2006), 1, 3, kTrue, "Save selection to SRE file.", "_savesre <filename>[,<recordsize>[,<format>]]");
    P("_savesre", "<filename>", kFalse, "string", "", "", "Name of SRE file to save");
    P("_savesre", "<recordsize>", kTrue, "decimal value", "", "", "Recordsize per line in Bytes");
    P("_savesre", "<format>", kTrue, "decimal value", "19,28,37", "", "SRE Format Type");
    C(2, "_setpath", Id(0x2007), 2, 2, kTrue, "sets base path <path> for file operation type <type>", "_setpath <type>,<path>");
    P("_setpath", "<type>", kFalse, "string", "", "", "SAVE,LOAD, SCRIPT, LOG");
    P("_setpath", "<path>", kFalse, "string", "", "", "path to be set");
    C(2, "_savex", Id(0x2008), 2, 4, kTrue, "Save selection to intel hex file. Filename is extended by file index provided by variable", "_saveindexed <filename>[,<recordsize>[,<format>]]");
    P("_savex", "<filename>", kFalse, "string", "", "", "Name of Intel Hex file to save");
    P("_savex", "<variable>", kFalse, "variable", "", "", "File index");
    P("_savex", "<recordsize>", kTrue, "decimal value", "", "", "Recordsize per line in Bytes");
    P("_savex", "<format>", kTrue, "decimal value", "20;32", "", "Intel Hex Format Type (20 or 32)");
    // 3 HEX EDITOR FUNCTIONS
    C(3, "_copy", Id(0x3001), 0, 0, kTrue, "Copy selection to clipboard", "_copy");
    C(3, "_cut", Id(0x3002), 0, 0, kTrue, "Cut selection to clipboard", "_cut");
    C(3, "_paste", Id(0x3003), 1, 1, kTrue, "Paste clipboard to memory", "_paste <start address>|<variable>");
    P("_paste", " <start address>", kFalse, "hexadecimal value (24 bit)", "", "variable", "First address to paste clipboard contents to");
    C(3, "_fillmemory", Id(0x3004), 1, 1, kTrue, "Fill selection with value", "_fillmemory <fill value>|<variable>");
    P("_fillmemory", "<fill value>|<variable>", kFalse, "hexadecimal value (16 bit)", "", "variable", "Fill byte or word which is filled into selection");
    C(3, "_clearmemory", Id(0x3005), 0, 0, kTrue, "Unread selection", "_clearmemory");
    C(3, "_randomfill", Id(0x3006), 0, 0, kTrue, "Fills current selection with random values", "_randomfill");
    // 4 SELECTION FUNCTIONS
    C(4, "_addselection", Id(0x4001), 2, 2, kTrue, "Add memory range to selection", "_addselection <start address>|<variable>,<end address>|<variable>");
    P("_addselection", "<start address>|<variable>", kFalse, "hexadecimal value (24 bit)", "", "variable", "Start address of new selection");
    P("_addselection", "<end address>|<variable>", kFalse, "hexadecimal value (24 bit)", "", "variable", "End/Last address of new selection");
    C(4, "_clearselections", Id(0x4002), 0, 0, kTrue, "Remove all selections", "_clearselections");
    C(4, "_showselections", Id(0x4003), 0, 0, kTrue, "List current selections", "_showselections");
    C(4, "_moveselection", Id(0x4004), 2, 2, kTrue, "Shift selection number <selection index> by <displacement> bytes", "_moveselection <selection index>|<variable>,<displacement>|<variable>");
    P("_moveselection", "<selection index>|<variable>", kFalse, "decimal value", "", "variable", "selection index or variable containing selection index");
    P("_moveselection", "<displacement>|<variable>", kFalse, "hexadecimal value (24 bit)", "", "variable", "offset");
    C(4, "_removeselection", Id(0x4005), 1, 1, kTrue, "Remove selection number <selection index> from selection", "_removeselection <selection index>|<variable>");
    P("_removeselection", "<selection index>|<variable>", kFalse, "decimal value", "", "variable", "Selection index or variable containing selection index");
}

void TableRows::TargetRows() {
    // 5 TARGET CONNECTION FUNCTIONS
    C(5, "_connect", Id(0x5001), 0, 1, kTrue, "Connect to target", "_connect [NOPROMPT]");
    P("_connect", "NOPROMPT", kTrue, "string", "", "", "This option deactivates the connection message prompt");
    C(5, "_reconnect", Id(0x5002), 0, 0, kTrue, "Reconnect to target", "_reconnect");
    C(5, "_disconnect", Id(0x5003), 0, 0, kTrue, "Disconnect from target and close comm port", "_disconnect");
    // 6 TARGET TRANSFER FUNCTIONS
    C(6, "_download", Id(0x6001), 0, 0, kTrue, "Download selection to target (RAM)", "_download");
    C(6, "_upload", Id(0x6002), 0, 1, kTrue, "Upload from target memory into selection", "_upload [<selection index>]");
    P("_upload", "<selection index>|<variable>", kTrue, "decimal value", "", "variable", "selection index or variable containing selection index");
    C(6, "_compare", Id(0x6003), 0, 1, kTrue, "Compare selection with target memory", "_compare [<filename>]");
    P("_compare", "<filename>", kTrue, "string", "", "", "Name of file to write results into");
    C(6, "_mov", Id(0x6004), 2, 2, kTrue, "Write word to target register/memory", "_mov <address>,<value>");
    P("_mov", "<address>", kFalse, "hexadecimal value (24 bit)", "", "SFR", "Address or SFR name to write to");
    P("_mov", "<value>", kFalse, "hexadecimal value (16 bit)", "", "", "value to write to desired address/SFR");
    C(6, "_movseq", Id(0x6005), 2, 16, kTrue, "Write word sequence to target register/memory", "_movseq <address 1>,<data 1>[,<address 2>,<data 2>...]");
    P("_movseq", "<address 1>", kFalse, "hexadecimal value (24 bit)", "", "", "address of sequence entry no 1");
    P("_movseq", "<data 1>", kFalse, "hexadecimal value (16 bit)", "", "", "data word of sequence entry no 1");
    P("_movseq", "<address 2>", kTrue, "hexadecimal value (24 bit)", "", "", "address of sequence entry no 2");
    P("_movseq", "<data 2>", kTrue, "hexadecimal value (16 bit)", "", "", "data word of sequence entry no 2");
    P("_movseq", "<address 3>", kTrue, "hexadecimal value (24 bit)", "", "", "address of sequence entry no 3");
    P("_movseq", "<data 3>", kTrue, "hexadecimal value (16 bit)", "", "", "data word of sequence entry no 3");
    P("_movseq", "<address 4>", kTrue, "hexadecimal value (24 bit)", "", "", "address of sequence entry no 4");
    P("_movseq", "<data 4>", kTrue, "hexadecimal value (16 bit)", "", "", "data word of sequence entry no 4");
    P("_movseq", "<address 5>", kTrue, "hexadecimal value (24 bit)", "", "", "address of sequence entry no 5");
    P("_movseq", "<data 5>", kTrue, "hexadecimal value (16 bit)", "", "", "data word of sequence entry no 5");
    P("_movseq", "<address 6>", kTrue, "hexadecimal value (24 bit)", "", "", "address of sequence entry no 6");
    P("_movseq", "<data 6>", kTrue, "hexadecimal value (16 bit)", "", "", "data word of sequence entry no 6");
    P("_movseq", "<address 7>", kTrue, "hexadecimal value (24 bit)", "", "", "address of sequence entry no 7");
    P("_movseq", "<data 7>", kTrue, "hexadecimal value (16 bit)", "", "", "data word of sequence entry no 7");
    P("_movseq", "<address 8>", kTrue, "hexadecimal value (24 bit)", "", "", "address of sequence entry no 8");
    P("_movseq", "<data 8>", kTrue, "hexadecimal value (16 bit)", "", "", "data word of sequence entry no 8");
    C(6, "_r16", Id(0x6006), 1, 2, kTrue, "Read a data word from target memory address", "_r16 <Address>|<variable>[,<variable>]");
    P("_r16", "<Address>|<variable>", kFalse, "hexadecimal value (24 bit)", "", "variable", "Address or address in variable to read out");
    P("_r16", "<variable>", kTrue, "variable", "", "", "Optionally read value into variable");
    C(6, "_w16", Id(0x6007), 2, 2, kTrue, "Write a data word to target memory address", "_w16 <Address>|<variable>,<Data>|<variable>");
    P("_w16", "<Address>|<variable>", kFalse, "hexadecimal value (24 bit)", "", "variable", "Address or address in variable to write to");
    P("_w16", "<Data>|<variable>", kFalse, "hexadecimal value (16 bit)", "", "variable", "Constant data or variable");
    C(6, "_d16", Id(0x6009), 2, 2, kTrue, "Write a data word to from dump memory address to target memory address", "_d16 <dump memory address>|<variable>,<target memory address>|<variable>");
    P("_d16", "<dump memory address>|<variable>", kFalse, "hexadecimal value (24 bit)", "", "variable", "Dump memory address or address in variable to read from");
    P("_d16", "<target memory address>|<variable>", kFalse, "hexadecimal value (24 bit)", "", "variable", "Target memory address or address in variable to write to");
    C(6, "_u16", Id(0x6008), 2, 2, kTrue, "Write a data word to from target memory address to dump memory address", "_u16 <target memory address>|<variable>,<dump memory address>|<variable>");
    P("_u16", "<target memory address>|<variable>", kFalse, "hexadecimal value (24 bit)", "", "variable", "Target memory address or address in variable to read from");
    P("_u16", "<dump memory address>|<variable>", kFalse, "hexadecimal value (24 bit)", "", "variable", "Dump memory address or address in variable to write to");
    // 7 TARGET EXECUTION FUNCTIONS
    C(7, "_srst", Id(0x7001), 0, 0, kTrue, "Execute Software Reset", "_srst");
    C(7, "_jmp", Id(0x7002), 1, 1, kTrue, "Jump to user application at given address", "_jmp  <start address>");
    P("_jmp", "<start address>", kFalse, "hexadecimal value (24 bit)", "", "", "Full 24 Bit address to jump to");
    C(7, "_call", Id(0x7003), 1, 9, kTrue, "Call driver/user subroutine, Register values can be passed constand or as variables", "_call <start address>[,<R8>[,<R9>[...]]");
    P("_call", "<start address>", kFalse, "hexadecimal value (24 bit)", "", "variable", "Full 24 Bit start address of called function");
    P("_call", "<R8>", kTrue, "hexadecimal value (16 bit)", "", "variable", "Parameter for R8 passed to driver/subroutine");
    P("_call", "<R9>", kTrue, "hexadecimal value (16 bit)", "", "variable", "Parameter for R9 passed to driver/subroutine");
    P("_call", "<R10>", kTrue, "hexadecimal value (16 bit)", "", "variable", "Parameter for R10 passed to driver/subroutine");
    P("_call", "<R11>", kTrue, "hexadecimal value (16 bit)", "", "variable", "Parameter for R11 passed to driver/subroutine");
    P("_call", "<R12>", kTrue, "hexadecimal value (16 bit)", "", "variable", "Parameter for R12 passed to driver/subroutine");
    P("_call", "<R13>", kTrue, "hexadecimal value (16 bit)", "", "variable", "Parameter for R13 passed to driver/subroutine");
    P("_call", "<R14>", kTrue, "hexadecimal value (16 bit)", "", "variable", "Parameter for R14 passed to driver/subroutine");
    P("_call", "<R15>", kTrue, "hexadecimal value (16 bit)", "", "variable", "Parameter for R15 passed to driver/subroutine");
    // 8 TARGET MISC FUNCTIONS
    C(8, "_einit", Id(0x8001), 0, 0, kTrue, "call einit command", "_einit");
    C(8, "_movemonitor", Id(0x8002), 1, 1, kTrue, "Move Monitor to different location", "_movemonitor <start address>");
    P("_movemonitor", "<start address>", kFalse, "hexadecimal value (24 bit)", "", "", "start address of new monitor location");
    C(8, "_setprotection", Id(0x8003), 2, 3, kTrue, "Enables or disables system register protection (ZT family only)", "_setprotection <security level>,<password>[,<new password>]");
    P("_setprotection", "<security level>", kFalse, "hexadecimal value (8 bit)", "0-3", "", "The security level to enable");
    P("_setprotection", "<password>", kFalse, "hexadecimal value (8 bit)", "", "", "password needed for command");
    P("_setprotection", "<new password>", kTrue, "hexadecimal value (8 bit)", "", "", "new password if change is requested");
    C(8, "_pllcon", Id(0x8004), 1, 1, kTrue, "Sets the register PLLCON (ZT family only)", "_pllcon <pllcon value>");
    P("_pllcon", "<pllcon value>", kFalse, "hexadecimal value (16 bit)", "", "", "16 Bit value to set PLLCON to");
    C(8, "_rstcon", Id(0x8005), 1, 1, kTrue, "Sets the register RSTCON (ALD4 family only)", "_rstcon <rstcon value>");
    P("_rstcon", "<rstcon value>", kFalse, "hexadecimal value (16 bit)", "", "", "16 Bit value to set RSTCON to");
}

void TableRows::SfrTerminalAndLogRows() {
    // 9 SFR VIEW FUNCTIONS
    C(9, "_refreshsfr", Id(0x9001), 0, 1, kTrue, "Refresh current SFR view or globally enable/disable SFR refresh", "_refreshsfr [ON|OFF]");
    P("_refreshsfr", "ON|OFF", kTrue, "ON or OFF", "", "", "Global Switch for enabling/disabling SFR refresh");
    C(9, "_addsfr", Id(0x9002), 1, 2, kTrue, "Add Register to SFR view", "_addsfr <SFR name>[,<SFR set>]");
    P("_addsfr", "<SFR name>", kFalse, "SFR", "", "", "Name of SFR register to add");
    P("_addsfr", "<SFR set>", kTrue, "decimal value", "0-4", "", "Register set to add SFR to (0-4)");
    C(9, "_removesfr", Id(0x9003), 1, 2, kTrue, "Remove Register from SFR Window", "_removesfr <SFR name>[,<SFR set>]");
    P("_removesfr", "<SFR name>", kFalse, "SFR", "", "", "Name of SFR register to remove");
    P("_removesfr", "<SFR set>", kTrue, "decimal value", "0-4", "", "Number of SFR set to remove SFR from (0-4)");
    // 10 TERMINAL / COMM FUNCTIONS
    C(10, "_send", Id(0xA001), 1, 1, kTrue, "Send string/Hex values", "_send <string>|:<hex values>");
    P("_send", "<string>|:<hex values>", kFalse, "string", "", "", "Either a text string or a set of 8 bit hex values");
    C(10, "_sendfile", Id(0xA002), 1, 1, kTrue, "Send binary file", "_sendfile <filename>");
    P("_sendfile", "<filename>", kFalse, "filename", "", "", "Name of binary file to send");
    C(10, "_setp", Id(0xA003), 2, 2, kTrue, "Set RTS or DTR signal", "_setp <signal>,0|1");
    P("_setp", "<signal>", kFalse, "string", "", "", "Status line to change: RTS or DTR");
    P("_setp", "0|1", kFalse, "ON or OFF", "", "", "Logical level of signal");
    C(10, "_setbaudrate", Id(0xE005), 1, 1, kTrue, "changes interface baudrate", "_setbaudrate <baudrate>");
    P("_setbaudrate", "<baudrate>", kFalse, "decimal value", "300;600;1200;2400;4800;9600;19200;28800;38400;57600;115200", "", "The new baudrate to set");
    C(10, "_openport", Id(0x5004), 0, 0, kTrue, "Opens the COM port for terminal functions", "_openport");
    // 11 LOGFILE FUNCTIONS
    C(11, "_logfile", Id(0xB001), 1, 1, kTrue, "turn log file writing on or off", "_logfile ON|OFF|<variable>");
    P("_logfile", "ON|OFF|<variable>", kFalse, "ON or OFF", "", "variable", "Globally enable/disable logfile writing");
    C(11, "_setlogfile", Id(0xB002), 1, 2, kTrue, "set log file", "_setlogfile <filename>[,APPEND]");
    P("_setlogfile", "<filename>", kFalse, "string", "", "", "New log file name");
    P("_setlogfile", "APPEND", kTrue, "string", "", "", "Append to file instead of overwriting");
    C(11, "_writelogfile", Id(0xB003), 1, 16, kTrue, "write string to log file", "_writelogfile <string>|<SFR>|<variable>[,....]");
    P("_writelogfile", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_writelogfile", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_writelogfile", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_writelogfile", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_writelogfile", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_writelogfile", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_writelogfile", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_writelogfile", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_writelogfile", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_writelogfile", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_writelogfile", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_writelogfile", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_writelogfile", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_writelogfile", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_writelogfile", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_writelogfile", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    C(11, "_print", Id(0xC008), 1, 16, kTrue, "prints information to log window and log file", "_print <string>|<SFR>|<variable>[,....]");
    P("_print", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_print", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_print", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_print", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_print", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_print", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_print", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_print", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_print", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_print", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_print", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_print", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_print", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_print", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_print", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
    P("_print", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to print");
}

void TableRows::ScriptingRows() {
    // 12 SCRIPTING FUNCTIONS
    C(12, "_delay", Id(0xC001), 1, 1, kTrue, "Wait for x seconds", "_delay <delay time>|<variable>");
    P("_delay", "<delay time>|<variable>", kFalse, "decimal value", "1-100", "variable", "Delay time in seconds");
    C(12, "_pause", Id(0xC002), 0, 0, kTrue, "Wait for Keypress", "_pause");
    C(12, "_message", Id(0xC003), 1, 16, kTrue, "Display message box and wait for confirmation", " _message <string>|<SFR>|<variable>[,....]");
    P("_message", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_message", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_message", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_message", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_message", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_message", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_message", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_message", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_message", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_message", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_message", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_message", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_message", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_message", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_message", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_message", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    C(12, "_cmessage", Id(0xC004), 1, 16, kTrue, "Display message box without wait for confirmation", " _cmessage <string>|<SFR>|<variable>[,....]");
    P("_cmessage", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_cmessage", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_cmessage", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_cmessage", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_cmessage", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_cmessage", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_cmessage", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_cmessage", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_cmessage", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_cmessage", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_cmessage", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_cmessage", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_cmessage", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_cmessage", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_cmessage", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    P("_cmessage", "<string>|<SFR>|<variable>", kTrue, "string", "", "SFR", "String, SFR or variable to display");
    C(12, "_assign", Id(0xC005), 1, 1, kTrue, "Assign value/SFR/Expression to variable", "_assign <expression>");
    P("_assign", "<expression>", kFalse, "string", "", "", "Left side of =: variable, right side SFR or arithmetic expression");
    C(12, "_executescript", Id(0xC006), 1, 2, kTrue, "Call subscript", "_executescript <filename>[,<continue>]");
    P("_executescript", "<filename>", kFalse, "filename", "", "", "Name of script file to execute");
    P("_executescript", "<continue>", kTrue, "ON or OFF", "", "", "shall the script continue even on an error");
    C(12, "_quit", Id(0xC007), 0, 0, kTrue, "End Vortelm", "_quit");
    C(12, "_poll", Id(0xC009), 3, 3, kTrue, "Blocks script execution until word on target memory equals expected value", "_poll <target memory address>|<variable>,<data mask>|<variable>,<value>|<variable>");
    P("_poll", "<target memory address>|<variable>", kFalse, "hexadecimal value (24 bit)", "", "variable", "Target memory address or address in variable to read from");
    P("_poll", "<data mask>|<variable>", kFalse, "hexadecimal value (16 bit)", "", "variable", "mask or mask in variable");
    P("_poll", "<value>|<variable>", kFalse, "hexadecimal value (16 bit)", "", "variable", "expected value or variable to compare with");
    C(12, "_input", Id(0xC00A), 2, 3, kTrue, "Display message box and wait for input of a 24 bit hex value into a variable", "_input <string>,<variable>[,yesno]");
    P("_input", "<string>", kFalse, "string", "", "", "String  to display");
    P("_input", "<variable>", kFalse, "variable", "", "", "variable to set");
    P("_input", "yesno", kTrue, "string", "", "", "show yes / no dialog");
    C(12, "_delayms", Id(0xC00B), 1, 1, kTrue, "Wait for <delay time> miliseconds", "_delayms <delay time>|<variable>");
    P("_delayms", "<delay time>|<variable>", kFalse, "decimal value", "1-100000", "variable", "Delay time in mili seconds");
}

void TableRows::FlashAndViewRows() {
    // 13 FLASH FUNCTIONS
    C(13, "_iprogram", Id(0xD001), 0, 0, kTrue, "Intelligent program of selection into flash", "_iprogram");
    C(13, "_program", Id(0xD002), 0, 0, kTrue, "Program selection into flash", "_program");
    C(13, "_erase", Id(0xD003), 2, 2, kTrue, "Erase flash sector of given device", "_erase <device name>,<sector>");
    P("_erase", "<device name>", kFalse, "mem device", "", "", "Name of flash device to erase");
    P("_erase", "<sector>", kFalse, "decimal value", "0-15", "", "Flash sector to erase");
    C(13, "_status", Id(0xD004), 1, 1, kTrue, "Read Flash status registers", "_status <device name>");
    P("_status", "<device name>", kFalse, "mem device", "", "", "Name of flash device");
    C(13, "_protect", Id(0xD005), 2, 2, kTrue, "Enable read/write protection of flash device", "_protect <device name>,<password>");
    P("_protect", "<device name>", kFalse, "mem device", "", "", "Name of flash device to protect");
    P("_protect", "<password>", kFalse, "string", "", "", "Protection password");
    C(13, "_unprotect", Id(0xD006), 2, 2, kTrue, "Remove read/write protection from flash device", "_unprotect <device name>,<password>");
    P("_unprotect", "<device name>", kFalse, "mem device", "", "", "Name of flash device to unprotect");
    P("_unprotect", "<password>", kFalse, "string", "", "", "Protection password");
    C(13, "_lock", Id(0xD007), 2, 3, kTrue, "Enable write protection of flash device", "_lock <device name>,<password>[,<sector>]");
    P("_lock", "<device name>", kFalse, "mem device", "", "", "Name of flash device to lock/write protect");
    P("_lock", "<password>", kFalse, "string", "", "", "Protection password");
    P("_lock", "<sector>", kTrue, "decimal value", "", "", "Flash sector to lock");
    C(13, "_unlock", Id(0xD008), 2, 3, kTrue, "Disable write protection of flash device", "_unlock <device name>,<password>[,<sector>]");
    P("_unlock", "<device name>", kFalse, "mem device", "", "", "Name of flash device to unlock");
    P("_unlock", "<password>", kFalse, "string", "", "", "Protection password");
    P("_unlock", "<sector>", kTrue, "decimal value", "", "", "Flash sector to lock");
    C(13, "_dumpmemecc", Id(0xD009), 1, 4, kTrue, "Dumps 16 bit value from target <maddr> into selection and increments dump memory address until end of selection is reached.", "_dumpmemecc <maddr>|<variable>[,<dummyrd>|<variable>[,<clrstat>|<variable>[,<incstep>|<variable>]]]");
    P("_dumpmemecc", "<maddr>|<variable>", kFalse, "hexadecimal value (24 bit)", "", "variable", "Address to read from");
    P("_dumpmemecc", "<dummyrd>|<variable>", kTrue, "decimal value", "0-1", "variable", "Dummy read option flag");
    P("_dumpmemecc", "<clrstat>|<variable>", kTrue, "decimal value", "0-1", "variable", "Clear status sequence option flag");
    P("_dumpmemecc", "<incstep>|<variable>", kTrue, "hexadecimal value (24 bit)", "0-255", "variable", "Increment offset for dump memory");
    C(13, "_dumpmodify", Id(0xD00A), 3, 5, kTrue, "16bit wise data modification within the virtual dump that is selected: #data16bit:=(((#data16bit ^ XORMask) & ANDMask )| OR-Mask) >> #Rotate24bitRight", "_dumpmodify <XOR-Mask>|<variable>,<AND-Mask>|<variable>,<OR-Mask>|<variable>[,<RotateRight>|<variable>[,<incstep>|<variable>]]");
    P("_dumpmodify", "<XOR-Mask>|<variable>", kFalse, "hexadecimal value (16 bit)", "", "variable", "XOR mask for modification");
    P("_dumpmodify", "<AND-Mask>|<variable>", kFalse, "hexadecimal value (16 bit)", "", "variable", "AND mask for modification");
    P("_dumpmodify", "<OR-Mask>|<variable>", kFalse, "hexadecimal value (16 bit)", "", "variable", "OR mask for modification");
    P("_dumpmodify", "<RotateRight>|<variable>", kTrue, "decimal value", "0-15", "variable", "Number of right rotates");
    P("_dumpmodify", "<incstep>|<variable>", kTrue, "hexadecimal value (24 bit)", "", "variable", "Increment offset for dump memory");
    C(13, "_downloadtoasb", Id(0xD00B), 0, 0, kTrue, "Download data into the flash assembly buffer from selection.", "_downloadtoasb");
    C(13, "_loadasb_byte", Id(0xD00C), 1, 2, kTrue, "Download bytewise data into the flash assembly buffer", "_loadasb_byte RND8|<data byte>|variable[,<count>]");
    P("_loadasb_byte", "RND8|<data byte>|variable", kFalse, "string", "", "variable", "Data byte to write to assembly bufer");
    P("_loadasb_byte", "<count>", kTrue, "hexadecimal value (8 bit)", "", "", "Number of bytes to write");
    C(13, "_loadasb_word", Id(0xD00D), 1, 2, kTrue, "Download wordwise data into the flash assembly buffer", "_loadasb_word RND16|<data byte>|variable[,<count>]");
    P("_loadasb_word", "RND16|<data byte>|variable", kFalse, "string", "", "variable", "Data byte to write to assembly bufer");
    P("_loadasb_word", "<count>", kTrue, "hexadecimal value (8 bit)", "", "", "Number of bytes to write");
    // 14 NOT DOCUMENTED FUNCTIONS
    C(14, "_idreg", Id(0xE001), 0, 0, kFalse, "show IDREG contents of current target controller", "_idreg");
    C(14, "_xorchecksum", Id(0xE002), 1, 1, kFalse, "calculate XOR Checksum over selection", "_xorchecksum 8|16");
    P("_xorchecksum", "8|16", kFalse, "decimal value", "8;16", "", "Checksum calculation width in Bits (8 or 16)");
    C(14, "_addcchecksum", Id(0xE003), 1, 2, kFalse, "calculate ADDC Checksum over selection", "_addcchecksum 8|16[,<lastcarry>]");
    P("_addcchecksum", "8|16", kFalse, "decimal value", "8;16", "", "Checksum calculation width in Bits (8 or 16)");
    P("_addcchecksum", "<lastcarry>", kTrue, "ON or OFF", "", "", "If set, the last carry is added, too (0 or 1)");
    C(14, "_initialize", Id(0xE004), 0, 0, kFalse, "register initialization as configured", "_initialize");
    // 15 VIEW FUNCTIONS
    C(15, "_viewword", Id(0xF001), 0, 0, kTrue, "Views current selection as 16 bit numbers", "_viewword");
    C(15, "_viewlong", Id(0xF002), 0, 0, kTrue, "Views current selection as 32 bit values", "_viewlong");
    C(15, "_viewbyte", Id(0xF003), 0, 0, kTrue, "Views current selection as 8 bit values", "_viewbyte");
    C(15, "_viewassembler", Id(0xF004), 0, 0, kTrue, "Views current selection as assembler code", "_viewassembler");
    C(15, "_viewsfrs", Id(0xF005), 0, 1, kTrue, "Views all SFRs of a given SFR set", "_viewsfrs [<SFR set>]");
    P("_viewsfrs", "<SFR set>", kTrue, "decimal value", "0-4", "", "SFR set to view");
    C(15, "_clearterminalwindow", Id(0xF006), 0, 0, kTrue, "Clears the terminal output and logging window", "_clearterminalwindow");
    C(15, "_viewascii", Id(0xF007), 0, 1, kTrue, "Views the current selection as ascii text", "_viewascii [<byteswap>]");
    P("_viewascii", "<byteswap>", kTrue, "decimal value", "0-1", "", "1: Swap LSB and MSB");
}
// clang-format on

}  // namespace

void BuildShellCommandTable(ShellTable& table) {
    table.shellCommandCount = 0;
    static constexpr const char* kGroups[] = {"HELP FUNCTIONS",
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
    for (size_t g = 0; g < std::size(kGroups); ++g) table.shellGroupNames[g + 1] = kGroups[g];

    TableRows rows(table);
    rows.FrameFileAndEditRows();
    rows.TargetRows();
    rows.SfrTerminalAndLogRows();
    rows.ScriptingRows();
    rows.FlashAndViewRows();
}

}  // namespace vortelm::shell
