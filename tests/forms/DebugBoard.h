#pragma once
// A program started in a fresh data home and connected to the in-process
// virtual board, with a small routine downloaded into its RAM at FA00:
//
//   FA00 MOV R0,#1234h   FA04 MOV R1,#5678h   FA08 NOP   FA0A NOP
//   FA0C MOV R1,R0       FA0E NOP             FA10 NOP   FA12 JMPR cc_UC,FA00h

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "apps/SimOpener.h"
#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "image/Dump.h"
#include "link/ComPort.h"
#include "link/Monitor.h"
#include "shell/Program.h"
#include "tests/support/IntelHex.h"

namespace vortelm::forms::testing {

namespace fs = std::filesystem;
using vortelm::testing::HexRecord;

inline const std::vector<int> kRoutine{0xE6, 0xF0, 0x34, 0x12, 0xE6, 0xF1, 0x78, 0x56, 0xCC, 0x00,
                                       0xCC, 0x00, 0xF0, 0x10, 0xCC, 0x00, 0xCC, 0x00, 0x0D, 0xF6};

class DebugBoard : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string t = (fs::temp_directory_path() / "vortelm-debug-XXXXXX").string();
        ASSERT_NE(::mkdtemp(t.data()), nullptr);
        home = t;
        shell::ProgramOptions o;
        o.home = home;
        o.dataSource = std::string(VORTELM_SOURCE_DIR) + "/data";
        o.portOverride = "sim:";
        apps::AddSimOpener(o.openers);
        program = std::make_unique<shell::Program>(host, o);
        program->StartUp();
        std::ofstream(home + "/r.hex") << HexRecord(0xFA00, kRoutine) << ":00000001FF\n";
        ASSERT_EQ(program->RunCommandBoxLine("_connect NOPROMPT"), 0) << host.terminal;
        ASSERT_EQ(program->RunCommandBoxLine("_load r.hex"), 0) << host.terminal;
        ASSERT_EQ(program->RunCommandBoxLine("_download"), 0) << host.terminal;
        ASSERT_EQ(st().ConnectionState, 1);
    }
    void TearDown() override {
        program.reset();
        std::error_code ec;
        fs::remove_all(home, ec);
    }

    ProgramState& st() { return program->state(); }

    // Lets the event loop run until the target is back at the monitor.
    bool WaitForStop() {
        for (int i = 0; i < 2000 && st().ConnectionState != 1; ++i) host.yield();
        return st().ConnectionState == 1;
    }

    // The bytes the board holds, read back through the monitor.
    std::vector<int> BoardBytes(int32_t address, int count) {
        link::Monitor mon(st(), program->port());
        EXPECT_EQ(mon.Cmd_Read(address, count), 0);
        std::vector<int> v;
        for (int i = 0; i < count; ++i) v.push_back(ReadDumpByte(st().dump, address + i));
        return v;
    }

    TestHost host;
    std::string home;
    std::unique_ptr<shell::Program> program;
};

}  // namespace vortelm::forms::testing
