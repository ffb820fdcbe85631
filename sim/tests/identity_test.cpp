// The printer's USB identity as its options set it, the descriptors libusb
// reads, where each printer sits on the bus, and the drip fault's writes.
#include <gtest/gtest.h>

#include <cstdio>

#include "sim/devices/PrinterSysfs.h"
#include "sim/devices/UsbPrinterDevice.h"
#include "sim/printer/Faults.h"
#include "sim/process/SimOptions.h"
#include "sim/wire/NpaPacket.h"

namespace corvelsim {
namespace {

// The options' error, or what they set: "vendor:product serial lp-nodes".
std::string parsed(std::vector<const char*> args)
{
    args.insert(args.begin(), "corvelsim");
    SimOptions options;
    std::string error;
    if (!parseOptions(int(args.size()), args.data(), options, error)) return error;
    char ids[16];
    std::snprintf(ids, sizeof ids, "%04X:%04X", options.usb.identity.vendorId, options.usb.identity.productId);
    std::string result = ids + (" " + options.usb.identity.serial) + (options.noLp ? " no-lp" : "");
    for (const int lp : options.lpNumbers) result += " lp" + std::to_string(lp);
    return result;
}

// Hex ids and printable text; --no-lp leaves the printer without an lp node,
// needs the USB device that libusb reaches and cannot go with --lp.
TEST(SimOptions, TakeTheIdentityAndTheNodesAndRefuseTheRest)
{
    const std::string longest(kMaxUsbTextLength, 'x'), tooLong = longest + "y";
    const std::string text = " needs 1 to 64 printable ASCII characters", hex = " needs 1 to 4 hex digits";
    const std::string conflict = "--no-lp and --lp cannot go together: --no-lp attaches no lp node";
    // clang-format off
    const struct {
        std::vector<const char*> args;
        std::string result;
    } cases[] = {
        {{}, "C0DE:0001 CVSIM0001 lp0"},
        {{"--vendor-id", "4B8", "--product-id=0a1f", "--serial", "X 1\\"}, "04B8:0A1F X 1\\ lp0"},
        {{"--vendor-id", "f"}, "000F:0001 CVSIM0001 lp0"},
        {{"--serial", longest.c_str()}, "C0DE:0001 " + longest + " lp0"},
        {{"--vendor-id", "12345"}, "--vendor-id" + hex},
        {{"--product-id", "0x12"}, "--product-id" + hex},
        {{"--vendor-id="}, "--vendor-id" + hex},
        {{"--product-id", "-1"}, "--product-id" + hex},
        {{"--serial", tooLong.c_str()}, "--serial" + text},
        {{"--manufacturer="}, "--manufacturer" + text},
        {{"--product", "tab\there"}, "--product" + text},
        {{"--manufacturer", "Caf\xC3\xA9"}, "--manufacturer" + text},
        {{"--usb", "3:7", "--no-lp"}, "C0DE:0001 CVSIM0001 no-lp"},
        {{"--no-lp", "--usb=003:007"}, "C0DE:0001 CVSIM0001 no-lp"},
        {{"--lp", "2"}, "C0DE:0001 CVSIM0001 lp2"},
        {{"--no-lp"}, "--no-lp needs --usb BUS:DEV: without an lp node libusb is the only way to the printer"},
        {{"--usb", "3:7", "--no-lp", "--lp", "0"}, conflict},
        {{"--lp=1", "--no-lp"}, conflict},
        {{"--usb", "3:7", "--no-lp=1"}, "--no-lp takes no value"},
    };
    // clang-format on
    for (const auto& c : cases) EXPECT_EQ(parsed(c.args), c.result) << (c.args.empty() ? "" : c.args[0]);
}

// The device descriptor names the ids and the three strings, and each string
// descriptor libusb asks for (language list first) holds its text.
TEST(UsbDescriptors, CarryTheIdentity)
{
    UsbDeviceOptions usb;
    usb.identity.vendorId = 0x04B8;
    usb.identity.productId = 0x0A1F;
    usb.identity.manufacturer = "ACME";
    usb.identity.product = "P";
    usb.identity.serial = "S1";
    const Bytes device = usbDescriptors(usb);
    EXPECT_EQ(toHex(Bytes(device.begin() + 8, device.begin() + 18)), "B8041F0A000101020301");

    // clang-format off
    const struct { unsigned index; const char* descriptor; } cases[] = {
        {0, "04030904"},
        {1, "0A03410043004D004500"},
        {2, "04035000"},
        {3, "060353003100"},
        {4, ""},
    };
    // clang-format on
    for (const auto& c : cases) EXPECT_EQ(toHex(usbStringDescriptor(usb.identity, c.index)), c.descriptor) << c.index;
}

// Each lp node is a printer of its own; the libusb route reaches the first,
// and device numbers go on from there, wrapping within 1..127.
TEST(PlacePrinters, GivesEachPrinterItsDeviceAndSerial)
{
    // clang-format off
    const struct {
        std::vector<int> lps;
        int bus, device;
        std::vector<std::string> placed;  // "lp bus:device port serial"
    } cases[] = {
        {{0}, 0, 0, {"0 1:2 1 SN"}},
        {{0, 3}, 0, 0, {"0 1:2 1 SN", "3 1:3 2 SN-lp3"}},
        {{2, 5}, 3, 127, {"2 3:127 1 SN", "5 3:1 2 SN-lp5"}},
        {{kNoLpNode}, 3, 7, {"-1 3:7 1 SN"}},
    };
    // clang-format on
    for (const auto& c : cases) {
        std::vector<std::string> placed;
        for (const PrinterPlacement& p : placePrinters(c.lps, c.bus, c.device, "SN"))
            placed.push_back(std::to_string(p.lp) + " " + std::to_string(p.bus) + ":" + std::to_string(p.device) + " " +
                             std::to_string(p.port) + " " + p.serial);
        EXPECT_EQ(placed, c.placed);
    }
}

// drip sends the very bytes the other faults left, one per write and MS
// apart, from the moment a late answer would have gone out.
TEST(Faults, DripSendsOneByteAtATime)
{
    const Bytes answer = makePacket(0x50, {0xE0, 0xD8, 0x00, 0x28, 0x08, 0x00, 0x00});
    // clang-format off
    const struct { std::vector<const char*> faults; int firstMs, gapMs; } cases[] = {
        {{"drip=7"}, 0, 7},
        {{"drip=1", "late=30", "noise=2"}, 30, 1},
        {{"drip=10000", "split"}, 0, 10000},
    };
    // clang-format on
    std::string error;
    for (const auto& c : cases) {
        FaultSet faults;
        for (const char* fault : c.faults) ASSERT_TRUE(addFault(faults, fault, error)) << error;
        const Delivery delivery = deliver(answer, faults);
        EXPECT_NE(std::find(delivery.applied.begin(), delivery.applied.end(), "drip"), delivery.applied.end());
        const std::vector<TimedWrite> writes = writesOf(delivery);
        ASSERT_EQ(writes.size(), delivery.bytes.size()) << c.faults[0];
        for (size_t i = 0; i < writes.size(); ++i) {
            EXPECT_EQ(writes[i].atMs, c.firstMs + int(i) * c.gapMs) << c.faults[0] << " write " << i;
            EXPECT_EQ(writes[i].bytes, Bytes{delivery.bytes[i]}) << c.faults[0] << " write " << i;
        }
    }
    // Without drip everything goes in one write; silence writes nothing.
    FaultSet late;
    ASSERT_TRUE(addFault(late, "late=5", error));
    const std::vector<TimedWrite> once = writesOf(deliver(answer, late));
    ASSERT_EQ(once.size(), 1u);
    EXPECT_EQ(once[0].atMs, 5);
    EXPECT_EQ(once[0].bytes, answer);
    FaultSet silent;
    ASSERT_TRUE(addFault(silent, "silent", error) && addFault(silent, "drip=3", error));
    EXPECT_TRUE(writesOf(deliver(answer, silent)).empty());
    // The value is required and bounded.
    for (const char* bad : {"drip", "drip=0", "drip=10001", "drip=x"})
        EXPECT_FALSE(addFault(silent, bad, error)) << bad;
}

}  // namespace
}  // namespace corvelsim
