#include "sim/devices/UsbIdentity.h"

#include <cstdio>

namespace corvelsim {

namespace {
constexpr uint8_t kStringDescriptor = 3;
constexpr unsigned kUsEnglish = 0x0409;
}  // namespace

bool parseUsbId(const std::string& text, unsigned& id)
{
    if (text.empty() || text.size() > 4 || text.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
        return false;
    id = unsigned(std::stoul(text, nullptr, 16));
    return true;
}

bool isUsbText(const std::string& text)
{
    if (text.empty() || text.size() > kMaxUsbTextLength) return false;
    for (char c : text) {
        if (c < 0x20 || c > 0x7E) return false;
    }
    return true;
}

std::string usbIdText(unsigned id)
{
    char text[8];
    std::snprintf(text, sizeof text, "%04x", id & 0xFFFF);
    return text;
}

Bytes usbStringDescriptor(const UsbIdentity& identity, unsigned index)
{
    if (index == kLanguagesIndex) return {4, kStringDescriptor, uint8_t(kUsEnglish), uint8_t(kUsEnglish >> 8)};
    const std::string* text = index == kManufacturerIndex ? &identity.manufacturer
                              : index == kProductIndex    ? &identity.product
                              : index == kSerialIndex     ? &identity.serial
                                                          : nullptr;
    if (!text) return {};
    // UTF-16LE; the texts are ASCII.
    Bytes descriptor = {uint8_t(2 + 2 * text->size()), kStringDescriptor};
    for (char c : *text) descriptor.insert(descriptor.end(), {uint8_t(c), 0});
    return descriptor;
}

}  // namespace corvelsim
