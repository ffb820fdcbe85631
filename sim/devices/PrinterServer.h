// Plays the printer on the pty masters: reads what the utility writes,
// answers every complete request, and logs it.
#pragma once

#include <chrono>
#include <deque>
#include <string>
#include <vector>

#include "sim/devices/Testbed.h"
#include "sim/printer/Faults.h"
#include "sim/printer/PrinterState.h"
#include "sim/printer/Responder.h"
#include "sim/process/RequestLog.h"
#include "sim/process/SharedStateFile.h"
#include "sim/wire/FrameReader.h"

namespace corvelsim {

class PrinterServer {
public:
    // `stateFile` nullptr: the state lives in memory only.
    PrinterServer(Testbed& testbed, PrinterState& state, const FaultSet& faults, RequestLog& log,
                  SharedStateFile* stateFile);

    // Serves the printer on the USB bus too: `fd` is the device's packet
    // socket (one message per bulk transfer), `address` its "BBB:DDD".
    void addUsbPort(int fd, const std::string& address);

    // One round: waits up to `timeoutMs` for input, answers what is complete,
    // sends answers whose time has come.
    void serveOnce(int timeoutMs);

    // Logs what is left unfinished when the simulator stops.
    void finish();

private:
    using TimePoint = std::chrono::steady_clock::time_point;

    struct Outgoing {
        TimePoint due;
        Bytes bytes;
    };

    struct Port {
        int lp = 0;
        int fd = -1;
        std::string usbAddress;       // USB: "BBB:DDD"; "" for an lp node
        std::vector<size_t> bulkOut;  // USB: transfer sizes since the last request
        FrameReader reader;
        Bytes opening;  // first packet of a certificate-manager request
        TimePoint lastInput{};
        std::deque<Outgoing> outbox;
    };

    void readInput(Port& port);
    void handlePacket(Port& port, const Bytes& packet);
    void handleRequest(Port& port, const Request& request, bool answer);
    void dropStaleInput(Port& port, TimePoint now, bool force = false);
    void sendDue(Port& port, TimePoint now);
    int nextWaitMs(int timeoutMs, TimePoint now) const;

    Testbed& m_Testbed;
    PrinterState& m_State;
    const FaultSet& m_Faults;
    RequestLog& m_Log;
    Responder m_Responder;
    SharedStateFile* m_StateFile;
    std::vector<Port> m_Ports;
    int m_Answered = 0;  // requests answered so far, for the vanish fault
};

}  // namespace corvelsim
