#pragma once
// The instruction decoder as the listings take it: the text and length of
// the instruction at an address of the memory image.

#include "shell/ViewListing.h"

namespace vortelm::shell {

// Decodes with the program's instruction table (st.instructions) and the
// loaded register names; the sequence counters go on from call to call.
[[nodiscard]] DecodeAt InstructionDecoder();

}  // namespace vortelm::shell
