#include "app/StandardStreams.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

bool outputWritten()
{
    const bool flushed = std::fflush(stdout) == 0;
    const int error = flushed ? EIO : errno;  // an earlier write failed: its reason is gone
    if (flushed && std::ferror(stdout) == 0) return true;
    std::fprintf(stderr, "D [CVL] Cannot write the output: %s\n", std::strerror(error));
    return false;
}
