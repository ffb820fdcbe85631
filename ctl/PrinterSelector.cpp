#include "ctl/PrinterSelector.h"

#include "ctl/Failure.h"

#include <cstdio>

namespace corvelctl {

namespace {

const char kSelectorForms[] = "/dev/usb/lpN, lpN, BUS:DEV (such as 1:4) or serial:SERIAL";

bool allDigits(std::string_view text)
{
    if (text.empty()) return false;
    for (const char c : text) {
        if (c < '0' || c > '9') return false;
    }
    return true;
}

// A decimal number of 1-999 with any leading zeros, or -1.
int smallNumber(std::string_view text)
{
    if (!allDigits(text)) return -1;
    while (text.size() > 1 && text.front() == '0') text.remove_prefix(1);
    if (text.size() > 3) return -1;
    const int value = std::stoi(std::string(text));
    return value >= 1 ? value : -1;
}

Failure badSelector(std::string_view text)
{
    return Failure(ExitStatus::Usage,
                   "--printer \"" + std::string(text) + "\" names no printer; use " + kSelectorForms);
}

std::string describePrinter(const PrinterRecord& printer)
{
    std::string details;
    const auto addDetail = [&](const std::string& detail) {
        if (detail.empty()) return;
        if (!details.empty()) details += ", ";
        details += detail;
    };
    if (!printer.nodes.empty()) addDetail(printer.busDevice());
    std::string name = printer.manufacturer.value_or("");
    if (printer.product) name += (name.empty() ? "" : " ") + *printer.product;
    if (name.empty() && !printer.vendorId.empty()) name = printer.vendorId + ":" + printer.productId;
    addDetail(name);
    if (printer.serial) addDetail("serial " + *printer.serial);
    const std::string path = pathToOpen(printer);
    return details.empty() ? path : path + " (" + details + ")";
}

Failure unavailable(const std::string& what, const std::vector<PrinterRecord>& printers)
{
    return Failure(ExitStatus::Unavailable, what + "; attached: " + describePrinters(printers));
}

}  // namespace

std::string PrinterRecord::busDevice() const
{
    if (!hasBusDevice()) return "";
    char text[24];  // room for any two ints
    std::snprintf(text, sizeof text, "%03d:%03d", bus, device);
    return text;
}

PrinterSelector parsePrinterSelector(std::string_view text)
{
    PrinterSelector selector;
    selector.given = std::string(text);
    const std::string_view serialPrefix = "serial:";
    if (text.substr(0, serialPrefix.size()) == serialPrefix) {
        selector.kind = PrinterSelector::Kind::Serial;
        selector.serial = std::string(text.substr(serialPrefix.size()));
        if (selector.serial.empty()) throw badSelector(text);
        return selector;
    }
    const std::string_view nodeFolder = "/dev/usb/";
    std::string_view name = text;
    if (name.substr(0, nodeFolder.size()) == nodeFolder) name.remove_prefix(nodeFolder.size());
    if (name.substr(0, 2) == "lp" && allDigits(name.substr(2)) && name.size() <= 2 + 3) {
        selector.kind = PrinterSelector::Kind::Node;
        selector.node = "/dev/usb/lp" + std::to_string(std::stoi(std::string(name.substr(2))));
        return selector;
    }
    const std::size_t colon = text.find(':');
    if (colon != std::string_view::npos) {
        selector.kind = PrinterSelector::Kind::BusDevice;
        selector.bus = smallNumber(text.substr(0, colon));
        selector.device = smallNumber(text.substr(colon + 1));
        if (selector.bus > 0 && selector.device > 0) return selector;
    }
    throw badSelector(text);
}

bool selects(const PrinterSelector& selector, const PrinterRecord& printer)
{
    switch (selector.kind) {
    case PrinterSelector::Kind::Node:
        for (const std::string& node : printer.nodes) {
            if (node == selector.node) return true;
        }
        return false;
    case PrinterSelector::Kind::BusDevice:
        return printer.hasBusDevice() && printer.bus == selector.bus && printer.device == selector.device;
    case PrinterSelector::Kind::Serial: return printer.serial == selector.serial;
    }
    return false;
}

std::string pathToOpen(const PrinterRecord& printer)
{
    return printer.nodes.empty() ? printer.busDevice() : printer.nodes.front();
}

std::string describePrinters(const std::vector<PrinterRecord>& printers)
{
    if (printers.empty()) return "no printer is attached";
    std::string text;
    for (const PrinterRecord& printer : printers) {
        if (!text.empty()) text += "; ";
        text += describePrinter(printer);
    }
    return text;
}

namespace {

// What a selector finds: the printer's record, or a node that exists though
// sysfs tells nothing about it (`record` null, `path` the node).
struct Resolved {
    std::string path;
    const PrinterRecord* record = nullptr;
};

Resolved resolveSelector(const PrinterSelector& selector, const std::vector<PrinterRecord>& printers,
                         const std::function<bool(const std::string&)>& isCharacterDevice)
{
    std::vector<const PrinterRecord*> matches;
    for (const PrinterRecord& printer : printers) {
        if (selects(selector, printer)) matches.push_back(&printer);
    }
    if (matches.size() == 1) return {pathToOpen(*matches.front()), matches.front()};
    if (matches.size() > 1) {
        throw unavailable(std::to_string(matches.size()) + " printers match --printer " + selector.given, printers);
    }
    if (selector.kind == PrinterSelector::Kind::Node && isCharacterDevice(selector.node)) return {selector.node};
    if (printers.empty()) throw Failure(ExitStatus::Unavailable, "no printer is attached");
    throw unavailable("no attached printer matches --printer " + selector.given, printers);
}

}  // namespace

std::string resolvePrinter(const std::optional<PrinterSelector>& selector, const std::vector<PrinterRecord>& printers,
                           const std::function<bool(const std::string&)>& isCharacterDevice)
{
    if (!selector) {
        if (printers.size() == 1) return pathToOpen(printers.front());
        if (printers.empty()) throw Failure(ExitStatus::Unavailable, "no printer is attached");
        throw unavailable(std::to_string(printers.size()) + " printers are attached; choose one with --printer",
                          printers);
    }
    return resolveSelector(*selector, printers, isCharacterDevice).path;
}

std::vector<PrinterTarget> resolvePrinters(const std::vector<PrinterSelector>& selectors, bool all,
                                           const std::vector<PrinterRecord>& printers,
                                           const std::function<bool(const std::string&)>& isCharacterDevice)
{
    std::vector<PrinterTarget> targets;
    const auto add = [&](PrinterTarget target) {
        for (const PrinterTarget& taken : targets) {
            if (taken.path == target.path) return;
        }
        targets.push_back(std::move(target));
    };
    if (all) {
        if (printers.empty()) throw Failure(ExitStatus::Unavailable, "no printer is attached");
        for (const PrinterRecord& printer : printers) add({pathToOpen(printer), printer.serial, std::nullopt});
        return targets;
    }
    for (const PrinterSelector& selector : selectors) {
        try {
            const Resolved resolved = resolveSelector(selector, printers, isCharacterDevice);
            add({resolved.path, resolved.record ? resolved.record->serial : std::nullopt, std::nullopt});
        } catch (const Failure& failure) {
            const bool isNode = selector.kind == PrinterSelector::Kind::Node;
            add({isNode ? selector.node : selector.given, std::nullopt, failure});
        }
    }
    return targets;
}

}  // namespace corvelctl
