#include "apps/vortelm-cli/CliInterrupt.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <csignal>

namespace vortelm::cli {

namespace {

volatile std::sig_atomic_t gInterrupts = 0;
std::atomic<int> gPortFd{-1};
static_assert(std::atomic<int>::is_always_lock_free);

void Say(const char* text) {
    size_t n = 0;
    while (text[n] != '\0') ++n;
    ssize_t done = ::write(STDERR_FILENO, text, n);
    (void)done;
}

// Only async-signal-safe calls here.
extern "C" void OnInterrupt(int) {
    if (gInterrupts >= 1) {
        Say("\nvortelm-cli: interrupted twice, ending\n");
        const int fd = gPortFd.load();
        if (fd >= 0) {
            (void)::ioctl(fd, TIOCNXCL);
            (void)::close(fd);
        }
        ::_exit(kInterruptedStatus);
    }
    gInterrupts = 1;
    Say("\nvortelm-cli: interrupted, stopping (Ctrl-C again ends the program)\n");
}

}  // namespace

void InstallInterruptHandler() {
    struct sigaction sa {};
    sa.sa_handler = OnInterrupt;
    sigemptyset(&sa.sa_mask);
    sa.sa_flags = 0;  // no SA_RESTART: a blocked poll() returns at once
    (void)::sigaction(SIGINT, &sa, nullptr);
}

int Interrupts() {
    return gInterrupts;
}

void ResumeAfterInterrupt() {
    gInterrupts = 0;
}

void SetPortDescriptor(int fd) {
    gPortFd.store(fd);
}

}  // namespace vortelm::cli
