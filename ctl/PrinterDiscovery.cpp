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
    std::map<std::string, PrinterRecord> bySysName;
    std::vector<PrinterRecord> withoutDevice;
    for (const LpNodeEntry& node : nodes) {
        if (!node.device) {
            PrinterRecord record;
            record.nodes.push_back(node.devNode);
            withoutDevice.push_back(record);
            continue;
        }
        auto found = bySysName.try_emplace(node.device->sysName, recordOf(*node.device)).first;
        std::vector<std::string>& deviceNodes = found->second.nodes;
        if (std::find(deviceNodes.begin(), deviceNodes.end(), node.devNode) == deviceNodes.end()) {
            deviceNodes.push_back(node.devNode);
        }
    }
    for (const UsbDeviceEntry& device : printerDevices) bySysName.try_emplace(device.sysName, recordOf(device));

    std::vector<PrinterRecord> printers;
    for (auto& entry : bySysName) printers.push_back(std::move(entry.second));
    for (PrinterRecord& printer : printers) std::sort(printer.nodes.begin(), printer.nodes.end(), nodeOrder);
    std::sort(printers.begin(), printers.end(), [](const PrinterRecord& a, const PrinterRecord& b) {
        return std::make_tuple(a.bus, a.device) < std::make_tuple(b.bus, b.device);
    });
    std::sort(withoutDevice.begin(), withoutDevice.end(),
              [](const PrinterRecord& a, const PrinterRecord& b) { return nodeOrder(a.nodes[0], b.nodes[0]); });
    printers.insert(printers.end(), withoutDevice.begin(), withoutDevice.end());
    return printers;
}

std::string devNodeOfUevent(const std::string& uevent)
{
    const std::string key = "DEVNAME=";
    std::size_t line = 0;
    while (line < uevent.size()) {
        const std::size_t end = std::min(uevent.find('\n', line), uevent.size());
        if (uevent.compare(line, key.size(), key) == 0) {
            const std::string name = uevent.substr(line + key.size(), end - line - key.size());
            if (name.empty()) return "";
            return name.rfind("/dev/", 0) == 0 ? name : "/dev/" + name;
        }
        line = end + 1;
    }
    return "";
}

std::optional<std::string> usbDeviceOfNode(const std::string& nodePath)
{
    std::vector<std::string> parts;
    std::size_t start = 0;
    while (start <= nodePath.size()) {
        const std::size_t slash = std::min(nodePath.find('/', start), nodePath.size());
        parts.push_back(nodePath.substr(start, slash - start));
        start = slash + 1;
    }
    for (std::size_t i = parts.size(); i-- > 1;) {
        const std::size_t colon = parts[i].find(':');
        if (colon != std::string::npos && colon > 0 && parts[i].compare(0, colon, parts[i - 1]) == 0) {
            return parts[i - 1];
        }
    }
    return std::nullopt;
}

bool isCharacterDevice(const std::string& path)
{
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISCHR(status.st_mode);
}

}  // namespace corvelctl
