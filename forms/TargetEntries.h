#pragma once
// What the main window's target entries beyond connect and the transfers do:
// the reset configuration shown again from the stored values, the monitor's
// relocation with its address prompt, and the button that moves the monitor
// to the second serial channel.

#include <cstdint>
#include <optional>

#include "core/ProgramState.h"

namespace vortelm::target {
struct Target;
}

namespace vortelm::forms {

// UDisplayResetConfig: the report from the values the last connect read.
void UDisplayResetConfig_Click(target::Target& t);

// The prompt of UTargetRelocate: asks until the answer, in capitals, is a
// hexadecimal number of at most six digits; nothing when the answer is
// empty or the box is cancelled.
[[nodiscard]] std::optional<int32_t> AskRelocationAddress(ProgramState& st);
// UTargetRelocate: the prompt, then the relocation; 1 when cancelled.
int UTargetRelocate_Click(target::Target& t);

// BASC02ASC1: the move to the second serial channel.
int BASC02ASC1_Click(target::Target& t);

}  // namespace vortelm::forms
