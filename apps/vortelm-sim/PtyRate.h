#pragma once
// The rate and framing a host set on a pseudo-terminal's slave side, read
// with TCGETS2 so that any rate (also a custom one) comes through.

namespace vortelm::simapp {

struct SlaveSettings {
    double rate = 0;        // 0 when it could not be read
    bool eightNone = true;  // 8 data bits, no parity
    bool extproc = false;   // EXTPROC still set
};

[[nodiscard]] SlaveSettings ReadSlaveSettings(int fd);
// Sets EXTPROC again (a host that rewrites all local flags clears it).
void SetExtproc(int fd);

}  // namespace vortelm::simapp
