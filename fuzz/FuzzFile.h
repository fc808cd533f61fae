#pragma once
// What the fuzz targets share: one program state for the process (so that
// each input does not build a new one), and the input written to a file the
// readers can open.

#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "core/ProgramState.h"
#include "core/RunTimeError.h"
#include "image/BinaryFile.h"
#include "image/Dump.h"
#include "image/HexFile.h"
#include "image/SRecordFile.h"
#include "image/Selections.h"

namespace vortelm::fuzz {

struct Harness {
    Harness() {
        // Memory-backed when there is such a folder: rewriting a file on a
        // disk file system may wait for the disk on every input.
        struct stat sb {};
        const std::string base = ::stat("/dev/shm", &sb) == 0 ? "/dev/shm" : "/tmp";
        dir = base + "/vortelm-fuzz-" + std::to_string(::getpid());
        ::mkdir(dir.c_str(), 0700);
        st = std::make_unique<ProgramState>();
        st->programFolder = dir;
        st->PATH_LOAD = dir;
        st->PATH_SAVE = dir;
        InitDumpMemory(st->dump);
        input = dir + "/input";
    }
    ~Harness() {
        for (const char* f : {"/input", "/out.hex", "/out.sre", "/out.bin"}) ::unlink((dir + f).c_str());
        ::rmdir(dir.c_str());
    }
    void write(const uint8_t* data, size_t size) {
        FILE* f = std::fopen(input.c_str(), "wb");
        if (!f) return;
        if (size) std::fwrite(data, 1, size, f);
        std::fclose(f);
        st->terminalBuffer.clear();
        st->terminalLines = 0;
    }
    // Writes the loaded selections back out in every format, when they are
    // small enough to keep the run fast.
    void writeBack() {
        const SelectionList& sel = st->selections;
        if (sel.count == 0) return;
        const int64_t span = int64_t(HighestSelectedAddress(sel)) - LowestSelectedAddress(sel);
        if (span < 0 || span > (1 << 16)) return;
        try {
            WriteHexSelections(*st, dir + "/out.hex", 32, 4);
            WriteSRecordSelections(*st, dir + "/out.sre", 32, 28);
            WriteBinarySelections(*st, dir + "/out.bin", 0xFF);
        } catch (const RunTimeError&) {
        }
    }
    std::string dir;
    std::string input;
    std::unique_ptr<ProgramState> st;
};

}  // namespace vortelm::fuzz
