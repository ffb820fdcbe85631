// Who the simulated printer says it is on the USB bus: the ids and strings
// its device descriptor announces and its sysfs device carries.
#pragma once

#include <string>

#include "sim/wire/Bytes.h"

namespace corvelsim {

constexpr unsigned kDefaultVendorId = 0xC0DE;
constexpr unsigned kDefaultProductId = 0x0001;
// Longest manufacturer, product or serial text; a string descriptor holds up
// to 126 UTF-16 units, and the other printers' serials add a suffix.
constexpr size_t kMaxUsbTextLength = 64;

struct UsbIdentity {
    unsigned vendorId = kDefaultVendorId;
    unsigned productId = kDefaultProductId;
    std::string manufacturer = "Corvel";
    std::string product = "Simulated Printer";
    std::string serial = "CVSIM0001";
};

// The string descriptor indexes the device descriptor names.
enum UsbStringIndex : uint8_t { kLanguagesIndex = 0, kManufacturerIndex = 1, kProductIndex = 2, kSerialIndex = 3 };

// "4b8" or "04B8": 1 to 4 hex digits.
bool parseUsbId(const std::string& text, unsigned& id);

// 1 to kMaxUsbTextLength printable ASCII characters.
bool isUsbText(const std::string& text);

// "04b8", as sysfs shows ids.
std::string usbIdText(unsigned id);

// String descriptor `index` of the device (the language list for 0, US
// English only); empty for an index it does not have.
Bytes usbStringDescriptor(const UsbIdentity& identity, unsigned index);

}  // namespace corvelsim
