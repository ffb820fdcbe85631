#include "app/InputFile.h"

#include <cerrno>
#include <cstdio>

InputFileRead readInputFile(const std::string& path, std::string& content)
{
    content.clear();
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) return InputFileRead::CannotOpen;

    char buffer[4096];
    InputFileRead outcome = InputFileRead::Read;
    // One byte past the limit tells a file at the limit from a longer one.
    while (content.size() <= kInputFileLimit) {
        const std::size_t got = std::fread(buffer, 1, sizeof buffer, file);
        content.append(buffer, got);
        if (got < sizeof buffer) {
            if (std::ferror(file) != 0) outcome = InputFileRead::ReadFailed;
            break;
        }
    }
    const int readErrno = errno;
    std::fclose(file);
    if (content.size() > kInputFileLimit) {
        content.resize(kInputFileLimit);
        errno = EFBIG;
        return InputFileRead::TooLarge;
    }
    errno = readErrno;
    return outcome;
}
