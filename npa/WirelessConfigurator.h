// The wireless configurator: collects setting items into one settings request,
// frames it (plain or in a pass-through envelope), runs the configuration
// sequences and the status queries over its own channel.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "npa/CertificateInventory.h"
#include "npa/ConfigDetails.h"
#include "npa/NPAChannel.h"
#include "npa/NpaFrame.h"

class WirelessConfigurator {
public:
    // `certificates` (not owned) decides the 802.1x validate-certificate flag.
    WirelessConfigurator(ConfigDetails& config, CertificateInventory& certificates);
    ~WirelessConfigurator();

    WirelessConfigurator(const WirelessConfigurator&) = delete;
    WirelessConfigurator& operator=(const WirelessConfigurator&) = delete;

    // true: every request goes out inside a pass-through envelope; false: plain.
    void setPassThrough(bool passThrough);

    // Configuration sequences: -1 refused or no answer, 0 accepted, 1 otherwise.
    int basicConfig();
    int advancedConfig();    // the sequence the record's security names
    int configurePrinter();  // returns the length of the request it showed

    // Queries of the printer's state.
    int resetPrinter();
    int getIPAddress();
    int waitForConnection();
    int pollDeviceStatus();
    int showSSID();
    int queryAuthStatus();
    int queryCertSettings();

    // Sends raw bytes unchanged and dumps the answer. Returns 0.
    int sendNPA(const uint8_t* bytes, int32_t length, int timeLimitSeconds);

private:
    // The sequences of advancedConfig.
    int configureOpen();
    int configureShared();
    int configureWPAPersonal();
    int configureWPAEnterprise();
    int sendWPASettings();
    int configure8021x();
    int set8021xOptions();

    // Setting operations: each appends the item (six for the extensions) that
    // the record's values ask for to `items`, or nothing.
    void addMode();
    void addChannel();
    void addSSID();
    void addPassword();
    void addWEPKeys();  // all four
    void addPSK();
    void addWEPTransmitKey();
    void addSecurity();
    void addWEPAuthMode();
    void addEncryption();
    void add8021xUser();
    void add8021xPassword();
    void addAuthExtensions();
    void addInnerAuth();
    // Asks the certificate inventory and appends the validate-certificate flag.
    void addValidateCertificate();

    // Mode, security, channel and SSID, in this order.
    void addNetworkItems();
    // The four WEP keys, the transmit key and the authentication mode.
    void addWEPItems();

    // A request as it goes out: in the pass-through envelope when passThrough is set.
    std::vector<uint8_t> prepare(const std::vector<uint8_t>& request) const;
    // Frames the settings request of `items`; dumps it first when asked.
    int sendSettingsRequest(bool dumpRequest);
    // One read exchange of the queries; returns the answer's byte count.
    int32_t exchangeRead(const char* traceLabel, npa::Key key, std::vector<uint8_t>& answer);

    std::vector<uint8_t> items;  // of the settings request under construction
    ConfigDetails& config;
    CertificateInventory& certificates;
    std::unique_ptr<NPAChannel> npaChannel;
    bool passThrough = true;
};
