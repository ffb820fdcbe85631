// The wireless configurator: collects setting items into one settings request,
// frames it (plain or in a pass-through envelope), runs the configuration
// sequences and the status queries over its own channel.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/ConfigDetails.h"
#include "npa/NPAChannel.h"

class WirelessConfigurator {
public:
    explicit WirelessConfigurator(ConfigDetails& config);
    WirelessConfigurator(ConfigDetails& config, std::unique_ptr<NPAChannel> channel);  // tests
    ~WirelessConfigurator();

    WirelessConfigurator(const WirelessConfigurator&) = delete;
    WirelessConfigurator& operator=(const WirelessConfigurator&) = delete;

    // true: every request goes out inside a pass-through envelope; false: plain.
    void setPassThrough(bool passThrough);

    // Where the network password comes from when the record has none; the
    // default asks the user on the terminal.
    using PasswordSource = std::function<std::string()>;
    void setPasswordSource(PasswordSource source);

    // Configuration sequences: -1 refused or no answer, 0 accepted, 1 otherwise.
    int basicConfig();
    int advancedConfig();
    int configurePrinter();  // returns the length of the request it showed
    int configureOpen();
    int configureShared();
    int configureWPAPersonal();
    int configureWPAEnterprise();
    int configure8021x();
    int set8021xOptions();

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

    // Setting operations: each appends one item (six for the extensions) to the
    // request under construction and returns the count of bytes appended.
    int32_t addMode();
    int32_t addChannel();
    int32_t addSSID();
    int32_t addPassword();
    int32_t addWEPKey(int keyNumber);  // 1 to 4
    int32_t addPSK();
    int32_t addWEPTransmitKey();
    int32_t addSecurity();
    int32_t addWEPAuthMode();
    int32_t addEncryption();
    int32_t add8021xUser();
    int32_t add8021xPassword();
    int32_t addAuthExtensions();
    int32_t addInnerAuth();
    // Asks the printer's certificate manager which certificates it holds and
    // appends the validate-certificate flag (2A/24); returns 6.
    int32_t addValidateCertificate();

    // Framing of the request under construction.
    int32_t appendBytes(int32_t count, const uint8_t* bytes);
    static void buildItemHeader(uint8_t* buffer, uint16_t valueLength, uint8_t field, uint8_t group);
    int32_t wrapSettings(int32_t itemsLength);
    static int32_t wrapPassThrough(std::vector<uint8_t>& bytes, int32_t innerLength);

    // The 9-byte read request for one field, wrapped when passThrough is set.
    std::vector<uint8_t> prepareReadRequest(uint8_t group, uint8_t field) const;
    // A complete fixed request, wrapped when passThrough is set.
    std::vector<uint8_t> prepareFixedRequest(const uint8_t* request, int32_t length) const;

    const std::vector<uint8_t>& getPacket() const { return packet; }
    bool getPassThrough() const { return passThrough; }

private:
    // Frames the items in `packet` (settings request, envelope when passThrough)
    // and returns a contiguous copy of the whole request.
    std::vector<uint8_t> finishSettingsRequest(int32_t itemsLength);
    // Frames and sends the items in `packet`; dumps the request first when asked.
    int sendSettingsRequest(int32_t itemsLength, bool dumpRequest);
    // Appends the items of the basic configuration; returns their total size.
    int32_t appendBasicItems();
    int sendWPASettings();
    int32_t appendWEPItems();

    // Item builders shared by the setting operations.
    int32_t appendNumericItem(uint8_t group, uint8_t field, uint32_t value);
    int32_t appendFlagItem(uint8_t group, uint8_t field, uint8_t flag);
    int32_t appendTextItem(uint8_t group, uint8_t field, const std::string& text, size_t maxValueLength,
                           bool withZero);

    std::vector<uint8_t> packet;
    ConfigDetails& config;
    std::unique_ptr<NPAChannel> npaChannel;
    bool passThrough = true;
    PasswordSource passwordSource;
};
