// The USB transport: one per process, shared by every exchange channel. For
// each exchange it picks the connector that the USB path names and waits on
// reads until the printer has been quiet for a while.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "transport/CommTransport.h"
#include "transport/HCIOConnector.h"

class HCUSBTransport : public CommTransport {
public:
    static HCUSBTransport* getInstance();
    static void releaseInstance();

    int32_t open(const char* usbPath) override;
    int32_t close() override;
    int32_t read(uint8_t* buffer, int32_t length) override;
    int32_t write(const uint8_t* buffer, int32_t length) override;
    void noop() override;
    ~HCUSBTransport() override;

    // Test seam: when set, open() asks this factory for the connector of a
    // path instead of creating a device-node or libusb connector. The factory
    // returns the connector already opened or not; open() calls its open().
    using ConnectorFactory = std::function<std::unique_ptr<HCIOConnector>(const char* usbPath)>;
    static void setConnectorFactory(ConnectorFactory factory);

private:
    HCUSBTransport() = default;

    std::unique_ptr<HCIOConnector> m_Connector;
    static HCUSBTransport* m_Instance;
    static uint32_t m_RefCount;
};

// Writes `count` bytes to standard error, 16 a line: hex pairs, '|', printable characters.
void hexDump(const uint8_t* bytes, int32_t count);

// Converts hexadecimal text into a new byte array (caller frees with delete[]).
// Returns the byte count (half the digits, rounded down); 0 and no array for an
// empty text or a text with a character that is no hexadecimal digit.
int32_t hexToBytes(const char* text, uint8_t** bytes);
