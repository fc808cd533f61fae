#pragma once
// The boot sequence: from a controller waiting in its bootstrap loader to a
// running monitor core. The _pre steps read the kernel's loader and core
// images into dump memory (patching them for a relocated core) and flatten
// them; Initiate wakes the bootstrap loader; the _new steps send the images;
// Receive_ID_VortACK judges the replies and writes the log.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "core/ProgramState.h"
#include "image/ImageLoad.h"

namespace vortelm::link {

class ComPort;

// Reads an Intel HEX file into dump memory (see image/ImageLoad.h); the
// program passes it in.
using HexFileReader = ImageFileReader;

class Boot {
  public:
    Boot(ProgramState& st, ComPort& port, HexFileReader reader)
        : st_(st), port_(port), reader_(std::move(reader)) {}

    void Loader_pre();
    void Vortelm_pre();
    void PatchLoader();
    void PatchVortelm();
    // The identification byte, or -1 when none came (or the prompt was cancelled).
    [[nodiscard]] int Initiate(int prompt);
    int Loader_new();
    int Vortelm_new();
    // 0 the monitor runs, -1 a wrong byte, -2 no byte.
    [[nodiscard]] int Receive_ID_VortACK();

    std::vector<uint8_t> LoaderImage;
    std::vector<uint8_t> CoreImage;
    int32_t LoaderLength = 0;
    int32_t CoreLength = 0;
    int16_t IdByte = -1;
    int16_t LoaderAckByte = -1;
    int16_t CoreAckByte = -1;

    ComPort& port() { return port_; }

  private:
    [[nodiscard]] const Kernel& kernel() const;

    ProgramState& st_;
    ComPort& port_;
    HexFileReader reader_;
};

}  // namespace vortelm::link
