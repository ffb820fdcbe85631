// The command line of corvelctl, read into plain values. Every value is
// checked here, before anything is opened: a wrong command line is a usage
// failure (exit 64) whose message says what is wrong and what is allowed.
#pragma once

#include "ctl/PrinterSelector.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace corvelctl {

enum class Command { List, Status, Wifi, Provision, CertDefaults, CertRequest, CertInstallCa, CertInstall, Reset };

enum class Security { None, WepOpen, WepShared, WpaWpa2Psk, Wpa2Psk, Ieee8021x };
enum class Encryption { Aes, Tkip, WepDynamic };
enum class WirelessMode { Managed, AdHoc };
enum class EapMethod { Md5, Mschapv2, Leap, Peap, Tls, Ttls };
enum class InnerAuthentication { Chap, Mschap, Mschapv2, Pap };

// Where the secret of a wifi command comes from; the secret itself is read
// later (Secrets.h), never from the command line.
enum class SecretSource {
    NotNeeded,  // --security none
    File,       // --passphrase-file
    Stdin,      // --passphrase-stdin
    Prompt,     // neither: a prompt when standard input is a terminal
};

struct GlobalOptions {
    std::vector<PrinterSelector> printers;  // --printer, each as given
    bool allPrinters = false;               // --all
    // Whether the command runs on several printers at once (one element
    // each in the output), even when they turn out to be one.
    bool severalPrinters() const { return allPrinters || printers.size() > 1; }
    bool json = false;
    int verbosity = 0;                        // 0, 1 (-v) or 2 (-vv)
    std::chrono::milliseconds timeout{5000};  // of each exchange
    // Not an option: the printer a run with several printers gives its trace
    // lines to, so that they can be told apart ("" for one printer).
    std::string traceLabel;
};

struct WifiOptions {
    std::string ssid;  // 1-32 bytes
    Security security = Security::None;
    int channel = 6;  // 1-11
    WirelessMode mode = WirelessMode::Managed;
    std::optional<Encryption> encryption;  // set (default Aes) for the WPA kinds and 802.1x only
    int wepTransmitKey = 1;                // 1-4, meaningful for WEP only
    std::vector<EapMethod> eap;            // 802.1x: at least one, no repeats, in the order given
    std::optional<InnerAuthentication> inner;
    std::string user;  // 802.1x: 1-31 bytes
    SecretSource secretSource = SecretSource::NotNeeded;
    std::string passphraseFile;  // with SecretSource::File
    bool allowSharedFile = false;
    std::optional<std::chrono::seconds> wait;  // --wait: 1-3600, 60 when given without a value
};

// Each field 1-64 bytes but state and city 1-128, country two letters; no
// control characters. Absent fields are empty.
struct CertSubject {
    std::string commonName;  // required
    std::string organization, unit, state, country, city, altname;
};

struct CertRequestOptions {
    std::string outFile;
    bool force = false;
    CertSubject subject;
};

// Where provision finds its settings file: `settingsFile` when given, else
// SERIAL.conf or default.conf in `settingsDir`.
struct ProvisionOptions {
    std::string settingsFile;
    std::string settingsDir = "/etc/corvelcfg/printers";
};

struct Invocation {
    Command command = Command::List;
    GlobalOptions global;
    WifiOptions wifi;                // Command::Wifi
    ProvisionOptions provision;      // Command::Provision
    CertRequestOptions certRequest;  // Command::CertRequest
    std::string certFile;            // Command::CertInstallCa, Command::CertInstall
};

// What the command line asks for: a run, or a text to print (exit 0).
struct ParsedCommandLine {
    enum class Action { Run, ShowHelp, ShowVersion };
    Action action = Action::Run;
    Invocation invocation;
    std::string text;  // the help or version text, with its final line end
};

// Reads argv[1..argc-1]. Throws Failure (exit 64) for a wrong command line;
// --help and --version win over any mistake on the same line.
ParsedCommandLine parseCommandLine(int argc, const char* const* argv);

// Whether the command line asks for JSON (--json or -j before any "--"),
// found without parsing, so that even a usage failure can be given as JSON.
bool asksForJson(int argc, const char* const* argv);

// The names used on the command line, for messages and reports.
const char* securityName(Security security);
const char* encryptionName(Encryption encryption);
const char* eapMethodName(EapMethod method);
const char* innerAuthenticationName(InnerAuthentication inner);
const char* commandName(Command command);  // "status", "cert install-ca", ...

}  // namespace corvelctl
