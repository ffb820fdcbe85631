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

const std::string kNone = "wifi --ssid Lab --security none ";
const std::string kWpa = "wifi --ssid Lab --security wpa2-psk --passphrase-stdin ";
const std::string kWep = "wifi --ssid Lab --passphrase-stdin --security ";
const std::string k8021x = "wifi --ssid Lab --security 802.1x --passphrase-stdin ";
const std::string kFile = "wifi --ssid Lab --security wpa2-psk --passphrase-file ";
const std::string kHex63 = "0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcde";

struct RefusalCase {
    const char* name;
    std::string line;  // corvelctl's arguments, split at blanks; --json added for the second run
    int status;
    std::string fragment;    // of the one line on standard error
    std::string setup = {};  // shell commands run in the directory first
    std::string input = {};  // standard input ("" : /dev/null)
};

// clang-format off
const RefusalCase kRefusals[] = {
    {"unknownCommand", "frobnicate", 64, "unknown command \"frobnicate\""},
    {"unknownOption", "status --frobnicate", 64, "unknown option --frobnicate"},
    {"unknownShortOption", "-x status", 64, "unknown option -x; the short options are -v, -j and -h"},
    {"certWithoutSubcommand", "cert", 64, "cert needs a subcommand: defaults, request, install-ca, install"},
    {"unknownSecurity", "wifi --ssid Lab --security wpa3", 64, "--security \"wpa3\" is not one of none, wep-open"},
    {"wpaOnlyNamed", "wifi --ssid Lab --security wpa-psk", 64, "no WPA-only mode; use wpa-wpa2-psk"},
    {"missingSsid", "wifi --security none", 64, "wifi needs --ssid SSID"},
    {"emptySsid", "wifi --ssid= --security none", 64, "--ssid must have 1-32 bytes; \"\" has 0"},
    {"ssid33Bytes", "wifi --security none --ssid " + std::string(33, 's'), 64, "--ssid must have 1-32 bytes"},
    {"channel0", kNone + "--channel 0", 64, "--channel \"0\" is not a whole number from 1 to 11"},
    {"channel12", kNone + "--channel 12", 64, "--channel \"12\" is not a whole number from 1 to 11"},
    {"timeoutUnderOneSecond", "status --timeout 0.999", 64, "--timeout \"0.999\" is not a number of seconds from 1 to 600"},
    {"timeoutOver600", "status --timeout 600.001", 64, "--timeout \"600.001\" is not a number"},
    {"timeoutFourDecimals", "status --timeout 1.0005", 64, "--timeout \"1.0005\" is not a number"},
    {"waitSeparateValue", kNone + "--wait 120", 64,
     "unexpected argument \"120\" after wifi (a value of --wait is written --wait=SECONDS)"},
    {"wait0", kNone + "--wait=0", 64, "--wait \"0\" is not a whole number from 1 to 3600"},
    {"encryptionWithWep", kWep + "wep-open --encryption aes", 64, "(WEP is implied)", "", "abcde"},
    {"wepDynamicWithWpa", kWpa + "--encryption wep-dynamic", 64, "wep-dynamic applies to --security 802.1x", "",
     "secret123"},
    {"secretWithNone", kNone + "--passphrase-stdin", 64, "--security none takes no secret", "", "x"},
    {"noSecretSourceWithoutTerminal", "wifi --ssid Lab --security wpa2-psk", 64,
     "where is the secret? give --passphrase-file FILE or --passphrase-stdin (standard input is not a terminal"},
    {"innerWithoutTunnel", k8021x + "--eap tls --inner pap --user u", 64, "--inner applies to peap and ttls", "", "pw"},
    {"user32Bytes", k8021x + "--eap peap --user " + std::string(32, 'u'), 64, "--user must have 1-31 bytes", "", "pw"},
    {"eapRepeated", k8021x + "--eap peap,peap --user u", 64, "--eap names peap twice", "", "pw"},
    {"ieee8021xAdHoc", k8021x + "--mode ad-hoc --eap peap --user u", 64, "802.1x needs an access point", "", "pw"},
    {"verbosityThree", "-vvv status", 64, "-v given more than twice"},
    {"badPrinterForm", "status --printer printer0", 64,
     "--printer \"printer0\" names no printer; use /dev/usb/lpN, lpN, BUS:DEV"},
    // The secret is checked before the printer is opened.
    {"passphrase7Characters", kWpa, 65,
     "the passphrase has 7 characters; WPA needs 8-63 printable ASCII characters or 64 hex digits", "", "1234567\n"},
    {"passphrase64NotHex", kWpa, 65, "the passphrase has 64 characters, so it must be 64 hex digits", "", kHex63 + "g"},
    {"passphrase65Characters", kWpa, 65, "the passphrase has 65 characters; WPA needs", "", kHex63 + "f0"},
    {"passphraseOver4KiB", kWpa, 65, "standard input holds more than 4096 bytes; no secret is that long", "",
     std::string(4097, 'a')},
    {"wepKey6Characters", kWep + "wep-open", 65,
     "WEP key 1 has 6 characters; a key is 5 or 13 printable ASCII characters or 10 or 26 hex digits", "", "abcdef\n"},
    {"wepKey10NotHex", kWep + "wep-shared", 65, "WEP key 2 has 10 characters, so it must be hex digits, and it is not",
     "", "0123456789\n012345678g"},
    {"wepFiveKeys", kWep + "wep-open", 65, "the secret has 5 lines; WEP takes 1-4 keys, one a line", "",
     "abcde\nabcde\nabcde\nabcde\nabcde"},
    {"wepTxKeyNotGiven", kWep + "wep-open --wep-tx-key 3", 65, "--wep-tx-key 3 names no key: the secret holds 2 keys",
     "", "abcde\nfghij\n"},
    {"ieee8021xEmptyPassword", k8021x + "--eap peap --user u", 65,
     "the 802.1x password has 0 bytes; it must have 1-255", "", "\n"},
    {"ieee8021xPassword256Bytes", "wifi --ssid Lab --security 802.1x --eap peap --user u --passphrase-file pw.txt", 65,
     "the 802.1x password has 256 bytes", "umask 077 && head -c 256 /dev/zero | tr '\\0' p > pw.txt"},
    {"passphraseFileGroupReadable", kFile + "pw.txt", 64,
     "passphrase file pw.txt is open to group or others (mode 0640); chmod go= it, or give --allow-shared-file",
     "echo secret123 > pw.txt && chmod 640 pw.txt"},
    {"passphraseFileSymlink", kFile + "link.txt", 64, "passphrase file link.txt is a symbolic link; name the file itself",
     "umask 077 && echo secret123 > pw.txt && ln -s pw.txt link.txt"},
    {"passphraseFileMissing", kFile + "missing.txt", 66,
     "cannot open passphrase file missing.txt: No such file or directory"},
    {"certFileMissing", "cert install-ca missing.pem", 66, "missing.pem"},
    {"certFileNoPem", "cert install notes.txt", 65, "notes.txt", "echo just notes > notes.txt"},
    {"requestFileExists", "cert request --out p.csr --common-name p1", 64, "p.csr exists; give --force to replace it",
     "touch p.csr"},
    {"unknownSerial", "status --printer serial:NOPE", 69, "no attached printer matches --printer serial:NOPE"},
    {"unknownNode", "status --printer lp5", 69, "lp5"},
    {"unknownBusDevice", "reset --printer 9:9", 69, "no attached printer matches --printer 9:9"},
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
        std::vector<std::string> args = words(c.line);
        if (asJson) args.push_back("--json");
        const SimRun run = runCorvelctl(dir, {}, args, c.input.empty() ? nullptr : c.input.c_str());
        ASSERT_FALSE(run.timedOut);
        EXPECT_EQ(run.status, c.status) << run.err;
        EXPECT_TRUE(run.log.empty()) << run.log.size() << " requests; the first: " << run.log.front();
        EXPECT_EQ(run.err.rfind("corvelctl: ", 0), 0u) << run.err;
        EXPECT_TRUE(holds(run.err, c.fragment)) << run.err;
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
    const SimRun run = runCorvelctl(dir, {}, words(kFile + "pw.txt --allow-shared-file"));
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
    // clang-format off
    const struct {
        const char* name;
        std::string line;
        std::string secret;
        std::vector<std::string> simOptions;
    } cases[] = {
        {"wpa", "wifi --security wpa-wpa2-psk", passphrase, {}},
        {"wpaJoinedAndWaited", "wifi --security wpa2-psk --wait=5 --json", passphrase,
         {"--join-after", "2", "--speed", "20"}},
        // In the envelope and again plain.
        {"ieee8021xPlainRetry", "wifi --security 802.1x --eap peap,ttls --inner pap --user alice",
         "p@ss w0rd for 802.1x", {"--fault", "refuse-envelope"}},
        {"wepKeys", "wifi --security wep-shared", "Thirteen char", {}},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        SimDir dir;
        const SimRun run = runCorvelctl(dir, c.simOptions, words("-vv " + c.line + " --ssid Lab --passphrase-stdin"),
                                        (c.secret + "\n").c_str());
        EXPECT_EQ(run.status, 0) << run.err;
        expectNotShown(run, c.secret);
    }
}

}  // namespace
}  // namespace e2e
