#include "app/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

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

bool outputWritten()
{
    const bool flushed = std::fflush(stdout) == 0;
    const int error = flushed ? EIO : errno;  // an earlier write failed: its reason is gone
    if (flushed && std::ferror(stdout) == 0) return true;
    std::fprintf(stderr, "D [CVL] Cannot write the output: %s\n", std::strerror(error));
    return false;
}
