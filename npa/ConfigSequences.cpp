// The configuration sequences: which items each run sends, in which order,
// and the progress the default run shows the user.
#include <cstdio>

#include "common/Console.h"
#include "npa/NpaFrame.h"
#include "npa/WirelessConfigurator.h"
#include "transport/HexDump.h"

namespace {

// The frame length fields have 16 bits.
constexpr size_t kLargestRequest = 0xFFFF + 3;

}  // namespace

int WirelessConfigurator::sendSettingsRequest(bool dumpRequest)
{
    const std::vector<uint8_t> request = prepare(npa::settingsRequest(items));
    if (request.size() > kLargestRequest) {
        // The length field could not describe it; the printer would misread it.
        traceF("D [CVL] Settings request too long (%d bytes)!\n", static_cast<int>(request.size()));
        return -1;
    }
    if (dumpRequest) {
        hexDump(request.data(), static_cast<int32_t>(request.size()));
    }
    return npaChannel->sendSettings(request.data(), static_cast<int32_t>(request.size()));
}

void WirelessConfigurator::addNetworkItems()
{
    addMode();
    addSecurity();
    addChannel();
    addSSID();
}

void WirelessConfigurator::addWEPItems()
{
    addWEPKeys();
    addWEPTransmitKey();
    addWEPAuthMode();
}

int WirelessConfigurator::basicConfig()
{
    traceF("D [CVL] Basic config...\n");
    items.clear();
    addNetworkItems();
    addPassword();
    const int result = sendSettingsRequest(false);
    traceF("D [CVL] Basic config ret = %d\n", result);
    return result;
}

// Both WPA sequences send the same items; only their trace line differs.
int WirelessConfigurator::sendWPASettings()
{
    items.clear();
    addPSK();
    addEncryption();
    addNetworkItems();
    return sendSettingsRequest(true);
}

int WirelessConfigurator::configureWPAEnterprise()
{
    traceF("D [CVL] Configuring WPA Enterprise...\n");
    return sendWPASettings();
}

int WirelessConfigurator::configureWPAPersonal()
{
    traceF("D [CVL] Configuring WPA Personal...\n");
    return sendWPASettings();
}

int WirelessConfigurator::configureOpen()
{
    traceF("D [CVL] Configuring Open Mode...\n");
    items.clear();
    if (config.encryption == "WEP") {  // open WEP carries its keys, plain open none
        addWEPItems();
    }
    addNetworkItems();
    return sendSettingsRequest(true);
}

int WirelessConfigurator::configureShared()
{
    traceF("D [CVL] Configuring Shared Mode...\n");
    items.clear();
    addWEPItems();
    addNetworkItems();
    return sendSettingsRequest(true);
}

int WirelessConfigurator::advancedConfig()
{
    traceF("D [CVL] Advanced config...\n");
    traceF("D [CVL] Master security = '%s'\n", config.security.c_str());

    struct Choice {
        const char* security;
        int (WirelessConfigurator::*sequence)();
        const char* resultLine;
    };
    static const Choice kChoices[] = {
        {"802.1x", &WirelessConfigurator::configure8021x, "D [CVL] Adv 8021x ret = %d\n"},
        {"OPEN", &WirelessConfigurator::configureOpen, "D [CVL] Adv OPEN ret = %d\n"},
        {"SHARED", &WirelessConfigurator::configureShared, "D [CVL] Adv SHARED ret = %d\n"},
        {"WPA-PER", &WirelessConfigurator::configureWPAPersonal, "D [CVL] Adv WPA-Personal ret = %d\n"},
        {"WPA-ENT", &WirelessConfigurator::configureWPAEnterprise, "D [CVL] Adv WPA-Ent ret = %d\n"},
    };
    for (const Choice& choice : kChoices) {
        if (config.security == choice.security) {
            const int result = (this->*choice.sequence)();
            traceF(choice.resultLine, result);
            return result;
        }
    }
    return 0;  // no advanced sequence for this security: nothing is sent
}

int WirelessConfigurator::configurePrinter()
{
    // Show the request first; basicConfig builds and sends its own copy.
    items.clear();
    addNetworkItems();
    addPassword();
    const std::vector<uint8_t> request = prepare(npa::settingsRequest(items));
    for (uint8_t byte : request) {
        traceF("%x ", byte);
    }

    userF("Configuring the printer....\n");
    userF("Resetting the printer....\n");
    userF("Connecting to wireless network....");
    if (basicConfig() == -1) {
        setPassThrough(false);
        basicConfig();
    }
    waitForConnection();
    userF("Acquiring network address....\n");
    userF("IP-ADDRESS : ");
    getIPAddress();
    return static_cast<int>(request.size());
}
