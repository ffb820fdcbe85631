// corvelsim's command line.
#pragma once

#include <string>
#include <vector>

#include "sim/devices/UsbPrinterDevice.h"
#include "sim/printer/Faults.h"
#include "sim/printer/PrinterState.h"

namespace corvelsim {

// Real milliseconds a command has to end after corvelsim sends it SIGTERM.
constexpr int kDefaultKillAfterMs = 5000;
constexpr int kMaxKillAfterMs = 600000;
// Most printers --printers makes.
constexpr int kMaxPrinters = 16;

// --printer-fault K:NAME[=V]: a fault of printer K (1-based) only.
struct PrinterFault {
    int printer = 1;
    std::string fault;  // NAME or NAME=V, as --fault takes it
};

struct SimOptions {
    std::vector<int> lpNumbers;               // default: {0}; empty with noLp
    bool noLp = false;                        // the printer has no lp node: libusb only
    std::string statePath;                    // "" : in memory only
    std::string logPath;                      // "" : no request log
    int printers = 1;                         // --printers N: N printers made like the first
    std::string stateDir;                     // "": no DIR/SERIAL.state for each printer
    std::string logDir;                       // "": no DIR/SERIAL.log for each printer
    int speed = 0;                            // faketime factor for the child
    int killAfterMs = kDefaultKillAfterMs;    // from SIGTERM to SIGKILL for the child
    FaultSet faults;                          // every printer's
    std::vector<PrinterFault> printerFaults;  // one printer's, added to `faults`
    NetworkLife life;
    UsbDeviceOptions usb;  // bus 0: no USB device
    std::vector<std::string> command;
    bool help = false;
    bool version = false;
};

// Parses argv; false and a message on a bad option.
bool parseOptions(int argc, const char* const* argv, SimOptions& options, std::string& error);

std::string helpText();

// "corvelsim VERSION", the version of the project it was built from.
std::string versionText();

}  // namespace corvelsim
