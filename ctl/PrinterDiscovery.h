// Finding the USB printers attached: a thin walk over sysfs, and the pure
// logic that turns what it found into the list corvelctl shows.
#pragma once

#include "ctl/PrinterRecord.h"

#include <optional>
#include <string>
#include <vector>

namespace corvelctl {

// A USB device (devtype usb_device) as sysfs describes it. Text attributes
// are as read, absent ones empty or nullopt.
struct UsbDeviceEntry {
    std::string sysName;  // such as "1-2": identifies the device across the two walks
    std::string busnum, devnum, idVendor, idProduct;
    std::optional<std::string> manufacturer, product, serial;
};

// A usblp node ("/dev/usb/lpN") and the USB device it belongs to, if any.
struct LpNodeEntry {
    std::string devNode;
    std::optional<UsbDeviceEntry> device;
};

// One record per USB device that has an lp node or a printer interface (class
// 07: `printerDevices`), and one per lp node without a device; the nodes of a
// device in their numeric order (lp2 before lp10); records in bus:device
// order, node-only ones last. A device found twice counts once.
std::vector<PrinterRecord> mergePrinterEntries(const std::vector<LpNodeEntry>& nodes,
                                               const std::vector<UsbDeviceEntry>& printerDevices);

// The device node a uevent file names: its DEVNAME under /dev ("usb/lp0"
// gives "/dev/usb/lp0"), or "" when it names none.
std::string devNodeOfUevent(const std::string& uevent);

// The USB device (its sysfs name, such as "1-2") an lp node belongs to, from
// the node's path in sysfs: the kernel names a USB interface
// DEVICE:CONFIG.INTERFACE and places it in its device's folder DEVICE
// (".../usb1/1-2/1-2:1.0/usbmisc/lp0"); the nearest such pair above the
// node counts, as for a walk up its parents. PCI folders hold colons too, but
// not under a folder named like that. nullopt when the node is not on USB.
std::optional<std::string> usbDeviceOfNode(const std::string& nodePath);

// The printers attached now, as sysfs shows them (none when /sys cannot be
// read).
std::vector<PrinterRecord> discoverPrinters();

// Whether `path` names a character device (stat follows links, like the
// core's open).
bool isCharacterDevice(const std::string& path);

}  // namespace corvelctl
