// corvelctl against a misbehaving simulated printer: each failure ends the
// run with its own exit status and a message that says what happened, within
// the deadline of --timeout; and a certificate too large for one write of
// the device node still installs.
#include <gtest/gtest.h>

#include <chrono>
#include <nlohmann/json.hpp>

#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

using nlohmann::json;

const std::vector<std::string> kWpa = {"wifi", "--ssid", "Lab", "--security", "wpa2-psk", "--passphrase-stdin"};

// The deadlines that must pass (exit 75) pass 20 times faster.
TEST(CtlFaults, EachFailureHasItsStatusAndMessage)
{
    // clang-format off
    const struct {
        const char* name;
        std::vector<std::string> simOptions;
        std::vector<std::string> args;
        int status;
        std::string message;  // part of the one line on standard error
        size_t requests;      // the printer received
    } cases[] = {
        {"silent", {"--fault", "silent", "--speed", "20"}, {"status", "--timeout", "1.5"}, 75,
         "corvelctl: no answer from the printer at /dev/usb/lp0 within 1.5 s (reading the SSID); "
         "a busy printer may need a longer --timeout\n", 1},
        {"silentCertificateManager", {"--fault", "cert-silent", "--speed", "20"}, {"cert", "defaults", "--timeout", "1"}, 75,
         "within 1 s", 1},
        {"rejectSettings", {"--fault", "reject-settings"}, kWpa, 1,
         "corvelctl: the printer at /dev/usb/lp0 did not accept the settings\n", 1},
        {"vanishAtOnce", {"--fault", "vanish"}, {"status"}, 69, "went away (reading the SSID); check its cable", 1},
        {"vanishAfterTwo", {"--fault", "vanish=2"}, {"status"}, 69, "went away (reading the address)", 3},
        {"certificateCallRefused", {"--fault", "cert-status=readCertDefaults:5:no defaults today"},
         {"cert", "defaults"}, 1,
         "refused reading the certificate defaults: status 5 (no defaults today)\n", 1},
        {"truncatedAnswer", {"--fault", "truncate=4", "--speed", "20"}, {"status", "--timeout", "1"}, 75, "within 1 s", 1},
        // Noise before the answer is skipped.
        {"noise", {"--fault", "noise=7"}, {"status"}, 0, "", 6},
        {"refusedEnvelopeThenPlain", {"--fault", "refuse-envelope"}, kWpa, 0, "", 2},
        // A read whose answer comes in several packets.
        {"splitAnswer", {"--fault", "split=3"}, {"status"}, 0, "", 6},
        // A printer that goes away on the USB bus (ENODEV) is not taken for a silent one.
        {"vanishOverUsb", {"--fault", "vanish", "--usb", "003:007", "--no-lp"}, {"reset"}, 69,
         "corvelctl: the printer at 003:007 went away (resetting)", 1},
        // One byte every 10 ms of real time, 0.2 s on corvelctl's clock: every
        // byte comes well within any wait for the next one, and the SSID's
        // answer (over 20 bytes) takes more than 4 s in all. A reader whose
        // time limit started again with each byte would get the whole answer;
        // the exchange's one deadline of 2 s ends it first.
        {"drippingAnswer", {"--fault", "drip=10", "--speed", "20"}, {"--timeout", "2", "status"}, 75,
         "corvelctl: no answer from the printer at /dev/usb/lp0 within 2 s (reading the SSID); a busy printer "
         "may need a longer --timeout\n", 1},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        SimDir dir;
        std::vector<std::string> args = c.args;
        args.push_back("--json");
        const SimRun run = runCorvelctl(dir, c.simOptions, args, "secret123\n");
        ASSERT_FALSE(run.timedOut);
        EXPECT_EQ(run.status, c.status) << run.err;
        EXPECT_EQ(run.log.size(), c.requests);
        const json result = json::parse(run.out, nullptr, false);
        ASSERT_TRUE(result.is_object()) << run.out;
        if (c.status == 0) {
            EXPECT_EQ(run.err, "");
            EXPECT_FALSE(result.contains("error")) << run.out;
            continue;
        }
        EXPECT_TRUE(holds(run.err, c.message)) << run.err;
        EXPECT_EQ(occurrences(run.err, "\n"), 1) << run.err;
        EXPECT_EQ(result.value("exit", -1), c.status);
    }
}

// CA certificates whose requests (about 15 KB and 57 KB) are larger than the
// device node takes in one write are written in pieces. One larger than a
// packet holds is refused before anything is sent.
TEST(CtlFaults, LargeCaCertificateInstallsOverTheDeviceNode)
{
    SimDir dir;
    // Real certificates made large by subject alternative names, about 84
    // bytes of PEM each: 130 names -> about 11,000 bytes, 500 -> about
    // 42,000, 620 -> about 52,000.
    auto makeCa = [&](const std::string& name, int names) {
        return runShell(dir, "san=$(for i in $(seq 1 " + std::to_string(names) +
                                 "); do printf 'DNS:host-%03d.a-rather-long-laboratory-domain-name.example.org,' "
                                 "$i; done) && openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes "
                                 "-keyout " +
                                 name + ".key -subj '/O=Test/CN=" + name +
                                 " CA' -days 30 -addext \"subjectAltName=${san%,}\" -out " + name + ".pem");
    };
    ASSERT_EQ(makeCa("big", 130), 0);
    ASSERT_EQ(makeCa("larger", 500), 0);
    ASSERT_EQ(makeCa("huge", 620), 0);
    const size_t size = dir.read("big.pem").size();
    ASSERT_GT(size, 10800u);
    ASSERT_LT(size, 11300u);
    ASSERT_LT(dir.read("larger.pem").size(), 48000u);
    ASSERT_GT(dir.read("huge.pem").size(), 48000u);

    // The node takes about 11 KB a write (more when the printer reads
    // quickly): the uploads go out in two and in several writes.
    for (const char* name : {"big", "larger"}) {
        const SimRun ctl = runCorvelctl(dir, {}, {"cert", "install-ca", std::string(name) + ".pem", "--json"});
        EXPECT_EQ(ctl.status, 0) << name << ctl.err;
        EXPECT_EQ(ctl.err, "");
        ASSERT_FALSE(ctl.log.empty());
        EXPECT_EQ(logValue(ctl.log.back(), "method"), "uploadNewCAFile") << name;
        EXPECT_EQ(logValue(ctl.log.back(), "status_code"), "1") << name;
        EXPECT_TRUE(holds(dir.read("state.txt"), "name=\"" + std::string(name) + " CA_")) << name << " installed";
    }

    // The largest file taken, 48,000 bytes (the certificate, then text after
    // it), under a long name: its request still fits one packet.
    const std::string longest = std::string(200, 'n') + ".pem";
    std::string padded = dir.read("larger.pem") + "\n";
    padded.resize(48000 - 1, '#');
    dir.write(longest, padded + "\n");
    const SimRun atLimit = runCorvelctl(dir, {}, {"cert", "install-ca", longest});
    EXPECT_EQ(atLimit.status, 0) << atLimit.err;
    ASSERT_FALSE(atLimit.log.empty());
    EXPECT_EQ(logValue(atLimit.log.back(), "status_code"), "1");

    const SimRun huge = runCorvelctl(dir, {}, {"cert", "install-ca", "huge.pem"});
    EXPECT_EQ(huge.status, 65) << huge.err;
    EXPECT_TRUE(holds(huge.err, "a certificate file may have at most 48000")) << huge.err;
    EXPECT_TRUE(huge.log.empty()) << "nothing sent, the installed CAs kept";
}

}  // namespace
}  // namespace e2e
