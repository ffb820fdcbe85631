#include "common/StandardDescriptors.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

void holdClosedStandardDescriptors()
{
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
        if (fcntl(fd, F_GETFD) != -1 || errno != EBADF) continue;
        const int held = ::open("/dev/null", O_RDONLY);
        if (held >= 0 && held != fd) {
            dup2(held, fd);
            ::close(held);
        }
    }
}
