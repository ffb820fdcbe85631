// Reading a USB path into a device-node number or a bus and device pair.
#include "transport/UsbPath.h"

#include <cstring>

#include "common/LeadingNumber.h"

namespace {

// Longest text the bus or the device number is read from.
constexpr size_t kLongestBusDeviceText = 9;

UsbPath readDeviceNodePath(const char* path)
{
    UsbPath result;
    const char* number = nullptr;
    if (const char* usblp = std::strstr(path, "usblp")) {
        number = usblp + std::strlen("usblp");
    } else if (const char* lp = std::strstr(path, "/lp")) {
        number = lp + std::strlen("/lp");
    }
    // No printer number is defined for a node path like "/dev/usbx": refuse it.
    if (number == nullptr) {
        return result;
    }
    result.shape = UsbPath::Shape::DeviceNode;
    result.deviceNumber = readLeadingNumber(number, std::strlen(number)).value;
    return result;
}

UsbPath readBusDevicePath(const char* path, const char* colon)
{
    UsbPath result;
    const size_t busLength = static_cast<size_t>(colon - path);
    const char* deviceText = colon + 1;
    if (busLength > kLongestBusDeviceText || std::strlen(deviceText) > kLongestBusDeviceText) {
        return result;
    }
    result.shape = UsbPath::Shape::BusDevice;
    result.bus = readLeadingNumber(path, busLength).value;
    result.device = readLeadingNumber(deviceText, kLongestBusDeviceText).value;
    return result;
}

}  // namespace

UsbPath parseUsbPath(const char* path)
{
    if (path == nullptr) {
        return UsbPath{};
    }
    if (std::strstr(path, "/dev/usb") != nullptr) {
        return readDeviceNodePath(path);
    }
    if (const char* colon = std::strchr(path, ':')) {
        return readBusDevicePath(path, colon);
    }
    return UsbPath{};
}
