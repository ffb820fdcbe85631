// What corvelctl refuses before the printer hears anything, and the secrets
// it never shows: the real binary against corvelsim, whose request log tells
// what reached the printer.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

using nlohmann::json;

const std::string kWpa = "--security=wpa2-psk";
const std::string kLongInput(4097, 'a');  // one byte more than any secret source is read

struct RefusalCase {
    const char* name;
    std::vector<std::string> args;  // corvelctl's, --json added for the second run
    int status;
    std::string setup = {};       // shell commands run in the directory first
    const char* input = nullptr;  // standard input (else /dev/null)
};

// clang-format off
const RefusalCase kRefusals[] = {
    {"unknownCommand", {"frobnicate"}, 64},
    {"unknownOption", {"status", "--frobnicate"}, 64},
    {"unknownShortOption", {"-x", "status"}, 64},
    {"certWithoutSubcommand", {"cert"}, 64},
    {"unknownSecurity", {"wifi", "--ssid", "Lab", "--security", "wpa3"}, 64},
    {"wpaOnlyNamed", {"wifi", "--ssid", "Lab", "--security", "wpa-psk"}, 64},
    {"missingSsid", {"wifi", "--security", "none"}, 64},
    {"emptySsid", {"wifi", "--ssid=", "--security", "none"}, 64},
    {"ssid33Bytes", {"wifi", "--ssid", std::string(33, 's'), "--security", "none"}, 64},
    {"channel0", {"wifi", "--ssid", "Lab", "--security", "none", "--channel", "0"}, 64},
    {"channel12", {"wifi", "--ssid", "Lab", "--security", "none", "--channel", "12"}, 64},
    {"timeoutUnderOneSecond", {"status", "--timeout", "0.999"}, 64},
    {"timeoutOver600", {"status", "--timeout", "600.001"}, 64},
    {"timeoutFourDecimals", {"status", "--timeout", "1.0005"}, 64},
    {"waitSeparateValue", {"wifi", "--ssid", "Lab", "--security", "none", "--wait", "120"}, 64},
    {"wait0", {"wifi", "--ssid", "Lab", "--security", "none", "--wait=0"}, 64},
    {"encryptionWithWep", {"wifi", "--ssid", "Lab", "--security", "wep-open", "--encryption", "aes",
                           "--passphrase-stdin"}, 64, "", "abcde"},
    {"wepDynamicWithWpa", {"wifi", "--ssid", "Lab", kWpa, "--encryption", "wep-dynamic", "--passphrase-stdin"},
     64, "", "secret123"},
    {"secretWithNone", {"wifi", "--ssid", "Lab", "--security", "none", "--passphrase-stdin"}, 64, "", "x"},
    {"noSecretSourceWithoutTerminal", {"wifi", "--ssid", "Lab", kWpa}, 64},
    {"innerWithoutTunnel", {"wifi", "--ssid", "Lab", "--security", "802.1x", "--eap", "tls", "--inner", "pap",
                            "--user", "u", "--passphrase-stdin"}, 64, "", "pw"},
    {"user32Bytes", {"wifi", "--ssid", "Lab", "--security", "802.1x", "--eap", "peap", "--user",
                     std::string(32, 'u'), "--passphrase-stdin"}, 64, "", "pw"},
    {"eapRepeated", {"wifi", "--ssid", "Lab", "--security", "802.1x", "--eap", "peap,peap", "--user", "u",
                     "--passphrase-stdin"}, 64, "", "pw"},
    {"ieee8021xAdHoc", {"wifi", "--ssid", "Lab", "--security", "802.1x", "--mode", "ad-hoc", "--eap", "peap",
                        "--user", "u", "--passphrase-stdin"}, 64, "", "pw"},
    {"verbosityThree", {"-vvv", "status"}, 64},
    {"badPrinterForm", {"status", "--printer", "printer0"}, 64},
    // The secret is checked before the printer is opened.
    {"passphrase7Characters", {"wifi", "--ssid", "Lab", kWpa, "--passphrase-stdin"}, 65, "", "1234567\n"},
    {"passphrase64NotHex", {"wifi", "--ssid", "Lab", kWpa, "--passphrase-stdin"}, 65, "",
     "0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdeg"},
    {"passphrase65Characters", {"wifi", "--ssid", "Lab", kWpa, "--passphrase-stdin"}, 65, "",
     "0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef0"},
    {"passphraseOver4KiB", {"wifi", "--ssid", "Lab", kWpa, "--passphrase-stdin"}, 65, "", kLongInput.c_str()},
    {"wepKey6Characters", {"wifi", "--ssid", "Lab", "--security", "wep-open", "--passphrase-stdin"}, 65, "",
     "abcdef\n"},
    {"wepKey10NotHex", {"wifi", "--ssid", "Lab", "--security", "wep-shared", "--passphrase-stdin"}, 65, "",
     "0123456789\n012345678g"},
    {"wepFiveKeys", {"wifi", "--ssid", "Lab", "--security", "wep-open", "--passphrase-stdin"}, 65, "",
     "abcde\nabcde\nabcde\nabcde\nabcde"},
    {"wepTxKeyNotGiven", {"wifi", "--ssid", "Lab", "--security", "wep-open", "--wep-tx-key", "3",
                          "--passphrase-stdin"}, 65, "", "abcde\nfghij\n"},
    {"ieee8021xEmptyPassword", {"wifi", "--ssid", "Lab", "--security", "802.1x", "--eap", "peap", "--user", "u",
                                "--passphrase-stdin"}, 65, "", "\n"},
    {"ieee8021xPassword256Bytes", {"wifi", "--ssid", "Lab", "--security", "802.1x", "--eap", "peap", "--user",
                                   "u", "--passphrase-file", "pw.txt"}, 65,
     "umask 077 && head -c 256 /dev/zero | tr '\\0' p > pw.txt"},
    {"passphraseFileGroupReadable", {"wifi", "--ssid", "Lab", kWpa, "--passphrase-file", "pw.txt"}, 64,
     "echo secret123 > pw.txt && chmod 640 pw.txt"},
    {"passphraseFileSymlink", {"wifi", "--ssid", "Lab", kWpa, "--passphrase-file", "link.txt"}, 64,
     "umask 077 && echo secret123 > pw.txt && ln -s pw.txt link.txt"},
    {"passphraseFileMissing", {"wifi", "--ssid", "Lab", kWpa, "--passphrase-file", "missing.txt"}, 66},
    {"certFileMissing", {"cert", "install-ca", "missing.pem"}, 66},
    {"certFileNoPem", {"cert", "install", "notes.txt"}, 65, "echo just notes > notes.txt"},
    {"requestFileExists", {"cert", "request", "--out", "p.csr", "--common-name", "p1"}, 64, "touch p.csr"},
    {"unknownSerial", {"status", "--printer", "serial:NOPE"}, 69},
    {"unknownNode", {"status", "--printer", "lp5"}, 69},
    {"unknownBusDevice", {"reset", "--printer", "9:9"}, 69},
};
// clang-format on

// Each refusal: its exit status, one line on standard error, nothing sent;
// with --json also the error object on standard output.
void expectRefusals(bool asJson)
{
    for (const RefusalCase& c : kRefusals) {
        SCOPED_TRACE(c.name);
        SimDir dir;
        if (!c.setup.empty()) {
            ASSERT_EQ(runShell(dir, c.setup), 0);
        }
        std::vector<std::string> args = c.args;
        if (asJson) args.push_back("--json");
        const SimRun run = runCorvelctl(dir, {}, args, c.input);
        ASSERT_FALSE(run.timedOut);
        EXPECT_EQ(run.status, c.status) << run.err;
        EXPECT_TRUE(run.log.empty()) << run.log.size() << " requests; the first: " << run.log.front();
        EXPECT_EQ(run.err.rfind("corvelctl: ", 0), 0u) << run.err;
        EXPECT_EQ(occurrences(run.err, "\n"), 1) << run.err;
        if (!asJson) {
            EXPECT_EQ(run.out, "");
            continue;
        }
        const json error = json::parse(run.out, nullptr, false);
        ASSERT_TRUE(error.is_object()) << run.out;
        EXPECT_EQ(error.size(), 2u) << run.out;
        EXPECT_EQ(error.value("exit", -1), c.status) << run.out;
        EXPECT_EQ("corvelctl: " + error.value("error", std::string()) + "\n", run.err);
    }
}

TEST(CtlRefusals, NothingReachesThePrinter) { expectRefusals(false); }
TEST(CtlRefusals, NothingReachesThePrinterAndTheErrorIsJson) { expectRefusals(true); }

// A shared passphrase file is taken when the caller says so.
TEST(CtlRefusals, SharedPassphraseFileWithAllowSharedFile)
{
    SimDir dir;
    ASSERT_EQ(runShell(dir, "echo secret123 > pw.txt && chmod 644 pw.txt"), 0);
    const SimRun run =
        runCorvelctl(dir, {}, {"wifi", "--ssid", "Lab", kWpa, "--passphrase-file", "pw.txt", "--allow-shared-file"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.log.size(), 1u);
}

// The places a secret could show in a -vv trace: its text anywhere, its
// bytes in a hex dump's columns ("A5 00 |ascii"), where a line end may fall
// inside it.
void expectNotShown(const SimRun& run, const std::string& secret)
{
    std::string dumpHex, dumpText;
    std::istringstream lines(run.out + run.err);
    for (std::string line; std::getline(lines, line);) {
        const size_t bar = line.find('|');
        if (bar == std::string::npos) continue;
        for (const char c : line.substr(0, bar))
            if (c != ' ') dumpHex += char(std::toupper(static_cast<unsigned char>(c)));
        dumpText += line.substr(bar + 1);
    }
    EXPECT_FALSE(dumpHex.empty()) << "no hex dump in the trace:\n" << run.err;
    const std::string hex = toHex(secret);
    for (const std::string& text : {run.out, run.err, dumpText}) EXPECT_FALSE(holds(text, secret));
    EXPECT_FALSE(holds(dumpHex, hex)) << "the secret's bytes are dumped";
    std::string lower = hex;
    for (char& c : lower) c = char(std::tolower(static_cast<unsigned char>(c)));
    EXPECT_FALSE(holds(run.out + run.err, lower));
    EXPECT_FALSE(holds(run.out + run.err, hexOf(secret, " "))) << "spaced hex";
    // It was sent all the same.
    std::string sent;
    for (const std::string& raw : rawRequests(run)) sent += raw;
    EXPECT_TRUE(holds(sent, hex));
}

TEST(CtlSecrets, NeverShownAtTheHighestVerbosity)
{
    const std::string passphrase = "Tr0ub4dor&3-horse battery";
    const std::string password = "p@ss w0rd for 802.1x";
    // clang-format off
    const struct {
        const char* name;
        std::vector<std::string> args;
        std::string secret;
        std::vector<std::string> simOptions;
    } cases[] = {
        {"wpa", {"wifi", "--ssid", "Lab", "--security", "wpa-wpa2-psk"}, passphrase, {}},
        {"wpaJoinedAndWaited", {"wifi", "--ssid", "Lab", "--security", "wpa2-psk", "--wait=5", "--json"}, passphrase,
         {"--join-after", "2", "--speed", "20"}},
        // In the envelope and again plain.
        {"ieee8021xPlainRetry", {"wifi", "--ssid", "Lab", "--security", "802.1x", "--eap", "peap,ttls", "--inner",
                                 "pap", "--user", "alice"}, password, {"--fault", "refuse-envelope"}},
        {"wepKeys", {"wifi", "--ssid", "Lab", "--security", "wep-shared"}, "Thirteen char", {}},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        SimDir dir;
        std::vector<std::string> args = {"-vv"};
        args.insert(args.end(), c.args.begin(), c.args.end());
        args.push_back("--passphrase-stdin");
        const SimRun run = runCorvelctl(dir, c.simOptions, args, (c.secret + "\n").c_str());
        EXPECT_EQ(run.status, 0) << run.err;
        expectNotShown(run, c.secret);
    }
}

}  // namespace
}  // namespace e2e
