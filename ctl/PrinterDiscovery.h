// Finding the USB printers attached: a thin walk over udev, and the pure
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
    std::string sysPath;  // identifies the device across the two walks
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

// The printers attached now, through libudev. A failure (exit 69) when udev
// cannot be asked at all.
std::vector<PrinterRecord> discoverPrinters();

// Whether `path` names a character device (stat follows links, like the
// core's open).
bool isCharacterDevice(const std::string& path);

}  // namespace corvelctl
