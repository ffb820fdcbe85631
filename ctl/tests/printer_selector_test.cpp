// Printer discovery's merging and the --printer selector, over record lists
// (no sysfs involved).
#include "ctl/Failure.h"
#include "ctl/PrinterDiscovery.h"
#include "ctl/PrinterSelector.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace corvelctl;

namespace {

UsbDeviceEntry usbDevice(const std::string& sysName, const std::string& bus, const std::string& device,
                         std::optional<std::string> serial = std::nullopt)
{
    UsbDeviceEntry entry;
    entry.sysName = sysName;
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
    const UsbDeviceEntry laser = usbDevice("1-2", "1", "12", "S12");
    const UsbDeviceEntry inkjet = usbDevice("1-1", "1", "4");
    const UsbDeviceEntry libusbOnly = usbDevice("2-1", "2", "3");
    const std::vector<LpNodeEntry> nodes{
        {"/dev/usb/lp10", laser}, {"/dev/usb/lp2", laser}, {"/dev/usb/lp1", inkjet}, {"/dev/usb/lp7", std::nullopt}};
    std::vector<std::string> merged;
    for (const PrinterRecord& printer : mergePrinterEntries(nodes, {libusbOnly, laser, inkjet})) {
        merged.push_back(printer.busDevice() + " " + printer.product.value_or("-") + " " +
                         printer.serial.value_or("-"));
        for (const std::string& node : printer.nodes) merged.back() += " " + node;
    }
    // A node without its device comes last.
    EXPECT_EQ(merged, (std::vector<std::string>{"001:004 Laser 4 - /dev/usb/lp1",
                                                "001:012 Laser 12 S12 /dev/usb/lp2 /dev/usb/lp10", "002:003 Laser 3 -",
                                                " - - /dev/usb/lp7"}));
}

TEST(PrinterDiscovery, FindsTheUsbDeviceOfAnLpNodeFromItsSysfsPath)
{
    const struct {
        const char* path;
        const char* device;  // "" when none
    } cases[] = {
        {"../../devices/corvelsim/usb1/1-1/1-1:1.0/usbmisc/lp0", "1-1"},
        // The PCI folders above hold colons; a hub's port is a dotted path.
        {"../../devices/pci0000:00/0000:00:14.0/usb3/3-2/3-2.4/3-2.4:1.0/usbmisc/lp12", "3-2.4"},
        // Not on USB, or an interface outside its device's folder.
        {"../../devices/platform/parport0/usbmisc/lp1", ""},
        {"../../devices/usb1/1-1/1-2:1.0/usbmisc/lp0", ""},
        {":1.0/usbmisc/lp0", ""},
    };
    for (const auto& c : cases) EXPECT_EQ(usbDeviceOfNode(c.path).value_or(""), c.device) << c.path;
}

TEST(PrinterDiscovery, TakesTheNodeFromTheUeventDevname)
{
    EXPECT_EQ(devNodeOfUevent("MAJOR=180\nMINOR=0\nDEVNAME=usb/lp0\n"), "/dev/usb/lp0");  // as the kernel writes it
    EXPECT_EQ(devNodeOfUevent("SUBSYSTEM=usbmisc\nDEVNAME=/dev/usb/lp3"), "/dev/usb/lp3");
    EXPECT_EQ(devNodeOfUevent("MAJOR=180\nXDEVNAME=usb/lp0\nDEVNAME=\n"), "");
    EXPECT_EQ(devNodeOfUevent(""), "");
}

TEST(PrinterSelector, ReadsEachForm)
{
    const struct {
        const char* text;
        std::string read;  // kind, node, bus:device, serial
    } cases[] = {
        {"/dev/usb/lp0", "0 /dev/usb/lp0 0:0 "},
        {"lp12", "0 /dev/usb/lp12 0:0 "},
        {"1:4", "1  1:4 "},
        {"001:004", "1  1:4 "},
        {"0003:127", "1  3:127 "},
        {"serial:AB:12", "2  0:0 AB:12"},
    };
    for (const auto& c : cases) {
        const PrinterSelector s = parsePrinterSelector(c.text);
        EXPECT_EQ(std::to_string(int(s.kind)) + " " + s.node + " " + std::to_string(s.bus) + ":" +
                      std::to_string(s.device) + " " + s.serial,
                  c.read);
        EXPECT_EQ(s.given, c.text);
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
    std::vector<PrinterRecord> sameSerial = printers;
    sameSerial[1].serial = "X1";
    const auto onlyLp5 = [](const std::string& path) { return path == "/dev/usb/lp5"; };
    const auto everyNode = [](const std::string&) { return true; };
    const struct {
        const char* selector;
        std::vector<PrinterRecord> printers;
        std::string expected;
        bool (*isCharacterDevice)(const std::string&) = noNodes;
    } cases[] = {
        {"lp0", printers, "/dev/usb/lp0"},
        {"/dev/usb/lp0", printers, "/dev/usb/lp0"},
        {"1:4", printers, "/dev/usb/lp0"},
        {"serial:X1", printers, "/dev/usb/lp0"},
        {"003:002", printers, "003:002"},
        {"serial:Y2", printers, "003:002"},
        {"1:2", printers, "exit 69: no attached printer matches --printer 1:2; " + listing},
        {"serial:x1", printers, "exit 69: no attached printer matches --printer serial:x1; " + listing},
        {"serial:X", printers, "exit 69: no attached printer matches --printer serial:X; " + listing},
        {nullptr, printers, "exit 69: 2 printers are attached; choose one with --printer; " + listing},
        {nullptr, {printers[1]}, "003:002"},
        {nullptr, {}, "exit 69: no printer is attached"},
        {"lp0", {}, "exit 69: no printer is attached"},
        {"serial:X1", sameSerial,
         "exit 69: 2 printers match --printer serial:X1; attached: /dev/usb/lp0 (001:004, Acme Laser 5, serial X1); "
         "003:002 (1234:abcd, serial X1)"},
        // A node sysfs does not know is taken when it exists; a bus:device
        // or serial the list does not hold is not guessed at.
        {"lp5", printers, "/dev/usb/lp5", +onlyLp5},
        {"/dev/usb/lp5", {}, "/dev/usb/lp5", +onlyLp5},
        {"lp6", {}, "exit 69: no printer is attached", +onlyLp5},
        {"1:9", {}, "exit 69: no printer is attached", +everyNode},
    };
    for (const auto& c : cases)
        EXPECT_EQ(resolved(c.selector, c.printers, c.isCharacterDevice), c.expected) << (c.selector ? c.selector : "");
}

// The printers of a run on several, each "path serial" or "path !exit", in
// the order they run; or "exit N" when the run cannot start at all.
std::string resolvedSeveral(const std::vector<std::string>& selectors, bool all,
                            const std::vector<PrinterRecord>& printers)
{
    const auto onlyLp5 = [](const std::string& path) { return path == "/dev/usb/lp5"; };
    try {
        std::vector<PrinterSelector> parsed;
        for (const std::string& selector : selectors) parsed.push_back(parsePrinterSelector(selector));
        std::string text;
        for (const PrinterTarget& target : resolvePrinters(parsed, all, printers, onlyLp5)) {
            text += (text.empty() ? "" : ", ") + target.path + " ";
            if (target.notFound) {
                text += "!" + std::to_string(exitCode(target.notFound->status()));
            } else {
                text += target.serial.value_or("-");
            }
        }
        return text;
    } catch (const Failure& failure) {
        return "exit " + std::to_string(exitCode(failure.status()));
    }
}

TEST(PrinterSelector, ResolvesSeveralOnceEachInTheOrderNamed)
{
    const std::vector<PrinterRecord> printers = attached();
    const struct {
        std::vector<std::string> selectors;
        bool all;
        std::vector<PrinterRecord> printers;
        std::string expected;
    } cases[] = {
        {{}, true, printers, "/dev/usb/lp0 X1, 003:002 Y2"},
        {{}, true, {printers[1]}, "003:002 Y2"},
        {{}, true, {}, "exit 69"},
        {{"serial:Y2", "lp0"}, false, printers, "003:002 Y2, /dev/usb/lp0 X1"},
        // One printer by three names runs once, where it was first named.
        {{"3:2", "lp0", "serial:Y2", "003:002"}, false, printers, "003:002 Y2, /dev/usb/lp0 X1"},
        // What is not found fails on its own; a node sysfs does not know runs without a serial.
        {{"lp0", "serial:Z9", "lp7", "lp5", "serial:Z9"},
         false,
         printers,
         "/dev/usb/lp0 X1, serial:Z9 !69, /dev/usb/lp7 !69, /dev/usb/lp5 -"},
        {{"lp0", "1:4"}, false, {}, "/dev/usb/lp0 !69, 1:4 !69"},
    };
    for (const auto& c : cases) {
        std::string line = c.all ? "--all" : "";
        for (const std::string& selector : c.selectors) line += " " + selector;
        EXPECT_EQ(resolvedSeveral(c.selectors, c.all, c.printers), c.expected) << line;
    }
}

}  // namespace
