// The printer's side of each request: what it does with it and the answer
// packet it sends back (before any travel fault).
#pragma once

#include <string>

#include "sim/printer/Faults.h"
#include "sim/printer/PrinterState.h"
#include "sim/wire/Request.h"

namespace corvelsim {

struct Decision {
    Bytes answer;                     // one framed packet; empty when the printer does not answer
    std::vector<std::string> faults;  // answer faults that decided it
    bool settingsAccepted = false;
    int certStatus = 0;  // the status_code a certificate-manager answer carries
};

class Responder {
public:
    Responder(PrinterState& state, const FaultSet& faults) : m_State(state), m_Faults(faults) {}

    Decision answer(const Request& request);

private:
    Decision answerCertMgr(const Request& request);
    Bytes answerInner(const Request& request, Decision& decision);
    Bytes answerRead(const Request& request);
    Bytes answerSettings(const Request& request, Decision& decision);

    PrinterState& m_State;
    const FaultSet& m_Faults;
};

// A refusal (flags 0xD4) repeating the request's command bytes.
Bytes refusalFor(const Request& request);

}  // namespace corvelsim
