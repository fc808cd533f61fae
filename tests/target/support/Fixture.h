#pragma once
// The common set-up of the target tests: a fresh program state on a virtual
// clock, a serial channel attached to a scripted board, a kernel record and
// an image reader that serves the kernel's two images from memory.

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "ScriptedBoard.h"
#include "VirtualHost.h"
#include "core/ProgramState.h"
#include "link/ComPort.h"
#include "link/DumpIo.h"
#include "link/Monitor.h"
#include "target/Target.h"

namespace vortelm::testing {

struct Image {
    int32_t start = 0;
    std::vector<uint8_t> bytes;
    std::vector<std::pair<int32_t, int32_t>> runs;  // empty: one run over all bytes
};

class TargetFixture : public ::testing::Test {
  protected:
    TargetFixture() {
        st.programFolder = "/nonexistent-home";
        auto b = std::make_unique<ScriptedBoard>();
        board = b.get();
        board->clock = [this]() { return host.now; };
        port.attach(std::move(b));
        Kernel& k = st.kernels[0];
        k.name = "TEST_KERNEL";
        k.loaderPath = "LOADER.HEX";
        k.monitorPath = "CORE.HEX";
        k.startAddress = 0xF600;
        k.endAddress = 0xF63F;
        k.loaderAck = kTrue;
        setFeatures({"READBLOCK", "WRITEBLOCK", "READWORD", "WRITESEQ", "SETPROTECTION"});
        st.kernelCount = 1;
        st.CurrentKernel = 0;
        st.KernelStartAddress = 0xF600;
        st.KernelEndAddress = 0xF63F;
        images["LOADER.HEX"] = Image{0xFA40, pattern(32, 0x10), {}};
        images["CORE.HEX"] = Image{0xF600, pattern(64, 0x80), {}};
    }

    void setFeatures(std::initializer_list<const char*> names) {
        Kernel& k = st.kernels[0];
        k.featureCount = 0;
        for (const char* n : names) {
            k.features[static_cast<size_t>(k.featureCount)] = KernelFeature{n, 0, kTrue};
            ++k.featureCount;
        }
    }

    static std::vector<uint8_t> pattern(size_t n, uint8_t seed) {
        std::vector<uint8_t> v(n);
        for (size_t i = 0; i < n; ++i) v[i] = static_cast<uint8_t>(seed + i * 7);
        return v;
    }

    // The image reader: serves images by the file name at the end of the path.
    link::HexFileReader reader() {
        return [this](ProgramState& s, const std::string& path) {
            readPaths.push_back(path);
            s.selections.count = 0;
            auto slash = path.find_last_of('/');
            auto it = images.find(path.substr(slash == std::string::npos ? 0 : slash + 1));
            if (it == images.end()) return;
            const Image& img = it->second;
            for (size_t i = 0; i < img.bytes.size(); ++i) {
                const auto a = img.start + static_cast<int32_t>(i);
                link::dumpio::Write(s.dump, a, img.bytes[i]);
                link::dumpio::SetMark(s.dump, a, link::dumpio::kDefined, true);
                link::dumpio::SetMark(s.dump, a, link::dumpio::kValid, false);
            }
            if (img.runs.empty()) {
                addSelection(img.start, img.start + static_cast<int32_t>(img.bytes.size()) - 1);
            } else {
                for (auto [a, e] : img.runs) addSelection(a, e);
            }
        };
    }

    void addSelection(int32_t s, int32_t e) {
        auto& sel = st.selections;
        sel.start[static_cast<size_t>(sel.count)] = s;
        sel.end[static_cast<size_t>(sel.count)] = e;
        ++sel.count;
    }

    // Loads bytes into dump memory as a file load does and selects them.
    void load(int32_t start, const std::vector<uint8_t>& bytes) {
        for (size_t i = 0; i < bytes.size(); ++i) {
            const auto a = start + static_cast<int32_t>(i);
            link::dumpio::Write(st.dump, a, bytes[i]);
            link::dumpio::SetMark(st.dump, a, link::dumpio::kDefined, true);
            link::dumpio::SetMark(st.dump, a, link::dumpio::kValid, false);
        }
        addSelection(start, start + static_cast<int32_t>(bytes.size()) - 1);
    }

    uint8_t dumpByte(int32_t a) { return link::dumpio::Read(st.dump, a); }
    bool isValid(int32_t a) { return link::dumpio::HasMark(st.dump, a, link::dumpio::kValid); }
    bool isDefined(int32_t a) { return link::dumpio::HasMark(st.dump, a, link::dumpio::kDefined); }

    // Puts the board straight into the running monitor.
    void running() {
        board->mode = ScriptedBoard::Mode::Monitor;
        st.ConnectionState = kConnectedAndReady;
    }

    std::string text() const { return st.terminalBuffer; }
    bool logged(const std::string& s) const {
        return st.terminalBuffer.find(s) != std::string::npos;
    }

    VirtualHost host;
    ProgramState st{host};
    link::ComPort port{st};
    ScriptedBoard* board = nullptr;
    std::map<std::string, Image> images;
    std::vector<std::string> readPaths;
    target::Target tgt{st, port, reader()};
    link::Monitor mon{st, port};
};

}  // namespace vortelm::testing
