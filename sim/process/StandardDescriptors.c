#include "sim/process/StandardDescriptors.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

void corvelsimHoldClosedStandardDescriptors(void)
{
    for (int fd = 0; fd <= 2; ++fd) {
        if (syscall(SYS_fcntl, fd, F_GETFD) != -1 || errno != EBADF) continue;
        // In ascending order the lowest free number is `fd` itself.
        const long held = syscall(SYS_openat, AT_FDCWD, "/dev/null", O_RDONLY);
        if (held >= 0 && held != fd) {
            syscall(SYS_dup3, held, fd, 0);
            syscall(SYS_close, held);
        }
    }
}
