// The USB transport, one per thread: picks a connector for each exchange and reads
// answers until the printer has been quiet for a while.
#include "transport/HCUSBTransport.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "common/Console.h"
#include "transport/Clock.h"
#include "transport/ConnectorFactory.h"

thread_local HCUSBTransport* HCUSBTransport::m_Instance = nullptr;
thread_local uint32_t HCUSBTransport::m_RefCount = 0;

namespace {

// Each wait for answer bytes: one millisecond on the device node (whose limit is
// in microseconds), one second on libusb (whose limit is in milliseconds).
constexpr int32_t kReadableWaitLimit = 1000;
// The answer is complete once the printer has sent nothing for more than this.
constexpr std::time_t kQuietSeconds = 4;

}  // namespace

HCUSBTransport* HCUSBTransport::getInstance()
{
    if (m_Instance == nullptr) {
        m_Instance = new HCUSBTransport();
    }
    ++m_RefCount;
    return m_Instance;
}

void HCUSBTransport::releaseInstance()
{
    // A release without a reference would wrap the count and keep the
    // instance alive for good: ignore it.
    if (m_RefCount == 0) {
        return;
    }
    if (--m_RefCount == 0) {
        traceF("D [CVL] Destroying last instance of usb transport.\n");
        delete m_Instance;
        m_Instance = nullptr;
    }
}

HCUSBTransport::~HCUSBTransport() = default;  // the connector closes itself when destroyed

int32_t HCUSBTransport::open(const char* usbPath)
{
    if (m_DeviceGone) {
        return -1;
    }
    // The connector of the previous exchange goes first; its close result does not matter.
    if (m_Connector) {
        m_Connector->close();
        m_Connector.reset();
    }
    // A connector whose open failed stays until the next open.
    bool opened = false;
    errno = 0;
    m_Connector = Seam<ConnectorFactory>::get().connect(usbPath, opened);
    // The reason the node's open() failed, for front ends that explain it.
    m_LastError = opened ? 0 : (errno != 0 ? errno : ENODEV);
    m_OpenPath = opened ? usbPath : "";
    return opened ? 0 : -1;
}

int32_t HCUSBTransport::close()
{
    m_OpenPath.clear();
    if (!m_Connector) {
        return -1;
    }
    return m_Connector->close() == 0 ? 0 : -1;
}

bool HCUSBTransport::isOpenOn(const char* usbPath) const
{
    return m_Connector && !m_DeviceGone && !m_OpenPath.empty() && m_OpenPath == usbPath;
}

// Reads what the printer sends, up to `length` bytes. Returns as soon as all
// have arrived, or once more than kQuietSeconds passed without a new byte.
// Unlike a literal "restart the quiet time on every readable signal", the
// quiet time restarts only when bytes actually arrived: a device that keeps
// signalling readable but delivers nothing (hung up, in error) would
// otherwise keep the read going forever.
int32_t HCUSBTransport::read(uint8_t* buffer, int32_t length)
{
    if (!m_Connector) {
        return -1;
    }
    if (buffer == nullptr || length <= 0) {
        return 0;
    }
    if (m_DeviceGone) {
        return 0;
    }
    int32_t got = m_Connector->read(buffer, length);
    if (got == length) {
        return got;
    }
    if (got < 0) {
        checkGone();
        if (m_DeviceGone) {
            return 0;
        }
    }
    if (got < 0 || got > length) {
        got = got < 0 ? 0 : length;
    }
    Clock& clock = Seam<Clock>::get();
    std::time_t quietSince = clock.now();
    while (got < length) {
        IoStatus status;
        while ((status = m_Connector->waitReadable(kReadableWaitLimit)) == IoStatus::TimedOut) {
            if (clock.now() - quietSince > kQuietSeconds) {
                return got;
            }
        }
        if (status != IoStatus::DataReady) {
            checkGone();
            break;
        }
        const int32_t more = m_Connector->read(buffer + got, length - got);
        if (more > 0) {
            got += more < length - got ? more : length - got;
            quietSince = clock.now();
            continue;
        }
        if (more < 0) {
            checkGone();
            if (m_DeviceGone) {
                break;  // the quiet time would only spin on a dead node
            }
        }
        if (clock.now() - quietSince > kQuietSeconds) {
            break;
        }
    }
    return got;
}

int32_t HCUSBTransport::write(const uint8_t* buffer, int32_t length)
{
    if (!m_Connector || m_DeviceGone) {
        return -1;
    }
    const int32_t written = m_Connector->write(buffer, length);
    if (written < 0) {
        checkGone();
    }
    return written;
}

void HCUSBTransport::checkGone()
{
    if (m_DeviceGone || m_Connector->getStatus() != static_cast<int32_t>(IoStatus::Gone)) {
        return;
    }
    m_DeviceGone = true;
    traceF("D [CVL] The printer is gone (%s): no further requests are sent.\n", std::strerror(m_Connector->getError()));
}

void HCUSBTransport::noop() {}
