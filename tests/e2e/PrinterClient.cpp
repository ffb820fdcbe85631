// A minimal printer client for testing corvelsim on its own: for each
// argument "HEX[/N]" it opens the device, writes the bytes, reads until N
// bytes came (or, without N, until a second passes without one), closes, and prints
// what it read as one line of hex ("-" for nothing). Like corvelcfg it
// pauses between writing and reading.
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

std::vector<unsigned char> fromHex(const std::string& hex)
{
    std::vector<unsigned char> bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes.push_back((unsigned char)std::strtoul(hex.substr(i, 2).c_str(), nullptr, 16));
    return bytes;
}

// Reads up to `want` bytes (0: as many as come, until `quietMs` pass without
// a byte). Counted bytes are awaited up to a minute: on a loaded machine
// the printer may take seconds.
std::vector<unsigned char> readAnswer(int fd, size_t want, int quietMs)
{
    std::vector<unsigned char> got;
    for (;;) {
        pollfd p{fd, POLLIN, 0};
        if (poll(&p, 1, want ? 60000 : quietMs) <= 0) break;
        unsigned char buffer[512];
        size_t room = want ? want - got.size() : sizeof buffer;
        ssize_t n = read(fd, buffer, room < sizeof buffer ? room : sizeof buffer);
        if (n <= 0) break;
        got.insert(got.end(), buffer, buffer + n);
        if (want && got.size() >= want) break;
    }
    return got;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::fprintf(stderr, "usage: %s DEVICE HEX[/N]...\n", argv[0]);
        return 2;
    }
    for (int i = 2; i < argc; ++i) {
        std::string arg = argv[i];
        size_t slash = arg.find('/');
        size_t want = slash == std::string::npos ? 0 : std::strtoul(arg.c_str() + slash + 1, nullptr, 10);
        std::vector<unsigned char> request = fromHex(arg.substr(0, slash));
        int fd = open(argv[1], O_RDWR | O_EXCL | O_NOCTTY | O_NONBLOCK);
        if (fd < 0) {
            std::perror("open");
            return 1;
        }
        if (write(fd, request.data(), request.size()) != ssize_t(request.size())) return 1;
        usleep(50000);  // like corvelcfg, give the printer time before reading
        std::vector<unsigned char> answer = readAnswer(fd, want, 1000);
        // Like corvelcfg, which reads on until the printer has been quiet, do
        // not close at the very moment the answer came: bytes still on their
        // way through the kernel's terminal buffers would reach the next open.
        usleep(100000);
        close(fd);
        if (answer.empty()) std::printf("-");
        for (unsigned char b : answer) std::printf("%02X", b);
        std::printf("\n");
    }
    return 0;
}
