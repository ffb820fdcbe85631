// One simulated printer as corvelsim serves it: its state (and state file),
// request log, faults and answers, its USB device, and the ports it is
// reached on. Several printers share nothing but the serving loop.
#pragma once

#include <chrono>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "sim/devices/PrinterSysfs.h"
#include "sim/devices/Testbed.h"
#include "sim/devices/UsbPrinterDevice.h"
#include "sim/printer/Responder.h"
#include "sim/process/PrinterPlan.h"
#include "sim/process/RequestLog.h"
#include "sim/process/SharedStateFile.h"
#include "sim/wire/FrameReader.h"

namespace corvelsim {

// One way to the printer: an lp node's pty master or its USB device's socket.
struct PrinterPort {
    using TimePoint = std::chrono::steady_clock::time_point;
    struct Outgoing {
        TimePoint due;
        Bytes bytes;
    };

    int lp = 0;  // -1: the USB device, which drops an unread answer itself
    int fd = -1;
    std::string usbAddress;       // USB: "BBB:DDD"; "" for an lp node
    std::string serial;           // the serial of the device the port belongs to, for the log
    std::vector<size_t> bulkOut;  // USB: transfer sizes since the last request
    FrameReader reader;
    Bytes opening;  // first packet of a certificate-manager request
    TimePoint lastInput{};
    std::deque<Outgoing> outbox;
};

class ServedPrinter {
public:
    ServedPrinter(const PrinterPlan& plan, const NetworkLife& life);
    ServedPrinter(const ServedPrinter&) = delete;
    ServedPrinter& operator=(const ServedPrinter&) = delete;

    // Reads its state file and opens its log, as the plan names them; false
    // and a message when one is refused.
    bool openFiles(std::string& error);

    // Attaches its USB device's ioctl handler, which must be in place before
    // the testbed adds the node (no-op off the libusb route).
    bool attachUsb(::_UMockdevTestbed* testbed, std::string& error);

    // Its ports once the testbed holds its `placements`: the lp nodes' pty
    // masters, and its USB device's socket.
    void addPorts(const Testbed& testbed, const std::vector<PrinterPlacement>& placements);

    std::vector<PrinterPort>& ports() { return m_Ports; }
    const std::vector<PrinterPort>& ports() const { return m_Ports; }
    const FaultSet& faults() const { return m_Plan.faults; }
    const std::string& serial() const { return m_Plan.serial(); }

    // True when the printer goes away at this request (the vanish fault);
    // else counts it as answered.
    bool vanishesNow();

    // The printer's decision, made on the state its state file holds.
    Decision respond(const Request& request);

    void log(const LogEntry& entry) { m_Log.write(entry); }

private:
    PrinterPlan m_Plan;
    PrinterState m_State;
    SharedStateFile m_StateFile;
    bool m_StateInFile = false;
    RequestLog m_Log;
    Responder m_Responder;
    std::unique_ptr<UsbPrinterDevice> m_Usb;
    std::vector<PrinterPort> m_Ports;
    int m_Answered = 0;  // requests answered so far, for the vanish fault
};

}  // namespace corvelsim
