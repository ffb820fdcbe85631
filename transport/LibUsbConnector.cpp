// Connector on libusb-0.1: claims the printer interface of one device and
// moves bytes through its bulk endpoints; received packets wait in a FIFO.
#include "transport/LibUsbConnector.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <mutex>

#include "common/Console.h"
#include "transport/Clock.h"
#include "transport/MutexLock.h"

namespace {

constexpr int kTimedOut = -110;         // -ETIMEDOUT from libusb
constexpr int kStalled = -32;           // -EPIPE from libusb
constexpr int kNoDevice = -19;          // -ENODEV from libusb: the device was unplugged
constexpr int kReadWaitMs = 10000;      // a read waits this long for each missing packet
constexpr int kWriteLimitMs = 5000;     // time limit of one bulk write
constexpr uint8_t kBulkTransfer = 2;    // bmAttributes & 3
constexpr uint8_t kDirectionIn = 0x80;  // bit 7 of bEndpointAddress

// libusb-0.1 keeps the busses and devices it found in globals: one thread at
// a time looks them up and opens a device. The handles are each its own.
std::mutex usbLookup;

// The first alternate setting of `interface` with the class, or none.
const usb_interface_descriptor* settingOfClass(const usb_interface& interface, uint8_t interfaceClass)
{
    for (int i = 0; i < interface.num_altsetting; ++i) {
        if (interface.altsetting[i].bInterfaceClass == interfaceClass) return &interface.altsetting[i];
    }
    return nullptr;
}

}  // namespace

LibUsbConnector::LibUsbConnector(uint8_t interfaceClass)
    : m_Usb(Seam<UsbCalls>::get()), m_InterfaceClass(interfaceClass), m_WriteLimitMs(kWriteLimitMs)
{
    m_Kind = 3;
    pthread_mutex_init(&m_WriteLock, nullptr);
    pthread_mutex_init(&m_ReadLock, nullptr);
}

LibUsbConnector::~LibUsbConnector()
{
    close();
    pthread_mutex_destroy(&m_ReadLock);
    pthread_mutex_destroy(&m_WriteLock);
}

int LibUsbConnector::openDevice(int bus, int device)
{
    const std::lock_guard<std::mutex> lookingUp(usbLookup);
    m_Usb.init();
    m_Usb.findBusses();
    m_Usb.findDevices();
    // Bus directories and device files are named by zero-padded numbers
    // ("003", "007"): compare their values.
    for (usb_bus* onBus = m_Usb.getBusses(); onBus != nullptr && m_Handle == nullptr; onBus = onBus->next) {
        if (std::atoi(onBus->dirname) != bus) continue;
        for (struct usb_device* dev = onBus->devices; dev != nullptr && m_Handle == nullptr; dev = dev->next) {
            if (std::atoi(dev->filename) != device || dev->config == nullptr) continue;
            for (int c = 0; c < dev->descriptor.bNumConfigurations && m_Handle == nullptr; ++c) {
                const usb_config_descriptor& config = dev->config[c];
                for (int i = 0; i < config.bNumInterfaces && m_Handle == nullptr; ++i) {
                    const usb_interface_descriptor* setting = settingOfClass(config.interface[i], m_InterfaceClass);
                    if (setting != nullptr && claim(dev, config, *setting)) takeBulkEndpoints(*setting);
                }
            }
        }
    }
    const int result = m_Handle != nullptr ? 0 : 1;
    record(result == 0 ? IoStatus::Ok : IoStatus::Failed);
    return result;
}

bool LibUsbConnector::claim(struct usb_device* device, const usb_config_descriptor& config,
                            const usb_interface_descriptor& setting)
{
    m_Handle = m_Usb.open(device);
    if (m_Handle == nullptr) return false;
    // Its result does not matter: a configured device refuses a second one.
    m_Usb.setConfiguration(m_Handle, config.bConfigurationValue);
    // Typically refused while the kernel's printer driver holds the interface.
    if (m_Usb.claimInterface(m_Handle, setting.bInterfaceNumber) < 0) {
        m_Usb.close(m_Handle);
        m_Handle = nullptr;
        return false;
    }
    m_Interface = setting.bInterfaceNumber;
    return true;
}

void LibUsbConnector::takeBulkEndpoints(const usb_interface_descriptor& setting)
{
    for (int e = 0; e < setting.bNumEndpoints; ++e) {
        const usb_endpoint_descriptor& endpoint = setting.endpoint[e];
        if ((endpoint.bmAttributes & 3) != kBulkTransfer) continue;
        if (endpoint.bEndpointAddress & kDirectionIn) {
            m_InEndpoint = endpoint.bEndpointAddress;
            m_MaxPacketSize = endpoint.wMaxPacketSize;
        } else {
            m_OutEndpoint = endpoint.bEndpointAddress;
        }
    }
}

void LibUsbConnector::recordResult(IoStatus status)
{
    if (status == IoStatus::Gone) m_Error = ENODEV;
    record(status);
}

int LibUsbConnector::open()
{
    record(IoStatus::Failed);
    return 1;
}

int LibUsbConnector::close()
{
    int result = 1;
    {
        // Always the write lock first, then the read lock.
        MutexLock writeGuard(m_WriteLock);
        MutexLock readGuard(m_ReadLock);
        if (m_Handle != nullptr) {
            m_Usb.releaseInterface(m_Handle, m_Interface);
            m_Usb.close(m_Handle);
            m_Handle = nullptr;
            result = 0;
        }
    }
    m_Status = result;
    return result;
}

IoStatus LibUsbConnector::waitReadable(int32_t timeLimit)
{
    if (m_Handle == nullptr) {
        record(IoStatus::Failed);
        return IoStatus::Failed;
    }
    // A descriptor may announce any size up to 1023; a zero size would read nothing.
    uint8_t packet[1024];
    const int size = m_MaxPacketSize > 0 && m_MaxPacketSize <= int32_t(sizeof packet) ? m_MaxPacketSize : 32;
    IoStatus status;
    {
        MutexLock guard(m_ReadLock);
        const int got = m_Usb.bulkRead(m_Handle, m_InEndpoint, reinterpret_cast<char*>(packet), size, timeLimit);
        if (got > 0 && m_ReadBuffer.freeSpace() > size_t(got) && m_ReadBuffer.put(packet, size_t(got))) {
            status = IoStatus::DataReady;
        } else if (got == 0 || got == kTimedOut) {
            status = IoStatus::TimedOut;
            Seam<Clock>::get().waited(long(timeLimit) * 1000);  // lets a test clock see the time pass
        } else {
            status = IoStatus::Failed;  // an error, or a packet the FIFO has no room for
        }
        if (got == kNoDevice) status = IoStatus::Gone;
    }
    recordResult(status);
    return status;
}

int32_t LibUsbConnector::read(uint8_t* buffer, int32_t length)
{
    if (buffer == nullptr || length <= 0) return 0;
    while (m_ReadBuffer.usedSpace() < size_t(length)) {
        if (waitReadable(kReadWaitMs) != IoStatus::DataReady) break;
    }
    const size_t held = m_ReadBuffer.usedSpace();
    if (held < size_t(length)) length = int32_t(held);
    m_ReadBuffer.get(buffer, size_t(length));
    return length;
}

void LibUsbConnector::boundWriteWaits(int32_t totalMs)
{
    m_WriteLimitMs = std::clamp(totalMs / kWriteTries, 1, kWriteLimitMs);
}

int32_t LibUsbConnector::readArrived(uint8_t* buffer, int32_t length)
{
    if (buffer == nullptr || length <= 0) return 0;
    const size_t take = std::min(m_ReadBuffer.usedSpace(), size_t(length));
    m_ReadBuffer.get(buffer, take);
    return int32_t(take);
}

int LibUsbConnector::queryDevice(uint8_t* buffer, int32_t length)
{
    (void)buffer;
    (void)length;
    return 0;
}

int32_t LibUsbConnector::write(const uint8_t* buffer, int32_t length)
{
    if (m_Handle == nullptr || buffer == nullptr || length <= 0) return 0;
    const int pieceSize = m_MaxPacketSize > 0 ? m_MaxPacketSize : 32;
    int32_t remaining = length;
    MutexLock guard(m_WriteLock);
    int fruitlessTries = 0;
    while (remaining > 0) {
        const int piece = remaining < pieceSize ? remaining : pieceSize;
        const char* next = reinterpret_cast<const char*>(buffer + (length - remaining));
        const int sent = m_Usb.bulkWrite(m_Handle, m_OutEndpoint, next, piece, m_WriteLimitMs);
        // A piece that makes no progress (time limit passed, or nothing
        // taken) is sent again, a bounded number of times in a row.
        if (sent == kTimedOut || sent == 0) {
            if (sent == kTimedOut) Seam<Clock>::get().waited(long(m_WriteLimitMs) * 1000);
            if (++fruitlessTries >= kWriteTries) {
                traceF("D [CVL] USB write stopped: the printer took no data in %d tries of %d ms "
                       "(%d of %d bytes written).\n",
                       kWriteTries, m_WriteLimitMs, int(length - remaining), int(length));
                record(IoStatus::Failed);
                break;
            }
            if (sent == kTimedOut) {
                m_Usb.clearHalt(m_Handle, unsigned(m_OutEndpoint));
                record(IoStatus::TryAgain);
            }
            continue;
        }
        if (sent == kStalled) {
            record(IoStatus::Unavailable);
            break;
        }
        if (sent < 0) {
            recordResult(sent == kNoDevice ? IoStatus::Gone : IoStatus::Failed);
            break;
        }
        fruitlessTries = 0;
        record(IoStatus::Ok);
        remaining -= sent < piece ? sent : piece;
    }
    return length - remaining;
}

IoStatus LibUsbConnector::waitWritable(int32_t timeLimit)
{
    (void)timeLimit;
    record(IoStatus::WriteReady);
    return IoStatus::WriteReady;
}
