// The 802.1x sequence: the 802.1x options first (with the validate-certificate
// flag that the printer's own certificate lists decide), then the network
// items, and in every case a report of the printer's 802.1x state.
#include <cstdio>

#include "common/Console.h"
#include "npa/NpaFrame.h"
#include "npa/WirelessConfigurator.h"

int WirelessConfigurator::configure8021x()
{
    traceF("D [CVL] Configuring for 8021x...\n");
    int result = set8021xOptions();
    if (result == 0) {
        items.clear();
        addMode();
        addSecurity();
        addSSID();  // SSID before channel in this request
        addChannel();
        result = sendSettingsRequest(true);
    }
    queryAuthStatus();
    return result;
}

int WirelessConfigurator::set8021xOptions()
{
    traceF("D [CVL] Setting 8021x Options...\n");
    items.clear();
    addEncryption();
    addAuthExtensions();
    addInnerAuth();
    add8021xUser();
    add8021xPassword();
    addValidateCertificate();
    if (config.encryption == "WEP-STATIC") {
        addWEPKeys();
        addWEPTransmitKey();
    }
    const int result = sendSettingsRequest(true);
    traceF("D [CVL] Setting 802.1x ret = %d\n", result);
    return result;
}

void WirelessConfigurator::addValidateCertificate()
{
    // The printer should validate the server's certificate when it holds
    // certificates of its own.
    const uint8_t validate = certificates.holdsOwnCertificates(*npaChannel) ? 1 : 0;
    traceF("D [CVL] Validate certificate? %d\n", validate);
    npa::appendFlagItem(items, npa::kValidateCertificate, validate);
}
