// Makes the connector a USB path names. Reached as Seam<ConnectorFactory>:
// the system's picks a device-node or libusb connector; tests install one
// that gives a scripted printer.
#pragma once

#include <memory>

#include "common/Seam.h"
#include "transport/HCIOConnector.h"

class ConnectorFactory {
public:
    virtual ~ConnectorFactory() = default;
    // Creates the connector of `usbPath` and opens it; `opened` tells whether
    // the open succeeded (a connector whose open failed is still returned).
    // Null for a path that names no connector.
    virtual std::unique_ptr<HCIOConnector> connect(const char* usbPath, bool& opened) = 0;
};

// Reads the path as parseUsbPath describes ("/dev/usbx" and overlong
// bus:device texts refused).
template <>
ConnectorFactory& Seam<ConnectorFactory>::systemDefault();
