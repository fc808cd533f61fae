#pragma once
// Reading the registers that the SFR view and the set listing show. The
// lines themselves are built in sfr/ from the dump memory; this brings the
// dump up to date from the target first.

#include <cstdint>
#include <vector>

#include "core/ProgramState.h"

namespace vortelm::link {
class ComPort;
}

namespace vortelm::target {

// A range of addresses read in one exchange.
struct SfrRun {
    int32_t first = 0;
    int32_t length = 0;
};

// The registers of the list's lines (the current set's entry at each line's
// place) as runs of contiguous addresses, lowest first: one block read each.
[[nodiscard]] std::vector<SfrRun> SfrReadRuns(const ProgramState& st);

// The work of RefreshSfrView: with the receive notification off, the
// registers of the list are read when the target is connected (one block
// read per run where the kernel reads blocks, else register by register in
// the list's order), then every line is rebuilt from the dump memory in its
// place. A failed read leaves the old bytes, and the line shows them. Gives
// the number of exchanges it made.
int RefreshSfrView(ProgramState& st, link::ComPort* port);

// The register by register way (cmd_readsfr for each line): what the view
// does where the kernel has no block read. Gives the number of exchanges.
int RefreshSfrViewByRegister(ProgramState& st, link::ComPort* port);

// The listing of _viewsfrs: the set's title, then one line per register,
// each read (twice) from the target first when connected.
void ShowSfrSet(ProgramState& st, link::ComPort* port, int set);

}  // namespace vortelm::target
