// The few libusb-0.1 calls the libusb connector makes, behind one interface
// so that tests can stand in for the USB bus (Seam<UsbCalls>).
#pragma once

#include <usb.h>

#include "common/Seam.h"

class UsbCalls {
public:
    virtual ~UsbCalls() = default;
    virtual void init() = 0;
    virtual int findBusses() = 0;
    virtual int findDevices() = 0;
    virtual usb_bus* getBusses() = 0;
    virtual usb_dev_handle* open(struct usb_device* device) = 0;
    virtual int setConfiguration(usb_dev_handle* handle, int configuration) = 0;
    virtual int claimInterface(usb_dev_handle* handle, int interface) = 0;
    virtual int releaseInterface(usb_dev_handle* handle, int interface) = 0;
    virtual int close(usb_dev_handle* handle) = 0;
    // Both return the bytes moved or a negative error number (-110 time-out, -32 stall).
    virtual int bulkWrite(usb_dev_handle* handle, int endpoint, const char* bytes, int size, int timeoutMs) = 0;
    virtual int bulkRead(usb_dev_handle* handle, int endpoint, char* bytes, int size, int timeoutMs) = 0;
    virtual int clearHalt(usb_dev_handle* handle, unsigned endpoint) = 0;
};

// The real libusb-0.1.
template <>
UsbCalls& Seam<UsbCalls>::systemDefault();
