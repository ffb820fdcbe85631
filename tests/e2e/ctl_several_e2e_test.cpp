// corvelctl on several printers at once against corvelsim's several lp
// nodes (separate printers in sysfs, with serials CVSIM0001 and
// CVSIM0001-lpN, that share one state): one JSON array in the order named,
// headings for people, a failure element for a printer that fails, and the
// greatest status.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

using nlohmann::ordered_json;

const std::vector<std::string> kThreeNodes = {"--lp", "0", "--lp", "1", "--lp", "2"};
const std::string kWpa = " wifi --ssid Lab --security wpa2-psk --passphrase-stdin";

ordered_json jsonOf(const SimRun& run) { return ordered_json::parse(run.out, nullptr, false); }

// The keys of an element, in order.
std::string keysOf(const ordered_json& element)
{
    std::string keys;
    for (const auto& item : element.items()) keys += (keys.empty() ? "" : ",") + item.key();
    return keys;
}

// How many of the log's requests came in on /dev/usb/lpN.
int requestsOn(const SimRun& run, int node)
{
    int count = 0;
    for (const std::string& line : run.log) count += logValue(line, "port") == std::to_string(node) ? 1 : 0;
    return count;
}

struct Element {
    std::string printer;
    ordered_json serial;  // a string or null
    int exit;             // 0: the report's element
};

TEST(CtlSeveral, EachPrinterHasItsElementInTheOrderNamed)
{
    const std::string statusKeys = "printer,serial,ssid,connected,connection_state,ipv4,auth_8021x,certificate";
    const std::string wifiKeys = "printer,serial,ssid,security,accepted,plain_retry";
    const std::string failureKeys = "printer,serial,error,exit";
    // clang-format off
    const struct {
        const char* name;
        std::vector<std::string> simOptions;
        std::string line;
        int status;
        std::vector<Element> elements;
        std::string keys;  // of the elements that succeeded
        std::vector<int> requests;  // on lp0, lp1, lp2
    } cases[] = {
        {"allStatus", {}, "--all status", 0,
         {{"/dev/usb/lp0", "CVSIM0001", 0}, {"/dev/usb/lp1", "CVSIM0001-lp1", 0}, {"/dev/usb/lp2", "CVSIM0001-lp2", 0}},
         statusKeys, {6, 6, 6}},
        {"twoNamedStatus", {}, "--printer serial:CVSIM0001-lp2 status --printer lp0", 0,
         {{"/dev/usb/lp2", "CVSIM0001-lp2", 0}, {"/dev/usb/lp0", "CVSIM0001", 0}}, statusKeys, {6, 0, 6}},
        // Three names of one printer: it runs once, an array of one.
        {"sameTwiceRunsOnce", {}, "--printer lp1 --printer 1:3 --printer serial:CVSIM0001-lp1 status", 0,
         {{"/dev/usb/lp1", "CVSIM0001-lp1", 0}}, statusKeys, {0, 6, 0}},
        {"allWifi", {}, "--all" + kWpa, 0,
         {{"/dev/usb/lp0", "CVSIM0001", 0}, {"/dev/usb/lp1", "CVSIM0001-lp1", 0}, {"/dev/usb/lp2", "CVSIM0001-lp2", 0}},
         wifiKeys, {1, 1, 1}},
        // A printer not attached fails alone; the others are configured.
        {"oneNotFound", {}, "--printer lp1 --printer lp5" + kWpa, 69,
         {{"/dev/usb/lp1", "CVSIM0001-lp1", 0}, {"/dev/usb/lp5", nullptr, 69}}, wifiKeys, {0, 1, 0}},
        // Settings refused (1) by the printers found, one not found (69): the greater wins.
        {"greatestStatus", {"--fault", "reject-settings"}, "--printer lp5 --printer lp0 --printer lp2" + kWpa, 69,
         {{"/dev/usb/lp5", nullptr, 69}, {"/dev/usb/lp0", "CVSIM0001", 1}, {"/dev/usb/lp2", "CVSIM0001-lp2", 1}},
         "", {1, 0, 1}},
        {"allGoneAway", {"--fault", "vanish"}, "--all status", 69,
         {{"/dev/usb/lp0", "CVSIM0001", 69}, {"/dev/usb/lp1", "CVSIM0001-lp1", 69},
          {"/dev/usb/lp2", "CVSIM0001-lp2", 69}}, "", {1, 1, 1}},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        SimDir dir;
        std::vector<std::string> simOptions = kThreeNodes;
        simOptions.insert(simOptions.end(), c.simOptions.begin(), c.simOptions.end());
        const SimRun run = runCorvelctl(dir, simOptions, words(c.line + " --json"), "secret123\n");
        ASSERT_FALSE(run.timedOut);
        EXPECT_EQ(run.status, c.status) << run.err;
        EXPECT_EQ(occurrences(run.out, "\n"), 1) << "one line: " << run.out;
        const ordered_json result = jsonOf(run);
        ASSERT_TRUE(result.is_array()) << run.out;
        ASSERT_EQ(result.size(), c.elements.size()) << run.out;
        int failures = 0;
        for (std::size_t i = 0; i < c.elements.size(); ++i) {
            const Element& expected = c.elements[i];
            const ordered_json& element = result[i];
            EXPECT_EQ(element.value("printer", ""), expected.printer) << i;
            EXPECT_EQ(element["serial"], expected.serial) << i;
            if (expected.exit == 0) {
                EXPECT_EQ(keysOf(element), c.keys) << i;
                continue;
            }
            ++failures;
            EXPECT_EQ(keysOf(element), failureKeys) << i;
            EXPECT_EQ(element.value("exit", -1), expected.exit) << i;
            // The same message on standard error, under the printer's name.
            const std::string line = "corvelctl: " + expected.printer + ": " + element.value("error", "?") + "\n";
            EXPECT_TRUE(holds(run.err, line)) << run.err;
        }
        EXPECT_EQ(occurrences(run.err, "\n"), failures) << run.err;
        for (int node = 0; node < 3; ++node) EXPECT_EQ(requestsOn(run, node), c.requests[node]) << "lp" << node;
    }
}

TEST(CtlSeveral, PeopleSeeHeadingsAndLabelledTraces)
{
    SimDir dir;
    const SimRun run = runCorvelctl(dir, kThreeNodes, words("-v --printer lp2 --printer lp0 --printer lp9 status"));
    EXPECT_EQ(run.status, 69);
    const std::string block = "ssid:             -\nconnected:        no\nconnection_state: 1\n";
    EXPECT_EQ(run.out.rfind("/dev/usb/lp2 (serial CVSIM0001-lp2):\nprinter:          /dev/usb/lp2\n" + block, 0), 0u)
        << run.out;
    EXPECT_TRUE(holds(run.out, "CORVELSIM-0001\n\n/dev/usb/lp0 (serial CVSIM0001):\nprinter:          /dev/usb/lp0\n"))
        << run.out;
    EXPECT_EQ(occurrences(run.out, " (serial "), 2) << run.out;
    // Six reads a printer, each line with the printer's name first; the
    // printer not found has its one failure line.
    const std::vector<std::string> lines = [&] {
        std::vector<std::string> all;
        std::size_t start = 0;
        for (std::size_t end; (end = run.err.find('\n', start)) != std::string::npos; start = end + 1)
            all.push_back(run.err.substr(start, end - start));
        return all;
    }();
    ASSERT_EQ(lines.size(), 13u) << run.err;
    int lp0 = 0, lp2 = 0;
    for (const std::string& line : lines) {
        if (line.rfind("corvelctl: /dev/usb/lp0: read ", 0) == 0) ++lp0;
        if (line.rfind("corvelctl: /dev/usb/lp2: read ", 0) == 0) ++lp2;
    }
    EXPECT_EQ(lp0, 6) << run.err;
    EXPECT_EQ(lp2, 6) << run.err;
    EXPECT_TRUE(holds(run.err, "corvelctl: /dev/usb/lp9: no attached printer matches --printer lp9;")) << run.err;
}

// One printer named keeps today's object; a secret refused before any printer
// is talked to stays one error object (the refusals of the command line itself
// are the command-line tests').
TEST(CtlSeveral, OnePrinterAndEarlyFailuresAsBefore)
{
    SimDir dir;
    const SimRun one = runCorvelctl(dir, kThreeNodes, words("--printer lp1 status --json"));
    EXPECT_EQ(one.status, 0) << one.err;
    EXPECT_TRUE(jsonOf(one).is_object()) << one.out;
    EXPECT_EQ(keysOf(jsonOf(one)), "printer,ssid,connected,connection_state,ipv4,auth_8021x,certificate");

    const SimRun refused = runCorvelctl(dir, kThreeNodes, words("--all" + kWpa + " --json"), "short\n");
    EXPECT_EQ(refused.status, 65) << refused.err;
    EXPECT_TRUE(holds(refused.err, "8-63")) << refused.err;
    EXPECT_EQ(jsonOf(refused).value("exit", -1), 65) << refused.out;
    EXPECT_TRUE(refused.log.empty()) << "no printer heard anything";
}

}  // namespace
}  // namespace e2e
