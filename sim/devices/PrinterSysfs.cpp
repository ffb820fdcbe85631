#include "sim/devices/PrinterSysfs.h"

#include <cctype>
#include <cstdio>
#include <cstring>

namespace corvelsim {

namespace {

constexpr int kFirstDevice = 2;  // device 1 is the bus's root hub
constexpr int kLastDevice = 127;

std::string threeDigits(int number)
{
    char text[8];
    std::snprintf(text, sizeof text, "%03d", number);
    return text;
}

// udev's ID_VENDOR, ID_MODEL and ID_SERIAL_SHORT: the text without blanks at
// its ends, each run of blanks a '_', and every character but letters, digits
// and "#+-.:=@_" a '_'.
std::string udevText(const std::string& text)
{
    const size_t first = text.find_first_not_of(' '), last = text.find_last_not_of(' ');
    if (first == std::string::npos) return "";
    std::string out;
    for (size_t i = first; i <= last; ++i) {
        const char c = text[i];
        if (c == ' ' && text[i - 1] == ' ') continue;
        out += std::isalnum(static_cast<unsigned char>(c)) || std::strchr("#+-.:=@_", c) ? c : '_';
    }
    return out;
}

// umockdev reads attribute values with C-style escapes (property values as
// they are).
std::string escaped(const std::string& text)
{
    std::string out;
    for (char c : text) {
        if (c == '\\') out += '\\';
        out += c;
    }
    return out;
}

// The kernel's PRODUCT property: vendor/product/release in hex, unpadded.
std::string kernelProduct(const UsbIdentity& identity)
{
    char text[24];
    std::snprintf(text, sizeof text, "%x/%x/100", identity.vendorId, identity.productId);
    return text;
}

// udev's ID_USB_INTERFACES, as its usb_id builtin makes it from the device's
// descriptors: ":CCSSPP" (class, subclass, protocol in hex) of each interface,
// once each, then ":". Without descriptors of its own the device has the
// one printer interface its sysfs shows.
std::string usbInterfaces(const Bytes& descriptors)
{
    if (descriptors.empty()) return ":070102:";
    std::string list;
    for (size_t at = 0; at + 8 <= descriptors.size() && descriptors[at] != 0; at += descriptors[at]) {
        if (descriptors[at + 1] != 4) continue;  // not an interface descriptor
        char item[8];
        std::snprintf(item, sizeof item, ":%02x%02x%02x", descriptors[at + 5], descriptors[at + 6],
                      descriptors[at + 7]);
        if (list.find(item) == std::string::npos) list += item;
    }
    return list + ":";
}

}  // namespace

std::string usbNodePath(int bus, int device) { return "/dev/bus/usb/" + threeDigits(bus) + "/" + threeDigits(device); }

PrinterPlacement placePrinter(int lp, int index, int usbBus, int usbDevice, const std::string& serial)
{
    PrinterPlacement printer;
    printer.lp = lp;
    printer.bus = usbBus != 0 ? usbBus : 1;
    const int firstDevice = usbBus != 0 ? usbDevice : kFirstDevice;
    // At most 17 printers: counting on from the first and wrapping within
    // 1..127 never meets a number twice.
    printer.device = (firstDevice - 1 + index) % kLastDevice + 1;
    printer.port = index + 1;
    printer.serial = serial;
    return printer;
}

std::vector<PrinterPlacement> placePrinters(const std::vector<int>& lpNumbers, int usbBus, int usbDevice,
                                            const std::string& serial)
{
    std::vector<PrinterPlacement> printers;
    for (int lp : lpNumbers) {
        const int index = int(printers.size());
        printers.push_back(
            placePrinter(lp, index, usbBus, usbDevice, index == 0 ? serial : serial + "-lp" + std::to_string(lp)));
    }
    return printers;
}

std::vector<std::string> sysfsDescriptions(const PrinterPlacement& printer, const UsbIdentity& identity)
{
    const std::string bus = std::to_string(printer.bus), lp = std::to_string(printer.lp);
    const std::string usbName = bus + "-" + std::to_string(printer.port);
    const std::string usbPath = "/devices/corvelsim/usb" + bus + "/" + usbName;
    const std::string interfacePath = usbPath + "/" + usbName + ":1.0";
    const std::string vendor = usbIdText(identity.vendorId), product = usbIdText(identity.productId);
    const std::string node = usbNodePath(printer.bus, printer.device);
    auto line = [](char kind, const std::string& name, const std::string& value) {
        return std::string(1, kind) + ": " + name + "=" + value + "\n";
    };

    std::string usbDevice = "P: " + usbPath + "\n";
    // libusb reads the descriptors from the node itself (upper-case hex only).
    if (!printer.descriptors.empty())
        usbDevice += "N: " + node.substr(5) + "=" + toHex(printer.descriptors) + "\n" + line('E', "DEVNAME", node);
    usbDevice += line('E', "SUBSYSTEM", "usb") + line('E', "DEVTYPE", "usb_device") +
                 line('E', "BUSNUM", threeDigits(printer.bus)) + line('E', "DEVNUM", threeDigits(printer.device)) +
                 line('E', "PRODUCT", kernelProduct(identity)) + line('E', "ID_VENDOR_ID", vendor) +
                 line('E', "ID_MODEL_ID", product) + line('E', "ID_VENDOR", udevText(identity.manufacturer)) +
                 line('E', "ID_MODEL", udevText(identity.product)) +
                 line('E', "ID_SERIAL_SHORT", udevText(printer.serial)) +
                 line('E', "ID_USB_INTERFACES", usbInterfaces(printer.descriptors)) + line('A', "idVendor", vendor) +
                 line('A', "idProduct", product) + line('A', "manufacturer", escaped(identity.manufacturer)) +
                 line('A', "product", escaped(identity.product)) + line('A', "serial", escaped(printer.serial)) +
                 line('A', "busnum", bus) + line('A', "devnum", std::to_string(printer.device)) +
                 line('A', "devpath", std::to_string(printer.port)) + line('A', "bDeviceClass", "00") +
                 line('A', "bNumConfigurations", "1") + line('A', "bcdDevice", "0100") + line('A', "speed", "480");

    const bool hasLpNode = printer.lp != kNoLpNode;
    const std::string interface = "P: " + interfacePath + "\n" + line('E', "SUBSYSTEM", "usb") +
                                  line('E', "DEVTYPE", "usb_interface") +
                                  (hasLpNode ? line('E', "DRIVER", "usblp") : "") + line('E', "INTERFACE", "7/1/2") +
                                  line('A', "bInterfaceNumber", "00") + line('A', "bAlternateSetting", "00") +
                                  line('A', "bInterfaceClass", "07") + line('A', "bInterfaceSubClass", "01") +
                                  line('A', "bInterfaceProtocol", "02") + line('A', "bNumEndpoints", "02");
    if (!hasLpNode) return {usbDevice, interface};

    // The "N:" line without contents makes umockdev back the node with a pty.
    const std::string lpNode = "P: " + interfacePath + "/usbmisc/lp" + lp + "\nN: usb/lp" + lp + "\n" +
                               line('E', "SUBSYSTEM", "usbmisc") + line('E', "DEVNAME", "/dev/usb/lp" + lp) +
                               line('E', "MAJOR", "180") + line('E', "MINOR", lp) + line('A', "dev", "180:" + lp);
    return {usbDevice, interface, lpNode};
}

}  // namespace corvelsim
