// Fuzz target: the ReadSRecord reader on any bytes.

#include "fuzz/FuzzFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static vortelm::fuzz::Harness h;
    h.write(data, size);
    try {
        vortelm::ReadSRecordFile(*h.st, h.input);
    } catch (const vortelm::RunTimeError&) {
        // A bound of the program: the load ends here, as it does in the shell.
        return 0;
    }
    h.writeBack();
    return 0;
}
