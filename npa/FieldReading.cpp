// A field read by one answer-driven exchange.
#include "npa/FieldReading.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "npa/NPAChannel.h"

namespace npa {

namespace {

constexpr int kReadTimeLimitSeconds = 3;

}  // namespace

FieldValue readField(NPAChannel& channel, Key key, bool plain)
{
    const std::vector<uint8_t> read = readRequest(key);
    const std::vector<uint8_t> request = plain ? read : wrapPassThrough(read);
    std::vector<uint8_t> content;
    channel.exchangeNPA(request.data(), static_cast<int32_t>(request.size()), content, kReadTimeLimitSeconds);

    FieldValue field;
    const ExchangeReport& report = channel.lastReport();
    field.outcome = report.outcome;
    if (report.outcome != ExchangeReport::Outcome::Answered) {
        return field;
    }
    // The answer as one packet: the kept content (whatever packets carried
    // it) behind a start byte, a length and the flags. A wrapped answer holds
    // the inner packet in its content; a plain one is that packet.
    // (Sized first: g++ 12 wrongly sees an insert behind a four-byte
    // initializer list overrun it once _FORTIFY_SOURCE is on.)
    const uint8_t header[] = {kStartByte, 0, 0, kFlagsRequest};
    std::vector<uint8_t> whole(sizeof header + report.content.size());
    std::copy(std::begin(header), std::end(header), whole.begin());
    std::copy(report.content.begin(), report.content.end(), whole.begin() + sizeof header);
    const ValueSpan span = findReadValue(whole, key);
    field.found = span.found;
    if (span.found) {
        const auto begin = whole.begin() + static_cast<std::ptrdiff_t>(span.offset);
        field.value.assign(begin, begin + static_cast<std::ptrdiff_t>(span.length));
    }
    return field;
}

const char* authStatusName(int status)
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

std::string textOf(const std::vector<uint8_t>& value)
{
    const auto end = std::find(value.begin(), value.end(), uint8_t{0});
    return std::string(value.begin(), end);
}

}  // namespace npa
