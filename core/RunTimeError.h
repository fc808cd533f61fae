#pragma once
// The program's run-time error: an index past a table's bound, an address
// past the dump memory, an overflow. Where the original design stopped the
// program, Vortelm ends the operation that met the bound: the operation's
// entry point (a shell command, a start-up step, an event of a front end)
// catches this, writes one "*ERROR: " line naming the bound, and goes on.
// Operations keep every table valid before they throw. It is the only
// exception in the program; results of operations are codes.

#include <stdexcept>
#include <string>

namespace vortelm {

class RunTimeError : public std::runtime_error {
  public:
    explicit RunTimeError(const std::string& bound) : std::runtime_error(bound) {}
};

// Throws RunTimeError("<what> index <index> out of range 0 to <bound>")
// unless 0 <= index <= bound.
void CheckBound(long long index, long long bound, const char* what);

}  // namespace vortelm
