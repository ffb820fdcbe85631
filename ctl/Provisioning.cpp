#include "ctl/Provisioning.h"

#include "ctl/CommandSupport.h"
#include "ctl/PrinterCommands.h"
#include "ctl/SettingsFile.h"
#include "transport/Clock.h"

#include <cerrno>

#include <sys/stat.h>

namespace corvelctl {

namespace {

bool appeared(const std::optional<PrinterSelector>& selector, const std::vector<PrinterRecord>& printers)
{
    for (const PrinterRecord& printer : printers) {
        if ((!selector || selects(*selector, printer)) && !printer.nodes.empty()) return true;
    }
    return false;
}

// A serial that names a file in the folder and nothing else.
bool isFileName(const std::string& serial)
{
    return !serial.empty() && serial.front() != '.' && serial.find('/') == std::string::npos;
}

std::string missingFiles(const std::vector<std::string>& tried)
{
    if (tried.size() == 1) return tried.front() + " does not exist";
    return "neither " + tried.front() + " nor " + tried.back() + " exists";
}

}  // namespace

std::vector<PrinterRecord> awaitPrinter(const std::optional<PrinterSelector>& selector,
                                        const std::function<std::vector<PrinterRecord>()>& discover,
                                        std::chrono::seconds limit)
{
    Clock& clock = Seam<Clock>::get();
    const long long end = clock.monotonicMs() + limit.count() * 1000;
    for (;;) {
        std::vector<PrinterRecord> printers = discover();
        if (appeared(selector, printers) || clock.monotonicMs() >= end) return printers;
        clock.sleep(1);
    }
}

std::optional<std::string> serialAt(const std::string& path, const std::vector<PrinterRecord>& printers)
{
    for (const PrinterRecord& printer : printers) {
        if (pathToOpen(printer) == path) return printer.serial;
    }
    return std::nullopt;
}

SettingsLookup findSettingsFile(const std::string& dir, const std::optional<std::string>& serial,
                                const std::function<bool(const std::string&)>& exists)
{
    SettingsLookup lookup;
    const std::string folder = dir.back() == '/' ? dir : dir + "/";
    if (serial && isFileName(*serial)) lookup.tried.push_back(folder + *serial + ".conf");
    lookup.tried.push_back(folder + "default.conf");
    for (const std::string& path : lookup.tried) {
        if (exists(path)) {
            lookup.file = path;
            break;
        }
    }
    return lookup;
}

bool pathIsTaken(const std::string& path)
{
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 || (errno != ENOENT && errno != ENOTDIR);
}

ProvisionOutcome runProvision(const Invocation& invocation, const std::string& printerPath,
                              const std::optional<std::string>& serial)
{
    const ProvisionOptions& options = invocation.provision;
    std::string file = options.settingsFile;
    if (file.empty()) {
        const SettingsLookup lookup = findSettingsFile(options.settingsDir, serial, pathIsTaken);
        if (!lookup.file) {
            const std::string reason = missingFiles(lookup.tried);
            ProvisionOutcome nothing{printerReport(printerPath)
                                         .addOptionalText("serial", serial)
                                         .addNull("settings")
                                         .addBool("applied", false)
                                         .addText("reason", reason),
                                     ""};
            nothing.humanLine = printerPath + (serial ? " (serial " + *serial + ")" : std::string()) +
                                ": nothing to apply: " + reason + "\n";
            return nothing;
        }
        file = *lookup.file;
    }
    const ProvisionSettings settings = readProvisionSettings(file);
    Invocation wifi = invocation;
    wifi.command = Command::Wifi;
    wifi.wifi = settings.wifi;
    Report report = runWifi(wifi, printerPath, settings.secret);
    report.addOptionalText("serial", serial).addText("settings", file).addBool("applied", true);
    return {std::move(report), ""};
}

}  // namespace corvelctl
