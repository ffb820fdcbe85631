// corvelctl sends the printer the very bytes corvelcfg sends for the same
// request: each run in a fresh simulated printer, the logged requests
// compared. corvelcfg polls and repeats itself; what counts is the distinct
// requests in the order they first appear.
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

std::vector<std::string> distinct(const std::vector<std::string>& requests)
{
    std::vector<std::string> seen;
    for (const std::string& raw : requests)
        if (std::find(seen.begin(), seen.end(), raw) == seen.end()) seen.push_back(raw);
    return seen;
}

// The distinct requests of several corvelcfg runs in turn, one printer; at
// the simulator's top speed, for corvelcfg's fixed waits.
std::vector<std::string> corvelcfgRequests(const SimDir& dir, std::vector<std::string> simOptions,
                                           const std::vector<std::vector<std::string>>& runs)
{
    // The speed of the other corvelcfg runs: its fixed waits still leave a busy
    // simulator time to answer (at 100 they did not always).
    simOptions.insert(simOptions.end(), {"--speed", "20"});
    std::vector<std::string> all;
    for (const auto& args : runs) {
        const SimRun run = runCorvelcfg(dir, simOptions, args);
        EXPECT_FALSE(run.timedOut);
        const std::vector<std::string> raws = rawRequests(run);
        all.insert(all.end(), raws.begin(), raws.end());
    }
    return distinct(all);
}

struct WifiCase {
    const char* name;
    std::vector<std::string> corvelcfgArgs;  // after -ca --ssid=Lab --channel=3
    std::string corvelctlOptions;            // after wifi --ssid Lab --channel 3
    std::string secret;                      // "" = none
};

void PrintTo(const WifiCase& c, std::ostream* out) { *out << c.name; }

class SameWifiRequests : public ::testing::TestWithParam<WifiCase> {};

// Taken in the envelope, and refused in it then repeated plain.
TEST_P(SameWifiRequests, AsCorvelcfg)
{
    const WifiCase& c = GetParam();
    for (const bool refuse : {false, true}) {
        SCOPED_TRACE(refuse ? "refused envelope" : "taken in the envelope");
        const std::vector<std::string> sim =
            refuse ? std::vector<std::string>{"--fault", "refuse-envelope"} : std::vector<std::string>{};
        SimDir cfgDir, ctlDir;
        std::vector<std::string> cfgArgs = {"-ca", "--ssid=Lab", "--channel=3"};
        cfgArgs.insert(cfgArgs.end(), c.corvelcfgArgs.begin(), c.corvelcfgArgs.end());
        const std::vector<std::string> expected = corvelcfgRequests(cfgDir, sim, {cfgArgs});

        writeSecretFile(ctlDir, c.secret);
        const std::string secret = c.secret.empty() ? "" : " --passphrase-file secret.txt";
        const SimRun ctl =
            runCorvelctl(ctlDir, sim, words("wifi --ssid Lab --channel 3 --json " + c.corvelctlOptions + secret));
        EXPECT_EQ(ctl.status, 0) << ctl.err;
        const nlohmann::json result = nlohmann::json::parse(ctl.out, nullptr, false);
        EXPECT_EQ(result.value("plain_retry", nlohmann::json()), refuse) << ctl.out;
        const std::vector<std::string> actual = distinct(rawRequests(ctl));
        EXPECT_EQ(actual, expected);
        // The retry really went plain (certificate-manager calls always are).
        int plain = 0;
        for (const std::string& line : ctl.log)
            plain += logValue(line, "kind") != "certmgr" && logValue(line, "envelope") == "false";
        EXPECT_EQ(plain > 0, refuse);
    }
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(
    Securities, SameWifiRequests,
    ::testing::Values(
        WifiCase{"none", {"--security=OPEN"}, "--security none", ""},
        WifiCase{"wepOpen", {"--security=OPEN", "--encryption=WEP", "--WEP-key1=abcde", "--WEP-key2=0123456789",
                             "--WEP-transmit=2"}, "--security wep-open --wep-tx-key 2", "abcde\n0123456789\n"},
        WifiCase{"wepShared", {"--security=SHARED", "--encryption=WEP", "--WEP-key1=0123456789abcdef0123456789",
                               "--WEP-key2=abcde", "--WEP-key3=ABCDEF0123", "--WEP-key4=Thirteen char"},
                 "--security wep-shared", "0123456789abcdef0123456789\nabcde\nABCDEF0123\nThirteen char"},
        WifiCase{"wpaWpa2Psk", {"--security=WPA-PER", "--encryption=AES", "--psk=correct horse"},
                 "--security wpa-wpa2-psk", "correct horse\n"},
        WifiCase{"wpaWpa2PskTkip", {"--security=WPA-PER", "--encryption=TKIP", "--psk=correct horse"},
                 "--security wpa-wpa2-psk --encryption tkip", "correct horse"},
        WifiCase{"wpa2Psk", {"--security=WPA-ENT", "--encryption=AES", "--psk=" + std::string(64, 'F')},
                 "--security wpa2-psk --encryption aes", std::string(64, 'F')},
        WifiCase{"ieee8021xPeap", {"--security=802.1x", "--encryption=AES", "--802-auth-ext=PEAP",
                                   "--802-auth-inner=MSCHAPv2", "--802-user=alice", "--802-pwd=pw"},
                 "--security 802.1x --eap peap --inner mschapv2 --user alice", "pw\n"},
        WifiCase{"ieee8021xAllMethods", {"--security=802.1x", "--encryption=WEP-DYNAMIC",
                                         "--802-auth-ext=EAP-MD5|MSCHAPv2|LEAP|PEAP|EAP-TLS|EAP-TTLS",
                                         "--802-auth-inner=PAP", "--802-user=bob", "--802-pwd=s3cret pass"},
                 "--security 802.1x --encryption wep-dynamic --eap md5,mschapv2,leap,peap,tls,ttls --inner pap "
                 "--user bob", "s3cret pass"},
        WifiCase{"ieee8021xTkipChap", {"--security=802.1x", "--encryption=TKIP", "--802-auth-ext=EAP-TTLS",
                                       "--802-auth-inner=CHAP", "--802-user=carol", "--802-pwd=x"},
                 "--security 802.1x --encryption tkip --eap ttls --inner chap --user carol", "x"},
        WifiCase{"ieee8021xPeapMschap", {"--security=802.1x", "--encryption=AES", "--802-auth-ext=PEAP",
                                         "--802-auth-inner=MSCHAP", "--802-user=dave", "--802-pwd=y"},
                 "--security 802.1x --eap peap --inner mschap --user dave", "y"},
        WifiCase{"ieee8021xTlsOnly", {"--security=802.1x", "--encryption=AES", "--802-auth-ext=EAP-TLS",
                                      "--802-user=erin", "--802-pwd=z"},
                 "--security 802.1x --eap tls --user erin", "z"}),
    [](const ::testing::TestParamInfo<WifiCase>& info) { return info.param.name; });
// clang-format on

// The packet inside a pass-through envelope (A5 len 50 E0 63 02 len16 ...).
std::string inner(const std::string& wrapped) { return wrapped.substr(18); }

// status reads what corvelcfg's -s, -t, -ip, -802s and -cer read, in that
// order; reset sends what -r sends. After a refused envelope corvelctl sends
// the rest plain: the same packets unwrapped (corvelcfg's -cer and -r never
// repeat themselves plain, so the plain ones are compared with the inner packets).
TEST(SameRequests, StatusReadsAndReset)
{
    SimDir cfgDir;
    const std::vector<std::string> reads =
        corvelcfgRequests(cfgDir, {}, {{"-s"}, {"-t"}, {"-ip"}, {"-802s"}, {"-cer"}});
    const std::vector<std::string> reset = corvelcfgRequests(cfgDir, {}, {{"-r"}});
    ASSERT_EQ(reads.size(), 6u);
    ASSERT_EQ(reset.size(), 1u);
    std::vector<std::string> readsRefused = {reads[0]}, resetRefused = {reset[0], inner(reset[0])};
    for (const std::string& read : reads) readsRefused.push_back(inner(read));

    for (const bool refuse : {false, true}) {
        SCOPED_TRACE(refuse ? "refused envelope" : "taken in the envelope");
        const std::vector<std::string> sim =
            refuse ? std::vector<std::string>{"--fault", "refuse-envelope"} : std::vector<std::string>{};
        SimDir ctlDir;
        const SimRun status = runCorvelctl(ctlDir, sim, {"status"});
        EXPECT_EQ(status.status, 0) << status.err;
        const std::vector<std::string> expected = refuse ? readsRefused : reads;
        EXPECT_EQ(rawRequests(status), expected);

        const SimRun ctlReset = runCorvelctl(ctlDir, sim, {"reset"});
        EXPECT_EQ(ctlReset.status, 0) << ctlReset.err;
        EXPECT_EQ(rawRequests(ctlReset), refuse ? resetRefused : reset);
    }
}

// The certificate calls, from the same printer state each: defaults, the
// signing request, the CA installed then replaced, the signed certificate.
TEST(SameRequests, CertificateCalls)
{
    SimDir setup;
    ASSERT_EQ(runShell(setup, "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -keyout ca.key "
                              "-subj '/O=Test/CN=Test CA' -days 30 -out ca.pem"),
              0);
    ASSERT_EQ(runCorvelctl(setup, {}, {"cert", "request", "--out", "p.csr", "--common-name", "p1"}).status, 0);
    ASSERT_EQ(runShell(setup, "openssl x509 -req -in p.csr -CA ca.pem -CAkey ca.key -CAcreateserial -days 30 "
                              "-out p.pem"),
              0);
    const std::string state = setup.read("state.txt");
    const std::string ca = setup.read("ca.pem"), signedCert = setup.read("p.pem");
    // clang-format off
    const struct {
        const char* name;
        std::vector<std::vector<std::string>> corvelcfgRuns;
        std::vector<std::vector<std::string>> corvelctlRuns;
    } cases[] = {
        {"defaults", {{"-rcerdefs"}}, {{"cert", "defaults"}}},
        {"request", {{"-csr", "--cer-org=Acme", "--cer-unit=Lab", "--cer-state=Oregon", "--cer-country=US",
                      "--cer-city=Portland", "--cer-altname=p1.local", "--cer-common=p1", "--cer-path=out.csr"}},
         {{"cert", "request", "--out", "out.csr", "--org", "Acme", "--unit", "Lab", "--state", "Oregon",
           "--country", "US", "--city", "Portland", "--altname", "p1.local", "--common-name", "p1"}}},
        {"caTwice", {{"-icer", "--802-CA-cer-file=ca.pem"}, {"-icer", "--802-CA-cer-file=ca.pem"}},
         {{"cert", "install-ca", "ca.pem"}, {"cert", "install-ca", "ca.pem"}}},
        {"signed", {{"-icer", "--802-signed-cer-file=p.pem"}}, {{"cert", "install", "p.pem"}}},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        SimDir cfgDir, ctlDir;
        for (const SimDir* dir : {&cfgDir, &ctlDir}) {
            dir->write("state.txt", state);
            dir->write("ca.pem", ca);
            dir->write("p.pem", signedCert);
        }
        const std::vector<std::string> expected = corvelcfgRequests(cfgDir, {}, c.corvelcfgRuns);
        std::vector<std::string> actual;
        for (const auto& args : c.corvelctlRuns) {
            const SimRun run = runCorvelctl(ctlDir, {}, args);
            EXPECT_EQ(run.status, 0) << run.err;
            const std::vector<std::string> raws = rawRequests(run);
            actual.insert(actual.end(), raws.begin(), raws.end());
        }
        actual = distinct(actual);
        EXPECT_FALSE(actual.empty());
        EXPECT_EQ(actual, expected);
    }
}

}  // namespace
}  // namespace e2e
