#pragma once
// A program state with the delivered instruction table and a small register
// table: DPP0, SP, PSW (bit 1 "C", bits 15-12 "ILVL"), SYSCON and one
// register of the extended area, XADR at F100.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "core/Helpers.h"
#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "core/TestHost.h"
#include "disasm/CommandTable.h"
#include "disasm/Decoder.h"
#include "image/Dump.h"

namespace vortelm::disasm {

inline std::string DeliveredTableText() {
    std::ifstream in(std::filesystem::path(VORTELM_SOURCE_DIR) / "data" / "CMDDEF" / "command.cmd",
                     std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

struct Decoder : ::testing::Test {
    TestHost host;
    ProgramState st{host};

    void SetUp() override {
        const TableFault f = ParseCommandTable(DeliveredTableText(), st.instructions);
        ASSERT_TRUE(f.ok()) << f.reason;
        Sfr("DPP0", 0xFE00);
        Sfr("SP", 0xFE12);
        SfrRecord& psw = Sfr("PSW", 0xFF10);
        psw.bitName[1] = "C";
        psw.bitWidth[1] = 1;
        psw.bitName[12] = "ILVL";
        psw.bitWidth[12] = 4;
        Sfr("SYSCON", 0xFF12);
        Sfr("XADR", 0xF100);
    }
    SfrRecord& Sfr(const std::string& name, int32_t address) {
        SfrRecord& r = st.sfrTable[static_cast<size_t>(st.sfrCount++)];
        r.name = name;
        r.address = address;
        r.shortAddress = static_cast<int16_t>((address / 2) & 255);
        r.extended = address < 0xFE00 ? kTrue : kFalse;
        return r;
    }
    void Put(int32_t address, const std::vector<uint8_t>& bytes) {
        for (uint8_t b : bytes) {
            WriteDumpByte(st.dump, address, b);
            SetDefined(st.dump, address++, kTrue);
        }
    }
};

}  // namespace vortelm::disasm
