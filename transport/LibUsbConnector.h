// Connector that reaches the printer through libusb-0.1 bulk endpoints, for
// USB paths of the shape bus:device.
#pragma once

#include <pthread.h>

#include <climits>
#include <cstdint>

#include "transport/ByteFifo.h"
#include "transport/HCIOConnector.h"
#include "transport/UsbCalls.h"

class LibUsbConnector : public HCIOConnector {
public:
    // `interfaceClass` is the USB interface class searched for (7, printer).
    // The libusb calls are those of Seam<UsbCalls> at construction.
    explicit LibUsbConnector(uint8_t interfaceClass);
    ~LibUsbConnector() override;

    LibUsbConnector(const LibUsbConnector&) = delete;
    LibUsbConnector& operator=(const LibUsbConnector&) = delete;

    // Finds the device by bus and device number and claims its first
    // interface that offers the class: 0 when claimed, 1 otherwise.
    int openDevice(int bus, int device);

    int open() override;  // not offered: openDevice is the way in
    int close() override;
    int32_t read(uint8_t* buffer, int32_t length) override;
    int queryDevice(uint8_t* buffer, int32_t length) override;
    int32_t write(const uint8_t* buffer, int32_t length) override;
    IoStatus waitReadable(int32_t timeLimit) override;  // limit in milliseconds
    IoStatus waitWritable(int32_t timeLimit) override;
    // What the receive FIFO holds, up to `length`: read() would wait for the rest.
    int32_t readArrived(uint8_t* buffer, int32_t length) override;
    // A bulk transfer cut short by its time limit loses what it was receiving
    // (libusb-0.1 discards it), so a wait takes all the time left at once.
    int32_t longestWaitMs() const override { return INT32_MAX; }
    // Each of the kWriteTries of a piece then waits a third of `totalMs` at
    // most (and never more than the usual 5 s).
    void boundWriteWaits(int32_t totalMs) override;

    uint8_t interfaceClass() const { return m_InterfaceClass; }
    int32_t claimedInterface() const { return m_Interface; }
    int32_t inEndpoint() const { return m_InEndpoint; }
    int32_t outEndpoint() const { return m_OutEndpoint; }
    int32_t maxPacketSize() const { return m_MaxPacketSize; }

    static constexpr size_t kFifoCapacity = 65536;
    // A piece that runs into the write time limit (or is not taken) this many
    // times in a row ends the write: a printer that never takes data cannot
    // hold the run.
    static constexpr int kWriteTries = 3;

private:
    bool claim(struct usb_device* device, const usb_config_descriptor& config, const usb_interface_descriptor& setting);
    void takeBulkEndpoints(const usb_interface_descriptor& setting);
    // Records the status; an unplugged device keeps ENODEV as its reason.
    void recordResult(IoStatus status);

    UsbCalls& m_Usb;
    ByteFifo m_ReadBuffer{kFifoCapacity};  // received bytes not yet read
    uint8_t m_InterfaceClass;
    int32_t m_Interface = 0;       // the claimed interface
    int32_t m_InEndpoint = 0;      // bulk IN address; 0 until found
    int32_t m_OutEndpoint = 0;     // bulk OUT address; 0 until found
    int32_t m_MaxPacketSize = 32;  // of the bulk IN endpoint; cuts writes too
    int32_t m_WriteLimitMs;        // of one bulk write
    usb_dev_handle* m_Handle = nullptr;
    pthread_mutex_t m_WriteLock;  // held around write() and by close()
    pthread_mutex_t m_ReadLock;   // held around the bulk read and by close()
};
