// Finding, loading and starting drivers: one unit's driver at a time, the
// words of a failed start and of a driver that reports no burst size.

#include <string>

#include "FlashFixture.h"
#include "config/ControllerTypes.h"
#include "image/Dump.h"
#include "sim/Images.h"

namespace vortelm::testing {
namespace {

using Driver = FlashProgramTest;

// A driver image of our board's kind at F900, written into the data home.
void WriteDriver(const std::string& home, const std::string& name, const sim::DriverSpec& spec) {
    std::ofstream(home + "/DRIVER/" + name, std::ios::binary)
        << sim::ToIntelHex(0xF900, sim::MakeDriver(spec, 0x100));
}

TEST_F(Driver, TwoUnitsReloadTheirDriversInTurn) {
    start(kFamilyCases[0]);
    run("_connect NOPROMPT");
    const int ifl = MemoryUnitIndexByName(st(), "IFLASH");
    const int xfl = MemoryUnitIndexByName(st(), "XFLASH");
    std::string out = run("_status IFLASH");
    EXPECT_TRUE(has(out, "*Status: loading driver ")) << out;
    EXPECT_TRUE(has(out, "ALD4IFL1.HEX")) << out;
    EXPECT_EQ(st().memoryUnits[ifl].driverLoaded, kTrue);
    out = run("_status XFLASH");
    EXPECT_TRUE(has(out, "ALD4XFL0.HEX")) << out;
    EXPECT_EQ(st().memoryUnits[ifl].driverLoaded, kFalse);
    EXPECT_EQ(st().memoryUnits[xfl].driverLoaded, kTrue);
    out = run("_status IFLASH");
    EXPECT_TRUE(has(out, "ALD4IFL1.HEX")) << out;
    EXPECT_EQ(st().memoryUnits[xfl].driverLoaded, kFalse);
    // the same unit again: no load
    out = run("_status IFLASH");
    EXPECT_FALSE(has(out, "loading driver")) << out;
}

TEST_F(Driver, ModeOneDriverWithoutBurstSizeIsWrongModeAndKeepsTheUnit) {
    WriteDriver(home, "NOBURST.HEX", {1, 0, 0, 0xA5, 1, 0x00FD00, 0});
    start(kFamilyCases[0]);
    run("_connect NOPROMPT");
    const int ifl = MemoryUnitIndexByName(st(), "IFLASH");
    st().memoryUnits[ifl].driverPath = "DRIVER\\NOBURST.HEX";
    const std::string out = run("_status IFLASH");
    EXPECT_TRUE(has(out, "\r\n*Status: wrong driver mode ??? Please check out !")) << out;
    EXPECT_EQ(st().memoryUnits[ifl].burstSize, 0x80);
    EXPECT_EQ(st().memoryUnits[ifl].blank, 0xFF);
    EXPECT_EQ(st().memoryUnits[ifl].driverBufferAddress, 0xFC80);
    EXPECT_EQ(st().memoryUnits[ifl].driverLoaded, kTrue) << "the load counts as successful";
}

TEST_F(Driver, ModeOneDriverOverrulesBufferBurstAndBlank) {
    WriteDriver(home, "OTHER.HEX", {1, 0, 0x40, 0xFF, 1, 0x00FD00, 0});
    start(kFamilyCases[0]);
    run("_connect NOPROMPT");
    const int ifl = MemoryUnitIndexByName(st(), "IFLASH");
    st().memoryUnits[ifl].driverPath = "DRIVER\\OTHER.HEX";
    writeFile("a.hex", IntelHex(0x20000, Pattern(0x80, 4)));
    run("_load a.hex");
    const std::string out = run("_iprogram");
    EXPECT_EQ(st().memoryUnits[ifl].burstSize, 0x40);
    EXPECT_EQ(st().memoryUnits[ifl].driverBufferAddress, 0xFD00);
    EXPECT_TRUE(has(out, "*IProgram:128 bytes successfully programmed")) << out;
    EXPECT_EQ(ReadDumpByte(st().dump, 0xFD00), Pattern(0x80, 4)[0x40])
        << "the last block went through FD00";
}

TEST_F(Driver, FailedStartIsReported) {
    WriteDriver(home, "NOUNIT.HEX",
                {1, 9, 0x80, 0xFF, 1, 0x00FC80, 0});  // drives no flash of the board
    start(kFamilyCases[0]);
    run("_connect NOPROMPT");
    const int ifl = MemoryUnitIndexByName(st(), "IFLASH");
    st().memoryUnits[ifl].driverPath = "DRIVER\\NOUNIT.HEX";
    writeFile("a.hex", IntelHex(0x20000, Pattern(0x80, 4)));
    run("_load a.hex");
    const std::string out = run("_program");
    EXPECT_TRUE(has(out, "\r\n*Program: initializing driver not successful ")) << out;
    EXPECT_FALSE(has(out, "successfully programmed")) << out;
    EXPECT_NE(result, 0);
    EXPECT_FALSE(host.busy);
    // the selection list is the operator's again
    EXPECT_EQ(st().selections.count, 1);
    EXPECT_EQ(st().selections.start[0], 0x20000);
}

TEST_F(Driver, MissingDriverFileEndsTheOperation) {
    start(kFamilyCases[0]);
    run("_connect NOPROMPT");
    const int ifl = MemoryUnitIndexByName(st(), "IFLASH");
    st().memoryUnits[ifl].driverPath = "DRIVER\\GONE.HEX";
    const std::string out = run("_erase IFLASH,1");
    EXPECT_TRUE(has(out, "*Erase: loading driver ")) << out;
    EXPECT_TRUE(has(out, "*ERROR: ")) << out;
    EXPECT_NE(result, 0);
    EXPECT_EQ(st().memoryUnits[ifl].driverLoaded, kFalse);
}

TEST_F(Driver, ConnectClearsTheLoadedDriver) {
    start(kFamilyCases[1]);
    run("_connect NOPROMPT");
    run("_status IFLASH");
    const int ifl = MemoryUnitIndexByName(st(), "IFLASH");
    EXPECT_EQ(st().memoryUnits[ifl].driverLoaded, kTrue);
    run("_reconnect");
    EXPECT_EQ(st().memoryUnits[ifl].driverLoaded, kFalse);
    EXPECT_TRUE(has(run("_status IFLASH"), "loading driver"));
}

}  // namespace
}  // namespace vortelm::testing

namespace vortelm::testing {
namespace {

TEST_F(Driver, FailedDownloadLeavesNoDriverLoaded) {
    start(kFamilyCases[0]);
    run("_connect NOPROMPT");
    run("_status IFLASH");
    const int ifl = MemoryUnitIndexByName(st(), "IFLASH");
    const int xfl = MemoryUnitIndexByName(st(), "XFLASH");
    ASSERT_EQ(st().memoryUnits[ifl].driverLoaded, kTrue);
    // a driver image over the running core cannot be downloaded
    writeFile("DRIVER/OVERCORE.HEX", IntelHex(0xF600, Pattern(0x40, 1)));
    st().memoryUnits[xfl].driverPath = "DRIVER\\OVERCORE.HEX";
    const std::string out = run("_status XFLASH");
    EXPECT_TRUE(has(out, "*ERROR: download not successful")) << out;
    EXPECT_EQ(st().memoryUnits[ifl].driverLoaded, kFalse) << "its RAM may have been written";
    EXPECT_EQ(st().memoryUnits[xfl].driverLoaded, kFalse);
}

TEST_F(Driver, BurstSizeZeroEndsTheProgramWithTheBound) {
    start(kFamilyCases[0]);
    run("_connect NOPROMPT");
    run("_status IFLASH");  // the driver is loaded: its start does not set the burst size again
    const int ifl = MemoryUnitIndexByName(st(), "IFLASH");
    st().memoryUnits[ifl].burstSize = 0;
    writeFile("a.hex", IntelHex(0x20000, Pattern(0x10, 1)));
    run("_load a.hex");
    const std::string out = run("_program");
    EXPECT_TRUE(has(out, "*ERROR: burst size 0 of IFLASH below 1")) << out;
    EXPECT_FALSE(host.busy);
    EXPECT_EQ(host.progressCalls.back(), (std::pair<int64_t, int64_t>{0, 0}));
}

}  // namespace
}  // namespace vortelm::testing
