// The 802.1x sequence: the 802.1x options first (with the validate-certificate
// flag that the printer's own certificate lists decide), then the network
// items, and in every case a report of the printer's 802.1x state.
#include <cstdio>

#include "cert/CertMgr.h"
#include "npa/WirelessConfigurator.h"

int WirelessConfigurator::configure8021x()
{
    std::fprintf(stderr, "D [CVL] Configuring for 8021x...\n");
    int result = set8021xOptions();
    if (result == 0) {
        packet.clear();
        int32_t itemsLength = addMode();
        itemsLength += addSecurity();
        itemsLength += addSSID();  // SSID before channel in this request
        itemsLength += addChannel();
        result = sendSettingsRequest(itemsLength, true);
    }
    queryAuthStatus();
    return result;
}

int WirelessConfigurator::set8021xOptions()
{
    std::fprintf(stderr, "D [CVL] Setting 8021x Options...\n");
    packet.clear();
    int32_t itemsLength = addEncryption();
    itemsLength += addAuthExtensions();
    itemsLength += addInnerAuth();
    itemsLength += add8021xUser();
    itemsLength += add8021xPassword();
    itemsLength += addValidateCertificate();
    if (config.encryption == "WEP-STATIC") {
        for (int key = 1; key <= 4; ++key) {
            itemsLength += addWEPKey(key);
        }
        itemsLength += addWEPTransmitKey();
    }
    const int result = sendSettingsRequest(itemsLength, true);
    std::fprintf(stderr, "D [CVL] Setting 802.1x ret = %d\n", result);
    return result;
}

int32_t WirelessConfigurator::addValidateCertificate()
{
    // The printer should validate the server's certificate when it holds
    // certificates of its own: two or more friendly names, or a CA. A list
    // that cannot be read counts as empty.
    uint8_t validate = 0;
    if (const std::unique_ptr<CertMgr> client = CertMgr::create(npaChannel->duplicate())) {
        std::vector<std::string> names;
        if (client->getFriendlyNameList(names) == 0 && names.size() > 1) {
            validate = 1;
        } else {
            names.clear();
            validate = client->getCACommonNameList(names) == 0 && !names.empty() ? 1 : 0;
        }
    }
    std::fprintf(stderr, "D [CVL] Validate certificate? %d\n", validate);
    return appendFlagItem(0x2A, 0x24, validate);
}
