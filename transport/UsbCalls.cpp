// The libusb-0.1 library itself, as the connector's UsbCalls.
#include "transport/UsbCalls.h"

namespace {

class SystemUsbCalls : public UsbCalls {
public:
    void init() override { usb_init(); }
    int findBusses() override { return usb_find_busses(); }
    int findDevices() override { return usb_find_devices(); }
    usb_bus* getBusses() override { return usb_get_busses(); }
    usb_dev_handle* open(struct usb_device* device) override { return usb_open(device); }
    int setConfiguration(usb_dev_handle* handle, int configuration) override
    {
        return usb_set_configuration(handle, configuration);
    }
    int claimInterface(usb_dev_handle* handle, int interface) override
    {
        return usb_claim_interface(handle, interface);
    }
    int releaseInterface(usb_dev_handle* handle, int interface) override
    {
        return usb_release_interface(handle, interface);
    }
    int close(usb_dev_handle* handle) override { return usb_close(handle); }
    int bulkWrite(usb_dev_handle* handle, int endpoint, const char* bytes, int size, int timeoutMs) override
    {
        return usb_bulk_write(handle, endpoint, bytes, size, timeoutMs);
    }
    int bulkRead(usb_dev_handle* handle, int endpoint, char* bytes, int size, int timeoutMs) override
    {
        return usb_bulk_read(handle, endpoint, bytes, size, timeoutMs);
    }
    int clearHalt(usb_dev_handle* handle, unsigned endpoint) override { return usb_clear_halt(handle, endpoint); }
};

}  // namespace

template <>
UsbCalls& Seam<UsbCalls>::systemDefault()
{
    static SystemUsbCalls calls;
    return calls;
}
