// The bytes from the line: every reader of a monitor answer (the command
// exchanges, the register helpers, the boot replies, the connection check
// and the receive event) fed arbitrary bytes at arbitrary times, on a
// virtual clock so that time-outs cost nothing.
//
// Input: four bytes choose the operations, the rest is the far end. After
// each write of the host, the far end answers with the next chunk: a control
// byte (low three bits: how many bytes follow; the rest: their delay in
// milliseconds, the highest value meaning past the time-out).
#include <cstdint>
#include <deque>
#include <memory>

#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "core/TestHost.h"
#include "link/Boot.h"
#include "link/ComPort.h"
#include "link/DumpIo.h"
#include "link/Monitor.h"
#include "link/ScriptedChannel.h"
#include "target/Target.h"

namespace {

using namespace vortelm;

void SetUp(ProgramState& st) {
    st.programFolder = "/nonexistent-vortelm-fuzz";
    Kernel& k = st.kernels[0];
    k.name = "FUZZ";
    k.loaderAck = kTrue;
    k.startAddress = 0xF600;
    k.endAddress = 0xF7FF;
    const char* features[] = {"READBLOCK", "WRITEBLOCK", "READWORD", "WRITESEQ", "SETPROTECTION"};
    for (const char* f : features)
        k.features[static_cast<size_t>(k.featureCount++)] = KernelFeature{f, 0, kTrue};
    st.kernelCount = 1;
    st.CurrentKernel = 0;
    st.KernelStartAddress = 0xF600;
    st.KernelEndAddress = 0xF7FF;
    st.sfrTable[0].name = "CP";
    st.sfrTable[0].address = 0xFE10;
    st.sfrTable[1].name = "SP";
    st.sfrTable[1].address = 0xFE12;
    st.sfrCount = 2;
    st.ConnectionState = kConnectedAndReady;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 4) return 0;
    // One state for the run (building one costs more than an input); what
    // an input may change is set again.
    static TestHost host;
    static ProgramState st{host};
    static const bool once = (SetUp(st), true);
    (void)once;
    st.ConnectionState = kConnectedAndReady;
    st.terminalBuffer.clear();
    st.terminalLines = 0;
    st.selections.count = 0;
    link::ComPort port{st};
    auto owned = std::make_unique<channel::ScriptedChannel>([] { return host.now; });
    channel::ScriptedChannel* ch = owned.get();
    port.attach(std::move(owned));
    port.setReceiveThreshold(1);

    std::deque<uint8_t> far(data + 4, data + size);
    ch->setResponder([&far](std::span<const uint8_t>, channel::ScriptedChannel& c) {
        if (far.empty()) return;
        const uint8_t control = far.front();
        far.pop_front();
        const size_t n = std::min<size_t>(control & 7u, far.size());
        const int64_t delayMs = (control >> 3) == 31 ? 2500 : (control >> 3);
        std::vector<uint8_t> bytes(far.begin(), far.begin() + static_cast<std::ptrdiff_t>(n));
        far.erase(far.begin(), far.begin() + static_cast<std::ptrdiff_t>(n));
        c.arrive(bytes, delayMs * 1000, 200);
    });

    link::Monitor mon(st, port);
    target::Target tgt(st, port, [](ProgramState&, const std::string&) {});
    const int32_t address = 0x1000 + data[0] * 16;
    for (int i = 0; i < 4; ++i) {
        const uint8_t op = data[i];
        try {
            switch (op % 17) {
                case 0:
                    (void)mon.Cmd_WriteWord(address, op * 257);
                    break;
                case 1:
                    (void)mon.Cmd_ReadWord(address);
                    break;
                case 2:
                    (void)mon.Cmd_ReadWord_Value(address);
                    break;
                case 3:
                    (void)mon.Cmd_WriteWordSequence(address, op);
                    break;
                case 4:
                    (void)mon.Cmd_SetProtection(op, 1, 2);
                    break;
                case 5:
                    (void)mon.Cmd_Einit();
                    break;
                case 6:
                    (void)mon.Cmd_reconnect();
                    break;
                case 7:
                    target::CheckConnection(tgt);
                    break;
                case 8:
                    (void)mon.Cmd_Swreset();
                    break;
                case 9:
                    (void)mon.Cmd_Jmp(address);
                    break;
                case 10:
                    link::dumpio::Write(st.dump, address, op);
                    (void)mon.Cmd_Write(address, op % 40);
                    break;
                case 11:
                    (void)mon.Cmd_Read(address, op % 40);
                    break;
                case 12: {
                    link::CallFrame frame;
                    (void)mon.Cmd_Call(address, frame, (op & 1) != 0);
                    break;
                }
                case 13:
                    (void)mon.cmd_readgpr(op % 16);
                    break;
                case 14:
                    (void)mon.cmd_pop((op & 1) != 0);
                    break;
                case 15: {
                    // Bytes nobody waits for: the receive event takes them,
                    // in the states of a running program and the debugger.
                    st.ConnectionState = static_cast<Connection>(op % 7);
                    port.SSSend(0x00);
                    port.setReceiveThreshold(1);
                    for (int y = 0; y < 8; ++y) host.yield(host.now + 5'000);
                    st.ConnectionState = kConnectedAndReady;
                    break;
                }
                case 16: {
                    link::Boot boot(st, port, [](ProgramState&, const std::string&) {});
                    boot.LoaderImage.assign(32, 0x11);
                    boot.CoreImage.assign(64, 0x22);
                    boot.LoaderLength = 32;
                    boot.CoreLength = 64;
                    if (boot.Initiate(0) >= 0) {
                        (void)boot.Loader_new();
                        (void)boot.Vortelm_new();
                        (void)boot.Receive_ID_VortACK();
                    }
                    break;
                }
            }
        } catch (const RunTimeError&) {
        }
    }
    return 0;
}
