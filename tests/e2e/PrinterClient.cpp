// A minimal printer client for testing corvelsim on its own: for each
// argument "HEX/N" it opens the device, writes the bytes, reads until N bytes
// came, closes, and prints what it read as one line of hex ("-" for nothing).
// Like corvelcfg it pauses between writing and reading.
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/HexText.h"

namespace {

// Reads `want` bytes, awaited up to a minute: on a loaded machine the printer
// may take seconds.
std::vector<uint8_t> readAnswer(int fd, size_t want)
{
    std::vector<uint8_t> got(want);
    size_t have = 0;
    for (pollfd p{fd, POLLIN, 0}; have < want && poll(&p, 1, 60000) > 0;) {
        ssize_t n = read(fd, got.data() + have, want - have);
        if (n <= 0) break;
        have += size_t(n);
    }
    got.resize(have);
    return got;
}

}  // namespace

int main(int argc, char** argv)
{
    for (int i = 2; i < argc; ++i) {
        std::string arg = argv[i];
        size_t slash = arg.find('/');
        size_t want = std::strtoul(arg.c_str() + slash + 1, nullptr, 10);
        const std::vector<uint8_t> request = bytesFromHex(arg.substr(0, slash));
        int fd = open(argv[1], O_RDWR | O_EXCL | O_NOCTTY | O_NONBLOCK);
        if (fd < 0) {
            std::perror("open");
            return 1;
        }
        if (write(fd, request.data(), request.size()) != ssize_t(request.size())) return 1;
        usleep(50000);  // like corvelcfg, give the printer time before reading
        const std::vector<uint8_t> answer = readAnswer(fd, want);
        // Like corvelcfg, which reads on until the printer has been quiet, do
        // not close at the very moment the answer came: bytes still on their
        // way through the kernel's terminal buffers would reach the next open.
        usleep(100000);
        close(fd);
        std::printf("%s\n", answer.empty() ? "-" : hexOf(answer, "").c_str());
    }
    return 0;
}
