#include "core/ProgramState.h"

#include "core/Host.h"
#include "core/RunTimeError.h"

namespace vortelm {

// A state made without a host gets its own quiet one: it answers every
// question with its default and draws nothing.
ProgramState::ProgramState() : ownHost_(std::make_unique<Host>()), host(ownHost_.get()),
                               sfrTable(kSfrBound + 1) {}

ProgramState::ProgramState(Host& h) : host(&h), sfrTable(kSfrBound + 1) {}

ProgramState::~ProgramState() = default;

void CheckBound(long long index, long long bound, const char* what) {
    if (index < 0 || index > bound)
        throw RunTimeError(std::string(what) + " index " + std::to_string(index) +
                           " out of range 0 to " + std::to_string(bound));
}

}  // namespace vortelm
