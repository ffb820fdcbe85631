// Connector that reaches the printer through libusb bulk endpoints, for USB
// paths of the shape bus:device.
#pragma once

#include <cstdint>

#include "transport/HCIOConnector.h"

class LibUsbConnector : public HCIOConnector {
public:
    // `interfaceClass` is the USB interface class searched for (7, printer).
    explicit LibUsbConnector(uint8_t interfaceClass);
    ~LibUsbConnector() override = default;

    // Finds the device by bus and device number and claims its printer
    // interface: 0 when claimed, 1 otherwise.
    int openDevice(int bus, int device);

    int open() override;
    int close() override;
    int32_t read(uint8_t* buffer, int32_t length) override;
    int queryDevice(uint8_t* buffer, int32_t length) override;
    int32_t write(const uint8_t* buffer, int32_t length) override;
    IoStatus waitReadable(int32_t timeLimit) override;
    IoStatus waitWritable(int32_t timeLimit) override;

    uint8_t interfaceClass() const { return m_InterfaceClass; }

private:
    uint8_t m_InterfaceClass;
};
