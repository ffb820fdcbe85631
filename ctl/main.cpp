// corvelctl: configures the Wi-Fi of a printer attached by USB; the command
// line for people and scripts.
#include "common/StandardDescriptors.h"
#include "ctl/AtomicFile.h"
#include "ctl/CommandLine.h"
#include "ctl/Failure.h"
#include "ctl/ListReport.h"
#include "ctl/PrinterCommands.h"
#include "ctl/PrinterDiscovery.h"
#include "ctl/PrinterFanOut.h"
#include "ctl/Provisioning.h"
#include "ctl/Secrets.h"

#include <cstdio>
#include <string>

using namespace corvelctl;

namespace {

void print(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stdout); }

// The command on one printer; `secret` is empty but for wifi.
Report runCommand(const Invocation& invocation, const std::string& printer, const Secret& secret)
{
    switch (invocation.command) {
    case Command::List: break;       // talks to no printer
    case Command::Provision: break;  // on one printer only, run by run()
    case Command::Status: return runStatus(invocation, printer);
    case Command::Wifi: return runWifi(invocation, printer, secret);
    case Command::CertDefaults: return runCertDefaults(invocation, printer);
    case Command::CertRequest: return runCertRequest(invocation, printer);
    case Command::CertInstallCa: return runCertInstallCa(invocation, printer);
    case Command::CertInstall: return runCertInstall(invocation, printer);
    case Command::Reset: return runReset(invocation, printer);
    }
    return Report();
}

// The command on each printer at once, their outcomes shown together. The
// secret is read once, before any printer is talked to.
int runOnSeveral(const Invocation& invocation, const std::vector<PrinterRecord>& printers)
{
    const GlobalOptions& global = invocation.global;
    const std::vector<PrinterTarget> targets =
        resolvePrinters(global.printers, global.allPrinters, printers, isCharacterDevice);
    Secret secret = invocation.command == Command::Wifi ? obtainSecret(invocation.wifi) : Secret();
    const auto command = [&](const PrinterTarget& target) {
        Invocation own = invocation;
        own.global.traceLabel = target.path;
        return runCommand(own, target.path, secret);
    };
    const MergedOutput merged = mergeOutcomes(runOnEachPrinter(targets, global.json, command), global.json);
    std::fputs(merged.err.c_str(), stderr);
    std::fflush(stderr);
    print(merged.out);
    return merged.status;
}

// Everything that can fail is checked before the printer is opened: the
// printer chosen, the output file, the secret. Returns the exit status.
int run(const Invocation& invocation)
{
    const bool json = invocation.global.json;
    const std::vector<PrinterSelector>& selectors = invocation.global.printers;
    const std::optional<PrinterSelector> chosen =
        selectors.empty() ? std::nullopt : std::optional<PrinterSelector>(selectors.front());
    // A printer just plugged in may not have its node yet when provision starts.
    const std::vector<PrinterRecord> printers = invocation.command == Command::Provision
                                                    ? awaitPrinter(chosen, discoverPrinters, kPrinterAppearanceWait)
                                                    : discoverPrinters();
    if (invocation.command == Command::List) {
        print(json ? listReport(printers).renderJson() + "\n" : listHumanText(printers));
        return 0;
    }
    if (invocation.global.severalPrinters()) return runOnSeveral(invocation, printers);
    const std::string printer = resolvePrinter(chosen, printers, isCharacterDevice);
    if (invocation.command == Command::Provision) {
        const ProvisionOutcome outcome = runProvision(invocation, printer, serialAt(printer, printers));
        print(!json && !outcome.humanLine.empty()
                  ? outcome.humanLine
                  : (json ? outcome.report.renderJson() + "\n" : outcome.report.renderHuman()));
        return 0;
    }
    Secret secret;
    if (invocation.command == Command::Wifi) secret = obtainSecret(invocation.wifi);
    if (invocation.command == Command::CertRequest) {
        checkOutputTarget(invocation.certRequest.outFile, invocation.certRequest.force);
    }
    const Report report = runCommand(invocation, printer, secret);
    print(json ? report.renderJson() + "\n" : report.renderHuman());
    return 0;
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
            status = run(parsed.invocation);
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
