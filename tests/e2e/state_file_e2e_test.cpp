// The state file is the user's data: corvelsim refuses files that are not its
// own and leaves them as they were, reads within a bound, writes privately and
// only on a change, and runs sharing one file keep each other's settings.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <future>

#include "tests/e2e/HexBytes.h"
#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

const std::string kHeader = "# corvelsim state v2\n";

bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

// A plain settings request carrying one text item, and the client argument
// that sends it and waits for its 8-byte answer.
std::string setText(uint8_t group, uint8_t field, const std::string& text)
{
    Bytes value(text.begin(), text.end());
    value.push_back(0);
    Bytes content = {0xE0, 0xDA, 0x01, group, field, 0x00, 0x00, uint8_t(value.size())};
    content.insert(content.end(), value.begin(), value.end());
    Bytes packet = {0xA5, 0x00, uint8_t(content.size() + 1), 0x50};
    packet.insert(packet.end(), content.begin(), content.end());
    return toHex(packet) + "/8";
}
const std::string kReadOrganization = "A5000650E0D8002A06/37";

std::vector<std::string> client(std::vector<std::string> exchanges)
{
    exchanges.insert(exchanges.begin(), {PRINTER_CLIENT_PATH, "/dev/usb/lp0"});
    return exchanges;
}

struct stat lstatOf(const std::string& path)
{
    struct stat info {};
    EXPECT_EQ(lstat(path.c_str(), &info), 0) << path;
    return info;
}

// Runs corvelsim with `statePath` as its state file and a client that sets a value.
SimRun runWithState(const SimDir& dir, const std::string& statePath)
{
    return runSim(dir, {"--speed", "1", "--state", statePath}, client({setText(0x2A, 0x02, "alice")}));
}

TEST(StateFile, RefusesWhatIsNotItsOwnAndLeavesItUntouched)
{
    const std::string binary("\x7F" "ELF\x02\x01\x01\x00\x00\xFF\xE0\n\x00joined=1\n", 21);
    const struct { const char* name; std::string content; const char* reason; } cases[] = {
        {"notes", "Shopping: milk, eggs\njoined=1\n28/08=\"x\\0\"\n", "not a corvelsim state file"},
        {"binary", binary, "not a corvelsim state file"},
        {"newer format", "# corvelsim state v3\njoined=1\n", "newer corvelsim"},
        {"hand edit with a bad line", kHeader + "joined=1\n28/08=oops\n", "line 3 cannot be read"},
        {"over the size bound", kHeader + std::string(1 << 20, '#'), "larger than"},
    };
    for (const auto& c : cases) {
        SimDir dir;
        dir.write("mine.txt", c.content);
        const struct stat before = lstatOf(dir.file("mine.txt"));
        SimRun run = runWithState(dir, dir.file("mine.txt"));
        EXPECT_EQ(run.status, 2) << c.name;
        EXPECT_TRUE(holds(run.err, "refusing to use") && holds(run.err, c.reason)) << c.name << ": " << run.err;
        EXPECT_TRUE(run.log.empty()) << c.name << ": the command must not run";
        EXPECT_EQ(dir.read("mine.txt"), c.content) << c.name;
        const struct stat after = lstatOf(dir.file("mine.txt"));
        EXPECT_EQ(after.st_ino, before.st_ino) << c.name;
        EXPECT_EQ(after.st_mode, before.st_mode) << c.name;
        EXPECT_NE(access(dir.file("mine.txt.lock").c_str(), F_OK), 0) << c.name << ": nothing created beside it";
    }
}

TEST(StateFile, RefusesLinksDirectoriesFifosAndDevicesPromptly)
{
    SimDir dir;
    dir.write("target.txt", kHeader + "joined=0\n");
    ASSERT_EQ(symlink(dir.file("target.txt").c_str(), dir.file("link").c_str()), 0);
    ASSERT_EQ(symlink(dir.file("nowhere").c_str(), dir.file("dangling").c_str()), 0);
    ASSERT_EQ(mkfifo(dir.file("fifo").c_str(), 0600), 0);
    ASSERT_EQ(mkdir(dir.file("folder").c_str(), 0700), 0);
    const struct { std::string path; mode_t type; const char* reason; } cases[] = {
        {dir.file("link"), S_IFLNK, "a symbolic link"},
        {dir.file("dangling"), S_IFLNK, "a symbolic link"},
        {dir.file("fifo"), S_IFIFO, "a FIFO"},
        {dir.file("folder"), S_IFDIR, "a directory"},
        {"/dev/zero", S_IFCHR, "a character device"},
        {"/dev/full", S_IFCHR, "a character device"},
    };
    for (const auto& c : cases) {
        auto start = std::chrono::steady_clock::now();
        SimRun run = runWithState(dir, c.path);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5)) << c.path;
        EXPECT_EQ(run.status, 2) << c.path;
        EXPECT_TRUE(holds(run.err, c.reason)) << c.path << ": " << run.err;
        EXPECT_EQ(lstatOf(c.path).st_mode & S_IFMT, c.type) << c.path;
    }
    EXPECT_EQ(dir.read("target.txt"), kHeader + "joined=0\n");
}

TEST(StateFile, DevNullStaysADevice)
{
    if (geteuid() != 0) GTEST_SKIP() << "only root could replace /dev/null";
    SimDir dir;
    SimRun run = runWithState(dir, "/dev/null");
    EXPECT_EQ(run.status, 2);
    EXPECT_TRUE(S_ISCHR(lstatOf("/dev/null").st_mode));
    EXPECT_NE(access("/dev/null.lock", F_OK), 0);
}

TEST(StateFile, WritesPrivatelyOnlyWhenSomethingChanged)
{
    SimDir dir;
    dir.write("state.txt", "");  // an empty file counts as a new one
    ASSERT_EQ(runWithState(dir, dir.file("state.txt")).status, 0);
    const std::string written = dir.read("state.txt");
    EXPECT_EQ(written.rfind(kHeader, 0), 0u) << written;
    EXPECT_TRUE(holds(written, "2A/02=\"alice\\0\"")) << written;
    const struct stat before = lstatOf(dir.file("state.txt"));
    EXPECT_EQ(before.st_mode & 07777, 0600u);

    SimRun reading = runSim(dir, {"--speed", "1"}, client({kReadOrganization, kReadOrganization}));
    EXPECT_EQ(reading.status, 0) << reading.err;
    EXPECT_EQ(reading.log.size(), 2u);
    EXPECT_EQ(reading.err, "");
    const struct stat after = lstatOf(dir.file("state.txt"));
    EXPECT_EQ(after.st_ino, before.st_ino) << "rewritten although nothing changed";
    EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
    EXPECT_EQ(dir.read("state.txt"), written);
}

TEST(StateFile, ConcurrentRunsKeepEachOthersSettings)
{
    SimDir first, second;
    const std::string shared = first.file("state.txt");
    // Each run sets two fields, the second run's changes falling between the first's.
    auto runA = std::async(std::launch::async, [&] {
        return runSim(first, {"--speed", "1"},
                      {"/bin/sh", "-c",
                       std::string(PRINTER_CLIENT_PATH) + " /dev/usb/lp0 " + setText(0x2A, 0x02, "alice") +
                           " && sleep 0.4 && " + PRINTER_CLIENT_PATH + " /dev/usb/lp0 " + setText(0x28, 0x08, "LabNet")});
    });
    auto runB = std::async(std::launch::async, [&] {
        return runSim(second, {"--speed", "1", "--state", shared},
                      {"/bin/sh", "-c",
                       "sleep 0.2 && " + std::string(PRINTER_CLIENT_PATH) + " /dev/usb/lp0 " +
                           setText(0x2A, 0x03, "secret") + " && sleep 0.4 && " + PRINTER_CLIENT_PATH +
                           " /dev/usb/lp0 " + setText(0x2A, 0x0A, "printer-7")});
    });
    SimRun a = runA.get(), b = runB.get();
    ASSERT_EQ(a.status, 0) << a.err;
    ASSERT_EQ(b.status, 0) << b.err;
    const std::string state = first.read("state.txt");
    for (const char* line : {"2A/02=\"alice\\0\"", "28/08=\"LabNet\\0\"", "2A/03=\"secret\\0\"", "2A/0A=\"printer-7\\0\""})
        EXPECT_TRUE(holds(state, line)) << line << " lost in:\n" << state;
}

}  // namespace
}  // namespace e2e
