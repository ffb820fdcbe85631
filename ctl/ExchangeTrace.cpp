// One line per exchange: what was asked, how long the answer took, what it meant.
#include "ctl/ExchangeTrace.h"

#include <cstring>
#include <string>

#include "npa/RequestDescription.h"
#include "transport/HexDump.h"

namespace corvelctl {

namespace {

using Outcome = npa::ExchangeReport::Outcome;

std::string seconds(long long ms)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f s", static_cast<double>(ms) / 1000.0);
    return text;
}

void dump(std::FILE* out, const char* title, const std::vector<uint8_t>& bytes)
{
    std::fprintf(out, "corvelctl:   %s (%zu bytes)\n", title, bytes.size());
    std::fputs(hexDumpText(bytes.data(), static_cast<int32_t>(bytes.size())).c_str(), out);
}

}  // namespace

std::string ExchangeTrace::meaning(const npa::ExchangeReport& report)
{
    const std::string after = " after " + std::to_string(report.elapsedMs) + " ms";
    switch (report.outcome) {
    case Outcome::Answered:
        return "answered" + after + " (" + std::to_string(report.content.size()) + " bytes of content)";
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
    if (m_Verbosity < 1) {
        return;
    }
    std::fprintf(m_Out, "corvelctl: %s on %s: %s\n", npa::describeRequest(report.request).c_str(), report.path.c_str(),
                 meaning(report).c_str());
    if (m_Verbosity >= 2) {
        dump(m_Out, "request, secrets masked", npa::maskSecrets(report.request));
        dump(m_Out, "received", report.received);
    }
    std::fflush(m_Out);
}

}  // namespace corvelctl
