// The command line: what is refused (with its exit status and the part of
// the message that tells the user what to fix), and what accepted lines mean.
// The refusals that tests/e2e/ctl_refusals_e2e_test.cpp runs are not repeated here.
#include "ctl/CommandLine.h"
#include "ctl/Failure.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

using namespace corvelctl;

namespace {

ParsedCommandLine parse(const std::string& line)
{
    std::istringstream stream(line);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) words.push_back(word);
    std::vector<const char*> argv{"corvelctl"};
    for (const std::string& word : words) argv.push_back(word.c_str());
    return parseCommandLine(static_cast<int>(argv.size()), argv.data());
}

const std::string kWpa = "wifi --ssid Home --security wpa2-psk ";
const std::string k8021x = "wifi --ssid Corp --security 802.1x --user alice --eap peap ";
const std::string kCsr = "cert request --out req.pem --common-name printer ";

TEST(CommandLine, RefusesWithWhatIsWrongAndWhatIsAllowed)
{
    const struct {
        std::string line;
        const char* fragment;
    } cases[] = {
        {"", "no command given; the commands are list, status, wifi, provision, cert, reset"},
        {"cert frob", "unknown cert subcommand \"frob\""},
        {"status -vx", "unknown option -x in -vx"},
        {"status extra", "unexpected argument \"extra\" after status"},
        {"status --json --json", "--json given twice"},
        {"status -j --json", "--json given twice"},
        {"status --json -j", "--json given twice"},
        {"status -v --verbose -v", "-v given more than twice"},
        {"status --json=yes", "--json takes no value"},
        {"status --printer", "--printer needs a value"},
        {"status --printer --json", "--printer needs a value (one that starts with '-' is written --printer=VALUE)"},
        {"status --all --printer lp0", "give --all or --printer, not both"},
        {"--printer lp0 --all status", "give --all or --printer, not both"},
        {"status --all --all", "--all given twice"},
        {"status --all=yes", "--all takes no value"},
        {"--all " + kCsr, "cert request takes one printer: the file it writes belongs to one printer"},
        {"--printer lp0 --printer lp1 " + kCsr, "cert request takes one printer"},
        {"--printer lp0 --printer lp0 cert install c.pem", "cert install takes one printer: the file it installs"},
        {"--all provision", "provision takes one printer: it applies the settings file of one printer"},
        {"status --printer lp0 --printer nonsense", "--printer \"nonsense\" names no printer"},
        {"list --printer lp0", "list shows every printer"},
        {"status --timeout 2.", "from 1 to 600"},
        {"status --timeout 1e2", "from 1 to 600"},
        {"status --timeout -5", "--timeout needs a value"},
        {"--ssid Home wifi", "--ssid is an option of wifi; give it after the command"},
        {"status --ssid Home", "--ssid is not an option of status (it belongs to wifi)"},
        {"wifi --security none --out x", "--out is not an option of wifi (it belongs to cert request)"},
        {"wifi --ssid Home",
         "wifi needs --security, one of none, wep-open, wep-shared, wpa-wpa2-psk, wpa2-psk, 802.1x"},
        {"wifi --ssid Home --security wpa-enterprise", "enterprise authentication is --security 802.1x"},
        {"wifi --ssid Home --security none --channel 6a", "from 1 to 11"},
        {"wifi --ssid Home --security none --mode infra", "--mode \"infra\" is not one of managed, ad-hoc"},
        {"wifi --ssid Home --security none --encryption aes", "--encryption does not apply to --security none"},
        {kWpa + "--encryption ccmp", "--encryption \"ccmp\" is not one of aes, tkip, wep-dynamic"},
        {kWpa + "--wep-tx-key 2", "--wep-tx-key applies to --security wep-open and wep-shared only"},
        {"wifi --ssid Home --security wep-open --wep-tx-key 5", "--wep-tx-key \"5\" is not a whole number from 1 to 4"},
        {kWpa + "--eap tls", "--eap applies to --security 802.1x only"},
        {kWpa + "--user alice", "--user applies to --security 802.1x only"},
        {"wifi --ssid Corp --security 802.1x --user alice", "wifi needs --eap LIST"},
        {"wifi --ssid Corp --security 802.1x --eap tls", "wifi needs --user NAME"},
        {"wifi --ssid Corp --security 802.1x --user alice --eap tls,,md5", "has an empty item"},
        {"wifi --ssid Corp --security 802.1x --user alice --eap tls,gtc", "--eap \"gtc\" is not one of md5, mschapv2"},
        {k8021x + "--inner eap", "--inner \"eap\" is not one of chap, mschap, mschapv2, pap"},
        {"wifi --ssid Home --security none --passphrase-file pw", "leave out --passphrase-file"},
        {kWpa + "--passphrase-file pw --passphrase-stdin", "give --passphrase-file or --passphrase-stdin, not both"},
        {kWpa + "--passphrase-stdin --allow-shared-file", "--allow-shared-file applies to --passphrase-file only"},
        {kWpa + "--passphrase-file=", "--passphrase-file needs a file name"},
        {kWpa + "--wait=3601", "from 1 to 3600"},
        {kWpa + "--wait=", "--wait= needs a number of seconds"},
        {kWpa + "--wait --wait=5", "--wait given twice"},
        {kWpa + "--wait=5 --wait", "--wait given twice"},
        {"provision --settings a.conf --settings-dir d", "give --settings or --settings-dir, not both"},
        {"provision --settings=", "--settings needs a file name"},
        {"provision --settings-dir=", "--settings-dir needs a folder name"},
        {"provision --ssid Home", "--ssid is not an option of provision (it belongs to wifi)"},
        {"--settings a.conf provision", "--settings is an option of provision; give it after the command"},
        {"wifi --settings a.conf", "--settings is not an option of wifi (it belongs to provision)"},
        {"provision a.conf", "unexpected argument \"a.conf\" after provision"},
        {"cert request --common-name printer", "cert request needs --out FILE"},
        {"cert request --out req.pem", "cert request needs --common-name CN"},
        {kCsr + "--country DEU", "--country \"DEU\" is not a two-letter"},
        {kCsr + "--country D1", "not a two-letter"},
        {"cert request --out req.pem --common-name= ", "--common-name must have 1-64 bytes"},
        {kCsr + "--org " + std::string(65, 'o'), "--org must have 1-64"},
        {kCsr + "--city " + std::string(129, 'c'), "--city must have 1-128"},
        {kCsr + "--force --force", "--force given twice"},
        {"cert install-ca", "cert install-ca needs the certificate FILE"},
        {"cert install ca.pem other.pem", "unexpected argument \"other.pem\" after cert install"},
        {"cert defaults --force", "--force is not an option of cert defaults (it belongs to cert request)"},
        // After "--", --help is an operand.
        {"cert install -- --help x", "unexpected argument \"x\" after cert install"},
    };
    for (const auto& c : cases) {
        try {
            parse(c.line);
            ADD_FAILURE() << "accepted: " << c.line;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.status(), ExitStatus::Usage) << c.line;
            EXPECT_NE(failure.message().find(c.fragment), std::string::npos)
                << c.line << "\n  message: " << failure.message() << "\n  expected: " << c.fragment;
        }
    }
    const char* controlInSubject[] = {"corvelctl", "cert", "request", "--out", "r.pem", "--common-name", "a\nb"};
    EXPECT_THROW(parseCommandLine(7, controlInSubject), Failure);
}

// An invocation in one line: the command, the global options, then what the
// command reads, each enum by its command-line name.
std::string summary(const Invocation& in)
{
    std::ostringstream s;
    s << commandName(in.command);
    for (const PrinterSelector& printer : in.global.printers) s << " printer=" << printer.given;
    s << (in.global.allPrinters ? " all" : "") << (in.global.severalPrinters() ? " several" : "")
      << (in.global.json ? " json" : "") << " v" << in.global.verbosity << " " << in.global.timeout.count() << "ms";
    const WifiOptions& w = in.wifi;
    if (in.command == Command::Wifi) {
        const char* sources[] = {"none", "file:", "stdin", "prompt"};
        s << " ssid=" << w.ssid << " " << securityName(w.security) << " ch" << w.channel
          << (w.mode == WirelessMode::AdHoc ? " ad-hoc" : "") << " "
          << (w.encryption ? encryptionName(*w.encryption) : "-") << " tx" << w.wepTransmitKey
          << " secret=" << sources[int(w.secretSource)] << w.passphraseFile << (w.allowSharedFile ? " shared" : "");
        for (const EapMethod method : w.eap) s << " eap=" << eapMethodName(method);
        if (w.inner) s << " inner=" << innerAuthenticationName(*w.inner);
        if (!w.user.empty()) s << " user=" << w.user;
        if (w.wait) s << " wait=" << w.wait->count();
    }
    const CertRequestOptions& r = in.certRequest;
    const CertSubject& subject = r.subject;
    if (in.command == Command::CertRequest) {
        s << " out=" << r.outFile << (r.force ? " force" : "") << " " << subject.commonName << "|"
          << subject.organization << "|" << subject.unit << "|" << subject.state << "|" << subject.country << "|"
          << subject.city << "|" << subject.altname;
    }
    if (in.command == Command::Provision) {
        s << " settings=" << in.provision.settingsFile << " dir=" << in.provision.settingsDir;
    }
    if (!in.certFile.empty()) s << " file=" << in.certFile;
    return s.str();
}

TEST(CommandLine, ReadsAcceptedLinesWithTheirDefaults)
{
    const struct {
        std::string line;
        std::string summary;
    } cases[] = {
        // Global options before or after the command, in both forms.
        {"--printer=serial:X1 -vj --timeout 2.5 status", "status printer=serial:X1 json v1 2500ms"},
        {"status --printer serial:X1 --verbose --json --timeout=2.5", "status printer=serial:X1 json v1 2500ms"},
        {"reset", "reset v0 5000ms"},
        {"-vv reset", "reset v2 5000ms"},
        {"-v reset --verbose", "reset v2 5000ms"},
        {"status --timeout 600", "status v0 600000ms"},
        {"status --timeout 1", "status v0 1000ms"},
        {kWpa, "wifi v0 5000ms ssid=Home wpa2-psk ch6 aes tx1 secret=prompt"},
        {"wifi --ssid=-dash --security wep-shared --channel 011 --mode ad-hoc --wep-tx-key 3 "
         "--passphrase-file keys.txt --allow-shared-file --wait",
         "wifi v0 5000ms ssid=-dash wep-shared ch11 ad-hoc - tx3 secret=file:keys.txt shared wait=60"},
        {"wifi --ssid Corp --security 802.1x --user alice --eap ttls,tls --inner mschapv2 --encryption wep-dynamic "
         "--passphrase-stdin --wait=90",
         "wifi v0 5000ms ssid=Corp 802.1x ch6 wep-dynamic tx1 secret=stdin eap=ttls eap=tls inner=mschapv2 "
         "user=alice wait=90"},
        {"wifi --ssid Cafe --security none", "wifi v0 5000ms ssid=Cafe none ch6 - tx1 secret=none"},
        {"wifi --ssid " + std::string(32, 's') + " --security wpa-wpa2-psk --encryption tkip",
         "wifi v0 5000ms ssid=" + std::string(32, 's') + " wpa-wpa2-psk ch6 tkip tx1 secret=prompt"},
        {"cert request --out=req.pem --common-name printer.example --org Acme --unit IT --state Bavaria "
         "--country de --city Munich --altname printer --force",
         "cert request v0 5000ms out=req.pem force printer.example|Acme|IT|Bavaria|de|Munich|printer"},
        {"cert request --out r --common-name c", "cert request v0 5000ms out=r c||||||"},
        {"--json cert install-ca ca.pem", "cert install-ca json v0 5000ms file=ca.pem"},
        // After "--" a file may start with '-'.
        {"cert install -v -- -odd.pem", "cert install v1 5000ms file=-odd.pem"},
        {"cert defaults", "cert defaults v0 5000ms"},
        {"--printer serial:X1 provision",
         "provision printer=serial:X1 v0 5000ms settings= dir=/etc/corvelcfg/printers"},
        {"provision --settings-dir=/srv/p", "provision v0 5000ms settings= dir=/srv/p"},
        {"provision --settings a.conf -j", "provision json v0 5000ms settings=a.conf dir=/etc/corvelcfg/printers"},
        // Several printers: each --printer kept in order (a repeat too: it
        // is found to be the same printer later), --all; list shows all anyway.
        {"--printer lp1 status --printer=serial:X1 --printer lp1",
         "status printer=lp1 printer=serial:X1 printer=lp1 several v0 5000ms"},
        {"--all reset", "reset all several v0 5000ms"},
        {"--all cert install-ca ca.pem", "cert install-ca all several v0 5000ms file=ca.pem"},
        {"--printer 1:4 " + kCsr, "cert request printer=1:4 v0 5000ms out=req.pem printer||||||"},
        {"list --all", "list v0 5000ms"},
    };
    for (const auto& c : cases) {
        const ParsedCommandLine parsed = parse(c.line);
        EXPECT_EQ(parsed.action, ParsedCommandLine::Action::Run) << c.line;
        EXPECT_EQ(summary(parsed.invocation), c.summary) << c.line;
    }
    EXPECT_EQ(parse("--printer=serial:X1 status").invocation.global.printers.at(0).kind, PrinterSelector::Kind::Serial);
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
        {"provision --settings x --help", "Usage: corvelctl [--printer serial:SERIAL] provision"},
        {"status --bogus --version", "corvelctl "},
    };
    for (const auto& c : cases) {
        const ParsedCommandLine parsed = parse(c.line);
        EXPECT_NE(parsed.action, ParsedCommandLine::Action::Run) << c.line;
        EXPECT_EQ(parsed.text.rfind(c.start, 0), 0u) << c.line << "\n" << parsed.text;
    }
    EXPECT_EQ(parse("status --bogus --version").action, ParsedCommandLine::Action::ShowVersion);
}

TEST(CommandLine, FindsJsonWithoutParsing)
{
    const struct {
        std::vector<const char*> argv;
        bool json;
    } cases[] = {{{"corvelctl", "frob", "--json"}, true}, {{"corvelctl", "-vj", "frob"}, true},
                 {{"corvelctl", "status"}, false},        {{"corvelctl", "--", "--json"}, false},
                 {{"corvelctl", "--jsonx"}, false},       {{"corvelctl", "-vx", "-j"}, true}};
    for (const auto& c : cases)
        EXPECT_EQ(asksForJson(static_cast<int>(c.argv.size()), c.argv.data()), c.json) << c.argv[1];
}

}  // namespace
