// provision: the settings file of a printer just plugged in, found by its
// serial number and applied as the wifi command applies its options.
#pragma once

#include "ctl/CommandLine.h"
#include "ctl/PrinterRecord.h"
#include "ctl/PrinterSelector.h"
#include "ctl/Report.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace corvelctl {

// How long provision waits for the printer to appear: udev starts it when
// the USB device is added, before usblp has made the printer's node.
constexpr std::chrono::seconds kPrinterAppearanceWait{10};

// The printers `discover` finds once the one `selector` names (without one:
// any) is there with its device node, asking again each second on the
// Seam<Clock>; after `limit`, what it finds then.
std::vector<PrinterRecord> awaitPrinter(const std::optional<PrinterSelector>& selector,
                                        const std::function<std::vector<PrinterRecord>()>& discover,
                                        std::chrono::seconds limit);

// The serial of the printer `resolvePrinter` chose by `path`, if it has one.
std::optional<std::string> serialAt(const std::string& path, const std::vector<PrinterRecord>& printers);

// Which settings file applies: DIR/SERIAL.conf, else DIR/default.conf, the
// first that `exists`; `tried` the paths looked at. A serial that cannot be a
// file name in DIR (one holding '/', or starting with '.') has no file of
// its own.
struct SettingsLookup {
    std::optional<std::string> file;
    std::vector<std::string> tried;
};
SettingsLookup findSettingsFile(const std::string& dir, const std::optional<std::string>& serial,
                                const std::function<bool(const std::string&)>& exists);

// Whether there is something at `path` (a symbolic link counts; a folder that
// cannot be searched too, so that opening the file tells why).
bool pathIsTaken(const std::string& path);

// What provision tells: its report, and for people a single line instead
// when there was nothing to apply.
struct ProvisionOutcome {
    Report report;
    std::string humanLine;  // "" unless nothing was applied
};

// Finds and checks the settings file, then sends it as runWifi does.
ProvisionOutcome runProvision(const Invocation& invocation, const std::string& printerPath,
                              const std::optional<std::string>& serial);

}  // namespace corvelctl
