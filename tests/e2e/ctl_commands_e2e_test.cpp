// Every command of the real corvelctl against corvelsim, over the printer's
// device node and over the USB bus: exit status, the JSON result read with a
// real parser, an empty standard error, and what the printer received.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

using nlohmann::json;

// The one JSON object a run printed (discarded when it is not one).
json jsonOf(const SimRun& run) { return json::parse(run.out, nullptr, false); }

// How corvelctl reaches the printer: corvelsim's options, corvelctl's
// --printer, the "printer" it reports and the "route" the log shows.
struct Route {
    const char* name;
    std::vector<std::string> simOptions;
    std::vector<std::string> printerOption;
    std::string printer;
    std::string logRoute;
};

void PrintTo(const Route& route, std::ostream* out) { *out << route.name; }

// A value of the CA's and the signed certificate's subjects that XML, JSON
// and the shell all have to escape.
const std::string kCaName = "R&D <Lab> \"CA\"";

void makeCa(const SimDir& dir)
{
    ASSERT_EQ(runShell(dir, "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -keyout ca.key "
                            "-subj '/O=Test/CN=R&D <Lab> \"CA\"' -days 30 -out ca.pem"),
              0);
}

// Whether the printer's answer to exportPubKey (the last request) carries
// the request file `name`, as base64 in its XML.
bool answeredWith(const SimDir& dir, const SimRun& run, const std::string& name)
{
    EXPECT_EQ(runShell(dir, "openssl base64 -A -in " + name + " -out answer.b64"), 0);
    std::string base64 = dir.read("answer.b64");
    std::remove(dir.file("answer.b64").c_str());
    base64.erase(base64.find_last_not_of('\n') + 1);
    return !run.log.empty() && logValue(run.log.back(), "method") == "exportPubKey" &&
           holds(logValue(run.log.back(), "answer"), toHex("<BinaryElem>" + base64 + "</BinaryElem>"));
}

class CtlCommands : public ::testing::TestWithParam<Route> {
protected:
    // corvelctl [--printer ...] <args> --json under corvelsim with the route's options.
    SimRun ctl(const std::vector<std::string>& args, std::vector<std::string> simOptions = {})
    {
        const Route& route = GetParam();
        simOptions.insert(simOptions.begin(), route.simOptions.begin(), route.simOptions.end());
        std::vector<std::string> all = route.printerOption;
        all.insert(all.end(), args.begin(), args.end());
        all.push_back("--json");
        return runCorvelctl(dir, simOptions, all);
    }

    // Exit 0, nothing on standard error, every request over the route.
    void expectSuccess(const SimRun& run, const std::string& what)
    {
        ASSERT_FALSE(run.timedOut) << what;
        EXPECT_EQ(run.status, 0) << what << "\n" << run.err;
        EXPECT_EQ(run.err, "") << what;
        EXPECT_FALSE(run.log.empty()) << what;
        for (const std::string& line : run.log)
            EXPECT_EQ(logValue(line, "route"), GetParam().logRoute) << what << ": " << line;
    }

    SimDir dir;
};

TEST_P(CtlCommands, StatusBeforeAndAfterWifiNone)
{
    const SimRun before = ctl({"status"});
    expectSuccess(before, "status");
    EXPECT_EQ(
        jsonOf(before),
        json({{"printer", GetParam().printer},
              {"ssid", nullptr},
              {"connected", false},
              {"connection_state", 1},
              {"ipv4", nullptr},
              {"auth_8021x", {{"status", 0}, {"name", "802.1x not enabled"}}},
              {"certificate", {{"organization", "Corvel Simulated Printers"}, {"common_name", "CORVELSIM-0001"}}}}))
        << before.out;
    // The six reads, each once, in the pass-through envelope.
    ASSERT_EQ(before.log.size(), 6u);
    for (const std::string& line : before.log) EXPECT_EQ(logValue(line, "envelope"), "true");

    const SimRun wifi = ctl({"wifi", "--ssid", "Lab Net", "--security", "none"}, {"--ip", "10.1.2.3"});
    expectSuccess(wifi, "wifi");

    const SimRun after = ctl({"status"}, {"--ip", "10.1.2.3"});
    expectSuccess(after, "status after wifi");
    const json joined = jsonOf(after);
    EXPECT_EQ(joined["ssid"], "Lab Net") << after.out;
    EXPECT_EQ(joined["connected"], true);
    EXPECT_EQ(joined["connection_state"], 0);
    EXPECT_EQ(joined["ipv4"], "10.1.2.3");
}

// One wifi run for each security: the secret from a 0600 file, the JSON
// result, and the settings the printer took.
TEST_P(CtlCommands, WifiForEachSecurity)
{
    const struct {
        std::string options;
        std::string secret;    // "" = none
        std::string sentText;  // a text item the settings must hold
    } cases[] = {
        {"--security none", "", "Lab"},
        {"--security wep-open --wep-tx-key 2", "abcde\n0123456789abcdef0123456789\n", "abcde"},
        {"--security wep-shared", "0123456789\n", "0123456789"},
        {"--security wpa-wpa2-psk --encryption tkip", "correct horse battery\n", "correct horse battery"},
        {"--security wpa2-psk", std::string(64, 'a'), std::string(64, 'a')},
        {"--security 802.1x --eap peap,tls --inner mschapv2 --user alice --encryption tkip", "pa ss\n", "alice"},
    };
    for (const auto& c : cases) {
        const std::string security = words(c.options)[1];
        writeSecretFile(dir, c.secret);
        const SimRun run = ctl(words("wifi --ssid Lab --channel 11 " + c.options +
                                     (c.secret.empty() ? "" : " --passphrase-file secret.txt")));
        expectSuccess(run, security);
        EXPECT_EQ(jsonOf(run), json({{"printer", GetParam().printer},
                                     {"ssid", "Lab"},
                                     {"security", security},
                                     {"accepted", true},
                                     {"plain_retry", false}}))
            << run.out;
        // Every settings request taken, one at least.
        const std::string log = dir.read("requests.jsonl");
        EXPECT_EQ(occurrences(log, "\"kind\":\"settings\""), occurrences(log, "\"accepted\":true")) << log;
        EXPECT_GE(occurrences(log, "\"accepted\":true"), 1) << security;
        EXPECT_TRUE(holds(log, "\"text\":\"" + c.sentText + "\"")) << security;
    }
}

TEST_P(CtlCommands, WifiWaitsUntilJoinedAndShowsTheAddress)
{
    writeSecretFile(dir, "secret123");
    const SimRun run = ctl({"wifi", "--ssid", "Lab", "--security", "wpa2-psk", "--passphrase-file", "secret.txt",
                            "--wait=30", "--timeout", "60"},
                           // The one-second pauses between polls 20 times faster.
                           {"--join-after", "2", "--ip", "10.0.0.9", "--speed", "20"});
    expectSuccess(run, "wifi --wait");
    const json result = jsonOf(run);
    EXPECT_EQ(result["ipv4"], "10.0.0.9") << run.out;
    EXPECT_EQ(result["accepted"], true);
    // The settings, then the connection state until joined, then the address.
    std::vector<std::string> reads;
    for (const std::string& line : run.log)
        if (logValue(line, "kind") == "read") reads.push_back(logValue(line, "group") + "/" + logValue(line, "field"));
    EXPECT_EQ(reads, (std::vector<std::string>{"28/15", "28/15", "0A/02"}));
}

TEST_P(CtlCommands, Reset)
{
    const SimRun run = ctl({"reset"});
    expectSuccess(run, "reset");
    EXPECT_EQ(jsonOf(run), json({{"printer", GetParam().printer}, {"reset", true}})) << run.out;
    ASSERT_EQ(run.log.size(), 1u);
    EXPECT_EQ(logValue(run.log[0], "kind"), "settings");
    EXPECT_TRUE(holds(run.log[0], "\"group\":\"06\",\"field\":\"14\"")) << run.log[0];
    EXPECT_TRUE(holds(dir.read("state.txt"), "resets=1"));
}

TEST_P(CtlCommands, CertDefaults)
{
    const SimRun run = ctl({"cert", "defaults"});
    expectSuccess(run, "cert defaults");
    EXPECT_EQ(jsonOf(run), json({{"printer", GetParam().printer},
                                 {"organization", "Corvel Simulated Printers"},
                                 {"unit", "Printing"},
                                 {"state", "Oregon"},
                                 {"country", "US"},
                                 {"city", "Portland"},
                                 {"altname", "corvelsim-0001.local"},
                                 {"common_name", "CORVELSIM-0001"}}))
        << run.out;
}

// The request file holds what the printer sent (the calls themselves are
// compared with corvelcfg's in ctl_requests_e2e_test.cpp), is never replaced without
// --force, and no temporary file stays behind.
TEST_P(CtlCommands, CertRequestWritesThePrintersRequest)
{
    const std::vector<std::string> request = {"cert",  "request",   "--out",         "printer.csr",
                                              "--org", "R&D <Lab>", "--common-name", "printer1"};
    const SimRun made = ctl(request);
    expectSuccess(made, "cert request");
    const std::string pem = dir.read("printer.csr");
    EXPECT_TRUE(answeredWith(dir, made, "printer.csr"));
    EXPECT_TRUE(holds(pem, "-----BEGIN CERTIFICATE REQUEST-----")) << pem;
    EXPECT_EQ(jsonOf(made), json({{"printer", GetParam().printer}, {"file", "printer.csr"}, {"bytes", pem.size()}}));

    const SimRun refused = ctl(request);
    EXPECT_EQ(refused.status, 64);
    EXPECT_TRUE(refused.log.empty()) << "nothing sent when the file exists";
    EXPECT_EQ(dir.read("printer.csr"), pem);

    std::vector<std::string> forced = request;
    forced.push_back("--force");
    const SimRun replaced = ctl(forced);
    expectSuccess(replaced, "cert request --force");
    EXPECT_TRUE(answeredWith(dir, replaced, "printer.csr"));
    EXPECT_NE(dir.read("printer.csr"), pem) << "a new key, a new request";

    std::vector<std::string> left;
    for (const auto& entry : std::filesystem::directory_iterator(dir.file("")))
        left.push_back(entry.path().filename().string());
    std::sort(left.begin(), left.end());
    EXPECT_EQ(left, (std::vector<std::string>{"printer.csr", "requests.jsonl", "state.txt", "state.txt.lock",
                                              "stderr.txt", "stdout.txt"}));
}

// A CA whose name needs escaping installs, and installs again in its own
// place; then the printer's own certificate signed by it.
TEST_P(CtlCommands, CertInstallCaTwiceThenTheSignedCertificate)
{
    makeCa(dir);
    const SimRun first = ctl({"cert", "install-ca", "ca.pem"});
    expectSuccess(first, "install-ca");
    const json installed = jsonOf(first);
    EXPECT_EQ(installed["file"], "ca.pem") << first.out;
    EXPECT_EQ(installed["installed"], true);
    EXPECT_EQ(installed["replaced"], false);

    const SimRun second = ctl({"cert", "install-ca", "ca.pem"});
    expectSuccess(second, "install-ca again");
    EXPECT_EQ(jsonOf(second)["replaced"], true) << second.out;
    EXPECT_EQ(occurrences(dir.read("state.txt"), "ca.1.common_name=\"R&D <Lab> \\\"CA\\\"\""), 1);
    EXPECT_EQ(occurrences(dir.read("state.txt"), "common_name="), 1) << "replaced, not added";

    ASSERT_EQ(ctl({"cert", "request", "--out", "printer.csr", "--common-name", "printer1"}).status, 0);
    ASSERT_EQ(runShell(dir, "openssl x509 -req -in printer.csr -CA ca.pem -CAkey ca.key -CAcreateserial -days 30 "
                            "-out printer.pem"),
              0);
    const SimRun signed_ = ctl({"cert", "install", "printer.pem"});
    expectSuccess(signed_, "install");
    EXPECT_EQ(jsonOf(signed_), json({{"printer", GetParam().printer}, {"file", "printer.pem"}, {"installed", true}}));
    EXPECT_EQ(jsonOf(ctl({"status"}))["certificate"]["common_name"], "printer1");
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(
    Routes, CtlCommands,
    ::testing::Values(
        Route{"deviceNode", {}, {}, "/dev/usb/lp0", "lp"},
        // A bus:device selector still opens the printer's node.
        Route{"nodeChosenByBusDevice", {"--usb", "003:007", "--lp", "2"}, {"--printer", "003:007"}, "/dev/usb/lp2",
              "lp"},
        // No lp node: the printer is reached over the USB bus (libusb).
        Route{"usbBus", {"--usb", "003:007", "--no-lp"}, {}, "003:007", "usb"},
        Route{"usbBusChosen", {"--usb", "003:007", "--no-lp"}, {"--printer", "3:7"}, "003:007", "usb"}),
    [](const ::testing::TestParamInfo<Route>& info) { return info.param.name; });
// clang-format on

TEST(CtlList, ShowsEachPrinterWithItsUsbIdentity)
{
    SimDir dir;
    const std::vector<std::string> sim = {"--lp",         "0",    "--lp",     "1",    "--usb", "003:007",
                                          "--product-id", "0A1F", "--serial", "SN 42"};
    const SimRun run = runCorvelctl(dir, sim, {"list", "--json"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(run.log.empty()) << "list opens no printer";
    const json printer0 = {{"node", "/dev/usb/lp0"}, {"bus_device", "003:007"},  {"vendor_id", "c0de"},
                           {"product_id", "0a1f"},   {"manufacturer", "Corvel"}, {"product", "Simulated Printer"},
                           {"serial", "SN 42"}};
    json printer1 = printer0;
    printer1["node"] = "/dev/usb/lp1";
    printer1["bus_device"] = "003:008";
    printer1["serial"] = "SN 42-lp1";
    EXPECT_EQ(jsonOf(run), json({{"printers", {printer0, printer1}}})) << run.out;

    const SimRun human = runCorvelctl(dir, sim, {"list"});
    ASSERT_EQ(human.status, 0) << human.err;
    EXPECT_TRUE(holds(human.out, "node:         /dev/usb/lp0\nbus_device:   003:007\nvendor_id:    c0de\n"
                                 "product_id:   0a1f\nmanufacturer: Corvel\nproduct:      Simulated Printer\n"
                                 "serial:       SN 42\n\nnode:         /dev/usb/lp1\n"))
        << human.out;
    EXPECT_EQ(occurrences(human.out, "serial:"), 2);

    // The serial selects the second printer; an unknown one none (69).
    const SimRun second = runCorvelctl(dir, sim, {"reset", "--printer", "serial:SN 42-lp1", "--json"});
    EXPECT_EQ(second.status, 0) << second.err;
    EXPECT_EQ(jsonOf(second)["printer"], "/dev/usb/lp1");
    ASSERT_EQ(second.log.size(), 1u);
    EXPECT_EQ(logValue(second.log[0], "port"), "1");
}

// Standard output closed or full: the result cannot be written (exit 74), in
// real time and under faketime, whose shared memory must not take the closed
// descriptor 1.
TEST(CtlOutput, UnwritableStandardOutputIsExit74)
{
    for (const std::string speed : {"1", "20"}) {
        for (const std::string redirect : {">&-", ">/dev/full"}) {
            SCOPED_TRACE(redirect + " at --speed " + speed);
            SimDir dir;
            const SimRun run =
                runSim(dir, {"--speed", speed}, {"/bin/sh", "-c", std::string(CORVELCTL_PATH) + " status " + redirect});
            EXPECT_EQ(run.status, 74) << run.err;
            EXPECT_TRUE(holds(run.err, "corvelctl: cannot write standard output")) << run.err;
            EXPECT_EQ(run.log.size(), 6u) << "the status was read";
        }
    }
}

}  // namespace
}  // namespace e2e
