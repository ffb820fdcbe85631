// The configurator's construction, the framing of its requests and the raw sender.
#include "npa/WirelessConfigurator.h"

#include <cstdio>

#include "common/Console.h"
#include "transport/HexDump.h"

WirelessConfigurator::WirelessConfigurator(ConfigDetails& details, CertificateInventory& inventory)
    : config(details), certificates(inventory), npaChannel(std::make_unique<NPAChannel>(details.usbPath))
{}

WirelessConfigurator::~WirelessConfigurator() = default;

void WirelessConfigurator::setPassThrough(bool enabled) { passThrough = enabled; }

std::vector<uint8_t> WirelessConfigurator::prepare(const std::vector<uint8_t>& request) const
{
    return passThrough ? npa::wrapPassThrough(request) : request;
}

int WirelessConfigurator::sendNPA(const uint8_t* bytes, int32_t length, int timeLimitSeconds)
{
    static const uint8_t kNothing[1] = {0};
    if (bytes == nullptr || length < 0) {
        bytes = kNothing;  // an empty hex file still makes one exchange, with no bytes
        length = 0;
    }
    std::vector<uint8_t> answer;
    const int32_t count = npaChannel->exchangeNPA(bytes, length, answer, timeLimitSeconds);
    traceF("D [CVL] sendNPA response (%d bytes)\n", count);
    hexDump(answer.data(), count);
    return 0;
}
