// Whole-file reading and writing for certificate files, with the retry rules
// for a descriptor that answers "try again".
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "cert/CertMgr.h"
#include "common/Console.h"

bool CertMgr::saveToFile(const uint8_t* bytes, int32_t length, const std::string& path)
{
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0) {
        return false;
    }
    const size_t total = length > 0 ? static_cast<size_t>(length) : 0;
    errno = 0;
    ssize_t result = ::write(fd, bytes, total);
    if (result == static_cast<ssize_t>(total)) {
        ::close(fd);
        return true;
    }
    if (errno == EAGAIN) {
        traceF("D [CVL] saveToFile error (2): %d, bytes=%d\n\n", EAGAIN, static_cast<int>(result));
        ::close(fd);
        return false;
    }
    size_t written = result > 0 ? static_cast<size_t>(result) : 0;
    while (written < total) {
        errno = 0;
        result = ::write(fd, bytes + written, total - written);
        if (result > 0) {
            written += static_cast<size_t>(result);
        } else if (errno != EAGAIN) {
            traceF("D [CVL] saveToFile error (1): %d, bytes=%d\n\n", errno, static_cast<int>(result));
            break;
        }
    }
    ::close(fd);
    return written == total;
}

int CertMgr::loadFromFile(uint8_t* buffer, int32_t capacity, const std::string& path)
{
    const int fd = ::open(path.c_str(), O_RDONLY);
    if (fd < 0) {
        return -1;
    }
    struct stat status {};
    const long long size = ::stat(path.c_str(), &status) == 0 ? static_cast<long long>(status.st_size) : 0;
    traceF("D [CVL] Loading file %s, %d bytes\n", path.c_str(), static_cast<int>(size));
    if (size > capacity) {
        ::close(fd);
        return -1;
    }
    // Never more than the size taken from the status, so a file that grows
    // meanwhile cannot overrun the buffer.
    const size_t total = static_cast<size_t>(size);
    int result = -1;
    errno = 0;
    ssize_t got = ::read(fd, buffer, total);
    if (got == static_cast<ssize_t>(total)) {
        result = static_cast<int>(total);
    } else if (errno == EAGAIN) {
        traceF("D [CVL] loadFromFile error (2): %d, bytes=%d, size=%d\n", EAGAIN, static_cast<int>(got),
               static_cast<int>(size));
    } else {
        size_t read = got > 0 ? static_cast<size_t>(got) : 0;
        while (read < total) {
            errno = 0;
            got = ::read(fd, buffer + read, total - read);
            if (got > 0) {
                read += static_cast<size_t>(got);
            } else if (errno != EAGAIN) {
                // The end of a file that shrank counts as a failure too (error 0).
                traceF("D [CVL] loadFromFile error (1): %d, bytes=%d, size=%d\n", errno, static_cast<int>(got),
                       static_cast<int>(size));
                break;
            }
        }
        result = read == total ? static_cast<int>(total) : -1;
    }
    ::close(fd);
    return result;
}
