// The atomic output file: what it refuses, and that a failed write leaves
// neither a part of the file nor its temporary behind. Refusing an existing
// file without --force, and leaving no temporary after a success, are shown
// end to end (tests/e2e/ctl_commands_e2e_test.cpp).
#include "ctl/AtomicFile.h"
#include "ctl/Failure.h"
#include "ctl/tests/TempFolder.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <string>

using namespace corvelctl;

namespace {

std::string outcome(const std::string& path, const std::string& content, bool force)
{
    try {
        writeFileAtomically(path, content, force);
        return "written";
    } catch (const Failure& failure) {
        return "exit " + std::to_string(exitCode(failure.status())) + ": " + failure.message();
    }
}

TEST(AtomicFile, WritesWithTheUsersMaskAndRefusesLinksFoldersAndEmptyContent)
{
    const TempFolder folder;
    const std::string path = folder.path + "/req.pem";
    const mode_t previousMask = umask(027);
    EXPECT_EQ(outcome(path, "first\n", false), "written");
    umask(previousMask);
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);

    const std::string link = folder.path + "/link";
    ASSERT_EQ(symlink((folder.path + "/target").c_str(), link.c_str()), 0);  // dangling: would create target
    const std::string sub = folder.path + "/sub";
    ASSERT_EQ(mkdir(sub.c_str(), 0700), 0);
    EXPECT_EQ(outcome(link, "pem", true), "exit 73: " + link + " is a symbolic link; name the file itself");
    EXPECT_EQ(outcome(sub, "pem", true), "exit 73: " + sub + " is a directory; name a file");
    EXPECT_EQ(outcome(path, "", true), "exit 74: nothing to write to " + path + "; it is left as it was");
    EXPECT_EQ(outcome(folder.path + "/missing/new", "pem", false).substr(0, 35 + folder.path.size()),
              "exit 73: cannot create a file in " + folder.path + "/m");
    EXPECT_EQ(outcome("/dev/null", "pem", true), "exit 73: /dev/null is not a regular file");
    EXPECT_EQ(folder.names(), (std::set<std::string>{"link", "req.pem", "sub"}));
    EXPECT_EQ(folder.read("req.pem"), "first\n");
}

TEST(AtomicFile, AFailedWriteLeavesNoTemporaryFile)
{
    const TempFolder folder;
    const std::string path = folder.path + "/req.pem";
    ASSERT_EQ(outcome(path, "old\n", false), "written");
    // A file-size limit makes the write of the temporary file fail part-way.
    rlimit previous{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &previous), 0);
    const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = previous;
    small.rlim_cur = 16;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const std::string result = outcome(path, std::string(64, 'x'), true);
    setrlimit(RLIMIT_FSIZE, &previous);
    std::signal(SIGXFSZ, previousHandler);
    EXPECT_EQ(result, "exit 74: cannot write " + path + ": File too large");
    EXPECT_EQ(folder.names(), std::set<std::string>{"req.pem"});
    EXPECT_EQ(folder.read("req.pem"), "old\n");
}

}  // namespace
