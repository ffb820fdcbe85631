// The run driver against a configurator and certificate processor that only
// record what they are asked and answer with scripted results.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "app/Application.h"
#include "tests/support/TempFile.h"

namespace {

using Calls = std::vector<std::string>;

// Records every call of the run driver and answers with scripted results.
struct FakeTargets : RunTargets {
    Calls calls;
    std::map<std::string, std::deque<int>> results;  // per operation, in order; 0 once used up
    std::vector<uint8_t> sentBytes;
    int sentTimeLimit = -1;
    ConfigDetails seenConfig;  // the record as the configurator or processor received it
    std::string out, err;      // what the run printed

    int answer(const std::string& operation)
    {
        calls.push_back(operation);
        std::deque<int>& queue = results[operation];
        const int result = queue.empty() ? 0 : queue.front();
        if (!queue.empty())
            queue.pop_front();
        return result;
    }
    std::unique_ptr<ConfiguratorPort> createConfigurator(ConfigDetails& config) override;
    int processCertificateCommand(const std::string& mode, ConfigDetails& config) override
    {
        seenConfig = config;
        return answer("cert " + mode);
    }
};

class FakeConfigurator : public ConfiguratorPort {
public:
    explicit FakeConfigurator(FakeTargets& log) : m_Log(log) {}
    ~FakeConfigurator() override { m_Log.calls.push_back("~configurator"); }
    void setPassThrough(bool on) override { m_Log.calls.push_back(on ? "passThrough(true)" : "passThrough(false)"); }
    int basicConfig() override { return m_Log.answer("basicConfig"); }
    int advancedConfig() override { return m_Log.answer("advancedConfig"); }
    int configurePrinter() override { return m_Log.answer("configurePrinter"); }
    int resetPrinter() override { return m_Log.answer("resetPrinter"); }
    int getIPAddress() override { return m_Log.answer("getIPAddress"); }
    int waitForConnection() override { return m_Log.answer("waitForConnection"); }
    int pollDeviceStatus() override { return m_Log.answer("pollDeviceStatus"); }
    int showSSID() override { return m_Log.answer("showSSID"); }
    int queryAuthStatus() override { return m_Log.answer("queryAuthStatus"); }
    int queryCertSettings() override { return m_Log.answer("queryCertSettings"); }
    int sendNPA(const uint8_t* bytes, int32_t length, int timeLimitSeconds) override
    {
        m_Log.sentBytes.assign(bytes, bytes + length);
        m_Log.sentTimeLimit = timeLimitSeconds;
        return m_Log.answer("sendNPA");
    }

private:
    FakeTargets& m_Log;
};

std::unique_ptr<ConfiguratorPort> FakeTargets::createConfigurator(ConfigDetails& config)
{
    calls.push_back("createConfigurator");
    seenConfig = config;
    return std::make_unique<FakeConfigurator>(*this);
}

int runWith(FakeTargets& targets, std::vector<std::string> args)
{
    args.insert(args.begin(), "corvelcfg");
    std::vector<const char*> argv;
    for (const std::string& a : args)
        argv.push_back(a.c_str());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = runCorvelcfg(static_cast<int>(argv.size()), argv.data(), targets);
    targets.out = testing::internal::GetCapturedStdout();
    targets.err = testing::internal::GetCapturedStderr();
    return status;
}

TEST(Usage, PrintedWithoutArgumentsAndForDashH)
{
    const char* const usage =
        "\n  corvelcfg\n"
        "\tConfigures printer to connect to other wireless devices.\n"
        "\n  USAGE:\n"
        "        corvelcfg --ssid=\"<SSID>\" --mode=\"[Ad-hoc|Managed]\" --security=\"[None|WEP|WPA|WPA2|802.1x]\" /\n"
        "        --channel=\"[1-6]\" --passwd=\"<password>\" [USB_PATH]\n"
        "\n  OPTIONS:\n"
        "      --ssid          Name of the network you want to connect.\n"
        "      --mode          Type of connection.\n"
        "      --security      Security of the network you are connecting.\n"
        "      --channel       Channel of the ad-hoc network you are connecting.\n"
        "      --password      Password of the network if security is equal to None\n"
        "\n      -h              displays this help.\n"
        "      USB_PATH        path of the usb where the printer you want to configure is connected.\n"
        "\n";
    for (const std::vector<std::string>& args : {std::vector<std::string>{}, {"-h"}}) {
        FakeTargets targets;
        EXPECT_EQ(runWith(targets, args), 0);
        EXPECT_EQ(targets.out, usage);
        // Without arguments no configurator is made, so no transport reference is taken.
        EXPECT_EQ(targets.calls, args.empty() ? Calls() : Calls({"createConfigurator", "~configurator"}));
    }
}

TEST(ModeTable, RefusedFirstAttemptIsRepeatedOncePlainWhereTheModeAllows)
{
    const struct {
        const char* mode;
        const char* operation;
        bool retries;
    } modes[] = {
        {"-r", "resetPrinter", false},      {"-c", "basicConfig", true},        {"-ca", "advancedConfig", true},
        {"-ip", "getIPAddress", true},      {"-t", "waitForConnection", true},  {"-a", "pollDeviceStatus", false},
        {"-s", "showSSID", true},           {"-802s", "queryAuthStatus", true}, {"-cer", "queryCertSettings", true},
        {"-npa", "sendNPA", false},
    };
    for (const auto& m : modes) {
        FakeTargets targets;
        targets.results[m.operation] = {-1, -1, 0};  // a second refusal is final: no third attempt
        const int status = runWith(targets, {m.mode});
        Calls expected{"createConfigurator", m.operation};
        if (m.retries)
            expected.insert(expected.end(), {"passThrough(false)", m.operation});
        expected.push_back("~configurator");
        EXPECT_EQ(targets.calls, expected) << m.mode;
        EXPECT_EQ(status, 255) << m.mode;  // -1 leaves the process with its low eight bits
    }
}

// Results other than a refusal are final; certificate commands and unknown modes bypass the table.
TEST(ModeTable, OtherResultsAndModesOutsideTheTable)
{
    const struct {
        std::vector<std::string> args;
        const char* operation;
        int result;
        Calls expectedCalls;
        int expectedStatus;
    } cases[] = {
        {{"-c"}, "basicConfig", 1, {"createConfigurator", "basicConfig", "~configurator"}, 1},
        {{"-icer"}, "cert -icer", 3, {"cert -icer"}, 3},
        {{"-rcerdefs"}, "cert -rcerdefs", 3, {"cert -rcerdefs"}, 3},
        {{"-csr"}, "cert -csr", -1, {"cert -csr"}, 255},
        // An unknown mode runs the full configuration and succeeds whatever it returns.
        {{"--ssid=Home", "/dev/usb/lp1"}, "configurePrinter", -1,
         {"createConfigurator", "configurePrinter", "~configurator"}, 0},
    };
    for (const auto& c : cases) {
        FakeTargets targets;
        targets.results[c.operation] = {c.result};
        EXPECT_EQ(runWith(targets, c.args), c.expectedStatus) << c.args[0];
        EXPECT_EQ(targets.calls, c.expectedCalls) << c.args[0];
    }
}

TEST(FormChoice, TheModeDecidesHowTheRecordIsFilled)
{
    const TempFile settings("--ssid=\"Office Net\"\n");
    const struct {
        std::vector<std::string> args;
        const char* ssid;
        const char* usbPath;
    } cases[] = {
        {{"-ca", "--ssid=net", "2:5"}, "net", "2:5"},  // option form
        {{"-icer", "--ssid=net", "2:5"}, "net", "2:5"},
        {{"-c", "-file", settings.path, "/dev/usb/lp5", "--ssid=ignored"}, "Office Net", "/dev/usb/lp5"},
        {{"-csr", "-file", settings.path}, "Office Net", "/dev/usb/lp0"},
        {{"-npa", "--ssid=net", "/dev/usb/lp2"}, "", "/dev/usb/lp0"},  // nothing at all
        {{"-s", "--ssid=net", "/dev/usb/lp2"}, "", "/dev/usb/lp2"},    // the path only
        {{"whatever", "--ssid=net", "/dev/usb/lp2"}, "", "/dev/usb/lp2"},
    };
    for (const auto& c : cases) {
        FakeTargets targets;
        runWith(targets, c.args);
        EXPECT_EQ(targets.seenConfig.ssid, c.ssid) << c.args[0] << " " << c.args[1];
        EXPECT_EQ(targets.seenConfig.usbPath, c.usbPath) << c.args[0] << " " << c.args[1];
    }
}

TEST(FormChoice, UnreadableInputFileFailsBeforeAnythingIsCreated)
{
    const struct {
        std::vector<std::string> args;
        const char* message;
    } cases[] = {
        {{"-c", "-file", "/nonexistent/net.conf"},
         "D [CVL] Cannot read settings file '/nonexistent/net.conf': No such file or directory\n"},
        {{"-icer", "-file", "/tmp"}, "D [CVL] Cannot read settings file '/tmp': Is a directory\n"},
        {{"-ca", "-file"}, "D [CVL] -file needs the name of a settings file!\n"},
        {{"-npa", "-file"}, "D [CVL] -file needs the name of a packet file!\n"},
    };
    for (const auto& c : cases) {
        FakeTargets targets;
        EXPECT_EQ(runWith(targets, c.args), kInputFileError) << c.args[0];
        EXPECT_EQ(targets.err, c.message);
        EXPECT_EQ(targets.out, "");
        EXPECT_TRUE(targets.calls.empty()) << c.args[0];
    }
}

TEST(RawPacket, HexDigitsAreSentAsBytesWithATenSecondLimit)
{
    // Blanks, commas and the x of 0x are skipped; the unpaired last digit is dropped.
    const TempFile packet("0xa5, 00 6 5");
    FakeTargets targets;
    EXPECT_EQ(runWith(targets, {"-npa", "-file", packet.path}), 0);
    EXPECT_EQ(targets.sentBytes, (std::vector<uint8_t>{0x0A, 0x50, 0x06}));
    EXPECT_EQ(targets.sentTimeLimit, 10);
    EXPECT_EQ(targets.out, "npaFileData: (7 bytes) 0a50065\n");
    EXPECT_EQ(targets.err, "D [CVL] NPA data: 3 bytes\n0A 50 06 |.P.\n");
    EXPECT_EQ(targets.seenConfig.usbPath, packet.path);  // a file name without '-' is a path too

    // A missing packet file is no failure: an empty packet goes out.
    FakeTargets missing;
    EXPECT_EQ(runWith(missing, {"-npa", "-file", "/nonexistent/read.hex"}), 0);
    EXPECT_EQ(missing.err, "D [CVL] NPA data: 0 bytes\n");
    EXPECT_EQ(missing.calls, (Calls{"createConfigurator", "sendNPA", "~configurator"}));
}

}  // namespace
