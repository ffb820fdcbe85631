// The simulated printers' USB identity as a client finds it: through libudev
// (the lp node's usb_interface and usb_device parents, their sysfs attributes
// and udev properties; the printer interface itself when there is no lp node)
// and through libusb on the same USB device.
#include <gtest/gtest.h>

#include <sstream>

#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

TEST(UsbIdentity, LibudevFindsEachLpNodesUsbDeviceAndLibusbTheSameOne)
{
    // The default identity with `serial`.
    auto defaults = [](const std::string& serial) {
        return "c0de:0001 Corvel|Simulated Printer|" + serial + " udev=c0de:0001 Corvel|Simulated_Printer|" + serial;
    };
    // clang-format off
    const struct {
        const char* name;
        std::vector<std::string> simOptions;
        std::vector<std::string> lines;  // as e2e_udev_list prints them
    } cases[] = {
        {"defaults", {},
         {"/dev/usb/lp0 usb=- busnum=1 devnum=2 class=07 driver=usblp " + defaults("CVSIM0001")}},
        {"usbAndTwoNodes", {"--usb", "003:127", "--lp", "4", "--lp", "1"},
         {"/dev/usb/lp1 usb=/dev/bus/usb/003/127 busnum=3 devnum=127 class=07 driver=usblp " + defaults("CVSIM0001"),
          "/dev/usb/lp4 usb=- busnum=3 devnum=1 class=07 driver=usblp " + defaults("CVSIM0001-lp4"),
          "libusb 003/127 c0de:0001 Corvel|Simulated Printer|CVSIM0001"}},
        {"ownIdentity", {"--usb", "1:4", "--vendor-id", "4B8", "--product-id=0a1f", "--manufacturer", "ACME Corp.",
                         "--product", "Laser  Jet\\7", "--serial", "SN 42"},
         {"/dev/usb/lp0 usb=/dev/bus/usb/001/004 busnum=1 devnum=4 class=07 driver=usblp 04b8:0a1f ACME Corp.|Laser  Jet\\7|SN 42"
          " udev=04b8:0a1f ACME_Corp.|Laser_Jet_7|SN_42",
          "libusb 001/004 04b8:0a1f ACME Corp.|Laser  Jet\\7|SN 42"}},
        // As without usblp: the USB device and its interface, no driver, no node.
        {"noLp", {"--usb", "003:007", "--no-lp", "--serial", "SN 7"},
         {"- usb=/dev/bus/usb/003/007 busnum=3 devnum=7 class=07 driver=- c0de:0001 Corvel|Simulated Printer|SN 7"
          " udev=c0de:0001 Corvel|Simulated_Printer|SN_7",
          "libusb 003/007 c0de:0001 Corvel|Simulated Printer|SN 7"}},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        SimDir dir;
        const SimRun run = runSim(dir, c.simOptions, {UDEV_LIST_PATH});
        ASSERT_FALSE(run.timedOut);
        EXPECT_EQ(run.status, 0) << run.err;
        std::istringstream out(run.out);
        std::vector<std::string> lines;
        for (std::string line; std::getline(out, line);) lines.push_back(line);
        EXPECT_EQ(lines, c.lines);
    }
}

// Without an lp node the printer is still served over libusb, with the same
// state, log and faults; the lp node corvelcfg opens by default is missing.
TEST(NoLpNode, PrinterIsServedOverLibusbOnly)
{
    SimDir dir;
    dir.write("state.txt", "# corvelsim state v2\njoined=1\n28/08=\"HomeNet\\0\"\n");
    const std::vector<std::string> noLp = {"--usb", "003:007", "--no-lp"};
    const SimRun bus = runCorvelcfg(dir, noLp, {"-s", "003:007"});
    ASSERT_FALSE(bus.timedOut);
    EXPECT_EQ(bus.status, 0) << bus.err;
    EXPECT_EQ(bus.out, "HomeNet\n") << bus.err;
    ASSERT_EQ(bus.log.size(), 1u);
    EXPECT_EQ(logValue(bus.log[0], "route"), "usb");
    EXPECT_EQ(logValue(bus.log[0], "port"), "003:007");

    const SimRun node = runCorvelcfg(dir, noLp, {"-s"});
    ASSERT_FALSE(node.timedOut);
    EXPECT_NE(node.status, 0);
    EXPECT_TRUE(node.log.empty());

    // The printer goes away after its first answer: the second request finds
    // it gone, and corvelsim still ends with corvelcfg.
    std::vector<std::string> vanishing = noLp;
    vanishing.insert(vanishing.end(), {"--fault", "vanish=1"});
    const SimRun gone =
        runSim(dir, vanishing, {"/bin/sh", "-c", "\"$0\" -s 003:007 && ! \"$0\" -s 003:007", CORVELCFG_PATH});
    ASSERT_FALSE(gone.timedOut);
    EXPECT_EQ(gone.status, 0) << gone.err;
    EXPECT_EQ(gone.out, "HomeNet\n");
    ASSERT_EQ(gone.log.size(), 2u);
    EXPECT_TRUE(holds(gone.log[1], "\"vanish\"")) << gone.log[1];
}

// A printer that answers one byte at a time still answers completely, over
// the device node and over libusb, where each IN transfer carries one byte.
TEST(DripFault, AnswersByteByByteOnBothRoutes)
{
    SimDir dir;
    dir.write("state.txt", "# corvelsim state v2\njoined=1\n28/08=\"HomeNet\\0\"\n");
    const SimRun node = runCorvelcfg(dir, {"--fault", "drip=3"}, {"-s"});
    EXPECT_EQ(node.out, "HomeNet\n") << node.err;
    ASSERT_EQ(node.log.size(), 1u);
    EXPECT_TRUE(holds(node.log[0], "\"drip\"")) << node.log[0];

    const SimRun bus = runCorvelcfg(
        dir, {"--fault", "drip=3", "--usb", "001:004", "--usb-trace", dir.file("usb.trace")}, {"-s", "001:004"});
    EXPECT_EQ(bus.out, "HomeNet\n") << bus.err;
    ASSERT_EQ(bus.log.size(), 1u);
    const size_t answerBytes = logValue(bus.log[0], "answer").size() / 2;
    std::istringstream trace(dir.read("usb.trace"));
    size_t oneByteIns = 0;
    std::string what, endpoint;
    int bytes = 0;
    for (long long ms = 0; trace >> what >> endpoint >> bytes >> ms;) {
        EXPECT_TRUE(what != "in" || bytes == 1) << what << " " << bytes;
        oneByteIns += what == "in" && bytes == 1;
    }
    EXPECT_EQ(oneByteIns, answerBytes);
}

}  // namespace
}  // namespace e2e
