// USB paths: reading both shapes, and the device-node path built from one.
#include "transport/UsbPath.h"
#include "transport/USBLPConnector.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace {

using Shape = UsbPath::Shape;

TEST(UsbPathTest, ReadsBothShapesAndRefusesTheRest)
{
    const struct {
        const char* path;
        Shape shape;
        int first;   // device number, or bus
        int second;  // device
    } cases[] = {
        {"/dev/usb/lp0", Shape::DeviceNode, 0, 0},
        {"/dev/usb/lp4294967298", Shape::DeviceNode, INT_MAX, 0},  // must not wrap into 0..16
        {"/dev/usb/usblp7/lp3", Shape::DeviceNode, 7, 0},          // "usblp" wins over "/lp"
        {"/dev/usbx", Shape::Invalid, 0, 0},                       // a node path without a printer number
        {"1:2:3", Shape::BusDevice, 1, 2},                         // the first colon splits
        {"123456789:987654321", Shape::BusDevice, 123456789, 987654321},
        {"1234567890:1", Shape::Invalid, 0, 0},  // more than 9 characters a side
        {"", Shape::Invalid, 0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string("path '") + c.path + "'");
        const UsbPath parsed = parseUsbPath(c.path);
        EXPECT_EQ(parsed.shape, c.shape);
        const bool node = c.shape == Shape::DeviceNode;
        EXPECT_EQ(node ? parsed.deviceNumber : parsed.bus, c.first);
        EXPECT_EQ(node ? 0 : parsed.device, c.second);
    }
    EXPECT_EQ(parseUsbPath(nullptr).shape, Shape::Invalid);
}

// The device-node connector builds its path from a prefix and the number
// (its reads, writes and waits run in every end-to-end test over the node).
TEST(ConnectorPathTest, NodePathFromPrefixAndNumber)
{
    const std::string prefix62(62, 'p');
    const struct {
        const char* prefix;
        int number;
        std::string path;
    } cases[] = {
        {"/dev/usb/lp", 0, "/dev/usb/lp0"},    {"/dev/usb/lp", 16, "/dev/usb/lp16"}, {"/dev/usb/lp", 17, ""},
        {prefix62.c_str(), 9, prefix62 + "9"}, {prefix62.c_str(), 10, ""},  // would not fit the 64-character buffer
                                                                            // whole
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.number));
        USBLPConnector connector(c.prefix, c.number);
        EXPECT_EQ(std::string(connector.devicePath()), c.path);
        if (c.path.empty()) {
            EXPECT_EQ(connector.open(), 1);
        }
    }
}

}  // namespace
