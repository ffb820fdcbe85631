// Faults the simulated printer can be told to show, and how they change what
// it sends.
#pragma once

#include <string>
#include <vector>

#include "sim/wire/Bytes.h"

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
    int dripMs = 0;                            // real milliseconds between bytes sent one at a time (0: all at once)
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
    int byteGapMs = 0;                 // > 0: one byte at a time, this far apart
    std::vector<std::string> applied;  // names of the faults that changed something
};

Delivery deliver(const Bytes& answer, const FaultSet& faults);

// One write of a delivery, `atMs` real milliseconds after the request.
struct TimedWrite {
    int atMs = 0;
    Bytes bytes;
};

// The writes a delivery makes: all its bytes at once after its delay, or
// (drip) one byte per write from then on.
std::vector<TimedWrite> writesOf(const Delivery& delivery);

}  // namespace corvelsim
