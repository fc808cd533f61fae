#pragma once
// Ctrl-C in the headless front end. The first interrupt asks the running
// operation or script to stop, as Esc does in the GUI; a second one, before
// the program has got back to reading lines, ends the program at once with
// the port closed.

namespace vortelm::cli {

// Installs the SIGINT handler (interrupted waits are not restarted, so the
// event loop wakes up at once).
void InstallInterruptHandler();
// Interrupts since the last Resume (0, 1, or 2 and more).
[[nodiscard]] int Interrupts();
// Back to reading lines: the next interrupt is a first one again.
void ResumeAfterInterrupt();
// The descriptor of the open port, which a second interrupt releases and
// closes before the program ends; -1 when none is open.
void SetPortDescriptor(int fd);

// The exit status of a program ended by an interrupt.
constexpr int kInterruptedStatus = 130;

}  // namespace vortelm::cli
