// The state file is the user's data: corvelsim refuses files that are not its
// own and leaves them as they were, reads within a bound, writes privately and
// only on a change, and runs sharing one file keep each other's settings.
// A minimal client drives corvelsim on its own.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <future>

#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

const std::string kHeader = "# corvelsim state v2\n";

// A shell command: the client sends a plain settings request carrying one
// text item and waits for its 8-byte answer.
std::string clientSets(uint8_t group, uint8_t field, const std::string& text)
{
    Bytes value(text.begin(), text.end());
    value.push_back(0);
    Bytes content = {0xE0, 0xDA, 0x01, group, field, 0x00, 0x00, uint8_t(value.size())};
    content.insert(content.end(), value.begin(), value.end());
    Bytes packet = {0xA5, 0x00, uint8_t(content.size() + 1), 0x50};
    packet.insert(packet.end(), content.begin(), content.end());
    return std::string(PRINTER_CLIENT_PATH) + " /dev/usb/lp0 " + toHex(packet) + "/8";
}

struct stat lstatOf(const std::string& path)
{
    struct stat info {};
    EXPECT_EQ(lstat(path.c_str(), &info), 0) << path;
    return info;
}

// Each refused file keeps its type, content and inode, and nothing is created
// beside it; the refusal comes at once (a FIFO is never opened for reading).
TEST(StateFile, RefusesWhatIsNotItsOwnAndLeavesItUntouched)
{
    SimDir dir;
    const std::string overBound = kHeader + std::string(size_t(1 << 20) + 1 - kHeader.size(), '#');
    // clang-format off
    const struct { std::string name, content; const char* reason; } cases[] = {
        {"notes", "Shopping: milk, eggs\njoined=1\n28/08=\"x\\0\"\n", "not a corvelsim state file"},
        {"newer", "# corvelsim state v3\njoined=1\n", "newer corvelsim"},
        {"badLine", kHeader + "joined=1\n28/08=oops\n", "line 3 cannot be read"},
        {"overBound", overBound, "larger than 1048576 bytes"},
        {"link", "", "a symbolic link"}, {"fifo", "", "a FIFO"}, {"folder", "", "a directory"},
        {"/dev/zero", "", "a character device"},
    };
    // clang-format on
    for (const auto& c : cases)
        if (!c.content.empty()) dir.write(c.name, c.content);
    dir.write("target", kHeader);
    ASSERT_EQ(symlink(dir.file("target").c_str(), dir.file("link").c_str()), 0);
    ASSERT_EQ(mkfifo(dir.file("fifo").c_str(), 0600), 0);
    ASSERT_EQ(mkdir(dir.file("folder").c_str(), 0700), 0);
    for (const auto& c : cases) {
        const std::string path = c.name[0] == '/' ? c.name : dir.file(c.name);
        const struct stat before = lstatOf(path);
        auto start = std::chrono::steady_clock::now();
        SimRun run = runSim(dir, {"--speed", "1", "--state", path}, {"/bin/echo", "ran"});
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10)) << path;
        EXPECT_EQ(run.status, 2) << path;
        EXPECT_TRUE(holds(run.err, "refusing to use") && holds(run.err, c.reason)) << path << ": " << run.err;
        EXPECT_EQ(run.out, "") << path << ": the command must not run";
        const struct stat after = lstatOf(path);
        EXPECT_EQ(after.st_ino, before.st_ino) << path;
        EXPECT_EQ(after.st_mode, before.st_mode) << path;
        EXPECT_NE(access((path + ".lock").c_str(), F_OK), 0) << path << ": nothing created beside it";
        if (!c.content.empty()) {
            EXPECT_EQ(dir.read(c.name), c.content) << path;
        }
    }
    EXPECT_EQ(dir.read("target"), kHeader);
}

TEST(StateFile, ConcurrentRunsKeepEachOthersSettingsWrittenPrivatelyOnlyOnAChange)
{
    SimDir first, second;
    const std::string shared = first.file("state.txt");
    first.write("state.txt", "");  // an empty file counts as a new one
    // Each run sets two fields, the second run's changes falling between the first's.
    auto runA = std::async(std::launch::async, [&] {
        return runSim(first, {"--speed", "1"},
                      {"/bin/sh", "-c",
                       clientSets(0x2A, 0x02, "alice") + " && sleep 0.4 && " + clientSets(0x28, 0x08, "LabNet")});
    });
    auto runB = std::async(std::launch::async, [&] {
        return runSim(second, {"--speed", "1", "--state", shared},
                      {"/bin/sh", "-c",
                       "sleep 0.2 && " + clientSets(0x2A, 0x03, "secret") + " && sleep 0.4 && " +
                           clientSets(0x2A, 0x0A, "printer-7")});
    });
    SimRun a = runA.get(), b = runB.get();
    ASSERT_EQ(a.status, 0) << a.err;
    ASSERT_EQ(b.status, 0) << b.err;
    const std::string state = first.read("state.txt");
    EXPECT_EQ(state.rfind(kHeader, 0), 0u) << state;
    for (const char* line :
         {"2A/02=\"alice\\0\"", "28/08=\"LabNet\\0\"", "2A/03=\"secret\\0\"", "2A/0A=\"printer-7\\0\""})
        EXPECT_TRUE(holds(state, line)) << line << " lost in:\n" << state;
    const struct stat before = lstatOf(shared);
    EXPECT_EQ(before.st_mode & 07777, 0600u);

    // Reading changes nothing, so the file is not written again. The client
    // reads 1 byte of the first answer and closes: the rest must not leak
    // into the next exchange (a counted read waits as long as it takes).
    SimRun reading = runSim(first, {"--speed", "1"},
                            {PRINTER_CLIENT_PATH, "/dev/usb/lp0", "A5000650E0D8002A06/1", "A5000650E0D8002A06/37"});
    EXPECT_EQ(reading.status, 0) << reading.err;
    EXPECT_EQ(reading.out, "A5\nA5002250E0D8002A06001A" + toHex("Corvel Simulated Printers") + "00\n");
    EXPECT_EQ(reading.log.size(), 2u);
    const struct stat after = lstatOf(shared);
    EXPECT_EQ(after.st_ino, before.st_ino) << "rewritten although nothing changed";
    EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
    EXPECT_EQ(first.read("state.txt"), state);
}

}  // namespace
}  // namespace e2e
