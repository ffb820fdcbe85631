// The commands that talk to the printer. Each gets the parsed command line
// and the path the core opens ("/dev/usb/lpN" or "BBB:DDD", from
// resolvePrinter), exchanges with the printer and returns what to show; it
// throws Failure on every error, with the exit status of ExitStatus.h.
// The command line and the secret have been checked before any of them runs.
#pragma once

#include "ctl/CommandLine.h"
#include "ctl/Report.h"
#include "ctl/Secret.h"

#include <string>

namespace corvelctl {

Report runStatus(const Invocation& invocation, const std::string& printerPath);
// `secret` is empty for --security none; checked by validateSecret otherwise
// (wepKeys() splits the WEP keys).
Report runWifi(const Invocation& invocation, const std::string& printerPath, const Secret& secret);
Report runCertDefaults(const Invocation& invocation, const std::string& printerPath);
// Writes the request with writeFileAtomically(invocation.certRequest.outFile, ...,
// invocation.certRequest.force); main has already run checkOutputTarget.
Report runCertRequest(const Invocation& invocation, const std::string& printerPath);
Report runCertInstallCa(const Invocation& invocation, const std::string& printerPath);
Report runCertInstall(const Invocation& invocation, const std::string& printerPath);
Report runReset(const Invocation& invocation, const std::string& printerPath);

}  // namespace corvelctl
