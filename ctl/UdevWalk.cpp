// The libudev side of printer discovery: it only reads what udev knows and
// hands it to mergePrinterEntries.
#include "ctl/PrinterDiscovery.h"

#include "ctl/Failure.h"

#include <libudev.h>

#include <memory>
#include <set>

namespace corvelctl {

namespace {

struct UdevRelease {
    void operator()(udev* context) const { udev_unref(context); }
    void operator()(udev_enumerate* enumeration) const { udev_enumerate_unref(enumeration); }
    void operator()(udev_device* device) const { udev_device_unref(device); }
};
using UdevContext = std::unique_ptr<udev, UdevRelease>;
using UdevEnumeration = std::unique_ptr<udev_enumerate, UdevRelease>;
using UdevDevice = std::unique_ptr<udev_device, UdevRelease>;

std::string attribute(udev_device* device, const char* name)
{
    const char* value = udev_device_get_sysattr_value(device, name);
    return value != nullptr ? value : "";
}

std::optional<std::string> optionalAttribute(udev_device* device, const char* name)
{
    const char* value = udev_device_get_sysattr_value(device, name);
    if (value == nullptr) return std::nullopt;
    return std::string(value);
}

UsbDeviceEntry usbDeviceEntry(udev_device* device)
{
    UsbDeviceEntry entry;
    entry.sysPath = udev_device_get_syspath(device);
    entry.busnum = attribute(device, "busnum");
    entry.devnum = attribute(device, "devnum");
    entry.idVendor = attribute(device, "idVendor");
    entry.idProduct = attribute(device, "idProduct");
    entry.manufacturer = optionalAttribute(device, "manufacturer");
    entry.product = optionalAttribute(device, "product");
    entry.serial = optionalAttribute(device, "serial");
    return entry;
}

// Calls `visit` with each device the enumeration found.
template <typename Visit>
void forEachDevice(udev* context, udev_enumerate* enumeration, Visit visit)
{
    if (udev_enumerate_scan_devices(enumeration) < 0) return;
    udev_list_entry* entry = nullptr;
    udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(enumeration))
    {
        UdevDevice device(udev_device_new_from_syspath(context, udev_list_entry_get_name(entry)));
        if (device) visit(device.get());
    }
}

}  // namespace

std::vector<PrinterRecord> discoverPrinters()
{
    UdevContext context(udev_new());
    if (!context) throw Failure(ExitStatus::Unavailable, "cannot list the USB devices: udev is not available");

    std::vector<LpNodeEntry> nodes;
    UdevEnumeration lpNodes(udev_enumerate_new(context.get()));
    if (!lpNodes) throw Failure(ExitStatus::Unavailable, "cannot list the USB devices");
    udev_enumerate_add_match_subsystem(lpNodes.get(), "usbmisc");
    udev_enumerate_add_match_sysname(lpNodes.get(), "lp*");
    forEachDevice(context.get(), lpNodes.get(), [&](udev_device* device) {
        const char* devNode = udev_device_get_devnode(device);
        if (devNode == nullptr) return;
        LpNodeEntry node;
        node.devNode = devNode;
        // The parent belongs to `device`: no reference of its own to release.
        udev_device* parent = udev_device_get_parent_with_subsystem_devtype(device, "usb", "usb_device");
        if (parent != nullptr) node.device = usbDeviceEntry(parent);
        nodes.push_back(node);
    });

    std::vector<UsbDeviceEntry> printerDevices;
    UdevEnumeration interfaces(udev_enumerate_new(context.get()));
    if (!interfaces) throw Failure(ExitStatus::Unavailable, "cannot list the USB devices");
    udev_enumerate_add_match_subsystem(interfaces.get(), "usb");
    udev_enumerate_add_match_sysattr(interfaces.get(), "bInterfaceClass", "07");
    std::set<std::string> found;
    for (const LpNodeEntry& node : nodes) {
        if (node.device) found.insert(node.device->sysPath);
    }
    forEachDevice(context.get(), interfaces.get(), [&](udev_device* usbInterface) {
        udev_device* parent = udev_device_get_parent_with_subsystem_devtype(usbInterface, "usb", "usb_device");
        // A device read through its lp node already is not read again: each
        // attribute read costs several system calls, and several printers
        // are listed before every run on them.
        if (parent != nullptr && found.insert(udev_device_get_syspath(parent)).second) {
            printerDevices.push_back(usbDeviceEntry(parent));
        }
    });

    return mergePrinterEntries(nodes, printerDevices);
}

}  // namespace corvelctl
