// The printer's certificate manager: answers the ten methods of
// "applications.certMgr" from what the printer holds, changing it as they ask.
//
// An answer is XML: <response><MapElem> holding <child name="..."> fields,
// each one IntegerElem, StringElem, BinaryElem or ListElem of StringElem;
// status_code is 1 on success, else one of CertStatus with a status_mesg.
#pragma once

#include <string>

#include "sim/printer/PrinterState.h"
#include "sim/wire/CertMgrCall.h"

namespace corvelsim {

struct CertAnswer {
    int statusCode = kCertOk;
    std::string xml;  // ASCII only: every other character as a character reference
};

class CertManager {
public:
    explicit CertManager(PrinterState& state) : m_State(state) {}

    CertAnswer answer(const CertMgrCall& call);

private:
    PrinterState& m_State;
};

// An answer holding only a status: what the cert-status fault sends.
CertAnswer statusAnswer(int code, const std::string& message);

// Every character outside ASCII as a numeric character reference (bytes
// that are not UTF-8 as U+FFFD), so that no byte of the text is 0xE0 or above.
std::string asciiXml(const std::string& xml);

}  // namespace corvelsim
