// What each simulated printer is made of, read from the command line: its
// serial, lp node(s), USB device, faults and files. The options describe the
// first printer; --printers N makes the others like it, each one step on.
#pragma once

#include <string>
#include <vector>

#include "sim/devices/PrinterSysfs.h"
#include "sim/devices/UsbPrinterDevice.h"
#include "sim/printer/Faults.h"
#include "sim/process/SimOptions.h"

namespace corvelsim {

struct PrinterPlan {
    int number = 1;              // 1-based, as --printer-fault counts
    std::vector<int> lpNumbers;  // {kNoLpNode}: none
    UsbDeviceOptions usb;        // bus 0: not on the libusb route; identity.serial: this printer's
    FaultSet faults;
    std::string statePath;  // "": in memory only
    std::string logPath;    // "": no request log

    const std::string& serial() const { return usb.identity.serial; }
};

// Printer `number`'s serial: the trailing decimal number of `first` that
// much higher less one, as wide at least ("CVSIM0009", 2 -> "CVSIM0010");
// without trailing digits `first` + "-NUMBER" ("SN", 2 -> "SN-2").
std::string numberedSerial(const std::string& first, int number);

// One plan per printer, from parsed (valid) options.
std::vector<PrinterPlan> planPrinters(const SimOptions& options);

// Where each plan's printer sits: one printer's lp nodes as placePrinters
// puts them; of several printers, printer K at port K and the K-th device
// number. A printer on the libusb route has its descriptors on its first
// placement.
std::vector<std::vector<PrinterPlacement>> placePlans(const std::vector<PrinterPlan>& plans);

}  // namespace corvelsim
