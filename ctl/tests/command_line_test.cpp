// The command line: what is refused (with its exit status and the part of
// the message that tells the user what to fix), and what accepted lines mean.
#include "ctl/CommandLine.h"
#include "ctl/Failure.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

using namespace corvelctl;

namespace {

std::vector<std::string> words(const std::string& line)
{
    std::istringstream stream(line);
    std::vector<std::string> result;
    for (std::string word; stream >> word;) result.push_back(word);
    return result;
}

ParsedCommandLine parse(const std::vector<std::string>& arguments)
{
    std::vector<const char*> argv{"corvelctl"};
    for (const std::string& argument : arguments) argv.push_back(argument.c_str());
    return parseCommandLine(static_cast<int>(argv.size()), argv.data());
}

Invocation run(const std::string& line)
{
    const ParsedCommandLine parsed = parse(words(line));
    EXPECT_EQ(parsed.action, ParsedCommandLine::Action::Run) << line;
    return parsed.invocation;
}

const std::string kWpa = "wifi --ssid Home --security wpa2-psk ";
const std::string k8021x = "wifi --ssid Corp --security 802.1x --user alice --eap peap ";

TEST(CommandLine, RefusesWithWhatIsWrongAndWhatIsAllowed)
{
    const struct {
        std::string line;
        const char* fragment;
    } cases[] = {
        {"", "no command given; the commands are list, status, wifi, cert, reset"},
        {"frob", "unknown command \"frob\""},
        {"cert", "cert needs a subcommand: defaults, request, install-ca, install"},
        {"cert frob", "unknown cert subcommand \"frob\""},
        {"status --frob", "unknown option --frob"},
        {"status -x", "unknown option -x; the short options are -v, -j and -h"},
        {"status -vx", "unknown option -x in -vx"},
        {"status extra", "unexpected argument \"extra\" after status"},
        {"status --json --json", "--json given twice"},
        {"status -j --json", "--json given twice"},
        {"status -vvv", "-v given more than twice"},
        {"status -v --verbose -v", "-v given more than twice"},
        {"status --json=yes", "--json takes no value"},
        {"status --printer", "--printer needs a value"},
        {"status --printer --json", "--printer needs a value (one that starts with '-' is written --printer=VALUE)"},
        {"status --printer lp0 --printer lp1", "--printer given twice"},
        {"status --printer lpx", "--printer \"lpx\" names no printer; use /dev/usb/lpN, lpN, BUS:DEV"},
        {"list --printer lp0", "list shows every printer"},
        {"status --timeout 0.5", "--timeout \"0.5\" is not a number of seconds from 1 to 600"},
        {"status --timeout 600.001", "from 1 to 600"},
        {"status --timeout 2.", "from 1 to 600"},
        {"status --timeout 1.2345", "from 1 to 600"},
        {"status --timeout 1e2", "from 1 to 600"},
        {"status --timeout -5", "--timeout needs a value"},
        {"--ssid Home wifi", "--ssid is an option of wifi; give it after the command"},
        {"status --ssid Home", "--ssid is not an option of status (it belongs to wifi)"},
        {"wifi --security none --out x", "--out is not an option of wifi (it belongs to cert request)"},
        {"wifi --security none", "wifi needs --ssid SSID"},
        {"wifi --ssid Home",
         "wifi needs --security, one of none, wep-open, wep-shared, wpa-wpa2-psk, wpa2-psk, 802.1x"},
        {"wifi --ssid= --security none", "--ssid must have 1-32 bytes; \"\" has 0"},
        {"wifi --ssid 123456789012345678901234567890123 --security none", "--ssid must have 1-32 bytes"},
        {"wifi --ssid Home --security wpa", "--security \"wpa\" is not one of none, wep-open"},
        {"wifi --ssid Home --security wpa-psk", "no WPA-only mode; use wpa-wpa2-psk"},
        {"wifi --ssid Home --security wpa-enterprise", "enterprise authentication is --security 802.1x"},
        {"wifi --ssid Home --security none --channel 12", "--channel \"12\" is not a whole number from 1 to 11"},
        {"wifi --ssid Home --security none --channel 0", "from 1 to 11"},
        {"wifi --ssid Home --security none --channel 6a", "from 1 to 11"},
        {"wifi --ssid Home --security none --mode infra", "--mode \"infra\" is not one of managed, ad-hoc"},
        {"wifi --ssid Home --security none --encryption aes", "--encryption does not apply to --security none"},
        {"wifi --ssid Home --security wep-open --encryption tkip", "(WEP is implied)"},
        {kWpa + "--encryption wep-dynamic", "wep-dynamic applies to --security 802.1x"},
        {kWpa + "--encryption ccmp", "--encryption \"ccmp\" is not one of aes, tkip, wep-dynamic"},
        {kWpa + "--wep-tx-key 2", "--wep-tx-key applies to --security wep-open and wep-shared only"},
        {"wifi --ssid Home --security wep-open --wep-tx-key 5", "--wep-tx-key \"5\" is not a whole number from 1 to 4"},
        {kWpa + "--eap tls", "--eap applies to --security 802.1x only"},
        {kWpa + "--user alice", "--user applies to --security 802.1x only"},
        {"wifi --ssid Corp --security 802.1x --user alice", "wifi needs --eap LIST"},
        {"wifi --ssid Corp --security 802.1x --eap tls", "wifi needs --user NAME"},
        {k8021x + "--mode ad-hoc", "802.1x needs an access point"},
        {"wifi --ssid Corp --security 802.1x --user alice --eap tls,,md5", "has an empty item"},
        {"wifi --ssid Corp --security 802.1x --user alice --eap tls,gtc", "--eap \"gtc\" is not one of md5, mschapv2"},
        {"wifi --ssid Corp --security 802.1x --user alice --eap tls,md5,tls", "--eap names tls twice"},
        {"wifi --ssid Corp --security 802.1x --user alice --eap tls --inner pap", "--inner applies to peap and ttls"},
        {k8021x + "--inner eap", "--inner \"eap\" is not one of chap, mschap, mschapv2, pap"},
        {"wifi --ssid Corp --security 802.1x --eap tls --user 12345678901234567890123456789012",
         "--user must have 1-31 bytes"},
        {"wifi --ssid Home --security none --passphrase-stdin", "--security none takes no secret"},
        {"wifi --ssid Home --security none --passphrase-file pw", "leave out --passphrase-file"},
        {kWpa + "--passphrase-file pw --passphrase-stdin", "give --passphrase-file or --passphrase-stdin, not both"},
        {kWpa + "--passphrase-stdin --allow-shared-file", "--allow-shared-file applies to --passphrase-file only"},
        {kWpa + "--passphrase-file=", "--passphrase-file needs a file name"},
        {kWpa + "--wait 30", "unexpected argument \"30\" after wifi (a value of --wait is written --wait=SECONDS)"},
        {kWpa + "--wait=0", "--wait \"0\" is not a whole number from 1 to 3600"},
        {kWpa + "--wait=3601", "from 1 to 3600"},
        {kWpa + "--wait=", "--wait= needs a number of seconds"},
        {kWpa + "--wait --wait=5", "--wait given twice"},
        {kWpa + "--wait=5 --wait", "--wait given twice"},
        {"cert request --common-name printer", "cert request needs --out FILE"},
        {"cert request --out req.pem", "cert request needs --common-name CN"},
        {"cert request --out req.pem --common-name printer --country DEU", "--country \"DEU\" is not a two-letter"},
        {"cert request --out req.pem --common-name printer --country D1", "not a two-letter"},
        {"cert request --out req.pem --common-name= ", "--common-name must have 1-64 bytes"},
        {"cert request --out req.pem --common-name printer --org " + std::string(65, 'o'), "--org must have 1-64"},
        {"cert request --out req.pem --common-name printer --city " + std::string(129, 'c'), "--city must have 1-128"},
        {"cert request --out req.pem --common-name printer --force --force", "--force given twice"},
        {"cert install-ca", "cert install-ca needs the certificate FILE"},
        {"cert install ca.pem other.pem", "unexpected argument \"other.pem\" after cert install"},
        {"cert defaults --force", "--force is not an option of cert defaults (it belongs to cert request)"},
    };
    for (const auto& c : cases) {
        try {
            parse(words(c.line));
            ADD_FAILURE() << "accepted: " << c.line;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.status(), ExitStatus::Usage) << c.line;
            EXPECT_NE(failure.message().find(c.fragment), std::string::npos)
                << c.line << "\n  message: " << failure.message() << "\n  expected: " << c.fragment;
        }
    }
}

TEST(CommandLine, RefusesControlCharactersInTheCertificateSubject)
{
    EXPECT_THROW(parse({"cert", "request", "--out", "r.pem", "--common-name", "a\nb"}), Failure);
}

TEST(CommandLine, ReadsGlobalOptionsBeforeOrAfterTheCommandInBothForms)
{
    const Invocation before = run("--printer=serial:X1 -vj --timeout 2.5 status");
    const Invocation after = run("status --printer serial:X1 --verbose --json --timeout=2.5");
    for (const Invocation& invocation : {before, after}) {
        EXPECT_EQ(invocation.command, Command::Status);
        ASSERT_TRUE(invocation.global.printer);
        EXPECT_EQ(invocation.global.printer->kind, PrinterSelector::Kind::Serial);
        EXPECT_EQ(invocation.global.printer->serial, "X1");
        EXPECT_TRUE(invocation.global.json);
        EXPECT_EQ(invocation.global.verbosity, 1);
        EXPECT_EQ(invocation.global.timeout.count(), 2500);
    }
    const Invocation defaults = run("reset");
    EXPECT_FALSE(defaults.global.printer);
    EXPECT_FALSE(defaults.global.json);
    EXPECT_EQ(defaults.global.verbosity, 0);
    EXPECT_EQ(defaults.global.timeout.count(), 5000);
    EXPECT_EQ(run("-vv reset").global.verbosity, 2);
    EXPECT_EQ(run("-v reset --verbose").global.verbosity, 2);
    EXPECT_EQ(run("status --timeout 600").global.timeout.count(), 600000);
    EXPECT_EQ(run("status --timeout 1").global.timeout.count(), 1000);
}

TEST(CommandLine, ReadsWifiOptionsWithTheirDefaults)
{
    const Invocation wpa = run(kWpa);
    EXPECT_EQ(wpa.command, Command::Wifi);
    EXPECT_EQ(wpa.wifi.ssid, "Home");
    EXPECT_EQ(wpa.wifi.security, Security::Wpa2Psk);
    EXPECT_EQ(wpa.wifi.channel, 6);
    EXPECT_EQ(wpa.wifi.mode, WirelessMode::Managed);
    EXPECT_EQ(wpa.wifi.encryption, Encryption::Aes);
    EXPECT_EQ(wpa.wifi.secretSource, SecretSource::Prompt);
    EXPECT_FALSE(wpa.wifi.wait);

    const Invocation wep = run("wifi --ssid=-dash --security wep-shared --channel 011 --mode ad-hoc --wep-tx-key 3 "
                               "--passphrase-file keys.txt --allow-shared-file --wait");
    EXPECT_EQ(wep.wifi.ssid, "-dash");
    EXPECT_EQ(wep.wifi.security, Security::WepShared);
    EXPECT_EQ(wep.wifi.channel, 11);
    EXPECT_EQ(wep.wifi.mode, WirelessMode::AdHoc);
    EXPECT_FALSE(wep.wifi.encryption);
    EXPECT_EQ(wep.wifi.wepTransmitKey, 3);
    EXPECT_EQ(wep.wifi.secretSource, SecretSource::File);
    EXPECT_EQ(wep.wifi.passphraseFile, "keys.txt");
    EXPECT_TRUE(wep.wifi.allowSharedFile);
    EXPECT_EQ(wep.wifi.wait, std::chrono::seconds(60));

    const Invocation enterprise =
        run("wifi --ssid Corp --security 802.1x --user alice --eap ttls,tls --inner mschapv2 --encryption wep-dynamic "
            "--passphrase-stdin --wait=90");
    EXPECT_EQ(enterprise.wifi.security, Security::Ieee8021x);
    EXPECT_EQ(enterprise.wifi.eap, (std::vector<EapMethod>{EapMethod::Ttls, EapMethod::Tls}));
    EXPECT_EQ(enterprise.wifi.inner, InnerAuthentication::Mschapv2);
    EXPECT_EQ(enterprise.wifi.encryption, Encryption::WepDynamic);
    EXPECT_EQ(enterprise.wifi.user, "alice");
    EXPECT_EQ(enterprise.wifi.secretSource, SecretSource::Stdin);
    EXPECT_EQ(enterprise.wifi.wait, std::chrono::seconds(90));

    const Invocation open = run("wifi --ssid Cafe --security none");
    EXPECT_EQ(open.wifi.secretSource, SecretSource::NotNeeded);
    EXPECT_EQ(run("wifi --ssid " + std::string(32, 's') + " --security wpa-wpa2-psk --encryption tkip").wifi.encryption,
              Encryption::Tkip);
}

TEST(CommandLine, ReadsCertificateCommands)
{
    const Invocation request = run("cert request --out=req.pem --common-name printer.example --org Acme --unit IT "
                                   "--state Bavaria --country de --city Munich --altname printer --force");
    EXPECT_EQ(request.command, Command::CertRequest);
    EXPECT_EQ(request.certRequest.outFile, "req.pem");
    EXPECT_TRUE(request.certRequest.force);
    const CertSubject& subject = request.certRequest.subject;
    EXPECT_EQ(subject.commonName, "printer.example");
    EXPECT_EQ(subject.organization, "Acme");
    EXPECT_EQ(subject.unit, "IT");
    EXPECT_EQ(subject.state, "Bavaria");
    EXPECT_EQ(subject.country, "de");
    EXPECT_EQ(subject.city, "Munich");
    EXPECT_EQ(subject.altname, "printer");
    EXPECT_FALSE(run("cert request --out r --common-name c").certRequest.force);

    const Invocation ca = run("--json cert install-ca ca.pem");
    EXPECT_EQ(ca.command, Command::CertInstallCa);
    EXPECT_EQ(ca.certFile, "ca.pem");
    // After "--" a file may start with '-'.
    const ParsedCommandLine dashed = parse({"cert", "install", "-v", "--", "-odd.pem"});
    EXPECT_EQ(dashed.invocation.command, Command::CertInstall);
    EXPECT_EQ(dashed.invocation.certFile, "-odd.pem");
    EXPECT_EQ(dashed.invocation.global.verbosity, 1);
    EXPECT_EQ(run("cert defaults").command, Command::CertDefaults);
}

TEST(CommandLine, HelpAndVersionWinOverMistakes)
{
    const struct {
        std::string line;
        const char* start;
    } cases[] = {
        {"--help", "Usage: corvelctl [OPTIONS] COMMAND"},
        {"-h frob", "Usage: corvelctl [OPTIONS] COMMAND"},
        {"wifi --channel 99 --help", "Usage: corvelctl wifi --ssid SSID"},
        {"--printer lp0 wifi -vh", "Usage: corvelctl wifi --ssid SSID"},
        {"cert -h", "Usage: corvelctl cert defaults | request"},
        {"cert request -h", "Usage: corvelctl cert request --out FILE"},
        {"status --help", "Usage: corvelctl status"},
        {"list -h", "Usage: corvelctl list"},
    };
    for (const auto& c : cases) {
        const ParsedCommandLine parsed = parse(words(c.line));
        EXPECT_EQ(parsed.action, ParsedCommandLine::Action::ShowHelp) << c.line;
        EXPECT_EQ(parsed.text.rfind(c.start, 0), 0u) << c.line << "\n" << parsed.text;
    }
    const ParsedCommandLine version = parse({"status", "--bogus", "--version"});
    EXPECT_EQ(version.action, ParsedCommandLine::Action::ShowVersion);
    EXPECT_EQ(version.text.rfind("corvelctl ", 0), 0u);
    // After "--" they are operands.
    EXPECT_THROW(parse({"cert", "install", "--", "--help", "x"}), Failure);
}

TEST(CommandLine, FindsJsonWithoutParsing)
{
    const struct {
        std::vector<std::string> arguments;
        bool json;
    } cases[] = {{{"frob", "--json"}, true}, {{"-vj", "frob"}, true}, {{"status"}, false},
                 {{"--", "--json"}, false},  {{"--jsonx"}, false},    {{"-vx", "-j"}, true}};
    for (const auto& c : cases) {
        std::vector<const char*> argv{"corvelctl"};
        for (const std::string& argument : c.arguments) argv.push_back(argument.c_str());
        EXPECT_EQ(asksForJson(static_cast<int>(argv.size()), argv.data()), c.json) << c.arguments.front();
    }
}

}  // namespace
