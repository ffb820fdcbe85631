// The libusb route end to end: the real corvelcfg reaches corvelsim's printer
// on the simulated USB bus by bus:device, and every mode behaves as it does
// over the device node.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

// The same request, output, trace (answers included) and exit status as over
// /dev/usb/lp0, for a raw read whose answer arrives in three 16-byte packets
// (dumped as received); the modes' own paths are the device node's tests.
TEST(LibUsbRoute, BehavesAsOverTheDeviceNode)
{
    SimDir dir;
    dir.write("npa-request.hex", "A5 00 06 50 E0 D8 00 28 08");
    const std::string state = "# corvelsim state v2\n28/08=\"ABCDEFGHIJKLMNOPQRSTUVWXYZ012345\\0\"\n";
    dir.write("state.txt", state);
    const SimRun node = runCorvelcfg(dir, {"--usb-packet", "16"}, {"-npa", "-file", "npa-request.hex"});
    dir.write("state.txt", state);
    const SimRun bus =
        runCorvelcfg(dir, {"--usb-packet", "16", "--usb", "001:004"}, {"-npa", "-file", "npa-request.hex", "001:004"});
    ASSERT_FALSE(node.timedOut || bus.timedOut);
    EXPECT_EQ(bus.status, node.status) << bus.err;
    EXPECT_EQ(bus.out, node.out);
    EXPECT_EQ(bus.err, node.err);
    ASSERT_EQ(bus.log.size(), 1u);
    ASSERT_EQ(node.log.size(), 1u);
    EXPECT_EQ(logValue(bus.log[0], "raw"), logValue(node.log[0], "raw"));
    EXPECT_EQ(logValue(node.log[0], "route"), "lp");
    EXPECT_EQ(logValue(bus.log[0], "route"), "usb");
    EXPECT_EQ(logValue(bus.log[0], "port"), "001:004");
}

// "-s" reads up to 255 bytes; the answer is shorter. After it has arrived the
// connector waits once more for ten seconds, then the transport's quiet time
// (one-second waits until more than four seconds passed) ends the read. The
// trace shows each IN transfer the client gave up on, and how long it waited.
TEST(LibUsbRoute, ShortAnswerEndsAfterOneFurtherTenSecondWait)
{
    SimDir dir;
    dir.write("state.txt", "# corvelsim state v2\njoined=1\n28/08=\"HomeNet\\0\"\n");
    const SimRun bus = runCorvelcfg(dir, {"--usb", "001:004", "--usb-trace", dir.file("usb.trace")}, {"-s", "001:004"});
    EXPECT_EQ(bus.out, "HomeNet\n");
    std::istringstream trace(dir.read("usb.trace"));
    std::string kinds;  // first letters: out, in, discarded
    std::vector<long long> waitedMs;
    std::string what, endpoint, bytes;
    for (long long ms = 0; trace >> what >> endpoint >> bytes >> ms;) {
        kinds += what[0];
        waitedMs.push_back(ms);
    }
    // Four or five quiet waits, depending on where the second boundaries fall.
    ASSERT_TRUE(kinds == "oidddddd" || kinds == "oiddddd" || kinds == "oidddd") << kinds;
    std::vector<long long> quiet(waitedMs.begin() + 3, waitedMs.end());
    std::sort(quiet.begin(), quiet.end());
    EXPECT_GE(waitedMs[2], 5 * quiet[quiet.size() / 2])
        << "the first wait is the ten-second one, the others one second";
}

// A raw request of 100 bytes: a settings request with an 87-character SSID.
const std::string kHundredBytes = "A5006150E0DA012808000058" + std::string(87 * 2, '5') + "00";

// The device is found and claimed and the request leaves in pieces of the
// IN endpoint's packet size; otherwise the open failure is reported and
// nothing reaches the printer.
TEST(LibUsbRoute, ClaimsThePrinterAndWritesInPacketsOrReportsTheFailure)
{
    const struct {
        const char* name;
        std::vector<std::string> simOptions;
        std::string path;
        std::string bulkOut;  // sizes of the bulk transfers that carried the request ("" = not opened)
        int answerBytes = 4;  // what the utility reads of the settings answer
    } cases[] = {
        {"packet30", {"--usb", "001:004", "--usb-packet", "30"}, "001:004", "30,30,30,10"},
        // The first interface announces 8-byte packets, the claimed one's OUT
        // endpoint 512: only its IN endpoint's 64 cuts the request.
        {"secondInterfaceClaimed", {"--usb", "001:004", "--usb-layout", "second-claims"}, "001:004", "64,36"},
        // Without a bulk IN endpoint the packet size stays 32, and no answer can be read.
        {"noBulkIn", {"--usb", "001:004", "--usb-layout", "no-bulk-in", "--speed", "50"}, "001:004", "32,32,32,4", 0},
        {"noPrinterInterface", {"--usb", "001:004", "--usb-layout", "no-printer"}, "001:004", ""},
        {"noSuchDevice", {"--usb", "001:004"}, "001:005", ""},
        {"noSuchBus", {"--usb", "001:004"}, "002:004", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        SimDir dir;
        dir.write("npa-request.hex", kHundredBytes);
        const SimRun bus = runCorvelcfg(dir, c.simOptions, {"-npa", "-file", "npa-request.hex", c.path});
        ASSERT_FALSE(bus.timedOut);
        EXPECT_EQ(bus.status, 0);
        const bool opens = !c.bulkOut.empty();
        const std::string failure = "D [CVL] Failed to open usb device '" + c.path + "'!\n";
        EXPECT_EQ(bus.err.find(failure) != std::string::npos, !opens) << bus.err;
        EXPECT_EQ(bus.log.size(), opens ? 1u : 0u);
        if (!opens || bus.log.empty()) continue;
        EXPECT_EQ(logValue(bus.log[0], "raw").size(), 200u) << "the request is 100 bytes";
        EXPECT_EQ(logValue(bus.log[0], "bulk_out"), c.bulkOut);
        EXPECT_TRUE(holds(bus.err, "D [CVL] sendNPA response (" + std::to_string(c.answerBytes) + " bytes)"))
            << bus.err;
    }
}

}  // namespace
}  // namespace e2e
