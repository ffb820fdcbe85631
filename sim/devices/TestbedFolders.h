// Where the umockdev testbeds live, so that the folder of a corvelsim that was
// killed (SIGKILL, an abort) does not stay behind for good: each testbed is
// made in a private folder of the user's ($TMPDIR/corvelsim-UID, mode 0700),
// marked there by a lock its corvelsim holds for its life, and the next
// corvelsim to start removes the folders whose lock nobody holds.
#pragma once

#include <string>

namespace corvelsim {

class TestbedFolders {
public:
    // Before the testbed is made: removes the abandoned testbeds and points
    // glib's temporary folder (umockdev's parent folder) at the private one.
    // When the private folder cannot be used (another owner, a link), the
    // testbed goes to the usual temporary folder, as it did before.
    void prepare();

    // After the testbed `root` is made: marks it as this corvelsim's own.
    void claim(const std::string& root);

    // Unlocked by closing; the testbed removes its folder, the lock with it.
    ~TestbedFolders();

private:
    std::string m_Private;  // "" when not in use
    int m_Lock = -1;
};

// Removes each testbed folder (umockdev.*) right in `parent` whose lock file
// (corvelsim.lock) exists and is held by no process; leaves everything else.
void removeAbandonedTestbeds(const std::string& parent);

}  // namespace corvelsim
