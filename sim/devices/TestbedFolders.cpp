#include "sim/devices/TestbedFolders.h"

#include <dirent.h>
#include <fcntl.h>
#include <ftw.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include <glib.h>

namespace corvelsim {

namespace {

const char* const kLockName = "corvelsim.lock";

// Best effort: what cannot be removed stays, and the walk goes on.
int removeEntry(const char* path, const struct stat*, int type, struct FTW*)
{
    if (type == FTW_DP)
        rmdir(path);
    else
        unlink(path);
    return 0;
}

// A folder only this user can reach: created here, or one that is a real
// folder (not a link) of this user with no access for anyone else.
bool usablePrivateFolder(const std::string& path)
{
    if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) return false;
    struct stat info {};
    return lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == geteuid() &&
           (info.st_mode & 0077) == 0;
}

// Opens `root`'s lock file for locking, without following a link.
int openLock(const std::string& root, int flags)
{
    return ::open((root + "/" + kLockName).c_str(), flags | O_RDWR | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0600);
}

// The private folder in temporary folder `tmp` ("": /tmp, as glib takes it).
std::string privateFolder(const std::string& tmp)
{
    return (tmp.empty() ? std::string("/tmp") : tmp) + "/corvelsim-" + std::to_string(geteuid());
}

}  // namespace

void removeAbandonedTestbeds(const std::string& parent)
{
    DIR* dir = opendir(parent.c_str());
    if (!dir) return;
    while (dirent* entry = readdir(dir)) {
        const std::string name = entry->d_name;
        if (name.rfind("umockdev.", 0) != 0) continue;
        const std::string root = parent + "/" + name;
        struct stat info {};
        if (lstat(root.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) continue;
        // Its corvelsim holds the lock while it lives; the kernel lets go of
        // it however that corvelsim ended.
        const int lock = openLock(root, 0);
        if (lock < 0) continue;
        struct stat lockInfo {};
        if (fstat(lock, &lockInfo) == 0 && S_ISREG(lockInfo.st_mode) && flock(lock, LOCK_EX | LOCK_NB) == 0)
            nftw(root.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
        ::close(lock);
    }
    closedir(dir);
}

void TestbedFolders::prepare()
{
    const char* tmp = std::getenv("TMPDIR");
    const std::string callers = tmp ? tmp : "";
    const std::string folder = privateFolder(callers);
    if (!usablePrivateFolder(folder)) return;
    removeAbandonedTestbeds(folder);
    // glib reads TMPDIR once and keeps it: the caller's value goes back at
    // once, for the command.
    setenv("TMPDIR", folder.c_str(), 1);
    const bool taken = folder == g_get_tmp_dir();
    if (tmp)
        setenv("TMPDIR", callers.c_str(), 1);
    else
        unsetenv("TMPDIR");
    if (taken) m_Private = folder;
}

void TestbedFolders::claim(const std::string& root)
{
    if (m_Private.empty() || root.rfind(m_Private + "/", 0) != 0) return;
    // Locked before it has its name, so that a corvelsim cleaning up never
    // finds this lock free.
    const std::string unnamed = root + "/" + kLockName + ".new";
    const int lock = ::open(unnamed.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (lock < 0) return;
    if (flock(lock, LOCK_EX | LOCK_NB) != 0 || rename(unnamed.c_str(), (root + "/" + kLockName).c_str()) != 0) {
        unlink(unnamed.c_str());
        ::close(lock);
        return;
    }
    m_Lock = lock;
}

TestbedFolders::~TestbedFolders()
{
    if (m_Lock >= 0) ::close(m_Lock);
}

}  // namespace corvelsim
