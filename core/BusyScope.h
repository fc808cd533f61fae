#pragma once
// The hourglass for the length of a scope: on when made, off when left, also
// when the scope ends by an error.

#include "core/Host.h"
#include "core/ProgramState.h"

namespace vortelm {

class BusyScope {
  public:
    explicit BusyScope(ProgramState& st) : st_(st) { st_.host->setBusy(true); }
    ~BusyScope() { st_.host->setBusy(false); }
    BusyScope(const BusyScope&) = delete;
    BusyScope& operator=(const BusyScope&) = delete;

  private:
    ProgramState& st_;
};

}  // namespace vortelm
