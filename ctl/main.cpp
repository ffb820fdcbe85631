// corvelctl: configures the Wi-Fi of a printer attached by USB; the command
// line for people and scripts.
#include "common/StandardDescriptors.h"
#include "ctl/AtomicFile.h"
#include "ctl/CommandLine.h"
#include "ctl/Failure.h"
#include "ctl/ListReport.h"
#include "ctl/PrinterCommands.h"
#include "ctl/PrinterDiscovery.h"
#include "ctl/Provisioning.h"
#include "ctl/Secrets.h"

#include <cstdio>
#include <string>

using namespace corvelctl;

namespace {

void print(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stdout); }

void printReport(const Report& report, bool json) { print(json ? report.renderJson() + "\n" : report.renderHuman()); }

// Everything that can fail is checked before the printer is opened: the
// printer chosen, the output file, the secret.
void run(const Invocation& invocation)
{
    const bool json = invocation.global.json;
    // A printer just plugged in may not have its node yet when provision starts.
    const std::vector<PrinterRecord> printers =
        invocation.command == Command::Provision
            ? awaitPrinter(invocation.global.printer, discoverPrinters, kPrinterAppearanceWait)
            : discoverPrinters();
    if (invocation.command == Command::List) {
        print(json ? listReport(printers).renderJson() + "\n" : listHumanText(printers));
        return;
    }
    const std::string printer = resolvePrinter(invocation.global.printer, printers, isCharacterDevice);
    switch (invocation.command) {
    case Command::List: break;
    case Command::Status: printReport(runStatus(invocation, printer), json); break;
    case Command::Wifi: {
        const Secret secret = obtainSecret(invocation.wifi);
        printReport(runWifi(invocation, printer, secret), json);
        break;
    }
    case Command::Provision: {
        const ProvisionOutcome outcome = runProvision(invocation, printer, serialAt(printer, printers));
        if (!json && !outcome.humanLine.empty()) {
            print(outcome.humanLine);
        } else {
            printReport(outcome.report, json);
        }
        break;
    }
    case Command::CertDefaults: printReport(runCertDefaults(invocation, printer), json); break;
    case Command::CertRequest:
        checkOutputTarget(invocation.certRequest.outFile, invocation.certRequest.force);
        printReport(runCertRequest(invocation, printer), json);
        break;
    case Command::CertInstallCa: printReport(runCertInstallCa(invocation, printer), json); break;
    case Command::CertInstall: printReport(runCertInstall(invocation, printer), json); break;
    case Command::Reset: printReport(runReset(invocation, printer), json); break;
    }
}

}  // namespace

int main(int argc, char** argv)
{
    // A closed standard output must not become the printer's descriptor.
    holdClosedStandardDescriptors();
    const bool json = asksForJson(argc, argv);
    int status = 0;
    try {
        const ParsedCommandLine parsed = parseCommandLine(argc, argv);
        if (parsed.action == ParsedCommandLine::Action::Run) {
            run(parsed.invocation);
        } else {
            print(parsed.text);
        }
    } catch (const Failure& failure) {
        status = reportFailure(failure, json);
    } catch (const std::exception& error) {
        status = reportFailure(Failure(ExitStatus::Software, std::string("internal error: ") + error.what()), json);
    }
    // Standard output cannot carry its own error: told on standard error only.
    // A run that failed already keeps its status.
    if (const auto outputFailure = finishOutput(stdout)) {
        const int outputStatus = reportFailure(*outputFailure, false);
        if (status == 0) status = outputStatus;
    }
    return status;
}
