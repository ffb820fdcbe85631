// corvelctl's names of securities and methods in the words of the record.
#include "ctl/WifiSettings.h"

#include "ctl/Secrets.h"

namespace corvelctl {

namespace {

// The record's security: the advanced sequence the printer gets.
const char* sequenceOf(Security security)
{
    switch (security) {
    case Security::None:
    case Security::WepOpen: return "OPEN";
    case Security::WepShared: return "SHARED";
    case Security::WpaWpa2Psk: return "WPA-PER";  // the printer's WPA value accepts WPA and WPA2
    case Security::Wpa2Psk: return "WPA-ENT";     // the sequence that sends WPA2 only
    case Security::Ieee8021x: return "802.1x";
    }
    return "OPEN";
}

const char* encryptionOf(Encryption encryption)
{
    switch (encryption) {
    case Encryption::Aes: return "AES";
    case Encryption::Tkip: return "TKIP";
    case Encryption::WepDynamic: return "WEP-DYNAMIC";
    }
    return "AES";
}

const char* eapOf(EapMethod method)
{
    switch (method) {
    case EapMethod::Md5: return "EAP-MD5";
    case EapMethod::Mschapv2: return "MSCHAPv2";
    case EapMethod::Leap: return "LEAP";
    case EapMethod::Peap: return "PEAP";
    case EapMethod::Tls: return "EAP-TLS";
    case EapMethod::Ttls: return "EAP-TTLS";
    }
    return "";
}

const char* innerOf(InnerAuthentication inner)
{
    switch (inner) {
    case InnerAuthentication::Chap: return "CHAP";
    case InnerAuthentication::Mschap: return "MSCHAP";
    case InnerAuthentication::Mschapv2: return "MSCHAPv2";
    case InnerAuthentication::Pap: return "PAP";
    }
    return "";
}

}  // namespace

ConfigDetails wifiSettings(const WifiOptions& options, const Secret& secret, const std::string& printerPath)
{
    ConfigDetails config;
    config.usbPath = printerPath;
    config.ssid = options.ssid;
    config.mode = options.mode == WirelessMode::AdHoc ? "Ad-Hoc" : "Managed";
    config.channel = std::to_string(options.channel);
    config.security = sequenceOf(options.security);
    switch (options.security) {
    case Security::None: break;
    case Security::WepOpen:
    case Security::WepShared: {
        config.encryption = "WEP";
        const std::vector<Secret> keys = wepKeys(secret);
        for (size_t i = 0; i < keys.size() && i < 4; ++i) config.wepKey[i] = std::string(keys[i].reveal());
        config.wepTransmit = std::to_string(options.wepTransmitKey);
        break;
    }
    case Security::WpaWpa2Psk:
    case Security::Wpa2Psk:
        config.encryption = encryptionOf(options.encryption.value_or(Encryption::Aes));
        config.psk = std::string(secret.reveal());
        break;
    case Security::Ieee8021x:
        config.encryption = encryptionOf(options.encryption.value_or(Encryption::Aes));
        for (EapMethod method : options.eap) {
            config.authExt += (config.authExt.empty() ? "" : "|") + std::string(eapOf(method));
        }
        if (options.inner) config.authInner = innerOf(*options.inner);
        config.user8021x = options.user;
        config.pwd8021x = std::string(secret.reveal());
        break;
    }
    return config;
}

}  // namespace corvelctl
