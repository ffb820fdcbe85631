#include "ctl/PrinterDiscovery.h"

#include "ctl/Failure.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <tuple>

#include <sys/stat.h>

namespace corvelctl {

namespace {

// A decimal sysfs number such as busnum "1" or devnum "12", or 0.
int sysfsNumber(const std::string& text)
{
    if (text.empty() || text.size() > 3 || text.find_first_not_of("0123456789") != std::string::npos) return 0;
    return std::atoi(text.c_str());
}

// The N of ".../lpN", for ordering; large when there is none.
long nodeNumber(const std::string& node)
{
    const std::size_t lp = node.rfind("lp");
    if (lp == std::string::npos) return 1L << 30;
    const std::string digits = node.substr(lp + 2);
    if (digits.empty() || digits.size() > 6 || digits.find_first_not_of("0123456789") != std::string::npos) {
        return 1L << 30;
    }
    return std::atol(digits.c_str());
}

bool nodeOrder(const std::string& a, const std::string& b)
{
    return std::make_tuple(nodeNumber(a), a) < std::make_tuple(nodeNumber(b), b);
}

PrinterRecord recordOf(const UsbDeviceEntry& device)
{
    PrinterRecord record;
    record.bus = sysfsNumber(device.busnum);
    record.device = sysfsNumber(device.devnum);
    record.vendorId = device.idVendor;
    record.productId = device.idProduct;
    record.manufacturer = device.manufacturer;
    record.product = device.product;
    record.serial = device.serial;
    return record;
}

}  // namespace

std::vector<PrinterRecord> mergePrinterEntries(const std::vector<LpNodeEntry>& nodes,
                                               const std::vector<UsbDeviceEntry>& printerDevices)
{
    std::map<std::string, PrinterRecord> bySysPath;
    std::vector<PrinterRecord> withoutDevice;
    for (const LpNodeEntry& node : nodes) {
        if (!node.device) {
            PrinterRecord record;
            record.nodes.push_back(node.devNode);
            withoutDevice.push_back(record);
            continue;
        }
        auto found = bySysPath.try_emplace(node.device->sysPath, recordOf(*node.device)).first;
        std::vector<std::string>& deviceNodes = found->second.nodes;
        if (std::find(deviceNodes.begin(), deviceNodes.end(), node.devNode) == deviceNodes.end()) {
            deviceNodes.push_back(node.devNode);
        }
    }
    for (const UsbDeviceEntry& device : printerDevices) bySysPath.try_emplace(device.sysPath, recordOf(device));

    std::vector<PrinterRecord> printers;
    for (auto& entry : bySysPath) printers.push_back(std::move(entry.second));
    for (PrinterRecord& printer : printers) std::sort(printer.nodes.begin(), printer.nodes.end(), nodeOrder);
    std::sort(printers.begin(), printers.end(), [](const PrinterRecord& a, const PrinterRecord& b) {
        return std::make_tuple(a.bus, a.device) < std::make_tuple(b.bus, b.device);
    });
    std::sort(withoutDevice.begin(), withoutDevice.end(),
              [](const PrinterRecord& a, const PrinterRecord& b) { return nodeOrder(a.nodes[0], b.nodes[0]); });
    printers.insert(printers.end(), withoutDevice.begin(), withoutDevice.end());
    return printers;
}

bool isCharacterDevice(const std::string& path)
{
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISCHR(status.st_mode);
}

}  // namespace corvelctl
