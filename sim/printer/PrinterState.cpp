#include "sim/printer/PrinterState.h"

#include "sim/printer/AuthStatus.h"

namespace corvelsim {

namespace {

constexpr unsigned kSSID = fieldKey(0x28, 0x08);
constexpr unsigned kConnectionState = fieldKey(0x28, 0x15);
constexpr unsigned kSecurity = fieldKey(0x28, 0x22);
constexpr unsigned kPSK = fieldKey(0x28, 0x11);
constexpr unsigned kWEPKeys[] = {fieldKey(0x28, 0x09), fieldKey(0x28, 0x0B), fieldKey(0x28, 0x0D),
                                 fieldKey(0x28, 0x0F)};
constexpr unsigned kUser8021x = fieldKey(0x2A, 0x02);
constexpr unsigned kPassword8021x = fieldKey(0x2A, 0x03);
constexpr unsigned kEapTls = fieldKey(0x2A, 0x18);
constexpr unsigned kPasswordEaps[] = {fieldKey(0x2A, 0x14), fieldKey(0x2A, 0x15), fieldKey(0x2A, 0x16),
                                      fieldKey(0x2A, 0x17), fieldKey(0x2A, 0x19)};  // MD5, MSCHAPv2, LEAP, PEAP, TTLS
constexpr unsigned kValidateCertificate = fieldKey(0x2A, 0x24);
constexpr unsigned kOrganization = fieldKey(0x2A, 0x06);
constexpr unsigned kCommonName = fieldKey(0x2A, 0x0A);
constexpr unsigned kAuthStatus = fieldKey(0x2A, 0x1D);
constexpr unsigned kDeviceState = fieldKey(0x06, 0x1F);
constexpr unsigned kReset = fieldKey(0x06, 0x14);
constexpr unsigned kAddress = fieldKey(0x0A, 0x02);

constexpr uint8_t kJoined = 0x00;
constexpr uint8_t kNotJoined = 0x01;
constexpr uint8_t kReady = 0x2D;
constexpr uint8_t kNotReady = 0x00;
constexpr unsigned kSecurity8021x = 3;

bool isResetItem(const Item& item)
{
    return fieldKey(item.group, item.field) == kReset && !item.value.empty() && item.value.back() == 0x01;
}

Bytes textValue(const std::string& text)
{
    Bytes value(text.begin(), text.end());
    value.push_back(0);
    return value;
}

}  // namespace

PrinterState::PrinterState(NetworkLife life) : m_Life(life) {}

PrinterState factoryState(NetworkLife life)
{
    PrinterState state(life);
    state.items[kOrganization] = textValue("Corvel Simulated Printers");
    state.items[kCommonName] = textValue("CORVELSIM-0001");
    state.defaultSubject = {"Corvel Simulated Printers", "Printing", "US", "Oregon", "Portland", "CORVELSIM-0001",
                            "corvelsim-0001.local"};
    return state;
}

// What the printer holds, judged by the rules of AuthStatus.
Bytes PrinterState::authStatusValue() const
{
    AuthFacts facts;
    facts.security8021x = security() == kSecurity8021x;
    facts.validateCertificate = hasValue(kValidateCertificate);
    facts.caInstalled = !certs.cas.empty();
    if (const SignedCert* cert = certs.activeCert()) {
        switch (validityNow(cert->certPem)) {
        case Validity::Expired: facts.clientCert = ClientCert::Expired; break;
        case Validity::NotYetValid: facts.clientCert = ClientCert::NotYetValid; break;
        case Validity::Unreadable: break;
        case Validity::Valid: facts.clientCert = ClientCert::Valid; break;
        }
    }
    facts.eapTls = hasValue(kEapTls);
    for (unsigned key : kPasswordEaps) facts.passwordEap = facts.passwordEap || hasValue(key);
    facts.hasUser = hasValue(kUser8021x);
    facts.hasPassword = hasValue(kPassword8021x);
    facts.joined = joined;
    return {uint8_t(authStatus(facts))};
}

// Organization and common name of the installed signed certificate; the
// printer's own values while it has none.
Bytes PrinterState::certSubjectField(unsigned key) const
{
    const SignedCert* cert = certs.activeCert();
    CertInfo info;
    std::string pem;
    if (cert == nullptr || !readCertificate(cert->certPem, info, pem)) {
        auto it = items.find(key);
        return it == items.end() ? Bytes{} : it->second;
    }
    return textValue(key == kOrganization ? info.organization : info.commonName);
}

bool PrinterState::hasValue(unsigned key) const
{
    auto it = items.find(key);
    if (it == items.end()) return false;
    for (uint8_t byte : it->second) {
        if (byte != 0) return true;
    }
    return false;
}

unsigned PrinterState::security() const
{
    auto it = items.find(kSecurity);
    if (it == items.end()) return 0;
    unsigned value = 0;
    for (uint8_t byte : it->second) value = (value << 8) | byte;
    return value;
}

bool PrinterState::settingsComplete() const
{
    if (!hasValue(kSSID)) return false;
    switch (security()) {
    case 1:
        for (unsigned key : kWEPKeys) {
            if (hasValue(key)) return true;
        }
        return false;
    case 2:
    case 4: return hasValue(kPSK);
    case 3: return hasValue(kUser8021x);
    default: return true;
    }
}

void PrinterState::dropConnection()
{
    joined = false;
    connectionPolls = 0;
}

void PrinterState::applySettings(const std::vector<Item>& settings)
{
    for (const Item& item : settings) {
        if (isResetItem(item)) {
            ++resets;
            dropConnection();
            readyPolls = 0;
            continue;
        }
        items[fieldKey(item.group, item.field)] = item.value;
        dropConnection();
    }
}

Bytes PrinterState::readField(uint8_t group, uint8_t field)
{
    unsigned key = fieldKey(group, field);
    // With no polls to wait for, complete settings join at once.
    if (!joined && m_Life.joinAfterPolls <= 0 && settingsComplete()) joined = true;
    switch (key) {
    case kConnectionState:
        if (!joined && settingsComplete()) {
            ++connectionPolls;
            joined = connectionPolls >= m_Life.joinAfterPolls;
        }
        return {joined ? kJoined : kNotJoined};
    case kDeviceState:
        if (readyPolls < m_Life.readyAfterPolls) ++readyPolls;
        return {readyPolls >= m_Life.readyAfterPolls ? kReady : kNotReady};
    case kAddress:
        if (!joined) return {0, 0, 0, 0};
        return Bytes(m_Life.address.begin(), m_Life.address.end());
    case kAuthStatus:
        if (items.count(key) != 0) return items[key];  // set by hand in the state file
        return authStatusValue();
    case kOrganization:
    case kCommonName: return certSubjectField(key);
    default: break;
    }

    auto it = items.find(key);
    if (it == items.end()) return {};
    Bytes value = it->second;
    // The SSID reads back as zero-terminated text whatever was sent.
    if (key == kSSID && (value.empty() || value.back() != 0)) value.push_back(0);
    return value;
}

}  // namespace corvelsim
