// The queries of the printer's state: each sends one fixed request and judges
// the answer with one of the channel's exchanges.
#include <algorithm>
#include <cstdio>
#include <string>

#include "npa/ByteOrder.h"
#include "npa/WirelessConfigurator.h"
#include "transport/HCUSBTransport.h"

namespace {

constexpr int kQueryTimeLimitSeconds = 3;

// Where a value sits inside a collected answer.
struct ValueSpan {
    bool found = false;
    size_t offset = 0;
    size_t length = 0;  // cut at the end of the answer
};

// Finds the inner answer packet to a read of group/field: A5, a 2-byte length,
// the repeated request 50 E0 D8 00 group field, the 2-byte value length, then
// the value. Its 11 header bytes must lie inside the answer; a value that runs
// past the end of the answer is cut there.
ValueSpan findReadValue(const std::vector<uint8_t>& answer, uint8_t group, uint8_t field)
{
    constexpr size_t kHeaderSize = 11;
    const uint8_t repeated[6] = {0x50, 0xE0, 0xD8, 0x00, group, field};
    ValueSpan span;
    for (size_t at = 0; at + kHeaderSize <= answer.size(); ++at) {
        if (answer[at] != 0xA5 || !std::equal(repeated, repeated + 6, answer.begin() + static_cast<long>(at + 3))) {
            continue;
        }
        const size_t declared = fromBigEndian(answer.data() + at + 9, 2);
        span.found = true;
        span.offset = at + kHeaderSize;
        span.length = std::min(declared, answer.size() - span.offset);
        return span;
    }
    return span;
}

const char* authStatusText(int status)
{
    static const char* const kTexts[] = {
        "802.1x not enabled",
        "NOT authenticated (deprecated)",
        "Authenticated",
        "Not Connected",
        "Server Cert Not Yet Valid",
        "Server Cert Expired",
        "Other Server Cert Verification Failure",
        "Client Cert Verification Failed",
        "EAP Type Mismatch",
        "Authentication Failed (general)",
        "Authentication in Progress",
        "CA Certificate Not Installed",
    };
    constexpr int kKnown = static_cast<int>(sizeof kTexts / sizeof kTexts[0]);
    return status >= 0 && status < kKnown ? kTexts[status] : "Unknown status";
}

}  // namespace

int WirelessConfigurator::waitForConnection()
{
    const std::vector<uint8_t> request = prepareReadRequest(0x28, 0x15);
    return npaChannel->pollConnection(request.data(), static_cast<int32_t>(request.size()));
}

int WirelessConfigurator::pollDeviceStatus()
{
    const std::vector<uint8_t> request = prepareReadRequest(0x06, 0x1F);
    return npaChannel->pollDeviceState(request.data(), static_cast<int32_t>(request.size()));
}

int WirelessConfigurator::showSSID()
{
    const std::vector<uint8_t> request = prepareReadRequest(0x28, 0x08);
    return npaChannel->pollText(request.data(), static_cast<int32_t>(request.size()));
}

int WirelessConfigurator::getIPAddress()
{
    const std::vector<uint8_t> request = prepareReadRequest(0x0A, 0x02);
    return npaChannel->pollAddress(request.data(), static_cast<int32_t>(request.size()));
}

int WirelessConfigurator::resetPrinter()
{
    // A settings request with the single item 06/14 = 1.
    static const uint8_t kResetRequest[13] = {0xA5, 0x00, 0x0A, 0x50, 0xE0, 0xDA, 0x01,
                                              0x06, 0x14, 0x00, 0x00, 0x01, 0x01};
    const std::vector<uint8_t> request = prepareFixedRequest(kResetRequest, sizeof kResetRequest);
    return npaChannel->pollReset(request.data(), static_cast<int32_t>(request.size()));
}

int WirelessConfigurator::queryAuthStatus()
{
    std::fprintf(stderr, "D [CVL] 802.1x Authentication status...\n");
    const std::vector<uint8_t> request = prepareReadRequest(0x2A, 0x1D);
    std::vector<uint8_t> answer;
    const int32_t count = npaChannel->exchangeNPA(request.data(), static_cast<int32_t>(request.size()), answer,
                                                  kQueryTimeLimitSeconds);
    std::fprintf(stderr, "D [CVL] Auth status response (%d bytes)\n", count);
    hexDump(answer.data(), count);

    const ValueSpan value = findReadValue(answer, 0x2A, 0x1D);
    if (!value.found || value.length == 0) {
        return -1;  // no status byte to report
    }
    const int status = answer[value.offset];
    std::fprintf(stderr, "D [CVL] Status: %d (%s)\n", status, authStatusText(status));
    return status;
}

int WirelessConfigurator::queryCertSettings()
{
    std::fprintf(stderr, "D [CVL] Certifcate settings...\n");

    std::fprintf(stderr, "D [CVL] Cert Organization...\n");
    std::vector<uint8_t> request = prepareReadRequest(0x2A, 0x06);
    std::vector<uint8_t> answer;
    int32_t count = npaChannel->exchangeNPA(request.data(), static_cast<int32_t>(request.size()), answer,
                                            kQueryTimeLimitSeconds);
    std::fprintf(stderr, "D [CVL] Cert org (%d bytes)\n", count);
    hexDump(answer.data(), count);
    const ValueSpan organization = findReadValue(answer, 0x2A, 0x06);
    if (organization.found) {
        // The text ends at its zero byte, if any, inside the value.
        const std::string text(answer.begin() + static_cast<long>(organization.offset),
                               answer.begin() + static_cast<long>(organization.offset + organization.length));
        std::fprintf(stderr, "D [CVL] Organization (%d bytes): %s\n", static_cast<int>(organization.length),
                     text.c_str());
    }

    std::fprintf(stderr, "D [CVL] Cert common name...\n");
    request = prepareReadRequest(0x2A, 0x0A);
    count = npaChannel->exchangeNPA(request.data(), static_cast<int32_t>(request.size()), answer,
                                    kQueryTimeLimitSeconds);
    std::fprintf(stderr, "D [CVL] Common name resp (%d bytes)\n", count);
    hexDump(answer.data(), count);
    return 0;
}
