// Lists the printers as libudev and libusb see them, for testing corvelsim's
// USB identity: one line per usbmisc device, and one per printer-class
// interface without one (node "-"), sorted:
//   NODE usb=DEVNAME|- busnum=N devnum=N class=CC driver=DRIVER|- VID:PID MANUFACTURER|PRODUCT|SERIAL
//        udev=ID_VENDOR_ID:ID_MODEL_ID ID_VENDOR|ID_MODEL|ID_SERIAL_SHORT
// where the USB fields come from the usb_device parent, class and driver from
// the usb_interface between; then for each such parent with a node, what
// libusb reads from it:
//   libusb BBB/DDD VID:PID MANUFACTURER|PRODUCT|SERIAL
#include <libudev.h>
#include <usb.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace {

std::string orDash(const char* text) { return text ? text : "-"; }

std::string attribute(udev_device* device, const char* name)
{
    return orDash(device ? udev_device_get_sysattr_value(device, name) : nullptr);
}

std::string property(udev_device* device, const char* name)
{
    return orDash(device ? udev_device_get_property_value(device, name) : nullptr);
}

// "VID:PID MANUFACTURER|PRODUCT|SERIAL" as libusb reads them from bus/device.
std::string libusbIdentity(const std::string& busName, const std::string& deviceName)
{
    for (usb_bus* bus = usb_get_busses(); bus; bus = bus->next) {
        if (busName != bus->dirname) continue;
        for (struct usb_device* device = bus->devices; device; device = device->next) {
            if (deviceName != device->filename) continue;
            char line[512];
            std::snprintf(line, sizeof line, "%04x:%04x ", device->descriptor.idVendor, device->descriptor.idProduct);
            std::string identity = line;
            usb_dev_handle* handle = usb_open(device);
            const uint8_t indexes[] = {device->descriptor.iManufacturer, device->descriptor.iProduct,
                                       device->descriptor.iSerialNumber};
            for (size_t i = 0; i < 3; ++i) {
                char text[256] = "";
                if (!handle || indexes[i] == 0 || usb_get_string_simple(handle, indexes[i], text, sizeof text) <= 0)
                    std::snprintf(text, sizeof text, "-");
                identity += std::string(i ? "|" : "") + text;
            }
            if (handle) usb_close(handle);
            return identity;
        }
    }
    return "not found";
}

// The line for a printer's node (nullptr: none), its interface and USB device.
std::string printerLine(const char* node, udev_device* interface, udev_device* usb)
{
    // The interface must lie between the node and the USB device.
    const bool between =
        usb && interface && udev_device_get_parent_with_subsystem_devtype(interface, "usb", "usb_device") == usb;
    return orDash(node) + " usb=" + orDash(usb ? udev_device_get_devnode(usb) : nullptr) +
           " busnum=" + attribute(usb, "busnum") + " devnum=" + attribute(usb, "devnum") +
           " class=" + (between ? attribute(interface, "bInterfaceClass") : "-") +
           " driver=" + (between ? property(interface, "DRIVER") : "-") + " " + attribute(usb, "idVendor") + ":" +
           attribute(usb, "idProduct") + " " + attribute(usb, "manufacturer") + "|" + attribute(usb, "product") + "|" +
           attribute(usb, "serial") + " udev=" + property(usb, "ID_VENDOR_ID") + ":" + property(usb, "ID_MODEL_ID") +
           " " + property(usb, "ID_VENDOR") + "|" + property(usb, "ID_MODEL") + "|" + property(usb, "ID_SERIAL_SHORT");
}

// Calls `visit` with each device of `subsystem` (below `parent` if given)
// whose attribute `name` is `value` (any when nullptr).
template <typename Visit>
void forEach(udev* context, const char* subsystem, udev_device* parent, const char* name, const char* value,
             Visit visit)
{
    udev_enumerate* enumerate = udev_enumerate_new(context);
    udev_enumerate_add_match_subsystem(enumerate, subsystem);
    if (parent) udev_enumerate_add_match_parent(enumerate, parent);
    if (name) udev_enumerate_add_match_sysattr(enumerate, name, value);
    udev_enumerate_scan_devices(enumerate);
    udev_list_entry* entry;
    udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(enumerate))
    {
        udev_device* device = udev_device_new_from_syspath(context, udev_list_entry_get_name(entry));
        if (!device) continue;
        visit(device);
        udev_device_unref(device);  // its parents go with it
    }
    udev_enumerate_unref(enumerate);
}

}  // namespace

int main()
{
    udev* context = udev_new();
    std::vector<std::string> printers, usbNodes;
    auto addPrinter = [&](const char* node, udev_device* interface, udev_device* usb) {
        printers.push_back(printerLine(node, interface, usb));
        const char* usbNode = usb ? udev_device_get_devnode(usb) : nullptr;
        if (usbNode) usbNodes.push_back(usbNode);
    };
    forEach(context, "usbmisc", nullptr, nullptr, nullptr, [&](udev_device* node) {
        addPrinter(udev_device_get_devnode(node),
                   udev_device_get_parent_with_subsystem_devtype(node, "usb", "usb_interface"),
                   udev_device_get_parent_with_subsystem_devtype(node, "usb", "usb_device"));
    });
    // A printer whose interface no driver gave a node (usblp not loaded).
    forEach(context, "usb", nullptr, "bInterfaceClass", "07", [&](udev_device* interface) {
        bool hasNode = false;
        forEach(context, "usbmisc", interface, nullptr, nullptr, [&](udev_device*) { hasNode = true; });
        if (!hasNode)
            addPrinter(nullptr, interface,
                       udev_device_get_parent_with_subsystem_devtype(interface, "usb", "usb_device"));
    });
    udev_unref(context);

    std::sort(printers.begin(), printers.end());
    for (const std::string& line : printers) std::printf("%s\n", line.c_str());
    usb_init();
    usb_find_busses();
    usb_find_devices();
    for (const std::string& node : usbNodes) {
        // "/dev/bus/usb/BBB/DDD"
        const std::string busName = node.substr(13, 3), deviceName = node.substr(17);
        std::printf("libusb %s/%s %s\n", busName.c_str(), deviceName.c_str(),
                    libusbIdentity(busName, deviceName).c_str());
    }
    return 0;
}
