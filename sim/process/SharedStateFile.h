// The state file on disk, which is the user's data and may be shared by
// several corvelsim runs at once.
//
// - A file that exists must be a regular file (not a symbolic link, device,
//   FIFO or directory) whose first line marks it as corvelsim's, of at most
//   kMaxStateFileSize bytes, with every line readable; anything else is
//   refused and never written. An empty regular file counts as a new one.
// - Writes go to a new temporary file beside it (mode 0600) that is renamed
//   into place, and only when the state's text changed.
// - Every change happens under an exclusive lock on "FILE.lock" beside it,
//   after re-reading the file if another run changed it.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

#include "sim/printer/PrinterState.h"

namespace corvelsim {

constexpr off_t kMaxStateFileSize = 1 << 20;

class SharedStateFile {
public:
    SharedStateFile() = default;
    ~SharedStateFile();
    SharedStateFile(const SharedStateFile&) = delete;
    SharedStateFile& operator=(const SharedStateFile&) = delete;

    // Checks and reads the file into `state`, which holds the factory state
    // (kept for later re-reads). False and a message when the file is refused.
    bool open(const std::string& path, PrinterState& state, std::string& error);

    // Runs `change` on `state` with the file locked: first takes in what
    // another run wrote, afterwards writes the state back if its text changed.
    // False and a message when the file could not be read or written; the
    // change is made all the same, and the file is left alone from then on.
    bool update(PrinterState& state, const std::function<void()>& change, std::string& error);

private:
    struct FileId {
        dev_t device = 0;
        ino_t inode = 0;
        off_t size = -1;
        long long mtimeNs = -1;
        bool operator==(const FileId& other) const;
    };

    bool lock(std::string& error);
    void unlock();
    bool readIfChanged(PrinterState& state, std::string& error);
    bool write(const std::string& text, std::string& error);

    std::string m_Path;
    int m_LockFd = -1;
    PrinterState m_Factory;
    FileId m_Seen;       // the file as last read or written (size -1: none)
    std::string m_Text;  // the state's text as last read or written
    bool m_Abandoned = false;
};

}  // namespace corvelsim
