// The CA name derived from any file content: OpenSSL's reading and our own
// handling of the subject and validity texts it gives back.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "cert/CertMgr.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const int fd = memfd_create("pem", 0);
    static const std::string path = "/proc/self/fd/" + std::to_string(fd);
    if (fd < 0 || ftruncate(fd, 0) != 0 || pwrite(fd, data, size, 0) != static_cast<ssize_t>(size)) {
        return 0;
    }
    std::string commonName = "unset", caName = "unset";
    const int result = CertMgr::readPemSubject(path, commonName, caName);
    if (result == 0) {
        // "<common name>_<26-character validity>", within the 256-byte buffer.
        if (commonName.empty() || caName.size() > 255 || caName.size() < commonName.size() + 27 ||
            caName.compare(0, commonName.size() + 1, commonName + "_") != 0) {
            std::abort();
        }
    } else if (result != -1 || commonName != "unset" || caName != "unset") {
        std::abort();
    }
    return 0;
}
