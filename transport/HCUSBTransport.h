// The USB transport: one per thread, shared by the exchange channels of that
// thread (a front end may talk to several printers at once, one per thread). For
// each exchange it picks the connector that the USB path names and waits on
// reads until the printer has been quiet for a while.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "transport/CommTransport.h"
#include "transport/HCIOConnector.h"

class HCUSBTransport : public CommTransport {
public:
    static HCUSBTransport* getInstance();
    static void releaseInstance();

    int32_t open(const char* usbPath) override;
    int32_t close() override;
    bool isOpenOn(const char* usbPath) const override;
    int32_t read(uint8_t* buffer, int32_t length) override;
    int32_t write(const uint8_t* buffer, int32_t length) override;
    void noop() override;
    bool deviceGone() const override { return m_DeviceGone; }
    IoEnd writeAll(const uint8_t* buffer, int32_t length, const Deadline& deadline) override;
    IoEnd readSome(uint8_t* buffer, int32_t length, const Deadline& deadline, int32_t& got) override;
    int lastError() const override { return m_LastError; }
    ~HCUSBTransport() override;

private:
    HCUSBTransport() = default;
    // After a failed read or write: notes and reports (once) a device gone.
    void checkGone();

    std::unique_ptr<HCIOConnector> m_Connector;
    std::string m_OpenPath;  // the path of the open connector; "" when none is open
    bool m_DeviceGone = false;
    int m_LastError = 0;
    static thread_local HCUSBTransport* m_Instance;
    static thread_local uint32_t m_RefCount;
};
