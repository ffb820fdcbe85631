// The simulated printer as a device on the USB bus: a umockdev node
// /dev/bus/usb/BBB/DDD whose descriptors announce a printer-class interface
// and whose usbdevfs ioctls (libusb's bulk transfers) are answered here.
//
// The ioctls arrive on umockdev's own thread. Bytes move between that thread
// and the printer server through a local packet socket: every bulk OUT
// transfer becomes one message (so the server sees each transfer's size),
// and the server's answers come back the same way to fill bulk IN transfers.
#pragma once

#include <chrono>
#include <cstdio>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

#include "sim/devices/UsbIdentity.h"
#include "sim/wire/Bytes.h"

struct _UMockdevTestbed;
struct _UMockdevIoctlBase;
struct _UMockdevIoctlClient;
struct _UMockdevIoctlData;

namespace corvelsim {

// What the device offers, chosen for tests.
enum class UsbLayout {
    Printer,       // one printer-class interface with a bulk OUT and a bulk IN endpoint
    SecondClaims,  // two printer-class interfaces; claiming the first is refused
    NoPrinter,     // one interface of the vendor-specific class
    NoBulkIn,      // a printer-class interface whose IN endpoint is an interrupt endpoint
};

struct UsbDeviceOptions {
    int bus = 0;  // 0: no USB device
    int device = 0;
    int packetSize = 64;  // wMaxPacketSize of the bulk endpoints
    UsbLayout layout = UsbLayout::Printer;
    std::string tracePath;  // "" : no transfer trace
    UsbIdentity identity;   // its descriptors' ids and strings
};

// Reads "printer", "second-claims", "no-printer" or "no-bulk-in".
bool parseUsbLayout(const std::string& name, UsbLayout& layout);

// The device descriptor followed by the whole configuration descriptor.
Bytes usbDescriptors(const UsbDeviceOptions& options);

// "BBB:DDD", the names of the bus directory and device file.
std::string usbAddress(int bus, int device);

class UsbPrinterDevice {
public:
    // Attaches the handler of the device's ioctls to the testbed; the
    // testbed's printers then add the node itself (their first printer, with
    // usbDescriptors()). nullptr and a message on failure.
    static std::unique_ptr<UsbPrinterDevice> attach(::_UMockdevTestbed* testbed, const UsbDeviceOptions& options,
                                                    std::string& error);
    ~UsbPrinterDevice();
    UsbPrinterDevice(const UsbPrinterDevice&) = delete;
    UsbPrinterDevice& operator=(const UsbPrinterDevice&) = delete;

    // The server's end of the packet socket (non-blocking): one message per
    // bulk OUT transfer comes out, answer bytes go in. Shutting it down
    // unplugs the device.
    int serverFd() const { return m_ServerFd; }
    std::string address() const { return usbAddress(m_Options.bus, m_Options.device); }

private:
    struct Urb {
        ::_UMockdevIoctlData* urb = nullptr;     // the client's struct usbdevfs_urb
        ::_UMockdevIoctlData* buffer = nullptr;  // its data buffer
        std::chrono::steady_clock::time_point submitted{};
    };

    explicit UsbPrinterDevice(const UsbDeviceOptions& options) : m_Options(options) {}
    static int onIoctl(::_UMockdevIoctlBase* base, ::_UMockdevIoctlClient* client, void* self);
    void handle(::_UMockdevIoctlClient* client);
    void control(::_UMockdevIoctlClient* client, ::_UMockdevIoctlData* arg);
    void submit(::_UMockdevIoctlClient* client, ::_UMockdevIoctlData* arg);
    void discard(::_UMockdevIoctlClient* client, ::_UMockdevIoctlData* arg);
    void reap(::_UMockdevIoctlClient* client, ::_UMockdevIoctlData* arg);
    bool fillPendingIn();
    bool nothingToReap();  // true: a reap now finds no finished transfer
    bool unplugged();
    bool isBulkEndpoint(unsigned endpoint) const;
    void dropUnreadAnswer();
    static void release(Urb& urb);
    void trace(const char* what, const Urb& urb, int bytes);

    UsbDeviceOptions m_Options;
    ::_UMockdevIoctlBase* m_Handler = nullptr;
    int m_DeviceFd = -1;
    int m_ServerFd = -1;
    std::FILE* m_Trace = nullptr;
    std::mutex m_Lock;            // guards everything below: ioctls run on umockdev's thread
    std::deque<Urb> m_PendingIn;  // IN transfers waiting for answer bytes
    std::deque<Urb> m_Completed;  // transfers ready to be reaped
    Bytes m_Answer;               // answer bytes not yet handed out
    bool m_Unplugged = false;
};

}  // namespace corvelsim
