// Plays the printers on their ports: reads what the utility writes, answers
// every complete request, and logs it. One loop serves every printer; a
// delayed answer waits in its port's outbox, so no printer holds up another.
#pragma once

#include <memory>
#include <vector>

#include "sim/devices/ServedPrinter.h"
#include "sim/devices/Testbed.h"

namespace corvelsim {

class PrinterServer {
public:
    PrinterServer(Testbed& testbed, std::vector<std::unique_ptr<ServedPrinter>> printers);

    // One round: waits up to `timeoutMs` for input, answers what is complete,
    // sends answers whose time has come.
    void serveOnce(int timeoutMs);

    // Logs what is left unfinished when the simulator stops.
    void finish();

private:
    using TimePoint = PrinterPort::TimePoint;

    void readInput(PrinterPort& port);
    void handlePacket(ServedPrinter& printer, PrinterPort& port, const Bytes& packet);
    void handleRequest(ServedPrinter& printer, PrinterPort& port, const Request& request, bool answer);
    void dropStaleInput(ServedPrinter& printer, PrinterPort& port, TimePoint now, bool force = false);
    void sendDue(PrinterPort& port, TimePoint now);
    int nextWaitMs(int timeoutMs, TimePoint now) const;

    Testbed& m_Testbed;
    std::vector<std::unique_ptr<ServedPrinter>> m_Printers;
};

}  // namespace corvelsim
