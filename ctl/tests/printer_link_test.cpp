// What each way an exchange can end means to the user: exit status and message.
#include <gtest/gtest.h>

#include <cerrno>

#include "ctl/PrinterLink.h"

namespace corvelctl {
namespace {

using Outcome = npa::ExchangeReport::Outcome;

TEST(PrinterLink, EachOutcomeHasItsExitStatusAndAMessageToActOn)
{
    const struct {
        Outcome outcome;
        int error;
        bool plain;
        ExitStatus status;
        const char* fragment;
    } cases[] = {
        {Outcome::OpenFailed, EACCES, false, ExitStatus::NoPermission, "group 'lp'"},
        {Outcome::OpenFailed, EPERM, false, ExitStatus::NoPermission, "permission denied"},
        {Outcome::OpenFailed, EBUSY, false, ExitStatus::Unavailable, "is busy: another program holds it"},
        {Outcome::OpenFailed, ENOENT, false, ExitStatus::Unavailable, "No such file or directory; 'corvelctl list'"},
        {Outcome::NoAnswer, 0, false, ExitStatus::TemporaryFailure, "within 2.5 s (reading the SSID)"},
        {Outcome::Gone, 0, false, ExitStatus::Unavailable, "went away (reading the SSID)"},
        {Outcome::IoFailed, EIO, false, ExitStatus::IoError, "Input/output error"},
        {Outcome::Malformed, 0, false, ExitStatus::Protocol, "more than any answer holds"},
        {Outcome::Refused, 0, false, ExitStatus::Refused, "refused the request (reading the SSID)"},
        {Outcome::Refused, 0, true, ExitStatus::Refused, "in the pass-through envelope and plain"},
        {Outcome::Answered, 0, false, ExitStatus::Protocol, "holds no result"},
    };
    for (const auto& c : cases) {
        npa::ExchangeReport report;
        report.outcome = c.outcome;
        report.error = c.error;
        report.deadlineMs = 2500;
        const Failure failure = exchangeFailure(report, "/dev/usb/lp0", "reading the SSID", c.plain);
        EXPECT_EQ(failure.status(), c.status) << c.fragment;
        EXPECT_NE(failure.message().find(c.fragment), std::string::npos) << failure.message();
        EXPECT_NE(failure.message().find("/dev/usb/lp0"), std::string::npos) << failure.message();
    }
}

}  // namespace
}  // namespace corvelctl
