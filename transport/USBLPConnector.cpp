// Connector on the printer device node: plain POSIX calls on a non-blocking
// descriptor, select() for the waits.
#include "transport/USBLPConnector.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/select.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "transport/Clock.h"
#include "transport/MutexLock.h"

namespace {

// Longest prefix that still leaves room for a number and the terminator.
constexpr size_t kLongestPrefix = 62;

}  // namespace

USBLPConnector::USBLPConnector(const char* pathPrefix, int deviceNumber)
{
    m_Kind = 2;
    if (pathPrefix != nullptr && std::strlen(pathPrefix) <= kLongestPrefix && deviceNumber >= 0 &&
        deviceNumber <= kHighestDeviceNumber) {
        // A 62-character prefix leaves room for one digit only: a path that
        // does not fit whole is left empty rather than cut short.
        const int written = std::snprintf(m_DevicePath, sizeof m_DevicePath, "%s%d", pathPrefix, deviceNumber);
        if (written < 0 || static_cast<size_t>(written) >= sizeof m_DevicePath) {
            m_DevicePath[0] = '\0';
        }
    }
    pthread_mutex_init(&m_WriteLock, nullptr);
    pthread_mutex_init(&m_ReadLock, nullptr);
}

USBLPConnector::~USBLPConnector()
{
    if (m_Fd >= 0) {
        close();
    }
    pthread_mutex_destroy(&m_ReadLock);
    pthread_mutex_destroy(&m_WriteLock);
}

int USBLPConnector::open()
{
    // A second open would otherwise leak the first descriptor.
    if (m_Fd >= 0) {
        close();
    }
    // An empty path fails here with ENOENT, which is the intended result.
    m_Fd = ::open(m_DevicePath, O_RDWR | O_EXCL | O_NOCTTY | O_NONBLOCK);
    // Descriptor 0 is standard input's place: the printer is never there.
    const int result = m_Fd > 0 ? 0 : 1;
    m_Status = result;
    return result;
}

int USBLPConnector::close()
{
    int result = 1;
    {
        // Always the write lock first, then the read lock.
        MutexLock writeGuard(m_WriteLock);
        MutexLock readGuard(m_ReadLock);
        if (m_Fd >= 0 && ::close(m_Fd) == 0) {
            m_Fd = -1;
            result = 0;
        }
    }
    m_Status = result;
    return result;
}

void USBLPConnector::recordErrno(int error)
{
    m_Error = error;
    switch (error) {
    // What a node gives once its printer was unplugged or its pty hung up;
    // EBADF is our own descriptor not being open, which the next open mends.
    case EIO:
    case ENODEV:
    case ENXIO: record(IoStatus::Gone); break;
    case EAGAIN: record(IoStatus::TryAgain); break;
    case EBADF: record(IoStatus::Unavailable); break;
    case EINTR: record(IoStatus::Interrupted); break;
    default: break;  // other errors leave the last status as it was
    }
}

int32_t USBLPConnector::read(uint8_t* buffer, int32_t length)
{
    // A negative length would become a huge size_t count.
    if (buffer == nullptr || length < 0) {
        record(IoStatus::Failed);
        return -1;
    }
    ssize_t got;
    {
        MutexLock guard(m_ReadLock);
        got = ::read(m_Fd, buffer, static_cast<size_t>(length));
    }
    if (got < 0) {
        recordErrno(errno);
        return -1;
    }
    // A node that was hung up (a pty whose master closed) reads as the end
    // of the file; a present printer that sent an empty packet does too, but
    // its node does not report a hang-up.
    if (got == 0 && length > 0 && hungUp()) {
        m_Error = ENODEV;
        record(IoStatus::Gone);
        return -1;
    }
    return static_cast<int32_t>(got);
}

bool USBLPConnector::hungUp() const
{
    pollfd node{m_Fd, POLLIN, 0};
    return ::poll(&node, 1, 0) > 0 && (node.revents & POLLHUP) != 0;
}

int USBLPConnector::queryDevice(uint8_t* buffer, int32_t length)
{
    if (buffer != nullptr && length > 0) {
        std::memset(buffer, 0, static_cast<size_t>(length));
    }
    record(IoStatus::Unavailable);
    return 0;
}

int32_t USBLPConnector::write(const uint8_t* buffer, int32_t length)
{
    if (length < 0 || (buffer == nullptr && length > 0)) {
        record(IoStatus::Failed);
        return -1;
    }
    ssize_t written;
    {
        MutexLock guard(m_WriteLock);
        written = ::write(m_Fd, buffer, static_cast<size_t>(length));
    }
    if (written < 0) {
        recordErrno(errno);
        return -1;
    }
    if (written == 0) {
        record(IoStatus::NothingWritten);
    } else if (written == length) {
        record(IoStatus::Ok);
    } else {
        record(IoStatus::PartialWrite);
    }
    return static_cast<int32_t>(written);
}

IoStatus USBLPConnector::waitFor(bool forWriting, int32_t timeLimit)
{
    // FD_SET on a closed or out-of-range descriptor is undefined; select()
    // would refuse a closed one anyway, so give the same answer.
    const int fd = m_Fd;
    if (fd < 0 || fd >= FD_SETSIZE) {
        record(IoStatus::Failed);
        return IoStatus::Failed;
    }
    fd_set set;
    FD_ZERO(&set);
    FD_SET(fd, &set);
    // The whole limit goes into the microseconds part: callers wait below one
    // second (a negative limit makes select() fail).
    timeval limit{0, static_cast<suseconds_t>(timeLimit)};
    const int ready =
        forWriting ? select(fd + 1, nullptr, &set, nullptr, &limit) : select(fd + 1, &set, nullptr, nullptr, &limit);
    IoStatus status;
    if (ready > 0) {
        status = FD_ISSET(fd, &set) ? (forWriting ? IoStatus::WriteReady : IoStatus::DataReady) : IoStatus::Failed;
    } else if (ready == 0) {
        status = IoStatus::TimedOut;
        Seam<Clock>::get().waited(timeLimit);  // lets a test clock see the time pass
    } else {
        status = IoStatus::Failed;
    }
    record(status);
    return status;
}

IoStatus USBLPConnector::waitReadable(int32_t timeLimit) { return waitFor(false, timeLimit); }

IoStatus USBLPConnector::waitWritable(int32_t timeLimit) { return waitFor(true, timeLimit); }
