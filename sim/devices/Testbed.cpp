#include "sim/devices/Testbed.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <umockdev.h>

namespace corvelsim {

namespace {

bool makeRaw(int fd)
{
    termios settings{};
    if (tcgetattr(fd, &settings) != 0) return false;
    cfmakeraw(&settings);
    return tcsetattr(fd, TCSANOW, &settings) == 0;
}

}  // namespace

std::string lpPath(int lpNumber) { return "/dev/usb/lp" + std::to_string(lpNumber); }

std::unique_ptr<Testbed> Testbed::create(std::string& error)
{
    std::unique_ptr<Testbed> testbed(new Testbed());
    testbed->m_Folders.prepare();
    testbed->m_Testbed = umockdev_testbed_new();
    if (!testbed->m_Testbed) {
        error = "cannot create the umockdev testbed";
        return nullptr;
    }
    gchar* root = umockdev_testbed_get_root_dir(testbed->m_Testbed);
    testbed->m_RootDir = root ? root : "";
    g_free(root);
    testbed->m_Folders.claim(testbed->m_RootDir);
    return testbed;
}

bool Testbed::addPrinters(const std::vector<PrinterPlacement>& printers, const UsbIdentity& identity,
                          std::string& error)
{
    for (const PrinterPlacement& printer : printers) {
        const int lp = printer.lp;
        if (m_Masters.count(lp)) continue;
        const std::string name =
            lp != kNoLpNode ? lpPath(lp) : "the USB device " + usbNodePath(printer.bus, printer.device);
        for (const std::string& description : sysfsDescriptions(printer, identity)) {
            GError* gerror = nullptr;
            if (!umockdev_testbed_add_from_string(m_Testbed, description.c_str(), &gerror)) {
                error = "cannot add " + name + ": " + (gerror ? gerror->message : "unknown error");
                if (gerror) g_error_free(gerror);
                return false;
            }
        }
        if (lp == kNoLpNode) continue;  // no pty to serve: the USB device's own port serves it
        int master = umockdev_testbed_get_dev_fd(m_Testbed, lpPath(lp).c_str());
        if (master < 0) {
            error = "umockdev gave no pty for " + lpPath(lp);
            return false;
        }
        // Our own hold on the slave keeps the master from reporting a
        // hang-up each time the utility closes the device.
        const char* slaveName = ptsname(master);
        int slave = slaveName ? ::open(slaveName, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC) : -1;
        if (slave < 0 || !makeRaw(master) || !makeRaw(slave)) {
            error = "cannot set up the pty of " + lpPath(lp) + ": " + std::strerror(errno);
            if (slave >= 0) ::close(slave);
            return false;
        }
        fcntl(master, F_SETFL, fcntl(master, F_GETFL) | O_NONBLOCK);
        fcntl(master, F_SETFD, FD_CLOEXEC);
        m_Masters[lp] = master;
        m_Slaves[lp] = slave;
    }
    return true;
}

void Testbed::discardUnread(int lpNumber)
{
    // The utility always pauses between writing a request and reading, so
    // this runs before it reads again.
    auto slave = m_Slaves.find(lpNumber);
    if (slave != m_Slaves.end()) tcflush(slave->second, TCIFLUSH);
}

void Testbed::hangUp(int lpNumber)
{
    auto master = m_Masters.find(lpNumber);
    if (master == m_Masters.end()) return;
    // Closing the master hangs up every slave descriptor; putting /dev/null
    // in its place closes it without freeing the number, which the testbed
    // closes again when it goes.
    int nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    if (nothing >= 0) {
        dup2(nothing, master->second);
        ::close(nothing);
    }
    auto slave = m_Slaves.find(lpNumber);
    if (slave != m_Slaves.end()) {
        ::close(slave->second);
        m_Slaves.erase(slave);
    }
}

Testbed::~Testbed()
{
    for (auto& [lp, fd] : m_Slaves) ::close(fd);
    // The masters belong to the testbed, which removes its directory too.
    if (m_Testbed) g_object_unref(m_Testbed);
}

}  // namespace corvelsim
