// Custom rates. <asm/termbits.h> declares the same names as <termios.h>, so
// this file includes only it and does one thing.
#include <asm/termbits.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <cstdint>

namespace vortelm::link {

int SetCustomRate(int fd, uint32_t baud) {
    struct termios2 t {};
    if (ioctl(fd, TCGETS2, &t) != 0) return errno;
    t.c_cflag &= ~tcflag_t(CBAUD | (CBAUD << IBSHIFT));
    t.c_cflag |= BOTHER | (BOTHER << IBSHIFT);
    t.c_ispeed = baud;
    t.c_ospeed = baud;
    if (ioctl(fd, TCSETS2, &t) != 0) return errno;
    return 0;
}

}  // namespace vortelm::link
