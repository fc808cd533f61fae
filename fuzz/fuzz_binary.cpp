// Fuzz target: the binary reader. The first four bytes give the address
// offset (any 32-bit value, past the image included), the rest is the file.

#include <cstring>

#include "fuzz/FuzzFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static vortelm::fuzz::Harness h;
    int32_t address = 0;
    if (size >= 4) {
        std::memcpy(&address, data, 4);
        data += 4;
        size -= 4;
    }
    h.write(data, size);
    try {
        vortelm::ReadBinaryFile(*h.st, h.input, address);
    } catch (const vortelm::RunTimeError&) {
        return 0;
    }
    h.writeBack();
    return 0;
}
