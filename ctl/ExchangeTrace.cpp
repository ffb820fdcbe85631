// One line per exchange: what was asked, how long the answer took, what it meant.
#include "ctl/ExchangeTrace.h"

#include <cstring>
#include <string>

#include "cert/CertRequests.h"
#include "npa/NpaFrame.h"
#include "npa/RequestDescription.h"
#include "transport/HexDump.h"
#include "xml/ObjStoreResponse.h"

namespace corvelctl {

namespace {

using Outcome = npa::ExchangeReport::Outcome;

std::string seconds(long long ms)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f s", static_cast<double>(ms) / 1000.0);
    return text;
}

std::string dump(const char* title, const std::vector<uint8_t>& bytes)
{
    return "corvelctl:   " + std::string(title) + " (" + std::to_string(bytes.size()) + " bytes)\n" +
           hexDumpText(bytes.data(), static_cast<int32_t>(bytes.size()));
}

// `text` with `label` and ": " at the start of each line, after its
// "corvelctl: " when it has one.
std::string labelled(const std::string& text, const std::string& label)
{
    if (label.empty()) return text;
    const std::string program = "corvelctl: ";
    std::string out;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        end = end == std::string::npos ? text.size() : end + 1;
        const std::string line = text.substr(start, end - start);
        if (line.rfind(program, 0) == 0) {
            out += program + label + ": " + line.substr(program.size());
        } else {
            out += label + ": " + line;
        }
        start = end;
    }
    return out;
}

// What a whole answer says: the value read, the settings' verdict, the
// certificate manager's status.
std::string answerMeaning(const npa::ExchangeReport& report)
{
    const std::string request = npa::describeRequest(report.request);
    if (request.rfind("read ", 0) == 0) {
        const uint8_t group = report.request[report.request.size() - 2];
        const uint8_t field = report.request[report.request.size() - 1];
        const npa::ValueSpan span = npa::findReadValue(report.received, {group, field});
        if (!span.found) return "no value in the answer";
        std::string value;
        for (size_t i = span.offset; i < span.offset + span.length; ++i) {
            char byte[4];
            std::snprintf(byte, sizeof byte, "%02X", report.received[i]);
            value += (value.empty() ? "" : " ") + std::string(byte);
        }
        return "value " + (value.empty() ? std::string("(empty)") : value);
    }
    if (request.rfind("settings", 0) == 0) {
        return !report.content.empty() && report.content.back() == 0x01 ? "accepted" : "not accepted";
    }
    if (request == "certificate-manager call") {
        std::vector<char> text(report.content.size() + 1, 0);
        if (certreq::unwrapAnswer(report.content.data(), report.content.size(), text.data(), text.size()) == 0) {
            return "no certificate-manager answer";
        }
        ObjStoreResponse response;
        response.setResponse(text.data());
        return "status " + std::to_string(response.getStatusCode());
    }
    return std::to_string(report.content.size()) + " bytes of content";
}

}  // namespace

std::string ExchangeTrace::meaning(const npa::ExchangeReport& report)
{
    const std::string after = " after " + std::to_string(report.elapsedMs) + " ms";
    switch (report.outcome) {
    case Outcome::Answered: return "answered" + after + ": " + answerMeaning(report);
    case Outcome::Refused: return "refused by the printer" + after;
    case Outcome::NoAnswer: return "no whole answer within " + seconds(report.deadlineMs);
    case Outcome::OpenFailed: return std::string("could not open the printer: ") + std::strerror(report.error);
    case Outcome::IoFailed: return std::string("reading or writing failed: ") + std::strerror(report.error);
    case Outcome::Gone: return "the printer went away" + after;
    case Outcome::Malformed: return "more bytes came than any answer holds";
    case Outcome::None: break;
    }
    return "not sent";
}

void ExchangeTrace::exchanged(const npa::ExchangeReport& report)
{
    m_Last = report;
    if (report.outcome == npa::ExchangeReport::Outcome::Refused) ++m_Refusals;
    if (m_Verbosity < 1) {
        return;
    }
    std::string text =
        "corvelctl: " + npa::describeRequest(report.request) + " on " + report.path + ": " + meaning(report) + "\n";
    if (m_Verbosity >= 2) {
        text += dump("request, secrets masked", npa::maskSecrets(report.request));
        text += dump("received", report.received);
    }
    // One write for the whole exchange, so that the traces of printers
    // served at once do not cut into each other's lines.
    text = labelled(text, m_Label);
    std::fwrite(text.data(), 1, text.size(), m_Out);
    std::fflush(m_Out);
}

}  // namespace corvelctl
