// Connector on the printer-class device node that the kernel's USB printer
// driver creates for each printer (/dev/usb/lp0, /dev/usb/lp1, ...).
#pragma once

#include <pthread.h>

#include <cstdint>

#include "transport/HCIOConnector.h"

class USBLPConnector : public HCIOConnector {
public:
    // The node is `pathPrefix` followed by `deviceNumber` (0 to 16); any other
    // number, a missing prefix or one longer than 62 characters leaves the
    // path empty so that open() fails.
    USBLPConnector(const char* pathPrefix, int deviceNumber);
    ~USBLPConnector() override;

    USBLPConnector(const USBLPConnector&) = delete;
    USBLPConnector& operator=(const USBLPConnector&) = delete;

    int open() override;
    int close() override;
    int32_t read(uint8_t* buffer, int32_t length) override;
    int queryDevice(uint8_t* buffer, int32_t length) override;
    int32_t write(const uint8_t* buffer, int32_t length) override;
    IoStatus waitReadable(int32_t timeLimit) override;  // limit in microseconds, below one second
    IoStatus waitWritable(int32_t timeLimit) override;  // limit in microseconds, below one second
    int32_t waitUnitMicroseconds() const override { return 1; }

    const char* devicePath() const { return m_DevicePath; }

    static constexpr int kHighestDeviceNumber = 16;

private:
    IoStatus waitFor(bool forWriting, int32_t timeLimit);
    void recordErrno(int error);
    bool hungUp() const;

    char m_DevicePath[64] = {};
    int32_t m_Fd = -1;
    pthread_mutex_t m_WriteLock;  // held around write() and by close()
    pthread_mutex_t m_ReadLock;   // held around read() and by close()
};
