#include "ctl/AtomicFile.h"

#include "ctl/Failure.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvelctl {

namespace {

std::string reasonText() { return std::strerror(errno); }

std::string folderOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    if (slash == 0) return "/";
    return path.substr(0, slash);
}

std::string baseNameOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// The temporary file: removed when the write does not complete.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& path)
    {
        const std::string folder = folderOf(path);
        std::string pattern = folder + "/." + baseNameOf(path) + ".XXXXXX";
        std::vector<char> name(pattern.begin(), pattern.end());
        name.push_back('\0');
        m_Fd = mkostemp(name.data(), O_CLOEXEC);
        if (m_Fd < 0) {
            throw Failure(ExitStatus::CannotCreate, "cannot create a file in " + folder + ": " + reasonText());
        }
        m_Path = name.data();
    }

    ~TemporaryFile()
    {
        if (m_Fd >= 0) close(m_Fd);
        if (!m_Kept) unlink(m_Path.c_str());
    }

    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    // Writes, sets the mode and syncs; returns false with errno set.
    bool fill(std::string_view content)
    {
        const mode_t mask = umask(0);
        umask(mask);
        if (fchmod(m_Fd, 0644 & ~mask) != 0) return false;
        while (!content.empty()) {
            const ssize_t count = write(m_Fd, content.data(), content.size());
            if (count < 0 && errno == EINTR) continue;
            if (count < 0) return false;
            content.remove_prefix(static_cast<std::size_t>(count));
        }
        if (fsync(m_Fd) != 0) return false;
        const int fd = m_Fd;
        m_Fd = -1;
        return close(fd) == 0;
    }

    const std::string& path() const { return m_Path; }
    void keep() { m_Kept = true; }

private:
    int m_Fd = -1;
    std::string m_Path;
    bool m_Kept = false;
};

Failure existsWithoutForce(const std::string& path)
{
    return Failure(ExitStatus::Usage, path + " exists; give --force to replace it");
}

}  // namespace

void checkOutputTarget(const std::string& path, bool force)
{
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) {
        if (errno == ENOENT) return;
        throw Failure(ExitStatus::CannotCreate, "cannot create " + path + ": " + reasonText());
    }
    if (S_ISLNK(status.st_mode)) {
        throw Failure(ExitStatus::CannotCreate, path + " is a symbolic link; name the file itself");
    }
    if (S_ISDIR(status.st_mode)) {
        throw Failure(ExitStatus::CannotCreate, path + " is a directory; name a file");
    }
    if (!S_ISREG(status.st_mode)) throw Failure(ExitStatus::CannotCreate, path + " is not a regular file");
    if (!force) throw existsWithoutForce(path);
}

namespace {

// Puts the complete temporary file in place: without `force` it must not
// replace a file that appeared since the check.
void moveInPlace(const std::string& temporary, const std::string& path, bool force)
{
    if (!force) {
        if (renameat2(AT_FDCWD, temporary.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) == 0) return;
        if (errno == EEXIST) throw existsWithoutForce(path);
        // A file system without RENAME_NOREPLACE: the check before is all there is.
        if (errno != EINVAL && errno != ENOSYS) {
            throw Failure(ExitStatus::CannotCreate, "cannot create " + path + ": " + reasonText());
        }
    }
    if (std::rename(temporary.c_str(), path.c_str()) != 0) {
        throw Failure(ExitStatus::CannotCreate, "cannot create " + path + ": " + reasonText());
    }
}

void syncFolder(const std::string& path)
{
    const int folder = open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) return;
    fsync(folder);  // best effort: the file itself is complete either way
    close(folder);
}

}  // namespace

void writeFileAtomically(const std::string& path, std::string_view content, bool force)
{
    if (content.empty()) throw Failure(ExitStatus::IoError, "nothing to write to " + path + "; it is left as it was");
    checkOutputTarget(path, force);
    TemporaryFile temporary(path);
    if (!temporary.fill(content)) {
        throw Failure(ExitStatus::IoError, "cannot write " + path + ": " + reasonText());
    }
    moveInPlace(temporary.path(), path, force);
    temporary.keep();
    syncFolder(path);
}

}  // namespace corvelctl
