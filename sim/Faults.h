// Faults the simulated printer can be told to show, and how they change what
// it sends.
#pragma once

#include <string>
#include <vector>

#include "sim/Bytes.h"

namespace corvelsim {

enum class DropPacket { None, After, Instead };

// cert-status=METHOD:CODE[:MESSAGE]: that method ("*": every method)
// answers CODE and MESSAGE, changing nothing.
struct CertStatusFault {
    std::string method;
    int code = 0;
    std::string message;
};

struct FaultSet {
    // Faults that change what the printer decides to answer.
    bool refuseEnvelope = false;  // wrapped requests get a 0xD4 refusal
    bool rejectSettings = false;  // settings answers end with 0x00
    std::vector<CertStatusFault> certStatus;
    bool certSilent = false;  // the certificate manager does not answer
    // Faults that change the certificate manager's answer bytes.
    bool certNoEnvelope = false;  // the XML without the 7-byte envelope
    int certE0Bytes = 0;          // bytes 0xE0 inserted into the XML
    // Faults that change how the answer travels.
    bool silent = false;                       // nothing is sent
    int noiseBytes = 0;                        // bytes before the first 0xA5
    int splitParts = 0;                        // the answer's content in this many packets (0: one)
    DropPacket dropPacket = DropPacket::None;  // a 0x80-flagged packet
    int truncateBy = 0;                        // the last packet announces this many bytes more than it has
    int lateMs = 0;                            // real milliseconds before the answer goes out
    // The printer goes away: its device node hangs up when a request arrives
    // after this many were answered (-1: never).
    int vanishAfter = -1;
};

// Adds one "--fault" value (NAME or NAME=VALUE) to `faults`; false and a
// message on an unknown name or a bad value.
bool addFault(FaultSet& faults, const std::string& faultText, std::string& error);

// The cert-status fault for `method`: one naming it wins over "*"; nullptr
// when none applies.
const CertStatusFault* certStatusFor(const FaultSet& faults, const std::string& method);

// The XML with `count` bytes 0xE0 inserted at evenly spread places.
std::string insertE0(const std::string& xml, int count);

// The help text's list of faults.
const char* faultHelp();

// What goes out for one answer packet once the travel faults are applied.
struct Delivery {
    Bytes bytes;  // everything written, in order
    int delayMs = 0;
    std::vector<std::string> applied;  // names of the faults that changed something
};

Delivery deliver(const Bytes& answer, const FaultSet& faults);

}  // namespace corvelsim
