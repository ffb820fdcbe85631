#include "sim/devices/UsbPrinterDevice.h"

#include <linux/usbdevice_fs.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <algorithm>
#include <cstring>
#include <memory>

#include <umockdev.h>

#include "sim/devices/PrinterSysfs.h"

namespace corvelsim {

namespace {

constexpr uint8_t kPrinterClass = 7, kVendorClass = 0xFF;
constexpr uint8_t kBulk = 2, kInterrupt = 3;
constexpr size_t kLargestMessage = 65536;
constexpr unsigned kDirectionIn = 0x80;
constexpr unsigned kOtherOutPacketSize = 512;  // the second-claims layout's OUT endpoint
constexpr unsigned kGetDescriptor = 6, kStringDescriptorType = 3;

struct Endpoint {
    uint8_t address;
    uint8_t type;
    unsigned packetSize;
};

struct Interface {
    uint8_t interfaceClass;
    std::vector<Endpoint> endpoints;
};

std::vector<Interface> interfacesOf(const UsbDeviceOptions& options)
{
    const unsigned size = unsigned(options.packetSize);
    const Endpoint out{0x01, kBulk, size}, in{0x82, kBulk, size};
    switch (options.layout) {
    case UsbLayout::Printer: break;
    // The first interface announces other packet sizes, and so does the
    // second one's OUT endpoint, so that a client that took its sizes from
    // anywhere but the claimed bulk IN endpoint would cut its transfers
    // differently.
    case UsbLayout::SecondClaims:
        return {{kPrinterClass, {{0x03, kBulk, 8}, {0x84, kBulk, 8}}},
                {kPrinterClass, {{0x01, kBulk, kOtherOutPacketSize}, in}}};
    case UsbLayout::NoPrinter: return {{kVendorClass, {out, in}}};
    case UsbLayout::NoBulkIn: return {{kPrinterClass, {out, {0x83, kInterrupt, 8}}}};
    }
    return {{kPrinterClass, {out, in}}};
}

void appendLE16(Bytes& out, unsigned value)
{
    out.push_back(uint8_t(value));
    out.push_back(uint8_t(value >> 8));
}

}  // namespace

bool parseUsbLayout(const std::string& name, UsbLayout& layout)
{
    if (name == "printer")
        layout = UsbLayout::Printer;
    else if (name == "second-claims")
        layout = UsbLayout::SecondClaims;
    else if (name == "no-printer")
        layout = UsbLayout::NoPrinter;
    else if (name == "no-bulk-in")
        layout = UsbLayout::NoBulkIn;
    else
        return false;
    return true;
}

std::string usbAddress(int bus, int device)
{
    char text[16];
    std::snprintf(text, sizeof text, "%03d:%03d", bus, device);
    return text;
}

Bytes usbDescriptors(const UsbDeviceOptions& options)
{
    // Device: USB 2.0, class per interface, 64-byte control endpoint, one configuration.
    Bytes bytes = {18, 1, 0x00, 0x02, 0, 0, 0, 64};
    appendLE16(bytes, options.identity.vendorId);
    appendLE16(bytes, options.identity.productId);
    appendLE16(bytes, 0x0100);  // release
    bytes.insert(bytes.end(), {kManufacturerIndex, kProductIndex, kSerialIndex, 1});

    Bytes interfaces;
    const std::vector<Interface> layout = interfacesOf(options);
    for (size_t i = 0; i < layout.size(); ++i) {
        // Printer class, subclass 1 (printers), protocol 2 (bidirectional).
        interfaces.insert(interfaces.end(), {9, 4, uint8_t(i), 0, uint8_t(layout[i].endpoints.size()),
                                             layout[i].interfaceClass, 1, 2, 0});
        for (const Endpoint& endpoint : layout[i].endpoints) {
            interfaces.insert(interfaces.end(), {7, 5, endpoint.address, endpoint.type});
            appendLE16(interfaces, endpoint.packetSize);
            interfaces.push_back(endpoint.type == kInterrupt ? 10 : 0);
        }
    }
    // Configuration 1, self-powered.
    bytes.insert(bytes.end(), {9, 2});
    appendLE16(bytes, unsigned(9 + interfaces.size()));
    bytes.insert(bytes.end(), {uint8_t(layout.size()), 1, 0, 0xC0, 0});
    bytes.insert(bytes.end(), interfaces.begin(), interfaces.end());
    return bytes;
}

std::unique_ptr<UsbPrinterDevice> UsbPrinterDevice::attach(::_UMockdevTestbed* testbed, const UsbDeviceOptions& options,
                                                           std::string& error)
{
    std::unique_ptr<UsbPrinterDevice> device(new UsbPrinterDevice(options));
    int fds[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, fds) != 0) {
        error = std::string("cannot create the USB device's socket: ") + std::strerror(errno);
        return nullptr;
    }
    device->m_DeviceFd = fds[0];
    device->m_ServerFd = fds[1];
    if (!options.tracePath.empty() && !(device->m_Trace = std::fopen(options.tracePath.c_str(), "ae"))) {
        error = "cannot open the USB trace '" + options.tracePath + "': " + std::strerror(errno);
        return nullptr;
    }

    const std::string node = usbNodePath(options.bus, options.device);
    device->m_Handler = umockdev_ioctl_base_new();
    g_signal_connect(device->m_Handler, "handle-ioctl", G_CALLBACK(&UsbPrinterDevice::onIoctl), device.get());
    GError* gerror = nullptr;
    // The handler must be in place before the node appears.
    if (!umockdev_testbed_attach_ioctl(testbed, node.c_str(), device->m_Handler, &gerror)) {
        error = "cannot attach the USB device " + node + ": " + (gerror ? gerror->message : "unknown error");
        if (gerror) g_error_free(gerror);
        return nullptr;
    }
    return device;
}

UsbPrinterDevice::~UsbPrinterDevice()
{
    if (m_Handler) {
        g_signal_handlers_disconnect_by_data(m_Handler, this);
        g_object_unref(m_Handler);
    }
    std::lock_guard<std::mutex> guard(m_Lock);
    for (Urb& urb : m_PendingIn) release(urb);
    for (Urb& urb : m_Completed) release(urb);
    if (m_DeviceFd >= 0) ::close(m_DeviceFd);
    if (m_ServerFd >= 0) ::close(m_ServerFd);
    if (m_Trace) std::fclose(m_Trace);
}

// One line per finished bulk transfer: its direction, what it moved, and the
// real milliseconds between its submission and its end.
void UsbPrinterDevice::trace(const char* what, const Urb& urb, int bytes)
{
    if (!m_Trace) return;
    const auto* request = reinterpret_cast<const usbdevfs_urb*>(urb.urb->data);
    const auto waited = std::chrono::steady_clock::now() - urb.submitted;
    std::fprintf(m_Trace, "%s %02X %d %lld\n", what, unsigned(request->endpoint), bytes,
                 static_cast<long long>(std::chrono::duration_cast<std::chrono::milliseconds>(waited).count()));
    std::fflush(m_Trace);
}

int UsbPrinterDevice::onIoctl(::_UMockdevIoctlBase*, ::_UMockdevIoctlClient* client, void* self)
{
    static_cast<UsbPrinterDevice*>(self)->handle(client);
    return TRUE;
}

void UsbPrinterDevice::release(Urb& urb)
{
    if (urb.buffer) g_object_unref(urb.buffer);
    if (urb.urb) g_object_unref(urb.urb);
    urb = {};
}

void UsbPrinterDevice::handle(::_UMockdevIoctlClient* client)
{
    const unsigned long request = umockdev_ioctl_client_get_request(client);
    if ((request == USBDEVFS_REAPURB || request == USBDEVFS_REAPURBNDELAY) && nothingToReap()) {
        umockdev_ioctl_client_complete(client, -1, EAGAIN);
        return;
    }
    UMockdevIoctlData* arg = umockdev_ioctl_client_get_arg(client);
    const size_t size = _IOC_SIZE(request);
    GError* gerror = nullptr;
    // The argument's memory, when the ioctl passes a pointer to some.
    UMockdevIoctlData* data = size > 0 ? umockdev_ioctl_data_resolve(arg, 0, size, &gerror) : nullptr;
    if (gerror) {
        g_error_free(gerror);
        umockdev_ioctl_client_complete(client, -1, EFAULT);
        return;
    }
    std::lock_guard<std::mutex> guard(m_Lock);
    // Unplugged, every call fails with ENODEV, as the kernel answers for a
    // device that is gone (transfers still pending are never reaped).
    if (unplugged()) {
        umockdev_ioctl_client_complete(client, -1, ENODEV);
        if (data) g_object_unref(data);
        return;
    }
    switch (request) {
    case USBDEVFS_CONNECTINFO: {
        auto* info = reinterpret_cast<usbdevfs_connectinfo*>(data->data);
        info->devnum = unsigned(m_Options.device);
        info->slow = 0;
        umockdev_ioctl_client_complete(client, 0, 0);
        break;
    }
    case USBDEVFS_CLAIMINTERFACE: {
        const unsigned interface = *reinterpret_cast<unsigned*>(data->data);
        const size_t count = interfacesOf(m_Options).size();
        // As if another driver held the first interface.
        if (interface >= count || (m_Options.layout == UsbLayout::SecondClaims && interface == 0))
            umockdev_ioctl_client_complete(client, -1, interface >= count ? ENOENT : EBUSY);
        else
            umockdev_ioctl_client_complete(client, 0, 0);
        break;
    }
    case USBDEVFS_SETCONFIGURATION:
    case USBDEVFS_RELEASEINTERFACE:
    case USBDEVFS_CLEAR_HALT: umockdev_ioctl_client_complete(client, 0, 0); break;
    case USBDEVFS_GETDRIVER:
        umockdev_ioctl_client_complete(client, -1, ENODATA);  // no kernel driver bound
        break;
    case USBDEVFS_CONTROL: control(client, data); break;
    case USBDEVFS_SUBMITURB: submit(client, data); break;
    case USBDEVFS_DISCARDURB: discard(client, arg); break;
    case USBDEVFS_REAPURB:
    case USBDEVFS_REAPURBNDELAY: reap(client, data); break;
    default: umockdev_ioctl_client_complete(client, -1, ENOTTY); break;
    }
    if (data) g_object_unref(data);
}

bool UsbPrinterDevice::isBulkEndpoint(unsigned endpoint) const
{
    for (const Interface& interface : interfacesOf(m_Options)) {
        for (const Endpoint& e : interface.endpoints)
            if (e.address == endpoint && e.type == kBulk) return true;
    }
    return false;
}

void UsbPrinterDevice::dropUnreadAnswer()
{
    // The answer to an earlier request that the client did not read.
    m_Answer.clear();
    static thread_local uint8_t scratch[kLargestMessage];
    while (recv(m_DeviceFd, scratch, sizeof scratch, 0) > 0) {}
}

bool UsbPrinterDevice::unplugged()
{
    // The server shuts its end of the socket when the printer goes away.
    char next;
    if (!m_Unplugged) m_Unplugged = recv(m_DeviceFd, &next, 1, MSG_PEEK) == 0;
    return m_Unplugged;
}

// Control transfers: the device answers GET_DESCRIPTOR for its strings
// (libusb's usb_get_string_simple) and stalls every other request.
void UsbPrinterDevice::control(::_UMockdevIoctlClient* client, ::_UMockdevIoctlData* data)
{
    const auto* request = reinterpret_cast<const usbdevfs_ctrltransfer*>(data->data);
    const bool stringRequest = request->bRequestType == kDirectionIn && request->bRequest == kGetDescriptor &&
                               (request->wValue >> 8) == kStringDescriptorType;
    const Bytes descriptor = stringRequest ? usbStringDescriptor(m_Options.identity, request->wValue & 0xFF) : Bytes{};
    if (descriptor.empty()) {
        umockdev_ioctl_client_complete(client, -1, EPIPE);
        return;
    }
    const size_t count = std::min<size_t>(descriptor.size(), request->wLength);
    if (count == 0) {
        umockdev_ioctl_client_complete(client, 0, 0);
        return;
    }
    GError* gerror = nullptr;
    UMockdevIoctlData* buffer =
        umockdev_ioctl_data_resolve(data, offsetof(usbdevfs_ctrltransfer, data), request->wLength, &gerror);
    if (!buffer) {
        if (gerror) g_error_free(gerror);
        umockdev_ioctl_client_complete(client, -1, EFAULT);
        return;
    }
    std::memcpy(buffer->data, descriptor.data(), count);
    umockdev_ioctl_client_complete(client, long(count), 0);
}

void UsbPrinterDevice::submit(::_UMockdevIoctlClient* client, ::_UMockdevIoctlData* data)
{
    auto* request = reinterpret_cast<usbdevfs_urb*>(data->data);
    if (request->type != USBDEVFS_URB_TYPE_BULK || !isBulkEndpoint(request->endpoint) || request->buffer_length < 0 ||
        size_t(request->buffer_length) > kLargestMessage) {
        umockdev_ioctl_client_complete(client, -1, ENOENT);  // as the kernel answers for an unknown endpoint
        return;
    }
    GError* gerror = nullptr;
    UMockdevIoctlData* buffer =
        umockdev_ioctl_data_resolve(data, offsetof(usbdevfs_urb, buffer), size_t(request->buffer_length), &gerror);
    if (!buffer) {
        if (gerror) g_error_free(gerror);
        umockdev_ioctl_client_complete(client, -1, EFAULT);
        return;
    }
    Urb urb{static_cast<UMockdevIoctlData*>(g_object_ref(data)), buffer, std::chrono::steady_clock::now()};
    if (request->endpoint & kDirectionIn) {
        m_PendingIn.push_back(urb);
    } else {
        dropUnreadAnswer();
        // One message per transfer: the server logs each transfer's size.
        send(m_DeviceFd, buffer->data, size_t(request->buffer_length), MSG_NOSIGNAL);
        request->status = 0;
        request->actual_length = request->buffer_length;
        trace("out", urb, request->buffer_length);
        m_Completed.push_back(urb);
    }
    umockdev_ioctl_client_complete(client, 0, 0);
}

void UsbPrinterDevice::discard(::_UMockdevIoctlClient* client, ::_UMockdevIoctlData* arg)
{
    // The argument is the urb's address itself: the client gave up waiting.
    unsigned long address = 0;
    std::memcpy(&address, arg->data, sizeof address);
    for (auto it = m_PendingIn.begin(); it != m_PendingIn.end(); ++it) {
        if (it->urb->client_addr != address) continue;
        auto* request = reinterpret_cast<usbdevfs_urb*>(it->urb->data);
        request->status = -ENOENT;
        request->actual_length = 0;
        trace("discarded", *it, 0);
        m_Completed.push_back(*it);
        m_PendingIn.erase(it);
        umockdev_ioctl_client_complete(client, 0, 0);
        return;
    }
    umockdev_ioctl_client_complete(client, -1, EINVAL);
}

bool UsbPrinterDevice::fillPendingIn()
{
    if (m_PendingIn.empty()) return false;
    if (m_Answer.empty()) {
        m_Answer.resize(kLargestMessage);
        const ssize_t got = recv(m_DeviceFd, m_Answer.data(), m_Answer.size(), 0);
        m_Answer.resize(got > 0 ? size_t(got) : 0);
        if (m_Answer.empty()) return false;
    }
    Urb urb = m_PendingIn.front();
    m_PendingIn.pop_front();
    auto* request = reinterpret_cast<usbdevfs_urb*>(urb.urb->data);
    const size_t count = std::min(size_t(request->buffer_length), m_Answer.size());
    std::memcpy(urb.buffer->data, m_Answer.data(), count);
    m_Answer.erase(m_Answer.begin(), m_Answer.begin() + long(count));
    request->status = 0;
    request->actual_length = int(count);
    trace("in", urb, int(count));
    m_Completed.push_back(urb);
    return true;
}

// libusb polls each pending transfer every millisecond while it waits:
// those polls are answered without fetching the argument from the client's
// memory, which would cost another exchange with it.
bool UsbPrinterDevice::nothingToReap()
{
    std::lock_guard<std::mutex> guard(m_Lock);
    return !unplugged() && m_Completed.empty() && !fillPendingIn();
}

void UsbPrinterDevice::reap(::_UMockdevIoctlClient* client, ::_UMockdevIoctlData* data)
{
    if (m_Completed.empty()) fillPendingIn();
    if (m_Completed.empty()) {
        umockdev_ioctl_client_complete(client, -1, EAGAIN);
        return;
    }
    Urb urb = m_Completed.front();
    m_Completed.pop_front();
    // Points the client's urb pointer at its urb; the urb and its buffer go back with it.
    if (!umockdev_ioctl_data_set_ptr(data, 0, urb.urb)) {
        umockdev_ioctl_client_complete(client, -1, EFAULT);
    } else {
        umockdev_ioctl_client_complete(client, 0, 0);
    }
    release(urb);
}

}  // namespace corvelsim
