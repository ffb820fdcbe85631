#include "sim/process/SharedStateFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "sim/process/StateFile.h"

namespace corvelsim {

namespace {

std::string systemError(const std::string& what, const std::string& path)
{
    return what + " '" + path + "': " + std::strerror(errno);
}

const char* kindOf(mode_t mode)
{
    if (S_ISLNK(mode)) return "a symbolic link";
    if (S_ISDIR(mode)) return "a directory";
    if (S_ISCHR(mode)) return "a character device";
    if (S_ISBLK(mode)) return "a block device";
    if (S_ISFIFO(mode)) return "a FIFO";
    if (S_ISSOCK(mode)) return "a socket";
    return "not a regular file";
}

std::string refusal(const std::string& path, const std::string& why)
{
    return "refusing to use '" + path + "' as the state file: " + why + "; it is left untouched";
}

// Reads at most `limit` + 1 bytes, so that a file that grew is noticed.
bool readBounded(int fd, off_t limit, std::string& text)
{
    text.clear();
    char buffer[65536];
    for (;;) {
        ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return false;
        if (got == 0) return true;
        text.append(buffer, size_t(got));
        if (text.size() > size_t(limit)) return true;
    }
}

bool writeAll(int fd, const std::string& text)
{
    size_t at = 0;
    while (at < text.size()) {
        ssize_t put = ::write(fd, text.data() + at, text.size() - at);
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return false;
        at += size_t(put);
    }
    return true;
}

}  // namespace

bool SharedStateFile::FileId::operator==(const FileId& other) const
{
    return device == other.device && inode == other.inode && size == other.size && mtimeNs == other.mtimeNs;
}

SharedStateFile::~SharedStateFile()
{
    if (m_LockFd >= 0) ::close(m_LockFd);
}

bool SharedStateFile::open(const std::string& path, PrinterState& state, std::string& error)
{
    m_Path = path;
    m_Factory = state;
    m_Text = formatState(state);
    // Judge the file before anything is created beside it.
    if (!readIfChanged(state, error)) return false;
    m_LockFd = ::open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0600);
    if (m_LockFd < 0) {
        error = systemError("cannot open the lock file", path + ".lock");
        return false;
    }
    struct stat info {};
    if (fstat(m_LockFd, &info) != 0 || !S_ISREG(info.st_mode)) {
        error = "the lock file '" + path + ".lock' is not a regular file";
        return false;
    }
    if (!lock(error)) return false;
    bool ok = readIfChanged(state, error);
    unlock();
    return ok;
}

bool SharedStateFile::update(PrinterState& state, const std::function<void()>& change, std::string& error)
{
    if (m_Abandoned || m_LockFd < 0) {
        change();
        return true;
    }
    bool ok = lock(error);
    if (ok) ok = readIfChanged(state, error);
    change();
    if (ok) {
        std::string text = formatState(state);
        if (text != m_Text) ok = write(text, error);
        if (ok) m_Text = std::move(text);
    }
    unlock();
    if (!ok) m_Abandoned = true;
    return ok;
}

bool SharedStateFile::lock(std::string& error)
{
    while (flock(m_LockFd, LOCK_EX) != 0) {
        if (errno != EINTR) {
            error = systemError("cannot lock", m_Path + ".lock");
            return false;
        }
    }
    return true;
}

void SharedStateFile::unlock() { flock(m_LockFd, LOCK_UN); }

bool SharedStateFile::readIfChanged(PrinterState& state, std::string& error)
{
    struct stat info {};
    if (lstat(m_Path.c_str(), &info) != 0) {
        if (errno == ENOENT) return true;  // no file yet (or any more): what is in memory stands
        error = systemError("cannot examine the state file", m_Path);
        return false;
    }
    if (!S_ISREG(info.st_mode)) {
        error = refusal(m_Path, std::string("it is ") + kindOf(info.st_mode));
        return false;
    }
    FileId id{info.st_dev, info.st_ino, info.st_size, info.st_mtim.tv_sec * 1000000000LL + info.st_mtim.tv_nsec};
    if (id == m_Seen) return true;
    if (info.st_size > kMaxStateFileSize) {
        error = refusal(m_Path, "it is larger than " + std::to_string(kMaxStateFileSize) + " bytes");
        return false;
    }
    int fd = ::open(m_Path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        error = systemError("cannot open the state file", m_Path);
        return false;
    }
    std::string text;
    struct stat opened {};
    bool read = fstat(fd, &opened) == 0 && S_ISREG(opened.st_mode) && readBounded(fd, kMaxStateFileSize, text);
    ::close(fd);
    if (!read) {
        error = systemError("cannot read the state file", m_Path);
        return false;
    }
    if (text.size() > size_t(kMaxStateFileSize)) {
        error = refusal(m_Path, "it is larger than " + std::to_string(kMaxStateFileSize) + " bytes");
        return false;
    }
    PrinterState loaded = m_Factory;
    if (!text.empty()) {
        int version = stateFileVersion(text);
        if (version == 0) {
            error = refusal(m_Path, "it is not a corvelsim state file (its first line is not \"" +
                                        std::string(kStateFileHeader) + "\")");
            return false;
        }
        if (version > 2) {
            error = refusal(m_Path, "it was written by a newer corvelsim (format v" + std::to_string(version) + ")");
            return false;
        }
        std::vector<std::string> problems;
        parseState(text, loaded, problems);
        if (!problems.empty()) {
            error = refusal(m_Path, problems.front() + (problems.size() > 1 ? " (and more)" : ""));
            return false;
        }
    }
    state = loaded;
    m_Seen = {opened.st_dev, opened.st_ino, opened.st_size,
              opened.st_mtim.tv_sec * 1000000000LL + opened.st_mtim.tv_nsec};
    m_Text = formatState(state);
    return true;
}

bool SharedStateFile::write(const std::string& text, std::string& error)
{
    std::string temporary = m_Path + ".XXXXXX";
    int fd = mkstemp(temporary.data());  // O_EXCL, mode 0600
    if (fd < 0) {
        error = systemError("cannot create a temporary file beside", m_Path);
        return false;
    }
    bool written = writeAll(fd, text) && fsync(fd) == 0;
    struct stat info {};
    written = fstat(fd, &info) == 0 && written;
    ::close(fd);
    // The name may have been given to something else since it was read.
    struct stat target {};
    if (written && lstat(m_Path.c_str(), &target) == 0 && !S_ISREG(target.st_mode)) {
        unlink(temporary.c_str());
        error = refusal(m_Path, std::string("it is now ") + kindOf(target.st_mode));
        return false;
    }
    if (!written || rename(temporary.c_str(), m_Path.c_str()) != 0) {
        error = systemError("cannot write the state file", m_Path);
        unlink(temporary.c_str());
        return false;
    }
    m_Seen = {info.st_dev, info.st_ino, info.st_size, info.st_mtim.tv_sec * 1000000000LL + info.st_mtim.tv_nsec};
    return true;
}

}  // namespace corvelsim
