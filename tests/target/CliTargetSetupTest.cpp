// The target set-up end to end: vortelm-cli with a fresh data home against
// the in-process board (and the board program on a pseudo-terminal), for
// each family: the reports and the initialisation at connect, the change of
// the baud rate with a transfer after it, the relocation of the monitor, a
// call of a routine, the register helpers and the identification report.

#include <cstdio>

#include "CliHome.h"

namespace vortelm::testing {
namespace {

struct Family {
    const char* mctype;
    const char* kernel;
    int image;    // a free 512 bytes of RAM
    int newCore;  // where the monitor may move
    int oldCore;  // the kernel's own start address
    int routine;  // a free word of RAM for a routine
};

const Family kFamilies[] = {
    {"ALD7RK_BB", "ALD4_DEFAULT", 0xFA00, 0xFB00, 0xF600, 0xFA00},
    {"ZTA9Y_BB", "ZTA9Y_DEFAULT", 0xC000, 0xC000, 0xE000, 0xC800},
    {"ZT7000_BB", "ZT7000_DEFAULT", 0xA000, 0xA000, 0xC000, 0xA800},
};

std::string Hex(int v, int width) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "%0*X", width, v);
    return buf;
}

bool Has(const std::string& out, const std::string& s) {
    return out.find(s) != std::string::npos;
}

class CliTarget : public CliHome {
  protected:
    void family(const Family& f) {
        ASSERT_TRUE(setPreference("MCTYPE=", f.mctype));
        ASSERT_TRUE(setPreference("KERNEL=", f.kernel));
    }
    // An init register of the family's table and a generic one into RAM.
    void initRegisters() {
        ASSERT_TRUE(setPreference("[Register]", "\nBUSCON0=0x04D2\nGENERIC1=0xBEEF,0x00FC00\n"));
    }
};

TEST_F(CliTarget, ConnectReportsAndInitialisesOnEachFamily) {
    for (const Family& f : kFamilies) {
        SCOPED_TRACE(f.mctype);
        family(f);
        initRegisters();
        const std::string out = run("sim:", "_connect NOPROMPT\n_r16 FF0C\n_r16 FC00\n_test\n");
        EXPECT_TRUE(Has(out, "*Vortelm successfully launched")) << out;
        EXPECT_FALSE(Has(out, "*ERROR")) << out;
        // the init registers were written, in list order, and read back
        EXPECT_TRUE(
            Has(out, "*Initialisation: Write to BUSCON0\n*Initialisation: Write to GENERIC1\n"))
            << out;
        EXPECT_TRUE(Has(out, "*00FF0C: 04D2")) << out;
        EXPECT_TRUE(Has(out, "*00FC00: BEEF")) << out;
        EXPECT_TRUE(Has(out, "*Initialisation: Call EINIT Command\n")) << out;
        if (f.kernel[0] == 'A') {
            EXPECT_TRUE(Has(out,
                            "*Vortelm successfully launched*Reset: BUSCON0=04C0\n"
                            "*Reset: SYSCON=0090\n"
                            "*Reset Configuration: External Bus enabled\n"
                            "*Reset Configuration: 16 Bit multiplexed Bus\n"
                            "*Reset Configuration: WR# acts as WRL#, BHE# acts as WRH# (P0H.0=1)\n"
                            "*Reset Configuration: On chip watchdog timer is enabled (RD#=1)\n"
                            "*Reset Configuration: Normal ALE signal\n"
                            "*Initialisation: Write to BUSCON0\n"))
                << out;
            EXPECT_TRUE(Has(out, "*Initialisation: Memory Unit XFLASH activated\n")) << out;
        } else if (f.kernel[2] == 'A') {
            EXPECT_TRUE(Has(out,
                            "*Vortelm successfully launched*Reset: SYSSTAT=C000\n"
                            "*Chip: FLASH_128 Pins\n"
                            "*Reset Configuration: Single Chip Mode\n"
                            "*Reset Configuration: 16 Bit demultiplexed Bus\n"
                            "*Reset Configuration: CS0-CS1\n"
                            "*Reset Configuration: A16-A23\n"
                            "*PLL Reset Configuration: Direct Drive. OSC=4-40MHZ\n"
                            "*Oscillator is locked, PLL is locked\n"
                            "*Initialisation: Write to BUSCON0\n"))
                << out;
        } else {
            // no reset report on this family, and no error
            EXPECT_TRUE(
                Has(out, "*Vortelm successfully launched*Initialisation: Write to BUSCON0\n"))
                << out;
            EXPECT_FALSE(Has(out, "*Reset")) << out;
        }
    }
}

TEST_F(CliTarget, InitializeRunsAgainAndTheHelpDoesNotListIt) {
    family(kFamilies[0]);
    initRegisters();
    const std::string out = run("sim:", "_connect NOPROMPT\n_initialize\n_r16 FC00\n_help\n");
    const auto first = out.find("*Initialisation: Write to GENERIC1");
    ASSERT_NE(first, std::string::npos) << out;
    EXPECT_NE(out.find("*Initialisation: Write to GENERIC1", first + 1), std::string::npos) << out;
    EXPECT_TRUE(Has(out, "*00FC00: BEEF")) << out;
    EXPECT_FALSE(Has(out, "usage: _initialize")) << out;
    EXPECT_FALSE(Has(out, "\n_initialize")) << out;
    EXPECT_FALSE(Has(out, "\n_idreg")) << out;
    EXPECT_FALSE(Has(out, "*ERROR")) << out;
    // not connected
    const std::string off = run("sim:", "_initialize\n_idreg\n");
    EXPECT_TRUE(Has(off, ">_initialize\n\n*ERROR: Not Connected to Target")) << off;
    EXPECT_TRUE(Has(off, ">_idreg\n\n*ERROR: Not Connected to Target")) << off;
}

TEST_F(CliTarget, IdentificationReport) {
    family(kFamilies[1]);
    const std::string out = run("sim:", "_connect NOPROMPT\n_idreg\n");
    EXPECT_TRUE(Has(out,
                    ">_idreg\n"
                    "*idreg: MANUF=00C1 >> Dorvani Semiconductor Division\n"
                    "*idreg: DEPT=0001 >> QR CAD Macrocells\n"
                    "*idreg: CHIPID=8A\n"
                    "*idreg: REVISION=01\n"
                    "*idreg: PROGVDD=20 >> 2.5 Volt\n"
                    "*idreg: PROGVPP=20 >> 2.5 Volt\n"
                    "*idreg: IDMEM/TYPE=03 >> Flash\n"
                    "*idreg: IDMEM/Size= 256 KByte\n"
                    "*idreg: IDMEM2/TYPE=06 >> DRAM/SRAM\n"
                    "*idreg: IDMEM2/Size= 12 KByte\n"))
        << out;
    for (const Family& f : {kFamilies[0], kFamilies[2]}) {
        SCOPED_TRACE(f.mctype);
        family(f);
        const std::string o = run("sim:", "_connect NOPROMPT\n_idreg\n");
        EXPECT_TRUE(Has(o, "*idreg: IDMEM2/Size=")) << o;
        EXPECT_FALSE(Has(o, "*ERROR")) << o;
    }
}

std::string TransferJob(int rate) {
    return "_connect NOPROMPT\n_setbaudrate " + std::to_string(rate) +
           "\n_load x.hex\n_download\n_clearmemory\n_upload\n_compare\n";
}

TEST_F(CliTarget, DownloadAfterTheRateChangeOnEachFamily) {
    for (const Family& f : kFamilies) {
        SCOPED_TRACE(f.mctype);
        family(f);
        writeImage("x.hex", f.image, 32);
        const std::string out = run("sim:", TransferJob(57600));
        EXPECT_TRUE(Has(out, "*Comparison:  512 Bytes OK -  0 Bytes different")) << out;
        EXPECT_FALSE(Has(out, "*ERROR")) << out;
    }
}

TEST_F(CliTarget, RefusedRateKeepsTheConnection) {
    family(kFamilies[0]);
    writeImage("x.hex", kFamilies[0].image, 32);
    const std::string out = run("sim:", TransferJob(115200));
    EXPECT_TRUE(
        Has(out,
            ">_setbaudrate 115200\n*ERROR: Baudrate setting due to CPU frequency setting not "
            "possible - keeping previous baudrate (8.5%)\n"))
        << out;
    EXPECT_TRUE(Has(out, "*Comparison:  512 Bytes OK -  0 Bytes different")) << out;
    // a rate that is not in the list is refused by the row
    const std::string bad = run("sim:", "_setbaudrate 1000\n");
    EXPECT_TRUE(Has(bad, "*ERROR: Illegal parameters")) << bad;
}

TEST_F(CliTarget, DownloadAfterTheRateChangeOnThePty) {
    for (const Family& f : kFamilies) {
        SCOPED_TRACE(f.mctype);
        family(f);
        writeImage("x.hex", f.image, 32);
        const std::string out = runOnPty(f.mctype, TransferJob(57600));
        EXPECT_TRUE(Has(out, "*Comparison:  512 Bytes OK -  0 Bytes different")) << out;
        EXPECT_FALSE(Has(out, "*ERROR")) << out;
    }
}

TEST_F(CliTarget, ABoardAtAnotherRateSeesGarbageOnThePty) {
    family(kFamilies[0]);
    // the board's divider changes behind the host's back: 56818 baud against 9600
    const std::string out =
        runOnPty(kFamilies[0].mctype, "_connect NOPROMPT\n_r16 FC00\n_w16 FEB4,A\n_r16 FC00\n");
    const auto first = out.find("*00FC00: ");
    ASSERT_NE(first, std::string::npos) << out;
    EXPECT_EQ(out.find("*00FC00: ", first + 1), std::string::npos) << out;
}

TEST_F(CliTarget, RelocationFreesTheOldPlaceAndProtectsTheNew) {
    for (const Family& f : kFamilies) {
        SCOPED_TRACE(f.mctype);
        family(f);
        writeImage("old.hex", f.oldCore, 16);
        writeImage("new.hex", f.newCore, 16);
        const std::string out =
            run("sim:", "_connect NOPROMPT\n_movemonitor " + Hex(f.newCore, 6) +
                            "\n_load old.hex\n_download\n_clearmemory\n_upload\n_compare\n"
                            "_load new.hex\n_download\n_test\n");
        EXPECT_TRUE(Has(out, "*VortElm successfully moved to " + Hex(f.newCore, 6))) << out;
        EXPECT_TRUE(Has(out, "*Comparison:  256 Bytes OK -  0 Bytes different")) << out;
        EXPECT_TRUE(Has(out, "*ERROR: download not successful")) << out;
        // the monitor still answers at its new place
        EXPECT_TRUE(Has(out, ">_test\n")) << out;
        EXPECT_FALSE(Has(out, "Connection to target lost")) << out;
    }
    const std::string seven = run("sim:", "_movemonitor 0001000\n");
    EXPECT_TRUE(Has(seven, "*ERROR: Illegal parameters")) << seven;
}

TEST_F(CliTarget, CallReturnsTheRoutinesRegisters) {
    for (const Family& f : kFamilies) {
        SCOPED_TRACE(f.mctype);
        family(f);
        const std::string a = Hex(f.routine, 6);
        // MOV R8,#1234 ; MOV R9,R8 ; MOV R15,#0 ; RET
        const std::string out = run(
            "sim:", "_connect NOPROMPT\n_w16 " + a + ",F8E6\n_w16 " + Hex(f.routine + 2, 6) +
                        ",1234\n_w16 " + Hex(f.routine + 4, 6) + ",98F0\n_w16 " +
                        Hex(f.routine + 6, 6) + ",0FE0\n_w16 " + Hex(f.routine + 8, 6) +
                        ",00CB\n_w16 " + Hex(f.routine + 16, 6) + ",0077\n_r16 " +
                        Hex(f.routine + 16, 6) + ",%1\n_call " + a + ",1,2,3,4,5,6,%1,8\n_test\n");
        EXPECT_TRUE(Has(out,
                        "*Driver successfully executed\n*Return Parameters:\n"
                        "  R8=1234\n  R9=1234\n  R10=0003\n  R11=0004\n  R12=0005\n  R13=0006\n"
                        "  R14=0077\n  R15=0000\n"))
            << out;
        EXPECT_FALSE(Has(out, "*ERROR")) << out;
    }
}

TEST_F(CliTarget, RegisterHelpers) {
    family(kFamilies[1]);
    std::string out = run("sim:", "_connect NOPROMPT\n_pllcon 0C32\n_r16 F0AC\n_rstcon 1\n");
    EXPECT_TRUE(Has(out, "PLLCON set to 0C32\n")) << out;
    EXPECT_TRUE(Has(out, "*00F0AC: 0C32")) << out;
    EXPECT_TRUE(Has(out, ">_rstcon 1\n*ERROR: Feature not supported by this controller\n")) << out;
    family(kFamilies[0]);
    out = run("sim:", "_connect NOPROMPT\n_rstcon 0040\n_r16 F1E0\n_pllcon 1\n");
    EXPECT_TRUE(Has(out, "RSTCON set to 0040\n")) << out;
    EXPECT_TRUE(Has(out, "*00F1E0: 0040")) << out;
    EXPECT_TRUE(Has(out, ">_pllcon 1\n*ERROR: Feature not supported by this controller\n")) << out;
    // a missing helper: the loader's error, then the helper's
    std::filesystem::remove(home / "MCPROG" / "RSTCON.HEX");
    out = run("sim:", "_connect NOPROMPT\n_rstcon 0040\n");
    EXPECT_TRUE(Has(out, " not found !Error setting RSTCON -1\n")) << out;
}

}  // namespace
}  // namespace vortelm::testing
