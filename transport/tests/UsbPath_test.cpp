#include "transport/UsbPath.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace {

using Shape = UsbPath::Shape;

struct PathCase {
    const char* path;
    Shape shape;
    int deviceNumber;
    int bus;
    int device;
};

TEST(UsbPathTest, ReadsBothShapesAndRefusesTheRest)
{
    const PathCase cases[] = {
        {"/dev/usb/lp0", Shape::DeviceNode, 0, 0, 0},
        {"/dev/usb/usblp2", Shape::DeviceNode, 2, 0, 0},
        {"/dev/usb/lp", Shape::DeviceNode, 0, 0, 0},       // no digits read as 0
        {"/dev/usb/lp17", Shape::DeviceNode, 17, 0, 0},    // out of range: the connector refuses it
        {"/dev/usb/lp-3", Shape::DeviceNode, -3, 0, 0},
        {"/dev/usb/lp 5x", Shape::DeviceNode, 5, 0, 0},    // blanks skipped, reading stops at 'x'
        {"/dev/usb/usblp7/lp3", Shape::DeviceNode, 7, 0, 0},  // "usblp" wins over "/lp"
        {"/x/lp4/dev/usb", Shape::DeviceNode, 4, 0, 0},    // the first "/lp", wherever it is
        {"/dev/usbx", Shape::Invalid, 0, 0, 0},            // node path without a printer number
        {"002:005", Shape::BusDevice, 0, 2, 5},
        {"2:5", Shape::BusDevice, 0, 2, 5},
        {"usb:1", Shape::BusDevice, 0, 0, 1},
        {":", Shape::BusDevice, 0, 0, 0},
        {"1:2:3", Shape::BusDevice, 0, 1, 2},              // the first colon splits
        {"123456789:987654321", Shape::BusDevice, 0, 123456789, 987654321},
        {"1234567890:1", Shape::Invalid, 0, 0, 0},         // bus text of 10 characters
        {"1:0000000001", Shape::Invalid, 0, 0, 0},         // device text of 10 characters
        {"lp0", Shape::Invalid, 0, 0, 0},
        {"", Shape::Invalid, 0, 0, 0},
    };
    for (const PathCase& c : cases) {
        SCOPED_TRACE(std::string("path '") + c.path + "'");
        const UsbPath parsed = parseUsbPath(c.path);
        EXPECT_EQ(parsed.shape, c.shape);
        if (c.shape == Shape::DeviceNode) {
            EXPECT_EQ(parsed.deviceNumber, c.deviceNumber);
        }
        if (c.shape == Shape::BusDevice) {
            EXPECT_EQ(parsed.bus, c.bus);
            EXPECT_EQ(parsed.device, c.device);
        }
    }
    EXPECT_EQ(parseUsbPath(nullptr).shape, Shape::Invalid);
}

TEST(UsbPathTest, NumbersReadLikeAtoiWithoutOverflow)
{
    struct NumberCase {
        const char* text;
        size_t maxChars;
        int expected;
    };
    const NumberCase cases[] = {
        {"42", 9, 42},
        {"  \t+7z", 9, 7},
        {"-12", 9, -12},
        {"abc", 9, 0},
        {"", 9, 0},
        {"- 5", 9, 0},                          // a sign must touch the digits
        {"123456789", 4, 1234},                 // only the allowed characters are read
        {"99999999999999999999", 20, INT_MAX},  // clamped, not overflowed
        {"-99999999999999999999", 21, INT_MIN},
    };
    for (const NumberCase& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(readAtoiNumber(c.text, c.maxChars), c.expected);
    }
}

TEST(UsbPathTest, OverlongNodeNumberStaysOutOfRange)
{
    // A huge number must not wrap into the valid range 0..16.
    const UsbPath parsed = parseUsbPath("/dev/usb/lp4294967298");
    EXPECT_EQ(parsed.shape, Shape::DeviceNode);
    EXPECT_EQ(parsed.deviceNumber, INT_MAX);
}

}  // namespace
