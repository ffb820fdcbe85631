// One run's way to the printer: answer-driven exchanges within the run's
// deadline, the core's own trace silenced, corvelctl's trace on request, and
// the failure that the last exchange's outcome means.
#pragma once

#include <string>

#include "ctl/CommandLine.h"
#include "ctl/ExchangeTrace.h"
#include "ctl/Failure.h"
#include "npa/ExchangeReport.h"

namespace corvelctl {

class PrinterLink {
public:
    PrinterLink(const Invocation& invocation, const std::string& printerPath);
    PrinterLink(const PrinterLink&) = delete;
    PrinterLink& operator=(const PrinterLink&) = delete;
    // Closes the printer's device, which the exchanges keep open between them.
    ~PrinterLink();

    const std::string& path() const { return m_Path; }
    const npa::ExchangeReport& last() const { return m_Trace.last(); }
    // Whether the printer refused any request so far, as framed.
    bool refusalSeen() const { return m_Trace.refusals() > 0; }
    // Requests go wrapped in the pass-through envelope until the printer
    // refuses that; then plain.
    bool plain() const { return m_Plain; }
    void goPlain() { m_Plain = true; }

    // The failure the last exchange means, for `what` ("reading the SSID").
    Failure failure(const std::string& what) const;

private:
    std::string m_Path;
    ExchangeTrace m_Trace;
    npa::AnswerDrivenTiming m_Timing;
    Seam<npa::AnswerDrivenTiming>::Override m_AnswerDriven{m_Timing};
    bool m_Plain = false;
};

// The failure `report` means for the printer at `path` while doing `what`;
// `plain`: the plain retry was tried as well.
Failure exchangeFailure(const npa::ExchangeReport& report, const std::string& path, const std::string& what,
                        bool plain);

}  // namespace corvelctl
