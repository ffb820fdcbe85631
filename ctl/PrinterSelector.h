// The --printer option: which attached printer it names, and the path the
// core opens for it.
#pragma once

#include "ctl/Failure.h"
#include "ctl/PrinterRecord.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvelctl {

struct PrinterSelector {
    enum class Kind { Node, BusDevice, Serial };
    Kind kind = Kind::Node;
    std::string node;  // Node: "/dev/usb/lpN" (an "lpN" is completed)
    int bus = 0;       // BusDevice
    int device = 0;
    std::string serial;  // Serial
    std::string given;   // the option's value as typed, for messages
};

// Reads "/dev/usb/lpN", "lpN", "BUS:DEV" (decimal, leading zeros allowed,
// each 1-999) or "serial:SERIAL" (SERIAL not empty). Anything else is a usage
// failure (exit 64) saying which forms are allowed.
PrinterSelector parsePrinterSelector(std::string_view text);

bool selects(const PrinterSelector& selector, const PrinterRecord& printer);

// The path the core opens for `printer`: its first node, else "BBB:DDD"
// (reached through libusb).
std::string pathToOpen(const PrinterRecord& printer);

// One line naming each printer, e.g. "/dev/usb/lp0 (001:004, Acme Laser 5,
// serial X1); 001:007 (...)", or "no printer is attached".
std::string describePrinters(const std::vector<PrinterRecord>& printers);

// The path the core should open. With a selector: the one printer it selects.
// A "/dev/usb/lpN" selector that matches no listed printer is still taken when
// `isCharacterDevice` says the node exists: the core can open it even when
// sysfs tells nothing about it (a node made by hand, a container without
// /sys). Without a selector: the only printer attached. Otherwise a failure
// with exit 69 naming what is attached.
std::string resolvePrinter(const std::optional<PrinterSelector>& selector, const std::vector<PrinterRecord>& printers,
                           const std::function<bool(const std::string&)>& isCharacterDevice);

// One printer of a run on several printers: the path the core opens and its
// serial, or why no printer was found for a --printer (then `path` is the
// selector's node, or its value as given).
struct PrinterTarget {
    std::string path;
    std::optional<std::string> serial;
    std::optional<Failure> notFound;
};

// The printers a run on several printers talks to. `all`: every printer
// attached, in the order of `printers` (none: a failure with exit 69).
// Otherwise one per selector in the order given, each resolved as
// resolvePrinter does but with a selector that finds no printer kept as its
// own `notFound`, so that the others still run. A printer named twice is
// taken once, where it was first named.
std::vector<PrinterTarget> resolvePrinters(const std::vector<PrinterSelector>& selectors, bool all,
                                           const std::vector<PrinterRecord>& printers,
                                           const std::function<bool(const std::string&)>& isCharacterDevice);

}  // namespace corvelctl
