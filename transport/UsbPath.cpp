// Reading a USB path into a device-node number or a bus and device pair.
#include "transport/UsbPath.h"

#include <climits>
#include <cstring>

namespace {

// Longest text the bus or the device number is read from.
constexpr size_t kLongestBusDeviceText = 9;

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

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
    result.deviceNumber = readAtoiNumber(number, std::strlen(number));
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
    result.bus = readAtoiNumber(path, busLength);
    result.device = readAtoiNumber(deviceText, kLongestBusDeviceText);
    return result;
}

}  // namespace

int readAtoiNumber(const char* text, size_t maxChars)
{
    size_t i = 0;
    while (i < maxChars && text[i] != '\0' && isBlank(text[i])) {
        ++i;
    }
    bool negative = false;
    if (i < maxChars && (text[i] == '+' || text[i] == '-')) {
        negative = text[i] == '-';
        ++i;
    }
    long long value = 0;
    for (; i < maxChars && text[i] >= '0' && text[i] <= '9'; ++i) {
        if (value <= INT_MAX) {  // stop growing once out of range; clamped below
            value = value * 10 + (text[i] - '0');
        }
    }
    if (negative) {
        value = -value;
    }
    if (value > INT_MAX) {
        return INT_MAX;
    }
    if (value < INT_MIN) {
        return INT_MIN;
    }
    return static_cast<int>(value);
}

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
