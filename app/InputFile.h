// Reading a file named on the command line (settings, raw packet) whole and
// within a bound, so that /dev/zero or a disk image named by mistake cannot
// fill the memory or keep the utility reading for ever.
#pragma once

#include <cstddef>
#include <string>

// Real settings and packet files hold a few hundred bytes.
constexpr std::size_t kInputFileLimit = 1024 * 1024;

enum class InputFileRead { Read, CannotOpen, ReadFailed, TooLarge };

// Reads the file at `path` into `content` in one pass from its start, which
// works on pipes and FIFOs too (`-file <(...)`). A file longer than
// kInputFileLimit is TooLarge, with errno EFBIG; CannotOpen and ReadFailed
// leave the reason in errno. `content` holds what was read in every case.
InputFileRead readInputFile(const std::string& path, std::string& content);
