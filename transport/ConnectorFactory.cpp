// The system's connector factory: the device node or libusb, as the path's
// shape says.
#include "transport/ConnectorFactory.h"

#include "transport/LibUsbConnector.h"
#include "transport/USBLPConnector.h"
#include "transport/UsbPath.h"

namespace {

constexpr uint8_t kPrinterInterfaceClass = 7;

class SystemConnectorFactory : public ConnectorFactory {
public:
    std::unique_ptr<HCIOConnector> connect(const char* path, bool& opened) override
    {
        opened = false;
        const UsbPath parsed = parseUsbPath(path);
        switch (parsed.shape) {
        case UsbPath::Shape::DeviceNode: {
            // Always the standard node, whatever else the given path says.
            auto connector = std::make_unique<USBLPConnector>("/dev/usb/lp", parsed.deviceNumber);
            opened = connector->open() == 0;
            return connector;
        }
        case UsbPath::Shape::BusDevice: {
            auto connector = std::make_unique<LibUsbConnector>(kPrinterInterfaceClass);
            opened = connector->openDevice(parsed.bus, parsed.device) == 0;
            return connector;
        }
        case UsbPath::Shape::Invalid: break;
        }
        return nullptr;
    }
};

}  // namespace

template <>
ConnectorFactory& Seam<ConnectorFactory>::systemDefault()
{
    static SystemConnectorFactory factory;
    return factory;
}
