// The sysfs side of printer discovery: it reads the few files the kernel
// shows for each lp node and USB printer interface, and hands them to
// mergePrinterEntries. Read directly, not through libudev: libudev resolves
// every device's path component by component (and again for each parent),
// which cost about a thousand system calls per printer under umockdev and
// was most of the time corvelctl spent before it talked to several printers.
#include "ctl/PrinterDiscovery.h"

#include <set>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace corvelctl {

namespace {

const char kNodeFolder[] = "/sys/class/usbmisc/";
const char kUsbFolder[] = "/sys/bus/usb/devices/";

// A sysfs attribute without its trailing newlines, as libudev gives it, or
// nullopt when it cannot be read (absent, a folder).
std::optional<std::string> readAttribute(const std::string& path)
{
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return std::nullopt;
    std::string text;
    char buffer[4096];
    ssize_t count = 0;
    // A short read is the end (sysfs gives an attribute whole, at most a
    // page): no read more just to see nothing, each one a system call.
    do {
        count = read(file, buffer, sizeof buffer);
        if (count > 0) text.append(buffer, count);
    } while (count == static_cast<ssize_t>(sizeof buffer) && text.size() < 65536);
    close(file);
    if (count < 0) return std::nullopt;
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
    return text;
}

std::vector<std::string> folderEntries(const std::string& path)
{
    std::vector<std::string> names;
    DIR* folder = opendir(path.c_str());
    if (folder == nullptr) return names;
    while (const dirent* entry = readdir(folder)) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..") names.push_back(name);
    }
    closedir(folder);
    return names;
}

std::optional<std::string> linkTarget(const std::string& path)
{
    char target[4096];
    const ssize_t length = readlink(path.c_str(), target, sizeof target);
    if (length <= 0 || static_cast<std::size_t>(length) >= sizeof target) return std::nullopt;
    return std::string(target, length);
}

UsbDeviceEntry usbDeviceEntry(const std::string& name)
{
    const std::string folder = kUsbFolder + name + "/";
    UsbDeviceEntry entry;
    entry.sysName = name;
    entry.busnum = readAttribute(folder + "busnum").value_or("");
    entry.devnum = readAttribute(folder + "devnum").value_or("");
    entry.idVendor = readAttribute(folder + "idVendor").value_or("");
    entry.idProduct = readAttribute(folder + "idProduct").value_or("");
    entry.manufacturer = readAttribute(folder + "manufacturer");
    entry.product = readAttribute(folder + "product");
    entry.serial = readAttribute(folder + "serial");
    return entry;
}

}  // namespace

std::vector<PrinterRecord> discoverPrinters()
{
    std::vector<LpNodeEntry> nodes;
    std::set<std::string> found;  // the USB devices read already
    for (const std::string& name : folderEntries(kNodeFolder)) {
        if (name.rfind("lp", 0) != 0) continue;
        const std::string devNode = devNodeOfUevent(readAttribute(kNodeFolder + name + "/uevent").value_or(""));
        if (devNode.empty()) continue;
        LpNodeEntry node;
        node.devNode = devNode;
        const std::optional<std::string> path = linkTarget(kNodeFolder + name);
        const std::optional<std::string> device = path ? usbDeviceOfNode(*path) : std::nullopt;
        if (device) {
            node.device = usbDeviceEntry(*device);
            found.insert(*device);
        }
        nodes.push_back(node);
    }

    // A printer without usblp: its printer interface (class 07) only. Only
    // interfaces have a colon in their name.
    std::vector<UsbDeviceEntry> printerDevices;
    for (const std::string& name : folderEntries(kUsbFolder)) {
        const std::size_t colon = name.find(':');
        if (colon == std::string::npos || colon == 0) continue;
        const std::string device = name.substr(0, colon);
        if (found.count(device) != 0) continue;  // each attribute read costs system calls
        if (readAttribute(kUsbFolder + name + "/bInterfaceClass") != "07") continue;
        found.insert(device);
        printerDevices.push_back(usbDeviceEntry(device));
    }

    return mergePrinterEntries(nodes, printerDevices);
}

}  // namespace corvelctl
