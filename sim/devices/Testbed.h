// Hosts the mock devices: a umockdev testbed in which each printer is a USB
// device whose /dev/usb/lpN, when it has one, is a pty; the simulated printer
// serves the master side.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "sim/devices/PrinterSysfs.h"
#include "sim/devices/TestbedFolders.h"

struct _UMockdevTestbed;

namespace corvelsim {

class Testbed {
public:
    // Creates an empty testbed; nullptr and a message on failure.
    static std::unique_ptr<Testbed> create(std::string& error);
    // Adds each printer's USB device, interface and lp node (if it has one);
    // false and a message on failure. A libusb node's ioctl handler must be
    // attached before.
    bool addPrinters(const std::vector<PrinterPlacement>& printers, const UsbIdentity& identity, std::string& error);
    ~Testbed();
    Testbed(const Testbed&) = delete;
    Testbed& operator=(const Testbed&) = delete;

    // The directory a child needs in UMOCKDEV_DIR.
    const std::string& rootDir() const { return m_RootDir; }

    // The umockdev testbed itself, for devices of other kinds.
    ::_UMockdevTestbed* umockdevTestbed() const { return m_Testbed; }

    // The pty master of /dev/usb/lpN (non-blocking, raw), by lp number.
    const std::map<int, int>& masters() const { return m_Masters; }

    // Throws away the bytes the utility has not read yet on lpN, so that an
    // old answer cannot be taken for the answer to a new request.
    void discardUnread(int lpNumber);

    // Hangs up lpN as an unplugged printer's node: the utility's reads find
    // the end of the file and a hang-up. The master's number stays taken (by
    // /dev/null) until the testbed closes it; the server must stop using it.
    void hangUp(int lpNumber);

private:
    Testbed() = default;

    TestbedFolders m_Folders;  // outlives m_Testbed, which removes its folder
    ::_UMockdevTestbed* m_Testbed = nullptr;
    std::string m_RootDir;
    std::map<int, int> m_Masters;
    std::map<int, int> m_Slaves;  // kept open so the master never sees a hang-up
};

std::string lpPath(int lpNumber);

}  // namespace corvelsim
