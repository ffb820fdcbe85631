// corvelctl provision against corvelsim, as the hot-plug unit runs it
// (--printer serial:CVSIM0001): which settings file applies, what it tells,
// and that a settings file sends the very requests the wifi command sends
// for the same settings.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

using nlohmann::json;

const std::vector<std::string> kByUnit = {"--printer", "serial:CVSIM0001", "provision"};

// Writes `name` in `dir` with `mode` (folders on the way made).
void writeFile(const SimDir& dir, const std::string& name, const std::string& content,
               std::filesystem::perms mode = std::filesystem::perms::owner_read | std::filesystem::perms::owner_write)
{
    std::filesystem::create_directories(std::filesystem::path(dir.file(name)).parent_path());
    dir.write(name, content);
    std::filesystem::permissions(dir.file(name), mode);
}

SimRun provision(const SimDir& dir, std::vector<std::string> options)
{
    std::vector<std::string> args = kByUnit;
    args.insert(args.end(), options.begin(), options.end());
    return runCorvelctl(dir, {}, args);
}

struct SameAsWifi {
    const char* name;
    std::string settings;     // the settings file, passphrase line included
    std::string wifiOptions;  // after "wifi"
    std::string secret;       // for --passphrase-file; "" none
};

void PrintTo(const SameAsWifi& c, std::ostream* out) { *out << c.name; }

class ProvisionSendsWhatWifiSends : public ::testing::TestWithParam<SameAsWifi> {};

TEST_P(ProvisionSendsWhatWifiSends, ByteForByte)
{
    const SameAsWifi& c = GetParam();
    SimDir wifiDir, provisionDir;
    writeSecretFile(wifiDir, c.secret);
    const SimRun wifi = runCorvelctl(
        wifiDir, {}, words("wifi --json " + c.wifiOptions + (c.secret.empty() ? "" : " --passphrase-file secret.txt")));
    ASSERT_EQ(wifi.status, 0) << wifi.err;

    writeFile(provisionDir, "printers/CVSIM0001.conf", c.settings);
    const SimRun run = provision(provisionDir, {"--settings-dir", "printers", "--json"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_FALSE(run.log.empty());
    EXPECT_EQ(rawRequests(run), rawRequests(wifi));

    // wifi's report, then the serial and the file, in this order.
    nlohmann::ordered_json expected = nlohmann::ordered_json::parse(wifi.out, nullptr, false);
    expected["serial"] = "CVSIM0001";
    expected["settings"] = "printers/CVSIM0001.conf";
    expected["applied"] = true;
    EXPECT_EQ(nlohmann::ordered_json::parse(run.out, nullptr, false), expected) << run.out;
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(
    Securities, ProvisionSendsWhatWifiSends,
    ::testing::Values(
        SameAsWifi{"none", "ssid = Cafe\nsecurity = none\nchannel = 3\n", "--ssid Cafe --security none --channel 3", ""},
        SameAsWifi{"wpa2Tkip", "# office\nssid = Office\r\nsecurity = wpa-wpa2-psk\nencryption = tkip\n"
                               "passphrase =  correct horse \n",
                   "--ssid Office --security wpa-wpa2-psk --encryption tkip", "correct horse"},
        SameAsWifi{"wepAdHoc", "ssid=Old\nsecurity=wep-shared\nmode=ad-hoc\nchannel=11\npassphrase=0123456789abcdef0123456789",
                   "--ssid Old --security wep-shared --mode ad-hoc --channel 11", "0123456789abcdef0123456789\n"},
        SameAsWifi{"ieee8021x", "ssid = Corp\nsecurity = 802.1x\neap = peap,ttls\ninner = pap\nuser = alice\n"
                                "encryption = wep-dynamic\npassphrase = s3cret pass\n",
                   "--ssid Corp --security 802.1x --eap peap,ttls --inner pap --user alice --encryption wep-dynamic",
                   "s3cret pass"}),
    [](const ::testing::TestParamInfo<SameAsWifi>& info) { return info.param.name; });
// clang-format on

TEST(Provision, ChoosesTheSerialsFileThenTheDefault)
{
    const std::string lab = "ssid = Lab\nsecurity = none\n", home = "ssid = Home\nsecurity = none\n";
    const struct {
        const char* name;
        std::vector<std::pair<std::string, std::string>> files;
        std::vector<std::string> options;
        std::string settings, ssid;
    } cases[] = {
        {"serial",
         {{"p/CVSIM0001.conf", lab}, {"p/default.conf", home}},
         {"--settings-dir", "p"},
         "p/CVSIM0001.conf",
         "Lab"},
        {"default",
         {{"p/CVSIM0002.conf", lab}, {"p/default.conf", home}},
         {"--settings-dir", "p"},
         "p/default.conf",
         "Home"},
        {"given file",
         {{"p/CVSIM0001.conf", lab}, {"mine.conf", home}},
         {"--settings", "mine.conf"},
         "mine.conf",
         "Home"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        SimDir dir;
        for (const auto& [name, content] : c.files) writeFile(dir, name, content);
        std::vector<std::string> options = c.options;
        options.push_back("--json");
        const SimRun run = provision(dir, options);
        ASSERT_EQ(run.status, 0) << run.err;
        const json result = json::parse(run.out, nullptr, false);
        EXPECT_EQ(result["settings"], c.settings) << run.out;
        EXPECT_EQ(result["ssid"], c.ssid) << run.out;
        EXPECT_TRUE(holds(dir.read("requests.jsonl"), "\"text\":\"" + c.ssid + "\""));
    }
    // Without --printer: the one printer attached, and its serial's file.
    SimDir dir;
    writeFile(dir, "p/CVSIM0001.conf", lab);
    const SimRun run = runCorvelctl(dir, {}, {"provision", "--settings-dir", "p"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(holds(run.out, "settings:    p/CVSIM0001.conf\n")) << run.out;
}

TEST(Provision, NothingToApplyIsOneLineAndExitZero)
{
    SimDir dir;
    writeFile(dir, "p/OTHER.conf", "ssid = Lab\nsecurity = none\n");
    const SimRun human = provision(dir, {"--settings-dir", "p"});
    EXPECT_EQ(human.status, 0) << human.err;
    EXPECT_EQ(
        human.out,
        "/dev/usb/lp0 (serial CVSIM0001): nothing to apply: neither p/CVSIM0001.conf nor p/default.conf exists\n");
    EXPECT_EQ(human.err, "");
    EXPECT_TRUE(human.log.empty());

    const SimRun json = provision(dir, {"--settings-dir", "p", "--json"});
    EXPECT_EQ(json.status, 0) << json.err;
    EXPECT_EQ(json.out, "{\"printer\": \"/dev/usb/lp0\", \"serial\": \"CVSIM0001\", \"settings\": null, "
                        "\"applied\": false, \"reason\": \"neither p/CVSIM0001.conf nor p/default.conf exists\"}\n");
    EXPECT_TRUE(json.log.empty());
}

// A file that cannot be applied: nothing sent, the status and a message that
// names the file (and the line).
// What the file may hold is the settings file tests' (ctl/tests); here, that
// a file refused for its content or for its mode ends the run with its
// status before anything reaches the printer.
TEST(Provision, RefusesABadFileBeforeSendingAnything)
{
    const auto privateMode = std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;
    const struct {
        const char* name;
        std::string content;
        std::filesystem::perms mode;
        int status;
        std::string message;
    } cases[] = {
        {"unknown key", "ssid = Lab\nsecurity = none\npsk = abcdefgh\n", privateMode, 65,
         "corvelctl: settings file p/CVSIM0001.conf line 3: unknown key \"psk\"; the keys are ssid"},
        {"readable by others", "ssid = Lab\nsecurity = none\n", privateMode | std::filesystem::perms::others_read, 64,
         "corvelctl: settings file p/CVSIM0001.conf is open to group or others (mode 0604); chmod go= it\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        SimDir dir;
        writeFile(dir, "p/CVSIM0001.conf", c.content, c.mode);
        const SimRun run = provision(dir, {"--settings-dir", "p"});
        EXPECT_EQ(run.status, c.status);
        EXPECT_EQ(run.err.substr(0, c.message.size()), c.message);
        EXPECT_EQ(run.out, "");
        EXPECT_TRUE(run.log.empty());
    }
}

}  // namespace
}  // namespace e2e
