// The transport interface the NPA exchange code talks to.
#pragma once

#include <cstdint>

class CommTransport {
public:
    virtual int32_t open(const char* usbPath) = 0;                     // 0 opened, -1 failed
    virtual int32_t close() = 0;                                       // 0 closed, -1 failed
    virtual int32_t read(uint8_t* buffer, int32_t length) = 0;         // bytes read
    virtual int32_t write(const uint8_t* buffer, int32_t length) = 0;  // bytes written, or -1
    virtual void noop() = 0;
    // True once the printer's device went away during the run: every later
    // open, read and write fails at once.
    virtual bool deviceGone() const { return false; }
    virtual ~CommTransport() = default;
};
