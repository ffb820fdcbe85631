#include <gtest/gtest.h>

#include <cstdio>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "app/Application.h"

namespace {

// Records every call the run driver makes and answers with scripted results.
struct CallLog {
    std::vector<std::string> calls;
    std::map<std::string, std::deque<int>> results;  // per operation, consumed in order; 0 when exhausted
    std::vector<uint8_t> sentBytes;
    int sentTimeLimit = -1;
    ConfigDetails seenConfig;  // the record as the target first saw it

    int answer(const std::string& operation)
    {
        calls.push_back(operation);
        auto& queue = results[operation];
        if (queue.empty())
            return 0;
        const int result = queue.front();
        queue.pop_front();
        return result;
    }
};

class FakeConfigurator : public ConfiguratorPort {
public:
    explicit FakeConfigurator(CallLog& log) : m_Log(log) {}
    ~FakeConfigurator() override { m_Log.calls.push_back("~configurator"); }
    void setPassThrough(bool passThrough) override
    {
        m_Log.calls.push_back(passThrough ? "setPassThrough(true)" : "setPassThrough(false)");
    }
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
    CallLog& m_Log;
};

class FakeTargets : public RunTargets {
public:
    std::unique_ptr<ConfiguratorPort> createConfigurator(ConfigDetails& config) override
    {
        log.calls.push_back("createConfigurator");
        log.seenConfig = config;
        return std::make_unique<FakeConfigurator>(log);
    }
    int processCertificateCommand(const std::string& mode, ConfigDetails& config) override
    {
        log.seenConfig = config;
        return log.answer("cert " + mode);
    }
    CallLog log;
};

struct RunOutput {
    int status;
    std::string out;
    std::string err;
};

RunOutput runWith(FakeTargets& targets, std::vector<std::string> args)
{
    args.insert(args.begin(), "corvelcfg");
    std::vector<const char*> argv;
    for (const std::string& a : args)
        argv.push_back(a.c_str());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = runCorvelcfg(static_cast<int>(argv.size()), argv.data(), targets);
    RunOutput output{status, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
    return output;
}

const char* const kUsage =
    "\n"
    "  corvelcfg\n"
    "\tConfigures printer to connect to other wireless devices.\n"
    "\n"
    "  USAGE:\n"
    "        corvelcfg --ssid=\"<SSID>\" --mode=\"[Ad-hoc|Managed]\" --security=\"[None|WEP|WPA|WPA2|802.1x]\" /\n"
    "        --channel=\"[1-6]\" --passwd=\"<password>\" [USB_PATH]\n"
    "\n"
    "  OPTIONS:\n"
    "      --ssid          Name of the network you want to connect.\n"
    "      --mode          Type of connection.\n"
    "      --security      Security of the network you are connecting.\n"
    "      --channel       Channel of the ad-hoc network you are connecting.\n"
    "      --password      Password of the network if security is equal to None\n"
    "\n"
    "      -h              displays this help.\n"
    "      USB_PATH        path of the usb where the printer you want to configure is connected.\n"
    "\n";

TEST(Usage, NoArgumentPrintsUsageAndTouchesNothing)
{
    FakeTargets targets;
    const RunOutput run = runWith(targets, {});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, kUsage);
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(targets.log.calls.empty());
}

TEST(Usage, DashHPrintsUsageThroughAConfigurator)
{
    FakeTargets targets;
    const RunOutput run = runWith(targets, {"-h"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, kUsage);
    EXPECT_EQ(targets.log.calls, (std::vector<std::string>{"createConfigurator", "~configurator"}));
}

struct ModeCase {
    const char* mode;
    const char* operation;
    bool retries;
};

const ModeCase kModes[] = {
    {"-r", "resetPrinter", false},      {"-c", "basicConfig", true},      {"-ca", "advancedConfig", true},
    {"-ip", "getIPAddress", true},      {"-t", "waitForConnection", true}, {"-a", "pollDeviceStatus", false},
    {"-s", "showSSID", true},           {"-802s", "queryAuthStatus", true}, {"-cer", "queryCertSettings", true},
};

TEST(ModeTable, EachModeCallsItsOperationAndPassesItsResultOn)
{
    for (const ModeCase& m : kModes) {
        FakeTargets targets;
        targets.log.results[m.operation] = {7};
        const RunOutput run = runWith(targets, {m.mode});
        EXPECT_EQ(run.status, 7) << m.mode;
        EXPECT_EQ(targets.log.calls,
                  (std::vector<std::string>{"createConfigurator", m.operation, "~configurator"}))
            << m.mode;
    }
}

TEST(ModeTable, RefusalIsRetriedOncePlainOnlyWhereTheModeAllows)
{
    for (const ModeCase& m : kModes) {
        FakeTargets targets;
        targets.log.results[m.operation] = {-1, -1, 0};
        const RunOutput run = runWith(targets, {m.mode});
        std::vector<std::string> expected{"createConfigurator", m.operation};
        if (m.retries) {
            expected.push_back("setPassThrough(false)");
            expected.push_back(m.operation);
        }
        expected.push_back("~configurator");
        EXPECT_EQ(targets.log.calls, expected) << m.mode;
        EXPECT_EQ(run.status, 255) << m.mode;  // -1 leaves the process with status 255
    }

    // Only -1 triggers the retry; the second result is final whatever it is.
    FakeTargets other;
    other.log.results["basicConfig"] = {1};
    EXPECT_EQ(runWith(other, {"-c"}).status, 1);
    EXPECT_EQ(other.log.calls.size(), 3u);

    FakeTargets second;
    second.log.results["showSSID"] = {-1, 1};
    EXPECT_EQ(runWith(second, {"-s"}).status, 1);
}

TEST(ModeTable, UnknownFirstArgumentRunsFullConfigurationAndSucceeds)
{
    FakeTargets targets;
    targets.log.results["configurePrinter"] = {-1};
    const RunOutput run = runWith(targets, {"--ssid=Home", "/dev/usb/lp1"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(targets.log.calls,
              (std::vector<std::string>{"createConfigurator", "configurePrinter", "~configurator"}));
    // No option is read in this form, only the path.
    EXPECT_EQ(targets.log.seenConfig.ssid, "");
    EXPECT_EQ(targets.log.seenConfig.usbPath, "/dev/usb/lp1");
}

TEST(ModeTable, CertificateCommandsCreateNoConfigurator)
{
    for (const char* mode : {"-icer", "-rcerdefs", "-csr"}) {
        FakeTargets targets;
        targets.log.results[std::string("cert ") + mode] = {2};
        const RunOutput run = runWith(targets, {mode, "--cer-org=Acme", "/dev/usb/lp4"});
        EXPECT_EQ(run.status, 2) << mode;
        EXPECT_EQ(targets.log.calls, (std::vector<std::string>{std::string("cert ") + mode}));
        EXPECT_EQ(targets.log.seenConfig.cerOrg, "Acme");
        EXPECT_EQ(targets.log.seenConfig.usbPath, "/dev/usb/lp4");
    }
}

TEST(FormChoice, OptionModesReadOptionsOtherModesOnlyThePath)
{
    for (const char* mode : {"-c", "-ca", "-cer"}) {
        FakeTargets targets;
        runWith(targets, {mode, "--ssid=net", "2:5"});
        EXPECT_EQ(targets.log.seenConfig.ssid, "net") << mode;
        EXPECT_EQ(targets.log.seenConfig.usbPath, "2:5") << mode;
    }
    for (const char* mode : {"-h", "-r", "-ip", "-t", "-a", "-s", "-802s", "whatever"}) {
        FakeTargets targets;
        runWith(targets, {mode, "--ssid=net", "/dev/usb/lp2"});
        EXPECT_EQ(targets.log.seenConfig.ssid, "") << mode;
        EXPECT_EQ(targets.log.seenConfig.usbPath, "/dev/usb/lp2") << mode;
    }
    // "-npa" without "-file" reads nothing at all, not even the path.
    FakeTargets npa;
    runWith(npa, {"-npa", "/dev/usb/lp2"});
    EXPECT_EQ(npa.log.seenConfig.usbPath, "/dev/usb/lp0");
}

class SettingsFile {
public:
    explicit SettingsFile(const std::string& content)
    {
        char name[] = "/tmp/corvelsettingsXXXXXX";  // no dash: may be taken for a USB path
        const int fd = mkstemp(name);
        path = name;
        FILE* f = fdopen(fd, "w");
        fputs(content.c_str(), f);
        fclose(f);
    }
    ~SettingsFile() { std::remove(path.c_str()); }
    std::string path;
};

TEST(FormChoice, SettingsFileWithAndWithoutUsbPath)
{
    SettingsFile file("--ssid=\"Office Net\"\n--security=WPA\n");
    FakeTargets withPath;
    runWith(withPath, {"-c", "-file", file.path, "/dev/usb/lp5", "--ssid=ignored"});
    EXPECT_EQ(withPath.log.seenConfig.ssid, "Office Net");
    EXPECT_EQ(withPath.log.seenConfig.security, "WPA");
    EXPECT_EQ(withPath.log.seenConfig.usbPath, "/dev/usb/lp5");

    FakeTargets withoutPath;
    runWith(withoutPath, {"-csr", "-file", file.path});
    EXPECT_EQ(withoutPath.log.seenConfig.usbPath, "/dev/usb/lp0");
    EXPECT_EQ(withoutPath.log.seenConfig.ssid, "Office Net");
}

TEST(FormChoice, MissingInputFilesFailBeforeAnythingIsCreated)
{
    struct Case {
        std::vector<std::string> args;
        const char* message;
    } cases[] = {
        {{"-c", "-file", "/nonexistent/net.conf"},
         "D [CVL] Cannot read settings file '/nonexistent/net.conf': No such file or directory\n"},
        {{"-icer", "-file", "/tmp"}, "D [CVL] Cannot read settings file '/tmp': Is a directory\n"},
        {{"-ca", "-file"}, "D [CVL] -file needs the name of a settings file!\n"},
        {{"-npa", "-file"}, "D [CVL] -file needs the name of a packet file!\n"},
    };
    for (const Case& c : cases) {
        FakeTargets targets;
        const RunOutput run = runWith(targets, c.args);
        EXPECT_EQ(run.status, kInputFileError) << c.args[0];
        EXPECT_EQ(run.err, c.message);
        EXPECT_EQ(run.out, "");
        EXPECT_TRUE(targets.log.calls.empty()) << c.args[0];
    }
}

TEST(RawPacket, HexDigitsAreSentAsBytesWithTenSecondLimit)
{
    SettingsFile packet("A5 00 06 5");  // seven digits: three bytes
    FakeTargets targets;
    targets.log.results["sendNPA"] = {0};
    const RunOutput run = runWith(targets, {"-npa", "-file", packet.path});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(targets.log.sentBytes, (std::vector<uint8_t>{0xA5, 0x00, 0x06}));
    EXPECT_EQ(targets.log.sentTimeLimit, 10);
    EXPECT_EQ(run.out, "npaFileData: (7 bytes) A500065\n");
    EXPECT_EQ(run.err, "D [CVL] NPA data: 3 bytes\nA5 00 06 |...\n");
    // The file name has no '-': it was taken for the USB path as well.
    EXPECT_EQ(targets.log.seenConfig.usbPath, packet.path);
}

TEST(RawPacket, MissingPacketFileSendsNothingButStillRuns)
{
    FakeTargets targets;
    const RunOutput run = runWith(targets, {"-npa", "-file", "/nonexistent/read-ssid.hex", "/dev/usb/lp1"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "D [CVL] NPA data: 0 bytes\n");
    EXPECT_TRUE(targets.log.sentBytes.empty());
    EXPECT_EQ(targets.log.calls, (std::vector<std::string>{"createConfigurator", "sendNPA", "~configurator"}));
}

}  // namespace
