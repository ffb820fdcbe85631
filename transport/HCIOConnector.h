// The interface of every connector: one kind of USB access to one printer.
#pragma once

#include <cstdint>

#include "transport/IoStatus.h"

class HCIOConnector {
public:
    virtual ~HCIOConnector() = default;
    virtual int open() = 0;                                            // 0 opened, 1 failed
    virtual int close() = 0;                                           // 0 closed, 1 failed
    virtual int32_t read(uint8_t* buffer, int32_t length) = 0;         // bytes read, or -1
    virtual int queryDevice(uint8_t* buffer, int32_t length) = 0;      // not offered by our connectors
    virtual int32_t write(const uint8_t* buffer, int32_t length) = 0;  // bytes written, or -1
    virtual IoStatus waitReadable(int32_t timeLimit) = 0;
    virtual IoStatus waitWritable(int32_t timeLimit) = 0;
    // Hands over answer bytes that have already arrived, without waiting:
    // bytes read, 0 or -1 when none are there. Connectors whose read() never
    // waits use read() itself.
    virtual int32_t readArrived(uint8_t* buffer, int32_t length) { return read(buffer, length); }
    // The unit of the waits' time limits in microseconds (a device node's
    // select() takes microseconds, libusb milliseconds).
    virtual int32_t waitUnitMicroseconds() const { return 1000; }
    // The longest single wait the answer-driven reads ask for, in
    // milliseconds: short, so that the deadline is seen in time.
    virtual int32_t longestWaitMs() const { return 50; }
    // Bounds the time the next writes may wait for the printer to take data
    // to `totalMs` in all (connectors whose writes never wait ignore it).
    virtual void boundWriteWaits(int32_t totalMs) { (void)totalMs; }

    int32_t getStatus() const { return m_Status; }
    // The system's error number of the last call that failed with one, else 0.
    int getError() const { return m_Error; }
    int32_t getKind() const { return m_Kind; }
    void setKind(int32_t kind) { m_Kind = kind; }

protected:
    void record(IoStatus status) { m_Status = static_cast<int32_t>(status); }

    int32_t m_Status = static_cast<int32_t>(IoStatus::Ok);  // status of the last operation that recorded one
    int32_t m_Kind = 0;                                     // 2 device node, 3 libusb
    int m_Error = 0;
};
