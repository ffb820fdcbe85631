// Lists the printers as libudev and libusb see them, for testing corvelsim's
// USB identity: one line per usbmisc device (sorted by node),
//   NODE usb=DEVNAME|- busnum=N devnum=N class=CC VID:PID MANUFACTURER|PRODUCT|SERIAL
//        udev=ID_VENDOR_ID:ID_MODEL_ID ID_VENDOR|ID_MODEL|ID_SERIAL_SHORT
// where the USB fields come from the usb_device parent and class from the
// usb_interface between; then for each such parent with a node, what libusb
// reads from it:
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

}  // namespace

int main()
{
    udev* context = udev_new();
    udev_enumerate* enumerate = udev_enumerate_new(context);
    udev_enumerate_add_match_subsystem(enumerate, "usbmisc");
    udev_enumerate_scan_devices(enumerate);
    std::vector<std::string> printers, usbNodes;
    udev_list_entry* entry;
    udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(enumerate))
    {
        udev_device* node = udev_device_new_from_syspath(context, udev_list_entry_get_name(entry));
        // The parents belong to the node and go with it.
        udev_device* usb = udev_device_get_parent_with_subsystem_devtype(node, "usb", "usb_device");
        udev_device* interface = udev_device_get_parent_with_subsystem_devtype(node, "usb", "usb_interface");
        const std::string usbNode = orDash(usb ? udev_device_get_devnode(usb) : nullptr);
        // The interface must lie between the node and the USB device.
        const bool between =
            usb && interface && udev_device_get_parent_with_subsystem_devtype(interface, "usb", "usb_device") == usb;
        printers.push_back(orDash(udev_device_get_devnode(node)) + " usb=" + usbNode +
                           " busnum=" + attribute(usb, "busnum") + " devnum=" + attribute(usb, "devnum") +
                           " class=" + (between ? attribute(interface, "bInterfaceClass") : "-") + " " +
                           attribute(usb, "idVendor") + ":" + attribute(usb, "idProduct") + " " +
                           attribute(usb, "manufacturer") + "|" + attribute(usb, "product") + "|" +
                           attribute(usb, "serial") + " udev=" + property(usb, "ID_VENDOR_ID") + ":" +
                           property(usb, "ID_MODEL_ID") + " " + property(usb, "ID_VENDOR") + "|" +
                           property(usb, "ID_MODEL") + "|" + property(usb, "ID_SERIAL_SHORT"));
        if (usbNode != "-") usbNodes.push_back(usbNode);
        udev_device_unref(node);
    }
    udev_enumerate_unref(enumerate);
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
