// Kept apart: <asm/termbits.h> clashes with <termios.h>.
#include "apps/vortelm-sim/PtyRate.h"

#include <asm/termbits.h>
#include <sys/ioctl.h>

namespace vortelm::simapp {

SlaveSettings ReadSlaveSettings(int fd) {
    SlaveSettings s;
    struct termios2 t {};
    if (ioctl(fd, TCGETS2, &t) != 0) return s;
    s.rate = static_cast<double>(t.c_ospeed);
    s.eightNone = (t.c_cflag & CSIZE) == CS8 && (t.c_cflag & PARENB) == 0;
    s.extproc = (t.c_lflag & EXTPROC) != 0;
    return s;
}

void SetExtproc(int fd) {
    struct termios2 t {};
    if (ioctl(fd, TCGETS2, &t) != 0) return;
    if (t.c_lflag & EXTPROC) return;
    t.c_lflag |= EXTPROC;
    (void)ioctl(fd, TCSETS2, &t);
}

}  // namespace vortelm::simapp
