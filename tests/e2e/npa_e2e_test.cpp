// "-npa" end to end: the real corvelcfg sends a raw packet from a file to
// corvelsim, unchanged, and dumps what it kept of the answer.
#include <gtest/gtest.h>

#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

SimRun runNpa(const std::vector<std::string>& simOptions, const std::string& requestHex,
              const std::vector<std::string>& extraArgs = {})
{
    SimDir dir;
    // A name with a dash: any argument without one is taken for the device node.
    dir.write("npa-request.hex", requestHex);
    std::vector<std::string> args = {"-npa", "-file", "npa-request.hex"};
    args.insert(args.end(), extraArgs.begin(), extraArgs.end());
    return runCorvelcfg(dir, simOptions, args);
}

const std::string kReadSsid = "A5 00 06 50 E0 D8 00 28 08";
const std::string kWrappedSsid = "A5 00 0F 50 E0 63 02 00 09 A5 00 06 50 E0 D8 00 28 08";
// The answer to a read of 28/08 with no SSID set, as the utility keeps it
// (the bytes after A5, length and flags).
const std::string kEmptySsid = "E0 D8 00 28 08 00 00";

// The real device node, its waits, the answers corvelsim gives and the frame
// rules: noise before the start byte skipped, split packets joined, a packet
// flagged bit 7 ending or dropped, a packet cut short dropped.
TEST(Npa, SendsTheFileUnchangedAndDumpsWhatTheFrameRulesKeep)
{
    // clang-format off
    const struct {
        const char* name;
        std::vector<std::string> simOptions;
        std::string request;  // as hex, "A5 00 ..."
        std::string kept;     // what the utility keeps of the answer (at most 16 bytes), the same way
        std::vector<std::string> device = {};  // the node, when not the first
    } cases[] = {
        {"plain", {}, kReadSsid, kEmptySsid},
        // Envelope command, inner length, the inner answer whole.
        {"wrapped", {}, kWrappedSsid, "E0 63 02 00 0B A5 00 08 50 E0 D8 00 28 08 00 00"},
        {"unknownRequestRefused", {}, "A5 00 04 50 12 34 56", ""},
        {"splitWithNoise", {"--fault", "split=3", "--fault", "noise=2"}, kReadSsid, kEmptySsid},
        {"bit7AfterEnds", {"--fault", "bit7=after"}, kReadSsid, kEmptySsid},
        {"bit7InsteadDropped", {"--fault", "bit7=instead"}, kReadSsid, ""},
        {"truncatedDropped", {"--fault", "truncate=3"}, kReadSsid, ""},
        {"lateWithinLimit", {"--fault", "late=150"}, kReadSsid, kEmptySsid},
        {"furtherNodeServed", {"--lp", "0", "--lp", "3"}, kReadSsid, kEmptySsid, {"/dev/usb/lp3"}},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const Bytes request = bytesFromHex(c.request), kept = bytesFromHex(c.kept);
        SimRun run = runNpa(c.simOptions, c.request, c.device);
        ASSERT_FALSE(run.timedOut);
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.out, "npaFileData: (" + std::to_string(2 * request.size()) + " bytes) " + toHex(request) + "\n");
        EXPECT_EQ(run.log.size(), 1u);
        EXPECT_EQ(logValue(run.log.empty() ? "" : run.log[0], "raw"), toHex(request));
        // The trace dumps both, 16 bytes a line ("%02X " each, then "|" and the text).
        const std::string requestDump = request.size() > 16 ? c.request.substr(0, 47) + " |" : c.request + " |";
        EXPECT_TRUE(holds(run.err, "D [CVL] NPA data: " + std::to_string(request.size()) + " bytes\n" + requestDump))
            << run.err;
        EXPECT_TRUE(holds(run.err, "D [CVL] sendNPA response (" + std::to_string(kept.size()) + " bytes)\n" +
                                       (kept.empty() ? "" : c.kept + " |")))
            << run.err;
    }
}

}  // namespace
}  // namespace e2e
