#pragma once
// The shell frame with its command table, wired to the scripted board in
// monitor mode: what the tests of the target, set-up and expression rows
// share. A test names the kernel features and registers it needs.

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "ScriptedBoard.h"
#include "core/ProgramState.h"
#include "core/TestHost.h"
#include "link/ComPort.h"
#include "shell/Shell.h"
#include "target/Target.h"

namespace vortelm::shell::testing {

struct ShellOnBoard : ::testing::Test {
    TestHost host;
    std::unique_ptr<ProgramState> st = std::make_unique<ProgramState>(host);
    link::ComPort port{*st};
    target::Target tgt{*st, port, nullptr};
    Session s{*st};
    vortelm::testing::ScriptedBoard* board = nullptr;
    int16_t result = 0;

    void SetUp() override {
        BuildShellCommandTable(s.table);
        auto b = std::make_unique<vortelm::testing::ScriptedBoard>();
        board = b.get();
        board->mode = vortelm::testing::ScriptedBoard::Mode::Monitor;
        port.attach(std::move(b));
        s.port = &port;
    }
    // Connected and ready with the core at F600-F8FF, as after a connect.
    void connected() {
        s.target = &tgt;
        st->ConnectionState = kConnectedAndReady;
        st->KernelStartAddress = 0xF600;
        st->KernelEndAddress = 0xF8FF;
    }
    void features(std::initializer_list<const char*> names) {
        Kernel& k = st->kernels[0];
        k.featureCount = 0;
        for (const char* n : names)
            k.features[static_cast<size_t>(k.featureCount++)] = KernelFeature{n, 0, kTrue};
    }
    // The register table holds these registers only.
    void registers(std::initializer_list<std::pair<const char*, int32_t>> named) {
        st->sfrCount = 0;
        for (const auto& [name, address] : named) {
            st->sfrTable[static_cast<size_t>(st->sfrCount)].name = name;
            st->sfrTable[static_cast<size_t>(st->sfrCount)].address = address;
            ++st->sfrCount;
        }
    }
    std::string Run(std::string_view line) {
        host.terminal.clear();
        result = ExecuteShellCommand(s, line, 0);
        return host.terminal;
    }
};

}  // namespace vortelm::shell::testing
