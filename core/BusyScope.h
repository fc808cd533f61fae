#pragma once
// The hourglass for the length of a scope: on when made, off when left, also
// when the scope ends by an error. An operation that asks the operator a
// question in between takes it off and puts it on again.

#include "core/Host.h"
#include "core/ProgramState.h"

namespace vortelm {

class BusyScope {
  public:
    explicit BusyScope(ProgramState& st) : st_(st) { st_.host->setBusy(true); }
    ~BusyScope() { st_.host->setBusy(false); }
    BusyScope(const BusyScope&) = delete;
    BusyScope& operator=(const BusyScope&) = delete;
    void on() { st_.host->setBusy(true); }
    void off() { st_.host->setBusy(false); }

  private:
    ProgramState& st_;
};

}  // namespace vortelm
