#include "target/Target.h"

namespace vortelm::target {

// The reset configuration report and the target initialisation are built
// with their own operations; until then connect reaches these call points
// and they do nothing.

int ReadResetConfiguration(Target&) { return -1; }

void ShowResetConfiguration(Target&) {}

void InitializeTarget(Target&) {}

}  // namespace vortelm::target
