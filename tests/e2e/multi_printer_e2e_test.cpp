// Eight printers in one corvelsim, each configured by its own corvelctl run
// at the same time: each keeps its own settings, log and faults, and shows
// itself in "corvelctl list" with its own serial and bus:device.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>

#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

using nlohmann::json;

constexpr int kPrinters = 8;

std::string serialOf(int printer) { return "CVSIM000" + std::to_string(printer); }
std::string busDeviceOf(int printer)
{
    return "001:" + std::string(printer + 3 < 10 ? "00" : "0") + std::to_string(printer + 3);
}
std::string ssidOf(int printer) { return "Net-" + std::to_string(printer); }

struct Layout {
    const char* name;
    std::vector<std::string> simOptions;
    bool lpNodes;
};

void PrintTo(const Layout& layout, std::ostream* out) { *out << layout.name; }

class MultiPrinter : public ::testing::TestWithParam<Layout> {
protected:
    MultiPrinter()
    {
        std::filesystem::create_directory(dir.file("state"));
        std::filesystem::create_directory(dir.file("logs"));
    }

    // `script` run by /bin/sh under corvelsim with eight printers at 001:004 on.
    SimRun sim(const std::vector<std::string>& simOptions, const std::string& script)
    {
        std::vector<std::string> argv = {CORVELSIM_PATH,  "--speed", "1",           "--printers",      "8",
                                         "--usb",         "001:004", "--state-dir", dir.file("state"), "--log-dir",
                                         dir.file("logs")};
        argv.insert(argv.end(), GetParam().simOptions.begin(), GetParam().simOptions.end());
        argv.insert(argv.end(), simOptions.begin(), simOptions.end());
        argv.insert(argv.end(), {"--", "/bin/sh", "-c", script});
        return runCommand(dir, argv);
    }

    std::vector<std::string> logOf(int printer) const
    {
        std::vector<std::string> lines;
        std::istringstream log(dir.read("logs/" + serialOf(printer) + ".log"));
        for (std::string line; std::getline(log, line);) lines.push_back(line);
        return lines;
    }

    SimDir dir;
};

// Each printer's wifi run, all at once; printer 3 is silent, so its run
// gives up after a second.
TEST_P(MultiPrinter, EachPrinterKeepsItsOwnSettingsLogAndFaults)
{
    const std::string ctl = CORVELCTL_PATH;
    std::string script;
    for (int k = 1; k <= kPrinters; ++k) {
        script += "(" + ctl + " --printer serial:" + serialOf(k) + " wifi --ssid " + ssidOf(k) +
                  " --security none --json --timeout " + (k == 3 ? "1" : "30") + " >wifi-" + std::to_string(k) +
                  ".json 2>&1; echo $? >wifi-" + std::to_string(k) + ".status) & ";
    }
    script += "wait; " + ctl + " list --json >list.json";
    const SimRun run = sim({"--printer-fault", "3:silent"}, script);
    ASSERT_FALSE(run.timedOut);
    ASSERT_EQ(run.status, 0) << run.err;

    for (int k = 1; k <= kPrinters; ++k) {
        const std::string name = serialOf(k);
        const std::string state = dir.read("state/" + name + ".state");
        const std::vector<std::string> log = logOf(k);
        ASSERT_FALSE(log.empty()) << name;
        for (const std::string& line : log) {
            EXPECT_EQ(logValue(line, "serial"), name) << line;
            EXPECT_EQ(logValue(line, "route"), GetParam().lpNodes ? "lp" : "usb") << line;
            EXPECT_EQ(logValue(line, "port"), GetParam().lpNodes ? std::to_string(k - 1) : busDeviceOf(k)) << line;
            EXPECT_EQ(logValue(line, "faults"), k == 3 ? "[\"silent\"]" : "[]") << line;
            EXPECT_EQ(logValue(line, "answered"), k == 3 ? "false" : "true") << line;
        }
        for (int other = 1; other <= kPrinters; ++other) {
            if (other == k) continue;
            EXPECT_FALSE(holds(state, ssidOf(other) + "\\0")) << name << " holds " << ssidOf(other);
            for (const std::string& line : log) EXPECT_FALSE(holds(line, toHex(ssidOf(other)))) << name << ": " << line;
        }
        // The silent printer takes the settings too; it only never answers.
        EXPECT_TRUE(holds(state, "28/08=\"" + ssidOf(k) + "\\0\"")) << name << ":\n" << state;
        const std::string status = dir.read("wifi-" + std::to_string(k) + ".status");
        if (k == 3)
            EXPECT_NE(status, "0\n") << dir.read("wifi-3.json");
        else
            EXPECT_EQ(status, "0\n") << name << ": " << dir.read("wifi-" + std::to_string(k) + ".json");
    }

    // Each printer in the list once: its serial with its own bus:device (and lp node).
    const json list = json::parse(dir.read("list.json"), nullptr, false);
    ASSERT_TRUE(list.contains("printers")) << dir.read("list.json");
    ASSERT_EQ(list["printers"].size(), size_t(kPrinters)) << list.dump();
    std::set<std::string> serials, busDevices;
    for (const json& printer : list["printers"]) {
        const std::string serial = printer.value("serial", "");
        serials.insert(serial);
        busDevices.insert(printer.value("bus_device", ""));
        const int k = serial.empty() ? 0 : serial.back() - '0';
        EXPECT_EQ(printer.value("bus_device", ""), busDeviceOf(k)) << printer.dump();
        if (GetParam().lpNodes)
            EXPECT_EQ(printer.value("node", ""), "/dev/usb/lp" + std::to_string(k - 1)) << printer.dump();
        else
            EXPECT_TRUE(printer["node"].is_null()) << printer.dump();
    }
    EXPECT_EQ(serials.size(), size_t(kPrinters));
    EXPECT_EQ(busDevices.size(), size_t(kPrinters));

    // The next run starts each printer from its own state file.
    const SimRun again = sim({}, ctl + " --printer serial:" + serialOf(6) + " status --json");
    ASSERT_EQ(again.status, 0) << again.err;
    EXPECT_EQ(json::parse(again.out, nullptr, false).value("ssid", ""), ssidOf(6)) << again.out;
}

// A late answer waits in its own port's outbox: eight printers each a
// second late answer a read in about the time one does, not eight seconds.
TEST_P(MultiPrinter, LateAnswersOfSeveralPrintersOverlap)
{
    const std::string ctl = CORVELCTL_PATH;
    std::string script;
    for (int k = 1; k <= kPrinters; ++k)
        script += ctl + " --printer serial:" + serialOf(k) + " cert defaults --json >/dev/null & ";
    script += "wait";
    const auto start = std::chrono::steady_clock::now();
    const SimRun run = sim({"--fault", "late=1000"}, script);
    const auto tookMs =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
    ASSERT_EQ(run.status, 0) << run.err;
    for (int k = 1; k <= kPrinters; ++k) EXPECT_EQ(logOf(k).size(), 1u) << serialOf(k);
    EXPECT_LT(tookMs, 5000) << "one late answer takes 1 s; eight one after another 8 s";
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(
    Layouts, MultiPrinter,
    ::testing::Values(Layout{"lpNodes", {}, true},
                      // No lp node: every printer over its own USB device (libusb).
                      Layout{"usbOnly", {"--no-lp"}, false}),
    [](const ::testing::TestParamInfo<Layout>& info) { return info.param.name; });
// clang-format on

}  // namespace
}  // namespace e2e
