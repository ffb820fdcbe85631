// The setting operations: each turns option values of the record into one
// item of the settings request under construction.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "common/Console.h"
#include "common/LeadingNumber.h"
#include "npa/NpaFrame.h"
#include "npa/PasswordPrompt.h"
#include "npa/WirelessConfigurator.h"

namespace {

constexpr size_t kWEPKeyMaxLength = 26;
constexpr size_t kPSKMaxLength = 64;
constexpr size_t k8021xUserMaxValue = 32;       // 31 characters and the zero byte
constexpr size_t k8021xPasswordMaxValue = 256;  // 255 characters and the zero byte
constexpr size_t kNoLimit = 0xFFFF;             // only the 16-bit length field limits

int length(const std::string& text) { return static_cast<int>(text.size()); }

uint32_t channelNumber(const std::string& channel)
{
    // Only these exact texts are taken; everything else ("06", "12") is channel 6.
    static const char* const kChannels[] = {"1", "2", "3", "4", "5", "7", "8", "9", "10", "11"};
    for (const char* known : kChannels) {
        if (channel == known) {
            return static_cast<uint32_t>(std::strtoul(known, nullptr, 10));
        }
    }
    return 6;
}

struct SecurityChoice {
    uint32_t value;
    const char* name;
};

SecurityChoice securityChoice(const std::string& security, const std::string& encryption)
{
    if ((security == "OPEN" && encryption == "WEP") || security == "WEP" || security == "SHARED") {
        return {1, "WEP"};
    }
    if (security == "WPA" || security == "WPA-PER" || security == "WPA/WPA2") {
        return {2, "WPA PSK (Auto 1 or 2)"};
    }
    if (security == "WPA2" || security == "WPA-ENT") {
        return {4, "WPA-2 only PSK"};
    }
    if (security == "802.1x") {
        return {3, "802.1x"};
    }
    return {0, "No Security"};
}

uint32_t encryptionValue(const std::string& encryption)
{
    if (encryption == "WEP-DYNAMIC") {
        return 1;
    }
    if (encryption == "WEP-STATIC" || encryption == "WEP") {
        return 2;
    }
    if (encryption == "WPA-TKIP" || encryption == "TKIP") {
        return 3;
    }
    if (encryption == "WPA-AES" || encryption == "AES") {
        return 4;
    }
    return 0;  // "NONE" and every name not listed
}

uint32_t innerAuthValue(const std::string& inner)
{
    if (inner == "MSCHAP") {
        return 1;
    }
    if (inner == "MSCHAPv2") {
        return 2;
    }
    if (inner == "PAP") {
        return 3;
    }
    return 0;  // "CHAP" and every name not listed
}

// Whether any "|"-separated part of `extensions` contains `name`.
bool anyPartContains(const std::string& extensions, const char* name)
{
    size_t start = 0;
    while (start <= extensions.size()) {
        size_t end = extensions.find('|', start);
        if (end == std::string::npos) {
            end = extensions.size();
        }
        if (extensions.substr(start, end - start).find(name) != std::string::npos) {
            return true;
        }
        start = end + 1;
    }
    return false;
}

}  // namespace

void WirelessConfigurator::addMode()
{
    traceF("D [CVL] Mode = '%s'\n", config.mode.c_str());
    if (!config.mode.empty()) {
        npa::appendNumericItem(items, npa::kMode, config.mode == "Ad-Hoc" ? 1 : 0);
    }
}

void WirelessConfigurator::addChannel()
{
    const std::string channel = config.channel.empty() ? "6" : config.channel;
    npa::appendNumericItem(items, npa::kChannel, channelNumber(channel));
}

void WirelessConfigurator::addSSID()
{
    traceF("D [CVL] SSID = %s\n", config.ssid.c_str());
    if (!config.ssid.empty()) {
        npa::appendTextItem(items, npa::kSSID, config.ssid, kNoLimit, true);
    }
}

void WirelessConfigurator::addPassword()
{
    if (config.security == "None") {
        return;
    }
    std::string password = config.passwd;
    if (password.empty()) {
        std::fflush(stdout);  // earlier output must appear before the prompt
        password = Seam<PasswordSource>::get().password();
    }
    const npa::Key key = config.security == "WEP" ? npa::kWEPKey1 : npa::kPassphrase;
    npa::appendTextItem(items, key, password, kNoLimit, true);
}

void WirelessConfigurator::addWEPKeys()
{
    for (int keyNumber = 1; keyNumber <= 4; ++keyNumber) {
        const std::string& key = config.wepKey[keyNumber - 1];
        traceF("D [CVL] WEP Key %d = '%s' (%d bytes)\n", keyNumber, key.c_str(), length(key));
        // Keys 1 to 4 sit in the odd fields 09, 0B, 0D, 0F.
        const npa::Key field{npa::kWEPKey1.group, static_cast<uint8_t>(npa::kWEPKey1.field + 2 * (keyNumber - 1))};
        npa::appendTextItem(items, field, key, kWEPKeyMaxLength, false);
    }
}

void WirelessConfigurator::addPSK()
{
    traceF("D [CVL] PSK (Pre-shared key) = %s (%d bytes)\n", config.psk.c_str(), length(config.psk));
    npa::appendTextItem(items, npa::kPassphrase, config.psk, kPSKMaxLength, false);
}

void WirelessConfigurator::addWEPTransmitKey()
{
    traceF("D [CVL] WEP Transmit key = %s\n", config.wepTransmit.c_str());
    const std::string key = config.wepTransmit.empty() ? "1" : config.wepTransmit;
    npa::appendNumericItem(items, npa::kWEPTransmitKey, readLeadingNumber(key).lowByte);
}

void WirelessConfigurator::addSecurity()
{
    traceF("D [CVL] Security = '%s'\n", config.security.c_str());
    const std::string security = config.security.empty() ? "None" : config.security;
    const SecurityChoice choice = securityChoice(security, config.encryption);
    traceF("D [CVL] Security mode: %d (%s)\n", static_cast<int>(choice.value), choice.name);
    userF("npa data going: %x", choice.value);
    npa::appendNumericItem(items, npa::kSecurity, choice.value);
}

void WirelessConfigurator::addWEPAuthMode()
{
    if (config.encryption.empty()) {
        return;
    }
    uint32_t mode = 0;
    if (config.encryption == "WEP") {
        if (config.security == "OPEN") {
            mode = 1;
        } else if (config.security == "SHARED") {
            mode = 2;
        }
    }
    static const char* const kModeNames[] = {"Auto", "Open", "Shared"};
    traceF("D [CVL] WEP auth mode: %d (%s)\n", static_cast<int>(mode), kModeNames[mode]);
    npa::appendNumericItem(items, npa::kWEPAuthMode, mode);
}

void WirelessConfigurator::addEncryption()
{
    traceF("D [CVL] Encryption (advanced) = %s\n", config.encryption.c_str());
    if (!config.encryption.empty()) {
        npa::appendNumericItem(items, npa::kEncryption, encryptionValue(config.encryption));
    }
}

void WirelessConfigurator::add8021xUser()
{
    traceF("D [CVL] 802.1x User = %s (%d bytes)\n", config.user8021x.c_str(), length(config.user8021x));
    if (!config.user8021x.empty()) {
        npa::appendTextItem(items, npa::k8021xUser, config.user8021x, k8021xUserMaxValue, true);
    }
}

void WirelessConfigurator::add8021xPassword()
{
    traceF("D [CVL] 802.1x password = %s (%d bytes)\n", config.pwd8021x.c_str(), length(config.pwd8021x));
    if (!config.pwd8021x.empty()) {
        npa::appendTextItem(items, npa::k8021xPassword, config.pwd8021x, k8021xPasswordMaxValue, true);
    }
}

void WirelessConfigurator::addAuthExtensions()
{
    traceF("D [CVL] 802.1x Auth Extension = %s\n", config.authExt.c_str());
    static const char* const kExtensionNames[] = {"EAP-MD5", "MSCHAPv2", "LEAP", "PEAP", "EAP-TLS", "EAP-TTLS"};
    npa::Key key = npa::kAuthExtensions;
    for (const char* name : kExtensionNames) {
        npa::appendFlagItem(items, key, anyPartContains(config.authExt, name) ? 1 : 0);
        ++key.field;
    }
}

void WirelessConfigurator::addInnerAuth()
{
    traceF("D [CVL] 802.1x Inner Auth = %s\n", config.authInner.c_str());
    if (!config.authInner.empty()) {
        npa::appendNumericItem(items, npa::kInnerAuth, innerAuthValue(config.authInner));
    }
}
