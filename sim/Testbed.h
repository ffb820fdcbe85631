// Hosts the mock device nodes: a umockdev testbed in which each /dev/usb/lpN
// is a pty whose master side the simulated printer serves.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

struct _UMockdevTestbed;

namespace corvelsim {

class Testbed {
public:
    // Creates the testbed with one printer node per lp number; nullptr and a
    // message on failure.
    static std::unique_ptr<Testbed> create(const std::vector<int>& lpNumbers, std::string& error);
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

    ::_UMockdevTestbed* m_Testbed = nullptr;
    std::string m_RootDir;
    std::map<int, int> m_Masters;
    std::map<int, int> m_Slaves;  // kept open so the master never sees a hang-up
};

std::string lpPath(int lpNumber);

}  // namespace corvelsim
