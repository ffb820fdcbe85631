// The queries of the printer's state: each sends one fixed request and judges
// the answer with one of the channel's exchanges.
#include <cstdio>
#include <string>

#include "common/Console.h"
#include "npa/FieldReading.h"
#include "npa/NpaFrame.h"
#include "npa/WirelessConfigurator.h"
#include "transport/HexDump.h"

namespace {

constexpr int kQueryTimeLimitSeconds = 3;

}  // namespace

int32_t WirelessConfigurator::exchangeRead(const char* traceLabel, npa::Key key, std::vector<uint8_t>& answer)
{
    const std::vector<uint8_t> request = prepare(npa::readRequest(key));
    const int32_t count =
        npaChannel->exchangeNPA(request.data(), static_cast<int32_t>(request.size()), answer, kQueryTimeLimitSeconds);
    traceF("D [CVL] %s (%d bytes)\n", traceLabel, count);
    hexDump(answer.data(), count);
    return count;
}

int WirelessConfigurator::waitForConnection()
{
    const std::vector<uint8_t> request = prepare(npa::readRequest(npa::kConnectionState));
    return npaChannel->pollConnection(request.data(), static_cast<int32_t>(request.size()));
}

int WirelessConfigurator::pollDeviceStatus()
{
    const std::vector<uint8_t> request = prepare(npa::readRequest(npa::kDeviceState));
    return npaChannel->pollDeviceState(request.data(), static_cast<int32_t>(request.size()));
}

int WirelessConfigurator::showSSID()
{
    const std::vector<uint8_t> request = prepare(npa::readRequest(npa::kSSID));
    return npaChannel->pollText(request.data(), static_cast<int32_t>(request.size()));
}

int WirelessConfigurator::getIPAddress()
{
    const std::vector<uint8_t> request = prepare(npa::readRequest(npa::kIPv4Address));
    return npaChannel->pollAddress(request.data(), static_cast<int32_t>(request.size()));
}

int WirelessConfigurator::resetPrinter()
{
    const std::vector<uint8_t> request = prepare(npa::resetRequest());
    return npaChannel->pollReset(request.data(), static_cast<int32_t>(request.size()));
}

int WirelessConfigurator::queryAuthStatus()
{
    traceF("D [CVL] 802.1x Authentication status...\n");
    std::vector<uint8_t> answer;
    exchangeRead("Auth status response", npa::kAuthStatus, answer);
    const npa::ValueSpan value = npa::findReadValue(answer, npa::kAuthStatus);
    if (!value.found || value.length == 0) {
        return -1;  // no status byte to report
    }
    const int status = answer[value.offset];
    traceF("D [CVL] Status: %d (%s)\n", status, npa::authStatusName(status));
    return status;
}

int WirelessConfigurator::queryCertSettings()
{
    traceF("D [CVL] Certifcate settings...\n");

    traceF("D [CVL] Cert Organization...\n");
    std::vector<uint8_t> answer;
    exchangeRead("Cert org", npa::kCertOrganization, answer);
    const npa::ValueSpan organization = npa::findReadValue(answer, npa::kCertOrganization);
    if (organization.found) {
        // The text ends at its zero byte, if any, inside the value.
        const std::string text(answer.begin() + static_cast<long>(organization.offset),
                               answer.begin() + static_cast<long>(organization.offset + organization.length));
        traceF("D [CVL] Organization (%d bytes): %s\n", static_cast<int>(organization.length), text.c_str());
    }

    traceF("D [CVL] Cert common name...\n");
    exchangeRead("Common name resp", npa::kCertCommonName, answer);
    return 0;
}
