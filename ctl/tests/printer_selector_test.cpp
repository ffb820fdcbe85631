// Printer discovery's merging and the --printer selector, over record lists
// (no udev involved).
#include "ctl/Failure.h"
#include "ctl/PrinterDiscovery.h"
#include "ctl/PrinterSelector.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace corvelctl;

namespace {

UsbDeviceEntry usbDevice(const std::string& sysPath, const std::string& bus, const std::string& device,
                         std::optional<std::string> serial = std::nullopt)
{
    UsbDeviceEntry entry;
    entry.sysPath = sysPath;
    entry.busnum = bus;
    entry.devnum = device;
    entry.idVendor = "04b8";
    entry.idProduct = "0005";
    entry.manufacturer = "Acme";
    entry.product = "Laser " + device;
    entry.serial = std::move(serial);
    return entry;
}

TEST(PrinterDiscovery, MergesNodesIntoTheirDevicesInBusDeviceOrder)
{
    const UsbDeviceEntry laser = usbDevice("/sys/devices/a", "1", "12", "S12");
    const UsbDeviceEntry inkjet = usbDevice("/sys/devices/b", "1", "4");
    const UsbDeviceEntry libusbOnly = usbDevice("/sys/devices/c", "2", "3");
    const std::vector<LpNodeEntry> nodes{
        {"/dev/usb/lp10", laser}, {"/dev/usb/lp2", laser}, {"/dev/usb/lp1", inkjet}, {"/dev/usb/lp7", std::nullopt}};
    const std::vector<PrinterRecord> printers = mergePrinterEntries(nodes, {libusbOnly, laser, inkjet});
    ASSERT_EQ(printers.size(), 4u);
    EXPECT_EQ(printers[0].busDevice(), "001:004");
    EXPECT_EQ(printers[0].nodes, std::vector<std::string>{"/dev/usb/lp1"});
    EXPECT_EQ(printers[1].busDevice(), "001:012");
    EXPECT_EQ(printers[1].nodes, (std::vector<std::string>{"/dev/usb/lp2", "/dev/usb/lp10"}));
    EXPECT_EQ(printers[1].serial, "S12");
    EXPECT_EQ(printers[1].product, "Laser 12");
    EXPECT_EQ(printers[2].busDevice(), "002:003");
    EXPECT_TRUE(printers[2].nodes.empty());
    EXPECT_EQ(printers[3].busDevice(), "") << "a node without its device comes last";
    EXPECT_EQ(printers[3].nodes, std::vector<std::string>{"/dev/usb/lp7"});
}

TEST(PrinterSelector, ReadsEachForm)
{
    const struct {
        const char* text;
        PrinterSelector::Kind kind;
        std::string node;
        int bus, device;
        std::string serial;
    } cases[] = {
        {"/dev/usb/lp0", PrinterSelector::Kind::Node, "/dev/usb/lp0", 0, 0, ""},
        {"lp12", PrinterSelector::Kind::Node, "/dev/usb/lp12", 0, 0, ""},
        {"1:4", PrinterSelector::Kind::BusDevice, "", 1, 4, ""},
        {"001:004", PrinterSelector::Kind::BusDevice, "", 1, 4, ""},
        {"0003:127", PrinterSelector::Kind::BusDevice, "", 3, 127, ""},
        {"serial:AB:12", PrinterSelector::Kind::Serial, "", 0, 0, "AB:12"},
    };
    for (const auto& c : cases) {
        const PrinterSelector selector = parsePrinterSelector(c.text);
        EXPECT_EQ(selector.kind, c.kind) << c.text;
        EXPECT_EQ(selector.node, c.node) << c.text;
        EXPECT_EQ(selector.bus, c.bus) << c.text;
        EXPECT_EQ(selector.device, c.device) << c.text;
        EXPECT_EQ(selector.serial, c.serial) << c.text;
        EXPECT_EQ(selector.given, c.text);
    }
    for (const char* bad : {"", "lp", "lpx", "/dev/usb/lp", "/dev/lp0", "0:4", "1:0", "1:", ":4", "1:4:5", "-1:4",
                            "1:1000", "+1:4", "serial:", "usb:1:4", "lp0 "}) {
        try {
            parsePrinterSelector(bad);
            ADD_FAILURE() << "accepted: " << bad;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.status(), ExitStatus::Usage) << bad;
            EXPECT_NE(failure.message().find("use /dev/usb/lpN, lpN, BUS:DEV"), std::string::npos) << bad;
        }
    }
}

std::vector<PrinterRecord> attached()
{
    PrinterRecord laser;
    laser.nodes = {"/dev/usb/lp0"};
    laser.bus = 1;
    laser.device = 4;
    laser.manufacturer = "Acme";
    laser.product = "Laser 5";
    laser.serial = "X1";
    PrinterRecord libusbOnly;
    libusbOnly.bus = 3;
    libusbOnly.device = 2;
    libusbOnly.vendorId = "1234";
    libusbOnly.productId = "abcd";
    libusbOnly.serial = "Y2";
    return {laser, libusbOnly};
}

bool noNodes(const std::string&) { return false; }

// Returns the resolved path, or "exit N: message".
std::string resolved(const char* selector, const std::vector<PrinterRecord>& printers,
                     bool (*isCharacterDevice)(const std::string&) = noNodes)
{
    try {
        std::optional<PrinterSelector> parsed;
        if (selector != nullptr) parsed = parsePrinterSelector(selector);
        return resolvePrinter(parsed, printers, isCharacterDevice);
    } catch (const Failure& failure) {
        return "exit " + std::to_string(exitCode(failure.status())) + ": " + failure.message();
    }
}

TEST(PrinterSelector, ResolvesToTheNodeElseTheBusDevice)
{
    const std::vector<PrinterRecord> printers = attached();
    const std::string listing =
        "attached: /dev/usb/lp0 (001:004, Acme Laser 5, serial X1); 003:002 (1234:abcd, serial Y2)";
    const struct {
        const char* selector;
        std::string expected;
    } cases[] = {
        {"lp0", "/dev/usb/lp0"},
        {"/dev/usb/lp0", "/dev/usb/lp0"},
        {"1:4", "/dev/usb/lp0"},
        {"serial:X1", "/dev/usb/lp0"},
        {"003:002", "003:002"},
        {"serial:Y2", "003:002"},
        {"lp1", "exit 69: no attached printer matches --printer lp1; " + listing},
        {"1:2", "exit 69: no attached printer matches --printer 1:2; " + listing},
        {"serial:x1", "exit 69: no attached printer matches --printer serial:x1; " + listing},
        {nullptr, "exit 69: 2 printers are attached; choose one with --printer; " + listing},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(resolved(c.selector, printers), c.expected) << (c.selector ? c.selector : "(none)");
    }
    EXPECT_EQ(resolved(nullptr, {printers[1]}), "003:002");
    EXPECT_EQ(resolved(nullptr, {}), "exit 69: no printer is attached");
    EXPECT_EQ(resolved("lp0", {}), "exit 69: no printer is attached");

    std::vector<PrinterRecord> sameSerial = printers;
    sameSerial[1].serial = "X1";
    EXPECT_EQ(resolved("serial:X1", sameSerial).rfind("exit 69: 2 printers match --printer serial:X1; attached: ", 0),
              0u);
}

TEST(PrinterSelector, TakesANodeSysfsDoesNotKnowWhenItExists)
{
    const auto onlyLp5 = [](const std::string& path) { return path == "/dev/usb/lp5"; };
    EXPECT_EQ(resolved("lp5", attached(), +onlyLp5), "/dev/usb/lp5");
    EXPECT_EQ(resolved("/dev/usb/lp5", {}, +onlyLp5), "/dev/usb/lp5");
    EXPECT_EQ(resolved("lp6", {}, +onlyLp5), "exit 69: no printer is attached");
    // Only a node: a bus:device or serial the list does not hold is not guessed at.
    EXPECT_EQ(resolved("1:9", {}, [](const std::string&) { return true; }), "exit 69: no printer is attached");
}

}  // namespace
