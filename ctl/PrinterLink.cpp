// How corvelctl reaches the printer and explains what went wrong on the way.
#include "ctl/PrinterLink.h"

#include <cerrno>
#include <cstring>

#include "transport/HCUSBTransport.h"

namespace corvelctl {

namespace {

using Outcome = npa::ExchangeReport::Outcome;

// Key generation and export take the printer longer than any other call.
constexpr long long kSlowFactor = 3;

std::string secondsText(long long ms)
{
    char text[32];
    std::snprintf(text, sizeof text, "%g", static_cast<double>(ms) / 1000.0);
    return text;
}

}  // namespace

PrinterLink::PrinterLink(const Invocation& invocation, const std::string& printerPath)
    : m_Path(printerPath), m_Trace(invocation.global.verbosity, stderr, invocation.global.traceLabel)
{
    const long long ms = invocation.global.timeout.count();
    m_Timing.enabled = true;
    m_Timing.deadlineMs = ms;
    m_Timing.slowDeadlineMs = ms * kSlowFactor;
    m_Timing.keepDeviceOpen = true;
    m_Timing.observer = &m_Trace;
}

PrinterLink::~PrinterLink()
{
    HCUSBTransport* transport = HCUSBTransport::getInstance();
    if (transport->isOpenOn(m_Path.c_str())) transport->close();
    HCUSBTransport::releaseInstance();
}

Failure PrinterLink::failure(const std::string& what) const { return exchangeFailure(last(), m_Path, what, m_Plain); }

Failure exchangeFailure(const npa::ExchangeReport& report, const std::string& path, const std::string& what, bool plain)
{
    const std::string at = " (" + what + ")";
    switch (report.outcome) {
    case Outcome::OpenFailed:
        switch (report.error) {
        case EACCES:
        case EPERM:
            return {ExitStatus::NoPermission, "cannot open the printer at " + path +
                                                  ": permission denied; members of the group 'lp' may use printers "
                                                  "(sudo adduser $USER lp, then log in again)"};
        case EBUSY:
            return {ExitStatus::Unavailable,
                    "the printer at " + path + " is busy: another program holds it; try again when it is done"};
        default:
            return {ExitStatus::Unavailable, "cannot open the printer at " + path + ": " + std::strerror(report.error) +
                                                 "; 'corvelctl list' shows the printers attached"};
        }
    case Outcome::NoAnswer:
        return {ExitStatus::TemporaryFailure, "no answer from the printer at " + path + " within " +
                                                  secondsText(report.deadlineMs) + " s" + at +
                                                  "; a busy printer may need a longer --timeout"};
    case Outcome::Gone:
        return {ExitStatus::Unavailable, "the printer at " + path + " went away" + at + "; check its cable and power"};
    case Outcome::IoFailed:
        return {ExitStatus::IoError,
                "talking to the printer at " + path + " failed" + at + ": " + std::strerror(report.error)};
    case Outcome::Malformed:
        return {ExitStatus::Protocol, "the printer at " + path + " sent more than any answer holds" + at};
    case Outcome::Refused:
        return {ExitStatus::Refused, "the printer at " + path + " refused the request" + at +
                                         (plain ? ", in the pass-through envelope and plain" : "")};
    case Outcome::Answered:
        return {ExitStatus::Protocol, "the printer at " + path + " gave an answer that holds no result" + at};
    case Outcome::None: break;
    }
    return {ExitStatus::Software, "nothing was sent to the printer" + at};
}

}  // namespace corvelctl
