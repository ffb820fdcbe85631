// Where each simulated printer sits on the simulated USB bus, and the sysfs
// devices umockdev makes for it: a USB device, its printer interface, and the
// interface's lp node, as the kernel's usblp driver shows a real printer
// (without that driver: no lp node, and no driver holds the interface).
#pragma once

#include <string>
#include <vector>

#include "sim/devices/UsbIdentity.h"
#include "sim/wire/Bytes.h"

namespace corvelsim {

// The lp number of a printer without an lp node, as when usblp is not loaded.
constexpr int kNoLpNode = -1;

struct PrinterPlacement {
    int lp = 0;  // kNoLpNode: none
    int bus = 1;
    int device = 2;
    int port = 1;  // the USB device's sysfs name is "BUS-PORT"
    std::string serial;
    // The USB device has the node /dev/bus/usb/BBB/DDD that libusb opens,
    // holding these descriptors; empty: no node.
    Bytes descriptors;
};

// One printer per lp number (sorted, unique; or just kNoLpNode), each its own
// USB device on one bus. The first is the one the libusb route reaches when
// `usbBus` is not 0, at `usbBus`:`usbDevice`; the others take the next device
// numbers (without the libusb route: bus 1 from device 2 on). The first
// carries `serial`, the others `serial` + "-lpN".
std::vector<PrinterPlacement> placePrinters(const std::vector<int>& lpNumbers, int usbBus, int usbDevice,
                                            const std::string& serial);

// The printer at `index` (0-based) in that order: port index + 1, the
// index-th device number from the first.
PrinterPlacement placePrinter(int lp, int index, int usbBus, int usbDevice, const std::string& serial);

// The umockdev descriptions of the printer's devices, parents first: the USB
// device, its interface, its lp node (when it has one; the interface's driver
// is usblp only then).
std::vector<std::string> sysfsDescriptions(const PrinterPlacement& printer, const UsbIdentity& identity);

// "/dev/bus/usb/BBB/DDD"
std::string usbNodePath(int bus, int device);

}  // namespace corvelsim
