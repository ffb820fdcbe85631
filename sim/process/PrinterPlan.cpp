#include "sim/process/PrinterPlan.h"

#include <algorithm>

namespace corvelsim {

std::string numberedSerial(const std::string& first, int number)
{
    if (number == 1) return first;
    const size_t digits = first.size() - (first.find_last_not_of("0123456789") + 1);
    if (digits == 0) return first + "-" + std::to_string(number);
    const size_t start = first.size() - digits;
    // Long runs of digits: only the last 18 count, so that the sum fits.
    const size_t counted = std::min<size_t>(digits, 18);
    const long long value = std::stoll(first.substr(first.size() - counted)) + number - 1;
    std::string text = std::to_string(value);
    if (text.size() < counted) text.insert(0, counted - text.size(), '0');
    return first.substr(0, start) + first.substr(start, digits - counted) + text;
}

std::vector<PrinterPlan> planPrinters(const SimOptions& options)
{
    std::vector<PrinterPlan> plans;
    for (int number = 1; number <= options.printers; ++number) {
        PrinterPlan plan;
        plan.number = number;
        plan.usb = options.usb;
        plan.usb.identity.serial = numberedSerial(options.usb.identity.serial, number);
        if (options.usb.bus != 0) plan.usb.device = options.usb.device + number - 1;
        if (number > 1) plan.usb.tracePath.clear();  // the trace is the first printer's device's
        if (options.noLp)
            plan.lpNumbers = {kNoLpNode};
        else if (number == 1)
            plan.lpNumbers = options.lpNumbers;
        else
            plan.lpNumbers = {options.lpNumbers.front() + number - 1};
        plan.faults = options.faults;
        std::string unused;  // the options were checked when they were read
        for (const PrinterFault& fault : options.printerFaults)
            if (fault.printer == number) addFault(plan.faults, fault.fault, unused);
        plan.statePath =
            options.stateDir.empty() ? options.statePath : options.stateDir + "/" + plan.serial() + ".state";
        plan.logPath = options.logDir.empty() ? options.logPath : options.logDir + "/" + plan.serial() + ".log";
        plans.push_back(std::move(plan));
    }
    return plans;
}

std::vector<std::vector<PrinterPlacement>> placePlans(const std::vector<PrinterPlan>& plans)
{
    std::vector<std::vector<PrinterPlacement>> placed;
    for (const PrinterPlan& plan : plans) {
        const int index = int(placed.size());
        const PrinterPlan& first = plans.front();
        std::vector<PrinterPlacement> placements =
            plans.size() == 1 ? placePrinters(plan.lpNumbers, plan.usb.bus, plan.usb.device, plan.serial())
                              : std::vector<PrinterPlacement>{placePrinter(plan.lpNumbers.front(), index, first.usb.bus,
                                                                           first.usb.device, plan.serial())};
        if (plan.usb.bus != 0) placements.front().descriptors = usbDescriptors(plan.usb);
        placed.push_back(std::move(placements));
    }
    return placed;
}

}  // namespace corvelsim
