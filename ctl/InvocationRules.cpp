#include "ctl/InvocationRules.h"

#include "ctl/OptionValues.h"

#include <utility>

namespace corvelctl {

namespace {

class InvocationBuilder {
public:
    explicit InvocationBuilder(RawCommandLine raw) : m_Raw(std::move(raw)) {}

    Invocation build()
    {
        m_Invocation.command = *m_Raw.command;
        readGlobalOptions();
        switch (m_Invocation.command) {
        case Command::Wifi: readWifiOptions(); break;
        case Command::CertRequest: readCertRequestOptions(); break;
        case Command::CertInstallCa:
        case Command::CertInstall: readCertificateFile(); break;
        default: break;
        }
        if (!m_Raw.operands.empty()) {
            const std::string& extra = m_Raw.operands.front();
            std::string hint;
            if (has("wait") && !value("wait") && decimal(extra, 0, 1 << 30)) {
                hint = " (a value of --wait is written --wait=SECONDS)";
            }
            throw usage("unexpected argument " + quoted(extra) + " after " + commandName(m_Invocation.command) + hint);
        }
        return m_Invocation;
    }

private:
    bool has(const char* name) const { return m_Raw.flags.count(name) != 0 || m_Raw.values.count(name) != 0; }

    std::optional<std::string> value(const char* name) const
    {
        const auto found = m_Raw.values.find(name);
        if (found == m_Raw.values.end()) return std::nullopt;
        return found->second;
    }

    std::string required(const char* name, const char* placeholder) const
    {
        const auto text = value(name);
        if (!text) {
            throw usage(std::string(commandName(m_Invocation.command)) + " needs --" + name + " " + placeholder);
        }
        return *text;
    }

    void readGlobalOptions()
    {
        GlobalOptions& global = m_Invocation.global;
        global.json = has("json");
        global.verbosity = m_Raw.verbosity;
        if (const auto timeout = value("timeout")) global.timeout = timeoutOption(*timeout);
        const std::vector<std::string> printers = repeated("printer");
        if (!printers.empty() && m_Invocation.command == Command::List) {
            throw usage("list shows every printer; --printer selects one for the other commands");
        }
        for (const std::string& printer : printers) global.printers.push_back(parsePrinterSelector(printer));
        // list shows every printer anyway.
        global.allPrinters = has("all") && m_Invocation.command != Command::List;
        if (global.allPrinters && !printers.empty()) {
            throw usage("give --all or --printer, not both: --all already means every printer attached");
        }
        const bool onePrinterOnly =
            m_Invocation.command == Command::CertRequest || m_Invocation.command == Command::CertInstall;
        if (onePrinterOnly && global.severalPrinters()) {
            throw usage(std::string(commandName(m_Invocation.command)) + " takes one printer: the file it " +
                        (m_Invocation.command == Command::CertRequest ? "writes" : "installs") +
                        " belongs to one printer; name it with --printer");
        }
    }

    std::vector<std::string> repeated(const char* name) const
    {
        const auto found = m_Raw.repeatedValues.find(name);
        return found == m_Raw.repeatedValues.end() ? std::vector<std::string>{} : found->second;
    }

    void refuseUnless(bool applies, const char* name, const std::string& appliesTo)
    {
        if (has(name) && !applies) throw usage(std::string("--") + name + " applies to " + appliesTo + " only");
    }

    void readWifiOptions()
    {
        WifiOptions& wifi = m_Invocation.wifi;
        wifi.ssid = required("ssid", "SSID");
        checkLength("ssid", wifi.ssid, 32);
        const auto security = value("security");
        if (!security) {
            throw usage(std::string("wifi needs --security, one of ") + namesOf(kSecurities));
        }
        wifi.security = securityOption(*security);
        if (const auto channel = value("channel")) wifi.channel = integerOption("channel", *channel, 1, 11);
        if (const auto mode = value("mode")) wifi.mode = namedOption("mode", *mode, kModes);
        readEncryption();
        readWep();
        read8021x();
        readSecretSource();
        if (has("wait")) {
            const auto seconds = value("wait");
            if (seconds && seconds->empty()) throw usage("--wait= needs a number of seconds, 1-3600");
            wifi.wait = std::chrono::seconds(seconds ? integerOption("wait", *seconds, 1, 3600) : 60);
        }
    }

    void readEncryption()
    {
        WifiOptions& wifi = m_Invocation.wifi;
        const auto text = value("encryption");
        const bool isWpa = wifi.security == Security::WpaWpa2Psk || wifi.security == Security::Wpa2Psk;
        if (!isWpa && wifi.security != Security::Ieee8021x) {
            if (text) {
                throw usage(std::string("--encryption does not apply to --security ") + securityName(wifi.security) +
                            (wifi.security == Security::None ? "" : " (WEP is implied)"));
            }
            return;
        }
        wifi.encryption = Encryption::Aes;
        if (!text) return;
        if (isWpa && *text == "wep-dynamic") {
            throw usage("--encryption wep-dynamic applies to --security 802.1x; WPA takes tkip or aes");
        }
        wifi.encryption = namedOption("encryption", *text, kEncryptions);
    }

    void readWep()
    {
        WifiOptions& wifi = m_Invocation.wifi;
        const bool isWep = wifi.security == Security::WepOpen || wifi.security == Security::WepShared;
        refuseUnless(isWep, "wep-tx-key", "--security wep-open and wep-shared");
        if (const auto key = value("wep-tx-key")) wifi.wepTransmitKey = integerOption("wep-tx-key", *key, 1, 4);
    }

    void read8021x()
    {
        WifiOptions& wifi = m_Invocation.wifi;
        const bool is8021x = wifi.security == Security::Ieee8021x;
        for (const char* name : {"eap", "inner", "user"}) refuseUnless(is8021x, name, "--security 802.1x");
        if (!is8021x) return;
        if (wifi.mode == WirelessMode::AdHoc) {
            throw usage("--security 802.1x needs an access point; it cannot be used with --mode ad-hoc");
        }
        wifi.eap = eapOption(required("eap", "LIST (md5, mschapv2, leap, peap, tls, ttls, comma-separated)"));
        wifi.user = required("user", "NAME");
        checkLength("user", wifi.user, 31);
        if (const auto inner = value("inner")) {
            wifi.inner = namedOption("inner", *inner, kInnerMethods);
            bool tunnels = false;
            for (const EapMethod method : wifi.eap)
                tunnels = tunnels || method == EapMethod::Peap || method == EapMethod::Ttls;
            if (!tunnels) throw usage("--inner applies to peap and ttls, and --eap names neither");
        }
    }

    void readSecretSource()
    {
        WifiOptions& wifi = m_Invocation.wifi;
        const auto file = value("passphrase-file");
        const bool fromStdin = has("passphrase-stdin");
        refuseUnless(file.has_value(), "allow-shared-file", "--passphrase-file");
        if (wifi.security == Security::None) {
            if (file || fromStdin) {
                throw usage(std::string("--security none takes no secret; leave out ") +
                            (file ? "--passphrase-file" : "--passphrase-stdin"));
            }
            wifi.secretSource = SecretSource::NotNeeded;
            return;
        }
        if (file && fromStdin) throw usage("give --passphrase-file or --passphrase-stdin, not both");
        if (file && file->empty()) throw usage("--passphrase-file needs a file name");
        wifi.secretSource = file ? SecretSource::File : fromStdin ? SecretSource::Stdin : SecretSource::Prompt;
        if (file) wifi.passphraseFile = *file;
        wifi.allowSharedFile = has("allow-shared-file");
    }

    void readCertRequestOptions()
    {
        CertRequestOptions& request = m_Invocation.certRequest;
        request.outFile = required("out", "FILE");
        if (request.outFile.empty()) throw usage("--out needs a file name");
        request.force = has("force");
        CertSubject& subject = request.subject;
        subject.commonName = required("common-name", "CN");
        const struct {
            const char* name;
            std::string* field;
            std::size_t maximum;
        } fields[] = {{"common-name", &subject.commonName, 64},
                      {"org", &subject.organization, 64},
                      {"unit", &subject.unit, 64},
                      {"state", &subject.state, 128},
                      {"city", &subject.city, 128},
                      {"altname", &subject.altname, 255}};
        for (const auto& field : fields) {
            const auto text = value(field.name);
            if (!text) continue;
            checkLength(field.name, *text, field.maximum);
            checkNoControlCharacters(field.name, *text);
            *field.field = *text;
        }
        if (const auto country = value("country")) {
            const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
            if (country->size() != 2 || !isLetter((*country)[0]) || !isLetter((*country)[1])) {
                throw usage("--country " + quoted(*country) + " is not a two-letter country code (such as DE)");
            }
            subject.country = *country;
        }
    }

    void readCertificateFile()
    {
        if (m_Raw.operands.empty()) {
            throw usage(std::string(commandName(m_Invocation.command)) + " needs the certificate FILE");
        }
        m_Invocation.certFile = m_Raw.operands.front();
        m_Raw.operands.erase(m_Raw.operands.begin());
        if (m_Invocation.certFile.empty()) throw usage("the certificate FILE name is empty");
    }

    RawCommandLine m_Raw;
    Invocation m_Invocation;
};

}  // namespace

Invocation buildInvocation(RawCommandLine raw) { return InvocationBuilder(std::move(raw)).build(); }

}  // namespace corvelctl
