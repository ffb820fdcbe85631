// Stand-ins for the printer commands until they are written: each fails with
// exit 70, so that nothing looks done that is not.
#include "ctl/PrinterCommands.h"

#include "ctl/Failure.h"

namespace corvelctl {

namespace {

[[noreturn]] void notBuiltYet(const Invocation& invocation)
{
    throw Failure(ExitStatus::Software, std::string(commandName(invocation.command)) + " is not built yet");
}

}  // namespace

Report runStatus(const Invocation& invocation, const std::string&) { notBuiltYet(invocation); }
Report runWifi(const Invocation& invocation, const std::string&, const Secret&) { notBuiltYet(invocation); }
Report runCertDefaults(const Invocation& invocation, const std::string&) { notBuiltYet(invocation); }
Report runCertRequest(const Invocation& invocation, const std::string&) { notBuiltYet(invocation); }
Report runCertInstallCa(const Invocation& invocation, const std::string&) { notBuiltYet(invocation); }
Report runCertInstall(const Invocation& invocation, const std::string&) { notBuiltYet(invocation); }
Report runReset(const Invocation& invocation, const std::string&) { notBuiltYet(invocation); }

}  // namespace corvelctl
