// The transport interface the NPA exchange code talks to.
#pragma once

#include <cstdint>

class Deadline;

// What an answer-driven read or write ended with.
enum class IoEnd {
    Done,      // all written; or bytes read
    Deadline,  // the deadline passed first
    Gone,      // the printer went away
    Failed,    // the device failed the call (the error number says why)
};

class CommTransport {
public:
    virtual int32_t open(const char* usbPath) = 0;  // 0 opened, -1 failed
    virtual int32_t close() = 0;                    // 0 closed, -1 failed
    // True while the device `usbPath` names is open from an earlier open().
    virtual bool isOpenOn(const char* usbPath) const = 0;
    virtual int32_t read(uint8_t* buffer, int32_t length) = 0;         // bytes read
    virtual int32_t write(const uint8_t* buffer, int32_t length) = 0;  // bytes written, or -1
    virtual void noop() = 0;
    // True once the printer's device went away during the run: every later
    // open, read and write fails at once.
    virtual bool deviceGone() const { return false; }

    // Answer-driven I/O, for front ends that read an answer as soon as it is
    // whole instead of waiting fixed times. `writeAll` continues partial
    // writes until every byte is out; `readSome` waits for the next bytes and
    // gives what has arrived (`got`). Neither goes past the deadline.
    virtual IoEnd writeAll(const uint8_t* buffer, int32_t length, const Deadline& deadline) = 0;
    virtual IoEnd readSome(uint8_t* buffer, int32_t length, const Deadline& deadline, int32_t& got) = 0;
    // The system's error number of the last failed open, read or write (0: none known).
    virtual int lastError() const { return 0; }
    virtual ~CommTransport() = default;
};
