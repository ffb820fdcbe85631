// Reading a USB path: which printer it names and how to reach it.
#pragma once

struct UsbPath {
    enum class Shape {
        DeviceNode,  // a path containing "/dev/usb": the printer device node
        BusDevice,   // bus:device, reached through libusb
        Invalid,     // neither, or a shape whose numbers cannot be read
    };

    Shape shape = Shape::Invalid;
    int deviceNumber = 0;  // DeviceNode: the N of /dev/usb/lpN (range checked by the connector)
    int bus = 0;           // BusDevice
    int device = 0;        // BusDevice
};

// Reads the path as the transport's open() does (null reads as Invalid):
// - "/dev/usb..." : the number right after "usblp" if the text has one, else
//   right after the first "/lp"; a device-node path with neither is Invalid.
// - "bus:device" (a colon, no "/dev/usb"): the numbers before and after the
//   first colon. Each side may hold at most 9 characters; a longer side makes
//   the path Invalid rather than silently reading only part of it.
// Numbers are read like atoi (blanks, sign, digits; no digits reads 0), with
// values beyond the int range clamped instead of overflowing.
UsbPath parseUsbPath(const char* path);
