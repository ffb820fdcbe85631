#include "ctl/WifiRules.h"

#include "ctl/OptionValues.h"

namespace corvelctl {

namespace {

class WifiRules {
public:
    explicit WifiRules(const WifiSettingTexts& texts) : m_Texts(texts) {}

    WifiOptions read()
    {
        m_Wifi.ssid = required("ssid", "SSID");
        checkLength("ssid", m_Wifi.ssid, 32);
        const auto security = value("security");
        if (!security) {
            throw usage(std::string("wifi needs --security, one of ") + namesOf(kSecurities));
        }
        m_Wifi.security = securityOption(*security);
        if (const auto channel = value("channel")) m_Wifi.channel = integerOption("channel", *channel, 1, 11);
        if (const auto mode = value("mode")) m_Wifi.mode = namedOption("mode", *mode, kModes);
        readEncryption();
        readWep();
        read8021x();
        readSecretSource();
        if (has("wait")) {
            const auto seconds = value("wait");
            if (seconds && seconds->empty()) throw usage("--wait= needs a number of seconds, 1-3600");
            m_Wifi.wait = std::chrono::seconds(seconds ? integerOption("wait", *seconds, 1, 3600) : 60);
        }
        return m_Wifi;
    }

private:
    bool has(const char* name) const { return m_Texts.flags.count(name) != 0 || m_Texts.values.count(name) != 0; }

    std::optional<std::string> value(const char* name) const
    {
        const auto found = m_Texts.values.find(name);
        if (found == m_Texts.values.end()) return std::nullopt;
        return found->second;
    }

    std::string required(const char* name, const char* placeholder) const
    {
        const auto text = value(name);
        if (!text) throw usage(std::string("wifi needs --") + name + " " + placeholder);
        return *text;
    }

    void refuseUnless(bool applies, const char* name, const std::string& appliesTo) const
    {
        if (has(name) && !applies) throw usage(std::string("--") + name + " applies to " + appliesTo + " only");
    }

    void readEncryption()
    {
        const auto text = value("encryption");
        const bool isWpa = m_Wifi.security == Security::WpaWpa2Psk || m_Wifi.security == Security::Wpa2Psk;
        if (!isWpa && m_Wifi.security != Security::Ieee8021x) {
            if (text) {
                throw usage(std::string("--encryption does not apply to --security ") + securityName(m_Wifi.security) +
                            (m_Wifi.security == Security::None ? "" : " (WEP is implied)"));
            }
            return;
        }
        m_Wifi.encryption = Encryption::Aes;
        if (!text) return;
        if (isWpa && *text == "wep-dynamic") {
            throw usage("--encryption wep-dynamic applies to --security 802.1x; WPA takes tkip or aes");
        }
        m_Wifi.encryption = namedOption("encryption", *text, kEncryptions);
    }

    void readWep()
    {
        const bool isWep = m_Wifi.security == Security::WepOpen || m_Wifi.security == Security::WepShared;
        refuseUnless(isWep, "wep-tx-key", "--security wep-open and wep-shared");
        if (const auto key = value("wep-tx-key")) m_Wifi.wepTransmitKey = integerOption("wep-tx-key", *key, 1, 4);
    }

    void read8021x()
    {
        const bool is8021x = m_Wifi.security == Security::Ieee8021x;
        for (const char* name : {"eap", "inner", "user"}) refuseUnless(is8021x, name, "--security 802.1x");
        if (!is8021x) return;
        if (m_Wifi.mode == WirelessMode::AdHoc) {
            throw usage("--security 802.1x needs an access point; it cannot be used with --mode ad-hoc");
        }
        m_Wifi.eap = eapOption(required("eap", "LIST (md5, mschapv2, leap, peap, tls, ttls, comma-separated)"));
        m_Wifi.user = required("user", "NAME");
        checkLength("user", m_Wifi.user, 31);
        if (const auto inner = value("inner")) {
            m_Wifi.inner = namedOption("inner", *inner, kInnerMethods);
            bool tunnels = false;
            for (const EapMethod method : m_Wifi.eap)
                tunnels = tunnels || method == EapMethod::Peap || method == EapMethod::Ttls;
            if (!tunnels) throw usage("--inner applies to peap and ttls, and --eap names neither");
        }
    }

    void readSecretSource()
    {
        const auto file = value("passphrase-file");
        const bool fromStdin = has("passphrase-stdin");
        refuseUnless(file.has_value(), "allow-shared-file", "--passphrase-file");
        if (m_Wifi.security == Security::None) {
            if (file || fromStdin) {
                throw usage(std::string("--security none takes no secret; leave out ") +
                            (file ? "--passphrase-file" : "--passphrase-stdin"));
            }
            m_Wifi.secretSource = SecretSource::NotNeeded;
            return;
        }
        if (file && fromStdin) throw usage("give --passphrase-file or --passphrase-stdin, not both");
        if (file && file->empty()) throw usage("--passphrase-file needs a file name");
        m_Wifi.secretSource = file ? SecretSource::File : fromStdin ? SecretSource::Stdin : SecretSource::Prompt;
        if (file) m_Wifi.passphraseFile = *file;
        m_Wifi.allowSharedFile = has("allow-shared-file");
    }

    const WifiSettingTexts& m_Texts;
    WifiOptions m_Wifi;
};

}  // namespace

WifiOptions readWifiSettings(const WifiSettingTexts& texts) { return WifiRules(texts).read(); }

}  // namespace corvelctl
