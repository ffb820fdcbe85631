// The request log: one JSON object per line for every request received,
// written and flushed as it happens.
//
//   {"seq":1,"port":0,"route":"lp","serial":"CVSIM0001","kind":"read","envelope":false,
//    "raw":"A5000650E0D8002808","group":"28","field":"08","answer":"A5...","faults":[]}
//
// "serial" is the serial number of the printer (its USB device) that took it.
// A request that came over the USB bus has "route":"usb", its "port" is the
// device's "BBB:DDD" and "bulk_out" lists the sizes of the bulk transfers
// that carried it ("64,36"); otherwise "route" is "lp".
// Settings requests add "items" (group, field, length, value hex and, when
// printable, text) and "accepted"; certificate-manager requests add "method",
// "params" (name: decoded value; Base64 files as their size and first
// characters) and "status_code" when answered;
// unknown or malformed ones add "problem"; a delayed answer adds "delay_ms".
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "sim/wire/Request.h"

namespace corvelsim {

struct LogEntry {
    int port = 0;                 // the lp number the request came in on
    std::string usbAddress;       // "BBB:DDD" when it came over the USB bus, else ""
    std::vector<size_t> bulkOut;  // USB: the size of each bulk transfer that carried it
    std::string serial;           // the printer's serial number
    const Request* request = nullptr;
    Bytes answer;  // what was written back, faults included
    std::vector<std::string> faults;
    int delayMs = 0;
    bool answered = false;
    bool accepted = false;
    int certStatus = 0;  // the status_code answered to a certificate-manager call
};

// The JSON line for one entry (without the line feed).
std::string formatLogEntry(int seq, const LogEntry& entry);

// JSON string literal with the needed escapes.
std::string jsonString(const std::string& text);

class RequestLog {
public:
    RequestLog() = default;
    ~RequestLog();
    RequestLog(const RequestLog&) = delete;
    RequestLog& operator=(const RequestLog&) = delete;

    // Opens (appends to) the file; false when it cannot be opened.
    bool open(const std::string& path);
    void write(const LogEntry& entry);

private:
    std::FILE* m_File = nullptr;
    int m_Seq = 0;
};

}  // namespace corvelsim
